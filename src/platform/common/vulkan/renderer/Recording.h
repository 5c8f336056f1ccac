#pragma once

#include "GraphImages.h"
#include "InputSets.h"

#include <array>
#include <cstdint>
#include <vector>

// The commands of a frame.
namespace VulkanGraph {

// What the images of a graph hold, from frame to frame.
struct GraphContents
{
    // An output as it was drawn last.
    struct Output
    {
        bool isDrawn = false;
        bool isCleared = false; // to constant black
        PushConstants constants;
        std::array<std::uint64_t, VulkanRenderGraph::MaxSampledInputsPerPass> inputVersions = {};
        std::uint64_t version = 0; // 0: constant black
    };

    std::vector<Output> outputs; // by pass
    std::uint64_t lastVersion = 0;
    std::uint64_t sourceVersion = 0;
    std::size_t pingPong = 0; // the image that feedback passes draw into
    bool hasHistory = false;
};

struct FrameTarget
{
    VkRenderPass renderPass = VK_NULL_HANDLE;
    VkFramebuffer framebuffer = VK_NULL_HANDLE;
    VkRect2D area = {}; // of the render pass
    VkRect2D rectangle = {}; // of the picture
};

// What a frame is drawn from and into.
struct FrameResources
{
    const GraphImages &images;
    const InputSets &sets;
    const std::vector<char> &isBlack; // by pass
    bool keepsOutputs;
    FrameTarget target;
    VkQueryPool timestamps; // one more than there are passes; or null
};

// Records all passes of a frame, and what each did in `kinds`, by pass. Changes `contents`.
void recordFrame(VkCommandBuffer commands, const FrameResources &resources,
                 const VulkanGraphRenderer::Frame &frame, GraphContents &contents,
                 std::vector<VulkanGraphRenderer::PassKind> &kinds);

// Clears all levels of an image to black, and leaves it in the layout for sampling.
void recordClear(const Context &context, VkCommandBuffer commands, const PassImage &image,
                 float alpha);

} // namespace VulkanGraph
