#include "ShaderTesting.h"

#include <QTest>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace RenderGraphManifestData;

// Numbers that are known beforehand, computed by the real shaders on a Vulkan device.

namespace {

constexpr float kExact = 0.0F;

const Params kLinearize = {{u"crt_gamma_out"_s, 2.4F},
                           {u"gun_cutoff"_s, 0.0F},
                           {u"color_saturation"_s, 1.0F},
                           {u"desaturate"_s, 0.0F}};
const Params kDrive = {
        {u"color_temperature"_s, 0.0F}, {u"desaturate"_s, 0.0F}, {u"mono_warmth"_s, 0.5F}};
const Params kScreen = {
        {u"barrel_distortion"_s, 0.0F}, {u"black_floor"_s, 0.0F},       {u"corner_radius"_s, 0.0F},
        {u"crt_white"_s, 100.0F},       {u"halation_strength"_s, 0.0F}, {u"halation_wide"_s, 1.0F},
        {u"hdr_peak"_s, 0.0F},          {u"mask_pitch"_s, 2.5F},        {u"mask_strength"_s, 0.0F},
        {u"phosphor_gamut"_s, 0.0F},    {u"vignette_strength"_s, 0.0F}};
const Params kComposite = {
        {u"composite_strength"_s, 1.0F},     {u"composite_sharp"_s, 0.6F},
        {u"composite_chroma"_s, 1.1F},       {u"composite_chroma_delay"_s, 0.0F},
        {u"composite_chroma_gain"_s, 1.15F}, {u"composite_chroma_vertical"_s, 0.25F}};
const Params kGbc = {{u"GBC_ADAPT"_s, 1.0F},
                     {u"GBC_BACKING"_s, 0.55F},
                     {u"GBC_EXPAND"_s, 0.0F},
                     {u"GBC_GAMUT"_s, 0.4F},
                     {u"LCD_COLOR_PROFILE"_s, 1.0F}};

// crt-screen over this light, without halation, on a tube face that covers everything.
Picture screen(const Picture &light, const Params &params, const Tweak &tweak = {})
{
    const Picture tile =
            evaluate(u"crt-phosphor-tile"_s, {}, {256, 256},
                     {{u"mask_type"_s, 0.0F}, {u"mask_duty"_s, 0.7F}, {u"mask_edge"_s, 0.06F}});
    const Picture face = grey(light.size, 1.0F);
    const Picture dark;
    return evaluate(u"crt-screen"_s,
                    {{.picture = &tile, .linearFilter = true, .mipmap = true, .wrapMode = 2},
                     {.picture = &face},
                     {.picture = &light},
                     {.picture = &dark},
                     {.picture = &dark}},
                    light.size, params, tweak);
}

} // namespace

class TestExampleShaderResults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void neutralValuesLeaveThePictureAlone_data();
    void neutralValuesLeaveThePictureAlone();
    void flatFields_data();
    void flatFields();
    void meansAreKept_data();
    void meansAreKept();
    void linearizeIsMonotonic();
    void beamLimiterAveragesWholePicture_data();
    void beamLimiterAveragesWholePicture();
    void persistence_data();
    void persistence();
    void halationBlurIsANormalizedGaussian_data();
    void halationBlurIsANormalizedGaussian();
    void maskTransmission_data();
    void maskTransmission();
    void screenHighlights_data();
    void screenHighlights();
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
    row("rewind-noise", {{u"noiseAmount"_s, 0.0F}, {u"lineNoise"_s, 0.0F}, {u"tapeSpeed"_s, 1.0F}},
        kExact);
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
    row("resampled grey", "smooth-resample", {}, half,
        {0.729740F, 0.729740F, 0.729740F, 1.0F}); // 0.5^(1 / 2.2)
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

void TestExampleShaderResults::meansAreKept_data()
{
    QTest::addColumn<QString>("component");
    QTest::addColumn<QSize>("from");
    QTest::addColumn<QSize>("to");
    QTest::newRow("optics-down") << u"crt-optics-down"_s << QSize(1920, 1080) << QSize(320, 240);
    QTest::newRow("optics-down, enlarging")
            << u"crt-optics-down"_s << QSize(200, 100) << QSize(320, 240);
    QTest::newRow("wide-down") << u"crt-halation-wide-down"_s << QSize(320, 240) << QSize(80, 60);
    QTest::newRow("abl-reduce") << u"crt-abl-reduce"_s << QSize(256, 240) << QSize(256, 30);
}

