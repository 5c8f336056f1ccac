#include "ShaderTesting.h"

#include <QTest>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace RenderGraphManifestData;

// Numbers that are known beforehand, computed by the real shaders on a Vulkan device.

namespace {

constexpr float kExact = 0.0F;

const Params kGbc = {{u"GBC_ADAPT"_s, 1.0F},
                     {u"GBC_BACKING"_s, 0.55F},
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
    row("crt-horizontal", {{u"signal_active_us"_s, 53.3F}}, kExact);
    row("crt-consumer-composite", with(kComposite, {{u"composite_strength"_s, 0.0F}}), kExact);
    row("gba-color", {}, kExact);
    row("authentic-gbc", with(kGbc, {{u"LCD_COLOR_PROFILE"_s, 0.0F}}), kExact);
    row("dmg-crosstalk", {{u"dmg_crosstalk_reach"_s, 1.5F}}, kExact);
    row("dmg-occlusion", {}, kRounding);
    row("rewind-noise", {{u"tapeSpeed"_s, 1.0F}}, kExact);
}

void TestExampleShaderResults::neutralValuesLeaveThePictureAlone()
{
    QFETCH(QString, component);
    QFETCH(Params, params);
    QFETCH(float, tolerance);
    const FloatImage picture = noise({24, 18});
    const FloatImage result = evaluate(component, {{.picture = &picture}}, picture.size, params,
                                       [](FrameState &state) { state.frameCount = 77; });
    QVERIFY(areAlike(result, picture, tolerance));
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
    row("linearize grey above a toe", "crt-linearize", toe, half,
        {0.202864F, 0.202864F, 0.202864F, 1.0F});
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
    row("low-passed", "crt-horizontal",
        {{u"crt_gamma_out"_s, 2.4F},
         {u"signal_bandwidth_mhz"_s, 2.0F},
         {u"signal_active_us"_s, 53.3F}},
        half, half);
}

void TestExampleShaderResults::flatFields()
{
    QFETCH(QString, component);
    QFETCH(Params, params);
    QFETCH(Pixel, input);
    QFETCH(Pixel, expected);
    const FloatImage picture({32, 24}, input);
    const FloatImage result = evaluate(component, {{.picture = &picture}}, {20, 16}, params);
    QVERIFY(areAlike(result, FloatImage({20, 16}, expected), kRounding));
    QVERIFY(isNear(result.at(0, 0)[3], expected[3], kRounding));
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
    const FloatImage picture({4, 4}, input);
    const FloatImage result =
            evaluate(u"hdr-color-boost"_s, {{.picture = &picture}}, {4, 4}, {}, display(headroom));
    QVERIFY(areAlike(result, FloatImage({4, 4}, expected), kRounding));
    QVERIFY(isNear(result.at(0, 0)[3], expected[3], kRounding));
}

QTEST_GUILESS_MAIN(TestExampleShaderResults)
#include "tst_ExampleShaderResults.moc"
