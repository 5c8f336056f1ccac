#pragma once

#include "VulkanContext.h"

namespace VulkanGraph {

struct FormatTraits
{
    VkFormat format;
    int texelBytes;
};
const FormatTraits &traitsOf(VulkanRenderGraph::Format format);

// Whether the application may hand over images of this format, and the device can sample them
// (`features`: VK_FORMAT_FEATURE_SAMPLED_IMAGE_BIT) or draw into them
// (VK_FORMAT_FEATURE_COLOR_ATTACHMENT_BIT). `what` begins the text of the error.
bool checkApplicationFormat(const Context &context, const QString &what, VkFormat format,
                            VkFormatFeatureFlags features, QString &error);

// Whether values above 1 keep in an application's format.
bool isFloatFormat(VkFormat format);

} // namespace VulkanGraph
