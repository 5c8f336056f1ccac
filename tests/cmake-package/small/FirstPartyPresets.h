#pragma once

#include "PresetDeclarations.h"

#include <iterator>

// The presets of the tool that the tests of the CMake package install. They have few components,
// which are quick to compile.
namespace FirstPartyPresetSource {

inline constexpr ParamDecl kTintParams[] = {
        {.id = "amount",
         .description = "Tint",
         .defaultValue = 0.0F,
         .min = 0.0F,
         .max = 1.0F,
         .step = 0.25F},
};

inline constexpr PassDecl kTintPasses[] = {
        {.component = "tint", .params = kTintParams, .paramCount = std::size(kTintParams)},
        {.component = "stock", .scaleType = kScaleViewport},
};

inline constexpr PassDecl kStockPasses[] = {
        {.component = "stock", .scaleType = kScaleViewport},
};

inline constexpr PresetDecl kPresets[] = {
        {.name = "tint", .passes = kTintPasses, .passCount = std::size(kTintPasses)},
        {.name = "stock", .passes = kStockPasses, .passCount = std::size(kStockPasses)},
};

static_assert(Rules::areKept<kPresets>());

} // namespace FirstPartyPresetSource
