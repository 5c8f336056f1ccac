// What the passes of the edge-directed scaler hand on: in each channel a level, 0..4, of one corner
// of the pixel (upper left, upper right, lower right, lower left) and a flag. These are small
// integers, which RGBA16F holds exactly.
const int kFullLevel = 4;
const int kFlagBit = 8;

// The flags, by channel.
const int kStraightAcross = 0; // a horizontal edge runs straight through the lower right corner
const int kStraightDown = 1; // a vertical one does
const int kSmooth = 2; // edges are to be blended

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

// A texel, or nothing beyond the edge of the picture.
vec4 fetchOrNothing(sampler2D image, ivec2 at)
{
    ivec2 size = textureSize(image, 0);
    bool inside = all(greaterThanEqual(at, ivec2(0))) && all(lessThan(at, size));
    return inside ? texelFetch(image, at, 0) : vec4(0.0);
}

// What the last pass gets for a side of a pixel: from each of the side's ends a wedge of another
// colour may reach in. The edge falls from half a pixel at the step, `away` pixels beyond this
// pixel's end, to nothing after half of `run` pixels.
const int kLongestRun = 6;
const int kFarthestStep = 2;
const int kWedgeCodes = 1 + kLongestRun * (kFarthestStep + 1);

struct Wedge
{
    int run;
    int away;
    int level;
};

const Wedge kNoWedge = Wedge(0, 0, 0);

int wedgeCode(Wedge wedge)
{
    return wedge.run > 0 ? 1 + (wedge.run - 1) * (kFarthestStep + 1) + wedge.away : 0;
}

Wedge wedgeOf(int code, int level)
{
    int index = max(code - 1, 0);
    int run = code > 0 ? 1 + index / (kFarthestStep + 1) : 0;
    return Wedge(run, index % (kFarthestStep + 1), level);
}

// Below 2048 in magnitude; the sign says whether the edge is blended.
float packSide(Wedge first, Wedge second, bool smoothed)
{
    int level = max(max(first.level, second.level), 1) - 1;
    int side = wedgeCode(first) + kWedgeCodes * (wedgeCode(second) + kWedgeCodes * level);
    return smoothed ? -float(side) : float(side);
}
