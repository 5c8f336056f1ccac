#include <vulkan/vk_layer.h>
#include <vulkan/vulkan.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

// A Vulkan layer under which the device's function that FAILING_CALL names fails: vkQueueSubmit for
// a device that is lost with its first work, or vkAllocateMemory for one that has no memory.

namespace {

PFN_vkGetInstanceProcAddr nextOfInstance = nullptr;
PFN_vkGetDeviceProcAddr nextOfDevice = nullptr;

// The link to the next layer, in the chain behind what the loader passes on.
template<typename Info>
Info *linkOf(const void *chain, VkStructureType type)
{
    for (auto *info = static_cast<const Info *>(chain); info != nullptr;
         info = static_cast<const Info *>(info->pNext)) {
        if (info->sType == type && info->function == VK_LAYER_LINK_INFO)
            return const_cast<Info *>(info);
    }
    return nullptr;
}

VKAPI_ATTR VkResult VKAPI_CALL createInstance(const VkInstanceCreateInfo *info,
                                              const VkAllocationCallbacks *allocator,
                                              VkInstance *instance)
{
    auto *const link = linkOf<VkLayerInstanceCreateInfo>(
            info->pNext, VK_STRUCTURE_TYPE_LOADER_INSTANCE_CREATE_INFO);
    nextOfInstance = link->u.pLayerInfo->pfnNextGetInstanceProcAddr;
    link->u.pLayerInfo = link->u.pLayerInfo->pNext;
    const auto next =
            reinterpret_cast<PFN_vkCreateInstance>(nextOfInstance(nullptr, "vkCreateInstance"));
    return next(info, allocator, instance);
}

VKAPI_ATTR VkResult VKAPI_CALL createDevice(VkPhysicalDevice physical,
                                            const VkDeviceCreateInfo *info,
                                            const VkAllocationCallbacks *allocator,
                                            VkDevice *device)
{
    auto *const link = linkOf<VkLayerDeviceCreateInfo>(info->pNext,
                                                       VK_STRUCTURE_TYPE_LOADER_DEVICE_CREATE_INFO);
    nextOfDevice = link->u.pLayerInfo->pfnNextGetDeviceProcAddr;
    const auto next = reinterpret_cast<PFN_vkCreateDevice>(
            link->u.pLayerInfo->pfnNextGetInstanceProcAddr(nullptr, "vkCreateDevice"));
    link->u.pLayerInfo = link->u.pLayerInfo->pNext;
    return next(physical, info, allocator, device);
}

VKAPI_ATTR VkResult VKAPI_CALL submit(VkQueue /*queue*/, std::uint32_t /*count*/,
                                      const VkSubmitInfo * /*submits*/, VkFence /*fence*/)
{
    return VK_ERROR_DEVICE_LOST;
}

VKAPI_ATTR VkResult VKAPI_CALL allocateMemory(VkDevice /*device*/,
                                              const VkMemoryAllocateInfo * /*info*/,
                                              const VkAllocationCallbacks * /*allocator*/,
                                              VkDeviceMemory * /*memory*/)
{
    return VK_ERROR_OUT_OF_DEVICE_MEMORY;
}

VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL ofDevice(VkDevice device, const char *name)
{
    const char *const failing = std::getenv("FAILING_CALL");
    if (failing == nullptr || std::strcmp(name, failing) != 0)
        return nextOfDevice(device, name);
    return std::strcmp(name, "vkQueueSubmit") == 0
            ? reinterpret_cast<PFN_vkVoidFunction>(submit)
            : reinterpret_cast<PFN_vkVoidFunction>(allocateMemory);
}

VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL ofInstance(VkInstance instance, const char *name)
{
    if (std::strcmp(name, "vkCreateInstance") == 0)
        return reinterpret_cast<PFN_vkVoidFunction>(createInstance);
    if (std::strcmp(name, "vkCreateDevice") == 0)
        return reinterpret_cast<PFN_vkVoidFunction>(createDevice);
    return nextOfInstance(instance, name);
}

} // namespace

extern "C" VKAPI_ATTR VkResult VKAPI_CALL
vkNegotiateLoaderLayerInterfaceVersion(VkNegotiateLayerInterface *pVersionStruct)
{
    pVersionStruct->loaderLayerInterfaceVersion = 2;
    pVersionStruct->pfnGetInstanceProcAddr = ofInstance;
    pVersionStruct->pfnGetDeviceProcAddr = ofDevice;
    pVersionStruct->pfnGetPhysicalDeviceProcAddr = nullptr;
    return VK_SUCCESS;
}
