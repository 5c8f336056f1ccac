#include "VulkanGraphRenderer.h"

#include "renderer/Formats.h"
#include "renderer/GraphImages.h"
#include "renderer/InputSets.h"
#include "renderer/PassPipeline.h"
#include "renderer/Recording.h"

#include <algorithm>
#include <array>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using namespace VulkanGraph;

template<typename Entry, typename Id>
auto findById(std::vector<Entry> &entries, Id id)
{
    return std::find_if(entries.begin(), entries.end(),
                        [id](const Entry &entry) { return entry.id == id; });
}

// What belongs to a target.
struct TargetObjects
{
    std::shared_ptr<const Context> context;
    std::array<RenderPass, 3> renderPasses; // by AttachmentContent
    Framebuffer framebuffer; // of any of them
};

bool createTargetObjects(const std::shared_ptr<const Context> &context,
                         const VulkanGraphRenderer::Target &target,
                         std::shared_ptr<const TargetObjects> &objects, QString &error)
{
    const auto created = std::make_shared<TargetObjects>();
    created->context = context;
    for (const AttachmentContent content :
         {AttachmentContent::Discarded, AttachmentContent::Cleared, AttachmentContent::Kept}) {
        const VkImageLayout layoutBefore = content == AttachmentContent::Kept
                ? target.layoutBefore
                : VK_IMAGE_LAYOUT_UNDEFINED;
        if (!createRenderPass(*context, target.format, content, layoutBefore, target.layoutAfter,
                              created->renderPasses[std::size_t(content)], error))
            return false;
    }
    VkFramebufferCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_FRAMEBUFFER_CREATE_INFO;
    info.renderPass = created->renderPasses[0].get();
    info.attachmentCount = 1;
    info.pAttachments = &target.view;
    info.width = std::uint32_t(target.size.width());
    info.height = std::uint32_t(target.size.height());
    info.layers = 1;
    if (!createObject(*context, context->vk.createFramebuffer, info, created->framebuffer, error))
        return false;
    objects = created;
    return true;
}

VkRect2D toVulkan(const QRect &rectangle)
{
    return {{rectangle.x(), rectangle.y()},
            {std::uint32_t(rectangle.width()), std::uint32_t(rectangle.height())}};
}

} // namespace

class VulkanGraphRenderer::State
{
public:
    State(std::shared_ptr<const Context> context, const Options &options)
        : m_context(std::move(context)),
          m_options(options),
          m_inFlight(std::size_t(options.framesInFlight))
    {
    }

    bool createBlack(QString &error)
    {
        return std::all_of(m_black.begin(), m_black.end(), [&](BlackImage &black) {
            return BlackImage::create(*m_context, black, error);
        });
    }

    const std::shared_ptr<const Context> &context() const
    {
        return m_context;
    }
    const Options &options() const
    {
        return m_options;
    }

    bool addSource(const Source &source, SourceId &id, QString &error);
    void removeSource(SourceId id);
    bool addTarget(const Target &target, TargetId &id, QString &error);
    void removeTarget(TargetId id);

    bool record(VkCommandBuffer commands, const std::shared_ptr<const Prepared> &prepared,
                const Frame &frame, QString &error);
    void resetHistories()
    {
        m_contents.hasHistory = false;
    }

    QList<PassState> passes() const;
    QList<std::optional<double>> milliseconds(int frameInFlight) const;
    Output output(int pass) const;
    qint64 memoryHeld() const;

private:
    struct KnownSource
    {
        SourceId id;
        Source source;
    };
    struct KnownTarget
    {
        TargetId id;
        Target target;
        std::shared_ptr<const TargetObjects> objects;
    };
    struct SourceSets
    {
        SourceId id;
        std::shared_ptr<const InputSets> sets;
    };
    // What a frame uses until it is done.
    struct InFlight
    {
        std::shared_ptr<const Prepared> prepared;
        std::shared_ptr<const InputSets> sets; // and its images
        std::shared_ptr<const TargetObjects> target;
        QueryPool timestamps;
        std::uint32_t timestampCapacity = 0;
        std::vector<PassKind> timedKinds; // empty: no timestamps
    };

