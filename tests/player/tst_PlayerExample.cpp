#include "TestSupport.h"

#include <PlayerWindow.h>

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTimer>

VULKAN_HPP_DEFAULT_DISPATCH_LOADER_DYNAMIC_STORAGE

// The example player, on a display and a software device: its window, and the real binary.

namespace {

// The software device draws the same pixels everywhere.
QByteArray softwareDevice()
{
    QVulkanInstance instance;
    if (!instance.create())
        qFatal("no Vulkan");
    QVulkanWindow window;
    window.setVulkanInstance(&instance);
    const QList<VkPhysicalDeviceProperties> devices = window.availablePhysicalDevices();
    for (int index = 0; index < devices.size(); ++index) {
        if (devices.at(index).deviceType == VK_PHYSICAL_DEVICE_TYPE_CPU)
            return QByteArray::number(index);
    }
    qFatal("no software device");
}

QImage sourcePicture(QSize size)
{
    QImage picture(size, QImage::Format_RGBX8888);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            picture.setPixel(
                    x, y,
                    qRgb(x * 255 / size.width(), y * 255 / size.height(), (x ^ y) * 16 & 255));
    }
    return picture;
}

// The greatest difference of a channel; 256 if the sizes differ.
int difference(const QImage &image, const QImage &other)
{
    if (image.size() != other.size())
        return 256;
    int greatest = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb a = image.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            greatest = std::max({greatest, std::abs(qRed(a) - qRed(b)),
                                 std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
        }
    }
    return greatest;
}

// A window that is shown.
struct Shown
{
    explicit Shown(const Player &settings) : player(settings), window(player)
    {
        instance.setApiVersion({1, 1});
        if (!instance.create())
            qFatal("no Vulkan");
        window.setVulkanInstance(&instance);
        window.resize(64, 48);
        window.show();
    }

    Player player;
    QVulkanInstance instance;
    PlayerWindow window;
};

Player smallPlayer(const QString &preset)
{
    Player player;
    player.preset = preset;
    player.picture = sourcePicture({32, 24});
    return player;
}

} // namespace

class TestPlayerExample : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void letterbox_data();
    void letterbox();
    void errors_data();
    void errors();
    void screenshotIsThePreviewsPicture_data();
    void screenshotIsThePreviewsPicture();
    void screenshotOfTheMovingPicture();
    void pictureKeepsItsShape();
    void keys();
    void switchingAndResizingIsClean();
    void closingIsClean_data();
    void closingIsClean();

private:
    QByteArray messages() const
    {
        return readFile(m_directory.filePath(u"messages"_s));
    }

    QTemporaryDir m_directory;
};

void TestPlayerExample::initTestCase()
{
    qputenv("QT_VK_PHYSICAL_DEVICE_INDEX", softwareDevice());
    enableValidation(QStringLiteral(VALIDATION_LAYER), m_directory.path());
}

void TestPlayerExample::letterbox_data()
{
    QTest::addColumn<QSize>("source");
    QTest::addColumn<QSize>("window");
    QTest::addColumn<double>("pixelAspect");
    QTest::addColumn<bool>("isIntegerScaled");
    QTest::addColumn<QRect>("shown");
    QTest::newRow("same shape") << QSize(32, 24) << QSize(96, 72) << 1.0 << false
                                << QRect(0, 0, 96, 72);
    QTest::newRow("wide window") << QSize(32, 24) << QSize(100, 72) << 1.0 << false
                                 << QRect(2, 0, 96, 72);
    QTest::newRow("high window") << QSize(32, 24) << QSize(96, 80) << 1.0 << false
                                 << QRect(0, 4, 96, 72);
    QTest::newRow("fraction") << QSize(32, 24) << QSize(80, 80) << 1.0 << false
                              << QRect(0, 10, 80, 60);
    QTest::newRow("whole lines") << QSize(32, 24) << QSize(80, 80) << 1.0 << true
                                 << QRect(8, 16, 64, 48);
    QTest::newRow("whole lines in a small window")
            << QSize(32, 24) << QSize(16, 80) << 1.0 << true << QRect(0, 34, 16, 12);
    QTest::newRow("wide pixels") << QSize(56, 48) << QSize(128, 96) << 8.0 / 7.0 << false
                                 << QRect(0, 0, 128, 96);
    QTest::newRow("narrow pixels")
            << QSize(64, 24) << QSize(96, 72) << 0.5 << false << QRect(0, 0, 96, 72);
    QTest::newRow("whole lines of wide pixels")
            << QSize(56, 48) << QSize(200, 100) << 8.0 / 7.0 << true << QRect(36, 2, 128, 96);
    QTest::newRow("one pixel") << QSize(400, 1) << QSize(1, 1) << 1.0 << false << QRect(0, 0, 1, 1);
}

void TestPlayerExample::letterbox()
{
    QFETCH(QSize, source);
    QFETCH(QSize, window);
    Player player;
    player.pixelAspect =
            *static_cast<const double *>(QTest::qData("pixelAspect", QMetaType::Double));
    player.isIntegerScaled =
            *static_cast<const bool *>(QTest::qData("isIntegerScaled", QMetaType::Bool));
    QTEST(player.letterbox(source, window), "shown");
}

