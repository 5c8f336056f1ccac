#include "ShaderTesting.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace Qt::StringLiterals;
using namespace RenderGraphManifestData;

// The tape of the rewind preset. Lengths are in columns and lines of a 320x240 picture.

namespace {

constexpr double kColumns = 320.0;

Tweak atFrame(std::uint32_t count, int direction = 1)
{
    return [=](FrameState &state) {
        state.frameCount = count;
        state.frameDirection = direction;
    };
}

FloatImage taped(const FloatImage &picture, float wiggle, float smear, const Tweak &tweak = {})
{
    return evaluate(u"rewind"_s, {{.picture = &picture, .linearFilter = true}}, picture.size,
                    {{u"wiggle"_s, wiggle}, {u"smear"_s, smear}}, tweak);
}

FloatImage withNoise(const FloatImage &picture, QSize size, float noiseAmount, float lineNoise,
                     const Tweak &tweak, float tapeSpeed = 1.0F)
{
    return evaluate(u"rewind-noise"_s, {{.picture = &picture, .linearFilter = true}}, size,
                    {{u"noiseAmount"_s, noiseAmount},
                     {u"lineNoise"_s, lineNoise},
                     {u"tapeSpeed"_s, tapeSpeed}},
                    tweak);
}

// Grey that rises evenly from 0 to 1 over the width, so that it tells its place.
FloatImage ramp(QSize size)
{
    return painted(size, [size](int x, int) { return (float(x) + 0.5F) / float(size.width()); });
}

// By how many columns each of 240 lines is displaced, at any height that is an odd multiple of it.
QList<double> displacements(QSize size, float wiggle, std::uint32_t frame)
{
    const FloatImage picture = ramp(size);
    const FloatImage tape = taped(picture, wiggle, 0.0F, atFrame(frame));
    const int x = size.width() / 2;
    const int perLine = size.height() / 240;
    QList<double> lines;
    for (int line = 0; line < 240; ++line) {
        const int y = line * perLine + perLine / 2;
        lines.append(kColumns * double(tape.at(x, y)[0] - picture.at(x, y)[0]));
    }
    return lines;
}

double luma(const Pixel &p)
{
    return 0.299 * double(p[0]) + 0.587 * double(p[1]) + 0.114 * double(p[2]);
}

} // namespace

class TestRewindShaders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesWiggle();
    void wiggleIsAPartOfTheWidth_data();
    void wiggleIsAPartOfTheWidth();
    void headsSwitchAtTheBottom_data();
    void headsSwitchAtTheBottom();
    void switchingIsNoisy_data();
    void switchingIsNoisy();
    void trailIsAPartOfTheWidth_data();
    void trailIsAPartOfTheWidth();
    void lumaBandwidth_data();
    void lumaBandwidth();
    void smearLeavesLumaAlone();
    void noiseIsAPartOfThePicture();
    void tapeRunsWithTheFrameCounter();
    void displayDoesNotMoveTheClock_data();
    void displayDoesNotMoveTheClock();
};

void TestRewindShaders::linesWiggle()
{
    const QList<double> lines = displacements({320, 240}, 3.0F, 100);
    const auto [least, most] = std::minmax_element(lines.cbegin(), lines.cbegin() + 235);
    QVERIFY(isBetween(*least, -3.01, -1.5));
    QVERIFY(isBetween(*most, 1.5, 3.01));
    const QList<double> later = displacements({320, 240}, 3.0F, 101);
    QVERIFY(std::fabs(lines.at(100) - later.at(100)) > 0.05);
    for (const double displaced : displacements({320, 240}, 0.0F, 100))
        QVERIFY(std::fabs(displaced) < 1e-3);
}

void TestRewindShaders::wiggleIsAPartOfTheWidth_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("twice as wide") << QSize(640, 240);
    QTest::newRow("16:9") << QSize(426, 240);
    QTest::newRow("three times as high") << QSize(320, 720);
}

void TestRewindShaders::wiggleIsAPartOfTheWidth()
{
    QFETCH(QSize, size);
    const QList<double> expected = displacements({320, 240}, 3.0F, 100);
    const QList<double> lines = displacements(size, 3.0F, 100);
    for (int line = 0; line < 240; ++line)
        QVERIFY(isNear(lines.at(line), expected.at(line), 0.05));
}

// Displaced by five times the wiggle, a fifth more or less; each two lines below, by 1/e of that.
void TestRewindShaders::headsSwitchAtTheBottom_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<std::uint32_t>("frame");
    for (const QSize size : {QSize(320, 240), QSize(426, 720)}) {
        for (const std::uint32_t frame : {0U, 10U, 1000U})
            QTest::addRow("%d lines, frame %u", size.height(), frame) << size << frame;
    }
}

