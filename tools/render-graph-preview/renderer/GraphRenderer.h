#pragma once

#include "Picture.h"
#include "PresetOnDisk.h"

#include <QHash>
#include <QList>
#include <QSize>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

// What a renderer knows beside the graph when it draws a frame.
struct FrameState
{
    QHash<QString, float> params; // by id: every one that the graph has, more do no harm
    QSize viewport = {256, 192};
    std::uint32_t frameCount = 0;
    std::int32_t frameDirection = 1; // 1, or -1 while rewinding
    bool hdrOutputActive = false;
    float hdrHeadroom = 1.0F; // the display's peak over its reference white
    float frameSeconds = 1.0F / 60.0F; // since the previous frame, 0 when unknown
};

// What a format is called, and what a texel of it takes.
struct FormatInfo
{
    QLatin1StringView name;
    int texelBytes;
};
FormatInfo infoOf(VulkanRenderGraph::Format format);

// One pass in the last frame.
struct PassResult
{
    enum class Kind : std::uint8_t {
        Drawn,
        Cached, // its parameters have not changed since it was drawn
        ConstantBlack // not drawn: the parameter is 0
    };
    Kind kind = Kind::Drawn;
    QSize size;
    VulkanRenderGraph::Format format = VulkanRenderGraph::Format::RGBA16F;
    std::optional<double> milliseconds; // if it was drawn and the device tells the time
};

// Draws a graph on a Vulkan 1.1 device. Everything stays on the device; a frame is one submission,
// in which nothing waits but the device for its own passes. Not to be used by two threads at once.
//
// A feedback pass's history before the graph's first frame, after resetHistories() and after a
// change of size is what the pass is about to sample first (binding 0), scaled to its own size: as
// though the display had long been showing this picture.
//
// Functions that can fail return false, or nothing, and set `error` to a line or more without a
// program's name; `error` is left alone otherwise. A function that refuses what it is given changes
// nothing. When the device fails it may be lost, with all that is on it: create a new renderer.
class GraphRenderer
{
public:
    struct DeviceInfo
    {
        QString name;
        bool isSoftware = false;
    };

    // The devices that can draw, as Vulkan lists them: their index is their number. None, and an
    // error, where there is no Vulkan or no such device.
    static QList<DeviceInfo> devices(QString &error);

    // `device` is a number, a part of a name (in any case), or empty for the first one.
    static std::unique_ptr<GraphRenderer> create(const QString &device, QString &error);

    ~GraphRenderer();
    Q_DISABLE_COPY_MOVE(GraphRenderer)

    DeviceInfo device() const;

    // Takes a valid graph and its shaders. Forgets histories, pictures and sizes of the last one;
    // if it fails the last one stays.
    bool setGraph(const VulkanRenderGraph &graph, const ShaderModules &modules, QString &error);

    // The picture that enters the graph from the next frame on.
    bool setSource(const Picture &source, QString &error);

    // Draws all passes and waits until they are done. Needs a graph and a source.
    bool drawFrame(const FrameState &state, QString &error);

    void resetHistories();

    // The passes of the last frame by index, the last one being what is shown; empty before the
    // first frame.
    QList<PassResult> passes() const;

    // Pass `index`'s output in the last frame.
    std::optional<Picture> output(int index, QString &error) const;

    // What the last frame held on the device, in bytes.
    qint64 memoryHeld() const;

private:
    class State;
    explicit GraphRenderer(std::unique_ptr<State> state);

    std::unique_ptr<State> m_state;
};
