#include "ViewPass.h"

#include "VulkanCalls.h"

#include <QElapsedTimer>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

namespace {

constexpr vk::Format kFormat = vk::Format::eB8G8R8A8Unorm; // QImage::Format_RGB32
constexpr std::uint32_t kTimestamps = 3; // at the beginning, after the view, after its copy
constexpr std::size_t kTexelBytes = 16; // at most; the view comes after it

// As in view.frag.
struct Constants
{
    std::array<float, 4> placement;
    float shift;
    float split;
    float differenceGain;
    float headroom;
    float comparedHeadroom;
    float exposure;
    std::int32_t channel;
};

struct Target
{
    std::unique_ptr<DeviceImage> image;
    vk::raii::Framebuffer framebuffer = nullptr;
};

// What a submission uses, and what is known of its output.
struct Flight
{
    vk::raii::DescriptorPool sets = nullptr;
    std::uint32_t setCapacity = 0;
    vk::raii::QueryPool timestamps = nullptr;
    std::shared_ptr<HostBuffer> buffer;
    bool isDrawn = false;
    const OffscreenRenderer *renderer = nullptr;
    ViewOutput output;
    std::optional<VulkanRenderGraph::Format> texelFormat; // if it is read
    QSize atlasSize;
    QList<QRect> thumbnails; // in the atlas
};

// The images of a view.
struct ViewImages
{
    OutputImage picture;
    OutputImage compared;
    QList<OutputImage> thumbnails;
};

std::size_t bytesOf(QSize size)
{
    return std::size_t(size.width()) * std::size_t(size.height()) * 4;
}

// Drawing waits for earlier copies of the image, and later copies wait for the drawing.
vk::raii::RenderPass createRenderPass(const vk::raii::Device &device)
{
    const vk::AttachmentDescription attachment(
            {}, kFormat, vk::SampleCountFlagBits::e1, vk::AttachmentLoadOp::eDontCare,
            vk::AttachmentStoreOp::eStore, vk::AttachmentLoadOp::eDontCare,
            vk::AttachmentStoreOp::eDontCare, vk::ImageLayout::eUndefined,
            vk::ImageLayout::eTransferSrcOptimal);
    const vk::AttachmentReference color(0, vk::ImageLayout::eColorAttachmentOptimal);
    const vk::SubpassDescription subpass({}, vk::PipelineBindPoint::eGraphics, {}, color);
    const std::array<vk::SubpassDependency, 2> dependencies = {
            vk::SubpassDependency(VK_SUBPASS_EXTERNAL, 0,
                                  vk::PipelineStageFlagBits::eTransfer
                                          | vk::PipelineStageFlagBits::eColorAttachmentOutput,
                                  vk::PipelineStageFlagBits::eColorAttachmentOutput,
                                  vk::AccessFlagBits::eColorAttachmentWrite,
                                  vk::AccessFlagBits::eColorAttachmentWrite),
            vk::SubpassDependency(
                    0, VK_SUBPASS_EXTERNAL, vk::PipelineStageFlagBits::eColorAttachmentOutput,
                    vk::PipelineStageFlagBits::eTransfer, vk::AccessFlagBits::eColorAttachmentWrite,
                    vk::AccessFlagBits::eTransferRead)};
    return {device, vk::RenderPassCreateInfo({}, attachment, subpass, dependencies)};
}

vk::raii::DescriptorSetLayout createSetLayout(const vk::raii::Device &device, vk::Sampler sampler)
{
    const std::array<vk::Sampler, 1> samplers = {sampler};
    const auto binding = [&samplers](std::uint32_t number) {
        return vk::DescriptorSetLayoutBinding(number, vk::DescriptorType::eCombinedImageSampler,
                                              vk::ShaderStageFlagBits::eFragment, samplers);
    };
    const std::array<vk::DescriptorSetLayoutBinding, 2> bindings = {binding(0), binding(1)};
    return {device, vk::DescriptorSetLayoutCreateInfo({}, bindings)};
}

vk::raii::PipelineLayout createLayout(const vk::raii::Device &device,
                                      const vk::raii::DescriptorSetLayout &sets)
{
    const vk::PushConstantRange constants(vk::ShaderStageFlagBits::eFragment, 0, sizeof(Constants));
    return {device, vk::PipelineLayoutCreateInfo({}, *sets, constants)};
}

vk::raii::ShaderModule createModule(const vk::raii::Device &device, const QByteArray &spirv)
{
    std::vector<std::uint32_t> words(std::size_t(spirv.size()) / sizeof(std::uint32_t));
    std::memcpy(words.data(), spirv.constData(), words.size() * sizeof(std::uint32_t));
    return {device, vk::ShaderModuleCreateInfo({}, words)};
}

vk::raii::Pipeline createPipeline(const vk::raii::Device &device, vk::PipelineLayout layout,
                                  vk::RenderPass renderPass, const QByteArray &vertex,
                                  const QByteArray &fragment)
{
    const vk::raii::ShaderModule vertexModule = createModule(device, vertex);
    const vk::raii::ShaderModule fragmentModule = createModule(device, fragment);
    const std::array<vk::PipelineShaderStageCreateInfo, 2> stages = {
            vk::PipelineShaderStageCreateInfo({}, vk::ShaderStageFlagBits::eVertex, *vertexModule,
                                              "main"),
            vk::PipelineShaderStageCreateInfo({}, vk::ShaderStageFlagBits::eFragment,
                                              *fragmentModule, "main")};
    const vk::PipelineVertexInputStateCreateInfo vertices;
    const vk::PipelineInputAssemblyStateCreateInfo assembly({},
                                                            vk::PrimitiveTopology::eTriangleList);
    const vk::PipelineViewportStateCreateInfo viewport({}, 1, nullptr, 1, nullptr);
    vk::PipelineRasterizationStateCreateInfo rasterization;
    rasterization.lineWidth = 1.0F;
    const vk::PipelineMultisampleStateCreateInfo samples({}, vk::SampleCountFlagBits::e1);
    vk::PipelineColorBlendAttachmentState attachment;
    attachment.colorWriteMask = vk::ColorComponentFlagBits::eR | vk::ColorComponentFlagBits::eG
            | vk::ColorComponentFlagBits::eB | vk::ColorComponentFlagBits::eA;
    const vk::PipelineColorBlendStateCreateInfo blending({}, VK_FALSE, vk::LogicOp::eCopy,
                                                         attachment);
    const std::array<vk::DynamicState, 2> states = {vk::DynamicState::eViewport,
                                                    vk::DynamicState::eScissor};
    const vk::PipelineDynamicStateCreateInfo dynamic({}, states);
    return {device, nullptr,
            vk::GraphicsPipelineCreateInfo({}, stages, &vertices, &assembly, nullptr, &viewport,
                                           &rasterization, &samples, nullptr, &blending, &dynamic,
                                           layout, renderPass)};
}

} // namespace

