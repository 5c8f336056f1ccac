#pragma once

#include <QSize>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include <vulkan/vulkan_raii.hpp>

// An image on the device, in layout eShaderReadOnlyOptimal except while it is written or copied.
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
    vk::raii::ImageView target = nullptr; // the first level
};

struct DeviceBuffer
{
    vk::raii::DeviceMemory memory = nullptr;
    vk::raii::Buffer buffer = nullptr;
    void *mapped = nullptr;
};

// A Vulkan device with one queue and one command buffer, for one thread. Failures of Vulkan are
// thrown as exceptions of its C++ binding; the owner catches them.
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

    // Its content and layout are undefined. `hasMipmaps` adds levels down to one pixel.
    DeviceImage createImage(QSize size, vk::Format format, vk::ImageUsageFlags usage,
                            bool hasMipmaps = false) const;
    DeviceBuffer createBuffer(std::size_t size, vk::BufferUsageFlags usage) const;

    // Records, submits, and waits until all is done.
    void run(const std::function<void(const vk::raii::CommandBuffer &)> &record) const;

    bool hasTimestamps() const
    {
        return m_timestampMask != 0;
    }
    double millisecondsBetween(std::uint64_t timestamp, std::uint64_t laterTimestamp) const;

    // Records a layout transition. Layouts: eUndefined, eShaderReadOnlyOptimal (read in fragment
    // shaders), eTransferSrcOptimal and eTransferDstOptimal.
    static void transition(const vk::raii::CommandBuffer &commands, const DeviceImage &image,
                           vk::ImageLayout from, vk::ImageLayout to, std::uint32_t firstLevel = 0,
                           std::uint32_t levels = VK_REMAINING_MIP_LEVELS);

private:
    vk::raii::DeviceMemory allocate(const vk::MemoryRequirements &needed,
                                    vk::MemoryPropertyFlags flags) const;

    vk::raii::Context m_context;
    vk::raii::Instance m_instance;
    Choice m_choice;
    vk::PhysicalDeviceLimits m_limits;
    std::uint64_t m_timestampMask;
    vk::raii::Device m_device;
    vk::raii::Queue m_queue;
    vk::raii::CommandPool m_commandPool;
    vk::raii::CommandBuffer m_commands;
    vk::raii::Fence m_done;
};
