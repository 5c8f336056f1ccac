#include "VulkanDevice.h"

#include <QStringList>

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include <vulkan/vulkan_raii.hpp>

using namespace Qt::StringLiterals;

namespace {

using Layout = vk::ImageLayout;
using Memory = vk::MemoryPropertyFlagBits;

// A physical device that can draw.
struct PhysicalDevice
{
    vk::raii::PhysicalDevice physical;
    std::uint32_t queueFamily;
    PhysicalDeviceInfo info;
};

// Host-visible memory for transfers.
struct StagingBuffer
{
    vk::raii::DeviceMemory memory = nullptr;
    vk::raii::Buffer buffer = nullptr;
    void *mapped = nullptr;
    bool isCoherent = true;
};

// Runs Vulkan calls. Their exceptions end here, as an error text.
template<typename Action>
bool runVulkan(QString &error, const Action &action)
{
    try {
        action();
        return true;
    } catch (const vk::DeviceLostError &) {
        error = u"the Vulkan device was lost: start again, or choose another one"_s;
    } catch (const vk::OutOfDeviceMemoryError &) {
        error = u"the Vulkan device has not enough memory: choose a smaller size or source"_s;
    } catch (const vk::OutOfHostMemoryError &) {
        error = u"not enough memory: choose a smaller size or source"_s;
    } catch (const std::bad_alloc &) {
        error = u"not enough memory: choose a smaller size or source"_s;
    } catch (const std::exception &exception) {
        error = "Vulkan: "_L1 + QString::fromLocal8Bit(exception.what());
    }
    return false;
}

vk::raii::Instance createInstance(const vk::raii::Context &context)
{
    const vk::ApplicationInfo application("render-graph-preview", 1, nullptr, 0,
                                          VK_API_VERSION_1_1);
    return {context, vk::InstanceCreateInfo({}, &application)};
}

std::optional<std::uint32_t> drawingQueueFamily(const vk::raii::PhysicalDevice &device)
{
    const auto families = device.getQueueFamilyProperties();
    for (std::uint32_t family = 0; family < families.size(); ++family) {
        if (families[family].queueFlags & vk::QueueFlagBits::eGraphics)
            return family;
    }
    return std::nullopt;
}

std::vector<PhysicalDevice> drawingDevices(const vk::raii::Instance &instance)
{
    std::vector<PhysicalDevice> found;
    vk::raii::PhysicalDevices devices(instance);
    for (vk::raii::PhysicalDevice &device : devices) {
        const vk::PhysicalDeviceProperties properties = device.getProperties();
        const std::optional<std::uint32_t> family = drawingQueueFamily(device);
        if (properties.apiVersion < VK_API_VERSION_1_1 || !family)
            continue;
        found.push_back({std::move(device),
                         *family,
                         {QString::fromUtf8(properties.deviceName.data()),
                          properties.deviceType == vk::PhysicalDeviceType::eCpu}});
    }
    return found;
}

// Fails if there is none.
bool findDevices(std::optional<vk::raii::Context> &context, vk::raii::Instance &instance,
                 std::vector<PhysicalDevice> &devices, QString &error)
{
    QString reason = u"none supports Vulkan 1.1"_s;
    const bool isDone = runVulkan(reason, [&] {
        context.emplace();
        instance = createInstance(*context);
        devices = drawingDevices(instance);
    });
    if (isDone && !devices.empty())
        return true;
    error = "no Vulkan device to draw on (%1); install a driver (Debian: mesa-vulkan-drivers)"_L1
                    .arg(reason);
    return false;
}

QString deviceList(const std::vector<PhysicalDevice> &devices)
{
    QStringList names;
    for (const PhysicalDevice &device : devices)
        names.append("%1: %2"_L1.arg(QString::number(names.size()), device.info.name));
    return names.join(", "_L1);
}

// The index of the named device, or -1.
qsizetype indexOf(const std::vector<PhysicalDevice> &devices, const QString &name)
{
    bool isNumber = false;
    const qsizetype number = name.toInt(&isNumber);
    if (isNumber)
        return number >= 0 && std::size_t(number) < devices.size() ? number : -1;
    const auto found = std::ranges::find_if(devices, [&name](const PhysicalDevice &device) {
        return name.isEmpty() ? !device.info.isSoftware
                              : device.info.name.contains(name, Qt::CaseInsensitive);
    });
    if (found != devices.cend())
        return found - devices.cbegin();
    return name.isEmpty() ? 0 : -1;
}

vk::raii::Device createDevice(const PhysicalDevice &device)
{
    const float priority = 1.0F;
    const vk::DeviceQueueCreateInfo queue({}, device.queueFamily, 1, &priority);
    return {device.physical, vk::DeviceCreateInfo({}, queue)};
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

LayoutUse useOf(Layout layout)
{
    switch (layout) {
    case Layout::eUndefined:
        return {vk::PipelineStageFlagBits::eFragmentShader, {}};
    case Layout::eTransferSrcOptimal:
        return {vk::PipelineStageFlagBits::eTransfer, vk::AccessFlagBits::eTransferRead};
    case Layout::eTransferDstOptimal:
        return {vk::PipelineStageFlagBits::eTransfer, vk::AccessFlagBits::eTransferWrite};
    default:
        return {vk::PipelineStageFlagBits::eFragmentShader, vk::AccessFlagBits::eShaderRead};
    }
}

void transitionLayout(const vk::raii::CommandBuffer &commands, VkImage image, Layout from,
                      Layout to)
{
    const LayoutUse before = useOf(from);
    const LayoutUse after = useOf(to);
    commands.pipelineBarrier(before.stages, after.stages, {}, {}, {},
                             vk::ImageMemoryBarrier(before.access, after.access, from, to,
                                                    VK_QUEUE_FAMILY_IGNORED,
                                                    VK_QUEUE_FAMILY_IGNORED, image,
                                                    {vk::ImageAspectFlagBits::eColor, 0, 1, 0, 1}));
}

vk::BufferImageCopy wholeImage(QSize size)
{
    return {0,  0,
            0,  {vk::ImageAspectFlagBits::eColor, 0, 0, 1},
            {}, {std::uint32_t(size.width()), std::uint32_t(size.height()), 1}};
}

} // namespace

struct DeviceImage::Data
{
    QSize size;
    qint64 bytes = 0;
    vk::raii::DeviceMemory memory = nullptr;
    vk::raii::Image image = nullptr;
    vk::raii::ImageView view = nullptr;
};

DeviceImage::DeviceImage(std::unique_ptr<Data> data) : m_data(std::move(data)) { }

DeviceImage::~DeviceImage() = default;

QSize DeviceImage::size() const
{
    return m_data->size;
}

VkImage DeviceImage::image() const
{
    return *m_data->image;
}

VkImageView DeviceImage::view() const
{
    return *m_data->view;
}

qint64 DeviceImage::bytes() const
{
    return m_data->bytes;
}

// Its functions throw Vulkan's exceptions.
struct VulkanDevice::State
{
    State(vk::raii::Context vulkan, vk::raii::Instance created, PhysicalDevice opened)
        : context(std::move(vulkan)),
          instance(std::move(created)),
          physicalDevice(std::move(opened)),
          memory(physicalDevice.physical.getMemoryProperties()),
          device(createDevice(physicalDevice)),
          queue(device, physicalDevice.queueFamily, 0),
          commandPool(
                  device,
                  {vk::CommandPoolCreateFlagBits::eResetCommandBuffer, physicalDevice.queueFamily}),
          commands(createCommands(device, commandPool)),
          done(device, vk::FenceCreateInfo())
    {
    }

