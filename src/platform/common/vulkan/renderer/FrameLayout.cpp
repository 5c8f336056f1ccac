#include "FrameLayout.h"

#include <algorithm>
#include <cmath>
#include <numeric>

using namespace Qt::StringLiterals;

namespace VulkanGraph {

namespace {

using Pass = VulkanRenderGraph::Pass;
using ResourceRef = VulkanRenderGraph::ResourceRef;

std::array<float, 4> sizeConstant(QSize size)
{
    const auto width = float(size.width());
    const auto height = float(size.height());
    return {width, height, 1.0F / width, 1.0F / height};
}

int scaled(int extent, float factor)
{
    return int(std::clamp(std::round(float(extent) * factor), 1.0F, 1e6F));
}

bool overlap(const TransientMemory &image, const TransientMemory &other)
{
    return image.firstPass <= other.lastPass && other.firstPass <= image.lastPass;
}

} // namespace

QList<QSize> outputSizes(const VulkanRenderGraph &graph, QSize source, QSize viewport)
{
    QList<QSize> sizes;
    for (const Pass &pass : graph.passes) {
        if (pass.scaleSource == VulkanRenderGraph::ScaleSource::Absolute) {
            sizes.append({pass.absoluteWidth > 0 ? pass.absoluteWidth : source.width(),
                          pass.absoluteHeight > 0 ? pass.absoluteHeight : source.height()});
            continue;
        }
        QSize from = source;
        if (pass.scaleSource == VulkanRenderGraph::ScaleSource::Viewport)
            from = viewport;
        else if (pass.scaleInputPassIndex >= 0)
            from = sizes.at(pass.scaleInputPassIndex);
        else if (!pass.sampledInputs.isEmpty() && pass.sampledInputs.first().passIndex >= 0)
            from = sizes.at(pass.sampledInputs.first().passIndex);
        sizes.append({scaled(from.width(), pass.scaleX), scaled(from.height(), pass.scaleY)});
    }
    return sizes;
}

QSize firstInputSize(const VulkanRenderGraph &graph, int pass, const QList<QSize> &sizes,
                     QSize source)
{
    const QList<ResourceRef> &inputs = graph.passes.at(pass).sampledInputs;
    if (inputs.isEmpty() || inputs.first().passIndex == ResourceRef::SourceImage)
        return source;
    return sizes.at(inputs.first().passIndex == ResourceRef::Feedback ? pass
                                                                      : inputs.first().passIndex);
}

PushConstants pushConstants(const VulkanRenderGraph &graph, int pass, const QList<QSize> &sizes,
                            QSize source, const std::vector<ParameterSlot> &parameters,
                            const VulkanGraphRenderer::Frame &frame)
{
    PushConstants constants;
    constants.sourceSize = sizeConstant(firstInputSize(graph, pass, sizes, source));
    constants.outputSize = sizeConstant(sizes.at(pass));
    constants.originalSize = sizeConstant(source);
    constants.frameCount = frame.frameCount;
    constants.frameDirection = frame.frameDirection;
    constants.hdrOutputActive = frame.isHdr ? 1 : 0;
    constants.frameSeconds = frame.frameSeconds;
    // A preset that responds to HDR itself leaves nothing for the final pass to boost.
    const bool isBoosted = graph.passes.at(pass).isFinalPass && graph.finalRealPassRespondsToHdr;
    constants.hdrHeadroom = isBoosted ? 1.0F : frame.hdrHeadroom;
    for (const ParameterSlot &parameter : parameters)
        constants.params[parameter.slot] = frame.parameters[parameter.index];
    return constants;
}

bool canLeaveOutFinalPass(const VulkanRenderGraph &graph)
{
    if (graph.passes.size() < 2)
        return false;
    const Pass &final = graph.passes.last();
    const auto last = int(graph.passes.size()) - 2;
    const Pass &declared = graph.passes.at(last);
    return final.debugName == "hdr-color-boost"_L1 && final.sampledInputs.size() == 1
            && final.sampledInputs.first().passIndex == last
            && declared.scaleSource == VulkanRenderGraph::ScaleSource::Viewport
            && declared.scaleX == 1.0F && declared.scaleY == 1.0F && !declared.isFeedbackTarget
            && !declared.isFeedbackReader && !declared.mipmap && !declared.cacheByParameters
            && declared.constantBlackWhenZero.isEmpty();
}

bool isKeptBetweenFrames(const Pass &pass)
{
    const bool isClearedOnce = !pass.constantBlackWhenZero.isEmpty() && !pass.shareConstantBlack;
    return pass.isFeedbackReader || pass.cacheByParameters || isClearedOnce;
}

int lastReader(const VulkanRenderGraph &graph, int pass)
{
    int last = pass;
    for (int reader = pass + 1; reader < graph.passes.size(); ++reader) {
        for (const ResourceRef &input : graph.passes.at(reader).sampledInputs) {
            if (input.passIndex == pass)
                last = reader;
        }
    }
    return last;
}

std::uint64_t placeTransients(std::vector<TransientMemory> &images)
{
    std::vector<std::size_t> order(images.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&images](std::size_t a, std::size_t b) {
        return images[a].size > images[b].size;
    });
    std::uint64_t total = 0;
    std::vector<const TransientMemory *> placed; // by offset
    for (const std::size_t index : order) {
        TransientMemory &image = images[index];
        for (const TransientMemory *other : placed) {
            if (!overlap(image, *other))
                continue;
            if (image.offset + image.size <= other->offset)
                break; // fits below
            const std::uint64_t end = other->offset + other->size;
            const std::uint64_t aligned =
                    (end + image.alignment - 1) / image.alignment * image.alignment;
            image.offset = std::max(image.offset, aligned);
        }
        total = std::max(total, image.offset + image.size);
        placed.insert(std::upper_bound(placed.begin(), placed.end(), &image,
                                       [](const TransientMemory *a, const TransientMemory *b) {
                                           return a->offset < b->offset;
                                       }),
                      &image);
    }
    return total;
}

} // namespace VulkanGraph
