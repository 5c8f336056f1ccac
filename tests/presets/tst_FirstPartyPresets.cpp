#include <FirstPartyPresets.h>

#include "PresetTables.h"
#include "TestSupport.h"

#include <QHash>
#include <QSet>

using namespace Qt::StringLiterals;
using namespace FirstPartyPresetSource;

namespace {

using Row = PresetTableRow;

const PresetDecl &presetAt(std::size_t index)
{
    if (index >= std::size(kPresets))
        qFatal("presets.csv has more rows than kPresets");
    return kPresets[index];
}

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
    const T *rows;
    int count;
};

template<typename T>
using Arrays = QHash<QByteArray, Array<T>>;

template<typename T>
int rowCount(const Arrays<T> &arrays)
{
    int count = 0;
    for (const Array<T> &array : arrays)
        count += array.count;
    return count;
}

// The next row of the array that a table names: a table lists each array's rows in order.
template<typename T>
T nextRow(const Arrays<T> &arrays, const QByteArray &name, QHash<QByteArray, int> &taken)
{
    const int index = taken[name]++;
    if (!arrays.contains(name) || index >= arrays[name].count)
        qFatal("%s has no row %d", name.constData(), index);
    return arrays[name].rows[index];
}

// The arrays that the presets reach, under the names that the tables give them: a name stands for
// the array where it comes first, and every other mention must mean the same one.
Arrays<PassDecl> passArrays()
{
    Arrays<PassDecl> arrays;
    std::size_t index = 0;
    for (const Row &row : presetTable("presets")) {
        const PresetDecl &preset = presetAt(index++);
        if (!arrays.contains(row.text("passes")))
            arrays.insert(row.text("passes"), {preset.passes, preset.passCount});
    }
    return arrays;
}

Arrays<ValueOverride> overrideArrays()
{
    Arrays<ValueOverride> arrays;
    std::size_t index = 0;
    for (const Row &row : presetTable("presets")) {
        const PresetDecl &preset = presetAt(index++);
        if (!arrays.contains(row.text("valueOverrides")))
            arrays.insert(row.text("valueOverrides"),
                          {preset.valueOverrides, preset.valueOverrideCount});
    }
    return arrays;
}

Arrays<ParamDecl> paramArrays()
{
    const Arrays<PassDecl> passes = passArrays();
    Arrays<ParamDecl> arrays;
    QHash<QByteArray, int> taken;
    for (const Row &row : presetTable("passes")) {
        const PassDecl pass = nextRow(passes, row.text("array"), taken);
        if (!arrays.contains(row.text("params")))
            arrays.insert(row.text("params"), {pass.params, pass.paramCount});
    }
    return arrays;
}

// Two names of one array are a mistake in the tables.
template<typename T>
bool namesAreOfDifferentArrays(const Arrays<T> &arrays)
{
    QSet<const T *> distinct;
    for (const Array<T> &array : arrays)
        distinct.insert(array.rows);
    return distinct.size() == arrays.size();
}

using Rule = bool (*)(const PresetDecl &);

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
    void presetsMatchTheTable();
    void passesMatchTheTable();
    void paramsMatchTheTable();
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

void TestFirstPartyPresets::presetsMatchTheTable()
{
    const QList<Row> rows = presetTable("presets");
    QCOMPARE(std::size(kPresets), std::size_t(rows.size()));
    const Arrays<PassDecl> passes = passArrays();
    const Arrays<ValueOverride> overrides = overrideArrays();
    QVERIFY(namesAreOfDifferentArrays(passes));
    QVERIFY(namesAreOfDifferentArrays(overrides));
    for (int i = 0; i < rows.size(); ++i) {
        const Row &row = rows.at(i);
        const PresetDecl &preset = kPresets[i];
        QCOMPARE(preset.name, row.text("name"));
        QCOMPARE(preset.feedbackPassIndex, row.integer("feedbackPassIndex"));
        QCOMPARE(preset.passes, passes.value(row.text("passes")).rows);
        QCOMPARE(preset.passCount, row.integer("passCount"));
        QCOMPARE(preset.passCount, passes.value(row.text("passes")).count);
        QCOMPARE(preset.presetExtension, row.text("presetExtension"));
        QCOMPARE(preset.vulkanOnly, row.flag("vulkanOnly"));
        QCOMPARE(preset.valueOverrides, overrides.value(row.text("valueOverrides")).rows);
        QCOMPARE(preset.valueOverrideCount, row.integer("valueOverrideCount"));
        QCOMPARE(preset.valueOverrideCount, overrides.value(row.text("valueOverrides")).count);
    }
}

