#include "VulkanDevice.h"

#include "VulkanCalls.h"

#include <QStringList>

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

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

// Commands, and whether they are done.
struct Submission
{
    vk::raii::CommandBuffer commands = nullptr;
    vk::raii::Fence done = nullptr;
    bool isPending = false;
};

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

void transitionLayout(const vk::raii::Device &device, VkCommandBuffer commands, VkImage image,
                      Layout from, Layout to)
{
    const LayoutUse before = useOf(from);
    const LayoutUse after = useOf(to);
    const vk::ImageMemoryBarrier barrier(before.access, after.access, from, to,
                                         VK_QUEUE_FAMILY_IGNORED, VK_QUEUE_FAMILY_IGNORED, image,
                                         {vk::ImageAspectFlagBits::eColor, 0, 1, 0, 1});
    vk::CommandBuffer(commands).pipelineBarrier(before.stages, after.stages, {}, {}, {}, barrier,
                                                *device.getDispatcher());
}

vk::BufferImageCopy copyOf(const QRect &rectangle, std::size_t offset = 0)
{
    return {offset,
            0,
            0,
            {vk::ImageAspectFlagBits::eColor, 0, 0, 1},
            {rectangle.x(), rectangle.y(), 0},
            {std::uint32_t(rectangle.width()), std::uint32_t(rectangle.height()), 1}};
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
          submissions(kFramesInFlight + 1)
    {
        for (Submission &submission : submissions)
            submission = {createCommands(device, commandPool), {device, vk::FenceCreateInfo()}};
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

    void wait(Submission &submission) const
    {
        if (!std::exchange(submission.isPending, false))
            return;
        const vk::Result result = device.waitForFences(*submission.done, VK_TRUE,
                                                       std::numeric_limits<std::uint64_t>::max());
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
    std::vector<Submission> submissions; // the last one is for upload() and download()
};

struct HostBuffer::Data
{
    std::shared_ptr<const VulkanDevice::State> device;
    vk::raii::DeviceMemory memory = nullptr;
    vk::raii::Buffer buffer = nullptr;
    std::size_t size = 0;
    void *mapped = nullptr;
    bool isCoherent = true;
};

HostBuffer::HostBuffer(std::unique_ptr<Data> data) : m_data(std::move(data)) { }

HostBuffer::~HostBuffer() = default;

VkBuffer HostBuffer::buffer() const
{
    return *m_data->buffer;
}

std::size_t HostBuffer::size() const
{
    return m_data->size;
}

void *HostBuffer::data() const
{
    return m_data->mapped;
}

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
                std::make_shared<State>(std::move(*context), std::move(instance),
                                        std::move(devices.at(std::size_t(index))))));
    });
}

VulkanDevice::VulkanDevice(std::shared_ptr<State> state) : m_state(std::move(state)) { }

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

const vk::raii::Device &VulkanDevice::raiiDevice() const
{
    return m_state->device;
}

