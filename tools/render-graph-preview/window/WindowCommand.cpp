#include "Command.h"
#include "Window.h"

#include <QApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// Without a display Qt would abort.
std::unique_ptr<QCoreApplication> application(int &argc, char **argv, QString &error)
{
    constexpr const char *kDisplays[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    if (std::ranges::all_of(kDisplays, qEnvironmentVariableIsEmpty)) {
        error = u"there is no display to open a window on; 'picture' writes files"_s;
        return nullptr;
    }
    return std::make_unique<QApplication>(argc, argv);
}

QList<QCommandLineOption> options()
{
    return {{u"device"_s, u"A device's number or a part of its name (see 'list'). Default: 0."_s,
             u"device"_s}};
}

bool window(const CommandLine &line, QString &error)
{
    const QString preset = line.arguments.value(0, presetNames().constFirst());
    if (!presetNames().contains(preset)) {
        error = loadPreset(line.shadersDir, preset).error;
        return false;
    }
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
                                .application = application};
