#include <GraphDot.h>
#include <TestSupport.h>

#include <QRegularExpression>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace {

using Format = VulkanRenderGraph::Format;
using Kind = PassKind;
using ScaleSource = VulkanRenderGraph::ScaleSource;

// One pass of each kind.
VulkanRenderGraph smallGraph()
{
    VulkanRenderGraph graph;
    VulkanRenderGraph::Pass pass;
    pass.debugName = u"first"_s;
    pass.format = Format::RGBA16F;
    pass.scaleX = 2.0F;
    pass.sampledInputs = {{-2}};
    pass.params = {{u"gain"_s, 0}, {u"lift"_s, 1}};
    graph.passes.append(pass);

    pass = {};
    pass.debugName = u"ghost"_s;
    pass.format = Format::RGBA32F;
    pass.isFeedbackReader = true;
    pass.isFeedbackTarget = true;
    pass.sampledInputs = {{0}, {-1}};
    graph.passes.append(pass);

    pass = {};
    pass.debugName = u"tile"_s;
    pass.format = Format::RGBA8;
    pass.scaleSource = ScaleSource::Absolute;
    pass.absoluteWidth = 64;
    pass.cacheByParameters = true;
    graph.passes.append(pass);

    pass = {};
    pass.debugName = u"halo"_s;
    pass.scaleInputPassIndex = 0;
    pass.constantBlackWhenZero = u"gain"_s;
    pass.shareConstantBlack = true;
    pass.sampledInputs = {{1}};
    graph.passes.append(pass);

    pass = {};
    pass.debugName = u"a<b"_s;
    pass.format = Format::RGBA16F;
    pass.scaleSource = ScaleSource::Viewport;
    pass.isFinalPass = true;
    pass.sampledInputs = {{3}, {2}, {-2}};
    graph.passes.append(pass);
    return graph;
}

// The text of each box, row by row, without its layout.
QStringList boxesOf(const QByteArray &dot)
{
    static const QRegularExpression kBox(u"^  (\\w+) \\[label=<(.*)>\\];$"_s,
                                         QRegularExpression::MultilineOption);
    static const QRegularExpression kTags(u"<[^>]*>"_s);
    QStringList boxes;
    for (auto matches = kBox.globalMatch(QString::fromUtf8(dot)); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        QStringList rows = {match.captured(1)};
        for (const QString &row : match.captured(2).split(u"</TR>"_s)) {
            static const QRegularExpression kImage(u"<IMG SRC=\"(.*)\"/>"_s);
            const QRegularExpressionMatch image = kImage.match(row);
            rows.append(image.hasMatch() ? image.captured(1) : QString(row).remove(kTags));
        }
        rows.removeAll(QString());
        boxes.append(rows.join(u" | "_s));
    }
    return boxes;
}

QByteArrayList arrowsOf(const QByteArray &dot)
{
    QByteArrayList arrows;
    for (const QByteArray &line : dot.split('\n')) {
        if (line.contains("->"))
            arrows.append(line.trimmed());
    }
    return arrows;
}

const QString kLegend =
        u"legend | solid arrow: a sampled image, at this binding | dashed arrow: the previous "
        u"output "
        "of the pass | dotted arrow: the pass whose size is meant | params[0]: a parameter's slot "
        "| "
        "drawn again when a parameter changes | left out while a parameter is 0 | the picture"_s;

} // namespace

class TestGraphDot : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void arrowsAreSampledImages();
    void manyPassesAreInRows();
    void boxesHaveTheRules();
    void boxesHaveTheLastFrame();
    void svgHasBoxesAndThumbnails();
    void svgErrors();
};

void TestGraphDot::arrowsAreSampledImages()
{
    QCOMPARE(arrowsOf(graphDot(u"small"_s, smallGraph())),
             QByteArrayList({
                     "source -> pass0 [label=\"binding 0\"];",
                     "pass0 -> pass1 [label=\"binding 0\"];",
                     "pass1 -> pass1 [label=\"binding 1\" style=dashed];",
                     "pass1 -> pass3 [label=\"binding 0\"];",
                     "pass0 -> pass3 [style=dotted arrowhead=empty constraint=false];",
                     "pass3 -> pass4 [label=\"binding 0\"];",
                     "pass2 -> pass4 [label=\"binding 1\"];",
                     "source -> pass4 [label=\"binding 2\"];",
             }));
}

