#include "RunTool.h"

#include <QScopeGuard>

#include <sys/resource.h>
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
const QByteArray kUsage = "usage: render-graph-compile --shaders-dir <path> --out <path>\n";
const QByteArray kNoFirstComponent =
        "render-graph-compile: preset 'crt-pvm' pass 0 ('crt-linearize') has no "
        "shaders/vulkan/components source\n";
const QByteArray kDrifted =
        "render-graph-compile: preset 'rewind' ownParams union "
        "{lineNoise;noiseAmount;smear;tapeSpeed;wiggle} does not match its .glslp parameters= "
        "list {}\n";

QByteArray readIfThere(const QString &path)
{
    return QFile::exists(path) ? readFile(path) : QByteArray();
}

QByteArray golden()
{
    return readFile(kGolden);
}

qsizetype goldenSize()
{
    return golden().size();
}

// What an empty gba-color.slang gives: its pass takes no parameters.
QByteArray goldenWithEmptyGbaColor()
{
    QByteArray manifest = golden();
    manifest.replace("inline constexpr ParamEntry kParams_gba_lcd_0[] = {\n"
                     "  { \"LCD_COLOR_PROFILE\", 0u },\n"
                     "};\n",
                     "");
    manifest.replace("  kParams_gba_lcd_0, 1,\n", "  nullptr, 0,\n");
    return manifest;
}

using Fault = std::function<void()>;

void limit(int resource, rlim_t to)
{
    const rlimit both = {to, to};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

// The fault is made in the child. A run that spins ends by a signal, and nothing dumps core.
Prepare in(const Fault &fault)
{
    return [fault](QProcess &process) {
        process.setChildProcessModifier([fault] {
            const rlimit seconds = {10, 20};
            ::setrlimit(RLIMIT_CPU, &seconds);
            limit(RLIMIT_CORE, 0);
            std::signal(SIGPIPE, SIG_DFL);
            fault();
        });
    };
}

void noFault() { }

// The fault is the last thing before the run: with a modifier that returns, Qt may give SIGPIPE its
// meaning again.
Run compileAfter(const Fault &fault, const QString &shadersDir)
{
    const Fault execute =
            executeTool({"x", "--shaders-dir", shadersDir.toLocal8Bit(), "--out", "m.h"});
    return run({}, in([fault, execute] {
                   fault();
                   execute();
               }));
}

void closeAll()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::close(stream);
}

void fill(int stream)
{
    ::dup2(::open("/dev/full", O_WRONLY), stream);
}

void breakPipe(int stream)
{
    int ends[2];
    if (::pipe(ends) == 0) {
        ::dup2(ends[1], stream);
        ::close(ends[0]);
        ::close(ends[1]);
    }
}

void link(const QString &target, const QString &path)
{
    QFile::remove(path);
    if (!QFile::link(target, path))
        qFatal("cannot link %s", qPrintable(path));
}

void makeFifo(const QString &path)
{
    QFile::remove(path);
    if (::mkfifo(path.toLocal8Bit().constData(), 0600) != 0)
        qFatal("no FIFO at %s", qPrintable(path));
}

// The FIFO's writing end, once the process reads there; -1 if it ended before.
int openOnceRead(const QString &fifo, QProcess &process)
{
    while (process.state() != QProcess::NotRunning) {
        const int end = ::open(fifo.toLocal8Bit().constData(), O_WRONLY | O_NONBLOCK);
        if (end >= 0)
            return end;
        process.waitForFinished(1);
    }
    return -1;
}

// Up to `most` bytes; less only where the writers are gone.
QByteArray readFrom(int end, qsizetype most)
{
    QByteArray bytes(most, '\0');
    qsizetype size = 0;
    while (size < most) {
        const ssize_t count = ::read(end, bytes.data() + size, static_cast<size_t>(most - size));
        if (count <= 0)
            break;
        size += count;
    }
    return bytes.first(size);
}

} // namespace

