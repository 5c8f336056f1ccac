#include "GraphDot.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using Pass = VulkanRenderGraph::Pass;
using ResourceRef = VulkanRenderGraph::ResourceRef;
using ScaleSource = VulkanRenderGraph::ScaleSource;

constexpr qsizetype kMostInRow = 7; // passes
constexpr const char *kPlain = "#f7f7f4";
constexpr const char *kCached = "#d9ecd3";
constexpr const char *kBlackable = "#dcdce4";
constexpr const char *kFinal = "#fbe6b8";

QString nodeName(int index)
{
    return index == ResourceRef::SourceImage ? u"source"_s : u"pass%1"_s.arg(index);
}

QString thumbnailName(int index)
{
    return nodeName(index) + u".png"_s;
}

QString number(float value)
{
    return QString::number(double(value), 'g', 6);
}

QString sizeText(QSize size)
{
    return u"%1 × %2"_s.arg(size.width()).arg(size.height());
}

QString sizeRule(const Pass &pass)
{
    if (pass.scaleSource == ScaleSource::Absolute) {
        const auto side = [](int pixels) {
            return pixels > 0 ? QString::number(pixels) : u"source"_s;
        };
        return side(pass.absoluteWidth) + u" × "_s + side(pass.absoluteHeight);
    }
    const QString from = pass.scaleSource == ScaleSource::Viewport ? u"viewport"_s
            : pass.scaleInputPassIndex >= 0 ? u"pass %1"_s.arg(pass.scaleInputPassIndex)
                                            : u"input"_s;
    if (pass.scaleX == 1.0F && pass.scaleY == 1.0F)
        return u"size of "_s + from;
    return u"%1 × %2 of %3"_s.arg(number(pass.scaleX), number(pass.scaleY), from);
}

QString row(const QString &text, bool isLeft = false)
{
    return (isLeft ? u"<TR><TD ALIGN=\"LEFT\">%1</TD></TR>"_s : u"<TR><TD>%1</TD></TR>"_s)
            .arg(text);
}

QString legend()
{
    const auto colored = [](const char *color, const QString &text) {
        return u"<TR><TD ALIGN=\"LEFT\" BGCOLOR=\"%1\">%2</TD></TR>"_s.arg(QLatin1StringView(color),
                                                                           text);
    };
    return u"<TABLE BORDER=\"1\" CELLBORDER=\"0\">%1</TABLE>"_s.arg(
            row(u"solid arrow: a sampled image, at this binding"_s, true)
            + row(u"dashed arrow: the previous output of the pass"_s, true)
            + row(u"dotted arrow: the pass whose size is meant"_s, true)
            + row(u"params[0]: a parameter's slot"_s, true)
            + colored(kCached, u"drawn again when a parameter changes"_s)
            + colored(kBlackable, u"left out while a parameter is 0"_s)
            + colored(kFinal, u"the picture"_s));
}

QString thumbnailRow(int index, const GraphDotExtras &extras)
{
    return extras.thumbnails.contains(index) ? row(u"<IMG SRC=\"%1\"/>"_s.arg(thumbnailName(index)))
                                             : QString();
}

// A box is a table: the pass, its properties, its parameters by slot, its output.
QString box(int index, const Pass &pass, const GraphDotExtras &extras)
{
    const char *color = kPlain;
    const bool isDrawn = index < extras.passes.size();
    const QString size = isDrawn ? sizeText(extras.passes.at(index).size) : sizeRule(pass);
    QString rows = row(u"<B>pass %1: %2</B>"_s.arg(index).arg(pass.debugName.toHtmlEscaped()))
            + row(size + u" · "_s + VulkanRenderGraph::formatName(pass.format));
    if (pass.cacheByParameters) {
        color = kCached;
        rows += row(u"<I>cached by parameters</I>"_s);
    }
    if (!pass.constantBlackWhenZero.isEmpty()) {
        color = kBlackable;
        const bool isBlack = isDrawn && extras.passes.at(index).kind == PassKind::ConstantBlack;
        rows += row(u"<I>black while %1 is 0%2%3</I>"_s.arg(
                pass.constantBlackWhenZero.toHtmlEscaped(),
                pass.shareConstantBlack ? u", shared"_s : QString(),
                isBlack ? u": now"_s : QString()));
    }
    if (pass.isFinalPass) {
        color = kFinal;
        rows += row(u"<I>final</I>"_s);
    }
    for (const VulkanRenderGraph::PushConstantParam &param : pass.params) {
        const auto value = extras.values.constFind(param.id);
        rows += row(
                u"params[%1] %2%3"_s.arg(param.floatOffset)
                        .arg(param.id.toHtmlEscaped(),
                             value == extras.values.cend() ? QString() : u" = "_s + number(*value)),
                true);
    }
    return u"<TABLE BORDER=\"%1\" CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"2\" BGCOLOR=\"%2\">%3</TABLE>"_s
            .arg(pass.isFinalPass ? 3 : 1)
            .arg(QLatin1StringView(color), rows + thumbnailRow(index, extras));
}

} // namespace

