#include <VulkanRenderGraphCatalog.h>

#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

using Graph = VulkanRenderGraph;
using Row = QStringList;

QString yesNo(bool value)
{
    return value ? u"yes"_s : u"no"_s;
}

QString formatName(Graph::Format format)
{
    const QLatin1StringView name = Graph::formatName(format);
    return name.isEmpty() ? u"?"_s : QString(name);
}

QString pixels(int extent)
{
    return extent == 0 ? u"source"_s : QString::number(extent);
}

QString extentOf(const Graph::Pass &pass)
{
    if (pass.scaleSource == Graph::ScaleSource::Absolute)
        return u"%1 x %2"_s.arg(pixels(pass.absoluteWidth), pixels(pass.absoluteHeight));
    QString base = u"input"_s;
    if (pass.scaleSource == Graph::ScaleSource::Viewport)
        base = u"viewport"_s;
    else if (pass.scaleInputPassIndex >= 0)
        base = u"pass %1"_s.arg(pass.scaleInputPassIndex);
    if (pass.scaleX == 1.0F && pass.scaleY == 1.0F)
        return base;
    return u"%1 * %2, %3"_s.arg(base).arg(pass.scaleX).arg(pass.scaleY);
}

QString inputsOf(const Graph::Pass &pass)
{
    QStringList inputs;
    for (const Graph::ResourceRef &input : pass.sampledInputs) {
        if (input.passIndex == Graph::ResourceRef::SourceImage)
            inputs.append(u"source"_s);
        else if (input.passIndex == Graph::ResourceRef::Feedback)
            inputs.append(u"history"_s);
        else
            inputs.append(QString::number(input.passIndex));
    }
    return inputs.isEmpty() ? u"-"_s : inputs.join(u", "_s);
}

// Prints aligned columns. The first row is the heading; columns of numbers are aligned to the
// right.
void printTable(QTextStream &out, const QList<Row> &rows)
{
    const auto isNumber = [](const QString &cell) {
        bool ok = false;
        cell.toDouble(&ok);
        return ok;
    };

    QStringList lines(rows.size());
    for (qsizetype column = 0; column < rows.constFirst().size(); ++column) {
        qsizetype width = 0;
        for (const Row &row : rows)
            width = std::max(width, row[column].size());
        const bool isRight = std::all_of(rows.cbegin() + 1, rows.cend(),
                                         [&](const Row &row) { return isNumber(row[column]); });
        for (qsizetype i = 0; i < rows.size(); ++i) {
            const QString &cell = rows[i][column];
            lines[i] +=
                    u"  "_s + (isRight ? cell.rightJustified(width) : cell.leftJustified(width));
        }
    }
    for (QString &line : lines) {
        while (line.endsWith(u' '))
            line.chop(1);
        out << line << '\n';
    }
}

void list(QTextStream &out)
{
    QList<Row> rows{{u"preset"_s, u"passes"_s, u"parameters"_s, u"animated"_s}};
    for (const QString &name : VulkanRenderGraphCatalog::presetNames()) {
        const auto preset = VulkanRenderGraphCatalog::preset(name);
        rows.append({name, QString::number(preset->graph.passes.size()),
                     QString::number(preset->parameters.size()), yesNo(preset->usesFrameCount)});
    }
    printTable(out, rows);
}

void show(QTextStream &out, const QString &name, const VulkanRenderGraphCatalog::Preset &preset)
{
    const Graph &graph = preset.graph;
    out << name << '\n';
    printTable(out,
               {{u"resource:"_s, graph.presetQrcPath},
                {u"Vulkan only:"_s, yesNo(preset.vulkanOnly)},
                {u"animated:"_s, yesNo(preset.usesFrameCount)},
                {u"answers HDR itself:"_s, yesNo(graph.finalRealPassRespondsToHdr)}});

    QList<Row> passes{{u"#"_s, u"pass"_s, u"format"_s, u"size"_s, u"samples"_s, u"parameters"_s}};
    for (qsizetype index = 0; index < graph.passes.size(); ++index) {
        const Graph::Pass &pass = graph.passes[index];
        passes.append({QString::number(index), pass.debugName, formatName(pass.format),
                       extentOf(pass), inputsOf(pass), QString::number(pass.params.size())});
    }
    out << "\nPasses\n";
    printTable(out, passes);

    if (preset.parameters.isEmpty())
        return;
    QList<Row> parameters{{u"parameter"_s, u"value"_s, u"default"_s, u"min"_s, u"max"_s, u"step"_s,
                           u"shown as"_s}};
    for (const VulkanRenderGraphCatalog::Parameter &param : preset.parameters)
        parameters.append({param.id, QString::number(param.initialValue),
                           QString::number(param.defaultValue), QString::number(param.min),
                           QString::number(param.max), QString::number(param.step),
                           param.description});
    out << "\nParameters\n";
    printTable(out, parameters);
}

// A SPIR-V module consists of 32-bit words, and the first is a magic number. The modules of this
// program are little-endian.
bool isSpirv(const QString &resource)
{
    static const QByteArray kMagic = QByteArray::fromHex("03022307");
    QFile file(resource);
    return file.open(QIODevice::ReadOnly) && file.size() % 4 == 0 && file.read(4) == kMagic;
}

// Returns whether every module that the manifest names is in this program, and prints those that
// are not.
bool check(QTextStream &out)
{
    QStringList missing;
    qsizetype count = 0;
    for (const QString &name : VulkanRenderGraphCatalog::presetNames()) {
        const auto preset = VulkanRenderGraphCatalog::preset(name);
        for (const Graph::Pass &pass : preset->graph.passes) {
            for (const QString &resource : {pass.fragmentSpirvResource, pass.vertexSpirvResource}) {
                ++count;
                if (!isSpirv(resource) && !missing.contains(resource))
                    missing.append(resource);
            }
        }
    }
    for (const QString &resource : missing)
        out << resource << " is missing or no SPIR-V\n";
    if (missing.isEmpty())
        out << "all of " << count << " named modules are here\n";
    return missing.isEmpty();
}

} // namespace

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    QTextStream out(stdout);
    if (arguments == QStringList{u"list"_s}) {
        list(out);
        return 0;
    }
    if (arguments == QStringList{u"check"_s})
        return check(out) ? 0 : 1;
    if (arguments.size() != 2 || arguments[0] != u"show"_s) {
        std::fputs("usage: consumer check | consumer list | consumer show <preset>\n", stderr);
        return 1;
    }
    const auto preset = VulkanRenderGraphCatalog::preset(arguments[1]);
    if (!preset) {
        std::fprintf(stderr, "consumer: there is no preset '%s'; 'consumer list' names them all\n",
                     qUtf8Printable(arguments[1]));
        return 1;
    }
    show(out, arguments[1], *preset);
    return 0;
}
