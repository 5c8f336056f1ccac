#pragma once

#include "VulkanRenderGraph.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <cstdint>
#include <memory>
#include <optional>

#include <vulkan/vulkan_core.h>

namespace VulkanGraph {
struct Prepared;
}

// Draws render graphs on an application's Vulkan device, into its command buffers. Needs Vulkan 1.1
// without extensions or features. It never creates a device, submits, waits or presents.
//
//     std::unique_ptr<VulkanGraphRenderer> renderer;           // once
//     VulkanGraphRenderer::create(device, {}, renderer, error);
//     renderer->addSource(source, sourceId, error);            // for each image that enters a
//     preset renderer->addTarget(target, targetId, error);            // for each image of the
//     swapchain renderer->prepare(graph, modules, {format}, prepared, error); // for each preset,
//     in any thread renderer->record(commands, *prepared, frame, error);     // for each frame
//
// Functions that can fail return false and set `error` to one line. A failure leaves the renderer
// as it was and records nothing. If memory for the renderer's own values runs out, std::bad_alloc
// is thrown, as by Qt's containers.
//
// All functions but prepare() have to be called by one thread at a time. prepare() may run in other
// threads at the same time. Several renderers may share a device and a queue.
//
// Frames are recorded in the order in which they are submitted, and each recorded frame has to be
// submitted once, to the same queue: histories continue from one frame to the next. The renderer
// synchronizes its own images, also from frame to frame. Source and target are described there.
class VulkanGraphRenderer
{
public:
    static constexpr int MaxFramesInFlight = 4;

    // The application's objects, which have to outlive the renderer and all that it prepared.
    struct Device
    {
        PFN_vkGetInstanceProcAddr getInstanceProcAddr = nullptr;
        VkInstance instance = VK_NULL_HANDLE; // for Vulkan 1.1 or later
        VkPhysicalDevice physicalDevice = VK_NULL_HANDLE; // of Vulkan 1.1 or later
        VkDevice device = VK_NULL_HANDLE;
        std::uint32_t queueFamily = 0; // of the command buffers; has to support graphics
    };

    struct Options
    {
        int framesInFlight = 2; // 1 to MaxFramesInFlight

        // Keeps the outputs of all passes until the next frame, for output(). Then images share no
        // memory, every pass is drawn into an image of its own, and a pass is drawn only if its
        // push constants or its inputs changed since it was drawn last.
        bool keepsOutputs = false;
    };

    static bool create(const Device &device, const Options &options,
                       std::unique_ptr<VulkanGraphRenderer> &renderer, QString &error);

    // The application first waits until all frames are done.
    ~VulkanGraphRenderer();
    Q_DISABLE_COPY_MOVE(VulkanGraphRenderer)

    // The most pixels either way that sources, targets and passes can have on this device.
    int maxExtent() const;

    // SPIR-V by the resource names of a graph's passes.
    using Modules = QHash<QString, QByteArray>;

    struct PrepareOptions
    {
        VkFormat targetFormat = VK_FORMAT_UNDEFINED;
        float framesPerSecond = 60.0F; // see Frame::frameCount
        VkPipelineCache cache = VK_NULL_HANDLE; // the application's, if it has one
    };

    // A graph's pipelines for targets of one format. A value that does not change: the application
    // keeps as many as it wants to switch between. Frames in flight keep what they use.
    class PreparedGraph
    {
    public:
        // The parameters that passes read, in the order of Frame::parameters. Each id stands once.
        const QStringList &parameterIds() const;
        // -1 if no pass reads the parameter.
        int parameterIndex(QStringView id) const;

        const VulkanRenderGraph &graph() const;

    private:
        friend class VulkanGraphRenderer;
        std::shared_ptr<const VulkanGraph::Prepared> m_prepared;
    };

    // Fails if the graph is not valid, a module is missing or does not fit its pass, or the device
    // cannot draw a format. Pipelines whose modules and formats are those of a pass in `previous`
    // are taken from there, so that a changed component costs one pipeline. `prepared` may hold
    // `previous`.
    bool prepare(const VulkanRenderGraph &graph, const Modules &modules,
                 const PrepareOptions &options, PreparedGraph &prepared, QString &error,
                 const PreparedGraph *previous = nullptr) const;

    // An image that enters graphs. Its values are gamma-encoded, so its format is not an _SRGB one.
    // While a frame is drawn the image is in VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL, and the
    // application's barrier has made it visible to fragment shaders. Whoever writes to it again
    // waits for VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT.
    struct Source
    {
        VkImageView view = VK_NULL_HANDLE; // with VK_IMAGE_USAGE_SAMPLED_BIT
        VkFormat format = VK_FORMAT_UNDEFINED;
        QSize size; // pixels
    };
    enum class SourceId : std::uint32_t {};
    bool addSource(const Source &source, SourceId &id, QString &error);

