#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>
#include <type_traits>

// The records in which shader presets are declared. All of it is constant data: strings are static
// and ASCII, "" where there is none; arrays are static, null with count 0 where there is none.
// The scalar defaults are the plain case: a pass that renders once at the size of its input, picks
// the nearest texel and asks for nothing special.
namespace FirstPartyPresetSource {

// One parameter that a pass binds, with what the user interface shows for it.
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

// What well-formed presets keep, for use in static_assert.
namespace Rules {

// A preset's name as a template argument, so that the compiler shows it beside a broken rule; a
// longer one is cut off.
struct ShownName
{
    char text[32] = {};
    consteval ShownName(const char *name)
    {
        std::ranges::copy(std::string_view(name).substr(0, std::size(text) - 1), text);
    }
};

// Whether the compiler can evaluate `expression`.
template<auto expression>
inline constexpr bool isConstant = requires
{
    typename std::bool_constant<(expression(), true)>;
};

constexpr bool isAsciiLetterOrDigit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// The name goes into file names and into the manifest's identifiers.
constexpr bool nameIsPlain(const PresetDecl &preset)
{
    const std::string_view name = preset.name;
    return !name.empty() && isAsciiLetterOrDigit(name.front())
            && std::ranges::all_of(
                    name, [](char c) { return isAsciiLetterOrDigit(c) || c == '-' || c == '_'; });
}

// The manifest's identifiers carry the preset name with '_' for '-'.
constexpr bool isSameIdentifier(std::string_view a, std::string_view b)
{
    return std::ranges::equal(
            a, b, {}, [](char c) { return c == '-' ? '_' : c; },
            [](char c) { return c == '-' ? '_' : c; });
}

constexpr bool identifiersAreUnique(std::span<const PresetDecl> presets)
{
    for (std::size_t i = 0; i < presets.size(); ++i) {
        const std::string_view name = presets[i].name;
        if (std::ranges::any_of(presets.first(i), [name](const PresetDecl &earlier) {
                return isSameIdentifier(earlier.name, name);
            }))
            return false;
    }
    return true;
}

// For all overrides against all parameters: std::string_view would first measure both texts, and
// compilers take that long to evaluate.
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

constexpr bool publishesAlias(std::span<const PassDecl> passes, std::string_view alias)
{
    return std::ranges::any_of(passes,
                               [alias](const PassDecl &pass) { return pass.extentAlias == alias; });
}

constexpr bool hasPasses(const PresetDecl &preset)
{
    return preset.passCount >= 1;
}

constexpr bool isCountOf(const void *array, std::int32_t count)
{
    return array == nullptr ? count == 0 : count > 0;
}

// Under GCC's sanitizers no constant expression: an object's address is none that could be compared
// with null there.
constexpr bool countsMatchArrays(const PresetDecl &preset)
{
    return isCountOf(preset.passes, preset.passCount)
            && isCountOf(preset.valueOverrides, preset.valueOverrideCount)
            && std::ranges::all_of(passesOf(preset), [](const PassDecl &pass) {
                   return isCountOf(pass.params, pass.paramCount);
               });
}

// No constant expression if a count is greater than its array.
constexpr bool lastRowsCanBeRead(const PresetDecl &preset)
{
    const auto canBeRead = [](const auto &rows) {
        if (rows.empty())
            return true;
        [[maybe_unused]] const auto last = rows.back();
        return true;
    };
    return canBeRead(passesOf(preset)) && canBeRead(valueOverridesOf(preset))
            && std::ranges::all_of(passesOf(preset), [canBeRead](const PassDecl &pass) {
                   return canBeRead(paramsOf(pass));
               });
}

constexpr bool feedbackPassIsInRange(const PresetDecl &preset)
{
    return preset.feedbackPassIndex >= -1 && preset.feedbackPassIndex < preset.passCount;
}

constexpr bool aliasesAreUnique(const PresetDecl &preset)
{
    const auto passes = passesOf(preset);
    for (std::size_t i = 0; i < passes.size(); ++i) {
        const std::string_view alias = passes[i].extentAlias;
        if (!alias.empty() && publishesAlias(passes.first(i), alias))
            return false;
    }
    return true;
}

constexpr bool scaleInputsArePublishedEarlier(const PresetDecl &preset)
{
    const auto passes = passesOf(preset);
    for (std::size_t i = 0; i < passes.size(); ++i) {
        const std::string_view alias = passes[i].scaleInputAlias;
        if (!alias.empty() && !publishesAlias(passes.first(i), alias))
            return false;
    }
    return true;
}

constexpr bool absoluteSizesAreOnAbsolutePasses(const PresetDecl &preset)
{
    return std::ranges::all_of(passesOf(preset), [](const PassDecl &pass) {
        return pass.scaleType == kScaleAbsolute
                ? pass.absoluteWidth > 0 && pass.absoluteHeight >= 0
                : pass.absoluteWidth == 0 && pass.absoluteHeight == 0;
    });
}

constexpr bool constantBlackIdsAreBound(const PresetDecl &preset)
{
    return std::ranges::all_of(passesOf(preset), [&preset](const PassDecl &pass) {
        const char *id = pass.constantBlackWhenZero;
        return *id == '\0' || bindsParam(preset, id);
    });
}

constexpr bool overrideIdsAreBound(const PresetDecl &preset)
{
    return std::ranges::all_of(valueOverridesOf(preset), [&preset](const ValueOverride &row) {
        return bindsParam(preset, row.id);
    });
}

constexpr bool overrideValuesAreInRange(const PresetDecl &preset)
{
    for (const PassDecl &pass : passesOf(preset)) {
        for (const ParamDecl &param : paramsOf(pass)) {
            for (const ValueOverride &row : valueOverridesOf(preset)) {
                if (isSameText(param.id, row.id)
                    && !(param.min <= row.value && row.value <= param.max))
                    return false;
            }
        }
    }
    return true;
}

constexpr bool overrideIdsAreUnique(const PresetDecl &preset)
{
    const auto overrides = valueOverridesOf(preset);
    for (std::size_t i = 0; i < overrides.size(); ++i) {
        const std::string_view id = overrides[i].id;
        if (std::ranges::any_of(overrides.first(i),
                                [id](const ValueOverride &row) { return row.id == id; }))
            return false;
    }
    return true;
}

// scaleType, constantBlackAlpha and the order of a parameter's bounds: the values a row may take.
constexpr bool valuesAreInRange(const PresetDecl &preset)
{
    return std::ranges::all_of(passesOf(preset), [](const PassDecl &pass) {
        return pass.scaleType >= kScaleSource && pass.scaleType <= kScaleAbsolute
                && (pass.constantBlackAlpha == 0.0F || pass.constantBlackAlpha == 1.0F)
                && std::ranges::all_of(paramsOf(pass), [](const ParamDecl &param) {
                       return param.min <= param.defaultValue && param.defaultValue <= param.max
                               && param.step > 0.0F;
                   });
    });
}

} // namespace Rules

} // namespace FirstPartyPresetSource
