#pragma once

#include "TestSupport.h"

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>

// Runs of the real binary, as a build makes them.

struct Run
{
    int exitStatus = -1; // of a normal exit only
    QByteArray out;
    QByteArray err;
    int signal = 0; // that ended the run
};

// Gives the process what it needs beside its arguments. A program that it is given, and the
// arguments with it, is the command that the tool is run by.
using Prepare = std::function<void(QProcess &)>;

Run run(const QStringList &arguments, const Prepare &prepare = {});

Run compile(const QString &shadersDir, const QString &out, const Prepare &prepare = {});

// Runs the tool under faults, such as "closed=1 cpu-seconds=10"; UnderFaults.cpp lists them.
Prepare under(const QString &faults);

// The example shaders, copied to the directory `to`.
void copyExampleShaders(const QString &to);

// The path of a component file in such a copy in "shaders".
QString component(const char *name);

void replaceText(const QString &path, const QByteArray &before, const QByteArray &after);

// What is said of the presets that have no .glslp file in `shadersDir`: of those that come before
// `end`, or of all.
QByteArray retired(const QByteArray &end = {},
                   const QString &shadersDir = QStringLiteral(EXAMPLE_SHADERS_DIR));
