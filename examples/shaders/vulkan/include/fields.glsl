// The time that the picture has run; include component.glsl first.

// Long enough that nobody sees a pattern start over, short enough for a float.
const uint kLoopFrames = 65536u;

// In fields of 1/60 s. The display's rate does not matter.
float fieldsShown()
{
    return float(60u * (pc.frameCount % kLoopFrames)) / framesPerSecond;
}
