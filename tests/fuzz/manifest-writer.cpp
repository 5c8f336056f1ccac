// writeManifest(): the header is read back as C++ tokens and compared with the values that went in.
#include "Fuzz.h"
#include "PlainGraph.h"

#include <ManifestWriter.h>

#include <cstdlib>

namespace {

using PlainGraph::number;
using Tokens = QList<QByteArray>;

bool isWord(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool startsNumber(const QByteArray &text, qsizetype i)
{
    return (text.at(i) >= '0' && text.at(i) <= '9') || text.at(i) == '-';
}

// Words, numbers and signs as they stand; strings unescaped behind a quote; floats as hexadecimal
// ones; comments once the definitions begin.
Tokens tokensOf(const QByteArray &text)
{
    Tokens tokens;
    for (qsizetype i = 0; i < text.size();) {
        const char c = text.at(i);
        if (c == ' ' || c == '\n') {
            ++i;
        } else if (text.mid(i, 2) == "//") {
            const qsizetype end = std::max(text.indexOf('\n', i), i);
            if (tokens.contains("inline"))
                tokens.append(text.mid(i, end - i));
            i = end;
        } else if (c == '"') {
            QByteArray string = "\"";
            for (++i; i < text.size() && text.at(i) != '"'; ++i) {
                if (text.at(i) == '\\')
                    ++i;
                string += text.mid(i, 1);
            }
            ++i;
            tokens.append(string);
        } else if (startsNumber(text, i)) {
            const qsizetype start = i;
            while (i < text.size()
                   && (isWord(text.at(i)) || text.at(i) == '.' || text.at(i) == '+'
                       || text.at(i) == '-'))
                ++i;
            const QByteArray literal = text.mid(start, i - start);
            const bool isFloat =
                    literal.endsWith('f') && (literal.contains('.') || literal.contains('e'));
            tokens.append(isFloat ? "float " + number(std::strtof(literal.constData(), nullptr))
                                  : literal);
        } else if (isWord(c)) {
            const qsizetype start = i;
            while (i < text.size() && isWord(text.at(i)))
                ++i;
            tokens.append(text.mid(start, i - start));
        } else {
            tokens.append(QByteArray(1, c));
            ++i;
        }
    }
    return tokens;
}

constexpr const char *kRecords = R"(
#pragma once
namespace RenderGraphManifestData {
struct ParamEntry { const char* id; unsigned int floatOffset; };
struct PresetParamEntry {
    const char* id; const char* description;
    float initialValue; float defaultValue; float min; float max; float step;
};
struct PassEntry {
    const char* fragmentSpirvResource; const char* vertexSpirvResource; const char* debugName;
    int format; int scaleSource; float scaleX; float scaleY; int absoluteWidth; int absoluteHeight;
    int scaleInputPassIndex; bool linearFilter; bool mipmap; bool cacheByParameters;
    const char* constantBlackWhenZero; float constantBlackAlpha; bool shareConstantBlack;
    int wrapMode; bool isFeedbackTarget; bool isFeedbackReader; bool isFinalPass;
    const int* sampledInputs; int sampledInputCount; const ParamEntry* params; int paramCount;
};
struct PresetEntry {
    const char* presetQrcPath; const PassEntry* passes; int passCount; int feedbackPassIndex;
    bool finalRealPassRespondsToHdr; const PresetParamEntry* presetParams; int presetParamCount;
    bool vulkanOnly; bool usesFrameCount;
};
)";

// The tokens that the values should have become.
class Expected
{
public:
    Tokens tokens = tokensOf(kRecords);

    Expected &raw(const QByteArray &text)
    {
        tokens += tokensOf(text);
        return *this;
    }
    Expected &text(const QString &value)
    {
        tokens.append('"' + value.toUtf8());
        return *this;
    }
    Expected &value(float value)
    {
        tokens.append("float " + number(value));
        return *this;
    }
    Expected &value(bool value)
    {
        tokens.append(value ? "true" : "false");
        return *this;
    }
    Expected &value(int value)
    {
        tokens.append(QByteArray::number(value));
        return *this;
    }
    Expected &comma()
    {
        tokens.append(",");
        return *this;
    }
    Expected &comment(const QByteArray &name)
    {
        tokens.append("// " + name);
        return *this;
    }
};

void expectPass(Expected &e, const QByteArray &suffix, const VulkanRenderGraph::Pass &pass)
{
    e.raw("inline constexpr int kSampledInputs_" + suffix + "[] = {");
    for (int i = 0; i < pass.sampledInputs.size(); ++i) {
        if (i > 0)
            e.comma();
        e.value(pass.sampledInputs.at(i).passIndex);
    }
    e.raw(pass.sampledInputs.isEmpty() ? "0};" : "};");
    if (!pass.params.isEmpty()) {
        e.raw("inline constexpr ParamEntry kParams_" + suffix + "[] = {");
        for (const VulkanRenderGraph::PushConstantParam &param : pass.params)
            e.raw("{").text(param.id).raw("," + QByteArray::number(param.floatOffset) + "u },");
        e.raw("};");
    }
    const auto format = static_cast<int>(pass.format);
    const auto scale = static_cast<int>(pass.scaleSource);
    e.raw("inline constexpr PassEntry kPass_" + suffix + " = {");
    e.text(pass.fragmentSpirvResource).comma().text(pass.vertexSpirvResource).comma();
    e.text(pass.debugName).comma();
    e.value(format).comma().comment(format == 1           ? "RGBA16F"
                                            : format == 2 ? "RGBA8"
                                            : format == 3 ? "RGBA32F"
                                                          : "R11G11B10F");
    e.value(scale).comma().comment(scale == 1 ? "Viewport" : scale == 2 ? "Absolute" : "Source");
    e.value(pass.scaleX).comma().value(pass.scaleY).comma();
    e.value(pass.absoluteWidth).comma().value(pass.absoluteHeight).comma();
    e.value(pass.scaleInputPassIndex).comma();
    e.value(pass.linearFilter).comma().value(pass.mipmap).comma();
    e.value(pass.cacheByParameters).comma();
    e.text(pass.constantBlackWhenZero).comma().value(pass.constantBlackAlpha).comma();
    e.value(pass.shareConstantBlack).comma().value(pass.wrapMode).comma();
    e.value(pass.isFeedbackTarget).comma().value(pass.isFeedbackReader).comma();
    e.value(pass.isFinalPass).comma();
    e.raw("kSampledInputs_" + suffix + ",").value(static_cast<int>(pass.sampledInputs.size()));
    e.raw(pass.params.isEmpty() ? ", nullptr," : ", kParams_" + suffix + ",");
    e.value(static_cast<int>(pass.params.size())).raw(",};");
}

QByteArray expectPreset(Expected &e, const EmittedPreset &preset)
{
    const QByteArray id = preset.name.toUtf8().replace('-', '_');
    const VulkanRenderGraph &graph = preset.graph;
    QByteArray names;
    for (int i = 0; i < graph.passes.size(); ++i) {
        const QByteArray suffix = id + '_' + QByteArray::number(i);
        expectPass(e, suffix, graph.passes.at(i));
        names += (i > 0 ? ", kPass_" : "kPass_") + suffix;
    }
    e.raw("inline constexpr PassEntry kPasses_" + id + "[] = {" + names + "};");
    if (!preset.presetParams.isEmpty()) {
        e.raw("inline constexpr PresetParamEntry kPresetParams_" + id + "[] = {");
        for (const PresetParamMeta &param : preset.presetParams) {
            e.raw("{").text(param.id).comma().text(param.description);
            for (const float value :
                 {param.initialValue, param.defaultValue, param.min, param.max, param.step})
                e.comma().value(value);
            e.raw("},");
        }
        e.raw("};");
    }
    e.raw("inline constexpr PresetEntry kPreset_" + id + " = {").text(graph.presetQrcPath);
    e.raw(", kPasses_" + id + ",").value(static_cast<int>(graph.passes.size())).comma();
    e.value(graph.feedbackPassIndex).comma().value(graph.finalRealPassRespondsToHdr);
    e.raw(preset.presetParams.isEmpty() ? ", nullptr," : ", kPresetParams_" + id + ",");
    e.value(static_cast<int>(preset.presetParams.size())).comma();
    e.value(preset.vulkanOnly).comma().value(preset.usesFrameCount).raw("};");
    return "kPreset_" + id;
}

QString textOf(Bytes &bytes)
{
    return QString::fromUtf8(bytes.take(bytes.below(24)));
}

int integer(Bytes &bytes)
{
    return bytes.flag() ? bytes.below(12) - 2 : static_cast<int>(bytes.word());
}

VulkanRenderGraph::Pass passFrom(Bytes &bytes)
{
    VulkanRenderGraph::Pass pass;
    pass.fragmentSpirvResource = textOf(bytes);
    pass.vertexSpirvResource = textOf(bytes);
    pass.debugName = textOf(bytes);
    pass.format = static_cast<VulkanRenderGraph::Format>(bytes.byte());
    pass.scaleSource = static_cast<VulkanRenderGraph::ScaleSource>(bytes.byte());
    pass.scaleX = bytes.number();
    pass.scaleY = bytes.number();
    pass.absoluteWidth = integer(bytes);
    pass.absoluteHeight = integer(bytes);
    pass.scaleInputPassIndex = integer(bytes);
    pass.linearFilter = bytes.flag();
    pass.mipmap = bytes.flag();
    pass.cacheByParameters = bytes.flag();
    pass.constantBlackWhenZero = textOf(bytes);
    pass.constantBlackAlpha = bytes.number();
    pass.shareConstantBlack = bytes.flag();
    pass.wrapMode = integer(bytes);
    pass.isFeedbackTarget = bytes.flag();
    pass.isFeedbackReader = bytes.flag();
    pass.isFinalPass = bytes.flag();
    for (int count = bytes.below(4); count > 0; --count)
        pass.sampledInputs.append(VulkanRenderGraph::ResourceRef{integer(bytes)});
    for (int count = bytes.below(4); count > 0; --count) {
        const QString id = textOf(bytes);
        pass.params.append({id, bytes.word()});
    }
    return pass;
}

EmittedPreset presetFrom(Bytes &bytes)
{
    constexpr const char *kNames[] = {"crt-pvm", "stock", "a-b-c", "A", "-", "x_y-z"};
    EmittedPreset preset;
    preset.name = QString::fromLatin1(kNames[bytes.below(6)]);
    preset.vulkanOnly = bytes.flag();
    preset.usesFrameCount = bytes.flag();
    preset.graph.presetQrcPath = textOf(bytes);
    preset.graph.feedbackPassIndex = integer(bytes);
    preset.graph.finalRealPassRespondsToHdr = bytes.flag();
    for (int count = bytes.below(4); count > 0; --count)
        preset.graph.passes.append(passFrom(bytes));
    for (int count = bytes.below(4); count > 0; --count) {
        PresetParamMeta param;
        param.id = textOf(bytes);
        param.description = textOf(bytes);
        param.initialValue = bytes.number();
        param.defaultValue = bytes.number();
        param.min = bytes.number();
        param.max = bytes.number();
        param.step = bytes.number();
        preset.presetParams.append(param);
    }
    return preset;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Bytes bytes(data, size);
    QList<EmittedPreset> presets;
    for (int count = bytes.below(3); count > 0; --count)
        presets.append(presetFrom(bytes));

    Expected expected;
    QByteArray names;
    for (const EmittedPreset &preset : presets)
        names += expectPreset(expected, preset) + ',';
    expected.raw("inline constexpr PresetEntry kPresets[] = {" + names + "};}");
    expected.comment("namespace RenderGraphManifestData");

    static const QString path = fuzzDirectory() + QStringLiteral("/manifest.h");
    Capture capture;
    const bool isWritten = writeManifest(path, presets);
    const Printed printed = capture.end();
    const QByteArray header = fileContent(path);
    expectSame("the result", header,
               QByteArray::number(isWritten ? 1 : 0) + printed.out + printed.err, "1");
    expectSame("the manifest", header, tokensOf(header).join('\n'), expected.tokens.join('\n'));
    return 0;
}
