#version 450
#extension GL_GOOGLE_include_directive : require
#include "../include/component.glsl"

// Gamma-encoded picture in, cell density as a greenish grey out.

layout(binding = 0) uniform sampler2D Source;

#define DMG_TINT pc.params[0]

void main()
{
    float luma = dot(texture(Source, texCoord).rgb, vec3(0.299, 0.587, 0.114));
    fragColor = vec4(mix(vec3(luma), luma * vec3(0.88, 1.0, 0.45), DMG_TINT), 1.0);
}
