#pragma once

#include "PresetDeclarations.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

// One parameter of a preset as the user interface shows it.
struct PresetParamMeta
{
    QString id;
    QString description;
    float initialValue = 0.0F; // the preset's tuned value
    float defaultValue = 0.0F;
    float min = 0.0F;
    float max = 1.0F;
    float step = 0.1F;

    bool operator==(const PresetParamMeta &) const = default;
};

// Fills `out` with each parameter that the preset's passes declare, once, in order of first
// declaration. Tuned values come from <shadersDir>/<preset>.glslp. Without that file they come from
// the declaration's overrides, and one line on stdout says so. A .glslp file whose `parameters`
// list is not the preset's set of ids is an error: prints one line on stderr and returns false.
bool collectPresetParameters(const QString &shadersDir,
                             const FirstPartyPresetSource::PresetDecl &decl,
                             QList<PresetParamMeta> &out);

// The numbers that a .glslp file assigns to names, whether of parameters or not. The last
// assignment to a name counts. Empty if the file cannot be read.
QHash<QString, float> presetValueOverrides(const QString &glslpPath);

// The `parameters` list of a .glslp file. Sets `listLine` to its line, counted from 1, or to 0 if
// there is no list or the file cannot be read.
QStringList presetDeclaredParameterList(const QString &glslpPath, int *listLine = nullptr);
