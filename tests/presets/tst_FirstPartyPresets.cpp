#include <FirstPartyPresets.h>

#include "TestSupport.h"

using namespace Qt::StringLiterals;
using namespace FirstPartyPresetSource;

namespace {

using Rule = const char *(*)(const PresetDecl &);

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
    QTest::addColumn<Rule>("rule");
    QTest::addColumn<QByteArray>("culprit");
    QTest::addColumn<QList<PassDecl>>("passes");
    QTest::addColumn<QList<ValueOverride>>("overrides");
    QTest::addColumn<int>("feedbackPassIndex");

    const QList<PassDecl> good(std::begin(kGoodPasses), std::end(kGoodPasses));
    const auto withPass = [&good](const PassDecl &pass) { return good + QList<PassDecl>({pass}); };
    const QList<ValueOverride> none;

    QTest::newRow("no passes") << Rule(Rules::missingPasses) << "passes"_ba << QList<PassDecl>()
                               << none << -1;
    QTest::newRow("count without array")
            << Rule(Rules::countWithoutArray) << "x"_ba
            << withPass({.component = "x", .paramCount = -1}) << none << -1;
    QTest::newRow("array without count")
            << Rule(Rules::countWithoutArray) << "x"_ba
            << withPass({.component = "x", .params = kParams}) << none << -1;
    QTest::newRow("negative count with an array")
            << Rule(Rules::countWithoutArray) << "x"_ba
            << withPass({.component = "x", .params = kParams, .paramCount = -1}) << none << -1;
    QTest::newRow("feedback index n")
            << Rule(Rules::feedbackPassOutOfRange) << "feedbackPassIndex"_ba << good << none << 3;
    QTest::newRow("feedback index -2")
            << Rule(Rules::feedbackPassOutOfRange) << "feedbackPassIndex"_ba << good << none << -2;
    QTest::newRow("alias twice") << Rule(Rules::repeatedAlias) << "ONE"_ba
                                 << withPass({.component = "x", .extentAlias = "ONE"}) << none
                                 << -1;
    QTest::newRow("scale input published nowhere")
            << Rule(Rules::scaleInputNotPublishedEarlier) << "FOUR"_ba
            << withPass({.component = "x", .scaleInputAlias = "FOUR"}) << none << -1;
    QTest::newRow("scale input of the first pass")
            << Rule(Rules::scaleInputNotPublishedEarlier) << "FOUR"_ba
            << QList<PassDecl>({{.component = "x", .scaleInputAlias = "FOUR"}}) << none << -1;
    QTest::newRow("scale input published by itself")
            << Rule(Rules::scaleInputNotPublishedEarlier) << "FOUR"_ba
            << withPass({.component = "x", .extentAlias = "FOUR", .scaleInputAlias = "FOUR"})
            << none << -1;
    QTest::newRow("absolute size on a relative pass")
            << Rule(Rules::misplacedAbsoluteSize) << "x"_ba
            << withPass({.component = "x", .absoluteHeight = 1}) << none << -1;
    QTest::newRow("absolute pass without a size")
            << Rule(Rules::misplacedAbsoluteSize) << "x"_ba
            << withPass({.component = "x", .scaleType = kScaleAbsolute}) << none << -1;
    QTest::newRow("absolute pass with a negative height")
            << Rule(Rules::misplacedAbsoluteSize) << "x"_ba
            << withPass({.component = "x",
                         .scaleType = kScaleAbsolute,
                         .absoluteWidth = 8,
                         .absoluteHeight = -1})
            << none << -1;
    QTest::newRow("constant black on an unbound id")
            << Rule(Rules::unboundConstantBlack) << "b"_ba
            << withPass({.component = "x", .constantBlackWhenZero = "b"}) << none << -1;
    QTest::newRow("override of an unbound id") << Rule(Rules::unboundOverride) << "b"_ba << good
                                               << QList<ValueOverride>({{"b", 1.0F}}) << -1;
    QTest::newRow("override twice") << Rule(Rules::repeatedOverride) << "a"_ba << good
                                    << QList<ValueOverride>({{"a", 1.0F}, {"a", 1.0F}}) << -1;
    QTest::newRow("override below the minimum")
            << Rule(Rules::overrideOutOfBounds) << "a"_ba << good
            << QList<ValueOverride>({{"a", -0.1F}}) << -1;
    QTest::newRow("override above the maximum")
            << Rule(Rules::overrideOutOfBounds) << "a"_ba << good
            << QList<ValueOverride>({{"a", 1.1F}}) << -1;
    QTest::newRow("scale type -1") << Rule(Rules::passValueOutOfRange) << "x"_ba
                                   << withPass({.component = "x", .scaleType = -1}) << none << -1;
    QTest::newRow("scale type 3") << Rule(Rules::passValueOutOfRange) << "x"_ba
                                  << withPass({.component = "x", .scaleType = 3}) << none << -1;
    QTest::newRow("constant black alpha 0.5")
            << Rule(Rules::passValueOutOfRange) << "x"_ba
            << withPass({.component = "x", .constantBlackAlpha = 0.5F}) << none << -1;
    static constexpr ParamDecl kWithoutStep[] = {{"b", "B", 0.5F, 0.0F, 1.0F, 0.0F}};
    QTest::newRow("step 0") << Rule(Rules::paramOutOfBounds) << "b"_ba
                            << withPass({.component = "x", .params = kWithoutStep, .paramCount = 1})
                            << none << -1;
    static constexpr ParamDecl kOutOfRange[] = {{"b", "B", 2.0F, 0.0F, 1.0F, 0.1F}};
    QTest::newRow("default above max")
            << Rule(Rules::paramOutOfBounds) << "b"_ba
            << withPass({.component = "x", .params = kOutOfRange, .paramCount = 1}) << none << -1;
}

void TestFirstPartyPresets::rules()
{
    QFETCH(Rule, rule);
    QFETCH(QByteArray, culprit);
    QFETCH(QList<PassDecl>, passes);
    QFETCH(QList<ValueOverride>, overrides);
    QFETCH(int, feedbackPassIndex);

    const PresetDecl preset = {.name = "p",
                               .feedbackPassIndex = feedbackPassIndex,
                               .passes = passes.constData(),
                               .passCount = int(passes.size()),
                               .valueOverrides =
                                       overrides.isEmpty() ? nullptr : overrides.constData(),
                               .valueOverrideCount = int(overrides.size())};
    for (const auto &[text, find] : Rules::kRules)
        QVERIFY2((find(preset) != nullptr) == (find == rule), text);
    QCOMPARE(rule(preset), culprit);
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
