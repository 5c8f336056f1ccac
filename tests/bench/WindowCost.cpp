#include <PictureView.h>
#include <VulkanDevice.h>
#include <Window.h>

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QLibrary>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdio>
#include <functional>

#include <time.h>

// Prints what a frame of a moving picture costs the CPU in the preview's window: a row for each
// size and display, with the milliseconds of the interface's thread and of the thread that draws,
// without those inside of submitting commands and waiting for them.

using namespace Qt::StringLiterals;

namespace {

constexpr int kFrames = 30;

struct Case
{
    const char *name;
    QSize size;
    double headroom;
};
constexpr Case kCases[] = {{"1440x1080, SDR", {1440, 1080}, 0.0},
                           {"1440x1080, HDR", {1440, 1080}, 4.0},
                           {"3840x2160, SDR", {3840, 2160}, 0.0},
                           {"3840x2160, HDR", {3840, 2160}, 4.0}};

std::int64_t threadNanoseconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::int64_t(time.tv_sec) * 1000000000 + time.tv_nsec;
}

QString softwareDevice()
{
    QString error;
    QList<PhysicalDeviceInfo> devices;
    VulkanDevice::list(devices, error);
    for (int number = 0; number < devices.size(); ++number) {
        if (devices.at(number).isSoftware)
            return QString::number(number);
    }
    qFatal("no software device %s", qPrintable(error));
}

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("VK_LAYER_PATH", FAILING_DEVICE_DIR);
    qputenv("VK_INSTANCE_LAYERS", "VK_LAYER_TEST_failing");
    const QApplication application(argc, argv);
    QLibrary layer(QStringLiteral(FAILING_DEVICE));
    const auto submittingNanoseconds =
            reinterpret_cast<std::int64_t (*)()>(layer.resolve("submittingNanoseconds"));
    if (submittingNanoseconds == nullptr)
        qFatal("%s", qPrintable(layer.errorString()));

    for (const Case &measured : kCases) {
        Window window(QStringLiteral(EXAMPLE_SHADERS_DIR), softwareDevice(), u"stock"_s);
        Session &session = window.session();
        window.findChild<QComboBox *>(u"source"_s)->setCurrentText(u"scene-256x224"_s);
        auto *const sizes = window.findChild<QComboBox *>(u"size"_s);
        sizes->addItem(u"measured"_s, measured.size);
        sizes->setCurrentIndex(sizes->count() - 1);
        window.findChild<QComboBox *>(u"zoom"_s)->setCurrentText(u"1:1"_s);
        window.findChild<QDoubleSpinBox *>(u"headroom"_s)->setValue(measured.headroom);
        window.findChild<PictureView *>()->setFixedSize(measured.size);
        window.show();
        const auto waitFor = [](const std::function<bool()> &isDone) {
            while (!isDone())
                QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        };
        waitFor([&] { return session.frame() && !session.isBusy(); });
        int drawn = 0;
        QObject::connect(&session, &Session::frameDrawn, &window, [&drawn] { ++drawn; });
        session.setRunning(true);
        waitFor([&] { return drawn >= 5; });
        const int first = drawn;
        const std::int64_t interfaceStart = threadNanoseconds();
        const std::int64_t drawingStart = submittingNanoseconds();
        waitFor([&] { return drawn >= first + kFrames; });
        const double frames = double(drawn - first) * 1e6;
        const double interface = double(threadNanoseconds() - interfaceStart) / frames;
        const double drawing = double(submittingNanoseconds() - drawingStart) / frames;
        std::printf("%s\t%.1f\t%.1f\t%.1f\n", measured.name, interface, drawing,
                    interface + drawing);
    }
    return 0;
}
