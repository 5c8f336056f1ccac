#pragma once

#include "PlainText.h"

#include <set>

// The scans of a component's source, character by character, without regular expressions.
namespace PlainSource {

using PlainText::Cursor;

inline constexpr long long kGreatestInt = 2147483647;

inline QStringList codeLines(const QByteArray &bytes)
{
    QStringList kept;
    bool inComment = false;
    for (const QString &line : PlainText::lines(bytes)) {
        QString code;
        for (qsizetype i = 0; i < line.size(); ++i) {
            const QChar c = line.at(i);
            const QChar next = i + 1 < line.size() ? line.at(i + 1) : QChar(u'\n');
            if (inComment) {
                if (c == u'*' && next == u'/') {
                    inComment = false;
                    ++i;
                }
            } else if (c == u'/' && next == u'/') {
                break;
            } else if (c == u'/' && next == u'*') {
                inComment = true;
                ++i;
            } else {
                code += c;
            }
        }
        bool isBlank = true;
        for (const QChar c : std::as_const(code))
            isBlank = isBlank && c.isSpace();
        if (!isBlank)
            kept.append(code);
    }
    return kept;
}

// Calls `visit(cursor)` after each "pc ." of the code, at the field's name.
template<typename Visitor>
void forEachField(const QByteArray &bytes, Visitor visit)
{
    for (const QString &line : codeLines(bytes)) {
        if (PlainText::hasLoneSurrogate(line))
            continue;
        for (qsizetype i = 0; i < line.size(); ++i) {
            if (i > 0 && PlainText::isWord(line.at(i - 1)))
                continue;
            Cursor cursor(line, i);
            if (!cursor.skip("pc"))
                continue;
            cursor.skipSpaces();
            if (!cursor.skip("."))
                continue;
            cursor.skipSpaces();
            visit(cursor);
        }
    }
}

inline bool readsField(const QByteArray &bytes, const QStringList &names)
{
    bool found = false;
    forEachField(bytes, [&](Cursor cursor) { found = found || names.contains(cursor.word()); });
    return found;
}

inline std::set<int> usedSlots(const QByteArray &bytes)
{
    std::set<int> used;
    forEachField(bytes, [&](Cursor cursor) {
        if (cursor.word() != QStringLiteral("params"))
            return;
        cursor.skipSpaces();
        if (!cursor.skip("["))
            return;
        cursor.skipSpaces();
        const QString digits = cursor.word();
        cursor.skipSpaces();
        if (digits.isEmpty() || !cursor.skip("]"))
            return;
        long long value = 0; // stays above int once it is, whatever follows
        for (const QChar c : digits) {
            if (!PlainText::isDigit(c))
                return;
            if (value <= kGreatestInt)
                value = value * 10 + (c.unicode() - u'0');
        }
        used.insert(value <= kGreatestInt ? static_cast<int>(value) : 0);
    });
    return used;
}

inline QStringList directives(const QByteArray &bytes, const char *keyword)
{
    QStringList names;
    for (const QString &line : PlainText::lines(bytes)) {
        Cursor cursor(line);
        cursor.skipSpaces();
        if (PlainText::hasLoneSurrogate(line) || !cursor.skip("//!"))
            continue;
        cursor.skipSpaces();
        if (!cursor.skip(keyword) || !cursor.skipSpaces())
            continue;
        const QString name = cursor.word();
        cursor.skipSpaces();
        if (!name.isEmpty() && cursor.atEnd() && !names.contains(name))
            names.append(name);
    }
    return names;
}

} // namespace PlainSource
