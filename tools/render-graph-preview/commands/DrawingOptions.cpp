#include "DrawingOptions.h"

#include <Tuning.h>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int kLargestSide = 16384;
constexpr int kMostFrames = 1000000;
constexpr double kLargestHeadroom = 100.0;

bool parseSize(const QString &text, QSize &size, QString &error)
{
    const QStringList sides = text.split(u'x');
    if (sides.size() == 2) {
        size = {sides.at(0).toInt(), sides.at(1).toInt()};
        if (std::min(size.width(), size.height()) >= 1
            && std::max(size.width(), size.height()) <= kLargestSide)
            return true;
    }
    error = u"--size %1: a size is <width>x<height>, each from 1 to %2"_s.arg(
            text, QString::number(kLargestSide));
    return false;
}

// `given` is what the error begins with.
bool parseNumber(const QString &given, const QString &text, double least, double most,
                 float &number, QString &error)
{
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    if (isNumber && value >= least && value <= most) { // NaN is in no range
        number = float(value);
        return true;
    }
    error = u"%1: the value is a number from %2 to %3"_s.arg(given, QString::number(least, 'g', 9),
                                                             QString::number(most, 'g', 9));
    return false;
}

} // namespace

QList<QCommandLineOption> DrawingOptions::declared()
{
    return {
            {u"source"_s,
             u"The picture that enters the preset: a file of up to %1x%1, a file for each frame (\"name-%04d.png\"), or the name of a test picture (see 'list'). Default: scene-320x240; a window shows the last one."_s
                     .arg(kLargestSourceSide),
             u"picture"_s, u"scene-320x240"_s},
            {u"size"_s,
             u"The size to draw at, also if it is not of the source's shape. Default: the largest of that shape within 1440x1080."_s,
             u"size"_s, u"1440x1080"_s},
            {u"values"_s,
             u"Gives parameters the values of this .glslp file, as the window saves it."_s,
             u"file"_s},
            {u"set"_s, u"Gives a parameter a value within its range; can be repeated."_s,
             u"id=value"_s},
            {u"frames"_s,
             u"How many frames to draw, at 60 per second. Default: 1, which has settled; what moves needs more."_s,
             u"number"_s},
            {u"direction"_s, u"The direction of time: forwards or backwards. Default: forwards."_s,
             u"direction"_s, u"forwards"_s},
            {u"hdr"_s,
             u"Draws for a display whose peak is so many times its reference white, from 1 to %1."_s
                     .arg(kLargestHeadroom),
             u"headroom"_s},
            {u"device"_s, u"A device's number or a part of its name (see 'list'). Default: 0."_s,
             u"device"_s},
    };
}

bool DrawingOptions::parse(const QCommandLineParser &parser, DrawingOptions &options,
                           QString &error)
{
    options.source = parser.value(u"source"_s);
    options.device = parser.value(u"device"_s);
    if (!parseSize(parser.value(u"size"_s), options.size, error))
        return false;
    options.keepsShape = !parser.isSet(u"size"_s);
    options.valuesFile = parser.value(u"values"_s);
    const QStringList assignments = parser.values(u"set"_s);
    for (const QString &assignment : assignments)
        options.values.append({assignment.section(u'=', 0, 0), assignment.section(u'=', 1)});
    if (parser.isSet(u"frames"_s)) {
        const QString text = parser.value(u"frames"_s);
        const int frames = text.toInt();
        if (frames < 1 || frames > kMostFrames) {
            error = u"--frames %1: the value is a whole number from 1 to %2"_s.arg(
                    text, QString::number(kMostFrames));
            return false;
        }
        options.frames = frames;
    }
    const QString direction = parser.value(u"direction"_s);
    options.isBackwards = direction == "backwards"_L1;
    if (!options.isBackwards && direction != "forwards"_L1) {
        error = u"--direction %1: a direction is forwards or backwards"_s.arg(direction);
        return false;
    }
    if (parser.isSet(u"hdr"_s)) {
        const QString text = parser.value(u"hdr"_s);
        if (!parseNumber(u"--hdr "_s + text, text, 1.0, kLargestHeadroom,
                         options.headroom.emplace(), error))
            return false;
    }
    return true;
}

bool DrawingOptions::loadPlayer(const QString &shadersDir, const QString &preset,
                                OffscreenRenderer::Outputs outputs, std::optional<Player> &player,
                                QString &error) const
{
    PresetOnDisk loaded;
    if (!loadPreset(shadersDir, preset, loaded, error))
        return false;
    player.emplace(device, outputs);
    player->setPreset(loaded);
    player->setHeadroom(headroom);
    player->state().frameDirection = isBackwards ? -1 : 1;
    QHash<QString, float> read;
    if (!valuesFile.isEmpty() && !readGlslp(valuesFile, loaded, read, error))
        return false;
    player->state().params.insert(read);
    return std::ranges::all_of(values, [&](const auto &value) {
        return setValue(*player, value.first, value.second, error);
    });
}

bool DrawingOptions::openSource(Player &player, QString &error)
{
    if (sourcePicture.isNull()) {
        if (!SourcePicture::open(source, sourcePicture, error))
            return false;
        if (keepsShape)
            size = sourcePicture.size().scaled(size, Qt::KeepAspectRatio).expandedTo({1, 1});
        const QString stretch = stretchText(sourcePicture.size(), size);
        if (!stretch.isEmpty())
            std::fprintf(stderr, "render-graph-preview: the picture is %s\n",
                         qUtf8Printable(stretch));
    }
    player.setSource(sourcePicture);
    player.state().viewport = size;
    return true;
}

bool setValue(Player &player, const QString &id, const QString &number, QString &error)
{
    const QList<PresetParamMeta> &parameters = player.preset().parameters;
    const auto param = std::ranges::find(parameters, id, &PresetParamMeta::id);
    if (param == parameters.cend()) {
        QStringList ids;
        for (const PresetParamMeta &known : parameters)
            ids.append(known.id);
        error = u"preset '%1' has no parameter '%2'; it has %3"_s.arg(
                player.preset().name, id, ids.isEmpty() ? u"none"_s : ids.join(u", "_s));
        return false;
    }
    // The limits as they are written: 0.3, not the float's 0.300000012.
    float value = 0.0F;
    if (!parseNumber(id + u'=' + number, number, numberText(param->min).toDouble(),
                     numberText(param->max).toDouble(), value, error))
        return false;
    player.state().params[id] = value;
    return true;
}
