#pragma once

#include <DrawingSupport.h>

#include <RenderGraphManifest.h>

#include <functional>
#include <type_traits>

// Draws components and presets for the tests of the example shaders, on a software device: it gives
// the same numbers on every machine. An error ends the program.

// A picture and how a pass samples it.
struct SampledPicture
{
    const FloatImage *picture;
    bool linearFilter = false;
    bool mipmap = false;
    int wrapMode = 1; // 0 transparent border, 1 clamped to the edge, 2 repeated
};

using Params = QHash<QString, float>;
using Tweak = std::function<void(FrameState &)>;

// Neutral values of components that several tests draw, as far as they are not 0.
inline const Params kComposite = {{QStringLiteral("composite_strength"), 1.0F},
                                  {QStringLiteral("composite_sharp"), 0.6F},
                                  {QStringLiteral("composite_chroma"), 1.1F},
                                  {QStringLiteral("composite_chroma_gain"), 1.0F}};
inline const Params kLinearize = {{QStringLiteral("crt_gamma_out"), 2.4F},
                                  {QStringLiteral("color_saturation"), 1.0F}};
inline const Params kScanline = {{QStringLiteral("beam_min"), 0.1F},
                                 {QStringLiteral("beam_max"), 0.1F},
                                 {QStringLiteral("rgb_beam"), 1.0F},
                                 {QStringLiteral("crt_white"), 100.0F}};

constexpr float kRounding = 2e-5F; // of 32-bit floats through a power and back

// The preset's own values of all its parameters.
Params initialParams(const RenderGraphManifestData::PresetEntry &preset);

// The preset of that name.
const RenderGraphManifestData::PresetEntry &presetEntry(QStringView name);

// The component alone, drawn into 32-bit floats of this size from pictures of such. Its parameters
// are 0 if `params` does not name them; `tweak` changes the rest of the state.
FloatImage evaluate(const QString &component, const QList<SampledPicture> &inputs, QSize size,
                    const Params &params = {}, const Tweak &tweak = {});

// The state of an HDR display; of an SDR one if the headroom is 0.
Tweak display(float headroom);

Params with(Params params, const Params &changes);

FloatImage flat(QSize size, float red, float green, float blue, float alpha = 1.0F);
FloatImage grey(QSize size, float value);
// The same pixels on every run and machine.
FloatImage noise(QSize size, float most = 1.0F);

// Each pixel as a function of its column and row, which gives a grey level or a Pixel.
template<typename Colour>
FloatImage painted(QSize size, Colour colour)
{
    FloatImage picture(size);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            if constexpr (std::is_same_v<decltype(colour(x, y)), Pixel>) {
                picture.at(x, y) = colour(x, y);
            } else {
                const auto level = float(colour(x, y));
                picture.at(x, y) = {level, level, level, 1.0F};
            }
        }
    }
    return picture;
}

double mean(const FloatImage &picture, std::size_t channel);

// Where a channel's light is, and how far it spreads: its centre and standard deviation, across in
// parts of the picture's width and down in parts of its height.
struct Spot
{
    double light = 0.0; // the mean over the picture
    double x = 0.0, y = 0.0;
    double sigmaX = 0.0, sigmaY = 0.0;
};
Spot spotOf(const FloatImage &picture, std::size_t channel = 1);

// The wave that goes through a row so many times: its amplitude, and its phase in cycles. It is
// measured over whole waves in the middle of the row.
struct Wave
{
    double amplitude = 0.0;
    double phase = 0.0;
};
Wave waveIn(const QList<double> &row, double cycles);

// Between light and the presets' signal.
double encoded(double light);
double decoded(double signal);
FloatImage decoded(FloatImage picture);

// Whether a measured value is as expected; these print it if not.
bool isNear(double value, double expected, double within);
bool isBetween(double value, double least, double most);

// Draws a whole preset as the golden manifest has it, with the modules that the build compiled.
// Only one at a time draws a preset: a new one resets the histories.
class PresetDrawing
{
public:
    explicit PresetDrawing(const RenderGraphManifestData::PresetEntry &preset);

    // The output of one pass in the next frame, by default the last one's.
    FloatImage draw(const FloatImage &source, const FrameState &state, int pass = -1);

private:
    OffscreenRenderer &m_renderer;
};

// The largest difference in red, green and blue; infinite if the sizes differ, NaN if one occurs.
float difference(const FloatImage &a, const FloatImage &b);

// Whether that is at most `within`; prints it if not.
bool areAlike(const FloatImage &a, const FloatImage &b, float within);
