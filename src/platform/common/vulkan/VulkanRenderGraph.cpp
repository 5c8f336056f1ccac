#include "VulkanRenderGraph.h"

#include <QSet>

#include <algorithm>
#include <bitset>

namespace {

using Graph = VulkanRenderGraph;

constexpr int kSharedBlackWrapMode = 1;

bool hasConsistentFeedback(const Graph::Pass &pass)
{
    if (pass.isFeedbackReader && !pass.isFeedbackTarget)
        return false;
    return !(pass.isFeedbackTarget && pass.isFinalPass);
}

bool hasResources(const Graph::Pass &pass)
{
    return !pass.fragmentSpirvResource.isEmpty() && !pass.vertexSpirvResource.isEmpty();
}

bool hasDistinctSlots(const Graph::Pass &pass)
{
    if (pass.params.size() > Graph::MaxParamFloatsPerPass)
        return false;
    std::bitset<Graph::MaxParamFloatsPerPass> taken;
    for (const Graph::PushConstantParam &param : pass.params) {
        if (param.floatOffset >= taken.size() || taken.test(param.floatOffset))
            return false;
        taken.set(param.floatOffset);
    }
    return true;
}

// A shared black image is one texture with one sampler, so the wrap mode has to be agreed on.
bool mayShareConstantBlack(const Graph::Pass &pass)
{
    return !pass.shareConstantBlack
            || (!pass.constantBlackWhenZero.isEmpty() && pass.wrapMode == kSharedBlackWrapMode);
}

bool samplesOnlyRenderedImages(const Graph::Pass &pass, int index)
{
    const auto isRendered = [&pass, index](const Graph::ResourceRef &input) {
        if (input.passIndex == Graph::ResourceRef::SourceImage)
            return true;
        if (input.passIndex == Graph::ResourceRef::Feedback)
            return pass.isFeedbackReader;
        return input.passIndex >= 0 && input.passIndex < index;
    };
    return std::all_of(pass.sampledInputs.cbegin(), pass.sampledInputs.cend(), isRendered);
}

bool isFeedbackOrFinal(const Graph::Pass &pass)
{
    return pass.isFinalPass || pass.isFeedbackTarget || pass.isFeedbackReader;
}

bool isValidConstantBlack(const Graph::Pass &pass, int index, const QSet<QString> &boundIds)
{
    return boundIds.contains(pass.constantBlackWhenZero) && !isFeedbackOrFinal(pass) && !pass.mipmap
            && !pass.cacheByParameters
            && (pass.constantBlackAlpha == 0.0F || pass.constantBlackAlpha == 1.0F)
            && samplesOnlyRenderedImages(pass, index);
}

bool isValidParameterOnly(const Graph::Pass &pass)
{
    return !isFeedbackOrFinal(pass) && pass.sampledInputs.isEmpty()
            && pass.scaleSource == Graph::ScaleSource::Absolute;
}

// The rules that depend on what kind of pass it is: constant black, parameter-only or ordinary.
bool isValidOfItsKind(const Graph::Pass &pass, int index, const QSet<QString> &boundIds)
{
    if (!pass.constantBlackWhenZero.isEmpty())
        return isValidConstantBlack(pass, index, boundIds);
    if (pass.cacheByParameters)
        return isValidParameterOnly(pass);
    return samplesOnlyRenderedImages(pass, index);
}

bool isValidPass(const Graph::Pass &pass, int index, const QSet<QString> &boundIds)
{
    return hasConsistentFeedback(pass) && hasResources(pass)
            && pass.sampledInputs.size() <= Graph::MaxSampledInputsPerPass && hasDistinctSlots(pass)
            && mayShareConstantBlack(pass) && isValidOfItsKind(pass, index, boundIds)
            && pass.scaleInputPassIndex >= -1 && pass.scaleInputPassIndex < index;
}

} // namespace

QLatin1StringView VulkanRenderGraph::formatName(Format format)
{
    switch (format) {
    case Format::R11G11B10F:
        return QLatin1StringView("R11G11B10F");
    case Format::RGBA16F:
        return QLatin1StringView("RGBA16F");
    case Format::RGBA8:
        return QLatin1StringView("RGBA8");
    case Format::RGBA32F:
        return QLatin1StringView("RGBA32F");
    }
    return {};
}

bool VulkanRenderGraph::isValid() const
{
    if (passes.isEmpty() || feedbackPassIndex < -1 || feedbackPassIndex >= passes.size())
        return false;

    QSet<QString> boundIds;
    for (const Pass &pass : passes) {
        for (const PushConstantParam &param : pass.params)
            boundIds.insert(param.id);
    }

    int finalPassCount = 0;
    for (int index = 0; index < passes.size(); ++index) {
        const Pass &pass = passes.at(index);
        if (!isValidPass(pass, index, boundIds))
            return false;
        finalPassCount += pass.isFinalPass ? 1 : 0;
    }

    if (feedbackPassIndex >= 0 && !passes.at(feedbackPassIndex).isFeedbackTarget)
        return false;
    return finalPassCount == 1 && passes.constLast().isFinalPass;
}
