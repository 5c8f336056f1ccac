// Prints every field of every row that the presets declare, also those that the manifest does not
// show. An array is printed below the first row that uses it, whose name it takes.
#include <FirstPartyPresets.h>

#include <charconv>
#include <cstdio>
#include <initializer_list>
#include <map>
#include <string>

namespace {

using namespace FirstPartyPresetSource;

std::map<const void *, std::string> arrayNames;

std::string shown(bool value)
{
    return value ? "true" : "false";
}

std::string shown(std::int32_t value)
{
    return std::to_string(value);
}

// The fewest digits that give the same number.
std::string shown(float value)
{
    char text[64];
    return {text, std::to_chars(text, std::end(text), value).ptr};
}

std::string shown(const char *text)
{
    return '"' + std::string(text) + '"';
}

template<typename Row>
std::string shown(const Row *rows)
{
    return rows == nullptr ? "null" : arrayNames.at(rows);
}

template<typename... Fields>
void printFields(std::string_view names, std::size_t perLine, const Fields &...fields)
{
    std::string text;
    std::size_t index = 0;
    for (const std::string &value : {shown(fields)...}) {
        const std::size_t end = std::min(names.find(','), names.size());
        text += index % perLine == 0 ? "\n  " : ", ";
        text += std::string(names.substr(0, end)) + " = " + value;
        names.remove_prefix(std::min(end + 2, names.size()));
        ++index;
    }
    std::fputs((text.substr(1) + '\n').c_str(), stdout);
}

// The names after the second are all of the record's fields: one too many or too few is an error.
#define PRINT_FIELDS(record, perLine, ...)                                                         \
    do {                                                                                           \
        const auto &[__VA_ARGS__] = record;                                                        \
        printFields(#__VA_ARGS__, perLine, __VA_ARGS__);                                           \
    } while (false)

bool isFirstUse(const void *array, const std::string &name)
{
    return array != nullptr && arrayNames.emplace(array, name).second;
}

void printParams(const PassDecl &pass)
{
    std::printf("\n%s:\n", arrayNames.at(pass.params).c_str());
    for (const ParamDecl &param : paramsOf(pass))
        PRINT_FIELDS(param, 6, id, description, defaultValue, min, max, step);
}

void printPasses(const PresetDecl &preset)
{
    int index = 0;
    for (const PassDecl &pass : passesOf(preset)) {
        const std::string name = std::string(preset.name) + " pass " + std::to_string(index++);
        const bool hasNewParams = isFirstUse(pass.params, "params of " + name);
        std::printf("\n%s:\n", name.c_str());
        PRINT_FIELDS(pass, 5, component, extentAlias, linearFilter, scaleType, scaleX, scaleY,
                     absoluteWidth, absoluteHeight, reserved, wrapMode, params, paramCount, mipmap,
                     cacheByParameters, constantBlackWhenZero, constantBlackAlpha,
                     shareConstantBlack, feedback, scaleInputAlias);
        if (hasNewParams)
            printParams(pass);
    }
}

void printValueOverrides(const PresetDecl &preset)
{
    std::printf("\n%s:\n", arrayNames.at(preset.valueOverrides).c_str());
    for (const ValueOverride &valueOverride : valueOverridesOf(preset))
        PRINT_FIELDS(valueOverride, 2, id, value);
}

void print(const PresetDecl &preset)
{
    const std::string presetName = preset.name;
    const bool hasNewPasses = isFirstUse(preset.passes, "passes of " + presetName);
    const bool hasNewOverrides =
            isFirstUse(preset.valueOverrides, "valueOverrides of " + presetName);
    std::printf("\npreset %s:\n", preset.name);
    PRINT_FIELDS(preset, 1, name, feedbackPassIndex, passes, passCount, presetExtension, vulkanOnly,
                 valueOverrides, valueOverrideCount);
    if (hasNewPasses)
        printPasses(preset);
    if (hasNewOverrides)
        printValueOverrides(preset);
}

} // namespace

int main()
{
    std::puts("GENERATED FILE -- do not edit by hand: scripts/update-golden writes it.");
    for (const PresetDecl &preset : kPresets)
        print(preset);
    return 0;
}
