#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

// A command's options and arguments, parsed.
struct CommandLine
{
    const QCommandLineParser &parser;
    QString shadersDir;
    QString out;
    QStringList arguments;
};

// A command of the program.
struct Command
{
    const char *name;
    const char *arguments; // "<preset>", "[<preset>]" if it may be left out, or ""
    const char *description;
    const char *out = ""; // the description of --out; "" if the command has no such option
    QList<QCommandLineOption> (*options)();
    // Functions that can fail return false and set `error` to one line or more, without the
    // program's name.
    bool (*run)(const CommandLine &line, QString &error);
    // Creates the application object before `run`. Null if a QCoreApplication will do.
    std::unique_ptr<QCoreApplication> (*createApplication)(int &argc, char **argv) = nullptr;
};

extern const Command kPictureCommand;
extern const Command kGraphCommand;
extern const Command kProfileCommand;
extern const Command kListCommand;
extern const Command kWindowCommand; // where HAVE_WINDOW is defined
