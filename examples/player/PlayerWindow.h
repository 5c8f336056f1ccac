#pragma once

#include <VulkanGraphRenderer.h>
#include <VulkanRenderGraphCatalog.h>

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QPainter>
#include <QResource>
#include <QVulkanWindow>

#include <cstdio>

#include <vulkan/vulkan.hpp>

using namespace Qt::StringLiterals;

inline void check(bool isDone, const QString &error)
{
    if (isDone)
        return;
    std::fprintf(stderr, "player: %s\n", qUtf8Printable(error));
    std::_Exit(1);
}

constexpr int kFramesInFlight = 4; // a QVulkanWindow has at most 4 images

struct Player
{
    QString preset; // one that the catalogue has
    QImage picture; // RGBX8888; null: one that moves
    double pixelAspect = 1.0; // width over height of a source pixel
    bool isIntegerScaled = false; // a line of the source is a whole number of pixels high
    QString screenshot; // the file to write; empty: none
    int frames = 1; // the screenshot shows the frame of this number, from 1

    int drawnFrames = 0;
    qint64 nanoseconds = 0; // shown so far, without pauses
    bool isPaused = false;

    QImage sourcePicture(std::uint32_t frame) const
    {
        if (!picture.isNull())
            return picture;
        QImage moving(256, 224, QImage::Format_RGBX8888);
        moving.fill(QColor::fromHsv(int(frame % 360), 160, 96));
        QPainter(&moving).fillRect(int(frame % 256), 64, 96, 96, Qt::white);
        return moving;
    }

    // Where the source is shown: in the middle, in its shape, as large as fits.
    QRect letterbox(QSize source, QSize window) const
    {
        const double width = source.width() * pixelAspect;
        double scale = std::min(window.width() / width, double(window.height()) / source.height());
        if (isIntegerScaled && scale > 1.0)
            scale = int(scale);
        const QSize size = (QSizeF(width, source.height()) * scale).toSize().expandedTo({1, 1});
        return {{(window.width() - size.width()) / 2, (window.height() - size.height()) / 2}, size};
    }
};

// The image that enters the presets, and a staging buffer with a part for each frame in flight.
struct SourceImage
{
    SourceImage(const QVulkanWindow &window, const QImage &picture)
        : extent(std::uint32_t(picture.width()), std::uint32_t(picture.height()), 1)
    {
        const vk::Device device = window.device();
        const auto bytes = vk::DeviceSize(picture.sizeInBytes() * kFramesInFlight);
        buffer = device.createBufferUnique({{}, bytes, vk::BufferUsageFlagBits::eTransferSrc});
        const auto bufferBytes = device.getBufferMemoryRequirements(*buffer).size;
        bufferMemory = device.allocateMemoryUnique({bufferBytes, window.hostVisibleMemoryIndex()});
        device.bindBufferMemory(*buffer, *bufferMemory, 0);
        staged = static_cast<uchar *>(device.mapMemory(*bufferMemory, 0, bytes));

        vk::ImageCreateInfo info({}, vk::ImageType::e2D, vk::Format(kFormat), extent, 1, 1);
        info.usage = vk::ImageUsageFlagBits::eTransferDst | vk::ImageUsageFlagBits::eSampled;
        image = device.createImageUnique(info);
        const auto imageBytes = device.getImageMemoryRequirements(*image).size;
        memory = device.allocateMemoryUnique({imageBytes, window.deviceLocalMemoryIndex()});
        device.bindImageMemory(*image, *memory, 0);
        view = device.createImageViewUnique(
                {{}, *image, vk::ImageViewType::e2D, info.format, {}, kColor});
    }

