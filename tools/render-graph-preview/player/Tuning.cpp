#include "Tuning.h"

#include <PresetParameters.h>

#include <QFile>

#include <algorithm>
#include <array>
#include <charconv>

using namespace Qt::StringLiterals;

namespace {

QString overrideRow(const QString &id, float value)
{
    return u"    {.id = \"%1\", .value = %2F},\n"_s.arg(id, numberText(value));
}

// "no-pixels" becomes "kNoPixelsValueOverrides".
QString arrayName(const QString &preset)
{
    QString name = u"k"_s;
    bool isStart = true;
    for (const QChar c : preset) {
        if (c.isLetterOrNumber())
            name += isStart ? c.toUpper() : c;
        isStart = !c.isLetterOrNumber();
    }
    return name + "ValueOverrides"_L1;
}

QString valueLines(const PresetOnDisk &preset, const QHash<QString, float> &values)
{
    QString lines;
    for (const PresetParamMeta &parameter : preset.parameters)
        lines += u"%1 = \"%2\"\n"_s.arg(
                parameter.id, numberText(values.value(parameter.id, parameter.initialValue)));
    return lines;
}

} // namespace

QString numberText(float value)
{
    std::array<char, 64> text = {};
    const auto *const end =
            std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed)
                    .ptr;
    const QString number = QString::fromLatin1(text.data(), end - text.data());
    return number.contains(u'.') ? number : number + ".0"_L1;
}

QString declaredText(const PresetOnDisk &preset, const QHash<QString, float> &values)
{
    QString rows;
    QStringList ids;
    for (const auto &[id, value] : preset.overrides) {
        ids.append(QString::fromLatin1(id));
        rows += overrideRow(ids.last(), values.value(ids.last(), value));
    }
    bool isTuned = true;
    for (const PresetParamMeta &parameter : preset.parameters) {
        const float value = values.value(parameter.id, parameter.initialValue);
        if (value == parameter.initialValue)
            continue;
        isTuned = false;
        if (!ids.contains(parameter.id))
            rows += overrideRow(parameter.id, value);
    }
    if (isTuned)
        return {};
    if (preset.hasGlslp)
        return valueLines(preset, values);
    if (!preset.overrides.empty())
        return rows;
    return u"inline constexpr ValueOverride %1[] = {\n%2};\n\n"
           "     .valueOverrides = %1, .valueOverrideCount = std::size(%1)\n"_s.arg(
                   arrayName(preset.name), rows);
}

QString glslpText(const PresetOnDisk &preset, const QHash<QString, float> &values)
{
    QStringList ids;
    for (const PresetParamMeta &parameter : preset.parameters)
        ids.append(parameter.id);
    return u"parameters = \"%1\"\n%2"_s.arg(ids.join(u';'), valueLines(preset, values));
}

bool readGlslp(const QString &path, const PresetOnDisk &preset, QHash<QString, float> &values,
               QString &error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = u"cannot read values '%1': %2"_s.arg(path, file.errorString());
        return false;
    }
    const QStringList ids = presetDeclaredParameterList(path);
    const QHash<QString, float> numbers = presetValueOverrides(path);
    if (ids.isEmpty())
        error = u"values '%1': there is no list of parameters"_s.arg(path);
    for (const QString &id : ids) {
        const auto parameter = std::ranges::find(preset.parameters, id, &PresetParamMeta::id);
        if (parameter == preset.parameters.cend()) {
            error = u"values '%1': preset '%2' has no parameter '%3'"_s.arg(path, preset.name, id);
            break;
        }
        const auto number = numbers.constFind(id);
        if (number == numbers.cend() || !(*number >= parameter->min && *number <= parameter->max)) {
            error = u"values '%1': '%2' has no number from %3 to %4"_s.arg(
                    path, id, numberText(parameter->min), numberText(parameter->max));
            break;
        }
    }
    if (!error.isEmpty())
        return false;
    for (const QString &id : ids)
        values.insert(id, numbers.value(id));
    return true;
}
