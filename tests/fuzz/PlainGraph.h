#pragma once

#include <VulkanRenderGraph.h>

// The rules of a graph, written out one by one.
namespace PlainGraph {

inline bool keepsTheRules(const VulkanRenderGraph &graph)
{
    const auto n = static_cast<int>(graph.passes.size());
    bool good = n >= 1 && graph.feedbackPassIndex >= -1 && graph.feedbackPassIndex < n;
    int finalPasses = 0;
    for (int i = 0; i < n; ++i) {
        const VulkanRenderGraph::Pass &pass = graph.passes.at(i);
        const bool isFeedbackOrFinal =
                pass.isFinalPass || pass.isFeedbackTarget || pass.isFeedbackReader;
        const bool isBlack = pass.constantBlackWhenZero != QString();
        const bool isParameterOnly = !isBlack && pass.cacheByParameters;

        if (pass.isFeedbackReader && !pass.isFeedbackTarget)
            good = false;
        if (pass.isFeedbackTarget && pass.isFinalPass)
            good = false;
        if (pass.fragmentSpirvResource == QString() || pass.vertexSpirvResource == QString())
            good = false;
        if (pass.sampledInputs.size() > 8 || pass.params.size() > 15)
            good = false;
        for (int a = 0; a < pass.params.size(); ++a) {
            if (pass.params.at(a).floatOffset > 14)
                good = false;
            for (int b = 0; b < a; ++b) {
                if (pass.params.at(a).floatOffset == pass.params.at(b).floatOffset)
                    good = false;
            }
        }
        if (pass.shareConstantBlack && (!isBlack || pass.wrapMode != 1))
            good = false;
        if (isBlack) {
            bool isBound = false;
            for (const VulkanRenderGraph::Pass &other : graph.passes) {
                for (const VulkanRenderGraph::PushConstantParam &param : other.params)
                    isBound = isBound || param.id == pass.constantBlackWhenZero;
            }
            if (!isBound || isFeedbackOrFinal || pass.mipmap || pass.cacheByParameters)
                good = false;
            if (!(pass.constantBlackAlpha >= 0.0F && pass.constantBlackAlpha <= 0.0F)
                && !(pass.constantBlackAlpha >= 1.0F && pass.constantBlackAlpha <= 1.0F))
                good = false;
        }
        if (isParameterOnly
            && (isFeedbackOrFinal || !pass.sampledInputs.isEmpty()
                || pass.scaleSource != VulkanRenderGraph::ScaleSource::Absolute))
            good = false;
        if (!isParameterOnly) {
            for (const VulkanRenderGraph::ResourceRef &input : pass.sampledInputs) {
                const int from = input.passIndex;
                if (from < -2 || from >= i || (from == -1 && !pass.isFeedbackReader))
                    good = false;
            }
        }
        if (pass.scaleInputPassIndex < -1 || pass.scaleInputPassIndex >= i)
            good = false;
        if (i == graph.feedbackPassIndex && (!pass.isFeedbackTarget || pass.isFinalPass))
            good = false;
        if (pass.isFinalPass) {
            ++finalPasses;
            good = good && i == n - 1;
        }
    }
    return good && finalPasses == 1;
}

} // namespace PlainGraph
