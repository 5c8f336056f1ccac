#pragma once

#include <PresetParameters.h>
#include <VulkanRenderGraph.h>

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

// SPIR-V modules by the names under which a graph asks for them.
using ShaderModules = QHash<QString, QByteArray>;

// One preset, compiled in process from its declaration and a shaders directory: neither a manifest
// nor a build is needed.
struct PresetOnDisk
{
    QString name;
    VulkanRenderGraph graph;
    QList<PresetParamMeta> parameters; // in the manifest's order
    ShaderModules modules; // every one that the graph names
    // Every file that was read, and those that would have been had they existed: what to watch.
    // Each once, in order of reading; relative if the shaders directory is. Complete up to the
    // error if there is one.
    QStringList files;
    // Empty when all went well. Else what is wrong, a line each; a line about shader code begins
    // with "<file>:<line>: ". What the tool would say is followed by a line that says where, if it
    // does not. The graph and the modules are then unfinished.
    QString error;
};

// The names of all presets, in the manifest's order.
QStringList presetNames();

// Reads everything anew. A name that no preset has is an error that lists those there are.
PresetOnDisk loadPreset(const QString &shadersDir, const QString &name);

// The initial (tuned) values of all parameters, by id.
QHash<QString, float> initialValues(const QList<PresetParamMeta> &parameters);
