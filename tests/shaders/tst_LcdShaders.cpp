#include "ShaderTesting.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

using namespace Qt::StringLiterals;
using namespace RenderGraphManifestData;

// The liquid crystal panels and the scaler, by numbers that are known beforehand.

namespace {

const Params kSubpixel = {{u"lcd_aperture_x"_s, 0.91F},   {u"lcd_aperture_y"_s, 0.97F},
                          {u"lcd_diffuse"_s, 0.6F},       {u"LCD_COLOR_PROFILE"_s, 1.0F},
                          {u"lcd_grid_contrast"_s, 0.4F}, {u"lcd_spill"_s, 1.0F}};
// Neither blurred nor mixed, so that apertures are seen as they are.
const Params kBareSubpixel = {
        {u"lcd_aperture_x"_s, 0.6F}, {u"lcd_aperture_y"_s, 1.0F}, {u"lcd_grid_contrast"_s, 1.0F}};
const Params kGrid = {{u"dmg_border_fade"_s, 8.0F}, {u"dmg_margin_gain"_s, 1.0F}};

// The grey panel's clear and dark cells: a tint of 0 in alpha.
constexpr Pixel kGlass = {0.665F, 0.665F, 0.665F, 0.0F};
constexpr Pixel kInk = {0.184F, 0.184F, 0.184F, 0.0F};
constexpr double kGlassLight = 0.407575; // 0.665^2.2
constexpr double kInkLight = 0.024132; // 0.184^2.2

double lightAt(const FloatImage &picture, int x, int y, std::size_t channel = 0)
{
    return decoded(double(picture.at(x, y)[channel]));
}

FloatImage grid(const FloatImage &cells, const FloatImage &shadow, QSize size,
                const Params &changes)
{
    return evaluate(u"crt-dmg-grid"_s,
                    {{.picture = &shadow, .linearFilter = true}, {.picture = &cells}}, size,
                    with(kGrid, changes));
}

// Where x > y the picture is bright, columns by turns so and so.
FloatImage staircase(float even, float odd)
{
    return painted({15, 15}, [=](int x, int y) {
        const float level = x % 2 == 0 ? even : odd;
        return x > y ? level : 0.0F;
    });
}

// An ordered 4x4 dither, so many sixteenths of it bright.
bool isBright(int sixteenths, int x, int y)
{
    static constexpr int kOrder[4][4] = {
            {0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    return kOrder[y % 4][x % 4] < sixteenths;
}

// Three times as large, by the preset's scaler at these values.
FloatImage tripled(const FloatImage &picture, const Params &changes = {})
{
    const PresetEntry &preset = presetEntry(u"no-pixels"_s);
    PresetDrawing drawing(preset);
    return drawing.draw(
            picture, {.params = with(initialParams(preset), changes), .viewport = 3 * picture.size},
            5);
}

} // namespace

class TestLcdShaders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ghosting_data();
    void ghosting();
    void cellsTakeTheirTimeAtAnyRate_data();
    void cellsTakeTheirTimeAtAnyRate();
    void gamutExpansion_data();
    void gamutExpansion();
    void panelMeanBrightness_data();
    void panelMeanBrightness();
    void cellsAreBoosted_data();
    void cellsAreBoosted();
    void stripesOfWhite_data();
    void stripesOfWhite();
    void spillBlursApertures_data();
    void spillBlursApertures();
    void diffusionFillsTheGaps_data();
    void diffusionFillsTheGaps();
    void diffusionReachesTheNeighbours_data();
    void diffusionReachesTheNeighbours();
    void crosstalkMovesLightAlongItsColumnOnly();
    void shadowMovesByTheGap();
    void gapsBetweenGreyCells_data();
    void gapsBetweenGreyCells();
    void greyCellsStandInTheirPlaces_data();
    void greyCellsStandInTheirPlaces();
    void lightOfTheGreyPanel_data();
    void lightOfTheGreyPanel();
    void grain_data();
    void grain();
    void scalerKeepsStraightEdges_data();
    void scalerKeepsStraightEdges();
    void scalerKeepsADither_data();
    void scalerKeepsADither();
    void scalerDrawsLetters_data();
    void scalerDrawsLetters();
    void scalerDrawsADisc_data();
    void scalerDrawsADisc();
    void scalerRoundsABend();
    void scalerSmoothsAStaircase();
    void scalerComparesByItsThreshold_data();
    void scalerComparesByItsThreshold();
    void resamplerEncodesLight();
    void resamplerEnlargesByCubics();
    void resamplerAveragesWhenShrinking();
};

void TestLcdShaders::ghosting_data()
{
    QTest::addColumn<QString>("component");
    QTest::addColumn<bool>("isRising");
    QTest::addColumn<float>("speed");
    QTest::addColumn<float>("seconds");
    QTest::addColumn<bool>("isHdr");
    QTest::addColumn<float>("expected");
    for (const char *component : {"gba-ghost", "dmg-ghost"}) {
        const QString name = QString::fromLatin1(component);
        const auto row = [&](const char *what, bool isRising, float speed, float seconds,
                             bool isHdr, float expected) {
            QTest::addRow("%s %s", component, what)
                    << name << isRising << speed << seconds << isHdr << expected;
        };
        row("rise", true, 1.0F, 1.0F / 60.0F, false, 0.5F);
        row("rise in 1/30 s", true, 1.0F, 1.0F / 30.0F, false, 0.75F);
        row("fall", false, 1.0F, 1.0F / 60.0F, false, 0.6F);
        row("rise, faster in HDR only", true, 3.0F, 1.0F / 60.0F, false, 0.5F);
        row("rise, faster in HDR", true, 3.0F, 1.0F / 60.0F, true, 0.875F);
    }
}

void TestLcdShaders::ghosting()
{
    QFETCH(QString, component);
    QFETCH(bool, isRising);
    QFETCH(float, speed);
    QFETCH(float, seconds);
    QFETCH(bool, isHdr);
    QFETCH(float, expected);
    const FloatImage drive = grey({2, 2}, isRising ? 1.0F : 0.0F);
    const FloatImage last = grey({2, 2}, isRising ? 0.0F : 1.0F);
    const FloatImage cells = evaluate(
            component, {{.picture = &drive}, {.picture = &last}}, {2, 2},
            {{u"ghost_rise"_s, 0.5F}, {u"ghost_fall"_s, 0.4F}, {u"ghost_hdr_speed"_s, speed}},
            [=](FrameState &state) {
                state.frameSeconds = seconds;
                state.hdrOutputActive = isHdr;
            });
    QVERIFY(areAlike(cells, grey({2, 2}, expected), kRounding));
}

// The part of the way that is left after a time, from the drive's one end to its other.
void TestLcdShaders::cellsTakeTheirTimeAtAnyRate_data()
{
    QTest::addColumn<QString>("presetName");
    QTest::addColumn<bool>("isRising");
    QTest::addColumn<float>("rate"); // of the response
    QTest::addColumn<float>("seconds");
    QTest::addColumn<int>("hertz");
    QTest::addColumn<double>("expected");
    QTest::addColumn<double>("within"); // a history of 16 bits rounds each step, least near 0
    for (const int hertz : {50, 60, 120}) {
        const auto row = [hertz](const char *preset, const char *what, bool isRising, float rate,
                                 float seconds, double expected, double within) {
            QTest::addRow("%s %s at %d Hz", preset, what, hertz)
                    << QString::fromLatin1(preset) << isRising << rate << seconds << hertz
                    << expected << within;
        };
        row("gba-lcd", "rises", true, 0.2F, 0.1F, 0.262, 0.01); // 0.8^6
        row("gba-lcd", "falls", false, 0.05F, 0.5F, 0.215, 0.01); // 0.95^30
        // 0.95^60, then 0.6 / 255 in each 1/60 s.
        row("gba-lcd", "falls to its end", false, 0.05F, 1.2F, 0.018, 0.004);
        row("gba-lcd", "has fallen", false, 0.05F, 1.5F, 0.0, 0.001);
        row("dmg-lcd", "rises", true, 0.2F, 0.1F, 0.262, 0.01);
        // Its way is 0.481 long: 0.95^46, then 0.6 / 255 in each 1/60 s.
        row("dmg-lcd", "falls to its end", false, 0.05F, 0.8F, 0.085, 0.012);
    }
}

void TestLcdShaders::cellsTakeTheirTimeAtAnyRate()
{
    QFETCH(QString, presetName);
    QFETCH(bool, isRising);
    QFETCH(float, rate);
    QFETCH(float, seconds);
    QFETCH(int, hertz);
    QFETCH(double, expected);
    QFETCH(double, within);
    const PresetEntry &preset = presetEntry(presetName);
    // Bypasses gba-lcd's colours; dmg-lcd without a tint is grey.
    FrameState state = {.params = with(initialParams(preset),
                                       {{u"LCD_COLOR_PROFILE"_s, 0.0F},
                                        {u"DMG_TINT"_s, 0.0F},
                                        {u"ghost_rise"_s, isRising ? rate : 1.0F},
                                        {u"ghost_fall"_s, isRising ? 1.0F : rate}}),
                        .viewport = {4, 4},
                        .frameSeconds = 1.0F / float(hertz)};
    const FloatImage before = grey({4, 4}, isRising ? 0.0F : 1.0F);
    const FloatImage after = grey({4, 4}, isRising ? 1.0F : 0.0F);
    PresetDrawing drawing(preset);
    const auto cell = [&](const FloatImage &source) {
        ++state.frameCount;
        return double(drawing.draw(source, state, 1).at(1, 1)[0]);
    };
    const double start = cell(before);
    double now = start;
    for (int i = 0; i < int(std::lround(seconds * float(hertz))); ++i)
        now = cell(after);
    PresetDrawing settled(preset); // forgets the history
    const double end = cell(after);
    const double left = (now - end) / (start - end);
    QVERIFY(isNear(left, expected, within));
}

// Light in, light out, through clear filters but for the last row.
void TestLcdShaders::gamutExpansion_data()
{
    QTest::addColumn<float>("expand");
    QTest::addColumn<float>("gamut");
    QTest::addColumn<Pixel>("light");
    QTest::addColumn<Pixel>("expected");
    const Pixel pastel = {0.8F, 0.4F, 0.2F};
    QTest::newRow("none") << 0.0F << 0.0F << pastel << pastel;
    QTest::newRow("half") << 0.5F << 0.0F << pastel << Pixel{0.8F, 0.35F, 0.125F};
    QTest::newRow("full") << 1.0F << 0.0F << pastel << Pixel{0.8F, 0.3F, 0.05F};
    QTest::newRow("grey") << 1.0F << 0.0F << Pixel{0.4F, 0.4F, 0.4F} << Pixel{0.4F, 0.4F, 0.4F};
    QTest::newRow("full colour") << 1.0F << 0.0F << Pixel{0.5F, 0.0F, 0.0F}
                                 << Pixel{0.5F, 0.0F, 0.0F};
    QTest::newRow("does not undo the filters")
            << 1.0F << 1.0F << Pixel{1.0F, 0.0F, 0.0F} << Pixel{0.708F, 0.170F, 0.156F};
}

void TestLcdShaders::gamutExpansion()
{
    QFETCH(float, expand);
    QFETCH(float, gamut);
    QFETCH(Pixel, light);
    QFETCH(Pixel, expected);
    for (std::size_t c = 0; c < 3; ++c)
        light[c] = float(encoded(double(light[c])));
    const FloatImage picture({2, 2}, light);
    const FloatImage panel = evaluate(u"authentic-gbc"_s, {{.picture = &picture}}, {2, 2},
                                      {{u"GBC_ADAPT"_s, 1.0F},
                                       {u"GBC_EXPAND"_s, expand},
                                       {u"GBC_GAMUT"_s, gamut},
                                       {u"LCD_COLOR_PROFILE"_s, 1.0F}});
    for (std::size_t c = 0; c < 3; ++c)
        QVERIFY(isNear(lightAt(panel, 0, 0, c), double(expected[c]), 1e-4));
}

// The mean light of a white field: 1 - contrast * (1 - aperture / 3), whatever the scale.
void TestLcdShaders::panelMeanBrightness_data()
{
    QTest::addColumn<QSize>("viewport");
    QTest::addColumn<Params>("changes");
    QTest::addColumn<double>("expected");
    const double usual = 1.0 - 0.4 * (1.0 - 0.91 * 0.97 / 3.0);
    QTest::newRow("integer scale") << QSize(192, 128) << Params() << usual;
    QTest::newRow("odd scale") << QSize(173, 119) << Params() << usual;
    QTest::newRow("smaller than the panel") << QSize(20, 13) << Params() << usual;
    QTest::newRow("undiffused") << QSize(173, 119) << Params({{u"lcd_diffuse"_s, 0.0F}}) << usual;
    QTest::newRow("diffused") << QSize(173, 119) << Params({{u"lcd_diffuse"_s, 1.0F}}) << usual;
    QTest::newRow("sharp stripes of pure filters") << QSize(192, 128)
                                                   << Params({{u"lcd_diffuse"_s, 0.0F},
                                                              {u"lcd_spill"_s, 0.0F},
                                                              {u"LCD_COLOR_PROFILE"_s, 0.0F}})
                                                   << usual;
    QTest::newRow("no contrast") << QSize(173, 119) << Params({{u"lcd_grid_contrast"_s, 0.0F}})
                                 << 1.0;
    QTest::newRow("full contrast, undiffused")
            << QSize(192, 128) << Params({{u"lcd_grid_contrast"_s, 1.0F}, {u"lcd_diffuse"_s, 0.0F}})
            << 0.91 * 0.97 / 3.0;
}

void TestLcdShaders::panelMeanBrightness()
{
    QFETCH(QSize, viewport);
    QFETCH(Params, changes);
    QFETCH(double, expected);
    const FloatImage white = grey({24, 16}, 1.0F);
    const FloatImage shown =
            evaluate(u"gba-subpixel"_s, {{.picture = &white}}, viewport, with(kSubpixel, changes));
    for (std::size_t c = 0; c < 3; ++c) {
        QVERIFY(isNear(mean(decoded(shown), c), expected, 2e-3));
        for (const Pixel &pixel : shown.pixels)
            QVERIFY(isBetween(double(pixel[c]), 0.0, 1.001));
    }
}

// Linear light of cells without stripes on a display of four times reference white.
void TestLcdShaders::cellsAreBoosted_data()
{
    QTest::addColumn<Pixel>("cell");
    QTest::addColumn<Pixel>("expected");
    QTest::newRow("white") << Pixel{1.0F, 1.0F, 1.0F} << Pixel{1.0F, 1.0F, 1.0F};
    QTest::newRow("red") << Pixel{1.0F, 0.0F, 0.0F} << Pixel{1.5F, 0.0F, 0.0F};
}

void TestLcdShaders::cellsAreBoosted()
{
    QFETCH(Pixel, cell);
    QFETCH(Pixel, expected);
    const FloatImage cells({2, 2}, cell);
    const FloatImage shown =
            evaluate(u"gba-subpixel"_s, {{.picture = &cells}}, {8, 8},
                     {{u"lcd_aperture_x"_s, 0.9F}, {u"lcd_aperture_y"_s, 0.9F}}, display(4.0F));
    for (std::size_t c = 0; c < 3; ++c)
        QVERIFY(isNear(lightAt(shown, 3, 3, c), double(expected[c]), 1e-3));
}

// The light of a white field at any zoom, and how much green's stripes modulate it: half of their
// range, relative to its middle.
void TestLcdShaders::stripesOfWhite_data()
{
    QTest::addColumn<QString>("presetName");
    QTest::addColumn<float>("headroom"); // 0: SDR
    QTest::addColumn<int>("zoom");
    QTest::addColumn<double>("light");
    QTest::addColumn<double>("modulation");
    const auto row = [](const char *preset, float headroom, int zoom, double light,
                        double modulation) {
        QTest::addRow("%s x%d, %s", preset, zoom, headroom > 0.0F ? "HDR" : "SDR")
                << QString::fromLatin1(preset) << headroom << zoom << light << modulation;
    };
    for (const float headroom : {0.0F, 4.0F}) {
        row("gba-lcd", headroom, 2, 0.712, 0.01);
        row("gba-lcd", headroom, 4, 0.712, 0.14);
        row("gba-lcd", headroom, 8, 0.712, 0.19);
        row("gameboy-lcd", headroom, 2, 0.739, 0.01);
        row("gameboy-lcd", headroom, 4, 0.739, 0.105);
        row("gameboy-lcd", headroom, 8, 0.739, 0.155);
    }
}

void TestLcdShaders::stripesOfWhite()
{
    QFETCH(QString, presetName);
    QFETCH(float, headroom);
    QFETCH(int, zoom);
    QFETCH(double, light);
    QFETCH(double, modulation);
    const PresetEntry &preset = presetEntry(presetName);
    PresetDrawing drawing(preset);
    const FloatImage shown = drawing.draw(grey({8, 8}, 1.0F),
                                          {.params = initialParams(preset),
                                           .viewport = QSize(8, 8) * zoom,
                                           .hdrOutputActive = headroom > 0.0F,
                                           .hdrHeadroom = std::max(headroom, 1.0F)});
    const FloatImage whole = headroom > 0.0F ? shown : decoded(shown);
    const FloatImage middle = painted(
            QSize(4, 4) * zoom, [&](int x, int y) { return whole.at(x + 2 * zoom, y + 2 * zoom); });
    QVERIFY(isNear(0.2126 * mean(middle, 0) + 0.7152 * mean(middle, 1) + 0.0722 * mean(middle, 2),
                   light, 0.004));
    double least = 1e9;
    double most = 0.0;
    for (int x = 0; x < zoom; ++x) {
        double column = 0.0;
        for (int y = 0; y < zoom; ++y)
            column += double(middle.at(x, y)[1]) / zoom;
        least = std::min(least, column);
        most = std::max(most, column);
    }
    QVERIFY(isBetween((most - least) / (most + least), modulation, 0.25));
    if (headroom == 0.0F) {
        for (const Pixel &pixel : middle.pixels)
            QVERIFY(isBetween(double(*std::max_element(pixel.begin(), pixel.begin() + 3)), 0.0,
                              1.0));
    }
}

// Green's aperture of a pixel that is 120 wide: a fifth of it, its edges ramps of up to a sixth.
void TestLcdShaders::spillBlursApertures_data()
{
    QTest::addColumn<float>("spill");
    QTest::addColumn<int>("ramp"); // each edge's width in output pixels
    QTest::newRow("none") << 0.0F << 0;
    QTest::newRow("half") << 0.5F << 10;
    QTest::newRow("full") << 1.0F << 20;
}

void TestLcdShaders::spillBlursApertures()
{
    QFETCH(float, spill);
    QFETCH(int, ramp);
    const FloatImage white = grey({3, 1}, 1.0F);
    const FloatImage shown = evaluate(u"gba-subpixel"_s, {{.picture = &white}}, {360, 4},
                                      with(kBareSubpixel, {{u"lcd_spill"_s, spill}}));
    int partly = 0;
    double wide = 0.0;
    for (int x = 120; x < 240; ++x) {
        const double light = lightAt(shown, x, 2, 1);
        partly += light > 0.001 && light < 0.999 ? 1 : 0;
        wide += light;
    }
    QVERIFY(isNear(partly, 2 * ramp, 1.5));
    QVERIFY(isNear(wide, 24.0, 0.01));
}

// Of white through apertures of a fifth the surface scatters up to half.
void TestLcdShaders::diffusionFillsTheGaps_data()
{
    QTest::addColumn<float>("diffuse");
    QTest::addColumn<double>("least");
    QTest::addColumn<double>("most");
    QTest::newRow("none") << 0.0F << 0.0 << 1.0;
    QTest::newRow("half") << 0.5F << 0.05 << 0.8;
    QTest::newRow("full") << 1.0F << 0.1 << 0.6;
}

void TestLcdShaders::diffusionFillsTheGaps()
{
    QFETCH(float, diffuse);
    QFETCH(double, least);
    QFETCH(double, most);
    const FloatImage white = grey({3, 1}, 1.0F);
    const FloatImage shown = evaluate(u"gba-subpixel"_s, {{.picture = &white}}, {360, 4},
                                      with(kBareSubpixel, {{u"lcd_diffuse"_s, diffuse}}));
    QVERIFY(isNear(lightAt(shown, 180, 2, 1), most, 1e-3));
    QVERIFY(isNear(lightAt(shown, 125, 2, 1), least, 1e-3));
}

// Of what is scattered 1 - 0.75^2 leaves the pixel; nothing is lost.
void TestLcdShaders::diffusionReachesTheNeighbours_data()
{
    QTest::addColumn<float>("diffuse");
    QTest::addColumn<double>("outside");
    QTest::newRow("none") << 0.0F << 0.0;
    QTest::newRow("half") << 0.5F << 0.25 * 0.4375;
    QTest::newRow("full") << 1.0F << 0.5 * 0.4375;
}

void TestLcdShaders::diffusionReachesTheNeighbours()
{
    QFETCH(float, diffuse);
    QFETCH(double, outside);
    FloatImage dot = grey({5, 5}, 0.0F);
    dot.at(2, 2) = {1.0F, 1.0F, 1.0F, 1.0F};
    const FloatImage shown = evaluate(
            u"gba-subpixel"_s, {{.picture = &dot}}, {40, 40},
            with(kBareSubpixel, {{u"lcd_diffuse"_s, diffuse}, {u"lcd_grid_contrast"_s, 0.0F}}));
    double all = 0.0;
    double own = 0.0;
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 40; ++x) {
            all += lightAt(shown, x, y) / 64.0;
            own += x / 8 == 2 && y / 8 == 2 ? lightAt(shown, x, y) / 64.0 : 0.0;
        }
    }
    QVERIFY(isNear(all, 1.0, 1e-3));
    QVERIFY(isNear(all - own, outside, 1e-3));
}

