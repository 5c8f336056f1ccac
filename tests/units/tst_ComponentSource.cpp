#include <ComponentSource.h>

#include "TestSupport.h"

#include <algorithm>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

// What every scan finds in one file.
struct Scans
{
    QStringList codeLines;
    bool usesFrameCount = false;
    QSet<int> slotIndices;
    QStringList aliases;
    QStringList ids;
    bool readsHdr = false;

    friend bool operator==(const Scans &, const Scans &) = default;
};

Scans scansOf(const QString &path)
{
    return {strippedCodeLines(path),    sourceUsesFrameCount(path),
            usedParamSlotIndices(path), declaredAliasInputs(path),
            declaredParameterIds(path), sourceReadsHdrOutputActive(path)};
}

// Longer than any line that someone might think of.
constexpr int kLong = 1 << 20;

// The processor time that every scan over the text takes.
double secondsToScan(const QString &path, const QByteArray &source)
{
    writeFile(path, source);
    const std::clock_t start = std::clock();
    scansOf(path);
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}

} // namespace

class TestComponentSource : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void componentPaths_data();
    void componentPaths();
    void codeLines_data();
    void codeLines();
    void tokens_data();
    void tokens();
    void slotIndices_data();
    void slotIndices();
    void directives_data();
    void directives();
    void fileThatCannotBeReadYieldsNothing();
    void scansOfOneSource();
    void eachCallReadsAnew();
    void hugeInputTakesLinearTime_data();
    void hugeInputTakesLinearTime();

private:
    QString write(const QByteArray &content)
    {
        writeFile(u"c.slang"_s, content);
        return u"c.slang"_s;
    }
};

void TestComponentSource::componentPaths_data()
{
    QTest::addColumn<QString>("shadersDir");
    QTest::addColumn<QString>("component");
    QTest::addColumn<QString>("slang");
    QTest::addColumn<QString>("frag");

    const auto row = [](const char *name, const QString &dir, const QString &component,
                        const QString &stem) {
        QTest::newRow(name) << dir << component << stem + u".slang"_s << stem + u".frag"_s;
    };
    row("relative", u"shaders"_s, u"crt-scanline"_s, u"shaders/vulkan/components/crt-scanline"_s);
    row("trailing slash", u"shaders/"_s, u"crt-scanline"_s,
        u"shaders/vulkan/components/crt-scanline"_s);
    row("absolute", u"/a/b"_s, u"stock"_s, u"/a/b/vulkan/components/stock"_s);
    row("dots stay", u"./x/../y"_s, u"stock"_s, u"./x/../y/vulkan/components/stock"_s);
    row("percent in the directory", u"%1/%2"_s, u"stock"_s, u"%1/%2/vulkan/components/stock"_s);
    row("percent in the component", u"d"_s, u"a%1b"_s, u"d/vulkan/components/a%1b"_s);
}

void TestComponentSource::componentPaths()
{
    QFETCH(QString, shadersDir);
    QFETCH(QString, component);
    QTEST(slangComponentPath(shadersDir, component), "slang");
    QTEST(fragComponentPath(shadersDir, component), "frag");
}