void TestPlayerExample::errors_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("environment");
    QTest::addColumn<QByteArray>("message");
    const QString usual;
    QTest::newRow("unknown option") << u"--shape 3"_s << usual << "Unknown option 'shape'."_ba;
    QTest::newRow("unknown preset")
            << u"crt"_s << usual
            << "there is no preset 'crt'; there are crt-pvm, crt-bvm, crt-arcade, crt-pc, crt-bw, "
               "crt-consumer, gba-lcd, gameboy-lcd, dmg-lcd, no-pixels, rewind, stock"_ba;
    QTest::newRow("no picture") << u"stock none.png"_s << usual
                                << "'none.png' is no picture of at most 4096 pixels either way"_ba;
    QTest::newRow("large picture")
            << u"stock large.png"_s << usual
            << "'large.png' is no picture of at most 4096 pixels either way"_ba;
    QTest::newRow("three arguments") << u"stock a.png b.png"_s << usual
                                     << "there are more arguments than a preset and a picture"_ba;
    QTest::newRow("size")
            << u"--size 960"_s << usual
            << "--size 960: the value is two numbers from 1 to 4096 with a 'x' between"_ba;
    QTest::newRow("no width")
            << u"--size 0x720"_s << usual
            << "--size 0x720: the value is two numbers from 1 to 4096 with a 'x' between"_ba;
    QTest::newRow("height")
            << u"--size 960x4097"_s << usual
            << "--size 960x4097: the value is two numbers from 1 to 4096 with a 'x' between"_ba;
    QTest::newRow("aspect")
            << u"--pixel-aspect 1.2"_s << usual
            << "--pixel-aspect 1.2: the value is two numbers from 1 to 4096 with a ':' between"_ba;
    QTest::newRow("frames") << u"--frames 0"_s << usual
                            << "--frames 0: the value is a whole number from 1"_ba;
    QTest::newRow("no place for the screenshot") << u"--size 8x8 --screenshot none/a.png stock"_s
                                                 << usual << "cannot write 'none/a.png'"_ba;
    QTest::newRow("no display") << QString() << u"DISPLAY=:99999"_s
                                << "there is no display to open a window on"_ba;
    QTest::newRow("display without Vulkan") << QString() << u"QT_QPA_PLATFORM=offscreen"_s
                                            << "there is no Vulkan driver for this display"_ba;
    QTest::newRow("no driver") << QString() << u"VK_DRIVER_FILES=none"_s
                               << "there is no Vulkan driver for this display"_ba;
}

void TestPlayerExample::errors()
{
    QFETCH(QString, line);
    QFETCH(QString, environment);
    QFETCH(QByteArray, message);
    QVERIFY(sourcePicture({4097, 1}).save(u"large.png"_s));
    const Run result = runProgram(
            QStringLiteral(PLAYER), line.split(u' ', Qt::SkipEmptyParts), [&](QProcess &process) {
                QStringList variables = QProcess::systemEnvironment() + QStringList{environment};
                variables.replaceInStrings(u"VK_DRIVER_FILES=none"_s, u"VK_ICD_FILENAMES=none"_s);
                process.setEnvironment(variables);
            });
    QCOMPARE(result.err, "player: " + message + '\n');
    QCOMPARE(result.out, "");
    QCOMPARE(result.exitStatus, 1);
}

void TestPlayerExample::screenshotIsThePreviewsPicture_data()
{
    QTest::addColumn<QString>("preset");
    for (const QString &name : declaredPresetNames())
        QTest::newRow(qPrintable(name)) << name;
}

void TestPlayerExample::screenshotIsThePreviewsPicture()
{
    QFETCH(QString, preset);
    QVERIFY(sourcePicture({64, 48}).save(u"source.png"_s));
    const Run player = runProgram(QStringLiteral(PLAYER),
                                  {u"--size"_s, u"128x96"_s, u"--frames"_s, u"4"_s,
                                   u"--screenshot"_s, u"player.png"_s, preset, u"source.png"_s});
    QCOMPARE(player.err, "");
    QCOMPARE(player.exitStatus, 0);
    const Run preview = runProgram(QStringLiteral(RENDER_GRAPH_PREVIEW),
                                   {u"picture"_s, u"--size"_s, u"128x96"_s, u"--frames"_s, u"4"_s,
                                    u"--source"_s, u"source.png"_s, u"--device"_s,
                                    qEnvironmentVariable("QT_VK_PHYSICAL_DEVICE_INDEX"), u"--out"_s,
                                    u"preview.png"_s, preset});
    QCOMPARE(preview.err, "");
    const QImage picture(u"preview.png"_s);
    QCOMPARE(picture.size(), QSize(128, 96));
    const int found = difference(QImage(u"player.png"_s), picture);
    QVERIFY2(found <= 2, qPrintable(QString::number(found)));
    QCOMPARE(messages(), "");
}

