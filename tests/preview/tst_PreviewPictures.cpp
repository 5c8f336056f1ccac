#include <PictureFile.h>
#include <PixelText.h>
#include <TestPictures.h>

#include "DrawingSupport.h"
#include "TestSupport.h"

#include <QColorSpace>
#include <QSet>

#include <algorithm>
#include <csignal>
#include <limits>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

// Reading, converting and writing pictures.

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

QImage onePixel(float red, float green, float blue)
{
    return FloatImage({1, 1}, {red, green, blue, 0.5F}).toImage();
}

} // namespace

class TestPreviewPictures : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void textIsDrawnFromTheFace();
    void testPictures_data();
    void testPictures();
    void testPictureNamesAreThese();
    void storedFramesRepeat();
    void noOtherName();
    void shownPixels_data();
    void shownPixels();
    void sourceFiles_data();
    void sourceFiles();
    void usualGammaIsSrgb();
    void movingSources_data();
    void movingSources();
    void unreadableSources_data();
    void unreadableSources();
    void standardRangeIsRounded();
    void highRangeIsLinear();
    void savedPictureReadsBack();
    void savingLeavesNoHalfFile();
    void otherFilesAreNotReplaced_data();
    void otherFilesAreNotReplaced();
    void fullDiskIsReported();
    void largePictureIsNoPng();
};

void TestPreviewPictures::textIsDrawnFromTheFace()
{
    QImage image(24, 7, QImage::Format_RGB32);
    image.fill(Qt::black);
    drawPixelText(image, {0, 0}, u"aZ 7"_s, qRgb(255, 255, 255));
    QByteArray rows;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            rows += image.pixel(x, y) == qRgb(255, 255, 255) ? '#' : '.';
        rows += '\n';
    }
    QCOMPARE(rows,
             ".###..#####.......#####.\n"
             "#...#.....#...........#.\n"
             "#...#....#...........#..\n"
             "#####...#...........#...\n"
             "#...#..#...........#....\n"
             "#...#.#............#....\n"
             "#...#.#####........#....\n");
    QCOMPARE(pixelTextWidth(u"aZ 7"_s, 2), 48);
    drawPixelText(image, {20, 5}, u"WWW"_s, qRgb(255, 0, 0), 3); // partly outside the picture
    QCOMPARE(image.pixel(20, 5), qRgb(255, 0, 0));
}

void TestPreviewPictures::testPictureNamesAreThese()
{
    QCOMPARE(testPictureNames(),
             QStringList({u"scene-320x240"_s, u"scene-256x224"_s, u"scene-160x144"_s,
                          u"scene-240x160"_s, u"scene-640x480"_s, u"card-160x144"_s,
                          u"card-240x160"_s, u"card-256x224"_s, u"card-320x240"_s,
                          u"card-640x480"_s, u"greys-160x144"_s, u"portrait-320x240"_s,
                          u"portrait-640x480"_s, u"sprites-160x144"_s, u"sprites-240x160"_s,
                          u"text-640x480"_s, u"title-256x224"_s, u"title-320x240"_s}));
}

void TestPreviewPictures::testPictures_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("moves");
    QTest::addColumn<int>("colors"); // the least number
    static constexpr struct
    {
        QLatin1StringView name;
        bool moves;
        int colors;
    } kKinds[] = {
            {"scene"_L1, true, 20},       {"card"_L1, false, 20},  {"greys"_L1, true, 4},
            {"text"_L1, false, 14},       {"title"_L1, false, 40}, {"sprites"_L1, true, 30},
            {"portrait"_L1, false, 2000},
    };
    for (const QString &name : testPictureNames()) {
        const QStringList sides = name.section(u'-', 1).split(u'x');
        const auto *kind = std::ranges::find_if(
                kKinds, [&](const auto &of) { return name.startsWith(of.name); });
        QVERIFY2(kind != std::end(kKinds), qPrintable(name));
        QTest::newRow(qPrintable(name))
                << QSize(sides.at(0).toInt(), sides.at(1).toInt()) << kind->moves << kind->colors;
    }
}

void TestPreviewPictures::testPictures()
{
    QFETCH(QSize, size);
    QFETCH(bool, moves);
    QFETCH(int, colors);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    const QImage image = testPicture(name);
    QCOMPARE(image.size(), size);
    QCOMPARE(testPicture(name, 1) != image, moves);
    QSet<QRgb> found;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            found.insert(image.pixel(x, y));
    }
    QVERIFY2(found.size() >= colors, QByteArray::number(found.size()).constData());
}

