#include "GraphPicture.h"

#include "../TestSupport.h"

#include <QRegularExpression>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace {

using Format = VulkanRenderGraph::Format;
using Kind = PassResult::Kind;
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

const QByteArray kHead = R"(digraph "small" {
  graph [label="small" labelloc=t fontname="Helvetica" fontsize=18];
  node [shape=plain fontname="Helvetica" fontsize=11];
  edge [fontname="Helvetica" fontsize=10];
)";

const QByteArray kArrows = R"(  source -> pass0 [label=" 0"];
  pass0 -> pass1 [label=" 0"];
  pass1 -> pass1 [label=" 1" style=dashed];
  pass1 -> pass3 [label=" 0"];
  pass0 -> pass3 [style=dotted arrowhead=empty constraint=false];
  pass3 -> pass4 [label=" 0"];
  pass2 -> pass4 [label=" 1"];
  source -> pass4 [label=" 2"];
  { rank=max; pass4 }
}
)";

} // namespace

class TestGraphPicture : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void dotTellsTheRules();
    void dotTellsWhatWasDrawn();
    void svgHoldsBoxesAndThumbnails();
    void svgSaysWhatIsMissing();
};

void TestGraphPicture::dotTellsTheRules()
{
    const QByteArray boxes =
            R"(  source [label=<<TABLE BORDER="1" STYLE="ROUNDED" CELLBORDER="0"><TR><TD><B>source</B></TD></TR></TABLE>>];
  pass0 [label=<<TABLE BORDER="1" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="#f7f7f4"><TR><TD><B>0 first</B></TD></TR><TR><TD>2 × 1 of input · RGBA16F</TD></TR><TR><TD ALIGN="LEFT">0 gain = 0.25</TD></TR><TR><TD ALIGN="LEFT">1 lift</TD></TR></TABLE>>];
  pass1 [label=<<TABLE BORDER="1" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="#f7f7f4"><TR><TD><B>1 ghost</B></TD></TR><TR><TD>size of input · RGBA32F</TD></TR></TABLE>>];
  pass2 [label=<<TABLE BORDER="1" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="#d9ecd3"><TR><TD><B>2 tile</B></TD></TR><TR><TD>64 × source · RGBA8</TD></TR><TR><TD><I>cached by parameters</I></TD></TR></TABLE>>];
  pass3 [label=<<TABLE BORDER="1" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="#dcdce4"><TR><TD><B>3 halo</B></TD></TR><TR><TD>size of pass 0 · R11G11B10F</TD></TR><TR><TD><I>black while gain is 0, shared</I></TD></TR></TABLE>>];
  pass4 [label=<<TABLE BORDER="3" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="#fbe6b8"><TR><TD><B>4 a&lt;b</B></TD></TR><TR><TD>size of viewport · RGBA16F</TD></TR><TR><TD><I>final</I></TD></TR></TABLE>>];
)";
    const QByteArray dot =
            graphDot(u"small"_s, smallGraph(),
                     {.values = {{u"gain"_s, 0.25F}}, .passes = {}, .thumbnails = {}});
    QCOMPARE(firstDifference(dot, kHead + boxes + kArrows), "");
}

void TestGraphPicture::dotTellsWhatWasDrawn()
{
    const QByteArray boxes =
            R"(  source [label=<<TABLE BORDER="1" STYLE="ROUNDED" CELLBORDER="0"><TR><TD><B>source</B></TD></TR><TR><TD><IMG SRC="source.png"/></TD></TR></TABLE>>];
  pass0 [label=<<TABLE BORDER="1" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="#f7f7f4"><TR><TD><B>0 first</B></TD></TR><TR><TD>640 × 240 · RGBA16F</TD></TR><TR><TD ALIGN="LEFT">0 gain</TD></TR><TR><TD ALIGN="LEFT">1 lift</TD></TR></TABLE>>];
  pass1 [label=<<TABLE BORDER="1" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="#f7f7f4"><TR><TD><B>1 ghost</B></TD></TR><TR><TD>640 × 241 · RGBA32F</TD></TR><TR><TD><IMG SRC="pass1.png"/></TD></TR></TABLE>>];
  pass2 [label=<<TABLE BORDER="1" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="#d9ecd3"><TR><TD><B>2 tile</B></TD></TR><TR><TD>64 × 242 · RGBA8</TD></TR><TR><TD><I>cached by parameters</I></TD></TR></TABLE>>];
  pass3 [label=<<TABLE BORDER="1" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="#dcdce4"><TR><TD><B>3 halo</B></TD></TR><TR><TD>1 × 1 · R11G11B10F</TD></TR><TR><TD><I>black while gain is 0, shared: now</I></TD></TR></TABLE>>];
  pass4 [label=<<TABLE BORDER="3" CELLBORDER="0" CELLSPACING="0" CELLPADDING="2" BGCOLOR="#fbe6b8"><TR><TD><B>4 a&lt;b</B></TD></TR><TR><TD>800 × 600 · RGBA16F</TD></TR><TR><TD><I>final</I></TD></TR></TABLE>>];
)";
    const auto result = [](Kind kind, QSize size) {
        return PassResult{.kind = kind, .size = size, .milliseconds = {}};
    };
    const QByteArray dot = graphDot(
            u"small"_s, smallGraph(),
            {.values = {},
             .passes = {result(Kind::Drawn, {640, 240}), result(Kind::Drawn, {640, 241}),
                        result(Kind::Cached, {64, 242}), result(Kind::ConstantBlack, {1, 1}),
                        result(Kind::Drawn, {800, 600})},
             .thumbnails = {{-2, "png"}, {1, "png"}}});
    QCOMPARE(firstDifference(dot, kHead + boxes + kArrows), "");
}

void TestGraphPicture::svgHoldsBoxesAndThumbnails()
{
    // A white pixel.
    const QByteArray png = QByteArray::fromBase64("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAAAAAA6fptVAAAA"
                                                  "CklEQVR4nGP4DwABAQEAsuG5HgAAAABJRU5ErkJggg==");
    const QMap<int, QByteArray> thumbnails = {{-2, png}, {1, png}};
    QString error;
    const std::optional<QByteArray> svg =
            graphSvg(graphDot(u"small"_s, smallGraph(),
                              {.values = {}, .passes = {}, .thumbnails = thumbnails}),
                     thumbnails, error);
    QCOMPARE(error, QString());
    QVERIFY(svg);
    QVERIFY(svg->startsWith("<?xml"));
    QCOMPARE(svg->count("\"data:image/png;base64," + png.toBase64() + '"'), 2);
    QCOMPARE(svg->count("class=\"edge\""), 8);
    QCOMPARE(svg->count("class=\"node\""), 6);
    QVERIFY(svg->contains(">black while gain is 0, shared</text>"));
}

void TestGraphPicture::svgSaysWhatIsMissing()
{
    const QByteArray path = qgetenv("PATH");
    QString error;
    qputenv("PATH", "/nowhere");
    const std::optional<QByteArray> missing = graphSvg("digraph {}", {}, error);
    qputenv("PATH", path);
    QVERIFY(!missing);
    QCOMPARE(
            error,
            u"no program 'dot' here to draw an SVG with; install Graphviz (Debian: graphviz), or write a .dot file"_s);

    QVERIFY(!graphSvg("no graph", {}, error));
    QCOMPARE(error,
             u"'%1' failed: Error: <stdin>: syntax error in line 1 near 'no'"_s.arg(
                     QStandardPaths::findExecutable(u"dot"_s)));
}

QTEST_GUILESS_MAIN(TestGraphPicture)
#include "tst_GraphPicture.moc"
