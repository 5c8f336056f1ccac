#version 450
#extension GL_GOOGLE_include_directive : require
#include "../../examples/shaders/vulkan/include/component.glsl"

// Cuts a picture out of those that a test has stacked up as its source.
layout(binding = 0) uniform sampler2D Stack;
#define top pc.params[0]

void main()
{
    fragColor = texelFetch(Stack, ivec2(gl_FragCoord.xy) + ivec2(0, int(top)), 0);
}
