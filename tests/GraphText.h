#pragma once

#include <VulkanRenderGraph.h>

#include <QByteArray>

#include <cstdio>
#include <utility>

inline QByteArray numberText(int value)
{
    return QByteArray::number(value);
}

// Nine digits tell any two floats apart.
inline QByteArray numberText(float value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    return text;
}

// A graph with every field of its passes, for comparison.
inline QByteArray graphText(const VulkanRenderGraph &graph)
{
    QByteArray text = graph.presetQrcPath.toUtf8() + " feedback "
            + numberText(graph.feedbackPassIndex)
            + (graph.finalRealPassRespondsToHdr ? " responds to HDR\n" : "\n");
    for (const VulkanRenderGraph::Pass &pass : graph.passes) {
        // Does not compile if the record has another field.
        const auto &[fragmentSpirvResource, vertexSpirvResource, debugName, format, scaleSource,
                     scaleX, scaleY, absoluteWidth, absoluteHeight, scaleInputPassIndex,
                     linearFilter, mipmap, cacheByParameters, constantBlackWhenZero,
                     constantBlackAlpha, shareConstantBlack, wrapMode, isFeedbackTarget,
                     isFeedbackReader, isFinalPass, sampledInputs, params] = pass;
        text += '\'' + debugName.toUtf8() + "' '" + fragmentSpirvResource.toUtf8() + "' '"
                + vertexSpirvResource.toUtf8() + "'\n  format "
                + numberText(static_cast<int>(format)) + " scale source "
                + numberText(static_cast<int>(scaleSource)) + " scale " + numberText(scaleX) + ' '
                + numberText(scaleY) + " size " + numberText(absoluteWidth) + ' '
                + numberText(absoluteHeight) + " scale input " + numberText(scaleInputPassIndex)
                + " wrap mode " + numberText(wrapMode) + "\n  black when '"
                + constantBlackWhenZero.toUtf8() + "' alpha " + numberText(constantBlackAlpha)
                + "\n  flags";
        for (const auto &[name, isSet] : {std::pair("linearFilter", linearFilter),
                                          {"mipmap", mipmap},
                                          {"cacheByParameters", cacheByParameters},
                                          {"shareConstantBlack", shareConstantBlack},
                                          {"isFeedbackTarget", isFeedbackTarget},
                                          {"isFeedbackReader", isFeedbackReader},
                                          {"isFinalPass", isFinalPass}}) {
            if (isSet)
                text += QByteArray(" ") + name;
        }
        text += "\n  inputs";
        for (const VulkanRenderGraph::ResourceRef &input : sampledInputs)
            text += ' ' + numberText(input.passIndex);
        text += "\n  params";
        for (const VulkanRenderGraph::PushConstantParam &param : params)
            text += ' ' + param.id.toUtf8() + '@' + QByteArray::number(param.floatOffset);
        text += '\n';
    }
    return text;
}
