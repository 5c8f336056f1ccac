#pragma once

#include <VulkanRenderGraph.h>

#include <QByteArray>
#include <QString>

// Hold a compiled module against what the renderer gives a component, before Vulkan sees it. The
// module may be optimized or not, and may come from anywhere: a damaged one is refused. Each
// function returns whether the module can be drawn with, and if not sets `error` to one line
// without a file name.
namespace VulkanGraph {

// For the fragment shader of the pass with this index, which exists in `graph`. What the module
// declares but does not use is no error.
bool checkFragmentModule(const QByteArray &spirv, const VulkanRenderGraph &graph, int pass,
                         QString &error);

bool checkVertexModule(const QByteArray &spirv, QString &error);

} // namespace VulkanGraph
