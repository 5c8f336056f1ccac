#include "PresetParameters.h"

#include "Diagnostics.h"
#include "TextLines.h"

#include <QDir>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

using FirstPartyPresetSource::ParamDecl;
using FirstPartyPresetSource::PassDecl;
using FirstPartyPresetSource::PresetDecl;
using FirstPartyPresetSource::ValueOverride;

using ValueTable = QHash<QString, float>;

ValueTable declaredValueOverrides(const PresetDecl &decl)
{
    ValueTable values;
    for (const ValueOverride &row : valueOverridesOf(decl))
        values.insert(QString::fromLatin1(row.id), row.value);
    return values;
}

void collect(const PresetDecl &decl, const ValueTable &values, QList<PresetParamMeta> &out)
{
    QSet<QString> seen;
    for (const PassDecl &pass : passesOf(decl)) {
        for (const ParamDecl &param : paramsOf(pass)) {
            const QString id = QString::fromLatin1(param.id);
            if (seen.contains(id))
                continue;
            seen.insert(id);
            out.append({.id = id,
                        .description = QString::fromLatin1(param.description),
                        .initialValue = values.value(id, param.defaultValue),
                        .defaultValue = param.defaultValue,
                        .min = param.min,
                        .max = param.max,
                        .step = param.step});
        }
    }
}

bool matchesDeclaredList(const PresetDecl &decl, const QList<PresetParamMeta> &params,
                         QStringList declaredIds)
{
    QStringList ownIds;
    for (const PresetParamMeta &param : params)
        ownIds.append(param.id);
    ownIds.sort();
    declaredIds.sort();
    if (ownIds == declaredIds)
        return true;
    report(Diagnostic::Error,
           "preset '%s' ownParams union {%s} does not match its .glslp parameters= list {%s}",
           decl.name, qPrintable(ownIds.join(u';')), qPrintable(declaredIds.join(u';')));
    return false;
}

} // namespace

QHash<QString, float> presetValueOverrides(const QString &glslpPath)
{
    static const QRegularExpression kValueLine(uR"re(^\s*(\w+)\s*=\s*"([^"]*)")re"_s);
    QHash<QString, float> values;
    forEachLine(glslpPath, [&](QStringView line) {
        if (!line.contains(u'"'))
            return true;
        const QRegularExpressionMatch match = kValueLine.match(line.toString());
        bool isNumber = false;
        const float value = match.captured(2).toFloat(&isNumber);
        if (isNumber)
            values.insert(match.captured(1), value);
        return true;
    });
    return values;
}

QStringList presetDeclaredParameterList(const QString &glslpPath, int *listLine)
{
    static const QRegularExpression kParametersLine(uR"re(^\s*parameters\s*=\s*"([^"]*)")re"_s);
    QStringList ids;
    int number = 0;
    int found = 0;
    forEachLine(glslpPath, [&](QStringView line) {
        ++number;
        if (!line.contains(u"parameters"))
            return true;
        const QRegularExpressionMatch match = kParametersLine.match(line.toString());
        if (match.hasMatch()) {
            ids = match.captured(1).split(u';', Qt::SkipEmptyParts);
            found = number;
        }
        return !match.hasMatch();
    });
    if (listLine)
        *listLine = found;
    return ids;
}

bool collectPresetParameters(const QString &shadersDir, const PresetDecl &decl,
                             QList<PresetParamMeta> &out)
{
    out.clear();
    if (qstrcmp(decl.presetExtension, "glslp") != 0) {
        collect(decl, {}, out);
        return true;
    }

    const QString glslpPath =
            QDir(shadersDir).filePath("%1.glslp"_L1.arg(QString::fromLatin1(decl.name)));
    if (!QFile::exists(glslpPath)) {
        report(Diagnostic::Note,
               "preset '%s' has no .glslp source on disk (retired) -- skipping drift check, using "
               "%d hand-authored value override(s)",
               decl.name, decl.valueOverrideCount);
        collect(decl, declaredValueOverrides(decl), out);
        return true;
    }

    collect(decl, presetValueOverrides(glslpPath), out);
    return matchesDeclaredList(decl, out, presetDeclaredParameterList(glslpPath));
}
