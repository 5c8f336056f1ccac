#pragma once

#include "../VulkanGraphRenderer.h"

#include <array>
#include <cstdint>
#include <vector>

// What of a frame follows from the graph and numbers alone.
namespace VulkanGraph {

// The push-constant block of a component.
struct PushConstants
{
    std::array<float, 4> sourceSize = {};
    std::array<float, 4> outputSize = {};
    std::array<float, 4> originalSize = {};
    std::uint32_t frameCount = 0;
    std::int32_t frameDirection = 1;
    std::uint32_t hdrOutputActive = 0;
    float frameSeconds = 0.0F;
    float hdrHeadroom = 1.0F;
    std::array<float, VulkanRenderGraph::MaxParamFloatsPerPass> params = {};
};
static_assert(sizeof(PushConstants) == 128);

// A pass's parameter: its slot, and its index in Frame::parameters.
struct ParameterSlot
{
    std::uint32_t slot;
    int index;
};

// The size of each pass's output.
QList<QSize> outputSizes(const VulkanRenderGraph &graph, QSize source, QSize viewport);

// The size of what the pass has at binding 0: `sizes` by pass, or `source`.
QSize firstInputSize(const VulkanRenderGraph &graph, int pass, const QList<QSize> &sizes,
                     QSize source);

PushConstants pushConstants(const VulkanRenderGraph &graph, int pass, const QList<QSize> &sizes,
                            QSize source, const std::vector<ParameterSlot> &parameters,
                            const VulkanGraphRenderer::Frame &frame);

// Whether the last declared pass can be drawn straight into the target where the final pass passes
// its input on as it is.
bool canLeaveOutFinalPass(const VulkanRenderGraph &graph);

// Whether the output of a pass has to last from one frame to the next.
bool isKeptBetweenFrames(const VulkanRenderGraph::Pass &pass);

// The last pass that samples the output of this one in the same frame; this one if none does.
int lastReader(const VulkanRenderGraph &graph, int pass);

// Memory of an image that is written and read from pass `firstPass` to pass `lastPass` of a frame.
struct TransientMemory
{
    std::uint64_t size = 0;
    std::uint64_t alignment = 1; // a power of 2
    int firstPass = 0;
    int lastPass = 0;
    std::uint64_t offset = 0; // the result
};

// Places the images so that two that live at the same time do not overlap. Returns the total size.
// Each goes to the lowest free offset, the largest first ("greedy by size": Pisarchyk, Lee,
// "Efficient memory management for deep neural net inference", 2020).
std::uint64_t placeTransients(std::vector<TransientMemory> &images);

} // namespace VulkanGraph