void TestFirstPartyPresets::passesMatchTheTable()
{
    const QList<Row> rows = presetTable("passes");
    const Arrays<PassDecl> passes = passArrays();
    const Arrays<ParamDecl> params = paramArrays();
    QCOMPARE(rows.size(), rowCount(passes));
    QVERIFY(namesAreOfDifferentArrays(params));
    QHash<QByteArray, int> taken;
    for (const Row &row : rows) {
        const PassDecl pass = nextRow(passes, row.text("array"), taken);
        QCOMPARE(taken.value(row.text("array")) - 1, row.integer("index"));
        QCOMPARE(pass.component, row.text("component"));
        QCOMPARE(pass.extentAlias, row.text("extentAlias"));
        QCOMPARE(pass.linearFilter, row.flag("linearFilter"));
        QCOMPARE(pass.scaleType, row.integer("scaleType"));
        QCOMPARE(pass.scaleX, row.real("scaleX"));
        QCOMPARE(pass.scaleY, row.real("scaleY"));
        QCOMPARE(pass.absoluteWidth, row.integer("absoluteWidth"));
        QCOMPARE(pass.absoluteHeight, row.integer("absoluteHeight"));
        QCOMPARE(pass.reserved, row.integer("reserved"));
        QCOMPARE(pass.wrapMode, row.integer("wrapMode"));
        QCOMPARE(pass.params, params.value(row.text("params")).rows);
        QCOMPARE(pass.paramCount, row.integer("paramCount"));
        QCOMPARE(pass.paramCount, params.value(row.text("params")).count);
        QCOMPARE(pass.mipmap, row.flag("mipmap"));
        QCOMPARE(pass.cacheByParameters, row.flag("cacheByParameters"));
        QCOMPARE(pass.constantBlackWhenZero, row.text("constantBlackWhenZero"));
        QCOMPARE(pass.constantBlackAlpha, row.real("constantBlackAlpha"));
        QCOMPARE(pass.shareConstantBlack, row.flag("shareConstantBlack"));
        QCOMPARE(pass.feedback, row.flag("feedback"));
        QCOMPARE(pass.scaleInputAlias, row.text("scaleInputAlias"));
    }
}

void TestFirstPartyPresets::paramsMatchTheTable()
{
    const QList<Row> rows = presetTable("params");
    const Arrays<ParamDecl> params = paramArrays();
    QCOMPARE(rows.size(), rowCount(params));
    QHash<QByteArray, int> taken;
    for (const Row &row : rows) {
        const ParamDecl param = nextRow(params, row.text("array"), taken);
        QCOMPARE(param.id, row.text("id"));
        QCOMPARE(param.description, row.text("description"));
        // Not QCOMPARE's fuzzy comparison: the manifest shows every bit.
        QVERIFY2(param.defaultValue == row.real("defaultValue"), param.id);
        QVERIFY2(param.min == row.real("min"), param.id);
        QVERIFY2(param.max == row.real("max"), param.id);
        QVERIFY2(param.step == row.real("step"), param.id);
    }
}

