#include "Session.h"

#include <GlslCompiler.h>
#include <Player.h>
#include <TestPictures.h>
#include <Tuning.h>

#include <QFileInfo>
#include <QUndoCommand>
#include <QUndoStack>

#include <algorithm>
#include <array>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int kReloadDebounceMilliseconds = 50;
constexpr int kSlowMilliseconds = 500;
constexpr double kFramesPerSecond = 60.0;

} // namespace

// Replaces what was set for a preset.
class Session::ValuesChange : public QUndoCommand
{
public:
    ValuesChange(Session &session, QString preset, Changes after)
        : m_session(session),
          m_preset(std::move(preset)),
          m_before(session.m_changes.value(m_preset)),
          m_after(std::move(after)),
          m_drag(session.m_isDragging ? session.m_drag : -1)
    {
    }

    int id() const override
    {
        return m_drag;
    }

    bool mergeWith(const QUndoCommand *next) override
    {
        m_after = static_cast<const ValuesChange *>(next)->m_after;
        setObsolete(m_after == m_before);
        return true;
    }

    void undo() override
    {
        m_session.applyChanges(m_preset, m_before);
    }

    void redo() override
    {
        m_session.applyChanges(m_preset, m_after);
    }

private:
    Session &m_session;
    QString m_preset;
    Changes m_before;
    Changes m_after;
    int m_drag;
};

struct Session::Request
{
    Redraw redraw = Redraw::Frame;
    std::optional<Changes> kept = {}; // these are kept with the preset
    QString picturePath = {}; // where the picture is saved, if it is
    std::uint64_t number = 0;
    QString preset = {};
    bool needsPreset = false; // even if it has not changed
    int revision = 0;
    ViewSettings view = {};
    DisplaySettings display = {};
    Changes changes = {};
    int frame = 0;
    float frameSeconds = 0.0F;
};

struct Session::Result
{
    std::uint64_t number = 0; // of the request
    std::optional<PresetOnDisk> preset; // if it was loaded again or is needed
    bool isPresetLoaded = false;
    std::shared_ptr<FrameResult> frame; // null after an error
    QString message;
};

// The thread that draws, and the data that only it uses. While frames run, it reads a frame while
// the next one is drawn.
class Session::Worker
{
public:
    Worker(Session &session, QString shadersDir, QString device)
        : m_session(session),
          m_shadersDir(std::move(shadersDir)),
          m_deviceName(std::move(device)),
          m_player(m_deviceName),
          m_otherPlayer(m_deviceName),
          m_thread([this] { run(); })
    {
    }

    ~Worker()
    {
        finish({});
        m_thread.join();
    }
    Q_DISABLE_COPY_MOVE(Worker)

    bool finish(std::chrono::milliseconds patience)
    {
        std::unique_lock lock(m_mutex);
        m_isClosing = true;
        m_wake.notify_all();
        return m_wake.wait_for(lock, patience, [this] { return m_isDone; });
    }

    bool hasWaiting()
    {
        const std::scoped_lock lock(m_mutex);
        return m_waiting.has_value();
    }

    // A request that waits is replaced, but what it draws, keeps and saves is done.
    void request(Request request)
    {
        {
            const std::scoped_lock lock(m_mutex);
            if (m_waiting) {
                if (request.redraw == Redraw::View)
                    request.redraw = m_waiting->redraw;
                if (!request.kept)
                    request.kept = m_waiting->kept;
                if (request.picturePath.isEmpty())
                    request.picturePath = m_waiting->picturePath;
            }
            m_waiting = std::move(request);
        }
        m_wake.notify_one();
    }

private:
    using Against = DisplaySettings::Against;

    // A preset as it was drawn.
    struct State
    {
        PresetOnDisk preset;
        QHash<QString, float> values;
    };

