#include "Window.h"

#include <Command.h>

#include <QApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

bool createApplication(int &argc, char **argv, std::unique_ptr<QCoreApplication> &application,
                       QString &error)
{
    // Without a display Qt would abort.
    constexpr const char *kDisplays[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    if (std::ranges::all_of(kDisplays, qEnvironmentVariableIsEmpty)) {
        error = u"there is no display to open a window on; 'picture' writes files"_s;
        return false;
    }
    application = std::make_unique<QApplication>(argc, argv);
    return true;
}

QList<QCommandLineOption> options()
{
    return {{u"device"_s, u"A device's number or a part of its name (see 'list'). Default: 0."_s,
             u"device"_s}};
}

bool window(const CommandLine &line, QString &error)
{
    const QString preset = line.arguments.value(0, presetNames().constFirst());
    PresetOnDisk unknown;
    if (!presetNames().contains(preset))
        return loadPreset(line.shadersDir, preset, unknown, error);
    Window shown(line.shadersDir, line.parser.value(u"device"_s), preset);
    shown.show();
    return QApplication::exec() == 0;
}

} // namespace

const Command kWindowCommand = {.name = "window",
                                .arguments = "[<preset>]",
                                .description = "Shows a preset in a window to tune it in.",
                                .out = "",
                                .fewestArguments = 0,
                                .mostArguments = 1,
                                .options = options,
                                .run = window,
                                .createApplication = createApplication};
