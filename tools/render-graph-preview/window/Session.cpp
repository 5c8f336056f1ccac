#include "Session.h"

#include "PictureFile.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int kSettlingMilliseconds = 50;
constexpr double kFramesPerSecond = 60.0;

// Reference white and what is below it darken a little, so that the headroom has a place below
// the display's white; a headroom of 1 changes nothing. Gamma-encoded as SDR is.
float toneMapped(float linear, float headroom)
{
    const float light = std::max(0.0F, linear);
    return std::pow(light * (1.0F + light / (headroom * headroom)) / (1.0F + light), 1.0F / 2.2F);
}

QImage shownImage(const Picture &picture, std::optional<float> headroom)
{
    if (!headroom)
        return imageOf(picture);
    Picture mapped = picture;
    for (Pixel &pixel : mapped.pixels) {
        for (const std::size_t channel : {0U, 1U, 2U})
            pixel.at(channel) = toneMapped(pixel.at(channel), *headroom);
    }
    return imageOf(mapped);
}

} // namespace

QString numberText(float value)
{
    std::array<char, 64> text = {};
    const auto *const end =
            std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed)
                    .ptr;
    const QString number = QString::fromLatin1(text.data(), end - text.data());
    return number.contains(u'.') ? number : number + ".0"_L1;
}

QString overrideRow(const QString &id, float value)
{
    return u"    {.id = \"%1\", .value = %2F},\n"_s.arg(id, numberText(value));
}

struct Session::Request
{
    std::uint64_t number = 0;
    QString preset;
    int revision = 0;
    ViewSettings view;
    QHash<QString, float> changes;
    int frame = 0;
    bool continues = false; // what the last frame left in the histories
};

struct Session::Answer
{
    std::uint64_t number = 0;
    std::optional<PresetOnDisk> preset; // if it was compiled anew
    std::shared_ptr<const DrawnFrame> frame; // if there is a new one
    QString message;
};

// The drawing thread, and all that only it touches.
class Session::Worker
{
public:
    Worker(Session &session, QString shadersDir, QString device)
        : m_session(session),
          m_shadersDir(std::move(shadersDir)),
          m_device(std::move(device)),
          m_thread([this] { run(); })
    {
    }

    ~Worker()
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_isClosing = true;
        }
        m_wake.notify_one();
        m_thread.join();
    }
    Q_DISABLE_COPY_MOVE(Worker)

    void ask(Request request)
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_waiting = std::move(request);
        }
        m_wake.notify_one();
    }

