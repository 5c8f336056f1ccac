#pragma once

#include <vulkan/vulkan_core.h>

#include <QtGlobal>

#include <cstdint>
#include <cstring>
#include <map>
#include <type_traits>

// Stands between a renderer and Vulkan: counts what the renderer creates, destroys and writes, and
// makes calls fail. For one renderer at a time. In 64-bit programs each function has a type of its
// own, by which it is found.
namespace VulkanHooks {

struct Calls
{
    int created = 0; // objects, memory and descriptor sets
    int destroyed = 0; // objects and memory
    int pipelines = 0;
    int descriptorWrites = 0;
    int failingCall = 0; // the number of the call that fails among those with a result; 0: none
};
inline Calls calls;
inline thread_local bool isInVulkan = false;
inline thread_local bool isRecording = false; // set by TestApplication

// Descriptor pools as strict as a driver may be; the software driver takes any number.
struct PoolSpace
{
    std::uint32_t sets;
    std::uint32_t descriptors;
};
inline std::map<VkDescriptorPool, PoolSpace> poolSpaces;
inline std::map<VkDescriptorSetLayout, std::uint32_t> bindingCounts;

inline void observe(VkDevice /*device*/, const VkDescriptorSetLayoutCreateInfo *info,
                    const VkAllocationCallbacks * /*allocator*/, VkDescriptorSetLayout *layout)
{
    bindingCounts[*layout] = info->bindingCount;
}
inline void observe(VkDevice /*device*/, const VkDescriptorPoolCreateInfo *info,
                    const VkAllocationCallbacks * /*allocator*/, VkDescriptorPool *pool)
{
    poolSpaces[*pool] = {info->maxSets, info->pPoolSizes->descriptorCount};
}
inline void observe(VkDevice /*device*/, const VkDescriptorSetAllocateInfo *info,
                    VkDescriptorSet * /*sets*/)
{
    PoolSpace &space = poolSpaces.at(info->descriptorPool);
    const std::uint32_t bindings = bindingCounts.at(*info->pSetLayouts);
    if (space.sets == 0 || space.descriptors < bindings)
        qFatal("the descriptor pool is too small");
    --space.sets;
    space.descriptors -= bindings;
}
inline VkPipelineCache lastPipelineCache = VK_NULL_HANDLE;
inline void observe(VkDevice /*device*/, VkPipelineCache cache, std::uint32_t /*count*/,
                    const VkGraphicsPipelineCreateInfo * /*infos*/,
                    const VkAllocationCallbacks * /*allocator*/, VkPipeline * /*pipelines*/)
{
    lastPipelineCache = cache;
}
template<typename... Arguments>
void observe(const Arguments &.../*arguments*/)
{
}

template<typename Function>
struct Hook;

template<typename Result, typename... Arguments>
struct Hook<Result(VKAPI_PTR *)(Arguments...)>
{
    using Function = Result(VKAPI_PTR *)(Arguments...);
    static inline Function real = nullptr;
    static inline int Calls::*counter = nullptr;

