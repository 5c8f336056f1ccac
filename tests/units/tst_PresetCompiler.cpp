#include <PresetCompiler.h>

#include "GraphText.h"
#include "TestSupport.h"

#include <map>

using namespace Qt::StringLiterals;
using namespace FirstPartyPresetSource;

namespace {

using Graph = VulkanRenderGraph;
using Passes = QList<PassDecl>;
using Sources = std::map<QByteArray, QByteArray>; // component file name to text

constexpr ParamDecl param(const char *id)
{
    return {id, "", 0.0F, 0.0F, 1.0F, 0.1F};
}

constexpr ParamDecl kLetters[] = {param("b"), param("A"), param("a")};
constexpr ParamDecl kStrength[] = {param("strength")};
constexpr ParamDecl kRepeated[] = {param("z"), param("b"), param("z"), param("A")};
constexpr ParamDecl kExempt[] = {param("mask_hdr_ready")};
constexpr ParamDecl kSixteen[] = {
        param("p00"), param("p01"), param("p02"), param("p03"), param("p04"), param("p05"),
        param("p06"), param("p07"), param("p08"), param("p09"), param("p10"), param("p11"),
        param("p12"), param("p13"), param("p14"), param("p15"),
};

template<std::size_t N>
PassDecl binding(const char *component, const ParamDecl (&params)[N], std::int32_t count = N)
{
    return {.component = component, .params = params, .paramCount = count};
}

// `count` directives whose names are `prefix` and a number, of two digits if `width` is 2.
QByteArray directives(const char *keyword, int count, const char *prefix, int width)
{
    QByteArray text;
    for (int i = 0; i < count; ++i) {
        text += QByteArray("//! ") + keyword + ' ' + prefix
                + QByteArray::number(i).rightJustified(width, '0') + '\n';
    }
    return text;
}

struct Outcome
{
    bool succeeded = false;
    Graph graph;
    QByteArray err;
};

Outcome compiled(const PresetDecl &decl, const Sources &sources)
{
    QDir().mkpath(u"shaders/vulkan/components"_s);
    for (const auto &[name, text] : sources)
        writeFile(u"shaders/vulkan/components/"_s + QString::fromLatin1(name), text);
    Outcome outcome;
    outcome.graph.passes.resize(7); // stale: must not survive
    outcome.graph.feedbackPassIndex = 3;
    outcome.graph.finalRealPassRespondsToHdr = true;
    outcome.err = captured(
            stderr, [&] { outcome.succeeded = compilePreset(u"shaders"_s, decl, outcome.graph); });
    return outcome;
}

Outcome compiled(const Passes &passes, const Sources &sources, int feedbackPassIndex = -1)
{
    return compiled({.name = "p",
                     .feedbackPassIndex = feedbackPassIndex,
                     .passes = passes.constData(),
                     .passCount = int(passes.size())},
                    sources);
}

QList<int> inputs(const Graph &graph, int index)
{
    QList<int> list;
    for (const Graph::ResourceRef &input : graph.passes.at(index).sampledInputs)
        list.append(input.passIndex);
    return list;
}

QStringList slotIds(const Graph &graph, int index)
{
    QStringList list;
    for (const Graph::PushConstantParam &param : graph.passes.at(index).params)
        list.append(u"%1:%2"_s.arg(param.floatOffset).arg(param.id));
    return list;
}

} // namespace

class TestPresetCompiler : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void graphInFull();
    void format_data();
    void format();
    void scaleSource_data();
    void scaleSource();
    void declarationsAreLatin1AndTakenAsTheyAre();
    void presetWithoutPasses_data();
    void presetWithoutPasses();
    void sampledInputs_data();
    void sampledInputs();
    void cachedFeedbackPassSamplesItsHistoryAlone();
    void feedback_data();
    void feedback();
    void pushConstantSlots_data();
    void pushConstantSlots();
    void finalRealPassRespondsToHdr_data();
    void finalRealPassRespondsToHdr();
    void limitsAreInclusive();
    void diagnostics_data();
    void diagnostics();
    void danglingSlangLinkFallsBackToFrag();
    void failureKeepsTheAcceptedPasses();
};

