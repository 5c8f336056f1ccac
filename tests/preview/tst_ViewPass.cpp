#include "DrawingSupport.h"
#include "TestSupport.h"

#include <GlslCompiler.h>
#include <ViewPass.h>

#include <QTest>

#include <cstdlib>
#include <limits>

using namespace Qt::StringLiterals;
using Comparison = ViewState::Comparison;

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// A picture of one row of grey texels.
FloatImage greys(std::initializer_list<float> values)
{
    FloatImage image({int(values.size()), 1});
    int x = 0;
    for (const float value : values)
        image.at(x++, 0) = {value, value, value, 1.0F};
    return image;
}

ViewState stateOf(QSize size, int zoom = ViewState::kFit)
{
    ViewState state;
    state.size = size;
    state.zoom = zoom;
    return state;
}

ViewState comparing(Comparison comparison, QSize size)
{
    ViewState state = stateOf(size);
    state.comparison = comparison;
    return state;
}

// Renderers that show their sources, in two passes, and a view of them.
class View
{
public:
    // The second pass has the size of the viewport; an empty one is as large as the source.
    explicit View(const FloatImage &source, QSize viewport = {}) : m_viewport(viewport)
    {
        const QString directory =
                QStringLiteral(SOURCE_DIR "/tools/render-graph-preview/renderer/");
        QStringList files;
        QByteArray vertex;
        QByteArray fragment;
        check(compileGlsl(directory + u"view.vert"_s, ShaderStage::Vertex, vertex, files, m_error));
        check(compileGlsl(directory + u"view.frag"_s, ShaderStage::Fragment, fragment, files,
                          m_error));
        check(ViewPass::create(softwareDevice(), vertex, fragment, m_pass, m_error));
        setSource(m_renderer, source);
    }

    void setSource(const FloatImage &source)
    {
        setSource(m_renderer, source);
    }
    void setCompared(const FloatImage &source)
    {
        setSource(m_compared, source);
    }

    void submit(const ViewInput &view)
    {
        const auto record = [this](VkCommandBuffer commands, int submission, ViewInput &input) {
            input.renderer = m_renderer.get();
            input.compared = m_compared.get();
            return m_renderer->recordFrame(commands, submission, m_state, m_error)
                    && (!m_compared
                        || m_compared->recordFrame(commands, submission, m_state, m_error));
        };
        check(m_pass->submit(view, record, m_error));
    }
    ViewOutput read()
    {
        ViewOutput output;
        check(m_pass->read(output, m_error));
        return output;
    }
    ViewOutput show(const ViewInput &view)
    {
        submit(view);
        return read();
    }

private:
    void setSource(std::unique_ptr<OffscreenRenderer> &renderer, const FloatImage &source)
    {
        if (!renderer) {
            check(OffscreenRenderer::create(m_pass->device(), OffscreenRenderer::Outputs::All,
                                            renderer, m_error));
            PresetOnDisk preset = examplePreset(u"stock"_s);
            VulkanRenderGraph::Pass &copy = preset.graph.passes.first();
            copy.scaleSource = VulkanRenderGraph::ScaleSource::Source;
            copy.format = VulkanRenderGraph::Format::RGBA32F;
            VulkanRenderGraph::Pass final = copy;
            final.scaleSource = VulkanRenderGraph::ScaleSource::Viewport;
            final.isFinalPass = true;
            final.sampledInputs = {{0}};
            preset.graph.passes = {copy, final};
            check(renderer->setGraph(preset.graph, preset.modules, m_error));
        }
        m_state.viewport = m_viewport.isEmpty() ? source.size : m_viewport;
        check(renderer->setSource(source.toImage(), m_error));
    }
    void check(bool isDone) const
    {
        if (!isDone)
            qFatal("%s", qPrintable(m_error));
    }

    QSize m_viewport;
    QString m_error;
    FrameState m_state;
    std::unique_ptr<ViewPass> m_pass;
    std::unique_ptr<OffscreenRenderer> m_renderer;
    std::unique_ptr<OffscreenRenderer> m_compared;
};

} // namespace

class TestViewPass : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picturesAreShown_data();
    void picturesAreShown();
    void texelIsRead();
    void thumbnailsHaveTheLastShape();
    void framesAreReadInOrder();
    void zoomKeepsWhatIsAtThePointer();
    void wheelGoesThroughTheZooms_data();
    void wheelGoesThroughTheZooms();
    void zoomIsNamed_data();
    void zoomIsNamed();
};

