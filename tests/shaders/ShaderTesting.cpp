#include "ShaderTesting.h"

#include "TestSupport.h"

#include <GlslCompiler.h>
#include <VulkanRenderGraphCatalog.h>

#include <cmath>
#include <limits>
#include <map>
#include <numbers>

using namespace Qt::StringLiterals;
using namespace RenderGraphManifestData;

namespace {

const QString kResources = QStringLiteral(":/shaders/vulkan/spirv/");
const QString kVertexResource = kResources + u"fullscreen.vert.spv"_s;
const QString kCropResource = kResources + u"crop.frag.spv"_s;

QByteArray builtModule(const QString &resource)
{
    return readFile(QStringLiteral(SPIRV_DIR "/") + resource.mid(kResources.size()));
}

void setGraph(OffscreenRenderer &renderer, const VulkanRenderGraph &graph, ShaderModules modules)
{
    for (const VulkanRenderGraph::Pass &pass : graph.passes) {
        for (const QString &resource : {pass.vertexSpirvResource, pass.fragmentSpirvResource}) {
            if (!modules.contains(resource))
                modules.insert(resource, builtModule(resource));
        }
    }
    QString error;
    if (!renderer.setGraph(graph, modules, error))
        qFatal("%s", qPrintable(error));
}

FloatImage drawFrame(OffscreenRenderer &renderer, const FloatImage &source, const FrameState &state,
                     int pass)
{
    QString error;
    if (!renderer.setSource(source.toImage(), error) || !renderer.drawFrame(state, error))
        qFatal("%s", qPrintable(error));
    return outputOf(renderer, pass < 0 ? int(renderer.passes().size()) - 1 : pass);
}

// A renderer for each preset, since setting a graph compiles its pipelines.
OffscreenRenderer &rendererOf(const PresetEntry &preset)
{
    static std::map<QString, std::unique_ptr<OffscreenRenderer>> renderers;
    const QString name =
            QString::fromUtf8(preset.presetQrcPath).section(u'/', -1).section(u'.', 0, 0);
    std::unique_ptr<OffscreenRenderer> &renderer = renderers[name];
    if (!renderer) {
        renderer = softwareRenderer();
        setGraph(*renderer, VulkanRenderGraphCatalog::preset(name)->graph, {});
    }
    return *renderer;
}

// One above the other.
FloatImage stacked(const QList<SampledPicture> &inputs)
{
    QSize size(1, 1);
    for (const SampledPicture &input : inputs)
        size = {qMax(size.width(), input.picture->size.width()),
                size.height() + input.picture->size.height()};
    if (!inputs.isEmpty())
        size.rheight() -= 1;
    FloatImage stack(size);
    int top = 0;
    for (const SampledPicture &input : inputs) {
        for (int y = 0; y < input.picture->size.height(); ++y, ++top)
            std::copy_n(&input.picture->at(0, y), input.picture->size.width(), &stack.at(0, top));
    }
    return stack;
}

// The first pass of any preset that is drawn with this component.
const PassEntry &passEntry(QStringView component)
{
    for (const PresetEntry &preset : kPresets) {
        for (int i = 0; i < preset.passCount; ++i) {
            if (QString::fromUtf8(preset.passes[i].debugName) == component)
                return preset.passes[i];
        }
    }
    qFatal("no pass %s", qUtf8Printable(component.toString()));
}

// Draws the component at the state's viewport. Its inputs are passes of their own, each of which
// cuts one picture out of the source.
FloatImage drawComponent(const QString &component, const QList<SampledPicture> &inputs,
                         const FrameState &state)
{
    static const QByteArray kCrop = [] {
        QByteArray spirv;
        QStringList files;
        QString error;
        if (!compileGlsl(QStringLiteral(SOURCE_DIR "/tests/shaders/crop.frag"),
                         ShaderStage::Fragment, spirv, files, error))
            qFatal("%s", qPrintable(error));
        return spirv;
    }();
    static const std::unique_ptr<OffscreenRenderer> kRenderer = softwareRenderer();

    VulkanRenderGraph graph;
    VulkanRenderGraph::Pass drawn;
    drawn.fragmentSpirvResource = kResources + component + u".frag.spv"_s;
    drawn.vertexSpirvResource = kVertexResource;
    drawn.debugName = component;
    drawn.format = VulkanRenderGraph::Format::RGBA32F;
    drawn.scaleSource = VulkanRenderGraph::ScaleSource::Viewport;
    drawn.isFinalPass = true;
    const PassEntry &entry = passEntry(component);
    for (int i = 0; i < entry.paramCount; ++i)
        drawn.params.append({QString::fromUtf8(entry.params[i].id), entry.params[i].floatOffset});

    FrameState withCrops = state;
    int top = 0;
    for (const SampledPicture &input : inputs) {
        const QString id = u"top of %1"_s.arg(graph.passes.size());
        withCrops.params.insert(id, float(top));
        VulkanRenderGraph::Pass crop;
        crop.fragmentSpirvResource = kCropResource;
        crop.vertexSpirvResource = kVertexResource;
        crop.format = drawn.format;
        crop.scaleSource = VulkanRenderGraph::ScaleSource::Absolute;
        crop.absoluteWidth = input.picture->size.width();
        crop.absoluteHeight = input.picture->size.height();
        crop.linearFilter = input.linearFilter;
        crop.mipmap = input.mipmap;
        crop.wrapMode = input.wrapMode;
        crop.sampledInputs = {{VulkanRenderGraph::ResourceRef::SourceImage}};
        crop.params = {{id, 0}};
        drawn.sampledInputs.append(VulkanRenderGraph::ResourceRef{int(graph.passes.size())});
        graph.passes.append(crop);
        top += input.picture->size.height();
    }
    graph.passes.append(drawn);
    setGraph(*kRenderer, graph, {{kCropResource, kCrop}});
    return drawFrame(*kRenderer, stacked(inputs), withCrops, -1);
}

} // namespace

