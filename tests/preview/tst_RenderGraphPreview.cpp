#include "TestSupport.h"

#include <Command.h>

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

// The commands. Most tests call them in process, which is faster than to start the program and load
// a driver; some run the real binary.

namespace {

const QString kShadersDir = QStringLiteral(EXAMPLE_SHADERS_DIR);

Run run(const QStringList &arguments, const QStringList &environment = {})
{
    return runProgram(QStringLiteral(RENDER_GRAPH_PREVIEW), arguments,
                      [&environment](QProcess &process) {
                          process.setEnvironment(QProcess::systemEnvironment() + environment);
                      });
}

QStringList words(const QString &line)
{
    return line.split(u' ', Qt::SkipEmptyParts);
}

QStringList files()
{
    return QDir().entryList(QDir::Files, QDir::Name);
}

struct Outcome
{
    QByteArray out;
    QString error; // null if it succeeded
};

// Runs a command in process.
Outcome call(const QString &line)
{
    constexpr const Command *kCommands[] = {&kPictureCommand, &kGraphCommand, &kProfileCommand};
    const QStringList arguments = words(line);
    const auto *const found =
            std::ranges::find(kCommands, arguments.first(), [](const Command *command) {
                return QLatin1StringView(command->name);
            });
    const Command &command = **found;
    QCommandLineParser parser;
    parser.addOption({u"shaders-dir"_s, {}, u"path"_s, QStringLiteral(EXAMPLE_SHADERS_DIR)});
    parser.addOption({u"out"_s, {}, u"path"_s});
    parser.addOptions(command.options());
    if (!parser.parse(arguments))
        qFatal("%s", qPrintable(parser.errorText()));
    bool isDone = false;
    Outcome outcome;
    outcome.out = captured(stdout, [&] {
        isDone = command.run({parser, parser.value(u"shaders-dir"_s), parser.value(u"out"_s),
                              parser.positionalArguments()},
                             outcome.error);
    });
    if (isDone != outcome.error.isNull())
        qFatal("an error without a text, or a text without an error");
    return outcome;
}

// Calls a command that has to succeed without output.
#define CALL(line)                                                                                 \
    do {                                                                                           \
        const Outcome outcome = call(line);                                                        \
        QCOMPARE(outcome.error, QString());                                                        \
        QCOMPARE(outcome.out, "");                                                                 \
    } while (false)

} // namespace

class TestRenderGraphPreview : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void programErrors_data();
    void programErrors();
    void componentErrors();
    void helpAndVersion();
    void listNamesEverything();
    void programDrawsTheSamePictureEveryTime();
    void programWithoutDriver();
    void programWithoutMemory();
    void programWithoutOutput_data();
    void programWithoutOutput();
    void failedPictureKeepsTheFile();
    void errors_data();
    void errors();
    void pictureFollowsItsOptions_data();
    void pictureFollowsItsOptions();
    void pictureOfRewoundTape();
    void pictureOfSavedValues();
    void pictureOfEveryFrame();
    void pictureOfEveryPass();
    void pictureKeepsTheShape_data();
    void pictureKeepsTheShape();
    void pictureInHdr();
    void pictureOfAComparison();
    void graphOfOnePreset();
    void graphWithThumbnails();
    void graphOfAllPresets();
    void profileAsJson();
    void profileComparesTwo_data();
    void profileComparesTwo();
    void profileAsTable();
};

void TestRenderGraphPreview::programErrors_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("no command") << u""_s << "no command is given; --help tells the commands"_ba;
    QTest::newRow("unknown command")
            << u"paint"_s << "'paint' is no command; --help tells the commands"_ba;
    QTest::newRow("unknown option")
            << u"picture stock --out a.png --frame 3"_s << "Unknown option 'frame'."_ba;
    QTest::newRow("option of another command")
            << u"list --frames 3"_s << "Unknown option 'frames'."_ba;
    QTest::newRow("no preset") << u"picture --out a.png"_s
                               << "usage: render-graph-preview picture <preset> (see --help)"_ba;
    QTest::newRow("two presets") << u"picture stock stock --out a.png"_s
                                 << "usage: render-graph-preview picture <preset> (see --help)"_ba;
    QTest::newRow("no output") << u"picture stock"_s << "--out is missing: name what to write"_ba;
    QTest::newRow("no shaders directory")
            << u"--shaders-dir= picture stock --out a.png"_s
            << "--shaders-dir is missing: name the shaders directory"_ba;
    QTest::newRow("no place for the picture")
            << u"picture stock --out none/a.png --size 8x8"_s
            << "cannot write 'none/a.png': No such file or directory"_ba;
    QTest::newRow("other shaders directory") << u"--shaders-dir none picture stock --out a.png"_s
                                             << "the shaders directory 'none' does not exist"_ba;
    QTest::newRow("no shaders in the directory")
            << u"--shaders-dir . picture stock --out a.png"_s
            << "the shaders directory '.' has no directory vulkan/components"_ba;
}