    // Memory of the first type that has all of `flags` and, if there is one, also `wanted`.
    vk::raii::DeviceMemory allocate(const vk::MemoryRequirements &needed,
                                    vk::MemoryPropertyFlags flags, vk::MemoryPropertyFlags wanted,
                                    vk::MemoryPropertyFlags &found) const
    {
        for (const vk::MemoryPropertyFlags asked : {flags | wanted, flags}) {
            for (std::uint32_t type = 0; type < memory.memoryTypeCount; ++type) {
                found = memory.memoryTypes.at(type).propertyFlags;
                const bool fits = (needed.memoryTypeBits >> type & 1U) != 0;
                if (fits && (found & asked) == asked)
                    return {device, vk::MemoryAllocateInfo(needed.size, type)};
            }
        }
        throw vk::OutOfDeviceMemoryError("no memory of the kind that is needed");
    }

    // Whoever reads asks for cached memory: uncached reads are slow on most devices.
    StagingBuffer createStagingBuffer(std::size_t size, vk::BufferUsageFlags usage) const
    {
        const bool isRead = bool(usage & vk::BufferUsageFlagBits::eTransferDst);
        StagingBuffer staging;
        staging.buffer = vk::raii::Buffer(device, vk::BufferCreateInfo({}, size, usage));
        vk::MemoryPropertyFlags found;
        staging.memory = allocate(staging.buffer.getMemoryRequirements(), Memory::eHostVisible,
                                  isRead ? Memory::eHostCached : Memory::eHostCoherent, found);
        staging.isCoherent = bool(found & Memory::eHostCoherent);
        staging.buffer.bindMemory(*staging.memory, 0);
        staging.mapped = staging.memory.mapMemory(0, VK_WHOLE_SIZE);
        return staging;
    }

