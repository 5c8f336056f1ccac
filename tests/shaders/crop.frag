#version 450

// Cuts a picture out of those that a test has stacked up as its source.
layout(location = 0) out vec4 fragColor;
layout(binding = 0) uniform sampler2D Stack;
layout(push_constant) uniform PushConstants
{
    layout(offset = 68) float top; // params[0]
} pc;

void main()
{
    fragColor = texelFetch(Stack, ivec2(gl_FragCoord.xy) + ivec2(0, int(pc.top)), 0);
}
