#include <VulkanRenderGraph.h>

#include "GraphText.h"

#include <QTest>

#include <functional>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

using Graph = VulkanRenderGraph;
using Change = std::function<void(Graph &)>;
using Pass = Graph::Pass;
using PassChange = std::function<void(Pass &)>;

Pass pass(QList<Graph::ResourceRef> inputs)
{
    Pass made;
    made.fragmentSpirvResource = u"f"_s;
    made.vertexSpirvResource = u"v"_s;
    made.sampledInputs = std::move(inputs);
    return made;
}

// A chain of `count` passes: each samples the one before, the last is final.
Graph chain(int count)
{
    Graph graph;
    for (int i = 0; i < count; ++i)
        graph.passes.append(pass({{i == 0 ? -2 : i - 1}}));
    graph.passes.last().isFinalPass = true;
    return graph;
}

void bind(Pass &pass, const QList<unsigned int> &offsets)
{
    for (const unsigned int offset : offsets)
        pass.params.append({u"p%1"_s.arg(offset), offset});
}

void makeFeedback(Pass &pass)
{
    pass.isFeedbackTarget = true;
    pass.isFeedbackReader = true;
    pass.sampledInputs.append(Graph::ResourceRef{-1});
}

// A constant-black pass whose id is bound by `binder`.
void makeConstantBlack(Graph &graph, int index, int binder)
{
    graph.passes[index].constantBlackWhenZero = u"strength"_s;
    graph.passes[binder].params.append({u"strength"_s, 0});
}

void makeParameterOnly(Pass &pass)
{
    pass.cacheByParameters = true;
    pass.scaleSource = Graph::ScaleSource::Absolute;
    pass.sampledInputs.clear();
}

void shareBlack(Pass &pass, int wrapMode)
{
    pass.shareConstantBlack = true;
    pass.wrapMode = wrapMode;
}

} // namespace

class TestVulkanRenderGraph : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults();
    void enumerationsAreBytes();
    void isValid_data();
    void isValid();
};

void TestVulkanRenderGraph::defaults()
{
    Graph graph;
    QCOMPARE(graphText(graph), " feedback -1\n");
    QVERIFY(!graph.isValid());
    graph.passes.resize(1);
    QCOMPARE(graphText(graph), R"( feedback -1
'' '' ''
  format 0 scale source 0 scale 1 1 size 0 0 scale input -1 wrap mode 0
  black when '' alpha 1
  flags linearFilter
  inputs
  params
)");
}

void TestVulkanRenderGraph::enumerationsAreBytes()
{
    QCOMPARE(sizeof(Graph::Format), std::size_t(1));
    QCOMPARE(sizeof(Graph::ScaleSource), std::size_t(1));
    QCOMPARE(Graph::formatName(static_cast<Graph::Format>(4)), ""_L1);
}

