#include "Command.h"
#include "DrawingOptions.h"
#include "GraphDot.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kThumbnailSize = {160, 120};

QList<QCommandLineOption> graphOptions()
{
    return DrawingOptions::declared()
            + QList<QCommandLineOption>{
                    {u"all"_s, u"Writes <preset>.svg for every preset."_s},
                    {u"thumbnails"_s,
                     u"Puts each pass's output into its box. Draws the preset, as --size does: the boxes then tell the sizes in pixels."_s},
            };
}

bool addThumbnail(int index, const QImage &image, GraphDotExtras &extras, QString &error)
{
    const bool isLarge =
            image.width() > kThumbnailSize.width() || image.height() > kThumbnailSize.height();
    return pngOf(
            isLarge ? image.scaled(kThumbnailSize, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                    : image,
            extras.thumbnails[index], error);
}

// Draws the preset, and adds what its last frame shows.
bool addFrame(DrawingOptions &options, Player &player, bool withThumbnails, GraphDotExtras &extras,
              QString &error)
{
    if (!options.openSource(player, error))
        return false;
    const int frames = options.frames.value_or(1);
    for (int frame = 0; frame < frames; ++frame) {
        if (!player.drawFrame(frame, error))
            return false;
    }
    extras.sourceSize = player.source().size();
    extras.passes = player.renderer()->passes();
    if (!withThumbnails)
        return true;
    if (!addThumbnail(VulkanRenderGraph::ResourceRef::SourceImage,
                      player.source().frame(frames - 1), extras, error))
        return false;
    for (int pass = 0; pass < extras.passes.size(); ++pass) {
        QImage picture;
        if (!player.renderer()->output(pass, picture, error)
            || !addThumbnail(pass, displayImage(picture, options.headroom), extras, error))
            return false;
    }
    return true;
}

bool writeGraph(const CommandLine &line, const QString &preset, const QString &out, QString &error)
{
    const bool isSvg = out.endsWith(".svg"_L1);
    const bool withThumbnails = line.parser.isSet(u"thumbnails"_s);
    if (!isSvg && !out.endsWith(".dot"_L1)) {
        error = u"--out %1: the name ends in .svg or in .dot"_s.arg(out);
        return false;
    }
    if (!isSvg && withThumbnails) {
        error = u"--thumbnails: a .dot file holds no pictures; write an .svg file"_s;
        return false;
    }
    if (!canSaveFile(out, error))
        return false;
    DrawingOptions options;
    std::optional<Player> player;
    if (!DrawingOptions::parse(line.parser, options, error)
        || !options.loadPlayer(line.shadersDir, preset, OffscreenRenderer::Outputs::All, player,
                               error))
        return false;
    GraphDotExtras extras = {.values = player->state().params, .passes = {}, .thumbnails = {}};
    if ((withThumbnails || line.parser.isSet(u"size"_s))
        && !addFrame(options, *player, withThumbnails, extras, error))
        return false;
    const QByteArray dot = graphDot(preset, player->preset().graph, extras);
    if (!isSvg)
        return saveFile(dot, out, error);
    QByteArray svg;
    return graphSvg(dot, extras.thumbnails, svg, error) && saveFile(svg, out, error);
}

bool graph(const CommandLine &line, QString &error)
{
    const bool isAll = line.parser.isSet(u"all"_s);
    if (isAll != line.arguments.isEmpty()) {
        error = u"name one preset, or all of them by --all"_s;
        return false;
    }
    if (!isAll)
        return writeGraph(line, line.arguments.first(), line.out, error);
    if (!QDir().mkpath(line.out)) {
        error = u"cannot make the directory '%1'"_s.arg(line.out);
        return false;
    }
    for (const QString &preset : presetNames()) {
        if (!writeGraph(line, preset, QDir(line.out).filePath(preset + u".svg"_s), error))
            return false;
    }
    return true;
}

} // namespace

const Command kGraphCommand = {
        .name = "graph",
        .arguments = "[<preset>]",
        .description =
                "Draws a preset's passes as boxes, with arrows for what they sample, and a legend.",
        .out = "A file that ends in .svg, drawn by Graphviz, or in .dot; with --all a directory.",
        .options = graphOptions,
        .run = graph};
