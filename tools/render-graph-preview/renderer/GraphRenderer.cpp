#include "GraphRenderer.h"

#include "VulkanDevice.h"

#include <QFloat16>
#include <QStringList>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using Pass = VulkanRenderGraph::Pass;
using ResourceRef = VulkanRenderGraph::ResourceRef;
using Layout = vk::ImageLayout;

constexpr vk::Format kSourceFormat = vk::Format::eR32G32B32A32Sfloat;
constexpr int kSourceWrapMode = 1;
constexpr QImage::Format kPictureFormat = QImage::Format_RGBA32FPx4;

// The block of examples/shaders/vulkan/include/component.glsl.
struct PushConstants
{
    std::array<float, 4> sourceSize = {};
    std::array<float, 4> outputSize = {};
    std::array<float, 4> originalSize = {};
    std::uint32_t frameCount = 0;
    std::int32_t frameDirection = 1;
    std::uint32_t hdrOutputActive = 0;
    float frameSeconds = 0.0F;
    float hdrHeadroom = 1.0F;
    std::array<float, VulkanRenderGraph::MaxParamFloatsPerPass> params = {};
};
static_assert(sizeof(PushConstants) == 128);

std::array<float, 4> sizeConstant(QSize size)
{
    const auto width = float(size.width());
    const auto height = float(size.height());
    return {width, height, 1.0F / width, 1.0F / height};
}

// In the enumerators' order.
struct FormatTraits
{
    vk::Format format;
    int texelBytes;
};
constexpr std::array<FormatTraits, 4> kFormats = {{{vk::Format::eB10G11R11UfloatPack32, 4},
                                                   {vk::Format::eR16G16B16A16Sfloat, 8},
                                                   {vk::Format::eR8G8B8A8Unorm, 4},
                                                   {vk::Format::eR32G32B32A32Sfloat, 16}}};

const FormatTraits &traitsOf(VulkanRenderGraph::Format format)
{
    return kFormats.at(std::size_t(format));
}

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

// `pixels` has room for `count`.
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

vk::SamplerAddressMode addressMode(int wrapMode)
{
    switch (wrapMode) {
    case 0:
        return vk::SamplerAddressMode::eClampToBorder; // transparent black
    case 2:
        return vk::SamplerAddressMode::eRepeat;
    default:
        return vk::SamplerAddressMode::eClampToEdge;
    }
}

int scaled(int extent, float factor)
{
    return int(std::clamp(std::round(float(extent) * factor), 1.0F, 1e6F));
}

// By pass. Parameters do not change sizes.
QList<QSize> outputSizes(const VulkanRenderGraph &graph, QSize source, QSize viewport)
{
    QList<QSize> sizes;
    for (const Pass &pass : graph.passes) {
        if (pass.scaleSource == VulkanRenderGraph::ScaleSource::Absolute) {
            sizes.append({pass.absoluteWidth > 0 ? pass.absoluteWidth : source.width(),
                          pass.absoluteHeight > 0 ? pass.absoluteHeight : source.height()});
            continue;
        }
        QSize from = source;
        if (pass.scaleSource == VulkanRenderGraph::ScaleSource::Viewport)
            from = viewport;
        else if (pass.scaleInputPassIndex >= 0)
            from = sizes.at(pass.scaleInputPassIndex);
        else if (!pass.sampledInputs.isEmpty() && pass.sampledInputs.first().passIndex >= 0)
            from = sizes.at(pass.sampledInputs.first().passIndex);
        sizes.append({scaled(from.width(), pass.scaleX), scaled(from.height(), pass.scaleY)});
    }
    return sizes;
}

// Runs Vulkan calls. Their exceptions end here, as an error text.
template<typename Action>
bool runVulkan(QString &error, const Action &action)
{
    try {
        action();
        return true;
    } catch (const vk::DeviceLostError &) {
        error = u"the Vulkan device was lost: start again, or choose another one"_s;
    } catch (const vk::OutOfDeviceMemoryError &) {
        error = u"the Vulkan device has not enough memory: choose a smaller size or source"_s;
    } catch (const vk::OutOfHostMemoryError &) {
        error = u"not enough memory: choose a smaller size or source"_s;
    } catch (const std::bad_alloc &) {
        error = u"not enough memory: choose a smaller size or source"_s;
    } catch (const std::exception &exception) {
        error = "Vulkan: "_L1 + QString::fromLocal8Bit(exception.what());
    }
    return false;
}

QString noDeviceError(const QString &reason)
{
    return "no Vulkan device to draw on (%1); install a driver (Debian: mesa-vulkan-drivers)"_L1
            .arg(reason);
}

// The devices that can draw. Fails if there is none.
bool findDevices(std::optional<vk::raii::Context> &context, vk::raii::Instance &instance,
                 std::vector<VulkanDevice::Choice> &choices, QString &error)
{
    QString reason = u"none supports Vulkan 1.1"_s;
    const bool isDone = runVulkan(reason, [&] {
        context.emplace();
        instance = VulkanDevice::createInstance(*context);
        choices = VulkanDevice::choices(instance);
    });
    if (isDone && !choices.empty())
        return true;
    error = noDeviceError(reason);
    return false;
}

