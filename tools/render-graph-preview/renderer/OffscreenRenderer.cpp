#include "OffscreenRenderer.h"

#include <QFloat16>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr VkFormat kSourceFormat = VK_FORMAT_R32G32B32A32_SFLOAT;
constexpr QImage::Format kPictureFormat = QImage::Format_RGBA32FPx4;
constexpr VkImageLayout kOutputLayout = VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL;

float fromHalfBits(std::uint32_t bits)
{
    return float(std::bit_cast<qfloat16>(quint16(bits)));
}

// 11-bit and 10-bit floats are half floats without the sign and the lowest mantissa bits.
QRgbaFloat32 fromPackedFloats(std::uint32_t texel)
{
    return {fromHalfBits((texel & 0x7FFU) << 4U), fromHalfBits((texel >> 11U & 0x7FFU) << 4U),
            fromHalfBits((texel >> 22U) << 5U), 1.0F};
}

// The target's format has the precision of the final pass.
VkFormat targetFormat(VulkanRenderGraph::Format format)
{
    return format == VulkanRenderGraph::Format::RGBA32F ? VK_FORMAT_R32G32B32A32_SFLOAT
                                                        : VK_FORMAT_R16G16B16A16_SFLOAT;
}

} // namespace

void readTexels(const void *texels, VulkanRenderGraph::Format format, QRgbaFloat32 *pixels,
                std::size_t count)
{
    const auto *const bytes = static_cast<const std::uint8_t *>(texels);
    auto *const channels = reinterpret_cast<float *>(pixels);
    switch (format) {
    case VulkanRenderGraph::Format::RGBA32F:
        std::memcpy(pixels, texels, count * sizeof(QRgbaFloat32));
        break;
    case VulkanRenderGraph::Format::RGBA16F:
        qFloatFromFloat16(channels, static_cast<const qfloat16 *>(texels), qsizetype(count) * 4);
        break;
    case VulkanRenderGraph::Format::RGBA8:
        for (std::size_t i = 0; i < count * 4; ++i)
            channels[i] = float(bytes[i]) / 255.0F;
        break;
    case VulkanRenderGraph::Format::R11G11B10F:
        for (std::size_t i = 0; i < count; ++i)
            pixels[i] = fromPackedFloats(static_cast<const std::uint32_t *>(texels)[i]);
        break;
    }
}

class OffscreenRenderer::State
{
public:
    State(std::shared_ptr<VulkanDevice> device, std::unique_ptr<VulkanGraphRenderer> renderer)
        : m_device(std::move(device)),
          m_renderer(std::move(renderer))
    {
    }

    ~State()
    {
        QString ignored;
        m_device->waitForAll(ignored);
    }
    Q_DISABLE_COPY_MOVE(State)

    PhysicalDeviceInfo info() const
    {
        return m_device->info();
    }
    bool setGraph(const VulkanRenderGraph &graph, const ShaderModules &modules, QString &error);
    bool setSource(const QImage &source, QString &error);
    bool drawFrame(const FrameState &state, QString &error);
    bool recordFrame(VkCommandBuffer commands, int number, const FrameState &state, QString &error);
    QList<std::optional<double>> milliseconds(int number) const
    {
        return m_renderer->milliseconds(number);
    }
    void resetHistories()
    {
        m_renderer->resetHistories();
    }
    const QList<PassResult> &results() const
    {
        return m_results;
    }
    bool outputImage(int index, OutputImage &output, QString &error) const;
    OutputImage sourceImage() const
    {
        return {m_source.image->image(), m_source.image->view(), m_source.image->size(),
                VulkanRenderGraph::Format::RGBA32F};
    }
    bool output(int index, QImage &picture, QString &error) const;
    qint64 memoryHeld() const;

private:
    // An image that is registered with the renderer.
    template<typename Id>
    struct Registered
    {
        std::unique_ptr<DeviceImage> image;
        VkFormat format = VK_FORMAT_UNDEFINED;
        Id id = {};
    };

