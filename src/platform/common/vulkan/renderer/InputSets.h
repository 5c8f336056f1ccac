#pragma once

#include "GraphImages.h"

#include <array>
#include <memory>
#include <vector>

namespace VulkanGraph {

// The descriptor sets of a graph's passes for one source, and for one choice of constant blacks.
struct InputSets
{
    // `isBlack` by pass; `black` by alpha.
    static bool create(const std::shared_ptr<const GraphImages> &images, VkImageView source,
                       const std::vector<char> &isBlack, const std::array<BlackImage, 2> &black,
                       std::shared_ptr<const InputSets> &sets, QString &error);

    struct PassSets
    {
        std::array<VkDescriptorSet, 2> inputs = {}; // by ping-pong
        std::array<VkDescriptorSet, 2> seed = {}; // binding 0 alone
    };

    std::shared_ptr<const GraphImages> images;
    DescriptorPool pool;
    std::vector<PassSets> passes;
};

} // namespace VulkanGraph
