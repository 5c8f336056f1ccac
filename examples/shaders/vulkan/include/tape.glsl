// What the passes of the tape share; include component.glsl first. The parameters count columns and
// lines of a picture of 320x240, whatever the size and aspect of the one that is shown: the signal of
// a line lasts as long in any of them.
const float kColumns = 320.0;
const float kLines = 240.0;

// The heads are switched up to 8 lines before the vertical synchronisation (IEC 60774-1), three of
// which are not shown.
const float kSwitchLine = kLines - 5.0;

// Rates of displays, far enough apart that a frame that comes a little late or early is not taken
// for one of another rate, which would set the clock.
const float kRates[] = float[](50.0, 60.0, 90.0, 120.0, 144.0, 240.0);
// Long enough that nobody sees a pattern start over, short enough for a float.
const uint kLoopSeconds = 1000u;

// Fields of 1/60 s that the picture has run, at any rate of the display.
float fieldsShown()
{
    float rate = 60.0;
    for (int i = 0; i < kRates.length() && pc.frameSeconds > 0.0; ++i) {
        float off = abs(pc.frameSeconds - 1.0 / kRates[i]);
        rate = off < abs(pc.frameSeconds - 1.0 / rate) ? kRates[i] : rate;
    }
    return float(60u * (pc.frameCount % (kLoopSeconds * uint(rate)))) / rate;
}
