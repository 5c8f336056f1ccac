#include "DrawingSupport.h"
#include "TestSupport.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

// The renderer itself: which passes it draws when, histories, sizes, times and errors. The tests of
// the shaders check what is drawn.

namespace {

using Kind = PassKind;

// A renderer with a preset and a source.
class PresetRenderer
{
public:
    explicit PresetRenderer(const QString &preset, const FloatImage &source)
        : m_preset(examplePreset(preset))
    {
        state.params = initialValues(m_preset.parameters);
        check(renderer->setGraph(m_preset.graph, m_preset.modules, m_error));
        setSource(source);
    }
    void setSource(const FloatImage &source)
    {
        check(renderer->setSource(source.toImage(), m_error));
    }
    void draw()
    {
        check(renderer->drawFrame(state, m_error));
    }
    FloatImage output(int index) const
    {
        return outputOf(*renderer, index);
    }
    int indexOf(const QString &component) const
    {
        for (int index = 0; index < m_preset.graph.passes.size(); ++index) {
            if (m_preset.graph.passes.at(index).debugName == component)
                return index;
        }
        qFatal("no pass %s", qPrintable(component));
    }
    Kind kindOf(const QString &component) const
    {
        return renderer->passes().at(indexOf(component)).kind;
    }

    std::unique_ptr<OffscreenRenderer> renderer = softwareRenderer();
    FrameState state;

private:
    void check(bool isDone) const
    {
        if (!isDone)
            qFatal("%s", qPrintable(m_error));
    }

    PresetOnDisk m_preset;
    QString m_error;
};

const FloatImage kWhite({4, 3}, {1.0F, 1.0F, 1.0F, 1.0F});
const FloatImage kBlack({4, 3});

} // namespace

class TestOffscreenRenderer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void devices();
    void frameErrors();
    void brokenGraphLeavesTheLastOne();
    void outputsHaveTheirSizes_data();
    void outputsHaveTheirSizes();
    void historyStartsAsThePicture();
    void historyIsOfTheLastFrame();
    void cachedPassIsDrawnWhenAParameterChanges();
    void constantBlackIsNotDrawn();
    void drawnPassesAreTimed();
    void memoryGrowsWithTheViewport();
};

void TestOffscreenRenderer::devices()
{
    QString error;
    QList<PhysicalDeviceInfo> devices;
    QVERIFY2(VulkanDevice::list(devices, error), qPrintable(error));
    const QString name = devices.first().name;
    for (const QString &choice : {QString(), u"0"_s, name.toUpper(), name.left(4).toLower()}) {
        std::unique_ptr<OffscreenRenderer> renderer;
        QVERIFY2(
                OffscreenRenderer::create(choice, OffscreenRenderer::Outputs::All, renderer, error),
                qPrintable(error));
        QCOMPARE(renderer->device().name, name);
    }

    QStringList listed;
    for (const PhysicalDeviceInfo &device : std::as_const(devices))
        listed.append(u"%1: %2"_s.arg(QString::number(listed.size()), device.name));
    for (const QString &choice : {u"abacus"_s, u"-1"_s, QString::number(devices.size())}) {
        std::unique_ptr<OffscreenRenderer> renderer;
        QVERIFY(!OffscreenRenderer::create(choice, OffscreenRenderer::Outputs::All, renderer,
                                           error));
        QCOMPARE(error, u"no Vulkan device '%1'; there are %2"_s.arg(choice, listed.join(u", "_s)));
    }
}

void TestOffscreenRenderer::frameErrors()
{
    const PresetOnDisk preset = examplePreset(u"dmg-lcd"_s);
    const auto renderer = softwareRenderer();
    FrameState state;
    state.viewport = {20, 10};
    QString error;
    QVERIFY(!renderer->drawFrame(state, error));
    QCOMPARE(error, u"there is no graph to draw"_s);
    QVERIFY(renderer->setGraph(preset.graph, preset.modules, error));
    QVERIFY(!renderer->drawFrame(state, error));
    QCOMPARE(error, u"there is no source picture"_s);
    QVERIFY(!renderer->setSource(QImage(), error));
    QCOMPARE(error, u"the source picture is empty"_s);
    QVERIFY(!renderer->setSource(FloatImage({200000, 1}).toImage(), error));
    QVERIFY2(error.startsWith(u"the source picture has 200000x1 pixels, and this device takes no "
                              "more than "_s),
             qPrintable(error));
    QVERIFY(!renderer->setSource(QImage(1, 1, QImage::Format_RGB32), error));
    QCOMPARE(error, u"the source picture is not of 32-bit floats"_s);
    QVERIFY(renderer->setSource(kWhite.toImage(), error));
    QVERIFY(!renderer->drawFrame(state, error));
    QCOMPARE(error, u"no value of parameter 'DMG_TINT'"_s);
    state.params = initialValues(preset.parameters);
    state.viewport = {0, 10};
    QVERIFY(!renderer->drawFrame(state, error));
    QCOMPARE(error, u"the viewport is empty"_s);
    state.viewport = {10, 200000};
    QVERIFY(!renderer->drawFrame(state, error));
    QVERIFY2(error.startsWith(u"the picture has 10x200000 pixels, "_s), qPrintable(error));
    QImage picture;
    QVERIFY(!renderer->output(0, picture, error));
    QCOMPARE(error, u"no pass 0 in the last frame"_s);
    state.viewport = {20, 10};
    QVERIFY(renderer->drawFrame(state, error));
    QVERIFY(!renderer->output(6, picture, error));
    QCOMPARE(error, u"no pass 6 in the last frame"_s);
}