// Its functions throw Vulkan's exceptions, except those that take an error.
class ViewPass::State
{
public:
    State(std::shared_ptr<VulkanDevice> shared, const QByteArray &vertex,
          const QByteArray &fragment)
        : m_device(std::move(shared)),
          m_raii(m_device->raiiDevice()),
          m_sampler(m_raii, vk::SamplerCreateInfo()),
          m_setLayout(createSetLayout(m_raii, *m_sampler)),
          m_layout(createLayout(m_raii, m_setLayout)),
          m_renderPass(createRenderPass(m_raii)),
          m_pipeline(createPipeline(m_raii, *m_layout, *m_renderPass, vertex, fragment))
    {
        if (m_device->timestampPeriod() == 0.0)
            return;
        for (Flight &flight : m_flights)
            flight.timestamps = {
                    m_raii, vk::QueryPoolCreateInfo({}, vk::QueryType::eTimestamp, kTimestamps)};
    }

    ~State()
    {
        QString ignored;
        m_device->waitForAll(ignored);
    }
    Q_DISABLE_COPY_MOVE(State)

    bool createBlack(QString &error)
    {
        constexpr std::uint32_t kBlack = 0xFF000000;
        return m_device->createImage({1, 1}, VkFormat(kFormat),
                                     VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT,
                                     m_black, error)
                && m_device->upload(*m_black, &kBlack, sizeof(kBlack), error);
    }

    const std::shared_ptr<VulkanDevice> &device() const
    {
        return m_device;
    }
    bool hasOldThumbnails() const
    {
        return m_hasOldThumbnails;
    }

    const auto &dispatcher() const
    {
        return *m_raii.getDispatcher();
    }

