#include "TestPictures.h"

#include "PixelText.h"

#include <QDir>
#include <QSize>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kSizes[] = {{320, 240}, {256, 224}, {160, 144}, {240, 160}, {640, 480}};

// The scene: a boat on a lake at dusk.

struct Ink
{
    char letter;
    QRgb color;
};

// clang-format off

constexpr Ink kInks[] = {
    {'k', qRgb(24, 20, 37)}, {'w', qRgb(244, 244, 228)}, {'r', qRgb(208, 56, 60)},
    {'o', qRgb(228, 140, 52)}, {'b', qRgb(116, 68, 44)}, {'d', qRgb(72, 40, 36)},
    {'g', qRgb(60, 136, 72)}, {'h', qRgb(32, 84, 64)},
};

// A letter is an ink; '.' is transparent.
constexpr const char *kBoat[] = {
    ".........k..........", ".........kr.........", "........kkrr........", ".......wkkrrr.......",
    "......wwkk..........", "......wwkkww........", ".....wwwkkwww.......", ".....wwwkkwwww......",
    "....wwwwkkwwwww.....", "....wwwwkkwwwwww....", "...wwwwwkkwwwwww....", "...wwwwwkkwwwwwww...",
    "..wwwwwwkkwwwwwww...", ".........k..........", "bbbbbbbbbkbbbbbbbbbb", ".bobobobobobobobobb.",
    "..bbbbbbbbbbbbbbbb..", "...dddddddddddddd...",
};

constexpr const char *kTree[] = {
    "......g......", ".....ggg.....", ".....gghg....", "....ggghh....", "...gggghhh...",
    ".....gghh....", "....ggghhh...", "...gggghhhh..", "..ggggghhhhh.", "....ggghhh...",
    "...gggghhhh..", "..ggggghhhhh.", ".gggggghhhhhh", "......bd.....", "......bd.....",
};

constexpr const char *kBirdUp[] = {"k.........k", ".kk.....kk.", "..kkk.kkk..", "....kkk...."};
constexpr const char *kBirdDown[] = {"....kkk....", "..kkkkkkk..", ".kk..k..kk.", "k.........k"};

// clang-format on