    bool checkExtent(const QString &what, QSize size, QString &error) const;
    bool updateParameters(const QHash<QString, float> &params, QString &error);
    bool updateTarget(QSize size, QString &error);
    bool recordSource(VkCommandBuffer commands, int number, QString &error);

    std::shared_ptr<VulkanDevice> m_device;
    std::unique_ptr<VulkanGraphRenderer> m_renderer;
    VulkanGraphRenderer::PreparedGraph m_graph;
    std::vector<float> m_parameters; // of m_graph
    Registered<VulkanGraphRenderer::SourceId> m_source;
    Registered<VulkanGraphRenderer::TargetId> m_target;
    QImage m_newSource; // null after its upload was recorded
    std::array<std::shared_ptr<HostBuffer>, VulkanDevice::kFramesInFlight> m_uploads;
    QList<PassResult> m_results;
};

bool OffscreenRenderer::State::setGraph(const VulkanRenderGraph &graph,
                                        const ShaderModules &modules, QString &error)
{
    VulkanGraphRenderer::PrepareOptions options;
    if (graph.isValid())
        options.targetFormat = targetFormat(graph.passes.constLast().format);
    if (!m_renderer->prepare(graph, modules, options, m_graph, error, &m_graph))
        return false;
    m_results.clear();
    return true;
}

bool OffscreenRenderer::State::setSource(const QImage &source, QString &error)
{
    if (source.isNull()) {
        error = u"the source picture is empty"_s;
        return false;
    }
    if (source.format() != kPictureFormat) {
        error = u"the source picture is not of 32-bit floats"_s;
        return false;
    }
    if (!m_source.image || m_source.image->size() != source.size()) {
        Registered<VulkanGraphRenderer::SourceId> added;
        if (!checkExtent(u"the source picture"_s, source.size(), error)
            || !m_device->createImage(source.size(), kSourceFormat,
                                      VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT,
                                      added.image, error)
            || !m_renderer->addSource({added.image->view(), kSourceFormat, source.size()}, added.id,
                                      error)
            || !m_device->waitForAll(error))
            return false;
        m_renderer->removeSource(m_source.id);
        std::swap(m_source, added);
    }
    m_newSource = source;
    return true;
}

// Frames in flight may still read the image and the buffers of other numbers.
bool OffscreenRenderer::State::recordSource(VkCommandBuffer commands, int number, QString &error)
{
    std::shared_ptr<HostBuffer> &upload = m_uploads.at(std::size_t(number));
    if (m_newSource.isNull()) {
        upload.reset();
        return true;
    }
    const auto size = std::size_t(m_newSource.sizeInBytes()); // rows have no padding
    if ((!upload || upload->size() != size)
        && !m_device->createBuffer(size, VulkanDevice::Transfer::Upload, upload, error))
        return false;
    std::memcpy(upload->data(), m_newSource.constBits(), size);
    return m_device->recordUpload(commands, *upload, *m_source.image, error);
}

bool OffscreenRenderer::State::checkExtent(const QString &what, QSize size, QString &error) const
{
    const int most = m_renderer->maxExtent();
    if (size.width() <= most && size.height() <= most)
        return true;
    error = "%1 has %2x%3 pixels, and this device takes no more than %4 either way"_L1.arg(
            what, QString::number(size.width()), QString::number(size.height()),
            QString::number(most));
    return false;
}

bool OffscreenRenderer::State::updateParameters(const QHash<QString, float> &params, QString &error)
{
    m_parameters.clear();
    for (const QString &id : m_graph.parameterIds()) {
        const auto value = params.constFind(id);
        if (value == params.cend()) {
            error = "no value of parameter '%1'"_L1.arg(id);
            return false;
        }
        m_parameters.push_back(*value);
    }
    return true;
}

