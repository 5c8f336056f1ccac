#include "ShaderTesting.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <numeric>

using namespace Qt::StringLiterals;

// The passes of the tube behind its beam: limiter, white point, phosphors, halation and face.

namespace {

// Neutral values, as far as they are not 0.
const Params kScreen = {
        {u"crt_white"_s, 100.0F}, {u"halation_wide"_s, 1.0F}, {u"mask_pitch"_s, 2.5F}};

FloatImage phosphorTile(float type, float duty, float edge, int size = 256)
{
    return evaluate(u"crt-phosphor-tile"_s, {}, {size, size},
                    {{u"mask_type"_s, type}, {u"mask_duty"_s, duty}, {u"mask_edge"_s, edge}});
}

// crt-screen over this light behind a mask, without halation.
FloatImage screenBehind(const FloatImage &tile, const FloatImage &light, const Params &params,
                        const Tweak &tweak = {})
{
    const FloatImage dark;
    return evaluate(u"crt-screen"_s,
                    {{.picture = &tile, .linearFilter = true, .mipmap = true, .wrapMode = 2},
                     {.picture = &light},
                     {.picture = &dark},
                     {.picture = &dark}},
                    light.size, params, tweak);
}

// The same behind a grille.
FloatImage screen(const FloatImage &light, const Params &params, const Tweak &tweak = {})
{
    static const FloatImage kTile = phosphorTile(0.0F, 0.7F, 0.06F);
    return screenBehind(kTile, light, params, tweak);
}

// The phosphors under new light after so many seconds.
FloatImage lit(const FloatImage &light, const FloatImage &history, float seconds,
               float redRetention = 0.0F)
{
    return evaluate(u"crt-persistence"_s, {{.picture = &light}, {.picture = &history}}, light.size,
                    {{u"persist_r"_s, redRetention}},
                    [seconds](FrameState &state) { state.frameSeconds = seconds; });
}

QList<double> row(const FloatImage &picture, int y, std::size_t channel = 1)
{
    QList<double> values;
    for (int x = 0; x < picture.size.width(); ++x)
        values.append(double(picture.at(x, y)[channel]));
    return values;
}

// From where the values rise through their mean for the first and for the last time.
double period(const QList<double> &values)
{
    const double average =
            std::accumulate(values.begin(), values.end(), 0.0) / double(values.size());
    QList<double> rises;
    for (qsizetype i = 1; i < values.size(); ++i) {
        const double before = values.at(i - 1) - average;
        const double after = values.at(i) - average;
        if (before < 0.0 && after >= 0.0)
            rises.append(double(i) - after / (after - before));
    }
    return (rises.last() - rises.first()) / double(rises.size() - 1);
}

} // namespace

class TestCrtScreen : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void limiterSagsTowardsItsBudget_data();
    void limiterSagsTowardsItsBudget();
    void limiterTakesItsTime_data();
    void limiterTakesItsTime();
    void persistence_data();
    void persistence();
    void faintTailsEnd_data();
    void faintTailsEnd();
    void driveBalancesTheGuns_data();
    void driveBalancesTheGuns();
    void haloIsRound_data();
    void haloIsRound();
    void maskTransmission_data();
    void maskTransmission();
    void maskPitch_data();
    void maskPitch();
    void maskIsItsMeanOverAPixel_data();
    void maskIsItsMeanOverAPixel();
    void maskKeepsTheMean_data();
    void maskKeepsTheMean();
    void brightLightKeepsItsMask_data();
    void brightLightKeepsItsMask();
    void clippedLightKeepsItsHue();
    void screenHighlights_data();
    void screenHighlights();
    void vignette_data();
    void vignette();
    void cornerRadius_data();
    void cornerRadius();
    void curvatureOfTheFace_data();
    void curvatureOfTheFace();
    void pictureOnTheFace_data();
    void pictureOnTheFace();
};

