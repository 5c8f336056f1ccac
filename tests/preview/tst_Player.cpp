#include <Player.h>

#include "DrawingSupport.h"
#include "TestSupport.h"

#include <QRegularExpression>
#include <QScopeGuard>

#include <new>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

// What the player adds to the renderer: preset, source, values and frames, and a device that may
// fail.

namespace {

SourcePicture sourceOf(const QString &nameOrPath)
{
    QString error;
    SourcePicture source;
    if (!SourcePicture::open(nameOrPath, source, error))
        qFatal("%s", qPrintable(error));
    return source;
}

Player examplePlayer(const QString &preset, const QString &device = softwareDevice())
{
    Player player(device);
    player.setPreset(examplePreset(preset));
    player.setSource(sourceOf(u"scene-160x144"_s));
    player.state().viewport = {48, 32};
    return player;
}

// The output of the last pass in a frame.
QImage draw(Player &player, int number)
{
    QString error;
    if (!player.drawFrame(number, error))
        qFatal("%s", qPrintable(error));
    return outputOf(*player.renderer(), int(player.renderer()->passes().size()) - 1).toImage();
}

} // namespace

class TestPlayer : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void sourceIsDrawn();
    void sourceFollowsTheFrames();
    void valuesAreTheTunedOnesUntilSet();
    void historiesContinue();
    void presetIsReplaced();
    void headroomIsLinearLight();
    void missingDevices_data();
    void missingDevices();
    void failedDeviceIsOpenedAgain_data();
    void failedDeviceIsOpenedAgain();
    void missingMemoryIsSurvived();
};

void TestPlayer::sourceIsDrawn()
{
    QImage picture(48, 32, QImage::Format_RGB32);
    picture.fill(qRgb(200, 100, 50));
    picture.setPixel(47, 31, qRgb(0, 255, 1));
    QVERIFY(picture.save(u"in.png"_s));
    Player player = examplePlayer(u"stock"_s);
    const QImage scene = displayImage(draw(player, 0));
    player.setSource(sourceOf(u"in.png"_s));
    const QImage drawn = displayImage(draw(player, 0));
    QVERIFY(drawn != scene);
    QCOMPARE(drawn.pixel(0, 0), qRgb(200, 100, 50));
    QCOMPARE(drawn.pixel(47, 31), qRgb(0, 255, 1));
}

void TestPlayer::sourceFollowsTheFrames()
{
    Player player = examplePlayer(u"stock"_s);
    const QImage first = draw(player, 0);
    QVERIFY(draw(player, 20) != first);
    QCOMPARE(draw(player, 0), first);

    SourcePicture still = player.source();
    still.freeze();
    player.setSource(still);
    QCOMPARE(draw(player, 20), first);
}

void TestPlayer::valuesAreTheTunedOnesUntilSet()
{
    Player player = examplePlayer(u"gba-lcd"_s);
    QCOMPARE(player.state().params.value(u"lcd_diffuse"_s), 0.55F);
    const QImage tuned = draw(player, 0);
    player.state().params[u"lcd_diffuse"_s] = 0.0F;
    QVERIFY(draw(player, 0) != tuned);
    player.setPreset(player.preset());
    QCOMPARE(player.state().params.value(u"lcd_diffuse"_s), 0.55F);
    QCOMPARE(draw(player, 0), tuned);
}

void TestPlayer::historiesContinue()
{
    Player player = examplePlayer(u"gba-lcd"_s);
    Player fresh = examplePlayer(u"gba-lcd"_s);
    draw(player, 0);
    QVERIFY(draw(player, 20) != draw(fresh, 20));
    player.resetHistories();
    fresh.resetHistories();
    QCOMPARE(draw(player, 20), draw(fresh, 20));
}

void TestPlayer::presetIsReplaced()
{
    Player player = examplePlayer(u"gba-lcd"_s);
    player.state().params[u"lcd_diffuse"_s] = 0.0F;
    draw(player, 0);
    player.setPreset(examplePreset(u"stock"_s));
    QCOMPARE(player.state().params, (QHash<QString, float>()));
    Player other = examplePlayer(u"stock"_s);
    QCOMPARE(draw(player, 0), draw(other, 0));
    QCOMPARE(player.renderer()->passes().size(), 2);
}

void TestPlayer::headroomIsLinearLight()
{
    QImage grey(1, 1, QImage::Format_RGB32);
    grey.fill(qRgb(128, 128, 128));
    QVERIFY(grey.save(u"in.png"_s));
    Player player = examplePlayer(u"stock"_s);
    player.setSource(sourceOf(u"in.png"_s));
    const auto level = [&player] { return FloatImage(draw(player, 0)).at(0, 0)[1]; };
    QVERIFY(qAbs(level() - 128.0F / 255.0F) < 1e-3F);
    player.setHeadroom(4.0F);
    QVERIFY(qAbs(level() - 0.2195F) < 1e-3F); // (128 / 255)^2.2
    player.setHeadroom({});
    QVERIFY(qAbs(level() - 128.0F / 255.0F) < 1e-3F);
}

