layout(location = 0) in vec2 texCoord;
layout(location = 0) out vec4 fragColor;
layout(binding = 0) uniform sampler2D Source;
layout(push_constant) uniform PushConstants
{
    uint frameCount;
    float params[15];
} pc;
