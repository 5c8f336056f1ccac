#pragma once

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstddef>
#include <cstdint>

// One run of a target; libFuzzer's name, and its own main() or SeedRunner's calls it.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

// Hands out an input piece by piece; zeros once it is used up.
class Bytes
{
public:
    Bytes(const std::uint8_t *data, std::size_t size)
        : m_bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size))
    {
    }

    bool isEmpty() const
    {
        return m_position >= m_bytes.size();
    }

    int byte()
    {
        return isEmpty() ? 0 : static_cast<std::uint8_t>(m_bytes.at(m_position++));
    }

    bool flag()
    {
        return (byte() & 1) != 0;
    }

    // At least 0 and less than `count`.
    int below(int count)
    {
        return byte() % count;
    }

    std::uint32_t word()
    {
        std::uint32_t word = 0;
        for (int i = 0; i < 4; ++i)
            word = word << 8 | static_cast<std::uint32_t>(byte());
        return word;
    }

    float number();

    QByteArray take(int count)
    {
        QByteArray bytes = m_bytes.mid(m_position, count);
        m_position += bytes.size();
        return bytes;
    }

private:
    QByteArray m_bytes;
    qsizetype m_position = 0;
};

// The text, and where `byte` is beyond ASCII, CRs before it: of a reader's first buffer they leave
// `byte` - 0x80 bytes, so that the text runs on into the second one. A byte-order mark stays first.
// As every CR is dropped, the result has the text's own lines.
QByteArray acrossBuffers(const QByteArray &text, int byte);

// A directory of this process, without a slash at its end; it goes when the process ends.
const QString &fuzzDirectory();

void putFile(const QString &path, const QByteArray &content);
void removeFile(const QString &path);
QByteArray fileContent(const QString &path);

// What `action` prints through C's standard streams. Only the two FILE pointers are exchanged, so
// that a sanitizer's report is still seen.
struct Printed
{
    QByteArray out;
    QByteArray err;
};
class Capture
{
public:
    Capture();
    ~Capture();
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;
    Printed end();

private:
    bool m_isOpen = true;
};

// Aborts with the input and both results where they differ.
void expectSame(const char *what, const QByteArray &input, const QByteArray &tool,
                const QByteArray &rule);