// From 4096 columns and any height down to one texel. The gain is (1 + (mean / budget)^3)^(-1/3).
void TestCrtScreen::limiterSagsTowardsItsBudget_data()
{
    QTest::addColumn<int>("height");
    QTest::addColumn<float>("light"); // of the picture's left half
    QTest::addColumn<float>("budget");
    QTest::addColumn<float>("strength");
    QTest::addColumn<double>("expected");
    QTest::newRow("dark") << 24 << 0.0F << 1.0F << 1.0F << 1.0;
    QTest::newRow("a quarter of full white") << 24 << 0.5F << 1.0F << 1.0F << 0.994845;
    QTest::newRow("half of full white") << 24 << 1.0F << 1.0F << 1.0F << 0.961500;
    QTest::newRow("full white") << 240 << 2.0F << 1.0F << 1.0F << 0.793701;
    QTest::newRow("224 lines") << 224 << 2.0F << 1.0F << 1.0F << 0.793701;
    QTest::newRow("17 lines") << 17 << 2.0F << 1.0F << 1.0F << 0.793701;
    QTest::newRow("half of the strength") << 24 << 2.0F << 1.0F << 0.5F << 0.896850;
    QTest::newRow("off") << 24 << 2.0F << 1.0F << 0.0F << 1.0;
    QTest::newRow("a large budget") << 24 << 2.0F << 2.0F << 1.0F << 0.961500;
    QTest::newRow("a small budget") << 24 << 2.0F << 0.1F << 1.0F << 0.0999667;
}

void TestCrtScreen::limiterSagsTowardsItsBudget()
{
    QFETCH(int, height);
    QFETCH(float, light);
    QFETCH(float, budget);
    QFETCH(float, strength);
    QFETCH(double, expected);
    // It takes the mean of the three guns.
    const FloatImage field = painted({4096, height}, [light](int x, int) {
        const float lit = x < 2048 ? light : 0.0F;
        return Pixel({1.5F * lit, lit, 0.5F * lit, 1.0F});
    });
    const FloatImage tiles = evaluate(u"crt-abl-tiles"_s, {{.picture = &field}}, {256, 240});
    const FloatImage rows = evaluate(u"crt-abl-reduce"_s, {{.picture = &tiles}}, {256, 30});
    const FloatImage few = evaluate(u"crt-abl-reduce"_s, {{.picture = &rows}}, {8, 30});
    const FloatImage gain =
            evaluate(u"crt-abl"_s, {{.picture = &few}}, {1, 1},
                     {{u"abl_strength"_s, strength}, {u"abl_current_limit"_s, budget}});
    QVERIFY(isNear(double(gain.at(0, 0)[0]), expected, 2e-5));
}

// It goes the share 1 - exp(-t / 0.25 s) of its way, from 1 to 0.5.
void TestCrtScreen::limiterTakesItsTime_data()
{
    QTest::addColumn<float>("last");
    QTest::addColumn<float>("wanted");
    QTest::addColumn<float>("seconds");
    QTest::addColumn<float>("expected");
    QTest::newRow("down, 60 Hz") << 1.0F << 0.5F << 1.0F / 60.0F << 0.967753F;
    QTest::newRow("down, 120 Hz") << 1.0F << 0.5F << 1.0F / 120.0F << 0.983607F;
    QTest::newRow("down, 50 Hz") << 1.0F << 0.5F << 1.0F / 50.0F << 0.961558F;
    QTest::newRow("down, time unknown") << 1.0F << 0.5F << 0.0F << 0.967753F;
    QTest::newRow("down, a quarter of a second") << 1.0F << 0.5F << 0.25F << 0.683940F;
    QTest::newRow("up") << 0.5F << 1.0F << 1.0F / 60.0F << 0.532247F;
    QTest::newRow("settled") << 0.75F << 0.75F << 1.0F / 60.0F << 0.75F;
    QTest::newRow("the last bit") << 0.75F + 1.0F / 4096.0F << 0.75F << 1.0F / 60.0F << 0.75F;
    QTest::newRow("the last steps, 60 Hz")
            << 0.75F + 1.0F / 256.0F << 0.75F << 1.0F / 60.0F << 0.75F + 1.0F / 512.0F;
    QTest::newRow("the last steps, 24 Hz")
            << 0.75F + 1.0F / 64.0F << 0.75F << 1.0F / 24.0F << 0.760742F;
    QTest::newRow("the last steps, 240 Hz")
            << 0.75F + 1.0F / 1024.0F << 0.75F << 1.0F / 240.0F << 0.75F + 1.0F / 2048.0F;
    QTest::newRow("the last steps, 480 Hz")
            << 0.75F + 1.0F / 1024.0F << 0.75F << 1.0F / 480.0F << 0.75F + 1.0F / 2048.0F;
}

