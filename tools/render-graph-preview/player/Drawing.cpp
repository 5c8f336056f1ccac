#include "Drawing.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr int kLargestSide = 16384;
constexpr int kMostFrames = 1000000;
constexpr double kLargestHeadroom = 100.0;

// The slowest tuned history keeps 1 - 0.1948 of what it was: of full white 30 times less than half
// of 1/255.
constexpr int kFramesToSettle = 30;

std::optional<QSize> parseSize(const QString &text, QString &error)
{
    const QStringList sides = text.split(u'x');
    if (sides.size() == 2) {
        const QSize size(sides.at(0).toInt(), sides.at(1).toInt());
        if (std::min(size.width(), size.height()) >= 1
            && std::max(size.width(), size.height()) <= kLargestSide)
            return size;
    }
    error = u"--size %1: a size is <width>x<height>, each from 1 to %2"_s.arg(text).arg(
            kLargestSide);
    return {};
}

// A number within its range, which the error names; `given` is where it stands.
std::optional<double> parseNumber(const QString &given, const QString &text, double least,
                                  double most, QString &error)
{
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    if (isNumber && value >= least && value <= most)
        return value; // NaN is in no range
    error = u"%1: the value is a number from %2 to %3"_s.arg(given, QString::number(least, 'g', 9),
                                                             QString::number(most, 'g', 9));
    return {};
}

} // namespace

QList<GraphRenderer::DeviceInfo> drawingDevices(QString &error)
{
    QString reason;
    QList<GraphRenderer::DeviceInfo> devices = GraphRenderer::devices(reason);
    if (devices.isEmpty())
        error = u"no Vulkan device to draw on (%1); install a driver (Debian: mesa-vulkan-drivers)"_s
                        .arg(reason);
    return devices;
}

QList<QCommandLineOption> drawingOptions()
{
    return {
            {u"source"_s,
             u"The picture that enters the preset: a file of up to %1x%1, or the name of a test picture (see 'list'). Default: scene-320x240."_s
                     .arg(kLargestSourceSide),
             u"picture"_s, u"scene-320x240"_s},
            {u"size"_s, u"The size to draw at. Default: 1440x1080."_s, u"size"_s, u"1440x1080"_s},
            {u"set"_s, u"Gives a parameter a value within its range; can be repeated."_s,
             u"id=value"_s},
            {u"frames"_s,
             u"How many frames to draw, at 60 per second. Default: %1 where a pass samples its own previous output, by then it has settled; else 1."_s
                     .arg(kFramesToSettle),
             u"number"_s},
            {u"hdr"_s,
             u"Draws for a display whose peak is so many times its reference white, from 1 to %1."_s
                     .arg(kLargestHeadroom),
             u"headroom"_s},
            {u"device"_s, u"A device's number or a part of its name (see 'list'). Default: 0."_s,
             u"device"_s},
    };
}

std::optional<DrawingRequest> DrawingRequest::parse(const QCommandLineParser &parser,
                                                    QString &error)
{
    DrawingRequest request;
    request.source = parser.value(u"source"_s);
    request.device = parser.value(u"device"_s);
    const std::optional<QSize> size = parseSize(parser.value(u"size"_s), error);
    if (!size)
        return {};
    request.size = *size;
    const QStringList assignments = parser.values(u"set"_s);
    for (const QString &assignment : assignments)
        request.values.append({assignment.section(u'=', 0, 0), assignment.section(u'=', 1)});
    if (parser.isSet(u"frames"_s)) {
        const QString text = parser.value(u"frames"_s);
        const int frames = text.toInt();
        if (frames < 1 || frames > kMostFrames) {
            error = u"--frames %1: the value is a whole number from 1 to %2"_s.arg(text).arg(
                    kMostFrames);
            return {};
        }
        request.frames = frames;
    }
    if (parser.isSet(u"hdr"_s)) {
        const QString text = parser.value(u"hdr"_s);
        const auto headroom = parseNumber(u"--hdr "_s + text, text, 1.0, kLargestHeadroom, error);
        if (!headroom)
            return {};
        request.headroom = float(*headroom);
    }
    return request;
}

std::optional<Drawing> Drawing::load(const QString &shadersDir, const QString &preset,
                                     const DrawingRequest &request, QString &error)
{
    Drawing drawing;
    drawing.m_request = request;
    drawing.m_preset = loadPreset(shadersDir, preset);
    if (!drawing.m_preset.error.isEmpty()) {
        error = drawing.m_preset.error;
        return {};
    }
    drawing.m_state.params = initialValues(drawing.m_preset.parameters);
    drawing.m_state.viewport = request.size;
    drawing.m_state.hdrOutputActive = request.headroom.has_value();
    drawing.m_state.hdrHeadroom = request.headroom.value_or(1.0F);
    for (const auto &[id, number] : request.values) {
        if (!drawing.setValue(id, number, error))
            return {};
    }
    return drawing;
}

bool Drawing::setValue(const QString &id, const QString &number, QString &error)
{
    const auto param =
            std::ranges::find(std::as_const(m_preset.parameters), id, &PresetParamMeta::id);
    if (param == m_preset.parameters.cend()) {
        QStringList ids;
        for (const PresetParamMeta &known : std::as_const(m_preset.parameters))
            ids.append(known.id);
        error = u"preset '%1' has no parameter '%2'; it has %3"_s.arg(
                m_preset.name, id, ids.isEmpty() ? u"none"_s : ids.join(u", "_s));
        return false;
    }
    // The ends are floats, and are meant as they are written.
    const auto asWritten = [](float end) {
        return QString::number(double(end), 'g', 7).toDouble();
    };
    const auto value = parseNumber(id + u'=' + number, number, asWritten(param->min),
                                   asWritten(param->max), error);
    if (value)
        m_state.params.insert(id, float(*value));
    return value.has_value();
}

bool Drawing::open(QString &error)
{
    m_source = SourcePicture::open(m_request.source, error);
    if (!m_source || drawingDevices(error).isEmpty())
        return false;
    m_renderer = GraphRenderer::create(m_request.device, error);
    return m_renderer && m_renderer->setGraph(m_preset.graph, m_preset.modules, error);
}

bool Drawing::drawFrame(int number, QString &error)
{
    if ((number == 0 || (m_source->moves() && !m_request.isStill))
        && !m_renderer->setSource(pictureOf(m_source->frame(number)), error))
        return false;
    m_state.frameCount = std::uint32_t(number);
    return m_renderer->drawFrame(m_state, error);
}

std::optional<QImage> Drawing::image(int pass, QString &error) const
{
    const std::optional<Picture> picture = m_renderer->output(pass, error);
    if (!picture)
        return {};
    return imageOf(*picture, m_request.headroom);
}

int Drawing::frames() const
{
    const bool remembers =
            std::ranges::any_of(m_preset.graph.passes, &VulkanRenderGraph::Pass::isFeedbackReader);
    return m_request.frames.value_or(remembers ? kFramesToSettle : 1);
}