    bool submit(const ViewInput &view, const Record &record, QString &error);
    bool read(ViewOutput &output, QString &error);

private:
    void writeTimestamp(VkCommandBuffer commands, const Flight &flight, std::uint32_t index) const
    {
        if (*flight.timestamps)
            vk::CommandBuffer(commands).writeTimestamp(vk::PipelineStageFlagBits::eBottomOfPipe,
                                                       *flight.timestamps, index, dispatcher());
    }

    bool findImages(const ViewInput &input, Flight &flight, ViewImages &images, QString &error);
    bool recordView(VkCommandBuffer commands, const ViewInput &input, Flight &flight,
                    QString &error);
    void recordDrawing(VkCommandBuffer commands, const ViewInput &input, const ViewImages &images,
                       const Flight &flight) const;
    void readTimes(const Flight &flight);
    bool updateTarget(Target &target, QSize size, QString &error);
    bool updateBuffer(Flight &flight, std::size_t size, QString &error);
    void updateSets(Flight &flight, std::uint32_t count) const;
    void beginDrawing(VkCommandBuffer commands, const Target &target) const;
    void draw(VkCommandBuffer commands, const Flight &flight, const OutputImage &picture,
              const OutputImage &compared, const QRect &area, const Constants &constants) const;

    std::shared_ptr<VulkanDevice> m_device;
    const vk::raii::Device &m_raii;
    vk::raii::Sampler m_sampler;
    vk::raii::DescriptorSetLayout m_setLayout;
    vk::raii::PipelineLayout m_layout;
    vk::raii::RenderPass m_renderPass;
    vk::raii::Pipeline m_pipeline;
    std::unique_ptr<DeviceImage> m_black;
    Target m_view;
    Target m_atlas;
    std::vector<std::shared_ptr<HostBuffer>> m_buffers; // those that images use, and spare ones
    std::array<Flight, VulkanDevice::kFramesInFlight> m_flights;
    int m_submitted = 0; // counts
    int m_read = 0;
    bool m_hasOldThumbnails = false;
    QElapsedTimer m_thumbnailAge;
    ViewOutput m_drawn; // the times of the last frame that was drawn
};

bool ViewPass::State::updateTarget(Target &target, QSize size, QString &error)
{
    if (target.image && target.image->size() == size)
        return true;
    Target created;
    const bool isDone = m_device->createImage(size, VkFormat(kFormat),
                                              VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT
                                                      | VK_IMAGE_USAGE_TRANSFER_SRC_BIT,
                                              created.image, error)
            && runVulkan(error,
                         [&] {
                             const std::array<vk::ImageView, 1> views = {created.image->view()};
                             created.framebuffer = {
                                     m_raii,
                                     vk::FramebufferCreateInfo({}, *m_renderPass, views,
                                                               std::uint32_t(size.width()),
                                                               std::uint32_t(size.height()), 1)};
                         })
            && m_device->waitForAll(error);
    if (isDone)
        std::swap(target, created);
    return isDone;
}

// Takes a buffer that no image uses any more. The interface may release an image at any time: what
// was in use before may be free now, of whatever size.
bool ViewPass::State::updateBuffer(Flight &flight, std::size_t size, QString &error)
{
    flight.buffer.reset();
    const auto fits = [size](const std::shared_ptr<HostBuffer> &buffer) {
        return buffer->size() >= size && buffer->size() / 2 <= size;
    };
    const auto spare = std::ranges::find_if(
            m_buffers, [&](const auto &buffer) { return fits(buffer) && buffer.use_count() == 1; });
    if (spare != m_buffers.end()) {
        std::atomic_thread_fence(std::memory_order_acquire); // after the image's last reader
        flight.buffer = *spare;
    } else if (m_device->createBuffer(size, VulkanDevice::Transfer::Download, flight.buffer,
                                      error)) {
        m_buffers.push_back(flight.buffer);
    } else {
        return false;
    }
    std::erase_if(m_buffers,
                  [&](const auto &buffer) { return !fits(buffer) && buffer.use_count() == 1; });
    return true;
}

void ViewPass::State::updateSets(Flight &flight, std::uint32_t count) const
{
    if (flight.setCapacity >= count) {
        flight.sets.reset();
        return;
    }
    const vk::DescriptorPoolSize size(vk::DescriptorType::eCombinedImageSampler, 2 * count);
    flight.sets = {m_raii, vk::DescriptorPoolCreateInfo({}, count, size)};
    flight.setCapacity = count;
}