Params initialParams(const PresetEntry &preset)
{
    Params params;
    for (int i = 0; i < preset.presetParamCount; ++i) {
        const PresetParamEntry &param = preset.presetParams[i];
        params.insert(QString::fromUtf8(param.id), param.initialValue);
    }
    return params;
}

const PresetEntry &presetEntry(QStringView name)
{
    const QString stem = QStringLiteral(":/shaders/%1.").arg(name);
    for (const PresetEntry &preset : kPresets) {
        if (QString::fromUtf8(preset.presetQrcPath).startsWith(stem))
            return preset;
    }
    qFatal("no preset %s", qUtf8Printable(name.toString()));
}

FloatImage evaluate(const QString &component, const QList<SampledPicture> &inputs, QSize size,
                    const Params &params, const Tweak &tweak)
{
    FrameState state = {.params = {}, .viewport = size};
    const PassEntry &entry = passEntry(component);
    for (int i = 0; i < entry.paramCount; ++i)
        state.params.insert(QString::fromUtf8(entry.params[i].id), 0.0F);
    state.params.insert(params);
    if (state.params.size() != entry.paramCount)
        qFatal("%s has other parameters", qPrintable(component));
    if (tweak)
        tweak(state);
    return drawComponent(component, inputs, state);
}

Tweak display(float headroom)
{
    return [headroom](FrameState &state) {
        state.hdrOutputActive = headroom > 0.0F;
        state.hdrHeadroom = headroom > 0.0F ? headroom : 1.0F;
    };
}

Params with(Params params, const Params &changes)
{
    params.insert(changes);
    return params;
}

FloatImage flat(QSize size, float red, float green, float blue, float alpha)
{
    return FloatImage(size, {red, green, blue, alpha});
}

