#include "PresetCompiler.h"

#include "ComponentSource.h"
#include "Diagnostics.h"

#include <QFile>
#include <QHash>
#include <QSet>
#include <QStringList>

#include <algorithm>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using FirstPartyPresetSource::ParamDecl;
using FirstPartyPresetSource::PassDecl;
using FirstPartyPresetSource::PresetDecl;
using Pass = VulkanRenderGraph::Pass;
using ResourceRef = VulkanRenderGraph::ResourceRef;

VulkanRenderGraph::Format formatOf(const QString &component)
{
    // The beam limiter averages the whole picture: half floats would lose the small differences.
    return component.startsWith("crt-abl"_L1) ? VulkanRenderGraph::Format::RGBA32F
                                              : VulkanRenderGraph::Format::RGBA16F;
}

VulkanRenderGraph::ScaleSource scaleSourceOf(std::int32_t scaleType)
{
    switch (scaleType) {
    case FirstPartyPresetSource::kScaleViewport:
        return VulkanRenderGraph::ScaleSource::Viewport;
    case FirstPartyPresetSource::kScaleAbsolute:
        return VulkanRenderGraph::ScaleSource::Absolute;
    default:
        return VulkanRenderGraph::ScaleSource::Source;
    }
}

Pass passFor(const QString &component)
{
    Pass pass;
    pass.fragmentSpirvResource = ":/shaders/vulkan/spirv/%1.frag.spv"_L1.arg(component);
    pass.vertexSpirvResource = u":/shaders/vulkan/spirv/fullscreen.vert.spv"_s;
    pass.debugName = component;
    pass.format = formatOf(component);
    return pass;
}

Pass declaredPass(const PassDecl &decl)
{
    Pass pass = passFor(QString::fromLatin1(decl.component));
    pass.scaleSource = scaleSourceOf(decl.scaleType);
    pass.scaleX = decl.scaleX;
    pass.scaleY = decl.scaleY;
    pass.absoluteWidth = decl.absoluteWidth;
    pass.absoluteHeight = decl.absoluteHeight;
    pass.linearFilter = decl.linearFilter;
    pass.mipmap = decl.mipmap;
    pass.cacheByParameters = decl.cacheByParameters;
    pass.constantBlackWhenZero = QString::fromLatin1(decl.constantBlackWhenZero);
    pass.constantBlackAlpha = decl.constantBlackAlpha;
    pass.shareConstantBlack = decl.shareConstantBlack;
    pass.wrapMode = decl.wrapMode;
    return pass;
}

// Draws the output of the last declared pass, in SDR or HDR, into the presented image.
Pass hdrColorBoostPass(int lastDeclaredIndex)
{
    Pass pass = passFor(u"hdr-color-boost"_s);
    pass.scaleSource = VulkanRenderGraph::ScaleSource::Viewport;
    pass.isFinalPass = true;
    pass.sampledInputs = {ResourceRef{lastDeclaredIndex}};
    return pass;
}

QStringList ownParameterIds(const PassDecl &decl)
{
    QStringList ids;
    for (const ParamDecl &param : paramsOf(decl))
        ids.append(QString::fromLatin1(param.id));
    ids.removeDuplicates();
    return ids;
}

QSet<QString> boundParameterIds(const PresetDecl &decl)
{
    QSet<QString> ids;
    for (const PassDecl &pass : passesOf(decl)) {
        for (const ParamDecl &param : paramsOf(pass))
            ids.insert(QString::fromLatin1(param.id));
    }
    return ids;
}

bool contains(const QList<ResourceRef> &inputs, int passIndex)
{
    return std::any_of(inputs.cbegin(), inputs.cend(), [passIndex](const ResourceRef &input) {
        return input.passIndex == passIndex;
    });
}

// Compiles one preset.
class PresetCompilation
{
public:
    PresetCompilation(const QString &shadersDir, const PresetDecl &decl, VulkanRenderGraph &graph)
        : m_shadersDir(shadersDir),
          m_decl(decl),
          m_graph(graph),
          m_boundIds(boundParameterIds(decl))
    {
    }

