#include "VulkanDevice.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <optional>
#include <utility>

namespace {

std::optional<std::uint32_t> drawingQueueFamily(const vk::raii::PhysicalDevice &device)
{
    const auto families = device.getQueueFamilyProperties();
    for (std::uint32_t family = 0; family < families.size(); ++family) {
        if (families[family].queueFlags & vk::QueueFlagBits::eGraphics)
            return family;
    }
    return std::nullopt;
}

std::uint64_t timestampMask(const VulkanDevice::Choice &choice)
{
    const std::uint32_t bits =
            choice.physical.getQueueFamilyProperties().at(choice.queueFamily).timestampValidBits;
    return bits >= 64 ? std::numeric_limits<std::uint64_t>::max() : (1ULL << bits) - 1;
}

vk::raii::Device createDevice(const VulkanDevice::Choice &choice)
{
    const float priority = 1.0F;
    const vk::DeviceQueueCreateInfo queue({}, choice.queueFamily, 1, &priority);
    return {choice.physical, vk::DeviceCreateInfo({}, queue)};
}

vk::raii::CommandBuffer createCommands(const vk::raii::Device &device,
                                       const vk::raii::CommandPool &pool)
{
    return std::move(
            vk::raii::CommandBuffers(device, {*pool, vk::CommandBufferLevel::ePrimary, 1}).front());
}

struct LayoutUse
{
    vk::PipelineStageFlags stages;
    vk::AccessFlags access;
};

LayoutUse useOf(vk::ImageLayout layout)
{
    switch (layout) {
    case vk::ImageLayout::eUndefined:
        return {vk::PipelineStageFlagBits::eTopOfPipe, {}};
    case vk::ImageLayout::eTransferSrcOptimal:
        return {vk::PipelineStageFlagBits::eTransfer, vk::AccessFlagBits::eTransferRead};
    case vk::ImageLayout::eTransferDstOptimal:
        return {vk::PipelineStageFlagBits::eTransfer, vk::AccessFlagBits::eTransferWrite};
    default:
        return {vk::PipelineStageFlagBits::eFragmentShader, vk::AccessFlagBits::eShaderRead};
    }
}

} // namespace

vk::raii::Instance VulkanDevice::createInstance(const vk::raii::Context &context)
{
    const vk::ApplicationInfo application("render-graph-preview", 1, nullptr, 0,
                                          VK_API_VERSION_1_1);
    return {context, vk::InstanceCreateInfo({}, &application)};
}

std::vector<VulkanDevice::Choice> VulkanDevice::choices(const vk::raii::Instance &instance)
{
    std::vector<Choice> found;
    vk::raii::PhysicalDevices devices(instance);
    for (vk::raii::PhysicalDevice &device : devices) {
        const vk::PhysicalDeviceProperties properties = device.getProperties();
        const std::optional<std::uint32_t> family = drawingQueueFamily(device);
        if (properties.apiVersion < VK_API_VERSION_1_1 || !family)
            continue;
        found.push_back({std::move(device), *family,
                         QString::fromUtf8(properties.deviceName.data()),
                         properties.deviceType == vk::PhysicalDeviceType::eCpu});
    }
    return found;
}

VulkanDevice::VulkanDevice(vk::raii::Context context, vk::raii::Instance instance, Choice choice)
    : m_context(std::move(context)),
      m_instance(std::move(instance)),
      m_choice(std::move(choice)),
      m_limits(m_choice.physical.getProperties().limits),
      m_timestampMask(timestampMask(m_choice)),
      m_device(createDevice(m_choice)),
      m_queue(m_device, m_choice.queueFamily, 0),
      m_commandPool(m_device,
                    {vk::CommandPoolCreateFlagBits::eResetCommandBuffer, m_choice.queueFamily}),
      m_commands(createCommands(m_device, m_commandPool)),
      m_done(m_device, vk::FenceCreateInfo())
{
}

bool VulkanDevice::supports(vk::Format format, vk::FormatFeatureFlags features) const
{
    return (m_choice.physical.getFormatProperties(format).optimalTilingFeatures & features)
            == features;
}

