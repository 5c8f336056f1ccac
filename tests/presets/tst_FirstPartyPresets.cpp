#include <FirstPartyPresets.h>

#include "TestSupport.h"

using namespace Qt::StringLiterals;
using namespace FirstPartyPresetSource;

namespace {

constexpr ParamDecl kParams[] = {{"a", "A", 0.5F, 0.0F, 1.0F, 0.1F}};
constexpr PassDecl kGoodPasses[] = {
        {.component = "one", .extentAlias = "ONE", .params = kParams, .paramCount = 1},
        {.component = "two", .extentAlias = "TWO", .scaleInputAlias = "ONE"},
        {.component = "three", .scaleType = kScaleAbsolute, .absoluteWidth = 4096},
};
constexpr ValueOverride kGoodOverrides[] = {{.id = "a", .value = 1.0F}};

} // namespace

class TestFirstPartyPresets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyRangesForCountsOfZeroOrLess();
    void rules_data();
    void rules();
    void presetCountsMatchArrays_data();
    void presetCountsMatchArrays();
    void names_data();
    void names();
    void rulesHoldForAGoodPreset();
    void identifiersMayNotCollide();
};

void TestFirstPartyPresets::emptyRangesForCountsOfZeroOrLess()
{
    QVERIFY(passesOf({.name = "p", .passes = kGoodPasses, .passCount = 0}).empty());
    QVERIFY(passesOf({.name = "p", .passes = kGoodPasses, .passCount = -1}).empty());
    QVERIFY(paramsOf({.component = "c"}).empty());
    QVERIFY(valueOverridesOf({.name = "p", .passes = kGoodPasses, .passCount = 1}).empty());
}

