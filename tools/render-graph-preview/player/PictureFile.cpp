#include "PictureFile.h"

#include "TestPictures.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QSaveFile>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

std::optional<SourcePicture> SourcePicture::open(const QString &nameOrPath, QString &error)
{
    SourcePicture source;
    source.m_image = testPicture(nameOrPath);
    if (!source.m_image.isNull()) {
        if (testPicture(nameOrPath, 1) != source.m_image)
            source.m_testPicture = nameOrPath;
        return source;
    }

    QImageReader reader(nameOrPath);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (std::max(size.width(), size.height()) > kLargestSourceSide) {
        error = u"source picture '%1' is %2x%3, and the largest is %4x%4: make it smaller"_s
                        .arg(nameOrPath)
                        .arg(size.width())
                        .arg(size.height())
                        .arg(kLargestSourceSide);
        return {};
    }
    QImage image = reader.read();
    if (image.isNull()) {
        error = u"cannot read source picture '%1': %2; 'list' names the test pictures"_s.arg(
                nameOrPath, reader.errorString());
        return {};
    }
    if (image.colorSpace().isValid())
        image.convertToColorSpace(QColorSpace::SRgb);
    // Premultiplied is over black.
    image.convertTo(QImage::Format_ARGB32_Premultiplied);
    image.reinterpretAsFormat(QImage::Format_RGB32);
    source.m_image = image;
    return source;
}

QImage SourcePicture::frame(int number) const
{
    return moves() ? testPicture(m_testPicture, number) : m_image;
}

bool SourcePicture::moves() const
{
    return !m_testPicture.isEmpty();
}

Picture pictureOf(const QImage &image)
{
    Picture picture(image.size());
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb color = image.pixel(x, y);
            picture.at(x, y) = {float(qRed(color)) / 255.0F, float(qGreen(color)) / 255.0F,
                                float(qBlue(color)) / 255.0F, 1.0F};
        }
    }
    return picture;
}

QImage imageOf(const Picture &picture, std::optional<float> headroom)
{
    const float white = headroom.value_or(1.0F);
    const auto share = [white](float value) {
        return value > 0.0F ? std::min(value / white, 1.0F) : 0.0F;
    };
    QImage image(picture.size, headroom ? QImage::Format_RGBX64 : QImage::Format_RGB32);
    for (int y = 0; y < picture.size.height(); ++y) {
        auto *narrow = reinterpret_cast<QRgb *>(image.scanLine(y));
        auto *wide = reinterpret_cast<QRgba64 *>(image.scanLine(y));
        for (int x = 0; x < picture.size.width(); ++x) {
            const Pixel &pixel = picture.at(x, y);
            const auto level = [&](std::size_t c, float most) {
                return int(std::lround(share(pixel.at(c)) * most));
            };
            if (headroom)
                wide[x] = qRgba64(quint16(level(0, 65535.0F)), quint16(level(1, 65535.0F)),
                                  quint16(level(2, 65535.0F)), 65535);
            else
                narrow[x] = qRgb(level(0, 255.0F), level(1, 255.0F), level(2, 255.0F));
        }
    }
    image.setColorSpace(headroom ? QColorSpace::SRgbLinear : QColorSpace::SRgb);
    if (headroom)
        image.setText(u"Headroom"_s, QString::number(double(white)));
    return image;
}

bool saveFile(const QByteArray &content, const QString &path, QString &error)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit())
        return true;
    error = u"cannot write '%1': %2"_s.arg(path, file.errorString());
    return false;
}

bool savePng(const QImage &image, const QString &path, QString &error)
{
    return saveFile(pngOf(image), path, error);
}

QByteArray pngOf(const QImage &image)
{
    QBuffer buffer;
    image.save(&buffer, "png");
    return buffer.data();
}
