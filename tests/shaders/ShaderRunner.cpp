#include "ShaderRunner.h"

#include "../TestSupport.h"

#include <QFloat16>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>

#include <vulkan/vulkan_raii.hpp>

namespace {

constexpr vk::Format kPictureFormat = vk::Format::eR32G32B32A32Sfloat;

vk::Extent3D extentOf(QSize size)
{
    return {std::uint32_t(size.width()), std::uint32_t(size.height()), 1};
}

vk::ImageSubresourceLayers colorLayer(std::uint32_t level)
{
    return {vk::ImageAspectFlagBits::eColor, level, 0, 1};
}

// Box-filtered down to a single pixel.
std::vector<Picture> withMipmaps(const Picture &picture)
{
    std::vector<Picture> levels = {picture};
    while (levels.back().size.width() > 1 && levels.back().size.height() > 1) {
        const Picture &above = levels.back();
        Picture level(above.size / 2);
        for (int y = 0; y < level.size.height(); ++y) {
            for (int x = 0; x < level.size.width(); ++x) {
                for (std::size_t c = 0; c < 4; ++c) {
                    level.at(x, y)[c] = 0.25F
                            * (above.at(2 * x, 2 * y)[c] + above.at(2 * x + 1, 2 * y)[c]
                               + above.at(2 * x, 2 * y + 1)[c] + above.at(2 * x + 1, 2 * y + 1)[c]);
                }
            }
        }
        levels.push_back(std::move(level));
    }
    return levels;
}

vk::SamplerAddressMode addressMode(int wrapMode)
{
    switch (wrapMode) {
    case 0:
        return vk::SamplerAddressMode::eClampToBorder;
    case 2:
        return vk::SamplerAddressMode::eRepeat;
    default:
        return vk::SamplerAddressMode::eClampToEdge;
    }
}

} // namespace

class ShaderRunner::Device
{
public:
    explicit Device(QString spirvDir)
        : m_spirvDir(std::move(spirvDir)),
          m_instance(createInstance()),
          m_physical(choosePhysicalDevice()),
          m_device(createDevice()),
          m_queue(m_device, 0, 0),
          m_commandPool(m_device, vk::CommandPoolCreateInfo({}, 0)),
          m_vertexModule(loadModule(QStringLiteral("fullscreen.vert.spv")))
    {
    }

    Picture draw(const QString &component, const QList<SampledPicture> &inputs, QSize size,
                 const PushConstants &constants, bool isFloat32)
    {
        const vk::Format format = isFloat32 ? kPictureFormat : vk::Format::eR16G16B16A16Sfloat;
        const std::size_t pixelSize = isFloat32 ? sizeof(Pixel) : sizeof(Pixel) / 2;
        const Pipeline &pipeline = pipelineFor(component, inputs.size(), format);

        vk::raii::CommandBuffer commands =
                std::move(vk::raii::CommandBuffers(
                                  m_device, {*m_commandPool, vk::CommandBufferLevel::ePrimary, 1})
                                  .front());
        commands.begin({vk::CommandBufferUsageFlagBits::eOneTimeSubmit});

        std::vector<Texture> textures;
        textures.reserve(std::size_t(inputs.size()));
        for (const SampledPicture &input : inputs)
            textures.push_back(upload(commands, input));

        const Image target = createImage(size, format, 1,
                                         vk::ImageUsageFlagBits::eColorAttachment
                                                 | vk::ImageUsageFlagBits::eTransferSrc);
        const vk::raii::Framebuffer framebuffer(
                m_device,
                vk::FramebufferCreateInfo({}, *pipeline.renderPass, *target.view,
                                          std::uint32_t(size.width()), std::uint32_t(size.height()),
                                          1));

        const vk::Rect2D area({0, 0}, {std::uint32_t(size.width()), std::uint32_t(size.height())});
        commands.beginRenderPass({*pipeline.renderPass, *framebuffer, area},
                                 vk::SubpassContents::eInline);
        commands.bindPipeline(vk::PipelineBindPoint::eGraphics, *pipeline.pipeline);
        commands.setViewport(0,
                             vk::Viewport(0, 0, float(size.width()), float(size.height()), 0, 1));
        commands.setScissor(0, area);
        const DescriptorSet descriptors = describe(pipeline, textures);
        if (!textures.empty()) {
            commands.bindDescriptorSets(vk::PipelineBindPoint::eGraphics, *pipeline.layout, 0,
                                        *descriptors.set, {});
        }
        commands.pushConstants<PushConstants>(*pipeline.layout, vk::ShaderStageFlagBits::eFragment,
                                              0, constants);
        commands.draw(3, 1, 0, 0);
        commands.endRenderPass();

        Picture result(size);
        const Buffer download = createBuffer(result.pixels.size() * pixelSize,
                                             vk::BufferUsageFlagBits::eTransferDst);
        commands.copyImageToBuffer(*target.image, vk::ImageLayout::eTransferSrcOptimal,
                                   *download.buffer,
                                   vk::BufferImageCopy(0, 0, 0, colorLayer(0), {}, extentOf(size)));
        commands.end();
        m_queue.submit(vk::SubmitInfo({}, {}, *commands));
        m_device.waitIdle();

        const void *const mapped = download.memory.mapMemory(0, VK_WHOLE_SIZE);
        if (isFloat32) {
            std::memcpy(result.pixels.data(), mapped, result.pixels.size() * pixelSize);
        } else {
            qFloatFromFloat16(result.pixels.front().data(), static_cast<const qfloat16 *>(mapped),
                              qsizetype(result.pixels.size()) * 4);
        }
        return result;
    }

private:
    struct Buffer
    {
        vk::raii::DeviceMemory memory;
        vk::raii::Buffer buffer;
    };
    struct Image
    {
        vk::raii::DeviceMemory memory;
        vk::raii::Image image;
        vk::raii::ImageView view;
    };
    struct Texture
    {
        Image image;
        vk::raii::Sampler sampler;
        std::vector<Buffer> staging;
    };
    struct Pipeline
    {
        vk::raii::DescriptorSetLayout setLayout;
        vk::raii::PipelineLayout layout;
        vk::raii::RenderPass renderPass;
        vk::raii::Pipeline pipeline;
    };
    struct DescriptorSet
    {
        vk::raii::DescriptorPool pool = nullptr;
        vk::raii::DescriptorSet set = nullptr;
    };