void TestRenderGraphPreview::programErrors()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, message);
    const Run result = run(words(line));
    QCOMPARE(result.err, "render-graph-preview: " + message + '\n');
    QCOMPARE(result.out, "");
    QCOMPARE(result.exitStatus, 1);
    QCOMPARE(files(), QStringList());
}

// An error of several lines has the program's name before each.
void TestRenderGraphPreview::componentErrors()
{
    copyExampleShaders();
    const QString path = u"shaders/vulkan/components/rewind.slang"_s;
    writeFile(path, "//! input NONE\n" + readFile(path));
    const Run result = run(words(u"--shaders-dir shaders picture rewind --out a.png --size 8x8"_s));
    QCOMPARE(result.err,
             "render-graph-preview: preset 'rewind' pass 0 ('rewind') declares //! input NONE but "
             "no earlier pass carries that alias (shaders/vulkan/components/rewind.slang)\n"
             "render-graph-preview: shaders/vulkan/components/rewind.slang:1: //! input NONE is "
             "declared here\n");
    QCOMPARE(result.out, "");
    QCOMPARE(result.exitStatus, 1);
    QCOMPARE(files(), QStringList());
}

void TestRenderGraphPreview::helpAndVersion()
{
    const Run version = run({u"--version"_s});
    QCOMPARE(version.out, "render-graph-preview " PROJECT_VERSION "\n");
    QCOMPARE(version.exitStatus, 0);
    const Run help = run({u"--help"_s});
    QVERIFY(help.out.contains(
            "\n  picture <preset>\n  graph [<preset>]\n  profile <preset>\n  list\n"));
    // The text is wrapped, even within the path.
    const QString helpText = QString::fromUtf8(help.out).remove(QRegularExpression(u"\\s"_s));
    QVERIFY(helpText.contains(QString(kShadersDir).remove(u' ')));
    QCOMPARE(help.exitStatus, 0);
    const Run picture = run({u"picture"_s, u"--help"_s});
    QVERIFY(picture.out.contains("1440x1080."));
    QCOMPARE(picture.exitStatus, 0);
}

void TestRenderGraphPreview::listNamesEverything()
{
    const Run list = run(words(u"--shaders-dir= list"_s)); // which needs no shaders
    QCOMPARE(list.err, "");
    QVERIFY2(list.out.startsWith("presets:\n  " + declaredPresetNames().join(u"\n  "_s).toUtf8()
                                 + "\ntest pictures:\n  scene-320x240\n"),
             list.out.constData());
    QVERIFY2(list.out.contains("\n  title-320x240\ndevices:\n  0 "), list.out.constData());
    QCOMPARE(list.exitStatus, 0);
}

void TestRenderGraphPreview::programDrawsTheSamePictureEveryTime()
{
    const QStringList arguments = words(u"picture gba-lcd --size 96x72 --frames 3"_s);
    for (const QString &options : {u"--out a.png"_s, u"--out=b.png --device 0"_s}) {
        const Run result = run(arguments + words(options));
        QCOMPARE(result.err, "");
        QCOMPARE(result.out, "");
        QCOMPARE(result.exitStatus, 0);
    }
    QCOMPARE(QImage(u"a.png"_s).size(), QSize(96, 72));
    QVERIFY(readFile(u"a.png"_s) == readFile(u"b.png"_s));
}

void TestRenderGraphPreview::programWithoutDriver()
{
    const QStringList environment = {u"VK_ICD_FILENAMES=/nowhere"_s, u"VK_DRIVER_FILES=/nowhere"_s};
    const Run picture = run(words(u"picture stock --out a.png --size 8x6"_s), environment);
    // Versions of Vulkan's headers name the function in different ways.
    QVERIFY2(
            picture.err.startsWith("render-graph-preview: no Vulkan device to draw on (Vulkan: vk"),
            picture.err.constData());
    QVERIFY2(picture.err.endsWith("reateInstance: ErrorIncompatibleDriver); install a driver "
                                  "(Debian: mesa-vulkan-drivers)\n"),
             picture.err.constData());
    QCOMPARE(picture.exitStatus, 1);
    QCOMPARE(files(), QStringList());
    // The names are printed before the error.
    const Run list = run({u"list"_s}, environment);
    QVERIFY(list.out.endsWith("\n  title-320x240\n"));
    QCOMPARE(list.err, picture.err);
    QCOMPARE(list.exitStatus, 1);
}

