#include "ShaderTesting.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

// The tube's signal and beam: composite signal, video amplifier, raster and spot.

namespace {

constexpr double kTwoPi = 6.283185307179586;

// On a display with headroom for every line.
FloatImage beam(const FloatImage &light, QSize size, const Params &params, std::uint32_t frame = 0)
{
    return evaluate(u"crt-scanline"_s, {{.picture = &light, .linearFilter = true}}, size, params,
                    [frame](FrameState &state) {
                        display(100.0F)(state);
                        state.frameCount = frame;
                    });
}

// The light that halation starts from, as the tube's face shows it.
FloatImage faceLight(const FloatImage &light, QSize size, const Params &params)
{
    const FloatImage face = grey({320, 240}, 0.0F);
    return evaluate(u"crt-optics-down"_s, {{.picture = &face}, {.picture = &light}}, size, params);
}

FloatImage amplified(const FloatImage &light, float megahertz, float microseconds,
                     float gamma = 2.4F)
{
    return evaluate(u"crt-horizontal"_s, {{.picture = &light, .linearFilter = true}}, light.size,
                    {{u"crt_gamma_out"_s, gamma},
                     {u"signal_bandwidth_mhz"_s, megahertz},
                     {u"signal_active_us"_s, microseconds}});
}

double darkest(const FloatImage &picture)
{
    float least = 1.0F;
    for (const Pixel &pixel : picture.pixels)
        least = std::min(least, pixel[1]);
    return double(least);
}

FloatImage litRow(QSize size, int row)
{
    return painted(size, [row](int, int y) { return y == row; });
}

FloatImage litPixel(QSize size, const Pixel &light)
{
    FloatImage picture = grey(size, 0.0F);
    picture.at(size.width() / 2, size.height() / 2) = light;
    return picture;
}

constexpr double kCarrierCycles = 190.909; // on a line
constexpr int kColumns = 2048;

FloatImage composite(const FloatImage &source, const Params &changes, const Tweak &tweak = {})
{
    return evaluate(u"crt-consumer-composite"_s, {{.picture = &source}},
                    {kColumns, source.size.height()}, with(kComposite, changes), tweak);
}

using Yiq = std::array<double, 3>;

// SMPTE 170M.
Yiq toYiq(const Pixel &pixel)
{
    const auto r = double(pixel[0]);
    const auto g = double(pixel[1]);
    const auto b = double(pixel[2]);
    return {0.299 * r + 0.587 * g + 0.114 * b, 0.5959 * r - 0.2746 * g - 0.3213 * b,
            0.2115 * r - 0.5227 * g + 0.3112 * b};
}

Pixel fromYi(double y, double i)
{
    return {float(y + 0.9560 * i), float(y - 0.2720 * i), float(y - 1.1067 * i), 1.0F};
}

// A 256-pixel line of grey whose luma or I swings by 0.2, so many times.
FloatImage wave(std::size_t component, double cycles)
{
    return painted({256, 4}, [=](int x, int) {
        const double swing = 0.2 * std::cos(kTwoPi * cycles * (x + 0.5) / 256.0);
        return component == 0 ? fromYi(0.5 + swing, 0.0) : fromYi(0.5, swing);
    });
}

// What of that wave there is in a row.
Wave analysed(const FloatImage &picture, int row, std::size_t component, double cycles)
{
    QList<double> values;
    for (int x = 0; x < picture.size.width(); ++x)
        values.append(toYiq(picture.at(x, row))[component]);
    return waveIn(values, cycles);
}

// The distance between two phases, in cycles.
double apart(double a, double b)
{
    return std::fabs(a - b - std::round(a - b));
}

} // namespace

class TestCrtRaster : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void compositeBandwidths_data();
    void compositeBandwidths();
    void chromaComesLate();
    void chromaIsSharedWithTheLineAbove_data();
    void chromaIsSharedWithTheLineAbove();
    void zonePlateTurnsColourfulAtTheCarrier();
    void dotsCrawl_data();
    void dotsCrawl();
    void dotsCrawlOnAnyDisplay_data();
    void dotsCrawlOnAnyDisplay();
    void bandwidthIsThreeDecibelsDownAtTheCutoff_data();
    void bandwidthIsThreeDecibelsDownAtTheCutoff();
    void blackLineOnWhite_data();
    void blackLineOnWhite();
    void bandwidthDoesNotJumpAtZero();
    void rowsLieOnLines_data();
    void rowsLieOnLines();
    void halationStartsFromTheFace_data();
    void halationStartsFromTheFace();
    void halationHasNoLightBeyondTheCorners();
    void fieldsAlternate_data();
    void fieldsAlternate();
    void beamKeepsItsEnergy_data();
    void beamKeepsItsEnergy();
    void detailKeepsItsEnergy();
    void spotIsRoundAndGrowsWithTheLight_data();
    void spotIsRoundAndGrowsWithTheLight();
    void gunsHaveSpotsOfTheirOwn();
    void spotIsGaussian();
    void convergenceMovesOneGun_data();
    void convergenceMovesOneGun();
};

