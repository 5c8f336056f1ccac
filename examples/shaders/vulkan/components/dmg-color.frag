#version 450
#extension GL_GOOGLE_include_directive : require
#include "../include/component.glsl"
#include "../include/color.glsl"
#include "../include/lcd.glsl"

// The colour of a grey cell: the picture's brightness, mapped linearly to the range from the dark
// to the clear cell, so that four even shades stay even. Gamma-encoded in and out, 1.0 = reference
// white; the clear cell is darker. Alpha passes the tint on to the last pass, which needs the
// colour of the glass.
// Source of the weights: ITU-R BT.709.

layout(binding = 0) uniform sampler2D Source;

#define DMG_TINT pc.params[0]

void main()
{
    float light = luminance(decodeDisplay(texture(Source, texCoord).rgb));
    float level = min(encodeDisplay(vec3(light)).x, 1.0);
    fragColor = vec4(mix(dmgInk(DMG_TINT), dmgGlass(DMG_TINT), level), DMG_TINT);
}
