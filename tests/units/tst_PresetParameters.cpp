#include <PresetParameters.h>

#include "TestSupport.h"

#include <QLibraryInfo>
#include <QVersionNumber>

#include <limits>

using namespace Qt::StringLiterals;
using namespace FirstPartyPresetSource;

namespace {

constexpr ParamDecl kFirst[] = {
        {"b", "B first", 0.5F, 0.0F, 1.0F, 0.1F},
        {"a", "A", 2.0F, 1.0F, 3.0F, 0.25F},
};
constexpr ParamDecl kSecond[] = {
        {"b", "B second", 9.0F, 8.0F, 10.0F, 1.0F},
        {"c", "C", -1.0F, -2.0F, 0.0F, 0.5F},
};
constexpr PassDecl kPasses[] = {
        {.component = "x", .params = kFirst, .paramCount = 2},
        {.component = "y"},
        {.component = "z", .params = kSecond, .paramCount = 2},
};
constexpr ParamDecl param(const char *id, const char *description)
{
    return {id, description, 0.5F, 0.0F, 1.0F, 0.1F};
}

constexpr ParamDecl kMixedCase[] = {param("b", ""), param("_", ""), param("a", ""), param("B", "")};
constexpr PassDecl kMixedCasePasses[] = {{.component = "x", .params = kMixedCase, .paramCount = 4}};
constexpr ParamDecl kLatin1[] = {param("\xE9", "\xE8")};
constexpr PassDecl kLatin1Passes[] = {{.component = "x", .params = kLatin1, .paramCount = 1}};
constexpr PassDecl kBarePasses[] = {{.component = "x"}};

constexpr PresetDecl kPreset = {.name = "p", .passes = kPasses, .passCount = 3};
constexpr PresetDecl kMixedCasePreset = {.name = "p", .passes = kMixedCasePasses, .passCount = 1};
constexpr PresetDecl kBarePreset = {.name = "p", .passes = kBarePasses, .passCount = 1};

constexpr ValueOverride kOverrides[] = {
        {"c", 0.25F},
        {"unbound", 7.0F},
        {"b", 0.75F},
        {"b", 0.875F},
};

struct Outcome
{
    bool succeeded = false;
    QList<PresetParamMeta> params;
    QByteArray out;
    QByteArray err;
};

Outcome collected(const PresetDecl &decl)
{
    Outcome outcome;
    outcome.params.append(PresetParamMeta()); // stale: must not survive
    outcome.out = captured(stdout, [&] {
        outcome.err = captured(stderr, [&] {
            outcome.succeeded = collectPresetParameters(u"shaders"_s, decl, outcome.params);
        });
    });
    return outcome;
}

QStringList ids(const Outcome &outcome)
{
    QStringList list;
    for (const PresetParamMeta &param : outcome.params)
        list.append(param.id);
    return list;
}

QList<float> initialValues(const Outcome &outcome)
{
    QList<float> list;
    for (const PresetParamMeta &param : outcome.params)
        list.append(param.initialValue);
    return list;
}

} // namespace

class TestPresetParameters : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void freshRecordHasItsDefaults();
    void declarationsAreLatin1();
    void sourceOfTheValues_data();
    void sourceOfTheValues();
    void values_data();
    void values();
    void driftCheck_data();
    void driftCheck();
    void driftMessageIsInCodeUnitOrder();
    void presetWithoutParameters_data();
    void presetWithoutParameters();
    void fileThatExistsButCannotBeReadIsDrift();
    void danglingLinkIsRetired();
};

void TestPresetParameters::freshRecordHasItsDefaults()
{
    const PresetParamMeta fresh;
    QCOMPARE(fresh.id, QString());
    QCOMPARE(fresh.description, QString());
    QCOMPARE(fresh.initialValue, 0.0F);
    QCOMPARE(fresh.defaultValue, 0.0F);
    QCOMPARE(fresh.min, 0.0F);
    QCOMPARE(fresh.max, 1.0F);
    QCOMPARE(fresh.step, 0.1F);
}