// The driver takes an unknown share of the memory, so that several limits are tried.
void TestRenderGraphPreview::programWithoutMemory()
{
    if (kIsSanitized)
        QSKIP("a sanitizer takes more memory than there is");
    QVERIFY(QImage(4096, 4096, QImage::Format_RGB32).save(u"large.png"_s));
    QByteArrayList errors;
    for (rlim_t mebibytes = 500; mebibytes <= 2000; mebibytes += 250) {
        const Run result =
                runProgram(QStringLiteral(RENDER_GRAPH_PREVIEW),
                           words(u"picture stock --source large.png --size 8x8 --out a.png"_s),
                           [mebibytes](QProcess &process) {
                               process.setChildProcessModifier([mebibytes] {
                                   const rlimit limit = {mebibytes << 20, mebibytes << 20};
                                   ::setrlimit(RLIMIT_AS, &limit);
                               });
                           });
        errors.append(QByteArray::number(result.exitStatus) + ' ' + result.err);
    }
    const QByteArray expected =
            "1 render-graph-preview: not enough memory: choose a smaller size or source\n";
    QVERIFY2(errors.contains(expected), errors.join().constData());
}

void TestRenderGraphPreview::programWithoutOutput_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("isClosed");
    QTest::addColumn<QByteArray>("reason");
    const QString profile = u"profile stock --size 8x6 --frames 1"_s;
    QTest::newRow("list to a full disk") << u"list"_s << false << "No space left on device"_ba;
    QTest::newRow("list to nothing") << u"list"_s << true << "Bad file descriptor"_ba;
    QTest::newRow("profile to a full disk") << profile << false << "No space left on device"_ba;
    QTest::newRow("profile to nothing") << profile << true << "Bad file descriptor"_ba;
}

void TestRenderGraphPreview::programWithoutOutput()
{
    QFETCH(QString, line);
    QFETCH(bool, isClosed);
    QFETCH(QByteArray, reason);
    const Run result =
            runProgram(QStringLiteral(RENDER_GRAPH_PREVIEW), words(line), [&](QProcess &process) {
                process.setStandardOutputFile(u"/dev/full"_s);
                if (isClosed)
                    process.setChildProcessModifier([] { ::close(STDOUT_FILENO); });
            });
    QCOMPARE(result.err,
             "render-graph-preview: cannot write to the standard output: " + reason + '\n');
    QCOMPARE(result.exitStatus, 1);
}

void TestRenderGraphPreview::failedPictureKeepsTheFile()
{
    writeFile(u"a.png"_s, "before");
    QVERIFY(!call(u"picture stock --out a.png --size 8x8 --source none.png"_s).error.isNull());
    QCOMPARE(readFile(u"a.png"_s), "before");
    QCOMPARE(files(), QStringList({u"a.png"_s}));
}