FloatImage grey(QSize size, float value)
{
    return flat(size, value, value, value);
}

FloatImage noise(QSize size, float most)
{
    FloatImage picture(size);
    std::uint32_t state = 12345;
    for (Pixel &pixel : picture.pixels) {
        for (std::size_t c = 0; c < 3; ++c) {
            state = state * 1664525U + 1013904223U;
            pixel[c] = most * float(state >> 8U) / float(1U << 24U);
        }
    }
    return picture;
}

double mean(const FloatImage &picture, std::size_t channel)
{
    double sum = 0.0;
    for (const Pixel &pixel : picture.pixels)
        sum += double(pixel[channel]);
    return sum / double(picture.pixels.size());
}

Spot spotOf(const FloatImage &picture, std::size_t channel)
{
    const QSize size = picture.size;
    double sum = 0.0;
    double x = 0.0;
    double y = 0.0;
    double xx = 0.0;
    double yy = 0.0;
    for (int row = 0; row < size.height(); ++row) {
        for (int column = 0; column < size.width(); ++column) {
            const auto light = double(picture.at(column, row)[channel]);
            const double atX = (column + 0.5) / size.width();
            const double atY = (row + 0.5) / size.height();
            sum += light;
            x += light * atX;
            y += light * atY;
            xx += light * atX * atX;
            yy += light * atY * atY;
        }
    }
    x /= sum;
    y /= sum;
    return {sum / double(picture.pixels.size()), x, y, std::sqrt(xx / sum - x * x),
            std::sqrt(yy / sum - y * y)};
}

Wave waveIn(const QList<double> &row, double cycles)
{
    constexpr double kTwoPi = 2.0 * std::numbers::pi;
    const double wavelength = double(row.size()) / cycles;
    const auto first = int(row.size() / 8);
    const int count = int(std::floor(0.75 * cycles) * wavelength);
    double cosine = 0.0;
    double sine = 0.0;
    for (int x = first; x < first + count; ++x) {
        const double at = kTwoPi * (x + 0.5) / wavelength;
        cosine += 2.0 * row.at(x) * std::cos(at) / count;
        sine += 2.0 * row.at(x) * std::sin(at) / count;
    }
    return {std::hypot(cosine, sine), std::atan2(sine, cosine) / kTwoPi};
}

double encoded(double light)
{
    return std::pow(light, 1.0 / 2.2);
}

double decoded(double signal)
{
    return std::pow(signal, 2.2);
}

FloatImage decoded(FloatImage picture)
{
    for (Pixel &pixel : picture.pixels) {
        for (std::size_t c = 0; c < 3; ++c)
            pixel[c] = float(decoded(double(pixel[c])));
    }
    return picture;
}

bool isNear(double value, double expected, double within)
{
    if (std::fabs(value - expected) < within)
        return true;
    qWarning("%.8g is not within %g of %.8g", value, within, expected);
    return false;
}

bool isBetween(double value, double least, double most)
{
    if (value >= least && value <= most)
        return true;
    qWarning("%.8g is not between %g and %g", value, least, most);
    return false;
}

PresetDrawing::PresetDrawing(const PresetEntry &preset) : m_renderer(rendererOf(preset))
{
    m_renderer.resetHistories();
}

FloatImage PresetDrawing::draw(const FloatImage &source, const FrameState &state, int pass)
{
    return drawFrame(m_renderer, source, state, pass);
}

float difference(const FloatImage &a, const FloatImage &b)
{
    if (a.size != b.size)
        return std::numeric_limits<float>::infinity();
    float largest = 0.0F;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
            const float here = std::fabs(a.pixels[i][c] - b.pixels[i][c]);
            largest = std::isnan(largest) || here <= largest ? largest : here; // NaN wins
        }
    }
    return largest;
}

bool areAlike(const FloatImage &a, const FloatImage &b, float within)
{
    return isBetween(double(difference(a, b)), 0.0, double(within));
}