    vk::raii::Instance createInstance() const
    {
        const vk::ApplicationInfo application("shader tests", 1, nullptr, 0, VK_API_VERSION_1_1);
        return {m_context, vk::InstanceCreateInfo({}, &application)};
    }

    vk::raii::PhysicalDevice choosePhysicalDevice() const
    {
        vk::raii::PhysicalDevices devices(m_instance);
        // A software device gives the same numbers on every machine.
        for (vk::raii::PhysicalDevice &device : devices) {
            if (device.getProperties().deviceType == vk::PhysicalDeviceType::eCpu)
                return std::move(device);
        }
        return std::move(devices.front());
    }

    vk::raii::Device createDevice() const
    {
        const float priority = 1.0F;
        const vk::DeviceQueueCreateInfo queue({}, 0, 1, &priority);
        return {m_physical, vk::DeviceCreateInfo({}, queue)};
    }

    vk::raii::ShaderModule loadModule(const QString &name) const
    {
        const QByteArray code = readFile(m_spirvDir + QLatin1Char('/') + name);
        std::vector<std::uint32_t> words(std::size_t(code.size()) / sizeof(std::uint32_t));
        std::memcpy(words.data(), code.constData(), words.size() * sizeof(std::uint32_t));
        return {m_device, vk::ShaderModuleCreateInfo({}, words)};
    }

    vk::raii::DeviceMemory allocate(const vk::MemoryRequirements &needed,
                                    vk::MemoryPropertyFlags flags) const
    {
        const vk::PhysicalDeviceMemoryProperties memory = m_physical.getMemoryProperties();
        for (std::uint32_t type = 0; type < memory.memoryTypeCount; ++type) {
            const bool fits = (needed.memoryTypeBits >> type & 1U) != 0;
            if (fits && (memory.memoryTypes[type].propertyFlags & flags) == flags)
                return {m_device, vk::MemoryAllocateInfo(needed.size, type)};
        }
        qFatal("no memory of the kind that is needed");
    }

    Buffer createBuffer(std::size_t size, vk::BufferUsageFlags usage) const
    {
        vk::raii::Buffer buffer(m_device, vk::BufferCreateInfo({}, size, usage));
        vk::raii::DeviceMemory memory =
                allocate(buffer.getMemoryRequirements(),
                         vk::MemoryPropertyFlagBits::eHostVisible
                                 | vk::MemoryPropertyFlagBits::eHostCoherent);
        buffer.bindMemory(*memory, 0);
        return {std::move(memory), std::move(buffer)};
    }

    Image createImage(QSize size, vk::Format format, std::uint32_t levels,
                      vk::ImageUsageFlags usage) const
    {
        vk::raii::Image image(m_device,
                              vk::ImageCreateInfo({}, vk::ImageType::e2D, format, extentOf(size),
                                                  levels, 1, vk::SampleCountFlagBits::e1,
                                                  vk::ImageTiling::eOptimal, usage));
        vk::raii::DeviceMemory memory = allocate(image.getMemoryRequirements(), {});
        image.bindMemory(*memory, 0);
        vk::raii::ImageView view(
                m_device,
                vk::ImageViewCreateInfo({}, *image, vk::ImageViewType::e2D, format, {},
                                        {vk::ImageAspectFlagBits::eColor, 0, levels, 0, 1}));
        return {std::move(memory), std::move(image), std::move(view)};
    }

