#include "ManifestWriter.h"

#include "Diagnostics.h"

#include <QFile>
#include <QStringList>
#include <QTextStream>

#include <cmath>
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

// A number without an enumerator has the name of enumerator 0.
QLatin1StringView nameOf(VulkanRenderGraph::Format format)
{
    const QLatin1StringView name = VulkanRenderGraph::formatName(format);
    return name.isEmpty() ? VulkanRenderGraph::formatName(VulkanRenderGraph::Format::R11G11B10F)
                          : name;
}

QLatin1StringView nameOf(VulkanRenderGraph::ScaleSource scaleSource)
{
    switch (scaleSource) {
    case VulkanRenderGraph::ScaleSource::Viewport:
        return "Viewport"_L1;
    case VulkanRenderGraph::ScaleSource::Absolute:
        return "Absolute"_L1;
    default:
        return "Source"_L1;
    }
}

QLatin1StringView boolLiteral(bool value)
{
    return value ? "true"_L1 : "false"_L1;
}

QString stringLiteral(const QString &s)
{
    return cEscape(s).prepend(u'"').append(u'"');
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
        indices.append(u"0"_s); // never read; an array needs an element
    out << "inline constexpr int "_L1 << name << "[] = {"_L1 << indices.join(", "_L1) << "};\n"_L1;
}

void writeParams(QTextStream &out, const QString &name, const Pass &pass)
{
    out << "inline constexpr ParamEntry "_L1 << name << "[] = {\n"_L1;
    for (const VulkanRenderGraph::PushConstantParam &param : pass.params)
        out << "  { "_L1 << stringLiteral(param.id) << ", "_L1 << param.floatOffset << "u },\n"_L1;
    out << "};\n"_L1;
}

// Writes the pass's arrays and then its entry. Returns the entry's name.
QString writePass(QTextStream &out, const QString &suffix, int index, const Pass &pass)
{
    const QString passSuffix = "%1_%2"_L1.arg(suffix, QString::number(index));
    const QString sampledInputs = "kSampledInputs_"_L1 + passSuffix;
    const QString params = "kParams_"_L1 + passSuffix;
    QString entry = "kPass_"_L1 + passSuffix;

    writeSampledInputs(out, sampledInputs, pass);
    if (!pass.params.isEmpty())
        writeParams(out, params, pass);

    out << "inline constexpr PassEntry "_L1 << entry << " = {\n"_L1;
    out << "  "_L1 << stringLiteral(pass.fragmentSpirvResource) << ",\n"_L1;
    out << "  "_L1 << stringLiteral(pass.vertexSpirvResource) << ",\n"_L1;
    out << "  "_L1 << stringLiteral(pass.debugName) << ",\n"_L1;
    out << "  "_L1 << static_cast<int>(pass.format) << ", // "_L1 << nameOf(pass.format) << "\n"_L1;
    out << "  "_L1 << static_cast<int>(pass.scaleSource) << ", // "_L1 << nameOf(pass.scaleSource)
        << "\n"_L1;
    out << "  "_L1 << floatLiteral(pass.scaleX) << ", "_L1 << floatLiteral(pass.scaleY) << ",\n"_L1;
    out << "  "_L1 << pass.absoluteWidth << ", "_L1 << pass.absoluteHeight << ",\n"_L1;
    out << "  "_L1 << pass.scaleInputPassIndex << ",\n"_L1;
    out << "  "_L1 << boolLiteral(pass.linearFilter) << ", "_L1 << boolLiteral(pass.mipmap)
        << ",\n"_L1;
    out << "  "_L1 << boolLiteral(pass.cacheByParameters) << ",\n"_L1;
    out << "  "_L1 << stringLiteral(pass.constantBlackWhenZero) << ", "_L1
        << floatLiteral(pass.constantBlackAlpha) << ",\n"_L1;
    out << "  "_L1 << boolLiteral(pass.shareConstantBlack) << ",\n"_L1;
    out << "  "_L1 << pass.wrapMode << ",\n"_L1;
    out << "  "_L1 << boolLiteral(pass.isFeedbackTarget) << ", "_L1
        << boolLiteral(pass.isFeedbackReader) << ", "_L1 << boolLiteral(pass.isFinalPass)
        << ",\n"_L1;
    out << "  "_L1 << sampledInputs << ", "_L1 << pass.sampledInputs.size() << ",\n"_L1;
    out << "  "_L1 << (pass.params.isEmpty() ? u"nullptr"_s : params) << ", "_L1
        << pass.params.size() << ",\n"_L1;
    out << "};\n\n"_L1;
    return entry;
}

void writePresetParams(QTextStream &out, const QString &name, const QList<PresetParamMeta> &params)
{
    out << "inline constexpr PresetParamEntry "_L1 << name << "[] = {\n"_L1;
    for (const PresetParamMeta &param : params) {
        out << "  { "_L1 << stringLiteral(param.id) << ", "_L1 << stringLiteral(param.description)
            << ", "_L1 << floatLiteral(param.initialValue) << ", "_L1
            << floatLiteral(param.defaultValue) << ", "_L1 << floatLiteral(param.min) << ", "_L1
            << floatLiteral(param.max) << ", "_L1 << floatLiteral(param.step) << " },\n"_L1;
    }
    out << "};\n\n"_L1;
}

// Writes the preset's passes and parameters and then its entry. Returns the entry's name.
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
    out << "inline constexpr PassEntry "_L1 << passes << "[] = {"_L1 << passEntries.join(", "_L1)
        << "};\n\n"_L1;
    if (!preset.presetParams.isEmpty())
        writePresetParams(out, presetParams, preset.presetParams);

    out << "inline constexpr PresetEntry "_L1 << entry << " = { "_L1
        << stringLiteral(graph.presetQrcPath) << ", "_L1 << passes << ", "_L1 << graph.passes.size()
        << ", "_L1 << graph.feedbackPassIndex << ", "_L1
        << boolLiteral(graph.finalRealPassRespondsToHdr) << ", "_L1
        << (preset.presetParams.isEmpty() ? u"nullptr"_s : presetParams) << ", "_L1
        << preset.presetParams.size() << ", "_L1 << boolLiteral(preset.vulkanOnly) << ", "_L1
        << boolLiteral(preset.usesFrameCount) << " };\n\n"_L1;
    return entry;
}

} // namespace

QString cEscape(const QString &s)
{
    return QString(s).replace(u'\\', uR"(\\)"_s).replace(u'"', uR"(\")"_s);
}

QString floatLiteral(float v)
{
    // QString::number() drops the sign of negative zero.
    if (v == 0.0F && std::signbit(v))
        return u"-0.0f"_s;
    // Nine significant digits bring every float back exactly.
    QString text = QString::number(static_cast<double>(v), 'g', 9);
    text += text.contains(u'.') || text.contains(u'e') ? "f"_L1 : ".0f"_L1;
    return text;
}

bool writeManifest(const QString &outPath, const QList<EmittedPreset> &presets)
{
    QFile file(outPath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        report(Diagnostic::Error, "failed to open '%s' for writing", qPrintable(outPath));
        return false;
    }

    QTextStream out(&file);
    out << kPrologue;
    QStringList presetEntries;
    for (const EmittedPreset &preset : presets)
        presetEntries.append(writePreset(out, preset));
    out << "inline constexpr PresetEntry kPresets[] = {\n"_L1;
    for (const QString &entry : std::as_const(presetEntries))
        out << "  "_L1 << entry << ",\n"_L1;
    out << kEpilogue;
    return true;
}