void TestOffscreenRenderer::brokenGraphLeavesTheLastOne()
{
    PresetRenderer drawing(u"stock"_s, kWhite);
    drawing.draw();
    PresetOnDisk broken = examplePreset(u"dmg-lcd"_s);
    QString error;
    QVERIFY(!drawing.renderer->setGraph(VulkanRenderGraph(), broken.modules, error));
    QCOMPARE(error, u"the graph is not valid"_s);
    broken.modules.remove(u":/shaders/vulkan/spirv/dmg-ghost.frag.spv"_s);
    QVERIFY(!drawing.renderer->setGraph(broken.graph, broken.modules, error));
    QCOMPARE(error,
             u"pass 1 ('dmg-ghost') has no module ':/shaders/vulkan/spirv/dmg-ghost.frag.spv'"_s);
    QCOMPARE(drawing.output(1).at(0, 0), kWhite.at(0, 0));
    drawing.draw();
    QCOMPARE(drawing.renderer->passes().size(), 2);
}

void TestOffscreenRenderer::outputsHaveTheirSizes_data()
{
    QTest::addColumn<QString>("component");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("absolute columns") << u"crt-linearize"_s << QSize(4096, 3);
    QTest::newRow("absolute") << u"crt-halation-wide-down"_s << QSize(80, 60);
    QTest::newRow("viewport") << u"crt-scanline"_s << QSize(30, 20);
    QTest::newRow("input, a constant black one") << u"crt-halation-blur-v"_s << QSize(320, 240);
}

void TestOffscreenRenderer::outputsHaveTheirSizes()
{
    QFETCH(QString, component);
    QFETCH(QSize, expected);
    PresetRenderer drawing(u"crt-bw"_s, kWhite);
    drawing.state.viewport = {30, 20};
    drawing.state.params.insert(u"halation_strength"_s, 0.0F);
    drawing.draw();
    const int index = drawing.indexOf(component);
    QCOMPARE(drawing.renderer->passes().at(index).size, expected);
    QCOMPARE(drawing.output(index).size, expected);
}

// Feedback has converged in the first frame, and again after a reset or a change of size.
void TestOffscreenRenderer::historyStartsAsThePicture()
{
    PresetRenderer drawing(u"dmg-lcd"_s, kWhite);
    const int ghost = drawing.indexOf(u"dmg-ghost"_s);
    drawing.draw();
    QCOMPARE(drawing.output(ghost).pixels, drawing.output(ghost - 1).pixels);

    drawing.setSource(kBlack);
    drawing.renderer->resetHistories();
    drawing.draw();
    QCOMPARE(drawing.output(ghost).pixels, drawing.output(ghost - 1).pixels);

    drawing.setSource(kWhite);
    drawing.state.viewport = {50, 50};
    drawing.draw();
    QCOMPARE(drawing.output(ghost).pixels, drawing.output(ghost - 1).pixels);
}

void TestOffscreenRenderer::historyIsOfTheLastFrame()
{
    PresetRenderer drawing(u"dmg-lcd"_s, kWhite);
    drawing.state.params.insert(u"ghost_fall"_s, 0.5F);
    const int ghost = drawing.indexOf(u"dmg-ghost"_s);
    drawing.draw();
    const float light = drawing.output(ghost).at(0, 0)[1];
    drawing.setSource(kBlack);
    float left = 1.0F;
    for (int frame = 0; frame < 3; ++frame) {
        drawing.draw();
        left *= 0.5F;
        const float dark = drawing.output(ghost - 1).at(0, 0)[1];
        const float expected = dark + (light - dark) * left;
        QVERIFY2(std::fabs(drawing.output(ghost).at(0, 0)[1] - expected) < 2e-3F,
                 QByteArray::number(double(drawing.output(ghost).at(0, 0)[1])).constData());
    }
}