class TestFaults : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void goldenSizes();
    void streamsOfARunThatWrites_data();
    void streamsOfARunThatWrites();
    void streamsOfARunThatFails_data();
    void streamsOfARunThatFails();
    void brokenPipe_data();
    void brokenPipe();
    void unusualOutput_data();
    void unusualOutput();
    void outputDevice_data();
    void outputDevice();
    void outputFifo();
    void fullDisk();
    void componentWithoutContent_data();
    void componentWithoutContent();
    void componentFifo();
    void componentLinkLoop_data();
    void componentLinkLoop();
    void presetFileWithoutContent_data();
    void presetFileWithoutContent();
    void presetFileLinkLoop();
    void killedBeforeWriting_data();
    void killedBeforeWriting();
    void killedWhileWriting_data();
    void killedWhileWriting();
    void fileSizeLimit_data();
    void fileSizeLimit();
    void noMoreDescriptors_data();
    void noMoreDescriptors();
    void noMoreMemory();
    void noArgumentsAtAll_data();
    void noArgumentsAtAll();
    void bytesThatAreNotUtf8_data();
    void bytesThatAreNotUtf8();
    void longShadersPath_data();
    void longShadersPath();
    void longOutputPath_data();
    void longOutputPath();
};

// The sizes below are chosen by it.
void TestFaults::goldenSizes()
{
    QVERIFY(goldenSize() > 100000);
    QCOMPARE(goldenWithEmptyGbaColor().size(), goldenSize() - 96);
}

void TestFaults::streamsOfARunThatWrites_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<QByteArray>("out");
    QTest::newRow("input closed") << Fault([] { ::close(STDIN_FILENO); }) << retired();
    QTest::newRow("output closed") << Fault([] { ::close(STDOUT_FILENO); }) << QByteArray();
    QTest::newRow("errors closed") << Fault([] { ::close(STDERR_FILENO); }) << retired();
    QTest::newRow("all closed") << Fault(closeAll) << QByteArray();
    QTest::newRow("output full") << Fault([] { fill(STDOUT_FILENO); }) << QByteArray();
    QTest::newRow("errors full") << Fault([] { fill(STDERR_FILENO); }) << retired();
    QTest::newRow("output a closed pipe, signal ignored") << Fault([] {
        breakPipe(STDOUT_FILENO);
        std::signal(SIGPIPE, SIG_IGN);
    }) << QByteArray();
}

void TestFaults::streamsOfARunThatWrites()
{
    QFETCH(Fault, fault);
    QFETCH(QByteArray, out);
    const Run result = compileAfter(fault, kExampleShaders);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, out);
    QCOMPARE(result.exitStatus, 0);
    QVERIFY(readFile(u"m.h"_s) == golden());
}

void TestFaults::streamsOfARunThatFails_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<QByteArray>("err");
    QTest::newRow("input closed") << Fault([] { ::close(STDIN_FILENO); }) << kNoFirstComponent;
    QTest::newRow("output closed") << Fault([] { ::close(STDOUT_FILENO); }) << kNoFirstComponent;
    QTest::newRow("errors closed") << Fault([] { ::close(STDERR_FILENO); }) << QByteArray();
    QTest::newRow("all closed") << Fault(closeAll) << QByteArray();
    QTest::newRow("output full") << Fault([] { fill(STDOUT_FILENO); }) << kNoFirstComponent;
    QTest::newRow("errors full") << Fault([] { fill(STDERR_FILENO); }) << QByteArray();
    QTest::newRow("errors a closed pipe, signal ignored") << Fault([] {
        breakPipe(STDERR_FILENO);
        std::signal(SIGPIPE, SIG_IGN);
    }) << QByteArray();
}

void TestFaults::streamsOfARunThatFails()
{
    QFETCH(Fault, fault);
    QFETCH(QByteArray, err);
    writeFile(u"m.h"_s, kEarlier);
    const Run result = compileAfter(fault, u"nowhere"_s);
    QCOMPARE(result.err, err);
    QCOMPARE(result.out, "");
    QCOMPARE(result.exitStatus, 1);
    QCOMPARE(readFile(u"m.h"_s), kEarlier);
}