void ViewPass::State::beginDrawing(VkCommandBuffer commands, const Target &target) const
{
    const vk::CommandBuffer recorded(commands);
    const vk::Extent2D extent(std::uint32_t(target.image->size().width()),
                              std::uint32_t(target.image->size().height()));
    recorded.beginRenderPass({*m_renderPass, *target.framebuffer, {{}, extent}},
                             vk::SubpassContents::eInline, dispatcher());
    recorded.bindPipeline(vk::PipelineBindPoint::eGraphics, *m_pipeline, dispatcher());
}

void ViewPass::State::draw(VkCommandBuffer commands, const Flight &flight,
                           const OutputImage &picture, const OutputImage &compared,
                           const QRect &area, const Constants &constants) const
{
    // The pool frees its sets.
    const vk::DescriptorSetAllocateInfo info(*flight.sets, *m_setLayout);
    const vk::DescriptorSet set = (*m_raii).allocateDescriptorSets(info, dispatcher()).front();
    const auto input = [this](const OutputImage &image) {
        return vk::DescriptorImageInfo({},
                                       image.view == VK_NULL_HANDLE ? m_black->view() : image.view,
                                       vk::ImageLayout::eShaderReadOnlyOptimal);
    };
    const std::array<vk::DescriptorImageInfo, 2> inputs = {input(picture), input(compared)};
    m_raii.updateDescriptorSets(
            vk::WriteDescriptorSet(set, 0, 0, vk::DescriptorType::eCombinedImageSampler, inputs),
            {});
    const vk::CommandBuffer recorded(commands);
    recorded.bindDescriptorSets(vk::PipelineBindPoint::eGraphics, *m_layout, 0, set, {},
                                dispatcher());
    recorded.setViewport(0,
                         vk::Viewport(float(area.x()), float(area.y()), float(area.width()),
                                      float(area.height()), 0.0F, 1.0F),
                         dispatcher());
    recorded.setScissor(0,
                        vk::Rect2D({area.x(), area.y()},
                                   {std::uint32_t(area.width()), std::uint32_t(area.height())}),
                        dispatcher());
    recorded.pushConstants<Constants>(*m_layout, vk::ShaderStageFlagBits::eFragment, 0, constants,
                                      dispatcher());
    recorded.draw(3, 1, 0, 0, dispatcher());
}

bool ViewPass::State::submit(const ViewInput &view, const Record &record, QString &error)
{
    ViewInput input = view;
    const int number = m_submitted % VulkanDevice::kFramesInFlight;
    Flight &flight = m_flights.at(std::size_t(number));
    const bool isDone = m_device->submit(
            number,
            [&](VkCommandBuffer commands) {
                if (*flight.timestamps)
                    vk::CommandBuffer(commands).resetQueryPool(*flight.timestamps, 0, kTimestamps,
                                                               dispatcher());
                writeTimestamp(commands, flight, 0);
                return record(commands, number, input)
                        && recordView(commands, input, flight, error);
            },
            error);
    m_submitted += isDone ? 1 : 0;
    return isDone;
}

bool ViewPass::State::findImages(const ViewInput &input, Flight &flight, ViewImages &images,
                                 QString &error)
{
    const OffscreenRenderer &renderer = *input.renderer;
    ViewOutput &output = flight.output;
    output = {};
    output.passes = renderer.passes();
    const int last = int(output.passes.size()) - 1;
    const auto passOf = [&input](const OffscreenRenderer &drawn) {
        const int final = int(drawn.passes().size()) - 1;
        return input.pass < 0 ? final : std::min(input.pass, final);
    };
    output.pass = passOf(renderer);
    output.size = output.passes.at(output.pass).size;
    output.state = input.state;
    output.isToneMapped = input.headroom && output.pass == last;
    flight.isDrawn = input.isDrawn;
    flight.renderer = input.renderer;
    if (!renderer.outputImage(output.pass, images.picture, error))
        return false;
    if (input.compared == nullptr)
        images.compared = renderer.sourceImage();
    else if (!input.compared->outputImage(passOf(*input.compared), images.compared, error))
        return false;

    flight.texelFormat.reset();
    if (!QRect(QPoint(), output.size).contains(input.state.texel))
        output.texel.reset();
    else if (images.picture.image == VK_NULL_HANDLE)
        output.texel = {0.0F, 0.0F, 0.0F, images.picture.blackAlpha};
    else
        flight.texelFormat = images.picture.format;

    flight.thumbnails.clear();
    flight.atlasSize = {};
    m_hasOldThumbnails |= input.isDrawn;
    if (!m_hasOldThumbnails
        || (m_thumbnailAge.isValid() && !m_thumbnailAge.hasExpired(kThumbnailMilliseconds)))
        return true;
    m_hasOldThumbnails = false;
    m_thumbnailAge.start();
    constexpr int kRows = 8; // a long row may exceed what the device supports
    const QSize cell = output.passes.last()
                               .size.scaled(input.thumbnailSize, Qt::KeepAspectRatio)
                               .expandedTo({1, 1});
    images.thumbnails.resize(last + 1);
    for (int i = 0; i <= last; ++i) {
        if (!renderer.outputImage(i, images.thumbnails[i], error))
            return false;
        flight.thumbnails.append(
                {QPoint(i / kRows * cell.width(), i % kRows * cell.height()), cell});
        flight.atlasSize = flight.atlasSize.expandedTo(
                {flight.thumbnails.last().right() + 1, flight.thumbnails.last().bottom() + 1});
    }
    return true;
}

