#include "PlayerWindow.h"

#include <QCommandLineParser>
#include <QGuiApplication>

VULKAN_HPP_DEFAULT_DISPATCH_LOADER_DYNAMIC_STORAGE

int main(int argc, char *argv[])
{
    // Without a display Qt would print several lines and abort.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &) {
        check(type != QtFatalMsg, u"there is no display to open a window on"_s);
    });
    QGuiApplication application(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(
            u"Shows a picture, or without one a moving one, through a preset.\nKeys: Left and "
            "Right change the preset, Space pauses, F11 and Escape enter and leave full screen."_s);
    parser.addHelpOption();
    parser.addOptions({{u"size"_s, u"The window's size."_s, u"pixels"_s, u"960x720"_s},
                       {u"pixel-aspect"_s, u"A source pixel's shape."_s, u"w:h"_s, u"1:1"_s},
                       {u"integer-scaling"_s, u"Gives all lines the same number of pixels."_s},
                       {u"screenshot"_s, u"Writes what the window shows, and ends."_s, u"file"_s},
                       {u"frames"_s, u"Frames until the screenshot."_s, u"number"_s, u"1"_s}});
    parser.addPositionalArgument(u"arguments"_s, {}, u"[<preset> [<picture>]]"_s);
    parser.process(application);

    constexpr QSize kLargest(4096, 4096); // every Vulkan device draws images of this size
    const QStringList names = VulkanRenderGraphCatalog::presetNames();
    const QStringList arguments = parser.positionalArguments();
    check(arguments.size() <= 2, u"there are more arguments than a preset and a picture"_s);
    Player player;
    player.preset = arguments.value(0, names.constFirst());
    check(names.contains(player.preset),
          u"there is no preset '%1'; there are %2"_s.arg(player.preset, names.join(u", "_s)));
    if (arguments.size() == 2) {
        player.picture = QImage(arguments.at(1)).convertToFormat(QImage::Format_RGBX8888);
        const QSize size = player.picture.size();
        check(!size.isEmpty() && size == size.boundedTo(kLargest),
              u"'%1' is no picture of at most 4096 pixels either way"_s.arg(arguments.at(1)));
    }
    const auto readPair = [&](const QString &option, QChar separator) {
        const QStringList numbers = parser.value(option).split(separator);
        const QSize pair(numbers.value(0).toInt(), numbers.value(1).toInt());
        check(numbers.size() == 2 && !pair.isEmpty() && pair == pair.boundedTo(kLargest),
              u"--%1 %2: the value is two numbers from 1 to 4096 with a '%3' between"_s.arg(
                      option, numbers.join(separator), separator));
        return pair;
    };
    const QSize size = readPair(u"size"_s, u'x');
    const QSize aspect = readPair(u"pixel-aspect"_s, u':');
    player.pixelAspect = double(aspect.width()) / aspect.height();
    player.isIntegerScaled = parser.isSet(u"integer-scaling"_s);
    player.screenshot = parser.value(u"screenshot"_s);
    const QString frames = parser.value(u"frames"_s);
    player.frames = frames.toInt();
    check(player.frames >= 1, u"--frames %1: the value is a whole number from 1"_s.arg(frames));

    QVulkanInstance instance;
    instance.setApiVersion({1, 1});
    check(instance.create(), u"there is no Vulkan driver for this display"_s);
    qInstallMessageHandler(nullptr);
    PlayerWindow window(player);
    window.setVulkanInstance(&instance);
    check(!window.availablePhysicalDevices().isEmpty(), u"there is no Vulkan device"_s);
    window.resize(size / window.devicePixelRatio());
    window.show();
    return QGuiApplication::exec();
}
