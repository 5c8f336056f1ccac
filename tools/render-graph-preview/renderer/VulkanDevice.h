#pragma once

#include <VulkanGraphRenderer.h>

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>

struct PhysicalDeviceInfo
{
    QString name;
    bool isSoftware = false;
};

// An image on the device with one level.
class DeviceImage
{
public:
    ~DeviceImage();
    Q_DISABLE_COPY_MOVE(DeviceImage)

    QSize size() const;
    VkImage image() const;
    VkImageView view() const;
    qint64 bytes() const; // of device memory

private:
    friend class VulkanDevice;
    struct Data;
    explicit DeviceImage(std::unique_ptr<Data> data);

    std::unique_ptr<Data> m_data;
};

// A Vulkan device with one queue and one command buffer, for one thread.
//
// Functions that can fail return false and set `error` to one line.
class VulkanDevice
{
public:
    // The devices that can draw, numbered in Vulkan's order. Fails where there is no Vulkan or no
    // such device.
    static bool list(QList<PhysicalDeviceInfo> &devices, QString &error);

    // `device` is a number, a part of a name (in any case), or empty for the first device that is
    // no software, or else the first.
    static bool open(const QString &device, std::unique_ptr<VulkanDevice> &opened, QString &error);

    ~VulkanDevice();
    Q_DISABLE_COPY_MOVE(VulkanDevice)

    PhysicalDeviceInfo info() const;
    VulkanGraphRenderer::Device handles() const;

    // Its content and layout are undefined.
    bool createImage(QSize size, VkFormat format, VkImageUsageFlags usage,
                     std::unique_ptr<DeviceImage> &image, QString &error) const;

    // Fills an image from tightly packed texels. Leaves it in the layout for sampling.
    bool upload(const DeviceImage &image, const void *texels, std::size_t size, QString &error);

    // Reads an image, whose layout is `layout` before and after, into `texels` of `size` bytes.
    bool download(VkImage image, VkImageLayout layout, QSize extent, void *texels, std::size_t size,
                  QString &error);

    // Records, submits, and waits until all is done. `record` returns false, with an error, if it
    // recorded nothing.
    bool submitAndWait(const std::function<bool(VkCommandBuffer)> &record, QString &error);

private:
    struct State;
    explicit VulkanDevice(std::unique_ptr<State> state);

    std::unique_ptr<State> m_state;
};
