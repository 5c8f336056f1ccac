#include "ModuleCheck.h"

#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

using namespace Qt::StringLiterals;

namespace VulkanGraph {

namespace {

// SPIR-V's numbers, under their names in its grammar.
enum Opcode : quint32 {
    OpName = 5,
    OpMemberName = 6,
    OpEntryPoint = 15,
    OpTypeFloat = 22,
    OpTypeImage = 25,
    OpTypeSampledImage = 27,
    OpTypePointer = 32,
    OpFunctionEnd = 56,
    OpFunctionCall = 57,
    OpVariable = 59,
    OpArrayLength = 68,
    OpDecorate = 71,
    OpMemberDecorate = 72,
};
enum ExecutionModel : quint32 { Vertex = 0, Fragment = 4 };
enum StorageClass : quint32 {
    UniformConstant = 0,
    Input = 1,
    Uniform = 2,
    PushConstant = 9,
    StorageBuffer = 12,
};
enum Decoration : quint32 { Location = 30, Binding = 33, DescriptorSet = 34, Offset = 35 };
constexpr quint32 kMagicNumber = 0x07230203;
constexpr std::size_t kHeaderWords = 5;
constexpr quint32 kDim2D = 1;

// The bytes at which the members of the push-constant block begin.
constexpr std::array<quint32, 9> kMemberOffsets = {0, 16, 32, 48, 52, 56, 60, 64, 68};

class Module
{
public:
    struct Instruction
    {
        quint32 opcode;
        std::vector<quint32> operands;

        // 0, which is no id, if there are fewer.
        quint32 at(std::size_t index) const
        {
            return index < operands.size() ? operands[index] : 0;
        }
        QString text(std::size_t first) const
        {
            QByteArray bytes;
            for (std::size_t i = 4 * first; i < 4 * operands.size(); ++i) {
                const char byte = char(operands[i / 4] >> (8 * (i % 4)) & 0xFFU);
                if (byte == '\0')
                    break;
                bytes.append(byte);
            }
            return QString::fromUtf8(bytes);
        }
    };

    // Returns false if it is no SPIR-V, or damaged.
    bool read(const QByteArray &spirv)
    {
        std::vector<quint32> words(std::size_t(spirv.size()) / sizeof(quint32));
        if (words.size() < kHeaderWords || std::size_t(spirv.size()) % sizeof(quint32) != 0)
            return false;
        std::memcpy(words.data(), spirv.constData(), std::size_t(spirv.size()));
        for (std::size_t i = kHeaderWords; i < words.size();) {
            const std::size_t length = words[i] >> 16U;
            if (length == 0 || length > words.size() - i)
                return false;
            const auto first = words.cbegin() + std::ptrdiff_t(i);
            instructions.push_back({*first & 0xFFFFU, {first + 1, first + std::ptrdiff_t(length)}});
            i += length;
        }
        return words[0] == kMagicNumber && !instructions.empty()
                && instructions.back().opcode == OpFunctionEnd;
    }

    // Null if there is none.
    template<typename Predicate>
    const Instruction *find(quint32 opcode, const Predicate &isSought) const
    {
        const auto found = std::find_if(
                instructions.cbegin(), instructions.cend(), [&](const Instruction &instruction) {
                    return instruction.opcode == opcode && isSought(instruction);
                });
        return found == instructions.cend() ? nullptr : &*found;
    }
    const Instruction *type(quint32 opcode, quint32 id) const
    {
        return find(opcode, [id](const Instruction &type) { return type.at(0) == id; });
    }
    const Instruction *decoration(quint32 id, Decoration kind) const
    {
        return find(OpDecorate, [=](const Instruction &decoration) {
            return decoration.at(0) == id && decoration.at(1) == kind;
        });
    }
    quint32 decorationValue(quint32 id, Decoration kind) const
    {
        const Instruction *const found = decoration(id, kind);
        return found == nullptr ? 0 : found->at(2);
    }
    bool hasMain(ExecutionModel stage) const
    {
        return find(OpEntryPoint, [stage](const Instruction &entry) {
            return entry.at(0) == stage && entry.text(2) == "main"_L1;
        });
    }

    // Whether a function reads, writes or passes on the variable.
    bool isUsed(quint32 variable) const
    {
        return std::any_of(instructions.cbegin(), instructions.cend(),
                           [variable](const Instruction &instruction) {
                               const std::vector<quint32> &operands = instruction.operands;
                               return instruction.opcode >= OpFunctionCall
                                       && instruction.opcode <= OpArrayLength
                                       && instruction.opcode != OpVariable
                                       && std::count(operands.cbegin(), operands.cend(), variable)
                                       > 0;
                           });
    }

    // The number, followed by the name in brackets if the module has it.
    static QString labelled(quint32 number, const QString &name)
    {
        return name.isEmpty() ? QString::number(number)
                              : "%1 ('%2')"_L1.arg(QString::number(number), name);
    }
    QString labelled(quint32 number, quint32 id) const
    {
        const Instruction *const name = type(OpName, id);
        return labelled(number, name == nullptr ? QString() : name->text(1));
    }

