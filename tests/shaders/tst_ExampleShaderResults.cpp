#include "ShaderTesting.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <functional>

using namespace Qt::StringLiterals;
using namespace RenderGraphManifestData;

// Numbers that are known beforehand, computed by the real shaders on a Vulkan device.

namespace {

constexpr float kExact = 0.0F;

const Params kLinearize = {{u"crt_gamma_out"_s, 2.4F},
                           {u"gun_cutoff"_s, 0.0F},
                           {u"color_saturation"_s, 1.0F},
                           {u"desaturate"_s, 0.0F}};
const Params kComposite = {
        {u"composite_strength"_s, 1.0F},     {u"composite_sharp"_s, 0.6F},
        {u"composite_chroma"_s, 1.1F},       {u"composite_chroma_delay"_s, 0.0F},
        {u"composite_chroma_gain"_s, 1.15F}, {u"composite_chroma_vertical"_s, 0.25F}};
const Params kSubpixel = {{u"lcd_aperture_x"_s, 0.91F},   {u"lcd_aperture_y"_s, 0.97F},
                          {u"lcd_diffuse"_s, 0.6F},       {u"LCD_COLOR_PROFILE"_s, 1.0F},
                          {u"lcd_grid_contrast"_s, 0.4F}, {u"lcd_spill"_s, 1.0F}};
const Params kGbc = {{u"GBC_ADAPT"_s, 1.0F},
                     {u"GBC_BACKING"_s, 0.55F},
                     {u"GBC_EXPAND"_s, 0.0F},
                     {u"GBC_GAMUT"_s, 0.4F},
                     {u"LCD_COLOR_PROFILE"_s, 1.0F}};

} // namespace

class TestExampleShaderResults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void neutralValuesLeaveThePictureAlone_data();
    void neutralValuesLeaveThePictureAlone();
    void flatFields_data();
    void flatFields();
    void linearizeIsMonotonic();
    void ghosting_data();
    void ghosting();
    void panelMeanBrightness_data();
    void panelMeanBrightness();
    void crosstalkMovesLightAlongItsColumnOnly();
    void shadowMovesByTheGap();
    void scalerKeepsStraightEdges_data();
    void scalerKeepsStraightEdges();
    void scalerSmoothsAStaircase();
    void resamplerAveragesWhenShrinking();
    void smearLeavesLumaAlone();
    void tapeRunsWithTheFrameCounter();
    void hdrBoost_data();
    void hdrBoost();
};

void TestExampleShaderResults::neutralValuesLeaveThePictureAlone_data()
{
    QTest::addColumn<QString>("component");
    QTest::addColumn<Params>("params");
    QTest::addColumn<float>("tolerance");

    const auto row = [](const char *component, const Params &params, float tolerance) {
        QTest::newRow(component) << QString::fromLatin1(component) << params << tolerance;
    };
    row("stock", {}, kExact);
    row("crt-horizontal", {{u"signal_bandwidth_mhz"_s, 0.0F}, {u"signal_active_us"_s, 53.3F}},
        kExact);
    row("crt-consumer-composite", with(kComposite, {{u"composite_strength"_s, 0.0F}}), kExact);
    row("gba-color", {{u"LCD_COLOR_PROFILE"_s, 0.0F}}, kExact);
    row("authentic-gbc", with(kGbc, {{u"LCD_COLOR_PROFILE"_s, 0.0F}}), kExact);
    row("dmg-crosstalk", {{u"dmg_crosstalk"_s, 0.0F}, {u"dmg_crosstalk_reach"_s, 1.5F}}, kExact);
    row("dmg-occlusion", {{u"dmg_shadow_offset"_s, 0.0F}}, kRounding);
    row("rewind", {{u"wiggle"_s, 0.0F}, {u"smear"_s, 0.0F}}, kRounding);
    row("rewind-noise", {{u"noiseAmount"_s, 0.0F}, {u"lineNoise"_s, 0.0F}, {u"tapeSpeed"_s, 1.0F}},
        kExact);
    row("smooth-resample", {}, 3e-4F);
}

void TestExampleShaderResults::neutralValuesLeaveThePictureAlone()
{
    QFETCH(QString, component);
    QFETCH(Params, params);
    QFETCH(float, tolerance);
    const Picture picture = noise({24, 18});
    const Picture result = evaluate(component, {{.picture = &picture}}, picture.size, params,
                                    [](FrameState &state) { state.frameCount = 77; });
    QVERIFY2(difference(result, picture) <= tolerance,
             QByteArray::number(difference(result, picture)).constData());
}

