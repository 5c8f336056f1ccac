// Compares compilePreset() with a plain statement of its rules, for declarations and component
// files that are made from the input.
#include "../GraphText.h"
#include "Fuzz.h"
#include "PlainGraph.h"
#include "PlainSource.h"

#include <PresetCompiler.h>

#include <QDir>

#include <array>
#include <map>
#include <optional>

namespace {

using namespace FirstPartyPresetSource;
using Graph = VulkanRenderGraph;

constexpr std::array kComponents = {"a",        "b",       "crt-abl", "crt-ablx",
                                    "xcrt-abl", "CRT-ABL", "%1",      "\xE9"};
// More than the greatest number of slots, and not in order.
constexpr std::array kNames = {"",   "B",   "a",  "A",  "b",  "mask_hdr_ready",
                               "p9", "p10", "p1", "_x", "z",  "Z",
                               "p2", "p3",  "p4", "p5", "p6", "p7",
                               "p8", "q",   "r",  "s",  "t",  "u"};
constexpr int kMostPasses = 12;
constexpr int kMostParams = 20;

// Whether <component>.slang and .frag exist, and the former's text and its bytes on disk.
struct Component
{
    bool isSlang = false;
    bool isFrag = false;
    QByteArray text;
    QByteArray onDisk;
};

// The input of one run. The records point into it.
struct Input
{
    std::map<QByteArray, Component> components;
    std::array<std::array<ParamDecl, kMostParams>, kMostPasses> params;
    std::array<PassDecl, kMostPasses> passes;
    PresetDecl preset{.name = "preset", .passes = nullptr, .passCount = 0};
};

template<std::size_t N>
const char *oneOf(const std::array<const char *, N> &texts, Bytes &bytes)
{
    return texts.at(static_cast<std::size_t>(bytes.below(static_cast<int>(N))));
}

const char *aliasFrom(Bytes &bytes)
{
    return kNames.at(static_cast<std::size_t>(bytes.below(5)));
}

QByteArray sourceFrom(Bytes &bytes)
{
    constexpr std::array kTexts = {"pc.hdrOutputActive\n", "/*", "*/", "\n"};
    QByteArray text;
    for (int count = bytes.below(24); count > 0; --count) {
        const int kind = bytes.below(10);
        switch (kind) {
        case 0:
            text += QByteArray("//! input ") + aliasFrom(bytes) + '\n';
            break;
        case 1:
        case 2:
            text += QByteArray("//! param ") + oneOf(kNames, bytes) + '\n';
            break;
        case 3: // as many as there are names, or one less
            for (auto i = static_cast<std::size_t>(bytes.below(10)); i < kNames.size(); ++i)
                text += QByteArray("\n//! param ") + kNames.at(i) + '\n';
            break;
        case 4:
            text += "pc.params[" + QByteArray::number(bytes.below(18)) + "]\n";
            break;
        case 9:
            text += bytes.take(bytes.below(16));
            break;
        default:
            text += kTexts.at(static_cast<std::size_t>(kind - 5));
            break;
        }
    }
    return text;
}

void fill(Input &input, Bytes &bytes)
{
    for (const char *name : kComponents) {
        const int files = bytes.below(8); // mostly a .slang
        input.components[name] = {
                files != 0 && files != 1, files == 1 || files == 2, sourceFrom(bytes), {}};
        input.components[name].onDisk = input.components[name].text;
    }
    input.preset.passes = input.passes.data();
    input.preset.passCount = bytes.below(kMostPasses + 2) - 1;
    input.preset.feedbackPassIndex = bytes.flag() ? -1 : bytes.below(kMostPasses + 4) - 2;
    input.preset.presetExtension = bytes.flag() ? "glsl" : "glslp";
    for (int i = 0; i < input.preset.passCount; ++i) {
        auto &params = input.params.at(static_cast<std::size_t>(i));
        PassDecl &pass = input.passes.at(static_cast<std::size_t>(i));
        pass.component = oneOf(kComponents, bytes);
        pass.extentAlias = aliasFrom(bytes);
        pass.scaleInputAlias = bytes.below(4) == 0 ? aliasFrom(bytes) : "";
        pass.scaleType = bytes.below(5) - 1;
        pass.scaleX = bytes.number();
        pass.scaleY = bytes.number();
        pass.absoluteWidth = bytes.byte();
        pass.absoluteHeight = bytes.byte();
        pass.wrapMode = bytes.below(3);
        const int flags = bytes.byte();
        pass.linearFilter = (flags & 1) != 0;
        pass.mipmap = (flags & 2) != 0;
        pass.shareConstantBlack = (flags & 12) == 12;
        pass.feedback = (flags & 48) == 48;
        pass.cacheByParameters = (flags & 192) == 192;
        pass.constantBlackWhenZero = bytes.below(6) == 0 ? oneOf(kNames, bytes) : "";
        pass.constantBlackAlpha = bytes.below(8) == 0 ? bytes.number() : 1.0F;
        pass.paramCount = bytes.below(kMostParams + 1);
        const int first = bytes.byte();
        for (int k = 0; k < pass.paramCount; ++k)
            params.at(static_cast<std::size_t>(k)) = {
                    kNames.at(static_cast<std::size_t>(first + k) % kNames.size()), "", 0, 0, 1, 1};
        pass.params = pass.paramCount > 0 ? params.data() : nullptr;
    }
    Component &component = input.components[oneOf(kComponents, bytes)];
    component.onDisk = acrossBuffers(component.text, bytes.byte());
}

// The rules; the message is empty when the preset compiles.
class PlainCompiler
{
public:
    explicit PlainCompiler(const Input &input) : m_input(input) { }