QString deviceList(const std::vector<VulkanDevice::Choice> &choices)
{
    QStringList names;
    for (const VulkanDevice::Choice &choice : choices)
        names.append("%1: %2"_L1.arg(QString::number(names.size()), choice.name));
    return names.join(", "_L1);
}

// The index of the named device, or -1.
qsizetype choiceOf(const std::vector<VulkanDevice::Choice> &choices, const QString &device)
{
    bool isNumber = false;
    const qsizetype number = device.toInt(&isNumber);
    if (isNumber)
        return number >= 0 && std::size_t(number) < choices.size() ? number : -1;
    const auto found = std::find_if(choices.cbegin(), choices.cend(),
                                    [&device](const VulkanDevice::Choice &choice) {
                                        return choice.name.contains(device, Qt::CaseInsensitive);
                                    });
    return found == choices.cend() ? -1 : found - choices.cbegin();
}

QString passName(int index, const Pass &pass)
{
    return "pass %1 ('%2')"_L1.arg(QString::number(index), pass.debugName);
}

vk::raii::ShaderModule createModule(const vk::raii::Device &device, const QByteArray &spirv)
{
    std::vector<std::uint32_t> words(std::size_t(spirv.size()) / sizeof(std::uint32_t));
    std::memcpy(words.data(), spirv.constData(), words.size() * sizeof(std::uint32_t));
    return {device, vk::ShaderModuleCreateInfo({}, words)};
}

vk::raii::RenderPass createRenderPass(const vk::raii::Device &device, vk::Format format)
{
    using Stage = vk::PipelineStageFlagBits;
    using Access = vk::AccessFlagBits;
    const vk::AttachmentDescription attachment(
            {}, format, vk::SampleCountFlagBits::e1, vk::AttachmentLoadOp::eDontCare,
            vk::AttachmentStoreOp::eStore, vk::AttachmentLoadOp::eDontCare,
            vk::AttachmentStoreOp::eDontCare, Layout::eUndefined, Layout::eShaderReadOnlyOptimal);
    const vk::AttachmentReference color(0, Layout::eColorAttachmentOptimal);
    const vk::SubpassDescription subpass({}, vk::PipelineBindPoint::eGraphics, {}, color);
    // Drawing waits for the previous readers of the image; the next readers wait for the drawing.
    const auto readers = Stage::eFragmentShader | Stage::eTransfer;
    const std::array dependencies = {
            vk::SubpassDependency(VK_SUBPASS_EXTERNAL, 0, readers, Stage::eColorAttachmentOutput,
                                  {}, Access::eColorAttachmentWrite),
            vk::SubpassDependency(0, VK_SUBPASS_EXTERNAL, Stage::eColorAttachmentOutput, readers,
                                  Access::eColorAttachmentWrite,
                                  Access::eShaderRead | Access::eTransferRead),
    };
    return {device, vk::RenderPassCreateInfo({}, attachment, subpass, dependencies)};
}

vk::raii::Pipeline createPipeline(const vk::raii::Device &device, const QByteArray &vertexSpirv,
                                  const QByteArray &fragmentSpirv,
                                  const vk::raii::PipelineLayout &layout,
                                  const vk::raii::RenderPass &renderPass)
{
    const vk::raii::ShaderModule vertex = createModule(device, vertexSpirv);
    const vk::raii::ShaderModule fragment = createModule(device, fragmentSpirv);
    const std::array stages = {
            vk::PipelineShaderStageCreateInfo({}, vk::ShaderStageFlagBits::eVertex, *vertex,
                                              "main"),
            vk::PipelineShaderStageCreateInfo({}, vk::ShaderStageFlagBits::eFragment, *fragment,
                                              "main"),
    };
    const vk::PipelineVertexInputStateCreateInfo vertexInput;
    const vk::PipelineInputAssemblyStateCreateInfo assembly({},
                                                            vk::PrimitiveTopology::eTriangleList);
    const vk::PipelineViewportStateCreateInfo viewport({}, 1, nullptr, 1, nullptr);
    vk::PipelineRasterizationStateCreateInfo rasterization;
    rasterization.lineWidth = 1.0F;
    const vk::PipelineMultisampleStateCreateInfo multisample;
    vk::PipelineColorBlendAttachmentState blendAttachment;
    blendAttachment.colorWriteMask = vk::ColorComponentFlagBits::eR | vk::ColorComponentFlagBits::eG
            | vk::ColorComponentFlagBits::eB | vk::ColorComponentFlagBits::eA;
    const vk::PipelineColorBlendStateCreateInfo blend({}, VK_FALSE, vk::LogicOp::eClear,
                                                      blendAttachment);
    const std::array dynamicStates = {vk::DynamicState::eViewport, vk::DynamicState::eScissor};
    const vk::PipelineDynamicStateCreateInfo dynamic({}, dynamicStates);
    return {device, nullptr,
            vk::GraphicsPipelineCreateInfo({}, stages, &vertexInput, &assembly, nullptr, &viewport,
                                           &rasterization, &multisample, nullptr, &blend, &dynamic,
                                           *layout, *renderPass)};
}

constexpr auto kImageUsage = vk::ImageUsageFlagBits::eColorAttachment
        | vk::ImageUsageFlagBits::eSampled | vk::ImageUsageFlagBits::eTransferSrc
        | vk::ImageUsageFlagBits::eTransferDst;