void TestCrtScreen::limiterTakesItsTime()
{
    QFETCH(float, last);
    QFETCH(float, wanted);
    QFETCH(float, seconds);
    QFETCH(float, expected);
    const FloatImage light = flat({2, 2}, 2.0F, 1.0F, 0.5F, wanted);
    const FloatImage history = flat({2, 2}, 0.0F, 0.0F, 0.0F, last);
    const FloatImage limited = lit(light, history, seconds);
    QVERIFY(isNear(limited.at(0, 0)[3], expected, 2e-6F));
    QVERIFY(areAlike(limited, flat({2, 2}, 2.0F * expected, expected, 0.5F * expected), 4e-6F));
}

void TestCrtScreen::persistence_data()
{
    QTest::addColumn<float>("retention");
    QTest::addColumn<float>("seconds");
    QTest::addColumn<float>("expected"); // of a history of 1 under no new light
    QTest::newRow("none") << 0.0F << 1.0F / 60.0F << 0.0F;
    QTest::newRow("half at 60 Hz") << 0.5F << 1.0F / 60.0F << 0.5F;
    QTest::newRow("half at 120 Hz") << 0.5F << 1.0F / 120.0F << 0.70711F;
    QTest::newRow("half at 30 Hz") << 0.5F << 1.0F / 30.0F << 0.25F;
    QTest::newRow("half, time unknown") << 0.5F << 0.0F << 0.5F;
}

void TestCrtScreen::persistence()
{
    QFETCH(float, retention);
    QFETCH(float, seconds);
    QFETCH(float, expected);
    const FloatImage dark = flat({2, 2}, 0.0F, 0.0F, 0.0F);
    const FloatImage last = grey({2, 2}, 1.0F);
    const FloatImage tail = lit(dark, last, seconds, retention);
    QVERIFY(isNear(tail.at(0, 0)[0], expected, kRounding));
    QCOMPARE(tail.at(0, 0)[1], 0.0F);
    QCOMPARE(tail.at(0, 0)[3], 1.0F);
    // New light is not added to the tail.
    const FloatImage held = lit(grey({2, 2}, 2.0F), last, seconds, retention);
    QCOMPARE(held.at(0, 0)[0], 2.0F);
}

// Of faint light that is retained as long as possible, some goes in any time; up to 240 Hz in
// proportion to it.
void TestCrtScreen::faintTailsEnd_data()
{
    QTest::addColumn<float>("seconds");
    QTest::addColumn<float>("expected"); // of 2^-18, in millionths
    QTest::newRow("30 Hz") << 1.0F / 30.0F << 3.32262F;
    QTest::newRow("60 Hz") << 1.0F / 60.0F << 3.56865F;
    QTest::newRow("120 Hz") << 1.0F / 120.0F << 3.69167F;
    QTest::newRow("240 Hz") << 1.0F / 240.0F << 3.75318F;
    QTest::newRow("480 Hz") << 1.0F / 480.0F << 3.75319F;
}

void TestCrtScreen::faintTailsEnd()
{
    QFETCH(float, seconds);
    QFETCH(float, expected);
    const FloatImage last = grey({2, 2}, 1.0F / 262144.0F);
    const FloatImage tail = lit(grey({2, 2}, 0.0F), last, seconds, 1.0F);
    QVERIFY(isNear(1e6 * double(tail.at(0, 0)[0]), double(expected), 5e-5));
}

// White keeps its luminance, the limiter's gain is handed on in alpha.
void TestCrtScreen::driveBalancesTheGuns_data()
{
    QTest::addColumn<Params>("params");
    QTest::addColumn<Pixel>("expected"); // of 0.8, 0.4, 0.2 and a gain of 0.75
    const auto row = [](const char *name, float temperature, float monochrome, float warmth,
                        const Pixel &expected) {
        QTest::newRow(name) << Params({{u"color_temperature"_s, temperature},
                                       {u"desaturate"_s, monochrome},
                                       {u"mono_warmth"_s, warmth}})
                            << expected;
    };
    row("D65", 0.0F, 0.0F, 0.5F, {0.8F, 0.4F, 0.2F, 0.75F});
    row("halfway", 0.5F, 0.0F, 0.5F, {0.738727F, 0.402199F, 0.234226F, 0.75F});
    row("D93", 1.0F, 0.0F, 0.5F, {0.677454F, 0.404398F, 0.268452F, 0.75F});
    row("cool phosphor", 0.0F, 1.0F, 0.0F, {0.531851F, 0.425284F, 0.272216F, 0.75F});
    row("paper-white phosphor, which is no matter of temperature", 1.0F, 1.0F, 1.0F,
        {0.941171F, 0.390247F, 0.144356F, 0.75F});
}

