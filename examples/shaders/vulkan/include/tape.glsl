#include "fields.glsl"

// What the passes of the tape share; include component.glsl first. The parameters count columns and
// lines of a picture of 320x240, whatever the size and aspect of the one that is shown: the signal of
// a line lasts as long in any of them.
const float kColumns = 320.0;
const float kLines = 240.0;

// The heads are switched up to 8 lines before the vertical synchronisation (IEC 60774-1), three of
// which are not shown.
const float kSwitchLine = kLines - 5.0;
