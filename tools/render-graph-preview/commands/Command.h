#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

// What a command is given: its options, parsed, and its own arguments.
struct CommandLine
{
    const QCommandLineParser &parser;
    QString shadersDir;
    QString out;
    QStringList arguments;
};

// One of the program's commands. `run` returns false if it failed, and says in `error` what is
// wrong: one line or more, without the program's name.
struct Command
{
    const char *name;
    const char *arguments; // as --help shows them, "" for none
    const char *description;
    const char *out; // what --out names, "" for a command without
    int fewestArguments;
    int mostArguments;
    QList<QCommandLineOption> (*options)();
    bool (*run)(const CommandLine &line, QString &error);
    // The application object for a command that cannot do with a QCoreApplication: made before it
    // runs, null and an error if that cannot be.
    std::unique_ptr<QCoreApplication> (*application)(int &argc, char **argv,
                                                     QString &error) = nullptr;
};

extern const Command kPictureCommand;
extern const Command kGraphCommand;
extern const Command kProfileCommand;
extern const Command kListCommand;
extern const Command kWindowCommand; // where HAVE_WINDOW is defined