// A preset name beyond ASCII names its file, too.
void TestPresetParameters::declarationsAreLatin1()
{
    static constexpr ValueOverride kTuned[] = {{"\xE9", 0.25F}};
    const PresetDecl decl = {.name = "\xEA",
                             .passes = kLatin1Passes,
                             .passCount = 1,
                             .valueOverrides = kTuned,
                             .valueOverrideCount = 1};
    const Outcome retired = collected(decl);
    QVERIFY(retired.succeeded);
    QCOMPARE(ids(retired), QStringList({u"\u00e9"_s}));
    QCOMPARE(retired.params.at(0).description, u"\u00e8"_s);
    QCOMPARE(initialValues(retired), QList<float>({0.25F}));

    writeFile(u"shaders/\u00ea.glslp"_s, "parameters = \"\xc3\xa9\"\n");
    const Outcome outcome = collected(decl);
    QCOMPARE(outcome.err, "");
    QVERIFY(outcome.succeeded);
    QCOMPARE(initialValues(outcome), QList<float>({0.5F}));
}

// The first declaration of an id counts, in every case. Values come from the file, from the
// declared overrides if there is no file, or from neither.
void TestPresetParameters::sourceOfTheValues_data()
{
    QTest::addColumn<QByteArray>("extension");
    QTest::addColumn<QByteArray>("file"); // empty: there is none
    QTest::addColumn<int>("overrideCount");
    QTest::addColumn<QList<float>>("expected"); // of b, a and c
    QTest::addColumn<QByteArray>("note");

    const auto row = [](const char *name, const char *extension, const QByteArray &file,
                        int overrideCount, const QList<float> &expected, const QByteArray &note) {
        QTest::newRow(name) << QByteArray(extension) << file << overrideCount << expected << note;
    };
    const QList<float> defaults = {0.5F, 2.0F, -1.0F};
    row("a file", "glslp", "parameters = \"a;b;c\"\na = \"2.5\"\n", 4, {0.5F, 2.5F, -1.0F}, "");
    row("overrides", "glslp", "", 4, {0.875F, 2.0F, 0.25F},
        "render-graph-compile: preset 'p' has no .glslp source on disk (retired) -- skipping drift "
        "check, using 4 hand-authored value override(s)\n");
    row("no overrides", "glslp", "", 0, defaults,
        "render-graph-compile: preset 'p' has no .glslp source on disk (retired) -- skipping drift "
        "check, using 0 hand-authored value override(s)\n");
    for (const char *extension : {"glsl", "GLSLP", "glslpx", "xglslp", " glslp", ""})
        row(extension, extension, "parameters = \"other\"\nb = \"0.1\"\n", 4, defaults, "");
}

void TestPresetParameters::sourceOfTheValues()
{
    QFETCH(QByteArray, extension);
    QFETCH(QByteArray, file);
    QFETCH(int, overrideCount);
    QFETCH(QList<float>, expected);
    QFETCH(QByteArray, note);
    if (!file.isEmpty())
        writeFile(u"shaders/p.glslp"_s, file);
    PresetDecl decl = kPreset;
    decl.presetExtension = extension.constData();
    decl.valueOverrides = kOverrides;
    decl.valueOverrideCount = overrideCount;
    const Outcome outcome = collected(decl);
    QVERIFY(outcome.succeeded);
    QCOMPARE(ids(outcome), QStringList({u"b"_s, u"a"_s, u"c"_s}));
    QCOMPARE(initialValues(outcome), expected);
    const PresetParamMeta &b = outcome.params.at(0);
    QCOMPARE(b.description, u"B first"_s);
    QCOMPARE(b.defaultValue, 0.5F);
    QCOMPARE(b.min, 0.0F);
    QCOMPARE(b.max, 1.0F);
    QCOMPARE(b.step, 0.1F);
    QCOMPARE(outcome.out, note);
    QCOMPARE(outcome.err, "");
}