void TestCrtRaster::compositeBandwidths_data()
{
    QTest::addColumn<int>("component");
    QTest::addColumn<double>("cycles");
    QTest::addColumn<Params>("params");
    QTest::addColumn<double>("kept"); // by the Gaussian, and by holding the pixels
    const auto chroma = [](float spread, float gain) {
        return Params({{u"composite_chroma"_s, spread}, {u"composite_chroma_gain"_s, gain}});
    };
    QTest::newRow("chroma, narrow") << 1 << 32.0 << chroma(0.5F, 1.0F) << 0.9022;
    QTest::newRow("chroma, usual") << 1 << 32.0 << chroma(1.35F, 1.0F) << 0.5555;
    QTest::newRow("chroma, wide") << 1 << 32.0 << chroma(3.0F, 1.0F) << 0.0607;
    QTest::newRow("chroma, amplified") << 1 << 32.0 << chroma(1.35F, 1.5F) << 0.8332;
    QTest::newRow("luma, soft") << 0 << 64.0 << Params({{u"composite_sharp"_s, 0.2F}}) << 0.0206;
    QTest::newRow("luma, usual") << 0 << 64.0 << Params({{u"composite_sharp"_s, 0.6F}}) << 0.5917;
    QTest::newRow("luma, sharp") << 0 << 64.0 << Params({{u"composite_sharp"_s, 1.0F}}) << 0.7740;
}

void TestCrtRaster::compositeBandwidths()
{
    QFETCH(int, component);
    QFETCH(double, cycles);
    QFETCH(Params, params);
    QFETCH(double, kept);
    const auto which = std::size_t(component);
    const FloatImage result = composite(wave(which, cycles), params);
    const double amplitude = analysed(result, 1, which, cycles).amplitude / 0.2;
    QVERIFY(isNear(amplitude, kept, 0.01));
}

void TestCrtRaster::chromaComesLate()
{
    for (const float delay : {-1.5F, 0.0F, 2.0F}) {
        const FloatImage result = composite(wave(1, 32.0), {{u"composite_chroma_delay"_s, delay}});
        // 256 samples to a line, 32 cycles: a cycle is 8 samples.
        const double phase = analysed(result, 1, 1, 32.0).phase;
        QVERIFY(isNear(apart(phase, double(delay) / 8.0), 0.0, 0.003));
    }
}

void TestCrtRaster::chromaIsSharedWithTheLineAbove_data()
{
    QTest::addColumn<float>("share");
    QTest::addColumn<double>("expected");
    QTest::newRow("not") << 0.0F << 0.2;
    QTest::newRow("a quarter") << 0.25F << 0.1;
    QTest::newRow("half") << 0.5F << 0.0;
}

// Lines of opposite colours.
void TestCrtRaster::chromaIsSharedWithTheLineAbove()
{
    QFETCH(float, share);
    QFETCH(double, expected);
    const FloatImage picture =
            painted({256, 4}, [](int, int y) { return fromYi(0.5, y % 2 == 0 ? 0.2 : -0.2); });
    const FloatImage result = composite(picture, {{u"composite_chroma_vertical"_s, share}});
    const double even = toYiq(result.at(1000, 2))[1];
    const double odd = toYiq(result.at(1000, 3))[1];
    QVERIFY(isNear(even, expected, 1e-3));
    QVERIFY(isNear(odd, -expected, 1e-3));
}

