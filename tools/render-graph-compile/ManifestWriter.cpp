#include "ManifestWriter.h"

#include <QFile>
#include <QStringList>
#include <QTextStream>

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Pass = VulkanRenderGraph::Pass;

constexpr auto kPrologue = R"(// GENERATED FILE -- do not edit by hand.
//
// Produced by tools/render-graph-compile from the hand-authored literal preset data in
// tools/render-graph-compile/FirstPartyPresets, at build time -- running the same
// transform logic VulkanRenderGraphCompiler::compile() used to run at runtime (see main's
// compilePreset()). Included only by src/platform/common/vulkan/VulkanRenderGraphCatalog. See
// docs/vulkan-shader-render-graph-design.md.
#pragma once

namespace RenderGraphManifestData {

struct ParamEntry {
  const char* id;
  unsigned int floatOffset;
};

// Per-preset UI parameter metadata (id/description/defaultValue/min/max/step from the
// authored #pragma-parameter dictionary; initialValue = the preset's own tuned .glslp
// value) -- the runtime source for OpenGLShaderPipeline::ShaderData::parameters now that
// Vulkan-only presets ship no .glslp text to parse.
struct PresetParamEntry {
  const char* id;
  const char* description;
  float initialValue;
  float defaultValue;
  float min;
  float max;
  float step;
};

struct PassEntry {
  const char* fragmentSpirvResource;
  const char* vertexSpirvResource;
  const char* debugName;
  int format;         // VulkanRenderGraph::Format
  int scaleSource;    // VulkanRenderGraph::ScaleSource
  float scaleX;
  float scaleY;
  int absoluteWidth;
  int absoluteHeight;
  int scaleInputPassIndex;
  bool linearFilter;
  bool mipmap;
  bool cacheByParameters;
  const char* constantBlackWhenZero;
  float constantBlackAlpha;
  bool shareConstantBlack;
  int wrapMode;
  bool isFeedbackTarget;
  bool isFeedbackReader;
  bool isFinalPass;
  const int* sampledInputs;
  int sampledInputCount;
  const ParamEntry* params;
  int paramCount;
};

struct PresetEntry {
  const char* presetQrcPath;
  const PassEntry* passes;
  int passCount;
  int feedbackPassIndex;
  bool finalRealPassRespondsToHdr;
  const PresetParamEntry* presetParams;
  int presetParamCount;
  // True == no GL text for this preset ships in res/qrc/shaders.qrc; the app can only
  // render it through this manifest's Vulkan graph (see FirstPartyPresets's
  // PresetDecl::vulkanOnly).
  bool vulkanOnly;
  // True == some pass's Slang source genuinely reads pc.frameCount/pc.frameDirection
  // (build-time scan, see main's sourceUsesFrameCount()) -- the Vulkan-native
  // stand-in for the GL path's resolved-uniform animation detection
  // (OpenGLShaderPipeline::isAnimated()).
  bool usesFrameCount;
};

)"_L1;

constexpr auto kEpilogue = R"(};

}  // namespace RenderGraphManifestData
)"_L1;

// By the enumerators' integers, which the manifest shows beside the names.
constexpr const char *kFormatNames[] = {"R11G11B10F", "RGBA16F", "RGBA8", "RGBA32F"};
constexpr const char *kScaleSourceNames[] = {"Source", "Viewport", "Absolute"};

// A value outside the table has the name of value 0.
template<typename Enum, std::size_t N>
const char *nameOf(const char *const (&names)[N], Enum value)
{
    const auto index = static_cast<std::size_t>(value);
    return names[index < N ? index : 0];
}

const char *boolLiteral(bool value)
{
    return value ? "true" : "false";
}

QString stringLiteral(const QString &s)
{
    return u'"' + cEscape(s) + u'"';
}

QString identifierSuffix(const QString &presetName)
{
    return QString(presetName).replace(u'-', u'_');
}

void writeSampledInputs(QTextStream &out, const QString &name, const Pass &pass)
{
    QStringList indices;
    for (const VulkanRenderGraph::ResourceRef &input : pass.sampledInputs)
        indices.append(QString::number(input.passIndex));
    if (indices.isEmpty())
        indices.append(u"0"_s); // never read, but an array needs an element
    out << "inline constexpr int " << name << "[] = {" << indices.join(", "_L1) << "};\n";
}

void writeParams(QTextStream &out, const QString &name, const Pass &pass)
{
    out << "inline constexpr ParamEntry " << name << "[] = {\n";
    for (const VulkanRenderGraph::PushConstantParam &param : pass.params)
        out << "  { " << stringLiteral(param.id) << ", " << param.floatOffset << "u },\n";
    out << "};\n";
}

