#pragma once

#include "../VulkanGraphRenderer.h"

#include <cstdint>
#include <memory>
#include <utility>

// The application's device as the renderer's parts use it. Private to VulkanGraphRenderer, as are
// all headers of this directory.
namespace VulkanGraph {

// The functions that the renderer calls: X(name in Vulkan, name here).
#define VULKAN_GRAPH_INSTANCE_FUNCTIONS(X)                                                         \
    X(GetDeviceProcAddr, getDeviceProcAddr)                                                        \
    X(GetPhysicalDeviceFormatProperties, getPhysicalDeviceFormatProperties)                        \
    X(GetPhysicalDeviceMemoryProperties, getPhysicalDeviceMemoryProperties)                        \
    X(GetPhysicalDeviceProperties2, getPhysicalDeviceProperties2)                                  \
    X(GetPhysicalDeviceQueueFamilyProperties, getPhysicalDeviceQueueFamilyProperties)

#define VULKAN_GRAPH_DEVICE_FUNCTIONS(X)                                                           \
    X(AllocateDescriptorSets, allocateDescriptorSets)                                              \
    X(AllocateMemory, allocateMemory)                                                              \
    X(BindImageMemory, bindImageMemory)                                                            \
    X(CmdBeginRenderPass, cmdBeginRenderPass)                                                      \
    X(CmdBindDescriptorSets, cmdBindDescriptorSets)                                                \
    X(CmdBindPipeline, cmdBindPipeline)                                                            \
    X(CmdBlitImage, cmdBlitImage)                                                                  \
    X(CmdClearColorImage, cmdClearColorImage)                                                      \
    X(CmdDraw, cmdDraw)                                                                            \
    X(CmdEndRenderPass, cmdEndRenderPass)                                                          \
    X(CmdPipelineBarrier, cmdPipelineBarrier)                                                      \
    X(CmdPushConstants, cmdPushConstants)                                                          \
    X(CmdResetQueryPool, cmdResetQueryPool)                                                        \
    X(CmdSetScissor, cmdSetScissor)                                                                \
    X(CmdSetViewport, cmdSetViewport)                                                              \
    X(CmdWriteTimestamp, cmdWriteTimestamp)                                                        \
    X(CreateDescriptorPool, createDescriptorPool)                                                  \
    X(CreateDescriptorSetLayout, createDescriptorSetLayout)                                        \
    X(CreateFramebuffer, createFramebuffer)                                                        \
    X(CreateGraphicsPipelines, createGraphicsPipelines)                                            \
    X(CreateImage, createImage)                                                                    \
    X(CreateImageView, createImageView)                                                            \
    X(CreatePipelineLayout, createPipelineLayout)                                                  \
    X(CreateQueryPool, createQueryPool)                                                            \
    X(CreateRenderPass, createRenderPass)                                                          \
    X(CreateSampler, createSampler)                                                                \
    X(CreateShaderModule, createShaderModule)                                                      \
    X(DestroyDescriptorPool, destroyDescriptorPool)                                                \
    X(DestroyDescriptorSetLayout, destroyDescriptorSetLayout)                                      \
    X(DestroyFramebuffer, destroyFramebuffer)                                                      \
    X(DestroyImage, destroyImage)                                                                  \
    X(DestroyImageView, destroyImageView)                                                          \
    X(DestroyPipeline, destroyPipeline)                                                            \
    X(DestroyPipelineLayout, destroyPipelineLayout)                                                \
    X(DestroyQueryPool, destroyQueryPool)                                                          \
    X(DestroyRenderPass, destroyRenderPass)                                                        \
    X(DestroySampler, destroySampler)                                                              \
    X(DestroyShaderModule, destroyShaderModule)                                                    \
    X(FreeMemory, freeMemory)                                                                      \
    X(GetImageMemoryRequirements, getImageMemoryRequirements)                                      \
    X(GetQueryPoolResults, getQueryPoolResults)                                                    \
    X(UpdateDescriptorSets, updateDescriptorSets)

struct Functions
{
#define X(vulkanName, name) PFN_vk##vulkanName name = nullptr;
    VULKAN_GRAPH_INSTANCE_FUNCTIONS(X)
    VULKAN_GRAPH_DEVICE_FUNCTIONS(X)
#undef X
    // Null where the instance has no VK_EXT_debug_utils.
    PFN_vkCmdBeginDebugUtilsLabelEXT cmdBeginDebugUtilsLabel = nullptr;
    PFN_vkCmdEndDebugUtilsLabelEXT cmdEndDebugUtilsLabel = nullptr;
};

struct Context
{
    // Fails if the device is not one of Vulkan 1.1 or the queue family cannot draw.
    static bool create(const VulkanGraphRenderer::Device &device,
                       std::shared_ptr<const Context> &context, QString &error);

