#include "TestSupport.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

// The real binary, as a build runs it.

namespace {

const QString kTool = QStringLiteral(RENDER_GRAPH_COMPILE);
const QString kExampleShaders = QStringLiteral(EXAMPLE_SHADERS_DIR);
const QString kGolden = QStringLiteral(SOURCE_DIR "/tests/manifest/golden/RenderGraphManifest.h");
const QByteArray kUsage = "usage: render-graph-compile --shaders-dir <path> --out <path>\n";

// Root may open any file until it gives that up.
const QString kWithoutRootsRights = uR"sh([ "$(id -u)" != 0 ] ||
                  set -- setpriv --bounding-set -dac_override,-dac_read_search "$@")sh"_s;

Run compile(const QString &shadersDir, const QString &out)
{
    return runProgram(kTool, {u"--shaders-dir"_s, shadersDir, u"--out"_s, out});
}

// Runs the tool in place of a shell that has run `setup`.
Run compileAfter(const QString &setup, const QString &shadersDir, const QString &out)
{
    return runProgram(u"sh"_s,
                      {u"-c"_s, setup + u"\nexec \"$@\""_s, u"sh"_s, kTool, u"--shaders-dir"_s,
                       shadersDir, u"--out"_s, out});
}

// The path of a component in a copy of the example shaders in "shaders".
QString component(const char *name)
{
    return u"shaders/vulkan/components/"_s + QString::fromLatin1(name);
}

void replaceText(const QString &path, const QByteArray &before, const QByteArray &after)
{
    QByteArray text = readFile(path);
    if (!text.contains(before))
        qFatal("%s does not contain %s", qPrintable(path), before.constData());
    writeFile(path, text.replace(before, after));
}

// The notes about presets that have no .glslp file among the example shaders: about those declared
// before `end`, or about all.
QByteArray retired(const QByteArray &end = {})
{
    QByteArray lines;
    for (const auto &preset : declaredPresets()) {
        const QString name = preset[u"name"_s];
        if (name.toLatin1() == end)
            return lines;
        if (preset[u"presetExtension"_s] == "glslp"_L1
            && !QFile::exists(kExampleShaders + u'/' + name + u".glslp"_s)) {
            lines += "render-graph-compile: preset '" + name.toLatin1()
                    + "' has no .glslp source on disk (retired) -- skipping drift check, using "
                    + preset[u"valueOverrideCount"_s].toLatin1()
                    + " hand-authored value override(s)\n";
        }
    }
    return lines;
}

QByteArray differenceFromGolden(const QString &manifest)
{
    return firstDifference(readFile(manifest), readFile(kGolden));
}

} // namespace

class TestRenderGraphCompile : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void usage_data();
    void usage();
    void argumentPairs_data();
    void argumentPairs();
    void pathsAreTakenAsTheyAre_data();
    void pathsAreTakenAsTheyAre();
    void manifestOfTheExampleShaders();
    void sameBytesEverywhere_data();
    void sameBytesEverywhere();
    void unreadableComponentCountsAsEmpty_data();
    void unreadableComponentCountsAsEmpty();
    void failingRunWritesNothing_data();
    void failingRunWritesNothing();
    void outputThatCannotBeOpened_data();
    void outputThatCannotBeOpened();
    void fragFallbackIsNotScannedForTheFrameCounter();
    void streamsThatFail_data();
    void streamsThatFail();
    void writeErrorsAreNotNoticed();
    void outputIsWrittenInPlace();
    void hugeComponentTakesLittleMemory();
};

