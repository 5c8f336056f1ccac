// Helpers of the liquid crystal panel components; include component.glsl first.

// Linear light of a 27 % NTSC colour panel with a D65 white, primaries (0.510, 0.335),
// (0.325, 0.495) and (0.180, 0.160), in BT.709 primaries (SMPTE RP 177-1993). One row per output
// channel, each summing to 1: multiply as `light * kPanelRows`.
const mat3 kPanelRows = mat3(0.755, 0.235, 0.010,
                             0.100, 0.721, 0.179,
                             0.088, 0.125, 0.787);

// The clear and the dark cell of the grey panel, gamma-encoded; tinted and grey are equally bright.
const vec3 kGreyGlass = vec3(0.665);
const vec3 kGreenGlass = vec3(0.62, 0.70, 0.36);
const vec3 kGreyInk = vec3(0.184);
const vec3 kGreenInk = vec3(0.13, 0.20, 0.14);

vec3 dmgGlass(float tint)
{
    return mix(kGreyGlass, kGreenGlass, tint);
}

vec3 dmgInk(float tint)
{
    return mix(kGreyInk, kGreenInk, tint);
}

// Time since the last frame in frames of 1/60 s.
float elapsedFrames()
{
    return pc.frameSeconds > 0.0 ? 60.0 * pc.frameSeconds : 1.0;
}

// The cell after `frames` frames of a first-order approach that covers `rate` of the remaining
// difference in each. The least step keeps an 8-bit history from stalling short of the drive.
vec3 followDrive(vec3 cell, vec3 drive, vec3 rate, float frames)
{
    const float kLeastStep = 0.6 / 255.0;
    vec3 covered = 1.0 - pow(1.0 - clamp(rate, 0.0, 1.0), vec3(frames));
    vec3 distanceLeft = abs(drive - cell);
    vec3 moved = max(distanceLeft * covered, kLeastStep);
    return mix(cell + sign(drive - cell) * moved, drive, greaterThanEqual(moved, distanceLeft));
}

// Integral of clamp(t, 0, 1) from 0 to t.
float rampIntegral(float t)
{
    float inside = clamp(t, 0.0, 1.0);
    return 0.5 * inside * inside + max(t - 1.0, 0.0);
}

// How much of first..last lies in begin..end, whose edges are ramps of width `softness`.
float softOverlap(float first, float last, float begin, float end, float softness)
{
    float scale = 1.0 / softness;
    float rise = rampIntegral((last - begin) * scale + 0.5)
        - rampIntegral((first - begin) * scale + 0.5);
    float fall = rampIntegral((last - end) * scale + 0.5)
        - rampIntegral((first - end) * scale + 0.5);
    return (rise - fall) * softness;
}

// How much of first..last lies in begin..end, per axis.
vec2 overlap(vec2 first, vec2 last, vec2 begin, vec2 end)
{
    return max(min(last, end) - max(first, begin), 0.0);
}
