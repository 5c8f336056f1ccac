#pragma once

#include <QFile>
#include <QString>
#include <QTextStream>

// Calls `bool visit(const QString &line)` for each line of the text file, without its line end,
// until it returns false. Decodes UTF-8, or what a byte-order mark names. Holds one line at a time.
// A file that cannot be opened has no lines.
template<typename Visitor>
void forEachLine(const QString &path, Visitor visit)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    QTextStream stream(&file);
    QString line;
    while (!stream.atEnd()) {
        stream.readLineInto(&line);
        if (!visit(line))
            return;
    }
}
