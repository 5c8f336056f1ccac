// Colour helpers that several components share.

// ITU-R BT.709: the weights of linear primaries in luminance, and of gamma-encoded ones in luma.
const vec3 kBt709Weights = vec3(0.2126, 0.7152, 0.0722);

// ITU-R BT.601: the weights of gamma-encoded primaries in luma.
const vec3 kBt601Weights = vec3(0.299, 0.587, 0.114);

// The presets' display: a pure power, 1.0 is reference white.
const float kDisplayGamma = 2.2;

float luminance(vec3 light)
{
    return dot(light, kBt709Weights);
}

float lumaBt709(vec3 signal)
{
    return dot(signal, kBt709Weights);
}

float lumaBt601(vec3 signal)
{
    return dot(signal, kBt601Weights);
}

// Luma, I and Q of a gamma-encoded colour, and back (SMPTE 170M).
vec3 toYiq(vec3 signal)
{
    return vec3(lumaBt601(signal), dot(signal, vec3(0.5959006, -0.2745567, -0.3213439)),
                dot(signal, vec3(0.2115366, -0.5227362, 0.3111996)));
}

vec3 fromYiq(vec3 yiq)
{
    return vec3(dot(yiq, vec3(1.0, 0.9559863, 0.6208248)),
                dot(yiq, vec3(1.0, -0.2720128, -0.6472042)),
                dot(yiq, vec3(1.0, -1.1067402, 1.7042305)));
}

vec3 decodeDisplay(vec3 signal)
{
    return pow(max(signal, 0.0), vec3(kDisplayGamma));
}

vec3 encodeDisplay(vec3 light)
{
    return pow(max(light, 0.0), vec3(1.0 / kDisplayGamma));
}

// Gives saturated colours a part of the display's headroom: multiplies light, 1.0 = reference white,
// by 1 + 0.5 * (min(headroom, 2) - 1) * saturation * min(peak, 1)^2, with peak its largest and
// saturation (largest - smallest) / largest channel, but not beyond the headroom. At a headroom of 1
// nothing changes. Source of the saturation: Smith, SIGGRAPH 1978 (HSV).
vec3 boostSaturated(vec3 light, float headroom)
{
    const float kBoost = 0.5;
    const float kMaxHeadroomUsed = 2.0;
    float peak = max(light.r, max(light.g, light.b));
    float least = min(light.r, min(light.g, light.b));
    float saturation = (peak - least) / max(peak, 1e-6);
    float bright = min(peak, 1.0);
    float gain = 1.0
        + kBoost * (min(headroom, kMaxHeadroomUsed) - 1.0) * saturation * bright * bright;
    float limit = max(headroom / max(peak, 1e-6), 1.0);
    return light * min(gain, limit);
}
