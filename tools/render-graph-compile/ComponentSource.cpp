#include "ComponentSource.h"

#include "TextLines.h"

#include <QDir>
#include <QRegularExpression>
#include <QRegularExpressionMatchIterator>
#include <QStringMatcher>

using namespace Qt::StringLiterals;

namespace {

QString componentPath(const QString &shadersDir, const QString &component, QLatin1StringView ending)
{
    return QDir(shadersDir).filePath("vulkan/components/%1%2"_L1.arg(component, ending));
}

// Where the next "//" or "/*" begins at or after `from`; the end of the line if there is none.
qsizetype commentStart(QStringView line, qsizetype from)
{
    for (;; ++from) {
        from = line.indexOf(u'/', from);
        if (from < 0 || from + 1 >= line.size())
            return line.size();
        if (line[from + 1] == u'/' || line[from + 1] == u'*')
            return from;
    }
}

// Returns the line itself if it has no comment, else the line without its comments, in `code`.
// `inBlockComment` keeps its value from one line to the next.
QStringView withoutComments(QStringView line, QString &code, bool &inBlockComment)
{
    if (!inBlockComment && commentStart(line, 0) == line.size())
        return line;

    code.truncate(0);
    qsizetype position = 0;
    while (position < line.size()) {
        if (inBlockComment) {
            const qsizetype close = line.indexOf(u"*/", position);
            if (close < 0)
                break;
            inBlockComment = false;
            position = close + 2;
            continue;
        }
        const qsizetype comment = commentStart(line, position);
        code += line.sliced(position, comment - position);
        if (comment == line.size() || line[comment + 1] == u'/')
            break;
        inBlockComment = true;
        position = comment + 2;
    }
    return code;
}

// Calls `bool visit(QStringView line)` for each line that strippedCodeLines() would list.
template<typename Visitor>
void forEachCodeLine(const QString &path, Visitor visit)
{
    bool inBlockComment = false;
    QString code;
    forEachLine(path, [&](QStringView line) {
        const QStringView stripped = withoutComments(line, code, inBlockComment);
        return stripped.trimmed().isEmpty() || visit(stripped);
    });
}

// Each pattern below comes with a literal that every match contains. Searching for the literal
// first spares nearly all lines the regular expression.
bool hasToken(const QString &path, QStringView literal, const QRegularExpression &token)
{
    const QStringMatcher matcher(literal);
    bool found = false;
    forEachCodeLine(path, [&](QStringView line) {
        found = matcher.indexIn(line) >= 0 && token.match(line.toString()).hasMatch();
        return !found;
    });
    return found;
}

const QRegularExpression &inputDirective()
{
    static const QRegularExpression kInputDirective(uR"(^\s*//!\s*input\s+(\w+)\s*$)"_s);
    return kInputDirective;
}

const QRegularExpression &paramDirective()
{
    static const QRegularExpression kParamDirective(uR"(^\s*//!\s*param\s+(\w+)\s*$)"_s);
    return kParamDirective;
}

// Calls `bool visit(const QString &name, int line)` for each such directive.
template<typename Visitor>
void forEachDirective(const QString &path, const QRegularExpression &directive, Visitor visit)
{
    int number = 0;
    forEachLine(path, [&](QStringView line) {
        ++number;
        if (!line.contains(u'!'))
            return true;
        const QRegularExpressionMatch match = directive.match(line.toString());
        return !match.hasMatch() || visit(match.captured(1), number);
    });
}

QStringList directiveNames(const QString &path, const QRegularExpression &directive)
{
    QStringList names;
    QSet<QString> seen;
    forEachDirective(path, directive, [&](const QString &name, int /*line*/) {
        if (!seen.contains(name)) {
            seen.insert(name);
            names.append(name);
        }
        return true;
    });
    return names;
}

int directiveLine(const QString &path, const QRegularExpression &directive, const QString &name)
{
    int found = 0;
    forEachDirective(path, directive, [&](const QString &candidate, int line) {
        if (candidate == name)
            found = line;
        return found == 0;
    });
    return found;
}

void addSlotIndices(QStringView code, QSet<int> &indices)
{
    if (!code.contains(u'['))
        return;
    static const QRegularExpression kParamsIndex(uR"(\bpc\s*\.\s*params\s*\[\s*(\d+)\s*\])"_s);
    auto matches = kParamsIndex.globalMatch(code.toString());
    while (matches.hasNext())
        indices.insert(matches.next().captured(1).toInt());
}

} // namespace

QString slangComponentPath(const QString &shadersDir, const QString &component)
{
    return componentPath(shadersDir, component, ".slang"_L1);
}

QString fragComponentPath(const QString &shadersDir, const QString &component)
{
    return componentPath(shadersDir, component, ".frag"_L1);
}

QStringList strippedCodeLines(const QString &path)
{
    QStringList lines;
    forEachCodeLine(path, [&](QStringView line) {
        lines.append(line.toString());
        return true;
    });
    return lines;
}

bool sourceUsesFrameCount(const QString &path)
{
    static const QRegularExpression kFrameToken(uR"(\bpc\s*\.\s*(frameCount|frameDirection)\b)"_s);
    return hasToken(path, u"frame", kFrameToken);
}

QSet<int> usedParamSlotIndices(const QString &path)
{
    QSet<int> indices;
    forEachCodeLine(path, [&indices](QStringView line) {
        addSlotIndices(line, indices);
        return true;
    });
    return indices;
}

int paramSlotLine(const QString &path, int index)
{
    int number = 0;
    bool inBlockComment = false;
    QString code;
    QSet<int> indices;
    forEachLine(path, [&](QStringView line) {
        ++number;
        addSlotIndices(withoutComments(line, code, inBlockComment), indices);
        return !indices.contains(index);
    });
    return indices.contains(index) ? number : 0;
}

QStringList declaredAliasInputs(const QString &path)
{
    return directiveNames(path, inputDirective());
}

QStringList declaredParameterIds(const QString &path)
{
    return directiveNames(path, paramDirective());
}

int aliasInputLine(const QString &path, const QString &alias)
{
    return directiveLine(path, inputDirective(), alias);
}

int parameterLine(const QString &path, const QString &id)
{
    return directiveLine(path, paramDirective(), id);
}

bool sourceReadsHdrOutputActive(const QString &path)
{
    static const QRegularExpression kHdrToken(uR"(\bpc\s*\.\s*hdrOutputActive\b)"_s);
    return hasToken(path, u"hdrOutputActive", kHdrToken);
}
