#include "TestSupport.h"

using namespace Qt::StringLiterals;

// The real binary on the example shaders, and on copies with one error.

namespace {

const QString kExampleShaders = QStringLiteral(EXAMPLE_SHADERS_DIR);
const QString kExampleModules = QStringLiteral(SPIRV_DIR);

Run check(const QStringList &arguments)
{
    return runProgram(QStringLiteral(RENDER_GRAPH_CHECK), arguments);
}

} // namespace

class TestRenderGraphCheck : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void usage_data();
    void usage();
    void examplesFit();
    void errors_data();
    void errors();
};

void TestRenderGraphCheck::usage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no argument") << QStringList();
    QTest::newRow("no modules") << QStringList({u"--shaders-dir"_s, kExampleShaders});
    QTest::newRow("no shaders") << QStringList({u"--modules"_s, kExampleModules});
    QTest::newRow("empty modules")
            << QStringList({u"--shaders-dir"_s, kExampleShaders, u"--modules"_s, u""_s});
    QTest::newRow("help") << QStringList({u"--help"_s});
}

void TestRenderGraphCheck::usage()
{
    QFETCH(QStringList, arguments);
    const Run result = check(arguments);
    QCOMPARE(result.err, "usage: render-graph-check --shaders-dir <path> --modules <path>\n");
    QCOMPARE(result.out, "");
    QCOMPARE(result.exitStatus, 1);
}

void TestRenderGraphCheck::examplesFit()
{
    const Run result =
            check({u"--modules"_s, kExampleModules, u"--shaders-dir"_s, kExampleShaders});
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, "");
    QCOMPARE(result.exitStatus, 0);
}

void TestRenderGraphCheck::errors_data()
{
    QTest::addColumn<QString>("commands"); // in a directory with copies of shaders and spirv
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("an input line that is missing")
            << u"sed -i '/input DMG_CELLS/d' shaders/vulkan/components/crt-dmg-grid.slang"_s
            << QByteArray("crt-dmg-grid.slang: binding 1 ('Cells') is sampled, but pass 4 of "
                          "'dmg-lcd' has 1 image: is an //! input line or feedback missing?\n");
    QTest::newRow("a .frag, with a vertex shader's module")
            << u"cp spirv/fullscreen.vert.spv spirv/dmg-color.frag.spv"_s
            << QByteArray("dmg-color.frag: the module has no main() of a fragment shader\n");
    QTest::newRow("the vertex shader of all passes")
            << u"cp spirv/dmg-color.frag.spv spirv/fullscreen.vert.spv"_s
            << QByteArray("fullscreen.vert: the module has no main() of a vertex shader\n");
    QTest::newRow("several, in the order of the presets")
            << u"rm spirv/hdr-color-boost.frag.spv && : >spirv/stock.frag.spv"_s
            << QByteArray("hdr-color-boost.frag.spv: cannot be read\n"
                          "stock.frag: the module is not SPIR-V, or is damaged\n");
    QTest::newRow("a directory in place of a module")
            << u"rm spirv/dmg-color.frag.spv && mkdir spirv/dmg-color.frag.spv"_s
            << QByteArray("dmg-color.frag.spv: cannot be read\n");
    QTest::newRow("a preset that does not compile")
            << u"rm shaders/vulkan/components/dmg-color.frag spirv/dmg-color.frag.spv"_s
            << QByteArray("render-graph-compile: preset 'dmg-lcd' pass 0 ('dmg-color') has no "
                          "shaders/vulkan/components source\n");
}

void TestRenderGraphCheck::errors()
{
    QFETCH(QString, commands);
    QFETCH(QByteArray, expected);
    copyExampleShaders();
    const Run prepared = runProgram(
            u"sh"_s, {u"-ec"_s, u"cp -r \"$1\" spirv\n"_s + commands, u"sh"_s, kExampleModules});
    QCOMPARE(prepared.err, "");
    QCOMPARE(prepared.exitStatus, 0);
    const Run result = check({u"--shaders-dir"_s, u"shaders"_s, u"--modules"_s, u"spirv"_s});
    QCOMPARE(result.err, expected);
    QCOMPARE(result.out, "");
    QCOMPARE(result.exitStatus, 1);
}

QTEST_GUILESS_MAIN(TestRenderGraphCheck)
#include "tst_RenderGraphCheck.moc"