QByteArray graphDot(const QString &title, const VulkanRenderGraph &graph,
                    const GraphDotExtras &extras)
{
    QString text = u"digraph \"%1\" {\n"_s.arg(title);
    text += u"  graph [label=\"%1\" labelloc=t rankdir=LR fontname=\"Helvetica\" fontsize=18];\n"
            "  node [shape=plain fontname=\"Helvetica\" fontsize=11];\n"
            "  edge [fontname=\"Helvetica\" fontsize=10];\n"_s.arg(title);
    text += u"  source [label=<<TABLE BORDER=\"1\" STYLE=\"ROUNDED\" CELLBORDER=\"0\">%1%2</TABLE>>];\n"_s
                    .arg(row(u"<B>source</B>"_s)
                                 + (extras.sourceSize.isEmpty() ? QString()
                                                                : row(sizeText(extras.sourceSize))),
                         thumbnailRow(ResourceRef::SourceImage, extras));
    text += u"  legend [label=<%1>];\n"_s.arg(legend());
    for (int i = 0; i < graph.passes.size(); ++i)
        text += u"  %1 [label=<%2>];\n"_s.arg(nodeName(i), box(i, graph.passes.at(i), extras));
    // Arrows that do not count for the layout begin a new row.
    const qsizetype count = graph.passes.size();
    const qsizetype rows = (count + kMostInRow - 1) / kMostInRow;
    const qsizetype inRow = (count + rows - 1) / std::max<qsizetype>(rows, 1);
    const auto isSameRow = [inRow](int from, int to) {
        return std::max(from, 0) / inRow == to / inRow;
    };
    for (int i = 0; i < count; ++i) {
        const Pass &pass = graph.passes.at(i);
        for (int binding = 0; binding < pass.sampledInputs.size(); ++binding) {
            const int from = pass.sampledInputs.at(binding).passIndex;
            const bool isHistory = from == ResourceRef::Feedback;
            text += u"  %1 -> %2 [label=\"binding %3\"%4];\n"_s.arg(
                    nodeName(isHistory ? i : from), nodeName(i), QString::number(binding),
                    isHistory                    ? u" style=dashed"_s
                            : isSameRow(from, i) ? QString()
                                                 : u" constraint=false"_s);
        }
        if (pass.scaleInputPassIndex >= 0)
            text += u"  %1 -> %2 [style=dotted arrowhead=empty constraint=false];\n"_s.arg(
                    nodeName(pass.scaleInputPassIndex), nodeName(i));
    }
    return (text + u"}\n"_s).toUtf8();
}

bool graphSvg(const QByteArray &dot, const QMap<int, QByteArray> &thumbnails, QByteArray &svg,
              QString &error)
{
    const QString program = QStandardPaths::findExecutable(u"dot"_s);
    if (program.isEmpty()) {
        error = u"no program 'dot' here to draw an SVG with; install Graphviz (Debian: graphviz), or write a .dot file"_s;
        return false;
    }
    const QTemporaryDir directory;
    for (auto it = thumbnails.cbegin(); it != thumbnails.cend(); ++it) {
        QFile file(directory.filePath(thumbnailName(it.key())));
        if (!file.open(QIODevice::WriteOnly) || file.write(it.value()) != it->size()) {
            error = u"cannot write '%1': %2"_s.arg(file.fileName(), file.errorString());
            return false;
        }
    }
    QProcess process;
    process.setWorkingDirectory(directory.path());
    process.start(program, {u"-Tsvg"_s});
    process.write(dot);
    process.closeWriteChannel();
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        error = u"'%1' failed: %2"_s.arg(
                program, QString::fromUtf8(process.readAllStandardError()).simplified());
        return false;
    }
    svg = process.readAllStandardOutput();
    for (auto it = thumbnails.cbegin(); it != thumbnails.cend(); ++it)
        svg.replace('"' + thumbnailName(it.key()).toUtf8() + '"',
                    "\"data:image/png;base64," + it->toBase64() + '"');
    return true;
}