void TestFirstPartyPresets::overridesMatchTheTable()
{
    const QList<Row> rows = presetTable("overrides");
    const Arrays<ValueOverride> overrides = overrideArrays();
    QCOMPARE(rows.size(), rowCount(overrides));
    QHash<QByteArray, int> taken;
    for (const Row &row : rows) {
        const ValueOverride value = nextRow(overrides, row.text("array"), taken);
        QCOMPARE(value.id, row.text("id"));
        QVERIFY2(value.value == row.real("value"), value.id);
    }
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
    QTest::addColumn<QList<PassDecl>>("passes");
    QTest::addColumn<QList<ValueOverride>>("overrides");
    QTest::addColumn<int>("feedbackPassIndex");

    const QList<PassDecl> good(std::begin(kGoodPasses), std::end(kGoodPasses));
    const auto withPass = [&good](const PassDecl &pass) { return good + QList<PassDecl>({pass}); };
    const QList<ValueOverride> none;

    QTest::newRow("no passes") << Rule(Rules::hasPasses) << QList<PassDecl>() << none << -1;
    QTest::newRow("count without array")
            << Rule(Rules::countsMatchArrays) << withPass({.component = "x", .paramCount = -1})
            << none << -1;
    QTest::newRow("array without count")
            << Rule(Rules::countsMatchArrays) << withPass({.component = "x", .params = kParams})
            << none << -1;
    QTest::newRow("negative count with an array")
            << Rule(Rules::countsMatchArrays)
            << withPass({.component = "x", .params = kParams, .paramCount = -1}) << none << -1;
    QTest::newRow("feedback index n") << Rule(Rules::feedbackPassIsInRange) << good << none << 3;
    QTest::newRow("feedback index -2") << Rule(Rules::feedbackPassIsInRange) << good << none << -2;
    QTest::newRow("alias twice") << Rule(Rules::aliasesAreUnique)
                                 << withPass({.component = "x", .extentAlias = "ONE"}) << none
                                 << -1;
    QTest::newRow("scale input published nowhere")
            << Rule(Rules::scaleInputsArePublishedEarlier)
            << withPass({.component = "x", .scaleInputAlias = "FOUR"}) << none << -1;
    QTest::newRow("scale input of the first pass")
            << Rule(Rules::scaleInputsArePublishedEarlier)
            << QList<PassDecl>({{.component = "x", .scaleInputAlias = "FOUR"}}) << none << -1;
    QTest::newRow("scale input published by itself")
            << Rule(Rules::scaleInputsArePublishedEarlier)
            << withPass({.component = "x", .extentAlias = "FOUR", .scaleInputAlias = "FOUR"})
            << none << -1;
    QTest::newRow("absolute size on a relative pass")
            << Rule(Rules::absoluteSizesAreOnAbsolutePasses)
            << withPass({.component = "x", .absoluteHeight = 1}) << none << -1;
    QTest::newRow("absolute pass without a size")
            << Rule(Rules::absoluteSizesAreOnAbsolutePasses)
            << withPass({.component = "x", .scaleType = kScaleAbsolute}) << none << -1;
    QTest::newRow("absolute pass with a negative height")
            << Rule(Rules::absoluteSizesAreOnAbsolutePasses)
            << withPass({.component = "x",
                         .scaleType = kScaleAbsolute,
                         .absoluteWidth = 8,
                         .absoluteHeight = -1})
            << none << -1;
    QTest::newRow("constant black on an unbound id")
            << Rule(Rules::constantBlackIdsAreBound)
            << withPass({.component = "x", .constantBlackWhenZero = "b"}) << none << -1;
    QTest::newRow("override of an unbound id") << Rule(Rules::overrideIdsAreBound) << good
                                               << QList<ValueOverride>({{"b", 1.0F}}) << -1;
    QTest::newRow("override twice") << Rule(Rules::overrideIdsAreUnique) << good
                                    << QList<ValueOverride>({{"a", 1.0F}, {"a", 1.0F}}) << -1;
    QTest::newRow("override below the minimum") << Rule(Rules::overrideValuesAreInRange) << good
                                                << QList<ValueOverride>({{"a", -0.1F}}) << -1;
    QTest::newRow("override above the maximum") << Rule(Rules::overrideValuesAreInRange) << good
                                                << QList<ValueOverride>({{"a", 1.1F}}) << -1;
    QTest::newRow("scale type -1") << Rule(Rules::valuesAreInRange)
                                   << withPass({.component = "x", .scaleType = -1}) << none << -1;
    QTest::newRow("scale type 3") << Rule(Rules::valuesAreInRange)
                                  << withPass({.component = "x", .scaleType = 3}) << none << -1;
    QTest::newRow("constant black alpha 0.5")
            << Rule(Rules::valuesAreInRange)
            << withPass({.component = "x", .constantBlackAlpha = 0.5F}) << none << -1;
    static constexpr ParamDecl kWithoutStep[] = {{"b", "B", 0.5F, 0.0F, 1.0F, 0.0F}};
    QTest::newRow("step 0") << Rule(Rules::valuesAreInRange)
                            << withPass({.component = "x", .params = kWithoutStep, .paramCount = 1})
                            << none << -1;
    static constexpr ParamDecl kOutOfRange[] = {{"b", "B", 2.0F, 0.0F, 1.0F, 0.1F}};
    QTest::newRow("default above max")
            << Rule(Rules::valuesAreInRange)
            << withPass({.component = "x", .params = kOutOfRange, .paramCount = 1}) << none << -1;
}

