#pragma once

#include "FrameLayout.h"
#include "VulkanContext.h"

#include <memory>
#include <vector>

// A graph as the device draws it.
namespace VulkanGraph {

// How a render pass treats what was in the image before.
enum class AttachmentContent : std::uint8_t { Discarded, Cleared, Kept };

// A render pass with one colour attachment. All of one format are compatible with each other.
bool createRenderPass(const Context &context, VkFormat format, AttachmentContent content,
                      VkImageLayout layoutBefore, VkImageLayout layoutAfter, RenderPass &renderPass,
                      QString &error);

// What a pass's pipeline is made from.
struct PipelineSource
{
    bool operator==(const PipelineSource &other) const
    {
        return vertex == other.vertex && fragment == other.fragment
                && inputCount == other.inputCount && format == other.format
                && framesPerSecond == other.framesPerSecond;
    }

    QByteArray vertex; // SPIR-V
    QByteArray fragment;
    int inputCount = 0;
    VkFormat format = VK_FORMAT_UNDEFINED;
    float framesPerSecond = 0.0F;
};

struct PassPipeline
{
    std::shared_ptr<const Context> context;
    PipelineSource source;
    DescriptorSetLayout setLayout;
    PipelineLayout layout;
    RenderPass renderPass; // from an undefined layout into that for sampling
    Pipeline pipeline;
};
using SharedPipeline = std::shared_ptr<const PassPipeline>;

struct PreparedPass
{
    SharedPipeline pipeline; // into its output; of the final pass into the target
    SharedPipeline seed; // copies binding 0 into the history of a feedback pass; null for others
    Sampler sampler; // with which others sample the output
    std::vector<ParameterSlot> parameters;
    int blackParameter = -1; // the index in Frame::parameters of what makes it constant black
    QByteArray label;
};

struct Prepared
{
    std::shared_ptr<const Context> context;
    VulkanRenderGraph graph;
    QStringList parameterIds;
    VkFormat targetFormat = VK_FORMAT_UNDEFINED;
    std::vector<PreparedPass> passes;
    // The last declared pass straight into the target; null where the final pass is always drawn.
    SharedPipeline lastDeclaredIntoTarget;
    Sampler sourceSampler;
};

// See VulkanGraphRenderer::prepare(). `previous` may be null. `leavesOutFinalPass` makes
// lastDeclaredIntoTarget where the graph allows it.
bool prepareGraph(const std::shared_ptr<const Context> &context, const VulkanRenderGraph &graph,
                  const VulkanGraphRenderer::Modules &modules,
                  const VulkanGraphRenderer::PrepareOptions &options, bool leavesOutFinalPass,
                  const Prepared *previous, std::shared_ptr<const Prepared> &prepared,
                  QString &error);

} // namespace VulkanGraph