bool ViewPass::State::recordView(VkCommandBuffer commands, const ViewInput &input, Flight &flight,
                                 QString &error)
{
    ViewImages images;
    if (!findImages(input, flight, images, error))
        return false;
    const QSize size = input.state.size;
    const std::size_t viewBytes = bytesOf(size);
    if (!updateTarget(m_view, size, error)
        || (!images.thumbnails.isEmpty() && !updateTarget(m_atlas, flight.atlasSize, error))
        || !updateBuffer(flight, kTexelBytes + viewBytes + bytesOf(flight.atlasSize), error))
        return false;
    return runVulkan(error, [&] {
        updateSets(flight, std::uint32_t(images.thumbnails.size()) + 1);
        recordDrawing(commands, input, images, flight);
    });
}

void ViewPass::State::recordDrawing(VkCommandBuffer commands, const ViewInput &input,
                                    const ViewImages &images, const Flight &flight) const
{
    using Comparison = ViewState::Comparison;
    const ViewState &state = input.state;
    const auto place = [](const QRect &rectangle) {
        return std::array<float, 4>{float(rectangle.x()), float(rectangle.y()),
                                    float(rectangle.width()), float(rectangle.height())};
    };
    const float lastHeadroom = input.headroom.value_or(0.0F);
    Constants constants = {.placement = place(state.placement(flight.output.size)),
                           .shift = 0.0F,
                           .split = -2.0F,
                           .differenceGain = 0.0F,
                           .headroom = flight.output.isToneMapped ? lastHeadroom : 0.0F,
                           .comparedHeadroom = 0.0F,
                           .exposure = state.exposure,
                           .channel = state.channel};
    if (input.compared != nullptr) // else it is the source
        constants.comparedHeadroom = constants.headroom;
    if (state.comparison == Comparison::Split)
        constants.split = std::round(constants.placement[0] + state.split * constants.placement[2]);
    else if (state.comparison == Comparison::SideBySide)
        constants.shift = std::floor(float(state.size.width()) / 2.0F);
    else if (state.comparison == Comparison::Difference)
        constants.differenceGain = float(ViewState::kDifferenceGain);
    else if (state.comparison == Comparison::Other)
        constants.headroom = constants.comparedHeadroom;
    const bool isOther = state.comparison == Comparison::Other;
    const QRect view(QPoint(), state.size);
    beginDrawing(commands, m_view);
    draw(commands, flight, isOther ? images.compared : images.picture, images.compared, view,
         constants);
    vk::CommandBuffer(commands).endRenderPass(dispatcher());
    writeTimestamp(commands, flight, 1);
    m_device->recordDownload(commands, m_view.image->image(), VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL,
                             view, *flight.buffer, kTexelBytes);
    if (flight.texelFormat)
        m_device->recordDownload(commands, images.picture.image,
                                 VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL,
                                 {state.texel, QSize(1, 1)}, *flight.buffer, 0);
    writeTimestamp(commands, flight, 2);

    const qsizetype count = images.thumbnails.size();
    if (count == 0)
        return;
    constants.split = -2.0F;
    constants.shift = 0.0F;
    constants.differenceGain = 0.0F;
    constants.exposure = 1.0F;
    constants.channel = -1;
    beginDrawing(commands, m_atlas);
    for (qsizetype i = 0; i < count; ++i) {
        constants.placement = place(flight.thumbnails.at(i));
        constants.headroom = i == count - 1 ? lastHeadroom : 0.0F;
        draw(commands, flight, images.thumbnails.at(i), images.thumbnails.at(i),
             flight.thumbnails.at(i), constants);
    }
    vk::CommandBuffer(commands).endRenderPass(dispatcher());
    m_device->recordDownload(commands, m_atlas.image->image(), VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL,
                             {QPoint(), flight.atlasSize}, *flight.buffer,
                             kTexelBytes + bytesOf(state.size));
}