// Standard output is only written at the end of the run, behind the manifest.
void TestFaults::brokenPipe_data()
{
    QTest::addColumn<int>("stream");
    QTest::addColumn<QString>("shadersDir");
    QTest::addColumn<QByteArray>("left");
    QTest::newRow("output") << STDOUT_FILENO << kExampleShaders << golden();
    QTest::newRow("errors") << STDERR_FILENO << u"nowhere"_s << kEarlier;
}

void TestFaults::brokenPipe()
{
    QFETCH(int, stream);
    QFETCH(QString, shadersDir);
    QFETCH(QByteArray, left);
    writeFile(u"m.h"_s, kEarlier);
    const Run result = compile(shadersDir, u"m.h"_s, in([stream] { breakPipe(stream); }));
    QCOMPARE(result.signal, SIGPIPE);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, "");
    QVERIFY(readFile(u"m.h"_s) == left);
}

// Directories, missing ones and permissions are in tst_RenderGraphCompile.
void TestFaults::unusualOutput_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("written");
    QTest::newRow("a link to a file") << u"link"_s << u"file"_s;
    QTest::newRow("a dangling link") << u"dangling"_s << u"created"_s;
    QTest::newRow("a file with two names") << u"second-name"_s << u"file"_s;
    QTest::newRow("a link into no directory") << u"into-none"_s << QString();
    QTest::newRow("a link to a directory") << u"to-directory"_s << QString();
    QTest::newRow("a link to itself") << u"loop"_s << QString();
    QTest::newRow("a slash behind") << u"file/"_s << QString();
    QTest::newRow("below a file") << u"file/m.h"_s << QString();
}

void TestFaults::unusualOutput()
{
    QFETCH(QString, path);
    QFETCH(QString, written);
    writeFile(u"file"_s, QByteArray(2 * goldenSize(), 'x'));
    QDir().mkdir(u"directory"_s);
    link(u"file"_s, u"link"_s);
    link(u"created"_s, u"dangling"_s);
    link(u"none/m.h"_s, u"into-none"_s);
    link(u"directory"_s, u"to-directory"_s);
    link(u"loop"_s, u"loop"_s);
    QCOMPARE(::link("file", "second-name"), 0);
    const QStringList before = QDir().entryList(QDir::AllEntries | QDir::System);

    const Run result = compile(kExampleShaders, path, in(noFault));
    QCOMPARE(result.err,
             written.isEmpty()
                     ? "render-graph-compile: failed to open '" + path.toUtf8() + "' for writing\n"
                     : QByteArray());
    QCOMPARE(result.out, retired());
    QCOMPARE(result.exitStatus, written.isEmpty() ? 1 : 0);
    if (!written.isEmpty())
        QVERIFY(readFile(written) == golden());
    if (written != u"file"_s)
        QCOMPARE(readFile(u"file"_s).size(), 2 * goldenSize());
    QCOMPARE(QFile::exists(u"created"_s), written == u"created"_s);
    for (const char *name : {"link", "dangling", "into-none", "to-directory", "loop"})
        QVERIFY2(QFileInfo(QString::fromLatin1(name)).isSymLink(), name);
    QVERIFY(QDir(u"directory"_s).isEmpty());
    QVERIFY(!QFile::exists(u"none"_s));
}

void TestFaults::outputDevice_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("null") << u"/dev/null"_s;
    QTest::newRow("full: goes unnoticed") << u"/dev/full"_s;
}

void TestFaults::outputDevice()
{
    QFETCH(QString, path);
    // Behind a link: a tool that removes its output before it writes must not take the machine's
    // device.
    link(path, u"device"_s);
    const Run result = compile(kExampleShaders, u"device"_s, in(noFault));
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, retired());
    QCOMPARE(result.exitStatus, 0);
    struct stat device;
    QCOMPARE(::stat("device", &device), 0);
    QVERIFY(S_ISCHR(device.st_mode));
}

void TestFaults::outputFifo()
{
    makeFifo(u"m.h"_s);
    const int end = ::open("m.h", O_RDONLY | O_NONBLOCK);
    QVERIFY(::fcntl(end, F_SETPIPE_SZ, 1 << 20) > goldenSize());
    const Run result = compile(kExampleShaders, u"m.h"_s, in(noFault));
    const QByteArray written = readFrom(end, 2 * goldenSize());
    ::close(end);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, retired());
    QCOMPARE(result.exitStatus, 0);
    QVERIFY(written == golden());
}