void TestComponentSource::codeLines_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QStringList>("expected");

    const auto row = [](const char *name, const QByteArray &source, const QStringList &expected) {
        QTest::newRow(name) << source << expected;
    };
    row("empty file", "", {});
    row("comments and blank lines", "// a\n\n  /* b */  \n\t\n/* c\nd */\n", {});
    row("indentation and trailing spaces survive", "  x = 1;  \n", {u"  x = 1;  "_s});
    row("line comment", "    x = pc.params[2]; // not pc.params[9]\n",
        {u"    x = pc.params[2]; "_s});
    row("no final newline", "a\nb", {u"a"_s, u"b"_s});
    row("block comment over three lines", "a\nb\nc /* d\npc.params[1]\ne */ f;\n",
        {u"a"_s, u"b"_s, u"c "_s, u" f;"_s});
    row("block comment from the start of a line", "/* d\ne\nf */ g;\n", {u" g;"_s});
    row("block comment closes at the line's end", "/* d\ne */\nf\n", {u"f"_s});
    row("empty line inside a block comment", "/*\n\nx\n*/\ny\n", {u"y"_s});
    row("a removed comment joins its neighbours", "pc/**/.frameCount\n", {u"pc.frameCount"_s});
    row("two comments on a line", "a/*b*/c/*d*/e\n", {u"ace"_s});
    row("quotes protect nothing", "a = \"//b\";\nc = \"/*\";\nd */ e\n",
        {u"a = \""_s, u"c = \""_s, u" e"_s});
    row("block comments do not nest", "/* a /* b */ c */\n", {u" c */"_s});
    row("slash star slash does not close itself", "a /*/ b\nc */ d\n", {u"a "_s, u" d"_s});
    row("slash star slash closed later", "a /*/ b */ c\n", {u"a  c"_s});
    row("two slashes and a star", "a //* b\nc\n", {u"a "_s, u"c"_s});
    row("line comment inside a block comment", "/* // */ a\n", {u" a"_s});
    row("star slash outside a comment", "a */ b\n", {u"a */ b"_s});
    row("block comment opened at the line's end", "a /*\nb */ c\n", {u"a "_s, u" c"_s});
    row("single slashes", "a / b / c\n/\n", {u"a / b / c"_s, u"/"_s});
    row("slash at the line's end", "a /\n/ b\n", {u"a /"_s, u"/ b"_s});
    row("block comment never closed", "a\n/* b\nc\n", {u"a"_s});
    row("Unicode spaces alone are blank", "\xc2\xa0\xe3\x80\x80\nx\n", {u"x"_s});
}

void TestComponentSource::codeLines()
{
    QFETCH(QByteArray, source);
    QTEST(strippedCodeLines(write(source)), "expected");
}

// Each row's FIELD stands for every field that a scan looks for, and UPPER for it in upper case.
void TestComponentSource::tokens_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<bool>("expected");

    for (const QByteArray field :
         {"frameCount", "frameDirection", "hdrOutputActive", "params[3]"}) {
        const auto row = [&field](const char *name, QByteArray source, bool expected) {
            source.replace("FIELD", field).replace("UPPER", field.toUpper());
            QTest::addRow("%s, %s", field.constData(), name) << field << source << expected;
        };
        row("read", "x = pc.FIELD;\n", true);
        row("spaces around the dot", "x = pc \t. FIELD;\n", true);
        row("on a later line", "a\nb\npc.FIELD\n", true);
        row("only in comments", "x; // pc.FIELD\n/* pc.FIELD\npc.FIELD */ x\n", false);
        row("comment inside the token", "pc/**/.FIELD\n", true);
        row("longer object", "npc.FIELD\n", false);
        row("no object", "FIELD\n", false);
        row("object of another object", "a.pc.FIELD\n", true);
        row("other case", "PC.FIELD pc.UPPER\n", false);
        row("over two lines", "pc.\nFIELD\n", false);
        row("shorter field", "pc." + field.chopped(1) + '\n', false);
        if (!field.endsWith(']'))
            row("longer field", "pc.FIELDr pc.FIELD_ pc.FIELD2\n", false);
        row("letters beyond ASCII beside it", "\xc3\xa9pc.FIELD\xc3\xa9\n", true);
        row("spaces beyond ASCII",
            "pc\xc2\xa0.FIELD pc.\xc2\x85"
            "FIELD\n",
            false);
        row("behind a million characters", QByteArray(kLong, ' ') + "pc.FIELD\n", true);
    }
}

void TestComponentSource::tokens()
{
    QFETCH(QByteArray, field);
    QFETCH(QByteArray, source);
    QFETCH(bool, expected);
    const QString path = write(source);
    QCOMPARE(sourceUsesFrameCount(path), expected && field.startsWith("frame"));
    QCOMPARE(sourceReadsHdrOutputActive(path), expected && field == "hdrOutputActive");
    QCOMPARE(!usedParamSlotIndices(path).isEmpty(), expected && field == "params[3]");
}