double VulkanDevice::timestampPeriod() const
{
    const vk::raii::PhysicalDevice &physical = m_state->physicalDevice.physical;
    const std::uint32_t family = m_state->physicalDevice.queueFamily;
    return physical.getQueueFamilyProperties().at(family).timestampValidBits == 0
            ? 0.0
            : double(physical.getProperties().limits.timestampPeriod);
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

bool VulkanDevice::createBuffer(std::size_t size, Transfer transfer,
                                std::shared_ptr<HostBuffer> &buffer, QString &error) const
{
    return runVulkan(error, [&] {
        const vk::raii::Device &device = m_state->device;
        // Uncached reads are slow on most devices.
        const bool isRead = transfer == Transfer::Download;
        auto data = std::make_unique<HostBuffer::Data>();
        data->device = m_state;
        data->size = size;
        data->buffer = vk::raii::Buffer(
                device,
                vk::BufferCreateInfo({}, size,
                                     isRead ? vk::BufferUsageFlagBits::eTransferDst
                                            : vk::BufferUsageFlagBits::eTransferSrc));
        vk::MemoryPropertyFlags found;
        data->memory =
                m_state->allocate(data->buffer.getMemoryRequirements(), Memory::eHostVisible,
                                  isRead ? Memory::eHostCached : Memory::eHostCoherent, found);
        data->isCoherent = bool(found & Memory::eHostCoherent);
        data->buffer.bindMemory(*data->memory, 0);
        data->mapped = data->memory.mapMemory(0, VK_WHOLE_SIZE);
        buffer.reset(new HostBuffer(std::move(data)));
    });
}

bool VulkanDevice::upload(const DeviceImage &image, const void *texels, std::size_t size,
                          QString &error)
{
    std::shared_ptr<HostBuffer> staging;
    if (!createBuffer(size, Transfer::Upload, staging, error))
        return false;
    std::memcpy(staging->data(), texels, size);
    return submit(
                   kFramesInFlight,
                   [&](VkCommandBuffer commands) {
                       return recordUpload(commands, *staging, image, error);
                   },
                   error)
            && wait(kFramesInFlight, nullptr, error);
}

bool VulkanDevice::recordUpload(VkCommandBuffer commands, const HostBuffer &texels,
                                const DeviceImage &image, QString &error) const
{
    return runVulkan(error, [&] {
        if (!texels.m_data->isCoherent)
            m_state->device.flushMappedMemoryRanges(
                    vk::MappedMemoryRange(*texels.m_data->memory, 0, VK_WHOLE_SIZE));
        transitionLayout(m_state->device, commands, image.image(), Layout::eUndefined,
                         Layout::eTransferDstOptimal);
        vk::CommandBuffer(commands).copyBufferToImage(
                texels.buffer(), image.image(), Layout::eTransferDstOptimal,
                copyOf({QPoint(), image.size()}), *m_state->device.getDispatcher());
        transitionLayout(m_state->device, commands, image.image(), Layout::eTransferDstOptimal,
                         Layout::eShaderReadOnlyOptimal);
    });
}

void VulkanDevice::recordDownload(VkCommandBuffer commands, VkImage image, VkImageLayout layout,
                                  const QRect &rectangle, const HostBuffer &texels,
                                  std::size_t offset) const
{
    const vk::CommandBuffer recorded(commands);
    const auto &dispatcher = *m_state->device.getDispatcher();
    transitionLayout(m_state->device, commands, image, Layout(layout), Layout::eTransferSrcOptimal);
    recorded.copyImageToBuffer(image, Layout::eTransferSrcOptimal, texels.buffer(),
                               copyOf(rectangle, offset), dispatcher);
    transitionLayout(m_state->device, commands, image, Layout::eTransferSrcOptimal, Layout(layout));
    recorded.pipelineBarrier(
            vk::PipelineStageFlagBits::eTransfer, vk::PipelineStageFlagBits::eHost, {},
            vk::MemoryBarrier(vk::AccessFlagBits::eTransferWrite, vk::AccessFlagBits::eHostRead),
            {}, {}, dispatcher);
}

bool VulkanDevice::download(VkImage image, VkImageLayout layout, QSize extent, void *texels,
                            std::size_t size, QString &error)
{
    std::shared_ptr<HostBuffer> staging;
    const auto record = [&](VkCommandBuffer commands) {
        recordDownload(commands, image, layout, {QPoint(), extent}, *staging, 0);
        return true;
    };
    if (!createBuffer(size, Transfer::Download, staging, error)
        || !submit(kFramesInFlight, record, error) || !wait(kFramesInFlight, staging.get(), error))
        return false;
    std::memcpy(texels, staging->data(), size);
    return true;
}

bool VulkanDevice::submit(int number, const std::function<bool(VkCommandBuffer)> &record,
                          QString &error)
{
    bool isRecorded = false;
    const bool isDone = runVulkan(error, [&] {
        Submission &submission = m_state->submissions.at(std::size_t(number));
        m_state->wait(submission);
        submission.commands.reset(); // an error may have ended the recording
        submission.commands.begin({vk::CommandBufferUsageFlagBits::eOneTimeSubmit});
        isRecorded = record(*submission.commands);
        submission.commands.end();
        if (!isRecorded)
            return;
        m_state->device.resetFences(*submission.done);
        m_state->queue.submit(vk::SubmitInfo({}, {}, *submission.commands), *submission.done);
        submission.isPending = true;
    });
    return isDone && isRecorded;
}

bool VulkanDevice::wait(int number, const HostBuffer *written, QString &error)
{
    return runVulkan(error, [&] {
        m_state->wait(m_state->submissions.at(std::size_t(number)));
        if (written != nullptr && !written->m_data->isCoherent)
            m_state->device.invalidateMappedMemoryRanges(
                    vk::MappedMemoryRange(*written->m_data->memory, 0, VK_WHOLE_SIZE));
    });
}

bool VulkanDevice::waitForAll(QString &error)
{
    return runVulkan(error, [&] {
        for (Submission &submission : m_state->submissions)
            m_state->wait(submission);
    });
}