void TestRewindShaders::headsSwitchAtTheBottom()
{
    QFETCH(QSize, size);
    QFETCH(std::uint32_t, frame);
    const QList<double> lines = displacements(size, 2.0F, frame);
    for (int line = 0; line < 235; ++line)
        QVERIFY(isBetween(lines.at(line), -2.01, 2.01));
    for (int line = 235; line < 240; ++line) {
        const double most = 10.0 * std::exp(-0.5 * (line - 234.5));
        QVERIFY(isBetween(lines.at(line), 0.8 * most - 2.01, 1.2 * most + 2.01));
    }
}

// The standard deviation along lines, over the noise of the bands that pass.
void TestRewindShaders::switchingIsNoisy_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<float>("lineNoise");
    QTest::newRow("as it is") << QSize(320, 240) << 1.0F;
    QTest::newRow("higher") << QSize(426, 720) << 1.0F;
    QTest::newRow("weak") << QSize(320, 240) << 0.3F;
    QTest::newRow("none") << QSize(320, 240) << 0.0F;
}

void TestRewindShaders::switchingIsNoisy()
{
    QFETCH(QSize, size);
    QFETCH(float, lineNoise);
    // Far above 0, where noise is held.
    const FloatImage picture = grey({320, 240}, 9.0F);
    QList<double> deviations(240, 0.0); // the least of several frames
    for (const std::uint32_t frame : {3U, 40U, 77U, 300U}) {
        const FloatImage noisy = withNoise(picture, size, 0.0F, lineNoise, atFrame(frame));
        for (int line = 0; line < 240; ++line) {
            const int y = (2 * line + 1) * size.height() / 480;
            double sum = 0.0;
            double square = 0.0;
            for (int x = 0; x < size.width(); ++x) {
                const double off = double(noisy.at(x, y)[0]) - 9.0;
                sum += off / size.width();
                square += off * off / size.width();
            }
            const double deviation = std::sqrt(std::max(square - sum * sum, 0.0));
            deviations[line] = frame == 3U ? deviation : std::min(deviations.at(line), deviation);
        }
    }
    for (int line = 0; line < 234; ++line)
        QVERIFY(isBetween(deviations.at(line), 0.0, 1e-3));
    // Grain has 0.47, and here it is doubled; it falls from all of it to a fifth.
    const auto strength = double(lineNoise);
    QVERIFY(isBetween(deviations.at(236), 0.3 * strength, 0.94 * strength));
    QVERIFY(isBetween(deviations.at(239), 0.12 * strength, 0.4 * strength));
    QVERIFY(deviations.at(239) <= deviations.at(236));
}

// Where red's chroma has fallen to 1/e behind its right edge.
void TestRewindShaders::trailIsAPartOfTheWidth_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("as it is") << QSize(320, 240);
    QTest::newRow("twice as wide") << QSize(640, 240);
    QTest::newRow("16:9") << QSize(426, 240);
    QTest::newRow("larger") << QSize(1280, 960);
}

void TestRewindShaders::trailIsAPartOfTheWidth()
{
    QFETCH(QSize, size);
    // As bright as the grey.
    const Pixel red = {0.6F, 0.4F - 0.2F * 0.299F / 0.587F, 0.4F, 1.0F};
    const int edge = size.width() / 2;
    const FloatImage picture = painted({size.width(), 4}, [=](int x, int) {
        return x < edge ? red : Pixel({0.4F, 0.4F, 0.4F, 1.0F});
    });
    const FloatImage tape = taped(picture, 0.0F, 1.0F);
    const auto chroma = [&](int x) { return double(tape.at(x, 1)[0] - tape.at(x, 1)[2]) / 0.2; };
    int x = edge;
    while (chroma(x) > 0.36788)
        ++x;
    const double part = (chroma(x - 1) - 0.36788) / (chroma(x - 1) - chroma(x));
    const double trail = kColumns * (x - 0.5 + part - edge) / size.width();
    QVERIFY(isNear(trail, 4.0, 0.4));
}