template<std::size_t height>
void drawSprite(QImage &image, QPoint topLeft, const char *const (&rows)[height], int scale)
{
    for (int y = 0; y < int(height) * scale; ++y) {
        const char *row = rows[y / scale];
        for (int x = 0; row[x / scale] != '\0'; ++x) {
            const auto *ink = std::ranges::find(kInks, row[x / scale], &Ink::letter);
            const QPoint pixel = topLeft + QPoint(x, y);
            if (ink != std::end(kInks) && image.valid(pixel))
                image.setPixel(pixel, ink->color);
        }
    }
}

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
    drawSprite(image, QPoint((frame * scale * 2) % travel - 40 * scale, horizon - scale * 4), kBoat,
               scale);
    for (int i = 0; i < 3; ++i) {
        const QPoint bird(width - (frame * scale + i * 31 * scale) % travel,
                          height / 6 + i * 9 * scale);
        if ((frame / 6 + i) % 2 == 0)
            drawSprite(image, bird, kBirdUp, scale);
        else
            drawSprite(image, bird, kBirdDown, scale);
    }
    for (const int x : {6, 21, 118, 133})
        drawSprite(image, QPoint(0, shore) + at(x, -12), kTree, scale);

    const QString counter = u"FRAME %1"_s.arg(frame, 4, 10, QChar(u'0'));
    const struct
    {
        QPoint at;
        QString text;
        QRgb color;
    } texts[] = {
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

// The test card, from the top: colour bars, a grey ramp, grey steps, a frequency sweep, stripes,
// and a grid with a circle and diagonals. A white frame surrounds it.

QRgb grey(double level)
{
    const int value = int(std::lround(255.0 * std::clamp(level, 0.0, 1.0)));
    return qRgb(value, value, value);
}

QRgb cardPixel(int x, int y, QSize size)
{
    const int width = size.width();
    const int height = size.height();
    if (x == 0 || y == 0 || x == width - 1 || y == height - 1)
        return grey(1.0);
    const int row = 16 * y / height;
    if (row < 3) {
        static constexpr QRgb kBars[] = {qRgb(255, 255, 255), qRgb(255, 255, 0), qRgb(0, 255, 255),
                                         qRgb(0, 255, 0),     qRgb(255, 0, 255), qRgb(255, 0, 0),
                                         qRgb(0, 0, 255),     qRgb(0, 0, 0)};
        return kBars[8 * x / width];
    }
    if (row < 4)
        return grey(double(x) / (width - 1));
    if (row < 5) {
        const int step = 16 * x / width;
        return grey(step / 15.0);
    }
    if (row < 7) {
        // A frequency sweep up to one period per two pixels.
        const double phase = 4.0 * x / width + (0.5 * width - 4.0) * x * x / (2.0 * width * width);
        return grey(0.5 + 0.5 * std::cos(2.0 * std::numbers::pi * phase));
    }
    if (row < 9) {
        // Stripes of 1, 2, 3 and 4 pixels: vertical, horizontal, checked, diagonal.
        const int field = 16 * x / width;
        const int pitch = field % 4 + 1;
        const int patterns[] = {x / pitch, y / pitch, x / pitch + y / pitch, (x + y) / pitch};
        return grey(patterns[field / 4] % 2);
    }

    const double fromCentreX = x - 0.5 * (width - 1);
    const double fromCentreY = y - (12.5 / 16.0) * height;
    const double radius = 2.9 / 16.0 * height;
    const double distance = std::hypot(fromCentreX, fromCentreY);
    if (std::abs(distance - radius) < 1.0)
        return grey(1.0);
    if (std::abs(std::abs(fromCentreX) - 2.0 * std::abs(fromCentreY)) < 0.8)
        return qRgb(255, 160, 0);
    if (distance < radius / 3.0) {
        const double wedge = 12.0 * (std::atan2(fromCentreY, fromCentreX) / std::numbers::pi + 1.0);
        return grey(int(wedge) % 2);
    }
    const int cell = std::max(height / 16, 8);
    if (x % cell == 0 || y % cell == 0)
        return grey(0.75);
    return qRgb(48, 64, 96);
}

// The photo-like scene: spheres on a plain under a hazy sky, antialiased.

// A pseudo-random number from 0 to 1.
double hashNoise(int x, int y)
{
    quint32 hash = quint32(x) * 0x9e3779b1U ^ quint32(y) * 0x85ebca77U;
    hash = (hash ^ hash >> 15) * 0x2c1b3c6dU;
    hash = (hash ^ hash >> 12) * 0x297a2d39U;
    return double(hash ^ hash >> 15) / 4294967295.0;
}

double smoothNoise(double x, double y)
{
    const int left = int(std::floor(x));
    const int top = int(std::floor(y));
    const auto eased = [](double t) { return t * t * (3.0 - 2.0 * t); };
    const double u = eased(x - left);
    const double v = eased(y - top);
    return std::lerp(std::lerp(hashNoise(left, top), hashNoise(left + 1, top), u),
                     std::lerp(hashNoise(left, top + 1), hashNoise(left + 1, top + 1), u), v);
}

double cloudiness(double x, double y)
{
    double sum = 0.0;
    for (int octave = 0; octave < 5; ++octave)
        sum += smoothNoise(x * (1 << octave), y * (1 << octave)) / (2 << octave);
    return sum;
}

using Light = std::array<double, 3>;

Light mixed(const Light &a, const Light &b, double share)
{
    const double t = std::clamp(share, 0.0, 1.0);
    return {std::lerp(a[0], b[0], t), std::lerp(a[1], b[1], t), std::lerp(a[2], b[2], t)};
}

struct Sphere
{
    double x; // in heights of the picture, from the middle
    double y; // in heights, from the top
    double radius;
    Light color;
};

constexpr Sphere kSpheres[] = {
        {-0.32, 0.56, 0.17, {0.80, 0.22, 0.10}},
        {0.26, 0.62, 0.23, {0.75, 0.56, 0.42}},
        {-0.02, 0.75, 0.11, {0.10, 0.32, 0.62}},
};

Light photoLight(double x, double y)
{
    constexpr double kHorizon = 0.46;
    const Light haze = {0.82, 0.72, 0.60};
    Light light;
    if (y < kHorizon) {
        light = mixed({0.12, 0.28, 0.62}, haze, y / kHorizon);
        light = mixed(light, {0.95, 0.92, 0.88}, 2.2 * (cloudiness(3.0 * x + 9.0, 7.0 * y) - 0.42));
        const double ridge = kHorizon - 0.16 * cloudiness(2.5 * x + 40.0, 3.0) + 0.02;
        light = mixed(light, {0.16, 0.20, 0.22}, (y - ridge) * 300.0);
    } else {
        const double depth = 0.12 / (y - kHorizon + 0.02);
        const double grain = cloudiness(60.0 * x * depth / 4.0 + 7.0, 40.0 * depth);
        light = mixed({0.10, 0.16, 0.05}, {0.40, 0.36, 0.18}, grain);
        light = mixed(light, haze, depth / 6.0 - 0.1);
    }
    for (const Sphere &sphere : kSpheres) {
        const double groundY = sphere.y + 0.92 * sphere.radius;
        const double shadow =
                std::hypot((x - sphere.x - 0.6 * sphere.radius) / 1.5, (y - groundY) * 3.2)
                / sphere.radius;
        if (y > kHorizon)
            light = mixed({0.02, 0.03, 0.03}, light, 0.25 + shadow * shadow * 0.6);
    }
    for (const Sphere &sphere : kSpheres) {
        const double nx = (x - sphere.x) / sphere.radius;
        const double ny = (y - sphere.y) / sphere.radius;
        const double squared = nx * nx + ny * ny;
        const double nz = std::sqrt(std::max(0.0, 1.0 - squared));
        const double lit = std::max(0.0, -0.55 * nx - 0.62 * ny + 0.56 * nz);
        const double gloss = std::pow(lit, 40.0);
        Light surface;
        for (std::size_t c = 0; c < 3; ++c)
            surface[c] = sphere.color[c] * (0.12 + 0.95 * lit) + 0.7 * gloss;
        light = mixed(light, surface, (1.0 - std::sqrt(squared)) * sphere.radius * 220.0);
    }
    return light;
}

QRgb photoPixel(int x, int y, QSize size)
{
    const Light light =
            photoLight((x + 0.5 - 0.5 * size.width()) / size.height(), (y + 0.5) / size.height());
    const auto encoded = [&](std::size_t c) {
        const double value = std::pow(std::clamp(light[c], 0.0, 1.0), 1.0 / 2.2);
        return int(
                std::clamp(255.0 * value + 5.0 * (hashNoise(x, 3 * y + int(c)) - 0.5), 0.0, 255.0));
    };
    return qRgb(encoded(0), encoded(1), encoded(2));
}

template<typename PixelAt>
QImage still(QSize size, PixelAt pixelAt)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, pixelAt(x, y, size));
    }
    return image;
}

struct TestPicture
{
    const char *name;
    QImage (*draw)(QSize size, int frame);
};

constexpr TestPicture kTestPictures[] = {
        {"scene", scene},
        {"card", [](QSize size, int /*frame*/) { return still(size, cardPixel); }},
        {"photo", [](QSize size, int /*frame*/) { return still(size, photoPixel); }},
};

constexpr auto kPictures = ":/test-pictures"_L1;

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

QString nameOf(const TestPicture &picture, QSize size)
{
    return u"%1-%2x%3"_s.arg(QLatin1StringView(picture.name)).arg(size.width()).arg(size.height());
}

} // namespace

QStringList testPictureNames()
{
    QStringList names;
    for (const TestPicture &picture : kTestPictures) {
        for (const QSize size : kSizes)
            names.append(nameOf(picture, size));
    }
    for (const QString &file : QDir(kPictures).entryList())
        names.append(file.chopped(4));
    return names;
}

QImage testPicture(const QString &name, int frame)
{
    for (const TestPicture &picture : kTestPictures) {
        for (const QSize size : kSizes) {
            if (nameOf(picture, size) == name)
                return picture.draw(size, frame);
        }
    }
    return pictureFromFile(name, frame);
}
