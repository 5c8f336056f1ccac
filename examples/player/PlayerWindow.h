#pragma once

#include <VulkanGraphRenderer.h>
#include <VulkanRenderGraphCatalog.h>

#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QKeyEvent>
#include <QPainter>
#include <QVulkanWindow>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <vulkan/vulkan.hpp>

using namespace Qt::StringLiterals;

[[noreturn]] inline void fail(const QString &error)
{
    std::fprintf(stderr, "player: %s\n", qUtf8Printable(error));
    std::_Exit(1);
}

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
            scale = std::floor(scale);
        const QSize size(std::max(qRound(width * scale), 1),
                         std::max(qRound(source.height() * scale), 1));
        return {{(window.width() - size.width()) / 2, (window.height() - size.height()) / 2}, size};
    }
};

// Qt calls these functions. If the device is lost, Qt releases everything and begins again.
class PlayerRenderer : public QVulkanWindowRenderer
{
public:
    PlayerRenderer(QVulkanWindow &window, Player &player) : m_window(window), m_player(player) { }

    void initResources() override
    {
        const vk::Instance instance = m_window.vulkanInstance()->vkInstance();
        const auto getInstanceProcAddr = reinterpret_cast<PFN_vkGetInstanceProcAddr>(
                m_window.vulkanInstance()->getInstanceProcAddr("vkGetInstanceProcAddr"));
        VULKAN_HPP_DEFAULT_DISPATCHER.init(instance, getInstanceProcAddr, m_window.device());
        check(VulkanGraphRenderer::create({getInstanceProcAddr, instance, m_window.physicalDevice(),
                                           m_window.device(), m_window.graphicsQueueFamilyIndex()},
                                          {kFramesInFlight}, m_renderer, m_error));
        try {
            createSource();
        } catch (const vk::SystemError &systemError) {
            fail(QString::fromUtf8(systemError.what()));
        }
    }

    void initSwapChainResources() override
    {
        for (int index = 0; index < m_window.swapChainImageCount(); ++index)
            check(m_renderer->addTarget({m_window.swapChainImageView(index), m_window.colorFormat(),
                                         m_window.swapChainImageSize()},
                                        m_targets.emplaceBack(), m_error));
    }

    void releaseSwapChainResources() override
    {
        for (const VulkanGraphRenderer::TargetId target : std::as_const(m_targets))
            m_renderer->removeTarget(target);
        m_targets.clear();
    }

    void releaseResources() override
    {
        m_presets.clear();
        m_renderer.reset();
        m_view.reset();
        m_image.reset();
        m_imageMemory.reset();
        m_staging.reset();
        m_stagingMemory.reset();
    }