// What a line of the file makes of b, which is 0.5 by default.
void TestPresetParameters::values_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<float>("expected");

    const auto row = [](const char *name, const QByteArray &lines, float expected) {
        QTest::newRow(name) << lines << expected;
    };
    row("quoted", "b = \"0.25\"", 0.25F);
    row("without quotes", "b = 0.25", 0.5F);
    row("half quoted", "b = \"0.25", 0.5F);
    row("without the first quote", "b = 0.25\"", 0.5F);
    row("quotes behind the value", "b = \"0.25\" // was \"0.75\"", 0.25F);
    row("spaces everywhere", " \tb\t =  \" 0.25 \" trailing", 0.25F);
    row("no spaces", "b=\"0.25\"", 0.25F);
    row("a space beyond ASCII", "b\u00a0= \"0.25\"", 0.5F);
    row("later line wins", "b = \"0.25\"\nb = \"0.75\"", 0.75F);
    row("later line that is no number", "b = \"0.25\"\nb = \"x\"", 0.25F);
    row("behind lines without quotes", "# none\n\na = 3\nb = \"0.25\"", 0.25F);
    row("integer", "b = \"3\"", 3.0F);
    row("exponent", "b = \"25e-2\"", 0.25F);
    row("negative", "b = \"-0.25\"", -0.25F);
    row("empty", "b = \"\"", 0.5F);
    row("word", "b = \"true\"", 0.5F);
    row("suffix", "b = \"0.25f\"", 0.5F);
    row("decimal comma", "b = \"0,25\"", 0.5F);
    row("hexadecimal", "b = \"0x10\"", 0.5F);
    row("overflow", "b = \"1e99\"", 0.5F);
    row("underflow", "b = \"1e-99\"", 0.5F);
    row("after a comment mark", "# b = \"0.25\"", 0.5F);
    row("other name", "bb = \"0.25\"", 0.5F);
    row("other case", "B = \"0.25\"", 0.5F);
    row("quote over two lines", "b = \"0.2\n5\"", 0.5F);
    row("a number that is no parameter", "scale0 = \"3.0\"\nshader0 = \"b.glsl\"", 0.5F);

    // Somewhere between these versions Qt changed what it takes for a float.
    const QVersionNumber qt = QLibraryInfo::version();
    const bool isOlder = qt < QVersionNumber(6, 5);
    if (isOlder || qt >= QVersionNumber(6, 11)) {
        row("rounds down to the greatest", "b = \"3.4028235e38\"",
            isOlder ? 0.5F : std::numeric_limits<float>::max());
        row("minus sign U+2212", "b = \"\u22120.25\"", isOlder ? -0.25F : 0.5F);
    }
}

void TestPresetParameters::values()
{
    QFETCH(QByteArray, lines);
    QFETCH(float, expected);
    writeFile(u"shaders/p.glslp"_s, "parameters = \"a;b;c\"\n" + lines + '\n');
    const Outcome outcome = collected(kPreset);
    QVERIFY(outcome.succeeded);
    QCOMPARE(outcome.params.at(0).initialValue, expected);
    QCOMPARE(outcome.params.at(1).initialValue, 2.0F);
    QCOMPARE(outcome.out, "");
    QCOMPARE(outcome.err, "");
}

