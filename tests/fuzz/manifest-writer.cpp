// Compares the bytes that writeManifest() writes with a plain statement of the header's text.
#include "Fuzz.h"

#include <ManifestWriter.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

QByteArray integer(qint64 value)
{
    return QByteArray::number(value);
}

QByteArray boolean(bool value)
{
    return value ? "true" : "false";
}

QByteArray quoted(const QString &text)
{
    QByteArray literal = "\"";
    for (const char c : text.toUtf8()) {
        if (c == '"' || c == '\\')
            literal += '\\';
        literal += c;
    }
    return literal + '"';
}

// Nine significant digits without zeros at the end. An exact tie goes away from zero, where
// printf() goes to the even digit; 120 digits show each float exactly.
QByteArray real(float value)
{
    constexpr int kDigits = 9;
    char exact[160];
    std::snprintf(exact, sizeof exact, "%.120e", std::abs(static_cast<double>(value)));
    const QByteArray text = exact; // d.ddd...e+xx
    QByteArray digits = text.left(1) + text.mid(2, kDigits - 1);
    int exponent = text.mid(text.indexOf('e') + 1).toInt();
    if (text.at(kDigits + 1) >= '5') {
        digits = QByteArray::number(digits.toLongLong() + 1);
        exponent += digits.size() > kDigits ? 1 : 0;
    }
    while (digits.size() > 1 && digits.endsWith('0'))
        digits.chop(1);

    QByteArray result;
    if (exponent < -4 || exponent >= kDigits) {
        char power[16];
        std::snprintf(power, sizeof power, "e%+03d", exponent);
        result = digits.left(1) + (digits.size() > 1 ? "." : "") + digits.mid(1) + power;
    } else if (exponent < 0) {
        result = "0." + QByteArray(-1 - exponent, '0') + digits;
    } else {
        digits = digits.leftJustified(exponent + 1, '0');
        result = digits.left(exponent + 1) + '.' + digits.mid(exponent + 1);
        if (result.endsWith('.'))
            result += '0';
    }
    return (std::signbit(value) ? "-" : "") + result + 'f';
}

constexpr const char *kFormats[] = {"R11G11B10F", "RGBA16F", "RGBA8", "RGBA32F"};
constexpr const char *kScaleSources[] = {"Source", "Viewport", "Absolute"};

QByteArray passText(const QByteArray &suffix, const VulkanRenderGraph::Pass &pass)
{
    QByteArray inputs;
    for (const VulkanRenderGraph::ResourceRef &input : pass.sampledInputs)
        inputs += (inputs.isEmpty() ? "" : ", ") + integer(input.passIndex);
    QByteArray text = "inline constexpr int kSampledInputs_" + suffix + "[] = {"
            + (inputs.isEmpty() ? "0" : inputs) + "};\n";
    QByteArray params = "nullptr";
    if (!pass.params.isEmpty()) {
        params = "kParams_" + suffix;
        text += "inline constexpr ParamEntry " + params + "[] = {\n";
        for (const VulkanRenderGraph::PushConstantParam &param : pass.params)
            text += "  { " + quoted(param.id) + ", " + integer(param.floatOffset) + "u },\n";
        text += "};\n";
    }
    const auto format = static_cast<int>(pass.format);
    const auto scale = static_cast<int>(pass.scaleSource);
    text += "inline constexpr PassEntry kPass_" + suffix + " = {\n";
    text += "  " + quoted(pass.fragmentSpirvResource) + ",\n";
    text += "  " + quoted(pass.vertexSpirvResource) + ",\n";
    text += "  " + quoted(pass.debugName) + ",\n";
    text += "  " + integer(format) + ", // " + kFormats[format < 4 ? format : 0] + "\n";
    text += "  " + integer(scale) + ", // " + kScaleSources[scale < 3 ? scale : 0] + "\n";
    text += "  " + real(pass.scaleX) + ", " + real(pass.scaleY) + ",\n";
    text += "  " + integer(pass.absoluteWidth) + ", " + integer(pass.absoluteHeight) + ",\n";
    text += "  " + integer(pass.scaleInputPassIndex) + ",\n";
    text += "  " + boolean(pass.linearFilter) + ", " + boolean(pass.mipmap) + ",\n";
    text += "  " + boolean(pass.cacheByParameters) + ",\n";
    text += "  " + quoted(pass.constantBlackWhenZero) + ", " + real(pass.constantBlackAlpha)
            + ",\n";
    text += "  " + boolean(pass.shareConstantBlack) + ",\n";
    text += "  " + integer(pass.wrapMode) + ",\n";
    text += "  " + boolean(pass.isFeedbackTarget) + ", " + boolean(pass.isFeedbackReader) + ", "
            + boolean(pass.isFinalPass) + ",\n";
    text += "  kSampledInputs_" + suffix + ", " + integer(pass.sampledInputs.size()) + ",\n";
    text += "  " + params + ", " + integer(pass.params.size()) + ",\n};\n\n";
    return text;
}