void TestRenderGraphPreview::errors_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("message");
    const QByteArray noPreset =
            "no preset 'crt'; there are " + declaredPresetNames().join(u", "_s).toUtf8();
    const QString picture = u"picture gba-lcd --out a.png --size 8x8 "_s;
    QTest::newRow("unknown preset") << u"picture crt --out a.png"_s << noPreset;
    QTest::newRow("unknown id") << picture + u"--set gain=1"_s
                                << "preset 'gba-lcd' has no parameter 'gain'; it has "
                                   "LCD_COLOR_PROFILE, ghost_rise, ghost_fall, ghost_hdr_speed, "
                                   "lcd_aperture_x, lcd_aperture_y, lcd_diffuse, "
                                   "lcd_grid_contrast, lcd_spill"_ba;
    QTest::newRow("no parameters at all")
            << u"picture stock --out a.png --set gain=1"_s
            << "preset 'stock' has no parameter 'gain'; it has none"_ba;
    QTest::newRow("value above") << picture + u"--set ghost_rise=1.01"_s
                                 << "ghost_rise=1.01: the value is a number from 0.05 to 1"_ba;
    QTest::newRow("value below") << picture + u"--set ghost_rise=0.04"_s
                                 << "ghost_rise=0.04: the value is a number from 0.05 to 1"_ba;
    QTest::newRow("no value") << picture + u"--set ghost_rise"_s
                              << "ghost_rise=: the value is a number from 0.05 to 1"_ba;
    QTest::newRow("second value") << picture + u"--set ghost_rise=1 --set ghost_fall=nan"_s
                                  << "ghost_fall=nan: the value is a number from 0.05 to 1"_ba;
    QTest::newRow("compared value") << picture + u"--compare ghost_rise=0.5,2"_s
                                    << "ghost_rise=2: the value is a number from 0.05 to 1"_ba;
    const QString rewind = u"picture rewind --out a.png --size 8x8 --values sources/"_s;
    QTest::newRow("no values") << rewind + u"none"_s
                               << "cannot read values 'sources/none': No such file or directory"_ba;
    QTest::newRow("values of nothing")
            << rewind + u"text"_s << "values 'sources/text': there is no list of parameters"_ba;
    QTest::newRow("values of others")
            << rewind + u"others"_s
            << "values 'sources/others': preset 'rewind' has no parameter 'ghost_rise'"_ba;
    for (const char *values : {"missing", "above", "below", "nan"}) {
        QTest::addRow("values %s", values)
                << rewind + QLatin1StringView(values)
                << "values 'sources/"_ba + values + "': 'smear' has no number from 0.0 to 1.0";
    }
    for (const char *size : {"0x8", "8", "8x8x8", "16385x8", "8xa", "%2x"}) {
        QTest::addRow("size %s", size)
                << u"picture stock --out a.png --size "_s + QLatin1StringView(size)
                << "--size "_ba + size + ": a size is <width>x<height>, each from 1 to 16384";
    }
    QTest::newRow("direction") << picture + u"--direction up"_s
                               << "--direction up: a direction is forwards or backwards"_ba;
    for (const char *frames : {"0", "1.5", "1000001", "a"}) {
        QTest::addRow("frames %s", frames)
                << picture + u"--frames "_s + QLatin1StringView(frames)
                << "--frames "_ba + frames + ": the value is a whole number from 1 to 1000000";
    }
    QTest::newRow("headroom") << picture + u"--hdr 0.9"_s
                              << "--hdr 0.9: the value is a number from 1 to 100"_ba;
    const QByteArray passes = "0 gba-color, 1 gba-ghost, 2 gba-subpixel, 3 hdr-color-boost";
    for (const char *pass : {"4", "-1", "crt-drive"}) {
        QTest::addRow("pass %s", pass)
                << picture + u"--pass="_s + QLatin1StringView(pass)
                << "--pass "_ba + pass + ": there is no such pass; there are " + passes;
    }
    QTest::newRow("every frame to one file")
            << picture + u"--every"_s
            << "--every writes a file per frame: --out a.png needs a %d in its name"_ba;
    QTest::newRow("no PNG file") << u"picture stock --out a.jpg"_s
                                 << "--out a.jpg: the name ends in .png"_ba;
    // Before the source is opened.
    QTest::newRow("place of the picture")
            << u"picture stock --out none/a.png --source none.png"_s
            << "cannot write 'none/a.png': No such file or directory"_ba;
    QTest::newRow("place of the graph")
            << u"graph stock --size 8x8 --out none/a.svg --source none.png"_s
            << "cannot write 'none/a.svg': No such file or directory"_ba;
    QTest::newRow("two comparisons")
            << picture + u"--compare ghost_rise=0.5,1 --compare ghost_fall=0.5,1"_s
            << "--compare is given twice: it compares values of one parameter"_ba;
    QTest::newRow("wide comparison")
            << u"picture gba-lcd --out a.png --size 16384x1 --compare lcd_spill="_s
                    + QStringList(70, u"1"_s).join(u',')
            << "--compare: 70 pictures side by side are too wide for a PNG file"_ba;
    QTest::newRow("no source")
            << picture + u"--source none.png"_s
            << "cannot read source picture 'none.png': File not found; 'list' names the test pictures"_ba;
    QTest::newRow("neither svg nor dot")
            << u"graph stock --out a.png"_s << "--out a.png: the name ends in .svg or in .dot"_ba;
    QTest::newRow("thumbnails in a .dot file")
            << u"graph stock --thumbnails --out a.dot"_s
            << "--thumbnails: a .dot file holds no pictures; write an .svg file"_ba;
    QTest::newRow("graph of none")
            << u"graph --out a.svg"_s << "name one preset, or all of them by --all"_ba;
    QTest::newRow("graph of one and all")
            << u"graph --all stock --out a"_s << "name one preset, or all of them by --all"_ba;
    QTest::newRow("directory of graphs")
            << u"graph --all --out sources/text"_s << "cannot make the directory 'sources/text'"_ba;
    QTest::newRow("profile against none")
            << u"profile stock --against crt --size 8x8"_s << noPreset;
}