void TestPreviewPictures::storedFramesRepeat()
{
    const QString name = u"sprites-160x144"_s;
    const QImage first = testPicture(name);
    QCOMPARE(testPicture(name, 32), first);
    QVERIFY(testPicture(name, 31) != first);
    // The row of hearts, which does not move.
    const QRect still(0, 0, 32, 12);
    QCOMPARE(testPicture(name, 31).copy(still), first.copy(still));
}

void TestPreviewPictures::noOtherName()
{
    QVERIFY(testPicture(u"scene-320x241"_s).isNull());
    QVERIFY(testPicture(QString()).isNull());
    QVERIFY(testPicture(u"title-320x240.png"_s).isNull());
}

void TestPreviewPictures::shownPixels_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QPoint>("at");
    QTest::addColumn<QRgb>("color"); // in frame 20
    QTest::newRow("card's second bar") << u"card-320x240"_s << QPoint(60, 20) << qRgb(255, 255, 0);
    QTest::newRow("card's frame") << u"card-320x240"_s << QPoint(160, 0) << qRgb(255, 255, 255);
    QTest::newRow("trunk") << u"scene-160x144"_s << QPoint(12, 120) << qRgb(116, 68, 44);
    QTest::newRow("boat") << u"scene-160x144"_s << QPoint(0, 89) << qRgb(116, 68, 44);
    QTest::newRow("bird, wings down") << u"scene-160x144"_s << QPoint(145, 24) << qRgb(24, 20, 37);
    QTest::newRow("bird, wings up") << u"scene-160x144"_s << QPoint(109, 33) << qRgb(24, 20, 37);
}

void TestPreviewPictures::shownPixels()
{
    QFETCH(QString, name);
    QFETCH(QPoint, at);
    QFETCH(QRgb, color);
    QCOMPARE(testPicture(name, 20).pixel(at), color);
}

void TestPreviewPictures::sourceFiles_data()
{
    QTest::addColumn<QRgb>("written");
    QTest::addColumn<QRgb>("read");
    QTest::addColumn<bool>("isLinear");
    QTest::newRow("opaque") << qRgba(10, 128, 255, 255) << qRgb(10, 128, 255) << false;
    QTest::newRow("half") << qRgba(100, 200, 0, 128) << qRgb(50, 100, 0) << false;
    QTest::newRow("transparent") << qRgba(100, 200, 0, 0) << qRgb(0, 0, 0) << false;
    QTest::newRow("linear light") << qRgba(55, 55, 55, 255) << qRgb(128, 128, 128) << true;
}

void TestPreviewPictures::sourceFiles()
{
    QFETCH(QRgb, written);
    QFETCH(QRgb, read);
    QFETCH(bool, isLinear);
    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(written);
    if (isLinear)
        image.setColorSpace(QColorSpace::SRgbLinear);
    QVERIFY(image.save(u"in.png"_s));

    QString error;
    SourcePicture source;
    QVERIFY2(SourcePicture::open(u"in.png"_s, source, error), qPrintable(error));
    QVERIFY(!source.isAnimated());
    QCOMPARE(source.size(), QSize(3, 2));
    QCOMPARE(source.frame(5).size(), QSize(3, 2));
    QCOMPARE(source.frame(5).pixel(2, 1), read);
    QCOMPARE(FloatImage(floatPicture(source.frame(0))).at(0, 0),
             Pixel({float(qRed(read)) / 255.0F, float(qGreen(read)) / 255.0F,
                    float(qBlue(read)) / 255.0F, 1.0F}));
}

void TestPreviewPictures::usualGammaIsSrgb()
{
    QImage image(1, 1, QImage::Format_RGB32);
    image.fill(qRgb(10, 20, 30));
    QVERIFY(image.save(u"in.png"_s));
    // A gAMA chunk of 0.45455, after the header.
    const QByteArray png = readFile(u"in.png"_s);
    const QByteArray gamma = QByteArray::fromHex("00000004"
                                                 "67414d41"
                                                 "0000b18f"
                                                 "0bfc6105");
    writeFile(u"in.png"_s, png.first(33) + gamma + png.sliced(33));
    QVERIFY(QImage(u"in.png"_s).colorSpace().isValid());
    QString error;
    SourcePicture source;
    QVERIFY2(SourcePicture::open(u"in.png"_s, source, error), qPrintable(error));
    QCOMPARE(source.frame(0).pixel(0, 0), qRgb(10, 20, 30));
}

