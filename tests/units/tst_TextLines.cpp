#include <TextLines.h>

#include "TestSupport.h"

#include <QIODevice>
#include <QStringList>

#include <algorithm>
#include <cstring>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kBufferSize = 16384; // what the reader asks for at a time

// Gives `content`, at most `step` bytes at a time, and then fails or ends. States a size that no
// read ever reaches, as some files of the kernel's do.
class Source : public QIODevice
{
public:
    Source(QByteArray content, qint64 step, bool fails, bool sequential)
        : m_content(std::move(content)),
          m_step(step),
          m_fails(fails),
          m_sequential(sequential)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override
    {
        return m_sequential;
    }
    qint64 size() const override
    {
        return m_content.size() + 4096;
    }
    qint64 bytesAvailable() const override
    {
        return 4096;
    }
    bool atEnd() const override
    {
        return false;
    }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const qint64 size = std::min({maxSize, m_step, m_content.size() - m_position});
        if (size == 0)
            return m_fails ? -1 : 0;
        std::memcpy(data, m_content.constData() + m_position, static_cast<std::size_t>(size));
        m_position += size;
        return size;
    }

    qint64 writeData(const char * /*data*/, qint64 /*size*/) override
    {
        return -1;
    }

private:
    QByteArray m_content;
    qint64 m_step;
    bool m_fails;
    bool m_sequential;
    qint64 m_position = 0;
};

// What is read, from a file or a device; at most `count` lines.
template<typename From>
QStringList linesOf(From &&from, qsizetype count = -1)
{
    QStringList lines;
    forEachLine(from, [&](QStringView line) {
        lines.append(line.toString());
        return lines.size() != count;
    });
    return lines;
}

QByteArray utf32WithMark(const QByteArray &latin1, bool isBigEndian)
{
    QByteArray bytes = isBigEndian ? QByteArray("\0\0\xFE\xFF", 4) : QByteArray("\xFF\xFE\0\0", 4);
    for (const char c : latin1)
        bytes += isBigEndian ? QByteArray(3, '\0') + c : QByteArray(1, c) + QByteArray(3, '\0');
    return bytes;
}

} // namespace

class TestTextLines : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void lines_data();
    void lines();
    void failedRead_data();
    void failedRead();
    void visitorStops_data();
    void visitorStops();
    void fileWithoutLines_data();
    void fileWithoutLines();
};

void TestTextLines::lines_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("expected");

    const auto row = [](const char *name, const QByteArray &bytes, const QStringList &expected) {
        QTest::newRow(name) << bytes << expected;
    };
    row("empty", "", {});
    row("one line", "a\n", {u"a"_s});
    row("no final line end", "a\nb", {u"a"_s, u"b"_s});
    row("empty lines", "\n\na\n\n", {u""_s, u""_s, u"a"_s, u""_s});
    row("CR LF", "a\r\nb\r\n", {u"a"_s, u"b"_s});
    row("lone CRs vanish", "\ra\rb\n\rc\r", {u"ab"_s, u"c"_s});
    row("only CRs", "\r\r", {});
    row("NUL", QByteArray("a\0b\n\0", 5), {QString(u"a\0b"_s), QString(QChar(0))});
    row("other separators", "a\x0b\x0c\x1a\xc2\x85\xe2\x80\xa8z\n",
        {u"a\u000b\u000c\u001a\u0085\u2028z"_s});

    row("UTF-8", "\xc3\xa9\n\xe2\x82\xac\n\xf0\x9f\x98\x80\n",
        {u"\u00e9"_s, u"\u20ac"_s, u"\U0001f600"_s});
    row("bad bytes", "a\xffz\n\xc3\n", {u"a\ufffdz"_s, u"\ufffd"_s});
    row("encoded surrogate", "\xed\xa0\x80\n", {u"\ufffd\ufffd\ufffd"_s});
    row("overlong", "\xc0\x80\n", {u"\ufffd\ufffd"_s});
    row("truncated character vanishes", "a\nb\xe2\x82", {u"a"_s, u"b"_s});
    row("truncated character alone", "a\n\xe2\x82", {u"a"_s});

    row("UTF-8 mark",
        "\xef\xbb\xbf"
        "a\n",
        {u"a"_s});
    row("only a mark", "\xef\xbb\xbf", {});
    row("a mark further on stays",
        "a\n\xef\xbb\xbf"
        "b\n",
        {u"a"_s, u"\ufeffb"_s});
    row("UTF-16 little endian", utf16WithMark("a\r\nb"), {u"a"_s, u"b"_s});
    row("UTF-16 big endian", utf16WithMark("a\r\nb", true), {u"a"_s, u"b"_s});
    row("UTF-16 without a mark", utf16WithMark("a\nb\n").mid(2),
        {QString(u"a\0"_s), QString(u"\0b\0"_s), QString(QChar(0))});
    row("UTF-16 cut in a character", utf16WithMark("a\nbc").chopped(1), {u"a"_s, u"b"_s});
    row("UTF-16 with an LF in a character's half", QByteArray("\xff\xfe\x0a\x01z\0\n\0", 8),
        {u"\u010az"_s});
    row("UTF-32 little endian", utf32WithMark("a\r\nb\n", false), {u"a"_s, u"b"_s});
    row("UTF-32 big endian", utf32WithMark("a\r\nb\n", true), {u"a"_s, u"b"_s});

    // What lies across the end of a buffer.
    const QByteArray filler(kBufferSize - 1, 'x');
    const QString fillerText(kBufferSize - 1, u'x');
    row("LF ends a buffer", filler + "\na\n", {fillerText, u"a"_s});
    row("LF begins a buffer", filler + "y\na\n", {fillerText + u'y', u"a"_s});
    row("CR LF across buffers", filler + "\r\na\n", {fillerText, u"a"_s});
    row("character across buffers", filler + "\xe2\x82\xac\n", {fillerText + u'\u20ac'});
    row("surrogate pair across buffers", filler + "\xf0\x9f\x98\x80\n",
        {fillerText + u"\U0001f600"_s});
    row("truncated character behind a buffer", filler + "\n\xe2", {fillerText});
    row("empty lines over buffers", QByteArray(kBufferSize + 2, '\n'),
        QStringList(kBufferSize + 2, u""_s));
    row("line over many buffers", QByteArray(5 * kBufferSize, 'x') + "\na",
        {QString(5 * kBufferSize, u'x'), u"a"_s});
    row("line of exactly a buffer", filler + 'y', {fillerText + u'y'});
}