void TestRenderGraphPreview::errors()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, message);
    writeFile(u"sources/text"_s, "no picture");
    writeFile(u"sources/others"_s, "parameters = \"ghost_rise\"\nghost_rise = \"0.5\"\n");
    writeFile(u"sources/missing"_s, "parameters = \"smear\"\n");
    writeFile(u"sources/above"_s, "parameters = \"smear\"\nsmear = \"1.1\"\n");
    writeFile(u"sources/below"_s, "parameters = \"smear\"\nsmear = \"-0.1\"\n");
    writeFile(u"sources/nan"_s, "parameters = \"smear\"\nsmear = \"nan\"\n");
    const Outcome outcome = call(line);
    QCOMPARE(outcome.error.toUtf8(), message);
    QCOMPARE(outcome.out, "");
    QCOMPARE(files(), QStringList());
}

// --frames 2 draws another frame of an animated source.
void TestRenderGraphPreview::pictureFollowsItsOptions_data()
{
    QTest::addColumn<QString>("options");
    QTest::newRow("value") << u"--set lcd_spill=0"_s;
    QTest::newRow("two values") << u"--set ghost_rise=0.05 --set ghost_fall=0.05"_s;
    QTest::newRow("source") << u"--source card-240x160"_s;
    QTest::newRow("frames") << u"--frames 2"_s;
    QTest::newRow("headroom") << u"--hdr 2"_s;
}

void TestRenderGraphPreview::pictureFollowsItsOptions()
{
    QFETCH(QString, options);
    CALL(u"picture gba-lcd --out plain.png --size 48x32 --frames 3"_s);
    CALL(u"picture gba-lcd --out other.png --size 48x32 --frames 3 "_s + options);
    const QImage plain(u"plain.png"_s);
    const QImage other = QImage(u"other.png"_s).convertToFormat(plain.format());
    QCOMPARE(other.size(), QSize(48, 32));
    QVERIFY(other != plain);
}

void TestRenderGraphPreview::pictureOfRewoundTape()
{
    const QString picture =
            u"picture rewind --source card-160x144 --size 48x32 --frames 3 --out "_s;
    CALL(picture + u"a.png"_s);
    CALL(picture + u"forwards.png --direction forwards"_s);
    CALL(picture + u"backwards.png --direction backwards"_s);
    QVERIFY(readFile(u"forwards.png"_s) == readFile(u"a.png"_s));
    QVERIFY(readFile(u"backwards.png"_s) != readFile(u"a.png"_s));
}

// --set counts more than the file.
void TestRenderGraphPreview::pictureOfSavedValues()
{
    writeFile(u"mine.glslp"_s,
              "parameters = \"smear;wiggle\"\nsmear = \"0.1\"\nwiggle = \"0.5\"\n");
    const QString picture = u"picture rewind --size 48x32 --frames 1 --out "_s;
    CALL(picture + u"plain.png"_s);
    CALL(picture + u"read.png --values mine.glslp --set wiggle=9"_s);
    CALL(picture + u"set.png --set smear=0.1 --set wiggle=9"_s);
    QVERIFY(readFile(u"read.png"_s) == readFile(u"set.png"_s));
    QVERIFY(readFile(u"read.png"_s) != readFile(u"plain.png"_s));
    CALL(u"picture rewind --size 48x32 --frames 1 --out file.png --values mine.glslp"_s);
    QVERIFY(readFile(u"file.png"_s) != readFile(u"set.png"_s));
}

void TestRenderGraphPreview::pictureOfEveryFrame()
{
    CALL(u"picture gba-lcd --out a%d.png --every --frames 3 --size 48x32"_s);
    QCOMPARE(files(), QStringList({u"a0.png"_s, u"a1.png"_s, u"a2.png"_s}));
    CALL(u"picture gba-lcd --out last.png --frames 3 --size 48x32"_s);
    QVERIFY(readFile(u"a2.png"_s) == readFile(u"last.png"_s));
    QVERIFY(readFile(u"a1.png"_s) != readFile(u"last.png"_s));
    CALL(u"picture gba-lcd --out f%d.png --every --size 4x4"_s);
    QCOMPARE(QDir().entryList({u"f*.png"_s}), QStringList({u"f0.png"_s}));
}