// On a disk of its own, seen by this run alone: the first run finds no room, and the second, with
// more room, replaces what the first one left.
void TestFaults::fullDisk()
{
    QProcess probe;
    const QStringList own = ::geteuid() == 0 ? QStringList({u"-m"_s}) : QStringList({u"-rm"_s});
    QDir().mkdir(u"disk"_s);
    const QString mount = u"mount -t tmpfs -o size=256k tmpfs disk"_s;
    probe.start(u"unshare"_s, own + QStringList({u"sh"_s, u"-c"_s, mount}));
    probe.waitForFinished(-1);
    if (probe.error() == QProcess::FailedToStart || probe.exitCode() != 0)
        QSKIP("mounting is not permitted: " + probe.readAllStandardError().trimmed());

    QProcess process;
    in(noFault)(process);
    const QString script = mount
            + u" && head -c 192K /dev/zero > disk/other && \"$@\" && cp disk/m.h first.h"_s
            + u" && rm disk/other && \"$@\" && cp disk/m.h second.h"_s;
    process.start(u"unshare"_s,
                  own
                          + QStringList({u"sh"_s, u"-c"_s, script, u"sh"_s, toolPath(),
                                         u"--shaders-dir"_s, kExampleShaders, u"--out"_s,
                                         u"disk/m.h"_s}));
    const Run result = finish(process);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, retired() + retired());
    QCOMPARE(result.exitStatus, 0);
    QVERIFY(readFile(u"first.h"_s) == golden().first(65536));
    QVERIFY(readFile(u"second.h"_s) == golden());
    QVERIFY(QDir(u"disk"_s).isEmpty());
}

// Each of these can be opened, and gives no directive: it is empty, says that its size is 0, cannot
// be read (with EINVAL), or ends before the size that it states, where a reader may wait for ever.
void TestFaults::componentWithoutContent_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("a device") << u"/dev/null"_s;
    QTest::newRow("a size of 0") << u"/proc/version"_s;
    QTest::newRow("a read error") << u"/sys/class/net/lo/speed"_s;
    QTest::newRow("ends before its size") << u"/sys/devices/system/cpu/online"_s;
}

void TestFaults::componentWithoutContent()
{
    QFETCH(QString, target);
    if (!QFile::exists(target))
        QSKIP("this system has no such file");
    copyExampleShaders(u"shaders"_s);
    link(target, component("gba-color.slang"));
    const Run result = compile(u"shaders"_s, u"m.h"_s, in(noFault));
    QCOMPARE(result.signal, 0);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, retired());
    QCOMPARE(result.exitStatus, 0);
    QVERIFY(readFile(u"m.h"_s) == goldenWithEmptyGbaColor());
}

// It has no size, so it counts as empty, whatever a writer has for it.
void TestFaults::componentFifo()
{
    copyExampleShaders(u"shaders"_s);
    const QString path = component("gba-color.slang");
    const QByteArray text = readFile(path);
    makeFifo(path);

    QProcess process;
    in(noFault)(process);
    start(process, {u"--shaders-dir"_s, u"shaders"_s, u"--out"_s, u"m.h"_s});
    // The run closes the FIFO without reading.
    std::signal(SIGPIPE, SIG_IGN);
    int opened = 0;
    for (int end = openOnceRead(path, process); end >= 0; end = openOnceRead(path, process)) {
        ++opened;
        [[maybe_unused]] const ssize_t count =
                ::write(end, text.constData(), static_cast<size_t>(text.size()));
        ::close(end);
    }
    const Run result = finish(process);
    QVERIFY(opened > 0);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, retired());
    QCOMPARE(result.exitStatus, 0);
    QVERIFY(readFile(u"m.h"_s) == goldenWithEmptyGbaColor());
}

void TestFaults::componentLinkLoop_data()
{
    QTest::addColumn<bool>("hasFrag");
    QTest::newRow("alone") << false;
    QTest::newRow("beside a .frag") << true;
}