// Returns the name of the pass entry, which stands behind the arrays that it points to.
QString writePass(QTextStream &out, const QString &suffix, int index, const Pass &pass)
{
    const QString passSuffix = "%1_%2"_L1.arg(suffix, QString::number(index));
    const QString sampledInputs = "kSampledInputs_"_L1 + passSuffix;
    const QString params = "kParams_"_L1 + passSuffix;
    QString entry = "kPass_"_L1 + passSuffix;

    writeSampledInputs(out, sampledInputs, pass);
    if (!pass.params.isEmpty())
        writeParams(out, params, pass);

    out << "inline constexpr PassEntry " << entry << " = {\n";
    out << "  " << stringLiteral(pass.fragmentSpirvResource) << ",\n";
    out << "  " << stringLiteral(pass.vertexSpirvResource) << ",\n";
    out << "  " << stringLiteral(pass.debugName) << ",\n";
    out << "  " << static_cast<int>(pass.format) << ", // " << nameOf(kFormatNames, pass.format)
        << "\n";
    out << "  " << static_cast<int>(pass.scaleSource) << ", // "
        << nameOf(kScaleSourceNames, pass.scaleSource) << "\n";
    out << "  " << floatLiteral(pass.scaleX) << ", " << floatLiteral(pass.scaleY) << ",\n";
    out << "  " << pass.absoluteWidth << ", " << pass.absoluteHeight << ",\n";
    out << "  " << pass.scaleInputPassIndex << ",\n";
    out << "  " << boolLiteral(pass.linearFilter) << ", " << boolLiteral(pass.mipmap) << ",\n";
    out << "  " << boolLiteral(pass.cacheByParameters) << ",\n";
    out << "  " << stringLiteral(pass.constantBlackWhenZero) << ", "
        << floatLiteral(pass.constantBlackAlpha) << ",\n";
    out << "  " << boolLiteral(pass.shareConstantBlack) << ",\n";
    out << "  " << pass.wrapMode << ",\n";
    out << "  " << boolLiteral(pass.isFeedbackTarget) << ", " << boolLiteral(pass.isFeedbackReader)
        << ", " << boolLiteral(pass.isFinalPass) << ",\n";
    out << "  " << sampledInputs << ", " << pass.sampledInputs.size() << ",\n";
    out << "  " << (pass.params.isEmpty() ? u"nullptr"_s : params) << ", " << pass.params.size()
        << ",\n";
    out << "};\n\n";
    return entry;
}

void writePresetParams(QTextStream &out, const QString &name, const QList<PresetParamMeta> &params)
{
    out << "inline constexpr PresetParamEntry " << name << "[] = {\n";
    for (const PresetParamMeta &param : params) {
        out << "  { " << stringLiteral(param.id) << ", " << stringLiteral(param.description) << ", "
            << floatLiteral(param.initialValue) << ", " << floatLiteral(param.defaultValue) << ", "
            << floatLiteral(param.min) << ", " << floatLiteral(param.max) << ", "
            << floatLiteral(param.step) << " },\n";
    }
    out << "};\n\n";
}

// Returns the name of the preset entry.
QString writePreset(QTextStream &out, const EmittedPreset &preset)
{
    const QString suffix = identifierSuffix(preset.name);
    const QString passes = "kPasses_"_L1 + suffix;
    const QString presetParams = "kPresetParams_"_L1 + suffix;
    QString entry = "kPreset_"_L1 + suffix;
    const VulkanRenderGraph &graph = preset.graph;

    QStringList passEntries;
    for (int index = 0; index < graph.passes.size(); ++index)
        passEntries.append(writePass(out, suffix, index, graph.passes.at(index)));
    out << "inline constexpr PassEntry " << passes << "[] = {" << passEntries.join(", "_L1)
        << "};\n\n";
    if (!preset.presetParams.isEmpty())
        writePresetParams(out, presetParams, preset.presetParams);

    out << "inline constexpr PresetEntry " << entry << " = { " << stringLiteral(graph.presetQrcPath)
        << ", " << passes << ", " << graph.passes.size() << ", " << graph.feedbackPassIndex << ", "
        << boolLiteral(graph.finalRealPassRespondsToHdr) << ", "
        << (preset.presetParams.isEmpty() ? u"nullptr"_s : presetParams) << ", "
        << preset.presetParams.size() << ", " << boolLiteral(preset.vulkanOnly) << ", "
        << boolLiteral(preset.usesFrameCount) << " };\n\n";
    return entry;
}

} // namespace

QString cEscape(const QString &s)
{
    QString escaped;
    escaped.reserve(s.size() + 2);
    for (const QChar c : s) {
        if (c == u'"' || c == u'\\')
            escaped += u'\\';
        escaped += c;
    }
    return escaped;
}

QString floatLiteral(float v)
{
    // QString::number() drops the sign of negative zero.
    if (v == 0.0F && std::signbit(v))
        return u"-0.0f"_s;
    // Nine significant digits bring every float back exactly.
    QString text = QString::number(static_cast<double>(v), 'g', 9);
    if (!text.contains(u'.') && !text.contains(u'e') && !text.contains(u'E'))
        text += ".0"_L1;
    return text + u'f';
}

bool writeManifest(const QString &outPath, const QList<EmittedPreset> &presets)
{
    QFile file(outPath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        std::fprintf(stderr, "render-graph-compile: failed to open '%s' for writing\n",
                     qPrintable(outPath));
        return false;
    }

    QTextStream out(&file);
    out << kPrologue;
    QStringList presetEntries;
    for (const EmittedPreset &preset : presets)
        presetEntries.append(writePreset(out, preset));
    out << "inline constexpr PresetEntry kPresets[] = {\n";
    for (const QString &entry : std::as_const(presetEntries))
        out << "  " << entry << ",\n";
    out << kEpilogue;
    return true;
}
