layout(location = 0) in vec2 texCoord;
layout(location = 0) out vec4 fragColor;
layout(binding = 0) uniform sampler2D Source;
layout(push_constant) uniform PushConstants
{
    vec4 sourceSize;
    vec4 outputSize;
    vec4 originalSize;
    uint frameCount;
    int frameDirection;
    uint hdrOutputActive;
    float frameSeconds;
    float hdrHeadroom;
    float params[15];
} pc;
