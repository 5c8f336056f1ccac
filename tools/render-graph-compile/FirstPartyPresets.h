#pragma once

#include "PresetDeclarations.h"

#include <iterator>

// The first-party presets: the hand-written data that the tool compiles. The order of presets, of
// passes within a preset, of parameters and of overrides decides the order of the manifest, the
// pass indices and the push-constant slots. A row sets only the fields that differ from the
// record's defaults.
namespace FirstPartyPresetSource {

// Keeps the tables aligned.
// clang-format off

inline constexpr ParamDecl kCrtDriveParams[] = {
    {.id = "crt_gamma_out", .description = "Output CRT Gamma",
     .defaultValue = 2.5F, .min = 2.0F, .max = 3.0F, .step = 0.05F},
    {.id = "gun_cutoff", .description = "Gun Cutoff Offset (BT.1886 Black Toe)",
     .defaultValue = 0.06F, .min = 0.0F, .max = 0.2F, .step = 0.005F},
    {.id = "color_saturation", .description = "Colour Saturation",
     .defaultValue = 1.0F, .min = 0.5F, .max = 2.0F, .step = 0.05F},
    {.id = "phosphor_gamut", .description = "Phosphor Gamut (709/SMPTE-C/EBU/G90f)",
     .defaultValue = 1.0F, .min = 0.0F, .max = 3.0F, .step = 1.0F},
    {.id = "color_temperature", .description = "Color Temperature (D65-D93)",
     .defaultValue = 0.5F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "desaturate", .description = "Desaturate (mono CRT)",
     .defaultValue = 0.0F, .min = 0.0F, .max = 1.0F, .step = 1.0F},
    {.id = "mono_warmth", .description = "Mono Phosphor Warmth",
     .defaultValue = 0.5F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "signal_bandwidth_mhz", .description = "RGB Bandwidth MHz (0 = Unspecified)",
     .defaultValue = 0.0F, .min = 0.0F, .max = 100.0F, .step = 0.5F},
    {.id = "signal_active_us", .description = "Active Scan Duration (Microseconds)",
     .defaultValue = 53.333332F, .min = 5.0F, .max = 60.0F, .step = 0.1F},
};

inline constexpr ParamDecl kCrtOpticsParams[] = {
    {.id = "halation_sigma", .description = "Halation Blur Radius",
     .defaultValue = 3.0F, .min = 1.0F, .max = 8.0F, .step = 0.5F},
    {.id = "halation_strength", .description = "Halation Strength",
     .defaultValue = 0.04F, .min = 0.0F, .max = 0.5F, .step = 0.01F},
    {.id = "halation_wide", .description = "Wide Halo Weight (Faceplate Reflection)",
     .defaultValue = 1.0F, .min = 0.0F, .max = 4.0F, .step = 0.05F},
    {.id = "black_floor", .description = "Room Light on Screen / Reference White",
     .defaultValue = 0.0F, .min = 0.0F, .max = 0.1F, .step = 0.001F},
    {.id = "crt_white", .description = "CRT Reference White (cd/m2, HDR)",
     .defaultValue = 100.0F, .min = 20.0F, .max = 400.0F, .step = 5.0F},
    {.id = "abl_strength", .description = "Auto Beam Limiter",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 0.01F},
    {.id = "abl_current_limit", .description = "Current Budget / Reference Full White",
     .defaultValue = 1.0F, .min = 0.05F, .max = 2.0F, .step = 0.05F},
};

inline constexpr ParamDecl kCrtPersistenceParams[] = {
    {.id = "persist_r", .description = "Red Tail Retention at 60 Hz",
     .defaultValue = 0.04F, .min = 0.0F, .max = 1.0F, .step = 0.01F},
    {.id = "persist_g", .description = "Green Tail Retention at 60 Hz",
     .defaultValue = 0.0F, .min = 0.0F, .max = 1.0F, .step = 0.01F},
    {.id = "persist_b", .description = "Blue Tail Retention at 60 Hz",
     .defaultValue = 0.0F, .min = 0.0F, .max = 1.0F, .step = 0.01F},
};

inline constexpr ParamDecl kCrtBeamParams[] = {
    {.id = "beam_min", .description = "Beam Sigma / Picture Height x 240 (Dark)",
     .defaultValue = 0.03F, .min = 0.02F, .max = 0.5F, .step = 0.01F},
    {.id = "beam_max", .description = "Beam Sigma / Picture Height x 240 (Bright)",
     .defaultValue = 0.19F, .min = 0.02F, .max = 0.55F, .step = 0.01F},
    {.id = "rgb_beam", .description = "Independent RGB Beam Width",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 1.0F},
    {.id = "raster_lines", .description = "Raster Standard Lines (0 = core: NTSC 240/480, PAL 288/576)",
     .defaultValue = 0.0F, .min = 0.0F, .max = 1200.0F, .step = 1.0F},
    {.id = "raster_offset", .description = "Active Raster Top Offset",
     .defaultValue = 0.0F, .min = 0.0F, .max = 120.0F, .step = 1.0F},
    {.id = "raster_interlace", .description = "Input Contains Alternating Fields",
     .defaultValue = 0.0F, .min = 0.0F, .max = 1.0F, .step = 1.0F},
    {.id = "conv_rx", .description = "Red Convergence X",
     .defaultValue = 0.0F, .min = -3.0F, .max = 3.0F, .step = 0.1F},
    {.id = "conv_ry", .description = "Red Convergence Y",
     .defaultValue = 0.0F, .min = -3.0F, .max = 3.0F, .step = 0.1F},
    {.id = "conv_bx", .description = "Blue Convergence X",
     .defaultValue = 0.0F, .min = -3.0F, .max = 3.0F, .step = 0.1F},
    {.id = "conv_by", .description = "Blue Convergence Y",
     .defaultValue = 0.0F, .min = -3.0F, .max = 3.0F, .step = 0.1F},
    {.id = "barrel_distortion", .description = "Screen Curvature",
     .defaultValue = 0.0F, .min = 0.0F, .max = 0.15F, .step = 0.005F},
    {.id = "corner_radius", .description = "Corner Radius / Screen Height",
     .defaultValue = 0.0F, .min = 0.0F, .max = 0.1F, .step = 0.005F},
    {.id = "overscan", .description = "Overscan (Fraction of Picture Height per Edge)",
     .defaultValue = 0.0F, .min = 0.0F, .max = 0.15F, .step = 0.005F},
};

inline constexpr ParamDecl kCrtTileParams[] = {
    {.id = "mask_type", .description = "Mask Type (0 grille, 1 dots, 2 slots)",
     .defaultValue = 0.0F, .min = 0.0F, .max = 2.0F, .step = 1.0F},
    {.id = "mask_duty", .description = "Grille Stripe Fill",
     .defaultValue = 0.7F, .min = 0.4F, .max = 1.0F, .step = 0.05F},
    {.id = "mask_edge", .description = "Grille Stripe Edge Softness (Sigma / Stripe Pitch)",
     .defaultValue = 0.06F, .min = 0.0F, .max = 0.2F, .step = 0.01F},
};

inline constexpr ParamDecl kCrtScreenParams[] = {
    {.id = "barrel_distortion", .description = "Screen Curvature",
     .defaultValue = 0.0F, .min = 0.0F, .max = 0.15F, .step = 0.005F},
    {.id = "corner_radius", .description = "Corner Radius / Screen Height",
     .defaultValue = 0.0F, .min = 0.0F, .max = 0.1F, .step = 0.005F},
    {.id = "vignette_strength", .description = "Vignette Strength",
     .defaultValue = 0.0F, .min = 0.0F, .max = 0.5F, .step = 0.01F},
    {.id = "overscan", .description = "Overscan (Fraction of Picture Height per Edge)",
     .defaultValue = 0.0F, .min = 0.0F, .max = 0.15F, .step = 0.005F},
    {.id = "mask_pitch", .description = "RGB Repeat Pitch at 960px Height",
     .defaultValue = 2.5F, .min = 0.5F, .max = 24.0F, .step = 0.25F},
    {.id = "mask_strength", .description = "Mask Strength",
     .defaultValue = 0.85F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "hdr_peak", .description = "HDR Peak / Reference White (0 = Automatic)",
     .defaultValue = 0.0F, .min = 0.0F, .max = 16.0F, .step = 0.1F},
};

inline constexpr ParamDecl kConsumerPass0Params[] = {
    {.id = "composite_strength", .description = "Composite Amount",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "composite_sharp", .description = "Composite Luma Sharpness",
     .defaultValue = 0.6F, .min = 0.2F, .max = 1.0F, .step = 0.05F},
    {.id = "composite_chroma", .description = "Chroma Spread (256-sample line)",
     .defaultValue = 1.1F, .min = 0.5F, .max = 3.0F, .step = 0.05F},
    {.id = "composite_chroma_delay", .description = "Chroma Delay (256-sample line)",
     .defaultValue = 0.0F, .min = -2.0F, .max = 2.0F, .step = 0.05F},
    {.id = "composite_chroma_gain", .description = "Receiver Colour Gain",
     .defaultValue = 1.15F, .min = 0.0F, .max = 2.0F, .step = 0.05F},
    {.id = "composite_chroma_vertical", .description = "Adjacent-Line Colour Blend",
     .defaultValue = 0.25F, .min = 0.0F, .max = 0.5F, .step = 0.05F},
};

inline constexpr ParamDecl kGbaColorParams[] = {
    {.id = "LCD_COLOR_PROFILE", .description = "Upstream Color Profile (Experimental)",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 1.0F},
};

inline constexpr ParamDecl kLcdGhostParams[] = {
    {.id = "ghost_rise", .description = "LCD Response Rise (drive)",
     .defaultValue = 0.5F, .min = 0.05F, .max = 1.0F, .step = 0.05F},
    {.id = "ghost_fall", .description = "LCD Response Fall (relax)",
     .defaultValue = 0.4F, .min = 0.05F, .max = 1.0F, .step = 0.05F},
    {.id = "ghost_hdr_speed", .description = "LCD Response HDR Speed (comfort)",
     .defaultValue = 1.0F, .min = 1.0F, .max = 3.0F, .step = 0.05F},
};

inline constexpr ParamDecl kLcdSubpixelParams[] = {
    {.id = "lcd_aperture_x", .description = "LCD Subpixel Aperture Width",
     .defaultValue = 0.91F, .min = 0.4F, .max = 1.0F, .step = 0.02F},
    {.id = "lcd_aperture_y", .description = "LCD Subpixel Aperture Height",
     .defaultValue = 0.97F, .min = 0.4F, .max = 1.0F, .step = 0.02F},
    {.id = "lcd_diffuse", .description = "LCD Panel Diffusion",
     .defaultValue = 0.6F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "LCD_COLOR_PROFILE", .description = "Upstream Color Profile (Experimental)",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 1.0F},
    {.id = "lcd_grid_contrast", .description = "LCD Grid Contrast",
     .defaultValue = 0.4F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "lcd_spill", .description = "LCD Aperture Spill",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
};

inline constexpr ParamDecl kGameboyLcdPass0Params[] = {
    {.id = "GBC_ADAPT", .description = "GBC White Adaptation",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "GBC_BACKING", .description = "GBC Reflective Backing",
     .defaultValue = 0.55F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "GBC_EXPAND", .description = "GBC Gamut Expansion",
     .defaultValue = 0.0F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "GBC_GAMUT", .description = "GBC Gamut Compression",
     .defaultValue = 0.4F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "LCD_COLOR_PROFILE", .description = "Upstream Color Profile (Experimental)",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 1.0F},
};

inline constexpr ParamDecl kDmgLcdPass0Params[] = {
    {.id = "DMG_TINT", .description = "DMG Green Tint",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
};

inline constexpr ParamDecl kDmgCrosstalkParams[] = {
    {.id = "dmg_crosstalk", .description = "DMG Column Crosstalk",
     .defaultValue = 0.35F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
    {.id = "dmg_crosstalk_reach", .description = "DMG Crosstalk Reach",
     .defaultValue = 1.5F, .min = 0.25F, .max = 12.0F, .step = 0.25F},
};

inline constexpr ParamDecl kDmgOcclusionParams[] = {
    {.id = "dmg_shadow_offset", .description = "DMG Air Gap Depth",
     .defaultValue = 1.35F, .min = 0.0F, .max = 4.0F, .step = 0.05F},
};

inline constexpr ParamDecl kDmgLcdPass3Params[] = {
    {.id = "dmg_grid_gap", .description = "DMG Grid Gap",
     .defaultValue = 0.11F, .min = 0.0F, .max = 0.4F, .step = 0.01F},
    {.id = "dmg_shadow_offset", .description = "DMG Air Gap Depth",
     .defaultValue = 1.35F, .min = 0.0F, .max = 4.0F, .step = 0.05F},
    {.id = "dmg_shadow_strength", .description = "DMG Shadow Opacity",
     .defaultValue = 0.34F, .min = 0.0F, .max = 1.0F, .step = 0.01F},
    {.id = "dmg_panel_margin", .description = "DMG Underscan Border",
     .defaultValue = 3.0F, .min = 0.0F, .max = 12.0F, .step = 1.0F},
    {.id = "dmg_margin_gain", .description = "DMG Underscan Glass Gain",
     .defaultValue = 1.075F, .min = 0.5F, .max = 1.5F, .step = 0.005F},
    {.id = "dmg_grain", .description = "DMG Reflector Grain",
     .defaultValue = 0.08F, .min = 0.0F, .max = 0.5F, .step = 0.005F},
    {.id = "dmg_border_fade", .description = "DMG Border Fade (Source Pixels)",
     .defaultValue = 10.7F, .min = 0.1F, .max = 40.0F, .step = 0.1F},
};

inline constexpr ParamDecl kSfxStrengthParams[] = {
    {.id = "SFX_CLR", .description = "Edge Similarity Threshold",
     .defaultValue = 0.5F, .min = 0.01F, .max = 1.0F, .step = 0.01F},
    {.id = "SFX_SAA", .description = "Smooth Antialiased Edges",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 1.0F},
};

inline constexpr ParamDecl kSfxCornerParams[] = {
    {.id = "SFX_SCN", .description = "Smooth Corners",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 1.0F},
};

inline constexpr ParamDecl kRewindPass0Params[] = {
    {.id = "wiggle", .description = "Wiggle",
     .defaultValue = 3.0F, .min = 0.0F, .max = 10.0F, .step = 1.0F},
    {.id = "smear", .description = "Chroma Smear",
     .defaultValue = 0.5F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
};

inline constexpr ParamDecl kRewindPass1Params[] = {
    {.id = "noiseAmount", .description = "noiseAmount",
     .defaultValue = 0.15F, .min = 0.0F, .max = 1.0F, .step = 0.1F},
    {.id = "lineNoise", .description = "lineNoise",
     .defaultValue = 0.3F, .min = 0.0F, .max = 1.0F, .step = 0.1F},
    {.id = "tapeSpeed", .description = "tapeSpeed",
     .defaultValue = 1.0F, .min = 0.0F, .max = 1.0F, .step = 0.1F},
};

inline constexpr PassDecl kCrtPasses[] = {
    {.component = "crt-linearize", .extentAlias = "CRT_LINEARIZED", .linearFilter = true,
     .scaleType = kScaleAbsolute, .absoluteWidth = 4096, .reserved = 1, .wrapMode = 1,
     .params = kCrtDriveParams, .paramCount = std::size(kCrtDriveParams)},
    {.component = "crt-abl-tiles", .scaleType = kScaleAbsolute,
     .absoluteWidth = 256, .absoluteHeight = 240, .reserved = 1, .wrapMode = 1},
    {.component = "crt-abl-reduce", .scaleType = kScaleAbsolute,
     .absoluteWidth = 256, .absoluteHeight = 30, .reserved = 1, .wrapMode = 1},
    {.component = "crt-abl-reduce", .scaleType = kScaleAbsolute,
     .absoluteWidth = 8, .absoluteHeight = 30, .reserved = 1, .wrapMode = 1},
    {.component = "crt-abl", .extentAlias = "CRT_ABL", .scaleType = kScaleAbsolute,
     .absoluteWidth = 1, .absoluteHeight = 1, .reserved = 1, .wrapMode = 1,
     .params = kCrtOpticsParams, .paramCount = std::size(kCrtOpticsParams)},
    {.component = "crt-drive", .extentAlias = "CRT_DRIVE", .linearFilter = true,
     .reserved = 1, .wrapMode = 1, .scaleInputAlias = "CRT_LINEARIZED"},
    {.component = "crt-horizontal", .extentAlias = "CRT_OPTICAL", .linearFilter = true,
     .reserved = 1, .wrapMode = 1},
    {.component = "crt-persistence", .extentAlias = "CRT_ENVELOPE", .linearFilter = true,
     .reserved = 1, .wrapMode = 1,
     .params = kCrtPersistenceParams, .paramCount = std::size(kCrtPersistenceParams),
     .feedback = true},
    {.component = "crt-scanline", .extentAlias = "CRT_BEAM", .linearFilter = true,
     .scaleType = kScaleViewport, .reserved = 1, .wrapMode = 1,
     .params = kCrtBeamParams, .paramCount = std::size(kCrtBeamParams)},
    {.component = "crt-persistence", .extentAlias = "CRT_SCANLINE", .linearFilter = true,
     .scaleType = kScaleViewport, .reserved = 1, .wrapMode = 1, .feedback = true},
    {.component = "crt-optics-down", .extentAlias = "CRT_OPTICS_DOWN", .linearFilter = true,
     .scaleType = kScaleAbsolute, .absoluteWidth = 320, .absoluteHeight = 240,
     .reserved = 1, .wrapMode = 1},
    {.component = "crt-halation-blur-h", .linearFilter = true, .reserved = 1, .wrapMode = 1,
     .constantBlackWhenZero = "halation_strength", .shareConstantBlack = true},
    {.component = "crt-halation-blur-v", .extentAlias = "CRT_HALATION", .linearFilter = true,
     .reserved = 1, .wrapMode = 1,
     .params = kCrtOpticsParams, .paramCount = std::size(kCrtOpticsParams),
     .constantBlackWhenZero = "halation_strength", .shareConstantBlack = true},
    {.component = "crt-halation-wide-down", .linearFilter = true, .scaleType = kScaleAbsolute,
     .absoluteWidth = 80, .absoluteHeight = 60, .reserved = 1, .wrapMode = 1,
     .constantBlackWhenZero = "halation_strength", .constantBlackAlpha = 0.0F,
     .shareConstantBlack = true},
    {.component = "crt-halation-blur-h", .linearFilter = true, .reserved = 1, .wrapMode = 1,
     .constantBlackWhenZero = "halation_strength", .shareConstantBlack = true},
    {.component = "crt-halation-blur-v", .extentAlias = "CRT_HALATION_WIDE", .linearFilter = true,
     .reserved = 1, .wrapMode = 1, .constantBlackWhenZero = "halation_strength",
     .shareConstantBlack = true},
    {.component = "crt-phosphor-tile", .extentAlias = "CRT_PHOSPHOR_TILE", .linearFilter = true,
     .scaleType = kScaleAbsolute, .absoluteWidth = 256, .absoluteHeight = 256,
     .reserved = 1, .wrapMode = 2,
     .params = kCrtTileParams, .paramCount = std::size(kCrtTileParams), .mipmap = true,
     .cacheByParameters = true},
    {.component = "crt-screen", .linearFilter = true, .scaleType = kScaleViewport,
     .reserved = 1, .wrapMode = 1,
     .params = kCrtScreenParams, .paramCount = std::size(kCrtScreenParams)},
};

inline constexpr PassDecl kConsumerFirstPasses[] = {
    {.component = "crt-consumer-composite", .linearFilter = true, .scaleType = kScaleAbsolute,
     .absoluteWidth = 4096, .reserved = 1, .wrapMode = 1,
     .params = kConsumerPass0Params, .paramCount = std::size(kConsumerPass0Params)},
};

inline constexpr auto kConsumerPasses = joined(kConsumerFirstPasses, kCrtPasses);

inline constexpr PassDecl kGbaLcdPasses[] = {
    {.component = "gba-color", .params = kGbaColorParams, .paramCount = std::size(kGbaColorParams)},
    {.component = "gba-ghost", .params = kLcdGhostParams, .paramCount = std::size(kLcdGhostParams)},
    {.component = "gba-subpixel", .scaleType = kScaleViewport,
     .params = kLcdSubpixelParams, .paramCount = std::size(kLcdSubpixelParams)},
};

inline constexpr PassDecl kGameboyLcdPasses[] = {
    {.component = "authentic-gbc",
     .params = kGameboyLcdPass0Params, .paramCount = std::size(kGameboyLcdPass0Params)},
    {.component = "gba-ghost", .params = kLcdGhostParams, .paramCount = std::size(kLcdGhostParams)},
    {.component = "gba-subpixel", .scaleType = kScaleViewport,
     .params = kLcdSubpixelParams, .paramCount = std::size(kLcdSubpixelParams)},
};

inline constexpr PassDecl kDmgLcdPasses[] = {
    {.component = "dmg-color",
     .params = kDmgLcdPass0Params, .paramCount = std::size(kDmgLcdPass0Params)},
    {.component = "dmg-ghost", .params = kLcdGhostParams, .paramCount = std::size(kLcdGhostParams)},
    {.component = "dmg-crosstalk", .extentAlias = "DMG_CELLS",
     .params = kDmgCrosstalkParams, .paramCount = std::size(kDmgCrosstalkParams)},
    {.component = "dmg-occlusion", .linearFilter = true,
     .params = kDmgOcclusionParams, .paramCount = std::size(kDmgOcclusionParams)},
    {.component = "crt-dmg-grid", .scaleType = kScaleViewport,
     .params = kDmgLcdPass3Params, .paramCount = std::size(kDmgLcdPass3Params)},
};

inline constexpr PassDecl kNoPixelsPasses[] = {
    {.component = "stock", .extentAlias = "scalefx_source", .reserved = 1, .wrapMode = 1},
    {.component = "scalefx-pass0", .extentAlias = "scalefx_metric", .reserved = 1, .wrapMode = 1},
    {.component = "scalefx-pass1", .reserved = 1, .wrapMode = 1,
     .params = kSfxStrengthParams, .paramCount = std::size(kSfxStrengthParams)},
    {.component = "scalefx-pass2", .reserved = 1, .wrapMode = 1},
    {.component = "scalefx-pass3", .reserved = 1, .wrapMode = 1,
     .params = kSfxCornerParams, .paramCount = std::size(kSfxCornerParams)},
    {.component = "scalefx-pass4", .scaleX = 3.0F, .scaleY = 3.0F, .reserved = 1, .wrapMode = 1},
    {.component = "smooth-resample", .scaleType = kScaleViewport, .reserved = 1, .wrapMode = 1},
};

inline constexpr PassDecl kRewindPasses[] = {
    {.component = "rewind", .linearFilter = true,
     .params = kRewindPass0Params, .paramCount = std::size(kRewindPass0Params)},
    {.component = "rewind-noise", .linearFilter = true, .scaleType = kScaleViewport,
     .params = kRewindPass1Params, .paramCount = std::size(kRewindPass1Params)},
};

inline constexpr PassDecl kStockPasses[] = {
    {.component = "stock", .linearFilter = true, .scaleType = kScaleViewport},
};

inline constexpr ValueOverride kPvmValueOverrides[] = {
    {.id = "signal_bandwidth_mhz", .value = 6.0F},
    {.id = "gun_cutoff", .value = 0.06F},
    {.id = "phosphor_gamut", .value = 2.0F},
    {.id = "color_temperature", .value = 0.0F},
    {.id = "persist_r", .value = 0.04F},
    {.id = "persist_g", .value = 0.0F},
    {.id = "persist_b", .value = 0.0F},
    {.id = "halation_sigma", .value = 3.0F},
    {.id = "halation_strength", .value = 0.03F},
    {.id = "halation_wide", .value = 1.0F},
    {.id = "black_floor", .value = 0.0F},
    {.id = "crt_white", .value = 100.0F},
    {.id = "beam_min", .value = 0.06F},
    {.id = "beam_max", .value = 0.24F},
    {.id = "mask_pitch", .value = 4.188482F},
    {.id = "mask_strength", .value = 0.9F},
    {.id = "mask_duty", .value = 0.55F},
    {.id = "mask_edge", .value = 0.06F},
    {.id = "mask_type", .value = 0.0F},
    {.id = "conv_rx", .value = 0.0F},
    {.id = "conv_ry", .value = 0.0F},
    {.id = "conv_bx", .value = 0.0F},
    {.id = "conv_by", .value = 0.0F},
    {.id = "barrel_distortion", .value = 0.0F},
    {.id = "corner_radius", .value = 0.0F},
    {.id = "vignette_strength", .value = 0.0F},
    {.id = "crt_gamma_out", .value = 2.4F},
    {.id = "abl_strength", .value = 1.0F},
    {.id = "color_saturation", .value = 1.0F},
    {.id = "overscan", .value = 0.0F},
};

inline constexpr ValueOverride kBvmValueOverrides[] = {
    {.id = "signal_bandwidth_mhz", .value = 6.0F},
    {.id = "gun_cutoff", .value = 0.045F},
    {.id = "phosphor_gamut", .value = 1.0F},
    {.id = "color_temperature", .value = 0.0F},
    {.id = "persist_r", .value = 0.03F},
    {.id = "persist_g", .value = 0.0F},
    {.id = "persist_b", .value = 0.0F},
    {.id = "halation_sigma", .value = 3.0F},
    {.id = "halation_strength", .value = 0.02F},
    {.id = "halation_wide", .value = 0.8F},
    {.id = "black_floor", .value = 0.0F},
    {.id = "crt_white", .value = 100.0F},
    {.id = "beam_min", .value = 0.04F},
    {.id = "beam_max", .value = 0.18F},
    {.id = "mask_pitch", .value = 2.094241F},
    {.id = "mask_strength", .value = 0.9F},
    {.id = "mask_duty", .value = 0.7F},
    {.id = "mask_edge", .value = 0.06F},
    {.id = "mask_type", .value = 0.0F},
    {.id = "conv_rx", .value = 0.0F},
    {.id = "conv_ry", .value = 0.0F},
    {.id = "conv_bx", .value = 0.0F},
    {.id = "conv_by", .value = 0.0F},
    {.id = "barrel_distortion", .value = 0.0F},
    {.id = "corner_radius", .value = 0.0F},
    {.id = "vignette_strength", .value = 0.0F},
    {.id = "crt_gamma_out", .value = 2.4F},
    {.id = "abl_strength", .value = 1.0F},
    {.id = "color_saturation", .value = 1.0F},
    {.id = "overscan", .value = 0.0F},
};

inline constexpr ValueOverride kArcadeValueOverrides[] = {
    {.id = "signal_bandwidth_mhz", .value = 6.0F},
    {.id = "gun_cutoff", .value = 0.07F},
    {.id = "phosphor_gamut", .value = 1.0F},
    {.id = "color_temperature", .value = 0.35F},
    {.id = "persist_r", .value = 0.06F},
    {.id = "persist_g", .value = 0.02F},
    {.id = "persist_b", .value = 0.0F},
    {.id = "halation_sigma", .value = 3.0F},
    {.id = "halation_strength", .value = 0.04F},
    {.id = "halation_wide", .value = 1.2F},
    {.id = "black_floor", .value = 0.0F},
    {.id = "crt_white", .value = 120.0F},
    {.id = "beam_min", .value = 0.1F},
    {.id = "beam_max", .value = 0.3F},
    {.id = "mask_pitch", .value = 4.0F},
    {.id = "mask_strength", .value = 0.9F},
    {.id = "mask_duty", .value = 0.7F},
    {.id = "mask_edge", .value = 0.06F},
    {.id = "mask_type", .value = 2.0F},
    {.id = "conv_rx", .value = 0.15F},
    {.id = "conv_ry", .value = 0.0F},
    {.id = "conv_bx", .value = -0.15F},
    {.id = "conv_by", .value = 0.0F},
    {.id = "barrel_distortion", .value = 0.03F},
    {.id = "corner_radius", .value = 0.0283F},
    {.id = "vignette_strength", .value = 0.1F},
    {.id = "overscan", .value = 0.0F},
    {.id = "crt_gamma_out", .value = 2.4F},
    {.id = "abl_strength", .value = 1.0F},
    {.id = "color_saturation", .value = 1.0F},
};

inline constexpr ValueOverride kPcValueOverrides[] = {
    {.id = "gun_cutoff", .value = 0.045F},
    {.id = "phosphor_gamut", .value = 3.0F},
    {.id = "color_temperature", .value = 0.5F},
    {.id = "persist_r", .value = 0.02F},
    {.id = "persist_g", .value = 0.0F},
    {.id = "persist_b", .value = 0.0F},
    {.id = "halation_sigma", .value = 2.5F},
    {.id = "halation_strength", .value = 0.02F},
    {.id = "halation_wide", .value = 1.0F},
    {.id = "black_floor", .value = 0.0F},
    {.id = "crt_white", .value = 100.0F},
    {.id = "beam_min", .value = 0.14F},
    {.id = "beam_max", .value = 0.32F},
    {.id = "mask_pitch", .value = 7.5F},
    {.id = "mask_strength", .value = 1.0F},
    {.id = "mask_duty", .value = 0.7F},
    {.id = "mask_edge", .value = 0.06F},
    {.id = "mask_type", .value = 1.0F},
    {.id = "conv_rx", .value = 0.0F},
    {.id = "conv_ry", .value = 0.0F},
    {.id = "conv_bx", .value = 0.0F},
    {.id = "conv_by", .value = 0.0F},
    {.id = "barrel_distortion", .value = 0.0F},
    {.id = "corner_radius", .value = 0.0F},
    {.id = "vignette_strength", .value = 0.0F},
    {.id = "overscan", .value = 0.0F},
    {.id = "crt_gamma_out", .value = 2.2F},
    {.id = "abl_strength", .value = 1.0F},
    {.id = "color_saturation", .value = 1.0F},
};

inline constexpr ValueOverride kBwValueOverrides[] = {
    {.id = "rgb_beam", .value = 0.0F},
    {.id = "gun_cutoff", .value = 0.07F},
    {.id = "phosphor_gamut", .value = 0.0F},
    {.id = "color_temperature", .value = 0.0F},
    {.id = "desaturate", .value = 1.0F},
    {.id = "mono_warmth", .value = 0.2F},
    {.id = "persist_r", .value = 0.03F},
    {.id = "persist_g", .value = 0.02F},
    {.id = "persist_b", .value = 0.02F},
    {.id = "halation_sigma", .value = 2.5F},
    {.id = "halation_strength", .value = 0.06F},
    {.id = "halation_wide", .value = 1.5F},
    {.id = "black_floor", .value = 0.0F},
    {.id = "crt_white", .value = 120.0F},
    {.id = "beam_min", .value = 0.12F},
    {.id = "beam_max", .value = 0.35F},
    {.id = "mask_pitch", .value = 9.0F},
    {.id = "mask_strength", .value = 0.0F},
    {.id = "mask_duty", .value = 0.7F},
    {.id = "mask_edge", .value = 0.06F},
    {.id = "mask_type", .value = 0.0F},
    {.id = "conv_rx", .value = 0.0F},
    {.id = "conv_ry", .value = 0.0F},
    {.id = "conv_bx", .value = 0.0F},
    {.id = "conv_by", .value = 0.0F},
    {.id = "barrel_distortion", .value = 0.04F},
    {.id = "corner_radius", .value = 0.037F},
    {.id = "vignette_strength", .value = 0.25F},
    {.id = "overscan", .value = 0.0F},
    {.id = "crt_gamma_out", .value = 2.4F},
    {.id = "abl_strength", .value = 1.0F},
};

inline constexpr ValueOverride kConsumerValueOverrides[] = {
    {.id = "composite_strength", .value = 1.0F},
    {.id = "composite_sharp", .value = 0.95F},
    {.id = "composite_chroma", .value = 1.35F},
    {.id = "composite_chroma_delay", .value = 0.0F},
    {.id = "composite_chroma_gain", .value = 1.25F},
    {.id = "composite_chroma_vertical", .value = 0.25F},
    {.id = "rgb_beam", .value = 1.0F},
    {.id = "gun_cutoff", .value = 0.08F},
    {.id = "phosphor_gamut", .value = 1.0F},
    {.id = "color_temperature", .value = 0.35F},
    {.id = "persist_r", .value = 0.12F},
    {.id = "persist_g", .value = 0.05F},
    {.id = "persist_b", .value = 0.01F},
    {.id = "halation_sigma", .value = 3.0F},
    {.id = "halation_strength", .value = 0.05F},
    {.id = "halation_wide", .value = 1.2F},
    {.id = "black_floor", .value = 0.0F},
    {.id = "crt_white", .value = 140.0F},
    {.id = "beam_min", .value = 0.08F},
    {.id = "beam_max", .value = 0.24F},
    {.id = "mask_pitch", .value = 2.75F},
    {.id = "mask_strength", .value = 0.65F},
    {.id = "mask_duty", .value = 0.65F},
    {.id = "mask_edge", .value = 0.08F},
    {.id = "mask_type", .value = 0.0F},
    {.id = "conv_rx", .value = 0.3F},
    {.id = "conv_ry", .value = 0.0F},
    {.id = "conv_bx", .value = -0.3F},
    {.id = "conv_by", .value = 0.0F},
    {.id = "barrel_distortion", .value = 0.015F},
    {.id = "corner_radius", .value = 0.0146F},
    {.id = "vignette_strength", .value = 0.18F},
    {.id = "overscan", .value = 0.0F},
    {.id = "crt_gamma_out", .value = 2.5F},
    {.id = "abl_strength", .value = 1.0F},
    {.id = "color_saturation", .value = 1.0F},
};

inline constexpr ValueOverride kGbaLcdValueOverrides[] = {
    {.id = "ghost_rise", .value = 0.706F},
    {.id = "ghost_fall", .value = 0.521F},
    {.id = "ghost_hdr_speed", .value = 1.0F},
    {.id = "lcd_aperture_x", .value = 0.88F},
    {.id = "lcd_aperture_y", .value = 0.96F},
    {.id = "lcd_diffuse", .value = 0.55F},
};

inline constexpr ValueOverride kGameboyLcdValueOverrides[] = {
    {.id = "GBC_BACKING", .value = 0.55F},
    {.id = "GBC_ADAPT", .value = 1.0F},
    {.id = "GBC_GAMUT", .value = 0.4F},
    {.id = "GBC_EXPAND", .value = 0.0F},
    {.id = "ghost_rise", .value = 0.52F},
    {.id = "ghost_fall", .value = 0.37F},
    {.id = "ghost_hdr_speed", .value = 1.0F},
    {.id = "lcd_aperture_x", .value = 0.9F},
    {.id = "lcd_aperture_y", .value = 0.85F},
    {.id = "lcd_diffuse", .value = 0.45F},
    {.id = "lcd_grid_contrast", .value = 0.35F},
    {.id = "lcd_spill", .value = 0.7F},
};

inline constexpr ValueOverride kDmgLcdValueOverrides[] = {
    {.id = "DMG_TINT", .value = 1.0F},
    {.id = "ghost_rise", .value = 0.2573F},
    {.id = "ghost_fall", .value = 0.1948F},
    {.id = "ghost_hdr_speed", .value = 1.0F},
    {.id = "dmg_grid_gap", .value = 0.11F},
    {.id = "dmg_shadow_offset", .value = 1.35F},
    {.id = "dmg_shadow_strength", .value = 0.34F},
    {.id = "dmg_crosstalk", .value = 0.35F},
    {.id = "dmg_crosstalk_reach", .value = 1.5F},
    {.id = "dmg_panel_margin", .value = 3.0F},
    {.id = "dmg_margin_gain", .value = 1.075F},
    {.id = "dmg_grain", .value = 0.08F},
    {.id = "dmg_border_fade", .value = 10.7F},
};

inline constexpr PresetDecl kPresets[] = {
    {.name = "crt-pvm", .passes = kCrtPasses, .passCount = std::size(kCrtPasses),
     .valueOverrides = kPvmValueOverrides, .valueOverrideCount = std::size(kPvmValueOverrides)},
    {.name = "crt-bvm", .passes = kCrtPasses, .passCount = std::size(kCrtPasses),
     .valueOverrides = kBvmValueOverrides, .valueOverrideCount = std::size(kBvmValueOverrides)},
    {.name = "crt-arcade", .passes = kCrtPasses, .passCount = std::size(kCrtPasses),
     .valueOverrides = kArcadeValueOverrides, .valueOverrideCount = std::size(kArcadeValueOverrides)},
    {.name = "crt-pc", .passes = kCrtPasses, .passCount = std::size(kCrtPasses),
     .valueOverrides = kPcValueOverrides, .valueOverrideCount = std::size(kPcValueOverrides)},
    {.name = "crt-bw", .passes = kCrtPasses, .passCount = std::size(kCrtPasses),
     .valueOverrides = kBwValueOverrides, .valueOverrideCount = std::size(kBwValueOverrides)},
    {.name = "crt-consumer", .passes = kConsumerPasses.data(), .passCount = std::size(kConsumerPasses),
     .valueOverrides = kConsumerValueOverrides, .valueOverrideCount = std::size(kConsumerValueOverrides)},
    {.name = "gba-lcd", .feedbackPassIndex = 1,
     .passes = kGbaLcdPasses, .passCount = std::size(kGbaLcdPasses),
     .valueOverrides = kGbaLcdValueOverrides, .valueOverrideCount = std::size(kGbaLcdValueOverrides)},
    {.name = "gameboy-lcd", .feedbackPassIndex = 1,
     .passes = kGameboyLcdPasses, .passCount = std::size(kGameboyLcdPasses),
     .valueOverrides = kGameboyLcdValueOverrides, .valueOverrideCount = std::size(kGameboyLcdValueOverrides)},
    {.name = "dmg-lcd", .feedbackPassIndex = 1,
     .passes = kDmgLcdPasses, .passCount = std::size(kDmgLcdPasses),
     .valueOverrides = kDmgLcdValueOverrides, .valueOverrideCount = std::size(kDmgLcdValueOverrides)},
    {.name = "no-pixels", .passes = kNoPixelsPasses, .passCount = std::size(kNoPixelsPasses)},
    {.name = "rewind", .passes = kRewindPasses, .passCount = std::size(kRewindPasses),
     .vulkanOnly = false},
    {.name = "stock", .passes = kStockPasses, .passCount = std::size(kStockPasses),
     .presetExtension = "glsl", .vulkanOnly = false},
};

// clang-format on

// A row that breaks a rule does not compile. The message shows the rule, the preset, and what in
// the preset breaks the rule.
static_assert(Rules::areKept<kPresets>());

} // namespace FirstPartyPresetSource