void TestExampleShaderResults::meansAreKept()
{
    QFETCH(QString, component);
    QFETCH(QSize, from);
    QFETCH(QSize, to);
    const Picture picture = noise(from);
    const Picture result = evaluate(component, {{.picture = &picture}}, to);
    for (std::size_t c = 0; c < 3; ++c)
        QVERIFY(std::fabs(mean(result, c) - mean(picture, c)) < 1e-5);
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

// From 4096 columns and any height down to one texel: gain = budget / mean.
void TestExampleShaderResults::beamLimiterAveragesWholePicture_data()
{
    QTest::addColumn<int>("height");
    QTest::addColumn<float>("strength");
    QTest::newRow("240 lines") << 240 << 1.0F;
    QTest::newRow("224 lines") << 224 << 1.0F;
    QTest::newRow("17 lines") << 17 << 1.0F;
    QTest::newRow("288 lines, half") << 288 << 0.5F;
    QTest::newRow("240 lines, off") << 240 << 0.0F;
}

void TestExampleShaderResults::beamLimiterAveragesWholePicture()
{
    QFETCH(int, height);
    QFETCH(float, strength);
    Picture light = noise({4096, height});
    for (int x = 0; x < 900; ++x)
        light.at(x, height - 1) = {16.0F, 8.0F, 4.0F, 1.0F};
    const Picture tiles = evaluate(u"crt-abl-tiles"_s, {{.picture = &light}}, {256, 240});
    const Picture rows = evaluate(u"crt-abl-reduce"_s, {{.picture = &tiles}}, {256, 30});
    const Picture few = evaluate(u"crt-abl-reduce"_s, {{.picture = &rows}}, {8, 30});
    const Picture gain = evaluate(u"crt-abl"_s, {{.picture = &few}}, {1, 1},
                                  {{u"abl_strength"_s, strength}, {u"abl_current_limit"_s, 0.1F}});
    const double current = (mean(light, 0) + mean(light, 1) + mean(light, 2)) / 3.0;
    const double expected = 1.0 - double(strength) * (1.0 - 0.1 / current);
    QVERIFY(current > 0.4);
    QVERIFY2(std::fabs(double(gain.at(0, 0)[0]) - expected) < 2e-5,
             QByteArray::number(double(gain.at(0, 0)[0]) - expected).constData());
}

void TestExampleShaderResults::persistence_data()
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

void TestExampleShaderResults::persistence()
{
    QFETCH(float, retention);
    QFETCH(float, seconds);
    QFETCH(float, expected);
    const Params params = {
            {u"persist_r"_s, retention}, {u"persist_g"_s, 0.0F}, {u"persist_b"_s, 0.0F}};
    const Tweak time = [seconds](FrameState &state) { state.frameSeconds = seconds; };
    const Picture dark = flat({2, 2}, 0.0F, 0.0F, 0.0F, 0.25F);
    const Picture last = grey({2, 2}, 1.0F);
    const Picture tail = evaluate(u"crt-persistence"_s, {{.picture = &dark}, {.picture = &last}},
                                  {2, 2}, params, time);
    QVERIFY(std::fabs(tail.at(0, 0)[0] - expected) < kRounding);
    QCOMPARE(tail.at(0, 0)[1], 0.0F);
    QCOMPARE(tail.at(0, 0)[3], 0.25F);
    // New light is not added to the tail.
    const Picture bright = grey({2, 2}, 2.0F);
    const Picture held = evaluate(u"crt-persistence"_s, {{.picture = &bright}, {.picture = &last}},
                                  {2, 2}, params, time);
    QCOMPARE(held.at(0, 0)[0], 2.0F);
}

void TestExampleShaderResults::halationBlurIsANormalizedGaussian_data()
{
    QTest::addColumn<float>("sigma");
    for (const float sigma : {1.0F, 3.0F, 8.0F})
        QTest::addRow("sigma %g", double(sigma)) << sigma;
}

void TestExampleShaderResults::halationBlurIsANormalizedGaussian()
{
    QFETCH(float, sigma);
    Picture dot({80, 60}, {0.0F, 0.0F, 0.0F, 1.0F});
    dot.at(40, 30) = {1.0F, 1.0F, 1.0F, 1.0F};
    const Params params = {{u"halation_sigma"_s, sigma}};
    const Picture across = evaluate(u"crt-halation-blur-h"_s,
                                    {{.picture = &dot, .linearFilter = true}}, dot.size, params);
    const Picture blurred =
            evaluate(u"crt-halation-blur-v"_s, {{.picture = &across, .linearFilter = true}},
                     dot.size, params);
    double sum = 0.0;
    double spread = 0.0;
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 80; ++x) {
            sum += double(blurred.at(x, y)[0]);
            spread += double(blurred.at(x, y)[0]) * (x - 40) * (x - 40);
        }
    }
    QVERIFY2(std::fabs(sum - 1.0) < 1e-4, QByteArray::number(sum).constData());
    // Cut at three sigma, so slightly narrower.
    QVERIFY2(std::fabs(std::sqrt(spread / sum) / double(sigma) - 1.0) < 0.02,
             QByteArray::number(std::sqrt(spread / sum)).constData());
}