void TestCrtScreen::driveBalancesTheGuns()
{
    QFETCH(Params, params);
    QFETCH(Pixel, expected);
    const FloatImage gain = flat({1, 1}, 0.75F, 0.75F, 0.75F);
    const FloatImage light = flat({4, 4}, 0.8F, 0.4F, 0.2F);
    const FloatImage driven =
            evaluate(u"crt-drive"_s, {{.picture = &gain}, {.picture = &light}}, {4, 4}, params);
    QVERIFY(areAlike(driven, FloatImage({4, 4}, expected), 2e-6F));
    QCOMPARE(driven.at(0, 0)[3], expected[3]);
}

// The light of one point, in parts of the picture's height: halation_sigma / 240, and the wide halo
// four times that; the grids add a little.
void TestCrtScreen::haloIsRound_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<float>("sigma");
    QTest::addColumn<bool>("isWide");
    QTest::newRow("640x480") << QSize(640, 480) << 3.0F << false;
    QTest::newRow("640x480, large") << QSize(640, 480) << 8.0F << false;
    QTest::newRow("640x480, wide") << QSize(640, 480) << 3.0F << true;
    QTest::newRow("16:9") << QSize(854, 480) << 3.0F << false;
    QTest::newRow("16:9, wide") << QSize(854, 480) << 3.0F << true;
    QTest::newRow("upright") << QSize(480, 640) << 3.0F << false;
    QTest::newRow("upright, large") << QSize(480, 640) << 8.0F << false;
}

void TestCrtScreen::haloIsRound()
{
    QFETCH(QSize, size);
    QFETCH(float, sigma);
    QFETCH(bool, isWide);
    FloatImage point(size, {0.0F, 0.0F, 0.0F, 1.0F});
    point.at(size.width() / 2, size.height() / 2) = {100.0F, 100.0F, 100.0F, 1.0F};
    const Params params = {{u"halation_sigma"_s, sigma}};
    FloatImage halo =
            evaluate(u"crt-optics-down"_s, {{.picture = &point}, {.picture = &point}}, {320, 240});
    const auto blur = [&](const char *component) {
        const FloatImage last = halo;
        halo = evaluate(QString::fromLatin1(component), {{.picture = &last, .linearFilter = true}},
                        last.size, params);
    };
    if (isWide) {
        const FloatImage last = halo;
        halo = evaluate(u"crt-halation-wide-down"_s, {{.picture = &last}}, {80, 60});
    }
    blur("crt-halation-blur-h");
    blur("crt-halation-blur-v");
    const Spot spot = spotOf(halo);
    QVERIFY(isNear(spot.light / mean(point, 1), 1.0, 1e-3));
    const double wide = spot.sigmaX * size.width() / size.height();
    const double high = spot.sigmaY;
    const double expected = double(sigma) / (isWide ? 60.0 : 240.0);
    QVERIFY(isNear(high / expected, 1.0, 0.03));
    QVERIFY(isNear(wide / high, 1.0, 0.03));
}