// What is left of a grating: at 2 MHz, 105 periods in a line, 3 dB less.
void TestRewindShaders::lumaBandwidth_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<double>("periods");
    QTest::addColumn<double>("expected");
    QTest::addColumn<double>("within");
    for (const int width : {640, 960, 1280}) {
        const auto row = [width](const char *name, double periods, double expected) {
            QTest::addRow("%s, %d wide", name, width) << width << periods << expected << 0.02;
        };
        row("0.5 MHz", 26.0, 0.979);
        row("2 MHz", 105.0, 0.707);
        row("3 MHz", 158.0, 0.456);
    }
    // Three columns are a period: too few for a Gaussian.
    QTest::newRow("2 MHz, 320 wide") << 320 << 105.0 << 0.70 << 0.03;
}

void TestRewindShaders::lumaBandwidth()
{
    QFETCH(int, width);
    QFETCH(double, periods);
    QFETCH(double, expected);
    QFETCH(double, within);
    const FloatImage picture = painted({width, 4}, [=](int x, int) {
        return 0.5 + 0.4 * std::cos(2.0 * std::numbers::pi * periods * (x + 0.5) / width);
    });
    const FloatImage tape = taped(picture, 0.0F, 0.5F);
    QList<double> row;
    for (int x = 0; x < width; ++x)
        row.append(double(tape.at(x, 1)[1]) - 0.5);
    QVERIFY(isNear(waveIn(row, periods).amplitude / 0.4, expected, within));
}

void TestRewindShaders::smearLeavesLumaAlone()
{
    const FloatImage picture = noise({40, 8}, 0.6F);
    const FloatImage sharp = taped(picture, 0.0F, 0.0F);
    const FloatImage smeared = taped(picture, 0.0F, 1.0F);
    QVERIFY(difference(smeared, sharp) > 0.05F);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        QVERIFY(isNear(luma(smeared.pixels[i]), luma(sharp.pixels[i]), 1e-4));
}

// The same grain over pictures of another size and aspect.
void TestRewindShaders::noiseIsAPartOfThePicture()
{
    const QSize viewport(640, 480);
    const FloatImage small = grey({320, 240}, 2.0F);
    const FloatImage large = grey({852, 480}, 2.0F);
    const FloatImage expected = withNoise(small, viewport, 1.0F, 1.0F, atFrame(33));
    QVERIFY(difference(expected, grey(viewport, 2.0F)) > 0.3F);
    QCOMPARE(difference(withNoise(large, viewport, 1.0F, 1.0F, atFrame(33)), expected), 0.0F);
}

void TestRewindShaders::tapeRunsWithTheFrameCounter()
{
    const FloatImage picture = grey({64, 48}, 0.5F);
    const auto frame = [&](std::uint32_t count, int direction, float speed) {
        return withNoise(picture, picture.size, 0.5F, 0.5F, atFrame(count, direction), speed);
    };
    QVERIFY(difference(frame(10, 1, 1.0F), frame(11, 1, 1.0F)) > 0.1F);
    QVERIFY(difference(frame(10, 1, 1.0F), frame(10, -1, 1.0F)) > 0.1F);
    QCOMPARE(difference(frame(10, 1, 0.0F), frame(11, 1, 0.0F)), 0.0F);
    // The grain's mean is that of the picture.
    double sum = 0.0;
    for (std::uint32_t count = 0; count < 20; ++count)
        sum += mean(frame(count, 1, 1.0F), 0);
    QVERIFY(isNear(sum / 20.0, 0.5, 0.01));
}

void TestRewindShaders::displayDoesNotMoveTheClock_data()
{
    QTest::addColumn<float>("frameSeconds");
    QTest::newRow("24 Hz") << 1.0F / 24.0F;
    QTest::newRow("50 Hz") << 1.0F / 50.0F;
    QTest::newRow("240 Hz") << 1.0F / 240.0F;
    QTest::newRow("a pause") << 1.0F;
    QTest::newRow("unknown") << 0.0F;
}

void TestRewindShaders::displayDoesNotMoveTheClock()
{
    QFETCH(float, frameSeconds);
    const PresetEntry &preset = presetEntry(u"rewind"_s);
    const FloatImage picture = noise({80, 60});
    PresetDrawing drawing(preset);
    const auto shown = [&](float seconds, std::uint32_t count) {
        return drawing.draw(picture,
                            {.params = initialParams(preset),
                             .viewport = {160, 120},
                             .frameCount = count,
                             .frameSeconds = seconds});
    };
    const FloatImage expected = shown(1.0F / 60.0F, 66);
    QVERIFY(difference(expected, shown(1.0F / 60.0F, 67)) > 0.1F);
    QCOMPARE(shown(frameSeconds, 66).pixels, expected.pixels);
}

QTEST_GUILESS_MAIN(TestRewindShaders)
#include "tst_RewindShaders.moc"