void TestComponentSource::slotIndices_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QSet<int>>("expected");

    const auto row = [](const char *name, const QByteArray &source, const QSet<int> &expected) {
        QTest::newRow(name) << source << expected;
    };
    row("none", "x = params[1];\n", {});
    row("several on a line", "pc.params[1] + pc.params[1] * pc.params[ 3 ]\n", {1, 3});
    row("on several lines", "pc.params[0]\npc.params[14]\n", {0, 14});
    row("spaces everywhere", "pc . params [\t4\t]\n", {4});
    row("leading zeros", "pc.params[007]\n", {7});
    row("leading zeros are not octal", "pc.params[010] + pc.params[08]\n", {10, 8});
    row("largest int", "pc.params[2147483647]\n", {2147483647});
    row("beyond int", "pc.params[2147483648]\n", {0});
    row("far beyond int", "pc.params[99999999999999999999]\n", {0});
    row("variable", "pc.params[i]\n", {});
    row("expression", "pc.params[1 + 1]\n", {});
    row("suffix", "pc.params[3u]\n", {});
    row("negative", "pc.params[-1]\n", {});
    row("unclosed", "pc.params[3\n", {});
    row("no digits", "pc.params[]\n", {});
    row("longer field", "pc.paramsX[3]\n", {});
    row("other digits", "pc.params[\xd9\xa3]\n", {});
}

void TestComponentSource::slotIndices()
{
    QFETCH(QByteArray, source);
    QTEST(usedParamSlotIndices(write(source)), "expected");
}

// Each row's KEY stands for both keywords, and UPPER for them in upper case.
void TestComponentSource::directives_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QStringList>("expected");

    const auto row = [](const char *name, const QByteArray &source, const QStringList &expected) {
        QTest::newRow(name) << source << expected;
    };
    row("plain", "//! KEY CRT_BEAM\n", {u"CRT_BEAM"_s});
    row("spaces everywhere", "   //!   KEY   CRT_BEAM   \n", {u"CRT_BEAM"_s});
    row("tabs", "\t//!\tKEY\tCRT_BEAM\t\n", {u"CRT_BEAM"_s});
    row("marker against the keyword", "//!KEY a\n", {u"a"_s});
    row("keyword against the name", "//! KEYa\n", {});
    row("no name", "//! KEY\n//! KEY \n", {});
    row("two names", "//! KEY a b\n", {});
    row("trailing comment", "//! KEY a // b\n", {});
    row("trailing punctuation", "//! KEY a;\n", {});
    row("hyphen", "//! KEY a-b\n", {});
    row("after code", "x; //! KEY a\n", {});
    row("upper case", "//! UPPER a\n", {});
    row("space in the marker", "// ! KEY a\n/ /! KEY a\n", {});
    row("three slashes", "///! KEY a\n", {});
    row("digits and underscores", "//! KEY _0aZ9\n", {u"_0aZ9"_s});
    row("letters beyond ASCII", "//! KEY \xc3\xa9\n", {});
    row("space beyond ASCII",
        "//! KEY\xc2\xa0"
        "a\n",
        {});
    row("a control character that Unicode calls a space",
        "//! KEY\xc2\x85"
        "a\n",
        {});
    row("behind a million spaces", QByteArray(kLong, ' ') + "//! KEY a\n", {u"a"_s});
    row("a million spaces before the name", "//! KEY" + QByteArray(kLong, ' ') + "a\n", {u"a"_s});
    row("order of first appearance", "//! KEY b\n//! KEY a\n//! KEY b\n//! KEY B\n",
        {u"b"_s, u"a"_s, u"B"_s});
    row("halation_strength twice", "//! KEY halation_strength\n//! KEY halation_strength\n",
        {u"halation_strength"_s});
    row("inside a block comment", "/*\n//! KEY a\n*/\n", {u"a"_s});
    row("other directive", "//! KEYS a\n//! output a\n", {});
}

void TestComponentSource::directives()
{
    QFETCH(QByteArray, source);
    QFETCH(QStringList, expected);

    const auto withKeyword = [&source](const QByteArray &keyword) {
        QByteArray text = source;
        return text.replace("UPPER", keyword.toUpper()).replace("KEY", keyword);
    };

    const QString inputs = write(withKeyword("input"));
    QCOMPARE(declaredAliasInputs(inputs), expected);
    QCOMPARE(declaredParameterIds(inputs), QStringList());
    const QString params = write(withKeyword("param"));
    QCOMPARE(declaredParameterIds(params), expected);
    QCOMPARE(declaredAliasInputs(params), QStringList());
}