// One colour in, one colour out.
void TestExampleShaderResults::flatFields_data()
{
    QTest::addColumn<QString>("component");
    QTest::addColumn<Params>("params");
    QTest::addColumn<Pixel>("input");
    QTest::addColumn<Pixel>("expected");

    const auto row = [](const char *name, const char *component, const Params &params,
                        const Pixel &input, const Pixel &expected) {
        QTest::newRow(name) << QString::fromLatin1(component) << params << input << expected;
    };
    const Pixel black = {0.0F, 0.0F, 0.0F, 1.0F};
    const Pixel white = {1.0F, 1.0F, 1.0F, 1.0F};
    const Pixel half = {0.5F, 0.5F, 0.5F, 1.0F};
    const Pixel red = {1.0F, 0.0F, 0.0F, 1.0F};

    // BT.1886: L = ((V + b) / (1 + b))^gamma.
    row("linearize white", "crt-linearize", kLinearize, white, white);
    row("linearize black", "crt-linearize", kLinearize, black, black);
    const float grey24 = std::pow(0.5F, 2.4F);
    row("linearize grey", "crt-linearize", kLinearize, half, {grey24, grey24, grey24, 1.0F});
    const Params toe = with(kLinearize, {{u"gun_cutoff"_s, 0.06F}, {u"crt_gamma_out"_s, 2.5F}});
    row("linearize white above a toe", "crt-linearize", toe, white, white);
    row("linearize black above a toe", "crt-linearize", toe, black,
        {7.623e-4F, 7.623e-4F, 7.623e-4F, 1.0F});
    row("linearize red without colour", "crt-linearize",
        with(kLinearize, {{u"desaturate"_s, 1.0F}}), red,
        {0.0551583F, 0.0551583F, 0.0551583F, 1.0F}); // 0.299^2.4

    row("gba white", "gba-color", {{u"LCD_COLOR_PROFILE"_s, 1.0F}}, white, white);
    row("gba grey", "gba-color", {{u"LCD_COLOR_PROFILE"_s, 1.0F}}, half,
        {0.413877F, 0.413877F, 0.413877F, 1.0F}); // 0.5^(2.8 / 2.2)
    row("gbc white", "authentic-gbc", kGbc, white, white);
    row("gbc black, lifted by the backing", "authentic-gbc", kGbc, black,
        {0.195257F, 0.195257F, 0.195257F, 1.0F}); // (0.05 * 0.55)^(1 / 2.2)
    row("dmg darkest shade", "dmg-color", {{u"DMG_TINT"_s, 0.0F}}, black,
        {0.184F, 0.184F, 0.184F, 0.0F});
    row("dmg lightest shade", "dmg-color", {{u"DMG_TINT"_s, 0.0F}}, white,
        {0.665F, 0.665F, 0.665F, 0.0F});
    row("dmg lightest shade, tinted", "dmg-color", {{u"DMG_TINT"_s, 1.0F}}, white,
        {0.62F, 0.70F, 0.36F, 1.0F});
    row("composite grey", "crt-consumer-composite", kComposite, half, half);
    row("wiggled and smeared grey", "rewind", {{u"wiggle"_s, 10.0F}, {u"smear"_s, 1.0F}}, half,
        half);
    row("resampled grey", "smooth-resample", {}, half, half);
    row("reduced", "crt-abl-tiles", {}, half, half);
    row("blurred", "crt-halation-blur-h", {{u"halation_sigma"_s, 8.0F}}, half, half);
    row("low-passed", "crt-horizontal",
        {{u"signal_bandwidth_mhz"_s, 2.0F}, {u"signal_active_us"_s, 53.3F}}, half, half);
}

void TestExampleShaderResults::flatFields()
{
    QFETCH(QString, component);
    QFETCH(Params, params);
    QFETCH(Pixel, input);
    QFETCH(Pixel, expected);
    const Picture picture({32, 24}, input);
    const Picture result = evaluate(component, {{.picture = &picture}}, {20, 16}, params);
    const Picture ideal({20, 16}, expected);
    QVERIFY2(difference(result, ideal) <= kRounding,
             QByteArray::number(difference(result, ideal)).constData());
    QVERIFY(std::fabs(result.pixels.front()[3] - expected[3]) <= kRounding);
}

