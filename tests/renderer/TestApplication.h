#pragma once

#include <DrawingSupport.h>
#include <VulkanDevice.h>
#include <VulkanGraphRenderer.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

// An application that draws with VulkanGraphRenderer: a software device, images, and several frames
// in flight with a fence each. A failure ends the program.
class TestApplication
{
public:
    struct Settings
    {
        QString device; // as for VulkanDevice::open(); empty: the software device
        VulkanGraphRenderer::Options options = {1, false};
        bool hasHooks = false; // the renderer is behind VulkanHooks
    };
    TestApplication();
    explicit TestApplication(const Settings &settings);
    // Waits until all frames are done.
    ~TestApplication();
    Q_DISABLE_COPY_MOVE(TestApplication)

    VulkanGraphRenderer &renderer()
    {
        return *m_renderer;
    }
    VulkanGraphRenderer::Device handles() const
    {
        return m_device->handles();
    }

    // Another renderer on the same device and queue.
    std::unique_ptr<VulkanGraphRenderer> anotherRenderer(int framesInFlight) const;

    // Prepares a preset, whose initial values become those of parameters().
    VulkanGraphRenderer::PreparedGraph prepare(const PresetOnDisk &preset,
                                               VkFormat format = VK_FORMAT_R16G16B16A16_SFLOAT,
                                               VulkanGraphRenderer *renderer = nullptr);

    VulkanGraphRenderer::SourceId addSource(const FloatImage &picture,
                                            VulkanGraphRenderer *renderer = nullptr);
    VulkanGraphRenderer::TargetId addTarget(QSize size,
                                            VkFormat format = VK_FORMAT_R16G16B16A16_SFLOAT,
                                            VulkanGraphRenderer *renderer = nullptr);

    // Waits for the last frame of this number, records the frame and submits it. Returns whether it
    // was recorded.
    bool draw(const VulkanGraphRenderer::PreparedGraph &graph,
              const VulkanGraphRenderer::Frame &frame, QString &error,
              VulkanGraphRenderer *renderer = nullptr);
    void waitForAll();

    // Calls `record` with commands that are not submitted.
    void withCommands(const std::function<void(VkCommandBuffer)> &record);

    // Records without submitting.
    bool record(const VulkanGraphRenderer::PreparedGraph &graph,
                const VulkanGraphRenderer::Frame &frame, QString &error);

    // Of all frames done.
    QByteArray texels(VulkanGraphRenderer::TargetId target);
    QByteArray texels(const VulkanGraphRenderer::Output &output);

private:
    struct Functions;
    struct Frame;
    struct Target
    {
        std::unique_ptr<DeviceImage> image;
        VkFormat format = VK_FORMAT_UNDEFINED;
    };

    QByteArray download(VkImage image, VkImageLayout layout, QSize size, VkFormat format);

    std::unique_ptr<VulkanDevice> m_device;
    std::unique_ptr<Functions> m_vk;
    VkQueue m_queue = VK_NULL_HANDLE;
    std::vector<Frame> m_frames;
    std::vector<std::unique_ptr<DeviceImage>> m_sources;
    std::map<VulkanGraphRenderer::TargetId, Target> m_targets;
    std::unique_ptr<VulkanGraphRenderer> m_renderer;
};

// The initial values of a preset, in the prepared graph's order.
std::vector<float> parameterValues(const VulkanGraphRenderer::PreparedGraph &graph,
                                   const PresetOnDisk &preset);
