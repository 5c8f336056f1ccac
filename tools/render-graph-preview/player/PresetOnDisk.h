#pragma once

#include <OffscreenRenderer.h>
#include <PresetParameters.h>
#include <VulkanRenderGraph.h>

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <span>

// A preset, compiled in process from its declaration and the sources in a shaders directory. Needs
// neither a manifest nor a build.
struct PresetOnDisk
{
    QString name;
    VulkanRenderGraph graph;
    QList<PresetParamMeta> parameters; // in the manifest's order
    ShaderModules modules; // all that the graph refers to
    std::span<const FirstPartyPresetSource::ValueOverride> overrides; // as declared
    bool hasGlslp = false; // tuned values come from that file instead
    // The files to watch: those that were read, and those that would have been read if they
    // existed. Each once, in the order of reading. Relative if the shaders directory is.
    QStringList files;
};

// The names of all presets, in the manifest's order.
QStringList presetNames();

// Reads all files anew. On failure `error` is one line per error: lines about shader code begin
// with
// "<file>:<line>: ", and the compiler's line about a component is followed by one with its place,
// if the first does not say it. `preset` then has its name and the files up to the error, and the
// rest may be incomplete.
bool loadPreset(const QString &shadersDir, const QString &name, PresetOnDisk &preset,
                QString &error);

// The initial (tuned) values of all parameters, by id.
QHash<QString, float> initialValues(const QList<PresetParamMeta> &parameters);