void TestPresetCompiler::graphInFull()
{
    const Passes passes = {{.component = "one",
                            .extentAlias = "ONE",
                            .linearFilter = true,
                            .scaleType = kScaleAbsolute,
                            .scaleX = 3.0F,
                            .scaleY = 0.5F,
                            .absoluteWidth = 4096,
                            .absoluteHeight = 0,
                            .reserved = 9,
                            .wrapMode = 1,
                            .params = kStrength,
                            .paramCount = 1,
                            .constantBlackWhenZero = "strength",
                            .constantBlackAlpha = 0.0F,
                            .shareConstantBlack = true},
                           {.component = "two",
                            .extentAlias = "TWO",
                            .scaleType = kScaleAbsolute,
                            .absoluteWidth = 1,
                            .wrapMode = 2,
                            .mipmap = true,
                            .cacheByParameters = true},
                           {.component = "two", .mipmap = true, .scaleInputAlias = "TWO"}};
    const Outcome outcome =
            compiled(passes, {{"one.slang", "//! param strength\n"}, {"two.slang", ""}});
    QCOMPARE(outcome.err, "");
    QVERIFY(outcome.succeeded);
    QCOMPARE(graphText(outcome.graph), R"(:/shaders/p.glslp feedback -1
'one' ':/shaders/vulkan/spirv/one.frag.spv' ':/shaders/vulkan/spirv/fullscreen.vert.spv'
  format 1 scale source 2 scale 3 0.5 size 4096 0 scale input -1 wrap mode 1
  black when 'strength' alpha 0
  flags linearFilter shareConstantBlack
  inputs -2
  params strength@0
'two' ':/shaders/vulkan/spirv/two.frag.spv' ':/shaders/vulkan/spirv/fullscreen.vert.spv'
  format 1 scale source 2 scale 1 1 size 1 0 scale input -1 wrap mode 2
  black when '' alpha 1
  flags mipmap cacheByParameters
  inputs
  params
'two' ':/shaders/vulkan/spirv/two.frag.spv' ':/shaders/vulkan/spirv/fullscreen.vert.spv'
  format 1 scale source 0 scale 1 1 size 0 0 scale input 1 wrap mode 0
  black when '' alpha 1
  flags mipmap
  inputs 1
  params
'hdr-color-boost' ':/shaders/vulkan/spirv/hdr-color-boost.frag.spv' ':/shaders/vulkan/spirv/fullscreen.vert.spv'
  format 1 scale source 1 scale 1 1 size 0 0 scale input -1 wrap mode 0
  black when '' alpha 1
  flags linearFilter isFinalPass
  inputs 2
  params
)");
}

void TestPresetCompiler::format_data()
{
    QTest::addColumn<QByteArray>("component");
    QTest::addColumn<Graph::Format>("expected");
    QTest::newRow("crt-abl") << QByteArray("crt-abl") << Graph::Format::RGBA32F;
    QTest::newRow("crt-abl-tiles") << QByteArray("crt-abl-tiles") << Graph::Format::RGBA32F;
    QTest::newRow("crt-abl-reduce") << QByteArray("crt-abl-reduce") << Graph::Format::RGBA32F;
    QTest::newRow("crt-ablation") << QByteArray("crt-ablation") << Graph::Format::RGBA32F;
    QTest::newRow("crt-ab") << QByteArray("crt-ab") << Graph::Format::RGBA16F;
    QTest::newRow("CRT-abl") << QByteArray("CRT-abl") << Graph::Format::RGBA16F;
    QTest::newRow("x-crt-abl") << QByteArray("x-crt-abl") << Graph::Format::RGBA16F;
}

void TestPresetCompiler::format()
{
    QFETCH(QByteArray, component);
    QFETCH(Graph::Format, expected);
    const Outcome outcome =
            compiled({{.component = component.constData()}}, {{component + ".slang", ""}});
    QVERIFY(outcome.succeeded);
    QCOMPARE(outcome.graph.passes.at(0).format, expected);
}

void TestPresetCompiler::scaleSource_data()
{
    QTest::addColumn<int>("scaleType");
    QTest::addColumn<Graph::ScaleSource>("expected");
    QTest::newRow("0") << 0 << Graph::ScaleSource::Source;
    QTest::newRow("1") << 1 << Graph::ScaleSource::Viewport;
    QTest::newRow("2") << 2 << Graph::ScaleSource::Absolute;
    QTest::newRow("3") << 3 << Graph::ScaleSource::Source;
    QTest::newRow("-1") << -1 << Graph::ScaleSource::Source;
}