bool ViewPass::State::read(ViewOutput &output, QString &error)
{
    const int number = m_read % VulkanDevice::kFramesInFlight;
    ++m_read;
    Flight &flight = m_flights.at(std::size_t(number));
    if (!m_device->wait(number, flight.buffer.get(), error))
        return false;
    output = std::exchange(flight.output, {});
    const auto *const bytes = static_cast<const uchar *>(flight.buffer->data());
    const uchar *const view = bytes + kTexelBytes;
    const QSize size = output.state.size;
    if (flight.texelFormat) {
        output.texel.emplace();
        readTexels(bytes, *flight.texelFormat, &*output.texel, 1);
    }
    const QImage atlas(view + bytesOf(size), flight.atlasSize.width(), flight.atlasSize.height(),
                       QImage::Format_RGB32);
    for (const QRect &cell : std::as_const(flight.thumbnails))
        output.thumbnails.append(atlas.copy(cell));
    if (flight.isDrawn) {
        const QList<std::optional<double>> times = flight.renderer->milliseconds(number);
        for (int i = 0; i < output.passes.size(); ++i)
            output.passes[i].milliseconds = times.value(i);
        m_drawn.passes = output.passes;
        if (!runVulkan(error, [&] { readTimes(flight); }))
            return false;
    }
    output.passes = m_drawn.passes;
    output.drawMilliseconds = m_drawn.drawMilliseconds;
    output.transferMilliseconds = m_drawn.transferMilliseconds;
    // The image keeps the buffer.
    auto *const keeper = new std::shared_ptr<HostBuffer>(std::move(flight.buffer));
    output.image = QImage(
            view, size.width(), size.height(), QImage::Format_RGB32,
            [](void *kept) { delete static_cast<std::shared_ptr<HostBuffer> *>(kept); }, keeper);
    return true;
}

void ViewPass::State::readTimes(const Flight &flight)
{
    if (!*flight.timestamps)
        return;
    const auto [result, times] = flight.timestamps.getResults<std::uint64_t>(
            0, kTimestamps, kTimestamps * sizeof(std::uint64_t), sizeof(std::uint64_t),
            vk::QueryResultFlagBits::e64);
    if (result != vk::Result::eSuccess)
        return;
    const double period = m_device->timestampPeriod() * 1e-6;
    m_drawn.drawMilliseconds = double(times[1] - times[0]) * period;
    m_drawn.transferMilliseconds = double(times[2] - times[1]) * period;
}

bool ViewPass::create(const QString &device, const QByteArray &vertex, const QByteArray &fragment,
                      std::unique_ptr<ViewPass> &pass, QString &error)
{
    std::unique_ptr<VulkanDevice> opened;
    std::unique_ptr<State> state;
    if (!VulkanDevice::open(device, opened, error)
        || !runVulkan(error,
                      [&] { state = std::make_unique<State>(std::move(opened), vertex, fragment); })
        || !state->createBlack(error))
        return false;
    pass.reset(new ViewPass(std::move(state)));
    return true;
}

ViewPass::ViewPass(std::unique_ptr<State> state) : m_state(std::move(state)) { }

ViewPass::~ViewPass() = default;

const std::shared_ptr<VulkanDevice> &ViewPass::device() const
{
    return m_state->device();
}

bool ViewPass::submit(const ViewInput &view, const Record &record, QString &error)
{
    return m_state->submit(view, record, error);
}

bool ViewPass::read(ViewOutput &output, QString &error)
{
    return m_state->read(output, error);
}

bool ViewPass::hasOldThumbnails() const
{
    return m_state->hasOldThumbnails();
}
