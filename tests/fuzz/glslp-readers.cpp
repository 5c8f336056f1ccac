// Compares collectPresetParameters() with a plain statement of its rules, for a small declaration
// and a file. The input's last bytes decide what is declared and how the text lies across a
// reader's buffers, so any .glslp file is a seed.
#include "../GraphText.h"
#include "Fuzz.h"
#include "PlainText.h"

#include <PresetParameters.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <optional>

namespace {

using namespace FirstPartyPresetSource;
using PlainText::Cursor;

// The number that a text stands for, and whether all versions of Qt agree on it.
struct Reading
{
    std::optional<float> value;
    bool isAgreed = true;
};

Reading readNumber(const QString &text)
{
    if (text.contains(QChar(0x2212)))
        return {{}, false};
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text.at(first).isSpace())
        ++first;
    while (last > first && text.at(last - 1).isSpace())
        --last;
    QByteArray word;
    for (qsizetype i = first; i < last; ++i)
        word += text.at(i) < QChar(0x80) ? text.at(i).toLatin1() : '?';
    const QByteArray lower = word.toLower();
    if (lower == "nan" || lower == "inf" || lower == "+inf" || lower == "-inf")
        return {std::strtof(lower.constData(), nullptr)};

    qsizetype i = 0;
    const auto is = [&word, &i](const char *set) {
        return i < word.size() && QByteArray(set).contains(word.at(i));
    };
    const auto digits = [&]() {
        bool any = false;
        for (; is("0123456789"); ++i)
            any = true;
        return any;
    };
    if (is("+-"))
        ++i;
    bool hasDigits = digits();
    if (is(".")) {
        ++i;
        hasDigits = digits() || hasDigits;
    }
    const QByteArray mantissa = word.left(i);
    bool isNumber = hasDigits;
    if (is("eE")) {
        ++i;
        if (is("+-"))
            ++i;
        isNumber = digits() && isNumber;
    }
    if (!isNumber || i != word.size())
        return {};
    const double wide = std::strtod(word.constData(), nullptr);
    const auto value = static_cast<float>(wide);
    if (std::isinf(value))
        return {};
    if (std::abs(wide) > static_cast<double>(std::numeric_limits<float>::max()))
        return {{}, false};
    bool isZero = true;
    for (const char c : mantissa)
        isZero = isZero && (c < '1' || c > '9');
    if (!isZero && std::fpclassify(value) == FP_ZERO)
        return {};
    return {value};
}

// `name = "value"` at the line's start; nothing if the line is no such one.
struct Assignment
{
    QString name;
    QString value;
};

std::optional<Assignment> assignmentIn(const QString &line)
{
    Assignment found;
    Cursor cursor(line);
    cursor.skipSpaces();
    found.name = cursor.word();
    cursor.skipSpaces();
    if (PlainText::hasLoneSurrogate(line) || found.name.isEmpty() || !cursor.skip("="))
        return {};
    cursor.skipSpaces();
    if (!cursor.skip("\""))
        return {};
    found.value = cursor.upTo(u'"');
    if (cursor.atEnd())
        return {};
    return found;
}

struct File
{
    std::map<QString, float> values;
    QStringList ids;
    bool isAgreed = true;
};

File readFile(const QByteArray &content)
{
    File file;
    bool hasList = false;
    for (const QString &line : PlainText::lines(content)) {
        const std::optional<Assignment> found = assignmentIn(line);
        if (!found)
            continue;
        const Reading reading = readNumber(found->value);
        file.isAgreed = file.isAgreed && reading.isAgreed;
        if (reading.value)
            file.values[found->name] = *reading.value;
        if (found->name != QStringLiteral("parameters") || hasList)
            continue;
        hasList = true;
        QString id;
        for (const QChar c : found->value + u';') {
            if (c != u';') {
                id += c;
            } else if (!id.isEmpty()) {
                file.ids.append(id);
                id.clear();
            }
        }
    }
    return file;
}

QByteArray joined(QStringList ids)
{
    std::sort(ids.begin(), ids.end());
    QByteArray text;
    for (const QString &id : std::as_const(ids))
        text += (text.isEmpty() ? "" : ";") + id.toUtf8();
    return text;
}