void TestLcdShaders::crosstalkMovesLightAlongItsColumnOnly()
{
    const FloatImage cells = painted({5, 81}, [](int x, int y) { return x == 2 && y == 40; });
    const FloatImage result =
            evaluate(u"dmg-crosstalk"_s, {{.picture = &cells}}, cells.size,
                     {{u"dmg_crosstalk"_s, 1.0F}, {u"dmg_crosstalk_reach"_s, 1.5F}});
    double column = 0.0;
    double elsewhere = 0.0;
    for (int y = 0; y < 81; ++y) {
        for (int x = 0; x < 5; ++x)
            (x == 2 ? column : elsewhere) += double(result.at(x, y)[0]);
    }
    QVERIFY(isNear(column, 1.0, 1e-4));
    QCOMPARE(elsewhere, 0.0);
    QVERIFY(result.at(2, 41)[0] > 0.05F);
}

void TestLcdShaders::shadowMovesByTheGap()
{
    FloatImage cells({21, 21}, kGlass);
    cells.at(10, 10) = kInk;
    const FloatImage shadow = evaluate(u"dmg-occlusion"_s, {{.picture = &cells}}, cells.size,
                                       {{u"dmg_shadow_offset"_s, 2.5F}});
    const Spot missing = spotOf(painted(
            cells.size, [&shadow](int x, int y) { return kGlassLight - lightAt(shadow, x, y); }));
    QVERIFY(isNear(missing.light * 21.0 * 21.0, kGlassLight - kInkLight, 1e-4));
    QVERIFY(isNear(21.0 * missing.x, 10.5 + 2.5, 1e-2));
    QVERIFY(isNear(21.0 * missing.y, 10.5 + 2.5, 1e-2));
}

