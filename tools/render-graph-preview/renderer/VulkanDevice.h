#pragma once

#include <VulkanGraphRenderer.h>

#include <QByteArray>
#include <QList>
#include <QRect>
#include <QSize>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace vk::raii {
class Device;
}

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

// Host memory that commands copy from, or copy to if it is for reading. May outlive the device, and
// be destroyed in any thread.
class HostBuffer
{
public:
    ~HostBuffer();
    Q_DISABLE_COPY_MOVE(HostBuffer)

    VkBuffer buffer() const;
    std::size_t size() const;
    void *data() const;

private:
    friend class VulkanDevice;
    struct Data;
    explicit HostBuffer(std::unique_ptr<Data> data);

    std::unique_ptr<Data> m_data;
};

// A Vulkan device with one queue, for one thread. Its submissions are numbered: there is one of
// each number at a time.
//
// Functions that can fail return false and set `error` to one line.
class VulkanDevice
{
public:
    static constexpr int kFramesInFlight = 2; // numbered from 0

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
    const vk::raii::Device &raiiDevice() const;
    double timestampPeriod() const; // nanoseconds; 0: the queue has no timestamps

    // Its content and layout are undefined.
    bool createImage(QSize size, VkFormat format, VkImageUsageFlags usage,
                     std::unique_ptr<DeviceImage> &image, QString &error) const;

    enum class Transfer : std::uint8_t { Upload, Download };
    bool createBuffer(std::size_t size, Transfer transfer, std::shared_ptr<HostBuffer> &buffer,
                      QString &error) const;

    // Fills an image from tightly packed texels. Leaves it in the layout for sampling.
    bool upload(const DeviceImage &image, const void *texels, std::size_t size, QString &error);

    // The same, when the commands are done. The buffer has been written.
    bool recordUpload(VkCommandBuffer commands, const HostBuffer &texels, const DeviceImage &image,
                      QString &error) const;

    // Records the copy of a rectangle of an image, whose layout is `layout` before and after.
    void recordDownload(VkCommandBuffer commands, VkImage image, VkImageLayout layout,
                        const QRect &rectangle, const HostBuffer &texels, std::size_t offset) const;

    // Reads an image, whose layout is `layout` before and after, into `texels` of `size` bytes.
    bool download(VkImage image, VkImageLayout layout, QSize extent, void *texels, std::size_t size,
                  QString &error);

    // Waits for the last submission of that number, records and submits. `record` returns false,
    // with an error, if nothing is to be submitted.
    bool submit(int number, const std::function<bool(VkCommandBuffer)> &record, QString &error);

    // Waits until the last submission of that number is done. `written`, which may be null, is what
    // it wrote for the host.
    bool wait(int number, const HostBuffer *written, QString &error);

    // Waits until all submissions are done.
    bool waitForAll(QString &error);

private:
    friend class HostBuffer;
    struct State;
    explicit VulkanDevice(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};
