#include <ManifestWriter.h>

#include "TestSupport.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

using Graph = VulkanRenderGraph;

// The header for these presets, without the fixed text before the first of them.
QByteArray written(const QList<EmittedPreset> &presets)
{
    bool succeeded = false;
    const QByteArray err = captured(stderr, [&] { succeeded = writeManifest(u"m.h"_s, presets); });
    if (!succeeded || !err.isEmpty())
        return "FAILED: " + err;
    const QByteArray text = readFile(u"m.h"_s);
    const QByteArray golden =
            readFile(QStringLiteral(SOURCE_DIR "/tests/manifest/golden/RenderGraphManifest.h"));
    const QByteArray prologue = golden.left(golden.indexOf("inline constexpr"));
    return text.startsWith(prologue) ? text.mid(prologue.size()) : "NO PROLOGUE: " + text;
}

} // namespace

class TestManifestWriter : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void freshRecordHasItsDefaults();
    void cEscape_data();
    void cEscape();
    void floatLiteral_data();
    void floatLiteral();
    void floatLiteralsReadBackBitForBit();
    void presetsInFull();
    void enumerationNames_data();
    void enumerationNames();
};

void TestManifestWriter::freshRecordHasItsDefaults()
{
    const EmittedPreset fresh;
    QCOMPARE(fresh.name, QString());
    QVERIFY(fresh.graph.passes.isEmpty());
    QCOMPARE(fresh.graph.feedbackPassIndex, -1);
    QVERIFY(fresh.presetParams.isEmpty());
    QCOMPARE(fresh.vulkanOnly, true);
    QCOMPARE(fresh.usesFrameCount, false);
}

void TestManifestWriter::cEscape_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("plain") << u"Mask Type (0 grille, 1 dots)"_s
                           << u"Mask Type (0 grille, 1 dots)"_s;
    QTest::newRow("quote") << u"a \"b\""_s << u"a \\\"b\\\""_s;
    QTest::newRow("backslash") << u"a\\b"_s << u"a\\\\b"_s;
    QTest::newRow("backslash and quote") << u"\\\""_s << u"\\\\\\\""_s;
    QTest::newRow("line feed, tab, control") << u"a\nb\tc\x01"_s << u"a\nb\tc\x01"_s;
    QTest::newRow("single quote and question mark") << u"'?\?'"_s << u"'?\?'"_s;
    QTest::newRow("beyond ASCII") << u"\u00e9\u4e2d\U0001f4fa"_s << u"\u00e9\u4e2d\U0001f4fa"_s;
}

void TestManifestWriter::cEscape()
{
    QFETCH(QString, text);
    QTEST(::cEscape(text), "expected");
}

void TestManifestWriter::floatLiteral_data()
{
    QTest::addColumn<float>("value");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *expected, float value) {
        QTest::newRow(expected) << value << QString::fromLatin1(expected);
    };
    row("1.0f", 1.0F);
    row("0.0f", 0.0F);
    row("-0.0f", -0.0F);
    row("0.5f", 0.5F);
    row("2.0f", 2.0F);
    row("100.0f", 100.0F);
    row("-3.0f", -3.0F);
    row("0.100000001f", 0.1F);
    row("2.20000005f", 2.2F);
    row("53.3333321f", 53.333332F);
    row("1e+09f", 1e9F);
    row("3.0000001e+10f", 3e10F);
    row("2.99999992e-05f", 3e-5F);
    row("9.99999975e-05f", 1e-4F);
    row("0.00100000005f", 1e-3F);
    row("123456792.0f", 123456789.0F);
    row("999999936.0f", 999999936.0F);
    row("3.40282347e+38f", std::numeric_limits<float>::max());
    row("1.17549435e-38f", std::numeric_limits<float>::min());
    row("1.40129846e-45f", std::numeric_limits<float>::denorm_min());
    row("1261314.13f", 1261314.125F); // an exact tie goes away from zero
    row("inf.0f", std::numeric_limits<float>::infinity());
    row("-inf.0f", -std::numeric_limits<float>::infinity());
    row("nan.0f", std::numeric_limits<float>::quiet_NaN());
}

void TestManifestWriter::floatLiteral()
{
    QFETCH(float, value);
    QTEST(::floatLiteral(value), "expected");
}

void TestManifestWriter::floatLiteralsReadBackBitForBit()
{
    // A stride that is prime to 2^32 visits all exponents and mantissas.
    std::uint32_t bits = 0;
    for (int i = 0; i < 200000; ++i, bits += 2654435761U) {
        const auto value = std::bit_cast<float>(bits);
        if (!std::isfinite(value))
            continue;
        const QByteArray text = ::floatLiteral(value).chopped(1).toLatin1();
        const float back = std::strtof(text.constData(), nullptr);
        QVERIFY2(std::bit_cast<std::uint32_t>(back) == bits, text.constData());
    }
}