void TestExampleShaderResults::maskTransmission_data()
{
    QTest::addColumn<float>("type");
    QTest::addColumn<float>("duty");
    QTest::addColumn<double>("expected");
    QTest::newRow("grille") << 0.0F << 0.7F << 0.7 / 3.0;
    QTest::newRow("open grille") << 0.0F << 1.0F << 1.0 / 3.0;
    QTest::newRow("dots") << 1.0F << 0.7F << 7.0 * 3.14159265 * 0.7 / 72.0;
    QTest::newRow("slots") << 2.0F << 0.55F << 0.8 * 0.55 / 3.0;
}

void TestExampleShaderResults::maskTransmission()
{
    QFETCH(float, type);
    QFETCH(float, duty);
    QFETCH(double, expected);
    const Picture tile =
            evaluate(u"crt-phosphor-tile"_s, {}, {256, 256},
                     {{u"mask_type"_s, type}, {u"mask_duty"_s, duty}, {u"mask_edge"_s, 0.06F}});
    for (std::size_t c = 0; c < 3; ++c)
        QVERIFY2(std::fabs(mean(tile, c) - expected) < 1e-4,
                 QByteArray::number(mean(tile, c)).constData());
    QVERIFY(std::fabs(mean(tile, 3) - expected) < 1e-4);
    for (const Pixel &pixel : tile.pixels)
        QVERIFY(*std::min_element(pixel.begin(), pixel.end()) >= 0.0F
                && *std::max_element(pixel.begin(), pixel.end()) <= 1.0F);
}

void TestExampleShaderResults::screenHighlights_data()
{
    QTest::addColumn<Params>("changes");
    QTest::addColumn<float>("headroom"); // 0: SDR
    QTest::addColumn<float>("light");
    QTest::addColumn<double>("expected"); // light
    QTest::newRow("SDR") << Params() << 0.0F << 0.5F << 0.5;
    QTest::newRow("SDR ends at white") << Params() << 0.0F << 3.0F << 1.0;
    QTest::newRow("SDR knows no reference white")
            << Params({{u"crt_white"_s, 400.0F}}) << 0.0F << 0.5F << 0.5;
    QTest::newRow("HDR below the knee") << Params() << 4.0F << 3.0F << 3.0;
    QTest::newRow("HDR above the knee") << Params() << 4.0F << 4.0F << 4.0 - std::exp(-1.0);
    QTest::newRow("HDR far above") << Params() << 4.0F << 1000.0F << 4.0;
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

void TestExampleShaderResults::screenHighlights()
{
    QFETCH(Params, changes);
    QFETCH(float, headroom);
    QFETCH(float, light);
    QFETCH(double, expected);
    const Picture field = grey({40, 30}, light);
    const Picture shown =
            screen(field, with(kScreen, changes), headroom > 0.0F ? hdr(headroom) : Tweak());
    const auto signal = float(encoded(expected));
    QVERIFY2(difference(shown, grey(shown.size, signal)) < 1e-4F,
             QByteArray::number(difference(shown, grey(shown.size, signal))).constData());
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
