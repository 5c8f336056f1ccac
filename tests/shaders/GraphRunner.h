#pragma once

#include "ShaderRunner.h"

#include <QHash>

#include <RenderGraphManifest.h>

// What a renderer knows beside the graph when it draws a frame.
struct FrameState
{
    QHash<QString, float> params; // by id: every one that the preset has
    QSize viewport = {256, 192};
    std::uint32_t frameCount = 0;
    std::int32_t frameDirection = 1;
    bool hdrOutputActive = false;
    float hdrHeadroom = 1.0F;
    float frameSeconds = 1.0F / 60.0F;
};

// The preset's own values of all its parameters.
QHash<QString, float> initialParams(const RenderGraphManifestData::PresetEntry &preset);

// The preset of that name.
const RenderGraphManifestData::PresetEntry &presetEntry(QStringView name);

// The first pass of any preset that is drawn with this component.
const RenderGraphManifestData::PassEntry &passEntry(QStringView component);

// The block for one pass in SDR, going forwards at 60 Hz; `params` holds at least its parameters.
PushConstants pushConstants(const RenderGraphManifestData::PassEntry &pass, QSize source,
                            QSize output, QSize original, const QHash<QString, float> &params);

// Draws whole presets from the manifest, as a renderer does: sizes, inputs, history, constant
// black.
class GraphRunner
{
public:
    GraphRunner(ShaderRunner &shaders, const RenderGraphManifestData::PresetEntry &preset)
        : m_shaders(shaders),
          m_preset(preset),
          m_history(preset.passCount)
    {
    }

    // The outputs of all passes for the next frame.
    QList<Picture> draw(const Picture &source, const FrameState &state);

private:
    ShaderRunner &m_shaders;
    const RenderGraphManifestData::PresetEntry &m_preset;
    QList<Picture> m_history; // of the last frame, a pixel each before the first
};