    bool checkFrame(const Prepared *prepared, const Frame &frame, const KnownSource *&source,
                    const KnownTarget *&target, QRect &rectangle, QString &error);
    bool updateImages(const std::shared_ptr<const Prepared> &prepared, const ImageSizes &sizes,
                      std::shared_ptr<const GraphImages> &images, QString &error) const;
    bool createTimestamps(InFlight &inFlight, std::size_t passCount, QString &error) const;

    std::shared_ptr<const Context> m_context;
    Options m_options;
    std::array<BlackImage, 2> m_black; // by alpha
    bool m_isBlackCleared = false;

    std::uint32_t m_lastId = 0;
    std::vector<KnownSource> m_sources;
    std::vector<KnownTarget> m_targets;

    // What the last frame was drawn with.
    std::shared_ptr<const GraphImages> m_images;
    std::vector<SourceSets> m_sets; // for m_images and m_isBlack
    std::vector<char> m_isBlack; // by pass
    std::vector<char> m_nextIsBlack;
    GraphContents m_contents;
    std::vector<PassKind> m_kinds;
    SourceId m_lastSource = {};

    std::vector<InFlight> m_inFlight;
};

bool VulkanGraphRenderer::State::addSource(const Source &source, SourceId &id, QString &error)
{
    if (source.view == VK_NULL_HANDLE || source.size.isEmpty()) {
        error = u"the source is empty"_s;
        return false;
    }
    if (!checkApplicationFormat(*m_context, u"source"_s, source.format,
                                VK_FORMAT_FEATURE_SAMPLED_IMAGE_BIT, error)
        || !m_context->checkExtent(u"the source"_s, source.size, error))
        return false;
    id = SourceId(++m_lastId);
    m_sources.push_back({id, source});
    return true;
}

void VulkanGraphRenderer::State::removeSource(SourceId id)
{
    if (const auto found = findById(m_sources, id); found != m_sources.end())
        m_sources.erase(found);
    if (const auto found = findById(m_sets, id); found != m_sets.end())
        m_sets.erase(found);
}

bool VulkanGraphRenderer::State::addTarget(const Target &target, TargetId &id, QString &error)
{
    if (target.view == VK_NULL_HANDLE || target.size.isEmpty()) {
        error = u"the target is empty"_s;
        return false;
    }
    KnownTarget known = {{}, target, nullptr};
    if (!checkApplicationFormat(*m_context, u"target"_s, target.format,
                                VK_FORMAT_FEATURE_COLOR_ATTACHMENT_BIT, error)
        || !m_context->checkExtent(u"the target"_s, target.size, error)
        || !createTargetObjects(m_context, target, known.objects, error))
        return false;
    known.id = id = TargetId(++m_lastId);
    m_targets.push_back(known);
    return true;
}

void VulkanGraphRenderer::State::removeTarget(TargetId id)
{
    if (const auto found = findById(m_targets, id); found != m_targets.end())
        m_targets.erase(found);
}