void TestFaults::componentLinkLoop()
{
    QFETCH(bool, hasFrag);
    copyExampleShaders(u"shaders"_s);
    link(u"gba-color.slang"_s, component("gba-color.slang"));
    if (hasFrag)
        writeFile(component("gba-color.frag"), "");
    const Run result = compile(u"shaders"_s, u"m.h"_s, in(noFault));
    QCOMPARE(result.err,
             hasFrag ? ""
                     : "render-graph-compile: preset 'gba-lcd' pass 0 "
                       "('gba-color') has no shaders/vulkan/components source\n");
    QCOMPARE(result.out, retired(hasFrag ? "" : "gba-lcd"));
    QCOMPARE(result.exitStatus, hasFrag ? 0 : 1);
    QVERIFY(readIfThere(u"m.h"_s) == (hasFrag ? golden() : QByteArray()));
}

void TestFaults::presetFileWithoutContent_data()
{
    componentWithoutContent_data();
    QTest::newRow("an empty file") << QString();
}

void TestFaults::presetFileWithoutContent()
{
    QFETCH(QString, target);
    if (!target.isEmpty() && !QFile::exists(target))
        QSKIP("this system has no such file");
    copyExampleShaders(u"shaders"_s);
    if (target.isEmpty())
        writeFile(u"shaders/rewind.glslp"_s, "");
    else
        link(target, u"shaders/rewind.glslp"_s);
    writeFile(u"m.h"_s, kEarlier);
    const Run result = compile(u"shaders"_s, u"m.h"_s, in(noFault));
    QCOMPARE(result.signal, 0);
    QCOMPARE(result.err, kDrifted);
    QCOMPARE(result.out, retired());
    QCOMPARE(result.exitStatus, 1);
    QCOMPARE(readFile(u"m.h"_s), kEarlier);
}

void TestFaults::presetFileLinkLoop()
{
    copyExampleShaders(u"shaders"_s);
    link(u"rewind.glslp"_s, u"shaders/rewind.glslp"_s);
    const Run result = compile(u"shaders"_s, u"m.h"_s, in(noFault));
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, retired({}, u"shaders"_s));
    QCOMPARE(result.exitStatus, 0);
    QVERIFY(QFile::exists(u"m.h"_s));
}

// Held at a FIFO that it wants to read.
void TestFaults::killedBeforeWriting_data()
{
    QTest::addColumn<QString>("fifo");
    QTest::newRow("in the first component") << component("crt-linearize.slang");
    QTest::newRow("in the last component but one") << component("rewind-noise.slang");
    QTest::newRow("in the preset's file") << u"shaders/rewind.glslp"_s;
}

void TestFaults::killedBeforeWriting()
{
    QFETCH(QString, fifo);
    copyExampleShaders(u"shaders"_s);
    const QByteArray text = readFile(fifo);
    makeFifo(fifo);
    writeFile(u"m.h"_s, kEarlier);

    QProcess process;
    in(noFault)(process);
    start(process, {u"--shaders-dir"_s, u"shaders"_s, u"--out"_s, u"m.h"_s});
    // Held, so that the run finds a writer there, until it was killed.
    const int end = openOnceRead(fifo, process);
    QVERIFY(end >= 0);
    process.kill();
    const Run result = finish(process);
    ::close(end);
    QCOMPARE(result.signal, SIGKILL);
    QCOMPARE(result.err, "");
    QCOMPARE(readFile(u"m.h"_s), kEarlier);

    QFile::remove(fifo);
    writeFile(fifo, text);
    QCOMPARE(compile(u"shaders"_s, u"m.h"_s).exitStatus, 0);
    QVERIFY(readFile(u"m.h"_s) == golden());
}

// Held by a reader that takes some bytes of a small pipe, and no more.
void TestFaults::killedWhileWriting_data()
{
    QTest::addColumn<qsizetype>("taken");
    QTest::newRow("at the first byte") << qsizetype(1);
    QTest::newRow("at 16 KiB") << qsizetype(16384);
    QTest::newRow("at 64 KiB") << qsizetype(65536);
    QTest::newRow("near the end") << goldenSize() - 10000;
}