// The mean light of dark cells.
void TestLcdShaders::gapsBetweenGreyCells_data()
{
    QTest::addColumn<float>("gap");
    QTest::addColumn<QSize>("viewport");
    for (const float gap : {0.0F, 0.2F, 0.4F}) {
        for (const QSize size : {QSize(80, 60), QSize(83, 47), QSize(11, 7), QSize(3, 2)})
            QTest::addRow("%g at %dx%d", double(gap), size.width(), size.height()) << gap << size;
    }
}

void TestLcdShaders::gapsBetweenGreyCells()
{
    QFETCH(float, gap);
    QFETCH(QSize, viewport);
    const FloatImage cells({8, 6}, kInk);
    const FloatImage shown = grid(cells, cells, viewport, {{u"dmg_grid_gap"_s, gap}});
    const double dark = (1.0 - double(gap)) * (1.0 - double(gap));
    // Where a footprint is narrowed to 4 cells it counts some less than others.
    QVERIFY(isNear(mean(decoded(shown), 0), dark * kInkLight + (1.0 - dark) * kGlassLight, 1e-4));
}

// The light at one place of a grey panel of 8x6 cells with a margin of 12 cells.
void TestLcdShaders::lightOfTheGreyPanel_data()
{
    QTest::addColumn<Pixel>("cells");
    QTest::addColumn<Pixel>("shadow"); // dark everywhere or nowhere
    QTest::addColumn<Params>("changes");
    QTest::addColumn<QPoint>("at"); // in tenths of a cell from the panel's corner
    QTest::addColumn<double>("expected");

    const auto gap = [](const char *name, float size, QPoint at, double expected) {
        QTest::newRow(name) << kInk << kInk << Params({{u"dmg_grid_gap"_s, size}}) << at
                            << expected;
    };
    gap("no gap, corner", 0.0F, {40, 20}, kInkLight);
    gap("gap, middle of a cell", 0.2F, {45, 25}, kInkLight);
    gap("gap, corner", 0.2F, {40, 20}, kGlassLight);
    gap("wide gap, middle of a cell", 0.4F, {45, 25}, kInkLight);
    gap("wide gap, corner", 0.4F, {40, 20}, kGlassLight);

    const auto shadow = [](const char *name, float strength, float offset, double expected) {
        QTest::newRow(name) << kGlass << kInk
                            << Params({{u"dmg_shadow_strength"_s, strength},
                                       {u"dmg_shadow_offset"_s, offset}})
                            << QPoint(31, 22) << expected;
    };
    shadow("no shadow", 0.0F, 2.0F, kGlassLight);
    shadow("half a shadow", 0.5F, 2.0F, 0.215854);
    shadow("full shadow", 1.0F, 2.0F, kInkLight);
    shadow("no air gap", 1.0F, 0.0F, kGlassLight);

    const auto margin = [](const char *name, float gain, int x, double expected) {
        QTest::newRow(name) << kGlass << kGlass << Params({{u"dmg_margin_gain"_s, gain}})
                            << QPoint(x, 30) << expected;
    };
    margin("on the cells", 1.4F, 5, kGlassLight);
    margin("half a cell beside them", 1.4F, -5, kGlassLight * 1.3775);
    margin("four cells beside them", 1.4F, -40, kGlassLight * 1.2025);
    margin("ten cells beside them", 1.4F, -100, kGlassLight);
    margin("darker, four cells beside them", 0.6F, -40, kGlassLight * 0.7975);
}

