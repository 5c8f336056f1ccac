#pragma once

#include <QSize>

#include <array>
#include <cstddef>
#include <vector>

// Red, green, blue, alpha.
using Pixel = std::array<float, 4>;

// A picture of float pixels, rows from the top. Colours are gamma-encoded or linear, as whoever
// drew them says; 1.0 is reference white in both.
struct Picture
{
    explicit Picture(QSize pictureSize = {1, 1}, Pixel fill = {0.0F, 0.0F, 0.0F, 1.0F})
        : size(pictureSize),
          pixels(std::size_t(size.width()) * std::size_t(size.height()), fill)
    {
    }
    const Pixel &at(int x, int y) const
    {
        return pixels[std::size_t(y) * std::size_t(size.width()) + std::size_t(x)];
    }
    Pixel &at(int x, int y)
    {
        return pixels[std::size_t(y) * std::size_t(size.width()) + std::size_t(x)];
    }

    QSize size;
    std::vector<Pixel> pixels;
};
