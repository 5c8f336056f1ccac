// An application includes the renderer's header, beside a loader that replaces Vulkan's prototypes
// if LOADER is defined.
#ifdef LOADER
#define VK_NO_PROTOTYPES
#include <volk.h>
#endif

#include <VulkanGraphRenderer.h>

VulkanGraphRenderer::Device loadedDevice();
VulkanGraphRenderer::Device loadedDevice()
{
    VulkanGraphRenderer::Device device;
    device.getInstanceProcAddr = vkGetInstanceProcAddr;
    return device;
}