// At every softness; touching dots lose a little where their edges meet.
void TestCrtScreen::maskTransmission_data()
{
    QTest::addColumn<float>("type");
    QTest::addColumn<float>("duty");
    QTest::addColumn<float>("edge");
    QTest::addColumn<double>("expected");
    for (const float edge : {0.0F, 0.06F, 0.12F, 0.2F}) {
        const auto row = [edge](const char *name, float type, float duty, double expected) {
            QTest::addRow("%s, softness %g", name, double(edge))
                    << type << duty << edge << expected;
        };
        row("grille", 0.0F, 0.7F, 0.7 / 3.0);
        row("narrow grille", 0.0F, 0.4F, 0.4 / 3.0);
        row("open grille", 0.0F, 1.0F, 1.0 / 3.0);
        row("dots", 1.0F, 0.7F, 7.0 * 3.14159265 * 0.7 / 72.0);
        row("small dots", 1.0F, 0.4F, 7.0 * 3.14159265 * 0.4 / 72.0);
        row("touching dots", 1.0F, 1.0F, 7.0 * 3.14159265 / 72.0);
        row("slots", 2.0F, 0.55F, 0.8 * 0.55 / 3.0);
        row("open slots", 2.0F, 1.0F, 0.8 / 3.0);
    }
}

void TestCrtScreen::maskTransmission()
{
    QFETCH(float, type);
    QFETCH(float, duty);
    QFETCH(float, edge);
    QFETCH(double, expected);
    const FloatImage tile = phosphorTile(type, duty, edge, 128);
    for (std::size_t c = 0; c < 3; ++c)
        QVERIFY(isNear(mean(tile, c), expected, 1e-3));
    QVERIFY(isNear(mean(tile, 3), expected, 1e-3));
    for (const Pixel &pixel : tile.pixels)
        QVERIFY(*std::min_element(pixel.begin(), pixel.end()) >= 0.0F
                && *std::max_element(pixel.begin(), pixel.end()) <= 1.0F);
}

// In pixels at a height of 960, and in proportion at others.
void TestCrtScreen::maskPitch_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<float>("pitch");
    QTest::addColumn<double>("expected");
    QTest::newRow("6 at 960") << QSize(240, 960) << 6.0F << 6.0;
    QTest::newRow("4.188482 at 960") << QSize(240, 960) << 4.188482F << 4.188;
    QTest::newRow("12 at 480") << QSize(240, 480) << 12.0F << 6.0;
    QTest::newRow("5 at 1080") << QSize(400, 1080) << 5.0F << 5.625;
}

void TestCrtScreen::maskPitch()
{
    QFETCH(QSize, size);
    QFETCH(float, pitch);
    QFETCH(double, expected);
    const Params params = with(kScreen, {{u"mask_pitch"_s, pitch}, {u"mask_strength"_s, 1.0F}});
    const FloatImage shown = decoded(screen(grey(size, 0.2F), params));
    const double found = period(row(shown, size.height() / 2));
    QVERIFY(isNear(found / expected, 1.0, 0.003));
}

// A pixel shows the mean of what the mask lets through over it, as eight times eight smaller ones
// have it.
void TestCrtScreen::maskIsItsMeanOverAPixel_data()
{
    QTest::addColumn<float>("type");
    QTest::addColumn<float>("pitch"); // in pixels
    QTest::addColumn<double>("most"); // of the root mean square, in parts of the light
    QTest::newRow("grille, 4.7") << 0.0F << 4.7F << 0.014;
    QTest::newRow("grille, 9.4") << 0.0F << 9.4F << 0.011;
    QTest::newRow("dots, 4.7") << 1.0F << 4.7F << 0.09;
    QTest::newRow("dots, 9.4") << 1.0F << 9.4F << 0.045;
    QTest::newRow("slots, 4.7") << 2.0F << 4.7F << 0.07;
    QTest::newRow("slots, 9.4") << 2.0F << 9.4F << 0.03;
}

void TestCrtScreen::maskIsItsMeanOverAPixel()
{
    QFETCH(float, type);
    QFETCH(float, pitch);
    QFETCH(double, most);
    constexpr int kFiner = 8;
    constexpr float kLight = 0.2F;
    const QSize size(80, 96);
    const FloatImage tile = phosphorTile(type, 0.7F, 0.06F);
    const Params params =
            with(kScreen, {{u"mask_pitch"_s, 10.0F * pitch}, {u"mask_strength"_s, 0.9F}});
    const FloatImage shown = decoded(screenBehind(tile, grey(size, kLight), params));
    const FloatImage fine = decoded(screenBehind(tile, grey(size * kFiner, kLight), params));
    double squares = 0.0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            double sum = 0.0;
            for (int at = 0; at < kFiner * kFiner; ++at)
                sum += double(fine.at(kFiner * x + at % kFiner, kFiner * y + at / kFiner)[1]);
            const double off = double(shown.at(x, y)[1]) - sum / (kFiner * kFiner);
            squares += off * off;
        }
    }
    const double off = std::sqrt(squares / (size.width() * size.height())) / double(kLight);
    QVERIFY(isBetween(off, 0.0, most));
}

