#pragma once

#include <QList>
#include <QString>

// The compiled form of one shader preset: full-screen passes in execution order, each with its
// shaders, its output image, the images it samples and the parameters it reads. A plain value type,
// shared by the compiler that builds it and the renderer that draws from it.
class VulkanRenderGraph
{
public:
    // Per-pass limits, set by the renderer's descriptor set and by its 128-byte push-constant
    // block.
    static constexpr int MaxSampledInputsPerPass = 8;
    static constexpr int MaxParamFloatsPerPass = 15;

    // The integers of both enumerations are written into the generated manifest: never reorder.
    enum class Format : quint8 { R11G11B10F = 0, RGBA16F = 1, RGBA8 = 2, RGBA32F = 3 };
    enum class ScaleSource : quint8 { Source = 0, Viewport = 1, Absolute = 2 };

    // The enumerator's name; empty for a number without an enumerator.
    static QLatin1StringView formatName(Format format);

    // One sampled image.
    struct ResourceRef
    {
        static constexpr int Feedback = -1; // the pass's own output of the previous frame
        static constexpr int SourceImage = -2; // the picture that enters the preset

        int passIndex = SourceImage; // or 0 and up: the output of that earlier pass
    };

    struct PushConstantParam
    {
        QString id;
        unsigned int floatOffset = 0; // float slot in the push-constant array, 0..14
    };

    struct Pass
    {
        QString fragmentSpirvResource;
        QString vertexSpirvResource;
        QString debugName;

        Format format = Format::R11G11B10F;
        ScaleSource scaleSource = ScaleSource::Source;
        float scaleX = 1.0F; // factor for Source and Viewport
        float scaleY = 1.0F;
        int absoluteWidth = 0; // pixels, for Absolute; 0 leaves that extent to the renderer
        int absoluteHeight = 0;
        int scaleInputPassIndex = -1; // pass whose extent Source scales from; -1: the direct input

        bool linearFilter = true;
        bool mipmap = false;
        bool cacheByParameters = false; // rendered from parameters alone; redrawn when they change

        QString constantBlackWhenZero; // parameter id: while it is 0 the output is constant black
        float constantBlackAlpha = 1.0F; // 0 or 1
        bool shareConstantBlack = false; // that black image may be shared between passes
        int wrapMode = 0; // the renderer's number, passed through

        bool isFeedbackTarget = false; // the output is kept for the next frame
        bool isFeedbackReader = false; // the pass samples its own previous output
        bool isFinalPass = false; // the pass writes the presented image

        QList<ResourceRef> sampledInputs; // in binding order
        QList<PushConstantParam> params;
    };

    QList<Pass> passes;
    int feedbackPassIndex = -1; // -1: no feedback pass
    QString presetQrcPath;
    bool finalRealPassRespondsToHdr = false;

    // Whether the graph keeps every rule that the renderer relies on: table sizes and push-constant
    // slots, inputs that are already rendered, feedback and constant-black topology, and exactly
    // one final pass, the last. Reads `passes` and `feedbackPassIndex` only.
    bool isValid() const;
};
