#pragma once

#include <QImage>
#include <QString>
#include <qrgbafloat.h>

#include <optional>

// The largest side of a source picture: every Vulkan device supports it.
inline constexpr int kLargestSourceSide = 4096;

// The picture that enters a graph: a test picture or a picture file.
class SourcePicture
{
public:
    // Opens a test picture by its name, or a file that Qt can read. On failure returns false, with
    // the reason in `error`.
    static bool open(const QString &nameOrPath, SourcePicture &source, QString &error);

    bool isNull() const
    {
        return m_image.isNull();
    }
    QSize size() const
    {
        return m_image.size();
    }
    // The picture in a frame: gamma-encoded sRGB, over black where the file is transparent.
    QImage frame(int number) const;
    bool isAnimated() const;
    // Shows the first frame of an animated picture in all frames.
    void freeze();

private:
    QString m_testPicture; // empty if the picture is still
    QImage m_image; // the first frame
};

// The error after std::bad_alloc.
inline constexpr QLatin1StringView
        kNotEnoughMemory("not enough memory: choose a smaller size or source");

// An image whose pixels are not set. Throws std::bad_alloc, as new does, where QImage is null.
QImage newImage(QSize size, QImage::Format format);

// Converts 8-bit colours to QImage::Format_RGBA32FPx4, opaque.
QImage floatPicture(const QImage &image);

// Converts a float picture for a display. SDR: 8 bits per channel, marked as sRGB, with the values
// as they are, as a swapchain of that colour space shows them. HDR: 16 bits per channel, marked as
// linear light; 65535 is `headroom` times the reference white. Values are clamped to the range, NaN
// becomes 0, and alpha is dropped.
QImage displayImage(const QImage &picture, std::optional<float> headroom = {});

// The longest side of a picture in a PNG file that libpng reads and writes.
inline constexpr int kLargestPngSide = 1000000;

// Functions that can fail return false, with the reason in `error`.

// Writes to a temporary file and renames it to `path`, so that `path` is never half written. Only
// a regular file is replaced.
bool saveFile(const QByteArray &content, const QString &path, QString &error);
// Whether saveFile() can write to `path`. Leaves no file behind.
bool canSaveFile(const QString &path, QString &error);
bool savePng(const QImage &image, const QString &path, QString &error);
bool pngOf(const QImage &image, QByteArray &png, QString &error);
