#include "ModuleCheck.h"

#include <QHash>
#include <QList>
#include <QSet>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

using namespace Qt::StringLiterals;

namespace VulkanGraph {
namespace {

using Id = quint32;

// SPIR-V's numbers, under their names in its grammar.
enum Opcode : quint32 {
    OpName = 5,
    OpMemberName = 6,
    OpEntryPoint = 15,
    OpTypeInt = 21,
    OpTypeFloat = 22,
    OpTypeVector = 23,
    OpTypeImage = 25,
    OpTypeSampledImage = 27,
    OpTypeArray = 28,
    OpTypeStruct = 30,
    OpTypePointer = 32,
    OpConstant = 43,
    OpSpecConstant = 50,
    OpFunction = 54,
    OpFunctionEnd = 56,
    OpFunctionCall = 57,
    OpVariable = 59,
    OpImageTexelPointer = 60,
    OpLoad = 61,
    OpStore = 62,
    OpCopyMemory = 63,
    OpAccessChain = 65,
    OpInBoundsAccessChain = 66,
    OpArrayLength = 68,
    OpDecorate = 71,
    OpMemberDecorate = 72,
    OpCopyObject = 83,
};
enum ExecutionModel : quint32 { Vertex = 0, Fragment = 4 };
enum StorageClass : quint32 {
    UniformConstant = 0,
    Input = 1,
    Uniform = 2,
    PushConstant = 9,
    StorageBuffer = 12,
};
enum Decoration : quint32 {
    ArrayStride = 6,
    Location = 30,
    Binding = 33,
    DescriptorSet = 34,
    Offset = 35,
};
constexpr quint32 kMagicNumber = 0x07230203;
constexpr qsizetype kHeaderWords = 5;
constexpr quint32 kDim2D = 1;

constexpr quint32 kNone = ~0U; // no decoration
constexpr quint32 kWhole = ~0U; // in place of a member

// The push-constant block's members, without the last, which is the array of parameters.
struct Field
{
    quint32 offset;
    quint32 size;
};
constexpr std::array<Field, 8> kFields = {
        {{0, 16}, {16, 16}, {32, 16}, {48, 4}, {52, 4}, {56, 4}, {60, 4}, {64, 4}}};
constexpr quint32 kParamsOffset = 68;
constexpr quint32 kFloatSize = 4;

struct Variable
{
    Id id;
    Id type; // what it holds
    StorageClass storageClass;
};

// The parts of a module that the rules are about.
class Module
{
public:
    // Returns false if the module is damaged; the other functions are then not to be called.
    bool read(const QByteArray &spirv);

    bool hasMain(ExecutionModel stage) const
    {
        return m_mains.contains(stage);
    }

    // The module's own variables, those with the lowest bindings first.
    QList<Variable> variables() const;

    // Whether a function uses the variable.
    bool isUsed(const Variable &variable) const
    {
        return m_used.contains(variable.id);
    }

    quint32 decoration(Id id, Decoration kind, quint32 member = kWhole) const
    {
        return m_decorations.value({id, member}).value(kind, kNone);
    }

    // The number, followed by the name in brackets if the module has it.
    QString labelled(quint32 number, Id id, quint32 member = kWhole) const
    {
        const QString name = m_names.value({id, member});
        return name.isEmpty() ? QString::number(number) : u"%1 ('%2')"_s.arg(number).arg(name);
    }

    bool isSampler2D(Id type) const;
    bool isParameterArray(Id type) const;
    QList<Id> members(Id type) const;
    quint64 sizeOf(Id type) const; // in bytes; 0 of anything but numbers and vectors

private:
    // The words of an instruction after the first.
    struct Operands
    {
        const quint32 *words;
        qsizetype count;
    };

    bool readInstruction(quint32 opcode, Operands operands);
    bool readFunctionInstruction(quint32 opcode, Operands operands);
    bool readEntryPoint(Operands operands);
    bool isId(quint32 word) const
    {
        return word > 0 && word < m_bound;
    }
    quint32 kindOf(Id type) const
    {
        return m_types.value(type).value(0);
    }

