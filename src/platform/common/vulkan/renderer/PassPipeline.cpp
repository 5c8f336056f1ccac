#include "PassPipeline.h"

#include "CopyShader.h"
#include "Formats.h"
#include "ModuleCheck.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace VulkanGraph {

namespace {

using Pass = VulkanRenderGraph::Pass;

QString passName(int index, const Pass &pass)
{
    return "pass %1 ('%2')"_L1.arg(QString::number(index), pass.debugName);
}

bool checkFormat(const Context &context, int index, const Pass &pass, QString &error)
{
    VkFormatFeatureFlags needed =
            VK_FORMAT_FEATURE_COLOR_ATTACHMENT_BIT | VK_FORMAT_FEATURE_SAMPLED_IMAGE_BIT;
    if (pass.linearFilter || pass.mipmap)
        needed |= VK_FORMAT_FEATURE_SAMPLED_IMAGE_FILTER_LINEAR_BIT;
    if (pass.mipmap)
        needed |= VK_FORMAT_FEATURE_BLIT_SRC_BIT | VK_FORMAT_FEATURE_BLIT_DST_BIT;
    if (pass.isFeedbackReader || !pass.constantBlackWhenZero.isEmpty())
        needed |= VK_FORMAT_FEATURE_TRANSFER_DST_BIT; // is cleared
    if (context.supports(traitsOf(pass.format).format, needed))
        return true;
    error = "this device cannot draw the format of %1"_L1.arg(passName(index, pass));
    return false;
}

// Whether the graph can be prepared with these modules on this device.
bool checkGraph(const Context &context, const VulkanRenderGraph &graph,
                const VulkanGraphRenderer::Modules &modules,
                const VulkanGraphRenderer::PrepareOptions &options, QString &error)
{
    if (!graph.isValid()) {
        error = u"the graph is not valid"_s;
        return false;
    }
    if (!checkApplicationFormat(context, u"target"_s, options.targetFormat,
                                VK_FORMAT_FEATURE_COLOR_ATTACHMENT_BIT, error))
        return false;
    for (int index = 0; index < graph.passes.size(); ++index) {
        const Pass &pass = graph.passes.at(index);
        for (const QString &resource : {pass.vertexSpirvResource, pass.fragmentSpirvResource}) {
            if (modules.value(resource).isEmpty()) {
                error = "%1 has no module '%2'"_L1.arg(passName(index, pass), resource);
                return false;
            }
        }
        QString reason;
        if (!checkVertexModule(modules.value(pass.vertexSpirvResource), reason)) {
            error = "the vertex shader of %1: %2"_L1.arg(passName(index, pass), reason);
            return false;
        }
        if (!checkFragmentModule(modules.value(pass.fragmentSpirvResource), graph, index, reason)) {
            error = "%1: %2"_L1.arg(pass.debugName, reason);
            return false;
        }
        if (!pass.isFinalPass && !checkFormat(context, index, pass, error))
            return false;
    }
    return true;
}

bool createModule(const Context &context, const QByteArray &spirv, ShaderModule &module,
                  QString &error)
{
    std::vector<std::uint32_t> words(std::size_t(spirv.size()) / sizeof(std::uint32_t));
    std::memcpy(words.data(), spirv.constData(), words.size() * sizeof(std::uint32_t));
    VkShaderModuleCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
    info.codeSize = words.size() * sizeof(std::uint32_t);
    info.pCode = words.data();
    return createObject(context, context.vk.createShaderModule, info, module, error);
}

bool createLayouts(const Context &context, PassPipeline &pass, QString &error)
{
    std::vector<VkDescriptorSetLayoutBinding> bindings(std::size_t(pass.source.inputCount));
    for (std::size_t i = 0; i < bindings.size(); ++i) {
        bindings[i].binding = std::uint32_t(i);
        bindings[i].descriptorType = VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER;
        bindings[i].descriptorCount = 1;
        bindings[i].stageFlags = VK_SHADER_STAGE_FRAGMENT_BIT;
    }
    VkDescriptorSetLayoutCreateInfo setInfo = {};
    setInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO;
    setInfo.bindingCount = std::uint32_t(bindings.size());
    setInfo.pBindings = bindings.data();
    if (!createObject(context, context.vk.createDescriptorSetLayout, setInfo, pass.setLayout,
                      error))
        return false;

    VkPushConstantRange constants = {};
    constants.stageFlags = VK_SHADER_STAGE_FRAGMENT_BIT;
    constants.size = sizeof(PushConstants);
    const VkDescriptorSetLayout setLayout = pass.setLayout.get();
    VkPipelineLayoutCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
    info.setLayoutCount = 1;
    info.pSetLayouts = &setLayout;
    info.pushConstantRangeCount = 1;
    info.pPushConstantRanges = &constants;
    return createObject(context, context.vk.createPipelineLayout, info, pass.layout, error);
}

bool createPipeline(const Context &context, VkPipelineCache cache, PassPipeline &pass,
                    QString &error)
{
    ShaderModule vertex;
    ShaderModule fragment;
    if (!createModule(context, pass.source.vertex, vertex, error)
        || !createModule(context, pass.source.fragment, fragment, error))
        return false;

    // Constant 0 of a component.
    const VkSpecializationMapEntry entry = {0, 0, sizeof(float)};
    const VkSpecializationInfo specialization = {1, &entry, sizeof(float),
                                                 &pass.source.framesPerSecond};
    std::array<VkPipelineShaderStageCreateInfo, 2> stages = {};
    for (VkPipelineShaderStageCreateInfo &stage : stages) {
        stage.sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
        stage.pName = "main";
    }
    stages[0].stage = VK_SHADER_STAGE_VERTEX_BIT;
    stages[0].module = vertex.get();
    stages[1].stage = VK_SHADER_STAGE_FRAGMENT_BIT;
    stages[1].module = fragment.get();
    stages[1].pSpecializationInfo = &specialization;

    VkPipelineVertexInputStateCreateInfo vertexInput = {};
    vertexInput.sType = VK_STRUCTURE_TYPE_PIPELINE_VERTEX_INPUT_STATE_CREATE_INFO;
    VkPipelineInputAssemblyStateCreateInfo assembly = {};
    assembly.sType = VK_STRUCTURE_TYPE_PIPELINE_INPUT_ASSEMBLY_STATE_CREATE_INFO;
    assembly.topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST;
    VkPipelineViewportStateCreateInfo viewport = {};
    viewport.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO;
    viewport.viewportCount = 1;
    viewport.scissorCount = 1;
    VkPipelineRasterizationStateCreateInfo rasterization = {};
    rasterization.sType = VK_STRUCTURE_TYPE_PIPELINE_RASTERIZATION_STATE_CREATE_INFO;
    rasterization.lineWidth = 1.0F;
    VkPipelineMultisampleStateCreateInfo multisample = {};
    multisample.sType = VK_STRUCTURE_TYPE_PIPELINE_MULTISAMPLE_STATE_CREATE_INFO;
    multisample.rasterizationSamples = VK_SAMPLE_COUNT_1_BIT;
    VkPipelineColorBlendAttachmentState attachment = {};
    attachment.colorWriteMask = VK_COLOR_COMPONENT_R_BIT | VK_COLOR_COMPONENT_G_BIT
            | VK_COLOR_COMPONENT_B_BIT | VK_COLOR_COMPONENT_A_BIT;
    VkPipelineColorBlendStateCreateInfo blend = {};
    blend.sType = VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO;
    blend.attachmentCount = 1;
    blend.pAttachments = &attachment;
    constexpr std::array dynamicStates = {VK_DYNAMIC_STATE_VIEWPORT, VK_DYNAMIC_STATE_SCISSOR};
    VkPipelineDynamicStateCreateInfo dynamic = {};
    dynamic.sType = VK_STRUCTURE_TYPE_PIPELINE_DYNAMIC_STATE_CREATE_INFO;
    dynamic.dynamicStateCount = std::uint32_t(dynamicStates.size());
    dynamic.pDynamicStates = dynamicStates.data();

    VkGraphicsPipelineCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_GRAPHICS_PIPELINE_CREATE_INFO;
    info.stageCount = std::uint32_t(stages.size());
    info.pStages = stages.data();
    info.pVertexInputState = &vertexInput;
    info.pInputAssemblyState = &assembly;
    info.pViewportState = &viewport;
    info.pRasterizationState = &rasterization;
    info.pMultisampleState = &multisample;
    info.pColorBlendState = &blend;
    info.pDynamicState = &dynamic;
    info.layout = pass.layout.get();
    info.renderPass = pass.renderPass.get();
    VkPipeline handle = VK_NULL_HANDLE;
    if (!isSuccess(context.vk.createGraphicsPipelines(context.device, cache, 1, &info, nullptr,
                                                      &handle),
                   error))
        return false;
    pass.pipeline = Pipeline(context, handle);
    return true;
}

bool createSampler(const Context &context, bool isLinear, bool hasMipmaps, int wrapMode,
                   Sampler &sampler, QString &error)
{
    const VkFilter filter = isLinear ? VK_FILTER_LINEAR : VK_FILTER_NEAREST;
    VkSamplerCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
    info.magFilter = filter;
    info.minFilter = filter;
    info.mipmapMode = hasMipmaps ? VK_SAMPLER_MIPMAP_MODE_LINEAR : VK_SAMPLER_MIPMAP_MODE_NEAREST;
    info.maxLod = hasMipmaps ? VK_LOD_CLAMP_NONE : 0.0F;
    info.addressModeU = wrapMode == 0 ? VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_BORDER
            : wrapMode == 2           ? VK_SAMPLER_ADDRESS_MODE_REPEAT
                                      : VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
    info.addressModeV = info.addressModeU;
    info.addressModeW = info.addressModeU;
    info.borderColor = VK_BORDER_COLOR_FLOAT_TRANSPARENT_BLACK;
    return createObject(context, context.vk.createSampler, info, sampler, error);
}

// Makes pipelines, or takes them from an earlier graph.
class PipelineMaker
{
public:
    PipelineMaker(const std::shared_ptr<const Context> &context, VkPipelineCache cache,
                  const Prepared *previous)
        : m_context(context),
          m_cache(cache)
    {
        if (previous == nullptr)
            return;
        for (const PreparedPass &pass : previous->passes) {
            m_known.push_back(pass.pipeline);
            m_known.push_back(pass.seed);
        }
        m_known.push_back(previous->lastDeclaredIntoTarget);
    }

