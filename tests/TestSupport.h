#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QList>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <cstdio>
#include <functional>
#include <optional>

#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kIsSanitized = __has_feature(address_sanitizer);
#else
inline constexpr bool kIsSanitized = false;
#endif

// Redirects `stream` to the descriptor while `action` runs. `action` must not use QVERIFY or
// QCOMPARE: they print to these streams.
template<typename Action>
void redirected(std::FILE *stream, int descriptor, Action action)
{
    std::fflush(stream);
    const int saved = ::dup(::fileno(stream));
    ::dup2(descriptor, ::fileno(stream));
    action();
    std::fflush(stream);
    ::dup2(saved, ::fileno(stream));
    ::close(saved);
}

// What `action` prints to `stream`.
template<typename Action>
QByteArray captured(std::FILE *stream, Action action)
{
    QTemporaryFile file;
    if (!file.open())
        qFatal("no temporary file");
    redirected(stream, file.handle(), action);
    file.seek(0);
    return file.readAll();
}

// Creates missing directories too.
void writeFile(const QString &path, const QByteArray &content);

QByteArray readFile(const QString &path);

// A copy of the example shaders.
void copyExampleShaders(const QString &to = QStringLiteral("shaders"));

struct Run
{
    int exitStatus = -1; // of a normal exit only
    QByteArray out;
    QByteArray err;
};

// Runs a program to its end; `prepare` may change the process before it starts.
Run runProgram(const QString &program, const QStringList &arguments,
               const std::function<void(QProcess &)> &prepare = {});

// Shows the first lines in which the texts differ; empty if they are equal.
QByteArray firstDifference(const QByteArray &actual, const QByteArray &expected);

// The fields of each preset's declaration by name, as tests/presets/golden/presets.txt has them.
QList<QHash<QString, QString>> declaredPresets();

QStringList declaredPresetNames();

// Whether a slow test about all presets runs for this one. The environment variable TESTED_PRESET
// can limit such tests to one preset.
bool isTested(const QString &preset);

// Turns on Vulkan's validation layer, whose file is given, with synchronization validation, for the
// instances of this process and its children. The layer writes to the file "messages" in the
// directory.
void enableValidation(const QString &layerFile, const QString &directory);

// The text in UTF-16, after a byte-order mark.
QByteArray utf16WithMark(const QByteArray &latin1, bool isBigEndian = false);

// A test class that runs each row in an empty working directory of its own, so that the paths in
// messages are short and always the same.
class TestInEmptyDirectory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

private:
    QString m_previous;
    std::optional<QTemporaryDir> m_directory;
};
