#pragma once

#include "Picture.h"

#include <QImage>
#include <QString>

#include <optional>

// The largest side of a source picture: no Vulkan device takes less.
inline constexpr int kLargestSourceSide = 4096;

// The picture that enters a graph: a test picture by its name, or a file that Qt can read.
class SourcePicture
{
public:
    // Functions that can fail return nothing, or false, and say in `error` what is wrong.
    static std::optional<SourcePicture> open(const QString &nameOrPath, QString &error);

    // What enters as that frame: gamma-encoded sRGB, over black where the file is transparent.
    QImage frame(int number) const;
    bool moves() const;

private:
    QString m_testPicture; // or empty
    QImage m_image;
};

Picture pictureOf(const QImage &image);

// In SDR 8 bits per channel, marked as sRGB: the values as they are, which is what a swapchain of
// that colour space takes. With an HDR headroom 16 bits, marked as linear light: the value 65535 is
// `headroom` times the reference white. Values below 0 and above the largest one are clamped, and
// NaN is 0; alpha is left out.
QImage imageOf(const Picture &picture, std::optional<float> headroom = {});

// Writes beside `path` and renames, so that no half file ever has that name.
bool saveFile(const QByteArray &content, const QString &path, QString &error);
bool savePng(const QImage &image, const QString &path, QString &error);
QByteArray pngOf(const QImage &image);