// Grey whose frequency rises from 0 to 384 cycles a line takes the colour carrier's in the middle.
void TestCrtRaster::zonePlateTurnsColourfulAtTheCarrier()
{
    const FloatImage plate = painted({1024, 2}, [](int x, int) {
        const double at = (x + 0.5) / 1024.0;
        return fromYi(0.5 + 0.25 * std::cos(0.5 * kTwoPi * 384.0 * at * at), 0.0);
    });
    const FloatImage result = composite(plate, {});
    double most = 0.0;
    double where = 0.0;
    double elsewhere = 0.0;
    for (int x = 0; x < kColumns; ++x) {
        const double at = (x + 0.5) / kColumns;
        const Yiq yiq = toYiq(result.at(x, 1));
        const double chroma = std::hypot(yiq[1], yiq[2]);
        where = chroma > most ? at : where;
        most = std::max(most, chroma);
        // Beyond what the chroma filter lets past.
        if (std::fabs(at - kCarrierCycles / 384.0) > 0.3)
            elsewhere = std::max(elsewhere, chroma);
    }
    // Half of it gets past the trap: 0.25 * 0.5, and 0.944 of that as the pixels are held.
    QVERIFY(isNear(most, 0.118, 0.006));
    QVERIFY(isNear(where, kCarrierCycles / 384.0, 0.02));
    QVERIFY(isNear(elsewhere, 0.0, 0.02));
}

void TestCrtRaster::dotsCrawl_data()
{
    QTest::addColumn<float>("seconds");
    QTest::addColumn<quint32>("frame");
    QTest::addColumn<double>("cycles"); // that the carrier is on, 0.75 for each field of 1/60 s
    QTest::newRow("the beginning") << 1.0F / 60.0F << 0U << 0.0;
    QTest::newRow("1 frame") << 1.0F / 60.0F << 1U << 0.75;
    QTest::newRow("2 frames") << 1.0F / 60.0F << 2U << 0.5;
    QTest::newRow("3 frames") << 1.0F / 60.0F << 3U << 0.25;
    QTest::newRow("an hour") << 1.0F / 60.0F << 216003U << 0.25;
    QTest::newRow("3 frames, a display of 144 Hz") << 1.0F / 144.0F << 3U << 0.25;
}

// What is left of the carrier in the luma of a red field.
void TestCrtRaster::dotsCrawl()
{
    QFETCH(float, seconds);
    QFETCH(quint32, frame);
    QFETCH(double, cycles);
    const FloatImage result = composite(flat({256, 4}, 1.0F, 0.0F, 0.0F),
                                        {{u"composite_sharp"_s, 1.0F}}, [&](FrameState &state) {
                                            state.frameSeconds = seconds;
                                            state.frameCount = frame;
                                        });
    const Wave first = analysed(result, 0, 0, kCarrierCycles);
    // 0.632 is red's chroma, 0.130 what trap and filter leave of it.
    QVERIFY(isNear(first.amplitude, 0.0823, 0.002));
    // Red's colour stands at atan2(Q, I), which leads the carrier.
    const double red = std::atan2(0.2115, 0.5959) / kTwoPi;
    QVERIFY(isNear(apart(first.phase, red - cycles), 0.0, 0.005));
    const Wave second = analysed(result, 1, 0, kCarrierCycles);
    QVERIFY(isNear(apart(second.phase, first.phase + 0.5), 0.0, 0.005));
}

// A display whose frames are up to 10 % early or late. It drops one in twenty and pauses once for a
// second. The application counts the emulated frames in the time that has passed.
void TestCrtRaster::dotsCrawlOnAnyDisplay_data()
{
    QTest::addColumn<double>("rate");
    for (const double rate : {24.0, 55.0, 60.0, 75.0, 165.0, 240.0})
        QTest::addRow("%g Hz", rate) << rate;
}

void TestCrtRaster::dotsCrawlOnAnyDisplay()
{
    QFETCH(double, rate);
    const FloatImage field = flat({256, 4}, 1.0F, 0.0F, 0.0F);
    double time = 0.0;
    double start = 0.0;
    for (int shown = 0; shown < 24; ++shown) {
        const double jitter = 0.1 * (shown % 3 - 1);
        const double frames = shown % 20 == 19 ? 2.0 : 1.0 + jitter;
        const double seconds = shown == 20 ? 1.0 : frames / rate;
        time += seconds;
        const FloatImage result =
                composite(field, {{u"composite_sharp"_s, 1.0F}}, [&](FrameState &state) {
                    state.frameSeconds = float(seconds);
                    state.frameCount = quint32(60.0 * time);
                });
        // 0.75 of a cycle for each field of 1/60 s.
        const double phase =
                analysed(result, 0, 0, kCarrierCycles).phase + 0.75 * std::floor(60.0 * time);
        if (shown == 0)
            start = phase;
        QVERIFY(isNear(apart(phase, start), 0.0, 0.005));
    }
}

