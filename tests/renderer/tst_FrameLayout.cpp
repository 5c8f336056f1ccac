#include <renderer/FrameLayout.h>

#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace VulkanGraph;

// What of a frame follows from the graph alone. No device is needed.

namespace {

using Graph = VulkanRenderGraph;
using Images = std::vector<TransientMemory>;

Graph::Pass passOf(Graph::ScaleSource scaleSource, QList<Graph::ResourceRef> inputs)
{
    Graph::Pass pass;
    pass.scaleSource = scaleSource;
    pass.sampledInputs = std::move(inputs);
    return pass;
}

// A last declared pass that can be drawn into the target, and the final pass.
Graph twoPasses()
{
    Graph graph;
    graph.passes = {passOf(Graph::ScaleSource::Viewport, {{-2}}),
                    passOf(Graph::ScaleSource::Viewport, {{0}})};
    graph.passes.last().isFinalPass = true;
    graph.passes.last().debugName = u"hdr-color-boost"_s;
    return graph;
}

bool isApart(const TransientMemory &image, const TransientMemory &other)
{
    return image.lastPass < other.firstPass || other.lastPass < image.firstPass
            || image.offset + image.size <= other.offset
            || other.offset + other.size <= image.offset;
}

} // namespace

class TestFrameLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outputSizes_data();
    void outputSizes();
    void pushConstantsOfAPass();
    void finalPassIsBoostedOnlyWhereThePresetDoesNot();
    void finalPassCanBeLeftOut_data();
    void finalPassCanBeLeftOut();
    void lastReader();
    void placesTransients_data();
    void placesTransients();
    void transientsDoNotOverlap();
};

void TestFrameLayout::outputSizes_data()
{
    QTest::addColumn<VulkanRenderGraph::Pass>("pass");
    QTest::addColumn<QSize>("expected");
    Graph::Pass pass = passOf(Graph::ScaleSource::Source, {{0}});
    QTest::newRow("direct input") << pass << QSize(7, 5);
    pass.scaleX = 0.5F;
    pass.scaleY = 3.0F;
    QTest::newRow("scaled, rounded to the nearest") << pass << QSize(4, 15);
    pass.scaleX = 0.01F;
    QTest::newRow("at least one pixel") << pass << QSize(1, 15);
    pass = passOf(Graph::ScaleSource::Source, {{-2}, {0}});
    QTest::newRow("source picture") << pass << QSize(100, 50);
    pass = passOf(Graph::ScaleSource::Source, {});
    QTest::newRow("nothing sampled") << pass << QSize(100, 50);
    pass.scaleInputPassIndex = 0;
    QTest::newRow("named pass") << pass << QSize(7, 5);
    pass = passOf(Graph::ScaleSource::Viewport, {{0}});
    pass.scaleY = 2.0F;
    QTest::newRow("viewport") << pass << QSize(640, 960);
    pass = passOf(Graph::ScaleSource::Absolute, {{0}});
    pass.absoluteWidth = 4096;
    QTest::newRow("absolute, the source's height") << pass << QSize(4096, 50);
    pass.absoluteWidth = 0;
    pass.absoluteHeight = 9;
    QTest::newRow("absolute, the source's width") << pass << QSize(100, 9);
}

void TestFrameLayout::outputSizes()
{
    QFETCH(VulkanRenderGraph::Pass, pass);
    QFETCH(QSize, expected);
    Graph graph;
    graph.passes = {passOf(Graph::ScaleSource::Absolute, {{-2}}), pass};
    graph.passes.first().absoluteWidth = 7;
    graph.passes.first().absoluteHeight = 5;
    QCOMPARE(VulkanGraph::outputSizes(graph, {100, 50}, {640, 480}).last(), expected);
}