// The third frame shows the source of frame 2.
void TestPlayerExample::screenshotOfTheMovingPicture()
{
    const Run result = runProgram(QStringLiteral(PLAYER),
                                  {u"--size"_s, u"256x224"_s, u"--frames"_s, u"3"_s,
                                   u"--screenshot"_s, u"moving.png"_s, u"stock"_s});
    QCOMPARE(result.err, "");
    const QImage screenshot(u"moving.png"_s);
    QVERIFY(difference(screenshot, Player().sourcePicture(2)) <= 1);
    QVERIFY(difference(screenshot, Player().sourcePicture(1)) > 1);
}

void TestPlayerExample::pictureKeepsItsShape()
{
    QImage white(32, 24, QImage::Format_RGB32);
    white.fill(Qt::white);
    QVERIFY(white.save(u"white.png"_s));
    const Run result = runProgram(QStringLiteral(PLAYER),
                                  {u"--size"_s, u"110x60"_s, u"--pixel-aspect"_s, u"2:1"_s,
                                   u"--integer-scaling"_s, u"--screenshot"_s, u"a.png"_s,
                                   u"stock"_s, u"white.png"_s});
    QCOMPARE(result.err, "");
    QImage expected(110, 60, QImage::Format_RGB32);
    expected.fill(Qt::black);
    for (int y = 18; y < 42; ++y) {
        for (int x = 23; x < 87; ++x)
            expected.setPixel(x, y, qRgb(255, 255, 255));
    }
    QVERIFY(difference(QImage(u"a.png"_s), expected) <= 1);
}

void TestPlayerExample::keys()
{
    Shown shown(smallPlayer(u"stock"_s));
    PlayerWindow &window = shown.window;
    Player &player = shown.player;
    QTRY_VERIFY(player.drawnFrames > 2);
    QCOMPARE(window.title(), u"stock"_s);
    QTest::keyClick(&window, Qt::Key_Left);
    QCOMPARE(window.title(), u"rewind"_s);
    QTest::keyClick(&window, Qt::Key_Right);
    QTest::keyClick(&window, Qt::Key_Right);
    QCOMPARE(window.title(), u"crt-pvm"_s);
    QTest::keyClick(&window, Qt::Key_Left);

    // The clock stops while the player is paused, and does not jump afterwards.
    const auto drawMore = [&player] {
        const int frames = player.drawnFrames;
        return QTest::qWaitFor([&] { return player.drawnFrames > frames + 2; });
    };
    QTest::keyClick(&window, Qt::Key_Space);
    const qint64 nanoseconds = player.nanoseconds;
    QVERIFY(nanoseconds > 0);
    QTest::qWait(500);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(drawMore());
    QCOMPARE(player.nanoseconds, nanoseconds);
    QTest::keyClick(&window, Qt::Key_Space);
    QVERIFY(drawMore());
    QVERIFY(player.nanoseconds > nanoseconds);
    QVERIFY(player.nanoseconds - nanoseconds < timer.nsecsElapsed());

    QTest::keyClick(&window, Qt::Key_F11);
    QCOMPARE(window.visibility(), QWindow::FullScreen);
    QTest::keyClick(&window, Qt::Key_Escape);
    QCOMPARE(window.visibility(), QWindow::Windowed);
    QTest::keyClick(&window, Qt::Key_F11);
    QTest::keyClick(&window, Qt::Key_F11);
    QCOMPARE(window.visibility(), QWindow::Windowed);
    window.close();
    QCOMPARE(messages(), "");
}

void TestPlayerExample::switchingAndResizingIsClean()
{
    {
        Shown shown(smallPlayer(u"stock"_s));
        for (int step = 0; step < 200; ++step) {
            const int frames = shown.player.drawnFrames;
            if (step % 2 == 0)
                QTest::keyClick(&shown.window, step % 8 == 0 ? Qt::Key_Left : Qt::Key_Right);
            else
                shown.window.resize(40 + step * 7 % 60, 30 + step * 11 % 50);
            QTRY_VERIFY(shown.player.drawnFrames > frames);
        }
        shown.window.close();
    }
    QCOMPARE(messages(), "");
}

void TestPlayerExample::closingIsClean_data()
{
    QTest::addColumn<int>("milliseconds");
    QTest::addColumn<int>("frames");
    for (const int milliseconds : {0, 1, 5, 20, 60, 200})
        QTest::addRow("after %d ms", milliseconds) << milliseconds << 0;
    for (const int frames : {1, 2, 3, 4, 5})
        QTest::addRow("after %d frames", frames) << 0 << frames;
}

void TestPlayerExample::closingIsClean()
{
    QFETCH(int, milliseconds);
    QFETCH(int, frames);
    {
        Shown shown(smallPlayer(u"rewind"_s));
        while (shown.player.drawnFrames < frames)
            QCoreApplication::processEvents();
        QTimer::singleShot(milliseconds, &shown.window, &QWindow::close);
        QCOMPARE(QGuiApplication::exec(), 0);
        QVERIFY(!shown.window.isVisible());
    }
    QCOMPARE(messages(), "");
}

QTEST_MAIN(TestPlayerExample)
#include "tst_PlayerExample.moc"
