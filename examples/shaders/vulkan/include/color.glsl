// Colour helpers that several components share.

// ITU-R BT.709: what each linear primary adds to luminance.
const vec3 kLuminanceWeights = vec3(0.2126, 0.7152, 0.0722);

// ITU-R BT.601: what each gamma-encoded primary adds to luma.
const vec3 kLumaWeights = vec3(0.299, 0.587, 0.114);

// The presets' display: a pure power, 1.0 is reference white.
const float kDisplayGamma = 2.2;

float luminance(vec3 light)
{
    return dot(light, kLuminanceWeights);
}

vec3 decodeDisplay(vec3 signal)
{
    return pow(max(signal, 0.0), vec3(kDisplayGamma));
}

vec3 encodeDisplay(vec3 light)
{
    return pow(max(light, 0.0), vec3(1.0 / kDisplayGamma));
}