private:
    // Each has histories of its own.
    struct Drawer
    {
        std::unique_ptr<GraphRenderer> renderer;
        bool hasGraph = false;
        bool hasSource = false;
    };

    void run()
    {
        while (const std::optional<Request> request = next()) {
            Answer answer;
            answer.number = request->number;
            QString error;
            loadIfChanged(*request, answer);
            openSourceIfChanged(request->view.source);
            if (!m_preset.graph.passes.isEmpty() && m_source)
                answer.frame = drawnFrame(*request, error);
            QStringList errors = {m_presetError, m_sourceError, error};
            errors.removeAll(QString());
            answer.message = errors.join(u'\n');
            const bool isDrawn = answer.frame != nullptr;
            tell([&session = m_session, answer = std::move(answer)] { session.take(answer); });
            if (isDrawn)
                drawThumbnails(request->view.headroom);
        }
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
    void tell(Function function)
    {
        QMetaObject::invokeMethod(&m_session, std::move(function), Qt::QueuedConnection);
    }

    void loadIfChanged(const Request &request, Answer &answer)
    {
        if (request.preset == m_requestedPreset && request.revision == m_revision)
            return;
        m_requestedPreset = request.preset;
        m_revision = request.revision;
        answer.preset = loadPreset(m_shadersDir, request.preset);
        m_presetError = answer.preset->error;
        if (!m_presetError.isEmpty())
            return;
        m_preset = *answer.preset;
        for (Drawer &drawer : m_drawers)
            drawer.hasGraph = false;
    }

    void openSourceIfChanged(const QString &source)
    {
        if (source == m_requestedSource)
            return;
        m_requestedSource = source;
        m_sourceError.clear();
        std::optional<SourcePicture> opened = SourcePicture::open(source, m_sourceError);
        if (!opened)
            return;
        m_source = std::move(opened);
        for (Drawer &drawer : m_drawers)
            drawer.hasSource = false;
    }

    bool draw(Drawer &drawer, const Request &request, const QHash<QString, float> &changes,
              QString &error)
    {
        if (!drawer.renderer)
            drawer = {.renderer = GraphRenderer::create(m_device, error)};
        if (drawer.renderer && drawOn(drawer, request, changes, error))
            return true;
        drawer.renderer.reset(); // the device may be lost: the next frame begins anew
        return false;
    }

    bool drawOn(Drawer &drawer, const Request &request, const QHash<QString, float> &changes,
                QString &error)
    {
        if (!drawer.hasGraph) {
            if (!drawer.renderer->setGraph(m_preset.graph, m_preset.modules, error))
                return false;
            drawer.hasGraph = true;
            drawer.hasSource = false;
        }
        const QImage source = m_source->frame(request.frame);
        if (!drawer.hasSource || m_source->moves()) {
            if (!drawer.renderer->setSource(pictureOf(source), error))
                return false;
            drawer.hasSource = true;
        }
        if (!request.continues)
            drawer.renderer->resetHistories();

        FrameState state;
        state.params = initialValues(m_preset.parameters);
        state.params.insert(changes);
        state.viewport = request.view.viewport;
        if (request.view.keepsShape)
            state.viewport = source.size().scaled(state.viewport, Qt::KeepAspectRatio);
        state.viewport = state.viewport.expandedTo({1, 1});
        state.frameCount = std::uint32_t(request.frame);
        state.hdrOutputActive = request.view.headroom.has_value();
        state.hdrHeadroom = request.view.headroom.value_or(1.0F);
        return drawer.renderer->drawFrame(state, error);
    }

    std::shared_ptr<const DrawnFrame> drawnFrame(const Request &request, QString &error)
    {
        using Comparison = ViewSettings::Comparison;
        auto frame = std::make_shared<DrawnFrame>();
        QElapsedTimer timer;
        timer.start();
        if (!draw(m_drawers[0], request, request.changes, error))
            return nullptr;
        frame->milliseconds = double(timer.nsecsElapsed()) * 1e-6;
        const GraphRenderer &renderer = *m_drawers[0].renderer;
        frame->number = request.frame;
        frame->passes = renderer.passes();
        for (const VulkanRenderGraph::Pass &pass : std::as_const(m_preset.graph.passes))
            frame->components.append(pass.debugName);
        frame->device = renderer.device().name;

        const int last = int(frame->passes.size()) - 1;
        frame->pass = request.view.pass >= 0 ? std::min(request.view.pass, last) : last;
        frame->isToneMapped = request.view.headroom && frame->pass == last;
        const std::optional<float> headroom =
                frame->isToneMapped ? request.view.headroom : std::nullopt;
        std::optional<Picture> picture = renderer.output(frame->pass, error);
        if (!picture)
            return nullptr;
        frame->picture = std::move(*picture);
        frame->image = shownImage(frame->picture, headroom);

        if (request.view.comparison == Comparison::Source)
            frame->compared = m_source->frame(request.frame);
        if (request.view.comparison == Comparison::Tuned) {
            if (!draw(m_drawers[1], request, {}, error))
                return nullptr;
            const auto tuned = m_drawers[1].renderer->output(frame->pass, error);
            if (!tuned)
                return nullptr;
            frame->compared = shownImage(*tuned, headroom);
        }
        return frame;
    }

    // In turn: one after each frame that is followed by another, else all.
    void drawThumbnails(std::optional<float> headroom)
    {
        const GraphRenderer &renderer = *m_drawers[0].renderer;
        const int count = int(renderer.passes().size());
        for (int drawn = 0; drawn < count && (drawn == 0 || !isInterrupted()); ++drawn) {
            m_thumbnail = (m_thumbnail + 1) % count;
            QString error;
            const std::optional<Picture> picture = renderer.output(m_thumbnail, error);
            if (!picture)
                return; // the next frame will say so
            const QImage image =
                    shownImage(*picture, m_thumbnail == count - 1 ? headroom : std::nullopt)
                            .scaled(kThumbnailSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            tell([&session = m_session, pass = m_thumbnail, image] {
                Q_EMIT session.thumbnailDrawn(pass, image);
            });
        }
    }

    Session &m_session;
    QString m_shadersDir;
    QString m_device;

    QString m_requestedPreset; // may be broken
    int m_revision = -1;
    PresetOnDisk m_preset; // the last good one
    QString m_presetError;
    QString m_requestedSource;
    std::optional<SourcePicture> m_source;
    QString m_sourceError;
    std::array<Drawer, 2> m_drawers; // of the values as they are, and of the tuned ones
    int m_thumbnail = -1;

    std::mutex m_mutex; // for what follows
    std::condition_variable m_wake;
    std::optional<Request> m_waiting;
    bool m_isClosing = false;
    std::thread m_thread;
};

Session::Session(const QString &shadersDir, const QString &device)
    : m_worker(std::make_unique<Worker>(*this, shadersDir, device))
{
    m_settling.setSingleShot(true);
    m_settling.setInterval(kSettlingMilliseconds);
    setSpeed(kFramesPerSecond);
    const auto settle = [this] {
        if (!m_settling.isActive())
            m_settling.start();
    };
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, settle);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, settle);
    connect(&m_settling, &QTimer::timeout, this, [this] {
        watch(); // before they are read, so that no change falls in between
        ++m_revision;
        ask();
    });
    connect(&m_clock, &QTimer::timeout, this, [this] {
        if (!isBusy())
            step();
    });
}