void TestRenderGraphCompile::usage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no argument") << QStringList();
    QTest::newRow("one argument") << QStringList({u"--out"_s});
    QTest::newRow("no output") << QStringList({u"--shaders-dir"_s, kExampleShaders});
    QTest::newRow("no shaders") << QStringList({u"--out"_s, u"m.h"_s});
    QTest::newRow("option last, without a value")
            << QStringList({u"--shaders-dir"_s, kExampleShaders, u"--out"_s});
    QTest::newRow("empty shaders directory")
            << QStringList({u"--shaders-dir"_s, u""_s, u"--out"_s, u"m.h"_s});
    QTest::newRow("empty output") << QStringList(
            {u"--shaders-dir"_s, kExampleShaders, u"--out"_s, u""_s});
    QTest::newRow("emptied by a later pair") << QStringList(
            {u"--shaders-dir"_s, kExampleShaders, u"--out"_s, u"m.h"_s, u"--out"_s, u""_s});
    QTest::newRow("a flag first swallows the options") << QStringList(
            {u"--verbose"_s, u"--shaders-dir"_s, kExampleShaders, u"--out"_s, u"m.h"_s});
    QTest::newRow("an unknown word swallows --out")
            << QStringList({u"--shaders-dir"_s, kExampleShaders, u"x"_s, u"--out"_s, u"m.h"_s});
    QTest::newRow("equals signs") << QStringList(
            {u"--shaders-dir="_s + kExampleShaders, u"--out=m.h"_s});
    for (const char *option : {"--SHADERS-DIR", "--Shaders-dir", "--shaders", "--s",
                               "--shaders-dirs", "-shaders-dir", "shaders-dir", " --shaders-dir "})
        QTest::addRow("'%s' for --shaders-dir", option) << QStringList(
                {QString::fromLatin1(option), kExampleShaders, u"--out"_s, u"m.h"_s});
    for (const char *option :
         {"--OUT", "--Out", "--ou", "--o", "--output", "-out", "out", " --out "})
        QTest::addRow("'%s' for --out", option) << QStringList(
                {u"--shaders-dir"_s, kExampleShaders, QString::fromLatin1(option), u"m.h"_s});
    QTest::newRow("help") << QStringList({u"--help"_s});
}

void TestRenderGraphCompile::usage()
{
    QFETCH(QStringList, arguments);
    const Run result = runProgram(kTool, arguments);
    QCOMPARE(result.err, kUsage);
    QCOMPARE(result.out, "");
    QCOMPARE(result.exitStatus, 1);
    QVERIFY(!QFile::exists(u"m.h"_s));
}

void TestRenderGraphCompile::argumentPairs_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("out");
    const QString dir = u"--shaders-dir"_s;
    const QString out = u"--out"_s;

    QTest::newRow("shaders first")
            << QStringList({dir, kExampleShaders, out, u"m.h"_s}) << u"m.h"_s;
    QTest::newRow("output first") << QStringList({out, u"m.h"_s, dir, kExampleShaders}) << u"m.h"_s;
    QTest::newRow("shaders twice: the last")
            << QStringList({dir, u"nowhere"_s, dir, kExampleShaders, out, u"m.h"_s}) << u"m.h"_s;
    QTest::newRow("output twice: the last")
            << QStringList({out, u"first.h"_s, dir, kExampleShaders, out, u"m.h"_s}) << u"m.h"_s;
    QTest::newRow("unknown pair") << QStringList(
            {u"--level"_s, u"9"_s, dir, kExampleShaders, out, u"m.h"_s})
                                  << u"m.h"_s;
    QTest::newRow("unknown word last")
            << QStringList({dir, kExampleShaders, out, u"m.h"_s, u"x"_s}) << u"m.h"_s;
    QTest::newRow("--shaders-dir last, without a value")
            << QStringList({dir, kExampleShaders, out, u"m.h"_s, dir}) << u"m.h"_s;
    QTest::newRow("--out last, without a value")
            << QStringList({dir, kExampleShaders, out, u"m.h"_s, out}) << u"m.h"_s;
    QTest::newRow("a value that looks like an option")
            << QStringList({out, u"--shaders-dir"_s, dir, kExampleShaders}) << u"--shaders-dir"_s;
    QTest::newRow("spaces and letters beyond ASCII")
            << QStringList({out, u"a \u00e9.h"_s, dir, kExampleShaders}) << u"a \u00e9.h"_s;
    // Qt takes this one out of argv; the pairs behind it stay pairs.
    QTest::newRow("an argument of Qt's own")
            << QStringList({u"-qmljsdebugger=port:1"_s, dir, kExampleShaders, out, u"m.h"_s})
            << u"m.h"_s;
}

void TestRenderGraphCompile::argumentPairs()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, out);
    const Run result = runProgram(kTool, arguments);
    QCOMPARE(result.err, "");
    QCOMPARE(result.exitStatus, 0);
    QCOMPARE(QDir().entryList(QDir::Files), QStringList({out}));
}

