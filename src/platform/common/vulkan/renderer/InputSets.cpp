#include "InputSets.h"

#include <algorithm>

namespace VulkanGraph {

namespace {

using Pass = VulkanRenderGraph::Pass;
using ResourceRef = VulkanRenderGraph::ResourceRef;

// Allocates and writes the sets of one graph.
class SetWriter
{
public:
    SetWriter(InputSets &sets, VkImageView source, const std::vector<char> &isBlack,
              const std::array<BlackImage, 2> &black)
        : m_sets(sets),
          m_images(*sets.images),
          m_prepared(*sets.images->prepared),
          m_source(source),
          m_isBlack(isBlack),
          m_black(black)
    {
    }

    bool createPool(QString &error)
    {
        std::uint32_t setCount = 0;
        std::uint32_t inputCount = 0;
        for (const Pass &pass : m_prepared.graph.passes) {
            const std::uint32_t seeds = pass.isFeedbackReader ? 1 : 0;
            setCount += 2 * (1 + seeds);
            inputCount += 2 * (std::uint32_t(pass.sampledInputs.size()) + seeds);
        }
        const VkDescriptorPoolSize size = {VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER,
                                           std::max(inputCount, std::uint32_t(1))};
        VkDescriptorPoolCreateInfo info = {};
        info.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO;
        info.maxSets = setCount;
        info.poolSizeCount = 1;
        info.pPoolSizes = &size;
        const Context &context = *m_prepared.context;
        return createObject(context, context.vk.createDescriptorPool, info, m_sets.pool, error);
    }

    bool writePass(int index, QString &error)
    {
        const Pass &pass = m_prepared.graph.passes.at(index);
        const PreparedPass &preparedPass = m_prepared.passes[std::size_t(index)];
        InputSets::PassSets &sets = m_sets.passes[std::size_t(index)];
        if (pass.sampledInputs.isEmpty())
            return true;
        const bool canSeed =
                preparedPass.seed && pass.sampledInputs.first().passIndex != ResourceRef::Feedback;
        for (std::size_t pingPong = 0; pingPong < 2; ++pingPong) {
            std::array<VkDescriptorImageInfo, VulkanRenderGraph::MaxSampledInputsPerPass> infos;
            std::uint32_t count = 0;
            for (const ResourceRef &input : pass.sampledInputs)
                infos[count++] = imageInfo(index, input, pingPong);
            if (!write(*preparedPass.pipeline, infos.data(), count, sets.inputs[pingPong], error))
                return false;
            if (!canSeed)
                continue;
            infos[0].sampler = m_prepared.sourceSampler.get(); // nearest
            if (!write(*preparedPass.seed, infos.data(), 1, sets.seed[pingPong], error))
                return false;
        }
        return true;
    }

private:
    // The image that a pass samples while feedback passes draw into their image `pingPong`.
    VkDescriptorImageInfo imageInfo(int reader, const ResourceRef &input,
                                    std::size_t pingPong) const
    {
        VkDescriptorImageInfo info = {};
        info.imageLayout = VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL;
        if (input.passIndex == ResourceRef::SourceImage) {
            info.sampler = m_prepared.sourceSampler.get();
            info.imageView = m_source;
            return info;
        }
        const bool isHistory = input.passIndex == ResourceRef::Feedback;
        const int sampled = isHistory ? reader : input.passIndex;
        const Pass &pass = m_prepared.graph.passes.at(sampled);
        info.sampler = m_prepared.passes[std::size_t(sampled)].sampler.get();
        if (m_isBlack[std::size_t(sampled)] != 0 && pass.shareConstantBlack) {
            info.imageView =
                    m_black[pass.constantBlackAlpha == 0.0F ? 0 : 1].image.sampledView.get();
        } else {
            info.imageView =
                    m_images.output(sampled, isHistory ? 1 - pingPong : pingPong).sampledView.get();
        }
        return info;
    }

    bool write(const PassPipeline &pipeline, const VkDescriptorImageInfo *infos,
               std::uint32_t count, VkDescriptorSet &set, QString &error)
    {
        const Context &context = *m_prepared.context;
        const VkDescriptorSetLayout layout = pipeline.setLayout.get();
        VkDescriptorSetAllocateInfo info = {};
        info.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO;
        info.descriptorPool = m_sets.pool.get();
        info.descriptorSetCount = 1;
        info.pSetLayouts = &layout;
        if (!isSuccess(context.vk.allocateDescriptorSets(context.device, &info, &set), error))
            return false;
        VkWriteDescriptorSet write = {};
        write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
        write.dstSet = set;
        write.descriptorCount = count;
        write.descriptorType = VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER;
        write.pImageInfo = infos;
        context.vk.updateDescriptorSets(context.device, 1, &write, 0, nullptr);
        return true;
    }

    InputSets &m_sets;
    const GraphImages &m_images;
    const Prepared &m_prepared;
    VkImageView m_source;
    const std::vector<char> &m_isBlack;
    const std::array<BlackImage, 2> &m_black;
};

} // namespace

bool InputSets::create(const std::shared_ptr<const GraphImages> &images, VkImageView source,
                       const std::vector<char> &isBlack, const std::array<BlackImage, 2> &black,
                       std::shared_ptr<const InputSets> &sets, QString &error)
{
    const auto created = std::make_shared<InputSets>();
    created->images = images;
    created->passes.resize(images->passes.size());
    SetWriter writer(*created, source, isBlack, black);
    if (!writer.createPool(error))
        return false;
    for (int index = 0; index <= images->targetPass(); ++index) {
        if (!writer.writePass(index, error))
            return false;
    }
    sets = created;
    return true;
}

} // namespace VulkanGraph