vk::ImageSubresourceLayers colorLayer(std::uint32_t level)
{
    return {vk::ImageAspectFlagBits::eColor, level, 0, 1};
}

std::array<vk::Offset3D, 2> cornersOf(QSize size)
{
    return {vk::Offset3D(0, 0, 0), vk::Offset3D(size.width(), size.height(), 1)};
}

// Clears all levels to black.
void recordClear(const vk::raii::CommandBuffer &commands, const DeviceImage &image, float alpha)
{
    VulkanDevice::transition(commands, image, Layout::eUndefined, Layout::eTransferDstOptimal);
    commands.clearColorImage(
            *image.image, Layout::eTransferDstOptimal,
            vk::ClearColorValue(std::array{0.0F, 0.0F, 0.0F, alpha}),
            vk::ImageSubresourceRange(vk::ImageAspectFlagBits::eColor, 0, image.levels, 0, 1));
    VulkanDevice::transition(commands, image, Layout::eTransferDstOptimal,
                             Layout::eShaderReadOnlyOptimal);
}

// Fills each level but the first from the one above.
void recordMipmaps(const vk::raii::CommandBuffer &commands, const DeviceImage &image)
{
    VulkanDevice::transition(commands, image, Layout::eShaderReadOnlyOptimal,
                             Layout::eTransferSrcOptimal, 0, 1);
    QSize size = image.size;
    for (std::uint32_t level = 1; level < image.levels; ++level) {
        const QSize half = (size / 2).expandedTo({1, 1});
        VulkanDevice::transition(commands, image, Layout::eUndefined, Layout::eTransferDstOptimal,
                                 level, 1);
        commands.blitImage(*image.image, Layout::eTransferSrcOptimal, *image.image,
                           Layout::eTransferDstOptimal,
                           vk::ImageBlit(colorLayer(level - 1), cornersOf(size), colorLayer(level),
                                         cornersOf(half)),
                           vk::Filter::eLinear);
        VulkanDevice::transition(commands, image, Layout::eTransferDstOptimal,
                                 Layout::eTransferSrcOptimal, level, 1);
        size = half;
    }
    VulkanDevice::transition(commands, image, Layout::eTransferSrcOptimal,
                             Layout::eShaderReadOnlyOptimal);
}

bool isBlack(const Pass &pass, const FrameState &state)
{
    return !pass.constantBlackWhenZero.isEmpty()
            && state.params.value(pass.constantBlackWhenZero) == 0.0F;
}

} // namespace

class GraphRenderer::State
{
public:
    explicit State(VulkanDevice device)
        : m_device(std::move(device)),
          m_sourceSampler(createSampler(false, false, kSourceWrapMode)),
          m_black({createBlack(0.0F), createBlack(1.0F)})
    {
    }

    const VulkanDevice &device() const
    {
        return m_device;
    }
    QList<PassResult> results() const
    {
        return m_results;
    }

    // The functions that change something throw Vulkan's exceptions. The check before each of them
    // has to succeed first.
    bool checkGraph(const VulkanRenderGraph &graph, const ShaderModules &modules,
                    QString &error) const;
    void setGraph(const VulkanRenderGraph &graph, const ShaderModules &modules);

    bool checkSource(const QImage &source, QString &error) const;
    void setSource(const QImage &source);

    bool checkFrame(const FrameState &state, QString &error) const;
    void drawFrame(const FrameState &state);
    void resetHistories()
    {
        m_hasHistory = false;
    }

    QImage output(int index) const;
    qint64 memoryHeld() const;

private:
    // The objects of a pass that live as long as the graph.
    struct Program
    {
        vk::raii::DescriptorSetLayout setLayout = nullptr;
        vk::raii::PipelineLayout layout = nullptr;
        vk::raii::RenderPass renderPass = nullptr;
        vk::raii::Pipeline pipeline = nullptr;
        vk::raii::Sampler sampler = nullptr; // of its output
    };
    // The objects of a pass that depend on sizes. A feedback pass alternates between two images: it
    // draws into one and reads the other. So there are two of whatever refers to an image.
    struct Target
    {
        std::array<DeviceImage, 2> images;
        std::array<vk::raii::Framebuffer, 2> framebuffers = {nullptr, nullptr};
        std::array<vk::raii::DescriptorSet, 2> sets = {nullptr, nullptr};
        QList<float> cachedParams; // with which the image was drawn
        bool isCached = false;
        bool isCleared = false; // to constant black
    };
    struct Targets
    {
        QSize source;
        QSize viewport;
        vk::raii::DescriptorPool descriptorPool = nullptr;
        vk::raii::QueryPool timestamps = nullptr;
        std::vector<Target> passes;
    };

    vk::raii::Sampler createSampler(bool isLinear, bool hasMipmaps, int wrapMode) const;
    DeviceImage createBlack(float alpha) const;
    Program createProgram(const Pass &pass, const ShaderModules &modules) const;
    Targets createTargets(const QList<QSize> &sizes, QSize viewport) const;
    void updateDescriptorSets();
    const DeviceImage &imageOf(int index, std::size_t pingPong) const;
    const DeviceImage &sampledImage(int reader, const ResourceRef &input,
                                    std::size_t pingPong) const;

