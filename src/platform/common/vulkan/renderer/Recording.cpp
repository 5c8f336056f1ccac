#include "Recording.h"

#include <array>
#include <cstring>

namespace VulkanGraph {

namespace {

using Pass = VulkanRenderGraph::Pass;
using PassKind = VulkanGraphRenderer::PassKind;
using ResourceRef = VulkanRenderGraph::ResourceRef;

constexpr std::uint32_t kAllLevels = VK_REMAINING_MIP_LEVELS;

struct LayoutUse
{
    VkPipelineStageFlags stages;
    VkAccessFlags access;
};

LayoutUse useOf(VkImageLayout layout)
{
    switch (layout) {
    case VK_IMAGE_LAYOUT_UNDEFINED: // whatever used the image or its memory before
        return {VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT | VK_PIPELINE_STAGE_TRANSFER_BIT
                        | VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT,
                VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT | VK_ACCESS_TRANSFER_WRITE_BIT};
    case VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL:
        return {VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_READ_BIT};
    case VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL:
        return {VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_WRITE_BIT};
    default:
        return {VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT, VK_ACCESS_SHADER_READ_BIT};
    }
}

void transitionLayout(const Context &context, VkCommandBuffer commands, const PassImage &image,
                      VkImageLayout from, VkImageLayout to, std::uint32_t firstLevel,
                      std::uint32_t levels)
{
    const LayoutUse before = useOf(from);
    const LayoutUse after = useOf(to);
    VkImageMemoryBarrier barrier = {};
    barrier.sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER;
    barrier.srcAccessMask = before.access;
    barrier.dstAccessMask = after.access;
    barrier.oldLayout = from;
    barrier.newLayout = to;
    barrier.srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.image = image.image.get();
    barrier.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, firstLevel, levels, 0, 1};
    context.vk.cmdPipelineBarrier(commands, before.stages, after.stages, 0, 0, nullptr, 0, nullptr,
                                  1, &barrier);
}

VkRect2D wholeOf(const PassImage &image)
{
    return {{0, 0}, {std::uint32_t(image.size.width()), std::uint32_t(image.size.height())}};
}

VkImageBlit halfOf(QSize size, std::uint32_t level)
{
    const QSize half = (size / 2).expandedTo({1, 1});
    VkImageBlit blit = {};
    blit.srcSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, level - 1, 0, 1};
    blit.srcOffsets[1] = {size.width(), size.height(), 1};
    blit.dstSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, level, 0, 1};
    blit.dstOffsets[1] = {half.width(), half.height(), 1};
    return blit;
}

// Fills each level but the first from the one above.
void recordMipmaps(const Context &context, VkCommandBuffer commands, const PassImage &image)
{
    constexpr VkImageLayout kSampled = VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL;
    constexpr VkImageLayout kRead = VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL;
    constexpr VkImageLayout kWritten = VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL;
    if (image.levels == 1)
        return;
    transitionLayout(context, commands, image, kSampled, kRead, 0, 1);
    QSize size = image.size;
    for (std::uint32_t level = 1; level < image.levels; ++level) {
        transitionLayout(context, commands, image, VK_IMAGE_LAYOUT_UNDEFINED, kWritten, level, 1);
        const VkImageBlit blit = halfOf(size, level);
        context.vk.cmdBlitImage(commands, image.image.get(), kRead, image.image.get(), kWritten, 1,
                                &blit, VK_FILTER_LINEAR);
        transitionLayout(context, commands, image, kWritten, kRead, level, 1);
        size = (size / 2).expandedTo({1, 1});
    }
    transitionLayout(context, commands, image, kRead, kSampled, 0, kAllLevels);
}

// Numbers that are equal may draw different pictures: 0 and -0.
std::array<unsigned char, sizeof(PushConstants)> bytesOf(const PushConstants &constants)
{
    std::array<unsigned char, sizeof(PushConstants)> bytes;
    std::memcpy(bytes.data(), &constants, bytes.size());
    return bytes;
}

// One draw of a full-screen triangle.
struct Draw
{
    const PassPipeline &pipeline;
    VkDescriptorSet inputs; // or null
    FrameTarget target;
};

class FrameRecorder
{
public:
    FrameRecorder(VkCommandBuffer commands, const FrameResources &resources,
                  const VulkanGraphRenderer::Frame &frame, GraphContents &contents)
        : m_commands(commands),
          m_resources(resources),
          m_images(resources.images),
          m_prepared(*resources.images.prepared),
          m_graph(m_prepared.graph),
          m_context(*m_prepared.context),
          m_vk(m_context.vk),
          m_frame(frame),
          m_contents(contents)
    {
    }