void TestPresetCompiler::scaleSource()
{
    QFETCH(int, scaleType);
    QFETCH(Graph::ScaleSource, expected);
    const Outcome outcome =
            compiled({{.component = "a", .scaleType = scaleType}}, {{"a.slang", ""}});
    QVERIFY(outcome.succeeded);
    QCOMPARE(outcome.graph.passes.at(0).scaleSource, expected);
}

void TestPresetCompiler::declarationsAreLatin1AndTakenAsTheyAre()
{
    static constexpr ParamDecl kId[] = {param("\xE9")};
    // Read as anything else, the two aliases would be the same.
    const Passes passes = {{.component = "\xE9%2",
                            .extentAlias = "\xE9",
                            .params = kId,
                            .paramCount = 1,
                            .constantBlackWhenZero = "\xE9"},
                           {.component = "b", .extentAlias = "\xEA"},
                           {.component = "b", .scaleInputAlias = "\xE9"}};
    const Outcome outcome = compiled({.name = "\xEB%2%1",
                                      .passes = passes.constData(),
                                      .passCount = int(passes.size()),
                                      .presetExtension = "\xEC"},
                                     {{"\xE9%2.frag", ""}, {"b.slang", ""}});
    QCOMPARE(outcome.err, "");
    QVERIFY(outcome.succeeded);
    QCOMPARE(outcome.graph.presetQrcPath, u":/shaders/\u00eb%2%1.\u00ec"_s);
    const Graph::Pass &pass = outcome.graph.passes.at(0);
    QCOMPARE(pass.fragmentSpirvResource, u":/shaders/vulkan/spirv/\u00e9%2.frag.spv"_s);
    QCOMPARE(pass.debugName, u"\u00e9%2"_s);
    QCOMPARE(pass.constantBlackWhenZero, u"\u00e9"_s);
    QCOMPARE(slotIds(outcome.graph, 0), QStringList({u"0:\u00e9"_s}));
    QCOMPARE(outcome.graph.passes.at(2).scaleInputPassIndex, 0);
}

void TestPresetCompiler::presetWithoutPasses_data()
{
    QTest::addColumn<int>("passCount");
    QTest::newRow("none") << 0;
    QTest::newRow("fewer than none") << -3;
}

void TestPresetCompiler::presetWithoutPasses()
{
    QFETCH(int, passCount);
    const PassDecl pass = {.component = "a"};
    const Outcome outcome = compiled({.name = "p", .passes = &pass, .passCount = passCount}, {});
    // The boost pass alone: it has nothing to sample, so the graph does not pass the check.
    QVERIFY(!outcome.succeeded);
    QCOMPARE(outcome.err,
             "render-graph-compile: preset 'p' produced an invalid VulkanRenderGraph\n");
    QCOMPARE(outcome.graph.passes.size(), 1);
    QCOMPARE(inputs(outcome.graph, 0), QList<int>({passCount - 1}));
    QCOMPARE(outcome.graph.feedbackPassIndex, -1);
    QCOMPARE(outcome.graph.finalRealPassRespondsToHdr, false);
}

void TestPresetCompiler::sampledInputs_data()
{
    QTest::addColumn<Passes>("passes");
    QTest::addColumn<QByteArray>("lastSource");
    QTest::addColumn<QList<int>>("expected"); // of the last declared pass

    const PassDecl one = {.component = "one", .extentAlias = "ONE"};
    const PassDecl two = {.component = "two", .extentAlias = "TWO"};
    const PassDecl again = {.component = "two", .extentAlias = "ONE"};
    const PassDecl mid = {.component = "mid"};
    const PassDecl last = {.component = "last"};
    const PassDecl feedback = {.component = "last", .feedback = true};
    const PassDecl cached = {.component = "last",
                             .scaleType = kScaleAbsolute,
                             .absoluteWidth = 1,
                             .cacheByParameters = true};

    const auto row = [](const char *name, const Passes &passes, const QByteArray &lastSource,
                        const QList<int> &expected) {
        QTest::newRow(name) << passes << lastSource << expected;
    };
    const PassDecl frag = {.component = "frag"};
    row("first pass", {last}, "", {-2});
    row("directives of a .frag", {one, two, frag}, "", {1});
    row("later pass", {one, two, last}, "", {1});
    row("first feedback pass", {feedback}, "", {-2, -1});
    row("later feedback pass", {one, feedback}, "", {0, -1});
    row("cached pass", {one, cached}, "", {});
    row("aliases in directive order", {one, two, mid, last}, "//! input TWO\n//! input ONE\n",
        {2, 1, 0});
    row("alias of the previous pass", {one, last}, "//! input ONE\n", {0});
    row("alias behind the history", {one, two, feedback}, "//! input ONE\n", {1, -1, 0});
    row("alias repeated", {one, two, last}, "//! input ONE\n//! input ONE\n", {1, 0});
    row("two aliases of one pass number once", {one, two, last}, "//! input TWO\n//! input ONE\n",
        {1, 0});
    row("alias published twice", {one, two, again, mid, last}, "//! input ONE\n", {3, 2});
}