    PushConstants constantsOf(int index, const FrameState &state) const;
    PassResult::Kind recordPass(const vk::raii::CommandBuffer &commands, int index,
                                const FrameState &state);
    void recordDrawing(const vk::raii::CommandBuffer &commands, int index,
                       const FrameState &state) const;
    void recordFirstHistory(const vk::raii::CommandBuffer &commands, int index) const;
    void readTimestamps(QList<PassResult> &results) const;
    bool checkExtent(const QString &what, QSize size, QString &error) const;

    VulkanDevice m_device;
    vk::raii::Sampler m_sourceSampler;
    std::array<DeviceImage, 2> m_black; // by alpha, for all passes that share their constant black
    DeviceImage m_source;

    VulkanRenderGraph m_graph;
    std::vector<Program> m_programs;
    Targets m_targets;
    QList<bool> m_isBlack; // by pass, as in the descriptor sets
    std::size_t m_pingPong = 0; // the image that feedback passes draw into
    bool m_hasHistory = false;
    QList<PassResult> m_results;
};

vk::raii::Sampler GraphRenderer::State::createSampler(bool isLinear, bool hasMipmaps,
                                                      int wrapMode) const
{
    const vk::Filter filter = isLinear ? vk::Filter::eLinear : vk::Filter::eNearest;
    const vk::SamplerAddressMode mode = addressMode(wrapMode);
    return {m_device.device(),
            vk::SamplerCreateInfo(
                    {}, filter, filter,
                    hasMipmaps ? vk::SamplerMipmapMode::eLinear : vk::SamplerMipmapMode::eNearest,
                    mode, mode, mode, 0.0F, VK_FALSE, 1.0F, VK_FALSE, vk::CompareOp::eNever, 0.0F,
                    hasMipmaps ? VK_LOD_CLAMP_NONE : 0.0F)};
}

DeviceImage GraphRenderer::State::createBlack(float alpha) const
{
    DeviceImage image = m_device.createImage({1, 1}, vk::Format::eR16G16B16A16Sfloat, kImageUsage);
    m_device.run(
            [&](const vk::raii::CommandBuffer &commands) { recordClear(commands, image, alpha); });
    return image;
}

bool GraphRenderer::State::checkGraph(const VulkanRenderGraph &graph, const ShaderModules &modules,
                                      QString &error) const
{
    using Feature = vk::FormatFeatureFlagBits;
    if (!graph.isValid()) {
        error = u"the graph is not valid"_s;
        return false;
    }
    for (int index = 0; index < graph.passes.size(); ++index) {
        const Pass &pass = graph.passes.at(index);
        for (const QString &resource : {pass.vertexSpirvResource, pass.fragmentSpirvResource}) {
            if (modules.value(resource).isEmpty()) {
                error = "%1 has no module '%2'"_L1.arg(passName(index, pass), resource);
                return false;
            }
        }
        vk::FormatFeatureFlags needed = Feature::eColorAttachment | Feature::eSampledImage
                | Feature::eBlitSrc | Feature::eBlitDst;
        if (pass.linearFilter || pass.mipmap)
            needed |= Feature::eSampledImageFilterLinear;
        if (!m_device.supports(traitsOf(pass.format).format, needed)) {
            error = "this device cannot draw the format of %1"_L1.arg(passName(index, pass));
            return false;
        }
    }
    return true;
}

void GraphRenderer::State::setGraph(const VulkanRenderGraph &graph, const ShaderModules &modules)
{
    std::vector<Program> programs;
    for (const Pass &pass : graph.passes)
        programs.push_back(createProgram(pass, modules));
    m_graph = graph;
    Targets none;
    std::swap(m_targets, none);
    std::swap(m_programs, programs);
    m_results.clear();
}

GraphRenderer::State::Program
GraphRenderer::State::createProgram(const Pass &pass, const ShaderModules &modules) const
{
    const vk::raii::Device &device = m_device.device();
    std::vector<vk::DescriptorSetLayoutBinding> bindings;
    for (qsizetype binding = 0; binding < pass.sampledInputs.size(); ++binding) {
        bindings.emplace_back(std::uint32_t(binding), vk::DescriptorType::eCombinedImageSampler, 1,
                              vk::ShaderStageFlagBits::eFragment);
    }
    Program program;
    program.setLayout =
            vk::raii::DescriptorSetLayout(device, vk::DescriptorSetLayoutCreateInfo({}, bindings));
    const vk::PushConstantRange constants(vk::ShaderStageFlagBits::eFragment, 0,
                                          sizeof(PushConstants));
    program.layout = vk::raii::PipelineLayout(
            device, vk::PipelineLayoutCreateInfo({}, *program.setLayout, constants));
    program.renderPass = createRenderPass(device, traitsOf(pass.format).format);
    program.pipeline = createPipeline(device, modules.value(pass.vertexSpirvResource),
                                      modules.value(pass.fragmentSpirvResource), program.layout,
                                      program.renderPass);
    program.sampler = createSampler(pass.linearFilter, pass.mipmap, pass.wrapMode);
    return program;
}

bool GraphRenderer::State::checkExtent(const QString &what, QSize size, QString &error) const
{
    const int most = int(
            std::min({m_device.limits().maxImageDimension2D, m_device.limits().maxFramebufferWidth,
                      m_device.limits().maxFramebufferHeight}));
    if (size.width() <= most && size.height() <= most)
        return true;
    error = "%1 has %2x%3 pixels, and this device takes no more than %4 either way"_L1.arg(
            what, QString::number(size.width()), QString::number(size.height()),
            QString::number(most));
    return false;
}