    bool make(const PipelineSource &source, SharedPipeline &pipeline, QString &error)
    {
        const auto known = std::find_if(m_known.cbegin(), m_known.cend(),
                                        [&](const SharedPipeline &candidate) {
                                            return candidate && candidate->context == m_context
                                                    && candidate->source == source;
                                        });
        if (known != m_known.cend()) {
            pipeline = *known;
            return true;
        }
        const auto made = std::make_shared<PassPipeline>();
        made->context = m_context;
        made->source = source;
        if (!createRenderPass(*m_context, source.format, AttachmentContent::Discarded,
                              VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL,
                              made->renderPass, error)
            || !createLayouts(*m_context, *made, error)
            || !createPipeline(*m_context, m_cache, *made, error))
            return false;
        pipeline = made;
        m_known.push_back(made);
        return true;
    }

private:
    const std::shared_ptr<const Context> &m_context;
    VkPipelineCache m_cache;
    std::vector<SharedPipeline> m_known;
};

// The index of an id, which is appended if it is new.
int indexOf(const QString &id, QStringList &ids)
{
    const auto index = int(ids.indexOf(id));
    if (index >= 0)
        return index;
    ids.append(id);
    return int(ids.size()) - 1;
}

} // namespace

bool createRenderPass(const Context &context, VkFormat format, AttachmentContent content,
                      VkImageLayout layoutBefore, VkImageLayout layoutAfter, RenderPass &renderPass,
                      QString &error)
{
    VkAttachmentDescription attachment = {};
    attachment.format = format;
    attachment.samples = VK_SAMPLE_COUNT_1_BIT;
    attachment.loadOp = content == AttachmentContent::Cleared ? VK_ATTACHMENT_LOAD_OP_CLEAR
            : content == AttachmentContent::Kept              ? VK_ATTACHMENT_LOAD_OP_LOAD
                                                              : VK_ATTACHMENT_LOAD_OP_DONT_CARE;
    attachment.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
    attachment.stencilLoadOp = VK_ATTACHMENT_LOAD_OP_DONT_CARE;
    attachment.stencilStoreOp = VK_ATTACHMENT_STORE_OP_DONT_CARE;
    attachment.initialLayout = layoutBefore;
    attachment.finalLayout = layoutAfter;
    const VkAttachmentReference color = {0, VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL};
    VkSubpassDescription subpass = {};
    subpass.pipelineBindPoint = VK_PIPELINE_BIND_POINT_GRAPHICS;
    subpass.colorAttachmentCount = 1;
    subpass.pColorAttachments = &color;

    // Drawing waits for earlier readers and writers of the image, or of one that shares its memory.
    // Later readers and writers wait for the drawing. Compatible render passes have equal
    // dependencies, so these suit targets as well.
    constexpr VkPipelineStageFlags kStages = VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT
            | VK_PIPELINE_STAGE_TRANSFER_BIT | VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
    constexpr VkAccessFlags kAttachmentAccess =
            VK_ACCESS_COLOR_ATTACHMENT_READ_BIT | VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;
    std::array<VkSubpassDependency, 2> dependencies = {};
    dependencies[0].srcSubpass = VK_SUBPASS_EXTERNAL;
    dependencies[0].srcStageMask = kStages;
    dependencies[0].srcAccessMask =
            VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT | VK_ACCESS_TRANSFER_WRITE_BIT;
    dependencies[0].dstStageMask = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
    dependencies[0].dstAccessMask = kAttachmentAccess;
    dependencies[1].dstSubpass = VK_SUBPASS_EXTERNAL;
    dependencies[1].srcStageMask = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
    dependencies[1].srcAccessMask = VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;
    dependencies[1].dstStageMask = kStages;
    dependencies[1].dstAccessMask = VK_ACCESS_SHADER_READ_BIT | VK_ACCESS_TRANSFER_READ_BIT
            | VK_ACCESS_TRANSFER_WRITE_BIT | kAttachmentAccess;

    VkRenderPassCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_RENDER_PASS_CREATE_INFO;
    info.attachmentCount = 1;
    info.pAttachments = &attachment;
    info.subpassCount = 1;
    info.pSubpasses = &subpass;
    info.dependencyCount = std::uint32_t(dependencies.size());
    info.pDependencies = dependencies.data();
    return createObject(context, context.vk.createRenderPass, info, renderPass, error);
}