void TestComponentSource::fileThatCannotBeReadYieldsNothing()
{
    QVERIFY(QDir().mkdir(u"directory"_s));
    QVERIFY(QFile::link(u"nowhere"_s, u"link"_s));
    bool foundNothing = true;
    const QByteArray error = captured(stderr, [&] {
        for (const QString &path : {u"missing"_s, u"directory"_s, u"link"_s})
            foundNothing = foundNothing && scansOf(path) == Scans();
    });
    QVERIFY(foundNothing);
    QCOMPARE(error, "");
}

void TestComponentSource::scansOfOneSource()
{
    const QString path = write("//! input BEAM\n"
                               "//! param strength\n"
                               "void main() {\n"
                               "    /* pc.params[7]\n"
                               "    */ x = pc.params[0] + pc.frameCount;\n"
                               "    y = pc.hdrOutputActive; // pc.params[6]\n"
                               "}\n"
                               "//! param strength\n");
    const Scans expected = {{u"void main() {"_s, u" x = pc.params[0] + pc.frameCount;"_s,
                             u"    y = pc.hdrOutputActive; "_s, u"}"_s},
                            true,
                            {0},
                            {u"BEAM"_s},
                            {u"strength"_s},
                            true};
    QVERIFY(scansOf(path) == expected);

    QCOMPARE(aliasInputLine(path, u"BEAM"_s), 1);
    QCOMPARE(aliasInputLine(path, u"strength"_s), 0);
    QCOMPARE(parameterLine(path, u"strength"_s), 2);
    QCOMPARE(parameterLine(path, u"BEAM"_s), 0);
    QCOMPARE(paramSlotLine(path, 0), 5);
    QCOMPARE(paramSlotLine(path, 7), 0);
}

void TestComponentSource::eachCallReadsAnew()
{
    QCOMPARE(declaredAliasInputs(write("//! input a\n")), QStringList({u"a"_s}));
    QCOMPARE(declaredAliasInputs(write("//! input b\n")), QStringList({u"b"_s}));
    QVERIFY(!sourceUsesFrameCount(write("x\n")));
    QVERIFY(sourceUsesFrameCount(write("pc.frameCount\n")));
}

// Sixteen times the text takes about sixteen times as long; a scan that is quadratic in any of
// these takes 256 times as long.
void TestComponentSource::hugeInputTakesLinearTime_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("unit"); // repeated; NUMBER counts
    QTest::addColumn<QByteArray>("end");

    const auto row = [](const char *name, const QByteArray &start, const QByteArray &unit,
                        const QByteArray &end) { QTest::newRow(name) << start << unit << end; };
    row("one line of spaces", "", " ", "");
    row("one line of slashes and spaces", "", "/ ", "");
    row("one line of comment openings", "", "/*", "");
    row("one line of closed comments", "", "/**/", "");
    row("one line of objects", "", "pc ", "");
    row("one line of near tokens", "", "pc . frame ", "");
    row("one line of slot reads", "", "pc.params[1] ", "");
    row("one line of unclosed slot reads", "", "pc . params [ 1 ", "");
    row("one line of markers", "", "//!", "");
    row("a directive with endless spaces before the name", "//! param", " ", "a b\n");
    row("a directive with endless spaces after the name", "//! param a", " ", "b\n");
    row("a directive with an endless name", "//! input ", "a", "");
    row("a slot with endless digits", "pc.params[", "9", "]");
    row("empty lines", "", "\n", "");
    row("short lines", "", "x;\n", "");
    row("distinct directives", "", "//! input aNUMBER\n//! param pNUMBER\n", "");
}

void TestComponentSource::hugeInputTakesLinearTime()
{
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, unit);
    QFETCH(QByteArray, end);
    const auto sourceOfSize = [&](int size) {
        QByteArray text = start;
        for (int i = 0; text.size() < size; ++i)
            text += unit.contains("NUMBER")
                    ? QByteArray(unit).replace("NUMBER", QByteArray::number(i))
                    : unit.repeated(4096);
        return text + end;
    };
    const QString path = u"c.slang"_s;
    const QByteArray source = sourceOfSize(kLong / 16);
    double fewer = secondsToScan(path, source);
    for (int run = 0; run < 4; ++run)
        fewer = std::max(fewer, secondsToScan(path, source));
    const double ratio = secondsToScan(path, sourceOfSize(kLong)) / fewer;
    QVERIFY2(ratio < 64.0, QByteArray::number(ratio).constData());
}

QTEST_APPLESS_MAIN(TestComponentSource)
#include "tst_ComponentSource.moc"