// Sets what the frame's ids stand for, and its rectangle.
bool VulkanGraphRenderer::State::checkFrame(const Prepared *prepared, const Frame &frame,
                                            const KnownSource *&source, const KnownTarget *&target,
                                            QRect &rectangle, QString &error)
{
    const auto knownSource = findById(m_sources, frame.source);
    const auto knownTarget = findById(m_targets, frame.target);
    const char *problem = nullptr;
    if (prepared == nullptr || prepared->context != m_context)
        problem = "the graph was not prepared by this renderer";
    else if (frame.frameInFlight < 0 || frame.frameInFlight >= m_options.framesInFlight)
        problem = "there is no such frame in flight";
    else if (knownSource == m_sources.end())
        problem = "there is no such source";
    else if (knownTarget == m_targets.end())
        problem = "there is no such target";
    else if (knownTarget->target.format != prepared->targetFormat)
        problem = "the graph was prepared for targets of another format";
    else if (frame.parameters == nullptr && !prepared->parameterIds.isEmpty())
        problem = "there are no values of the parameters";
    else if (frame.isHdr && !isFloatFormat(prepared->targetFormat))
        problem = "HDR needs a target of a float format";
    if (problem == nullptr) {
        source = &*knownSource;
        target = &*knownTarget;
        const QRect whole({}, target->target.size);
        rectangle = frame.rectangle.isNull() ? whole : frame.rectangle;
        if (rectangle.isEmpty() || !whole.contains(rectangle))
            problem = "the rectangle does not lie within the target";
    }
    if (problem == nullptr)
        return true;
    error = QLatin1StringView(problem);
    return false;
}

bool VulkanGraphRenderer::State::updateImages(const std::shared_ptr<const Prepared> &prepared,
                                              const ImageSizes &sizes,
                                              std::shared_ptr<const GraphImages> &images,
                                              QString &error) const
{
    images = m_images;
    return (images && images->prepared == prepared && images->sizes == sizes)
            || GraphImages::create(prepared, sizes, m_options.keepsOutputs, images, error);
}

bool VulkanGraphRenderer::State::createTimestamps(InFlight &inFlight, std::size_t passCount,
                                                  QString &error) const
{
    const auto capacity = std::uint32_t(passCount) + 1;
    if (m_context->timestampMask == 0 || inFlight.timestampCapacity >= capacity)
        return true;
    VkQueryPoolCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_QUERY_POOL_CREATE_INFO;
    info.queryType = VK_QUERY_TYPE_TIMESTAMP;
    info.queryCount = capacity;
    if (!createObject(*m_context, m_context->vk.createQueryPool, info, inFlight.timestamps, error))
        return false;
    inFlight.timestampCapacity = capacity;
    return true;
}

bool VulkanGraphRenderer::State::record(VkCommandBuffer commands,
                                        const std::shared_ptr<const Prepared> &prepared,
                                        const Frame &frame, QString &error)
{
    const KnownSource *source = nullptr;
    const KnownTarget *target = nullptr;
    QRect rectangle;
    if (!checkFrame(prepared.get(), frame, source, target, rectangle, error))
        return false;

    // Whatever can fail comes first, and into variables of its own.
    std::shared_ptr<const GraphImages> images;
    const ImageSizes sizes = {source->source.size, rectangle.size(),
                              !frame.isHdr && prepared->lastDeclaredIntoTarget != nullptr};
    if (!updateImages(prepared, sizes, images, error))
        return false;
    const std::size_t passCount = prepared->passes.size();
    m_nextIsBlack.resize(passCount);
    for (std::size_t i = 0; i < passCount; ++i) {
        const int parameter = prepared->passes[i].blackParameter;
        m_nextIsBlack[i] = parameter >= 0 && frame.parameters[parameter] == 0.0F ? 1 : 0;
    }
    const bool hasNewImages = images != m_images;
    const bool hasNewSets = hasNewImages || m_nextIsBlack != m_isBlack;
    std::shared_ptr<const InputSets> sets;
    if (const auto known = findById(m_sets, frame.source); !hasNewSets && known != m_sets.end())
        sets = known->sets;
    else if (!InputSets::create(images, source->source.view, m_nextIsBlack, m_black, sets, error))
        return false;
    InFlight &inFlight = m_inFlight[std::size_t(frame.frameInFlight)];
    if (frame.hasTimestamps && !createTimestamps(inFlight, passCount, error))
        return false;

    if (hasNewImages) {
        m_images = images;
        m_contents = {};
        m_contents.outputs.resize(passCount);
        m_kinds.assign(passCount, PassKind::LeftOut);
    }
    if (hasNewSets) {
        m_isBlack = m_nextIsBlack;
        m_sets.clear();
    }
    if (findById(m_sets, frame.source) == m_sets.end())
        m_sets.push_back({frame.source, sets});
    if (frame.hasNewSource || frame.source != m_lastSource)
        m_contents.sourceVersion = ++m_contents.lastVersion;
    m_lastSource = frame.source;
    inFlight.prepared = prepared;
    inFlight.sets = sets;
    inFlight.target = target->objects;

    if (!m_isBlackCleared) {
        recordClear(*m_context, commands, m_black[0].image, 0.0F);
        recordClear(*m_context, commands, m_black[1].image, 1.0F);
        m_isBlackCleared = true;
    }
    const QRect whole({}, target->target.size);
    const AttachmentContent content = frame.keepsOutside ? AttachmentContent::Kept
            : rectangle == whole                         ? AttachmentContent::Discarded
                                                         : AttachmentContent::Cleared;
    FrameTarget frameTarget;
    frameTarget.renderPass = target->objects->renderPasses[std::size_t(content)].get();
    frameTarget.framebuffer = target->objects->framebuffer.get();
    frameTarget.area = toVulkan(content == AttachmentContent::Kept ? rectangle : whole);
    frameTarget.rectangle = toVulkan(rectangle);
    const FrameResources resources = {
            *m_images,   *sets,
            m_isBlack,   m_options.keepsOutputs,
            frameTarget, frame.hasTimestamps ? inFlight.timestamps.get() : VK_NULL_HANDLE,
    };
    recordFrame(commands, resources, frame, m_contents, m_kinds);
    if (frame.hasTimestamps)
        inFlight.timedKinds = m_kinds;
    else
        inFlight.timedKinds.clear();
    return true;
}

