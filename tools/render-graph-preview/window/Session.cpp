#include "Session.h"

#include <Player.h>
#include <TestPictures.h>
#include <Tuning.h>

#include <QElapsedTimer>
#include <QFileInfo>
#include <QUndoCommand>
#include <QUndoStack>

#include <algorithm>
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

// Compresses HDR light into SDR, gamma-encoded: up to reference white it gets a little darker, to
// make room for the headroom above. Does nothing at a headroom of 1.
float toneMapped(float linear, float headroom)
{
    const float light = std::max(0.0F, linear);
    return std::pow(light * (1.0F + light / (headroom * headroom)) / (1.0F + light), 1.0F / 2.2F);
}

QImage shownImage(const QImage &picture, std::optional<float> headroom)
{
    if (!headroom)
        return displayImage(picture);
    QImage mapped = newImage(picture.size(), picture.format());
    for (int y = 0; y < mapped.height(); ++y) {
        const auto *const linear = reinterpret_cast<const QRgbaFloat32 *>(picture.constScanLine(y));
        auto *const row = reinterpret_cast<QRgbaFloat32 *>(mapped.scanLine(y));
        for (int x = 0; x < mapped.width(); ++x)
            row[x] = {toneMapped(linear[x].r, *headroom), toneMapped(linear[x].g, *headroom),
                      toneMapped(linear[x].b, *headroom), linear[x].a};
    }
    return displayImage(mapped);
}

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
    std::uint64_t number = 0;
    QString preset;
    bool needsPreset = false; // even if it has not changed
    int revision = 0;
    ViewSettings view;
    Changes changes;
    int frame = 0;
    bool keepsHistories = false; // of the previous frame
};

struct Session::Result
{
    std::uint64_t number = 0; // of the request
    std::optional<PresetOnDisk> preset; // if it was loaded again or is needed
    bool isPresetLoaded = false;
    std::shared_ptr<const FrameResult> frame; // null after an error
    QString message;
};

// The thread that draws, and the data that only it uses.
class Session::Worker
{
public:
    Worker(Session &session, QString shadersDir, const QString &device)
        : m_session(session),
          m_shadersDir(std::move(shadersDir)),
          m_player(device),
          m_tunedPlayer(device),
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

    void request(Request request)
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_waiting = std::move(request);
        }
        m_wake.notify_one();
    }

