#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <cstdio>

#include <unistd.h>

// What `action` writes to `stream`. Verify nothing inside: QTest reports on these streams itself.
template<typename Action>
QByteArray captured(std::FILE *stream, Action action)
{
    QTemporaryFile file;
    if (!file.open())
        qFatal("no temporary file");
    std::fflush(stream);
    const int saved = ::dup(::fileno(stream));
    ::dup2(file.handle(), ::fileno(stream));
    action();
    std::fflush(stream);
    ::dup2(saved, ::fileno(stream));
    ::close(saved);
    file.seek(0);
    return file.readAll();
}

inline void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return file.readAll();
}

// The text in UTF-16, behind a byte-order mark.
inline QByteArray utf16WithMark(const QByteArray &latin1, bool isBigEndian = false)
{
    QByteArray bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : latin1)
        bytes += isBigEndian ? QByteArray(1, '\0') + c : QByteArray(1, c) + '\0';
    return bytes;
}

// A directory that is the working directory while it lives, so that the paths in messages are short
// and always the same.
class WorkingDirectory
{
public:
    WorkingDirectory()
    {
        if (!m_directory.isValid() || !QDir::setCurrent(m_directory.path()))
            qFatal("no temporary directory");
    }
    ~WorkingDirectory()
    {
        QDir::setCurrent(m_previous);
    }
    Q_DISABLE_COPY_MOVE(WorkingDirectory)

private:
    QString m_previous = QDir::currentPath();
    QTemporaryDir m_directory;
};