    void startNextFrame() override
    {
        VulkanGraphRenderer::Frame frame;
        if (m_clock.isValid()) {
            const bool isLive = m_player.screenshot.isEmpty();
            const qint64 elapsed = isLive ? m_clock.nsecsElapsed() : 1'000'000'000 / 60 + 1;
            m_player.nanoseconds += m_player.isPaused ? 0 : elapsed;
            frame.frameCount = std::uint32_t(m_player.nanoseconds * 60 / 1'000'000'000);
            frame.frameSeconds = float(elapsed) / 1e9F;
        }
        m_clock.start();
        frame.frameInFlight = m_player.drawnFrames % kFramesInFlight;
        upload(m_player.sourcePicture(frame.frameCount), frame.frameInFlight);

        if (!m_presets.contains(m_player.preset))
            m_presets.insert(m_player.preset, prepared(m_player.preset));
        const Preset &preset = m_presets[m_player.preset];
        frame.source = m_source;
        frame.target = m_targets.at(m_window.currentSwapChainImageIndex());
        frame.rectangle = m_player.letterbox(m_sourceSize, m_window.swapChainImageSize());
        frame.parameters = preset.parameters.constData();
        check(m_renderer->record(m_window.currentCommandBuffer(), preset.graph, frame, m_error));
        ++m_player.drawnFrames;
        m_window.frameReady(); // submits the commands and presents
        m_window.requestUpdate();
    }

private:
    void check(bool isDone) const
    {
        if (!isDone)
            fail(m_error);
    }

    // At most as many as the swapchain has images, of which a QVulkanWindow has at most 4.
    static constexpr int kFramesInFlight = 4;

    struct Preset
    {
        VulkanGraphRenderer::PreparedGraph graph;
        QList<float> parameters;
    };

    // Compiles a preset's pipelines. Its modules are resources of the program.
    Preset prepared(const QString &name)
    {
        const auto found = VulkanRenderGraphCatalog::preset(name);
        VulkanGraphRenderer::Modules modules;
        for (const VulkanRenderGraph::Pass &pass : found->graph.passes) {
            for (const QString &module : {pass.vertexSpirvResource, pass.fragmentSpirvResource}) {
                QFile file(module);
                if (file.open(QIODevice::ReadOnly))
                    modules.insert(module, file.readAll());
            }
        }
        Preset preset;
        check(m_renderer->prepare(found->graph, modules, {m_window.colorFormat()}, preset.graph,
                                  m_error));
        preset.parameters.resize(preset.graph.parameterIds().size());
        for (const VulkanRenderGraphCatalog::Parameter &parameter : found->parameters) {
            const int index = preset.graph.parameterIndex(parameter.id);
            if (index >= 0)
                preset.parameters[index] = parameter.initialValue;
        }
        return preset;
    }

    void createSource()
    {
        const vk::Device device = m_window.device();
        const vk::Format format = vk::Format::eR8G8B8A8Unorm;
        const QImage picture = m_player.sourcePicture(0);
        m_sourceSize = picture.size();
        const auto bytes = vk::DeviceSize(picture.sizeInBytes()) * kFramesInFlight;
        m_staging = device.createBufferUnique({{}, bytes, vk::BufferUsageFlagBits::eTransferSrc});
        m_stagingMemory =
                device.allocateMemoryUnique({device.getBufferMemoryRequirements(*m_staging).size,
                                             m_window.hostVisibleMemoryIndex()});
        device.bindBufferMemory(*m_staging, *m_stagingMemory, 0);
        m_staged = static_cast<char *>(device.mapMemory(*m_stagingMemory, 0, bytes));

        vk::ImageCreateInfo info({}, vk::ImageType::e2D, format, sourceExtent(), 1, 1);
        info.usage = vk::ImageUsageFlagBits::eTransferDst | vk::ImageUsageFlagBits::eSampled;
        m_image = device.createImageUnique(info);
        m_imageMemory =
                device.allocateMemoryUnique({device.getImageMemoryRequirements(*m_image).size,
                                             m_window.deviceLocalMemoryIndex()});
        device.bindImageMemory(*m_image, *m_imageMemory, 0);
        m_view = device.createImageViewUnique(
                {{}, *m_image, vk::ImageViewType::e2D, format, {}, kColor});
        check(m_renderer->addSource({*m_view, VkFormat(format), m_sourceSize}, m_source, m_error));
    }

    vk::Extent3D sourceExtent() const
    {
        return {std::uint32_t(m_sourceSize.width()), std::uint32_t(m_sourceSize.height()), 1};
    }

    void upload(const QImage &picture, int frameInFlight) const
    {
        using Access = vk::AccessFlagBits;
        using Layout = vk::ImageLayout;
        using Stage = vk::PipelineStageFlagBits;
        const vk::CommandBuffer commands = m_window.currentCommandBuffer();
        const auto bytes = std::size_t(picture.sizeInBytes());
        vk::BufferImageCopy copy(bytes * std::size_t(frameInFlight), 0, 0);
        copy.imageSubresource = {vk::ImageAspectFlagBits::eColor, 0, 0, 1};
        copy.imageExtent = sourceExtent();
        std::memcpy(m_staged + copy.bufferOffset, picture.constBits(), bytes);
        // The previous frame may still sample the image.
        const vk::ImageMemoryBarrier before({}, Access::eTransferWrite, Layout::eUndefined,
                                            Layout::eTransferDstOptimal, 0, 0, *m_image, kColor);
        commands.pipelineBarrier(Stage::eFragmentShader, Stage::eTransfer, {}, {}, {}, before);
        commands.copyBufferToImage(*m_staging, *m_image, Layout::eTransferDstOptimal, copy);
        const vk::ImageMemoryBarrier after(Access::eTransferWrite, Access::eShaderRead,
                                           Layout::eTransferDstOptimal,
                                           Layout::eShaderReadOnlyOptimal, 0, 0, *m_image, kColor);
        commands.pipelineBarrier(Stage::eTransfer, Stage::eFragmentShader, {}, {}, {}, after);
    }

    static constexpr vk::ImageSubresourceRange kColor{vk::ImageAspectFlagBits::eColor, 0, 1, 0, 1};

    QVulkanWindow &m_window;
    Player &m_player;
    std::unique_ptr<VulkanGraphRenderer> m_renderer;
    QHash<QString, Preset> m_presets; // those that were shown
    QList<VulkanGraphRenderer::TargetId> m_targets; // by the images of the swapchain
    // The source image, and a staging buffer with a part for each frame in flight.
    QSize m_sourceSize;
    VulkanGraphRenderer::SourceId m_source = {};
    vk::UniqueDeviceMemory m_imageMemory;
    vk::UniqueImage m_image;
    vk::UniqueImageView m_view;
    vk::UniqueDeviceMemory m_stagingMemory;
    vk::UniqueBuffer m_staging;
    char *m_staged = nullptr;
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
        showPreset(0);
    }