void TestPlayer::missingDevices_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QByteArray>("drivers"); // the file that describes the only one
    QTest::addColumn<QString>("message"); // a pattern
    // Versions of Vulkan's headers name the function in different ways.
    QTest::newRow("no driver") << QString() << "/nowhere"_ba
                               << u"^no Vulkan device to draw on [(]Vulkan: vk\\S*reateInstance: "
                                  u"ErrorIncompatibleDriver[)]; "
                                  "install a driver [(]Debian: mesa-vulkan-drivers[)]$"_s;
    QTest::newRow("unknown name") << u"abacus"_s << QByteArray()
                                  << u"^no Vulkan device 'abacus'; there are 0: "_s;
}

void TestPlayer::missingDevices()
{
    QFETCH(QString, device);
    QFETCH(QByteArray, drivers);
    QFETCH(QString, message);
    Player player = examplePlayer(u"stock"_s, device);
    QString error;
    if (!drivers.isEmpty()) {
        qputenv("VK_ICD_FILENAMES", drivers);
        qputenv("VK_DRIVER_FILES", drivers);
    }
    const bool isDrawn = player.drawFrame(0, error);
    qunsetenv("VK_ICD_FILENAMES");
    qunsetenv("VK_DRIVER_FILES");
    QVERIFY(!isDrawn);
    QVERIFY2(error.contains(QRegularExpression(message)), qPrintable(error));
    QVERIFY(player.renderer() == nullptr);
}

void TestPlayer::failedDeviceIsOpenedAgain_data()
{
    QTest::addColumn<QByteArray>("call");
    QTest::addColumn<QString>("message");
    QTest::newRow("lost") << "vkQueueSubmit"_ba
                          << u"the Vulkan device was lost: start again, or choose another one"_s;
    QTest::newRow("out of memory")
            << "vkAllocateMemory"_ba
            << u"the Vulkan device has not enough memory: choose a smaller size or source"_s;
}

void TestPlayer::failedDeviceIsOpenedAgain()
{
    QFETCH(QByteArray, call);
    QFETCH(QString, message);
    qputenv("VK_LAYER_PATH", FAILING_DEVICE_DIR);
    qputenv("VK_INSTANCE_LAYERS", "VK_LAYER_TEST_failing");
    const auto restore = qScopeGuard([] {
        for (const char *const name : {"VK_LAYER_PATH", "VK_INSTANCE_LAYERS", "FAILING_CALL"})
            qunsetenv(name);
    });
    Player player = examplePlayer(u"stock"_s);
    player.setSource(sourceOf(u"card-160x144"_s)); // set once, as it is not animated
    const QImage first = draw(player, 0);

    qputenv("FAILING_CALL", call);
    player.state().viewport = {49, 32};
    QString error;
    QVERIFY(!player.drawFrame(0, error));
    QCOMPARE(error, message);
    QVERIFY(player.renderer() == nullptr);

    qunsetenv("FAILING_CALL");
    player.state().viewport = {48, 32};
    QCOMPARE(draw(player, 0), first);
}

void TestPlayer::missingMemoryIsSurvived()
{
    if (kIsSanitized)
        QSKIP("a sanitizer takes more memory than there is");
    QVERIFY(QImage(4096, 4096, QImage::Format_RGB32).save(u"large.png"_s));
    Player player = examplePlayer(u"stock"_s);
    const QImage first = draw(player, 0);
    const SourcePicture scene = player.source();
    player.setSource(sourceOf(u"large.png"_s));
    const rlim_t used = rlim_t(readFile(u"/proc/self/statm"_s).split(' ').first().toLongLong())
            * rlim_t(::sysconf(_SC_PAGESIZE));
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_AS, &before), 0);
    const rlimit limit = {used + (100U << 20), before.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_AS, &limit), 0);
    bool hasThrown = false;
    try {
        QString error;
        player.drawFrame(0, error);
    } catch (const std::bad_alloc &) {
        hasThrown = true;
    }
    ::setrlimit(RLIMIT_AS, &before);
    QVERIFY(hasThrown);
    QVERIFY(player.renderer() == nullptr);
    player.setSource(scene);
    QCOMPARE(draw(player, 0), first);
}

QTEST_GUILESS_MAIN(TestPlayer)
#include "tst_Player.moc"
