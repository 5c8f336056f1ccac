#include "fields.glsl"

// What the passes of the tape share; include component.glsl first. Parameters are in columns and
// lines of a 320x240 picture, whatever the size and aspect of the source: a line of the signal
// always lasts equally long.
const float kColumns = 320.0;
const float kLines = 240.0;

// The heads are switched up to 8 lines before the vertical synchronisation (IEC 60774-1). Three of
// those lines are not visible.
const float kSwitchLine = kLines - 5.0;