    void run()
    {
        for (;;) {
            const std::optional<Request> request = next();
            std::optional<Result> drawn = std::exchange(m_flight, std::nullopt);
            if (!request && !drawn)
                break;
            if (drawn && (!request || request->redraw != Redraw::NextFrame)) {
                deliver(*drawn);
                drawn.reset();
            }
            if (request && !draw(*request))
                continue; // nothing is left on the device
            if (drawn)
                deliver(*drawn);
        }
        release();
        const std::scoped_lock lock(m_mutex);
        m_isDone = true;
        m_wake.notify_all();
    }

    // Empty where nothing waits but a frame in flight, and at the end.
    std::optional<Request> next()
    {
        std::unique_lock lock(m_mutex);
        const auto isAwake = [this] { return m_isClosing || m_waiting || m_flight; };
        if (m_viewPass && m_viewPass->hasOldThumbnails()
            && !m_wake.wait_for(lock, std::chrono::milliseconds(ViewPass::kThumbnailMilliseconds),
                                isAwake))
            return m_last;
        m_wake.wait(lock, isAwake);
        return m_isClosing ? std::nullopt : std::exchange(m_waiting, std::nullopt);
    }

    // Returns whether it was submitted.
    bool draw(const Request &request)
    {
        Result result;
        result.number = request.number;
        QString error;
        bool isSubmitted = false;
        try {
            reopenSource(request);
            reloadPreset(request, result);
            if (!m_player.preset().graph.passes.isEmpty() && !m_player.source().isNull())
                isSubmitted = submit(request, result, error);
            if (isSubmitted && !request.picturePath.isEmpty())
                savePicture(request);
        } catch (const std::bad_alloc &) {
            m_requestedPreset.clear(); // what was not read is read again
            m_requestedSource.clear();
            result.preset.reset();
            error = kNotEnoughMemory;
            isSubmitted = false;
        }
        QStringList errors = {m_presetError, m_sourceError, error};
        errors.removeAll(QString());
        result.message = errors.join(u'\n');
        if (isSubmitted)
            m_flight = std::move(result);
        else
            fail(std::move(result));
        return isSubmitted;
    }

    // Waits for it.
    void deliver(Result &result)
    {
        if (m_viewPass->read(*result.frame, result.message))
            return post(std::move(result));
        if (m_flight)
            result.number = m_flight->number;
        fail(std::move(result));
    }

    // The device may be lost, or there was no memory to go on.
    void fail(Result result)
    {
        release();
        result.frame.reset();
        post(std::move(result));
    }

    void release()
    {
        m_flight.reset();
        m_player.release();
        m_otherPlayer.release();
        m_viewPass.reset();
    }

    void post(Result result)
    {
        QMetaObject::invokeMethod(
                &m_session,
                [&session = m_session, result = std::move(result)] { session.applyResult(result); },
                Qt::QueuedConnection);
    }

    void reloadPreset(const Request &request, Result &result)
    {
        if (request.preset != m_requestedPreset || request.revision != m_revision) {
            m_requestedPreset = request.preset;
            m_revision = request.revision;
            m_presetError.clear();
            m_isLoaded = loadPreset(m_shadersDir, request.preset, m_loaded, m_presetError);
            if (m_isLoaded) {
                keepBeforeSave();
                m_player.setPreset(m_loaded);
                ++m_loads;
                m_isNew = true;
            }
        } else if (!request.needsPreset) {
            return;
        }
        result.preset = m_loaded;
        result.isPresetLoaded = m_isLoaded;
    }

    // Files may have been saved as they were.
    void keepBeforeSave()
    {
        const PresetOnDisk &before = m_player.preset();
        if (before.name != m_loaded.name)
            m_beforeSave.reset();
        else if (before.modules != m_loaded.modules
                 || initialValues(before.parameters) != initialValues(m_loaded.parameters))
            m_beforeSave = before;
    }

    void reopenSource(const Request &request)
    {
        if (request.view.source == m_requestedSource && request.revision == m_revision)
            return;
        m_requestedSource = request.view.source;
        m_sourceError.clear();
        SourcePicture source;
        if (!SourcePicture::open(m_requestedSource, source, m_sourceError))
            return;
        m_player.setSource(source);
        m_otherPlayer.setSource(source);
        m_isNew = true;
    }