void TestRenderGraphPreview::pictureOfEveryPass()
{
    CALL(u"picture gba-lcd --out a.png --pass all --frames 1 --size 48x32"_s);
    QCOMPARE(files(),
             QStringList({u"a-00-gba-color.png"_s, u"a-01-gba-ghost.png"_s,
                          u"a-02-gba-subpixel.png"_s, u"a-03-hdr-color-boost.png"_s}));
    QCOMPARE(QImage(u"a-00-gba-color.png"_s).size(), QSize(320, 240));
    QCOMPARE(QImage(u"a-03-hdr-color-boost.png"_s).size(), QSize(48, 32));
    for (const QString &pass : {u"2"_s, u"gba-subpixel"_s}) {
        CALL(u"picture gba-lcd --out one.png --frames 1 --size 48x32 --pass "_s + pass);
        QVERIFY(readFile(u"one.png"_s) == readFile(u"a-02-gba-subpixel.png"_s));
    }
    const QString ambiguous = call(u"picture crt-pvm --out b.png --pass crt-persistence"_s).error;
    QVERIFY2(ambiguous.startsWith(u"--pass crt-persistence: several passes have this name; take an "
                                  "index of 0 crt-linearize, "_s),
             qPrintable(ambiguous));
}

// Linear light: 65535 is the headroom.
void TestRenderGraphPreview::pictureKeepsTheShape_data()
{
    QTest::addColumn<QSize>("source");
    QTest::addColumn<QString>("options");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QByteArray>("printed");
    QTest::newRow("wide") << QSize(30, 10) << u""_s << QSize(1440, 480) << ""_ba;
    QTest::newRow("high") << QSize(10, 20) << u""_s << QSize(540, 1080) << ""_ba;
    QTest::newRow("line") << QSize(4000, 1) << u""_s << QSize(1440, 1) << ""_ba;
    QTest::newRow("given size")
            << QSize(32, 28) << u"--size 96x72"_s << QSize(96, 72)
            << "render-graph-preview: the picture is stretched from 8:7 to 4:3\n"_ba;
    QTest::newRow("told once")
            << QSize(32, 28) << u"--size 72x72 --compare wiggle=0,1"_s << QSize(152, 87)
            << "render-graph-preview: the picture is stretched from 8:7 to 1:1\n"_ba;
    QTest::newRow("given size of the shape")
            << QSize(32, 28) << u"--size 64x56"_s << QSize(64, 56) << ""_ba;
    QTest::newRow("rounded size") << QSize(32, 28) << u"--size 100x87"_s << QSize(100, 87) << ""_ba;
    QTest::newRow("rounded up") << QSize(32, 28) << u"--size 100x88"_s << QSize(100, 88) << ""_ba;
}

void TestRenderGraphPreview::pictureKeepsTheShape()
{
    QFETCH(QSize, source);
    QFETCH(QString, options);
    QFETCH(QSize, size);
    QFETCH(QByteArray, printed);
    QVERIFY(QImage(source, QImage::Format_RGB32).save(u"in.png"_s));
    const QByteArray err = captured(
            stderr, [&] { call(u"picture rewind --source in.png --out a.png "_s + options); });
    QCOMPARE(QImage(u"a.png"_s).size(), size);
    QCOMPARE(err, printed);
}

void TestRenderGraphPreview::pictureInHdr()
{
    QImage source(2, 1, QImage::Format_RGB32);
    source.fill(qRgb(255, 255, 255));
    source.setPixel(1, 0, qRgb(128, 128, 128));
    QVERIFY(source.save(u"in.png"_s));
    CALL(u"picture stock --source in.png --out out.png --size 2x1 --hdr 4"_s);
    const QImage image(u"out.png"_s);
    QCOMPARE(image.depth(), 64);
    QCOMPARE(image.text(u"Headroom"_s), u"4"_s);
    QCOMPARE(image.pixelColor(0, 0).rgba64().green(), quint16(16384));
    // 16384 * (128 / 255)^2.2, within a half float's rounding.
    const int grey = image.pixelColor(1, 0).rgba64().green();
    QVERIFY2(qAbs(grey - 3596) <= 8, QByteArray::number(grey).constData());
}

