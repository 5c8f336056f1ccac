#pragma once

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstddef>
#include <cstdint>

// Runs a target once. libFuzzer, which gives the name, calls it, or SeedRunner.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

// Takes an input apart piece by piece; returns zeros after its end.
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

// The text itself, or with CRs in front of it if `byte` is 0x80 or more. The CRs fill a reader's
// first buffer up to its last `byte` - 0x80 bytes, so that the text continues in the second one. A
// byte-order mark stays in front. The lines do not change, since readers drop every CR.
QByteArray acrossBuffers(const QByteArray &text, int byte);

// A directory of this process, without a trailing slash; it is deleted when the process ends.
const QString &fuzzDirectory();

void putFile(const QString &path, const QByteArray &content);
void removeFile(const QString &path);
QByteArray fileContent(const QString &path);

struct Printed
{
    QByteArray out;
    QByteArray err;
};

// Between these two calls, what is printed to stdout and stderr is captured. They replace only the
// two FILE pointers, so that a sanitizer's report is still printed.
void startCapture();
Printed endCapture();

// Aborts if the results differ, and prints them with the input.
void expectSame(const char *what, const QByteArray &input, const QByteArray &tool,
                const QByteArray &rule);