bool prepareGraph(const std::shared_ptr<const Context> &context, const VulkanRenderGraph &graph,
                  const VulkanGraphRenderer::Modules &modules,
                  const VulkanGraphRenderer::PrepareOptions &options, bool leavesOutFinalPass,
                  const Prepared *previous, std::shared_ptr<const Prepared> &prepared,
                  QString &error)
{
    if (!checkGraph(*context, graph, modules, options, error))
        return false;
    const auto made = std::make_shared<Prepared>();
    made->context = context;
    made->graph = graph;
    made->targetFormat = options.targetFormat;
    if (!createSampler(*context, false, false, 1, made->sourceSampler, error))
        return false;

    const QByteArray copyFragment(reinterpret_cast<const char *>(kCopyFragment),
                                  sizeof(kCopyFragment));
    PipelineMaker pipelines(context, options.cache, previous);
    for (int index = 0; index < graph.passes.size(); ++index) {
        const Pass &pass = graph.passes.at(index);
        PreparedPass &preparedPass = made->passes.emplace_back();
        PipelineSource source;
        source.vertex = modules.value(pass.vertexSpirvResource);
        source.fragment = modules.value(pass.fragmentSpirvResource);
        source.inputCount = int(pass.sampledInputs.size());
        source.format = pass.isFinalPass ? options.targetFormat : traitsOf(pass.format).format;
        source.framesPerSecond = options.framesPerSecond;
        if (!pipelines.make(source, preparedPass.pipeline, error)
            || !createSampler(*context, pass.linearFilter, pass.mipmap, pass.wrapMode,
                              preparedPass.sampler, error))
            return false;
        if (leavesOutFinalPass && index == int(graph.passes.size()) - 2
            && canLeaveOutFinalPass(graph)) {
            source.format = options.targetFormat;
            if (!pipelines.make(source, made->lastDeclaredIntoTarget, error))
                return false;
        }
        if (pass.isFeedbackReader) {
            source.fragment = copyFragment;
            source.inputCount = 1;
            if (!pipelines.make(source, preparedPass.seed, error))
                return false;
        }
        for (const VulkanRenderGraph::PushConstantParam &parameter : pass.params) {
            preparedPass.parameters.push_back(
                    {parameter.floatOffset, indexOf(parameter.id, made->parameterIds)});
        }
        if (!pass.constantBlackWhenZero.isEmpty())
            preparedPass.blackParameter = indexOf(pass.constantBlackWhenZero, made->parameterIds);
        preparedPass.label = pass.debugName.toUtf8();
    }
    prepared = made;
    return true;
}

} // namespace VulkanGraph