bool GraphRenderer::State::checkSource(const QImage &source, QString &error) const
{
    if (source.isNull()) {
        error = u"the source picture is empty"_s;
        return false;
    }
    if (source.format() != kPictureFormat) {
        error = u"the source picture is not of 32-bit floats"_s;
        return false;
    }
    return checkExtent(u"the source picture"_s, source.size(), error);
}

void GraphRenderer::State::setSource(const QImage &source)
{
    if (m_source.size != source.size()) {
        DeviceImage image = m_device.createImage(source.size(), kSourceFormat,
                                                 vk::ImageUsageFlagBits::eSampled
                                                         | vk::ImageUsageFlagBits::eTransferSrc
                                                         | vk::ImageUsageFlagBits::eTransferDst);
        std::swap(m_source, image);
    }
    const auto size = std::size_t(source.sizeInBytes()); // such rows have no padding
    const DeviceBuffer upload = m_device.createBuffer(size, vk::BufferUsageFlagBits::eTransferSrc);
    std::memcpy(upload.mapped, source.constBits(), size);
    m_device.run([&](const vk::raii::CommandBuffer &commands) {
        VulkanDevice::transition(commands, m_source, Layout::eUndefined,
                                 Layout::eTransferDstOptimal);
        commands.copyBufferToImage(
                *upload.buffer, *m_source.image, Layout::eTransferDstOptimal,
                vk::BufferImageCopy(0, 0, 0, colorLayer(0), {}, m_source.extent()));
        VulkanDevice::transition(commands, m_source, Layout::eTransferDstOptimal,
                                 Layout::eShaderReadOnlyOptimal);
    });
}

bool GraphRenderer::State::checkFrame(const FrameState &state, QString &error) const
{
    const char *const missing = m_graph.passes.isEmpty() ? "there is no graph to draw"
            : m_source.size.isEmpty()                    ? "there is no source picture"
            : state.viewport.isEmpty()                   ? "the viewport is empty"
                                                         : nullptr;
    if (missing != nullptr) {
        error = QLatin1StringView(missing);
        return false;
    }
    const QList<QSize> sizes = outputSizes(m_graph, m_source.size, state.viewport);
    for (int index = 0; index < sizes.size(); ++index) {
        const Pass &pass = m_graph.passes.at(index);
        if (!checkExtent(passName(index, pass), sizes.at(index), error))
            return false;
        for (const VulkanRenderGraph::PushConstantParam &param : pass.params) {
            if (!state.params.contains(param.id)) {
                error = "no value of parameter '%1'"_L1.arg(param.id);
                return false;
            }
        }
    }
    return true;
}

GraphRenderer::State::Targets GraphRenderer::State::createTargets(const QList<QSize> &sizes,
                                                                  QSize viewport) const
{
    const vk::raii::Device &device = m_device.device();
    Targets targets;
    targets.source = m_source.size;
    targets.viewport = viewport;
    std::uint32_t inputCount = 0;
    for (const Pass &pass : m_graph.passes)
        inputCount += std::uint32_t(pass.sampledInputs.size());
    const vk::DescriptorPoolSize poolSize(vk::DescriptorType::eCombinedImageSampler,
                                          2 * std::max(inputCount, 1U));
    targets.descriptorPool = vk::raii::DescriptorPool(
            device,
            vk::DescriptorPoolCreateInfo(vk::DescriptorPoolCreateFlagBits::eFreeDescriptorSet,
                                         2 * std::uint32_t(sizes.size()), poolSize));
    if (m_device.hasTimestamps()) {
        targets.timestamps =
                vk::raii::QueryPool(device,
                                    vk::QueryPoolCreateInfo({}, vk::QueryType::eTimestamp,
                                                            std::uint32_t(sizes.size()) + 1));
    }
    for (int index = 0; index < sizes.size(); ++index) {
        const Pass &pass = m_graph.passes.at(index);
        const Program &program = m_programs.at(std::size_t(index));
        Target &target = targets.passes.emplace_back();
        const QSize size = sizes.at(index);
        for (std::size_t pingPong = 0; pingPong < (pass.isFeedbackReader ? 2 : 1); ++pingPong) {
            DeviceImage &image = target.images.at(pingPong);
            image = m_device.createImage(size, traitsOf(pass.format).format, kImageUsage,
                                         pass.mipmap);
            target.framebuffers.at(pingPong) = vk::raii::Framebuffer(
                    device,
                    vk::FramebufferCreateInfo({}, *program.renderPass, *image.target,
                                              std::uint32_t(size.width()),
                                              std::uint32_t(size.height()), 1));
        }
        if (pass.sampledInputs.isEmpty())
            continue;
        const std::array layouts = {*program.setLayout, *program.setLayout};
        vk::raii::DescriptorSets sets(
                device, vk::DescriptorSetAllocateInfo(*targets.descriptorPool, layouts));
        std::move(sets.begin(), sets.end(), target.sets.begin());
    }
    return targets;
}