void TestPreviewPictures::movingSources_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("frames"); // their colours
    // 50 ms and 100 ms.
    QTest::newRow("animated file") << u"moving.gif"_s << "rrrbbbbbbrrrb"_ba;
    QTest::newRow("leading zeros, up to a gap") << u"s-%02d.png"_s << "rbrbr"_ba;
    QTest::newRow("from the first, in their order") << u"t/%d.png"_s << "gbgb"_ba;
    QTest::newRow("file of that name") << u"u%d.png"_s << "gg"_ba;
}

void TestPreviewPictures::movingSources()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, frames);
    writeFile(u"moving.gif"_s,
              QByteArray::fromHex("474946383961 02000100 800000 ff0000 0000ff"
                                  "21f904 04 0500 00 00 2c 00000000 02000100 00 02 02 040a 00"
                                  "21f904 04 0a00 00 00 2c 00000000 02000100 00 02 02 4c0a 00"
                                  "3b"));
    QVERIFY(QDir().mkdir(u"t"_s));
    const std::pair<QString, QColor> files[] = {
            {u"s-01.png"_s, Qt::red},  {u"s-02.png"_s, Qt::blue}, {u"s-04.png"_s, Qt::green},
            {u"t/9.png"_s, Qt::green}, {u"t/10.png"_s, Qt::blue}, {u"u%d.png"_s, Qt::green},
            {u"u0.png"_s, Qt::blue}};
    for (const auto &[name, color] : files) {
        QImage image(2, 1, QImage::Format_RGB32);
        image.fill(color);
        QVERIFY(image.save(name));
    }
    QString error;
    SourcePicture source;
    QVERIFY2(SourcePicture::open(path, source, error), qPrintable(error));
    QByteArray colors;
    for (int i = 0; i < frames.size(); ++i) {
        const QColor color = source.frame(i).pixelColor(1, 0);
        colors += color.red() == 255 ? 'r' : color.green() == 255 ? 'g' : 'b';
    }
    QCOMPARE(colors, frames);
    QCOMPARE(source.isAnimated(), frames.count(frames.at(0)) < frames.size());
    QCOMPARE(source.size(), QSize(2, 1));
}

void TestPreviewPictures::unreadableSources_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("none.png")
            << u"cannot read source picture 'none.png': File not found; 'list' names the test pictures"_s;
    QTest::newRow("text.png")
            << u"cannot read source picture 'text.png': Unsupported image format; 'list' names the test pictures"_s;
    QTest::newRow("cut.png")
            << u"cannot read source picture 'cut.png': Unable to read image data; 'list' names the test pictures"_s;
    QTest::newRow("none-%d.png")
            << u"cannot read source picture 'none-%d.png': File not found; 'list' names the test pictures"_s;
    QTest::newRow("s%d.png")
            << u"cannot read source picture 's1.png': Unsupported image format; 'list' names the test pictures"_s;
    QTest::newRow("huge.png")
            << u"source picture 'huge.png' is 4097x1, and the largest is 4096x4096: make it smaller"_s;
    QTest::newRow("p%2%3%4.png")
            << u"source picture 'p%2%3%4.png' is 4097x1, and the largest is 4096x4096: make it smaller"_s;
}

void TestPreviewPictures::unreadableSources()
{
    QFETCH(QString, message);
    writeFile(u"text.png"_s, "no picture");
    writeFile(u"s1.png"_s, "no picture");
    QVERIFY(QImage(1, 1, QImage::Format_RGB32).save(u"s0.png"_s));
    for (const QString &name : {u"huge.png"_s, u"p%2%3%4.png"_s})
        QVERIFY(QImage(4097, 1, QImage::Format_RGB32).save(name));
    QVERIFY(testPicture(u"card-160x144"_s).save(u"cut.png"_s));
    QVERIFY(QFile::resize(u"cut.png"_s, 60));
    QString error;
    SourcePicture source;
    bool isOpen = false;
    const QByteArray printed = captured(stderr, [&] {
        isOpen = SourcePicture::open(QString::fromLatin1(QTest::currentDataTag()), source, error);
    });
    QVERIFY(!isOpen);
    QCOMPARE(error, message);
    QCOMPARE(printed, "");
    QVERIFY(source.isNull());
}