void TestLcdShaders::lightOfTheGreyPanel()
{
    QFETCH(Pixel, cells);
    QFETCH(Pixel, shadow);
    QFETCH(Params, changes);
    QFETCH(QPoint, at);
    QFETCH(double, expected);
    const FloatImage shown = grid(FloatImage({8, 6}, cells), FloatImage({8, 6}, shadow), {320, 300},
                                  with(changes, {{u"dmg_panel_margin"_s, 12.0F}}));
    const QPoint place = at + QPoint(120, 120);
    QVERIFY(isNear(lightAt(shown, place.x(), place.y()), expected, 1e-4));
}

// The centroid of a dark cell's shade, in panel pixels.
void TestLcdShaders::greyCellsStandInTheirPlaces_data()
{
    QTest::addColumn<float>("margin");
    QTest::addColumn<QSize>("viewport");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::newRow("no margin") << 0.0F << QSize(60, 50) << 3.5 << 1.5;
    QTest::newRow("odd scale") << 0.0F << QSize(67, 41) << 3.5 << 1.5;
    QTest::newRow("margin") << 3.0F << QSize(120, 110) << 6.5 << 4.5;
    QTest::newRow("shrunk") << 2.0F << QSize(5, 6) << 5.5 << 3.5;
}

void TestLcdShaders::greyCellsStandInTheirPlaces()
{
    QFETCH(float, margin);
    QFETCH(QSize, viewport);
    QFETCH(double, x);
    QFETCH(double, y);
    const FloatImage clear({6, 5}, kGlass);
    FloatImage cells = clear;
    cells.at(3, 1) = kInk;
    const FloatImage shown = grid(cells, clear, viewport, {{u"dmg_panel_margin"_s, margin}});
    const double wide = 6.0 + 2.0 * double(margin);
    const double high = 5.0 + 2.0 * double(margin);
    const Spot missing = spotOf(painted(viewport, [&shown](int column, int row) {
        return kGlassLight - lightAt(shown, column, row);
    }));
    QVERIFY(isNear(missing.light * wide * high, kGlassLight - kInkLight, 1e-3));
    const double within =
            0.3 * std::max(wide / viewport.width(), 0.02); // of where the pixels happen to lie
    QVERIFY(isNear(missing.x * wide, x, within));
    QVERIFY(isNear(missing.y * high, y, within));
}

