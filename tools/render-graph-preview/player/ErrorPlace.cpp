#include "ErrorPlace.h"

#include <ComponentSource.h>
#include <PresetCompiler.h>
#include <VulkanRenderGraph.h>

#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

QString placed(const QString &path, int line, const QString &what)
{
    return line == 0 ? QString() : "%1:%2: %3"_L1.arg(path, QString::number(line), what);
}

QString inputsPlace(const QString &path)
{
    const QStringList aliases = declaredAliasInputs(path);
    if (aliases.isEmpty())
        return {};
    return placed(path, aliasInputLine(path, aliases.last()),
                  u"//! input %1 is the last of %2; with the images that take no directive, a "
                  "pass samples at most %3"_s.arg(aliases.last())
                          .arg(aliases.size())
                          .arg(VulkanRenderGraph::MaxSampledInputsPerPass));
}

QString parametersPlace(const QString &path)
{
    constexpr int kMost = VulkanRenderGraph::MaxParamFloatsPerPass;
    const QStringList ids = slotParameterIds(path);
    if (ids.size() <= kMost)
        return {};
    return placed(path, parameterLine(path, ids.at(kMost)),
                  u"//! param %1 is number %2 of %3; a pass takes at most %4"_s.arg(ids.at(kMost))
                          .arg(kMost + 1)
                          .arg(ids.size())
                          .arg(kMost));
}

QString slotPlace(const QString &path, int slot)
{
    QStringList ids = slotParameterIds(path);
    ids.sort();
    for (int i = 0; i < ids.size(); ++i)
        ids[i].prepend(u"[%1] "_s.arg(i));
    return placed(path, paramSlotLine(path, slot),
                  u"pc.params[%1] is read here; "_s.arg(slot)
                          + (ids.isEmpty() ? u"there is no //! param"_s
                                           : u"the slots are "_s + ids.join(", "_L1)));
}

// The ids that are not in `others`, each once, sorted.
QStringList difference(QStringList ids, const QStringList &others)
{
    ids.removeDuplicates();
    ids.removeIf([&others](const QString &id) { return others.contains(id); });
    ids.sort();
    return ids;
}

QString driftPlace(const QString &path, const QList<PresetParamMeta> &parameters)
{
    int line = 0;
    const QStringList listed = presetDeclaredParameterList(path, &line);
    if (line == 0)
        return path + R"(: no line 'parameters = "..."' can be read here)"_L1;
    QStringList own;
    for (const PresetParamMeta &parameter : parameters)
        own.append(parameter.id);

    const QStringList missing = difference(own, listed);
    const QStringList surplus = difference(listed, own);
    QStringList differences;
    if (!missing.isEmpty())
        differences.append("only the passes have '"_L1 + missing.join("', '"_L1) + u'\'');
    if (!surplus.isEmpty())
        differences.append("only this list has '"_L1 + surplus.join("', '"_L1) + u'\'');
    if (differences.isEmpty())
        differences.append(u"an id is listed more than once"_s);
    return placed(path, line, differences.join("; "_L1));
}

} // namespace

QString errorPlace(const QString &error, const QString &slangPath, const QString &glslpPath,
                   const QList<PresetParamMeta> &parameters)
{
    static const QRegularExpression kUnknownAlias(uR"( declares //! input (\w+) but no )"_s);
    static const QRegularExpression kUnknownId(
            uR"( declares parameter '(\w+)' without metadata$)"_s);
    static const QRegularExpression kSlot(uR"(: code reads pc\.params\[(\d+)\] but )"_s);

    if (const auto match = kUnknownAlias.match(error); match.hasMatch()) {
        const QString alias = match.captured(1);
        return placed(slangPath, aliasInputLine(slangPath, alias),
                      "//! input %1 is declared here"_L1.arg(alias));
    }
    if (const auto match = kUnknownId.match(error); match.hasMatch()) {
        const QString id = match.captured(1);
        return placed(slangPath, parameterLine(slangPath, id),
                      "//! param %1 is declared here"_L1.arg(id));
    }
    if (const auto match = kSlot.match(error); match.hasMatch())
        return slotPlace(slangPath, match.captured(1).toInt());
    if (error.endsWith(" exceeds MaxSampledInputsPerPass"_L1))
        return inputsPlace(slangPath);
    if (error.endsWith(" exceeds MaxParamFloatsPerPass"_L1))
        return parametersPlace(slangPath);
    if (error.contains(" does not match its .glslp parameters= list {"_L1))
        return driftPlace(glslpPath, parameters);
    return {};
}