// One parameter, as the result and as the rule have it.
QByteArray row(const QString &id, const QString &description, float initial, const ParamDecl &decl)
{
    QByteArray text = id.toUtf8() + " '" + description.toUtf8() + "' "
            + (std::isnan(initial) ? "nan" : numberText(initial));
    for (const float value : {decl.defaultValue, decl.min, decl.max, decl.step})
        text += ' ' + numberText(value);
    return text + '\n';
}

constexpr int kHeaderSize = 5;
constexpr ParamDecl kFirst[] = {{"b", "B", 0.5F, -1.0F, 4.0F, 0.25F},
                                {"a", "A", 2.0F, 0.0F, 3.0F, 0.5F},
                                {"wiggle", "W", 1.0F, 0.0F, 1.0F, 1.0F}};
constexpr ParamDecl kSecond[] = {{"a", "again", 9.0F, 8.0F, 10.0F, 1.0F},
                                 {"\xE9", "\xE9", 0.0F, 0.0F, 1.0F, 0.1F},
                                 {"C", "", -0.0F, 0.0F, 1.0F, 0.1F}};
constexpr ValueOverride kOverrides[] = {{"a", 3.0F}, {"C", 4.0F}, {"a", 5.0F}, {"z", 6.0F}};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::size_t headerSize = std::min<std::size_t>(size, kHeaderSize);
    const QByteArray content(reinterpret_cast<const char *>(data),
                             static_cast<qsizetype>(size - headerSize));
    Bytes bytes(data + (size - headerSize), headerSize);
    PassDecl passes[2] = {{.component = "x"}, {.component = "y"}};
    passes[0].params = kFirst;
    passes[0].paramCount = bytes.below(4);
    passes[1].params = kSecond;
    passes[1].paramCount = bytes.below(4);
    const int mode = bytes.below(8);
    const PresetDecl decl{.name = "preset",
                          .passes = passes,
                          .passCount = 2,
                          .presetExtension = mode == 7 ? "glsl" : "glslp",
                          .valueOverrides = kOverrides,
                          .valueOverrideCount = bytes.below(5)};
    const bool isRetired = mode == 6;
    const QByteArray onDisk = acrossBuffers(content, bytes.byte());

    static const QString path = fuzzDirectory() + QStringLiteral("/preset.glslp");
    removeFile(path);
    if (!isRetired)
        putFile(path, onDisk);
    const File file = readFile(content);
    if (!PlainText::isWellDefined(onDisk) || !file.isAgreed)
        return 0;

    std::map<QString, float> values;
    if (mode < 6)
        values = file.values;
    for (int i = 0; isRetired && i < decl.valueOverrideCount; ++i)
        values[QString::fromLatin1(kOverrides[i].id)] = kOverrides[i].value;
    QByteArray rows;
    QStringList ids;
    for (const PassDecl &pass : passes) {
        for (int i = 0; i < pass.paramCount; ++i) {
            const ParamDecl &param = pass.params[i];
            const QString id = QString::fromLatin1(param.id);
            if (ids.contains(id))
                continue;
            ids.append(id);
            const float initial = values.contains(id) ? values[id] : param.defaultValue;
            rows += row(id, QString::fromLatin1(param.description), initial, param);
        }
    }
    QByteArray rule;
    if (isRetired)
        rule = "1render-graph-compile: preset 'preset' has no .glslp source on disk (retired) -- "
               "skipping drift check, using "
                + QByteArray::number(decl.valueOverrideCount)
                + " hand-authored value override(s)\n|";
    else if (mode == 7 || joined(ids) == joined(file.ids))
        rule = "1|";
    else
        rule = "0|render-graph-compile: preset 'preset' ownParams union {" + joined(ids)
                + "} does not match its .glslp parameters= list {"
                // A NUL ends what printf shows.
                + joined(file.ids).constData() + "}\n";

    QList<PresetParamMeta> out(3);
    startCapture();
    const bool isGood = collectPresetParameters(fuzzDirectory(), decl, out);
    const Printed printed = endCapture();
    QByteArray result;
    for (const PresetParamMeta &param : std::as_const(out))
        result += row(param.id, param.description, param.initialValue,
                      {"", "", param.defaultValue, param.min, param.max, param.step});
    expectSame("what is printed", content,
               QByteArray::number(isGood ? 1 : 0) + printed.out + '|' + printed.err, rule);
    expectSame("the parameters", content, result, rows);
    return 0;
}
