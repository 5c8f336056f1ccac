#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>
#include <qrgbafloat.h>

#include <optional>

// The largest side of a source picture: every Vulkan device supports it.
inline constexpr int kLargestSourceSide = 4096;

// The files of a source: `path` itself or, where it is none and has a %d or %04d, those with the
// next whole numbers in its place, from the first one that exists.
QStringList sourceFiles(const QString &path);

// The picture that enters a graph: a test picture, a picture file, which may be animated, or a
// picture file for each frame.
class SourcePicture
{
public:
    // Opens a test picture by its name, or sourceFiles() that Qt can read. On failure returns
    // false, with the reason in `error`.
    static bool open(const QString &nameOrPath, SourcePicture &source, QString &error);

    bool isNull() const
    {
        return m_frames.isEmpty();
    }
    QSize size() const
    {
        return m_frames.value(0).size();
    }
    // The picture in a frame, at 60 per second: gamma-encoded sRGB, over black where the file is
    // transparent. After its last frame it begins again.
    QImage frame(int number) const;
    bool isAnimated() const;
    // Shows the first frame of an animated test picture in all frames.
    void freeze();

private:
    bool appendFile(const QString &path, QString &error);

    QString m_testPicture; // empty if it is none, or still
    QList<QImage> m_frames;
};

// "stretched from 8:7 to 4:3", or empty if the picture has the source's shape.
QString stretchText(QSize source, QSize picture);

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