// The standard deviation of the light: of values in -1..1 that are blended from four, 0.385.
void TestLcdShaders::grain_data()
{
    QTest::addColumn<float>("strength");
    QTest::addColumn<QSize>("viewport");
    for (const float strength : {0.0F, 0.1F, 0.3F}) {
        for (const QSize size : {QSize(320, 240), QSize(483, 361)}) {
            QTest::addRow("%g at %dx%d", double(strength), size.width(), size.height())
                    << strength << size;
        }
    }
}

void TestLcdShaders::grain()
{
    QFETCH(float, strength);
    QFETCH(QSize, viewport);
    const FloatImage clear({32, 24}, kGlass);
    const FloatImage shown = grid(clear, clear, viewport, {{u"dmg_grain"_s, strength}});
    const double average = mean(decoded(shown), 0);
    double square = 0.0;
    for (const Pixel &pixel : shown.pixels)
        square += std::pow(decoded(double(pixel[0])) - average, 2.0);
    const double deviation = std::sqrt(square / double(shown.pixels.size())) / average;
    QVERIFY(isNear(average, kGlassLight, 0.01 * double(strength) + 1e-4));
    QVERIFY(isNear(deviation, 0.385 * double(strength), 0.03 * double(strength) + 1e-4));
}

void TestLcdShaders::scalerKeepsStraightEdges_data()
{
    QTest::addColumn<std::function<bool(int, int)>>("isWhite");
    QTest::addColumn<Params>("changes");
    const auto row = [](const char *name, const std::function<bool(int, int)> &isWhite,
                        const Params &changes = {}) { QTest::newRow(name) << isWhite << changes; };
    row("flat", [](int, int) { return true; });
    row("vertical edge", [](int x, int) { return x >= 6; });
    row("horizontal edge", [](int, int y) { return y >= 5; });
    row("vertical line", [](int x, int) { return x == 6; });
    row("crossing of lines", [](int x, int y) { return x == 6 || y == 5; });
    row("dark crossing of lines", [](int x, int y) { return x != 6 && y != 5; });
    row("line that meets a line", [](int x, int y) { return y == 5 || (x == 6 && y > 5); });
    row("line that meets an area", [](int x, int y) { return y <= 5 || x == 6; });
    row("line that meets a block",
        [](int x, int y) { return (x >= 3 && x <= 9 && y <= 5) || x == 6; },
        {{u"SFX_SCN"_s, 0.0F}});
}

