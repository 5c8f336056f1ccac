#pragma once

#include "PresetParameters.h"

#include <VulkanRenderGraph.h>

#include <QList>
#include <QString>

// One preset's results, as they reach the manifest.
struct EmittedPreset
{
    QString name;
    VulkanRenderGraph graph;
    QList<PresetParamMeta> presetParams;
    bool vulkanOnly = true;
    bool usesFrameCount = false;
};

// The body of a C string literal for `s`: quotes and backslashes escaped, all else as it is.
QString cEscape(const QString &s);

// A C++ float literal that reads back as exactly `v`. Not for infinities and NaN.
QString floatLiteral(float v);

// Writes the manifest header to `outPath`, replacing what was there. A file that cannot be opened
// is an error: one line on stderr, and false. Later write errors are not noticed. Preset names are
// trusted to give distinct C++ identifiers.
bool writeManifest(const QString &outPath, const QList<EmittedPreset> &presets);