// "link" leads to the directory "elsewhere/deep", so "link/.." is "elsewhere".
void TestRenderGraphCompile::pathsAreTakenAsTheyAre_data()
{
    QTest::addColumn<QString>("shadersDir");
    QTest::addColumn<QString>("shadersAt"); // where that is, and the only shaders there are
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("manifestAt");
    QTest::newRow("spaces around and within the shaders directory")
            << u" the  shaders "_s << u" the  shaders "_s << u"m.h"_s << u"m.h"_s;
    QTest::newRow("spaces around and within the output")
            << u"shaders"_s << u"shaders"_s << u" m  m.h "_s << u" m  m.h "_s;
    QTest::newRow("dots behind a link to the shaders directory")
            << u"link/../shaders"_s << u"elsewhere/shaders"_s << u"m.h"_s << u"m.h"_s;
    QTest::newRow("dots behind a link to the output")
            << u"shaders"_s << u"shaders"_s << u"link/../m.h"_s << u"elsewhere/m.h"_s;
}

void TestRenderGraphCompile::pathsAreTakenAsTheyAre()
{
    QFETCH(QString, shadersDir);
    QFETCH(QString, shadersAt);
    QFETCH(QString, out);
    QFETCH(QString, manifestAt);
    QDir().mkpath(u"elsewhere/deep"_s);
    QVERIFY(QFile::link(u"elsewhere/deep"_s, u"link"_s));
    copyExampleShaders(shadersAt);

    const Run result = compile(shadersDir, out);
    QCOMPARE(result.err, "");
    QCOMPARE(result.exitStatus, 0);
    QVERIFY(QFile::exists(manifestAt));
    QVERIFY(readFile(manifestAt) == readFile(kGolden));
}

void TestRenderGraphCompile::manifestOfTheExampleShaders()
{
    const Run result = compile(kExampleShaders, u"m.h"_s);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, retired());
    QCOMPARE(result.exitStatus, 0);
    const QByteArray difference = differenceFromGolden(u"m.h"_s);
    QVERIFY2(difference.isEmpty(), difference.constData());
}

void TestRenderGraphCompile::sameBytesEverywhere_data()
{
    QTest::addColumn<QStringList>("environment");
    QTest::newRow("hash seed 0") << QStringList({u"QT_HASH_SEED=0"_s});
    QTest::newRow("hash seed 1") << QStringList({u"QT_HASH_SEED=1"_s});
    QTest::newRow("hash seed 4711") << QStringList({u"QT_HASH_SEED=4711"_s});
    QTest::newRow("locale C") << QStringList({u"LC_ALL=C"_s});
    QTest::newRow("locale POSIX") << QStringList({u"LC_ALL=POSIX"_s});
    QTest::newRow("another locale") << QStringList({u"LC_ALL=de_DE.UTF-8"_s, u"LANG=de_DE"_s});
    QTest::newRow("time zone") << QStringList({u"TZ=Pacific/Kiritimati"_s});
    QTest::newRow("nothing set") << QStringList();
}

void TestRenderGraphCompile::sameBytesEverywhere()
{
    QFETCH(QStringList, environment);
    copyExampleShaders();
    QDir().mkpath(u"other/place"_s);
    const Run result =
            runProgram(kTool, {u"--shaders-dir"_s, u"../../shaders"_s, u"--out"_s, u"../m.h"_s},
                       [&](QProcess &process) {
                           process.setEnvironment(environment);
                           process.setWorkingDirectory(u"other/place"_s);
                       });
    QCOMPARE(result.exitStatus, 0);
    QCOMPARE(result.out, retired());
    const QByteArray difference = differenceFromGolden(u"other/m.h"_s);
    QVERIFY2(difference.isEmpty(), difference.constData());
}

// gba-color: a .slang without directives has no parameters, whatever its pass declares.
void TestRenderGraphCompile::unreadableComponentCountsAsEmpty_data()
{
    QTest::addColumn<std::function<void(QString)>>("spoil");
    const auto row = [](const char *name, const std::function<void(QString)> &spoil) {
        QTest::newRow(name) << spoil;
    };
    row("a directory", [](const QString &path) {
        QFile::remove(path);
        QDir().mkdir(path);
    });
    row("unreadable", [](const QString &path) { ::chmod(path.toLocal8Bit().constData(), 0); });
}

