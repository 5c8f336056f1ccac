#include <vulkan/vk_layer.h>
#include <vulkan/vulkan.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <time.h>

// A Vulkan layer that makes the device function named by FAILING_CALL fail, for as long as the
// variable is set: vkQueueSubmit, after which the device stays lost, or vkAllocateMemory, as if out
// of memory. It also measures the CPU time of the thread that submits.

namespace {

PFN_vkGetInstanceProcAddr nextOfInstance = nullptr;
PFN_vkGetDeviceProcAddr nextOfDevice = nullptr;
PFN_vkQueueSubmit nextSubmit = nullptr;
PFN_vkWaitForFences nextWait = nullptr;
PFN_vkAllocateMemory nextAllocateMemory = nullptr;
std::atomic<std::int64_t> ownNanoseconds = 0; // without those inside of submitting and waiting
bool isLost = false; // the device that was created last

std::int64_t threadNanoseconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::int64_t(time.tv_sec) * 1000000000 + time.tv_nsec;
}

// Calls, and leaves out what the call took.
template<typename Call>
VkResult leaveOut(const Call &call)
{
    thread_local std::int64_t inside = 0;
    const std::int64_t before = threadNanoseconds();
    const VkResult result = call();
    const std::int64_t after = threadNanoseconds();
    inside += after - before;
    ownNanoseconds = after - inside;
    return result;
}

bool isFailing(const char *name)
{
    const char *const failing = std::getenv("FAILING_CALL");
    return failing != nullptr && std::strcmp(name, failing) == 0;
}

// Finds the link to the next layer in the structures that the loader chains to `chain`.
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
    const VkResult result = next(physical, info, allocator, device);
    if (result == VK_SUCCESS) {
        isLost = false;
        nextSubmit = reinterpret_cast<PFN_vkQueueSubmit>(nextOfDevice(*device, "vkQueueSubmit"));
        nextWait = reinterpret_cast<PFN_vkWaitForFences>(nextOfDevice(*device, "vkWaitForFences"));
        nextAllocateMemory =
                reinterpret_cast<PFN_vkAllocateMemory>(nextOfDevice(*device, "vkAllocateMemory"));
    }
    return result;
}

VKAPI_ATTR VkResult VKAPI_CALL submit(VkQueue queue, std::uint32_t count,
                                      const VkSubmitInfo *submits, VkFence fence)
{
    isLost = isLost || isFailing("vkQueueSubmit");
    return isLost ? VK_ERROR_DEVICE_LOST
                  : leaveOut([&] { return nextSubmit(queue, count, submits, fence); });
}

VKAPI_ATTR VkResult VKAPI_CALL waitForFences(VkDevice device, std::uint32_t count,
                                             const VkFence *fences, VkBool32 isAll,
                                             std::uint64_t timeout)
{
    return leaveOut([&] { return nextWait(device, count, fences, isAll, timeout); });
}

VKAPI_ATTR VkResult VKAPI_CALL allocateMemory(VkDevice device, const VkMemoryAllocateInfo *info,
                                              const VkAllocationCallbacks *allocator,
                                              VkDeviceMemory *memory)
{
    return isFailing("vkAllocateMemory") ? VK_ERROR_OUT_OF_DEVICE_MEMORY
                                         : nextAllocateMemory(device, info, allocator, memory);
}

VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL ofDevice(VkDevice device, const char *name)
{
    if (std::strcmp(name, "vkQueueSubmit") == 0)
        return reinterpret_cast<PFN_vkVoidFunction>(submit);
    if (std::strcmp(name, "vkWaitForFences") == 0)
        return reinterpret_cast<PFN_vkVoidFunction>(waitForFences);
    if (std::strcmp(name, "vkAllocateMemory") == 0)
        return reinterpret_cast<PFN_vkVoidFunction>(allocateMemory);
    return nextOfDevice(device, name);
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

// For programs that load the layer's library.
extern "C" VKAPI_ATTR std::int64_t VKAPI_CALL submittingNanoseconds()
{
    return ownNanoseconds;
}

extern "C" VKAPI_ATTR VkResult VKAPI_CALL
vkNegotiateLoaderLayerInterfaceVersion(VkNegotiateLayerInterface *pVersionStruct)
{
    pVersionStruct->loaderLayerInterfaceVersion = 2;
    pVersionStruct->pfnGetInstanceProcAddr = ofInstance;
    pVersionStruct->pfnGetDeviceProcAddr = ofDevice;
    pVersionStruct->pfnGetPhysicalDeviceProcAddr = nullptr;
    return VK_SUCCESS;
}
