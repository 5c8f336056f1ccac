#pragma once

#include "PresetOnDisk.h"

#include <QHash>
#include <QString>

// Values of a preset's parameters as texts. Maps hold values by id.

// The shortest decimal text that parses to the same float, with a '.': a C++ literal without its
// suffix.
QString numberText(float value);

// What makes the values a preset's tuned ones, to be pasted: the rows of its value overrides in
// FirstPartyPresets.h. Without such rows, their array and the fields of the preset's row that name
// it; with a .glslp file, its lines. Empty if the values are the tuned ones already.
QString declaredText(const PresetOnDisk &preset, const QHash<QString, float> &values);

// All values in the form of a .glslp file.
QString glslpText(const PresetOnDisk &preset, const QHash<QString, float> &values);

// Reads the values in the `parameters` list of a .glslp file. On failure returns false, with the
// reason in `error`, and leaves `values` alone: each has to be one of the preset's, in its range.
bool readGlslp(const QString &path, const PresetOnDisk &preset, QHash<QString, float> &values,
               QString &error);
