// What the passes of the edge-directed scaler write: in each channel the level, 0..4, of one corner
// of the pixel (upper left, upper right, lower right, lower left) and a flag. RGBA16F holds these
// small integers exactly.
const int kFullLevel = 4;
const int kFlagBit = 8;

// The flags, by channel.
const int kStraightAcross = 0; // a horizontal edge runs straight through the lower right corner
const int kStraightDown = 1; // a vertical one does
const int kSmooth = 2; // edges are to be blended
const int kDithered = 3; // the pixel is a dot of a dither

int levelOf(vec4 corners, int corner)
{
    return int(corners[corner] + 0.5) & (kFlagBit - 1);
}

bool flagOf(vec4 corners, int channel)
{
    return (int(corners[channel] + 0.5) & kFlagBit) != 0;
}

// The channel of the corner that lies in this diagonal direction.
int cornerTowards(ivec2 direction)
{
    return direction.y < 0 ? (direction.x < 0 ? 0 : 1) : (direction.x > 0 ? 2 : 3);
}

// A texel, or zeros beyond the edge of the picture.
vec4 fetchOrZero(sampler2D image, ivec2 at)
{
    ivec2 size = textureSize(image, 0);
    bool inside = all(greaterThanEqual(at, ivec2(0))) && all(lessThan(at, size));
    return inside ? texelFetch(image, at, 0) : vec4(0.0);
}

// A colour as scalefx-pass0 writes it. Beyond its edge the picture is mirrored, so that a dither
// goes on.
vec3 colorAt(sampler2D colors, ivec2 at)
{
    ivec2 last = textureSize(colors, 0) - 1;
    ivec2 mirrored = last - abs(last - abs(at));
    return texelFetch(colors, max(mirrored, ivec2(0)), 0).rgb;
}

// What the last pass reads for each side of a pixel. From either end of the side a wedge of the
// neighbour's colour may reach into the pixel. The wedge is half a pixel high at the edge's step,
// which is `away` pixels beyond this pixel's end, and its height falls to 0 after half of `run`
// pixels.
const int kMaxRun = 6;
const int kMaxStepDistance = 2;
const int kWedgeCodes = 1 + kMaxRun * (kMaxStepDistance + 1);

struct Wedge
{
    int run;
    int away;
    int level;
};

const Wedge kNoWedge = Wedge(0, 0, 0);

int wedgeCode(Wedge wedge)
{
    return wedge.run > 0 ? 1 + (wedge.run - 1) * (kMaxStepDistance + 1) + wedge.away : 0;
}

Wedge wedgeOf(int code, int level)
{
    int index = max(code - 1, 0);
    int run = code > 0 ? 1 + index / (kMaxStepDistance + 1) : 0;
    return Wedge(run, index % (kMaxStepDistance + 1), level);
}

// Both wedges as one number below 2048. It is negative if the edge is to be blended.
float packSide(Wedge first, Wedge second, bool smoothed)
{
    int level = max(max(first.level, second.level), 1) - 1;
    int side = wedgeCode(first) + kWedgeCodes * (wedgeCode(second) + kWedgeCodes * level);
    return smoothed ? -float(side) : float(side);
}