// No two flags of a pass, and none of a preset, have the same values throughout.
void TestManifestWriter::presetsInFull()
{
    EmittedPreset full;
    full.name = u"a-b-C"_s;
    full.graph.presetQrcPath = u":/shaders/\u00e9\n\U0001f4fa.glslp"_s;
    full.graph.feedbackPassIndex = 1;
    full.graph.finalRealPassRespondsToHdr = true;
    full.vulkanOnly = false;
    full.usesFrameCount = true;
    full.presetParams = {{u"id\\"_s, u"Label \"x\""_s, 0.1F, 1.0F, -0.5F, 1e9F, 0.25F},
                         {u"second"_s, u""_s, 0.0F, 0.0F, 0.0F, 1.0F, 0.1F},
                         {u"third"_s, u""_s, 0.0F, 0.0F, 0.0F, 1.0F, 0.1F}};

    Graph::Pass tile;
    tile.fragmentSpirvResource = u":/f0"_s;
    tile.vertexSpirvResource = u":/v0"_s;
    tile.debugName = u"tile"_s;
    tile.format = Graph::Format::RGBA32F;
    tile.scaleSource = Graph::ScaleSource::Absolute;
    tile.absoluteWidth = 256;
    tile.absoluteHeight = -1;
    tile.linearFilter = false;
    tile.mipmap = true;
    tile.cacheByParameters = true;
    tile.wrapMode = 2;
    tile.isFeedbackReader = true;
    tile.isFinalPass = true;

    Graph::Pass tail;
    tail.fragmentSpirvResource = u":/f1"_s;
    tail.vertexSpirvResource = u":/v1"_s;
    tail.debugName = u"tail"_s;
    tail.format = Graph::Format::RGBA16F;
    tail.scaleX = 3.0F;
    tail.scaleY = 0.5F;
    tail.scaleInputPassIndex = 0;
    tail.linearFilter = false;
    tail.constantBlackWhenZero = u"strength"_s;
    tail.constantBlackAlpha = 0.0F;
    tail.shareConstantBlack = true;
    tail.wrapMode = 1;
    tail.isFeedbackTarget = true;
    tail.isFeedbackReader = true;
    tail.isFinalPass = true;
    tail.sampledInputs = {{0}, {-1}, {-2}};
    tail.params = {{u"strength"_s, 0}, {u"a\"b"_s, 14}};

    Graph::Pass flags;
    flags.mipmap = true;
    flags.isFeedbackTarget = true;
    flags.isFinalPass = true;
    full.graph.passes = {tile, tail, flags};

    EmittedPreset bare;
    bare.name = u"a.b-c d"_s; // only hyphens are replaced
    bare.usesFrameCount = true;

    QCOMPARE(written({full, bare}),
             R"(inline constexpr int kSampledInputs_a_b_C_0[] = {0};
inline constexpr PassEntry kPass_a_b_C_0 = {
  ":/f0",
  ":/v0",
  "tile",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, -1,
  -1,
  false, true,
  true,
  "", 1.0f,
  false,
  2,
  false, true, true,
  kSampledInputs_a_b_C_0, 0,
  nullptr, 0,
};

inline constexpr int kSampledInputs_a_b_C_1[] = {0, -1, -2};
inline constexpr ParamEntry kParams_a_b_C_1[] = {
  { "strength", 0u },
  { "a\"b", 14u },
};
inline constexpr PassEntry kPass_a_b_C_1 = {
  ":/f1",
  ":/v1",
  "tail",
  1, // RGBA16F
  0, // Source
  3.0f, 0.5f,
  0, 0,
  0,
  false, false,
  false,
  "strength", 0.0f,
  true,
  1,
  true, true, true,
  kSampledInputs_a_b_C_1, 3,
  kParams_a_b_C_1, 2,
};

inline constexpr int kSampledInputs_a_b_C_2[] = {0};
inline constexpr PassEntry kPass_a_b_C_2 = {
  "",
  "",
  "",
  0, // R11G11B10F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, true,
  false,
  "", 1.0f,
  false,
  0,
  true, false, true,
  kSampledInputs_a_b_C_2, 0,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_a_b_C[] = {kPass_a_b_C_0, kPass_a_b_C_1, kPass_a_b_C_2};

inline constexpr PresetParamEntry kPresetParams_a_b_C[] = {
  { "id\\", "Label \"x\"", 0.100000001f, 1.0f, -0.5f, 1e+09f, 0.25f },
  { "second", "", 0.0f, 0.0f, 0.0f, 1.0f, 0.100000001f },
  { "third", "", 0.0f, 0.0f, 0.0f, 1.0f, 0.100000001f },
};

inline constexpr PresetEntry kPreset_a_b_C = { ":/shaders/é
📺.glslp", kPasses_a_b_C, 3, 1, true, kPresetParams_a_b_C, 3, false, true };

inline constexpr PassEntry kPasses_a.b_c d[] = {};

inline constexpr PresetEntry kPreset_a.b_c d = { "", kPasses_a.b_c d, 0, -1, false, nullptr, 0, true, true };

inline constexpr PresetEntry kPresets[] = {
  kPreset_a_b_C,
  kPreset_a.b_c d,
};

}  // namespace RenderGraphManifestData
)");
}

void TestManifestWriter::enumerationNames_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("scaleSource");
    QTest::addColumn<QByteArray>("lines");
    QTest::newRow("0 0") << 0 << 0 << QByteArray("\n  0, // R11G11B10F\n  0, // Source\n");
    QTest::newRow("1 1") << 1 << 1 << QByteArray("\n  1, // RGBA16F\n  1, // Viewport\n");
    QTest::newRow("2 2") << 2 << 2 << QByteArray("\n  2, // RGBA8\n  2, // Absolute\n");
    QTest::newRow("3 3") << 3 << 3 << QByteArray("\n  3, // RGBA32F\n  3, // Source\n");
    QTest::newRow("4 255") << 4 << 255 << QByteArray("\n  4, // R11G11B10F\n  255, // Source\n");
}

void TestManifestWriter::enumerationNames()
{
    QFETCH(int, format);
    QFETCH(int, scaleSource);
    QFETCH(QByteArray, lines);
    EmittedPreset preset;
    preset.graph.passes.resize(1);
    preset.graph.passes[0].format = static_cast<Graph::Format>(format);
    preset.graph.passes[0].scaleSource = static_cast<Graph::ScaleSource>(scaleSource);
    QVERIFY(written({preset}).contains(lines));
}

QTEST_APPLESS_MAIN(TestManifestWriter)
#include "tst_ManifestWriter.moc"
