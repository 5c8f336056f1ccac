#include "TestApplication.h"

#include "VulkanHooks.h"

#include <limits>

struct TestApplication::Functions
{
    explicit Functions(const VulkanGraphRenderer::Device &handles)
    {
        const auto load = [&handles](auto &function, const char *name) {
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(
                    handles.getInstanceProcAddr(handles.instance, name));
        };
        load(allocateCommandBuffers, "vkAllocateCommandBuffers");
        load(beginCommandBuffer, "vkBeginCommandBuffer");
        load(createCommandPool, "vkCreateCommandPool");
        load(createFence, "vkCreateFence");
        load(destroyCommandPool, "vkDestroyCommandPool");
        load(destroyFence, "vkDestroyFence");
        load(deviceWaitIdle, "vkDeviceWaitIdle");
        load(endCommandBuffer, "vkEndCommandBuffer");
        load(getDeviceQueue, "vkGetDeviceQueue");
        load(queueSubmit, "vkQueueSubmit");
        load(resetFences, "vkResetFences");
        load(waitForFences, "vkWaitForFences");
    }

    PFN_vkAllocateCommandBuffers allocateCommandBuffers = nullptr;
    PFN_vkBeginCommandBuffer beginCommandBuffer = nullptr;
    PFN_vkCreateCommandPool createCommandPool = nullptr;
    PFN_vkCreateFence createFence = nullptr;
    PFN_vkDestroyCommandPool destroyCommandPool = nullptr;
    PFN_vkDestroyFence destroyFence = nullptr;
    PFN_vkDeviceWaitIdle deviceWaitIdle = nullptr;
    PFN_vkEndCommandBuffer endCommandBuffer = nullptr;
    PFN_vkGetDeviceQueue getDeviceQueue = nullptr;
    PFN_vkQueueSubmit queueSubmit = nullptr;
    PFN_vkResetFences resetFences = nullptr;
    PFN_vkWaitForFences waitForFences = nullptr;
};

struct TestApplication::Frame
{
    VkCommandPool pool = VK_NULL_HANDLE;
    VkCommandBuffer commands = VK_NULL_HANDLE;
    VkFence done = VK_NULL_HANDLE;
};

namespace {

constexpr VkFormat kSourceFormat = VK_FORMAT_R32G32B32A32_SFLOAT;
constexpr VkImageLayout kTargetLayout = VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL;

void check(bool isDone, const QString &error)
{
    if (!isDone)
        qFatal("%s", qPrintable(error));
}

void check(VkResult result)
{
    if (result != VK_SUCCESS)
        qFatal("VkResult %d", int(result));
}

int texelBytes(VkFormat format)
{
    switch (format) {
    case VK_FORMAT_R32G32B32A32_SFLOAT:
        return 16;
    case VK_FORMAT_R16G16B16A16_SFLOAT:
        return 8;
    default:
        return 4;
    }
}

} // namespace

TestApplication::TestApplication() : TestApplication(Settings()) { }

TestApplication::TestApplication(const Settings &settings)
{
    QString error;
    check(VulkanDevice::open(settings.device.isEmpty() ? softwareDevice() : settings.device,
                             m_device, error),
          error);
    m_vk = std::make_unique<Functions>(m_device->handles());
    m_vk->getDeviceQueue(handles().device, handles().queueFamily, 0, &m_queue);
    m_frames.resize(std::size_t(settings.options.framesInFlight));
    for (Frame &frame : m_frames) {
        const VkCommandPoolCreateInfo pool = {VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO, nullptr,
                                              VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT,
                                              handles().queueFamily};
        check(m_vk->createCommandPool(handles().device, &pool, nullptr, &frame.pool));
        const VkCommandBufferAllocateInfo commands = {
                VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO, nullptr, frame.pool,
                VK_COMMAND_BUFFER_LEVEL_PRIMARY, 1};
        check(m_vk->allocateCommandBuffers(handles().device, &commands, &frame.commands));
        const VkFenceCreateInfo fence = {VK_STRUCTURE_TYPE_FENCE_CREATE_INFO, nullptr,
                                         VK_FENCE_CREATE_SIGNALED_BIT};
        check(m_vk->createFence(handles().device, &fence, nullptr, &frame.done));
    }
    VulkanGraphRenderer::Device device = m_device->handles();
    if (settings.hasHooks)
        device.getInstanceProcAddr = VulkanHooks::install(device.getInstanceProcAddr);
    check(VulkanGraphRenderer::create(device, settings.options, m_renderer, error), error);
}

TestApplication::~TestApplication()
{
    waitForAll();
    m_renderer.reset();
    for (const Frame &frame : m_frames) {
        m_vk->destroyFence(handles().device, frame.done, nullptr);
        m_vk->destroyCommandPool(handles().device, frame.pool, nullptr);
    }
}

std::unique_ptr<VulkanGraphRenderer> TestApplication::anotherRenderer(int framesInFlight) const
{
    QString error;
    std::unique_ptr<VulkanGraphRenderer> renderer;
    check(VulkanGraphRenderer::create(handles(), {framesInFlight, false}, renderer, error), error);
    return renderer;
}

