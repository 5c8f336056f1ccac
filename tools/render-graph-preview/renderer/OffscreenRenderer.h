#pragma once

#include "VulkanDevice.h"

#include <VulkanGraphRenderer.h>

#include <QByteArray>
#include <QHash>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <qrgbafloat.h> // in Qt 6.11 <QRgbaFloat32> only declares the type

#include <cstdint>
#include <memory>
#include <optional>

// SPIR-V modules by the names that a graph's passes refer to.
using ShaderModules = VulkanGraphRenderer::Modules;

// Per-frame inputs.
struct FrameState
{
    QHash<QString, float> params; // by id; has to hold all of the graph's, and may hold others
    QSize viewport = {256, 192};
    std::uint32_t frameCount = 0;
    std::int32_t frameDirection = 1; // 1, or -1 while rewinding
    bool hdrOutputActive = false;
    float hdrHeadroom = 1.0F; // the display's peak over its reference white
    float frameSeconds = 1.0F / 60.0F; // since the previous frame; 0: unknown
};

using PassKind = VulkanGraphRenderer::PassKind;

// What one pass did in the last frame.
struct PassResult
{
    PassKind kind = PassKind::Drawn;
    QSize size;
    VulkanRenderGraph::Format format = VulkanRenderGraph::Format::RGBA16F;
    qint64 bytes = 0; // of its output
    std::optional<double> milliseconds; // if it was drawn and the device has timestamps
};
QLatin1StringView nameOf(PassKind kind); // "drawn", "unchanged", "black" or "left out"

// What is in an image of the device after a frame, in the layout for sampling.
struct OutputImage
{
    VkImage image = VK_NULL_HANDLE; // null: constant black
    VkImageView view = VK_NULL_HANDLE;
    QSize size; // of the pass, also where it is black
    VulkanRenderGraph::Format format = VulkanRenderGraph::Format::RGBA16F;
    float blackAlpha = 1.0F;
};

// Converts texels as a transfer reads them. `pixels` has room for `count`.
void readTexels(const void *texels, VulkanRenderGraph::Format format, QRgbaFloat32 *pixels,
                std::size_t count);

// Draws a graph, and reads the outputs back. Not thread-safe.
//
// Pictures are images of QImage::Format_RGBA32FPx4. Whether their colours are gamma-encoded or
// linear depends on the pass that drew them; 1.0 is reference white in both.
//
// Functions that can fail return false and set `error` to one line or more, without the program's
// name. On success they leave `error` alone. Invalid arguments change nothing. After a failure of
// the device the device may be lost: create a new renderer.
class OffscreenRenderer
{
public:
    // Whether output() can read every pass or the last one only, which takes less memory and time,
    // as in an application.
    enum class Outputs : std::uint8_t { All, Last };

    // `device` as for VulkanDevice::open().
    static bool create(const QString &device, Outputs outputs,
                       std::unique_ptr<OffscreenRenderer> &renderer, QString &error);

    // On a device that it shares with others of the same thread.
    static bool create(std::shared_ptr<VulkanDevice> device, Outputs outputs,
                       std::unique_ptr<OffscreenRenderer> &renderer, QString &error);

    // Waits until all that the device was given is done.
    ~OffscreenRenderer();
    Q_DISABLE_COPY_MOVE(OffscreenRenderer)

    PhysicalDeviceInfo device() const;

    // Replaces the graph, which has to be valid, and the histories. On failure the previous graph
    // stays.
    bool setGraph(const VulkanRenderGraph &graph, const ShaderModules &modules, QString &error);

    // Sets the picture that enters the graph, from the next frame on, which fails if there is no
    // memory for it.
    bool setSource(const QImage &source, QString &error);

    // Draws all passes and waits until they are done. Needs a graph and a source.
    bool drawFrame(const FrameState &state, QString &error);

    // Records all passes into the commands of a submission of that number: see VulkanDevice. The
    // frame's passes have no times yet.
    bool recordFrame(VkCommandBuffer commands, int number, const FrameState &state, QString &error);

    // The time of each pass in the last frame of that number, when it is done.
    QList<std::optional<double>> milliseconds(int number) const;

    void resetHistories();

    // The passes of the last frame. The last one is what is shown. Empty before the first frame.
    QList<PassResult> passes() const;

    // The output of a pass in the last frame, and what it was drawn from, until the next frame.
    bool outputImage(int pass, OutputImage &output, QString &error) const;
    OutputImage sourceImage() const;

    // The output of a pass in the last frame.
    bool output(int pass, QImage &picture, QString &error) const;

    // The memory of all images of the last frame on the device, in bytes.
    qint64 memoryHeld() const;

private:
    class State;
    explicit OffscreenRenderer(std::unique_ptr<State> state);

    std::unique_ptr<State> m_state;
};
