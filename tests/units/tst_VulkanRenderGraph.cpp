#include <VulkanRenderGraph.h>

#include "GraphText.h"

#include <QTest>

#include <functional>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

using Graph = VulkanRenderGraph;
using Change = std::function<void(Graph &)>;

Graph::Pass pass(QList<Graph::ResourceRef> inputs)
{
    Graph::Pass made;
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

void bind(Graph::Pass &pass, const QList<unsigned int> &offsets)
{
    for (const unsigned int offset : offsets)
        pass.params.append({u"p%1"_s.arg(offset), offset});
}

void makeFeedback(Graph::Pass &pass)
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

void makeParameterOnly(Graph::Pass &pass)
{
    pass.cacheByParameters = true;
    pass.scaleSource = Graph::ScaleSource::Absolute;
    pass.sampledInputs.clear();
}

} // namespace

class TestVulkanRenderGraph : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults();
    void enumeratorsKeepTheirIntegers();
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

void TestVulkanRenderGraph::enumeratorsKeepTheirIntegers()
{
    QCOMPARE(static_cast<int>(Graph::Format::R11G11B10F), 0);
    QCOMPARE(static_cast<int>(Graph::Format::RGBA16F), 1);
    QCOMPARE(static_cast<int>(Graph::Format::RGBA8), 2);
    QCOMPARE(static_cast<int>(Graph::Format::RGBA32F), 3);
    QCOMPARE(static_cast<int>(Graph::ScaleSource::Source), 0);
    QCOMPARE(static_cast<int>(Graph::ScaleSource::Viewport), 1);
    QCOMPARE(static_cast<int>(Graph::ScaleSource::Absolute), 2);
    QCOMPARE(Graph::formatName(static_cast<Graph::Format>(4)), ""_L1);
    QCOMPARE(sizeof(Graph::Format), std::size_t(1));
    QCOMPARE(sizeof(Graph::ScaleSource), std::size_t(1));
}

