#include "VulkanContext.h"

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace VulkanGraph {

namespace {

template<typename Function>
void load(Function &function, PFN_vkVoidFunction address)
{
    function = reinterpret_cast<Function>(address);
}

// Fails if one is missing.
bool loadFunctions(const VulkanGraphRenderer::Device &device, Functions &vk, QString &error)
{
    const auto instanceFunction = [&device](const char *name) {
        return device.getInstanceProcAddr(device.instance, name);
    };
    const char *missing = nullptr;
#define X(vulkanName, name)                                                                        \
    load(vk.name, instanceFunction("vk" #vulkanName));                                             \
    if (vk.name == nullptr)                                                                        \
        missing = "vk" #vulkanName;
    VULKAN_GRAPH_INSTANCE_FUNCTIONS(X)
#undef X
    if (missing == nullptr) {
#define X(vulkanName, name)                                                                        \
    load(vk.name, vk.getDeviceProcAddr(device.device, "vk" #vulkanName));                          \
    if (vk.name == nullptr)                                                                        \
        missing = "vk" #vulkanName;
        VULKAN_GRAPH_DEVICE_FUNCTIONS(X)
#undef X
    }
    if (missing != nullptr) {
        error = "Vulkan has no function %1: the instance and the device have to be of Vulkan 1.1"_L1
                        .arg(QLatin1StringView(missing));
        return false;
    }
    load(vk.cmdBeginDebugUtilsLabel, instanceFunction("vkCmdBeginDebugUtilsLabelEXT"));
    load(vk.cmdEndDebugUtilsLabel, instanceFunction("vkCmdEndDebugUtilsLabelEXT"));
    return true;
}

} // namespace

bool Context::create(const VulkanGraphRenderer::Device &device,
                     std::shared_ptr<const Context> &context, QString &error)
{
    if (device.getInstanceProcAddr == nullptr || device.instance == VK_NULL_HANDLE
        || device.physicalDevice == VK_NULL_HANDLE || device.device == VK_NULL_HANDLE) {
        error = u"there is no Vulkan device"_s;
        return false;
    }
    const auto created = std::make_shared<Context>();
    created->physicalDevice = device.physicalDevice;
    created->device = device.device;
    if (!loadFunctions(device, created->vk, error))
        return false;

    VkPhysicalDeviceMaintenance3Properties sizes = {
            VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_MAINTENANCE_3_PROPERTIES, nullptr, 0, 0};
    VkPhysicalDeviceProperties2 properties = {
            VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_PROPERTIES_2, &sizes, {}};
    created->vk.getPhysicalDeviceProperties2(device.physicalDevice, &properties);
    if (properties.properties.apiVersion < VK_API_VERSION_1_1) {
        error = u"the device does not support Vulkan 1.1"_s;
        return false;
    }
    created->limits = properties.properties.limits;
    created->maxMemoryAllocationSize = sizes.maxMemoryAllocationSize;
    created->vk.getPhysicalDeviceMemoryProperties(device.physicalDevice, &created->memory);

    std::uint32_t count = 0;
    created->vk.getPhysicalDeviceQueueFamilyProperties(device.physicalDevice, &count, nullptr);
    std::vector<VkQueueFamilyProperties> families(count);
    created->vk.getPhysicalDeviceQueueFamilyProperties(device.physicalDevice, &count,
                                                       families.data());
    if (device.queueFamily >= families.size()
        || (families[device.queueFamily].queueFlags & VK_QUEUE_GRAPHICS_BIT) == 0) {
        error = "queue family %1 does not support graphics"_L1.arg(
                QString::number(device.queueFamily));
        return false;
    }
    const std::uint32_t bits = families[device.queueFamily].timestampValidBits;
    created->timestampMask = bits >= 64 ? ~std::uint64_t(0) : (std::uint64_t(1) << bits) - 1;
    context = created;
    return true;
}

bool Context::supports(VkFormat format, VkFormatFeatureFlags features) const
{
    VkFormatProperties properties = {};
    vk.getPhysicalDeviceFormatProperties(physicalDevice, format, &properties);
    return (properties.optimalTilingFeatures & features) == features;
}

int Context::maxExtent() const
{
    return int(std::min({limits.maxImageDimension2D, limits.maxFramebufferWidth,
                         limits.maxFramebufferHeight, limits.maxViewportDimensions[0],
                         limits.maxViewportDimensions[1]}));
}

bool Context::checkExtent(const QString &what, QSize size, QString &error) const
{
    if (size.width() <= maxExtent() && size.height() <= maxExtent())
        return true;
    error = "%1 has %2x%3 pixels, and this device takes no more than %4 either way"_L1.arg(
            what, QString::number(size.width()), QString::number(size.height()),
            QString::number(maxExtent()));
    return false;
}

bool isSuccess(VkResult result, QString &error)
{
    switch (result) {
    case VK_SUCCESS:
        return true;
    case VK_ERROR_DEVICE_LOST:
        error = u"the Vulkan device was lost: start again, or choose another one"_s;
        break;
    case VK_ERROR_OUT_OF_DEVICE_MEMORY:
        error = u"the Vulkan device has not enough memory: choose a smaller size or source"_s;
        break;
    case VK_ERROR_OUT_OF_HOST_MEMORY:
        error = u"not enough memory: choose a smaller size or source"_s;
        break;
    default:
        error = "Vulkan failed with VkResult %1"_L1.arg(QString::number(int(result)));
    }
    return false;
}

} // namespace VulkanGraph