    Texture upload(const vk::raii::CommandBuffer &commands, const SampledPicture &input) const
    {
        const std::vector<Picture> levels =
                input.mipmap ? withMipmaps(*input.picture) : std::vector<Picture>{*input.picture};
        const auto levelCount = std::uint32_t(levels.size());
        Image image = createImage(input.picture->size, kPictureFormat, levelCount,
                                  vk::ImageUsageFlagBits::eSampled
                                          | vk::ImageUsageFlagBits::eTransferDst);
        moveTo(commands, image, levelCount, vk::ImageLayout::eUndefined,
               vk::ImageLayout::eTransferDstOptimal);
        std::vector<Buffer> staging;
        for (std::uint32_t level = 0; level < levelCount; ++level) {
            const std::vector<Pixel> &pixels = levels[level].pixels;
            const std::size_t size = pixels.size() * sizeof(Pixel);
            staging.push_back(createBuffer(size, vk::BufferUsageFlagBits::eTransferSrc));
            std::memcpy(staging.back().memory.mapMemory(0, VK_WHOLE_SIZE), pixels.data(), size);
            commands.copyBufferToImage(*staging.back().buffer, *image.image,
                                       vk::ImageLayout::eTransferDstOptimal,
                                       vk::BufferImageCopy(0, 0, 0, colorLayer(level), {},
                                                           extentOf(levels[level].size)));
        }
        moveTo(commands, image, levelCount, vk::ImageLayout::eTransferDstOptimal,
               vk::ImageLayout::eShaderReadOnlyOptimal);

        const vk::Filter filter = input.linearFilter ? vk::Filter::eLinear : vk::Filter::eNearest;
        const vk::SamplerAddressMode mode = addressMode(input.wrapMode);
        vk::raii::Sampler sampler(
                m_device,
                vk::SamplerCreateInfo({}, filter, filter, vk::SamplerMipmapMode::eLinear, mode,
                                      mode, mode, 0.0F, VK_FALSE, 1.0F, VK_FALSE,
                                      vk::CompareOp::eNever, 0.0F, float(levelCount - 1)));
        return {std::move(image), std::move(sampler), std::move(staging)};
    }

    static void moveTo(const vk::raii::CommandBuffer &commands, const Image &image,
                       std::uint32_t levels, vk::ImageLayout from, vk::ImageLayout to)
    {
        const auto anyAccess = vk::AccessFlagBits::eMemoryRead | vk::AccessFlagBits::eMemoryWrite;
        commands.pipelineBarrier(
                vk::PipelineStageFlagBits::eAllCommands, vk::PipelineStageFlagBits::eAllCommands,
                {}, {}, {},
                vk::ImageMemoryBarrier(anyAccess, anyAccess, from, to, VK_QUEUE_FAMILY_IGNORED,
                                       VK_QUEUE_FAMILY_IGNORED, *image.image,
                                       {vk::ImageAspectFlagBits::eColor, 0, levels, 0, 1}));
    }

    DescriptorSet describe(const Pipeline &pipeline, const std::vector<Texture> &textures) const
    {
        DescriptorSet descriptors;
        if (textures.empty())
            return descriptors;
        const vk::DescriptorPoolSize poolSize(vk::DescriptorType::eCombinedImageSampler,
                                              std::uint32_t(textures.size()));
        descriptors.pool = vk::raii::DescriptorPool(
                m_device,
                vk::DescriptorPoolCreateInfo(vk::DescriptorPoolCreateFlagBits::eFreeDescriptorSet,
                                             1, poolSize));
        descriptors.set = std::move(
                vk::raii::DescriptorSets(m_device, {*descriptors.pool, *pipeline.setLayout})
                        .front());
        for (std::uint32_t binding = 0; binding < textures.size(); ++binding) {
            const vk::DescriptorImageInfo image(*textures[binding].sampler,
                                                *textures[binding].image.view,
                                                vk::ImageLayout::eShaderReadOnlyOptimal);
            m_device.updateDescriptorSets(
                    vk::WriteDescriptorSet(*descriptors.set, binding, 0,
                                           vk::DescriptorType::eCombinedImageSampler, image),
                    {});
        }
        return descriptors;
    }

    const Pipeline &pipelineFor(const QString &component, qsizetype inputCount, vk::Format format)
    {
        const auto key = std::make_pair(component, format);
        auto found = m_pipelines.find(key);
        if (found == m_pipelines.end()) {
            found = m_pipelines.emplace(key, createPipeline(component, inputCount, format)).first;
        }
        return found->second;
    }