void TestViewPass::picturesAreShown_data()
{
    QTest::addColumn<FloatImage>("picture");
    QTest::addColumn<FloatImage>("compared");
    QTest::addColumn<ViewState>("state");
    QTest::addColumn<float>("headroom"); // 0: SDR
    QTest::addColumn<QList<int>>("expected"); // red, of the first row

    const FloatImage none(QSize(0, 0));
    FloatImage checkers({4, 4});
    for (int y = 0; y < 4; ++y) {
        for (int x = y % 2; x < 4; x += 2)
            checkers.at(x, y) = {1.0F, 1.0F, 1.0F, 1.0F};
    }
    const FloatImage steps = greys({0.0F, 0.2F, 0.4F, 0.6F});

    QTest::newRow("as it is") << steps << none << stateOf({4, 1}) << 0.0F
                              << QList<int>{0, 51, 102, 153};
    QTest::newRow("not a number") << greys({kNan, 2.0F, -1.0F}) << none << stateOf({3, 1}) << 0.0F
                                  << QList<int>{0, 255, 0};
    QTest::newRow("enlarged: nearest") << greys({0.2F, 0.4F}) << none << stateOf({6, 3}, 3) << 0.0F
                                       << QList<int>{51, 51, 51, 102, 102, 102};
    QTest::newRow("beside it") << greys({1.0F}) << none << stateOf({4, 1}, 2) << 0.0F
                               << QList<int>{24, 255, 255, 24};
    QTest::newRow("reduced: mean light")
            << checkers << none << stateOf({2, 2}) << 0.0F << QList<int>{186, 186};
    QTest::newRow("reduced: light, not values")
            << greys({0.2F, 0.6F}) << none << stateOf({1, 1}) << 0.0F << QList<int>{116};
    QTest::newRow("reduced: covered parts")
            << greys({1.0F, 0.0F, 0.0F}) << none << stateOf({2, 1}) << 0.0F << QList<int>{212, 0};
    ViewState moved = stateOf({2, 1}, 1);
    moved.center = {1.0, 0.5};
    QTest::newRow("moved") << steps << none << moved << 0.0F << QList<int>{102, 153};
    ViewState exposed = stateOf({1, 1});
    exposed.exposure = 2.0F;
    QTest::newRow("exposure") << greys({0.5F}) << none << exposed << 0.0F << QList<int>{175};
    ViewState channel = stateOf({1, 1});
    const FloatImage colors({1, 1}, {0.2F, 0.4F, 0.6F, 0.8F});
    channel.channel = 1;
    QTest::newRow("green") << colors << none << channel << 0.0F << QList<int>{102};
    channel.channel = 3;
    QTest::newRow("alpha") << colors << none << channel << 0.0F << QList<int>{204};
    QTest::newRow("HDR") << greys({0.0F, 0.18F, 1.0F, 4.0F, 16.0F}) << none << stateOf({5, 1})
                         << 4.0F << QList<int>{0, 109, 191, 255, 255};
    QTest::newRow("HDR, reduced: mean light")
            << greys({0.0F, 2.0F}) << none << stateOf({1, 1}) << 4.0F << QList<int>{191};

    const FloatImage current(QSize(6, 1), {0.4F, 0.4F, 0.4F, 1.0F});
    const FloatImage other(QSize(6, 1), {0.2F, 0.2F, 0.2F, 1.0F});
    QTest::newRow("split") << current << other << comparing(Comparison::Split, {6, 1}) << 0.0F
                           << QList<int>{51, 51, 51, 255, 255, 102};
    QTest::newRow("side by side") << greys({0.4F, 0.6F}) << greys({0.2F, 0.0F})
                                  << comparing(Comparison::SideBySide, {4, 1}) << 0.0F
                                  << QList<int>{51, 0, 102, 153};
    QTest::newRow("difference") << greys({0.4F, 0.0F, 0.6F}) << greys({0.42F, 0.04F, 0.6F})
                                << comparing(Comparison::Difference, {3, 1}) << 0.0F
                                << QList<int>{41, 82, 0};
    QTest::newRow("other") << current << other << comparing(Comparison::Other, {6, 1}) << 0.0F
                           << QList<int>{51, 51, 51, 51, 51, 51};
    QTest::newRow("source, which is SDR") << current << none << comparing(Comparison::Split, {6, 1})
                                          << 4.0F << QList<int>{102, 102, 102, 255, 255, 146};
}

void TestViewPass::picturesAreShown()
{
    QFETCH(FloatImage, picture);
    QFETCH(FloatImage, compared);
    QFETCH(ViewState, state);
    QFETCH(float, headroom);
    QFETCH(QList<int>, expected);
    View view(picture);
    if (!compared.size.isEmpty())
        view.setCompared(compared);
    ViewInput input;
    input.state = state;
    if (headroom > 0.0F)
        input.headroom = headroom;
    const ViewOutput output = view.show(input);
    QCOMPARE(output.image.size(), state.size);
    QCOMPARE(output.isToneMapped, headroom > 0.0F);
    QList<int> shown;
    for (int x = 0; x < expected.size(); ++x)
        shown.append(qRed(output.image.pixel(x, 0)));
    QCOMPARE(shown, expected);
}