void TestRenderGraphPreview::pictureOfAComparison()
{
    CALL(u"picture gba-lcd --out all.png --compare lcd_spill=0,1 --frames 2 --size 96x64"_s);
    CALL(u"picture gba-lcd --out left.png --set lcd_spill=0 --frames 2 --size 96x64"_s);
    CALL(u"picture gba-lcd --out right.png --set lcd_spill=1 --frames 2 --size 96x64"_s);
    const QImage sheet(u"all.png"_s);
    QCOMPARE(sheet.size(), QSize(96 + 8 + 96, 7 + 8 + 64));
    QCOMPARE(sheet.copy(0, 15, 96, 64), QImage(u"left.png"_s));
    QCOMPARE(sheet.copy(104, 15, 96, 64), QImage(u"right.png"_s));
    // The first letter of both labels is an L; the values differ.
    QCOMPARE(sheet.pixel(4, 4), qRgb(255, 255, 255));
    QCOMPARE(sheet.pixel(104 + 4, 4), qRgb(255, 255, 255));
    QVERIFY(sheet.copy(0, 0, 96, 15) != sheet.copy(104, 0, 96, 15));
}

void TestRenderGraphPreview::graphOfOnePreset()
{
    CALL(u"graph stock --out a.dot"_s);
    QVERIFY(readFile(u"a.dot"_s).startsWith("digraph \"stock\" {\n"));
    QVERIFY(readFile(u"a.dot"_s)
                    .contains("<B>pass 0: stock</B></TD></TR><TR><TD>size of viewport · RGBA16F"));
    QVERIFY(readFile(u"a.dot"_s).contains("  pass0 -> pass1 "));
    CALL(u"graph gba-lcd --size 99x77 --frames 1 --set ghost_rise=0.5 --out b.dot"_s);
    const QByteArray drawn = readFile(u"b.dot"_s);
    QVERIFY(drawn.contains("<B>pass 1: gba-ghost</B></TD></TR><TR><TD>320 × 240 · RGBA16F"));
    QVERIFY(drawn.contains("<B>pass 2: gba-subpixel</B></TD></TR><TR><TD>99 × 77 · RGBA16F"));
    QVERIFY(drawn.contains("ghost_rise = 0.5<"));
    QVERIFY(drawn.contains("<B>source</B></TD></TR><TR><TD>320 × 240<"));
}

void TestRenderGraphPreview::graphWithThumbnails()
{
    CALL(u"graph gba-lcd --thumbnails --size 48x32 --frames 1 --out a.svg"_s);
    const QByteArray svg = readFile(u"a.svg"_s);
    QCOMPARE(svg.count("data:image/png;base64,"), 5); // the source and four passes
    QVERIFY(svg.contains(">48 × 32 · RGBA16F<"));
    QVERIFY(!svg.contains("pass0.png"));
}

void TestRenderGraphPreview::graphOfAllPresets()
{
    CALL(u"graph --all --out graphs/all"_s);
    const QStringList graphs = QDir(u"graphs/all"_s).entryList(QDir::Files, QDir::Name);
    QStringList expected =
            declaredPresetNames().replaceInStrings(QRegularExpression(u"$"_s), u".svg"_s);
    expected.sort();
    QCOMPARE(graphs, expected);
    for (const QString &graph : graphs) {
        const QByteArray svg = readFile(u"graphs/all/"_s + graph);
        QVERIFY2(svg.endsWith("</svg>\n"), qPrintable(graph));
        QVERIFY2(svg.contains(">final</text>"), qPrintable(graph));
        static const QRegularExpression kSize(u"<svg width=\"(\\d+)pt\" height=\"(\\d+)pt\""_s);
        const QRegularExpressionMatch size = kSize.match(QString::fromUtf8(svg));
        QVERIFY2(size.captured(1).toInt() > size.captured(2).toInt(),
                 qPrintable(graph)); // landscape
    }
}