QList<VulkanGraphRenderer::PassState> VulkanGraphRenderer::State::passes() const
{
    QList<PassState> passes;
    for (std::size_t i = 0; i < m_kinds.size(); ++i) {
        const QSize size = m_images->passSizes.at(qsizetype(i));
        const VulkanRenderGraph::Pass &pass = m_images->prepared->graph.passes.at(qsizetype(i));
        passes.append({m_kinds[i], size,
                       qint64(size.width()) * size.height() * traitsOf(pass.format).texelBytes});
    }
    return passes;
}

// A drawn pass lasts from the previous timestamp to its own.
QList<std::optional<double>> VulkanGraphRenderer::State::milliseconds(int frameInFlight) const
{
    if (frameInFlight < 0 || frameInFlight >= m_options.framesInFlight)
        return {};
    const InFlight &inFlight = m_inFlight[std::size_t(frameInFlight)];
    if (inFlight.timedKinds.empty() || inFlight.timestamps.get() == VK_NULL_HANDLE)
        return {};
    const auto drawn = std::size_t(
            std::count(inFlight.timedKinds.cbegin(), inFlight.timedKinds.cend(), PassKind::Drawn));
    std::vector<std::uint64_t> times(drawn + 1);
    if (m_context->vk.getQueryPoolResults(m_context->device, inFlight.timestamps.get(), 0,
                                          std::uint32_t(times.size()),
                                          times.size() * sizeof(times[0]), times.data(),
                                          sizeof(times[0]), VK_QUERY_RESULT_64_BIT)
        != VK_SUCCESS)
        return {};
    QList<std::optional<double>> milliseconds;
    std::size_t time = 0;
    for (const PassKind kind : inFlight.timedKinds) {
        if (kind != PassKind::Drawn) {
            milliseconds.append(std::nullopt);
            continue;
        }
        const std::uint64_t ticks = (times[time + 1] - times[time]) & m_context->timestampMask;
        milliseconds.append(double(ticks) * double(m_context->limits.timestampPeriod) * 1e-6);
        ++time;
    }
    return milliseconds;
}

