#include "Command.h"
#include "DrawingOptions.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFrames = 60;
constexpr int kWarmUpFrames = 3; // not measured

QList<QCommandLineOption> profileOptions()
{
    return DrawingOptions::declared()
            + QList<QCommandLineOption>{
                    {u"json"_s, u"Writes JSON."_s},
                    {u"against"_s, u"Measures this preset as well, frame by frame in turn."_s,
                     u"preset"_s},
                    {u"against-shaders-dir"_s,
                     u"Measures these shaders as well, frame by frame in turn."_s, u"path"_s},
            };
}

// The value that this share of the samples does not exceed.
double percentile(QList<double> samples, double share)
{
    if (samples.isEmpty())
        return 0.0;
    std::ranges::sort(samples);
    const qsizetype rank = qRound64(share * double(samples.size() - 1));
    return samples.at(rank);
}

// In milliseconds.
struct Times
{
    explicit Times(const QList<double> &samples)
        : median(percentile(samples, 0.5)),
          p95(percentile(samples, 0.95))
    {
    }

    double median;
    double p95;
};

struct PassProfile
{
    QString component;
    PassResult result;
    Times times;
    double share; // of all passes' medians

    qint64 bytesWritten() const
    {
        return result.kind == PassKind::Drawn ? result.bytes : 0;
    }
};

struct Profile
{
    QString preset;
    QString shadersDir;
    QList<PassProfile> passes;
    Times device; // all passes of a frame
    Times frame; // from the call until the frame is done
    qint64 memory;
};

// Draws a preset's frames and collects their times.
class Measurement
{
public:
    Measurement(Player player, QString shadersDir)
        : m_player(std::move(player)),
          m_shadersDir(std::move(shadersDir))
    {
    }

    const Player &player() const
    {
        return m_player;
    }

    bool drawFrame(int number, QString &error)
    {
        QElapsedTimer timer;
        timer.start();
        if (!m_player.drawFrame(number, error))
            return false;
        const double elapsed = double(timer.nsecsElapsed()) / 1e6;
        if (number < kWarmUpFrames)
            return true;
        m_frame.append(elapsed);
        const QList<PassResult> results = m_player.renderer()->passes();
        m_passes.resize(results.size());
        double sum = 0.0;
        for (qsizetype i = 0; i < results.size(); ++i) {
            const std::optional<double> time = results.at(i).milliseconds;
            if (time)
                m_passes[i].append(*time);
            sum += time.value_or(0.0);
        }
        m_device.append(sum);
        return true;
    }

    Profile profile() const
    {
        Profile profile = {.preset = m_player.preset().name,
                           .shadersDir = m_shadersDir,
                           .passes = {},
                           .device = Times(m_device),
                           .frame = Times(m_frame),
                           .memory = m_player.renderer()->memoryHeld()};
        const QList<PassResult> results = m_player.renderer()->passes();
        double sum = 0.0;
        for (qsizetype i = 0; i < results.size(); ++i) {
            profile.passes.append({.component = m_player.preset().graph.passes.at(i).debugName,
                                   .result = results.at(i),
                                   .times = Times(m_passes.at(i)),
                                   .share = 0.0});
            sum += profile.passes.last().times.median;
        }
        for (PassProfile &pass : profile.passes)
            pass.share = sum > 0.0 ? pass.times.median / sum : 0.0;
        return profile;
    }

private:
    Player m_player;
    QString m_shadersDir;
    QList<QList<double>> m_passes;
    QList<double> m_device;
    QList<double> m_frame;
};

QJsonObject jsonOf(const Times &times)
{
    return {{u"medianMs"_s, times.median}, {u"p95Ms"_s, times.p95}};
}

QJsonObject jsonOf(const Profile &profile)
{
    QJsonArray rows;
    for (const PassProfile &pass : profile.passes) {
        QJsonObject row = jsonOf(pass.times);
        row[u"index"_s] = rows.size();
        row[u"component"_s] = pass.component;
        row[u"kind"_s] = nameOf(pass.result.kind);
        row[u"width"_s] = pass.result.size.width();
        row[u"height"_s] = pass.result.size.height();
        row[u"format"_s] = VulkanRenderGraph::formatName(pass.result.format);
        row[u"bytesWritten"_s] = pass.bytesWritten();
        row[u"share"_s] = pass.share;
        rows.append(row);
    }
    return {{u"preset"_s, profile.preset},
            {u"shadersDir"_s, profile.shadersDir},
            {u"passes"_s, rows},
            {u"deviceTime"_s, jsonOf(profile.device)},
            {u"frameTime"_s, jsonOf(profile.frame)},
            {u"memoryBytes"_s, profile.memory}};
}