void TestCrtRaster::bandwidthIsThreeDecibelsDownAtTheCutoff_data()
{
    QTest::addColumn<float>("megahertz");
    QTest::addColumn<float>("gamma");
    for (const float megahertz : {1.0F, 3.0F, 6.0F, 12.0F})
        QTest::addRow("%g MHz", double(megahertz)) << megahertz << 2.4F;
    QTest::newRow("guns of another gamma") << 3.0F << 2.0F;
}

// Of the voltage, as an amplifier is measured.
void TestCrtRaster::bandwidthIsThreeDecibelsDownAtTheCutoff()
{
    QFETCH(float, megahertz);
    QFETCH(float, gamma);
    // A whole number of cycles over the line, at the cutoff.
    const double cycles = double(megahertz) * 50.0;
    const FloatImage line = painted({4096, 1}, [=](int x, int) {
        const double voltage = 0.5 + 0.4 * std::cos(kTwoPi * cycles * (x + 0.5) / 4096.0);
        return std::pow(voltage, double(gamma));
    });
    const FloatImage result = amplified(line, megahertz, 50.0F, gamma);
    QList<double> voltages;
    for (const Pixel &pixel : result.pixels)
        voltages.append(std::pow(double(pixel[1]), 1.0 / double(gamma)));
    const double decibels = 20.0 * std::log10(waveIn(voltages, cycles).amplitude / 0.4);
    QVERIFY(isNear(decibels, -3.01, 0.1));
}

void TestCrtRaster::blackLineOnWhite_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<double>("expected"); // (2 - 2 Phi(half a pixel / sigma))^2.4
    QTest::newRow("320 columns") << 320 << 0.00113;
    QTest::newRow("512 columns") << 512 << 0.0319;
}

// What a voltage of 3 MHz leaves in the middle of a pixel that is black among white ones; filtered
// light would leave 0.06 and 0.24.
void TestCrtRaster::blackLineOnWhite()
{
    QFETCH(int, columns);
    QFETCH(double, expected);
    FloatImage line = grey({columns, 1}, 1.0F);
    line.at(columns / 2, 0) = {0.0F, 0.0F, 0.0F, 1.0F};
    const FloatImage light =
            evaluate(u"crt-linearize"_s, {{.picture = &line}}, {4096, 1}, kLinearize);
    const FloatImage result = amplified(light, 3.0F, 53.333332F);
    QVERIFY(isNear(darkest(result), expected, 5e-4 + 0.05 * expected));

    // The same where the filter knows the picture's pixels.
    const RenderGraphManifestData::PresetEntry &preset = presetEntry(u"crt-pvm");
    FrameState state;
    state.params = with(initialParams(preset),
                        {{u"signal_bandwidth_mhz"_s, 3.0F},
                         {u"gun_cutoff"_s, 0.0F},
                         {u"abl_strength"_s, 0.0F}});
    const FloatImage drawn = PresetDrawing(preset).draw(line, state, 6);
    QVERIFY(isNear(darkest(drawn), expected, 5e-4 + 0.05 * expected));
}

// 0 means no filter, and a little more is hardly a filter.
void TestCrtRaster::bandwidthDoesNotJumpAtZero()
{
    const FloatImage light = noise({64, 1});
    QVERIFY(areAlike(amplified(light, 0.0F, 50.0F), light, 0.0F));
    QVERIFY(areAlike(amplified(light, 0.002F, 50.0F), light, 0.004F));
}