// The preset's ids are a, b and c; an empty message means success.
void TestPresetParameters::driftCheck_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("message");

    const auto row = [](const char *name, const QByteArray &file, const QByteArray &declared) {
        QTest::newRow(name) << file
                            << "render-graph-compile: preset 'p' ownParams union {a;b;c} does not "
                               "match its .glslp parameters= list {"
                        + declared + "}\n";
    };
    QTest::newRow("other order") << QByteArray("parameters = \"c;a;b\"\n") << QByteArray();
    QTest::newRow("empty parts") << QByteArray("parameters = \";c;;a;b;\"\n") << QByteArray();
    QTest::newRow("text behind the quote")
            << QByteArray("parameters=\"c;a;b\" # d\n") << QByteArray();
    const QByteArray line = "  parameters\t=  \"a;b;c\"";
    QTest::newRow("last, without a newline") << "shaders = \"1\"\n" + line << QByteArray();
    QTest::newRow("behind a line without quotes") << "parameters = a\n" + line << QByteArray();
    QTest::newRow("behind a list in a comment") << "# parameters = \"a\"\n" + line << QByteArray();
    QTest::newRow("UTF-16 with a mark") << utf16WithMark("x\n" + line) << QByteArray();
    row("empty list", "parameters = \"\"\n", "");
    row("empty file", "", "");
    row("no parameters line", "a = \"1.0\"\n", "");
    row("list without quotes", "parameters = a;b;c\n", "");
    row("list without the first quote", "parameters = a;b;c\"\n", "");
    row("one missing", "parameters = \"c;a\"\n", "a;c");
    row("one too many", "parameters = \"d;c;b;a\"\n", "a;b;c;d");
    row("a name twice", "parameters = \"c;b;a;a\"\n", "a;a;b;c");
    row("a space beside a semicolon", "parameters = \"a; b;c\"\n", " b;a;c");
    row("other case", "parameters = \"A;b;c\"\n", "A;b;c");
    row("the first line counts", "parameters = \"a\"\nparameters = \"a;b;c\"\n", "a");
    row("the first line counts, even if empty", "parameters = \"\"\nparameters = \"a;b;c\"\n", "");
    row("letters beyond ASCII", "parameters = \"\xc3\xa9\"\n", "\xc3\xa9");
    row("binary", QByteArray("\0\xff\x01\"\n\xfe=\"", 8), "");
    row("UTF-16 without a mark", utf16WithMark("parameters = \"a;b;c\"\n").mid(2), "");
    row("other keyword", "parameterss = \"a;b;c\"\nxparameters = \"a;b;c\"\n", "");
}

void TestPresetParameters::driftCheck()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, message);
    writeFile(u"shaders/p.glslp"_s, file);
    const Outcome outcome = collected(kPreset);
    QCOMPARE(outcome.err, message);
    QCOMPARE(outcome.succeeded, message.isEmpty());
    QCOMPARE(outcome.out, "");
    QCOMPARE(outcome.params.size(), 3);
}

void TestPresetParameters::driftMessageIsInCodeUnitOrder()
{
    writeFile(u"shaders/p.glslp"_s, "parameters = \"b;_;a;Z\"\n");
    QCOMPARE(collected(kMixedCasePreset).err,
             "render-graph-compile: preset 'p' ownParams union {B;_;a;b} does not match its .glslp "
             "parameters= list {Z;_;a;b}\n");
}

void TestPresetParameters::presetWithoutParameters_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("empty list") << QByteArray("parameters = \"\"\n") << QByteArray();
    QTest::newRow("no list") << QByteArray("shaders = \"1\"\n") << QByteArray();
    QTest::newRow("a list") << QByteArray("parameters = \"b;a\"\n")
                            << QByteArray("render-graph-compile: preset 'p' ownParams union {} "
                                          "does not match its .glslp parameters= list {a;b}\n");
}

void TestPresetParameters::presetWithoutParameters()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, message);
    writeFile(u"shaders/p.glslp"_s, file);
    const Outcome outcome = collected(kBarePreset);
    QCOMPARE(outcome.err, message);
    QCOMPARE(outcome.succeeded, message.isEmpty());
    QVERIFY(outcome.params.isEmpty());
    QCOMPARE(outcome.out, "");
}

void TestPresetParameters::fileThatExistsButCannotBeReadIsDrift()
{
    QDir().mkpath(u"shaders/p.glslp"_s);
    const Outcome outcome = collected(kPreset);
    QVERIFY(!outcome.succeeded);
    QCOMPARE(outcome.err,
             "render-graph-compile: preset 'p' ownParams union {a;b;c} does not match its .glslp "
             "parameters= list {}\n");
    QCOMPARE(initialValues(outcome), QList<float>({0.5F, 2.0F, -1.0F}));
}

void TestPresetParameters::danglingLinkIsRetired()
{
    QDir().mkpath(u"shaders"_s);
    QVERIFY(QFile::link(u"nowhere"_s, u"shaders/p.glslp"_s));
    const Outcome outcome = collected(kPreset);
    QVERIFY(outcome.succeeded);
    QVERIFY(outcome.out.contains("(retired)"));
}

QTEST_APPLESS_MAIN(TestPresetParameters)
#include "tst_PresetParameters.moc"
