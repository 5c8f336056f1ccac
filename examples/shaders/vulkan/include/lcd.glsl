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

// The cell after `frames` frames of 1/60 s, each of which covers `rate` of the remaining difference.
// A history of few bits would stop short of the drive; the minimum speed prevents that.
vec3 followDrive(vec3 cell, vec3 drive, vec3 rate, float frames)
{
    const float kMinSpeed = 0.6 / 255.0;
    vec3 covered = 1.0 - pow(1.0 - clamp(rate, 0.0, 1.0), vec3(frames));
    vec3 distanceLeft = abs(drive - cell);
    vec3 moved = max(distanceLeft * covered, kMinSpeed * frames);
    return mix(cell + sign(drive - cell) * moved, drive, greaterThanEqual(moved, distanceLeft));
}

// The response of a cell: it approaches its drive exponentially, at different rates upwards
// (brighter) and downwards. The encoded value stands for the tilt of the molecules, which relaxes
// exponentially; the light is roughly the square of the tilt. Alpha is passed through.
// Source: Jakeman and Raynes, "Electro-optic response times in liquid crystals", 1972.
vec4 cellResponse(vec4 drive, vec3 last, float rise, float fall, float hdrSpeed)
{
    float frames = pc.frameSeconds > 0.0 ? 60.0 * pc.frameSeconds : 1.0;
    // A bright trail is more disturbing in HDR, so time may run faster there.
    float speed = pc.hdrOutputActive != 0u ? hdrSpeed : 1.0;
    vec3 rate = mix(vec3(fall), vec3(rise), greaterThan(drive.rgb, last));
    return vec4(followDrive(last, drive.rgb, rate, frames * speed), drive.a);
}

// Integral of clamp(t, 0, 1) from 0 to t.
vec3 rampIntegral(vec3 t)
{
    vec3 inside = clamp(t, 0.0, 1.0);
    return inside * (t - 0.5 * inside);
}

float rampIntegral(float t)
{
    return rampIntegral(vec3(t)).x;
}

// The length of first..last within begin..end, whose edges are ramps of width `softness`.
vec3 softOverlap(vec3 first, vec3 last, vec3 begin, vec3 end, float softness)
{
    float scale = 1.0 / softness;
    vec3 rise = rampIntegral((last - begin) * scale + 0.5)
        - rampIntegral((first - begin) * scale + 0.5);
    vec3 fall = rampIntegral((last - end) * scale + 0.5)
        - rampIntegral((first - end) * scale + 0.5);
    return (rise - fall) * softness;
}

// The length of first..last within begin..end, per axis.
vec2 overlap(vec2 first, vec2 last, vec2 begin, vec2 end)
{
    return max(min(last, end) - max(first, begin), 0.0);
}
