#pragma once

#include "PresetParameters.h"

#include <VulkanRenderGraph.h>

#include <QList>
#include <QString>

// What the manifest holds of one preset.
struct EmittedPreset
{
    QString name;
    VulkanRenderGraph graph;
    QList<PresetParamMeta> presetParams;
    bool vulkanOnly = true;
    bool usesFrameCount = false;
};

// The body of a C string literal for `s`: escapes quotes and backslashes only.
QString cEscape(const QString &s);

// A C++ float literal that reads back as exactly `v`. Not for infinities and NaN.
QString floatLiteral(float v);

// Writes the manifest header to `outPath` and replaces what was there. If the file cannot be
// opened, prints one line on stderr and returns false. Later write errors are not detected. The
// presets' names must give distinct C++ identifiers.
bool writeManifest(const QString &outPath, const QList<EmittedPreset> &presets);