    quint32 m_bound = 0;
    bool m_isInFunction = false;
    QSet<Id> m_functions;
    QHash<quint32, Id> m_mains; // functions by stage
    QHash<std::pair<Id, quint32>, QString> m_names; // by member
    QHash<std::pair<Id, quint32>, QHash<quint32, quint32>> m_decorations; // by member, then by kind
    QHash<Id, QList<quint32>> m_types; // the opcode, then the operands
    QHash<Id, quint32> m_constants; // their first words
    QList<Variable> m_variables;
    QSet<Id> m_used;
};

// Reads a string and returns false if it has no end.
bool readString(const quint32 *words, qsizetype count, QString &text)
{
    QByteArray bytes;
    for (qsizetype i = 0; i < 4 * count; ++i) {
        const char byte = char(words[i / 4] >> (8 * (i % 4)) & 0xFFU);
        if (byte == '\0') {
            text = QString::fromUtf8(bytes);
            return true;
        }
        bytes.append(byte);
    }
    return false;
}

bool Module::read(const QByteArray &spirv)
{
    const qsizetype count = spirv.size() / qsizetype(sizeof(quint32));
    if (count < kHeaderWords || spirv.size() % qsizetype(sizeof(quint32)) != 0)
        return false;
    std::vector<quint32> words(static_cast<std::size_t>(count));
    std::memcpy(words.data(), spirv.constData(), static_cast<std::size_t>(spirv.size()));
    if (words[0] != kMagicNumber)
        return false;
    m_bound = words[3];

    qsizetype length = 0;
    for (qsizetype i = kHeaderWords; i < count; i += length) {
        const quint32 first = words[std::size_t(i)];
        length = first >> 16U;
        if (length == 0 || length > count - i)
            return false;
        if (!readInstruction(first & 0xFFFFU, {words.data() + i + 1, length - 1}))
            return false;
    }
    return !m_isInFunction && std::all_of(m_mains.cbegin(), m_mains.cend(), [this](Id main) {
        return m_functions.contains(main);
    });
}

bool Module::readInstruction(quint32 opcode, Operands operands)
{
    if (m_isInFunction)
        return readFunctionInstruction(opcode, operands);

    const auto [words, count] = operands;
    switch (opcode) {
    case OpEntryPoint:
        return readEntryPoint(operands);
    case OpName:
        return count >= 2 && isId(words[0])
                && readString(words + 1, count - 1, m_names[{words[0], kWhole}]);
    case OpMemberName:
        return count >= 3 && isId(words[0])
                && readString(words + 2, count - 2, m_names[{words[0], words[1]}]);
    case OpDecorate:
        if (count < 2 || !isId(words[0]))
            return false;
        m_decorations[{words[0], kWhole}][words[1]] = count > 2 ? words[2] : 0;
        return true;
    case OpMemberDecorate:
        if (count < 3 || !isId(words[0]))
            return false;
        m_decorations[{words[0], words[1]}][words[2]] = count > 3 ? words[3] : 0;
        return true;
    case OpTypeInt:
    case OpTypeFloat:
    case OpTypeVector:
    case OpTypeImage:
    case OpTypeSampledImage:
    case OpTypeArray:
    case OpTypeStruct:
    case OpTypePointer:
        if (count < 1 || !isId(words[0]))
            return false;
        m_types[words[0]] = QList<quint32>(words, words + count);
        m_types[words[0]][0] = opcode;
        return true;
    case OpConstant:
    case OpSpecConstant:
        if (count < 3 || !isId(words[1]))
            return false;
        m_constants[words[1]] = words[2];
        return true;
    case OpVariable: {
        if (count < 3 || !isId(words[0]) || !isId(words[1]))
            return false;
        const QList<quint32> pointer = m_types.value(words[0]);
        if (pointer.size() != 3 || pointer[0] != OpTypePointer)
            return false;
        m_variables.append({words[1], pointer[2], StorageClass(words[2])});
        return true;
    }
    case OpFunction:
        if (count < 4 || !isId(words[1]))
            return false;
        m_functions.insert(words[1]);
        m_isInFunction = true;
        return true;
    default:
        return true;
    }
}

// Looks for variables where an instruction takes pointers: other operands are plain numbers, some
// of which equal a variable's id.
bool Module::readFunctionInstruction(quint32 opcode, Operands operands)
{
    qsizetype first = 2;
    qsizetype end = 3;
    switch (opcode) {
    case OpFunctionEnd:
        m_isInFunction = false;
        return true;
    case OpStore:
    case OpCopyMemory:
        first = 0;
        end = 2;
        break;
    case OpLoad:
    case OpArrayLength:
    case OpImageTexelPointer:
    case OpCopyObject:
        break;
    case OpAccessChain:
    case OpInBoundsAccessChain:
    case OpFunctionCall:
        end = std::max(end, operands.count);
        break;
    default:
        return opcode != OpFunction;
    }
    if (operands.count < end)
        return false;
    for (qsizetype i = first; i < end; ++i) {
        if (!isId(operands.words[i]))
            return false;
        m_used.insert(operands.words[i]);
    }
    return true;
}

bool Module::readEntryPoint(Operands operands)
{
    const auto [words, count] = operands;
    QString name;
    if (count < 3 || !isId(words[1]) || !readString(words + 2, count - 2, name))
        return false;
    if (name == "main"_L1)
        m_mains.insert(words[0], words[1]);
    return true;
}

QList<Variable> Module::variables() const
{
    QList<Variable> sorted = m_variables;
    std::stable_sort(sorted.begin(), sorted.end(), [this](const Variable &a, const Variable &b) {
        return decoration(a.id, Binding) < decoration(b.id, Binding);
    });
    return sorted;
}

bool Module::isSampler2D(Id type) const
{
    const QList<quint32> sampled = m_types.value(type);
    const QList<quint32> image = m_types.value(sampled.value(1));
    if (sampled.value(0) != OpTypeSampledImage || image.size() < 8 || image[0] != OpTypeImage)
        return false;
    const bool isDepth = image[3] == 1;
    const bool isArrayed = image[4] != 0;
    const bool isMultisampled = image[5] != 0;
    return kindOf(image[1]) == OpTypeFloat && image[2] == kDim2D && !isDepth && !isArrayed
            && !isMultisampled;
}

bool Module::isParameterArray(Id type) const
{
    const QList<quint32> array = m_types.value(type);
    const quint32 length = m_constants.value(array.value(2));
    return array.value(0) == OpTypeArray && kindOf(array.value(1)) == OpTypeFloat
            && sizeOf(array[1]) == kFloatSize && decoration(type, ArrayStride) == kFloatSize
            && length > 0 && length <= quint32(VulkanRenderGraph::MaxParamFloatsPerPass);
}

QList<Id> Module::members(Id type) const
{
    const QList<quint32> fields = m_types.value(type);
    return fields.value(0) == OpTypeStruct ? fields.sliced(1) : QList<Id>();
}

quint64 Module::sizeOf(Id type) const
{
    const QList<quint32> words = m_types.value(type);
    switch (words.value(0)) {
    case OpTypeInt:
    case OpTypeFloat:
        return words.value(1) / 8;
    case OpTypeVector: {
        const quint32 kind = kindOf(words.value(1));
        if (kind == OpTypeInt || kind == OpTypeFloat)
            return sizeOf(words[1]) * words.value(2);
        break;
    }
    default:
        break;
    }
    return 0;
}

bool readModule(const QByteArray &spirv, ExecutionModel stage, Module &module, QString &error)
{
    if (!module.read(spirv)) {
        error = u"the module is not SPIR-V, or is damaged"_s;
        return false;
    }
    if (!module.hasMain(stage)) {
        error = u"the module has no main() of a %1 shader"_s.arg(stage == Vertex ? "vertex"_L1
                                                                                 : "fragment"_L1);
        return false;
    }
    return true;
}

QString imageCount(qsizetype count)
{
    if (count == 0)
        return u"no images"_s;
    return count == 1 ? u"1 image"_s : u"%1 images"_s.arg(count);
}

bool checkBinding(const Module &module, const Variable &variable, const VulkanRenderGraph &graph,
                  int pass, QString &error)
{
    const quint32 binding = module.decoration(variable.id, Binding);
    const quint32 set = module.decoration(variable.id, DescriptorSet);
    const QString label = module.labelled(binding, variable.id);
    if (set != 0) {
        error = u"binding %1 is in set %2, but all images of a pass are in set 0"_s.arg(
                label, QString::number(set));
        return false;
    }
    if (!module.isSampler2D(variable.type)) {
        error = u"binding %1 is not a sampler2D, as all images of a pass are"_s.arg(label);
        return false;
    }
    const qsizetype count = graph.passes[pass].sampledInputs.size();
    if (binding >= quint64(count)) {
        error = u"binding %1 is sampled, but pass %2 of '%3' has %4: is an //! input line or feedback missing?"_s
                        .arg(label, QString::number(pass),
                             graph.presetQrcPath.section(u'/', -1).section(u'.', 0, -2),
                             imageCount(count));
        return false;
    }
    return true;
}

bool checkPushConstants(const Module &module, const Variable &variable, QString &error)
{
    const QList<Id> members = module.members(variable.type);
    for (qsizetype i = 0; i < members.size(); ++i) {
        const auto index = quint32(i);
        const QString label = module.labelled(index, variable.type, index);
        if (index > kFields.size()) {
            error = u"push constant %1 is beyond the last member of the block, params"_s.arg(label);
            return false;
        }
        const bool isParams = index == kFields.size();
        const quint32 expected = isParams ? kParamsOffset : kFields[index].offset;
        const quint32 offset = module.decoration(variable.type, Offset, index);
        if (offset != expected) {
            error = u"push constant %1 is at byte %2, not %3"_s.arg(label, QString::number(offset),
                                                                    QString::number(expected));
            return false;
        }
        if (isParams && !module.isParameterArray(members[i])) {
            error = u"push constant %1 is not an array of at most %2 floats"_s.arg(
                    label, QString::number(VulkanRenderGraph::MaxParamFloatsPerPass));
            return false;
        }
        if (!isParams && module.sizeOf(members[i]) != kFields[index].size) {
            error = u"push constant %1 is not a number or vector of %2 bytes"_s.arg(
                    label, QString::number(kFields[index].size));
            return false;
        }
    }
    return true;
}

// The greatest location of the variable or its members, or kNone for a built-in variable.
quint32 locationOf(const Module &module, const Variable &variable)
{
    quint32 location = module.decoration(variable.id, Location);
    const auto count = quint32(module.members(variable.type).size());
    for (quint32 member = 0; member < count; ++member) {
        const quint32 own = module.decoration(variable.type, Location, member);
        if (location == kNone || (own != kNone && own > location))
            location = own;
    }
    return location;
}

// The inputs that are declared have to exist, used or not.
bool checkInput(const Module &module, const Variable &variable, ExecutionModel stage,
                QString &error)
{
    const quint32 location = locationOf(module, variable);
    if (location == kNone || (stage == Fragment && location == 0))
        return true;
    const QString label = module.labelled(location, variable.id);
    error = (stage == Fragment
                     ? u"input %1 does not exist: a component's only input is texCoord, at location 0"_s
                     : u"input %1 does not exist: no pass has vertices of its own"_s)
                    .arg(label);
    return false;
}

} // namespace

bool checkFragmentModule(const QByteArray &spirv, const VulkanRenderGraph &graph, int pass,
                         QString &error)
{
    Module module;
    if (!readModule(spirv, Fragment, module, error))
        return false;
    const QList<Variable> variables = module.variables();
    return std::all_of(variables.cbegin(), variables.cend(), [&](const Variable &variable) {
        switch (variable.storageClass) {
        case Input:
            return checkInput(module, variable, Fragment, error);
        case UniformConstant:
        case Uniform:
        case StorageBuffer:
            return !module.isUsed(variable) || checkBinding(module, variable, graph, pass, error);
        case PushConstant:
            return !module.isUsed(variable) || checkPushConstants(module, variable, error);
        }
        return true;
    });
}

bool checkVertexModule(const QByteArray &spirv, QString &error)
{
    Module module;
    if (!readModule(spirv, Vertex, module, error))
        return false;
    const QList<Variable> variables = module.variables();
    return std::all_of(variables.cbegin(), variables.cend(), [&](const Variable &variable) {
        return variable.storageClass != Input || checkInput(module, variable, Vertex, error);
    });
}

} // namespace VulkanGraph