void TestLcdShaders::scalerKeepsStraightEdges()
{
    QFETCH(std::function<bool(int, int)>, isWhite);
    QFETCH(Params, changes);
    const FloatImage picture = painted({14, 12}, isWhite);
    const FloatImage larger = tripled(picture, changes);
    QCOMPARE(larger.size, QSize(42, 36));
    for (int y = 0; y < 36; ++y) {
        for (int x = 0; x < 42; ++x)
            QCOMPARE(larger.at(x, y)[0], picture.at(x / 3, y / 3)[0]);
    }
}

// No dot of it joins another, also beside a slope.
void TestLcdShaders::scalerKeepsADither_data()
{
    QTest::addColumn<int>("sixteenthsAbove");
    QTest::addColumn<int>("sixteenthsBelow");
    QTest::addColumn<int>("slopeAt"); // where it begins in the first row
    QTest::addColumn<Params>("changes");
    constexpr int kNowhere = 99;
    for (int sixteenths = 3; sixteenths <= 13; ++sixteenths)
        QTest::addRow("%d of 16", sixteenths) << sixteenths << sixteenths << kNowhere << Params();
    QTest::newRow("gradient") << 4 << 10 << kNowhere << Params();
    QTest::newRow("7 of 16, beside a slope") << 7 << 7 << 6 << Params();
    QTest::newRow("9 of 16, beside a slope") << 9 << 9 << 7 << Params();
    for (int sixteenths = 1; sixteenths <= 2; ++sixteenths)
        QTest::addRow("%d of 16, not smoothed", sixteenths)
                << sixteenths << sixteenths << kNowhere << Params({{u"SFX_SAA"_s, 0.0F}});
}

