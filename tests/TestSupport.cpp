#include "TestSupport.h"

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return file.readAll();
}

QByteArray utf16WithMark(const QByteArray &latin1, bool isBigEndian)
{
    QByteArray bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : latin1)
        bytes += isBigEndian ? QByteArray(1, '\0') + c : QByteArray(1, c) + '\0';
    return bytes;
}

void TestInEmptyDirectory::init()
{
    m_previous = QDir::currentPath();
    m_directory.emplace();
    if (!m_directory->isValid() || !QDir::setCurrent(m_directory->path()))
        qFatal("no temporary directory");
}

void TestInEmptyDirectory::cleanup()
{
    QDir::setCurrent(m_previous);
    m_directory.reset();
}