    // Forgets a source. Its view has to live until the frames in flight are done. To be called
    // before the handle of the view is used again. An unknown id is ignored.
    void removeSource(SourceId id);

    // An image that frames are drawn into. Its format is a UNORM or float one, not an _SRGB one,
    // since the values are gamma-encoded already. A float target gets SDR as it is and, in HDR,
    // linear light relative to reference white.
    //
    // The renderer waits for earlier commands that use the target as a colour attachment, in
    // fragment shaders or in transfers, and later commands of these kinds wait for the renderer.
    // A semaphore for a swapchain image is waited for at
    // VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT.
    struct Target
    {
        VkImageView view = VK_NULL_HANDLE; // with VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT
        VkFormat format = VK_FORMAT_UNDEFINED;
        QSize size; // pixels
        VkImageLayout layoutAfter = VK_IMAGE_LAYOUT_PRESENT_SRC_KHR;
        // Matters only for frames that keep what is outside of their rectangle.
        VkImageLayout layoutBefore = VK_IMAGE_LAYOUT_PRESENT_SRC_KHR;
    };
    enum class TargetId : std::uint32_t {};
    bool addTarget(const Target &target, TargetId &id, QString &error);

    // As for sources.
    void removeTarget(TargetId id);

    struct Frame
    {
        // The frame in flight, from 0. The application promises that the last submission of this
        // number is done.
        int frameInFlight = 0;

        SourceId source = {};
        // Whether the source may hold another picture than in the previous frame. Matters only with
        // keepsOutputs.
        bool hasNewSource = true;

        TargetId target = {};
        // Where the picture goes, in pixels of the target; empty for all of it. It has to lie
        // within the target. Its size is the graph's viewport.
        QRect rectangle;
        bool keepsOutside = false; // else what is outside of the rectangle becomes black

        // The values, in the order of PreparedGraph::parameterIds().
        const float *parameters = nullptr;

        // The emulated frames that were shown so far, PrepareOptions::framesPerSecond in a second,
        // whatever the rate of the display. It neither stops nor jumps when the display does.
        std::uint32_t frameCount = 0;
        std::int32_t frameDirection = 1; // 1, or -1 while rewinding
        float frameSeconds = 1.0F / 60.0F; // since the display's previous frame; 0: unknown
        bool isHdr = false; // only with a float target
        float hdrHeadroom = 1.0F; // the display's peak over its reference white, at least 1

        bool hasTimestamps = false; // for milliseconds()
    };

    // Records all passes, outside of a render pass. Changes the command buffer's pipeline, its
    // descriptor set 0, push constants, viewport and scissor. Passes are labelled for debuggers
    // where the instance has VK_EXT_debug_utils.
    //
    // Histories start as copies of what their passes sample at binding 0: with another prepared
    // graph, another size of source or rectangle, another mode of HDR, and after resetHistories().
    // While none of these and no parameter of a constant black changes between zero and non-zero,
    // and each source was drawn once, recording creates and allocates nothing.
    bool record(VkCommandBuffer commands, const PreparedGraph &prepared, const Frame &frame,
                QString &error);

    void resetHistories();

    // What a pass did in the last recorded frame.
    enum class PassKind : std::uint8_t {
        Drawn,
        Unchanged, // not drawn: it would draw what it drew before
        ConstantBlack, // not drawn: the parameter that scales it is 0
        LeftOut // not drawn: it would pass on its input, which is in the target already
    };
    struct PassState
    {
        PassKind kind = PassKind::Drawn;
        QSize size; // of its output
        qint64 bytes = 0; // of its output, without mipmaps
    };
    QList<PassState> passes() const;

    // The milliseconds of each drawn pass in the last frame that was recorded with hasTimestamps
    // for this number, once its submission is done. Empty if there is none or the queue cannot
    // tell.
    QList<std::optional<double>> milliseconds(int frameInFlight) const;

    // The output of a drawn or unchanged pass that is not final in the last recorded frame, with
    // keepsOutputs; null handles otherwise. After that frame's commands the image is in
    // VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL, and visible to fragment shaders and transfers. It
    // has VK_IMAGE_USAGE_TRANSFER_SRC_BIT. Commands that use it are submitted before the next
    // frame's and restore the layout.
    struct Output
    {
        VkImage image = VK_NULL_HANDLE;
        VkImageView view = VK_NULL_HANDLE; // of the first mipmap level
        VkFormat format = VK_FORMAT_UNDEFINED;
        QSize size;
    };
    Output output(int pass) const;

    // The device memory of the renderer's images in bytes, without those of a previous graph or
    // size that frames in flight still use.
    qint64 memoryHeld() const;

private:
    class State;
    explicit VulkanGraphRenderer(std::unique_ptr<State> state);

    std::unique_ptr<State> m_state;
};