void TestFrameLayout::pushConstantsOfAPass()
{
    Graph graph;
    graph.passes = {passOf(Graph::ScaleSource::Source, {{-2}}),
                    passOf(Graph::ScaleSource::Source, {{-1}, {0}})};
    const QList<QSize> sizes = {{8, 4}, {16, 2}};
    const std::array values = {5.0F, 6.0F, 7.0F};
    VulkanGraphRenderer::Frame frame;
    frame.parameters = values.data();
    frame.frameCount = 9;
    frame.frameDirection = -1;
    frame.frameSeconds = 0.25F;
    frame.isHdr = true;
    frame.hdrHeadroom = 3.0F;
    const PushConstants own = pushConstants(graph, 1, sizes, {2, 1}, {{0, 2}, {14, 1}}, frame);
    QCOMPARE(own.sourceSize, (std::array{16.0F, 2.0F, 0.0625F, 0.5F})); // its history
    QCOMPARE(own.outputSize, (std::array{16.0F, 2.0F, 0.0625F, 0.5F}));
    QCOMPARE(own.originalSize, (std::array{2.0F, 1.0F, 0.5F, 1.0F}));
    QCOMPARE(own.frameCount, 9U);
    QCOMPARE(own.frameDirection, -1);
    QCOMPARE(own.hdrOutputActive, 1U);
    QCOMPARE(own.frameSeconds, 0.25F);
    QCOMPARE(own.hdrHeadroom, 3.0F);
    QCOMPARE(own.params.front(), 7.0F);
    QCOMPARE(own.params.back(), 6.0F);
    QCOMPARE(std::count(own.params.cbegin(), own.params.cend(), 0.0F), 13);

    frame.isHdr = false;
    const PushConstants first = pushConstants(graph, 0, sizes, {2, 1}, {}, frame);
    QCOMPARE(first.sourceSize, first.originalSize);
    QCOMPARE(first.hdrOutputActive, 0U);
    graph.passes.last().sampledInputs = {{0}};
    QCOMPARE(pushConstants(graph, 1, sizes, {2, 1}, {}, frame).sourceSize,
             (std::array{8.0F, 4.0F, 0.125F, 0.25F}));
}

void TestFrameLayout::finalPassIsBoostedOnlyWhereThePresetDoesNot()
{
    Graph graph = twoPasses();
    VulkanGraphRenderer::Frame frame;
    frame.isHdr = true;
    frame.hdrHeadroom = 4.0F;
    const QList<QSize> sizes = {{1, 1}, {1, 1}};
    QCOMPARE(pushConstants(graph, 1, sizes, {1, 1}, {}, frame).hdrHeadroom, 4.0F);
    graph.finalRealPassRespondsToHdr = true;
    QCOMPARE(pushConstants(graph, 1, sizes, {1, 1}, {}, frame).hdrHeadroom, 1.0F);
    QCOMPARE(pushConstants(graph, 0, sizes, {1, 1}, {}, frame).hdrHeadroom, 4.0F);
}

void TestFrameLayout::finalPassCanBeLeftOut_data()
{
    QTest::addColumn<VulkanRenderGraph>("graph");
    QTest::addColumn<bool>("expected");
    QTest::newRow("plain") << twoPasses() << true;
    const auto row = [](const char *name, auto change) {
        Graph graph = twoPasses();
        change(graph.passes.first(), graph.passes.last());
        QTest::newRow(name) << graph << false;
    };
    using Pass = Graph::Pass;
    row("not of the viewport",
        [](Pass &pass, Pass &) { pass.scaleSource = Graph::ScaleSource::Source; });
    row("wider", [](Pass &pass, Pass &) { pass.scaleX = 2.0F; });
    row("higher", [](Pass &pass, Pass &) { pass.scaleY = 2.0F; });
    row("feedback target", [](Pass &pass, Pass &) { pass.isFeedbackTarget = true; });
    row("feedback reader", [](Pass &pass, Pass &) { pass.isFeedbackReader = true; });
    row("mipmaps", [](Pass &pass, Pass &) { pass.mipmap = true; });
    row("cached", [](Pass &pass, Pass &) { pass.cacheByParameters = true; });
    row("constant black", [](Pass &pass, Pass &) { pass.constantBlackWhenZero = u"a"_s; });
    row("another final pass", [](Pass &, Pass &final) { final.debugName = u"other"_s; });
    row("of the source picture", [](Pass &, Pass &final) { final.sampledInputs = {{-2}}; });
    row("of two images",
        [](Pass &, Pass &final) { final.sampledInputs.append(Graph::ResourceRef{-2}); });
    Graph one = twoPasses();
    one.passes.removeFirst();
    one.passes.first().sampledInputs = {{-2}};
    QTest::newRow("no declared pass") << one << false;
}

