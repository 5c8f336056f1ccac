#include <DrawingSupport.h>
#include <TestPictures.h>

#include <QFile>
#include <QHash>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

// Prints what a settled frame of presets costs at 3840x2160, a line for each preset with tabs: its
// name, megabytes, and billions of instructions. The megabytes are those that the passes read and
// write, first with an 8-bit target that the last pass but the boost draws into, then with an 8-bit
// target and all passes, and with a target of half floats and all passes (HDR). The instructions
// are those of the fragments, without and with the boost. What each pass costs goes to the standard
// error. The first argument is a shaders directory, the others are presets.
//
// Bytes: each pass's output once, and each image that it takes texels from once. Caches and what
// the source image and mipmaps take are left out.
//
// Instructions: SPIR-V after `spirv-opt -O`, each as often as fragments execute it. One counts for
// each component of its result: arithmetic, functions, comparisons, conversions, fetches. Moves
// (loads, stores, shuffles, phis) and branches do not count. A copy of the module counts them: each
// block adds its instructions to a variable, which becomes the colour.

namespace {

using Words = std::vector<quint32>;

// SPIR-V's numbers, under their names in its grammar.
enum Opcode : quint32 {
    OpTypeFloat = 22,
    OpTypeVector = 23,
    OpTypePointer = 32,
    OpConstant = 43,
    OpFunction = 54,
    OpVariable = 59,
    OpLoad = 61,
    OpStore = 62,
    OpAccessChain = 65,
    OpInBoundsAccessChain = 66,
    OpVectorExtractDynamic = 77,
    OpCompositeInsert = 82,
    OpCopyObject = 83,
    OpSampledImage = 86,
    OpImageSampleImplicitLod = 87,
    OpImageFetch = 95,
    OpImage = 100,
    OpCompositeConstruct = 80,
    OpFAdd = 129,
    OpPhi = 245,
    OpLoopMerge = 246,
    OpSelectionMerge = 247,
    OpLabel = 248,
    OpReturn = 253,
    OpDecorate = 71,
};
constexpr std::size_t kHeaderWords = 5;
constexpr quint32 kBound = 3; // the header's word
constexpr quint32 kPrivate = 6; // storage class
constexpr quint32 kOutput = 3;
constexpr quint32 kBinding = 33; // decoration
constexpr int kUnknown = -1; // a binding

Words words(const QByteArray &spirv)
{
    Words result(std::size_t(spirv.size()) / sizeof(quint32));
    std::memcpy(result.data(), spirv.constData(), result.size() * sizeof(quint32));
    return result;
}

QByteArray optimized(const QByteArray &spirv)
{
    const QTemporaryDir directory;
    const QString before = directory.filePath(QStringLiteral("before.spv"));
    const QString after = directory.filePath(QStringLiteral("after.spv"));
    QFile file(before);
    if (!file.open(QFile::WriteOnly) || file.write(spirv) != spirv.size())
        qFatal("cannot write %s", qPrintable(before));
    file.close();
    const QStringList arguments = {QStringLiteral("-O"), before, QStringLiteral("-o"), after};
    if (QProcess::execute(QStringLiteral("spirv-opt"), arguments) != 0)
        qFatal("spirv-opt failed");
    QFile result(after);
    if (!result.open(QFile::ReadOnly))
        qFatal("cannot read %s", qPrintable(after));
    return result.readAll();
}

bool isMove(quint32 opcode)
{
    return (opcode >= OpVariable && opcode <= OpInBoundsAccessChain)
            || (opcode >= OpVectorExtractDynamic && opcode <= OpCopyObject)
            || opcode == OpSampledImage || opcode == OpImage || opcode == OpPhi;
}

// A module, and what a copy of it that counts needs.
class Module
{
public:
    explicit Module(const QByteArray &spirv) : m_words(words(optimized(spirv)))
    {
        forEach([this](quint32 opcode, const quint32 *at) {
            if (opcode == OpTypeFloat && at[2] == 32)
                m_float = at[1];
            else if (opcode == OpTypeVector)
                m_components.insert(at[1], at[3]);
            else if (opcode == OpVariable && at[3] == kOutput)
                m_output = at[2];
            else if (opcode == OpDecorate && at[2] == kBinding)
                m_bindings.insert(at[1], int(at[3]));
        });
        forEach([this](quint32 opcode, const quint32 *at) {
            if (opcode == OpTypeVector && at[2] == m_float && at[3] == 4)
                m_vector = at[1];
        });
    }