    void submitAndWait() const
    {
        device.resetFences(*done);
        queue.submit(vk::SubmitInfo({}, {}, *commands), *done);
        const vk::Result result =
                device.waitForFences(*done, VK_TRUE, std::numeric_limits<std::uint64_t>::max());
        if (result != vk::Result::eSuccess)
            throw vk::DeviceLostError("a fence that never ends");
    }

    vk::raii::Context context;
    vk::raii::Instance instance;
    PhysicalDevice physicalDevice;
    vk::PhysicalDeviceMemoryProperties memory;
    vk::raii::Device device;
    vk::raii::Queue queue;
    vk::raii::CommandPool commandPool;
    vk::raii::CommandBuffer commands;
    vk::raii::Fence done;
};

bool VulkanDevice::list(QList<PhysicalDeviceInfo> &devices, QString &error)
{
    std::optional<vk::raii::Context> context;
    vk::raii::Instance instance = nullptr;
    std::vector<PhysicalDevice> found;
    if (!findDevices(context, instance, found, error))
        return false;
    devices.clear();
    for (const PhysicalDevice &device : found)
        devices.append(device.info);
    return true;
}

bool VulkanDevice::open(const QString &device, std::unique_ptr<VulkanDevice> &opened,
                        QString &error)
{
    std::optional<vk::raii::Context> context;
    vk::raii::Instance instance = nullptr;
    std::vector<PhysicalDevice> devices;
    if (!findDevices(context, instance, devices, error))
        return false;
    const qsizetype index = indexOf(devices, device);
    if (index < 0) {
        error = "no Vulkan device '%1'; there are %2"_L1.arg(device, deviceList(devices));
        return false;
    }
    return runVulkan(error, [&] {
        opened.reset(new VulkanDevice(
                std::make_unique<State>(std::move(*context), std::move(instance),
                                        std::move(devices.at(std::size_t(index))))));
    });
}

VulkanDevice::VulkanDevice(std::unique_ptr<State> state) : m_state(std::move(state)) { }

VulkanDevice::~VulkanDevice() = default;

PhysicalDeviceInfo VulkanDevice::info() const
{
    return m_state->physicalDevice.info;
}

VulkanGraphRenderer::Device VulkanDevice::handles() const
{
    return {.getInstanceProcAddr = m_state->instance.getDispatcher()->vkGetInstanceProcAddr,
            .instance = *m_state->instance,
            .physicalDevice = *m_state->physicalDevice.physical,
            .device = *m_state->device,
            .queueFamily = m_state->physicalDevice.queueFamily};
}

bool VulkanDevice::createImage(QSize size, VkFormat format, VkImageUsageFlags usage,
                               std::unique_ptr<DeviceImage> &image, QString &error) const
{
    return runVulkan(error, [&] {
        const vk::raii::Device &device = m_state->device;
        auto data = std::make_unique<DeviceImage::Data>();
        data->size = size;
        data->image = vk::raii::Image(
                device,
                vk::ImageCreateInfo({}, vk::ImageType::e2D, vk::Format(format),
                                    {std::uint32_t(size.width()), std::uint32_t(size.height()), 1},
                                    1, 1, vk::SampleCountFlagBits::e1, vk::ImageTiling::eOptimal,
                                    vk::ImageUsageFlags(usage)));
        const vk::MemoryRequirements needed = data->image.getMemoryRequirements();
        data->bytes = qint64(needed.size);
        vk::MemoryPropertyFlags found;
        data->memory = m_state->allocate(needed, {}, Memory::eDeviceLocal, found);
        data->image.bindMemory(*data->memory, 0);
        data->view = vk::raii::ImageView(
                device,
                vk::ImageViewCreateInfo({}, *data->image, vk::ImageViewType::e2D,
                                        vk::Format(format), {},
                                        {vk::ImageAspectFlagBits::eColor, 0, 1, 0, 1}));
        image.reset(new DeviceImage(std::move(data)));
    });
}

bool VulkanDevice::upload(const DeviceImage &image, const void *texels, std::size_t size,
                          QString &error)
{
    return runVulkan(error, [&] {
        const StagingBuffer staging =
                m_state->createStagingBuffer(size, vk::BufferUsageFlagBits::eTransferSrc);
        std::memcpy(staging.mapped, texels, size);
        if (!staging.isCoherent)
            m_state->device.flushMappedMemoryRanges(
                    vk::MappedMemoryRange(*staging.memory, 0, VK_WHOLE_SIZE));
        const vk::raii::CommandBuffer &commands = m_state->commands;
        commands.begin({vk::CommandBufferUsageFlagBits::eOneTimeSubmit});
        transitionLayout(commands, image.image(), Layout::eUndefined, Layout::eTransferDstOptimal);
        commands.copyBufferToImage(*staging.buffer, image.image(), Layout::eTransferDstOptimal,
                                   wholeImage(image.size()));
        transitionLayout(commands, image.image(), Layout::eTransferDstOptimal,
                         Layout::eShaderReadOnlyOptimal);
        commands.end();
        m_state->submitAndWait();
    });
}

bool VulkanDevice::download(VkImage image, VkImageLayout layout, QSize extent, void *texels,
                            std::size_t size, QString &error)
{
    return runVulkan(error, [&] {
        const StagingBuffer staging =
                m_state->createStagingBuffer(size, vk::BufferUsageFlagBits::eTransferDst);
        const vk::raii::CommandBuffer &commands = m_state->commands;
        commands.begin({vk::CommandBufferUsageFlagBits::eOneTimeSubmit});
        transitionLayout(commands, image, Layout(layout), Layout::eTransferSrcOptimal);
        commands.copyImageToBuffer(image, Layout::eTransferSrcOptimal, *staging.buffer,
                                   wholeImage(extent));
        transitionLayout(commands, image, Layout::eTransferSrcOptimal, Layout(layout));
        commands.pipelineBarrier(vk::PipelineStageFlagBits::eTransfer,
                                 vk::PipelineStageFlagBits::eHost, {},
                                 vk::MemoryBarrier(vk::AccessFlagBits::eTransferWrite,
                                                   vk::AccessFlagBits::eHostRead),
                                 {}, {});
        commands.end();
        m_state->submitAndWait();
        if (!staging.isCoherent)
            m_state->device.invalidateMappedMemoryRanges(
                    vk::MappedMemoryRange(*staging.memory, 0, VK_WHOLE_SIZE));
        std::memcpy(texels, staging.mapped, size);
    });
}

bool VulkanDevice::submitAndWait(const std::function<bool(VkCommandBuffer)> &record, QString &error)
{
    bool isRecorded = false;
    const bool isDone = runVulkan(error, [&] {
        const vk::raii::CommandBuffer &commands = m_state->commands;
        commands.begin({vk::CommandBufferUsageFlagBits::eOneTimeSubmit});
        isRecorded = record(*commands);
        commands.end();
        if (isRecorded)
            m_state->submitAndWait();
    });
    return isDone && isRecorded;
}