QByteArray presetText(const EmittedPreset &preset)
{
    const QByteArray id = preset.name.toUtf8().replace('-', '_');
    const VulkanRenderGraph &graph = preset.graph;
    QByteArray text;
    QByteArray names;
    for (int i = 0; i < graph.passes.size(); ++i) {
        const QByteArray suffix = id + '_' + integer(i);
        text += passText(suffix, graph.passes.at(i));
        names += (i > 0 ? ", kPass_" : "kPass_") + suffix;
    }
    text += "inline constexpr PassEntry kPasses_" + id + "[] = {" + names + "};\n\n";
    QByteArray params = "nullptr";
    if (!preset.presetParams.isEmpty()) {
        params = "kPresetParams_" + id;
        text += "inline constexpr PresetParamEntry " + params + "[] = {\n";
        for (const PresetParamMeta &param : preset.presetParams) {
            text += "  { " + quoted(param.id) + ", " + quoted(param.description);
            for (const float value :
                 {param.initialValue, param.defaultValue, param.min, param.max, param.step})
                text += ", " + real(value);
            text += " },\n";
        }
        text += "};\n\n";
    }
    text += "inline constexpr PresetEntry kPreset_" + id + " = { " + quoted(graph.presetQrcPath)
            + ", kPasses_" + id + ", " + integer(graph.passes.size()) + ", "
            + integer(graph.feedbackPassIndex) + ", " + boolean(graph.finalRealPassRespondsToHdr)
            + ", " + params + ", " + integer(preset.presetParams.size()) + ", "
            + boolean(preset.vulkanOnly) + ", " + boolean(preset.usesFrameCount) + " };\n\n";
    return text;
}

QByteArray prologue()
{
    const QByteArray golden =
            fileContent(QStringLiteral(SOURCE_DIR "/tests/manifest/golden/RenderGraphManifest.h"));
    return golden.left(golden.indexOf("inline constexpr"));
}

QString textOf(Bytes &bytes)
{
    return QString::fromUtf8(bytes.take(bytes.below(24)));
}

int integerFrom(Bytes &bytes)
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
    pass.absoluteWidth = integerFrom(bytes);
    pass.absoluteHeight = integerFrom(bytes);
    pass.scaleInputPassIndex = integerFrom(bytes);
    pass.linearFilter = bytes.flag();
    pass.mipmap = bytes.flag();
    pass.cacheByParameters = bytes.flag();
    pass.constantBlackWhenZero = textOf(bytes);
    pass.constantBlackAlpha = bytes.number();
    pass.shareConstantBlack = bytes.flag();
    pass.wrapMode = integerFrom(bytes);
    pass.isFeedbackTarget = bytes.flag();
    pass.isFeedbackReader = bytes.flag();
    pass.isFinalPass = bytes.flag();
    for (int count = bytes.below(4); count > 0; --count)
        pass.sampledInputs.append(VulkanRenderGraph::ResourceRef{integerFrom(bytes)});
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
    preset.graph.feedbackPassIndex = integerFrom(bytes);
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

    static const QByteArray kPrologue = prologue();
    QByteArray expected = kPrologue;
    QByteArray names;
    for (const EmittedPreset &preset : presets) {
        expected += presetText(preset);
        names += "  kPreset_" + preset.name.toUtf8().replace('-', '_') + ",\n";
    }
    expected += "inline constexpr PresetEntry kPresets[] = {\n" + names
            + "};\n\n}  // namespace RenderGraphManifestData\n";

    static const QString path = fuzzDirectory() + QStringLiteral("/manifest.h");
    startCapture();
    const bool isWritten = writeManifest(path, presets);
    const Printed printed = endCapture();
    const QByteArray header = fileContent(path);
    expectSame("the result", header,
               QByteArray::number(isWritten ? 1 : 0) + printed.out + printed.err, "1");
    expectSame("the manifest", header, header, expected);
    return 0;
}
