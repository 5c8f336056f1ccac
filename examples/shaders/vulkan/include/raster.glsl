// Where the picture lies on the tube's face. Include crt.glsl first, and name the
// slots of raster_lines, raster_offset, raster_interlace, overscan and barrel_distortion.

const float kMaxFieldLines = 288.0;

struct Raster
{
    float lines; // of one field, over the face's height
    float shift; // of the field, in its lines
    float top; // of the picture, in lines
    float bottom;
    float rowsPerLine; // rows from line to line
    float rowsShown; // how many of them a line shows
    float fetches; // the most rows that a line overlaps
};

// A picture that nearly fills its standard's raster has a line for each row, and the face shows
// just those lines: a 224-line picture fills the screen, as on a set adjusted to hide the blank
// lines, and its rows stay sharp. A much lower picture (a handheld's) is spread over all lines of
// the raster. The standards are those of ITU-R BT.1700: 525 lines with 240 or 480 visible, and 625
// with 288 or 576, which a picture of more than 240 or 480 rows always nearly fills.
float chosenLines(float rows)
{
    float standard = rows <= kMaxFieldLines ? 240.0 : 480.0;
    return rows < 0.75 * standard ? standard : rows;
}

// How many lines of the raster show the picture.
float linesShown(float rows, float lines)
{
    bool doubled = abs(2.0 * rows - lines) <= 0.125 * lines;
    return min(doubled ? 2.0 * rows : rows, lines);
}

// The raster of one field of a picture of so many rows. With alternating fields it is `fieldShift`
// of its lines lower.
Raster rasterFor(float rows, float fieldShift)
{
    bool chosen = raster_lines < 1.0;
    float lines = chosen ? chosenLines(rows) : floor(raster_lines);
    bool alternating = raster_interlace > 0.5;
    bool woven = alternating && rows > kMaxFieldLines; // the picture holds both fields
    float perField = alternating && lines > kMaxFieldLines ? 0.5 : 1.0;
    float shift = alternating ? fieldShift : 0.0;
    float fieldRows = woven ? 0.5 * rows : rows;
    lines *= perField;
    float taken = chosen ? lines : linesShown(fieldRows, lines);
    float top = woven ? raster_offset * perField - shift : floor(raster_offset * perField);
    float rowsPerLine = rows / taken;
    float rowsShown = woven ? 0.5 * rowsPerLine : rowsPerLine;
    float fetches = rowsShown == 1.0 || rowsShown == 0.5 ? 1.0 : ceil(rowsShown) + 1.0;
    return Raster(lines, shift, top, min(top + taken, lines), rowsPerLine, rowsShown, fetches);
}

// The part of the picture on a screen of this aspect; overscan moves the rest outside.
vec2 shownPart(float aspect)
{
    return 1.0 - 2.0 * overscan * vec2(1.0 / aspect, 1.0);
}

// 0..1 over the picture, including what overscan moves outside the face. Blanking lies beyond.
vec2 picturePosition(vec2 centred, float aspect)
{
    return 0.5 + facePosition(centred, barrel_distortion) * shownPart(aspect);
}
