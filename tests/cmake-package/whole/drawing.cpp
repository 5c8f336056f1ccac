#include <VulkanGraphRenderer.h>

#if defined(__cpp_exceptions) || defined(__cpp_rtti)
#error The application has exceptions or run-time type information.
#endif

int canDraw();
int canDraw()
{
    std::unique_ptr<VulkanGraphRenderer> renderer;
    QString error;
    return VulkanGraphRenderer::create({}, {}, renderer, error) ? 1 : 0;
}