void TestFaults::killedWhileWriting()
{
    QFETCH(qsizetype, taken);
    makeFifo(u"m.h"_s);
    const int end = ::open("m.h", O_RDONLY | O_NONBLOCK);
    QCOMPARE(::fcntl(end, F_SETPIPE_SZ, 4096), 4096);
    // Keeps the reading end from seeing the end of the file before the run opens it.
    const int keeper = ::open("m.h", O_WRONLY | O_NONBLOCK);
    ::fcntl(end, F_SETFL, 0);

    QProcess process;
    in(noFault)(process);
    start(process, {u"--shaders-dir"_s, kExampleShaders, u"--out"_s, u"m.h"_s});
    QByteArray written = readFrom(end, taken);
    process.kill();
    const Run result = finish(process);
    ::close(keeper);
    written += readFrom(end, goldenSize());
    ::close(end);
    QCOMPARE(result.signal, SIGKILL);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, "");
    QVERIFY(written.size() >= taken && written.size() < goldenSize());
    QVERIFY(golden().startsWith(written));
}

// A file that may not grow: the run dies in the middle, or, told to ignore that, goes on without
// noticing. In both cases the next run replaces what is left.
void TestFaults::fileSizeLimit_data()
{
    QTest::addColumn<qsizetype>("size");
    QTest::addColumn<bool>("isIgnored");
    for (const bool isIgnored : {false, true}) {
        for (const qsizetype size : {qsizetype(0), qsizetype(1), qsizetype(16384), qsizetype(40000),
                                     goldenSize() - 1, goldenSize()}) {
            QTest::addRow("%d bytes%s", int(size), isIgnored ? ", signal ignored" : "")
                    << size << isIgnored;
        }
    }
}

void TestFaults::fileSizeLimit()
{
    QFETCH(qsizetype, size);
    QFETCH(bool, isIgnored);
    const bool isKilled = size < goldenSize() && !isIgnored;
    writeFile(u"m.h"_s, kEarlier);
    const Run result = compile(kExampleShaders, u"m.h"_s, in([size, isIgnored] {
                                   limit(RLIMIT_FSIZE, static_cast<rlim_t>(size));
                                   if (isIgnored)
                                       std::signal(SIGXFSZ, SIG_IGN);
                               }));
    QCOMPARE(result.signal, isKilled ? SIGXFSZ : 0);
    QCOMPARE(result.err, "");
    QCOMPARE(result.out, isKilled ? QByteArray() : retired());
    QCOMPARE(result.exitStatus, isKilled ? -1 : 0);
    QVERIFY(readFile(u"m.h"_s) == golden().first(size));

    QCOMPARE(compile(kExampleShaders, u"m.h"_s).exitStatus, 0);
    QVERIFY(readFile(u"m.h"_s) == golden());
}

// From one moment on nothing can be opened any more: components then count as empty. A lease on a
// file holds the run in the moment that it opens it.
void TestFaults::noMoreDescriptors_data()
{
    QTest::addColumn<QString>("held");
    QTest::addColumn<bool>("hasPresetFile");
    QTest::addColumn<QByteArray>("out");
    QTest::addColumn<QByteArray>("err");
    QTest::newRow("behind the first component")
            << component("crt-linearize.slang") << true << QByteArray()
            << QByteArray("render-graph-compile: preset 'crt-pvm' produced an invalid "
                          "VulkanRenderGraph\n");
    QTest::newRow("before the preset's file")
            << component("rewind-noise.slang") << true << retired() << kDrifted;
    QTest::newRow("before the output")
            << component("rewind-noise.slang") << false << retired({}, u"shaders"_s)
            << QByteArray("render-graph-compile: failed to open 'm.h' for writing\n");
}