    PassKind recordPass(int index)
    {
        const Pass &pass = m_graph.passes.at(index);
        GraphContents::Output &output = m_contents.outputs[std::size_t(index)];
        if (m_resources.isBlack[std::size_t(index)] != 0) {
            if (!pass.shareConstantBlack && !output.isCleared) {
                recordClear(m_context, m_commands, m_images.output(index, m_contents.pingPong),
                            pass.constantBlackAlpha);
                output.isCleared = true;
            }
            output.isDrawn = false;
            output.version = 0;
            return PassKind::ConstantBlack;
        }
        const PassState state = currentState(index);
        if (isUnchanged(index, state, output))
            return PassKind::Unchanged;
        beginLabel(index);
        if (pass.isFeedbackReader && !m_contents.hasHistory)
            seedHistory(index);
        recordDraw({pipelineOf(index),
                    m_resources.sets.passes[std::size_t(index)].inputs[m_contents.pingPong],
                    targetOf(index)},
                   &state.constants);
        if (index != m_images.targetPass())
            recordMipmaps(m_context, m_commands, m_images.output(index, m_contents.pingPong));
        endLabel();
        output.isDrawn = true;
        output.isCleared = false;
        output.constants = state.constants;
        output.inputVersions = state.inputVersions;
        output.version = ++m_contents.lastVersion;
        return PassKind::Drawn;
    }

    void writeTimestamp(VkPipelineStageFlagBits stage)
    {
        if (m_resources.timestamps != VK_NULL_HANDLE)
            m_vk.cmdWriteTimestamp(m_commands, stage, m_resources.timestamps, m_nextTimestamp++);
    }

    void resetTimestamps()
    {
        if (m_resources.timestamps != VK_NULL_HANDLE)
            m_vk.cmdResetQueryPool(m_commands, m_resources.timestamps, 0,
                                   std::uint32_t(m_graph.passes.size()) + 1);
    }

private:
    // What the output of a pass follows from in this frame.
    struct PassState
    {
        PushConstants constants;
        std::array<std::uint64_t, VulkanRenderGraph::MaxSampledInputsPerPass> inputVersions = {};
    };

    PassState currentState(int index) const
    {
        PassState state;
        state.constants = pushConstants(m_graph, index, m_images.passSizes, m_images.sizes.source,
                                        m_prepared.passes[std::size_t(index)].parameters, m_frame);
        std::size_t input = 0;
        for (const ResourceRef &ref : m_graph.passes.at(index).sampledInputs) {
            const int sampled = ref.passIndex == ResourceRef::Feedback ? index : ref.passIndex;
            state.inputVersions[input++] = sampled == ResourceRef::SourceImage
                    ? m_contents.sourceVersion
                    : m_contents.outputs[std::size_t(sampled)].version;
        }
        return state;
    }

    bool isUnchanged(int index, const PassState &state, const GraphContents::Output &output) const
    {
        if (!output.isDrawn || index == m_images.targetPass())
            return false;
        if (m_graph.passes.at(index).cacheByParameters)
            return state.constants.params == output.constants.params;
        return m_resources.keepsOutputs && state.inputVersions == output.inputVersions
                && bytesOf(state.constants) == bytesOf(output.constants);
    }

    const PassPipeline &pipelineOf(int index) const
    {
        const bool isLastDeclaredIntoTarget =
                index == m_images.targetPass() && !m_graph.passes.at(index).isFinalPass;
        return isLastDeclaredIntoTarget ? *m_prepared.lastDeclaredIntoTarget
                                        : *m_prepared.passes[std::size_t(index)].pipeline;
    }

    FrameTarget targetOf(int index) const
    {
        return index == m_images.targetPass()
                ? m_resources.target
                : imageTarget(index, m_images.output(index, m_contents.pingPong));
    }

    FrameTarget imageTarget(int index, const PassImage &image) const
    {
        return {m_prepared.passes[std::size_t(index)].pipeline->renderPass.get(),
                image.framebuffer.get(), wholeOf(image), wholeOf(image)};
    }

    // Black if binding 0 is the history itself.
    void seedHistory(int index)
    {
        const PassImage &history = m_images.output(index, 1 - m_contents.pingPong);
        const VkDescriptorSet input =
                m_resources.sets.passes[std::size_t(index)].seed[m_contents.pingPong];
        if (input == VK_NULL_HANDLE) {
            recordClear(m_context, m_commands, history, 1.0F);
            return;
        }
        recordDraw(
                {*m_prepared.passes[std::size_t(index)].seed, input, imageTarget(index, history)},
                nullptr);
        recordMipmaps(m_context, m_commands, history);
    }