    QVulkanWindowRenderer *createRenderer() override
    {
        return new PlayerRenderer(*this, m_player); // Qt deletes it
    }

protected:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::UpdateRequest && isValid() && !m_player.screenshot.isEmpty()
            && m_player.drawnFrames + 1 == m_player.frames) {
            takeScreenshot();
            return true;
        }
        const bool isHandled = QVulkanWindow::event(event);
        if (event->type() == QEvent::Expose && isExposed() && !isValid())
            fail(u"the device cannot draw into a window here"_s);
        return isHandled;
    }

    void keyPressEvent(QKeyEvent *event) override
    {
        const int key = event->key();
        if (key == Qt::Key_Right || key == Qt::Key_Left)
            showPreset(key == Qt::Key_Right ? 1 : -1);
        else if (key == Qt::Key_Space)
            m_player.isPaused = !m_player.isPaused;
        else if (key == Qt::Key_F11 && visibility() != QWindow::FullScreen)
            showFullScreen();
        else if (key == Qt::Key_F11 || key == Qt::Key_Escape)
            showNormal();
    }

private:
    void showPreset(int step)
    {
        const QStringList names = VulkanRenderGraphCatalog::presetNames();
        const qsizetype index = names.indexOf(m_player.preset) + step + names.size();
        m_player.preset = names.at(index % names.size());
        setTitle(m_player.preset);
    }

    void takeScreenshot()
    {
        if (!supportsGrab())
            fail(u"the device cannot read what it presents"_s);
        // The signal's image has the order of the swapchain's channels. In some versions of Qt that
        // of grab() has it too.
        QImage image;
        const auto connection = connect(this, &QVulkanWindow::frameGrabbed, this,
                                        [&image](const QImage &grabbed) { image = grabbed; });
        grab(); // draws the frame
        disconnect(connection);
        if (image.isNull())
            return; // the swapchain was out of date, and Qt tries again
        if (colorFormat() == VK_FORMAT_B8G8R8A8_UNORM)
            image = image.rgbSwapped();
        if (!image.convertToFormat(QImage::Format_RGB32).save(m_player.screenshot))
            fail(u"cannot write '%1'"_s.arg(m_player.screenshot));
        close();
    }

    Player &m_player;
};