void TestCrtRaster::rowsLieOnLines_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<float>("lines");
    QTest::addColumn<float>("offset");
    QTest::addColumn<int>("row"); // the one that is lit
    QTest::addColumn<double>("middle"); // of its light, in parts of the face's height
    QTest::addColumn<double>("light"); // that it gives, in parts of the face

    const auto row = [](const char *name, int rows, float lines, float offset, int lit,
                        double middle, double light) {
        QTest::newRow(name) << rows << lines << offset << lit << middle << light;
    };
    row("224 fill the face by themselves, top", 224, 0.0F, 0.0F, 0, 0.5 / 224.0, 1.0 / 224.0);
    row("224 fill the face by themselves, bottom", 224, 0.0F, 0.0F, 223, 223.5 / 224.0,
        1.0 / 224.0);
    row("240 by themselves", 240, 0.0F, 0.0F, 100, 100.5 / 240.0, 1.0 / 240.0);
    row("256 by themselves", 256, 0.0F, 0.0F, 100, 100.5 / 256.0, 1.0 / 256.0);
    row("480 by themselves", 480, 0.0F, 0.0F, 100, 100.5 / 480.0, 1.0 / 480.0);
    row("600 by themselves", 600, 0.0F, 0.0F, 100, 100.5 / 600.0, 1.0 / 600.0);
    // Lines 238 and 239, of which the former is shared with the row above: 3 rows are 5 lines.
    row("144 by themselves take 240", 144, 0.0F, 0.0F, 143, 239.1 / 240.0, 1.0 / 144.0);
    // Lines 151 and 152, in the same way: 2 rows are 3 lines.
    row("320 by themselves take 480", 320, 0.0F, 0.0F, 101, 152.16667 / 480.0, 1.0 / 320.0);
    row("224 on 240, top", 224, 240.0F, 8.0F, 0, 8.5 / 240.0, 1.0 / 240.0);
    row("224 on 240, bottom", 224, 240.0F, 8.0F, 223, 231.5 / 240.0, 1.0 / 240.0);
    row("160 on 240", 160, 240.0F, 40.0F, 100, 140.5 / 240.0, 1.0 / 240.0);
    row("240 on 480", 240, 480.0F, 0.0F, 100, 201.0 / 480.0, 2.0 / 480.0);
    row("224 on 480", 224, 480.0F, 16.0F, 223, 463.0 / 480.0, 2.0 / 480.0);
    row("200 on 400", 200, 400.0F, 0.0F, 199, 399.0 / 400.0, 2.0 / 400.0);
    row("480 on 240", 480, 240.0F, 0.0F, 101, 50.5 / 240.0, 0.5 / 240.0);
    // A line shows 1.2 rows: line 83 has 0.8 of row 100, line 84 the rest.
    row("240 on 200", 240, 200.0F, 0.0F, 100, 83.7 / 200.0, 1.0 / 240.0);
}

void TestCrtRaster::rowsLieOnLines()
{
    QFETCH(int, rows);
    QFETCH(float, lines);
    QFETCH(float, offset);
    QFETCH(int, row);
    QFETCH(double, middle);
    QFETCH(double, light);
    const Params raster = {{u"raster_lines"_s, lines}, {u"raster_offset"_s, offset}};
    const FloatImage lit = litRow({32, rows}, row);
    const FloatImage drawn = beam(lit, {160, 720}, with(kScanline, raster));
    const Spot spot = spotOf(drawn);
    QVERIFY(isNear(spot.y, middle, 1e-4));
    // A little is lost beyond the picture's sides.
    QVERIFY(isNear(spot.light / light, 1.0, 2e-3));
    // Halation takes each row from its own place; a line can show the mean of two rows.
    const Spot onFace = spotOf(faceLight(lit, {8, 720}, raster));
    QVERIFY(isNear(onFace.y, middle, 0.51 / rows));
    QVERIFY(isNear(onFace.light / light, 1.0, 2e-3));
}

// A patch a quarter of the way into the picture: where each gun shows it on the face, in parts of
// the face, and its light, in parts of white all over the face.
void TestCrtRaster::halationStartsFromTheFace_data()
{
    QTest::addColumn<Params>("params");
    QTest::addColumn<QList<QPointF>>("middles");
    QTest::addColumn<double>("light");
    const auto row = [](const char *name, const Params &params, const QList<QPointF> &middles,
                        double light) { QTest::newRow(name) << params << middles << light; };
    const QPointF quarter(0.25, 0.25);
    row("plain", {}, {quarter, quarter, quarter}, 6.25e-4);
    const QPointF enlarged(0.205882, 0.1875);
    row("overscan", {{u"overscan"_s, 0.1F}}, {enlarged, enlarged, enlarged}, 9.1912e-4);
    const QPointF bent(0.23919, 0.23919);
    row("curved", {{u"barrel_distortion"_s, 0.1F}}, {bent, bent, bent}, 6.1656e-4);
    row("guns apart",
        {{u"conv_rx"_s, 2.0F}, {u"conv_ry"_s, -1.0F}, {u"conv_bx"_s, -3.0F}, {u"conv_by"_s, 2.0F}},
        {{0.25625, 0.245833}, quarter, {0.240625, 0.258333}}, 6.25e-4);
}

