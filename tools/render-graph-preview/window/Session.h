#pragma once

#include <OffscreenRenderer.h>
#include <PresetOnDisk.h>

#include <QFileSystemWatcher>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>
#include <optional>

constexpr QSize kThumbnailSize = {128, 96};

// The settings of a view of a preset, except the preset and its values.
struct ViewSettings
{
    enum class Comparison : std::uint8_t { None, Source, Tuned };

    QString source; // a test picture's name or a file
    QSize viewport = {640, 480};
    bool keepsAspectRatio =
            true; // draws the largest picture of the source's shape that fits the viewport
    std::optional<float> headroom; // empty: SDR
    int pass = -1; // the pass whose output is shown; -1: the last one
    Comparison comparison = Comparison::None;
};

struct FrameResult
{
    QString preset; // the last one that could be drawn
    int number = 0;
    int pass = 0;
    QImage picture; // the output of that pass, in floats
    QImage image; // the same, converted for display
    bool isToneMapped = false; // `image` is tone-mapped from HDR
    QImage compared; // what `image` is compared with, of any size, or null
    QStringList components; // by pass
    QList<PassResult> passes;
    QString device;
    double milliseconds = 0.0; // of the whole frame
};

// The shortest decimal text that parses to the same float, with a '.': a C++ literal without its
// suffix.
QString numberText(float value);

// A row of a preset's value overrides in FirstPartyPresets.h, with its line end.
QString overrideRow(const QString &id, float value);

// A preset that is being tuned: its values, and its frames, which a worker thread draws. Only the
// latest request is kept. Calls never block, except finish() and the destructor. The preset's files
// and a source file are watched; when one is broken, the last good picture stays.
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
    void setPreset(const QString &name); // resets all values

    const ViewSettings &view() const
    {
        return m_view;
    }
    void setView(const ViewSettings &view);

    // Empty until the preset is compiled, and if it cannot be.
    const QList<PresetParamMeta> &parameters() const
    {
        return m_parameters;
    }
    float value(const PresetParamMeta &parameter) const;
    void setValue(const QString &id, float value);
    void resetAll();

    // A row for each value that is not the tuned one.
    QString overrides() const;

    // While running, frame follows frame. Otherwise a frame is drawn after each change, as if the
    // display had been showing it for a long time.
    bool isRunning() const
    {
        return m_frameTimer.isActive();
    }
    void setRunning(bool isRunning);
    void setSpeed(double framesPerSecond); // an upper limit
    void step();

    // Whether the latest request is not done yet.
    bool isBusy() const
    {
        return m_lastResult != m_lastRequest;
    }
    // Ends drawing. Returns whether the current frame was done within that time; if not, the
    // destructor waits on. Later requests are ignored.
    bool finish(std::chrono::milliseconds patience);
    // The last frame, or null.
    const std::shared_ptr<const FrameResult> &frame() const
    {
        return m_frame;
    }
    const QString &message() const
    {
        return m_message;
    }

Q_SIGNALS:
    void parametersChanged(); // the preset was compiled: also the initial values may have changed
    void valuesChanged();
    void frameDrawn();
    void thumbnailDrawn(int pass, const QImage &image);
    void messageChanged(const QString &message); // one line per error, or empty
    void runningChanged(bool isRunning);
    void slownessChanged(bool isSlow); // whether a frame takes longer than half a second

private:
    struct Request;
    struct Result;
    class Worker;

    void request(bool keepsHistories = false);
    void applyResult(const Result &result);
    void watchFiles();

    QString m_preset;
    ViewSettings m_view;
    QList<PresetParamMeta> m_parameters;
    QHash<QString, float> m_changes; // values that were set, by id
    int m_frameNumber = 0;
    int m_revision = 0; // counts changes of the watched files
    std::uint64_t m_lastRequest = 0; // requests are numbered
    std::uint64_t m_lastResult = 0;
    QStringList m_files;
    QString m_message;
    std::shared_ptr<const FrameResult> m_frame;
    QFileSystemWatcher m_watcher;
    QTimer m_reloadDebounce; // saving a file often gives several notifications
    QTimer m_frameTimer;
    QTimer m_slownessTimer;
    std::unique_ptr<Worker> m_worker; // last, so that its thread ends before the other members go
};