// Whatever the pitch in pixels: what the peak cannot show of an open part goes to the rest.
void TestCrtScreen::maskKeepsTheMean_data()
{
    QTest::addColumn<float>("pitch"); // in pixels
    QTest::addColumn<float>("light");
    for (const float pitch : {1.57F, 2.3F, 4.7F, 9.4F}) {
        for (const float light : {0.05F, 0.2F, 0.5F, 0.6F})
            QTest::addRow("pitch %g, light %g", double(pitch), double(light)) << pitch << light;
    }
}

void TestCrtScreen::maskKeepsTheMean()
{
    QFETCH(float, pitch);
    QFETCH(float, light);
    const QSize size(470, 96);
    const Params params =
            with(kScreen, {{u"mask_pitch"_s, 10.0F * pitch}, {u"mask_strength"_s, 0.9F}});
    const FloatImage shown = decoded(screen(grey(size, light), params));
    for (std::size_t c = 0; c < 3; ++c)
        QVERIFY(isNear(mean(shown, c) / double(light), 1.0, 0.01));
}

// Light of 0.6 under masks of several strengths: its mean stays, and the mask is as deep as the
// peak allows. Repeats of few pixels fade away.
void TestCrtScreen::brightLightKeepsItsMask_data()
{
    QTest::addColumn<float>("strength");
    QTest::addColumn<float>("pitch"); // in pixels
    QTest::addColumn<float>("headroom"); // 0: SDR
    QTest::addColumn<double>("deepest"); // the darkest pixel's light over the mean
    QTest::newRow("SDR, none") << 0.0F << 8.0F << 0.0F << 1.0;
    QTest::newRow("SDR, 0.1") << 0.1F << 8.0F << 0.0F << 0.9;
    QTest::newRow("SDR, 0.9") << 0.9F << 8.0F << 0.0F << 0.797;
    QTest::newRow("SDR, 0.1, of 2.2 pixels") << 0.1F << 2.2F << 0.0F << 0.95;
    QTest::newRow("SDR, 0.9, of 1.97 pixels") << 0.9F << 1.97F << 0.0F << 1.0;
    QTest::newRow("HDR, 0.9") << 0.9F << 8.0F << 8.0F << 0.1;
}

void TestCrtScreen::brightLightKeepsItsMask()
{
    QFETCH(float, strength);
    QFETCH(float, pitch);
    QFETCH(float, headroom);
    QFETCH(double, deepest);
    const Params params =
            with(kScreen, {{u"mask_pitch"_s, 10.0F * pitch}, {u"mask_strength"_s, strength}});
    const FloatImage shown = decoded(screen(grey({800, 96}, 0.6F), params, display(headroom)));
    QVERIFY(isNear(mean(shown, 1) / 0.6, 1.0, 0.005));
    const QList<double> greens = row(shown, 48);
    const double darkest = *std::ranges::min_element(greens) / mean(shown, 1);
    QVERIFY(isNear(darkest, deepest, 0.01));
    QVERIFY(isBetween(*std::ranges::max_element(greens), 0.0, headroom > 0.0F ? 8.0 : 1.0 + 1e-3));
}

// What is too bright for the display keeps its hue.
void TestCrtScreen::clippedLightKeepsItsHue()
{
    const FloatImage shown = decoded(screen(flat({40, 30}, 1.5F, 0.75F, 0.3F), kScreen));
    QVERIFY(areAlike(shown, flat({40, 30}, 1.0F, 0.5F, 0.2F), 1e-4F));
}

