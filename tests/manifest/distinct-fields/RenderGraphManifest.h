#pragma once

// Presets written by hand, in the golden manifest's records.
#define kPresets kGoldenPresets
#include "../golden/RenderGraphManifest.h"
#undef kPresets

// Keeps the tables aligned.
// clang-format off

namespace RenderGraphManifestData {

inline constexpr int kSampledInputs[] = {5, -2, -1};
inline constexpr ParamEntry kParams[] = {
  { "first", 14u },
  { "second \303\251", 3u },
};

// All values but the flags differ.
inline constexpr PassEntry kPasses[] = {
  { "fragment \303\251", "vertex \303\250", "name \303\252", 2, 1, 3.0f, 0.5f, 640, 480, 7,
    false, false, false, "black \303\253", 0.25f, false, 9, false, false, false,
    kSampledInputs, 3, kParams, 2 },
  // One flag each.
  { "f", "v", "n", 0, 0, 1.0f, 1.0f, 0, 0, -1, true, false, false, "", 1.0f, false, 0, false, false,
    false, kSampledInputs, 0, nullptr, 0 },
  { "f", "v", "n", 0, 0, 1.0f, 1.0f, 0, 0, -1, false, true, false, "", 1.0f, false, 0, false, false,
    false, kSampledInputs, 0, nullptr, 0 },
  { "f", "v", "n", 0, 0, 1.0f, 1.0f, 0, 0, -1, false, false, true, "", 1.0f, false, 0, false, false,
    false, kSampledInputs, 0, nullptr, 0 },
  { "f", "v", "n", 0, 0, 1.0f, 1.0f, 0, 0, -1, false, false, false, "", 1.0f, true, 0, false, false,
    false, kSampledInputs, 0, nullptr, 0 },
  { "f", "v", "n", 0, 0, 1.0f, 1.0f, 0, 0, -1, false, false, false, "", 1.0f, false, 0, true, false,
    false, kSampledInputs, 0, nullptr, 0 },
  { "f", "v", "n", 0, 0, 1.0f, 1.0f, 0, 0, -1, false, false, false, "", 1.0f, false, 0, false, true,
    false, kSampledInputs, 0, nullptr, 0 },
  { "f", "v", "n", 0, 0, 1.0f, 1.0f, 0, 0, -1, false, false, false, "", 1.0f, false, 0, false, false,
    true, kSampledInputs, 0, nullptr, 0 },
};

inline constexpr PresetParamEntry kPresetParams[] = {
  { "id \303\251", "label \303\250", 0.5f, 0.25f, -4.0f, 8.0f, 0.125f },
  { "other", "", 0.0f, 1.0f, 2.0f, 3.0f, 4.0f },
};

// One flag each.
inline constexpr PresetEntry kPresets[] = {
  { ":/shaders/hdr.glslp", kPasses, 8, 6, true, kPresetParams, 2, false, false },
  { ":/shaders/vulkan.glsl", kPasses, 1, -1, false, nullptr, 0, true, false },
  { ":/a.b/c-d.e.glslp", kPasses, 0, 0, false, kPresetParams, 1, false, true },
};

}  // namespace RenderGraphManifestData
