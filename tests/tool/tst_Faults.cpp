#include "RunTool.h"

#include <QScopeGuard>

#include <sys/stat.h>

#include <csignal>
#include <fcntl.h>

using namespace Qt::StringLiterals;

// The real binary where something fails that it does not expect to. Much of that goes unnoticed,
// and the rows say what then lies at the output path.

namespace {

const QString kExampleShaders = QStringLiteral(EXAMPLE_SHADERS_DIR);
const QString kGolden = QStringLiteral(SOURCE_DIR "/tests/manifest/golden/RenderGraphManifest.h");
const QByteArray kEarlier = "an earlier manifest\n";

QByteArray golden()
{
    return readFile(kGolden);
}

} // namespace

class TestFaults : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void streams_data();
    void streams();
    void outputWithTwoNames();
    void outputFifo();
    void fileSizeLimit_data();
    void fileSizeLimit();
    void componentThatCannotBeReadToItsEnd_data();
    void componentThatCannotBeReadToItsEnd();
    void bytesThatAreNotUtf8();
};

// Standard output is only written at the end of the run, behind the manifest.
void TestFaults::streams_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("shadersDir");
    QTest::addColumn<int>("exitStatus");
    QTest::addColumn<int>("signal");
    QTest::newRow("output closed") << u"closed=1"_s << kExampleShaders << 0 << 0;
    QTest::newRow("output full") << u"full=1"_s << kExampleShaders << 0 << 0;
    QTest::newRow("output a broken pipe") << u"broken-pipe=1"_s << kExampleShaders << -1 << SIGPIPE;
    QTest::newRow("errors closed") << u"closed=2"_s << u"nowhere"_s << 1 << 0;
    QTest::newRow("errors full") << u"full=2"_s << u"nowhere"_s << 1 << 0;
}

void TestFaults::streams()
{
    QFETCH(QString, fault);
    QFETCH(QString, shadersDir);
    writeFile(u"m.h"_s, kEarlier);
    const Run result = compile(shadersDir, u"m.h"_s, under(fault));
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, "");
    QTEST(result.exitStatus, "exitStatus");
    QTEST(result.signal, "signal");
    QVERIFY(readFile(u"m.h"_s) == (shadersDir == kExampleShaders ? golden() : kEarlier));
}

// The file is written where it is: a new one in its place would leave the other name behind.
void TestFaults::outputWithTwoNames()
{
    writeFile(u"m.h"_s, QByteArray(2 * golden().size(), 'x'));
    QCOMPARE(::link("m.h", "second-name"), 0);
    QCOMPARE(compile(kExampleShaders, u"m.h"_s).exitStatus, 0);
    QVERIFY(readFile(u"second-name"_s) == golden());
}

void TestFaults::outputFifo()
{
    QCOMPARE(::mkfifo("m.h", 0600), 0);
    const int end = ::open("m.h", O_RDONLY | O_NONBLOCK);
    const auto closeEnd = qScopeGuard([end] { ::close(end); });
    QVERIFY(::fcntl(end, F_SETPIPE_SZ, 1 << 20) > golden().size());
    QCOMPARE(compile(kExampleShaders, u"m.h"_s).exitStatus, 0);
    QFile written;
    QVERIFY(written.open(end, QIODevice::ReadOnly));
    QVERIFY(written.readAll() == golden());
}

// A file that may not grow: the run dies in the middle, or, told to ignore that, goes on without
// noticing, as on a full disk. In both cases the next run replaces what is left.
void TestFaults::fileSizeLimit_data()
{
    QTest::addColumn<qsizetype>("size");
    QTest::addColumn<bool>("isKilled");
    QTest::newRow("killed") << qsizetype(40000) << true;
    QTest::newRow("unnoticed") << qsizetype(40000) << false;
    QTest::newRow("the last byte unnoticed") << golden().size() - 1 << false;
}

void TestFaults::fileSizeLimit()
{
    QFETCH(qsizetype, size);
    QFETCH(bool, isKilled);
    writeFile(u"m.h"_s, kEarlier);
    QString faults = u"core-size=0 file-size=%1"_s.arg(size);
    if (!isKilled)
        faults += u" ignored=%1"_s.arg(SIGXFSZ);
    const Run result = compile(kExampleShaders, u"m.h"_s, under(faults));
    QCOMPARE(result.signal, isKilled ? SIGXFSZ : 0);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, isKilled ? QByteArray() : retired());
    QCOMPARE(result.exitStatus, isKilled ? -1 : 0);
    QVERIFY(readFile(u"m.h"_s) == golden().first(size));

    QCOMPARE(compile(kExampleShaders, u"m.h"_s).exitStatus, 0);
    QVERIFY(readFile(u"m.h"_s) == golden());
}

// It counts as empty, where a reader may wait for ever.
void TestFaults::componentThatCannotBeReadToItsEnd_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("a read error") << u"/sys/class/net/lo/speed"_s;
    QTest::newRow("ends before the size that it states") << u"/sys/devices/system/cpu/online"_s;
}

void TestFaults::componentThatCannotBeReadToItsEnd()
{
    QFETCH(QString, file);
    if (!QFile::exists(file))
        QSKIP("this system has no such file");
    copyExampleShaders(u"shaders"_s);
    writeFile(component("gba-color.slang"), "");
    QCOMPARE(compile(u"shaders"_s, u"empty.h"_s).exitStatus, 0);
    QFile::remove(component("gba-color.slang"));
    QVERIFY(QFile::link(file, component("gba-color.slang")));

    const Run result = compile(u"shaders"_s, u"m.h"_s, under(u"cpu-seconds=10"_s));
    QCOMPARE(result.err, "");
    QCOMPARE(result.exitStatus, 0);
    QVERIFY(readFile(u"m.h"_s) == readFile(u"empty.h"_s));
}

// Each bad byte becomes U+FFFD: in what is opened, and in what is said.
void TestFaults::bytesThatAreNotUtf8()
{
    copyExampleShaders(u"s\ufffd"_s);
    const QString script =
            uR"sh("$0" --shaders-dir "$(printf 's\377')" --out "$(printf 'none\376\200/m.h')")sh"_s;
    const Run result = run({}, [&script](QProcess &process) {
        process.setProgram(u"sh"_s);
        process.setArguments({u"-c"_s, script});
    });
    QCOMPARE(result.err,
             "render-graph-compile: failed to open 'none\ufffd\ufffd/m.h' for writing\n");
    QCOMPARE(result.out, retired());
    QCOMPARE(result.exitStatus, 1);
}

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_Faults.moc"