    void upload(vk::CommandBuffer commands, const QImage &picture, int frameInFlight)
    {
        using Access = vk::AccessFlagBits;
        using Layout = vk::ImageLayout;
        using Stage = vk::PipelineStageFlagBits;
        const auto offset = vk::DeviceSize(picture.sizeInBytes() * frameInFlight);
        std::copy_n(picture.constBits(), picture.sizeInBytes(), staged + offset);
        // The previous frame may still sample the image.
        const vk::ImageMemoryBarrier before({}, Access::eTransferWrite, Layout::eUndefined,
                                            Layout::eTransferDstOptimal, 0, 0, *image, kColor);
        commands.pipelineBarrier(Stage::eFragmentShader, Stage::eTransfer, {}, {}, {}, before);
        const vk::BufferImageCopy copy(offset, 0, 0, {kColor.aspectMask, 0, 0, 1}, {}, extent);
        commands.copyBufferToImage(*buffer, *image, Layout::eTransferDstOptimal, copy);
        const vk::ImageMemoryBarrier after(Access::eTransferWrite, Access::eShaderRead,
                                           Layout::eTransferDstOptimal,
                                           Layout::eShaderReadOnlyOptimal, 0, 0, *image, kColor);
        commands.pipelineBarrier(Stage::eTransfer, Stage::eFragmentShader, {}, {}, {}, after);
    }

    static constexpr VkFormat kFormat = VK_FORMAT_R8G8B8A8_UNORM;
    static constexpr vk::ImageSubresourceRange kColor{vk::ImageAspectFlagBits::eColor, 0, 1, 0, 1};
    vk::Extent3D extent;
    vk::UniqueDeviceMemory memory;
    vk::UniqueImage image;
    vk::UniqueImageView view;
    vk::UniqueDeviceMemory bufferMemory;
    vk::UniqueBuffer buffer;
    uchar *staged = nullptr;
};

// Qt calls these functions. If the device is lost, Qt releases everything and begins again.
class PlayerRenderer : public QVulkanWindowRenderer
{
public:
    PlayerRenderer(QVulkanWindow &window, Player &player) : m_window(window), m_player(player) { }

    void initResources() override
    {
        const VkInstance instance = m_window.vulkanInstance()->vkInstance();
        const auto getInstanceProcAddr = reinterpret_cast<PFN_vkGetInstanceProcAddr>(
                m_window.vulkanInstance()->getInstanceProcAddr("vkGetInstanceProcAddr"));
        VULKAN_HPP_DEFAULT_DISPATCHER.init(instance, getInstanceProcAddr);
        VULKAN_HPP_DEFAULT_DISPATCHER.init(vk::Device(m_window.device()));
        const VulkanGraphRenderer::Device device{getInstanceProcAddr, instance,
                                                 m_window.physicalDevice(), m_window.device(),
                                                 m_window.graphicsQueueFamilyIndex()};
        check(VulkanGraphRenderer::create(device, {kFramesInFlight}, m_renderer, m_error), m_error);
        const QImage picture = m_player.sourcePicture(0);
        m_image.emplace(m_window, picture);
        const VulkanGraphRenderer::Source source{*m_image->view, m_image->kFormat, picture.size()};
        check(m_renderer->addSource(source, m_source, m_error), m_error);
        m_clock.start();
    }

    void initSwapChainResources() override
    {
        while (!m_targets.isEmpty()) // the previous swapchain's
            m_renderer->removeTarget(m_targets.takeLast());
        VulkanGraphRenderer::Target target{
                {}, m_window.colorFormat(), m_window.swapChainImageSize()};
        for (int index = 0; index < m_window.swapChainImageCount(); ++index) {
            target.view = m_window.swapChainImageView(index);
            check(m_renderer->addTarget(target, m_targets.emplaceBack(), m_error), m_error);
        }
    }

    void releaseResources() override
    {
        m_presets.clear();
        m_renderer.reset();
        m_image.reset();
    }