    Graph graph;

    QByteArray message()
    {
        const PresetDecl &preset = m_input.preset;
        graph.presetQrcPath =
                QStringLiteral(":/shaders/preset.") + QLatin1String(preset.presetExtension);
        const int declared = preset.feedbackPassIndex;
        graph.feedbackPassIndex = declared >= 0 && declared < preset.passCount ? declared : -1;
        for (int i = 0; i < preset.passCount; ++i) {
            const QByteArray problem = addPass(i);
            if (!problem.isEmpty())
                return "render-graph-compile: " + problem + '\n';
        }
        Graph::Pass boost = newPass("hdr-color-boost");
        boost.scaleSource = Graph::ScaleSource::Viewport;
        boost.linearFilter = true;
        boost.isFinalPass = true;
        boost.sampledInputs = {{preset.passCount - 1}};
        graph.passes.append(boost);
        if (!PlainGraph::keepsTheRules(graph))
            return "render-graph-compile: preset 'preset' produced an invalid VulkanRenderGraph\n";
        return {};
    }

private:
    static Graph::Pass newPass(const char *component)
    {
        Graph::Pass pass;
        pass.debugName = QString::fromLatin1(component);
        pass.fragmentSpirvResource = QStringLiteral(":/shaders/vulkan/spirv/") + pass.debugName
                + QStringLiteral(".frag.spv");
        pass.vertexSpirvResource = QStringLiteral(":/shaders/vulkan/spirv/fullscreen.vert.spv");
        pass.format = QByteArray(component).left(7) == "crt-abl" ? Graph::Format::RGBA32F
                                                                 : Graph::Format::RGBA16F;
        return pass;
    }

    bool isBound(const QString &id) const
    {
        for (int i = 0; i < m_input.preset.passCount; ++i) {
            const PassDecl &pass = m_input.preset.passes[i];
            for (int k = 0; k < pass.paramCount; ++k) {
                if (id == QString::fromLatin1(pass.params[k].id))
                    return true;
            }
        }
        return false;
    }

    std::optional<int> publisher(const QString &alias, int before) const
    {
        std::optional<int> found;
        for (int i = 0; i < before; ++i) {
            if (alias == QString::fromLatin1(m_input.preset.passes[i].extentAlias))
                found = i;
        }
        return found;
    }

