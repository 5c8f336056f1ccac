#include "GraphRunner.h"

#include <VulkanRenderGraph.h>

#include <QRegularExpression>

using namespace RenderGraphManifestData;

namespace {

using ScaleSource = VulkanRenderGraph::ScaleSource;

std::array<float, 4> sizeConstant(QSize size)
{
    const auto width = float(size.width());
    const auto height = float(size.height());
    return {width, height, 1.0F / width, 1.0F / height};
}

QSize outputSize(const PassEntry &pass, QSize input, QSize original, QSize viewport)
{
    const auto scaled = [&pass](QSize size) {
        return QSize(qRound(float(size.width()) * pass.scaleX),
                     qRound(float(size.height()) * pass.scaleY));
    };
    switch (static_cast<ScaleSource>(pass.scaleSource)) {
    case ScaleSource::Viewport:
        return scaled(viewport);
    case ScaleSource::Absolute:
        return {pass.absoluteWidth > 0 ? pass.absoluteWidth : original.width(),
                pass.absoluteHeight > 0 ? pass.absoluteHeight : original.height()};
    default:
        return scaled(input);
    }
}

} // namespace

QHash<QString, float> initialParams(const PresetEntry &preset)
{
    QHash<QString, float> params;
    for (int i = 0; i < preset.presetParamCount; ++i) {
        const PresetParamEntry &param = preset.presetParams[i];
        params.insert(QString::fromUtf8(param.id), param.initialValue);
    }
    return params;
}

const PresetEntry &presetEntry(QStringView name)
{
    const QString stem = QStringLiteral(":/shaders/%1.").arg(name);
    for (const PresetEntry &preset : kPresets) {
        if (QString::fromUtf8(preset.presetQrcPath).startsWith(stem))
            return preset;
    }
    qFatal("no preset %s", qUtf8Printable(name.toString()));
}

const PassEntry &passEntry(QStringView component)
{
    for (const PresetEntry &preset : kPresets) {
        for (int i = 0; i < preset.passCount; ++i) {
            if (QString::fromUtf8(preset.passes[i].debugName) == component)
                return preset.passes[i];
        }
    }
    qFatal("no pass %s", qUtf8Printable(component.toString()));
}

PushConstants pushConstants(const PassEntry &pass, QSize source, QSize output, QSize original,
                            const QHash<QString, float> &params)
{
    PushConstants constants = {};
    constants.sourceSize = sizeConstant(source);
    constants.outputSize = sizeConstant(output);
    constants.originalSize = sizeConstant(original);
    constants.frameDirection = 1;
    constants.frameSeconds = 1.0F / 60.0F;
    constants.hdrHeadroom = 1.0F;
    for (int i = 0; i < pass.paramCount; ++i) {
        const QString id = QString::fromUtf8(pass.params[i].id);
        if (!params.contains(id))
            qFatal("no value of %s", qPrintable(id));
        constants.params.at(pass.params[i].floatOffset) = params.value(id);
    }
    return constants;
}

QList<Picture> GraphRunner::draw(const Picture &source, const FrameState &state)
{
    QList<Picture> outputs;
    for (int index = 0; index < m_preset.passCount; ++index) {
        const PassEntry &pass = m_preset.passes[index];

        QSize direct = source.size;
        QList<SampledPicture> inputs;
        for (int i = 0; i < pass.sampledInputCount; ++i) {
            const int input = pass.sampledInputs[i];
            if (input == VulkanRenderGraph::ResourceRef::SourceImage) {
                inputs.append({.picture = &source});
            } else {
                const int sampled = input < 0 ? index : input;
                const PassEntry &sampledPass = m_preset.passes[sampled];
                inputs.append({.picture = input < 0 ? &m_history.at(index) : &outputs.at(input),
                               .linearFilter = sampledPass.linearFilter,
                               .mipmap = sampledPass.mipmap,
                               .wrapMode = sampledPass.wrapMode});
            }
        }
        if (!inputs.isEmpty())
            direct = inputs.first().picture->size;
        const QSize scaledFrom =
                pass.scaleInputPassIndex >= 0 ? outputs.at(pass.scaleInputPassIndex).size : direct;
        const QSize size = outputSize(pass, scaledFrom, source.size, state.viewport);

        const QString blackWhenZero = QString::fromUtf8(pass.constantBlackWhenZero);
        if (!blackWhenZero.isEmpty() && state.params.value(blackWhenZero) == 0.0F) {
            outputs.append(Picture({1, 1}, {0.0F, 0.0F, 0.0F, pass.constantBlackAlpha}));
            continue;
        }

        PushConstants constants = pushConstants(pass, direct, size, source.size, state.params);
        constants.frameCount = state.frameCount;
        constants.frameDirection = state.frameDirection;
        constants.hdrOutputActive = state.hdrOutputActive ? 1 : 0;
        constants.frameSeconds = state.frameSeconds;
        constants.hdrHeadroom =
                pass.isFinalPass && m_preset.finalRealPassRespondsToHdr ? 1.0F : state.hdrHeadroom;
        const bool isFloat32 = static_cast<VulkanRenderGraph::Format>(pass.format)
                == VulkanRenderGraph::Format::RGBA32F;
        outputs.append(m_shaders.draw(QString::fromUtf8(pass.debugName), inputs, size, constants,
                                      isFloat32));
    }
    m_history = outputs;
    return outputs;
}