void TestRenderGraphCompile::unreadableComponentCountsAsEmpty()
{
    QFETCH(std::function<void(QString)>, spoil);
    copyExampleShaders();
    spoil(component("gba-color.slang"));
    const Run result = compileAfter(kWithoutRootsRights, u"shaders"_s, u"m.h"_s);
    QCOMPARE(result.err, "");
    QCOMPARE(result.exitStatus, 0);
    QCOMPARE(result.out, retired());
    const QByteArray manifest = readFile(u"m.h"_s);
    QVERIFY(readFile(kGolden).contains("kParams_gba_lcd_0"));
    QVERIFY(!manifest.contains("kParams_gba_lcd_0"));
    QVERIFY(manifest.contains("kParams_gba_lcd_1"));
}

void TestRenderGraphCompile::failingRunWritesNothing_data()
{
    QTest::addColumn<std::function<void()>>("spoil");
    QTest::addColumn<QByteArray>("stoppedAt");
    QTest::addColumn<QByteArray>("message");

    const auto row = [](const char *name, const char *stoppedAt, const QByteArray &message,
                        const std::function<void()> &spoil) {
        QTest::newRow(name) << spoil << QByteArray(stoppedAt) << message;
    };
    row("no shaders at all", "crt-pvm",
        "render-graph-compile: preset 'crt-pvm' pass 0 ('crt-linearize') has no "
        "shaders/vulkan/components source\n",
        [] { QDir(u"shaders"_s).removeRecursively(); });
    row("a slot that no directive declares", "gba-lcd",
        "render-graph-compile: preset 'gba-lcd' pass 0: code reads pc.params[1] but its own "
        "//! param directives only declare 1 slot(s) "
        "(shaders/vulkan/components/gba-color.slang)\n",
        [] { replaceText(component("gba-color.slang"), "pc.params[0]", "pc.params[1]"); });
    row("a drifted third preset", "crt-arcade",
        "render-graph-compile: preset 'crt-arcade' ownParams union {abl_current_limit;"
        "abl_strength;barrel_distortion;beam_max;beam_min;black_floor;color_saturation;"
        "color_temperature;conv_bx;conv_by;conv_rx;conv_ry;corner_radius;crt_gamma_out;crt_white;"
        "desaturate;gun_cutoff;halation_sigma;halation_strength;halation_wide;hdr_peak;mask_duty;"
        "mask_edge;mask_pitch;mask_strength;mask_type;mono_warmth;overscan;persist_b;persist_g;"
        "persist_r;phosphor_gamut;raster_interlace;raster_lines;raster_offset;rgb_beam;"
        "signal_active_us;signal_bandwidth_mhz;vignette_strength} does not match its .glslp "
        "parameters= list {beam_min;mask_type}\n",
        [] { writeFile(u"shaders/crt-arcade.glslp"_s, "parameters = \"mask_type;beam_min\"\n"); });
    row("an unreadable .glslp", "rewind",
        "render-graph-compile: preset 'rewind' ownParams union "
        "{lineNoise;noiseAmount;smear;tapeSpeed;wiggle} does not match its .glslp parameters= "
        "list {}\n",
        [] { ::chmod("shaders/rewind.glslp", 0); });
}

void TestRenderGraphCompile::failingRunWritesNothing()
{
    QFETCH(std::function<void()>, spoil);
    QFETCH(QByteArray, stoppedAt);
    QFETCH(QByteArray, message);
    copyExampleShaders();
    spoil();

    const Run first = compileAfter(kWithoutRootsRights, u"shaders"_s, u"m.h"_s);
    QCOMPARE(first.err, message);
    QCOMPARE(first.out, retired(stoppedAt));
    QCOMPARE(first.exitStatus, 1);
    QVERIFY(!QFile::exists(u"m.h"_s));

    writeFile(u"m.h"_s, "an earlier manifest\n");
    QCOMPARE(compileAfter(kWithoutRootsRights, u"shaders"_s, u"m.h"_s).exitStatus, 1);
    QCOMPARE(readFile(u"m.h"_s), "an earlier manifest\n");
}

void TestRenderGraphCompile::outputThatCannotBeOpened_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("a directory") << u"directory"_s;
    QTest::newRow("in a missing directory beyond ASCII") << u"n\u00e9/m.h"_s;
    QTest::newRow("a read-only file") << u"read-only.h"_s;
    QTest::newRow("in a read-only directory") << u"closed/m.h"_s;
}