void TestPresetCompiler::sampledInputs()
{
    QFETCH(Passes, passes);
    QFETCH(QByteArray, lastSource);
    QFETCH(QList<int>, expected);

    const Outcome outcome = compiled(passes,
                                     {{"one.slang", ""},
                                      {"two.slang", ""},
                                      {"mid.slang", ""},
                                      {"last.slang", lastSource},
                                      {"frag.frag", "//! input ONE\n//! input NONE\n"}});
    QCOMPARE(outcome.err, "");
    QVERIFY(outcome.succeeded);
    QCOMPARE(inputs(outcome.graph, int(passes.size()) - 1), expected);
}

void TestPresetCompiler::cachedFeedbackPassSamplesItsHistoryAlone()
{
    const PassDecl cached = {.component = "a",
                             .scaleType = kScaleAbsolute,
                             .absoluteWidth = 1,
                             .cacheByParameters = true,
                             .feedback = true};
    const Outcome outcome = compiled({cached, cached}, {{"a.slang", ""}});
    // No such pass is valid, but the graph holds it.
    QCOMPARE(outcome.err,
             "render-graph-compile: preset 'p' produced an invalid VulkanRenderGraph\n");
    QVERIFY(!outcome.succeeded);
    QCOMPARE(inputs(outcome.graph, 0), QList<int>({-1}));
    QCOMPARE(inputs(outcome.graph, 1), QList<int>({-1}));
}

void TestPresetCompiler::feedback_data()
{
    QTest::addColumn<int>("declaredIndex");
    QTest::addColumn<QList<bool>>("flags");
    QTest::addColumn<int>("expectedIndex");
    QTest::addColumn<QList<bool>>("expectedPasses");

    const auto row = [](const char *name, int declaredIndex, const QList<bool> &flags,
                        int expectedIndex, const QList<bool> &expectedPasses) {
        QTest::newRow(name) << declaredIndex << flags << expectedIndex << expectedPasses;
    };
    row("none", -1, {false, false, false}, -1, {false, false, false});
    row("by index", 1, {false, false, false}, 1, {false, true, false});
    row("by index 0", 0, {false, false, false}, 0, {true, false, false});
    row("by flag", -1, {false, true, false}, 1, {false, true, false});
    row("by two flags", -1, {false, true, true}, 1, {false, true, true});
    row("by the flag of pass 0 and a later one", -1, {true, true, false}, 0, {true, true, false});
    row("by index 0 and a later flag", 0, {false, true, false}, 0, {true, true, false});
    row("by index and an earlier flag", 2, {true, false, false}, 2, {true, false, true});
    row("index n counts as none", 3, {false, false, true}, 2, {false, false, true});
    row("index n and no flag", 3, {false, false, false}, -1, {false, false, false});
    row("index -2 counts as none", -2, {false, false, false}, -1, {false, false, false});
}

