#include "Command.h"
#include "DrawingOptions.h"

#include <PixelText.h>

#include <QColorSpace>
#include <QFileInfo>

#include <cstring>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int kGap = 8;

QList<QCommandLineOption> pictureOptions()
{
    return DrawingOptions::declared()
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

// The passes that --pass names; by default the last one.
bool choosePasses(const VulkanRenderGraph &graph, const QString &choice, QList<int> &passes,
                  QString &error)
{
    const int count = int(graph.passes.size());
    passes.clear();
    if (choice.isEmpty()) {
        passes.append(count - 1);
        return true;
    }
    bool isIndex = false;
    const int index = choice.toInt(&isIndex);
    const bool isAll = choice == "all"_L1;
    QStringList known;
    for (int i = 0; i < count; ++i) {
        const QString &component = graph.passes.at(i).debugName;
        if (isAll || (isIndex ? i == index : component == choice))
            passes.append(i);
        known.append(u"%1 %2"_s.arg(QString::number(i), component));
    }
    if (isAll || passes.size() == 1)
        return true;
    error = (passes.isEmpty() ? u"--pass %1: there is no such pass; there are %2"_s
                              : u"--pass %1: several passes have this name; take an index of %2"_s)
                    .arg(choice, known.join(u", "_s));
    return false;
}

// The images side by side, each below its label. Without labels, the first image.
QImage sideBySide(const QList<QImage> &images, const QStringList &labels,
                  std::optional<float> headroom)
{
    if (labels.isEmpty())
        return images.first();
    const QSize size = images.first().size();
    const int scale = size.width() >= 480 ? 2 : 1;
    const int strip = kPixelTextHeight * scale + kGap;
    const int count = int(images.size());
    QImage sheet = newImage({count * (size.width() + kGap) - kGap, size.height() + strip},
                            images.first().format());
    sheet.fill(Qt::black);
    sheet.setColorSpace(images.first().colorSpace());
    for (const QString &key : images.first().textKeys())
        sheet.setText(key, images.first().text(key));
    const int white = qRound(255.0F / headroom.value_or(1.0F)); // reference white
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

bool picture(const CommandLine &line, QString &error)
{
    DrawingOptions options;
    if (!DrawingOptions::parse(line.parser, options, error))
        return false;
    if (!line.out.endsWith(".png"_L1)) {
        error = u"--out %1: the name ends in .png"_s.arg(line.out);
        return false;
    }
    const bool isEvery = line.parser.isSet(u"every"_s);
    if (isEvery && !QFileInfo(line.out).fileName().contains(u"%d"_s)) {
        error = u"--every writes a file per frame: --out %1 needs a %d in its name"_s.arg(line.out);
        return false;
    }

    // One player for each value to compare.
    std::vector<Player> players;
    QStringList labels;
    if (line.parser.values(u"compare"_s).size() > 1) {
        error = u"--compare is given twice: it compares values of one parameter"_s;
        return false;
    }
    const QString comparison = line.parser.value(u"compare"_s);
    const QStringList values = comparison.section(u'=', 1).split(u',');
    if (values.size() * (options.size.width() + kGap) > kLargestPngSide) {
        error = u"--compare: %1 pictures side by side are too wide for a PNG file"_s.arg(
                values.size());
        return false;
    }
    for (const QString &value : values) {
        std::optional<Player> player;
        if (!options.loadPlayer(line.shadersDir, line.arguments.first(),
                                OffscreenRenderer::Outputs::All, player, error))
            return false;
        if (!comparison.isEmpty()) {
            const QString id = comparison.section(u'=', 0, 0);
            if (!setValue(*player, id, value, error))
                return false;
            labels.append(id + u'=' + value);
        }
        players.push_back(std::move(*player));
    }
    const VulkanRenderGraph &graph = players.front().preset().graph;
    const QString choice = line.parser.value(u"pass"_s);
    QList<int> passes;
    if (!choosePasses(graph, choice, passes, error))
        return false;
    const auto fileOf = [&](int pass, int frame) {
        QString path = line.out;
        if (choice == "all"_L1) // "a.png" becomes "a-05-crt-drive.png"
            path.insert(
                    path.size() - ".png"_L1.size(),
                    u"-%1-%2"_s.arg(pass, 2, 10, QChar(u'0')).arg(graph.passes.at(pass).debugName));
        return isEvery ? path.replace(u"%d"_s, QString::number(frame)) : path;
    };
    if (!canSaveFile(fileOf(passes.first(), 0), error))
        return false;
    for (Player &player : players) {
        if (!options.openSource(player, error))
            return false;
    }

    const int frames = options.frames.value_or(1);
    for (int frame = 0; frame < frames; ++frame) {
        for (Player &player : players) {
            if (!player.drawFrame(frame, error))
                return false;
        }
        if (!isEvery && frame + 1 < frames)
            continue;
        for (const int pass : std::as_const(passes)) {
            QList<QImage> images;
            for (const Player &player : players) {
                QImage output;
                if (!player.renderer()->output(pass, output, error))
                    return false;
                images.append(displayImage(output, options.headroom));
            }
            if (!savePng(sideBySide(images, labels, options.headroom), fileOf(pass, frame), error))
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
        .out = "The PNG file to write; its name ends in .png.",
        .options = pictureOptions,
        .run = picture};