void printTable(const Profile &profile)
{
    std::printf("%s, %s\n", qUtf8Printable(profile.preset), qUtf8Printable(profile.shadersDir));
    std::printf("%3s  %-26s %-7s %11s %-10s %12s %10s %10s %7s\n", "#", "component", "", "size",
                "format", "bytes", "median ms", "p95 ms", "share");
    int index = 0;
    for (const PassProfile &pass : profile.passes) {
        const QSize size = pass.result.size;
        std::printf("%3d  %-26s %-7s %11s %-10s %12lld %10.3f %10.3f %5.1f %%\n", index++,
                    qUtf8Printable(pass.component), nameOf(pass.result.kind).data(),
                    qUtf8Printable(u"%1x%2"_s.arg(size.width()).arg(size.height())),
                    VulkanRenderGraph::formatName(pass.result.format).data(), pass.bytesWritten(),
                    pass.times.median, pass.times.p95, 100.0 * pass.share);
    }
    for (const auto &[name, times] : {std::pair("all passes", profile.device),
                                      std::pair("the frame, by the clock", profile.frame)})
        std::printf("%-5s%-26s %54.3f %10.3f\n", "", name, times.median, times.p95);
    std::printf("%-5smemory held: %.1f MiB\n\n", "", double(profile.memory) / (1 << 20));
}

bool profile(const CommandLine &line, QString &error)
{
    DrawingOptions options;
    if (!DrawingOptions::parse(line.parser, options, error))
        return false;
    const QString preset = line.arguments.first();
    QList<std::pair<QString, QString>> runs = {{preset, line.shadersDir}};
    const QString againstPreset = line.parser.value(u"against"_s);
    const QString againstDir = line.parser.value(u"against-shaders-dir"_s);
    if (!againstPreset.isEmpty() || !againstDir.isEmpty())
        runs.append({againstPreset.isEmpty() ? preset : againstPreset,
                     againstDir.isEmpty() ? line.shadersDir : againstDir});

    std::vector<Measurement> measurements;
    for (const auto &[name, shadersDir] : runs) {
        std::optional<Player> player;
        if (!options.loadPlayer(shadersDir, name, OffscreenRenderer::Outputs::Last, player, error)
            || !options.openSource(*player, error))
            return false;
        SourcePicture still = player->source();
        still.freeze();
        player->setSource(still);
        measurements.emplace_back(std::move(*player), shadersDir);
    }
    const int frames = options.frames.value_or(kFrames);
    for (int frame = 0; frame < frames + kWarmUpFrames; ++frame) {
        for (Measurement &measurement : measurements) {
            if (!measurement.drawFrame(frame, error))
                return false;
        }
    }

    const QString device = measurements.front().player().renderer()->device().name;
    QList<Profile> profiles;
    for (const Measurement &measurement : measurements)
        profiles.append(measurement.profile());
    const double ratio = profiles.last().frame.median / profiles.first().frame.median;
    if (line.parser.isSet(u"json"_s)) {
        QJsonArray results;
        for (const Profile &measured : std::as_const(profiles))
            results.append(jsonOf(measured));
        QJsonObject report = {{u"device"_s, device},
                              {u"frames"_s, frames},
                              {u"width"_s, options.size.width()},
                              {u"height"_s, options.size.height()},
                              {u"profiles"_s, results}};
        if (profiles.size() == 2)
            report[u"ratio"_s] = ratio;
        std::fputs(QJsonDocument(report).toJson().constData(), stdout);
        return true;
    }
    std::printf("%s, %dx%d, %d frames\n\n", qUtf8Printable(device), options.size.width(),
                options.size.height(), frames);
    for (const Profile &measured : std::as_const(profiles))
        printTable(measured);
    if (profiles.size() == 2)
        std::printf("A frame of the second takes %.3f times that of the first.\n", ratio);
    return true;
}

} // namespace

const Command kProfileCommand = {
        .name = "profile",
        .arguments = "<preset>",
        .description = "Measures each pass by the device's time stamps, the whole frame by the "
                       "clock, and the memory held on the device.",
        .out = "",
        .fewestArguments = 1,
        .mostArguments = 1,
        .options = profileOptions,
        .run = profile};