void TestPresetCompiler::feedback()
{
    QFETCH(int, declaredIndex);
    QFETCH(QList<bool>, flags);
    QFETCH(int, expectedIndex);
    QFETCH(QList<bool>, expectedPasses);

    Passes passes;
    for (const bool flag : std::as_const(flags))
        passes.append(PassDecl{.component = "a", .feedback = flag});
    const Outcome outcome = compiled(passes, {{"a.slang", ""}}, declaredIndex);
    QVERIFY(outcome.succeeded);
    QCOMPARE(outcome.graph.feedbackPassIndex, expectedIndex);
    for (int i = 0; i < expectedPasses.size(); ++i) {
        QCOMPARE(outcome.graph.passes.at(i).isFeedbackTarget, expectedPasses.at(i));
        QCOMPARE(outcome.graph.passes.at(i).isFeedbackReader, expectedPasses.at(i));
        QCOMPARE(inputs(outcome.graph, i).contains(-1), expectedPasses.at(i));
    }
}

void TestPresetCompiler::pushConstantSlots_data()
{
    QTest::addColumn<Passes>("passes");
    QTest::addColumn<Sources>("sources");
    QTest::addColumn<QStringList>("expected"); // of pass 0

    const auto row = [](const char *name, const Passes &passes, const Sources &sources,
                        const QStringList &expected) {
        QTest::newRow(name) << passes << sources << expected;
    };
    row("none", {binding("x", kLetters)}, {{"x.slang", ""}}, {});
    row("sorted by code unit", {binding("x", kLetters)},
        {{"x.slang", "//! param b\n//! param A\n//! param a\n"}}, {u"0:A"_s, u"1:a"_s, u"2:b"_s});
    row("repeated", {binding("x", kLetters)},
        {{"x.slang", "//! param b\n//! param b\n//! param a\n"}}, {u"0:a"_s, u"1:b"_s});
    row("bound by a later pass", {{.component = "x"}, binding("y", kLetters)},
        {{"x.slang", "//! param b\n"}, {"y.slang", ""}}, {u"0:b"_s});
    row("read slots", {binding("x", kLetters)},
        {{"x.slang", "//! param b\n//! param a\nx = pc.params[1] + pc.params[0];\n"}},
        {u"0:a"_s, u"1:b"_s});
    row("exempt id takes no slot", {binding("x", kLetters)},
        {{"x.slang", "//! param mask_hdr_ready\n//! param b\n"}}, {u"0:b"_s});
    row("exempt id alone", {binding("x", kLetters)}, {{"x.slang", "//! param mask_hdr_ready\n"}},
        {});
    row(".frag takes its own", {binding("x", kRepeated), binding("y", kLetters)},
        {{"x.frag", "//! param a\nx = pc.params[9];\n"}, {"y.slang", ""}},
        {u"0:A"_s, u"1:b"_s, u"2:z"_s});
    row(".frag takes even the exempt id", {binding("x", kExempt)}, {{"x.frag", ""}},
        {u"0:mask_hdr_ready"_s});
    row(".slang before .frag", {binding("x", kLetters)},
        {{"x.frag", ""}, {"x.slang", "//! param b\n"}}, {u"0:b"_s});
}

void TestPresetCompiler::pushConstantSlots()
{
    QFETCH(Passes, passes);
    QFETCH(Sources, sources);
    QFETCH(QStringList, expected);
    const Outcome outcome = compiled(passes, sources);
    QCOMPARE(outcome.err, "");
    QVERIFY(outcome.succeeded);
    QCOMPARE(slotIds(outcome.graph, 0), expected);
}

void TestPresetCompiler::finalRealPassRespondsToHdr_data()
{
    QTest::addColumn<Sources>("sources");
    QTest::addColumn<bool>("expected");
    const QByteArray hdr = "x = pc.hdrOutputActive;\n";
    QTest::newRow("the last pass") << Sources{{"a.slang", ""}, {"b.slang", hdr}} << true;
    QTest::newRow("an earlier pass") << Sources{{"a.slang", hdr}, {"b.slang", ""}} << false;
    QTest::newRow("a .frag") << Sources{{"a.slang", ""}, {"b.frag", hdr}} << false;
}

void TestPresetCompiler::finalRealPassRespondsToHdr()
{
    QFETCH(Sources, sources);
    QFETCH(bool, expected);
    const Outcome outcome = compiled({{.component = "a"}, {.component = "b"}}, sources);
    QVERIFY(outcome.succeeded);
    QCOMPARE(outcome.graph.finalRealPassRespondsToHdr, expected);
}

