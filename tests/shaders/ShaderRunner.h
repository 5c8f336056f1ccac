#pragma once

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

using Pixel = std::array<float, 4>;

// A picture of float pixels, rows from the top.
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

// A picture as a pass's declaration wants it sampled.
struct SampledPicture
{
    const Picture *picture;
    bool linearFilter = false;
    bool mipmap = false;
    int wrapMode = 1; // 0 transparent border, 1 clamped to the edge, 2 repeated
};

// The block of examples/shaders/vulkan/include/component.glsl.
struct PushConstants
{
    std::array<float, 4> sourceSize;
    std::array<float, 4> outputSize;
    std::array<float, 4> originalSize;
    std::uint32_t frameCount;
    std::int32_t frameDirection;
    std::uint32_t hdrOutputActive;
    float frameSeconds;
    float hdrHeadroom;
    std::array<float, 15> params;
};
static_assert(sizeof(PushConstants) == 128);

// Draws single passes with compiled modules on a Vulkan device, a software one if there is any.
class ShaderRunner
{
public:
    explicit ShaderRunner(const QString &spirvDir);
    ~ShaderRunner();
    Q_DISABLE_COPY_MOVE(ShaderRunner)

    // The full-screen pass with module `<component>.frag.spv`, drawn into floats of 16 bits, or
    // of 32.
    Picture draw(const QString &component, const QList<SampledPicture> &inputs, QSize size,
                 const PushConstants &constants, bool isFloat32 = true);

private:
    class Device;
    std::unique_ptr<Device> m_device;
};

// The runner of the example shaders' modules, one for the whole program.
ShaderRunner &shaders();

// The largest difference in red, green and blue; infinite if the sizes differ, NaN if one occurs.
float difference(const Picture &a, const Picture &b);