// Each row breaks one rule and no other.
void TestFirstPartyPresets::rules_data()
{
    QTest::addColumn<QByteArray>("rule");
    QTest::addColumn<QByteArray>("culprit");
    QTest::addColumn<QList<PassDecl>>("passes");
    QTest::addColumn<QList<ValueOverride>>("overrides");
    QTest::addColumn<int>("feedbackPassIndex");

    const QList<PassDecl> good(std::begin(kGoodPasses), std::end(kGoodPasses));
    const auto row = [](const char *name, const char *rule, const char *culprit,
                        const QList<PassDecl> &passes, const QList<ValueOverride> &overrides = {},
                        int feedbackPassIndex = -1) {
        QTest::newRow(name) << QByteArray(rule) << QByteArray(culprit) << passes << overrides
                            << feedbackPassIndex;
    };
    const auto passRow = [&](const char *name, const char *rule, const char *culprit,
                             const PassDecl &pass) {
        row(name, rule, culprit, good + QList{pass});
    };

    row("no passes", "a preset has at least one pass", "passes", {});

    const char *rule = "an array comes with its count, and no array with a count of 0";
    passRow("count without array", rule, "x", {.component = "x", .paramCount = -1});
    passRow("array without count", rule, "x", {.component = "x", .params = kParams});
    passRow("negative count with an array", rule, "x",
            {.component = "x", .params = kParams, .paramCount = -1});

    rule = "feedbackPassIndex is -1 or the index of a pass of its preset";
    row("feedback index n", rule, "feedbackPassIndex", good, {}, 3);
    row("feedback index -2", rule, "feedbackPassIndex", good, {}, -2);

    passRow("alias twice", "an extentAlias is published by one pass of a preset only", "ONE",
            {.component = "x", .extentAlias = "ONE"});

    rule = "a scaleInputAlias names the extentAlias of an earlier pass";
    passRow("scale input published nowhere", rule, "FOUR",
            {.component = "x", .scaleInputAlias = "FOUR"});
    row("scale input of the first pass", rule, "FOUR",
        {{.component = "x", .scaleInputAlias = "FOUR"}});
    passRow("scale input published by itself", rule, "FOUR",
            {.component = "x", .extentAlias = "FOUR", .scaleInputAlias = "FOUR"});

    rule = "absoluteWidth and absoluteHeight belong to kScaleAbsolute passes, and only to them";
    passRow("absolute size on a relative pass", rule, "x", {.component = "x", .absoluteHeight = 1});
    passRow("absolute width on a relative pass", rule, "x", {.component = "x", .absoluteWidth = 8});
    passRow("absolute pass without a size", rule, "x",
            {.component = "x", .scaleType = kScaleAbsolute});
    passRow("absolute pass with a negative height", rule, "x",
            {.component = "x",
             .scaleType = kScaleAbsolute,
             .absoluteWidth = 8,
             .absoluteHeight = -1});

    passRow("constant black on an unbound id",
            "constantBlackWhenZero names a parameter that some pass of the preset binds", "b",
            {.component = "x", .constantBlackWhenZero = "b"});

    row("override of an unbound id",
        "the id of a value override is bound by some pass of its preset", "b", good, {{"b", 1.0F}});
    row("override twice", "the id of a value override stands once in its list", "a", good,
        {{"a", 1.0F}, {"a", 1.0F}});

    rule = "a value override lies within the bounds of its parameter";
    row("override below the minimum", rule, "a", good, {{"a", -0.1F}});
    row("override above the maximum", rule, "a", good, {{"a", 1.1F}});

    rule = "scaleType is one of the kScale values, and constantBlackAlpha is 0 or 1";
    passRow("scale type -1", rule, "x", {.component = "x", .scaleType = -1});
    passRow("scale type 3", rule, "x", {.component = "x", .scaleType = 3});
    passRow("constant black alpha 0.5", rule, "x", {.component = "x", .constantBlackAlpha = 0.5F});

    rule = "the default of a parameter lies within its bounds, and its step is above 0";
    static constexpr ParamDecl kWithoutStep[] = {{"b", "B", 0.5F, 0.0F, 1.0F, 0.0F}};
    passRow("step 0", rule, "b", {.component = "x", .params = kWithoutStep, .paramCount = 1});
    static constexpr ParamDecl kTooHigh[] = {{"b", "B", 2.0F, 0.0F, 1.0F, 0.1F}};
    passRow("default above max", rule, "b",
            {.component = "x", .params = kTooHigh, .paramCount = 1});
    static constexpr ParamDecl kTooLow[] = {{"b", "B", -1.0F, 0.0F, 1.0F, 0.1F}};
    passRow("default below min", rule, "b", {.component = "x", .params = kTooLow, .paramCount = 1});
}

void TestFirstPartyPresets::rules()
{
    QFETCH(QByteArray, rule);
    QFETCH(QByteArray, culprit);
    QFETCH(QList<PassDecl>, passes);
    QFETCH(QList<ValueOverride>, overrides);
    QFETCH(int, feedbackPassIndex);

    const PresetDecl presets[] = {
            {.name = "p",
             .feedbackPassIndex = feedbackPassIndex,
             .passes = passes.constData(),
             .passCount = int(passes.size()),
             .valueOverrides = overrides.isEmpty() ? nullptr : overrides.constData(),
             .valueOverrideCount = int(overrides.size())}};
    const Rules::BrokenRule broken = Rules::firstBrokenRule(presets);
    QCOMPARE(broken.rule, rule);
    QCOMPARE(broken.preset, "p"_ba);
    QCOMPARE(broken.culprit, culprit);
    for (const auto &[text, find] : Rules::kRules)
        QVERIFY2((find(presets[0]) != nullptr) == (text == rule), text);
}