void TestVulkanRenderGraph::isValid_data()
{
    QTest::addColumn<int>("passCount");
    QTest::addColumn<Change>("change");
    QTest::addColumn<bool>("expected");

    const auto row = [](const char *name, int passCount, bool expected, const Change &change) {
        QTest::newRow(name) << passCount << change << expected;
    };
    // Changes the first of two passes.
    const auto firstPass = [&row](const char *name, bool expected, const PassChange &change) {
        row(name, 2, expected, [change](Graph &g) { change(g.passes[0]); });
    };

    row("no passes", 1, false, [](Graph &g) { g.passes.clear(); });

    row("feedback index -2", 2, false, [](Graph &g) { g.feedbackPassIndex = -2; });
    row("feedback index n", 2, false, [](Graph &g) { g.feedbackPassIndex = 2; });
    row("feedback index names a target", 2, true, [](Graph &g) {
        makeFeedback(g.passes[0]);
        g.feedbackPassIndex = 0;
    });
    row("feedback index names no target", 3, false, [](Graph &g) {
        makeFeedback(g.passes[0]);
        g.feedbackPassIndex = 1;
    });
    row("feedback index names the final pass", 2, false, [](Graph &g) { g.feedbackPassIndex = 1; });
    firstPass("a feedback pass without an index", true, makeFeedback);
    firstPass("a reader that is no target", false,
              [](Pass &pass) { pass.isFeedbackReader = true; });
    firstPass("a target that is no reader", true, [](Pass &pass) { pass.isFeedbackTarget = true; });
    row("a target that is final", 1, false, [](Graph &g) { g.passes[0].isFeedbackTarget = true; });

    firstPass("no fragment shader", false, [](Pass &pass) { pass.fragmentSpirvResource.clear(); });
    row("no vertex shader", 2, false, [](Graph &g) { g.passes[1].vertexSpirvResource.clear(); });

    row("8 inputs", 1, true,
        [](Graph &g) { g.passes[0].sampledInputs = QList<Graph::ResourceRef>(8, {-2}); });
    row("9 inputs", 1, false,
        [](Graph &g) { g.passes[0].sampledInputs = QList<Graph::ResourceRef>(9, {-2}); });
    row("no inputs", 1, true, [](Graph &g) { g.passes[0].sampledInputs.clear(); });
    row("the source on a later pass", 3, true,
        [](Graph &g) { g.passes[2].sampledInputs = {{-2}}; });
    firstPass("history on no reader", false, [](Pass &pass) { pass.sampledInputs = {{-1}}; });
    firstPass("history on a reader", true, [](Pass &pass) {
        pass.sampledInputs.clear();
        makeFeedback(pass);
    });
    row("itself", 3, false, [](Graph &g) { g.passes[1].sampledInputs = {{1}}; });
    row("a later pass", 3, false, [](Graph &g) { g.passes[1].sampledInputs = {{2}}; });
    row("input -3", 3, false, [](Graph &g) { g.passes[1].sampledInputs = {{-3}}; });
    row("any earlier pass", 4, true, [](Graph &g) { g.passes[3].sampledInputs = {{0}, {1}, {2}}; });

    row("15 parameters", 1, true, [](Graph &g) {
        bind(g.passes[0], {14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0});
    });
    row("16 parameters", 1, false, [](Graph &g) {
        bind(g.passes[0], {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0});
    });
    row("offset 15", 1, false, [](Graph &g) { bind(g.passes[0], {15}); });
    row("offset beyond int", 1, false,
        [](Graph &g) { bind(g.passes[0], {std::numeric_limits<unsigned int>::max()}); });
    row("two parameters at offset 3", 1, false, [](Graph &g) { bind(g.passes[0], {3, 3}); });
    row("offset 3 on two passes", 2, true, [](Graph &g) {
        bind(g.passes[0], {3});
        bind(g.passes[1], {3});
    });

    firstPass("pass 0 scales from pass 0", false, [](Pass &pass) { pass.scaleInputPassIndex = 0; });
    firstPass("pass 0 scales from -2", false, [](Pass &pass) { pass.scaleInputPassIndex = -2; });
    row("pass 3 scales from pass 2", 4, true,
        [](Graph &g) { g.passes[3].scaleInputPassIndex = 2; });
    row("pass 3 scales from itself", 4, false,
        [](Graph &g) { g.passes[3].scaleInputPassIndex = 3; });
    row("pass 3 scales from -2", 4, false, [](Graph &g) { g.passes[3].scaleInputPassIndex = -2; });

    row("two final passes", 3, false, [](Graph &g) { g.passes[1].isFinalPass = true; });
    row("no final pass", 2, false, [](Graph &g) { g.passes[1].isFinalPass = false; });
    row("a final pass that is not the last", 2, false, [](Graph &g) {
        g.passes[0].isFinalPass = true;
        g.passes[1].isFinalPass = false;
    });

    // Changes a constant-black pass that binds its id.
    const auto black = [&row](const char *name, bool expected, const PassChange &change) {
        row(name, 2, expected, [change](Graph &g) {
            makeConstantBlack(g, 0, 0);
            change(g.passes[0]);
        });
    };
    black("constant black on an id of its own", true, [](Pass &) {});
    row("constant black on a later pass's id", 3, true,
        [](Graph &g) { makeConstantBlack(g, 0, 2); });
    firstPass("constant black on an unbound id", false,
              [](Pass &pass) { pass.constantBlackWhenZero = u"strength"_s; });
    row("constant black and final", 2, false, [](Graph &g) { makeConstantBlack(g, 1, 0); });
    black("constant black and target", false, [](Pass &pass) { pass.isFeedbackTarget = true; });
    black("constant black and reader", false, makeFeedback);
    black("constant black and mipmapped", false, [](Pass &pass) { pass.mipmap = true; });
    black("constant black and parameter-only", false, makeParameterOnly);
    black("constant black with alpha 0", true, [](Pass &pass) { pass.constantBlackAlpha = 0.0F; });
    black("constant black with alpha 1", true, [](Pass &pass) { pass.constantBlackAlpha = 1.0F; });
    black("constant black with alpha 0.5", false,
          [](Pass &pass) { pass.constantBlackAlpha = 0.5F; });
    black("constant black with alpha NaN", false,
          [](Pass &pass) { pass.constantBlackAlpha = std::numeric_limits<float>::quiet_NaN(); });
    firstPass("alpha 0.5 without constant black", true,
              [](Pass &pass) { pass.constantBlackAlpha = 0.5F; });
    black("constant black sampling itself", false, [](Pass &pass) { pass.sampledInputs = {{0}}; });
    black("constant black sampling history", false,
          [](Pass &pass) { pass.sampledInputs = {{-1}}; });

    black("shared black at wrap mode 1", true, [](Pass &pass) { shareBlack(pass, 1); });
    black("shared black at wrap mode 0", false, [](Pass &pass) { shareBlack(pass, 0); });
    black("shared black at wrap mode 2", false, [](Pass &pass) { shareBlack(pass, 2); });
    firstPass("shared black without constant black", false,
              [](Pass &pass) { shareBlack(pass, 1); });

    const auto parameterOnly = [&row](const char *name, bool expected, const PassChange &change) {
        row(name, 2, expected, [change](Graph &g) {
            makeParameterOnly(g.passes[0]);
            change(g.passes[0]);
        });
    };
    parameterOnly("parameter-only", true, [](Pass &) {});
    parameterOnly("parameter-only at viewport size", false,
                  [](Pass &pass) { pass.scaleSource = Graph::ScaleSource::Viewport; });
    parameterOnly("parameter-only at source size", false,
                  [](Pass &pass) { pass.scaleSource = Graph::ScaleSource::Source; });
    parameterOnly("parameter-only with an input", false,
                  [](Pass &pass) { pass.sampledInputs = {{-2}}; });
    row("parameter-only and final", 2, false, [](Graph &g) { makeParameterOnly(g.passes[1]); });
    parameterOnly("parameter-only and target", false,
                  [](Pass &pass) { pass.isFeedbackTarget = true; });
    parameterOnly("parameter-only and reader", false, [](Pass &pass) {
        pass.isFeedbackTarget = true;
        pass.isFeedbackReader = true;
    });
}

void TestVulkanRenderGraph::isValid()
{
    QFETCH(int, passCount);
    QFETCH(Change, change);
    QFETCH(bool, expected);

    Graph graph = chain(passCount);
    QVERIFY(graph.isValid());
    change(graph);
    QCOMPARE(graph.isValid(), expected);
}

QTEST_APPLESS_MAIN(TestVulkanRenderGraph)
#include "tst_VulkanRenderGraph.moc"
