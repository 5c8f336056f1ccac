#pragma once

#include <QFile>
#include <QString>
#include <QStringDecoder>

#include <array>

// Calls `bool visit(QStringView line)` for each line of the text, without its line end, until it
// returns false. Decodes UTF-8, or what a byte-order mark names, and drops every CR. Holds one line
// and one buffer at a time. A failed read ends the text: the lines before it are visited, including
// an incomplete last one.
template<typename Visitor>
void forEachLine(QIODevice &device, Visitor visit)
{
    QStringDecoder decode;
    QString text; // decoded and not yet visited
    std::array<char, 16384> buffer;
    // Reads until nothing is left: atEnd() relies on the size that the device reports.
    for (qint64 size = 0; (size = device.read(buffer.data(), buffer.size())) > 0;) {
        const QByteArrayView bytes(buffer.data(), size);
        if (!decode.isValid())
            decode = QStringDecoder(
                    QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8));
        QString decoded = decode(bytes);
        decoded.remove(u'\r');

        qsizetype begin = 0;
        qsizetype end = text.size(); // an unfinished line holds no LF
        text += decoded;
        for (; (end = text.indexOf(u'\n', end)) >= 0; begin = ++end) {
            if (!visit(QStringView(text).sliced(begin, end - begin)))
                return;
        }
        text.remove(0, begin);
    }
    if (!text.isEmpty())
        visit(QStringView(text));
}

// The same for a file. A file that cannot be opened has no lines, and neither has one without a
// size, such as a pipe.
template<typename Visitor>
void forEachLine(const QString &path, Visitor visit)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly) && !file.atEnd())
        forEachLine(file, visit);
}