void TestExampleShaderResults::linearizeIsMonotonic()
{
    Picture ramp({256, 1});
    for (int x = 0; x < 256; ++x)
        ramp.at(x, 0) = {float(x) / 255.0F, float(x) / 255.0F, float(x) / 255.0F, 1.0F};
    for (const float cutoff : {0.0F, 0.06F, 0.2F}) {
        const Picture light = evaluate(u"crt-linearize"_s, {{.picture = &ramp}}, {256, 1},
                                       with(kLinearize, {{u"gun_cutoff"_s, cutoff}}));
        for (int x = 1; x < 256; ++x)
            QVERIFY(light.at(x, 0)[0] > light.at(x - 1, 0)[0]);
    }
}

void TestExampleShaderResults::ghosting_data()
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

void TestExampleShaderResults::ghosting()
{
    QFETCH(QString, component);
    QFETCH(bool, isRising);
    QFETCH(float, speed);
    QFETCH(float, seconds);
    QFETCH(bool, isHdr);
    QFETCH(float, expected);
    const Picture drive = grey({2, 2}, isRising ? 1.0F : 0.0F);
    const Picture last = grey({2, 2}, isRising ? 0.0F : 1.0F);
    const Picture cells = evaluate(
            component, {{.picture = &drive}, {.picture = &last}}, {2, 2},
            {{u"ghost_rise"_s, 0.5F}, {u"ghost_fall"_s, 0.4F}, {u"ghost_hdr_speed"_s, speed}},
            [=](FrameState &state) {
                state.frameSeconds = seconds;
                state.hdrOutputActive = isHdr;
            });
    QVERIFY(difference(cells, grey({2, 2}, expected)) < kRounding);
}

// The mean light of a white field: 1 - depth * (1 - aperture / 3), whatever the scale.
void TestExampleShaderResults::panelMeanBrightness_data()
{
    QTest::addColumn<QSize>("viewport");
    QTest::addColumn<Params>("changes");
    QTest::addColumn<double>("expected");
    const double usual = 1.0 - 0.4 * 0.4 * (1.0 - 0.91 * 0.97 / 3.0);
    QTest::newRow("integer scale") << QSize(192, 128) << Params() << usual;
    QTest::newRow("odd scale") << QSize(173, 119) << Params() << usual;
    QTest::newRow("smaller than the panel") << QSize(20, 13) << Params() << usual;
    QTest::newRow("no contrast") << QSize(173, 119) << Params({{u"lcd_grid_contrast"_s, 0.0F}})
                                 << 1.0;
    QTest::newRow("full contrast, undiffused")
            << QSize(192, 128) << Params({{u"lcd_grid_contrast"_s, 1.0F}, {u"lcd_diffuse"_s, 0.0F}})
            << 0.91 * 0.97 / 3.0;
}

void TestExampleShaderResults::panelMeanBrightness()
{
    QFETCH(QSize, viewport);
    QFETCH(Params, changes);
    QFETCH(double, expected);
    const Picture white = grey({24, 16}, 1.0F);
    const Picture shown =
            evaluate(u"gba-subpixel"_s, {{.picture = &white}}, viewport, with(kSubpixel, changes));
    for (std::size_t c = 0; c < 3; ++c) {
        double light = 0.0;
        for (const Pixel &pixel : shown.pixels)
            light += decoded(double(pixel[c]));
        light /= double(shown.pixels.size());
        QVERIFY2(std::fabs(light - expected) < 2e-3, QByteArray::number(light).constData());
    }
}

void TestExampleShaderResults::crosstalkMovesLightAlongItsColumnOnly()
{
    Picture cells({5, 81}, {0.0F, 0.0F, 0.0F, 1.0F});
    cells.at(2, 40) = {1.0F, 1.0F, 1.0F, 1.0F};
    const Picture result = evaluate(u"dmg-crosstalk"_s, {{.picture = &cells}}, cells.size,
                                    {{u"dmg_crosstalk"_s, 1.0F}, {u"dmg_crosstalk_reach"_s, 1.5F}});
    double column = 0.0;
    double elsewhere = 0.0;
    for (int y = 0; y < 81; ++y) {
        for (int x = 0; x < 5; ++x)
            (x == 2 ? column : elsewhere) += double(result.at(x, y)[0]);
    }
    QVERIFY(std::fabs(column - 1.0) < 1e-4);
    QCOMPARE(elsewhere, 0.0);
    QVERIFY(result.at(2, 41)[0] > 0.05F);
}