void TestViewPass::texelIsRead()
{
    FloatImage source({3, 2});
    source.at(1, 1) = {0.25F, 1.5F, -3.0F, 0.5F};
    View view(source);
    ViewInput input;
    input.state = stateOf({2, 1});
    input.state.texel = {1, 1};
    for (const int pass : {-1, 0}) {
        input.pass = pass;
        const ViewOutput output = view.show(input);
        QCOMPARE(output.pass, pass < 0 ? 1 : 0);
        QVERIFY(output.texel);
        QCOMPARE(output.texel->r, 0.25F);
        QCOMPARE(output.texel->g, 1.5F);
        QCOMPARE(output.texel->b, -3.0F);
        QCOMPARE(output.texel->a, 0.5F);
    }
    input.state.texel = {3, 1};
    QVERIFY(!view.show(input).texel);
}

void TestViewPass::thumbnailsHaveTheLastShape()
{
    View view(FloatImage({10, 10}, {1.0F, 0.0F, 0.0F, 1.0F}), {40, 10});
    ViewInput input;
    input.thumbnailSize = {20, 20};
    const ViewOutput output = view.show(input);
    QCOMPARE(output.thumbnails.size(), 2);
    for (const QImage &thumbnail : output.thumbnails) {
        QCOMPARE(thumbnail.size(), QSize(20, 5));
        QCOMPARE(thumbnail.pixel(10, 2), qRgb(255, 0, 0));
    }
}

// An image stays as it is while later frames are drawn and read.
void TestViewPass::framesAreReadInOrder()
{
    View view(greys({0.0F}));
    ViewInput input;
    QList<QImage> images;
    for (int frame = 0; frame < 6; ++frame) {
        view.setSource(greys({float(frame) / 5.0F}));
        view.submit(input);
        if (frame > 0)
            images.append(view.read().image);
    }
    images.append(view.read().image);
    QList<int> shown;
    for (const QImage &image : std::as_const(images))
        shown.append(qRed(image.pixel(0, 0)));
    QCOMPARE(shown, (QList<int>{0, 51, 102, 153, 204, 255}));
}

void TestViewPass::zoomKeepsWhatIsAtThePointer()
{
    const QSize picture(100, 80);
    ViewState state = stateOf({50, 40});
    const QPointF pointer(30.5, 10.5);
    QCOMPARE(state.texelAt(picture, pointer), QPoint(61, 21));
    for (const int zoom : {1, 4, 8, 2}) {
        state.zoomAt(picture, pointer, zoom);
        const QPoint texel = state.texelAt(picture, pointer);
        QVERIFY2(std::abs(texel.x() - 61) <= 1 && std::abs(texel.y() - 21) <= 1,
                 qPrintable(u"%1, %2"_s.arg(texel.x()).arg(texel.y())));
    }
    // The picture never leaves the view.
    state.pan(picture, {1000.0, 1000.0});
    QCOMPARE(state.texelAt(picture, {0.5, 0.5}), QPoint(0, 0));
    state.pan(picture, {-1000.0, -20.0});
    QCOMPARE(state.texelAt(picture, {49.5, 0.5}), QPoint(99, 10));
}

void TestViewPass::wheelGoesThroughTheZooms_data()
{
    QTest::addColumn<int>("zoom");
    QTest::addColumn<int>("larger");
    QTest::addColumn<int>("smaller");
    QTest::newRow("fit, at 2.5:1") << 0 << 3 << 2;
    QTest::newRow("1:1") << 1 << 2 << 0;
    QTest::newRow("4:1") << 4 << 6 << 3;
    QTest::newRow("8:1") << 8 << 8 << 6;
}

void TestViewPass::wheelGoesThroughTheZooms()
{
    QFETCH(int, zoom);
    QFETCH(int, larger);
    QFETCH(int, smaller);
    const ViewState state = stateOf({100, 100}, zoom);
    QCOMPARE(state.nextZoom({40, 40}, true), larger);
    QCOMPARE(state.nextZoom({40, 40}, false), smaller);
}

void TestViewPass::zoomIsNamed_data()
{
    QTest::addColumn<int>("zoom");
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QString>("text");
    QTest::newRow("fit, reduced") << 0 << QSize(150, 20) << u"fit, 0.667:1, averaged"_s;
    QTest::newRow("fit, enlarged") << 0 << QSize(40, 40) << u"fit, 2.5:1"_s;
    QTest::newRow("fit, as it is") << 0 << QSize(100, 20) << u"fit, 1:1"_s;
    QTest::newRow("3:1") << 3 << QSize(40, 40) << u"3:1"_s;
}

void TestViewPass::zoomIsNamed()
{
    QFETCH(int, zoom);
    QFETCH(QSize, picture);
    QFETCH(QString, text);
    QCOMPARE(stateOf({100, 100}, zoom).zoomText(picture), text);
}

QTEST_GUILESS_MAIN(TestViewPass)
#include "tst_ViewPass.moc"