    bool openDevice(QString &error)
    {
        if (m_viewPass)
            return true;
        QStringList files;
        QByteArray vertex;
        QByteArray fragment;
        return compileGlsl(u":/view.vert"_s, ShaderStage::Vertex, vertex, files, error)
                && compileGlsl(u":/view.frag"_s, ShaderStage::Fragment, fragment, files, error)
                && ViewPass::create(m_deviceName, vertex, fragment, m_viewPass, error);
    }

    static void prepare(Player &player, const Request &request)
    {
        QSize viewport = request.view.viewport;
        if (request.view.keepsAspectRatio)
            viewport = player.source().size().scaled(viewport, Qt::KeepAspectRatio);
        player.state().viewport = viewport.expandedTo({1, 1});
        player.setHeadroom(request.view.headroom);
        player.state().frameDirection = request.view.isBackwards ? -1 : 1;
        player.state().frameSeconds = request.frameSeconds;
        if (request.redraw != Redraw::NextFrame)
            player.resetHistories();
    }

    // Returns whether it is another preset than before.
    bool updateOther(const Request &request)
    {
        const Against against = request.display.against;
        if (against == Against::Kept && !m_kept)
            keepState();
        const std::array<int, 3> id = {int(against), m_keeps, m_loads};
        const bool isNew = std::exchange(m_otherId, id) != id;
        const bool isKept = against == Against::Kept;
        if (isNew)
            m_otherPlayer.setPreset(isKept ? m_kept->preset
                                            : against == Against::BeforeSave
                                            ? m_beforeSave.value_or(m_player.preset())
                                            : m_player.preset());
        if (against != Against::TunedValues)
            m_otherPlayer.state().params.insert(isKept ? m_kept->values : m_player.state().params);
        return isNew;
    }

    void keepState()
    {
        m_kept = {m_player.preset(), m_player.state().params};
        ++m_keeps;
    }

    QString nameOf(Against against) const
    {
        return against == Against::Source         ? u"source"_s
                : against == Against::TunedValues ? u"tuned values (declared)"_s
                : against == Against::Kept        ? u"A (kept, %1)"_s.arg(m_kept->preset.name)
                : against != Against::BeforeSave  ? QString()
                : m_beforeSave                    ? u"before the last save"_s
                                                  : u"before the last save: none yet"_s;
    }

    bool submit(const Request &request, Result &result, QString &error)
    {
        result.frame = std::make_shared<FrameResult>();
        FrameResult &frame = *result.frame;
        frame.preset = m_player.preset().name;
        const auto setValues = [&](const Changes &changes) {
            m_player.state().params = valuesOf(frame.preset == request.preset ? changes : Changes(),
                                               m_player.preset().parameters);
        };
        if (request.kept) {
            setValues(*request.kept);
            keepState();
        }
        setValues(request.changes);
        if (!openDevice(error))
            return false;
        if (!request.view.keepsAspectRatio)
            frame.stretch = stretchText(m_player.source().size(), request.view.viewport);

        const DisplaySettings &display = request.display;
        const bool isDrawn = request.redraw != Redraw::View || m_isNew || !m_player.renderer();
        const bool hasOther = display.against > Against::Source;
        const bool isOtherDrawn =
                hasOther && (updateOther(request) || isDrawn || !m_otherPlayer.renderer());
        frame.number = request.frame;
        frame.comparedName = nameOf(display.against);
        for (const VulkanRenderGraph::Pass &pass : m_player.preset().graph.passes)
            frame.components.append(pass.debugName);
        frame.device = m_viewPass->device()->info().name;
        ViewInput shown = display;
        if (display.against == Against::Nothing)
            shown.state.comparison = ViewState::Comparison::Nothing;
        shown.headroom = request.view.headroom;
        shown.isDrawn = isDrawn;
        const auto record = [&](VkCommandBuffer commands, int submission, ViewInput &input) {
            const auto drawBy = [&](Player &player) {
                prepare(player, request);
                return player.recordFrame(m_viewPass->device(), commands, submission, request.frame,
                                          error);
            };
            if ((isDrawn && !drawBy(m_player)) || (isOtherDrawn && !drawBy(m_otherPlayer)))
                return false;
            input.renderer = m_player.renderer();
            input.compared = hasOther ? m_otherPlayer.renderer() : nullptr;
            return true;
        };
        if (!m_viewPass->submit(shown, record, error))
            return false;
        m_isNew = false;
        m_last = request;
        m_last.redraw = Redraw::View;
        m_last.kept.reset();
        m_last.picturePath.clear();
        m_last.needsPreset = false;
        return true;
    }

