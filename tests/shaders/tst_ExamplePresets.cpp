#include "ShaderTesting.h"

#include "TestSupport.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace RenderGraphManifestData;

// Whole presets, drawn from the manifest as by a renderer.

namespace {

// A scene that moves: a field of full colour, noise and the edges between them.
FloatImage scene(QSize size, int shift)
{
    const FloatImage detail = noise(size);
    return painted(size, [&, shift](int x, int y) {
        const int at = (x + shift) % size.width();
        return 3 * at < size.width() ? Pixel({0.9F, 0.8F, 0.2F, 1.0F}) : detail.at(at, y);
    });
}

// What the preset shows as its last frame of a scene that moves between two.
FloatImage shown(const PresetEntry &preset, const Params &params, int frames)
{
    PresetDrawing drawing(preset);
    FrameState state = {.params = params,
                        .viewport = {160, 240},
                        .frameCount = 2,
                        .hdrOutputActive = true,
                        .hdrHeadroom = 4.0F};
    FloatImage picture;
    for (int frame = 0; frame < frames; ++frame, ++state.frameCount)
        picture = drawing.draw(scene({80, 20}, 3 * frame), state);
    return picture;
}

bool isFinite(const FloatImage &picture)
{
    return std::all_of(picture.pixels.cbegin(), picture.pixels.cend(), [](const Pixel &pixel) {
        return std::all_of(pixel.cbegin(), pixel.cend(), [](float c) { return std::isfinite(c); });
    });
}

// Values of other parameters that a parameter needs to have an effect.
Params requiredValues(const QString &id)
{
    static const QHash<QString, Params> kRequired = {
            {u"mono_warmth"_s, {{u"desaturate"_s, 1.0F}}},
            {u"abl_strength"_s, {{u"abl_current_limit"_s, 0.1F}}},
            {u"signal_active_us"_s, {{u"signal_bandwidth_mhz"_s, 1.0F}}},
            {u"halation_sigma"_s, {{u"halation_strength"_s, 0.5F}}},
            {u"halation_wide"_s, {{u"halation_strength"_s, 0.5F}}},
            {u"hdr_peak"_s, {{u"crt_white"_s, 400.0F}}},
            {u"rgb_beam"_s, {{u"raster_lines"_s, 60.0F}}},
            {u"mask_type"_s, {{u"mask_pitch"_s, 24.0F}}},
            {u"mask_duty"_s, {{u"mask_pitch"_s, 24.0F}}},
            {u"mask_edge"_s, {{u"mask_pitch"_s, 24.0F}}},
            {u"mask_strength"_s, {{u"mask_pitch"_s, 24.0F}}},
    };
    return kRequired.value(id);
}

bool reads(const PassEntry &pass, const char *id)
{
    return std::any_of(pass.params, pass.params + pass.paramCount,
                       [id](const ParamEntry &param) { return qstrcmp(param.id, id) == 0; });
}

// The parameter's id, then the modules that read it.
QStringList useOf(const PresetEntry &preset, const char *id)
{
    QStringList use = {QString::fromUtf8(id)};
    for (int pass = 0; pass < preset.passCount; ++pass) {
        const PassEntry &entry = preset.passes[pass];
        if (reads(entry, id))
            use.append(QString::fromUtf8(entry.fragmentSpirvResource));
    }
    return use;
}

// Whether a pass reads the parameter together with its own previous output: that differs from the
// picture from the second frame on.
bool needsHistory(const PresetEntry &preset, const char *id)
{
    return std::any_of(
            preset.passes, preset.passes + preset.passCount,
            [id](const PassEntry &pass) { return pass.isFeedbackReader && reads(pass, id); });
}

} // namespace

class TestExamplePresets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyParameterIsSeen_data();
    void everyParameterIsSeen();
};

void TestExamplePresets::everyParameterIsSeen_data()
{
    QTest::addColumn<const PresetEntry *>("preset");
    QTest::addColumn<const PresetParamEntry *>("param");
    // Of presets that bind a parameter in the same components only the first one is tested.
    QSet<QStringList> tried;
    for (const PresetEntry &preset : kPresets) {
        const QString name = QFileInfo(QString::fromUtf8(preset.presetQrcPath)).baseName();
        for (int i = 0; i < preset.presetParamCount; ++i) {
            const PresetParamEntry &param = preset.presetParams[i];
            const QStringList use = useOf(preset, param.id);
            if (tried.contains(use))
                continue;
            tried.insert(use);
            if (!isTested(name))
                continue;
            QTest::addRow("%s %s", qUtf8Printable(name), param.id) << &preset << &param;
        }
    }
}

void TestExamplePresets::everyParameterIsSeen()
{
    QFETCH(const PresetEntry *, preset);
    QFETCH(const PresetParamEntry *, param);
    const QString id = QString::fromUtf8(param->id);
    Params params = initialParams(*preset);
    params.insert(requiredValues(id));

    params.insert(id, param->min);
    const int frames = needsHistory(*preset, param->id) ? 2 : 1;
    const FloatImage lowest = shown(*preset, params, frames);
    // Both ends of this range have the same effect: an unlimited bandwidth.
    params.insert(id, id == u"signal_bandwidth_mhz"_s ? 1.0F : param->max);
    const FloatImage highest = shown(*preset, params, frames);
    QVERIFY(isFinite(lowest));
    QVERIFY(isFinite(highest));
    QVERIFY(isBetween(double(difference(lowest, highest)), 2.0 / 255.0, 1e6));
}

QTEST_GUILESS_MAIN(TestExamplePresets)
#include "tst_ExamplePresets.moc"
