#include "TestPictures.h"

#include "PixelText.h"

#include <QDir>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <tuple>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kSizes[] = {{320, 240}, {256, 224}, {160, 144}, {240, 160}, {640, 480}};

// The scene: a boat on a lake at dusk.

// Ordered 4x4 dither of two colours; `level` from 0 to 1 is the share of the second.
QRgb dithered(QRgb first, QRgb second, double level, int x, int y)
{
    static constexpr int kOrder[4][4] = {
            {0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    return level * 16.0 > kOrder[y % 4][x % 4] + 0.5 ? second : first;
}

double triangleWave(double x)
{
    return std::abs(x - 2.0 * std::floor(x / 2.0) - 1.0);
}

QImage scene(QSize size, int frame)
{
    static constexpr QRgb kSky[] = {qRgb(36, 36, 92), qRgb(92, 60, 132), qRgb(200, 92, 116),
                                    qRgb(244, 164, 96), qRgb(252, 220, 140)};
    QImage image(size, QImage::Format_RGB32);
    const int width = size.width();
    const int height = size.height();
    const int scale = height >= 400 ? 2 : 1;
    const int horizon = height * 55 / 100;
    const int shore = height * 83 / 100;
    const QPoint sun(width * 7 / 10, horizon - height / 10);
    const int sunRadius = height / 9;

    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            // At scale 2, blocks of 2x2 pixels.
            const int column = x / scale;
            const int row = y / scale;
            QRgb color = 0;
            if (y < horizon) {
                const double level = 4.0 * row * scale / horizon;
                const int band = std::min(int(level), 3);
                color = dithered(kSky[band], kSky[band + 1], level - band, column, row);
                const QPoint fromSun = QPoint(column * scale, row * scale) - sun;
                if (QPoint::dotProduct(fromSun, fromSun) < sunRadius * sunRadius)
                    color = qRgb(255, 240, 176);
                // Two ranges of hills with diagonal slopes.
                const double far = 0.16 * triangleWave(5.0 * column * scale / width);
                const double near = 0.11 * triangleWave(3.3 * column * scale / width + 0.4);
                if (row * scale > horizon - int(far * height))
                    color = qRgb(108, 76, 128);
                if (row * scale > horizon - int(near * height))
                    color = qRgb(64, 52, 96);
            } else if (y < shore) {
                const double depth = double(row * scale - horizon) / (shore - horizon);
                color = dithered(qRgb(96, 104, 168), qRgb(32, 44, 104), depth, column, row);
                // The sun's reflection on moving waves.
                const int reach = sunRadius * (2 + int(triangleWave(0.37 * row + 0.1 * frame) * 3));
                if ((row + frame / 8) % 3 == 0 && std::abs(column * scale - sun.x()) < reach / 3)
                    color = qRgb(248, 196, 120);
            } else {
                color = dithered(qRgb(52, 100, 60), qRgb(28, 60, 52), 0.5, column, row);
                if ((column + row * 2) % 12 == 0)
                    color = qRgb(112, 160, 72);
                if (y < shore + scale)
                    color = qRgb(236, 220, 164);
            }
            image.setPixel(x, y, color);
        }
    }

    const int travel = width + 40 * scale;
    const auto at = [&](int x, int y) { return QPoint(x, y) * scale; };
    const auto drawSprite = [&](const QString &name, QPoint topLeft) {
        const QImage sprite(u":/sprites/%1.png"_s.arg(name));
        QPainter(&image).drawImage(QRect(topLeft, sprite.size() * scale), sprite);
    };
    drawSprite(u"boat"_s, {(frame * scale * 2) % travel - 40 * scale, horizon - scale * 4});
    for (int i = 0; i < 3; ++i) {
        const QPoint bird(width - (frame * scale + i * 31 * scale) % travel,
                          height / 6 + i * 9 * scale);
        drawSprite((frame / 6 + i) % 2 == 0 ? u"bird-up"_s : u"bird-down"_s, bird);
    }
    for (const int x : {6, 21, 118, 133})
        drawSprite(u"tree"_s, QPoint(0, shore) + at(x, -12));

    const QString counter = u"FRAME %1"_s.arg(frame, 4, 10, QChar(u'0'));
    const std::tuple<QPoint, QString, QRgb> texts[] = {
            {at(5, 5), u"QUIET LAKE"_s, qRgb(20, 16, 40)},
            {at(4, 4), u"QUIET LAKE"_s, qRgb(255, 255, 255)},
            {{width - pixelTextWidth(counter, scale) - 3 * scale, 4 * scale},
             counter,
             qRgb(252, 220, 108)},
            {QPoint(0, height) + at(4, -10), u"RED"_s, qRgb(255, 32, 32)},
            {QPoint(0, height) + at(28, -10), u"GREEN"_s, qRgb(32, 255, 32)},
            {QPoint(0, height) + at(64, -10), u"BLUE"_s, qRgb(64, 64, 255)},
    };
    for (const auto &[corner, text, color] : texts)
        drawPixelText(image, corner, text, color, scale);
    return image;
}

constexpr auto kPictures = ":/pictures"_L1;

// A file has the frames of a moving picture side by side.
QImage pictureFromFile(const QString &name, int frame)
{
    const QImage frames(kPictures + u'/' + name + u".png"_s);
    if (frames.isNull())
        return {};
    const int width = name.section(u'-', 1).section(u'x', 0, 0).toInt();
    return frames.copy(frame % (frames.width() / width) * width, 0, width, frames.height())
            .convertToFormat(QImage::Format_RGB32);
}

QString sceneName(QSize size)
{
    return u"scene-%1x%2"_s.arg(size.width()).arg(size.height());
}

} // namespace

QStringList testPictureNames()
{
    QStringList names;
    for (const QSize size : kSizes)
        names.append(sceneName(size));
    for (const QString &file : QDir(kPictures).entryList())
        names.append(file.chopped(4));
    return names;
}

QImage testPicture(const QString &name, int frame)
{
    const auto *size = std::ranges::find(kSizes, name, sceneName);
    return size == std::end(kSizes) ? pictureFromFile(name, frame) : scene(*size, frame);
}