void TestCrtRaster::halationStartsFromTheFace()
{
    QFETCH(Params, params);
    QFETCH(QList<QPointF>, middles);
    QFETCH(double, light);
    const FloatImage patch = painted(
            {960, 240}, [](int x, int y) { return x >= 228 && x < 252 && y >= 57 && y < 63; });
    const FloatImage drawn = faceLight(patch, {320, 240}, params);
    for (std::size_t c = 0; c < 3; ++c) {
        const Spot spot = spotOf(drawn, c);
        QVERIFY(isNear(spot.x, middles[int(c)].x(), 2e-4));
        QVERIFY(isNear(spot.y, middles[int(c)].y(), 2e-4));
        QVERIFY(isNear(spot.light / light, 1.0, 2e-3));
    }
}

// A rounded corner lacks (1 - pi / 4) radius^2.
void TestCrtRaster::halationHasNoLightBeyondTheCorners()
{
    const FloatImage white = grey({32, 240}, 1.0F);
    const FloatImage drawn = faceLight(white, {320, 240}, {{u"corner_radius"_s, 0.1F}});
    QVERIFY(isNear(mean(drawn, 1), 0.993562, 2e-4));
}

void TestCrtRaster::fieldsAlternate_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<float>("lines");
    QTest::addColumn<quint32>("frame");
    QTest::addColumn<int>("row");
    QTest::addColumn<double>("middle"); // in parts of the face's height
    QTest::addColumn<double>("light");
    // A picture that holds both fields: every other row is shown, as bright as two lines.
    QTest::newRow("even row, even frame") << 480 << 0.0F << 0U << 20 << 20.5 / 480 << 1.0 / 240;
    QTest::newRow("odd row, even frame") << 480 << 0.0F << 0U << 21 << 0.0 << 0.0;
    QTest::newRow("even row, odd frame") << 480 << 0.0F << 1U << 20 << 0.0 << 0.0;
    QTest::newRow("odd row, odd frame") << 480 << 480.0F << 1U << 21 << 21.5 / 480 << 1.0 / 240;
    // A picture that is a field: all its rows, between those of the other field.
    QTest::newRow("field, even frame") << 240 << 480.0F << 0U << 20 << 40.5 / 480 << 1.0 / 240;
    QTest::newRow("field, odd frame") << 240 << 480.0F << 1U << 20 << 41.5 / 480 << 1.0 / 240;
    QTest::newRow("field on 240 lines, even")
            << 240 << 240.0F << 2U << 20 << 40.5 / 480 << 1.0 / 240;
    QTest::newRow("field on 240 lines, odd")
            << 240 << 240.0F << 3U << 20 << 41.5 / 480 << 1.0 / 240;
}

void TestCrtRaster::fieldsAlternate()
{
    QFETCH(int, rows);
    QFETCH(float, lines);
    QFETCH(quint32, frame);
    QFETCH(int, row);
    QFETCH(double, middle);
    QFETCH(double, light);
    const Params params =
            with(kScanline, {{u"raster_lines"_s, lines}, {u"raster_interlace"_s, 1.0F}});
    const FloatImage drawn = beam(litRow({32, rows}, row), {160, 720}, params, frame);
    const Spot spot = spotOf(drawn);
    QVERIFY(isNear(spot.light, light, 2e-3 * light + 1e-7));
    if (light > 0.0)
        QVERIFY(isNear(spot.y, middle, 1e-4));
}

void TestCrtRaster::beamKeepsItsEnergy_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<Params>("raster");
    QTest::addColumn<float>("light");
    QTest::addColumn<float>("sigma");
    QTest::addColumn<double>("tolerance"); // of what wide beams lose beyond the picture's edges

    const auto row = [](const char *name, int rows, const Params &raster, float light, float sigma,
                        double tolerance) {
        QTest::newRow(name) << rows << raster << light << sigma << tolerance;
    };
    row("narrow", 240, {}, 0.5F, 0.02F, 1e-3);
    row("usual", 240, {}, 0.5F, 0.24F, 1.5e-3);
    row("wide", 240, {}, 0.5F, 0.55F, 4e-3);
    row("dark", 240, {}, 0.01F, 0.1F, 1e-3);
    row("beyond white", 240, {}, 2.5F, 0.24F, 1.5e-3);
    row("224 rows", 224, {}, 0.5F, 0.24F, 1.5e-3);
    row("a handheld's rows", 144, {}, 0.5F, 0.24F, 1.5e-3);
    row("doubled", 240, {{u"raster_lines"_s, 480.0F}}, 0.5F, 0.24F, 1.5e-3);
    row("halved", 480, {{u"raster_lines"_s, 240.0F}}, 0.5F, 0.24F, 1.5e-3);
    row("fewer lines", 240, {{u"raster_lines"_s, 200.0F}}, 0.5F, 0.24F, 1.5e-3);
    row("interlaced", 480, {{u"raster_interlace"_s, 1.0F}}, 0.5F, 0.24F, 2e-3);
}