    void savePicture(const Request &request)
    {
        const int last = int(m_player.preset().graph.passes.size()) - 1;
        const int pass = request.display.pass < 0 ? last : std::min(request.display.pass, last);
        const std::optional<float> headroom = pass == last ? request.view.headroom : std::nullopt;
        QImage picture;
        QString error;
        if (!m_player.renderer()->output(pass, picture, error)
            || !savePng(displayImage(picture, headroom), request.picturePath, error))
            Q_EMIT m_session.pictureNotSaved(error); // queued, since it is another thread's
    }

    Session &m_session;
    QString m_shadersDir;
    QString m_deviceName;

    QString m_requestedPreset; // may be broken; the players have the last good one
    int m_revision = -1;
    PresetOnDisk m_loaded; // the requested one
    bool m_isLoaded = false;
    int m_loads = 0; // counts
    QString m_presetError;
    QString m_requestedSource; // likewise
    QString m_sourceError;
    std::unique_ptr<ViewPass> m_viewPass; // has the device
    Player m_player;
    bool m_isNew = false; // its preset or source were not drawn yet
    Player m_otherPlayer; // draws what the picture is compared with
    std::array<int, 3> m_otherId = {};
    std::optional<State> m_kept;
    int m_keeps = 0; // counts
    std::optional<PresetOnDisk> m_beforeSave;
    std::optional<Result> m_flight; // of the frame that the device draws
    Request m_last; // that was drawn, to view it again

    std::mutex m_mutex; // of the following members
    std::condition_variable m_wake;
    std::optional<Request> m_waiting;
    bool m_isClosing = false;
    bool m_isDone = false;
    std::thread m_thread;
};

Session::Session(const QString &shadersDir, const QString &device)
    : m_settings(kSettings, kSettings),
      m_worker(std::make_unique<Worker>(*this, shadersDir, device))
{
    restoreChanges();
    m_reloadDebounce.setSingleShot(true);
    m_reloadDebounce.setInterval(kReloadDebounceMilliseconds);
    setSpeed(kFramesPerSecond);
    const auto scheduleReload = [this] {
        if (!m_reloadDebounce.isActive())
            m_reloadDebounce.start();
    };
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, scheduleReload);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, scheduleReload);
    connect(&m_reloadDebounce, &QTimer::timeout, this, [this] {
        watchFiles(); // before they are read, so that no change is missed
        ++m_revision;
        request();
    });
    m_frameTimer.setTimerType(Qt::PreciseTimer);
    m_clock.start();
    connect(&m_frameTimer, &QTimer::timeout, this, &Session::drawNextFrame);
    m_slownessTimer.setSingleShot(true);
    m_slownessTimer.setInterval(kSlowMilliseconds);
    connect(&m_slownessTimer, &QTimer::timeout, this, [this] { Q_EMIT slownessChanged(true); });
}

Session::~Session() = default;

bool Session::finish(std::chrono::milliseconds patience)
{
    setRunning(false);
    m_settings.sync();
    return m_worker->finish(patience);
}