    Pipeline createPipeline(const QString &component, qsizetype inputCount, vk::Format format) const
    {
        std::vector<vk::DescriptorSetLayoutBinding> bindings;
        for (qsizetype binding = 0; binding < inputCount; ++binding) {
            bindings.emplace_back(std::uint32_t(binding), vk::DescriptorType::eCombinedImageSampler,
                                  1, vk::ShaderStageFlagBits::eFragment);
        }
        vk::raii::DescriptorSetLayout setLayout(m_device,
                                                vk::DescriptorSetLayoutCreateInfo({}, bindings));
        const vk::PushConstantRange constants(vk::ShaderStageFlagBits::eFragment, 0,
                                              sizeof(PushConstants));
        vk::raii::PipelineLayout layout(m_device,
                                        vk::PipelineLayoutCreateInfo({}, *setLayout, constants));

        const vk::AttachmentDescription attachment(
                {}, format, vk::SampleCountFlagBits::e1, vk::AttachmentLoadOp::eDontCare,
                vk::AttachmentStoreOp::eStore, vk::AttachmentLoadOp::eDontCare,
                vk::AttachmentStoreOp::eDontCare, vk::ImageLayout::eUndefined,
                vk::ImageLayout::eTransferSrcOptimal);
        const vk::AttachmentReference color(0, vk::ImageLayout::eColorAttachmentOptimal);
        const vk::SubpassDescription subpass({}, vk::PipelineBindPoint::eGraphics, {}, color);
        vk::raii::RenderPass renderPass(m_device,
                                        vk::RenderPassCreateInfo({}, attachment, subpass));

        const vk::raii::ShaderModule fragmentModule =
                loadModule(component + QStringLiteral(".frag.spv"));
        const std::array stages = {
                vk::PipelineShaderStageCreateInfo({}, vk::ShaderStageFlagBits::eVertex,
                                                  *m_vertexModule, "main"),
                vk::PipelineShaderStageCreateInfo({}, vk::ShaderStageFlagBits::eFragment,
                                                  *fragmentModule, "main"),
        };
        const vk::PipelineVertexInputStateCreateInfo vertexInput;
        const vk::PipelineInputAssemblyStateCreateInfo assembly(
                {}, vk::PrimitiveTopology::eTriangleList);
        const vk::PipelineViewportStateCreateInfo viewport({}, 1, nullptr, 1, nullptr);
        vk::PipelineRasterizationStateCreateInfo rasterization;
        rasterization.lineWidth = 1.0F;
        const vk::PipelineMultisampleStateCreateInfo multisample;
        vk::PipelineColorBlendAttachmentState blendAttachment;
        blendAttachment.colorWriteMask = vk::ColorComponentFlagBits::eR
                | vk::ColorComponentFlagBits::eG | vk::ColorComponentFlagBits::eB
                | vk::ColorComponentFlagBits::eA;
        const vk::PipelineColorBlendStateCreateInfo blend({}, VK_FALSE, vk::LogicOp::eClear,
                                                          blendAttachment);
        const std::array dynamicStates = {vk::DynamicState::eViewport, vk::DynamicState::eScissor};
        const vk::PipelineDynamicStateCreateInfo dynamic({}, dynamicStates);
        vk::raii::Pipeline pipeline(
                m_device, nullptr,
                vk::GraphicsPipelineCreateInfo({}, stages, &vertexInput, &assembly, nullptr,
                                               &viewport, &rasterization, &multisample, nullptr,
                                               &blend, &dynamic, *layout, *renderPass));
        return {std::move(setLayout), std::move(layout), std::move(renderPass),
                std::move(pipeline)};
    }

    QString m_spirvDir;
    vk::raii::Context m_context;
    vk::raii::Instance m_instance;
    vk::raii::PhysicalDevice m_physical;
    vk::raii::Device m_device;
    vk::raii::Queue m_queue;
    vk::raii::CommandPool m_commandPool;
    vk::raii::ShaderModule m_vertexModule;
    std::map<std::pair<QString, vk::Format>, Pipeline> m_pipelines;
};

ShaderRunner::ShaderRunner(const QString &spirvDir) : m_device(std::make_unique<Device>(spirvDir))
{
}

ShaderRunner::~ShaderRunner() = default;

Picture ShaderRunner::draw(const QString &component, const QList<SampledPicture> &inputs,
                           QSize size, const PushConstants &constants, bool isFloat32)
{
    return m_device->draw(component, inputs, size, constants, isFloat32);
}

ShaderRunner &shaders()
{
    static ShaderRunner runner(QStringLiteral(SPIRV_DIR));
    return runner;
}

float difference(const Picture &a, const Picture &b)
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