void TestPresetCompiler::limitsAreInclusive()
{
    static constexpr const char *kAliases[] = {"A0", "A1", "A2", "A3", "A4", "A5", "A6"};
    Passes passes;
    for (const char *alias : kAliases)
        passes.append(PassDecl{.component = "a", .extentAlias = alias});
    passes.append(PassDecl{.component = "a"});
    passes.append(binding("last", kSixteen));
    // The previous pass and seven aliases; fifteen parameters, the last slot read.
    const Outcome outcome =
            compiled(passes,
                     {{"a.slang", ""},
                      {"last.slang",
                       directives("input", 7, "A", 1) + directives("param", 15, "p", 2)
                               + "x = pc.params[14];\n"}});
    QCOMPARE(outcome.err, "");
    QVERIFY(outcome.succeeded);
    QCOMPARE(outcome.graph.passes.at(8).sampledInputs.size(), 8);
    QCOMPARE(outcome.graph.passes.at(8).params.size(), 15);
}

void TestPresetCompiler::diagnostics_data()
{
    QTest::addColumn<Passes>("passes");
    QTest::addColumn<Sources>("sources");
    QTest::addColumn<QByteArray>("message");

    const auto row = [](const char *name, const Passes &passes, const Sources &sources,
                        const QByteArray &message) {
        QTest::newRow(name) << passes << sources << "render-graph-compile: " + message + '\n';
    };
    const PassDecl a = {.component = "a"};
    const PassDecl published = {.component = "a", .extentAlias = "ALIAS"};
    const PassDecl b = {.component = "b"};

    row("extent alias of no pass", {a, {.component = "b", .scaleInputAlias = "NONE"}},
        {{"a.slang", ""}, {"b.slang", ""}}, "unresolved extent alias NONE");
    row("extent alias of its own",
        {{.component = "a", .extentAlias = "OWN", .scaleInputAlias = "OWN"}}, {{"a.slang", ""}},
        "unresolved extent alias OWN");
    row("extent alias before a missing source", {{.component = "a", .scaleInputAlias = "NONE"}}, {},
        "unresolved extent alias NONE");
    row("no source", {a, b}, {{"a.slang", ""}},
        "preset 'p' pass 1 ('b') has no shaders/vulkan/components source");
    row("alias of no pass", {a, b}, {{"a.slang", ""}, {"b.slang", "//! input NONE\n"}},
        "preset 'p' pass 1 ('b') declares //! input NONE but no earlier pass "
        "carries that alias (shaders/vulkan/components/b.slang)");
    row("alias of its own", {published}, {{"a.slang", "//! input ALIAS\n"}},
        "preset 'p' pass 0 ('a') declares //! input ALIAS but no earlier pass "
        "carries that alias (shaders/vulkan/components/a.slang)");
    row("alias of a later pass", {b, published},
        {{"a.slang", ""}, {"b.slang", "//! input ALIAS\n"}},
        "preset 'p' pass 0 ('b') declares //! input ALIAS but no earlier pass "
        "carries that alias (shaders/vulkan/components/b.slang)");
    row("the first unknown alias in directive order", {published, b},
        {{"a.slang", ""}, {"b.slang", "//! input ALIAS\n//! input Z\n//! input B\n"}},
        "preset 'p' pass 1 ('b') declares //! input Z but no earlier pass "
        "carries that alias (shaders/vulkan/components/b.slang)");

    static constexpr const char *kAliases[] = {"A0", "A1", "A2", "A3", "A4", "A5", "A6", "A7"};
    Passes many;
    for (const char *alias : kAliases)
        many.append(PassDecl{.component = "a", .extentAlias = alias});
    many.append(a);
    many.append(b);
    row("nine inputs", many, {{"a.slang", ""}, {"b.slang", directives("input", 8, "A", 1)}},
        "preset 'p' pass 9 ('b') exceeds MaxSampledInputsPerPass");
    row("nine inputs and an unknown parameter", many,
        {{"a.slang", ""}, {"b.slang", "//! param x\n" + directives("input", 8, "A", 1)}},
        "preset 'p' pass 9 ('b') exceeds MaxSampledInputsPerPass");

    row("parameter of no pass", {binding("a", kLetters), b},
        {{"a.slang", ""}, {"b.slang", "//! param a\n//! param nowhere\n"}},
        "p pass 1 declares parameter 'nowhere' without metadata");
    row("the first unknown parameter in sorted order", {binding("a", kLetters)},
        {{"a.slang", "//! param z\n//! param y\n//! param Z\n//! param a\n"}},
        "p pass 0 declares parameter 'Z' without metadata");
    row("parameter of another case", {binding("a", kStrength)},
        {{"a.slang", "//! param Strength\n"}},
        "p pass 0 declares parameter 'Strength' without metadata");
    row("sixteen parameters", {binding("a", kSixteen)},
        {{"a.slang", directives("param", 16, "p", 2)}},
        "preset 'p' pass 0 ('a') exceeds MaxParamFloatsPerPass");
    row("sixteen parameters of a .frag", {binding("a", kSixteen)}, {{"a.frag", ""}},
        "preset 'p' pass 0 ('a') exceeds MaxParamFloatsPerPass");
    row("sixteen parameters before a slot read", {binding("a", kSixteen)},
        {{"a.slang", directives("param", 16, "p", 2) + "pc.params[99]\n"}},
        "preset 'p' pass 0 ('a') exceeds MaxParamFloatsPerPass");

    row("slot beyond the directives", {binding("a", kLetters)},
        {{"a.slang", "//! param a\n//! param b\nx = pc.params[2];\n"}},
        "preset 'p' pass 0: code reads pc.params[2] but its own //! param "
        "directives only declare 2 slot(s) (shaders/vulkan/components/a.slang)");
    row("slot without directives", {binding("a", kLetters)}, {{"a.slang", "pc.params[0]\n"}},
        "preset 'p' pass 0: code reads pc.params[0] but its own //! param "
        "directives only declare 0 slot(s) (shaders/vulkan/components/a.slang)");
    row("slot beside the exempt id", {binding("a", kLetters)},
        {{"a.slang", "//! param mask_hdr_ready\npc.params[0]\n"}},
        "preset 'p' pass 0: code reads pc.params[0] but its own //! param "
        "directives only declare 0 slot(s) (shaders/vulkan/components/a.slang)");

    QByteArray reads;
    for (int slot = 40; slot > 16; --slot)
        reads += "x = pc.params[" + QByteArray::number(slot) + "];\n";
    row("the smallest of the slots beyond", {binding("a", kLetters)}, {{"a.slang", reads}},
        "preset 'p' pass 0: code reads pc.params[17] but its own //! param "
        "directives only declare 0 slot(s) (shaders/vulkan/components/a.slang)");

    row("constant black that nothing binds",
        {{.component = "a",
          .params = kStrength,
          .paramCount = 1,
          .constantBlackWhenZero = "strength"}},
        {{"a.slang", ""}}, "preset 'p' produced an invalid VulkanRenderGraph");
}

