#pragma once

#include "OffscreenRenderer.h"

#include <QImage>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

// How a picture is shown, in pixels of the screen. Enlarged, a pixel has the colour of the texel
// that it lies in; reduced, the mean light of the texels that it covers, where the values of SDR
// are gamma-encoded with 2.2.
struct ViewState
{
    enum class Comparison : std::uint8_t {
        None,
        Split, // the other one left of a white line of two pixels
        SideBySide, // the other one in the left half
        Difference, // of the shown colours, enlarged
        Other // the other one alone
    };
    static constexpr int kDifferenceGain = 8;

    QSize size;
    QRect placement; // of the whole picture, also where it exceeds the view; side by side: the left
    Comparison comparison = Comparison::None;
    float split = 0.5F; // of the picture's width
    // Light up to this is compressed into SDR, as a display's peak over its reference white by the
    // extended operator of Reinhard et al., "Photographic Tone Reproduction for Digital Images"
    // (2002), for each channel. 0: the picture is SDR.
    float headroom = 0.0F;
    float exposure = 1.0F; // multiplies light
    int channel = -1; // shown in grey: 0 to 3, red to alpha; -1: colours
};

// What is shown of a frame.
struct ViewInput
{
    OutputImage picture;
    OutputImage compared; // only for a comparison
    float comparedHeadroom = 0.0F; // as in ViewState
    ViewState state;
    QPoint texel; // the texel of the picture to read, if it has it
    QList<OutputImage> thumbnails; // each fills its size
    QSize thumbnailSize;
    float lastHeadroom = 0.0F; // of the last thumbnail
};

struct ViewOutput
{
    QImage image; // QImage::Format_RGB32; may outlive the view pass
    std::optional<QRgbaFloat32> texel;
    QList<QImage> thumbnails;
    // From begin() to the shown image, and its copy to the host. Empty if the device cannot tell.
    std::optional<double> drawMilliseconds;
    std::optional<double> transferMilliseconds;
};

// Draws what a window shows of outputs of a renderer, and reads only that back. Each submission of
// VulkanDevice has at most one view.
//
// Functions that can fail return false and set `error` to one line.
class ViewPass
{
public:
    // The SPIR-V of view.vert and view.frag.
    static bool create(const std::shared_ptr<VulkanDevice> &device, const QByteArray &vertex,
                       const QByteArray &fragment, std::unique_ptr<ViewPass> &pass, QString &error);

    ~ViewPass();
    Q_DISABLE_COPY_MOVE(ViewPass)

    // Begins the commands of a submission of that number.
    void begin(VkCommandBuffer commands, int number);

    // Records drawing and reading, after the commands that draw the input.
    bool record(VkCommandBuffer commands, int number, const ViewInput &input, QString &error);

    // Waits for the submission.
    bool read(int number, ViewOutput &output, QString &error);

private:
    class State;
    explicit ViewPass(std::unique_ptr<State> state);

    std::unique_ptr<State> m_state;
};