void TestFrameLayout::finalPassCanBeLeftOut()
{
    QFETCH(VulkanRenderGraph, graph);
    QFETCH(bool, expected);
    QCOMPARE(canLeaveOutFinalPass(graph), expected);
}

void TestFrameLayout::lastReader()
{
    Graph graph;
    graph.passes = {passOf(Graph::ScaleSource::Source, {{-2}}),
                    passOf(Graph::ScaleSource::Source, {{0}, {-1}}),
                    passOf(Graph::ScaleSource::Source, {{1}, {0}}),
                    passOf(Graph::ScaleSource::Source, {{2}})};
    QCOMPARE(VulkanGraph::lastReader(graph, 0), 2);
    QCOMPARE(VulkanGraph::lastReader(graph, 1), 2);
    QCOMPARE(VulkanGraph::lastReader(graph, 3), 3);
}

void TestFrameLayout::placesTransients_data()
{
    QTest::addColumn<Images>("images");
    QTest::addColumn<QList<std::uint64_t>>("offsets");
    QTest::addColumn<std::uint64_t>("total");
    using Offsets = QList<std::uint64_t>;
    const auto row = [](const char *name, const Images &images, const Offsets &offsets,
                        std::uint64_t total) { QTest::newRow(name) << images << offsets << total; };
    row("none", {}, {}, 0);
    row("one after the other", {{10, 1, 0, 1}, {10, 1, 2, 3}}, {0, 0}, 10);
    row("a reader and what it reads", {{10, 1, 0, 1}, {10, 1, 1, 2}}, {0, 10}, 20);
    row("ping-pong", {{10, 1, 0, 1}, {10, 1, 1, 2}, {10, 1, 2, 3}}, {0, 10, 0}, 20);
    row("largest first", {{4, 1, 0, 1}, {10, 1, 1, 2}}, {10, 0}, 14);
    row("aligned", {{5, 1, 0, 1}, {3, 8, 1, 2}}, {0, 8}, 11);
    row("into a gap", {{9, 1, 0, 9}, {8, 1, 0, 1}, {7, 1, 0, 9}, {6, 1, 2, 9}}, {0, 9, 17, 9}, 24);
    row("a gap too small", {{9, 1, 0, 9}, {4, 1, 0, 1}, {7, 1, 0, 9}, {3, 16, 0, 9}},
        {0, 16, 9, 32}, 35);
}

void TestFrameLayout::placesTransients()
{
    QFETCH(Images, images);
    QFETCH(QList<std::uint64_t>, offsets);
    QFETCH(std::uint64_t, total);
    QCOMPARE(placeTransients(images), total);
    QList<std::uint64_t> placed;
    for (const TransientMemory &image : images)
        placed.append(image.offset);
    QCOMPARE(placed, offsets);
}

// Many images, by the same numbers in every run.
void TestFrameLayout::transientsDoNotOverlap()
{
    std::uint32_t state = 1;
    const auto next = [&state](std::uint32_t limit) {
        state = state * 1664525U + 1013904223U;
        return (state >> 8U) % limit;
    };
    for (int round = 0; round < 200; ++round) {
        Images images(20);
        for (TransientMemory &image : images) {
            image.size = 1 + next(1000);
            image.alignment = 1ULL << next(6);
            image.firstPass = int(next(20));
            image.lastPass = image.firstPass + int(next(6));
        }
        const std::uint64_t total = placeTransients(images);
        for (std::size_t i = 0; i < images.size(); ++i) {
            QCOMPARE(images[i].offset % images[i].alignment, std::uint64_t(0));
            QVERIFY(images[i].offset + images[i].size <= total);
            for (std::size_t j = 0; j < i; ++j)
                QVERIFY(isApart(images[i], images[j]));
        }
    }
}

QTEST_GUILESS_MAIN(TestFrameLayout)
#include "tst_FrameLayout.moc"
