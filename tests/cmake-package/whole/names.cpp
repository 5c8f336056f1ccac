#include <VulkanRenderGraphCatalog.h>

int nameCount();
int nameCount()
{
    return static_cast<int>(VulkanRenderGraphCatalog::presetNames().size());
}
