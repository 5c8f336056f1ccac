#include "Window.h"

#include <Command.h>
#include <DrawingOptions.h>

#include <QApplication>
#include <QDebug>
#include <QSettings>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds kPatience(3);

// What Qt said while it opened the display.
QStringList g_reasons;

// Qt aborts where it finds no display.
void reportDisplay(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message)
{
    if (type != QtFatalMsg) {
        g_reasons.append(message.simplified());
        return;
    }
    std::fprintf(
            stderr, "render-graph-preview: no window can be opened, 'picture' writes files: %s\n",
            qUtf8Printable(g_reasons.isEmpty() ? message.simplified() : g_reasons.join(u"; "_s)));
    std::_Exit(1);
}

std::unique_ptr<QCoreApplication> createApplication(int &argc, char **argv)
{
    const QtMessageHandler previous = qInstallMessageHandler(reportDisplay);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(previous);
    for (const QString &reason : std::as_const(g_reasons))
        qWarning().noquote() << reason;
    return application;
}

QList<QCommandLineOption> options()
{
    static const QStringList kNames = {u"source"_s, u"values"_s, u"device"_s};
    QList<QCommandLineOption> options = DrawingOptions::declared();
    options.removeIf([](const auto &option) { return !kNames.contains(option.names().first()); });
    options.append(
            {u"editor"_s,
             u"Opens a message's file and line in this editor: \"code -g %f:%l\". Default: $VISUAL, $EDITOR."_s,
             u"command"_s});
    return options;
}

bool window(const CommandLine &line, QString &error)
{
    const QString last = QSettings(kSettings, kSettings).value("preset"_L1).toString();
    const QString preset = line.arguments.value(
            0, presetNames().contains(last) ? last : presetNames().constFirst());
    PresetOnDisk unknown;
    if (!presetNames().contains(preset))
        return loadPreset(line.shadersDir, preset, unknown, error);
    Window shown(line.shadersDir, line.parser.value(u"device"_s), preset,
                 line.parser.value(u"editor"_s));
    const QString values = line.parser.value(u"values"_s);
    if (!values.isEmpty())
        QObject::connect(
                &shown.session(), &Session::parametersChanged, &shown,
                [&shown, values] { shown.openValues(values); }, Qt::SingleShotConnection);
    if (line.parser.isSet(u"source"_s))
        shown.openSource(line.parser.value(u"source"_s));
    shown.show();
    const int status = QApplication::exec();
    // A shader may never end.
    if (!shown.session().finish(kPatience))
        std::_Exit(status);
    return status == 0;
}

} // namespace

const Command kWindowCommand = {.name = "window",
                                .arguments = "[<preset>]",
                                .description = "Shows a preset in a window to tune it in.",
                                .options = options,
                                .run = window,
                                .createApplication = createApplication};
