#version 450

// Shows a picture on an SDR display: see ViewInput.

layout(location = 0) out vec4 fragColor;

layout(binding = 0) uniform sampler2D Picture;
layout(binding = 1) uniform sampler2D Compared;

layout(push_constant) uniform View
{
    vec4 placement; // left, top, width and height, in pixels
    float shift; // of the right one of two pictures side by side, in pixels
    float split; // the line's left edge, in pixels; no line if negative
    float differenceGain; // 0: no difference
    float headroom; // 0: SDR
    float comparedHeadroom;
    float exposure;
    int channel; // -1: colours
} view;

const vec3 kSurround = vec3(24.0 / 255.0);
const float kGamma = 2.2;
const float kLargest = 65504.0;

// NaN becomes black.
vec3 positive(vec3 color)
{
    return mix(vec3(0.0), min(color, kLargest), greaterThan(color, vec3(0.0)));
}

// Up to reference white it gets a little darker, to make room for the headroom above.
vec3 toneMapped(vec3 light, float headroom)
{
    return light * (1.0 + light / (headroom * headroom)) / (1.0 + light);
}

// The colour of a pixel: of the texel at its centre, or the mean light of the texels that it
// covers, each weighted by the covered part.
vec3 shown(sampler2D picture, float headroom, vec2 pixel)
{
    const ivec2 size = textureSize(picture, 0);
    const vec2 scale = vec2(size) / view.placement.zw;
    const vec2 centre = floor(pixel * scale);
    const bvec2 isNearest = lessThanEqual(scale, vec2(1.0));
    const vec2 low = mix((pixel - 0.5) * scale, centre, isNearest);
    const vec2 high = mix((pixel + 0.5) * scale, centre + 1.0, isNearest);
    const ivec2 first = clamp(ivec2(floor(low)), ivec2(0), size - 1);
    const ivec2 last = clamp(ivec2(ceil(high)) - 1, ivec2(0), size - 1);
    const bool isLinear = headroom > 0.0;
    vec4 color = texelFetch(picture, first, 0);
    color.rgb = positive(color.rgb);
    if (isLinear || view.exposure != 1.0 || first != last) {
        vec4 sum = vec4(0.0);
        float weights = 0.0;
        for (int y = first.y; y <= last.y; ++y) {
            for (int x = first.x; x <= last.x; ++x) {
                const vec2 at = vec2(x, y);
                const vec2 covered = min(at + 1.0, high) - max(at, low);
                const float weight = max(covered.x * covered.y, 1e-9);
                const vec4 texel = texelFetch(picture, ivec2(x, y), 0);
                const vec3 value = positive(texel.rgb);
                sum += weight * vec4(isLinear ? value : pow(value, vec3(kGamma)), texel.a);
                weights += weight;
            }
        }
        color = sum / weights;
        color.rgb *= view.exposure;
        color.rgb = pow(isLinear ? toneMapped(color.rgb, headroom) : color.rgb, vec3(1.0 / kGamma));
    }
    return view.channel < 0 ? color.rgb : vec3(positive(vec3(color[view.channel])));
}

vec3 viewed(vec2 pixel)
{
    const bool isRight = view.shift > 0.0 && pixel.x >= view.shift;
    const vec2 at = pixel - view.placement.xy - vec2(isRight ? view.shift : 0.0, 0.0);
    if (any(lessThan(at, vec2(0.0))) || any(greaterThanEqual(at, view.placement.zw)))
        return kSurround;
    if (view.differenceGain > 0.0)
        return abs(shown(Picture, view.headroom, at) - shown(Compared, view.comparedHeadroom, at)) * view.differenceGain;
    if (pixel.x >= view.split && pixel.x < view.split + 2.0)
        return vec3(1.0);
    const bool isCompared = view.shift > 0.0 ? !isRight : pixel.x < view.split;
    return isCompared ? shown(Compared, view.comparedHeadroom, at) : shown(Picture, view.headroom, at);
}

void main()
{
    // Rounded to the nearest of 8 bits, on every device alike.
    const vec3 color = min(viewed(gl_FragCoord.xy), 1.0);
    fragColor = vec4(floor(color * 255.0 + 0.5) / 255.0, 1.0);
}
