#pragma once

#include "OffscreenRenderer.h"
#include "ViewState.h"

#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

// What is shown of a frame.
struct ViewInput
{
    ViewState state;
    int pass = -1; // whose output is shown; -1, or what is beyond it: the last one
    // Light of the last pass up to this is compressed into SDR, channel by channel, by the extended
    // operator of Reinhard et al., "Photographic Tone Reproduction for Digital Images" (2002). It
    // is a display's peak over its reference white. Empty: the pass is SDR.
    std::optional<float> headroom;
    QSize thumbnailSize = {128, 96}; // at most; thumbnails have the shape of the last pass
    bool isDrawn = true; // the frame was not drawn before

    // Whose last frames are shown and compared with.
    const OffscreenRenderer *renderer = nullptr;
    const OffscreenRenderer *compared = nullptr; // null: its source
};

struct ViewOutput
{
    int pass = 0;
    QSize size; // of its output
    QImage image; // QImage::Format_RGB32; may outlive the view pass
    ViewState state;
    bool isToneMapped = false;
    std::optional<QRgbaFloat32> texel;
    QList<QImage> thumbnails; // by pass; empty if the previous ones are new enough
    QList<PassResult> passes;
    // What the last frame that was drawn took with its view, and the view's copy to the host. Empty
    // if the device cannot tell.
    std::optional<double> drawMilliseconds;
    std::optional<double> transferMilliseconds;
};

// Draws what a window shows of outputs of renderers, and reads only that back. Up to
// VulkanDevice::kFramesInFlight frames are drawn at a time.
//
// Functions that can fail return false and set `error` to one line.
class ViewPass
{
public:
    static constexpr int kThumbnailMilliseconds = 250; // at least, from thumbnails to thumbnails

    // Opens a device: see VulkanDevice::open(). The modules are the SPIR-V of view.vert and
    // view.frag.
    static bool create(const QString &device, const QByteArray &vertex, const QByteArray &fragment,
                       std::unique_ptr<ViewPass> &pass, QString &error);

    ~ViewPass();
    Q_DISABLE_COPY_MOVE(ViewPass)

    const std::shared_ptr<VulkanDevice> &device() const;

    // Submits a frame with its view. `record` records what renderers on the device draw into a
    // submission of that number, and sets the input's renderers.
    using Record = std::function<bool(VkCommandBuffer, int submission, ViewInput &input)>;
    bool submit(const ViewInput &view, const Record &record, QString &error);

    // Waits for the first submission that was not read.
    bool read(ViewOutput &output, QString &error);

    // Whether the last frame has no thumbnails yet.
    bool hasOldThumbnails() const;

private:
    class State;
    explicit ViewPass(std::unique_ptr<State> state);

    std::unique_ptr<State> m_state;
};
