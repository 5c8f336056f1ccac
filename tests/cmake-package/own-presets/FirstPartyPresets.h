#pragma once

#include "PresetDeclarations.h"

#include <iterator>

namespace FirstPartyPresetSource {

// clang-format off
inline constexpr PassDecl kTintPasses[] = {
    {.component = "tint", .scaleType = kScaleViewport},
};

inline constexpr PresetDecl kPresets[] = {
    {.name = "tint", .passes = kTintPasses, .passCount = std::size(kTintPasses)},
};
// clang-format on

} // namespace FirstPartyPresetSource