    bool run()
    {
        m_graph = VulkanRenderGraph();
        m_graph.presetQrcPath = ":/shaders/%1.%2"_L1.arg(
                QString::fromLatin1(m_decl.name), QString::fromLatin1(m_decl.presetExtension));
        if (m_decl.feedbackPassIndex >= 0 && m_decl.feedbackPassIndex < m_decl.passCount)
            m_graph.feedbackPassIndex = m_decl.feedbackPassIndex;

        int index = 0;
        for (const PassDecl &passDecl : passesOf(m_decl)) {
            if (!compilePass(index++, passDecl))
                return false;
        }
        m_graph.passes.append(hdrColorBoostPass(m_decl.passCount - 1));

        if (!m_graph.isValid()) {
            report(Diagnostic::Error, "preset '%s' produced an invalid VulkanRenderGraph",
                   m_decl.name);
            return false;
        }
        return true;
    }

private:
    bool compilePass(int index, const PassDecl &decl)
    {
        Pass pass = declaredPass(decl);
        if (!resolveExtent(decl, pass))
            return false;
        addDefaultInputs(index, decl, pass);

        const QString slangPath = slangComponentPath(m_shadersDir, pass.debugName);
        const bool isSlang = QFile::exists(slangPath);
        if (!isSlang && !QFile::exists(fragComponentPath(m_shadersDir, pass.debugName))) {
            report(Diagnostic::Error,
                   "preset '%s' pass %d ('%s') has no shaders/vulkan/components source",
                   m_decl.name, index, decl.component);
            return false;
        }

        if (isSlang && !addAliasInputs(index, decl, slangPath, pass))
            return false;
        if (pass.sampledInputs.size() > VulkanRenderGraph::MaxSampledInputsPerPass) {
            report(Diagnostic::Error, "preset '%s' pass %d ('%s') exceeds MaxSampledInputsPerPass",
                   m_decl.name, index, decl.component);
            return false;
        }

        if (index == m_decl.passCount - 1)
            m_graph.finalRealPassRespondsToHdr = isSlang && sourceReadsHdrOutputActive(slangPath);

        if (!assignSlots(index, isSlang ? slotParameterIds(slangPath) : ownParameterIds(decl),
                         pass))
            return false;
        if (pass.params.size() > VulkanRenderGraph::MaxParamFloatsPerPass) {
            report(Diagnostic::Error, "preset '%s' pass %d ('%s') exceeds MaxParamFloatsPerPass",
                   m_decl.name, index, decl.component);
            return false;
        }
        if (isSlang && !readsOnlyDeclaredSlots(index, slangPath, pass))
            return false;

        // Published last, so that no pass finds its own alias.
        const QString alias = QString::fromLatin1(decl.extentAlias);
        if (!alias.isEmpty())
            m_passOfAlias.insert(alias, index);
        m_graph.passes.append(pass);
        return true;
    }

    bool resolveExtent(const PassDecl &decl, Pass &pass) const
    {
        const QString alias = QString::fromLatin1(decl.scaleInputAlias);
        if (alias.isEmpty())
            return true;
        const auto found = m_passOfAlias.constFind(alias);
        if (found == m_passOfAlias.cend()) {
            report(Diagnostic::Error, "unresolved extent alias %s", decl.scaleInputAlias);
            return false;
        }
        pass.scaleInputPassIndex = *found;
        return true;
    }

    // The previous pass's picture, and the pass's own history if it is a feedback pass.
    void addDefaultInputs(int index, const PassDecl &decl, Pass &pass)
    {
        if (!decl.cacheByParameters)
            pass.sampledInputs.append(
                    ResourceRef{index == 0 ? ResourceRef::SourceImage : index - 1});

        if (decl.feedback || index == m_graph.feedbackPassIndex) {
            pass.isFeedbackTarget = true;
            pass.isFeedbackReader = true;
            if (m_graph.feedbackPassIndex < 0)
                m_graph.feedbackPassIndex = index;
            pass.sampledInputs.append(ResourceRef{ResourceRef::Feedback});
        }
    }

    bool addAliasInputs(int index, const PassDecl &decl, const QString &path, Pass &pass) const
    {
        const QStringList aliases = declaredAliasInputs(path);
        for (const QString &alias : aliases) {
            const auto found = m_passOfAlias.constFind(alias);
            if (found == m_passOfAlias.cend()) {
                report(Diagnostic::Error,
                       "preset '%s' pass %d ('%s') declares //! input %s but no earlier pass "
                       "carries that alias (%s)",
                       m_decl.name, index, decl.component, qPrintable(alias), qPrintable(path));
                return false;
            }
            if (!contains(pass.sampledInputs, *found))
                pass.sampledInputs.append(ResourceRef{*found});
        }
        return true;
    }

    // A parameter's slot is its rank among the pass's sorted ids, so that a shader's author can
    // derive it from the directives alone.
    bool assignSlots(int index, QStringList ids, Pass &pass) const
    {
        ids.sort();
        for (const QString &id : std::as_const(ids)) {
            if (!m_boundIds.contains(id)) {
                report(Diagnostic::Error, "%s pass %d declares parameter '%s' without metadata",
                       m_decl.name, index, qPrintable(id));
                return false;
            }
            pass.params.append({id, static_cast<unsigned int>(pass.params.size())});
        }
        return true;
    }

    bool readsOnlyDeclaredSlots(int index, const QString &path, const Pass &pass) const
    {
        // The smallest, since the set's order differs from run to run.
        std::optional<int> undeclared;
        const QSet<int> usedSlots = usedParamSlotIndices(path);
        for (const int slot : usedSlots) {
            if (slot >= pass.params.size())
                undeclared = std::min(slot, undeclared.value_or(slot));
        }
        if (!undeclared)
            return true;
        report(Diagnostic::Error,
               "preset '%s' pass %d: code reads pc.params[%d] but its own //! param directives "
               "only declare %d slot(s) (%s)",
               m_decl.name, index, *undeclared, static_cast<int>(pass.params.size()),
               qPrintable(path));
        return false;
    }

    const QString &m_shadersDir;
    const PresetDecl &m_decl;
    VulkanRenderGraph &m_graph;
    const QSet<QString> m_boundIds; // by any pass of the preset
    QHash<QString, int> m_passOfAlias; // of the passes accepted so far; the latest publisher wins
};

} // namespace

QStringList slotParameterIds(const QString &slangPath)
{
    // The renderer sets this parameter itself. It takes no push-constant slot and is not declared.
    constexpr auto kExemptParameterId = "mask_hdr_ready"_L1;
    QStringList ids = declaredParameterIds(slangPath);
    ids.removeOne(kExemptParameterId);
    return ids;
}

bool compilePreset(const QString &shadersDir, const PresetDecl &decl, VulkanRenderGraph &graph)
{
    return PresetCompilation(shadersDir, decl, graph).run();
}