VulkanGraphRenderer::Output VulkanGraphRenderer::State::output(int pass) const
{
    if (!m_options.keepsOutputs || !m_images || pass < 0 || pass >= m_images->targetPass()
        || m_kinds[std::size_t(pass)] == PassKind::ConstantBlack)
        return {};
    const PassImage &image = m_images->output(pass, m_contents.pingPong);
    return {image.image.get(), image.attachmentView.get(),
            traitsOf(m_images->prepared->graph.passes.at(pass).format).format, image.size};
}

qint64 VulkanGraphRenderer::State::memoryHeld() const
{
    return m_black[0].bytes + m_black[1].bytes + (m_images ? m_images->bytes : 0);
}

const QStringList &VulkanGraphRenderer::PreparedGraph::parameterIds() const
{
    static const QStringList kNone;
    return m_prepared ? m_prepared->parameterIds : kNone;
}

int VulkanGraphRenderer::PreparedGraph::parameterIndex(QStringView id) const
{
    return int(parameterIds().indexOf(id));
}

const VulkanRenderGraph &VulkanGraphRenderer::PreparedGraph::graph() const
{
    static const VulkanRenderGraph kNone;
    return m_prepared ? m_prepared->graph : kNone;
}

bool VulkanGraphRenderer::create(const Device &device, const Options &options,
                                 std::unique_ptr<VulkanGraphRenderer> &renderer, QString &error)
{
    if (options.framesInFlight < 1 || options.framesInFlight > MaxFramesInFlight) {
        error = "there can be 1 to %1 frames in flight"_L1.arg(QString::number(MaxFramesInFlight));
        return false;
    }
    std::shared_ptr<const Context> context;
    if (!Context::create(device, context, error))
        return false;
    auto state = std::make_unique<State>(context, options);
    if (!state->createBlack(error))
        return false;
    renderer.reset(new VulkanGraphRenderer(std::move(state)));
    return true;
}

VulkanGraphRenderer::VulkanGraphRenderer(std::unique_ptr<State> state) : m_state(std::move(state))
{
}

VulkanGraphRenderer::~VulkanGraphRenderer() = default;

int VulkanGraphRenderer::maxExtent() const
{
    return m_state->context()->maxExtent();
}

bool VulkanGraphRenderer::prepare(const VulkanRenderGraph &graph, const Modules &modules,
                                  const PrepareOptions &options, PreparedGraph &prepared,
                                  QString &error, const PreparedGraph *previous) const
{
    std::shared_ptr<const Prepared> made;
    if (!prepareGraph(m_state->context(), graph, modules, options, !m_state->options().keepsOutputs,
                      previous == nullptr ? nullptr : previous->m_prepared.get(), made, error))
        return false;
    prepared.m_prepared = made;
    return true;
}

bool VulkanGraphRenderer::addSource(const Source &source, SourceId &id, QString &error)
{
    return m_state->addSource(source, id, error);
}

void VulkanGraphRenderer::removeSource(SourceId id)
{
    m_state->removeSource(id);
}

bool VulkanGraphRenderer::addTarget(const Target &target, TargetId &id, QString &error)
{
    return m_state->addTarget(target, id, error);
}

void VulkanGraphRenderer::removeTarget(TargetId id)
{
    m_state->removeTarget(id);
}

bool VulkanGraphRenderer::record(VkCommandBuffer commands, const PreparedGraph &prepared,
                                 const Frame &frame, QString &error)
{
    return m_state->record(commands, prepared.m_prepared, frame, error);
}

void VulkanGraphRenderer::resetHistories()
{
    m_state->resetHistories();
}

QList<VulkanGraphRenderer::PassState> VulkanGraphRenderer::passes() const
{
    return m_state->passes();
}

QList<std::optional<double>> VulkanGraphRenderer::milliseconds(int frameInFlight) const
{
    return m_state->milliseconds(frameInFlight);
}

VulkanGraphRenderer::Output VulkanGraphRenderer::output(int pass) const
{
    return m_state->output(pass);
}

qint64 VulkanGraphRenderer::memoryHeld() const
{
    return m_state->memoryHeld();
}