const DeviceImage &GraphRenderer::State::imageOf(int index, std::size_t pingPong) const
{
    const bool isDouble = m_graph.passes.at(index).isFeedbackReader;
    return m_targets.passes.at(std::size_t(index)).images.at(isDouble ? pingPong : 0);
}

const DeviceImage &GraphRenderer::State::sampledImage(int reader, const ResourceRef &input,
                                                      std::size_t pingPong) const
{
    if (input.passIndex == ResourceRef::SourceImage)
        return m_source;
    if (input.passIndex == ResourceRef::Feedback)
        return imageOf(reader, 1 - pingPong);
    const Pass &pass = m_graph.passes.at(input.passIndex);
    if (m_isBlack.at(input.passIndex) && pass.shareConstantBlack)
        return m_black.at(pass.constantBlackAlpha == 0.0F ? 0 : 1);
    return imageOf(input.passIndex, pingPong);
}

// Only called while the device is idle.
void GraphRenderer::State::updateDescriptorSets()
{
    for (int index = 0; index < m_graph.passes.size(); ++index) {
        const QList<ResourceRef> &inputs = m_graph.passes.at(index).sampledInputs;
        for (const std::size_t pingPong : {std::size_t(0), std::size_t(1)}) {
            std::vector<vk::DescriptorImageInfo> images;
            for (const ResourceRef &input : inputs) {
                const int sampled =
                        input.passIndex == ResourceRef::Feedback ? index : input.passIndex;
                const vk::raii::Sampler &sampler = sampled == ResourceRef::SourceImage
                        ? m_sourceSampler
                        : m_programs.at(std::size_t(sampled)).sampler;
                images.emplace_back(*sampler, *sampledImage(index, input, pingPong).sampled,
                                    Layout::eShaderReadOnlyOptimal);
            }
            if (images.empty())
                continue;
            m_device.device().updateDescriptorSets(
                    vk::WriteDescriptorSet(
                            *m_targets.passes.at(std::size_t(index)).sets.at(pingPong), 0, 0,
                            vk::DescriptorType::eCombinedImageSampler, images),
                    {});
        }
    }
}

PushConstants GraphRenderer::State::constantsOf(int index, const FrameState &state) const
{
    const Pass &pass = m_graph.passes.at(index);
    PushConstants constants;
    QSize source = m_source.size;
    if (!pass.sampledInputs.isEmpty()) {
        const int sampled = pass.sampledInputs.first().passIndex;
        if (sampled != ResourceRef::SourceImage)
            source = imageOf(sampled == ResourceRef::Feedback ? index : sampled, m_pingPong).size;
    }
    constants.sourceSize = sizeConstant(source);
    constants.outputSize = sizeConstant(imageOf(index, m_pingPong).size);
    constants.originalSize = sizeConstant(m_source.size);
    constants.frameCount = state.frameCount;
    constants.frameDirection = state.frameDirection;
    constants.hdrOutputActive = state.hdrOutputActive ? 1 : 0;
    constants.frameSeconds = state.frameSeconds;
    // A preset that responds to HDR itself leaves nothing for the final pass to boost.
    constants.hdrHeadroom =
            pass.isFinalPass && m_graph.finalRealPassRespondsToHdr ? 1.0F : state.hdrHeadroom;
    for (const VulkanRenderGraph::PushConstantParam &param : pass.params)
        constants.params.at(param.floatOffset) = state.params.value(param.id);
    return constants;
}

// Copies what the pass samples at binding 0, scaled. Black if that is its history itself.
void GraphRenderer::State::recordFirstHistory(const vk::raii::CommandBuffer &commands,
                                              int index) const
{
    const QList<ResourceRef> &inputs = m_graph.passes.at(index).sampledInputs;
    const DeviceImage &history = imageOf(index, 1 - m_pingPong);
    if (inputs.isEmpty() || inputs.first().passIndex == ResourceRef::Feedback) {
        recordClear(commands, history, 1.0F);
        return;
    }
    const DeviceImage &input = sampledImage(index, inputs.first(), m_pingPong);
    VulkanDevice::transition(commands, input, Layout::eShaderReadOnlyOptimal,
                             Layout::eTransferSrcOptimal);
    VulkanDevice::transition(commands, history, Layout::eUndefined, Layout::eTransferDstOptimal);
    commands.blitImage(*input.image, Layout::eTransferSrcOptimal, *history.image,
                       Layout::eTransferDstOptimal,
                       vk::ImageBlit(colorLayer(0), cornersOf(input.size), colorLayer(0),
                                     cornersOf(history.size)),
                       vk::Filter::eNearest);
    VulkanDevice::transition(commands, history, Layout::eTransferDstOptimal,
                             Layout::eShaderReadOnlyOptimal);
    VulkanDevice::transition(commands, input, Layout::eTransferSrcOptimal,
                             Layout::eShaderReadOnlyOptimal);
    if (history.levels > 1)
        recordMipmaps(commands, history);
}

