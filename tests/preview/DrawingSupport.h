#pragma once

#include <OffscreenRenderer.h>
#include <PresetOnDisk.h>

#include <QImage>

#include <array>
#include <memory>
#include <vector>

// Helpers of the tests that draw. A failure ends the program.

using Pixel = std::array<float, 4>; // red, green, blue, alpha

// A picture of floats, with access to its pixels.
struct FloatImage
{
    explicit FloatImage(QSize imageSize = {1, 1}, Pixel fill = {0.0F, 0.0F, 0.0F, 1.0F});
    explicit FloatImage(const QImage &image);
    QImage toImage() const;

    const Pixel &at(int x, int y) const
    {
        return pixels[std::size_t(y) * std::size_t(size.width()) + std::size_t(x)];
    }
    Pixel &at(int x, int y)
    {
        return pixels[std::size_t(y) * std::size_t(size.width()) + std::size_t(x)];
    }

    QSize size;
    std::vector<Pixel> pixels; // rows from the top
};

// On the first software device: every machine that tests has one, and it draws the same pixels
// everywhere.
std::unique_ptr<OffscreenRenderer> softwareRenderer();

// Its number, as --device takes it.
QString softwareDevice();

PresetOnDisk examplePreset(const QString &name);

FloatImage outputOf(const OffscreenRenderer &renderer, int pass);
