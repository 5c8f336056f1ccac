#include "RenderGraphManifest.h"

// The manifest in an application's hands: all of it is constant, so a compiler can check it.
using namespace RenderGraphManifestData;

constexpr bool equal(const char *a, const char *b)
{
    for (; *a != '\0' && *a == *b; ++a, ++b) { }
    return *a == *b;
}

template<typename T, unsigned N>
constexpr unsigned count(const T (&)[N])
{
    return N;
}

static_assert(equal(kPreset_crt_pvm.presetQrcPath, ":/shaders/crt-pvm.glslp"), "a list");
static_assert(equal(kPreset_stock.presetQrcPath, ":/shaders/stock.glsl"), "a single shader");
static_assert(kPreset_crt_pvm.passCount == 19 && count(kPasses_crt_pvm) == 19, "18 and the boost");
static_assert(kPreset_crt_pvm.feedbackPassIndex == 7, "the first persistence pass");
static_assert(kPreset_crt_pvm.usesFrameCount && kPreset_crt_pvm.vulkanOnly, "flags");
static_assert(kPasses_crt_pvm[5].scaleInputPassIndex == 0, "drive scales from linearize");
static_assert(kPasses_crt_pvm[7].isFeedbackReader && kPasses_crt_pvm[7].sampledInputs[1] == -1,
              "persistence reads its history");
static_assert(kPasses_crt_pvm[16].cacheByParameters && kPasses_crt_pvm[16].sampledInputCount == 0,
              "the tile samples nothing");
static_assert(kPasses_crt_pvm[18].isFinalPass, "the boost pass is final");
static_assert(kPass_crt_pvm_13.constantBlackAlpha == 0.0f, "transparent black");
static_assert(kPresetParams_crt_pvm[0].initialValue == 2.4f, "tuned gamma");
static_assert(kPresetParams_crt_pvm[0].defaultValue == 2.5f, "default gamma");
static_assert(equal(kParams_gba_lcd_2[0].id, "LCD_COLOR_PROFILE")
                      && kParams_gba_lcd_2[0].floatOffset == 0,
              "upper case sorts first");
static_assert(kPreset_stock.presetParams == nullptr && kPreset_stock.presetParamCount == 0,
              "stock has no parameters");

// Of all passes of a preset the last one is final.
constexpr bool endsInItsFinalPass(const PresetEntry &preset)
{
    for (int i = 0; i < preset.passCount; ++i) {
        if (preset.passes[i].isFinalPass != (i == preset.passCount - 1))
            return false;
    }
    return preset.passCount > 0;
}

int main()
{
    for (const PresetEntry &preset : kPresets) {
        if (!endsInItsFinalPass(preset))
            return 1;
    }
    return 0;
}