void TestVulkanRenderGraph::isValid_data()
{
    QTest::addColumn<int>("passCount");
    QTest::addColumn<Change>("change");
    QTest::addColumn<bool>("expected");

    const auto row = [](const char *name, int passCount, bool expected, const Change &change) {
        QTest::newRow(name) << passCount << change << expected;
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
    row("a feedback pass without an index", 2, true, [](Graph &g) { makeFeedback(g.passes[0]); });
    row("a reader that is no target", 2, false,
        [](Graph &g) { g.passes[0].isFeedbackReader = true; });
    row("a target that is no reader", 2, true,
        [](Graph &g) { g.passes[0].isFeedbackTarget = true; });
    row("a target that is final", 1, false, [](Graph &g) { g.passes[0].isFeedbackTarget = true; });

    row("no fragment shader", 2, false,
        [](Graph &g) { g.passes[0].fragmentSpirvResource.clear(); });
    row("no vertex shader", 2, false, [](Graph &g) { g.passes[1].vertexSpirvResource.clear(); });

    row("8 inputs", 1, true,
        [](Graph &g) { g.passes[0].sampledInputs = QList<Graph::ResourceRef>(8, {-2}); });
    row("9 inputs", 1, false,
        [](Graph &g) { g.passes[0].sampledInputs = QList<Graph::ResourceRef>(9, {-2}); });
    row("no inputs", 1, true, [](Graph &g) { g.passes[0].sampledInputs.clear(); });
    row("the source on a later pass", 3, true,
        [](Graph &g) { g.passes[2].sampledInputs = {{-2}}; });
    row("history on no reader", 2, false, [](Graph &g) { g.passes[0].sampledInputs = {{-1}}; });
    row("history on a reader", 2, true, [](Graph &g) {
        g.passes[0].sampledInputs.clear();
        makeFeedback(g.passes[0]);
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

    row("pass 0 scales from pass 0", 2, false,
        [](Graph &g) { g.passes[0].scaleInputPassIndex = 0; });
    row("pass 0 scales from -2", 2, false, [](Graph &g) { g.passes[0].scaleInputPassIndex = -2; });
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

    row("constant black on an id of its own", 2, true,
        [](Graph &g) { makeConstantBlack(g, 0, 0); });
    row("constant black on a later pass's id", 3, true,
        [](Graph &g) { makeConstantBlack(g, 0, 2); });
    row("constant black on an unbound id", 2, false,
        [](Graph &g) { g.passes[0].constantBlackWhenZero = u"strength"_s; });
    row("constant black and final", 2, false, [](Graph &g) { makeConstantBlack(g, 1, 0); });
    row("constant black and target", 2, false, [](Graph &g) {
        makeConstantBlack(g, 0, 0);
        g.passes[0].isFeedbackTarget = true;
    });
    row("constant black and reader", 2, false, [](Graph &g) {
        makeConstantBlack(g, 0, 0);
        makeFeedback(g.passes[0]);
    });
    row("constant black and mipmapped", 2, false, [](Graph &g) {
        makeConstantBlack(g, 0, 0);
        g.passes[0].mipmap = true;
    });
    row("constant black and parameter-only", 2, false, [](Graph &g) {
        makeConstantBlack(g, 0, 0);
        makeParameterOnly(g.passes[0]);
    });
    const auto blackAlpha = [&row](const char *name, float alpha, bool expected) {
        row(name, 2, expected, [alpha](Graph &g) {
            makeConstantBlack(g, 0, 0);
            g.passes[0].constantBlackAlpha = alpha;
        });
    };
    blackAlpha("constant black with alpha 0", 0.0F, true);
    blackAlpha("constant black with alpha 1", 1.0F, true);
    blackAlpha("constant black with alpha 0.5", 0.5F, false);
    blackAlpha("constant black with alpha NaN", std::numeric_limits<float>::quiet_NaN(), false);
    row("alpha 0.5 without constant black", 2, true,
        [](Graph &g) { g.passes[0].constantBlackAlpha = 0.5F; });
    row("constant black sampling itself", 3, false, [](Graph &g) {
        makeConstantBlack(g, 1, 0);
        g.passes[1].sampledInputs = {{1}};
    });
    row("constant black sampling history", 3, false, [](Graph &g) {
        makeConstantBlack(g, 1, 0);
        g.passes[1].sampledInputs = {{-1}};
    });

    const auto sharedBlack = [&row](const char *name, int wrapMode, bool expected) {
        row(name, 2, expected, [wrapMode](Graph &g) {
            makeConstantBlack(g, 0, 0);
            g.passes[0].shareConstantBlack = true;
            g.passes[0].wrapMode = wrapMode;
        });
    };
    sharedBlack("shared black at wrap mode 1", 1, true);
    sharedBlack("shared black at wrap mode 0", 0, false);
    sharedBlack("shared black at wrap mode 2", 2, false);
    row("shared black without constant black", 2, false, [](Graph &g) {
        g.passes[0].shareConstantBlack = true;
        g.passes[0].wrapMode = 1;
    });

    row("parameter-only", 2, true, [](Graph &g) { makeParameterOnly(g.passes[0]); });
    row("parameter-only at viewport size", 2, false, [](Graph &g) {
        makeParameterOnly(g.passes[0]);
        g.passes[0].scaleSource = Graph::ScaleSource::Viewport;
    });
    row("parameter-only at source size", 2, false, [](Graph &g) {
        makeParameterOnly(g.passes[0]);
        g.passes[0].scaleSource = Graph::ScaleSource::Source;
    });
    row("parameter-only with an input", 2, false, [](Graph &g) {
        makeParameterOnly(g.passes[0]);
        g.passes[0].sampledInputs = {{-2}};
    });
    row("parameter-only and final", 2, false, [](Graph &g) { makeParameterOnly(g.passes[1]); });
    row("parameter-only and target", 2, false, [](Graph &g) {
        makeParameterOnly(g.passes[0]);
        g.passes[0].isFeedbackTarget = true;
    });
    row("parameter-only and reader", 2, false, [](Graph &g) {
        makeParameterOnly(g.passes[0]);
        g.passes[0].isFeedbackTarget = true;
        g.passes[0].isFeedbackReader = true;
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