    std::vector<Instruction> instructions;
};

bool readModule(const QByteArray &spirv, ExecutionModel stage, Module &module, QString &error)
{
    if (!module.read(spirv)) {
        error = u"the module is not SPIR-V, or is damaged"_s;
        return false;
    }
    if (!module.hasMain(stage)) {
        error = "the module has no main() of a %1 shader"_L1.arg(stage == Vertex ? "vertex"_L1
                                                                                 : "fragment"_L1);
        return false;
    }
    return true;
}

bool isSampler2D(const Module &module, quint32 type)
{
    const Module::Instruction *const sampler = module.type(OpTypeSampledImage, type);
    const Module::Instruction *const image =
            sampler == nullptr ? nullptr : module.type(OpTypeImage, sampler->at(1));
    const bool isDepthArrayedOrMultisampled =
            image != nullptr && (image->at(3) == 1 || image->at(4) != 0 || image->at(5) != 0);
    return image != nullptr && module.type(OpTypeFloat, image->at(1)) != nullptr
            && image->at(2) == kDim2D && !isDepthArrayedOrMultisampled;
}

bool checkBinding(const Module &module, quint32 variable, quint32 type,
                  const VulkanRenderGraph &graph, int pass, QString &error)
{
    const quint32 binding = module.decorationValue(variable, Binding);
    const quint32 set = module.decorationValue(variable, DescriptorSet);
    const QString label = module.labelled(binding, variable);
    const qsizetype count = graph.passes.at(pass).sampledInputs.size();
    if (set != 0) {
        error = "binding %1 is in set %2, but all images of a pass are in set 0"_L1.arg(
                label, QString::number(set));
    } else if (!isSampler2D(module, type)) {
        error = "binding %1 is not a sampler2D, as all images of a pass are"_L1.arg(label);
    } else if (binding >= quint64(count)) {
        const QString images = count == 0 ? u"no images"_s
                : count == 1              ? u"1 image"_s
                                          : "%1 images"_L1.arg(QString::number(count));
        error = "binding %1 is sampled, but pass %2 of '%3' has %4: is an //! input line or feedback missing?"_L1
                        .arg(label, QString::number(pass),
                             QFileInfo(graph.presetQrcPath).completeBaseName(), images);
    } else {
        return true;
    }
    return false;
}

bool checkPushConstants(const Module &module, quint32 block, QString &error)
{
    for (const Module::Instruction &decoration : module.instructions) {
        if (decoration.opcode != OpMemberDecorate || decoration.at(0) != block
            || decoration.at(2) != Offset)
            continue;
        const quint32 member = decoration.at(1);
        const quint32 offset = decoration.at(3);
        const bool exists = member < kMemberOffsets.size();
        if (exists && offset == kMemberOffsets[member])
            continue;
        const Module::Instruction *const name =
                module.find(OpMemberName, [=](const Module::Instruction &memberName) {
                    return memberName.at(0) == block && memberName.at(1) == member;
                });
        const QString label = Module::labelled(member, name == nullptr ? QString() : name->text(2));
        error = exists
                ? "push constant %1 is at byte %2, not %3"_L1.arg(
                        label, QString::number(offset), QString::number(kMemberOffsets[member]))
                : "push constant %1 is beyond the last member of the block, params"_L1.arg(label);
        return false;
    }
    return true;
}

} // namespace

bool checkFragmentModule(const QByteArray &spirv, const VulkanRenderGraph &graph, int pass,
                         QString &error)
{
    Module module;
    if (!readModule(spirv, Fragment, module, error))
        return false;
    for (const Module::Instruction &variable : module.instructions) {
        const Module::Instruction *const pointer = variable.opcode == OpVariable
                ? module.type(OpTypePointer, variable.at(0))
                : nullptr;
        if (pointer == nullptr || !module.isUsed(variable.at(1)))
            continue;
        const quint32 id = variable.at(1);
        const quint32 type = pointer->at(2);
        switch (variable.at(2)) {
        case UniformConstant:
        case Uniform:
        case StorageBuffer:
            if (!checkBinding(module, id, type, graph, pass, error))
                return false;
            break;
        case PushConstant:
            if (!checkPushConstants(module, type, error))
                return false;
            break;
        case Input:
            if (module.decorationValue(id, Location) != 0) {
                error = "input %1 does not exist: a component's only input is texCoord, at location 0"_L1
                                .arg(module.labelled(module.decorationValue(id, Location), id));
                return false;
            }
            break;
        default:
            break;
        }
    }
    return true;
}

bool checkVertexModule(const QByteArray &spirv, QString &error)
{
    Module module;
    if (!readModule(spirv, Vertex, module, error))
        return false;
    for (const Module::Instruction &variable : module.instructions) {
        const quint32 id = variable.at(1);
        const Module::Instruction *const location =
                variable.opcode == OpVariable && variable.at(2) == Input
                ? module.decoration(id, Location)
                : nullptr;
        if (location != nullptr) {
            error = "input %1 does not exist: no pass has vertices of its own"_L1.arg(
                    module.labelled(location->at(2), id));
            return false;
        }
    }
    return true;
}

} // namespace VulkanGraph
