#pragma once

#include "GraphRenderer.h"
#include "Picture.h"
#include "PresetOnDisk.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

constexpr QSize kThumbnailSize = {128, 96};

// What a frame shows, beside the preset and its values.
struct ViewSettings
{
    enum class Comparison : std::uint8_t { None, Source, Tuned };

    QString source; // a test picture's name or a file
    QSize viewport = {640, 480};
    bool keepsShape = true; // of the source: the largest such picture that fits into the viewport
    std::optional<float> headroom; // draws HDR
    int pass = -1; // whose output is shown; -1: the last one's
    Comparison comparison = Comparison::None;
};

struct DrawnFrame
{
    int number = 0;
    int pass = 0;
    Picture picture; // that pass's output
    QImage image; // the same for a display
    bool isToneMapped = false; // `image`, from HDR
    QImage compared; // what it is compared with, or null; of any size
    QStringList components; // by pass
    QList<PassResult> passes;
    QString device;
    double milliseconds = 0.0; // the whole frame
};

// The shortest text that is this number again, with a '.': as C++ wants it but for the 'F'.
QString numberText(float value);

// A row of a preset's value overrides in FirstPartyPresets.h, with its line end.
QString overrideRow(const QString &id, float value);

// A preset being looked at: its values, and its frames, which a thread of its own draws. Whatever
// is asked for, the latest wins; nothing here waits, but for the destructor, for one frame at most.
// The files that the preset is made of are watched. One that breaks leaves the last good picture.
class Session : public QObject
{
    Q_OBJECT

public:
    Session(const QString &shadersDir, const QString &device);
    ~Session() override;
    Q_DISABLE_COPY_MOVE(Session)

    const QString &preset() const
    {
        return m_preset;
    }
    void setPreset(const QString &name); // with its tuned values

    const ViewSettings &view() const
    {
        return m_view;
    }
    void setView(const ViewSettings &view);

    // Empty until the preset has been compiled.
    const QList<PresetParamMeta> &parameters() const
    {
        return m_parameters;
    }
    float value(const PresetParamMeta &parameter) const;
    void setValue(const QString &id, float value);
    void resetAll();

    // A row for each value that is not the tuned one.
    QString overrides() const;

    // Frames follow each other, histories going on; else a frame is drawn as though it had been
    // shown for long, whenever something changes.
    bool isRunning() const
    {
        return m_clock.isActive();
    }
    void setRunning(bool isRunning);
    void setSpeed(double framesPerSecond); // at most: no frame begins before the last is done
    void step();

    // Whether what was asked for last is still to be drawn.
    bool isBusy() const
    {
        return m_answered != m_asked;
    }
    // The last one that was drawn, or null.
    const std::shared_ptr<const DrawnFrame> &frame() const
    {
        return m_frame;
    }
    const QString &message() const
    {
        return m_message;
    }

Q_SIGNALS:
    void parametersChanged(); // or their tuned values: the preset has been compiled
    void valuesChanged();
    void frameDrawn();
    void thumbnailDrawn(int pass, const QImage &image);
    void messageChanged(const QString &message); // what is wrong, a line each, or empty
    void runningChanged(bool isRunning);

private:
    struct Request;
    struct Answer;
    class Worker;

    void ask(bool continues = false);
    void take(const Answer &answer);
    void watch();

    QString m_preset;
    ViewSettings m_view;
    QList<PresetParamMeta> m_parameters;
    QHash<QString, float> m_changes; // of tuned values
    int m_frameNumber = 0;
    int m_revision = 0; // of the watched files
    std::uint64_t m_asked = 0; // counts requests
    std::uint64_t m_answered = 0;
    QStringList m_files;
    QString m_message;
    std::shared_ptr<const DrawnFrame> m_frame;
    QFileSystemWatcher m_watcher;
    QTimer m_settling; // a save is often several changes
    QTimer m_clock;
    std::unique_ptr<Worker> m_worker; // the last one to be made, the first to go
};