void Session::setPreset(const QString &name)
{
    if (name == m_preset)
        return;
    m_preset = name;
    m_loaded = {};
    QUndoStack *&stack = m_undoStacks[name];
    if (stack == nullptr)
        stack = new QUndoStack(&m_undoGroup);
    m_undoGroup.setActiveStack(stack);
    Q_EMIT parametersChanged();
    request();
}

void Session::setView(const ViewSettings &view)
{
    m_view = view;
    watchFiles();
    request();
}

void Session::setDisplay(const DisplaySettings &display)
{
    m_display = display;
    request(Redraw::View);
}

void Session::keepState()
{
    send({.redraw = Redraw::View, .kept = changes()});
}

void Session::savePicture(const QString &path)
{
    send({.redraw = Redraw::View, .picturePath = path});
}

float Session::valueOf(const Changes &changes, const PresetParamMeta &parameter)
{
    const float value = changes.value(parameter.id, {.value = parameter.initialValue}).value;
    return std::clamp(value, parameter.min, parameter.max);
}

float Session::replacedValue(const PresetParamMeta &parameter) const
{
    return changes().value(parameter.id, {.tuned = parameter.initialValue}).tuned;
}

QHash<QString, float> Session::valuesOf(const Changes &changes,
                                        const QList<PresetParamMeta> &parameters)
{
    QHash<QString, float> values;
    for (const PresetParamMeta &parameter : parameters)
        values.insert(parameter.id, valueOf(changes, parameter));
    return values;
}

// The tuned value is no change.
void Session::insertChange(Changes &changes, const QString &id, float value) const
{
    const auto parameter = std::ranges::find(parameters(), id, &PresetParamMeta::id);
    if (parameter == parameters().cend() || value == parameter->initialValue)
        changes.remove(id);
    else
        changes.insert(id, {.value = value, .tuned = parameter->initialValue});
}

void Session::setValue(const QString &id, float value)
{
    Changes after = changes();
    insertChange(after, id, value);
    pushChanges(m_preset, after);
}

void Session::resetValue(const QString &id)
{
    Changes after = changes();
    after.remove(id);
    pushChanges(m_preset, after);
}

void Session::resetAll()
{
    pushChanges(m_preset, {});
}

void Session::forgetAll()
{
    for (const QString &preset : m_changes.keys())
        pushChanges(preset, {});
}

void Session::setDragging(bool isDragging)
{
    m_drag += isDragging ? 1 : 0;
    m_isDragging = isDragging;
}

void Session::pushChanges(const QString &preset, const Changes &changes)
{
    if (changes == m_changes.value(preset))
        return;
    QUndoStack *&stack = m_undoStacks[preset];
    if (stack == nullptr)
        stack = new QUndoStack(&m_undoGroup);
    stack->push(new ValuesChange(*this, preset, changes));
}

void Session::applyChanges(const QString &preset, const Changes &changes)
{
    m_changes[preset] = changes;
    const QString group = "values/"_L1 + preset;
    m_settings.remove(group);
    for (auto change = changes.cbegin(); change != changes.cend(); ++change)
        m_settings.setValue(group + u'/' + change.key(),
                            QStringList({numberText(change->value), numberText(change->tuned)}));
    if (preset != m_preset)
        return;
    Q_EMIT valuesChanged();
    request();
}

void Session::restoreChanges()
{
    m_settings.beginGroup("values"_L1);
    for (const QString &key : m_settings.allKeys()) { // "<preset>/<id>"
        const QStringList numbers = m_settings.value(key).toStringList();
        m_changes[key.section(u'/', 0, 0)].insert(
                key.section(u'/', 1),
                {.value = numbers.value(0).toFloat(), .tuned = numbers.value(1).toFloat()});
    }
    m_settings.endGroup();
}

QString Session::overrides() const
{
    return declaredText(m_loaded, valuesOf(changes(), parameters()));
}

QString Session::savedValues() const
{
    return glslpText(m_loaded, valuesOf(changes(), parameters()));
}