    // The bindings that texels are taken from; a query of the size does not count.
    QSet<int> sampledBindings() const
    {
        QHash<quint32, int> images = m_bindings;
        QSet<int> sampled;
        forEach([&](quint32 opcode, const quint32 *at) {
            if ((opcode == OpLoad || opcode == OpImage) && images.contains(at[3]))
                images.insert(at[2], images.value(at[3]));
            else if (opcode >= OpImageSampleImplicitLod && opcode <= OpImageFetch)
                sampled.insert(images.value(at[3], kUnknown));
        });
        if (sampled.remove(kUnknown)) // in a function that is not inlined
            sampled = QSet<int>(m_bindings.cbegin(), m_bindings.cend());
        return sampled;
    }

    // The module with the count as its colour.
    QByteArray counting() const
    {
        quint32 next = m_words[kBound];
        const quint32 pointer = next++;
        const quint32 counter = next++;
        const quint32 zero = next++;
        Words result(m_words.begin(), m_words.begin() + kHeaderWords);
        Words block; // since the label, without the label
        QHash<quint32, quint32> constants;
        const auto append = [](Words &to, const Words &instruction) {
            to.insert(to.end(), instruction.begin(), instruction.end());
        };
        const auto instruction = [](quint32 opcode, Words operands) {
            operands.insert(operands.begin(), quint32(operands.size() + 1) << 16U | opcode);
            return operands;
        };
        Words declarations;
        Words function;
        quint32 count = 0;
        std::optional<std::size_t> merge; // where the current block's merge instruction is
        bool isInFunction = false;
        forEach([&](quint32 opcode, const quint32 *at) {
            const Words whole(at, at + (at[0] >> 16U));
            if (opcode == OpFunction)
                isInFunction = true;
            if (!isInFunction) {
                append(result, whole);
                return;
            }
            if (opcode == OpLabel) {
                count = 0;
                merge.reset();
            } else if (opcode == OpLoopMerge || opcode == OpSelectionMerge) {
                merge = function.size();
            } else if (opcode > OpLabel && opcode <= OpReturn + 2) {
                const quint32 loaded = next++;
                const quint32 sum = next++;
                quint32 &constant = constants[count];
                if (constant == 0) {
                    constant = next++;
                    const float value = float(count);
                    quint32 bits = 0;
                    std::memcpy(&bits, &value, sizeof bits);
                    append(declarations, instruction(OpConstant, {m_float, constant, bits}));
                }
                Words counted = instruction(OpLoad, {m_float, loaded, counter});
                append(counted, instruction(OpFAdd, {m_float, sum, loaded, constant}));
                append(counted, instruction(OpStore, {counter, sum}));
                if (opcode == OpReturn) {
                    const quint32 colour = next++;
                    append(counted,
                           instruction(OpCompositeConstruct,
                                       {m_vector, colour, sum, sum, sum, sum}));
                    append(counted, instruction(OpStore, {m_output, colour}));
                }
                const auto place = std::ptrdiff_t(merge.value_or(function.size()));
                function.insert(function.begin() + place, counted.begin(), counted.end());
            } else if (opcode > OpVariable && !isMove(opcode)) {
                count += m_components.value(at[1], 1);
            }
            append(function, whole);
        });
        append(result, instruction(OpTypePointer, {pointer, kPrivate, m_float}));
        append(result, instruction(OpConstant, {m_float, zero, 0}));
        append(result, instruction(OpVariable, {pointer, counter, kPrivate, zero}));
        append(result, declarations);
        append(result, function);
        result[kBound] = next;
        return {reinterpret_cast<const char *>(result.data()),
                qsizetype(result.size() * sizeof(quint32))};
    }

private:
    template<typename Function>
    void forEach(const Function &function) const
    {
        for (std::size_t i = kHeaderWords; i < m_words.size(); i += m_words[i] >> 16U)
            function(m_words[i] & 0xFFFFU, &m_words[i]);
    }

    Words m_words;
    quint32 m_float = 0;
    quint32 m_vector = 0; // of four floats
    quint32 m_output = 0;
    QHash<quint32, quint32> m_components; // of vector types
    QHash<quint32, int> m_bindings;
};

constexpr QSize kScreen(3840, 2160);
constexpr QSize kSmallScreen(384, 216); // for passes to which the screen's size does not matter

double pixels(QSize size)
{
    return double(size.width()) * double(size.height());
}

struct Cost
{
    void add(double moreBytes, double moreInstructions)
    {
        bytes += moreBytes;
        instructions += moreInstructions;
    }

