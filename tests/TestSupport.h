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

// Lets `stream` write to the descriptor while `action` runs. Verify nothing inside: QTest reports
// on these streams itself.
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

// What `action` writes to `stream`.
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

// Makes the directories that the file needs, too.
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

// The first lines in which the texts differ, for a reader: empty if they are the same.
QByteArray firstDifference(const QByteArray &actual, const QByteArray &expected);

// The fields of each preset's declaration by name, as tests/presets/golden/presets.txt has them.
QList<QHash<QString, QString>> declaredPresets();

QStringList declaredPresetNames();

// Whether a test that takes its time over each preset is to try this one: TESTED_PRESET in the
// environment can name the only one.
bool isTested(const QString &preset);

// The text in UTF-16, behind a byte-order mark.
QByteArray utf16WithMark(const QByteArray &latin1, bool isBigEndian = false);

// A test class whose every row runs in an empty directory of its own, as the working directory, so
// that the paths in messages are short and always the same.
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