    QByteArray addPass(int i)
    {
        const PassDecl &decl = m_input.preset.passes[i];
        const Component &component = m_input.components.at(decl.component);
        const QByteArray where = "preset 'preset' pass " + QByteArray::number(i);
        const QByteArray named = where + " ('" + decl.component + "') ";
        const QByteArray path = (fuzzDirectory() + QStringLiteral("/vulkan/components/")
                                 + QString::fromLatin1(decl.component) + QStringLiteral(".slang"))
                                        .toUtf8();

        Graph::Pass pass = newPass(decl.component);
        if (decl.scaleType == 1)
            pass.scaleSource = Graph::ScaleSource::Viewport;
        if (decl.scaleType == 2)
            pass.scaleSource = Graph::ScaleSource::Absolute;
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

        if (*decl.scaleInputAlias != '\0') {
            const std::optional<int> from = publisher(QString::fromLatin1(decl.scaleInputAlias), i);
            if (!from)
                return QByteArray("unresolved extent alias ") + decl.scaleInputAlias;
            pass.scaleInputPassIndex = *from;
        }
        if (!decl.cacheByParameters)
            pass.sampledInputs.append(VulkanRenderGraph::ResourceRef{i > 0 ? i - 1 : -2});
        const int declared = m_input.preset.feedbackPassIndex;
        if (decl.feedback || i == declared) {
            pass.isFeedbackTarget = true;
            pass.isFeedbackReader = true;
            if (graph.feedbackPassIndex < 0)
                graph.feedbackPassIndex = i;
            pass.sampledInputs.append(VulkanRenderGraph::ResourceRef{-1});
        }

        if (!component.isSlang && !component.isFrag)
            return named + "has no shaders/vulkan/components source";
        QStringList ids;
        if (component.isSlang) {
            for (const QString &alias : PlainSource::directives(component.text, "input")) {
                const std::optional<int> from = publisher(alias, i);
                if (!from)
                    return named + "declares //! input " + alias.toUtf8()
                            + " but no earlier pass carries that alias (" + path + ')';
                bool isThere = false;
                for (const Graph::ResourceRef &input : std::as_const(pass.sampledInputs))
                    isThere = isThere || input.passIndex == *from;
                if (!isThere)
                    pass.sampledInputs.append(VulkanRenderGraph::ResourceRef{*from});
            }
            ids = PlainSource::directives(component.text, "param");
            ids.removeAll(QStringLiteral("mask_hdr_ready"));
        } else {
            for (int k = 0; k < decl.paramCount; ++k) {
                const QString id = QString::fromLatin1(decl.params[k].id);
                if (!ids.contains(id))
                    ids.append(id);
            }
        }
        if (pass.sampledInputs.size() > 8)
            return named + "exceeds MaxSampledInputsPerPass";
        if (i == m_input.preset.passCount - 1)
            graph.finalRealPassRespondsToHdr = component.isSlang
                    && PlainSource::readsField(component.text, {QStringLiteral("hdrOutputActive")});

        std::sort(ids.begin(), ids.end());
        for (const QString &id : std::as_const(ids)) {
            if (!isBound(id))
                return "preset pass " + QByteArray::number(i) + " declares parameter '"
                        + id.toUtf8() + "' without metadata";
            pass.params.append({id, static_cast<unsigned>(pass.params.size())});
        }
        if (pass.params.size() > 15)
            return named + "exceeds MaxParamFloatsPerPass";
        if (component.isSlang) {
            for (const int slot : PlainSource::usedSlots(component.text)) { // from the smallest
                if (slot >= pass.params.size())
                    return where + ": code reads pc.params[" + QByteArray::number(slot)
                            + "] but its own //! param directives only declare "
                            + QByteArray::number(pass.params.size()) + " slot(s) (" + path + ')';
            }
        }
        graph.passes.append(pass);
        return {};
    }

    const Input &m_input;
};

void place(const QString &path, bool isThere, const QByteArray &content)
{
    if (isThere)
        putFile(path, content);
    else
        removeFile(path);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Bytes bytes(data, size);
    Input input{};
    fill(input, bytes);

    static const QString directory = fuzzDirectory() + QStringLiteral("/vulkan/components/");
    QDir().mkpath(directory);
    QByteArray files;
    for (const auto &[name, component] : input.components) {
        if (!PlainText::isWellDefined(component.onDisk))
            return 0;
        const QString stem = directory + QString::fromLatin1(name);
        place(stem + QStringLiteral(".slang"), component.isSlang, component.onDisk);
        place(stem + QStringLiteral(".frag"), component.isFrag, "//! param none\n//! input none\n");
        if (component.isSlang)
            files += name + ":\n" + component.text + '\n';
    }

    PlainCompiler rule(input);
    const QByteArray message = rule.message();
    Graph graph;
    startCapture();
    const bool isCompiled = compilePreset(fuzzDirectory(), input.preset, graph);
    const Printed printed = endCapture();
    const QByteArray record = graphText(rule.graph) + files;
    expectSame("the result", record,
               QByteArray::number(isCompiled ? 1 : 0) + ' ' + printed.out + printed.err,
               (message.isEmpty() ? "1 " : "0 ") + message);
    expectSame("the graph", record, graphText(graph), graphText(rule.graph));
    return 0;
}