void TestCrtRaster::beamKeepsItsEnergy()
{
    QFETCH(int, rows);
    QFETCH(Params, raster);
    QFETCH(float, light);
    QFETCH(float, sigma);
    QFETCH(double, tolerance);
    const Params params =
            with(with(kScanline, raster), {{u"beam_min"_s, sigma}, {u"beam_max"_s, sigma}});
    const FloatImage drawn = beam(grey({320, rows}, light), {320, 240}, params);
    for (std::size_t c = 0; c < 3; ++c) {
        const double kept = mean(drawn, c) / double(light);
        QVERIFY(isNear(kept, 1.0, tolerance));
    }
}

// Bright beside dark, where spots of different widths meet; the margin takes what spreads outwards.
void TestCrtRaster::detailKeepsItsEnergy()
{
    const FloatImage inner = noise({60, 44});
    const FloatImage picture = painted({64, 48}, [&inner](int x, int y) {
        const bool isInside = x >= 2 && x < 62 && y >= 2 && y < 46;
        return isInside ? inner.at(x - 2, y - 2) : Pixel({0.0F, 0.0F, 0.0F, 1.0F});
    });
    const Params params = with(
            kScanline, {{u"raster_lines"_s, 48.0F}, {u"beam_min"_s, 0.05F}, {u"beam_max"_s, 0.5F}});
    const FloatImage drawn = beam(picture, {640, 480}, params);
    for (std::size_t c = 0; c < 3; ++c) {
        const double kept = mean(drawn, c) / mean(picture, c);
        QVERIFY(isNear(kept, 1.0, 2e-3));
    }
}

void TestCrtRaster::spotIsRoundAndGrowsWithTheLight_data()
{
    QTest::addColumn<QSize>("viewport");
    QTest::addColumn<float>("light");
    QTest::addColumn<float>("overscan");
    QTest::addColumn<double>("sigma"); // 0.15 + 0.25 sqrt(light), in 240ths of the picture height
    QTest::newRow("white") << QSize(480, 360) << 1.0F << 0.0F << 0.4;
    QTest::newRow("white, wide screen") << QSize(640, 360) << 1.0F << 0.0F << 0.4;
    QTest::newRow("white, overscanned") << QSize(480, 360) << 1.0F << 0.1F << 0.4;
    QTest::newRow("half") << QSize(480, 360) << 0.5F << 0.0F << 0.32678;
    QTest::newRow("quarter") << QSize(480, 360) << 0.25F << 0.0F << 0.275;
    QTest::newRow("dark") << QSize(480, 360) << 0.04F << 0.0F << 0.2;
}

// A spot's variance is what is left of the drawn one when the pixels' are taken away.
void TestCrtRaster::spotIsRoundAndGrowsWithTheLight()
{
    QFETCH(QSize, viewport);
    QFETCH(float, light);
    QFETCH(float, overscan);
    QFETCH(double, sigma);
    constexpr QSize kSource(320, 240);
    const Params params = with(
            kScanline, {{u"beam_min"_s, 0.15F}, {u"beam_max"_s, 0.4F}, {u"overscan"_s, overscan}});
    const FloatImage drawn = beam(litPixel(kSource, {light, light, light, 1.0F}), viewport, params);
    const Spot spot = spotOf(drawn);

    // In 240ths of the viewport's height; overscan enlarges the picture by so much.
    const double aspect = double(viewport.width()) / viewport.height();
    const double zoomX = 1.0 / (1.0 - 2.0 * double(overscan) / aspect);
    const double zoomY = 1.0 / (1.0 - 2.0 * double(overscan));
    const double sourcePixel = zoomX * 240.0 * aspect / kSource.width();
    const double pixel = 240.0 / viewport.height();
    const double x = std::sqrt(std::pow(240.0 * aspect * spot.sigmaX, 2.0)
                               - (sourcePixel * sourcePixel + pixel * pixel) / 12.0);
    const double y = std::sqrt(std::pow(240.0 * spot.sigmaY, 2.0) - pixel * pixel / 12.0);
    QVERIFY(isNear(x / (zoomY * sigma), 1.0, 0.03));
    QVERIFY(isNear(y / (zoomY * sigma), 1.0, 0.03));
}

