#include "GraphImages.h"

#include "Formats.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace VulkanGraph {

namespace {

using Pass = VulkanRenderGraph::Pass;

std::uint32_t mipmapLevels(QSize size)
{
    std::uint32_t levels = 1;
    for (int extent = std::max(size.width(), size.height()); extent > 1; extent /= 2)
        ++levels;
    return levels;
}

bool createImage(const Context &context, VkFormat format, VkImageUsageFlags usage, PassImage &image,
                 QString &error)
{
    VkImageCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO;
    info.imageType = VK_IMAGE_TYPE_2D;
    info.format = format;
    info.extent = {std::uint32_t(image.size.width()), std::uint32_t(image.size.height()), 1};
    info.mipLevels = image.levels;
    info.arrayLayers = 1;
    info.samples = VK_SAMPLE_COUNT_1_BIT;
    info.tiling = VK_IMAGE_TILING_OPTIMAL;
    info.usage = usage;
    info.sharingMode = VK_SHARING_MODE_EXCLUSIVE;
    info.initialLayout = VK_IMAGE_LAYOUT_UNDEFINED;
    return createObject(context, context.vk.createImage, info, image.image, error);
}

bool createView(const Context &context, const PassImage &image, VkFormat format,
                std::uint32_t levels, ImageView &view, QString &error)
{
    VkImageViewCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO;
    info.image = image.image.get();
    info.viewType = VK_IMAGE_VIEW_TYPE_2D;
    info.format = format;
    info.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, levels, 0, 1};
    return createObject(context, context.vk.createImageView, info, view, error);
}

// Only views of images that have their memory.
bool createViews(const Context &context, VkFormat format, VkRenderPass renderPass, PassImage &image,
                 QString &error)
{
    if (!createView(context, image, format, image.levels, image.sampledView, error)
        || !createView(context, image, format, 1, image.attachmentView, error))
        return false;
    const VkImageView attachment = image.attachmentView.get();
    VkFramebufferCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_FRAMEBUFFER_CREATE_INFO;
    info.renderPass = renderPass;
    info.attachmentCount = 1;
    info.pAttachments = &attachment;
    info.width = std::uint32_t(image.size.width());
    info.height = std::uint32_t(image.size.height());
    info.layers = 1;
    return createObject(context, context.vk.createFramebuffer, info, image.framebuffer, error);
}

VkMemoryRequirements requirementsOf(const Context &context, const PassImage &image)
{
    VkMemoryRequirements requirements = {};
    context.vk.getImageMemoryRequirements(context.device, image.image.get(), &requirements);
    return requirements;
}

// Prefers memory on the device.
bool allocate(const Context &context, VkDeviceSize size, std::uint32_t typeBits,
              DeviceMemory &memory, QString &error)
{
    VkMemoryAllocateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO;
    info.allocationSize = size;
    for (const VkMemoryPropertyFlags wanted :
         {VkMemoryPropertyFlags(VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT), VkMemoryPropertyFlags(0)}) {
        for (std::uint32_t type = 0; type < context.memory.memoryTypeCount; ++type) {
            const bool fits = (typeBits >> type & 1U) != 0;
            if (!fits || (context.memory.memoryTypes[type].propertyFlags & wanted) != wanted)
                continue;
            info.memoryTypeIndex = type;
            return createObject(context, context.vk.allocateMemory, info, memory, error);
        }
    }
    error = u"the Vulkan device has no memory for images"_s;
    return false;
}

// Images that get their memory.
class MemoryPlan
{
public:
    explicit MemoryPlan(const Context &context) : m_context(context) { }

    // `lastPass`: the last pass of the frame that samples it, or nothing if its content is kept
    // from frame to frame.
    void add(const PassImage &image, int firstPass, std::optional<int> lastPass)
    {
        const VkMemoryRequirements needed = requirementsOf(m_context, image);
        if (!lastPass) {
            m_kept.push_back({&image, needed});
            return;
        }
        m_transient.push_back({&image, needed});
        m_transientTypeBits &= needed.memoryTypeBits;
        TransientMemory &transient = m_placed.emplace_back();
        transient.size = needed.size;
        transient.alignment = needed.alignment;
        transient.firstPass = firstPass;
        transient.lastPass = *lastPass;
    }