    static Result VKAPI_CALL call(Arguments... arguments)
    {
        if (counter != nullptr)
            ++(calls.*counter);
        if constexpr (std::is_same_v<Result, VkResult>) {
            if (calls.failingCall > 0 && --calls.failingCall == 0) {
                if (counter != nullptr)
                    --(calls.*counter);
                return VK_ERROR_OUT_OF_DEVICE_MEMORY;
            }
        }
        isInVulkan = true;
        if constexpr (std::is_void_v<Result>) {
            real(arguments...);
            isInVulkan = false;
        } else {
            const Result result = real(arguments...);
            isInVulkan = false;
            observe(arguments...);
            return result;
        }
    }
};

template<typename Function>
PFN_vkVoidFunction hooked(PFN_vkVoidFunction function, int Calls::*counter)
{
    Hook<Function>::real = reinterpret_cast<Function>(function);
    Hook<Function>::counter = counter;
    return reinterpret_cast<PFN_vkVoidFunction>(&Hook<Function>::call);
}

inline PFN_vkGetInstanceProcAddr realGetInstanceProcAddr = nullptr;
inline PFN_vkGetDeviceProcAddr realGetDeviceProcAddr = nullptr;

inline PFN_vkVoidFunction VKAPI_CALL getDeviceProcAddr(VkDevice device, const char *name)
{
    const PFN_vkVoidFunction function = realGetDeviceProcAddr(device, name);
#define HOOK(vulkanName, counter)                                                                  \
    if (std::strcmp(name, #vulkanName) == 0)                                                       \
        return hooked<PFN_##vulkanName>(function, counter);
    HOOK(vkAllocateDescriptorSets, &Calls::created)
    HOOK(vkAllocateMemory, &Calls::created)
    HOOK(vkBindImageMemory, nullptr)
    HOOK(vkCmdBeginRenderPass, nullptr)
    HOOK(vkCmdBindDescriptorSets, nullptr)
    HOOK(vkCmdBindPipeline, nullptr)
    HOOK(vkCmdBlitImage, nullptr)
    HOOK(vkCmdClearColorImage, nullptr)
    HOOK(vkCmdDraw, nullptr)
    HOOK(vkCmdEndRenderPass, nullptr)
    HOOK(vkCmdPipelineBarrier, nullptr)
    HOOK(vkCmdPushConstants, nullptr)
    HOOK(vkCmdResetQueryPool, nullptr)
    HOOK(vkCmdSetScissor, nullptr)
    HOOK(vkCmdSetViewport, nullptr)
    HOOK(vkCmdWriteTimestamp, nullptr)
    HOOK(vkCreateDescriptorPool, &Calls::created)
    HOOK(vkCreateDescriptorSetLayout, &Calls::created)
    HOOK(vkCreateFramebuffer, &Calls::created)
    HOOK(vkCreateGraphicsPipelines, &Calls::pipelines)
    HOOK(vkCreateImage, &Calls::created)
    HOOK(vkCreateImageView, &Calls::created)
    HOOK(vkCreatePipelineLayout, &Calls::created)
    HOOK(vkCreateQueryPool, &Calls::created)
    HOOK(vkCreateRenderPass, &Calls::created)
    HOOK(vkCreateSampler, &Calls::created)
    HOOK(vkCreateShaderModule, &Calls::created)
    HOOK(vkDestroyDescriptorPool, &Calls::destroyed)
    HOOK(vkDestroyDescriptorSetLayout, &Calls::destroyed)
    HOOK(vkDestroyFramebuffer, &Calls::destroyed)
    HOOK(vkDestroyImage, &Calls::destroyed)
    HOOK(vkDestroyImageView, &Calls::destroyed)
    HOOK(vkDestroyPipeline, &Calls::destroyed)
    HOOK(vkDestroyPipelineLayout, &Calls::destroyed)
    HOOK(vkDestroyQueryPool, &Calls::destroyed)
    HOOK(vkDestroyRenderPass, &Calls::destroyed)
    HOOK(vkDestroySampler, &Calls::destroyed)
    HOOK(vkDestroyShaderModule, &Calls::destroyed)
    HOOK(vkFreeMemory, &Calls::destroyed)
    HOOK(vkUpdateDescriptorSets, &Calls::descriptorWrites)
#undef HOOK
    return function;
}

inline PFN_vkVoidFunction VKAPI_CALL getInstanceProcAddr(VkInstance instance, const char *name)
{
    const PFN_vkVoidFunction function = realGetInstanceProcAddr(instance, name);
    if (std::strcmp(name, "vkGetDeviceProcAddr") != 0)
        return function;
    realGetDeviceProcAddr = reinterpret_cast<PFN_vkGetDeviceProcAddr>(function);
    return reinterpret_cast<PFN_vkVoidFunction>(&getDeviceProcAddr);
}

// What a renderer is given instead of the real function.
inline PFN_vkGetInstanceProcAddr install(PFN_vkGetInstanceProcAddr real)
{
    realGetInstanceProcAddr = real;
    return &getInstanceProcAddr;
}

} // namespace VulkanHooks