void TestExampleShaderResults::shadowMovesByTheGap()
{
    // A dark cell on clear glass (grey, so a tint of 0 in alpha).
    Picture cells({21, 21}, {0.665F, 0.665F, 0.665F, 0.0F});
    cells.at(10, 10) = {0.184F, 0.184F, 0.184F, 0.0F};
    const Picture shadow = evaluate(u"dmg-occlusion"_s, {{.picture = &cells}}, cells.size,
                                    {{u"dmg_shadow_offset"_s, 2.5F}});
    double sum = 0.0;
    double momentX = 0.0;
    double momentY = 0.0;
    for (int y = 0; y < 21; ++y) {
        for (int x = 0; x < 21; ++x) {
            const double missing = decoded(0.665) - decoded(double(shadow.at(x, y)[0]));
            sum += missing;
            momentX += missing * (x - 10);
            momentY += missing * (y - 10);
        }
    }
    QVERIFY(std::fabs(sum - (decoded(0.665) - decoded(0.184))) < 1e-4);
    QVERIFY2(std::fabs(momentX / sum - 2.5) < 1e-2, QByteArray::number(momentX / sum).constData());
    QVERIFY(std::fabs(momentY / sum - 2.5) < 1e-2);
}

void TestExampleShaderResults::scalerKeepsStraightEdges_data()
{
    QTest::addColumn<std::function<bool(int, int)>>("isWhite");
    const auto row = [](const char *name, const std::function<bool(int, int)> &isWhite) {
        QTest::newRow(name) << isWhite;
    };
    row("flat", [](int, int) { return true; });
    row("vertical edge", [](int x, int) { return x >= 6; });
    row("horizontal edge", [](int, int y) { return y >= 5; });
    row("vertical line", [](int x, int) { return x == 6; });
}

void TestExampleShaderResults::scalerKeepsStraightEdges()
{
    QFETCH(std::function<bool(int, int)>, isWhite);
    Picture picture({14, 12});
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 14; ++x) {
            if (isWhite(x, y))
                picture.at(x, y) = {1.0F, 1.0F, 1.0F, 1.0F};
        }
    }
    const PresetEntry &preset = presetEntry(u"no-pixels"_s);
    PresetDrawing drawing(preset);
    const Picture tripled =
            drawing.draw(picture, {.params = initialParams(preset), .viewport = {42, 36}}, 5);
    QCOMPARE(tripled.size, QSize(42, 36));
    for (int y = 0; y < 36; ++y) {
        for (int x = 0; x < 42; ++x)
            QCOMPARE(tripled.at(x, y)[0], picture.at(x / 3, y / 3)[0]);
    }
}

void TestExampleShaderResults::scalerSmoothsAStaircase()
{
    Picture picture({15, 15});
    for (int y = 0; y < 15; ++y) {
        for (int x = 0; x < 15; ++x) {
            if (x > y)
                picture.at(x, y) = {1.0F, 1.0F, 1.0F, 1.0F};
        }
    }
    const PresetEntry &preset = presetEntry(u"no-pixels"_s);
    const auto tripled = [&](float smoothEdges) {
        PresetDrawing drawing(preset);
        const Params params = with(initialParams(preset), {{u"SFX_SAA"_s, smoothEdges}});
        return drawing.draw(picture, {.params = params, .viewport = {45, 45}}, 5);
    };
    // In the middle of the edge: of the dark pixel (7, 7) the upper right corner is cut.
    const Picture smooth = tripled(1.0F);
    QCOMPARE(smooth.at(22, 22)[0], 0.0F);
    QVERIFY(smooth.at(23, 21)[0] > 0.5F);
    QVERIFY(smooth.at(23, 21)[0] < 1.0F);
    const Picture hard = tripled(0.0F);
    QCOMPARE(hard.at(23, 21)[0], 1.0F);
    QCOMPARE(hard.at(22, 22)[0], 0.0F);
    QCOMPARE(hard.at(21, 23)[0], 0.0F);
}

void TestExampleShaderResults::resamplerAveragesWhenShrinking()
{
    const Picture picture = noise({30, 20});
    const Picture small = evaluate(u"smooth-resample"_s, {{.picture = &picture}}, {10, 5});
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 10; ++x) {
            double light = 0.0;
            for (int i = 0; i < 12; ++i)
                light += decoded(double(picture.at(3 * x + i % 3, 4 * y + i / 3)[1]));
            QVERIFY(std::fabs(decoded(double(small.at(x, y)[1])) - light / 12.0) < 1e-4);
        }
    }
    // Nothing rings: enlarging a step stays within its levels.
    Picture step({8, 4}, {0.2F, 0.2F, 0.2F, 1.0F});
    for (int y = 0; y < 4; ++y) {
        for (int x = 4; x < 8; ++x)
            step.at(x, y) = {0.8F, 0.8F, 0.8F, 1.0F};
    }
    const Picture large = evaluate(u"smooth-resample"_s, {{.picture = &step}}, {61, 17});
    for (const Pixel &pixel : large.pixels)
        QVERIFY(pixel[0] > 0.2F - 1e-4F && pixel[0] < 0.8F + 1e-4F);
}

