#pragma once

#include "PictureFile.h"
#include "PresetOnDisk.h"

#include <OffscreenRenderer.h>

#include <QString>

#include <memory>
#include <optional>

// Draws the frames of a preset: with values of its parameters, from a source picture, on a Vulkan
// device. Needs a preset and a source. Unless it is given one, the device is opened for the first
// frame, and again after it failed.
class Player
{
public:
    // `device` as for VulkanDevice::open().
    explicit Player(QString device,
                    OffscreenRenderer::Outputs outputs = OffscreenRenderer::Outputs::All);

    // A preset that loadPreset() returned. Its parameters get their initial values.
    void setPreset(const PresetOnDisk &preset);
    const PresetOnDisk &preset() const
    {
        return m_preset;
    }

    void setSource(const SourcePicture &source);
    const SourcePicture &source() const
    {
        return m_source;
    }

    // The inputs of the next frames, except their number. They have a value for each parameter.
    FrameState &state()
    {
        return m_state;
    }
    void setHeadroom(std::optional<float> headroom); // empty: SDR

    // The next frame is drawn as if the display had been showing its source for a long time.
    void resetHistories();

    // Draws the frame of that number, histories continuing from the last one that was drawn. On
    // failure returns false, with the reason in `error`.
    bool drawFrame(int number, QString &error);

    // Records the same into the commands of a submission of that number on `device`, which it
    // shares.
    bool recordFrame(const std::shared_ptr<VulkanDevice> &device, VkCommandBuffer commands,
                     int submission, int number, QString &error);
    // Gives back all that it has on the device.
    void release();

    // The renderer of the last frame; null if that failed.
    const OffscreenRenderer *renderer() const
    {
        return m_renderer.get();
    }

private:
    bool prepareFrame(int number, QString &error);

    QString m_device;
    OffscreenRenderer::Outputs m_outputs;
    PresetOnDisk m_preset;
    SourcePicture m_source;
    FrameState m_state;
    std::unique_ptr<OffscreenRenderer> m_renderer;
    bool m_hasGraph = false; // the renderer has m_preset's
    bool m_hasSource = false; // the renderer has m_source's first frame, if nothing else
};
