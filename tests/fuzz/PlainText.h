#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <utility>

// Splits a text file into lines, byte by byte. The tool leaves this to Qt.
namespace PlainText {

inline constexpr qsizetype kBufferSize = 16384; // as in TextLines.h

inline void appendCodePoint(QString &text, char32_t code)
{
    if (code < 0x10000) {
        text += QChar(static_cast<char16_t>(code));
    } else {
        text += QChar(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
        text += QChar(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
    }
}

// A bad byte gives U+FFFD. A sequence that is incomplete at the end of the file gives nothing.
inline QString fromUtf8(const QByteArray &bytes)
{
    const auto at = [&bytes](qsizetype i) { return static_cast<unsigned char>(bytes.at(i)); };
    QString text;
    qsizetype i = 0;
    while (i < bytes.size()) {
        const unsigned lead = at(i);
        int length = 1;
        char32_t smallest = 0;
        char32_t code = lead;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2, smallest = 0x80, code = lead & 0x1FU;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3, smallest = 0x800, code = lead & 0x0FU;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4, smallest = 0x10000, code = lead & 0x07U;
        }
        bool isGood = length > 1 || lead < 0x80;
        bool isCutOff = false;
        for (int k = 1; k < length && isGood && !isCutOff; ++k) {
            if (i + k >= bytes.size())
                isCutOff = true;
            else if ((at(i + k) & 0xC0U) != 0x80)
                isGood = false;
            else
                code = code << 6 | (at(i + k) & 0x3FU);
        }
        if (isGood && isCutOff)
            break;
        if (code < smallest || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            isGood = false;
        appendCodePoint(text, isGood ? code : 0xFFFD);
        i += isGood ? length : 1;
    }
    return text;
}

inline QString fromUnits(const QByteArray &bytes, int unitSize, bool isBigEndian)
{
    QString text;
    for (qsizetype i = 0; i + unitSize <= bytes.size(); i += unitSize) {
        char32_t code = 0;
        for (int k = 0; k < unitSize; ++k) {
            const qsizetype from = isBigEndian ? i + k : i + unitSize - 1 - k;
            code = code << 8 | static_cast<unsigned char>(bytes.at(from));
        }
        appendCodePoint(text, code);
    }
    return text;
}

inline bool isUtf32(const QByteArray &bytes)
{
    return bytes.startsWith(QByteArray("\xFF\xFE\0\0", 4))
            || bytes.startsWith(QByteArray("\0\0\xFE\xFF", 4));
}

inline bool isUtf16(const QByteArray &bytes)
{
    return bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF");
}

// Whether a bad sequence begins so close to the end of a buffer that it may reach into the next
// one.
inline bool hasBadUtf8AcrossBuffers(const QByteArray &bytes)
{
    for (qsizetype border = kBufferSize; border < bytes.size(); border += kBufferSize) {
        for (qsizetype i = border - 3; i < border; ++i) {
            const bool isContinuation = (static_cast<unsigned char>(bytes.at(i)) & 0xC0U) == 0x80;
            const QString text = fromUtf8(bytes.mid(i, 4));
            if (!isContinuation && (text.isEmpty() || text.at(0) == QChar(0xFFFD)))
                return true;
        }
    }
    return false;
}

// False for what Qt's versions decode differently (UTF-32 beyond U+10FFFF or in the surrogates),
// and for what Qt decodes differently across buffers.
inline bool isWellDefined(const QByteArray &bytes)
{
    if (!isUtf32(bytes))
        return isUtf16(bytes) || !hasBadUtf8AcrossBuffers(bytes);
    const bool isBigEndian = bytes.at(0) == '\0';
    for (qsizetype i = 4; i + 4 <= bytes.size(); i += 4) {
        const QByteArray unit = bytes.mid(i, 4);
        const auto at = [&](int k) {
            return static_cast<unsigned char>(unit.at(isBigEndian ? k : 3 - k));
        };
        if (at(0) != 0 || at(1) > 0x10 || (at(1) == 0 && (at(2) & 0xF8U) == 0xD8))
            return false;
    }
    return true;
}

inline QString decoded(const QByteArray &bytes)
{
    if (isUtf32(bytes))
        return fromUnits(bytes.mid(4), 4, bytes.at(0) == '\0');
    if (isUtf16(bytes))
        return fromUnits(bytes.mid(2), 2, bytes.at(0) == '\xFE');
    return fromUtf8(bytes.startsWith("\xEF\xBB\xBF") ? bytes.mid(3) : bytes);
}

inline QStringList lines(const QByteArray &bytes)
{
    QStringList lines;
    if (bytes.isEmpty())
        return lines;
    QString line;
    bool isLineOpen = true; // a file that decodes to nothing has one empty line
    for (const QChar c : decoded(bytes)) {
        if (c == u'\r')
            continue;
        isLineOpen = c != u'\n';
        if (isLineOpen) {
            line += c;
        } else {
            lines.append(line);
            line.clear();
        }
    }
    if (!line.isEmpty() || (isLineOpen && lines.isEmpty()))
        lines.append(line);
    return lines;
}

inline bool isSpace(QChar c)
{
    return c == u' ' || (c >= u'\t' && c <= u'\r');
}

inline bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

inline bool isWord(QChar c)
{
    return isDigit(c) || c == u'_' || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

// Qt's regular expressions match nothing in a line that is not well-formed UTF-16.
inline bool hasLoneSurrogate(const QString &line)
{
    for (qsizetype i = 0; i < line.size(); ++i) {
        if (!line.at(i).isSurrogate())
            continue;
        if (line.at(i).isLowSurrogate() || i + 1 == line.size() || !line.at(i + 1).isLowSurrogate())
            return true;
        ++i;
    }
    return false;
}

// Walks along one line.
class Cursor
{
public:
    explicit Cursor(QString line, qsizetype position = 0)
        : m_line(std::move(line)),
          m_position(position)
    {
    }

    bool atEnd() const
    {
        return m_position >= m_line.size();
    }

    bool skipSpaces()
    {
        const qsizetype start = m_position;
        while (!atEnd() && isSpace(m_line.at(m_position)))
            ++m_position;
        return m_position > start;
    }

    bool skip(const char *text)
    {
        qsizetype position = m_position;
        for (; *text != '\0'; ++text, ++position) {
            if (position >= m_line.size() || m_line.at(position) != QLatin1Char(*text))
                return false;
        }
        m_position = position;
        return true;
    }

    QString word()
    {
        QString word;
        while (!atEnd() && isWord(m_line.at(m_position)))
            word += m_line.at(m_position++);
        return word;
    }

    QString upTo(QChar end)
    {
        QString text;
        while (!atEnd() && m_line.at(m_position) != end)
            text += m_line.at(m_position++);
        return text;
    }

private:
    QString m_line;
    qsizetype m_position;
};

} // namespace PlainText
