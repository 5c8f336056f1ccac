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

static_assert(count(kPresets) == 12, "all presets");
static_assert(equal(kPresets[0].presetQrcPath, ":/shaders/crt-pvm.glslp"), "in declared order");
static_assert(equal(kPresets[11].presetQrcPath, ":/shaders/stock.glsl"), "in declared order");
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

int main()
{
    int passes = 0;
    for (const PresetEntry &preset : kPresets)
        passes += preset.passCount;
    return passes == 18 * 5 + 19 + 3 + 3 + 5 + 7 + 2 + 1 + 12 ? 0 : 1;
}
