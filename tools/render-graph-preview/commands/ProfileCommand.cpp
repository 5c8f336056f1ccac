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

QJsonObject timesOf(const QList<double> &milliseconds)
{
    return {{u"medianMs"_s, percentile(milliseconds, 0.5)},
            {u"p95Ms"_s, percentile(milliseconds, 0.95)}};
}

// Draws a preset's frames and collects their times.
struct Measurement
{
    bool drawFrame(int number, QString &error)
    {
        QElapsedTimer timer;
        timer.start();
        if (!player.drawFrame(number, error))
            return false;
        const double elapsed = double(timer.nsecsElapsed()) / 1e6;
        if (number < kWarmUpFrames)
            return true;
        frameTimes.append(elapsed);
        const QList<PassResult> results = player.renderer()->passes();
        passTimes.resize(results.size());
        double sum = 0.0;
        for (qsizetype i = 0; i < results.size(); ++i) {
            const std::optional<double> time = results.at(i).milliseconds;
            if (time)
                passTimes[i].append(*time);
            sum += time.value_or(0.0);
        }
        deviceTimes.append(sum);
        return true;
    }

    // Shares are of all passes' medians.
    QJsonObject profile() const
    {
        const QList<PassResult> results = player.renderer()->passes();
        QList<QJsonObject> passes;
        double sum = 0.0;
        for (const QList<double> &times : passTimes) {
            passes.append(timesOf(times));
            sum += passes.last()[u"medianMs"_s].toDouble();
        }
        QJsonArray rows;
        for (QJsonObject &row : passes) {
            const PassResult &result = results.at(rows.size());
            const bool isDrawn = result.kind == PassKind::Drawn;
            row[u"index"_s] = rows.size();
            row[u"component"_s] = player.preset().graph.passes.at(rows.size()).debugName;
            row[u"kind"_s] = nameOf(result.kind);
            row[u"width"_s] = result.size.width();
            row[u"height"_s] = result.size.height();
            row[u"format"_s] = VulkanRenderGraph::formatName(result.format);
            row[u"bytesWritten"_s] = isDrawn ? result.bytes : 0;
            row[u"share"_s] = sum > 0.0 ? row[u"medianMs"_s].toDouble() / sum : 0.0;
            rows.append(row);
        }
        return {{u"preset"_s, player.preset().name},
                {u"shadersDir"_s, shadersDir},
                {u"passes"_s, rows},
                {u"deviceTime"_s, timesOf(deviceTimes)},
                {u"frameTime"_s, timesOf(frameTimes)},
                {u"memoryBytes"_s, player.renderer()->memoryHeld()}};
    }

    Player player;
    QString shadersDir;
    QList<QList<double>> passTimes = {};
    QList<double> deviceTimes = {};
    QList<double> frameTimes = {};
};

void printTable(const QJsonObject &profile)
{
    const auto text = [](const QJsonValue &value) { return value.toString().toUtf8(); };
    std::printf("%s, %s\n", text(profile[u"preset"_s]).constData(),
                text(profile[u"shadersDir"_s]).constData());
    std::printf("%3s  %-26s %-7s %11s %-10s %12s %10s %10s %7s\n", "#", "component", "", "size",
                "format", "bytes", "median ms", "p95 ms", "share");
    const QJsonArray passes = profile[u"passes"_s].toArray();
    for (const auto &pass : passes) {
        const QString size =
                u"%1x%2"_s.arg(pass[u"width"_s].toInt()).arg(pass[u"height"_s].toInt());
        std::printf("%3d  %-26s %-7s %11s %-10s %12lld %10.3f %10.3f %5.1f %%\n",
                    pass[u"index"_s].toInt(), text(pass[u"component"_s]).constData(),
                    text(pass[u"kind"_s]).constData(), qUtf8Printable(size),
                    text(pass[u"format"_s]).constData(), pass[u"bytesWritten"_s].toInteger(),
                    pass[u"medianMs"_s].toDouble(), pass[u"p95Ms"_s].toDouble(),
                    100.0 * pass[u"share"_s].toDouble());
    }
    for (const auto &[name, key] : {std::pair("all passes", u"deviceTime"_s),
                                    std::pair("the frame, by the clock", u"frameTime"_s)})
        std::printf("%-5s%-26s %54.3f %10.3f\n", "", name, profile[key][u"medianMs"_s].toDouble(),
                    profile[key][u"p95Ms"_s].toDouble());
    std::printf("%-5smemory held: %.1f MiB\n\n", "",
                profile[u"memoryBytes"_s].toDouble() / (1 << 20));
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
        measurements.push_back({.player = std::move(*player), .shadersDir = shadersDir});
    }
    const int frames = options.frames.value_or(kFrames);
    for (int frame = 0; frame < frames + kWarmUpFrames; ++frame) {
        for (Measurement &measurement : measurements) {
            if (!measurement.drawFrame(frame, error))
                return false;
        }
    }

    const QString device = measurements.front().player.renderer()->device().name;
    QJsonArray profiles;
    for (const Measurement &measurement : measurements)
        profiles.append(measurement.profile());
    const auto median = [](const QJsonValue &measured) {
        return measured[u"frameTime"_s][u"medianMs"_s].toDouble();
    };
    const double ratio = median(profiles.last()) / median(profiles.first());
    if (line.parser.isSet(u"json"_s)) {
        QJsonObject report = {{u"device"_s, device},
                              {u"frames"_s, frames},
                              {u"width"_s, options.size.width()},
                              {u"height"_s, options.size.height()},
                              {u"profiles"_s, profiles}};
        if (profiles.size() == 2)
            report[u"ratio"_s] = ratio;
        std::fputs(QJsonDocument(report).toJson().constData(), stdout);
        return true;
    }
    std::printf("%s, %dx%d, %d frames\n\n", qUtf8Printable(device), options.size.width(),
                options.size.height(), frames);
    for (const auto &measured : std::as_const(profiles))
        printTable(measured.toObject());
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
        .options = profileOptions,
        .run = profile};
