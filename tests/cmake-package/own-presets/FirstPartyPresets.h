#pragma once

#include "PresetDeclarations.h"

#include <iterator>

namespace FirstPartyPresetSource {

inline constexpr PassDecl kTintPasses[] = {
    {.component = "tint", .scaleType = kScaleViewport},
};

inline constexpr PresetDecl kPresets[] = {
    {.name = "tint", .passes = kTintPasses, .passCount = std::size(kTintPasses)},
};

} // namespace FirstPartyPresetSource