void TestOffscreenRenderer::cachedPassIsDrawnWhenAParameterChanges()
{
    PresetRenderer drawing(u"crt-bw"_s, kWhite);
    const QString tile = u"crt-phosphor-tile"_s;
    drawing.state.params.insert(u"mask_type"_s, 0.0F);
    drawing.draw();
    QCOMPARE(drawing.kindOf(tile), Kind::Drawn);
    const FloatImage grille = drawing.output(drawing.indexOf(tile));
    drawing.state.params.insert(u"mask_strength"_s, 0.5F); // not a parameter of the tile
    drawing.draw();
    QCOMPARE(drawing.kindOf(tile), Kind::Unchanged);
    QCOMPARE(drawing.output(drawing.indexOf(tile)).pixels, grille.pixels);
    drawing.state.params.insert(u"mask_type"_s, 2.0F);
    drawing.draw();
    QCOMPARE(drawing.kindOf(tile), Kind::Drawn);
    QVERIFY(drawing.output(drawing.indexOf(tile)).pixels != grille.pixels);
    drawing.state.viewport = {50, 50};
    drawing.draw();
    QCOMPARE(drawing.kindOf(tile), Kind::Drawn);
}

// Strength 0 looks like a tiny strength, and drawing continues when it is raised.
void TestOffscreenRenderer::constantBlackIsNotDrawn()
{
    PresetRenderer drawing(u"crt-arcade"_s, kWhite);
    const auto shownAt = [&drawing](float strength) {
        drawing.state.params.insert(u"halation_strength"_s, strength);
        drawing.draw();
        return drawing.output(int(drawing.renderer->passes().size()) - 1);
    };
    const FloatImage strong = shownAt(0.5F);
    QCOMPARE(drawing.kindOf(u"crt-halation-wide-down"_s), Kind::Drawn);
    const FloatImage none = shownAt(0.0F);
    QCOMPARE(drawing.kindOf(u"crt-halation-wide-down"_s), Kind::ConstantBlack);
    QCOMPARE(drawing.output(drawing.indexOf(u"crt-halation-wide-down"_s)).at(79, 59),
             Pixel({0.0F, 0.0F, 0.0F, 0.0F}));
    QCOMPARE(drawing.output(drawing.indexOf(u"crt-halation-blur-v"_s)).at(0, 0),
             Pixel({0.0F, 0.0F, 0.0F, 1.0F}));
    const FloatImage hardlyAny = shownAt(1e-6F);
    for (std::size_t i = 0; i < none.pixels.size(); ++i)
        QVERIFY(std::fabs(none.pixels[i][1] - hardlyAny.pixels[i][1]) < 2e-3F);
    QVERIFY(none.pixels != strong.pixels);
    QCOMPARE(shownAt(0.5F).pixels, strong.pixels);
}

// The shortest times of several frames, since other programs use the processor too.
void TestOffscreenRenderer::drawnPassesAreTimed()
{
    PresetRenderer drawing(u"crt-bw"_s, kWhite);
    drawing.state.viewport = {400, 300};
    drawing.state.params.insert(u"halation_strength"_s, 0.0F);
    drawing.draw();
    double large = std::numeric_limits<double>::max();
    double tiny = large;
    double share = 0.0; // of the passes in the time of the frame
    for (int frame = 0; frame < 8; ++frame) {
        QElapsedTimer clock;
        ++drawing.state.frameCount; // else most passes are unchanged
        clock.start();
        drawing.draw();
        const double elapsed = double(clock.nsecsElapsed()) * 1e-6;
        double sum = 0.0;
        const QList<PassResult> passes = drawing.renderer->passes();
        for (const PassResult &pass : passes) {
            QCOMPARE(pass.milliseconds.has_value(), pass.kind == Kind::Drawn);
            sum += pass.milliseconds.value_or(0.0);
        }
        QVERIFY2(sum < elapsed, QByteArray::number(sum).constData());
        share = std::max(share, sum / elapsed);
        const auto timeOf = [&](const QString &component) {
            return *passes.at(drawing.indexOf(component)).milliseconds;
        };
        large = std::min(large, timeOf(u"crt-screen"_s)); // 400x300
        tiny = std::min(tiny, timeOf(u"crt-abl"_s)); // 1x1
    }
    QVERIFY(tiny > 0.0);
    QVERIFY2(large > 3.0 * tiny, QByteArray::number(large / tiny).constData());
    QVERIFY2(share > 0.2, QByteArray::number(share).constData());
}

void TestOffscreenRenderer::memoryGrowsWithTheViewport()
{
    PresetRenderer drawing(u"stock"_s, kWhite);
    drawing.state.viewport = {100, 100};
    drawing.draw();
    const qint64 small = drawing.renderer->memoryHeld();
    QVERIFY(small >= qint64(2) * 100 * 100 * 8);
    drawing.state.viewport = {200, 100};
    drawing.draw();
    QVERIFY(drawing.renderer->memoryHeld() >= small + qint64(100) * 100 * 8);
    drawing.state.viewport = {100, 100};
    drawing.draw();
    QCOMPARE(drawing.renderer->memoryHeld(), small);
}

QTEST_GUILESS_MAIN(TestOffscreenRenderer)
#include "tst_OffscreenRenderer.moc"