void TestLcdShaders::scalerKeepsADither()
{
    QFETCH(int, sixteenthsAbove);
    QFETCH(int, sixteenthsBelow);
    QFETCH(int, slopeAt);
    QFETCH(Params, changes);
    const FloatImage picture = painted({16, 16}, [=](int x, int y) {
        const int sixteenths = sixteenthsAbove + (sixteenthsBelow - sixteenthsAbove) * y / 15;
        return x >= slopeAt + y / 3 ? 1.0F : isBright(sixteenths, x, y) ? 0.6F : 0.3F;
    });
    const FloatImage larger = tripled(picture, changes);
    for (int y = 6; y < 42; ++y) {
        // The last pixel before the slope may be cut.
        for (int x = 6; x < std::min(42, 3 * (slopeAt + y / 9 - 1)); ++x)
            QVERIFY(isNear(encoded(double(larger.at(x, y)[0])), double(picture.at(x / 3, y / 3)[0]),
                           2e-3));
    }
}

// Strokes keep their widths and bows are round: no stem is wedge-shaped, and nothing grows out of
// it.
void TestLcdShaders::scalerDrawsLetters_data()
{
    QTest::addColumn<QByteArrayList>("letter");
    QTest::addColumn<QByteArrayList>("expected");
    // The lower five of its seven rows.
    const auto row = [](const char *name, const QByteArrayList &letter,
                        const QByteArrayList &expected) {
        QTest::newRow(name) << letter << expected;
    };
    row("h", {"#....", "#....", "#.##.", "##..#", "#...#", "#...#", "#...#"},
        {"###....###.....", "###...######...", "###..########..", "########...###.",
         "######......##.", "#####.......###", "####........###", "####........###",
         "###.........###", "###.........###", "###.........###", "###.........###",
         "###.........###", "###.........###", ".#...........#."});
    row("k", {"#....", "#....", "#..#.", "#.#..", "##...", "#.#..", "#..#."},
        {"###.......#....", "###......###...", "###.....###....", "###....###.....",
         "###...###......", "###..###.......", "#######........", "######.........",
         "#######........", "###..###.......", "###...###......", "###....###.....",
         "###.....###....", "###......###...", ".#........#...."});
    row("n", {".....", ".....", "#.##.", "##..#", "#...#", "#...#", "#...#"},
        {".##...####.....", "###...######...", "###..########..", "########...###.",
         "######......##.", "#####.......###", "####........###", "####........###",
         "###.........###", "###.........###", "###.........###", "###.........###",
         "###.........###", "###.........###", ".#...........#."});
    row("m", {".....", ".....", "##.#.", "#.#.#", "#.#.#", "#.#.#", "#.#.#"},
        {".#####...##....", "######...###...", "#######.#####..", "####.#####.###.",
         "###...###...##.", "###...###...###", "###...###...###", "###...###...###",
         "###...###...###", "###...###...###", "###...###...###", "###...###...###",
         "###...###...###", "###...###...###", ".##...###...##."});
    row("I", {".###.", "..#..", "..#..", "..#..", "..#..", "..#..", ".###."},
        {"......###......", "......###......", "......###......", "......###......",
         "......###......", "......###......", "......###......", "......###......",
         "......###......", "......###......", "......###......", "......###......",
         "....#######....", "...#########...", "....#######...."});
}

void TestLcdShaders::scalerDrawsLetters()
{
    QFETCH(QByteArrayList, letter);
    QFETCH(QByteArrayList, expected);
    const FloatImage picture = painted({11, 11}, [&](int x, int y) {
        return x >= 3 && x < 8 && y >= 2 && y < 9 && letter[y - 2][x - 3] == '#';
    });
    const FloatImage larger = tripled(picture, {{u"SFX_SAA"_s, 0.0F}});
    for (int y = 0; y < 15; ++y) {
        QByteArray row;
        for (int x = 0; x < 15; ++x)
            row.append(larger.at(9 + x, 12 + y)[0] > 0.5F ? '#' : '.');
        QCOMPARE(row, expected[y]);
    }
}

// How far its outline is from a circle, in source pixels: the mean over the circle.
void TestLcdShaders::scalerDrawsADisc_data()
{
    QTest::addColumn<int>("sixteenths"); // of the dither around it
    QTest::addColumn<double>("most");
    QTest::newRow("on a flat ground") << 0 << 0.12;
    QTest::newRow("on a dither") << 7 << 0.12;
}

void TestLcdShaders::scalerDrawsADisc()
{
    QFETCH(int, sixteenths);
    QFETCH(double, most);
    const FloatImage picture = painted({29, 29}, [=](int x, int y) {
        const bool isDisc = std::hypot(x - 14, y - 14) < 12.0;
        return isDisc ? 1.0F : isBright(sixteenths, x, y) ? 0.6F : 0.4F;
    });
    const FloatImage larger = tripled(picture);
    const auto isDisc = [&](int x, int y) { return encoded(double(larger.at(x, y)[0])) > 0.8; };
    int area = 0;
    for (int i = 0; i < 87 * 87; ++i)
        area += isDisc(i % 87, i / 87) ? 1 : 0;
    const double radius = std::sqrt(double(area) / std::numbers::pi);
    int beside = 0;
    for (int i = 0; i < 87 * 87; ++i)
        beside += isDisc(i % 87, i / 87) != (std::hypot(i % 87 - 43, i / 87 - 43) < radius) ? 1 : 0;
    const double away = beside / (2.0 * std::numbers::pi * radius) / 3.0;
    QVERIFY(isBetween(away, 0.0, most));
}

