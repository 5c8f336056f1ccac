#pragma once
#include "../VulkanRenderGraph.h"
#include <QByteArray>
namespace VulkanGraph {
inline bool checkFragmentModule(const QByteArray &, const VulkanRenderGraph &, int, QString &)
{
    return true;
}
inline bool checkVertexModule(const QByteArray &, QString &)
{
    return true;
}
} // namespace VulkanGraph
