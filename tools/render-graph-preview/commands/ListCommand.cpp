#include "Command.h"

#include <OffscreenRenderer.h>
#include <PresetOnDisk.h>
#include <TestPictures.h>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

void print(const char *heading, const QStringList &lines)
{
    std::printf("%s:\n", heading);
    for (const QString &line : lines)
        std::printf("  %s\n", qUtf8Printable(line));
}

bool list(const CommandLine & /*line*/, QString &error)
{
    print("presets", presetNames());
    print("test pictures", testPictureNames());
    std::fflush(stdout); // before an error about the devices
    QList<PhysicalDeviceInfo> devices;
    if (!VulkanDevice::list(devices, error))
        return false;
    QStringList lines;
    for (const PhysicalDeviceInfo &device : devices)
        lines.append(u"%1 %2%3"_s.arg(lines.size())
                             .arg(device.name, device.isSoftware ? u" (software)"_s : QString()));
    print("devices", lines);
    return true;
}

} // namespace

const Command kListCommand = {
        .name = "list",
        .arguments = "",
        .description = "Names the presets, the test pictures and the devices.",
        .options = [] { return QList<QCommandLineOption>(); },
        .run = list,
};
