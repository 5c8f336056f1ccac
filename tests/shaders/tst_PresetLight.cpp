#include "ShaderTesting.h"

#include <QTest>

#include <array>

using namespace Qt::StringLiterals;
using namespace RenderGraphManifestData;

// How much light whole presets keep at their own values, on flat fields.

namespace {

constexpr QSize kSource(20, 12); // which a raster of 240 lines shows
constexpr QSize kViewport(132, 720); // narrow, as all that counts here is down the picture
constexpr float kHeadroom = 4.0F;

// Relative to the source's light, at 18 %, 50 % and 100 % of reference white.
using Kept = std::array<double, 3>;
constexpr std::array<double, 3> kLevels = {0.18, 0.5, 1.0};

struct Stated
{
    const char *preset;
    Kept sdr;
    Kept hdr;
};

// A table stays a table.
// clang-format off

// A check that fails prints the measured value. Copy it here if the preset was meant to change.
constexpr Stated kStated[] = {
    // The tubes: greys are right, but for what their gamma does (crt-pc 2.2 above a toe, crt-consumer
    // 2.5). Full white is limited to .79. In SDR bright greys and white give way to the mask, the more
    // the finer the lines. In HDR all is as much brighter as crt_white says.
    {"crt-pvm", {1.00, 0.87, 0.63}, {1.00, 0.95, 0.79}},
    {"crt-bvm", {0.96, 0.75, 0.53}, {0.96, 0.94, 0.79}},
    {"crt-arcade", {1.00, 0.94, 0.68}, {1.21, 1.14, 0.94}},
    {"crt-pc", {1.11, 0.98, 0.70}, {1.11, 1.00, 0.79}},
    {"crt-bw", {1.00, 0.93, 0.76}, {1.20, 1.12, 0.93}},
    {"crt-consumer", {0.95, 0.90, 0.66}, {1.34, 1.29, 1.09}},
    // The panels: a gamma of 2.8 and dark gaps; a backing that never is black; grey cells on green.
    {"gba-lcd", {0.60, 0.71, 0.71}, {0.60, 0.71, 0.71}},
    {"gameboy-lcd", {1.05, 0.87, 0.74}, {1.05, 0.87, 0.74}},
    {"dmg-lcd", {0.83, 0.49, 0.41}, {0.84, 0.51, 0.44}},
    // These leave the light as it is.
    {"no-pixels", {1.00, 1.00, 1.00}, {1.00, 1.00, 1.00}},
    {"rewind", {1.00, 1.00, 1.00}, {1.00, 1.00, 1.00}},
    {"stock", {1.00, 1.00, 1.00}, {1.00, 1.00, 1.00}},
};

// clang-format on

// The mean luminance of the middle of the shown picture.
double luminance(const FloatImage &shown, bool isHdr)
{
    const QSize half = shown.size / 2;
    const FloatImage middle = painted(half, [&](int x, int y) {
        return shown.at(x + half.width() / 2, y + half.height() / 2);
    });
    const FloatImage light = isHdr ? middle : decoded(middle);
    return 0.2126 * mean(light, 0) + 0.7152 * mean(light, 1) + 0.0722 * mean(light, 2);
}

} // namespace

class TestPresetLight : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lightIsKept_data();
    void lightIsKept();
};

// Over the middle of the screen, within 3 %.
void TestPresetLight::lightIsKept_data()
{
    QTest::addColumn<const PresetEntry *>("preset");
    QTest::addColumn<bool>("isHdr");
    QTest::addColumn<double>("level");
    QTest::addColumn<double>("stated");
    for (const Stated &row : kStated) {
        for (const bool isHdr : {false, true}) {
            for (std::size_t i = 0; i < kLevels.size(); ++i) {
                QTest::addRow("%s %s %g %%", row.preset, isHdr ? "HDR" : "SDR", 100.0 * kLevels[i])
                        << &presetEntry(QString::fromLatin1(row.preset)) << isHdr << kLevels[i]
                        << (isHdr ? row.hdr : row.sdr)[i];
            }
        }
    }
}

void TestPresetLight::lightIsKept()
{
    QFETCH(const PresetEntry *, preset);
    QFETCH(bool, isHdr);
    QFETCH(double, level);
    QFETCH(double, stated);
    PresetDrawing drawing(*preset);
    const FloatImage shown = drawing.draw(grey(kSource, float(encoded(level))),
                                          {.params = initialParams(*preset),
                                           .viewport = kViewport,
                                           .hdrOutputActive = isHdr,
                                           .hdrHeadroom = isHdr ? kHeadroom : 1.0F});
    const double kept = luminance(shown, isHdr) / level;
    QVERIFY(isNear(kept / stated, 1.0, 0.03));
}

QTEST_GUILESS_MAIN(TestPresetLight)
#include "tst_PresetLight.moc"