vk::raii::DeviceMemory VulkanDevice::allocate(const vk::MemoryRequirements &needed,
                                              vk::MemoryPropertyFlags flags) const
{
    const vk::PhysicalDeviceMemoryProperties memory = m_choice.physical.getMemoryProperties();
    for (std::uint32_t type = 0; type < memory.memoryTypeCount; ++type) {
        const bool fits = (needed.memoryTypeBits >> type & 1U) != 0;
        if (fits && (memory.memoryTypes.at(type).propertyFlags & flags) == flags)
            return {m_device, vk::MemoryAllocateInfo(needed.size, type)};
    }
    throw vk::OutOfDeviceMemoryError("no memory of the kind that is needed");
}

DeviceImage VulkanDevice::createImage(QSize size, vk::Format format, vk::ImageUsageFlags usage,
                                      bool hasMipmaps) const
{
    DeviceImage result;
    result.size = size;
    result.format = format;
    if (hasMipmaps)
        result.levels =
                std::uint32_t(std::bit_width(unsigned(std::max(size.width(), size.height()))));
    result.image = vk::raii::Image(
            m_device,
            vk::ImageCreateInfo({}, vk::ImageType::e2D, format, result.extent(), result.levels, 1,
                                vk::SampleCountFlagBits::e1, vk::ImageTiling::eOptimal, usage));
    const vk::MemoryRequirements needed = result.image.getMemoryRequirements();
    result.bytes = needed.size;
    result.memory = allocate(needed, vk::MemoryPropertyFlagBits::eDeviceLocal);
    result.image.bindMemory(*result.memory, 0);
    const auto view = [&](std::uint32_t levels) {
        return vk::raii::ImageView(
                m_device,
                vk::ImageViewCreateInfo({}, *result.image, vk::ImageViewType::e2D, format, {},
                                        {vk::ImageAspectFlagBits::eColor, 0, levels, 0, 1}));
    };
    if (usage & vk::ImageUsageFlagBits::eSampled)
        result.sampled = view(result.levels);
    if (usage & vk::ImageUsageFlagBits::eColorAttachment)
        result.target = view(1);
    return result;
}

DeviceBuffer VulkanDevice::createBuffer(std::size_t size, vk::BufferUsageFlags usage) const
{
    DeviceBuffer result;
    result.buffer = vk::raii::Buffer(m_device, vk::BufferCreateInfo({}, size, usage));
    result.memory = allocate(result.buffer.getMemoryRequirements(),
                             vk::MemoryPropertyFlagBits::eHostVisible
                                     | vk::MemoryPropertyFlagBits::eHostCoherent);
    result.buffer.bindMemory(*result.memory, 0);
    result.mapped = result.memory.mapMemory(0, VK_WHOLE_SIZE);
    return result;
}

void VulkanDevice::run(const std::function<void(const vk::raii::CommandBuffer &)> &record) const
{
    m_commands.begin({vk::CommandBufferUsageFlagBits::eOneTimeSubmit});
    record(m_commands);
    m_commands.end();
    m_device.resetFences(*m_done);
    m_queue.submit(vk::SubmitInfo({}, {}, *m_commands), *m_done);
    const vk::Result result =
            m_device.waitForFences(*m_done, VK_TRUE, std::numeric_limits<std::uint64_t>::max());
    if (result != vk::Result::eSuccess)
        throw vk::DeviceLostError("a fence that never ends");
}

double VulkanDevice::millisecondsBetween(std::uint64_t timestamp,
                                         std::uint64_t laterTimestamp) const
{
    return double((laterTimestamp - timestamp) & m_timestampMask) * double(m_limits.timestampPeriod)
            * 1e-6;
}

void VulkanDevice::transition(const vk::raii::CommandBuffer &commands, const DeviceImage &image,
                              vk::ImageLayout from, vk::ImageLayout to, std::uint32_t firstLevel,
                              std::uint32_t levels)
{
    const LayoutUse before = useOf(from);
    const LayoutUse after = useOf(to);
    commands.pipelineBarrier(
            before.stages, after.stages, {}, {}, {},
            vk::ImageMemoryBarrier(before.access, after.access, from, to, VK_QUEUE_FAMILY_IGNORED,
                                   VK_QUEUE_FAMILY_IGNORED, *image.image,
                                   {vk::ImageAspectFlagBits::eColor, firstLevel, levels, 0, 1}));
}
