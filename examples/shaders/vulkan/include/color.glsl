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

vec3 decodeDisplay(vec3 signal)
{
    return pow(max(signal, 0.0), vec3(kDisplayGamma));
}

vec3 encodeDisplay(vec3 light)
{
    return pow(max(light, 0.0), vec3(1.0 / kDisplayGamma));
}
