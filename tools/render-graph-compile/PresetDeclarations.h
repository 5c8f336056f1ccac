#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>
#include <type_traits>

// The records in which shader presets are declared. All of it is constant data: strings are static
// and ASCII, "" where there is none; arrays are static, null with count 0 where there is none.
// The defaults describe a plain pass: it renders once at the size of its input, and its output is
// sampled at the nearest texel.
namespace FirstPartyPresetSource {

// One parameter that a pass binds, and what the user interface shows for it.
struct ParamDecl
{
    const char *id;
    const char *description;
    float defaultValue;
    float min;
    float max;
    float step;
};

// Values of PassDecl::scaleType.
inline constexpr std::int32_t kScaleSource = 0;
inline constexpr std::int32_t kScaleViewport = 1;
inline constexpr std::int32_t kScaleAbsolute = 2;

struct PassDecl
{
    const char *component; // names the shader source, its SPIR-V resource and the pass
    const char *extentAlias =
            ""; // later passes sample this pass's output, or its size, by this name
    bool linearFilter = false;
    std::int32_t scaleType = kScaleSource;
    float scaleX = 1.0F;
    float scaleY = 1.0F;
    std::int32_t absoluteWidth = 0; // pixels, with kScaleAbsolute only
    std::int32_t absoluteHeight = 0;
    std::int32_t reserved = 0; // not read by this tool
    std::int32_t wrapMode = 0; // the renderer's number, passed through
    const ParamDecl *params = nullptr;
    std::int32_t paramCount = 0;
    bool mipmap = false;
    bool cacheByParameters = false; // the output depends on parameters alone: no picture input
    const char *constantBlackWhenZero = ""; // parameter id: while it is 0 the output is black
    float constantBlackAlpha = 1.0F; // alpha of that black, 0 or 1
    bool shareConstantBlack = false;
    bool feedback = false; // the pass reads its own previous output
    const char *scaleInputAlias = ""; // earlier extentAlias whose size kScaleSource refers to
};

// A preset's own tuned value of one parameter.
struct ValueOverride
{
    const char *id;
    float value;
};

struct PresetDecl
{
    const char *name; // also the file stem of the preset's resources
    std::int32_t feedbackPassIndex = -1; // -1 for none; out of range counts as none
    const PassDecl *passes; // in execution order
    std::int32_t passCount;
    const char *presetExtension = "glslp"; // or "glsl"
    bool vulkanOnly = true; // no text of the preset ships for the GL renderer
    const ValueOverride *valueOverrides = nullptr;
    std::int32_t valueOverrideCount = 0;
};

namespace Detail {

template<typename T>
constexpr std::span<const T> rows(const T *first, std::int32_t count)
{
    return count > 0 ? std::span(first, static_cast<std::size_t>(count)) : std::span<const T>();
}

} // namespace Detail

// The passes of both arrays, for a preset that puts passes in front of another's.
template<std::size_t M, std::size_t N>
constexpr std::array<PassDecl, M + N> joined(const PassDecl (&first)[M],
                                             const PassDecl (&second)[N])
{
    std::array<PassDecl, M + N> passes{};
    std::ranges::copy(second, std::ranges::copy(first, passes.begin()).out);
    return passes;
}

// The arrays as ranges; a count of 0 or less is an empty range, whatever the pointer.
constexpr std::span<const PassDecl> passesOf(const PresetDecl &preset)
{
    return Detail::rows(preset.passes, preset.passCount);
}

constexpr std::span<const ParamDecl> paramsOf(const PassDecl &pass)
{
    return Detail::rows(pass.params, pass.paramCount);
}

constexpr std::span<const ValueOverride> valueOverridesOf(const PresetDecl &preset)
{
    return Detail::rows(preset.valueOverrides, preset.valueOverrideCount);
}

// The rules for presets. A rule's function returns the name of what breaks the rule, for the
// compiler's message: an id, an alias, a component or a field. It returns null if the rule is kept.
namespace Rules {

constexpr bool isAsciiLetterOrDigit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// The name goes into file names and into the manifest's identifiers.
constexpr const char *unusableName(const PresetDecl &preset)
{
    const std::string_view name = preset.name;
    const bool isUsable = !name.empty() && isAsciiLetterOrDigit(name.front())
            && std::ranges::all_of(
                    name, [](char c) { return isAsciiLetterOrDigit(c) || c == '-' || c == '_'; });
    return isUsable ? nullptr : "name";
}

constexpr const char *missingPasses(const PresetDecl &preset)
{
    return preset.passCount >= 1 ? nullptr : "passes";
}

// In constant expressions an array with a count is not compared with null: GCC's sanitizers reject
// such a comparison.
constexpr bool isCountOf(const void *array, std::int32_t count)
{
    return count > 0 ? std::is_constant_evaluated() || array != nullptr
                     : count == 0 && array == nullptr;
}

constexpr const char *countWithoutArray(const PresetDecl &preset)
{
    if (!isCountOf(preset.passes, preset.passCount))
        return "passes";
    if (!isCountOf(preset.valueOverrides, preset.valueOverrideCount))
        return "valueOverrides";
    for (const PassDecl &pass : passesOf(preset)) {
        if (!isCountOf(pass.params, pass.paramCount))
            return pass.component;
    }
    return nullptr;
}

constexpr const char *feedbackPassOutOfRange(const PresetDecl &preset)
{
    const bool isInRange =
            preset.feedbackPassIndex >= -1 && preset.feedbackPassIndex < preset.passCount;
    return isInRange ? nullptr : "feedbackPassIndex";
}

constexpr bool publishesAlias(std::span<const PassDecl> passes, std::string_view alias)
{
    return std::ranges::any_of(passes,
                               [alias](const PassDecl &pass) { return pass.extentAlias == alias; });
}

constexpr const char *repeatedAlias(const PresetDecl &preset)
{
    const auto passes = passesOf(preset);
    for (std::size_t i = 0; i < passes.size(); ++i) {
        const char *alias = passes[i].extentAlias;
        if (*alias != '\0' && publishesAlias(passes.first(i), alias))
            return alias;
    }
    return nullptr;
}

constexpr const char *scaleInputNotPublishedEarlier(const PresetDecl &preset)
{
    const auto passes = passesOf(preset);
    for (std::size_t i = 0; i < passes.size(); ++i) {
        const char *alias = passes[i].scaleInputAlias;
        if (*alias != '\0' && !publishesAlias(passes.first(i), alias))
            return alias;
    }
    return nullptr;
}

constexpr const char *misplacedAbsoluteSize(const PresetDecl &preset)
{
    for (const PassDecl &pass : passesOf(preset)) {
        const bool isRight = pass.scaleType == kScaleAbsolute
                ? pass.absoluteWidth > 0 && pass.absoluteHeight >= 0
                : pass.absoluteWidth == 0 && pass.absoluteHeight == 0;
        if (!isRight)
            return pass.component;
    }
    return nullptr;
}

// Compares every override with every parameter. std::string_view would first measure both texts,
// which takes compilers long to evaluate.
constexpr bool isSameText(const char *a, const char *b)
{
    for (; *a == *b; ++a, ++b) {
        if (*a == '\0')
            return true;
    }
    return false;
}

constexpr bool bindsParam(const PresetDecl &preset, const char *id)
{
    for (const PassDecl &pass : passesOf(preset)) {
        for (const ParamDecl &param : paramsOf(pass)) {
            if (isSameText(param.id, id))
                return true;
        }
    }
    return false;
}

constexpr const char *unboundConstantBlack(const PresetDecl &preset)
{
    for (const PassDecl &pass : passesOf(preset)) {
        const char *id = pass.constantBlackWhenZero;
        if (*id != '\0' && !bindsParam(preset, id))
            return id;
    }
    return nullptr;
}

constexpr const char *unboundOverride(const PresetDecl &preset)
{
    for (const ValueOverride &row : valueOverridesOf(preset)) {
        if (!bindsParam(preset, row.id))
            return row.id;
    }
    return nullptr;
}

constexpr const char *repeatedOverride(const PresetDecl &preset)
{
    const auto overrides = valueOverridesOf(preset);
    for (std::size_t i = 0; i < overrides.size(); ++i) {
        const std::string_view id = overrides[i].id;
        if (std::ranges::any_of(overrides.first(i),
                                [id](const ValueOverride &row) { return row.id == id; }))
            return overrides[i].id;
    }
    return nullptr;
}

constexpr const char *overrideOutOfBounds(const PresetDecl &preset)
{
    for (const PassDecl &pass : passesOf(preset)) {
        for (const ParamDecl &param : paramsOf(pass)) {
            for (const ValueOverride &row : valueOverridesOf(preset)) {
                if (isSameText(param.id, row.id)
                    && !(param.min <= row.value && row.value <= param.max))
                    return row.id;
            }
        }
    }
    return nullptr;
}

constexpr const char *passValueOutOfRange(const PresetDecl &preset)
{
    for (const PassDecl &pass : passesOf(preset)) {
        const bool isInRange = pass.scaleType >= kScaleSource && pass.scaleType <= kScaleAbsolute
                && (pass.constantBlackAlpha == 0.0F || pass.constantBlackAlpha == 1.0F);
        if (!isInRange)
            return pass.component;
    }
    return nullptr;
}

constexpr const char *paramOutOfBounds(const PresetDecl &preset)
{
    for (const PassDecl &pass : passesOf(preset)) {
        for (const ParamDecl &param : paramsOf(pass)) {
            const bool isInRange = param.min <= param.defaultValue
                    && param.defaultValue <= param.max && param.step > 0.0F;
            if (!isInRange)
                return param.id;
        }
    }
    return nullptr;
}

struct Rule
{
    const char *text; // without quotation marks, of which compilers make something else
    const char *(*culprit)(const PresetDecl &);
};

inline constexpr Rule kRules[] = {
        {"a preset name consists of letters, digits, - and _, and begins with one of the first two",
         unusableName},
        {"a preset has at least one pass", missingPasses},
        {"an array comes with its count, and no array with a count of 0", countWithoutArray},
        {"feedbackPassIndex is -1 or the index of a pass of its preset", feedbackPassOutOfRange},
        {"an extentAlias is published by one pass of a preset only", repeatedAlias},
        {"a scaleInputAlias names the extentAlias of an earlier pass",
         scaleInputNotPublishedEarlier},
        {"absoluteWidth and absoluteHeight belong to kScaleAbsolute passes, and only to them",
         misplacedAbsoluteSize},
        {"constantBlackWhenZero names a parameter that some pass of the preset binds",
         unboundConstantBlack},
        {"the id of a value override is bound by some pass of its preset", unboundOverride},
        {"the id of a value override stands once in its list", repeatedOverride},
        {"a value override lies within the bounds of its parameter", overrideOutOfBounds},
        {"scaleType is one of the kScale values, and constantBlackAlpha is 0 or 1",
         passValueOutOfRange},
        {"the default of a parameter lies within its bounds, and its step is above 0",
         paramOutOfBounds},
};

// The manifest's identifiers carry the preset name with '_' for '-'.
constexpr bool isSameIdentifier(std::string_view a, std::string_view b)
{
    return std::ranges::equal(
            a, b, {}, [](char c) { return c == '-' ? '_' : c; },
            [](char c) { return c == '-' ? '_' : c; });
}

// The first rule that is broken, the preset that breaks it, and what in the preset breaks it. All
// are null if the rules are kept.
struct BrokenRule
{
    const char *rule = nullptr;
    const char *preset = nullptr;
    const char *culprit = nullptr;
};

constexpr BrokenRule firstBrokenRule(std::span<const PresetDecl> presets)
{
    for (std::size_t i = 0; i < presets.size(); ++i) {
        for (const Rule &rule : kRules) {
            if (const char *culprit = rule.culprit(presets[i]))
                return {rule.text, presets[i].name, culprit};
        }
        for (const PresetDecl &earlier : presets.first(i)) {
            if (isSameIdentifier(earlier.name, presets[i].name))
                return {"two preset names differ in more than - against _", presets[i].name,
                        earlier.name};
        }
    }
    return {};
}

// Whether the compiler can evaluate `expression`.
template<auto expression>
inline constexpr bool isConstant = requires
{
    typename std::bool_constant<(expression(), true)>;
};

// Not a constant expression if the array has fewer rows than its count.
constexpr void readLast(const auto &rows)
{
    if (!rows.empty()) {
        [[maybe_unused]] const auto last = rows.back();
    }
}

constexpr void readAll(std::span<const PresetDecl> presets)
{
    for (const PresetDecl &preset : presets) {
        readLast(passesOf(preset));
        readLast(valueOverridesOf(preset));
        for (const PassDecl &pass : passesOf(preset))
            readLast(paramsOf(pass));
    }
}

// Finds the first count that is greater than its array, from the given preset and pass on.
template<const auto &presets, std::size_t index = 0, std::size_t passIndex = 0>
constexpr BrokenRule firstCountBeyondArray()
{
    constexpr const char *rule = "a count is not greater than its array";
    constexpr const PresetDecl &preset = presets[index];
    if constexpr (!isConstant<[] { readLast(passesOf(presets[index])); }>)
        return {rule, preset.name, "passes"};
    else if constexpr (!isConstant<[] { readLast(valueOverridesOf(presets[index])); }>)
        return {rule, preset.name, "valueOverrides"};
    else if constexpr (passIndex >= passesOf(preset).size())
        return firstCountBeyondArray<presets, index + 1>();
    else if constexpr (!isConstant<[] { readLast(paramsOf(passesOf(presets[index])[passIndex])); }>)
        return {rule, preset.name, preset.passes[passIndex].component};
    else
        return firstCountBeyondArray<presets, index, passIndex + 1>();
}

// A text as a template argument; a longer one is cut off.
struct ShownText
{
    char text[100] = {};
    consteval ShownText(const char *shown)
    {
        std::ranges::copy(std::string_view(shown).substr(0, std::size(text) - 1), text);
    }
};

void stopCompiling();

// Not a constant expression. The compiler's message shows the arguments: GCC those of the template,
// clang those of the function.
template<ShownText rule, ShownText preset, ShownText culprit>
constexpr bool aRuleIsBroken(const char * /*rule*/, const char * /*preset*/,
                             const char * /*culprit*/)
{
    stopCompiling();
    return true;
}

// For use in static_assert: does not compile if a rule is broken.
template<const auto &presets>
constexpr bool areKept()
{
    constexpr BrokenRule broken = [] {
        if constexpr (isConstant<[] { readAll(presets); }>)
            return firstBrokenRule(presets);
        else
            return firstCountBeyondArray<presets>();
    }();
    if constexpr (broken.rule != nullptr)
        return !aRuleIsBroken<broken.rule, broken.preset, broken.culprit>(
                broken.rule, broken.preset, broken.culprit);
    return true;
}

} // namespace Rules

} // namespace FirstPartyPresetSource