void TestExampleShaderResults::smearLeavesLumaAlone()
{
    const Picture picture = noise({40, 8}, 0.6F);
    const Picture result = evaluate(u"rewind"_s, {{.picture = &picture, .linearFilter = true}},
                                    picture.size, {{u"wiggle"_s, 0.0F}, {u"smear"_s, 1.0F}});
    QVERIFY(difference(result, picture) > 0.05F);
    const auto luma = [](const Pixel &p) { return 0.299F * p[0] + 0.587F * p[1] + 0.114F * p[2]; };
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        QVERIFY(std::fabs(luma(result.pixels[i]) - luma(picture.pixels[i])) < 1e-4F);
}

void TestExampleShaderResults::tapeRunsWithTheFrameCounter()
{
    const Picture picture = grey({64, 48}, 0.5F);
    const auto frame = [&](std::uint32_t count, int direction, float speed) {
        return evaluate(u"rewind-noise"_s, {{.picture = &picture}}, picture.size,
                        {{u"noiseAmount"_s, 0.5F}, {u"lineNoise"_s, 0.5F}, {u"tapeSpeed"_s, speed}},
                        [=](FrameState &state) {
                            state.frameCount = count;
                            state.frameDirection = direction;
                        });
    };
    QVERIFY(difference(frame(10, 1, 1.0F), frame(11, 1, 1.0F)) > 0.1F);
    QVERIFY(difference(frame(10, 1, 1.0F), frame(10, -1, 1.0F)) > 0.1F);
    QCOMPARE(difference(frame(10, 1, 0.0F), frame(11, 1, 0.0F)), 0.0F);
    // The grain's mean is that of the picture.
    double sum = 0.0;
    for (std::uint32_t count = 0; count < 20; ++count)
        sum += mean(frame(count, 1, 1.0F), 0);
    QVERIFY2(std::fabs(sum / 20.0 - 0.5) < 0.01, QByteArray::number(sum / 20.0).constData());
}

void TestExampleShaderResults::hdrBoost_data()
{
    QTest::addColumn<float>("headroom"); // 0: SDR
    QTest::addColumn<Pixel>("input");
    QTest::addColumn<Pixel>("expected");
    const Pixel red = {1.0F, 0.0F, 0.0F, 1.0F};
    const Pixel colour = {0.9F, 0.4F, 0.1F, 0.5F};
    QTest::newRow("SDR: as it is") << 0.0F << colour << colour;
    QTest::newRow("headroom 1: decoded")
            << 1.0F << colour << Pixel({0.793112F, 0.133209F, 0.00630957F, 0.5F});
    const Pixel half = {0.5F, 0.5F, 0.5F, 1.0F};
    QTest::newRow("greys: decoded")
            << 4.0F << half << Pixel({0.217638F, 0.217638F, 0.217638F, 1.0F});
    QTest::newRow("red at headroom 1.2") << 1.2F << red << Pixel({1.1F, 0.0F, 0.0F, 1.0F});
    QTest::newRow("red at headroom 2") << 2.0F << red << Pixel({1.5F, 0.0F, 0.0F, 1.0F});
    QTest::newRow("red at headroom 8") << 8.0F << red << Pixel({1.5F, 0.0F, 0.0F, 1.0F});
}

void TestExampleShaderResults::hdrBoost()
{
    QFETCH(float, headroom);
    QFETCH(Pixel, input);
    QFETCH(Pixel, expected);
    const Picture picture({4, 4}, input);
    const Picture result = evaluate(u"hdr-color-boost"_s, {{.picture = &picture}}, {4, 4}, {},
                                    headroom > 0.0F ? hdr(headroom) : Tweak());
    QVERIFY(difference(result, Picture({4, 4}, expected)) < kRounding);
    QVERIFY(std::fabs(result.at(0, 0)[3] - expected[3]) < kRounding);
}

QTEST_GUILESS_MAIN(TestExampleShaderResults)
#include "tst_ExampleShaderResults.moc"
