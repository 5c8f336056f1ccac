#include "Command.h"
#include "Drawing.h"
#include "PixelText.h"

#include <QColorSpace>
#include <QFileInfo>

#include <cstring>
#include <numeric>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int kGap = 8;

QList<QCommandLineOption> options()
{
    return drawingOptions()
            + QList<QCommandLineOption>{
                    {u"every"_s,
                     u"Writes every frame, to the file that --out names with the frame's number in place of %d."_s},
                    {u"pass"_s,
                     u"Writes this pass's output instead of the last one's: an index, a component, or \"all\" for a file per pass, with its index and component in the name."_s,
                     u"pass"_s},
                    {u"compare"_s,
                     u"Draws once for each value, and writes the pictures side by side, labelled."_s,
                     u"id=v1,v2,..."_s},
            };
}

// The passes whose outputs are asked for.
std::optional<QList<int>> chosenPasses(const VulkanRenderGraph &graph, const QString &choice,
                                       QString &error)
{
    const int count = int(graph.passes.size());
    if (choice.isEmpty())
        return QList<int>{count - 1};
    QList<int> all(count);
    std::iota(all.begin(), all.end(), 0);
    if (choice == "all"_L1)
        return all;
    bool isIndex = false;
    const int index = choice.toInt(&isIndex);
    QList<int> named;
    QStringList known;
    for (const int i : std::as_const(all)) {
        const QString &component = graph.passes.at(i).debugName;
        if (isIndex ? i == index : component == choice)
            named.append(i);
        known.append(u"%1 %2"_s.arg(i).arg(component));
    }
    if (named.size() == 1)
        return named;
    error = (named.isEmpty() ? u"--pass %1: there is no such pass; there are %2"_s
                             : u"--pass %1: several passes have this name; take an index of %2"_s)
                    .arg(choice, known.join(u", "_s));
    return {};
}

// Side by side, each below its label; a single picture is itself.
QImage sideBySide(const QList<QImage> &images, const QStringList &labels,
                  std::optional<float> headroom)
{
    if (labels.isEmpty())
        return images.first();
    const QSize size = images.first().size();
    const int scale = size.width() >= 480 ? 2 : 1;
    const int strip = kPixelTextHeight * scale + kGap;
    const int count = int(images.size());
    QImage sheet(count * (size.width() + kGap) - kGap, size.height() + strip,
                 images.first().format());
    sheet.fill(Qt::black);
    sheet.setColorSpace(images.first().colorSpace());
    for (const QString &key : images.first().textKeys())
        sheet.setText(key, images.first().text(key));
    // Reference white.
    const int white = qRound(255.0F / headroom.value_or(1.0F));
    const qsizetype pixelBytes = sheet.depth() / 8;
    for (int i = 0; i < count; ++i) {
        const int left = i * (size.width() + kGap);
        for (int y = 0; y < size.height(); ++y)
            std::memcpy(sheet.scanLine(y + strip) + left * pixelBytes,
                        images.at(i).constScanLine(y), std::size_t(size.width() * pixelBytes));
        drawPixelText(sheet, {left + kGap / 2, kGap / 2}, labels.at(i), qRgb(white, white, white),
                      scale);
    }
    return sheet;
}

// "a.png" becomes "a-05-crt-drive.png".
QString withPass(const QString &path, int pass, const QString &component)
{
    const QString suffix = QFileInfo(path).suffix();
    const qsizetype end = suffix.isEmpty() ? path.size() : path.size() - suffix.size() - 1;
    return QString(path).insert(end, u"-%1-%2"_s.arg(pass, 2, 10, QChar(u'0')).arg(component));
}

bool picture(const CommandLine &line, QString &error)
{
    const auto request = DrawingRequest::parse(line.parser, error);
    if (!request)
        return false;
    const bool isEvery = line.parser.isSet(u"every"_s);
    if (isEvery && !QFileInfo(line.out).fileName().contains(u"%d"_s)) {
        error = u"--every writes a file per frame: --out %1 needs a %d in its name"_s.arg(line.out);
        return false;
    }

    // One drawing for each value to compare, all of them going forwards together.
    std::vector<Drawing> drawings;
    QStringList labels;
    const QString comparison = line.parser.value(u"compare"_s);
    const QStringList values = comparison.section(u'=', 1).split(u',');
    for (const QString &value : values) {
        std::optional<Drawing> drawing =
                Drawing::load(line.shadersDir, line.arguments.first(), *request, error);
        if (!drawing)
            return false;
        if (!comparison.isEmpty()) {
            const QString id = comparison.section(u'=', 0, 0);
            if (!drawing->setValue(id, value, error))
                return false;
            labels.append(id + u'=' + value);
        }
        drawings.push_back(std::move(*drawing));
    }
    const VulkanRenderGraph &graph = drawings.front().preset().graph;
    const QString choice = line.parser.value(u"pass"_s);
    const auto passes = chosenPasses(graph, choice, error);
    if (!passes)
        return false;
    for (Drawing &drawing : drawings) {
        if (!drawing.open(error))
            return false;
    }

    const int frames = drawings.front().frames();
    for (int frame = 0; frame < frames; ++frame) {
        for (Drawing &drawing : drawings) {
            if (!drawing.drawFrame(frame, error))
                return false;
        }
        if (!isEvery && frame + 1 < frames)
            continue;
        for (const int pass : *passes) {
            QList<QImage> images;
            for (const Drawing &drawing : drawings) {
                const std::optional<QImage> image = drawing.image(pass, error);
                if (!image)
                    return false;
                images.append(*image);
            }
            QString path = line.out;
            if (choice == "all"_L1)
                path = withPass(path, pass, graph.passes.at(pass).debugName);
            if (isEvery)
                path.replace(u"%d"_s, QString::number(frame));
            if (!savePng(sideBySide(images, labels, request->headroom), path, error))
                return false;
        }
    }
    return true;
}

} // namespace

const Command kPictureCommand = {
        .name = "picture",
        .arguments = "<preset>",
        .description =
                "Writes what a preset shows as a PNG file: 8 bits per channel, sRGB. With --hdr 16 "
                "bits, linear light: 65535 is the headroom, 65535 / headroom the reference white.",
        .out = "The PNG file to write.",
        .fewestArguments = 1,
        .mostArguments = 1,
        .options = options,
        .run = picture};