void TestCrtRaster::gunsHaveSpotsOfTheirOwn()
{
    const FloatImage pixel = litPixel({320, 240}, {1.0F, 0.04F, 0.04F, 1.0F});
    const Params params = with(kScanline, {{u"beam_min"_s, 0.15F}, {u"beam_max"_s, 0.4F}});
    const auto sigma = [](const FloatImage &picture, std::size_t channel) {
        const double high = 240.0 * spotOf(picture, channel).sigmaY;
        return std::sqrt(high * high - 4.0 / 9.0 / 12.0);
    };
    const FloatImage own = beam(pixel, {480, 360}, params);
    QVERIFY(isNear(sigma(own, 0) / 0.4, 1.0, 0.03));
    QVERIFY(isNear(sigma(own, 1) / 0.2, 1.0, 0.03));
    const FloatImage same = beam(pixel, {480, 360}, with(params, {{u"rgb_beam"_s, 0.0F}}));
    for (const std::size_t channel : {0U, 1U, 2U})
        QVERIFY(isNear(sigma(same, channel) / 0.4, 1.0, 0.03));
}

// The light at the edge of a white half, against the normal distribution function. Lines so close
// that they merge make the vertical edge.
void TestCrtRaster::spotIsGaussian()
{
    constexpr double kSigma = 0.5;
    const Params params = with(kScanline, {{u"beam_max"_s, float(kSigma)}});
    for (const bool isVertical : {false, true}) {
        const FloatImage picture =
                painted({40, 1200}, [=](int x, int y) { return isVertical ? y >= 600 : x >= 20; });
        const FloatImage drawn = beam(picture, {80, 480}, params);
        for (int i = -4; i < 4; ++i) {
            const float light = isVertical ? drawn.at(60, 240 + i)[1] : drawn.at(40 + i, 100)[1];
            // A pixel is half a 240th of the height, and shows its mean.
            double expected = 0.0;
            for (int sub = 0; sub < 16; ++sub) {
                const double from = 0.5 * (i + (sub + 0.5) / 16.0) / kSigma;
                expected += 0.5 * (1.0 + std::erf(from / std::sqrt(2.0))) / 16.0;
            }
            QVERIFY(isNear(double(light), expected, 0.006));
        }
    }
}

void TestCrtRaster::convergenceMovesOneGun_data()
{
    QTest::addColumn<QString>("param");
    QTest::addColumn<int>("channel");
    QTest::addColumn<double>("right"); // for 1.5, in 240ths of the picture height
    QTest::addColumn<double>("down");
    QTest::newRow("red x") << u"conv_rx"_s << 0 << 1.5 << 0.0;
    QTest::newRow("red y") << u"conv_ry"_s << 0 << 0.0 << 1.5;
    QTest::newRow("blue x") << u"conv_bx"_s << 2 << 1.5 << 0.0;
    QTest::newRow("blue y") << u"conv_by"_s << 2 << 0.0 << 1.5;
}

void TestCrtRaster::convergenceMovesOneGun()
{
    QFETCH(QString, param);
    QFETCH(int, channel);
    QFETCH(double, right);
    QFETCH(double, down);
    const FloatImage pixel = litPixel({320, 240}, {1.0F, 1.0F, 1.0F, 1.0F});
    for (const float sign : {1.0F, -1.0F}) {
        const FloatImage drawn = beam(
                pixel, {640, 480}, with(kScanline, {{u"beam_max"_s, 0.3F}, {param, 1.5F * sign}}));
        for (const int gun : {0, 1, 2}) {
            const Spot spot = spotOf(drawn, std::size_t(gun));
            const double moved = gun == channel ? double(sign) : 0.0;
            // The lit pixel is column 160 of 320 and row 120 of 240.
            const double x = (spot.x - 160.5 / 320.0) * 320.0;
            const double y = (spot.y - 120.5 / 240.0) * 240.0;
            QVERIFY(isNear(x, moved * right, 0.01));
            QVERIFY(isNear(y, moved * down, 0.01));
            QVERIFY(isNear(spot.light * 320.0 * 240.0, 1.0, 2e-3));
        }
    }
}

QTEST_GUILESS_MAIN(TestCrtRaster)
#include "tst_CrtRaster.moc"