void TestFirstPartyPresets::rules()
{
    QFETCH(Rule, rule);
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
    QVERIFY(!rule(preset));
}

// The counts of a preset's own arrays, which rules() keeps right.
void TestFirstPartyPresets::presetCountsMatchArrays_data()
{
    QTest::addColumn<bool>("hasPasses");
    QTest::addColumn<int>("passCount");
    QTest::addColumn<bool>("hasOverrides");
    QTest::addColumn<int>("overrideCount");
    QTest::addColumn<bool>("isRight");
    QTest::newRow("both arrays") << true << 3 << true << 1 << true;
    QTest::newRow("no overrides") << true << 3 << false << 0 << true;
    QTest::newRow("passes, negative count") << true << -1 << false << 0 << false;
    QTest::newRow("passes, count 0") << true << 0 << false << 0 << false;
    QTest::newRow("no passes, count 1") << false << 1 << false << 0 << false;
    QTest::newRow("overrides, negative count") << true << 3 << true << -1 << false;
    QTest::newRow("overrides, count 0") << true << 3 << true << 0 << false;
    QTest::newRow("no overrides, count 1") << true << 3 << false << 1 << false;
    QTest::newRow("no overrides, negative count") << true << 3 << false << -1 << false;
}

void TestFirstPartyPresets::presetCountsMatchArrays()
{
    QFETCH(bool, hasPasses);
    QFETCH(int, passCount);
    QFETCH(bool, hasOverrides);
    QFETCH(int, overrideCount);
    QFETCH(bool, isRight);
    const PresetDecl preset = {.name = "p",
                               .passes = hasPasses ? kGoodPasses : nullptr,
                               .passCount = passCount,
                               .valueOverrides = hasOverrides ? kGoodOverrides : nullptr,
                               .valueOverrideCount = overrideCount};
    QCOMPARE(Rules::countsMatchArrays(preset), isRight);
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
    QCOMPARE(Rules::nameIsPlain(preset), isPlain);
}

void TestFirstPartyPresets::rulesHoldForAGoodPreset()
{
    const PresetDecl preset = {.name = "p",
                               .feedbackPassIndex = 2,
                               .passes = kGoodPasses,
                               .passCount = std::size(kGoodPasses),
                               .valueOverrides = kGoodOverrides,
                               .valueOverrideCount = std::size(kGoodOverrides)};
    const std::pair<const char *, Rule> rules[] = {
            {"hasPasses", Rules::hasPasses},
            {"countsMatchArrays", Rules::countsMatchArrays},
            {"feedbackPassIsInRange", Rules::feedbackPassIsInRange},
            {"aliasesAreUnique", Rules::aliasesAreUnique},
            {"scaleInputsArePublishedEarlier", Rules::scaleInputsArePublishedEarlier},
            {"absoluteSizesAreOnAbsolutePasses", Rules::absoluteSizesAreOnAbsolutePasses},
            {"constantBlackIdsAreBound", Rules::constantBlackIdsAreBound},
            {"overrideIdsAreBound", Rules::overrideIdsAreBound},
            {"nameIsPlain", Rules::nameIsPlain},
            {"lastRowsCanBeRead", Rules::lastRowsCanBeRead},
            {"overrideValuesAreInRange", Rules::overrideValuesAreInRange},
            {"overrideIdsAreUnique", Rules::overrideIdsAreUnique},
            {"valuesAreInRange", Rules::valuesAreInRange},
    };
    for (const auto &[name, rule] : rules)
        QVERIFY2(rule(preset), name);
}

void TestFirstPartyPresets::identifiersMayNotCollide()
{
    const auto named = [](const char *name) {
        return PresetDecl{.name = name, .passes = kGoodPasses, .passCount = 1};
    };
    const PresetDecl distinct[] = {named("a-b"), named("a-c"), named("a")};
    const PresetDecl colliding[] = {named("a-b"), named("c"), named("a_b")};
    QVERIFY(Rules::identifiersAreUnique(distinct));
    QVERIFY(!Rules::identifiersAreUnique(colliding));
}

QTEST_APPLESS_MAIN(TestFirstPartyPresets)
#include "tst_FirstPartyPresets.moc"
