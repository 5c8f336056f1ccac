// The time that the picture has run; include component.glsl first.

// Long enough that nobody sees a pattern start over, short enough for a float.
const uint kLoopFrames = 65536u;

// The nearest refresh rate of common displays. The thresholds are midway between rates, so that a
// frame that comes a little late or early does not count as one of another rate and make the time
// jump.
float displayRate(float frameSeconds)
{
    if (frameSeconds <= 0.0)
        return 60.0; // not known
    return frameSeconds > 2.0 / (50.0 + 60.0)     ? 50.0
           : frameSeconds > 2.0 / (60.0 + 90.0)   ? 60.0
           : frameSeconds > 2.0 / (90.0 + 120.0)  ? 90.0
           : frameSeconds > 2.0 / (120.0 + 144.0) ? 120.0
           : frameSeconds > 2.0 / (144.0 + 240.0) ? 144.0
                                                  : 240.0;
}

// The time that the picture has run in fields of 1/60 s, at any refresh rate.
float fieldsShown()
{
    return float(60u * (pc.frameCount % kLoopFrames)) / displayRate(pc.frameSeconds);
}