    bool supports(VkFormat format, VkFormatFeatureFlags features) const;

    // The most pixels either way of images and framebuffers.
    int maxExtent() const;

    // Fails if the size exceeds this. `what` begins the text.
    bool checkExtent(const QString &what, QSize size, QString &error) const;

    VkPhysicalDevice physicalDevice = VK_NULL_HANDLE;
    VkDevice device = VK_NULL_HANDLE;
    Functions vk;
    VkPhysicalDeviceLimits limits = {};
    VkDeviceSize maxMemoryAllocationSize = 0;
    VkPhysicalDeviceMemoryProperties memory = {};
    std::uint64_t timestampMask = 0; // 0: the queue has no timestamps
};

// A Vulkan object that is destroyed with its owner. The context has to live longer.
template<typename Handle, auto Destroy>
class Owned
{
public:
    Owned() = default;
    Owned(const Context &context, Handle handle) : m_context(&context), m_handle(handle) { }
    Owned(Owned &&other) noexcept
        : m_context(other.m_context),
          m_handle(std::exchange(other.m_handle, VK_NULL_HANDLE))
    {
    }
    Owned &operator=(Owned &&other) noexcept
    {
        std::swap(m_context, other.m_context);
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    Owned(const Owned &) = delete;
    Owned &operator=(const Owned &) = delete;
    ~Owned()
    {
        if (m_handle != VK_NULL_HANDLE)
            (m_context->vk.*Destroy)(m_context->device, m_handle, nullptr);
    }

    Handle get() const
    {
        return m_handle;
    }

private:
    const Context *m_context = nullptr;
    Handle m_handle = VK_NULL_HANDLE;
};

using DescriptorPool = Owned<VkDescriptorPool, &Functions::destroyDescriptorPool>;
using DescriptorSetLayout = Owned<VkDescriptorSetLayout, &Functions::destroyDescriptorSetLayout>;
using DeviceMemory = Owned<VkDeviceMemory, &Functions::freeMemory>;
using Framebuffer = Owned<VkFramebuffer, &Functions::destroyFramebuffer>;
using Image = Owned<VkImage, &Functions::destroyImage>;
using ImageView = Owned<VkImageView, &Functions::destroyImageView>;
using Pipeline = Owned<VkPipeline, &Functions::destroyPipeline>;
using PipelineLayout = Owned<VkPipelineLayout, &Functions::destroyPipelineLayout>;
using QueryPool = Owned<VkQueryPool, &Functions::destroyQueryPool>;
using RenderPass = Owned<VkRenderPass, &Functions::destroyRenderPass>;
using Sampler = Owned<VkSampler, &Functions::destroySampler>;
using ShaderModule = Owned<VkShaderModule, &Functions::destroyShaderModule>;

// Whether a call succeeded; if not, `error` says why.
bool isSuccess(VkResult result, QString &error);

// Calls one of Vulkan's functions vkCreate... or vkAllocateMemory.
template<typename Handle, auto Destroy, typename Create, typename Info>
bool createObject(const Context &context, Create create, const Info &info,
                  Owned<Handle, Destroy> &object, QString &error)
{
    Handle handle = VK_NULL_HANDLE;
    if (!isSuccess(create(context.device, &info, nullptr, &handle), error))
        return false;
    object = Owned<Handle, Destroy>(context, handle);
    return true;
}

} // namespace VulkanGraph
