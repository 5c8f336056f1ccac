#pragma once

#include "GraphRenderer.h"
#include "PictureFile.h"
#include "PresetOnDisk.h"

#include <QCommandLineParser>
#include <QImage>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

// GraphRenderer's, and if there are none, an error that says what to do.
QList<GraphRenderer::DeviceInfo> drawingDevices(QString &error);

// The options that say what is drawn, shared by the commands that draw.
QList<QCommandLineOption> drawingOptions();

// What they say. Functions that can fail return nothing, or false, and say in `error` what is
// wrong.
struct DrawingRequest
{
    static std::optional<DrawingRequest> parse(const QCommandLineParser &parser, QString &error);

    QString source;
    QString device;
    QSize size;
    QList<std::pair<QString, QString>> values; // id and number, as given
    std::optional<int> frames;
    bool isStill = false; // the source does not move; no option says so
    std::optional<float> headroom;
};

// A preset with a source and values, and once it is opened, on a device.
class Drawing
{
public:
    static std::optional<Drawing> load(const QString &shadersDir, const QString &preset,
                                       const DrawingRequest &request, QString &error);

    // One of the preset's parameters, within its range.
    bool setValue(const QString &id, const QString &number, QString &error);

    bool open(QString &error);

    // Frames are drawn in order from 0, the source moving with them.
    bool drawFrame(int number, QString &error);
    std::optional<QImage> image(int pass, QString &error) const;

    // The number asked for, or the one after which a graph's histories no longer show how they
    // began.
    int frames() const;
    const PresetOnDisk &preset() const
    {
        return m_preset;
    }
    const QHash<QString, float> &values() const
    {
        return m_state.params;
    }
    const GraphRenderer &renderer() const
    {
        return *m_renderer;
    }
    QImage sourceFrame(int number) const
    {
        return m_source->frame(number);
    }

private:
    PresetOnDisk m_preset;
    DrawingRequest m_request;
    FrameState m_state;
    std::optional<SourcePicture> m_source;
    std::unique_ptr<GraphRenderer> m_renderer;
};