void TestRenderGraphCompile::outputThatCannotBeOpened()
{
    QFETCH(QString, path);
    QDir().mkdir(u"directory"_s);
    writeFile(u"read-only.h"_s, "an earlier manifest\n");
    ::chmod("read-only.h", 0444);
    QDir().mkdir(u"closed"_s);
    ::chmod("closed", 0555);

    const Run result = compileAfter(kWithoutRootsRights, kExampleShaders, path);
    QCOMPARE(result.err,
             "render-graph-compile: failed to open '" + path.toUtf8() + "' for writing\n");
    QCOMPARE(result.out, retired());
    QCOMPARE(result.exitStatus, 1);
    QCOMPARE(readFile(u"read-only.h"_s), "an earlier manifest\n");
    QVERIFY(!QFile::exists(u"n\u00e9"_s));
    QVERIFY(!QFile::exists(u"closed/m.h"_s));
}

void TestRenderGraphCompile::fragFallbackIsNotScannedForTheFrameCounter()
{
    copyExampleShaders();
    writeFile(component("stock.frag"), "x = pc.frameCount;\n");
    const Run result = compile(u"shaders"_s, u"m.h"_s);
    QCOMPARE(result.exitStatus, 0);
    const QByteArray difference = differenceFromGolden(u"m.h"_s);
    QVERIFY2(difference.isEmpty(), difference.constData());
}

// Output and errors on which nothing can be written. Output is only written at the end of the run,
// after the manifest.
void TestRenderGraphCompile::streamsThatFail_data()
{
    QTest::addColumn<QString>("setup");
    QTest::addColumn<QString>("shadersDir");
    QTest::addColumn<int>("exitStatus");
    QTest::newRow("output closed") << u"exec >&-"_s << kExampleShaders << 0;
    QTest::newRow("output full") << u"exec >/dev/full"_s << kExampleShaders << 0;
    QTest::newRow("errors closed") << u"exec 2>&-"_s << u"nowhere"_s << 1;
    QTest::newRow("errors full") << u"exec 2>/dev/full"_s << u"nowhere"_s << 1;
}

void TestRenderGraphCompile::streamsThatFail()
{
    QFETCH(QString, setup);
    QFETCH(QString, shadersDir);
    QFETCH(int, exitStatus);
    writeFile(u"m.h"_s, "an earlier manifest\n");
    const Run result = compileAfter(setup, shadersDir, u"m.h"_s);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, "");
    QCOMPARE(result.exitStatus, exitStatus);
    QVERIFY(readFile(u"m.h"_s) == (exitStatus == 0 ? readFile(kGolden) : "an earlier manifest\n"));
}

// A file that may not grow beyond 20,480 bytes, as on a full disk.
void TestRenderGraphCompile::writeErrorsAreNotNoticed()
{
    const Run result = compileAfter(u"trap '' XFSZ; ulimit -f 40"_s, kExampleShaders, u"m.h"_s);
    QCOMPARE(result.err, "");
    QCOMPARE(result.exitStatus, 0);
    QVERIFY(readFile(u"m.h"_s) == readFile(kGolden).first(20480));
}

// A file that was written elsewhere and then renamed would leave the other name behind.
void TestRenderGraphCompile::outputIsWrittenInPlace()
{
    writeFile(u"m.h"_s, QByteArray(1 << 20, 'x'));
    QCOMPARE(::link("m.h", "second-name"), 0);
    QCOMPARE(compile(kExampleShaders, u"m.h"_s).exitStatus, 0);
    const QByteArray difference = differenceFromGolden(u"second-name"_s);
    QVERIFY2(difference.isEmpty(), difference.constData());
}

// Memory follows the longest line: a scan that held such a file whole would not fit.
void TestRenderGraphCompile::hugeComponentTakesLittleMemory()
{
    if (kIsSanitized)
        QSKIP("a sanitizer takes more memory than there is");
    copyExampleShaders();
    const QByteArray unit = "    x = x * pc.scale; // nothing to see here\n";
    writeFile(component("rewind-noise.slang"),
              readFile(component("rewind-noise.slang")) + unit.repeated((32 << 20) / unit.size()));
    const Run result = compileAfter(u"ulimit -v 81920"_s, u"shaders"_s, u"m.h"_s);
    QCOMPARE(result.err, "");
    QCOMPARE(result.exitStatus, 0);
    const QByteArray difference = differenceFromGolden(u"m.h"_s);
    QVERIFY2(difference.isEmpty(), difference.constData());
}

QTEST_GUILESS_MAIN(TestRenderGraphCompile)
#include "tst_RenderGraphCompile.moc"