bool OffscreenRenderer::State::updateTarget(QSize size, QString &error)
{
    const VkFormat format = targetFormat(m_graph.graph().passes.constLast().format);
    if (m_target.image && m_target.image->size() == size && m_target.format == format)
        return true;
    Registered<VulkanGraphRenderer::TargetId> added;
    added.format = format;
    if (!checkExtent(u"the picture"_s, size, error)
        || !m_device->createImage(size, format,
                                  VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_SAMPLED_BIT
                                          | VK_IMAGE_USAGE_TRANSFER_SRC_BIT,
                                  added.image, error)
        || !m_renderer->addTarget({.view = added.image->view(),
                                   .format = format,
                                   .size = size,
                                   .layoutAfter = kOutputLayout,
                                   .layoutBefore = kOutputLayout},
                                  added.id, error)
        || !m_device->waitForAll(error))
        return false;
    m_renderer->removeTarget(m_target.id);
    std::swap(m_target, added);
    return true;
}

bool OffscreenRenderer::State::drawFrame(const FrameState &state, QString &error)
{
    const auto record = [&](VkCommandBuffer commands) {
        return recordFrame(commands, 0, state, error);
    };
    if (!m_device->submit(0, record, error) || !m_device->wait(0, nullptr, error))
        return false;
    const QList<std::optional<double>> times = m_renderer->milliseconds(0);
    for (int index = 0; index < m_results.size(); ++index)
        m_results[index].milliseconds = times.value(index);
    return true;
}

bool OffscreenRenderer::State::recordFrame(VkCommandBuffer commands, int number,
                                           const FrameState &state, QString &error)
{
    const char *const missing = m_graph.graph().passes.isEmpty() ? "there is no graph to draw"
            : !m_source.image                                    ? "there is no source picture"
            : state.viewport.isEmpty()                           ? "the viewport is empty"
                                                                 : nullptr;
    if (missing != nullptr) {
        error = QLatin1StringView(missing);
        return false;
    }
    if (!updateParameters(state.params, error) || !updateTarget(state.viewport, error))
        return false;
    VulkanGraphRenderer::Frame frame;
    frame.frameInFlight = number;
    frame.source = m_source.id;
    frame.hasNewSource = !m_newSource.isNull();
    frame.target = m_target.id;
    frame.parameters = m_parameters.data();
    frame.frameCount = state.frameCount;
    frame.frameDirection = state.frameDirection;
    frame.frameSeconds = state.frameSeconds;
    frame.isHdr = state.hdrOutputActive;
    frame.hdrHeadroom = state.hdrHeadroom;
    frame.hasTimestamps = true;
    if (!recordSource(commands, number, error)
        || !m_renderer->record(commands, m_graph, frame, error))
        return false;
    m_newSource = {};
    m_results.clear();
    const QList<VulkanGraphRenderer::PassState> passes = m_renderer->passes();
    for (int index = 0; index < passes.size(); ++index) {
        const VulkanGraphRenderer::PassState &pass = passes.at(index);
        m_results.append({.kind = pass.kind,
                          .size = pass.size,
                          .format = m_graph.graph().passes.at(index).format,
                          .bytes = pass.bytes,
                          .milliseconds = {}});
    }
    return true;
}

bool OffscreenRenderer::State::outputImage(int index, OutputImage &output, QString &error) const
{
    if (index < 0 || index >= m_results.size()) {
        error = "no pass %1 in the last frame"_L1.arg(QString::number(index));
        return false;
    }
    const PassResult &pass = m_results.at(index);
    output = {.size = pass.size,
              .format = pass.format,
              .blackAlpha = m_graph.graph().passes.at(index).constantBlackAlpha};
    if (pass.kind == PassKind::ConstantBlack)
        return true;
    if (index == m_results.size() - 1) {
        output.image = m_target.image->image();
        output.view = m_target.image->view();
    } else {
        const VulkanGraphRenderer::Output kept = m_renderer->output(index);
        output.image = kept.image;
        output.view = kept.view;
    }
    if (output.image != VK_NULL_HANDLE)
        return true;
    error = "the output of pass %1 was not kept"_L1.arg(QString::number(index));
    return false;
}