// Both sides of it, and so it keeps its width.
void TestLcdShaders::scalerRoundsABend()
{
    const FloatImage picture = painted({14, 14}, [](int x, int y) { return std::min(x, y) == 5; });
    const FloatImage bend = tripled(picture, {{u"SFX_SAA"_s, 0.0F}});
    QCOMPARE(bend.at(15, 15)[0], 0.0F);
    QCOMPARE(bend.at(16, 16)[0], 1.0F);
    QCOMPARE(bend.at(18, 18)[0], 1.0F);
    QCOMPARE(bend.at(19, 19)[0], 0.0F);
    const FloatImage sharp = tripled(picture, {{u"SFX_SAA"_s, 0.0F}, {u"SFX_SCN"_s, 0.0F}});
    QCOMPARE(sharp.at(15, 15)[0], 1.0F);
    QCOMPARE(sharp.at(18, 18)[0], 0.0F);
}

void TestLcdShaders::scalerSmoothsAStaircase()
{
    const FloatImage picture = staircase(1.0F, 1.0F);
    // In the middle of the edge: of the dark pixel (7, 7) the upper right corner is cut.
    const FloatImage smooth = tripled(picture);
    QCOMPARE(smooth.at(22, 22)[0], 0.0F);
    QVERIFY(smooth.at(23, 21)[0] > 0.5F);
    QVERIFY(smooth.at(23, 21)[0] < 1.0F);
    const FloatImage hard = tripled(picture, {{u"SFX_SAA"_s, 0.0F}});
    QCOMPARE(hard.at(23, 21)[0], 1.0F);
    QCOMPARE(hard.at(22, 22)[0], 0.0F);
    QCOMPARE(hard.at(21, 23)[0], 0.0F);
}

// Of the steps of the edge: their two bright neighbours and their contrast to the dark pixel.
void TestLcdShaders::scalerComparesByItsThreshold_data()
{
    QTest::addColumn<float>("even");
    QTest::addColumn<float>("odd");
    QTest::addColumn<float>("threshold");
    QTest::addColumn<bool>("isCut");
    QTest::newRow("bright and darker, just too strict") << 0.7F << 1.0F << 0.14F << false;
    QTest::newRow("bright and darker, just lenient enough") << 0.7F << 1.0F << 0.15F << true;
    QTest::newRow("faint, strictest") << 0.25F << 0.25F << 0.01F << false;
    QTest::newRow("faint, just too strict") << 0.1F << 0.1F << 0.037F << false;
    QTest::newRow("faint, just lenient enough") << 0.1F << 0.1F << 0.042F << true;
    QTest::newRow("strong, strictest") << 1.0F << 1.0F << 0.01F << true;
}

void TestLcdShaders::scalerComparesByItsThreshold()
{
    QFETCH(float, even);
    QFETCH(float, odd);
    QFETCH(float, threshold);
    QFETCH(bool, isCut);
    const FloatImage hard =
            tripled(staircase(even, odd), {{u"SFX_CLR"_s, threshold}, {u"SFX_SAA"_s, 0.0F}});
    QCOMPARE(hard.at(23, 21)[0] > 0.0F, isCut);
}

void TestLcdShaders::resamplerEncodesLight()
{
    const FloatImage light = noise({24, 18});
    const FloatImage shown = evaluate(u"smooth-resample"_s, {{.picture = &light}}, light.size);
    for (std::size_t i = 0; i < light.pixels.size(); ++i)
        QVERIFY(isNear(decoded(double(shown.pixels[i][0])), double(light.pixels[i][0]), 1e-4));
}

// Cubic convolution meets a parabola exactly, where linear interpolation is up to .004 off.
void TestLcdShaders::resamplerEnlargesByCubics()
{
    const auto parabola = [](double x, double y) { return 0.01 * x * x + 0.005 * y * y; };
    const FloatImage small = painted({10, 7}, parabola);
    const FloatImage large = evaluate(u"smooth-resample"_s, {{.picture = &small}}, {30, 21});
    for (int y = 5; y < 15; ++y) {
        for (int x = 5; x < 24; ++x) {
            const double expected = parabola((x + 0.5) / 3.0 - 0.5, (y + 0.5) / 3.0 - 0.5);
            QVERIFY(isNear(decoded(double(large.at(x, y)[1])), expected, 1e-4));
        }
    }
}

void TestLcdShaders::resamplerAveragesWhenShrinking()
{
    const FloatImage picture = noise({30, 30});
    const FloatImage small = evaluate(u"smooth-resample"_s, {{.picture = &picture}}, {10, 5});
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 10; ++x) {
            double light = 0.0;
            for (int i = 0; i < 18; ++i)
                light += double(picture.at(3 * x + i % 3, 6 * y + i / 3)[1]);
            QVERIFY(isNear(decoded(double(small.at(x, y)[1])), light / 18.0, 1e-4));
        }
    }
    // Nothing rings: enlarging a step stays within its levels.
    const FloatImage step = painted({8, 4}, [](int x, int) { return x < 4 ? 0.2F : 0.8F; });
    const FloatImage large = evaluate(u"smooth-resample"_s, {{.picture = &step}}, {61, 17});
    for (const Pixel &pixel : large.pixels)
        QVERIFY(isBetween(decoded(double(pixel[0])), 0.2 - 1e-4, 0.8 + 1e-4));
}

QTEST_GUILESS_MAIN(TestLcdShaders)
#include "tst_LcdShaders.moc"
