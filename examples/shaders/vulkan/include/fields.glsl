// The time that the picture has run; include component.glsl first.

// Long enough that nobody sees a pattern start over, short enough for a float.
const uint kLoopSeconds = 1000u;

// The nearest of the rates that displays have. They are so far apart that a frame that comes a little
// late or early is not taken for one of another rate, which would set the clock.
uint displayRate(float frameSeconds)
{
    if (frameSeconds <= 0.0)
        return 60u; // not known
    return frameSeconds > 0.0183 ? 50u
           : frameSeconds > 0.0139 ? 60u
           : frameSeconds > 0.0097 ? 90u
           : frameSeconds > 0.0076 ? 120u
           : frameSeconds > 0.0056 ? 144u
                                   : 240u;
}

// Fields of 1/60 s that the picture has run, at any rate of the display.
float fieldsShown()
{
    uint rate = displayRate(pc.frameSeconds);
    return float(60u * (pc.frameCount % (kLoopSeconds * rate))) / float(rate);
}
