#version 450
#extension GL_GOOGLE_include_directive : require
#include "../include/component.glsl"

// The picture as it is: no value is changed, whatever its encoding.

layout(binding = 0) uniform sampler2D Source;

void main()
{
    fragColor = texture(Source, texCoord);
}