void TestPreviewPictures::standardRangeIsRounded()
{
    const QImage image = displayImage(onePixel(0.5F, 1.5F, -1.0F));
    QCOMPARE(image.pixel(0, 0), qRgb(128, 255, 0));
    QCOMPARE(image.colorSpace(), QColorSpace(QColorSpace::SRgb));
    QCOMPARE(displayImage(onePixel(kNan, 1.0F, 0.49F / 255.0F)).pixel(0, 0), qRgb(0, 255, 0));
}

void TestPreviewPictures::highRangeIsLinear()
{
    const QImage image = displayImage(onePixel(1.0F, 4.0F, 5.0F), 4.0F);
    const auto *pixel = reinterpret_cast<const QRgba64 *>(image.constScanLine(0));
    QCOMPARE(pixel->red(), quint16(16384));
    QCOMPARE(pixel->green(), quint16(65535));
    QCOMPARE(pixel->blue(), quint16(65535));
    QCOMPARE(image.colorSpace(), QColorSpace(QColorSpace::SRgbLinear));
    QCOMPARE(image.text(u"Headroom"_s), u"4"_s);
}

void TestPreviewPictures::savedPictureReadsBack()
{
    QString error;
    QVERIFY(savePng(displayImage(onePixel(0.25F, 0.5F, 0.75F)), u"a.png"_s, error));
    QVERIFY(savePng(displayImage(onePixel(0.25F, 0.5F, 2.0F), 2.0F), u"b.png"_s, error));
    QCOMPARE(QImage(u"a.png"_s).pixel(0, 0), qRgb(64, 128, 191));
    QCOMPARE(QImage(u"a.png"_s).depth(), 32);
    const QImage wide(u"b.png"_s);
    QCOMPARE(wide.depth(), 64);
    QCOMPARE(wide.pixelColor(0, 0).rgba64(), qRgba64(8192, 16384, 65535, 65535));
    QCOMPARE(wide.text(u"Headroom"_s), u"2"_s);
}

void TestPreviewPictures::savingLeavesNoHalfFile()
{
    writeFile(u"kept"_s, "before");
    QString error;
    QVERIFY(!saveFile("after", u"kept/below"_s, error));
    QCOMPARE(error, u"cannot write 'kept/below': Not a directory"_s);
    QVERIFY(QDir().mkdir(u"taken"_s));
    QVERIFY(!saveFile("after", u"taken"_s, error));
    QCOMPARE(error, u"cannot write 'taken': Filename refers to a directory"_s);
    QCOMPARE(readFile(u"kept"_s), "before");
    QVERIFY(saveFile("after", u"kept"_s, error));
    QCOMPARE(readFile(u"kept"_s), "after");
    QCOMPARE(QDir().entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList({u"kept"_s, u"taken"_s}));
}

void TestPreviewPictures::otherFilesAreNotReplaced_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("pipe") << u"pipe"_s;
    QTest::newRow("link to a pipe") << u"link"_s;
    QTest::newRow("device") << u"/dev/null"_s;
}

void TestPreviewPictures::otherFilesAreNotReplaced()
{
    QFETCH(QString, path);
    QCOMPARE(::mkfifo("pipe", 0600), 0);
    QVERIFY(QFile::link(u"pipe"_s, u"link"_s));
    const QString message = u"cannot write '"_s + path + u"': it is no regular file"_s;
    QString error;
    QVERIFY(!canSaveFile(path, error));
    QCOMPARE(error, message);
    error.clear();
    QVERIFY(!saveFile("after", path, error));
    QCOMPARE(error, message);
    QVERIFY(!QFileInfo(path).isFile());
}

// The first part of the content still fits.
void TestPreviewPictures::fullDiskIsReported()
{
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limit = {1000, before.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QString error;
    const bool isSaved = saveFile(QByteArray(1500, 'a'), u"a"_s, error);
    std::signal(SIGXFSZ, handler);
    ::setrlimit(RLIMIT_FSIZE, &before);
    QVERIFY(!isSaved);
    QCOMPARE(error, u"cannot write 'a': File too large"_s);
    QCOMPARE(QDir().entryList(QDir::Files), QStringList());
}

void TestPreviewPictures::largePictureIsNoPng()
{
    QString error;
    const QImage large(kLargestPngSide + 1, 1, QImage::Format_RGB32);
    QVERIFY(!savePng(large, u"a.png"_s, error));
    QCOMPARE(
            error,
            u"a picture of 1000001x1 is too large for a PNG file: its sides are at most 1000000"_s);
    QVERIFY(!QFile::exists(u"a.png"_s));
}

QTEST_GUILESS_MAIN(TestPreviewPictures)
#include "tst_PreviewPictures.moc"
