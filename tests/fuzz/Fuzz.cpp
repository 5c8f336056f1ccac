#include "Fuzz.h"

#include "PlainText.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace {

// A stream into memory, used again for every input.
struct MemoryStream
{
    MemoryStream() : file(::open_memstream(&text, &size))
    {
        if (file == nullptr)
            std::abort();
    }

    QByteArray content() const
    {
        std::fflush(file);
        return {text, static_cast<qsizetype>(size)};
    }

    char *text = nullptr;
    std::size_t size = 0;
    std::FILE *file;
};

MemoryStream &memoryOut()
{
    static MemoryStream stream;
    return stream;
}

MemoryStream &memoryErr()
{
    static MemoryStream stream;
    return stream;
}

std::FILE *savedOut = nullptr;
std::FILE *savedErr = nullptr;

} // namespace

float Bytes::number()
{
    constexpr float kValues[] = {0.0F, 1.0F, 0.5F, -1.0F, -0.0F, 1e9F, 1261314.125F, 3e-5F};
    const int kind = below(16);
    if (kind < 8)
        return kValues[kind];
    const auto value = std::bit_cast<float>(word());
    return std::isfinite(value) ? value : 0.1F;
}

QByteArray acrossBuffers(const QByteArray &text, int byte)
{
    static const std::array<std::pair<QByteArray, QByteArray>, 6> kMarksAndCrs = {
            {{QByteArray("\xFF\xFE\0\0", 4), QByteArray("\r\0\0\0", 4)},
             {QByteArray("\0\0\xFE\xFF", 4), QByteArray("\0\0\0\r", 4)},
             {"\xFF\xFE", QByteArray("\r\0", 2)},
             {"\xFE\xFF", QByteArray("\0\r", 2)},
             {"\xEF\xBB\xBF", "\r"},
             {"", "\r"}}};
    if (byte < 0x80)
        return text;
    const auto &[mark, cr] =
            *std::find_if(kMarksAndCrs.begin(), kMarksAndCrs.end(),
                          [&text](const auto &row) { return text.startsWith(row.first); });
    const qsizetype count = (PlainText::kBufferSize - (byte - 0x80) - mark.size()) / cr.size();
    return mark + cr.repeated(count) + text.mid(mark.size());
}

const QString &fuzzDirectory()
{
    static const QTemporaryDir directory;
    static const QString path = directory.path();
    return path;
}

void putFile(const QString &path, const QByteArray &content)
{
    const int file =
            ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0
        || ::write(file, content.constData(), static_cast<std::size_t>(content.size()))
                != content.size())
        std::abort();
    ::close(file);
}

void removeFile(const QString &path)
{
    ::unlink(QFile::encodeName(path).constData());
}

QByteArray fileContent(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        std::abort();
    return file.readAll();
}

void startCapture()
{
    savedOut = stdout;
    savedErr = stderr;
    std::rewind(memoryOut().file);
    std::rewind(memoryErr().file);
    stdout = memoryOut().file;
    stderr = memoryErr().file;
}

Printed endCapture()
{
    stdout = savedOut;
    stderr = savedErr;
    return {memoryOut().content(), memoryErr().content()};
}

void expectSame(const char *what, const QByteArray &input, const QByteArray &tool,
                const QByteArray &rule)
{
    if (tool == rule)
        return;
    std::fprintf(stderr,
                 "%s differs\n--- input\n%s\n--- input in hex\n%s\n--- the tool\n%s\n--- the "
                 "rule\n%s\n---\n",
                 what, input.constData(), input.toHex().constData(), tool.constData(),
                 rule.constData());
    std::abort();
}