bool OffscreenRenderer::State::output(int index, QImage &picture, QString &error) const
{
    OutputImage output;
    if (!outputImage(index, output, error))
        return false;
    QImage read(output.size, kPictureFormat);
    if (read.isNull()) {
        error = u"not enough memory: choose a smaller size or source"_s;
        return false;
    }
    auto *const pixels = reinterpret_cast<QRgbaFloat32 *>(read.bits()); // rows have no padding
    const std::size_t count = std::size_t(read.width()) * std::size_t(read.height());
    if (output.image == VK_NULL_HANDLE) {
        std::fill_n(pixels, count, QRgbaFloat32{0.0F, 0.0F, 0.0F, output.blackAlpha});
    } else {
        std::vector<std::uint8_t> texels(std::size_t(m_results.at(index).bytes));
        if (!m_device->download(output.image, kOutputLayout, output.size, texels.data(),
                                texels.size(), error))
            return false;
        readTexels(texels.data(), output.format, pixels, count);
    }
    picture = read;
    return true;
}

qint64 OffscreenRenderer::State::memoryHeld() const
{
    return m_renderer->memoryHeld() + (m_source.image ? m_source.image->bytes() : 0)
            + (m_target.image ? m_target.image->bytes() : 0);
}

QLatin1StringView nameOf(PassKind kind)
{
    switch (kind) {
    case PassKind::Drawn:
        return "drawn"_L1;
    case PassKind::Unchanged:
        return "unchanged"_L1;
    case PassKind::ConstantBlack:
        return "black"_L1;
    case PassKind::LeftOut:
        return "left out"_L1;
    }
    return {};
}

bool OffscreenRenderer::create(const QString &device, Outputs outputs,
                               std::unique_ptr<OffscreenRenderer> &renderer, QString &error)
{
    std::unique_ptr<VulkanDevice> opened;
    return VulkanDevice::open(device, opened, error)
            && create(std::move(opened), outputs, renderer, error);
}

bool OffscreenRenderer::create(std::shared_ptr<VulkanDevice> device, Outputs outputs,
                               std::unique_ptr<OffscreenRenderer> &renderer, QString &error)
{
    std::unique_ptr<VulkanGraphRenderer> created;
    const VulkanGraphRenderer::Options options = {.framesInFlight = VulkanDevice::kFramesInFlight,
                                                  .keepsOutputs = outputs == Outputs::All};
    if (!VulkanGraphRenderer::create(device->handles(), options, created, error))
        return false;
    renderer.reset(
            new OffscreenRenderer(std::make_unique<State>(std::move(device), std::move(created))));
    return true;
}

OffscreenRenderer::OffscreenRenderer(std::unique_ptr<State> state) : m_state(std::move(state)) { }

OffscreenRenderer::~OffscreenRenderer() = default;

PhysicalDeviceInfo OffscreenRenderer::device() const
{
    return m_state->info();
}

bool OffscreenRenderer::setGraph(const VulkanRenderGraph &graph, const ShaderModules &modules,
                                 QString &error)
{
    return m_state->setGraph(graph, modules, error);
}

bool OffscreenRenderer::setSource(const QImage &source, QString &error)
{
    return m_state->setSource(source, error);
}

bool OffscreenRenderer::drawFrame(const FrameState &state, QString &error)
{
    return m_state->drawFrame(state, error);
}

bool OffscreenRenderer::recordFrame(VkCommandBuffer commands, int number, const FrameState &state,
                                    QString &error)
{
    return m_state->recordFrame(commands, number, state, error);
}

QList<std::optional<double>> OffscreenRenderer::milliseconds(int number) const
{
    return m_state->milliseconds(number);
}

void OffscreenRenderer::resetHistories()
{
    m_state->resetHistories();
}

QList<PassResult> OffscreenRenderer::passes() const
{
    return m_state->results();
}

bool OffscreenRenderer::outputImage(int pass, OutputImage &output, QString &error) const
{
    return m_state->outputImage(pass, output, error);
}

OutputImage OffscreenRenderer::sourceImage() const
{
    return m_state->sourceImage();
}

bool OffscreenRenderer::output(int pass, QImage &picture, QString &error) const
{
    return m_state->output(pass, picture, error);
}

qint64 OffscreenRenderer::memoryHeld() const
{
    return m_state->memoryHeld();
}
