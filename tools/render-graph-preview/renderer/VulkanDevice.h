#pragma once

#include <QSize>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include <vulkan/vulkan_raii.hpp>

// An image that rests in layout eShaderReadOnlyOptimal between its uses.
struct DeviceImage
{
    vk::Extent3D extent() const
    {
        return {std::uint32_t(size.width()), std::uint32_t(size.height()), 1};
    }

    QSize size;
    vk::Format format = vk::Format::eUndefined;
    std::uint32_t levels = 1;
    std::uint64_t bytes = 0;
    vk::raii::DeviceMemory memory = nullptr;
    vk::raii::Image image = nullptr;
    vk::raii::ImageView sampled = nullptr; // all levels
    vk::raii::ImageView target = nullptr; // the first
};

struct DeviceBuffer
{
    vk::raii::DeviceMemory memory = nullptr;
    vk::raii::Buffer buffer = nullptr;
    void *mapped = nullptr;
};

// A Vulkan device with one queue and one command buffer, used by one thread. What Vulkan refuses is
// an exception of its C++ binding, for whoever owns this to catch.
class VulkanDevice
{
public:
    // A physical device that can draw.
    struct Choice
    {
        vk::raii::PhysicalDevice physical;
        std::uint32_t queueFamily;
        QString name;
        bool isSoftware;
    };
    static vk::raii::Instance createInstance(const vk::raii::Context &context);
    static std::vector<Choice> choices(const vk::raii::Instance &instance);

    VulkanDevice(vk::raii::Context context, vk::raii::Instance instance, Choice choice);

    const Choice &choice() const
    {
        return m_choice;
    }
    const vk::PhysicalDeviceLimits &limits() const
    {
        return m_limits;
    }
    const vk::raii::Device &device() const
    {
        return m_device;
    }
    bool supports(vk::Format format, vk::FormatFeatureFlags features) const;

    // Undefined content in an undefined layout. With `hasMipmaps`, down to a pixel.
    DeviceImage createImage(QSize size, vk::Format format, vk::ImageUsageFlags usage,
                            bool hasMipmaps = false) const;
    DeviceBuffer createBuffer(std::size_t size, vk::BufferUsageFlags usage) const;

    // Records, submits, and waits until all is done.
    void run(const std::function<void(const vk::raii::CommandBuffer &)> &record) const;

    bool hasClock() const
    {
        return m_clockMask != 0;
    }
    double millisecondsBetween(std::uint64_t stamp, std::uint64_t laterStamp) const;

    // Between undefined, reading in a fragment shader, and the two of copying.
    static void moveTo(const vk::raii::CommandBuffer &commands, const DeviceImage &image,
                       vk::ImageLayout from, vk::ImageLayout to, std::uint32_t firstLevel = 0,
                       std::uint32_t levels = VK_REMAINING_MIP_LEVELS);

private:
    vk::raii::DeviceMemory allocate(const vk::MemoryRequirements &needed,
                                    vk::MemoryPropertyFlags flags) const;

    vk::raii::Context m_context;
    vk::raii::Instance m_instance;
    Choice m_choice;
    vk::PhysicalDeviceLimits m_limits;
    std::uint64_t m_clockMask;
    vk::raii::Device m_device;
    vk::raii::Queue m_queue;
    vk::raii::CommandPool m_commandPool;
    vk::raii::CommandBuffer m_commands;
    vk::raii::Fence m_done;
};
