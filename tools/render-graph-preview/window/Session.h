#pragma once

#include <PresetOnDisk.h>
#include <ViewPass.h>

#include <QElapsedTimer>
#include <QFileSystemWatcher>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QSettings>
#include <QTimer>
#include <QUndoGroup>

#include <chrono>
#include <memory>
#include <optional>

// The organization and the application of QSettings.
inline const QString kSettings = QStringLiteral("render-graph-preview");

// What a preset is drawn with, except its values.
struct ViewSettings
{
    QString source; // a test picture's name or a file
    QSize viewport = {640, 480};
    bool keepsAspectRatio =
            true; // draws the largest picture of the source's shape that fits the viewport
    std::optional<float> headroom; // empty: SDR
    bool isBackwards = false; // the shaders' frameDirection
};

// What is shown of it. The comparison of its state counts only where something is compared.
struct DisplaySettings : ViewInput
{
    // What the picture is compared with: the source, or what other values or code draw.
    enum class Against : std::uint8_t { Nothing, Source, TunedValues, Kept, BeforeSave };
    Against against = Against::Nothing;
};

struct FrameResult : ViewOutput
{
    QString preset; // the last one that could be drawn
    int number = 0;
    QString comparedName; // empty: nothing is compared
    QStringList components; // by pass
    QString stretch; // see stretchText()
    QString device;
};

// A preset that is being tuned: its values, and its frames, which a worker thread draws. The values
// that were set are kept for each preset, also after the session, in the application's settings,
// and each change of them can be undone. Only the latest request is kept. Calls never block, except
// finish() and the destructor. The preset's files and a source file are watched; when one is
// broken, the last good picture stays.
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
    void setPreset(const QString &name);

    const ViewSettings &view() const
    {
        return m_view;
    }
    void setView(const ViewSettings &view);

    const DisplaySettings &display() const
    {
        return m_display;
    }
    // Shows the last frame anew.
    void setDisplay(const DisplaySettings &display);
    // Keeps the preset as it is, to compare with it. That is done for the first comparison as well.
    void keepState();
    // Saves the whole output of the shown pass. HDR is saved as linear light.
    void savePicture(const QString &path);

    // Of the last version of the preset that compiled; empty before there is one.
    const QList<PresetParamMeta> &parameters() const
    {
        return m_loaded.parameters;
    }
    const VulkanRenderGraph &graph() const // likewise
    {
        return m_loaded.graph;
    }
    float value(const PresetParamMeta &parameter) const
    {
        return valueOf(changes(), parameter);
    }
    // The tuned value that a parameter had when its value was set; else the tuned value.
    float replacedValue(const PresetParamMeta &parameter) const;
    void setValue(const QString &id, float value);
    void resetValue(const QString &id);
    void resetAll();
    void forgetAll(); // resets all presets

    // While dragging, all changes are undone in one step.
    void setDragging(bool isDragging);
    QUndoGroup &undoGroup() // with a stack for each preset
    {
        return m_undoGroup;
    }

    // See declaredText(), glslpText() and readGlslp().
    QString overrides() const;
    QString savedValues() const;
    bool openValues(const QString &path, QString &error);

    // While running, frame follows frame. Otherwise a frame is drawn after each change, as if the
    // display had been showing it for a long time.
    bool isRunning() const
    {
        return m_frameTimer.isActive();
    }
    void setRunning(bool isRunning);
    // At most, up to the display's rate. Below the rate that presets are made for, time is slower.
    void setSpeed(double framesPerSecond);
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
    void pictureNotSaved(const QString &error);
    void messageChanged(const QString &message); // one line per error, or empty
    void runningChanged(bool isRunning);
    void slownessChanged(bool isSlow); // whether a frame takes longer than half a second

private:
    struct Result;
    class Worker;
    class ValuesChange;
    struct Change
    {
        float value = 0.0F;
        float tuned = 0.0F; // at that time

        bool operator==(const Change &) const = default;
    };
    using Changes = QHash<QString, Change>; // by id

    Changes changes() const
    {
        return m_changes.value(m_preset);
    }
    static float valueOf(const Changes &changes, const PresetParamMeta &parameter);
    static QHash<QString, float> valuesOf(const Changes &changes,
                                          const QList<PresetParamMeta> &parameters);
    void insertChange(Changes &changes, const QString &id, float value) const;
    void pushChanges(const QString &preset, const Changes &changes);
    void applyChanges(const QString &preset, const Changes &changes);
    void restoreChanges();
    enum class Redraw : std::uint8_t { View, Frame, NextFrame };
    struct Request;
    void request(Redraw redraw = Redraw::Frame);
    void send(Request request);
    void drawNextFrame();
    double frameAdvance() const; // in frames of the rate that presets are made for
    void applyResult(const Result &result);
    void watchFiles();

    QString m_preset;
    ViewSettings m_view;
    DisplaySettings m_display;
    PresetOnDisk m_loaded; // with its files only, if it is broken
    QHash<QString, Changes> m_changes; // by preset
    QUndoGroup m_undoGroup;
    QHash<QString, QUndoStack *> m_undoStacks; // by preset
    int m_drag = 0; // counts drags
    bool m_isDragging = false;
    QSettings m_settings;
    double m_frameNumber = 0.0; // fractions where the display is faster than presets are made for
    int m_revision = 0; // counts changes of the watched files
    std::uint64_t m_lastRequest = 0; // requests are numbered
    std::uint64_t m_lastResult = 0;
    QString m_message;
    std::shared_ptr<const FrameResult> m_frame;
    QFileSystemWatcher m_watcher;
    QTimer m_reloadDebounce; // saving a file often gives several notifications
    QTimer m_frameTimer;
    QElapsedTimer m_clock;
    double m_period = 1.0; // of frames, in milliseconds
    double m_nextFrame = 0.0; // on the clock
    QTimer m_slownessTimer;
    std::unique_ptr<Worker> m_worker; // last, so that its thread ends before the other members go
};