void TestCrtScreen::screenHighlights_data()
{
    QTest::addColumn<Params>("changes");
    QTest::addColumn<float>("headroom"); // 0: SDR
    QTest::addColumn<float>("light");
    QTest::addColumn<double>("expected"); // light
    QTest::newRow("SDR") << Params() << 0.0F << 0.5F << 0.5;
    QTest::newRow("SDR ends at white") << Params() << 0.0F << 3.0F << 1.0;
    QTest::newRow("SDR knows no reference white")
            << Params({{u"crt_white"_s, 400.0F}}) << 0.0F << 0.5F << 0.5;
    QTest::newRow("SDR just below white") << Params() << 0.0F << 0.99F << 0.99;
    QTest::newRow("HDR") << Params() << 4.0F << 3.9F << 3.9;
    QTest::newRow("HDR far above its peak") << Params() << 4.0F << 1000.0F << 4.0;
    QTest::newRow("HDR with a peak of its own")
            << Params({{u"hdr_peak"_s, 2.0F}}) << 4.0F << 1000.0F << 2.0;
    QTest::newRow("HDR with a brighter tube")
            << Params({{u"crt_white"_s, 200.0F}}) << 4.0F << 0.5F << 1.0;
    for (const float gamut : {1.0F, 2.0F, 3.0F}) {
        QTest::addRow("white in gamut %g", double(gamut))
                << Params({{u"phosphor_gamut"_s, gamut}}) << 0.0F << 0.5F << 0.5;
    }
    QTest::newRow("room light") << Params({{u"black_floor"_s, 0.1F}}) << 0.0F << 0.0F << 0.1;
}

void TestCrtScreen::screenHighlights()
{
    QFETCH(Params, changes);
    QFETCH(float, headroom);
    QFETCH(float, light);
    QFETCH(double, expected);
    const FloatImage shown =
            screen(grey({40, 30}, light), with(kScreen, changes), display(headroom));
    QVERIFY(areAlike(shown, grey(shown.size, float(encoded(expected))), 1e-4F));
}

// Darker with the square of the distance from the middle; the strength is what the corners lose.
void TestCrtScreen::vignette_data()
{
    QTest::addColumn<float>("strength");
    QTest::addColumn<QPointF>("at");
    QTest::addColumn<double>("expected");
    QTest::newRow("off, in a corner") << 0.0F << QPointF(0.0, 0.0) << 0.5;
    QTest::newRow("middle") << 0.4F << QPointF(0.5, 0.5) << 0.5;
    QTest::newRow("middle of an edge") << 0.4F << QPointF(1.0, 0.5) << 0.4;
    QTest::newRow("middle of the upper edge") << 0.4F << QPointF(0.5, 0.0) << 0.4;
    QTest::newRow("corner") << 0.4F << QPointF(0.0, 1.0) << 0.3;
    QTest::newRow("halfway to a corner") << 0.4F << QPointF(0.25, 0.25) << 0.45;
}

void TestCrtScreen::vignette()
{
    QFETCH(float, strength);
    QFETCH(QPointF, at);
    QFETCH(double, expected);
    const FloatImage shown = decoded(
            screen(grey({401, 301}, 0.5F), with(kScreen, {{u"vignette_strength"_s, strength}})));
    const auto light = double(shown.at(int(at.x() * 400.0), int(at.y() * 300.0))[1]);
    QVERIFY(isNear(light, expected, 1.5e-3));
}

// In parts of the height: what four quarter circles leave of their squares is dark.
void TestCrtScreen::cornerRadius_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<float>("radius");
    QTest::newRow("none") << QSize(400, 300) << 0.0F;
    QTest::newRow("0.05") << QSize(400, 300) << 0.05F;
    QTest::newRow("0.1") << QSize(400, 300) << 0.1F;
    QTest::newRow("0.1, 16:9") << QSize(480, 270) << 0.1F;
}

void TestCrtScreen::cornerRadius()
{
    QFETCH(QSize, size);
    QFETCH(float, radius);
    const FloatImage shown =
            decoded(screen(grey(size, 0.5F), with(kScreen, {{u"corner_radius"_s, radius}})));
    const double pixels = double(radius) * size.height();
    const double dark = (4.0 - 3.14159265) * pixels * pixels;
    const double found = (1.0 - mean(shown, 1) / 0.5) * size.width() * size.height();
    QVERIFY(isNear(found, dark, 0.01 * dark + 1.0));
    // Of the corner's diagonal the dark part is (sqrt 2 - 1) / sqrt 2 of the radius, both ways.
    int first = 0;
    while (shown.at(first, first)[1] < 0.25F)
        ++first;
    QVERIFY(isNear(first, 0.292893 * pixels, 1.0));
    QVERIFY(shown.at(size.width() / 2, 0)[1] > 0.49F);
    QVERIFY(shown.at(0, size.height() / 2)[1] > 0.49F);
}

