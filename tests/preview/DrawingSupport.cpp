#include "DrawingSupport.h"

#include <cstring>

FloatImage::FloatImage(QSize imageSize, Pixel fill)
    : size(imageSize),
      pixels(std::size_t(size.width()) * std::size_t(size.height()), fill)
{
}

FloatImage::FloatImage(const QImage &image)
    : size(image.size()),
      pixels(std::size_t(size.width()) * std::size_t(size.height()))
{
    if (image.format() != QImage::Format_RGBA32FPx4)
        qFatal("the image is not of floats");
    for (int y = 0; y < size.height(); ++y)
        std::memcpy(&at(0, y), image.constScanLine(y), std::size_t(size.width()) * sizeof(Pixel));
}

QImage FloatImage::toImage() const
{
    QImage image(size, QImage::Format_RGBA32FPx4);
    for (int y = 0; y < size.height(); ++y)
        std::memcpy(image.scanLine(y), &at(0, y), std::size_t(size.width()) * sizeof(Pixel));
    return image;
}

QString softwareDevice()
{
    QString error;
    QList<PhysicalDeviceInfo> devices;
    VulkanDevice::list(devices, error);
    for (int number = 0; number < devices.size(); ++number) {
        if (devices.at(number).isSoftware)
            return QString::number(number);
    }
    qFatal("no software device %s", qPrintable(error));
}

std::unique_ptr<OffscreenRenderer> softwareRenderer()
{
    static const QString kDevice = softwareDevice();
    QString error;
    std::unique_ptr<OffscreenRenderer> renderer;
    if (!OffscreenRenderer::create(kDevice, OffscreenRenderer::Outputs::All, renderer, error))
        qFatal("%s", qPrintable(error));
    return renderer;
}

PresetOnDisk examplePreset(const QString &name)
{
    QString error;
    PresetOnDisk preset;
    if (!loadPreset(QStringLiteral(EXAMPLE_SHADERS_DIR), name, preset, error))
        qFatal("%s", qPrintable(error));
    return preset;
}

FloatImage outputOf(const OffscreenRenderer &renderer, int pass)
{
    QString error;
    QImage picture;
    if (!renderer.output(pass, picture, error))
        qFatal("%s", qPrintable(error));
    return FloatImage(picture);
}