    double bytes = 0.0;
    double instructions = 0.0;
};

struct Drawing
{
    QList<PassResult> draw(QSize screen) const
    {
        return draw(preset, screen);
    }

    // The mean over a pass's fragments.
    double executed(int pass, const Module &module, QSize screen) const
    {
        PresetOnDisk counting = preset;
        VulkanRenderGraph::Pass &counted = counting.graph.passes[pass];
        counted.fragmentSpirvResource = QStringLiteral("counted");
        counted.format = VulkanRenderGraph::Format::RGBA32F;
        counting.modules.insert(counted.fragmentSpirvResource, module.counting());
        draw(counting, screen);
        const FloatImage counts = outputOf(renderer, pass);
        double sum = 0.0;
        for (const Pixel &pixel : counts.pixels)
            sum += double(pixel[0]);
        return sum / pixels(counts.size);
    }

    OffscreenRenderer &renderer;
    const PresetOnDisk &preset;

private:
    QList<PassResult> draw(const PresetOnDisk &drawn, QSize screen) const
    {
        QString error;
        FrameState state;
        state.params = initialValues(drawn.parameters);
        state.viewport = screen;
        if (!renderer.setGraph(drawn.graph, drawn.modules, error)
            || !renderer.drawFrame(state, error))
            qFatal("%s", qPrintable(error));
        return renderer.passes();
    }
};

} // namespace

int main(int argc, char **argv)
{
    const auto argument = [argv](int i) { return QString::fromLocal8Bit(argv[i]); };
    const std::unique_ptr<OffscreenRenderer> renderer = softwareRenderer();
    const QImage source =
            testPicture(QStringLiteral("scene-320x240")).convertToFormat(QImage::Format_RGBA32FPx4);
    QString error;
    for (int i = 2; i < argc; ++i) {
        PresetOnDisk preset;
        if (!loadPreset(argument(1), argument(i), preset, error)
            || !renderer->setSource(source, error))
            qFatal("%s", qPrintable(error));
        const Drawing drawing{*renderer, preset};
        const QList<PassResult> passes = drawing.draw(kScreen);
        const qsizetype boost = passes.size() - 1;
        Cost withoutBoost;
        Cost all;
        for (qsizetype k = 0; k <= boost; ++k) {
            const VulkanRenderGraph::Pass &pass = preset.graph.passes[k];
            if (pass.cacheByParameters)
                continue; // drawn once
            const Module module(preset.modules[pass.fragmentSpirvResource]);
            bool isLarge = passes[k].size == kScreen;
            double read = 0.0;
            for (const int binding : module.sampledBindings()) {
                const int input = pass.sampledInputs[binding].passIndex;
                if (input == VulkanRenderGraph::ResourceRef::SourceImage)
                    continue;
                const qsizetype from =
                        input == VulkanRenderGraph::ResourceRef::Feedback ? k : input;
                if (!preset.graph.passes[from].cacheByParameters)
                    read += double(passes[from].bytes);
                isLarge = isLarge || passes[from].size == kScreen;
            }
            const double each = drawing.executed(int(k), module, isLarge ? kScreen : kSmallScreen);
            const double fragments = pixels(passes[k].size);
            const double target = 4.0 * fragments;
            const double written = k == boost ? target : double(passes[k].bytes);
            std::fprintf(stderr, "%-26s %8.1f MB %8.0f instructions %8.3f G\n",
                         qPrintable(pass.debugName), (read + written) * 1e-6, each,
                         each * fragments * 1e-9);
            all.add(read + written, each * fragments);
            if (k < boost)
                withoutBoost.add(read + (k == boost - 1 ? target : written), each * fragments);
        }
        std::printf("%s\t%.0f\t%.0f\t%.0f\t%.2f\t%.2f\n", qPrintable(preset.name),
                    withoutBoost.bytes * 1e-6, all.bytes * 1e-6,
                    (all.bytes + 4.0 * pixels(kScreen)) * 1e-6, withoutBoost.instructions * 1e-9,
                    all.instructions * 1e-9);
        std::fflush(stdout);
    }
    return 0;
}