void GraphRenderer::State::recordDrawing(const vk::raii::CommandBuffer &commands, int index,
                                         const FrameState &state) const
{
    const Pass &pass = m_graph.passes.at(index);
    const Program &program = m_programs.at(std::size_t(index));
    const Target &target = m_targets.passes.at(std::size_t(index));
    const DeviceImage &image = imageOf(index, m_pingPong);
    const vk::Rect2D area({0, 0},
                          {std::uint32_t(image.size.width()), std::uint32_t(image.size.height())});
    commands.beginRenderPass({*program.renderPass,
                              *target.framebuffers.at(pass.isFeedbackReader ? m_pingPong : 0),
                              area},
                             vk::SubpassContents::eInline);
    commands.bindPipeline(vk::PipelineBindPoint::eGraphics, *program.pipeline);
    commands.setViewport(0,
                         vk::Viewport(0.0F, 0.0F, float(image.size.width()),
                                      float(image.size.height()), 0.0F, 1.0F));
    commands.setScissor(0, area);
    if (!pass.sampledInputs.isEmpty()) {
        commands.bindDescriptorSets(vk::PipelineBindPoint::eGraphics, *program.layout, 0,
                                    *target.sets.at(m_pingPong), {});
    }
    commands.pushConstants<PushConstants>(*program.layout, vk::ShaderStageFlagBits::eFragment, 0,
                                          constantsOf(index, state));
    commands.draw(3, 1, 0, 0);
    commands.endRenderPass();
    if (image.levels > 1)
        recordMipmaps(commands, image);
}

PassResult::Kind GraphRenderer::State::recordPass(const vk::raii::CommandBuffer &commands,
                                                  int index, const FrameState &state)
{
    const Pass &pass = m_graph.passes.at(index);
    Target &target = m_targets.passes.at(std::size_t(index));
    if (m_isBlack.at(index)) {
        if (!pass.shareConstantBlack && !target.isCleared)
            recordClear(commands, imageOf(index, m_pingPong), pass.constantBlackAlpha);
        target.isCleared = true;
        return PassResult::Kind::ConstantBlack;
    }
    target.isCleared = false;
    if (pass.cacheByParameters) {
        QList<float> params;
        for (const VulkanRenderGraph::PushConstantParam &param : pass.params)
            params.append(state.params.value(param.id));
        if (target.isCached && target.cachedParams == params)
            return PassResult::Kind::Cached;
        target.cachedParams = params;
        target.isCached = true;
    }
    if (pass.isFeedbackReader && !m_hasHistory)
        recordFirstHistory(commands, index);
    recordDrawing(commands, index, state);
    return PassResult::Kind::Drawn;
}

void GraphRenderer::State::drawFrame(const FrameState &state)
{
    if (m_targets.passes.empty() || m_targets.viewport != state.viewport
        || m_targets.source != m_source.size) {
        Targets targets =
                createTargets(outputSizes(m_graph, m_source.size, state.viewport), state.viewport);
        std::swap(m_targets, targets);
        m_hasHistory = false;
        m_isBlack.clear();
    }
    QList<bool> black;
    for (const Pass &pass : std::as_const(m_graph.passes))
        black.append(isBlack(pass, state));
    if (m_isBlack != black) {
        m_isBlack = black;
        updateDescriptorSets();
    }

    m_pingPong = 1 - m_pingPong;
    QList<PassResult> results;
    m_device.run([&](const vk::raii::CommandBuffer &commands) {
        std::uint32_t stamp = 0;
        const auto writeTimestamp = [&](vk::PipelineStageFlagBits stage) {
            if (m_device.hasTimestamps())
                commands.writeTimestamp(stage, *m_targets.timestamps, stamp++);
        };
        if (m_device.hasTimestamps())
            commands.resetQueryPool(*m_targets.timestamps, 0, std::uint32_t(black.size()) + 1);
        writeTimestamp(vk::PipelineStageFlagBits::eTopOfPipe);
        for (int index = 0; index < m_graph.passes.size(); ++index) {
            results.append({.kind = recordPass(commands, index, state),
                            .size = imageOf(index, m_pingPong).size,
                            .format = m_graph.passes.at(index).format,
                            .milliseconds = std::nullopt});
            if (results.constLast().kind == PassResult::Kind::Drawn)
                writeTimestamp(vk::PipelineStageFlagBits::eBottomOfPipe);
        }
    });
    m_hasHistory = true;
    if (m_device.hasTimestamps())
        readTimestamps(results);
    m_results = results;
}

// A drawn pass lasts from the previous timestamp to its own.
void GraphRenderer::State::readTimestamps(QList<PassResult> &results) const
{
    const auto drawn = std::size_t(
            std::count_if(results.cbegin(), results.cend(), [](const PassResult &result) {
                return result.kind == PassResult::Kind::Drawn;
            }));
    const auto stamps = m_targets.timestamps.getResults<std::uint64_t>(
            0, std::uint32_t(drawn + 1), (drawn + 1) * sizeof(std::uint64_t), sizeof(std::uint64_t),
            vk::QueryResultFlagBits::e64 | vk::QueryResultFlagBits::eWait);
    const auto &[status, times] = stamps;
    if (status != vk::Result::eSuccess)
        return;
    std::size_t stamp = 0;
    for (PassResult &result : results) {
        if (result.kind != PassResult::Kind::Drawn)
            continue;
        result.milliseconds = m_device.millisecondsBetween(times.at(stamp), times.at(stamp + 1));
        ++stamp;
    }
}

