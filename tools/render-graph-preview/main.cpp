#include "Command.h"

#include <PictureFile.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <memory>
#include <new>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

constexpr const Command *kCommands[] = {
#ifdef HAVE_WINDOW
        &kWindowCommand,
#endif
        &kPictureCommand, &kGraphCommand, &kProfileCommand, &kListCommand};

// The example shaders, installed beside the program or, in a build tree, linked. Empty if the
// program is built for another project's presets.
QString defaultShadersDir()
{
#ifdef SHADERS_FROM_BIN
    const QString path = QCoreApplication::applicationDirPath() + u"/" SHADERS_FROM_BIN ""_s;
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? QDir::cleanPath(path) : canonical;
#else
    return {};
#endif
}

int fail(const QString &error)
{
    for (const QString &line : error.split(u'\n', Qt::SkipEmptyParts))
        std::fprintf(stderr, "render-graph-preview: %s\n", qUtf8Printable(line));
    return 1;
}

QString commandList()
{
    QString text = u"Shows what shader presets draw.\n\nCommands, each with a --help of its own:"_s;
    for (const Command *command : kCommands)
        text += u"\n  "_s
                + u"%1 %2"_s
                          .arg(QLatin1StringView(command->name),
                               QLatin1StringView(command->arguments))
                          .trimmed();
    return text;
}

} // namespace

int main(int argc, char *argv[])
{
#ifdef Q_OS_UNIX
    // A file must not get the number of a standard stream that is closed.
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(descriptor);
#endif
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication::setApplicationName(u"render-graph-preview"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(VERSION));

    QCommandLineParser parser;
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QString shaders = defaultShadersDir();
    const QCommandLineOption shadersDir(
            u"shaders-dir"_s,
            u"The shaders directory."_s
                    + (shaders.isEmpty() ? QString() : u" Default: %1."_s.arg(shaders)),
            u"path"_s, shaders);
    parser.addOption(shadersDir);
    parser.addPositionalArgument(u"command"_s, u"What to do."_s);

    const auto showIfAsked = [&] {
        if (parser.isSet(help))
            parser.showHelp();
        if (parser.isSet(version))
            parser.showVersion();
    };

    // Finds the command; its options are not known yet.
    parser.parse(QCoreApplication::arguments());
    const QString name = parser.positionalArguments().value(0);
    const auto *const *found = std::ranges::find(kCommands, name, [](const Command *command) {
        return QLatin1StringView(command->name);
    });
    if (found == std::end(kCommands)) {
        parser.setApplicationDescription(commandList());
        showIfAsked();
        return fail(name.isEmpty() ? u"no command is given; --help tells the commands"_s
                                   : u"'%1' is no command; --help tells the commands"_s.arg(name));
    }

    const Command &command = **found;
    parser.clearPositionalArguments();
    parser.setApplicationDescription(QLatin1StringView(command.description));
    parser.addPositionalArgument(name, u"This command."_s);
    const bool takesPreset = *command.arguments != '\0';
    if (takesPreset)
        parser.addPositionalArgument(u"preset"_s, u"A preset's name (see 'list')."_s,
                                     QLatin1StringView(command.arguments));
    const QCommandLineOption out(u"out"_s, QLatin1StringView(command.out), u"path"_s);
    const bool writes = *command.out != '\0';
    if (writes)
        parser.addOption(out);
    parser.addOptions(command.options());
    if (!parser.parse(QCoreApplication::arguments()))
        return fail(parser.errorText());
    showIfAsked();
    const QStringList arguments = parser.positionalArguments().mid(1);
    if (arguments.size() > (takesPreset ? 1 : 0)
        || (arguments.isEmpty() && *command.arguments == '<'))
        return fail(u"usage: render-graph-preview %1 %2 (see --help)"_s.arg(
                name, QLatin1StringView(command.arguments)));

    // Commands that take a preset read shaders.
    if (takesPreset && parser.value(shadersDir).isEmpty())
        return fail(u"--shaders-dir is missing: name the shaders directory"_s);
    const QString path = writes ? parser.value(out) : QString();
    if (writes && path.isEmpty())
        return fail(u"--out is missing: name what to write"_s);

    QString error;
    if (command.createApplication != nullptr) {
        application.reset();
        application = command.createApplication(argc, argv);
    }
    bool isDone = false;
    try {
        isDone = command.run({parser, parser.value(shadersDir), path, arguments}, error);
    } catch (const std::bad_alloc &) {
        error = kNotEnoughMemory;
    }
    if (isDone && (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)) {
        error = u"cannot write to the standard output: "_s + qt_error_string(errno);
        isDone = false;
    }
    return isDone ? 0 : fail(error);
}