// Eight passes are four and four.
void TestGraphDot::manyPassesAreInRows()
{
    VulkanRenderGraph graph;
    VulkanRenderGraph::Pass pass;
    pass.sampledInputs = {{-2}};
    for (int i = 0; i < 8; ++i) {
        graph.passes.append(pass);
        pass.sampledInputs = {{i}};
    }
    graph.passes.last().sampledInputs = {{6}, {0}, {-2}};
    QCOMPARE(arrowsOf(graphDot(u"long"_s, graph)),
             QByteArrayList({
                     "source -> pass0 [label=\"binding 0\"];",
                     "pass0 -> pass1 [label=\"binding 0\"];",
                     "pass1 -> pass2 [label=\"binding 0\"];",
                     "pass2 -> pass3 [label=\"binding 0\"];",
                     "pass3 -> pass4 [label=\"binding 0\" constraint=false];",
                     "pass4 -> pass5 [label=\"binding 0\"];",
                     "pass5 -> pass6 [label=\"binding 0\"];",
                     "pass6 -> pass7 [label=\"binding 0\"];",
                     "pass0 -> pass7 [label=\"binding 1\" constraint=false];",
                     "source -> pass7 [label=\"binding 2\" constraint=false];",
             }));
}

void TestGraphDot::boxesHaveTheRules()
{
    QCOMPARE(
            boxesOf(graphDot(u"small"_s, smallGraph(),
                             {.values = {{u"gain"_s, 0.25F}}, .passes = {}, .thumbnails = {}})),
            QStringList({
                    u"source | source"_s,
                    kLegend,
                    u"pass0 | pass 0: first | 2 × 1 of input · RGBA16F | params[0] gain = 0.25 | params[1] lift"_s,
                    u"pass1 | pass 1: ghost | size of input · RGBA32F"_s,
                    u"pass2 | pass 2: tile | 64 × source · RGBA8 | cached by parameters"_s,
                    u"pass3 | pass 3: halo | size of pass 0 · R11G11B10F | black while gain is 0, shared"_s,
                    u"pass4 | pass 4: a&lt;b | size of viewport · RGBA16F | final"_s,
            }));
}

void TestGraphDot::boxesHaveTheLastFrame()
{
    const auto result = [](Kind kind, QSize size) {
        return PassResult{.kind = kind, .size = size, .milliseconds = {}};
    };
    const QByteArray dot = graphDot(
            u"small"_s, smallGraph(),
            {.values = {},
             .passes = {result(Kind::Drawn, {640, 240}), result(Kind::Drawn, {640, 241}),
                        result(Kind::Unchanged, {64, 242}), result(Kind::ConstantBlack, {1, 1}),
                        result(Kind::Drawn, {800, 600})},
             .thumbnails = {{-2, "png"}, {1, "png"}},
             .sourceSize = {320, 240}});
    QCOMPARE(
            boxesOf(dot),
            QStringList({
                    u"source | source | 320 × 240 | source.png"_s,
                    kLegend,
                    u"pass0 | pass 0: first | 640 × 240 · RGBA16F | params[0] gain | params[1] lift"_s,
                    u"pass1 | pass 1: ghost | 640 × 241 · RGBA32F | pass1.png"_s,
                    u"pass2 | pass 2: tile | 64 × 242 · RGBA8 | cached by parameters"_s,
                    u"pass3 | pass 3: halo | 1 × 1 · R11G11B10F | black while gain is 0, shared: now"_s,
                    u"pass4 | pass 4: a&lt;b | 800 × 600 · RGBA16F | final"_s,
            }));
}

void TestGraphDot::svgHasBoxesAndThumbnails()
{
    // A white pixel.
    const QByteArray png = QByteArray::fromBase64("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAAAAAA6fptVAAAA"
                                                  "CklEQVR4nGP4DwABAQEAsuG5HgAAAABJRU5ErkJggg==");
    const QMap<int, QByteArray> thumbnails = {{-2, png}, {1, png}};
    QString error;
    QByteArray svg;
    QVERIFY2(graphSvg(graphDot(u"small"_s, smallGraph(),
                               {.values = {}, .passes = {}, .thumbnails = thumbnails}),
                      thumbnails, svg, error),
             qPrintable(error));
    QVERIFY(svg.startsWith("<?xml"));
    QCOMPARE(svg.count("\"data:image/png;base64," + png.toBase64() + '"'), 2);
    QCOMPARE(svg.count("class=\"edge\""), 8);
    QCOMPARE(svg.count("class=\"node\""), 7);
    QVERIFY(svg.contains(">black while gain is 0, shared</text>"));
}

void TestGraphDot::svgErrors()
{
    const QByteArray path = qgetenv("PATH");
    QByteArray svg;
    QString error;
    qputenv("PATH", "/nowhere");
    const bool isDone = graphSvg("digraph {}", {}, svg, error);
    qputenv("PATH", path);
    QVERIFY(!isDone);
    QCOMPARE(
            error,
            u"no program 'dot' here to draw an SVG with; install Graphviz (Debian: graphviz), or write a .dot file"_s);

    QVERIFY(!graphSvg("no graph", {}, svg, error));
    QCOMPARE(error,
             u"'%1' failed: Error: <stdin>: syntax error in line 1 near 'no'"_s.arg(
                     QStandardPaths::findExecutable(u"dot"_s)));
}

QTEST_GUILESS_MAIN(TestGraphDot)
#include "tst_GraphDot.moc"