void TestPresetCompiler::diagnostics()
{
    QFETCH(Passes, passes);
    QFETCH(Sources, sources);
    QFETCH(QByteArray, message);
    const Outcome outcome = compiled(passes, sources);
    QCOMPARE(outcome.err, message);
    QVERIFY(!outcome.succeeded);
}

void TestPresetCompiler::danglingSlangLinkFallsBackToFrag()
{
    QDir().mkpath(u"shaders/vulkan/components"_s);
    QVERIFY(QFile::link(u"nowhere"_s, u"shaders/vulkan/components/a.slang"_s));
    const Outcome outcome = compiled({binding("a", kStrength)}, {{"a.frag", ""}});
    QVERIFY(outcome.succeeded);
    QCOMPARE(slotIds(outcome.graph, 0), QStringList({u"0:strength"_s}));
}

void TestPresetCompiler::failureKeepsTheAcceptedPasses()
{
    const Passes passes = {{.component = "a"}, {.component = "b", .feedback = true}};
    const Outcome outcome = compiled(passes, {{"a.slang", ""}});
    QVERIFY(!outcome.succeeded);
    QCOMPARE(outcome.graph.presetQrcPath, u":/shaders/p.glslp"_s);
    QCOMPARE(outcome.graph.passes.size(), 1);
    QCOMPARE(outcome.graph.feedbackPassIndex, 1);
    QCOMPARE(outcome.graph.finalRealPassRespondsToHdr, false);
}

QTEST_APPLESS_MAIN(TestPresetCompiler)
#include "tst_PresetCompiler.moc"