    void startNextFrame() override
    {
        const qint64 elapsed = m_player.screenshot.isEmpty() ? m_clock.nsecsElapsed() : 16'666'667;
        m_clock.start();
        if (m_player.drawnFrames > 0 && !m_player.isPaused)
            m_player.nanoseconds += elapsed;
        VulkanGraphRenderer::Frame frame;
        frame.frameCount = std::uint32_t(m_player.nanoseconds * 60 / 1'000'000'000);
        frame.frameSeconds = float(elapsed) / 1e9F;
        frame.frameInFlight = m_player.drawnFrames % kFramesInFlight;
        const vk::CommandBuffer commands = m_window.currentCommandBuffer();
        const QImage picture = m_player.sourcePicture(frame.frameCount);
        m_image->upload(commands, picture, frame.frameInFlight);
        if (!m_presets.contains(m_player.preset))
            prepare(m_player.preset);
        const Preset &preset = m_presets[m_player.preset];
        frame.source = m_source;
        frame.target = m_targets.at(m_window.currentSwapChainImageIndex());
        frame.rectangle = m_player.letterbox(picture.size(), m_window.swapChainImageSize());
        frame.parameters = preset.parameters.constData();
        check(m_renderer->record(commands, preset.graph, frame, m_error), m_error);
        ++m_player.drawnFrames;
        m_window.frameReady(); // submits the commands and presents
        m_window.requestUpdate();
    }

private:
    struct Preset
    {
        VulkanGraphRenderer::PreparedGraph graph;
        QList<float> parameters;
    };

    // Compiles a preset's pipelines. Its modules are resources of the program.
    void prepare(const QString &name)
    {
        Preset &preset = m_presets[name];
        const auto found = VulkanRenderGraphCatalog::preset(name);
        VulkanGraphRenderer::Modules modules;
        for (const VulkanRenderGraph::Pass &pass : found->graph.passes) {
            for (const QString &module : {pass.vertexSpirvResource, pass.fragmentSpirvResource})
                modules.insert(module, QResource(module).uncompressedData());
        }
        const VkFormat format = m_window.colorFormat();
        check(m_renderer->prepare(found->graph, modules, {format}, preset.graph, m_error), m_error);
        preset.parameters.resize(preset.graph.parameterIds().size());
        for (const VulkanRenderGraphCatalog::Parameter &parameter : found->parameters) {
            if (const int index = preset.graph.parameterIndex(parameter.id); index >= 0)
                preset.parameters[index] = parameter.initialValue;
        }
    }

    QVulkanWindow &m_window;
    Player &m_player;
    std::unique_ptr<VulkanGraphRenderer> m_renderer;
    QHash<QString, Preset> m_presets; // those that were shown
    QList<VulkanGraphRenderer::TargetId> m_targets; // by the images of the swapchain
    std::optional<SourceImage> m_image;
    VulkanGraphRenderer::SourceId m_source = {};
    QElapsedTimer m_clock; // since the previous frame
    QString m_error;
};

class PlayerWindow : public QVulkanWindow
{
public:
    explicit PlayerWindow(Player &player) : m_player(player)
    {
        // The values are gamma-encoded already; an _SRGB format would encode them again.
        setPreferredColorFormats({VK_FORMAT_B8G8R8A8_UNORM, VK_FORMAT_R8G8B8A8_UNORM});
        connect(this, &QVulkanWindow::frameGrabbed, this, &PlayerWindow::saveScreenshot,
                Qt::QueuedConnection); // after the frame's end
        showPreset(0);
    }

    QVulkanWindowRenderer *createRenderer() override
    {
        return new PlayerRenderer(*this, m_player); // Qt deletes it
    }

private:
    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::UpdateRequest || !isValid() || m_player.screenshot.isEmpty()
            || m_player.drawnFrames + 1 != m_player.frames)
            return QVulkanWindow::event(event);
        check(supportsGrab(), u"the device cannot read what it presents"_s);
        grab(); // draws the frame, unless the swapchain is out of date and Qt tries again
        return true;
    }

    void keyPressEvent(QKeyEvent *event) override
    {
        const int key = event->key();
        if (key == Qt::Key_Right || key == Qt::Key_Left)
            showPreset(key == Qt::Key_Right ? 1 : -1);
        else if (key == Qt::Key_Space)
            m_player.isPaused = !m_player.isPaused;
        else if (key == Qt::Key_F11 || key == Qt::Key_Escape)
            setVisibility(key == Qt::Key_F11 && visibility() != FullScreen ? FullScreen : Windowed);
    }

    void showPreset(int step)
    {
        const QStringList names = VulkanRenderGraphCatalog::presetNames();
        const qsizetype index = names.indexOf(m_player.preset) + step + names.size();
        m_player.preset = names.at(index % names.size());
        setTitle(m_player.preset);
    }

    // The picture has the order of the swapchain's channels.
    void saveScreenshot(QImage picture)
    {
        const bool isBgr = colorFormat() == VK_FORMAT_B8G8R8A8_UNORM;
        picture.reinterpretAsFormat(isBgr ? QImage::Format_RGB32 : QImage::Format_RGBX8888);
        check(picture.save(m_player.screenshot), u"cannot write '%1'"_s.arg(m_player.screenshot));
        close();
    }

    Player &m_player;
};