private:
    void run()
    {
        while (const std::optional<Request> request = next()) {
            Result result;
            try {
                answer(*request, result);
            } catch (const std::bad_alloc &) {
                m_requestedPreset.clear(); // what was not read is read again
                m_requestedSource.clear();
                result = {};
                result.message = kNotEnoughMemory;
            }
            result.number = request->number;
            const bool isDrawn = result.frame != nullptr;
            postToGui([&session = m_session, result = std::move(result)] {
                session.applyResult(result);
            });
            if (isDrawn)
                drawThumbnails(request->view.headroom);
        }
        const std::scoped_lock lock(m_mutex);
        m_isDone = true;
        m_wake.notify_all();
    }

    void answer(const Request &request, Result &result)
    {
        QString error;
        reopenSource(request);
        reloadPreset(request, result);
        if (!m_player.preset().graph.passes.isEmpty() && !m_player.source().isNull()) {
            auto frame = std::make_shared<FrameResult>();
            if (drawFrame(request, *frame, error))
                result.frame = std::move(frame);
        }
        QStringList errors = {m_presetError, m_sourceError, error};
        errors.removeAll(QString());
        result.message = errors.join(u'\n');
    }

    std::optional<Request> next()
    {
        std::unique_lock lock(m_mutex);
        m_wake.wait(lock, [this] { return m_isClosing || m_waiting; });
        return m_isClosing ? std::nullopt : std::exchange(m_waiting, std::nullopt);
    }

    bool isInterrupted()
    {
        const std::scoped_lock lock(m_mutex);
        return m_isClosing || m_waiting;
    }

    template<typename Function>
    void postToGui(Function function)
    {
        QMetaObject::invokeMethod(&m_session, std::move(function), Qt::QueuedConnection);
    }

    void reloadPreset(const Request &request, Result &result)
    {
        if (request.preset != m_requestedPreset || request.revision != m_revision) {
            m_requestedPreset = request.preset;
            m_revision = request.revision;
            m_presetError.clear();
            m_isLoaded = loadPreset(m_shadersDir, request.preset, m_loaded, m_presetError);
            if (m_isLoaded) {
                m_player.setPreset(m_loaded);
                m_tunedPlayer.setPreset(m_loaded);
            }
        } else if (!request.needsPreset) {
            return;
        }
        result.preset = m_loaded;
        result.isPresetLoaded = m_isLoaded;
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
        m_tunedPlayer.setSource(source);
    }

    static bool drawBy(Player &player, const Request &request, QString &error)
    {
        QSize viewport = request.view.viewport;
        if (request.view.keepsAspectRatio)
            viewport = player.source().size().scaled(viewport, Qt::KeepAspectRatio);
        player.setViewport(viewport.expandedTo({1, 1}));
        player.setHeadroom(request.view.headroom);
        player.setBackwards(request.view.isBackwards);
        if (!request.keepsHistories)
            player.resetHistories();
        return player.drawFrame(request.frame, error);
    }

    bool drawFrame(const Request &request, FrameResult &frame, QString &error)
    {
        using Comparison = ViewSettings::Comparison;
        QElapsedTimer timer;
        timer.start();
        frame.preset = m_player.preset().name;
        m_player.resetValues();
        for (const PresetParamMeta &parameter : m_player.preset().parameters) {
            const auto change = request.changes.constFind(parameter.id);
            if (frame.preset == request.preset && change != request.changes.cend())
                m_player.setValue(parameter.id,
                                  std::clamp(change->value, parameter.min, parameter.max));
        }
        if (!drawBy(m_player, request, error))
            return false;
        frame.milliseconds = double(timer.nsecsElapsed()) * 1e-6;
        const OffscreenRenderer &renderer = *m_player.renderer();
        frame.number = request.frame;
        frame.passes = renderer.passes();
        for (const VulkanRenderGraph::Pass &pass : m_player.preset().graph.passes)
            frame.components.append(pass.debugName);
        frame.device = renderer.device().name;

        const int last = int(frame.passes.size()) - 1;
        frame.pass = request.view.pass >= 0 ? std::min(request.view.pass, last) : last;
        frame.isToneMapped = request.view.headroom && frame.pass == last;
        const std::optional<float> headroom =
                frame.isToneMapped ? request.view.headroom : std::nullopt;
        if (!renderer.output(frame.pass, frame.picture, error))
            return false;
        frame.image = shownImage(frame.picture, headroom);

        if (request.view.comparison == Comparison::Source)
            frame.compared = m_player.source().frame(request.frame);
        if (request.view.comparison == Comparison::Tuned) {
            QImage tuned;
            if (!drawBy(m_tunedPlayer, request, error)
                || !m_tunedPlayer.renderer()->output(frame.pass, tuned, error))
                return false;
            frame.compared = shownImage(tuned, headroom);
        }
        return true;
    }

    // All of them, or one per frame if the next request is waiting already.
    void drawThumbnails(std::optional<float> headroom)
    {
        const OffscreenRenderer &renderer = *m_player.renderer();
        const int count = int(renderer.passes().size());
        for (int drawn = 0; drawn < count && (drawn == 0 || !isInterrupted()); ++drawn) {
            m_thumbnail = (m_thumbnail + 1) % count;
            QString error;
            QImage picture;
            try {
                if (!renderer.output(m_thumbnail, picture, error))
                    return; // the next frame will report it
                picture = shownImage(picture, m_thumbnail == count - 1 ? headroom : std::nullopt)
                                  .scaled(kThumbnailSize, Qt::KeepAspectRatio,
                                          Qt::SmoothTransformation);
            } catch (const std::bad_alloc &) {
                return; // likewise
            }
            postToGui([&session = m_session, pass = m_thumbnail, picture] {
                Q_EMIT session.thumbnailDrawn(pass, picture);
            });
        }
    }

    Session &m_session;
    QString m_shadersDir;

    QString m_requestedPreset; // may be broken; the players have the last good one
    int m_revision = -1;
    PresetOnDisk m_loaded; // the requested one
    bool m_isLoaded = false;
    QString m_presetError;
    QString m_requestedSource; // likewise
    QString m_sourceError;
    Player m_player;
    Player m_tunedPlayer; // draws the tuned values, to compare with
    int m_thumbnail = -1;

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
    connect(&m_frameTimer, &QTimer::timeout, this, [this] {
        if (!isBusy())
            step();
    });
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

float Session::value(const PresetParamMeta &parameter) const
{
    const Changes set = changes();
    const auto change = set.constFind(parameter.id);
    return change == set.cend() ? parameter.initialValue
                                : std::clamp(change->value, parameter.min, parameter.max);
}

float Session::replacedValue(const PresetParamMeta &parameter) const
{
    const Changes set = changes();
    const auto change = set.constFind(parameter.id);
    return change == set.cend() ? parameter.initialValue : change->tuned;
}

QHash<QString, float> Session::values() const
{
    QHash<QString, float> values;
    for (const PresetParamMeta &parameter : parameters())
        values.insert(parameter.id, value(parameter));
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
    for (const QString &preset : m_settings.childGroups()) {
        m_settings.beginGroup(preset);
        for (const QString &id : m_settings.childKeys()) {
            const QStringList numbers = m_settings.value(id).toStringList();
            m_changes[preset].insert(
                    id, {.value = numbers.value(0).toFloat(), .tuned = numbers.value(1).toFloat()});
        }
        m_settings.endGroup();
    }
    m_settings.endGroup();
}

QString Session::overrides() const
{
    return declaredText(m_loaded, values());
}

QString Session::savedValues() const
{
    return glslpText(m_loaded, values());
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
    if (isRunning)
        m_frameTimer.start();
    else
        m_frameTimer.stop();
    Q_EMIT runningChanged(isRunning);
}

void Session::setSpeed(double framesPerSecond)
{
    m_frameTimer.setInterval(std::max(1, int(std::lround(1000.0 / framesPerSecond))));
}

void Session::step()
{
    ++m_frameNumber;
    request(true);
}

void Session::request(bool keepsHistories)
{
    if (m_preset.isEmpty() || m_view.source.isEmpty())
        return;
    if (!isBusy())
        m_slownessTimer.start();
    m_worker->request({.number = ++m_lastRequest,
                       .preset = m_preset,
                       .needsPreset = m_loaded.name != m_preset,
                       .revision = m_revision,
                       .view = m_view,
                       .changes = changes(),
                       .frame = m_frameNumber,
                       .keepsHistories = keepsHistories || isRunning()});
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
        files.append(m_view.source);
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
