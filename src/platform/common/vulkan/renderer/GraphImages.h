#pragma once

#include "PassPipeline.h"

#include <array>
#include <memory>
#include <vector>

// The images of a graph at one size, and their memory.
namespace VulkanGraph {

// An image that passes draw into and sample. Its layout is VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL
// except while it is written or copied.
struct PassImage
{
    QSize size;
    std::uint32_t levels = 1;
    Image image;
    ImageView sampledView; // all levels
    ImageView attachmentView; // the first level
    Framebuffer framebuffer;
};

// What the images of a graph depend on beside it.
struct ImageSizes
{
    bool operator==(const ImageSizes &other) const
    {
        return source == other.source && viewport == other.viewport
                && leavesOutFinalPass == other.leavesOutFinalPass;
    }

    QSize source;
    QSize viewport;
    bool leavesOutFinalPass = false; // the last declared pass is drawn into the target
};

struct GraphImages
{
    // With `keepsOutputs` no images share memory.
    static bool create(const std::shared_ptr<const Prepared> &prepared, const ImageSizes &sizes,
                       bool keepsOutputs, std::shared_ptr<const GraphImages> &images,
                       QString &error);

    // The pass that is drawn into the target.
    int targetPass() const
    {
        return int(passes.size()) - (sizes.leavesOutFinalPass ? 2 : 1);
    }

    // The image of a pass's output. A feedback pass alternates between two images (ping-pong): it
    // draws into one and samples the other.
    const PassImage &output(int pass, std::size_t pingPong) const
    {
        const bool isDouble = prepared->graph.passes.at(pass).isFeedbackReader;
        return passes[std::size_t(pass)][isDouble ? pingPong : 0];
    }

    std::shared_ptr<const Prepared> prepared;
    ImageSizes sizes;
    QList<QSize> passSizes;
    std::vector<DeviceMemory> memory;
    std::vector<std::array<PassImage, 2>> passes; // images as far as there are
    qint64 bytes = 0;
};

// An image of one pixel, for passes that share their constant black. Its layout is undefined.
struct BlackImage
{
    static bool create(const Context &context, BlackImage &black, QString &error);

    DeviceMemory memory;
    PassImage image;
    qint64 bytes = 0;
};

} // namespace VulkanGraph