VulkanGraphRenderer::PreparedGraph
TestApplication::prepare(const PresetOnDisk &preset, VkFormat format, VulkanGraphRenderer *renderer)
{
    QString error;
    VulkanGraphRenderer::PrepareOptions options;
    options.targetFormat = format;
    VulkanGraphRenderer::PreparedGraph graph;
    check((renderer == nullptr ? *m_renderer : *renderer)
                  .prepare(preset.graph, preset.modules, options, graph, error),
          error);
    return graph;
}

VulkanGraphRenderer::SourceId TestApplication::addSource(const FloatImage &picture,
                                                         VulkanGraphRenderer *renderer)
{
    QString error;
    std::unique_ptr<DeviceImage> &image = m_sources.emplace_back();
    check(m_device->createImage(picture.size, kSourceFormat,
                                VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT, image,
                                error),
          error);
    check(m_device->upload(*image, picture.pixels.data(), picture.pixels.size() * sizeof(Pixel),
                           error),
          error);
    VulkanGraphRenderer::SourceId id = {};
    check((renderer == nullptr ? *m_renderer : *renderer)
                  .addSource({image->view(), kSourceFormat, picture.size}, id, error),
          error);
    return id;
}

VulkanGraphRenderer::TargetId TestApplication::addTarget(QSize size, VkFormat format,
                                                         VulkanGraphRenderer *renderer)
{
    QString error;
    Target target;
    target.format = format;
    check(m_device->createImage(size, format,
                                VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT
                                        | VK_IMAGE_USAGE_TRANSFER_SRC_BIT,
                                target.image, error),
          error);
    VulkanGraphRenderer::TargetId id = {};
    check((renderer == nullptr ? *m_renderer : *renderer)
                  .addTarget({.view = target.image->view(),
                              .format = format,
                              .size = size,
                              .layoutAfter = kTargetLayout,
                              .layoutBefore = kTargetLayout},
                             id, error),
          error);
    if (renderer == nullptr)
        m_targets.emplace(id, std::move(target));
    else
        m_sources.push_back(std::move(target.image)); // keeps it
    return id;
}

bool TestApplication::draw(const VulkanGraphRenderer::PreparedGraph &graph,
                           const VulkanGraphRenderer::Frame &frame, QString &error,
                           VulkanGraphRenderer *renderer)
{
    const Frame &inFlight = m_frames.at(std::size_t(frame.frameInFlight));
    check(m_vk->waitForFences(handles().device, 1, &inFlight.done, VK_TRUE,
                              std::numeric_limits<std::uint64_t>::max()));
    const VkCommandBufferBeginInfo begin = {VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO, nullptr,
                                            VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT, nullptr};
    check(m_vk->beginCommandBuffer(inFlight.commands, &begin));
    VulkanHooks::isRecording = true;
    const bool isRecorded = (renderer == nullptr ? *m_renderer : *renderer)
                                    .record(inFlight.commands, graph, frame, error);
    VulkanHooks::isRecording = false;
    check(m_vk->endCommandBuffer(inFlight.commands));
    if (!isRecorded)
        return false;
    check(m_vk->resetFences(handles().device, 1, &inFlight.done));
    VkSubmitInfo submit = {};
    submit.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    submit.commandBufferCount = 1;
    submit.pCommandBuffers = &inFlight.commands;
    check(m_vk->queueSubmit(m_queue, 1, &submit, inFlight.done));
    return true;
}

void TestApplication::withCommands(const std::function<void(VkCommandBuffer)> &record)
{
    const VkCommandBuffer commands = m_frames.front().commands;
    const VkCommandBufferBeginInfo begin = {VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO, nullptr, 0,
                                            nullptr};
    check(m_vk->beginCommandBuffer(commands, &begin));
    record(commands);
    check(m_vk->endCommandBuffer(commands));
}

bool TestApplication::record(const VulkanGraphRenderer::PreparedGraph &graph,
                             const VulkanGraphRenderer::Frame &frame, QString &error)
{
    bool isRecorded = false;
    withCommands([&](VkCommandBuffer commands) {
        isRecorded = m_renderer->record(commands, graph, frame, error);
    });
    return isRecorded;
}

void TestApplication::waitForAll()
{
    check(m_vk->deviceWaitIdle(handles().device));
}

QByteArray TestApplication::texels(VulkanGraphRenderer::TargetId target)
{
    const Target &known = m_targets.at(target);
    return download(known.image->image(), kTargetLayout, known.image->size(), known.format);
}

QByteArray TestApplication::texels(const VulkanGraphRenderer::Output &output)
{
    return download(output.image, VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL, output.size,
                    output.format);
}

QByteArray TestApplication::download(VkImage image, VkImageLayout layout, QSize size,
                                     VkFormat format)
{
    waitForAll();
    QString error;
    QByteArray texels(qsizetype(size.width()) * size.height() * texelBytes(format), '\0');
    check(m_device->download(image, layout, size, texels.data(), std::size_t(texels.size()), error),
          error);
    return texels;
}

std::vector<float> parameterValues(const VulkanGraphRenderer::PreparedGraph &graph,
                                   const PresetOnDisk &preset)
{
    const QHash<QString, float> initial = initialValues(preset.parameters);
    std::vector<float> values;
    for (const QString &id : graph.parameterIds())
        values.push_back(initial.value(id));
    return values;
}
