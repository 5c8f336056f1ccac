#include "VulkanRenderGraphCatalog.h"

#include "RenderGraphManifest.h"

#include <algorithm>
#include <iterator>

namespace {

using RenderGraphManifestData::ParamEntry;
using RenderGraphManifestData::PassEntry;
using RenderGraphManifestData::PresetEntry;
using RenderGraphManifestData::PresetParamEntry;
using VulkanRenderGraphCatalog::Parameter;
using VulkanRenderGraphCatalog::Preset;

QString nameOf(const PresetEntry &entry)
{
    const QString path = QString::fromUtf8(entry.presetQrcPath);
    const qsizetype start = path.lastIndexOf(u'/') + 1;
    return path.mid(start, path.lastIndexOf(u'.') - start);
}

VulkanRenderGraph::Pass passOf(const PassEntry &entry)
{
    VulkanRenderGraph::Pass pass;
    pass.fragmentSpirvResource = QString::fromUtf8(entry.fragmentSpirvResource);
    pass.vertexSpirvResource = QString::fromUtf8(entry.vertexSpirvResource);
    pass.debugName = QString::fromUtf8(entry.debugName);
    pass.format = static_cast<VulkanRenderGraph::Format>(entry.format);
    pass.scaleSource = static_cast<VulkanRenderGraph::ScaleSource>(entry.scaleSource);
    pass.scaleX = entry.scaleX;
    pass.scaleY = entry.scaleY;
    pass.absoluteWidth = entry.absoluteWidth;
    pass.absoluteHeight = entry.absoluteHeight;
    pass.scaleInputPassIndex = entry.scaleInputPassIndex;
    pass.linearFilter = entry.linearFilter;
    pass.mipmap = entry.mipmap;
    pass.cacheByParameters = entry.cacheByParameters;
    pass.constantBlackWhenZero = QString::fromUtf8(entry.constantBlackWhenZero);
    pass.constantBlackAlpha = entry.constantBlackAlpha;
    pass.shareConstantBlack = entry.shareConstantBlack;
    pass.wrapMode = entry.wrapMode;
    pass.isFeedbackTarget = entry.isFeedbackTarget;
    pass.isFeedbackReader = entry.isFeedbackReader;
    pass.isFinalPass = entry.isFinalPass;
    for (int i = 0; i < entry.sampledInputCount; ++i)
        pass.sampledInputs.append(VulkanRenderGraph::ResourceRef{entry.sampledInputs[i]});
    for (int i = 0; i < entry.paramCount; ++i) {
        const ParamEntry &param = entry.params[i];
        pass.params.append({QString::fromUtf8(param.id), param.floatOffset});
    }
    return pass;
}

VulkanRenderGraph graphOf(const PresetEntry &entry)
{
    VulkanRenderGraph graph;
    graph.presetQrcPath = QString::fromUtf8(entry.presetQrcPath);
    graph.feedbackPassIndex = entry.feedbackPassIndex;
    graph.finalRealPassRespondsToHdr = entry.finalRealPassRespondsToHdr;
    for (int i = 0; i < entry.passCount; ++i)
        graph.passes.append(passOf(entry.passes[i]));
    return graph;
}

QList<Parameter> parametersOf(const PresetEntry &entry)
{
    QList<Parameter> parameters;
    for (int i = 0; i < entry.presetParamCount; ++i) {
        const PresetParamEntry &param = entry.presetParams[i];
        parameters.append({QString::fromUtf8(param.id), QString::fromUtf8(param.description),
                           param.initialValue, param.defaultValue, param.min, param.max,
                           param.step});
    }
    return parameters;
}

} // namespace

QStringList VulkanRenderGraphCatalog::presetNames()
{
    QStringList names;
    for (const PresetEntry &entry : RenderGraphManifestData::kPresets)
        names.append(nameOf(entry));
    return names;
}

std::optional<Preset> VulkanRenderGraphCatalog::preset(QStringView name)
{
    const auto *const end = std::end(RenderGraphManifestData::kPresets);
    const auto *const entry = std::find_if(
            std::begin(RenderGraphManifestData::kPresets), end,
            [name](const PresetEntry &candidate) { return nameOf(candidate) == name; });
    if (entry == end)
        return std::nullopt;
    return Preset{graphOf(*entry), parametersOf(*entry), entry->vulkanOnly, entry->usesFrameCount};
}