void TestFaults::noMoreDescriptors()
{
    QFETCH(QString, held);
    QFETCH(bool, hasPresetFile);
    QFETCH(QByteArray, out);
    QFETCH(QByteArray, err);
    if (kIsSanitized)
        QSKIP("the sanitizers need descriptors of their own");
    copyExampleShaders(u"shaders"_s);
    if (!hasPresetFile)
        QFile::remove(u"shaders/rewind.glslp"_s);
    writeFile(u"m.h"_s, kEarlier);

    // The lease's holder is told by a signal, which would end this program.
    std::signal(SIGIO, SIG_IGN);
    const int lease = ::open(held.toLocal8Bit().constData(), O_RDONLY | O_CLOEXEC);
    if (::fcntl(lease, F_SETLEASE, F_WRLCK) != 0)
        QSKIP("this file system has no leases");
    QProcess process;
    in(noFault)(process);
    start(process, {u"--shaders-dir"_s, u"shaders"_s, u"--out"_s, u"m.h"_s});
    while (::fcntl(lease, F_GETLEASE) == F_WRLCK && process.state() != QProcess::NotRunning)
        process.waitForFinished(1);
    QVERIFY(process.state() != QProcess::NotRunning);
    const rlimit none = {0, 0};
    QCOMPARE(::prlimit(static_cast<pid_t>(process.processId()), RLIMIT_NOFILE, &none, nullptr), 0);
    ::close(lease);
    const Run result = finish(process);
    QCOMPARE(result.err, err);
    QCOMPARE(result.out, out);
    QCOMPARE(result.exitStatus, 1);
    QCOMPARE(readFile(u"m.h"_s), kEarlier);
}

// A line that does not fit into the address space, in a file that takes no room on the disk. What
// the run then says is the C++ library's affair.
void TestFaults::noMoreMemory()
{
    if (kIsSanitized)
        QSKIP("the address sanitizer needs more address space than there is memory");
    copyExampleShaders(u"shaders"_s);
    QCOMPARE(::truncate(component("gba-color.slang").toLocal8Bit().constData(), off_t(400) << 20),
             0);
    writeFile(u"m.h"_s, kEarlier);
    const Run result =
            compile(u"shaders"_s, u"m.h"_s, in([] { limit(RLIMIT_AS, rlim_t(256) << 20); }));
    QCOMPARE(result.signal, SIGABRT);
    QCOMPARE(result.out, "");
    QVERIFY(!result.err.contains("render-graph-compile"));
    QCOMPARE(readFile(u"m.h"_s), kEarlier);
}

void TestFaults::noArgumentsAtAll_data()
{
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::newRow("not even a name") << QByteArrayList();
    QTest::newRow("an empty name") << QByteArrayList({""});
    QTest::newRow("the output's option as the name")
            << QByteArrayList({"--out", "m.h", "--shaders-dir", "shaders"});
    QTest::newRow("empty values") << QByteArrayList({"x", "--out", "", "--shaders-dir", ""});
}

void TestFaults::noArgumentsAtAll()
{
    QFETCH(QByteArrayList, arguments);
    copyExampleShaders(u"shaders"_s);
    const Run result = run({}, in(executeTool(arguments)));
    QCOMPARE(result.err, kUsage);
    QCOMPARE(result.out, "");
    QCOMPARE(result.exitStatus, 1);
    QCOMPARE(QDir().entryList(QDir::Files), QStringList());
}

// Each bad byte becomes U+FFFD, and so do the names of what is opened.
void TestFaults::bytesThatAreNotUtf8_data()
{
    QTest::addColumn<QByteArray>("shadersDir");
    QTest::addColumn<QByteArray>("out");
    QTest::addColumn<QByteArray>("err");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("shaders that are not found")
            << QByteArray("s\xff") << QByteArray("m.h") << kNoFirstComponent << QByteArray();
    QTest::newRow("shaders of the replaced name")
            << QByteArray("t\xff") << QByteArray("m.h") << QByteArray() << QByteArray("m.h");
    QTest::newRow("output") << QByteArray("shaders") << QByteArray("\xfe\x80m.h") << QByteArray()
                            << QByteArray("\xef\xbf\xbd\xef\xbf\xbdm.h");
    QTest::newRow("output in a directory that is not found")
            << QByteArray("shaders") << QByteArray("s\xff/m.h")
            << QByteArray("render-graph-compile: failed to open 's\xef\xbf\xbd/m.h' for writing\n")
            << QByteArray();
}