// The same lines from a file, and from devices that give a few bytes or a whole buffer at a time.
void TestTextLines::lines()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, expected);
    writeFile(u"text"_s, bytes);
    QCOMPARE(linesOf(u"text"_s), expected);
    for (const bool sequential : {false, true}) {
        for (const qint64 step : {qint64(5), qint64(kBufferSize), qint64(kBufferSize * 8)}) {
            Source source(bytes, step, false, sequential);
            QCOMPARE(linesOf<QIODevice &>(source), expected);
        }
    }
}

void TestTextLines::failedRead_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("at once") << QByteArray() << QStringList();
    QTest::newRow("after some lines") << QByteArray("a\nb\n") << QStringList({u"a"_s, u"b"_s});
    QTest::newRow("in mid-line") << QByteArray("a\nb") << QStringList({u"a"_s, u"b"_s});
    QTest::newRow("in a character") << QByteArray("a\nb\xe2") << QStringList({u"a"_s, u"b"_s});
    QTest::newRow("behind a buffer")
            << QByteArray(kBufferSize, 'x') << QStringList(QString(kBufferSize, u'x'));
    QTest::newRow("in the second buffer") << QByteArray(kBufferSize, 'x') + "\ny"
                                          << QStringList({QString(kBufferSize, u'x'), u"y"_s});
}

void TestTextLines::failedRead()
{
    QFETCH(QByteArray, before);
    for (const bool sequential : {false, true}) {
        Source source(before, kBufferSize, true, sequential);
        QTEST(linesOf<QIODevice &>(source), "expected");
    }
}

void TestTextLines::visitorStops_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("at the first line") << 1 << QStringList({u"a"_s});
    QTest::newRow("at the second line") << 2 << QStringList({u"a"_s, u""_s});
    QTest::newRow("at the unfinished line") << 3 << QStringList({u"a"_s, u""_s, u"b"_s});
    QTest::newRow("never") << 4 << QStringList({u"a"_s, u""_s, u"b"_s});
}

void TestTextLines::visitorStops()
{
    QFETCH(int, count);
    Source source("a\n\nb", kBufferSize, false, false);
    QTEST(linesOf<QIODevice &>(source, count), "expected");
}

void TestTextLines::fileWithoutLines_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << u"missing"_s;
    QTest::newRow("directory") << u"."_s;
    // One that has something to read but states no size, and one whose reading fails.
    QTest::newRow("file of the kernel's") << u"/proc/self/status"_s;
    QTest::newRow("file that cannot be read") << u"/sys/class/net/lo/speed"_s;
}

void TestTextLines::fileWithoutLines()
{
    QFETCH(QString, path);
    QCOMPARE(linesOf(path, 3), QStringList());
}

QTEST_APPLESS_MAIN(TestTextLines)
#include "tst_TextLines.moc"
