#pragma once

#include "VulkanRenderGraph.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

// Reads an application's generated manifest by preset name: the file stem of the preset's resource,
// such as "crt-pvm". It is compiled together with that manifest, which it includes as
// "RenderGraphManifest.h".
namespace VulkanRenderGraphCatalog {

// One parameter as a user interface shows it.
struct Parameter
{
    QString id;
    QString description;
    float initialValue = 0.0F; // the preset's tuned value
    float defaultValue = 0.0F;
    float min = 0.0F;
    float max = 0.0F;
    float step = 0.0F;
};

struct Preset
{
    VulkanRenderGraph graph;
    QList<Parameter> parameters;
    bool vulkanOnly = false; // no text of the preset ships for the GL renderer
    bool usesFrameCount = false; // the picture moves by itself
};

// In the manifest's order.
QStringList presetNames();

// Nothing if the manifest has no such preset.
std::optional<Preset> preset(QStringView name);

} // namespace VulkanRenderGraphCatalog