    // Adds the bytes to `bytes`.
    bool allocateAndBind(std::vector<DeviceMemory> &memory, qint64 &bytes, QString &error)
    {
        const VkDeviceSize shared = placeTransients(m_placed);
        const bool canShare =
                m_transientTypeBits != 0 && shared <= m_context.maxMemoryAllocationSize;
        if (!canShare)
            m_kept.insert(m_kept.end(), m_transient.begin(), m_transient.end());
        for (const Needed &image : m_kept) {
            bytes += qint64(image.requirements.size);
            if (!allocate(m_context, image.requirements.size, image.requirements.memoryTypeBits,
                          memory.emplace_back(), error)
                || !bind(*image.image, memory.back(), 0, error))
                return false;
        }
        if (!canShare || m_transient.empty())
            return true;
        bytes += qint64(shared);
        if (!allocate(m_context, shared, m_transientTypeBits, memory.emplace_back(), error))
            return false;
        for (std::size_t i = 0; i < m_transient.size(); ++i) {
            if (!bind(*m_transient[i].image, memory.back(), m_placed[i].offset, error))
                return false;
        }
        return true;
    }

private:
    struct Needed
    {
        const PassImage *image;
        VkMemoryRequirements requirements;
    };

    bool bind(const PassImage &image, const DeviceMemory &memory, VkDeviceSize offset,
              QString &error) const
    {
        return isSuccess(m_context.vk.bindImageMemory(m_context.device, image.image.get(),
                                                      memory.get(), offset),
                         error);
    }

    const Context &m_context;
    std::vector<Needed> m_kept;
    std::vector<Needed> m_transient;
    std::vector<TransientMemory> m_placed; // of m_transient
    std::uint32_t m_transientTypeBits = ~0U;
};

VkImageUsageFlags usageOf(const Pass &pass, bool keepsOutputs)
{
    VkImageUsageFlags usage = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_SAMPLED_BIT;
    if (pass.mipmap || keepsOutputs)
        usage |= VK_IMAGE_USAGE_TRANSFER_SRC_BIT;
    if (pass.mipmap || pass.isFeedbackReader || !pass.constantBlackWhenZero.isEmpty())
        usage |= VK_IMAGE_USAGE_TRANSFER_DST_BIT; // mipmaps, or cleared
    return usage;
}

} // namespace

bool GraphImages::create(const std::shared_ptr<const Prepared> &prepared, const ImageSizes &sizes,
                         bool keepsOutputs, std::shared_ptr<const GraphImages> &images,
                         QString &error)
{
    const Context &context = *prepared->context;
    const VulkanRenderGraph &graph = prepared->graph;
    const auto created = std::make_shared<GraphImages>();
    created->prepared = prepared;
    created->sizes = sizes;
    created->passSizes = outputSizes(graph, sizes.source, sizes.viewport);
    created->passes.resize(std::size_t(graph.passes.size()));
    MemoryPlan plan(context);
    for (int index = 0; index < graph.passes.size(); ++index) {
        const Pass &pass = graph.passes.at(index);
        const QSize size = created->passSizes.at(index);
        if (!context.checkExtent("pass %1 ('%2')"_L1.arg(QString::number(index), pass.debugName),
                                 size, error))
            return false;
        if (index >= created->targetPass())
            continue;
        std::optional<int> lastPass;
        if (!keepsOutputs && !isKeptBetweenFrames(pass))
            lastPass = lastReader(graph, index);
        for (std::size_t pingPong = 0; pingPong < (pass.isFeedbackReader ? 2 : 1); ++pingPong) {
            PassImage &image = created->passes[std::size_t(index)][pingPong];
            image.size = size;
            image.levels = pass.mipmap ? mipmapLevels(size) : 1;
            if (!createImage(context, traitsOf(pass.format).format, usageOf(pass, keepsOutputs),
                             image, error))
                return false;
            plan.add(image, index, lastPass);
        }
    }
    if (!plan.allocateAndBind(created->memory, created->bytes, error))
        return false;
    for (int index = 0; index < created->targetPass(); ++index) {
        const VkRenderPass renderPass =
                prepared->passes[std::size_t(index)].pipeline->renderPass.get();
        for (PassImage &image : created->passes[std::size_t(index)]) {
            if (image.image.get() != VK_NULL_HANDLE
                && !createViews(context, traitsOf(graph.passes.at(index).format).format, renderPass,
                                image, error))
                return false;
        }
    }
    images = created;
    return true;
}

bool BlackImage::create(const Context &context, BlackImage &black, QString &error)
{
    constexpr VkFormat kFormat = VK_FORMAT_R8G8B8A8_UNORM;
    black.image.size = {1, 1};
    if (!createImage(context, kFormat, VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT,
                     black.image, error))
        return false;
    const VkMemoryRequirements needed = requirementsOf(context, black.image);
    black.bytes = qint64(needed.size);
    return allocate(context, needed.size, needed.memoryTypeBits, black.memory, error)
            && isSuccess(context.vk.bindImageMemory(context.device, black.image.image.get(),
                                                    black.memory.get(), 0),
                         error)
            && createView(context, black.image, kFormat, 1, black.image.sampledView, error);
}

} // namespace VulkanGraph