void TestFaults::bytesThatAreNotUtf8()
{
    QFETCH(QByteArray, shadersDir);
    QFETCH(QByteArray, out);
    QFETCH(QByteArray, err);
    QFETCH(QByteArray, written);
    copyExampleShaders(u"shaders"_s);
    QCOMPARE(::symlink("shaders", "s\xff"), 0);
    // QTemporaryDir does not find this name.
    const auto cleanUp = qScopeGuard([] { ::unlink("s\xff"); });
    QCOMPARE(::symlink("shaders", "t\xef\xbf\xbd"), 0);
    const Run result = run({}, in(executeTool({"x", "--shaders-dir", shadersDir, "--out", out})));
    QCOMPARE(result.err, err);
    QCOMPARE(result.out, err == kNoFirstComponent ? QByteArray() : retired());
    QCOMPARE(result.exitStatus, err.isEmpty() ? 0 : 1);
    const QStringList files = QDir().entryList(QDir::Files);
    QCOMPARE(files, written.isEmpty() ? QStringList() : QStringList({QString::fromUtf8(written)}));
    if (!written.isEmpty())
        QVERIFY(readFile(QString::fromUtf8(written)) == golden());
}

// The system takes paths of up to 4095 bytes, and names of up to 255.
void TestFaults::longShadersPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("err");
    // The longest component's path has 47 bytes more than the directory's.
    const auto padded = [](int size) {
        return u"./"_s.repeated((size - 7) / 2) + (size % 2 == 0 ? u"/shaders"_s : u"shaders"_s);
    };
    QTest::newRow("a component at 4095 bytes") << padded(4095 - 47) << QByteArray();
    QTest::newRow("a component at 4096 bytes")
            << padded(4096 - 47)
            << QByteArray("render-graph-compile: preset 'crt-pvm' pass 13 "
                          "('crt-halation-wide-down') has no shaders/vulkan/components source\n");
    QTest::newRow("4095 bytes") << padded(4095) << kNoFirstComponent;
    QTest::newRow("4096 bytes") << padded(4096) << kNoFirstComponent;
    QTest::newRow("a name of 255 bytes") << QString(255, u'n') << QByteArray();
    QTest::newRow("a name of 256 bytes") << QString(256, u'n') << kNoFirstComponent;
}

void TestFaults::longShadersPath()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, err);
    copyExampleShaders(u"shaders"_s);
    link(u"shaders"_s, QString(255, u'n'));
    const Run result = compile(path, u"m.h"_s, in(noFault));
    QCOMPARE(result.err, err);
    QCOMPARE(result.out, err.isEmpty() ? retired() : QByteArray());
    QCOMPARE(result.exitStatus, err.isEmpty() ? 0 : 1);
    QVERIFY(readIfThere(u"m.h"_s) == (err.isEmpty() ? golden() : QByteArray()));
}

void TestFaults::longOutputPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("written");
    QTest::newRow("4095 bytes") << u"./"_s.repeated(2046) + u"m.h"_s << u"m.h"_s;
    QTest::newRow("4096 bytes") << u"./"_s.repeated(2046) + u"/m.h"_s << QString();
    QTest::newRow("a name of 255 bytes") << QString(255, u'n') << QString(255, u'n');
    QTest::newRow("a name of 256 bytes") << QString(256, u'n') << QString();
}

void TestFaults::longOutputPath()
{
    QFETCH(QString, path);
    QFETCH(QString, written);
    const Run result = compile(kExampleShaders, path, in(noFault));
    QCOMPARE(result.err,
             written.isEmpty()
                     ? "render-graph-compile: failed to open '" + path.toUtf8() + "' for writing\n"
                     : QByteArray());
    QCOMPARE(result.out, retired());
    QCOMPARE(result.exitStatus, written.isEmpty() ? 1 : 0);
    QCOMPARE(QDir().entryList(QDir::Files),
             written.isEmpty() ? QStringList() : QStringList({written}));
    if (!written.isEmpty())
        QVERIFY(readFile(written) == golden());
}

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_Faults.moc"