Session::~Session() = default;

void Session::setPreset(const QString &name)
{
    if (name == m_preset)
        return;
    m_preset = name;
    m_changes.clear();
    ask();
}

void Session::setView(const ViewSettings &view)
{
    m_view = view;
    ask();
}

float Session::value(const PresetParamMeta &parameter) const
{
    return m_changes.value(parameter.id, parameter.initialValue);
}

void Session::setValue(const QString &id, float value)
{
    m_changes.insert(id, value);
    Q_EMIT valuesChanged();
    ask();
}

void Session::resetAll()
{
    m_changes.clear();
    Q_EMIT valuesChanged();
    ask();
}

QString Session::overrides() const
{
    QString rows;
    for (const PresetParamMeta &parameter : m_parameters) {
        if (value(parameter) != parameter.initialValue)
            rows += overrideRow(parameter.id, value(parameter));
    }
    return rows;
}

void Session::setRunning(bool isRunning)
{
    if (isRunning == m_clock.isActive())
        return;
    if (isRunning)
        m_clock.start();
    else
        m_clock.stop();
    Q_EMIT runningChanged(isRunning);
}

void Session::setSpeed(double framesPerSecond)
{
    m_clock.setInterval(std::max(1, int(std::lround(1000.0 / framesPerSecond))));
}

void Session::step()
{
    ++m_frameNumber;
    ask(true);
}

void Session::ask(bool continues)
{
    if (m_preset.isEmpty() || m_view.source.isEmpty())
        return;
    m_worker->ask({.number = ++m_asked,
                   .preset = m_preset,
                   .revision = m_revision,
                   .view = m_view,
                   .changes = m_changes,
                   .frame = m_frameNumber,
                   .continues = continues || isRunning()});
}

void Session::take(const Answer &answer)
{
    m_answered = answer.number;
    if (answer.preset && answer.preset->name == m_preset) {
        m_files = answer.preset->files;
        watch();
        if (answer.preset->error.isEmpty()) {
            m_parameters = answer.preset->parameters;
            Q_EMIT parametersChanged();
        }
    }
    if (answer.message != m_message) {
        m_message = answer.message;
        Q_EMIT messageChanged(m_message);
    }
    if (answer.frame) {
        m_frame = answer.frame;
        Q_EMIT frameDrawn();
    } else {
        setRunning(false);
    }
}

// Editors replace files: then only their directories tell, and the file has to be watched anew.
void Session::watch()
{
    QStringList paths;
    for (const QString &file : std::as_const(m_files))
        paths << file << QFileInfo(file).path();
    paths.removeDuplicates();
    const QStringList watched = m_watcher.files() + m_watcher.directories();
    for (const QString &path : std::as_const(paths)) {
        if (!watched.contains(path) && QFileInfo::exists(path))
            m_watcher.addPath(path);
    }
}