QImage GraphRenderer::State::output(int index) const
{
    const Pass &pass = m_graph.passes.at(index);
    const DeviceImage &image = imageOf(index, m_pingPong);
    QImage picture(image.size, kPictureFormat);
    if (picture.isNull())
        throw std::bad_alloc();
    auto *const pixels = reinterpret_cast<QRgbaFloat32 *>(picture.bits()); // rows have no padding
    const std::size_t count = std::size_t(picture.width()) * std::size_t(picture.height());
    if (m_results.at(index).kind == PassResult::Kind::ConstantBlack) {
        std::fill_n(pixels, count, QRgbaFloat32{0.0F, 0.0F, 0.0F, pass.constantBlackAlpha});
        return picture;
    }
    const DeviceBuffer download = m_device.createBuffer(
            count * std::size_t(texelBytes(pass.format)), vk::BufferUsageFlagBits::eTransferDst);
    m_device.run([&](const vk::raii::CommandBuffer &commands) {
        VulkanDevice::transition(commands, image, Layout::eShaderReadOnlyOptimal,
                                 Layout::eTransferSrcOptimal);
        commands.copyImageToBuffer(*image.image, Layout::eTransferSrcOptimal, *download.buffer,
                                   vk::BufferImageCopy(0, 0, 0, colorLayer(0), {}, image.extent()));
        VulkanDevice::transition(commands, image, Layout::eTransferSrcOptimal,
                                 Layout::eShaderReadOnlyOptimal);
        commands.pipelineBarrier(vk::PipelineStageFlagBits::eTransfer,
                                 vk::PipelineStageFlagBits::eHost, {},
                                 vk::MemoryBarrier(vk::AccessFlagBits::eTransferWrite,
                                                   vk::AccessFlagBits::eHostRead),
                                 {}, {});
    });
    readTexels(download.mapped, pass.format, pixels, count);
    return picture;
}

qint64 GraphRenderer::State::memoryHeld() const
{
    std::uint64_t bytes = m_source.bytes + m_black.front().bytes + m_black.back().bytes;
    for (const Target &target : m_targets.passes)
        bytes += target.images.front().bytes + target.images.back().bytes;
    return qint64(bytes);
}

int texelBytes(VulkanRenderGraph::Format format)
{
    return traitsOf(format).texelBytes;
}

QLatin1StringView nameOf(PassResult::Kind kind)
{
    switch (kind) {
    case PassResult::Kind::Drawn:
        return "drawn"_L1;
    case PassResult::Kind::Cached:
        return "cached"_L1;
    case PassResult::Kind::ConstantBlack:
        return "black"_L1;
    }
    return {};
}

bool GraphRenderer::devices(QList<DeviceInfo> &devices, QString &error)
{
    std::optional<vk::raii::Context> context;
    vk::raii::Instance instance = nullptr;
    std::vector<VulkanDevice::Choice> choices;
    if (!findDevices(context, instance, choices, error))
        return false;
    devices.clear();
    for (const VulkanDevice::Choice &choice : choices)
        devices.append({choice.name, choice.isSoftware});
    return true;
}

bool GraphRenderer::create(const QString &device, std::unique_ptr<GraphRenderer> &renderer,
                           QString &error)
{
    std::optional<vk::raii::Context> context;
    vk::raii::Instance instance = nullptr;
    std::vector<VulkanDevice::Choice> choices;
    if (!findDevices(context, instance, choices, error))
        return false;
    const qsizetype index = choiceOf(choices, device);
    if (index < 0) {
        error = "no Vulkan device '%1'; there are %2"_L1.arg(device, deviceList(choices));
        return false;
    }
    return runVulkan(error, [&] {
        renderer.reset(new GraphRenderer(
                std::make_unique<State>(VulkanDevice(std::move(*context), std::move(instance),
                                                     std::move(choices.at(std::size_t(index)))))));
    });
}

GraphRenderer::GraphRenderer(std::unique_ptr<State> state) : m_state(std::move(state)) { }

GraphRenderer::~GraphRenderer() = default;

GraphRenderer::DeviceInfo GraphRenderer::device() const
{
    const VulkanDevice::Choice &choice = m_state->device().choice();
    return {choice.name, choice.isSoftware};
}

bool GraphRenderer::setGraph(const VulkanRenderGraph &graph, const ShaderModules &modules,
                             QString &error)
{
    return m_state->checkGraph(graph, modules, error)
            && runVulkan(error, [&] { m_state->setGraph(graph, modules); });
}

bool GraphRenderer::setSource(const QImage &source, QString &error)
{
    return m_state->checkSource(source, error)
            && runVulkan(error, [&] { m_state->setSource(source); });
}

bool GraphRenderer::drawFrame(const FrameState &state, QString &error)
{
    return m_state->checkFrame(state, error)
            && runVulkan(error, [&] { m_state->drawFrame(state); });
}

void GraphRenderer::resetHistories()
{
    m_state->resetHistories();
}

QList<PassResult> GraphRenderer::passes() const
{
    return m_state->results();
}

bool GraphRenderer::output(int pass, QImage &picture, QString &error) const
{
    if (pass < 0 || pass >= m_state->results().size()) {
        error = "no pass %1 in the last frame"_L1.arg(QString::number(pass));
        return false;
    }
    return runVulkan(error, [&] { picture = m_state->output(pass); });
}

qint64 GraphRenderer::memoryHeld() const
{
    return m_state->memoryHeld();
}