// The preset has passes of all kinds.
void TestRenderGraphPreview::profileAsJson()
{
    QVERIFY(QImage(4, 3, QImage::Format_RGB32).save(u"in.png"_s));
    const Outcome json = call(u"profile crt-bw --size 64x48 --source in.png --frames 4 "
                              "--set halation_strength=0 --json"_s);
    QCOMPARE(json.error, QString());
    const QJsonObject report = QJsonDocument::fromJson(json.out).object();
    QVERIFY(!report[u"device"_s].toString().isEmpty());
    QCOMPARE(report[u"frames"_s].toInt(), 4);
    QCOMPARE(report[u"width"_s].toInt(), 64);
    QCOMPARE(report[u"height"_s].toInt(), 48);
    QVERIFY(!report.contains(u"ratio"_s));
    QCOMPARE(report[u"profiles"_s].toArray().size(), 1);
    const QJsonObject profile = report[u"profiles"_s][0].toObject();
    QCOMPARE(profile[u"preset"_s].toString(), u"crt-bw"_s);
    QVERIFY(profile[u"memoryBytes"_s].toInteger() > 64LL * 48 * 8 * 2);
    QVERIFY(profile[u"frameTime"_s][u"medianMs"_s].toDouble()
            >= profile[u"deviceTime"_s][u"medianMs"_s].toDouble());

    const QJsonArray passes = profile[u"passes"_s].toArray();
    QCOMPARE(passes.size(), 19);
    double shares = 0.0;
    for (const auto &pass : passes) {
        const bool isDrawn = pass[u"kind"_s].toString() == "drawn"_L1;
        QCOMPARE(pass[u"medianMs"_s].toDouble() > 0.0, isDrawn);
        QVERIFY(pass[u"p95Ms"_s].toDouble() >= pass[u"medianMs"_s].toDouble());
        QCOMPARE(pass[u"bytesWritten"_s].toInt() > 0, isDrawn);
        shares += pass[u"share"_s].toDouble();
    }
    QVERIFY(qAbs(shares - 1.0) < 1e-9);
    QCOMPARE(passes[5][u"component"_s].toString(), u"crt-drive"_s);
    QCOMPARE(passes[5][u"index"_s].toInt(), 5);
    QCOMPARE(passes[8][u"kind"_s].toString(), u"drawn"_s);
    QCOMPARE(passes[8][u"width"_s].toInt(), 64);
    QCOMPARE(passes[8][u"height"_s].toInt(), 48);
    QCOMPARE(passes[8][u"format"_s].toString(), u"RGBA16F"_s);
    QCOMPARE(passes[8][u"bytesWritten"_s].toInt(), 64 * 48 * 8);
    QCOMPARE(passes[13][u"kind"_s].toString(), u"black"_s);
    QCOMPARE(passes[16][u"kind"_s].toString(), u"unchanged"_s); // drawn in the first frame only
}

void TestRenderGraphPreview::profileComparesTwo_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("preset");
    QTest::addColumn<QString>("shadersDir");
    QTest::newRow("presets") << u"--against rewind"_s << u"rewind"_s << kShadersDir;
    QTest::newRow("shaders") << u"--against-shaders-dir shaders"_s << u"stock"_s << u"shaders"_s;
}

void TestRenderGraphPreview::profileComparesTwo()
{
    QFETCH(QString, options);
    QFETCH(QString, preset);
    QFETCH(QString, shadersDir);
    copyExampleShaders();
    const QString command = u"profile stock --size 8x8 --frames 1 "_s + options;
    const QByteArray json = call(command + u" --json"_s).out;
    const QJsonObject report = QJsonDocument::fromJson(json).object();
    QVERIFY(report[u"ratio"_s].toDouble() > 0.0);
    const QJsonArray profiles = report[u"profiles"_s].toArray();
    QCOMPARE(profiles.size(), 2);
    QCOMPARE(profiles[0][u"preset"_s].toString(), u"stock"_s);
    QCOMPARE(profiles[0][u"shadersDir"_s].toString(), kShadersDir);
    QCOMPARE(profiles[1][u"preset"_s].toString(), preset);
    QCOMPARE(profiles[1][u"shadersDir"_s].toString(), shadersDir);
    const QByteArray table = call(command).out;
    QVERIFY(table.contains("\n" + preset.toUtf8() + ", " + shadersDir.toUtf8() + "\n"));
    QVERIFY(table.contains("\nA frame of the second takes "));
}

void TestRenderGraphPreview::profileAsTable()
{
    const Outcome one = call(u"profile stock --size 64x48 --frames 2"_s);
    QCOMPARE(one.error, QString());
    const QByteArrayList lines = one.out.split('\n');
    QVERIFY(lines.at(0).endsWith(", 64x48, 2 frames"));
    QCOMPARE(lines.at(2), "stock, " + kShadersDir.toUtf8());
    QVERIFY2(
            lines.at(4).startsWith(
                    "  0  stock                      drawn         64x48 RGBA16F           24576 "),
            lines.at(4).constData());
    QCOMPARE(lines.at(4).size(), lines.at(3).size());
    // The sums are below the columns of the passes.
    QCOMPARE(lines.at(6).size(), lines.at(3).indexOf("p95 ms") + 6);
    QVERIFY(lines.at(6).startsWith("     all passes "));
    QVERIFY(lines.at(7).startsWith("     the frame, by the clock "));
    QVERIFY(lines.at(8).startsWith("     memory held: "));
    QVERIFY(!one.out.contains("A frame of the second"));
}

QTEST_GUILESS_MAIN(TestRenderGraphPreview)
#include "tst_RenderGraphPreview.moc"
