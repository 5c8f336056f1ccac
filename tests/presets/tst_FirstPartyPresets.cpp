#include <FirstPartyPresets.h>

#include "TestSupport.h"

#include <QHash>

#include <cstdlib>
#include <functional>

using namespace Qt::StringLiterals;
using namespace FirstPartyPresetSource;

namespace {

// The rows of a hand-kept table below tests/presets/tables, each by column name.
class Row
{
public:
    Row(const QList<QByteArray> &columns, const QList<QByteArray> &cells)
        : m_columns(columns),
          m_cells(cells)
    {
    }
    QByteArray text(const char *column) const
    {
        return m_cells.at(m_columns.indexOf(column));
    }
    int integer(const char *column) const
    {
        return text(column).toInt();
    }
    float real(const char *column) const
    {
        return std::strtof(text(column).constData(), nullptr);
    }
    bool flag(const char *column) const
    {
        return text(column) == "yes" || text(column) == "true";
    }

private:
    QList<QByteArray> m_columns;
    QList<QByteArray> m_cells;
};

QList<Row> table(const char *name)
{
    const QString path =
            QStringLiteral(SOURCE_DIR "/tests/presets/tables/%1.csv").arg(QLatin1StringView(name));
    QList<QByteArray> lines = readFile(path).split('\n');
    const QList<QByteArray> columns = lines.takeFirst().split(';');
    QList<Row> rows;
    for (const QByteArray &line : std::as_const(lines)) {
        if (line.isEmpty())
            continue;
        const QList<QByteArray> cells = line.split(';');
        if (cells.size() != columns.size())
            qFatal("%s: %s", qPrintable(path), line.constData());
        rows.append(Row(columns, cells));
    }
    return rows;
}

template<typename T>
struct Array
{
    const T *rows;
    int count;
};

// clang-format off
#define ARRAY(name) {#name, {name, std::size(name)}}

const QHash<QByteArray, Array<ParamDecl>> kParamArrays = {
    ARRAY(kCrtDriveParams), ARRAY(kCrtOpticsParams), ARRAY(kCrtPersistenceParams),
    ARRAY(kCrtBeamParams), ARRAY(kCrtTileParams), ARRAY(kCrtScreenParams),
    ARRAY(kConsumerPass0Params), ARRAY(kGbaColorParams), ARRAY(kLcdGhostParams),
    ARRAY(kLcdSubpixelParams), ARRAY(kGameboyLcdPass0Params), ARRAY(kDmgLcdPass0Params),
    ARRAY(kDmgCrosstalkParams), ARRAY(kDmgOcclusionParams), ARRAY(kDmgLcdPass3Params),
    ARRAY(kSfxStrengthParams), ARRAY(kSfxCornerParams), ARRAY(kRewindPass0Params),
    ARRAY(kRewindPass1Params), {"", {nullptr, 0}},
};

const QHash<QByteArray, Array<PassDecl>> kPassArrays = {
    ARRAY(kCrtPasses), ARRAY(kConsumerPasses), ARRAY(kGbaLcdPasses), ARRAY(kGameboyLcdPasses),
    ARRAY(kDmgLcdPasses), ARRAY(kNoPixelsPasses), ARRAY(kRewindPasses), ARRAY(kStockPasses),
};

const QHash<QByteArray, Array<ValueOverride>> kOverrideArrays = {
    ARRAY(kPvmValueOverrides), ARRAY(kBvmValueOverrides), ARRAY(kArcadeValueOverrides),
    ARRAY(kPcValueOverrides), ARRAY(kBwValueOverrides), ARRAY(kConsumerValueOverrides),
    ARRAY(kGbaLcdValueOverrides), ARRAY(kGameboyLcdValueOverrides), ARRAY(kDmgLcdValueOverrides),
    {"", {nullptr, 0}},
};

#undef ARRAY
// clang-format on

template<typename T>
int rowCount(const QHash<QByteArray, Array<T>> &arrays)
{
    int count = 0;
    for (const Array<T> &array : arrays)
        count += array.count;
    return count;
}

// The next row of the array that a table names: a table lists each array's rows in order.
template<typename T>
T nextRow(const QHash<QByteArray, Array<T>> &arrays, const QByteArray &name,
          QHash<QByteArray, int> &taken)
{
    const int index = taken[name]++;
    if (!arrays.contains(name) || index >= arrays[name].count)
        qFatal("%s has no row %d", name.constData(), index);
    return arrays[name].rows[index];
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
    void onlyOneConstantBlackIsTransparent();
    void onlyStockIsGlslAndOnlyTwoShipForGl();
    void oneIdMayBeBoundByMorePasses();
    void presetWithoutOverridesHasNoArray();
    void emptyRangesForCountsOfZeroOrLess();
    void rules_data();
    void rules();
    void rulesHoldForAGoodPreset();
    void identifiersMayNotCollide();
};

void TestFirstPartyPresets::presetsMatchTheTable()
{
    const QList<Row> rows = table("presets");
    QCOMPARE(rows.size(), 12);
    QCOMPARE(std::size(kPresets), std::size_t(12));
    for (int i = 0; i < rows.size(); ++i) {
        const Row &row = rows.at(i);
        const PresetDecl &preset = kPresets[i];
        QCOMPARE(preset.name, row.text("name"));
        QCOMPARE(preset.feedbackPassIndex, row.integer("feedbackPassIndex"));
        QCOMPARE(preset.passes, kPassArrays.value(row.text("passes")).rows);
        QCOMPARE(preset.passCount, row.integer("passCount"));
        QCOMPARE(preset.passCount, kPassArrays.value(row.text("passes")).count);
        QCOMPARE(preset.presetExtension, row.text("presetExtension"));
        QCOMPARE(preset.vulkanOnly, row.flag("vulkanOnly"));
        QCOMPARE(preset.valueOverrides, kOverrideArrays.value(row.text("valueOverrides")).rows);
        QCOMPARE(preset.valueOverrideCount, row.integer("valueOverrideCount"));
        QCOMPARE(preset.valueOverrideCount,
                 kOverrideArrays.value(row.text("valueOverrides")).count);
    }
}

void TestFirstPartyPresets::passesMatchTheTable()
{
    const QList<Row> rows = table("passes");
    QCOMPARE(rows.size(), rowCount(kPassArrays));
    QHash<QByteArray, int> taken;
    for (const Row &row : rows) {
        const PassDecl pass = nextRow(kPassArrays, row.text("array"), taken);
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
        QCOMPARE(pass.params, kParamArrays.value(row.text("params")).rows);
        QCOMPARE(pass.paramCount, row.integer("paramCount"));
        QCOMPARE(pass.paramCount, kParamArrays.value(row.text("params")).count);
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
    const QList<Row> rows = table("params");
    QCOMPARE(rows.size(), rowCount(kParamArrays));
    QHash<QByteArray, int> taken;
    for (const Row &row : rows) {
        const ParamDecl param = nextRow(kParamArrays, row.text("array"), taken);
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
    const QList<Row> rows = table("overrides");
    QCOMPARE(rows.size(), rowCount(kOverrideArrays));
    QHash<QByteArray, int> taken;
    for (const Row &row : rows) {
        const ValueOverride value = nextRow(kOverrideArrays, row.text("array"), taken);
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
    QList<QByteArray> byIndex;
    QList<QByteArray> byFlag;
    for (const PresetDecl &preset : kPresets) {
        if (preset.feedbackPassIndex >= 0)
            byIndex.append(passesOf(preset)[std::size_t(preset.feedbackPassIndex)].component);
        for (const PassDecl &pass : passesOf(preset)) {
            if (pass.feedback && !byFlag.contains(pass.component))
                byFlag.append(pass.component);
        }
    }
    QCOMPARE(byIndex, QList<QByteArray>({"gba-ghost", "gba-ghost", "dmg-ghost"}));
    QCOMPARE(byFlag, QList<QByteArray>({"crt-persistence"}));
}

void TestFirstPartyPresets::onlyOneConstantBlackIsTransparent()
{
    for (const PresetDecl &preset : kPresets) {
        for (const PassDecl &pass : passesOf(preset)) {
            const bool isWide = QByteArray(pass.component) == "crt-halation-wide-down";
            QCOMPARE(pass.constantBlackAlpha, isWide ? 0.0F : 1.0F);
        }
    }
}

void TestFirstPartyPresets::onlyStockIsGlslAndOnlyTwoShipForGl()
{
    for (const PresetDecl &preset : kPresets) {
        const QByteArray name = preset.name;
        QCOMPARE(preset.presetExtension, name == "stock" ? "glsl" : "glslp");
        QCOMPARE(preset.vulkanOnly, name != "stock" && name != "rewind");
    }
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
    QCOMPARE(binders(kPresets[6], "LCD_COLOR_PROFILE"), QList<int>({0, 2}));
    QCOMPARE(binders(kPresets[7], "LCD_COLOR_PROFILE"), QList<int>({0, 2}));
    QCOMPARE(binders(kPresets[8], "dmg_shadow_offset"), QList<int>({3, 4}));
    QCOMPARE(binders(kPresets[0], "overscan"), QList<int>({8, 17}));
    QCOMPARE(binders(kPresets[0], "crt_white"), QList<int>({4, 12}));
}

void TestFirstPartyPresets::presetWithoutOverridesHasNoArray()
{
    for (const char *const name : {"no-pixels", "rewind", "stock"}) {
        const auto *const preset =
                std::ranges::find(kPresets, std::string_view(name), &PresetDecl::name);
        QVERIFY(preset->valueOverrides == nullptr);
        QCOMPARE(preset->valueOverrideCount, 0);
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
    QTest::newRow("feedback index n") << Rule(Rules::feedbackPassIsInRange) << good << none << 3;
    QTest::newRow("feedback index -2") << Rule(Rules::feedbackPassIsInRange) << good << none << -2;
    QTest::newRow("alias twice") << Rule(Rules::aliasesAreUnique)
                                 << withPass({.component = "x", .extentAlias = "ONE"}) << none
                                 << -1;
    QTest::newRow("scale input published nowhere")
            << Rule(Rules::scaleInputsArePublishedEarlier)
            << withPass({.component = "x", .scaleInputAlias = "FOUR"}) << none << -1;
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
    QTest::newRow("constant black on an unbound id")
            << Rule(Rules::constantBlackIdsAreBound)
            << withPass({.component = "x", .constantBlackWhenZero = "b"}) << none << -1;
    QTest::newRow("override of an unbound id") << Rule(Rules::overrideIdsAreBound) << good
                                               << QList<ValueOverride>({{"b", 1.0F}}) << -1;
    QTest::newRow("override twice") << Rule(Rules::overrideIdsAreUnique) << good
                                    << QList<ValueOverride>({{"a", 1.0F}, {"a", 1.0F}}) << -1;
    QTest::newRow("scale type 3") << Rule(Rules::valuesAreInRange)
                                  << withPass({.component = "x", .scaleType = 3}) << none << -1;
    QTest::newRow("constant black alpha 0.5")
            << Rule(Rules::valuesAreInRange)
            << withPass({.component = "x", .constantBlackAlpha = 0.5F}) << none << -1;
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
