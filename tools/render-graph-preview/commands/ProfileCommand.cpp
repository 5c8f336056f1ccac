#include "Command.h"
#include "Drawing.h"

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
// Frames before the first that counts: what is done once is then done.
constexpr int kWarmUpFrames = 3;

constexpr const char *kKindNames[] = {"drawn", "cached", "black"};

QList<QCommandLineOption> options()
{
    return drawingOptions()
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

struct Times
{
    QList<double> samples; // milliseconds

    double median() const
    {
        return percentile(samples, 0.5);
    }
    QJsonObject json() const
    {
        return {{u"medianMs"_s, median()}, {u"p95Ms"_s, percentile(samples, 0.95)}};
    }
};

struct Profile
{
    Drawing drawing;
    QString shadersDir;
    QList<Times> passes = {}; // on the device
    Times device = {}; // all passes of a frame
    Times frame = {}; // from asking for a frame until it is done

    bool measure(int number, QString &error)
    {
        QElapsedTimer timer;
        timer.start();
        if (!drawing.drawFrame(number, error))
            return false;
        const double elapsed = double(timer.nsecsElapsed()) / 1e6;
        if (number < kWarmUpFrames)
            return true;
        frame.samples.append(elapsed);
        const QList<PassResult> results = drawing.renderer().passes();
        passes.resize(results.size());
        double sum = 0.0;
        for (qsizetype i = 0; i < results.size(); ++i) {
            const std::optional<double> time = results.at(i).milliseconds;
            if (time)
                passes[i].samples.append(*time);
            sum += time.value_or(0.0);
        }
        device.samples.append(sum);
        return true;
    }

    QJsonObject json() const
    {
        double sum = 0.0;
        for (const Times &times : passes)
            sum += times.median();
        QJsonArray rows;
        const QList<PassResult> results = drawing.renderer().passes();
        for (qsizetype i = 0; i < results.size(); ++i) {
            const PassResult &result = results.at(i);
            const FormatInfo &format = infoOf(result.format);
            const bool isDrawn = result.kind == PassResult::Kind::Drawn;
            QJsonObject row = passes.at(i).json();
            row[u"index"_s] = i;
            row[u"component"_s] = drawing.preset().graph.passes.at(i).debugName;
            row[u"kind"_s] = QLatin1StringView(kKindNames[static_cast<std::size_t>(result.kind)]);
            row[u"width"_s] = result.size.width();
            row[u"height"_s] = result.size.height();
            row[u"format"_s] = format.name;
            row[u"bytesWritten"_s] = isDrawn
                    ? qint64(result.size.width()) * result.size.height() * format.texelBytes
                    : qint64(0);
            row[u"share"_s] = sum > 0.0 ? passes.at(i).median() / sum : 0.0;
            rows.append(row);
        }
        return {{u"preset"_s, drawing.preset().name},
                {u"shadersDir"_s, shadersDir},
                {u"passes"_s, rows},
                {u"deviceTime"_s, device.json()},
                {u"frameTime"_s, frame.json()},
                {u"memoryBytes"_s, drawing.renderer().memoryHeld()}};
    }
};

// The table says what the JSON says.
void printTable(const QJsonObject &profile)
{
    std::printf("%s, %s\n", qUtf8Printable(profile[u"preset"_s].toString()),
                qUtf8Printable(profile[u"shadersDir"_s].toString()));
    std::printf("%3s  %-26s %-7s %11s %-10s %12s %10s %10s %7s\n", "#", "component", "", "size",
                "format", "bytes", "median ms", "p95 ms", "share");
    const QJsonArray passes = profile[u"passes"_s].toArray();
    for (const auto &value : passes) {
        const QJsonObject row = value.toObject();
        const QString size = u"%1x%2"_s.arg(row[u"width"_s].toInt()).arg(row[u"height"_s].toInt());
        std::printf("%3d  %-26s %-7s %11s %-10s %12lld %10.3f %10.3f %5.1f %%\n",
                    row[u"index"_s].toInt(), qUtf8Printable(row[u"component"_s].toString()),
                    qUtf8Printable(row[u"kind"_s].toString()), qUtf8Printable(size),
                    qUtf8Printable(row[u"format"_s].toString()), row[u"bytesWritten"_s].toInteger(),
                    row[u"medianMs"_s].toDouble(), row[u"p95Ms"_s].toDouble(),
                    100.0 * row[u"share"_s].toDouble());
    }
    for (const auto &[key, name] : {std::pair(u"deviceTime"_s, "all passes"),
                                    std::pair(u"frameTime"_s, "the frame, by the clock")}) {
        const QJsonObject times = profile[key].toObject();
        std::printf("%-5s%-26s %54.3f %10.3f\n", "", name, times[u"medianMs"_s].toDouble(),
                    times[u"p95Ms"_s].toDouble());
    }
    std::printf("%-5smemory held: %.1f MiB\n\n", "",
                double(profile[u"memoryBytes"_s].toInteger()) / (1 << 20));
}

bool profile(const CommandLine &line, QString &error)
{
    std::optional<DrawingRequest> request = DrawingRequest::parse(line.parser, error);
    if (!request)
        return false;
    request->isStill = true;
    const QString preset = line.arguments.first();
    QList<std::pair<QString, QString>> runs = {{preset, line.shadersDir}};
    const QString againstPreset = line.parser.value(u"against"_s);
    const QString againstDir = line.parser.value(u"against-shaders-dir"_s);
    if (!againstPreset.isEmpty() || !againstDir.isEmpty())
        runs.append({againstPreset.isEmpty() ? preset : againstPreset,
                     againstDir.isEmpty() ? line.shadersDir : againstDir});

    std::vector<Profile> profiles;
    for (const auto &[name, shadersDir] : runs) {
        std::optional<Drawing> drawing = Drawing::load(shadersDir, name, *request, error);
        if (!drawing || !drawing->open(error))
            return false;
        profiles.push_back({.drawing = std::move(*drawing), .shadersDir = shadersDir});
    }
    const int frames = request->frames.value_or(kFrames);
    for (int frame = 0; frame < frames + kWarmUpFrames; ++frame) {
        for (Profile &measured : profiles) {
            if (!measured.measure(frame, error))
                return false;
        }
    }

    QJsonObject report = {
            {u"device"_s, profiles.front().drawing.renderer().device().name},
            {u"frames"_s, frames},
            {u"width"_s, request->size.width()},
            {u"height"_s, request->size.height()},
    };
    QJsonArray results;
    for (const Profile &measured : profiles)
        results.append(measured.json());
    report[u"profiles"_s] = results;
    if (profiles.size() == 2)
        report[u"ratio"_s] = profiles.back().frame.median() / profiles.front().frame.median();
    if (line.parser.isSet(u"json"_s)) {
        std::fputs(QJsonDocument(report).toJson().constData(), stdout);
        return true;
    }
    std::printf("%s, %dx%d, %d frames\n\n", qUtf8Printable(report[u"device"_s].toString()),
                request->size.width(), request->size.height(), frames);
    for (const auto &result : std::as_const(results))
        printTable(result.toObject());
    if (profiles.size() == 2)
        std::printf("A frame of the second takes %.3f times that of the first.\n",
                    report[u"ratio"_s].toDouble());
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
        .options = options,
        .run = profile};
