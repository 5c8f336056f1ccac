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

using Prepare = std::function<void(QProcess &)>;

QString toolPath();

Run run(const QStringList &arguments, const Prepare &prepare = {});

Run compile(const QString &shadersDir, const QString &out, const Prepare &prepare = {});

// The two halves of run(), for a test that has something to do in between.
void start(QProcess &process, const QStringList &arguments);
Run finish(QProcess &process);

// What runs the tool in a child, with exactly these bytes as its arguments, the name included.
std::function<void()> executeTool(const QByteArrayList &arguments);

// Root may open anything. The child gives that up, so that permissions mean what they say.
void obeyPermissions(QProcess &process);

// The example shaders, copied to the directory `to`.
void copyExampleShaders(const QString &to);

// The path of a component file in such a copy in "shaders".
QString component(const char *name);

void replaceText(const QString &path, const QByteArray &before, const QByteArray &after);

// What is said of the presets that have no .glslp file in `shadersDir`: of those that come before
// `end`, or of all.
QByteArray retired(const QByteArray &end = {},
                   const QString &shadersDir = QStringLiteral(EXAMPLE_SHADERS_DIR));