// The counts of a preset's own arrays, which rules() keeps right.
void TestFirstPartyPresets::presetCountsMatchArrays_data()
{
    QTest::addColumn<bool>("hasPasses");
    QTest::addColumn<int>("passCount");
    QTest::addColumn<bool>("hasOverrides");
    QTest::addColumn<int>("overrideCount");
    QTest::addColumn<QByteArray>("culprit");
    QTest::newRow("both arrays") << true << 3 << true << 1 << QByteArray();
    QTest::newRow("no overrides") << true << 3 << false << 0 << QByteArray();
    QTest::newRow("passes, negative count") << true << -1 << false << 0 << "passes"_ba;
    QTest::newRow("passes, count 0") << true << 0 << false << 0 << "passes"_ba;
    QTest::newRow("no passes, count 1") << false << 1 << false << 0 << "passes"_ba;
    QTest::newRow("overrides, negative count") << true << 3 << true << -1 << "valueOverrides"_ba;
    QTest::newRow("overrides, count 0") << true << 3 << true << 0 << "valueOverrides"_ba;
    QTest::newRow("no overrides, count 1") << true << 3 << false << 1 << "valueOverrides"_ba;
    QTest::newRow("no overrides, negative count")
            << true << 3 << false << -1 << "valueOverrides"_ba;
}

void TestFirstPartyPresets::presetCountsMatchArrays()
{
    QFETCH(bool, hasPasses);
    QFETCH(int, passCount);
    QFETCH(bool, hasOverrides);
    QFETCH(int, overrideCount);
    QFETCH(QByteArray, culprit);
    const PresetDecl preset = {.name = "p",
                               .passes = hasPasses ? kGoodPasses : nullptr,
                               .passCount = passCount,
                               .valueOverrides = hasOverrides ? kGoodOverrides : nullptr,
                               .valueOverrideCount = overrideCount};
    QCOMPARE(Rules::countWithoutArray(preset), culprit);
}

void TestFirstPartyPresets::names_data()
{
    QTest::addColumn<bool>("isPlain");
    for (const char *const name : {"a", "crt-pvm", "A_b-C", "2x", "Z9", "z0"})
        QTest::addRow("%s", name) << true;
    for (const char *const name : {"", "a b", "a.b", "a/b", "-a", "_a", "a\"", "@", "a[", "a`",
                                   "a{", "a:", "a\n", "a\xe4", "a\xc3\xa4"})
        QTest::newRow(name) << false;
}

void TestFirstPartyPresets::names()
{
    QFETCH(bool, isPlain);
    const PresetDecl preset = {.name = QTest::currentDataTag(),
                               .passes = kGoodPasses,
                               .passCount = std::size(kGoodPasses)};
    QCOMPARE(Rules::unusableName(preset), isPlain ? QByteArray() : "name"_ba);
}

void TestFirstPartyPresets::rulesHoldForAGoodPreset()
{
    const PresetDecl preset = {.name = "p",
                               .feedbackPassIndex = 2,
                               .passes = kGoodPasses,
                               .passCount = std::size(kGoodPasses),
                               .valueOverrides = kGoodOverrides,
                               .valueOverrideCount = std::size(kGoodOverrides)};
    for (const auto &[text, find] : Rules::kRules)
        QVERIFY2(find(preset) == nullptr, text);
}

void TestFirstPartyPresets::identifiersMayNotCollide()
{
    const auto named = [](const char *name) {
        return PresetDecl{.name = name, .passes = kGoodPasses, .passCount = 1};
    };
    const PresetDecl distinct[] = {named("a-b"), named("a-c"), named("a")};
    const PresetDecl colliding[] = {named("a-b"), named("c"), named("a_b")};
    QVERIFY(Rules::firstBrokenRule(distinct).rule == nullptr);
    const Rules::BrokenRule broken = Rules::firstBrokenRule(colliding);
    QCOMPARE(broken.rule, "two preset names differ in more than - against _"_ba);
    QCOMPARE(broken.preset, "a_b"_ba);
    QCOMPARE(broken.culprit, "a-b"_ba);
}

QTEST_APPLESS_MAIN(TestFirstPartyPresets)
#include "tst_FirstPartyPresets.moc"