// The corners are drawn in, to where s (1 + 8 b s^2) / (1 + b) is a half; the edges' middles stay.
void TestCrtScreen::curvatureOfTheFace_data()
{
    QTest::addColumn<float>("barrel");
    QTest::addColumn<double>("expected"); // from the middle to a corner, in parts of the diagonal
    QTest::newRow("flat") << 0.0F << 0.5;
    QTest::newRow("0.03") << 0.03F << 0.48724;
    QTest::newRow("0.15") << 0.15F << 0.45898;
}

void TestCrtScreen::curvatureOfTheFace()
{
    QFETCH(float, barrel);
    QFETCH(double, expected);
    const FloatImage shown = decoded(
            screen(grey({400, 400}, 0.5F), with(kScreen, {{u"barrel_distortion"_s, barrel}})));
    for (const bool isLower : {false, true}) {
        double lit = 0.0;
        for (int i = 0; i < 200; ++i)
            lit += double(shown.at(199 - i, isLower ? 200 + i : 199 - i)[1]) / 0.5 / 400.0;
        QVERIFY(isNear(lit, expected, 1.5e-3));
    }
    QVERIFY(shown.at(200, 0)[1] > 0.49F);
    QVERIFY(shown.at(399, 200)[1] > 0.49F);
}

// A line of the picture, at a quarter of its width or height, is drawn at `expected` of the
// screen's: overscan is in heights, and the curved face has its middle rows and columns straight.
void TestCrtScreen::pictureOnTheFace_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<float>("overscan");
    QTest::addColumn<float>("barrel");
    QTest::addColumn<bool>("isColumn");
    QTest::addColumn<double>("expected");
    const QSize usual(320, 240);
    const QSize wide(480, 270);
    // 0.5 + (0.25 - 0.5) / (1 - 2 overscan), across with overscan / aspect.
    QTest::newRow("column") << usual << 0.0F << 0.0F << true << 0.25;
    QTest::newRow("row") << usual << 0.0F << 0.0F << false << 0.25;
    QTest::newRow("column, overscan") << usual << 0.1F << 0.0F << true << 0.205882;
    QTest::newRow("row, overscan") << usual << 0.1F << 0.0F << false << 0.1875;
    QTest::newRow("column, overscan, 16:9") << wide << 0.1F << 0.0F << true << 0.218310;
    QTest::newRow("row, overscan, 16:9") << wide << 0.1F << 0.0F << false << 0.1875;
    // s (1 + 4 b s^2) / (1 + b) = 0.25 for s from the middle.
    QTest::newRow("column, curved") << usual << 0.0F << 0.15F << true << 0.224981;
    QTest::newRow("row, curved") << usual << 0.0F << 0.15F << false << 0.224981;
}

void TestCrtScreen::pictureOnTheFace()
{
    QFETCH(QSize, size);
    QFETCH(float, overscan);
    QFETCH(float, barrel);
    QFETCH(bool, isColumn);
    QFETCH(double, expected);
    const int at = isColumn ? 80 : 60;
    // Two texels, on either side of the place.
    const FloatImage picture = painted({320, 240}, [=](int x, int y) {
        const int here = isColumn ? x : y;
        return here == at - 1 || here == at;
    });
    const FloatImage drawn = evaluate(
            u"crt-scanline"_s, {{.picture = &picture, .linearFilter = true}}, size,
            with(kScanline, {{u"overscan"_s, overscan}, {u"barrel_distortion"_s, barrel}}));
    // Its middle row or column, which is straight.
    const FloatImage middle =
            painted(isColumn ? QSize(size.width(), 1) : QSize(1, size.height()), [&](int x, int y) {
                return isColumn ? drawn.at(x, size.height() / 2)[1]
                                : drawn.at(size.width() / 2, y)[1];
            });
    const double found = isColumn ? spotOf(middle).x : spotOf(middle).y;
    QVERIFY(isNear(found, expected, 1e-3));
}

QTEST_GUILESS_MAIN(TestCrtScreen)
#include "tst_CrtScreen.moc"