    void recordDraw(const Draw &draw, const PushConstants *constants)
    {
        const VkClearValue black = {{{0.0F, 0.0F, 0.0F, 1.0F}}};
        VkRenderPassBeginInfo begin = {};
        begin.sType = VK_STRUCTURE_TYPE_RENDER_PASS_BEGIN_INFO;
        begin.renderPass = draw.target.renderPass;
        begin.framebuffer = draw.target.framebuffer;
        begin.renderArea = draw.target.area;
        begin.clearValueCount = 1; // ignored by render passes that do not clear
        begin.pClearValues = &black;
        m_vk.cmdBeginRenderPass(m_commands, &begin, VK_SUBPASS_CONTENTS_INLINE);
        m_vk.cmdBindPipeline(m_commands, VK_PIPELINE_BIND_POINT_GRAPHICS,
                             draw.pipeline.pipeline.get());
        const VkRect2D &rectangle = draw.target.rectangle;
        const VkViewport viewport = {float(rectangle.offset.x),
                                     float(rectangle.offset.y),
                                     float(rectangle.extent.width),
                                     float(rectangle.extent.height),
                                     0.0F,
                                     1.0F};
        m_vk.cmdSetViewport(m_commands, 0, 1, &viewport);
        m_vk.cmdSetScissor(m_commands, 0, 1, &rectangle);
        if (draw.inputs != VK_NULL_HANDLE) {
            m_vk.cmdBindDescriptorSets(m_commands, VK_PIPELINE_BIND_POINT_GRAPHICS,
                                       draw.pipeline.layout.get(), 0, 1, &draw.inputs, 0, nullptr);
        }
        if (constants != nullptr) {
            m_vk.cmdPushConstants(m_commands, draw.pipeline.layout.get(),
                                  VK_SHADER_STAGE_FRAGMENT_BIT, 0, sizeof(*constants), constants);
        }
        m_vk.cmdDraw(m_commands, 3, 1, 0, 0);
        m_vk.cmdEndRenderPass(m_commands);
    }

    void beginLabel(int index)
    {
        if (m_vk.cmdBeginDebugUtilsLabel == nullptr)
            return;
        VkDebugUtilsLabelEXT label = {};
        label.sType = VK_STRUCTURE_TYPE_DEBUG_UTILS_LABEL_EXT;
        label.pLabelName = m_prepared.passes[std::size_t(index)].label.constData();
        m_vk.cmdBeginDebugUtilsLabel(m_commands, &label);
    }

    void endLabel()
    {
        if (m_vk.cmdEndDebugUtilsLabel != nullptr)
            m_vk.cmdEndDebugUtilsLabel(m_commands);
    }

    VkCommandBuffer m_commands;
    const FrameResources &m_resources;
    const GraphImages &m_images;
    const Prepared &m_prepared;
    const VulkanRenderGraph &m_graph;
    const Context &m_context;
    const Functions &m_vk;
    const VulkanGraphRenderer::Frame &m_frame;
    GraphContents &m_contents;
    std::uint32_t m_nextTimestamp = 0;
};

} // namespace

void recordFrame(VkCommandBuffer commands, const FrameResources &resources,
                 const VulkanGraphRenderer::Frame &frame, GraphContents &contents,
                 std::vector<VulkanGraphRenderer::PassKind> &kinds)
{
    contents.pingPong = 1 - contents.pingPong;
    FrameRecorder recorder(commands, resources, frame, contents);
    recorder.resetTimestamps();
    recorder.writeTimestamp(VK_PIPELINE_STAGE_TOP_OF_PIPE_BIT);
    for (int index = 0; index <= resources.images.targetPass(); ++index) {
        kinds[std::size_t(index)] = recorder.recordPass(index);
        if (kinds[std::size_t(index)] == PassKind::Drawn)
            recorder.writeTimestamp(VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT);
    }
    contents.hasHistory = true;
}

void recordClear(const Context &context, VkCommandBuffer commands, const PassImage &image,
                 float alpha)
{
    transitionLayout(context, commands, image, VK_IMAGE_LAYOUT_UNDEFINED,
                     VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, 0, kAllLevels);
    const VkClearColorValue black = {{0.0F, 0.0F, 0.0F, alpha}};
    const VkImageSubresourceRange all = {VK_IMAGE_ASPECT_COLOR_BIT, 0, kAllLevels, 0, 1};
    context.vk.cmdClearColorImage(commands, image.image.get(), VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
                                  &black, 1, &all);
    transitionLayout(context, commands, image, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
                     VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL, 0, kAllLevels);
}

} // namespace VulkanGraph
