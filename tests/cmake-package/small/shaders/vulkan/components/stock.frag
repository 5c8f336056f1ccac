#version 450
#extension GL_GOOGLE_include_directive : require
#include "../include/component.glsl"
void main()
{
    fragColor = texture(Source, texCoord);
}
