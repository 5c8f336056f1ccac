// What the passes of the tube share: area means, blurs, Gaussian integrals, the shape of the face.

// RGB repeats of the phosphor tile in each direction; its cells are square. With four, staggered
// slots are seamless, and hexagonal dots very nearly.
const float kTileTriads = 4.0;

const int kMaxAreaTaps = 64;
const int kMaxBlurReach = 24; // three times the widest sigma, 8

// The standard normal distribution function, at most 1.4e-4 off: Bowling et al., "A logistic
// approximation to the cumulative normal distribution", 2009. It is exactly antisymmetric about 1/2:
// its differences over adjoining intervals sum to 1.
float normalCdf(float x)
{
    float z = clamp(x, -6.0, 6.0);
    return 1.0 / (1.0 + exp(-z * (1.5976 + 0.07056 * z * z)));
}

vec3 normalCdf(vec3 x)
{
    vec3 z = clamp(x, -6.0, 6.0);
    return 1.0 / (1.0 + exp(-z * (1.5976 + 0.07056 * z * z)));
}

float minComponent(vec3 v)
{
    return min(v.r, min(v.g, v.b));
}

float maxComponent(vec3 v)
{
    return max(v.r, max(v.g, v.b));
}

// The most that the display can show, in parts of the tube's white. An hdrPeak of 0 is the
// display's own.
float shownPeak(float hdrPeak, float crtWhite)
{
    if (pc.hdrOutputActive == 0u)
        return 1.0;
    return (hdrPeak > 0.0 ? hdrPeak : max(pc.hdrHeadroom, 1.0)) * 100.0 / max(crtWhite, 1.0);
}

// The integral of a Gaussian filter of finite reach, from its middle to x, where x is in units of
// the reach: -1/2 at -1, 1/2 at 1. A polynomial approximation of the normal distribution function,
// at most 0.002 off, with slope 0 at both ends.
const float kReach = 2.9; // in sigmas

const vec4 kGaussianTerms = vec4(1.145458, -1.418756, 1.151138, -0.37784);

float gaussianIntegral(float x)
{
    const vec4 k = kGaussianTerms;
    float z = clamp(x, -1.0, 1.0);
    float square = z * z;
    return z * (k.x + square * (k.y + square * (k.z + square * k.w)));
}

vec3 filterIntegral(vec3 x, vec3 a, vec3 b, vec3 c, vec3 d)
{
    vec3 z = clamp(x, -1.0, 1.0);
    vec3 square = z * z;
    return z * (a + square * (b + square * (c + square * d)));
}

vec3 gaussianIntegral(vec3 x)
{
    const vec4 k = kGaussianTerms;
    return filterIntegral(x, vec3(k.x), vec3(k.y), vec3(k.z), vec3(k.w));
}

// The mean over one cell of a grid that covers the image. A texel on the edge between cells counts
// in each by area, so that all cells together count every texel exactly once at any two sizes.
vec3 areaMean(sampler2D image, vec2 cell, vec2 cells)
{
    ivec2 size = textureSize(image, 0);
    vec2 low = cell * vec2(size) / cells;
    vec2 high = (cell + 1.0) * vec2(size) / cells;
    ivec2 first = ivec2(floor(low));
    ivec2 last = min(min(ivec2(ceil(high)), size), first + kMaxAreaTaps) - 1;
    vec3 sum = vec3(0.0);
    float area = 0.0;
    for (int y = first.y; y <= last.y; ++y) {
        float height = min(high.y, float(y + 1)) - max(low.y, float(y));
        for (int x = first.x; x <= last.x; ++x) {
            float weight = height * (min(high.x, float(x + 1)) - max(low.x, float(x)));
            sum += weight * texelFetch(image, ivec2(x, y), 0).rgb;
            area += weight;
        }
    }
    return sum / max(area, 1e-6);
}

// One direction of a separable Gaussian with weights that sum to 1; sigma in steps.
vec3 gaussianBlur(sampler2D image, vec2 position, vec2 stride, float sigma)
{
    float width = max(sigma, 1e-3);
    int reach = min(int(ceil(3.0 * width)), kMaxBlurReach);
    vec3 sum = texture(image, position).rgb;
    float weights = 1.0;
    for (int i = 1; i <= reach; ++i) {
        float offset = float(i);
        float weight = exp(-0.5 * offset * offset / (width * width));
        sum += weight * texture(image, position + offset * stride).rgb;
        sum += weight * texture(image, position - offset * stride).rgb;
        weights += 2.0 * weight;
    }
    return sum / weights;
}

// From a place on the screen to one on the tube's face, both -0.5..0.5 over the output. Second-order
// radial distortion (D. C. Brown, "Decentering distortion of lenses", 1966), scaled so that the
// middles of the four edges do not move and only the corners are drawn in.
vec2 facePosition(vec2 centred, float barrel)
{
    return centred * (1.0 + 4.0 * barrel * dot(centred, centred)) / (1.0 + barrel);
}

// The part of the pixel that the face covers, from the signed distance to a rectangle with rounded
// corners. `radius` and `pixel` are in picture heights.
float faceCoverage(vec2 face, float aspect, float radius, float pixel)
{
    vec2 beyond = abs(face) * vec2(aspect, 1.0) - (vec2(0.5 * aspect, 0.5) - radius);
    float outside = length(max(beyond, 0.0)) + min(max(beyond.x, beyond.y), 0.0) - radius;
    // Slightly more than half: pixels along the screen's edges are fully covered despite rounding.
    return clamp(0.501 - outside / pixel, 0.0, 1.0);
}
