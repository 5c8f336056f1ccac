#include <FirstPartyPresets.h>

#include "PresetTables.h"
#include "TestSupport.h"

#include <QHash>
#include <QMap>

#include <limits>

using namespace Qt::StringLiterals;
using namespace FirstPartyPresetSource;

namespace {

using Row = PresetTableRow;

const PresetDecl &presetNamed(std::string_view name)
{
    const auto *const found = std::ranges::find(kPresets, name, &PresetDecl::name);
    if (found == std::end(kPresets))
        qFatal("no such preset");
    return *found;
}

template<typename T>
struct Array
{
    const T *rows = nullptr;
    int count = 0;
};

// The arrays that the presets reach, under the names that the tables give them: a name stands for
// the array where it comes first, and every other mention must mean the same one.
template<typename T>
using Arrays = QMap<QByteArray, Array<T>>;

// A table's row, and what it states.
template<typename T>
using Stated = std::pair<Row, const T *>;

// tablesAreComplete() tells of what is missing in either.
QList<Stated<PresetDecl>> statedPresets()
{
    QList<Stated<PresetDecl>> stated;
    for (const Row &row : presetTable("presets")) {
        const QByteArray name = row.text("name");
        const auto *const preset =
                std::ranges::find(kPresets, std::string_view(name.constData()), &PresetDecl::name);
        if (preset != std::end(kPresets))
            stated.append({row, preset});
    }
    return stated;
}

// A table lists each array's rows in order.
template<typename T>
QList<Stated<T>> statedRows(const char *table, const Arrays<T> &arrays)
{
    QList<Stated<T>> stated;
    QHash<QByteArray, int> taken;
    for (const Row &row : presetTable(table)) {
        const Array<T> array = arrays.value(row.text("array"));
        const int index = taken[row.text("array")]++;
        if (index < array.count)
            stated.append({row, array.rows + index});
    }
    return stated;
}

Arrays<PassDecl> passArrays()
{
    Arrays<PassDecl> arrays;
    for (const auto &[row, preset] : statedPresets()) {
        if (!arrays.contains(row.text("passes")))
            arrays.insert(row.text("passes"), {preset->passes, preset->passCount});
    }
    return arrays;
}

Arrays<ValueOverride> overrideArrays()
{
    Arrays<ValueOverride> arrays;
    for (const auto &[row, preset] : statedPresets()) {
        if (!arrays.contains(row.text("valueOverrides")))
            arrays.insert(row.text("valueOverrides"),
                          {preset->valueOverrides, preset->valueOverrideCount});
    }
    return arrays;
}

Arrays<ParamDecl> paramArrays()
{
    Arrays<ParamDecl> arrays;
    for (const auto &[row, pass] : statedRows("passes", passArrays())) {
        if (!arrays.contains(row.text("params")))
            arrays.insert(row.text("params"), {pass->params, pass->paramCount});
    }
    return arrays;
}

// For QCOMPARE, whose comparison of numbers is fuzzy: the manifest shows every bit.
QByteArray exact(float number)
{
    return QByteArray::number(double(number), 'g', std::numeric_limits<float>::max_digits10);
}

// A line for each array of which a table has too few rows or too many, or another name.
template<typename T>
QByteArrayList mistakes(const QByteArray &table, const Arrays<T> &arrays)
{
    QMap<QByteArray, int> counts;
    for (const Row &row : presetTable(table.constData()))
        ++counts[row.text("array")];
    QByteArrayList lines;
    QHash<const T *, QByteArray> names;
    for (const auto &[name, array] : arrays.asKeyValueRange()) {
        const int count = counts.take(name);
        if (count != array.count) {
            lines.append(table + ".csv has " + QByteArray::number(count) + " rows of '" + name
                         + "', which has " + QByteArray::number(array.count));
        }
        if (names.contains(array.rows))
            lines.append('\'' + names.value(array.rows) + "' and '" + name + "' are one array");
        names.insert(array.rows, name);
    }
    for (const auto &[name, count] : counts.asKeyValueRange())
        lines.append(table + ".csv has rows of '" + name + "', which no preset reaches");
    return lines;
}

using Rule = const char *(*)(const PresetDecl &);

constexpr ParamDecl kParams[] = {
        {.id = "a",
         .description = "A",
         .defaultValue = 0.5F,
         .min = 0.0F,
         .max = 1.0F,
         .step = 0.1F},
};
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
    void tablesAreComplete();
    void presetsMatchTheTable_data();
    void presetsMatchTheTable();
    void passesMatchTheTable_data();
    void passesMatchTheTable();
    void paramsMatchTheTable_data();
    void paramsMatchTheTable();
    void overridesMatchTheTable_data();
    void overridesMatchTheTable();
    void componentMayStandTwiceInOnePreset();
    void feedbackIsDeclaredInTwoWays();
    void constantBlackMayBeTransparent();
    void stockAndRewindShipForGl();
    void oneIdMayBeBoundByMorePasses();
    void presetWithoutOverridesHasNoArray();
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

void TestFirstPartyPresets::tablesAreComplete()
{
    QByteArrayList names;
    for (const PresetDecl &preset : kPresets)
        names.append(preset.name);
    QByteArrayList expected;
    for (const Row &row : presetTable("presets"))
        expected.append(row.text("name"));

    QByteArrayList lines;
    for (const QByteArray &name : std::as_const(names)) {
        if (!expected.contains(name))
            lines.append("presets.csv has no row of preset '" + name + '\'');
    }
    for (const QByteArray &name : std::as_const(expected)) {
        if (!names.contains(name))
            lines.append("presets.csv has a row of '" + name + "', which is no preset");
    }
    QVERIFY2(lines.isEmpty(), lines.join('\n').constData());
    QCOMPARE(names, expected);
    lines = mistakes("passes", passArrays()) + mistakes("overrides", overrideArrays());
    QVERIFY2(lines.isEmpty(), lines.join('\n').constData());
    lines = mistakes("params", paramArrays());
    QVERIFY2(lines.isEmpty(), lines.join('\n').constData());
}

void TestFirstPartyPresets::presetsMatchTheTable_data()
{
    QTest::addColumn<Row>("row");
    QTest::addColumn<const PresetDecl *>("preset");
    QTest::addColumn<Array<PassDecl>>("passes");
    QTest::addColumn<Array<ValueOverride>>("overrides");
    const Arrays<PassDecl> passes = passArrays();
    const Arrays<ValueOverride> overrides = overrideArrays();
    for (const auto &[row, preset] : statedPresets()) {
        QTest::newRow(preset->name) << row << preset << passes.value(row.text("passes"))
                                    << overrides.value(row.text("valueOverrides"));
    }
}

void TestFirstPartyPresets::presetsMatchTheTable()
{
    QFETCH(Row, row);
    QFETCH(const PresetDecl *, preset);
    QFETCH(Array<PassDecl>, passes);
    QFETCH(Array<ValueOverride>, overrides);
    QCOMPARE(preset->feedbackPassIndex, row.integer("feedbackPassIndex"));
    QCOMPARE(preset->passes, passes.rows);
    QCOMPARE(preset->passCount, row.integer("passCount"));
    QCOMPARE(preset->passCount, passes.count);
    QCOMPARE(preset->presetExtension, row.text("presetExtension"));
    QCOMPARE(preset->vulkanOnly, row.flag("vulkanOnly"));
    QCOMPARE(preset->valueOverrides, overrides.rows);
    QCOMPARE(preset->valueOverrideCount, row.integer("valueOverrideCount"));
    QCOMPARE(preset->valueOverrideCount, overrides.count);
}

void TestFirstPartyPresets::passesMatchTheTable_data()
{
    QTest::addColumn<Row>("row");
    QTest::addColumn<const PassDecl *>("pass");
    QTest::addColumn<int>("index");
    QTest::addColumn<Array<ParamDecl>>("params");
    const Arrays<PassDecl> passes = passArrays();
    const Arrays<ParamDecl> params = paramArrays();
    for (const auto &[row, pass] : statedRows("passes", passes)) {
        const QByteArray name = row.text("array");
        const int index = int(pass - passes.value(name).rows);
        QTest::addRow("%s %d", name.constData(), index)
                << row << pass << index << params.value(row.text("params"));
    }
}

void TestFirstPartyPresets::passesMatchTheTable()
{
    QFETCH(Row, row);
    QFETCH(const PassDecl *, pass);
    QFETCH(int, index);
    QFETCH(Array<ParamDecl>, params);
    QCOMPARE(index, row.integer("index"));
    QCOMPARE(pass->component, row.text("component"));
    QCOMPARE(pass->extentAlias, row.text("extentAlias"));
    QCOMPARE(pass->linearFilter, row.flag("linearFilter"));
    QCOMPARE(pass->scaleType, row.integer("scaleType"));
    QCOMPARE(pass->scaleX, row.real("scaleX"));
    QCOMPARE(pass->scaleY, row.real("scaleY"));
    QCOMPARE(pass->absoluteWidth, row.integer("absoluteWidth"));
    QCOMPARE(pass->absoluteHeight, row.integer("absoluteHeight"));
    QCOMPARE(pass->reserved, row.integer("reserved"));
    QCOMPARE(pass->wrapMode, row.integer("wrapMode"));
    QCOMPARE(pass->params, params.rows);
    QCOMPARE(pass->paramCount, row.integer("paramCount"));
    QCOMPARE(pass->paramCount, params.count);
    QCOMPARE(pass->mipmap, row.flag("mipmap"));
    QCOMPARE(pass->cacheByParameters, row.flag("cacheByParameters"));
    QCOMPARE(pass->constantBlackWhenZero, row.text("constantBlackWhenZero"));
    QCOMPARE(pass->constantBlackAlpha, row.real("constantBlackAlpha"));
    QCOMPARE(pass->shareConstantBlack, row.flag("shareConstantBlack"));
    QCOMPARE(pass->feedback, row.flag("feedback"));
    QCOMPARE(pass->scaleInputAlias, row.text("scaleInputAlias"));
}

void TestFirstPartyPresets::paramsMatchTheTable_data()
{
    QTest::addColumn<Row>("row");
    QTest::addColumn<const ParamDecl *>("param");
    for (const auto &[row, param] : statedRows("params", paramArrays()))
        QTest::addRow("%s %s", row.text("array").constData(), param->id) << row << param;
}

void TestFirstPartyPresets::paramsMatchTheTable()
{
    QFETCH(Row, row);
    QFETCH(const ParamDecl *, param);
    QCOMPARE(param->id, row.text("id"));
    QCOMPARE(param->description, row.text("description"));
    QCOMPARE(exact(param->defaultValue), exact(row.real("defaultValue")));
    QCOMPARE(exact(param->min), exact(row.real("min")));
    QCOMPARE(exact(param->max), exact(row.real("max")));
    QCOMPARE(exact(param->step), exact(row.real("step")));
}

void TestFirstPartyPresets::overridesMatchTheTable_data()
{
    QTest::addColumn<Row>("row");
    QTest::addColumn<const ValueOverride *>("value");
    for (const auto &[row, value] : statedRows("overrides", overrideArrays()))
        QTest::addRow("%s %s", row.text("array").constData(), value->id) << row << value;
}

void TestFirstPartyPresets::overridesMatchTheTable()
{
    QFETCH(Row, row);
    QFETCH(const ValueOverride *, value);
    QCOMPARE(value->id, row.text("id"));
    QCOMPARE(exact(value->value), exact(row.real("value")));
}

void TestFirstPartyPresets::componentMayStandTwiceInOnePreset()
{
    QCOMPARE(QByteArray(kCrtPasses[2].component), "crt-abl-reduce");
    QCOMPARE(QByteArray(kCrtPasses[3].component), "crt-abl-reduce");
    QCOMPARE(kCrtPasses[2].absoluteWidth, 256);
    QCOMPARE(kCrtPasses[3].absoluteWidth, 8);
}

void TestFirstPartyPresets::feedbackIsDeclaredInTwoWays()
{
    for (const char *const name : {"gba-lcd", "gameboy-lcd", "dmg-lcd"}) {
        const PresetDecl &preset = presetNamed(name);
        QCOMPARE(preset.feedbackPassIndex, 1);
        QVERIFY(QByteArray(preset.passes[1].component).endsWith("-ghost"));
        QVERIFY(!preset.passes[1].feedback);
    }
    const PresetDecl &crt = presetNamed("crt-pvm");
    QCOMPARE(crt.feedbackPassIndex, -1);
    for (const PassDecl &pass : passesOf(crt))
        QCOMPARE(pass.feedback, QByteArray(pass.component) == "crt-persistence");
}

void TestFirstPartyPresets::constantBlackMayBeTransparent()
{
    for (const PassDecl &pass : passesOf(presetNamed("crt-pvm"))) {
        const bool isWide = QByteArray(pass.component) == "crt-halation-wide-down";
        QCOMPARE(pass.constantBlackAlpha, isWide ? 0.0F : 1.0F);
    }
}

void TestFirstPartyPresets::stockAndRewindShipForGl()
{
    QCOMPARE(presetNamed("stock").presetExtension, "glsl");
    QCOMPARE(presetNamed("rewind").presetExtension, "glslp");
    QVERIFY(!presetNamed("stock").vulkanOnly);
    QVERIFY(!presetNamed("rewind").vulkanOnly);
    QVERIFY(presetNamed("no-pixels").vulkanOnly);
}

void TestFirstPartyPresets::oneIdMayBeBoundByMorePasses()
{
    const auto binders = [](const PresetDecl &preset, std::string_view id) {
        QList<int> indices;
        int index = 0;
        for (const PassDecl &pass : passesOf(preset)) {
            for (const ParamDecl &param : paramsOf(pass)) {
                if (param.id == id)
                    indices.append(index);
            }
            ++index;
        }
        return indices;
    };
    QCOMPARE(binders(presetNamed("gba-lcd"), "LCD_COLOR_PROFILE"), QList<int>({0, 2}));
    QCOMPARE(binders(presetNamed("gameboy-lcd"), "LCD_COLOR_PROFILE"), QList<int>({0, 2}));
    QCOMPARE(binders(presetNamed("dmg-lcd"), "dmg_shadow_offset"), QList<int>({3, 4}));
    QCOMPARE(binders(presetNamed("crt-pvm"), "overscan"), QList<int>({8, 17}));
    QCOMPARE(binders(presetNamed("crt-pvm"), "crt_white"), QList<int>({4, 12}));
}

void TestFirstPartyPresets::presetWithoutOverridesHasNoArray()
{
    for (const char *const name : {"no-pixels", "rewind", "stock"}) {
        QVERIFY(presetNamed(name).valueOverrides == nullptr);
        QCOMPARE(presetNamed(name).valueOverrideCount, 0);
    }
}

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