bool Session::openValues(const QString &path, QString &error)
{
    QHash<QString, float> read;
    if (!readGlslp(path, m_loaded, read, error))
        return false;
    Changes after = changes();
    for (auto value = read.cbegin(); value != read.cend(); ++value)
        insertChange(after, value.key(), value.value());
    pushChanges(m_preset, after);
    return true;
}

void Session::setRunning(bool isRunning)
{
    if (isRunning == m_frameTimer.isActive())
        return;
    m_nextFrame = 0.0;
    if (isRunning)
        m_frameTimer.start(0);
    else
        m_frameTimer.stop();
    Q_EMIT runningChanged(isRunning);
}

void Session::setSpeed(double framesPerSecond)
{
    m_period = 1000.0 / framesPerSecond;
}

void Session::step()
{
    m_frameNumber = std::floor(m_frameNumber) + 1.0;
    request(Redraw::NextFrame);
}

// Timers count whole milliseconds, so each interval makes up for what the previous one lost.
void Session::drawNextFrame()
{
    const double now = double(m_clock.nsecsElapsed()) * 1e-6;
    m_nextFrame = std::max(m_nextFrame + m_period, now);
    m_frameTimer.start(int(std::lround(m_nextFrame - now)));
    if (m_worker->hasWaiting()) // it would be replaced
        return;
    m_frameNumber += frameAdvance();
    request(Redraw::NextFrame);
}

double Session::frameAdvance() const
{
    return std::min(1.0, m_period * kFramesPerSecond / 1000.0);
}

void Session::request(Redraw redraw)
{
    send({.redraw = redraw == Redraw::Frame && isRunning() ? Redraw::NextFrame : redraw});
}

void Session::send(Request request)
{
    if (m_preset.isEmpty() || m_view.source.isEmpty())
        return;
    if (!isBusy())
        m_slownessTimer.start();
    request.number = ++m_lastRequest;
    request.preset = m_preset;
    request.needsPreset = m_loaded.name != m_preset;
    request.revision = m_revision;
    request.view = m_view;
    request.display = m_display;
    request.changes = changes();
    request.frame = int(m_frameNumber);
    request.frameSeconds = float(frameAdvance() / kFramesPerSecond);
    m_worker->request(std::move(request));
}

void Session::applyResult(const Result &result)
{
    m_lastResult = result.number;
    m_slownessTimer.stop();
    Q_EMIT slownessChanged(false);
    if (isBusy())
        m_slownessTimer.start();
    if (result.preset && result.preset->name == m_preset) {
        if (result.isPresetLoaded) {
            m_loaded = *result.preset;
        } else {
            m_loaded.name = m_preset;
            m_loaded.files = result.preset->files;
        }
        watchFiles();
        if (result.isPresetLoaded)
            Q_EMIT parametersChanged();
    }
    if (result.message != m_message) {
        m_message = result.message;
        Q_EMIT messageChanged(m_message);
    }
    if (result.frame) {
        m_frame = result.frame;
        Q_EMIT frameDrawn();
    } else {
        setRunning(false);
    }
}

// Editors replace files. Then only the directory's watch notices, and the new file has to be
// watched. Where a directory is missing, the nearest one above it is watched.
void Session::watchFiles()
{
    QStringList files = m_loaded.files;
    if (!m_view.source.isEmpty() && !testPictureNames().contains(m_view.source))
        files += sourceFiles(m_view.source);
    QStringList paths;
    for (const QString &file : std::as_const(files)) {
        QString directory = QFileInfo(file).path();
        paths << file << directory;
        while (!QFileInfo::exists(directory) && directory != QFileInfo(directory).path()) {
            directory = QFileInfo(directory).path();
            paths.append(directory);
        }
    }
    paths.removeDuplicates();
    const QStringList watched = m_watcher.files() + m_watcher.directories();
    for (const QString &path : std::as_const(paths)) {
        if (!watched.contains(path) && QFileInfo::exists(path))
            m_watcher.addPath(path);
    }
}
