// GENERATED FILE -- do not edit by hand.
//
// Produced by tools/render-graph-compile from the hand-authored literal preset data in
// tools/render-graph-compile/FirstPartyPresets, at build time -- running the same
// transform logic VulkanRenderGraphCompiler::compile() used to run at runtime (see main's
// compilePreset()). Included only by src/platform/common/vulkan/VulkanRenderGraphCatalog. See
// docs/vulkan-shader-render-graph-design.md.
#pragma once

namespace RenderGraphManifestData {

struct ParamEntry {
  const char* id;
  unsigned int floatOffset;
};

// Per-preset UI parameter metadata (id/description/defaultValue/min/max/step from the
// authored #pragma-parameter dictionary; initialValue = the preset's own tuned .glslp
// value) -- the runtime source for OpenGLShaderPipeline::ShaderData::parameters now that
// Vulkan-only presets ship no .glslp text to parse.
struct PresetParamEntry {
  const char* id;
  const char* description;
  float initialValue;
  float defaultValue;
  float min;
  float max;
  float step;
};

struct PassEntry {
  const char* fragmentSpirvResource;
  const char* vertexSpirvResource;
  const char* debugName;
  int format;         // VulkanRenderGraph::Format
  int scaleSource;    // VulkanRenderGraph::ScaleSource
  float scaleX;
  float scaleY;
  int absoluteWidth;
  int absoluteHeight;
  int scaleInputPassIndex;
  bool linearFilter;
  bool mipmap;
  bool cacheByParameters;
  const char* constantBlackWhenZero;
  float constantBlackAlpha;
  bool shareConstantBlack;
  int wrapMode;
  bool isFeedbackTarget;
  bool isFeedbackReader;
  bool isFinalPass;
  const int* sampledInputs;
  int sampledInputCount;
  const ParamEntry* params;
  int paramCount;
};

struct PresetEntry {
  const char* presetQrcPath;
  const PassEntry* passes;
  int passCount;
  int feedbackPassIndex;
  bool finalRealPassRespondsToHdr;
  const PresetParamEntry* presetParams;
  int presetParamCount;
  // True == no GL text for this preset ships in res/qrc/shaders.qrc; the app can only
  // render it through this manifest's Vulkan graph (see FirstPartyPresets's
  // PresetDecl::vulkanOnly).
  bool vulkanOnly;
  // True == some pass's Slang source genuinely reads pc.frameCount/pc.frameDirection
  // (build-time scan, see main's sourceUsesFrameCount()) -- the Vulkan-native
  // stand-in for the GL path's resolved-uniform animation detection
  // (OpenGLShaderPipeline::isAnimated()).
  bool usesFrameCount;
};

inline constexpr int kSampledInputs_crt_pvm_0[] = {-2};
inline constexpr ParamEntry kParams_crt_pvm_0[] = {
  { "color_saturation", 0u },
  { "crt_gamma_out", 1u },
  { "desaturate", 2u },
  { "gun_cutoff", 3u },
};
inline constexpr PassEntry kPass_crt_pvm_0 = {
  ":/shaders/vulkan/spirv/crt-linearize.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-linearize",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  4096, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_0, 1,
  kParams_crt_pvm_0, 4,
};

inline constexpr int kSampledInputs_crt_pvm_1[] = {0};
inline constexpr PassEntry kPass_crt_pvm_1 = {
  ":/shaders/vulkan/spirv/crt-abl-tiles.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-tiles",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 240,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_1, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_pvm_2[] = {1};
inline constexpr PassEntry kPass_crt_pvm_2 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_2, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_pvm_3[] = {2};
inline constexpr PassEntry kPass_crt_pvm_3 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  8, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_3, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_pvm_4[] = {3};
inline constexpr ParamEntry kParams_crt_pvm_4[] = {
  { "abl_current_limit", 0u },
  { "abl_strength", 1u },
};
inline constexpr PassEntry kPass_crt_pvm_4 = {
  ":/shaders/vulkan/spirv/crt-abl.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  1, 1,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_4, 1,
  kParams_crt_pvm_4, 2,
};

inline constexpr int kSampledInputs_crt_pvm_5[] = {4, 0};
inline constexpr ParamEntry kParams_crt_pvm_5[] = {
  { "color_temperature", 0u },
  { "desaturate", 1u },
  { "mono_warmth", 2u },
};
inline constexpr PassEntry kPass_crt_pvm_5 = {
  ":/shaders/vulkan/spirv/crt-drive.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-drive",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  0,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_5, 2,
  kParams_crt_pvm_5, 3,
};

inline constexpr int kSampledInputs_crt_pvm_6[] = {5};
inline constexpr ParamEntry kParams_crt_pvm_6[] = {
  { "crt_gamma_out", 0u },
  { "signal_active_us", 1u },
  { "signal_bandwidth_mhz", 2u },
};
inline constexpr PassEntry kPass_crt_pvm_6 = {
  ":/shaders/vulkan/spirv/crt-horizontal.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-horizontal",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_6, 1,
  kParams_crt_pvm_6, 3,
};

inline constexpr int kSampledInputs_crt_pvm_7[] = {6, -1};
inline constexpr ParamEntry kParams_crt_pvm_7[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_pvm_7 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_pvm_7, 2,
  kParams_crt_pvm_7, 3,
};

inline constexpr int kSampledInputs_crt_pvm_8[] = {7};
inline constexpr ParamEntry kParams_crt_pvm_8[] = {
  { "barrel_distortion", 0u },
  { "beam_max", 1u },
  { "beam_min", 2u },
  { "conv_bx", 3u },
  { "conv_by", 4u },
  { "conv_rx", 5u },
  { "conv_ry", 6u },
  { "crt_white", 7u },
  { "hdr_peak", 8u },
  { "mask_strength", 9u },
  { "overscan", 10u },
  { "raster_interlace", 11u },
  { "raster_lines", 12u },
  { "raster_offset", 13u },
  { "rgb_beam", 14u },
};
inline constexpr PassEntry kPass_crt_pvm_8 = {
  ":/shaders/vulkan/spirv/crt-scanline.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-scanline",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_8, 1,
  kParams_crt_pvm_8, 15,
};

inline constexpr int kSampledInputs_crt_pvm_9[] = {8, -1};
inline constexpr ParamEntry kParams_crt_pvm_9[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_pvm_9 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_pvm_9, 2,
  kParams_crt_pvm_9, 3,
};

inline constexpr int kSampledInputs_crt_pvm_10[] = {9, 7};
inline constexpr ParamEntry kParams_crt_pvm_10[] = {
  { "barrel_distortion", 0u },
  { "conv_bx", 1u },
  { "conv_by", 2u },
  { "conv_rx", 3u },
  { "conv_ry", 4u },
  { "corner_radius", 5u },
  { "overscan", 6u },
  { "raster_interlace", 7u },
  { "raster_lines", 8u },
  { "raster_offset", 9u },
};
inline constexpr PassEntry kPass_crt_pvm_10 = {
  ":/shaders/vulkan/spirv/crt-optics-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-optics-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  320, 240,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_10, 2,
  kParams_crt_pvm_10, 10,
};

inline constexpr int kSampledInputs_crt_pvm_11[] = {10};
inline constexpr ParamEntry kParams_crt_pvm_11[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_pvm_11 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_11, 1,
  kParams_crt_pvm_11, 1,
};

inline constexpr int kSampledInputs_crt_pvm_12[] = {11};
inline constexpr ParamEntry kParams_crt_pvm_12[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_pvm_12 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_12, 1,
  kParams_crt_pvm_12, 1,
};

inline constexpr int kSampledInputs_crt_pvm_13[] = {12};
inline constexpr PassEntry kPass_crt_pvm_13 = {
  ":/shaders/vulkan/spirv/crt-halation-wide-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-wide-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  80, 60,
  -1,
  true, false,
  false,
  "halation_strength", 0.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_13, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_pvm_14[] = {13};
inline constexpr ParamEntry kParams_crt_pvm_14[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_pvm_14 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_14, 1,
  kParams_crt_pvm_14, 1,
};

inline constexpr int kSampledInputs_crt_pvm_15[] = {14};
inline constexpr ParamEntry kParams_crt_pvm_15[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_pvm_15 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_15, 1,
  kParams_crt_pvm_15, 1,
};

inline constexpr int kSampledInputs_crt_pvm_16[] = {0};
inline constexpr ParamEntry kParams_crt_pvm_16[] = {
  { "mask_duty", 0u },
  { "mask_edge", 1u },
  { "mask_type", 2u },
};
inline constexpr PassEntry kPass_crt_pvm_16 = {
  ":/shaders/vulkan/spirv/crt-phosphor-tile.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-phosphor-tile",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  256, 256,
  -1,
  true, true,
  true,
  "", 1.0f,
  false,
  2,
  false, false, false,
  kSampledInputs_crt_pvm_16, 0,
  kParams_crt_pvm_16, 3,
};

inline constexpr int kSampledInputs_crt_pvm_17[] = {16, 9, 12, 15};
inline constexpr ParamEntry kParams_crt_pvm_17[] = {
  { "barrel_distortion", 0u },
  { "black_floor", 1u },
  { "corner_radius", 2u },
  { "crt_white", 3u },
  { "halation_strength", 4u },
  { "halation_wide", 5u },
  { "hdr_peak", 6u },
  { "mask_pitch", 7u },
  { "mask_strength", 8u },
  { "mask_type", 9u },
  { "phosphor_gamut", 10u },
  { "vignette_strength", 11u },
};
inline constexpr PassEntry kPass_crt_pvm_17 = {
  ":/shaders/vulkan/spirv/crt-screen.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-screen",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pvm_17, 4,
  kParams_crt_pvm_17, 12,
};

inline constexpr int kSampledInputs_crt_pvm_18[] = {17};
inline constexpr PassEntry kPass_crt_pvm_18 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_crt_pvm_18, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_crt_pvm[] = {kPass_crt_pvm_0, kPass_crt_pvm_1, kPass_crt_pvm_2, kPass_crt_pvm_3, kPass_crt_pvm_4, kPass_crt_pvm_5, kPass_crt_pvm_6, kPass_crt_pvm_7, kPass_crt_pvm_8, kPass_crt_pvm_9, kPass_crt_pvm_10, kPass_crt_pvm_11, kPass_crt_pvm_12, kPass_crt_pvm_13, kPass_crt_pvm_14, kPass_crt_pvm_15, kPass_crt_pvm_16, kPass_crt_pvm_17, kPass_crt_pvm_18};

inline constexpr PresetParamEntry kPresetParams_crt_pvm[] = {
  { "crt_gamma_out", "Output CRT Gamma", 2.4000001f, 2.5f, 2.0f, 3.0f, 0.0500000007f },
  { "gun_cutoff", "Gun Cutoff Offset (BT.1886 Black Toe)", 0.0599999987f, 0.0599999987f, 0.0f, 0.200000003f, 0.00499999989f },
  { "color_saturation", "Colour Saturation", 1.0f, 1.0f, 0.5f, 2.0f, 0.0500000007f },
  { "phosphor_gamut", "Phosphor Gamut (709/SMPTE-C/EBU/G90f)", 2.0f, 1.0f, 0.0f, 3.0f, 1.0f },
  { "color_temperature", "Color Temperature (D65-D93)", 0.0f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "desaturate", "Desaturate (mono CRT)", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "mono_warmth", "Mono Phosphor Warmth", 0.5f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "signal_bandwidth_mhz", "RGB Bandwidth MHz (0 = Unspecified)", 6.0f, 0.0f, 0.0f, 100.0f, 0.5f },
  { "signal_active_us", "Active Scan Duration (Microseconds)", 53.3333321f, 53.3333321f, 5.0f, 60.0f, 0.100000001f },
  { "halation_sigma", "Halation Blur Radius", 3.0f, 3.0f, 1.0f, 8.0f, 0.5f },
  { "halation_strength", "Halation Strength", 0.0299999993f, 0.0399999991f, 0.0f, 0.5f, 0.00999999978f },
  { "halation_wide", "Wide Halo Weight (Faceplate Reflection)", 1.0f, 1.0f, 0.0f, 4.0f, 0.0500000007f },
  { "black_floor", "Room Light on Screen / Reference White", 0.0f, 0.0f, 0.0f, 0.100000001f, 0.00100000005f },
  { "crt_white", "CRT Reference White (cd/m2, HDR)", 100.0f, 100.0f, 20.0f, 400.0f, 5.0f },
  { "abl_strength", "Auto Beam Limiter", 1.0f, 1.0f, 0.0f, 1.0f, 0.00999999978f },
  { "abl_current_limit", "Current Budget / Reference Full White", 1.0f, 1.0f, 0.0500000007f, 2.0f, 0.0500000007f },
  { "persist_r", "Red Tail Retention at 60 Hz", 0.0399999991f, 0.0399999991f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_g", "Green Tail Retention at 60 Hz", 0.0f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_b", "Blue Tail Retention at 60 Hz", 0.0f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "beam_min", "Beam Sigma / Picture Height x 240 (Dark)", 0.0599999987f, 0.0299999993f, 0.0199999996f, 0.5f, 0.00999999978f },
  { "beam_max", "Beam Sigma / Picture Height x 240 (Bright)", 0.239999995f, 0.189999998f, 0.0199999996f, 0.550000012f, 0.00999999978f },
  { "rgb_beam", "Independent RGB Beam Width", 1.0f, 1.0f, 0.0f, 1.0f, 1.0f },
  { "raster_lines", "Raster Standard Lines (0 = core: NTSC 240/480, PAL 288/576)", 0.0f, 0.0f, 0.0f, 1200.0f, 1.0f },
  { "raster_offset", "Active Raster Top Offset", 0.0f, 0.0f, 0.0f, 120.0f, 1.0f },
  { "raster_interlace", "Input Contains Alternating Fields", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "conv_rx", "Red Convergence X", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_ry", "Red Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_bx", "Blue Convergence X", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_by", "Blue Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "barrel_distortion", "Screen Curvature", 0.0f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "corner_radius", "Corner Radius / Screen Height", 0.0f, 0.0f, 0.0f, 0.100000001f, 0.00499999989f },
  { "overscan", "Overscan (Fraction of Picture Height per Edge)", 0.0f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "mask_type", "Mask Type (0 grille, 1 dots, 2 slots)", 0.0f, 0.0f, 0.0f, 2.0f, 1.0f },
  { "mask_duty", "Grille Stripe Fill", 0.550000012f, 0.699999988f, 0.400000006f, 1.0f, 0.0500000007f },
  { "mask_edge", "Grille Stripe Edge Softness (Sigma / Stripe Pitch)", 0.0599999987f, 0.0599999987f, 0.0f, 0.200000003f, 0.00999999978f },
  { "vignette_strength", "Vignette Strength", 0.0f, 0.0f, 0.0f, 0.5f, 0.00999999978f },
  { "mask_pitch", "RGB Repeat Pitch at 960px Height", 4.18848181f, 2.5f, 0.5f, 24.0f, 0.25f },
  { "mask_strength", "Mask Strength", 0.899999976f, 0.850000024f, 0.0f, 1.0f, 0.0500000007f },
  { "hdr_peak", "HDR Peak / Reference White (0 = Automatic)", 0.0f, 0.0f, 0.0f, 16.0f, 0.100000001f },
};

inline constexpr PresetEntry kPreset_crt_pvm = { ":/shaders/crt-pvm.glslp", kPasses_crt_pvm, 19, 7, true, kPresetParams_crt_pvm, 39, true, true };

inline constexpr int kSampledInputs_crt_bvm_0[] = {-2};
inline constexpr ParamEntry kParams_crt_bvm_0[] = {
  { "color_saturation", 0u },
  { "crt_gamma_out", 1u },
  { "desaturate", 2u },
  { "gun_cutoff", 3u },
};
inline constexpr PassEntry kPass_crt_bvm_0 = {
  ":/shaders/vulkan/spirv/crt-linearize.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-linearize",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  4096, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_0, 1,
  kParams_crt_bvm_0, 4,
};

inline constexpr int kSampledInputs_crt_bvm_1[] = {0};
inline constexpr PassEntry kPass_crt_bvm_1 = {
  ":/shaders/vulkan/spirv/crt-abl-tiles.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-tiles",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 240,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_1, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_bvm_2[] = {1};
inline constexpr PassEntry kPass_crt_bvm_2 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_2, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_bvm_3[] = {2};
inline constexpr PassEntry kPass_crt_bvm_3 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  8, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_3, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_bvm_4[] = {3};
inline constexpr ParamEntry kParams_crt_bvm_4[] = {
  { "abl_current_limit", 0u },
  { "abl_strength", 1u },
};
inline constexpr PassEntry kPass_crt_bvm_4 = {
  ":/shaders/vulkan/spirv/crt-abl.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  1, 1,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_4, 1,
  kParams_crt_bvm_4, 2,
};

inline constexpr int kSampledInputs_crt_bvm_5[] = {4, 0};
inline constexpr ParamEntry kParams_crt_bvm_5[] = {
  { "color_temperature", 0u },
  { "desaturate", 1u },
  { "mono_warmth", 2u },
};
inline constexpr PassEntry kPass_crt_bvm_5 = {
  ":/shaders/vulkan/spirv/crt-drive.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-drive",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  0,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_5, 2,
  kParams_crt_bvm_5, 3,
};

inline constexpr int kSampledInputs_crt_bvm_6[] = {5};
inline constexpr ParamEntry kParams_crt_bvm_6[] = {
  { "crt_gamma_out", 0u },
  { "signal_active_us", 1u },
  { "signal_bandwidth_mhz", 2u },
};
inline constexpr PassEntry kPass_crt_bvm_6 = {
  ":/shaders/vulkan/spirv/crt-horizontal.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-horizontal",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_6, 1,
  kParams_crt_bvm_6, 3,
};

inline constexpr int kSampledInputs_crt_bvm_7[] = {6, -1};
inline constexpr ParamEntry kParams_crt_bvm_7[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_bvm_7 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_bvm_7, 2,
  kParams_crt_bvm_7, 3,
};

inline constexpr int kSampledInputs_crt_bvm_8[] = {7};
inline constexpr ParamEntry kParams_crt_bvm_8[] = {
  { "barrel_distortion", 0u },
  { "beam_max", 1u },
  { "beam_min", 2u },
  { "conv_bx", 3u },
  { "conv_by", 4u },
  { "conv_rx", 5u },
  { "conv_ry", 6u },
  { "crt_white", 7u },
  { "hdr_peak", 8u },
  { "mask_strength", 9u },
  { "overscan", 10u },
  { "raster_interlace", 11u },
  { "raster_lines", 12u },
  { "raster_offset", 13u },
  { "rgb_beam", 14u },
};
inline constexpr PassEntry kPass_crt_bvm_8 = {
  ":/shaders/vulkan/spirv/crt-scanline.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-scanline",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_8, 1,
  kParams_crt_bvm_8, 15,
};

inline constexpr int kSampledInputs_crt_bvm_9[] = {8, -1};
inline constexpr ParamEntry kParams_crt_bvm_9[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_bvm_9 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_bvm_9, 2,
  kParams_crt_bvm_9, 3,
};

inline constexpr int kSampledInputs_crt_bvm_10[] = {9, 7};
inline constexpr ParamEntry kParams_crt_bvm_10[] = {
  { "barrel_distortion", 0u },
  { "conv_bx", 1u },
  { "conv_by", 2u },
  { "conv_rx", 3u },
  { "conv_ry", 4u },
  { "corner_radius", 5u },
  { "overscan", 6u },
  { "raster_interlace", 7u },
  { "raster_lines", 8u },
  { "raster_offset", 9u },
};
inline constexpr PassEntry kPass_crt_bvm_10 = {
  ":/shaders/vulkan/spirv/crt-optics-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-optics-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  320, 240,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_10, 2,
  kParams_crt_bvm_10, 10,
};

inline constexpr int kSampledInputs_crt_bvm_11[] = {10};
inline constexpr ParamEntry kParams_crt_bvm_11[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_bvm_11 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_11, 1,
  kParams_crt_bvm_11, 1,
};

inline constexpr int kSampledInputs_crt_bvm_12[] = {11};
inline constexpr ParamEntry kParams_crt_bvm_12[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_bvm_12 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_12, 1,
  kParams_crt_bvm_12, 1,
};

inline constexpr int kSampledInputs_crt_bvm_13[] = {12};
inline constexpr PassEntry kPass_crt_bvm_13 = {
  ":/shaders/vulkan/spirv/crt-halation-wide-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-wide-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  80, 60,
  -1,
  true, false,
  false,
  "halation_strength", 0.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_13, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_bvm_14[] = {13};
inline constexpr ParamEntry kParams_crt_bvm_14[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_bvm_14 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_14, 1,
  kParams_crt_bvm_14, 1,
};

inline constexpr int kSampledInputs_crt_bvm_15[] = {14};
inline constexpr ParamEntry kParams_crt_bvm_15[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_bvm_15 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_15, 1,
  kParams_crt_bvm_15, 1,
};

inline constexpr int kSampledInputs_crt_bvm_16[] = {0};
inline constexpr ParamEntry kParams_crt_bvm_16[] = {
  { "mask_duty", 0u },
  { "mask_edge", 1u },
  { "mask_type", 2u },
};
inline constexpr PassEntry kPass_crt_bvm_16 = {
  ":/shaders/vulkan/spirv/crt-phosphor-tile.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-phosphor-tile",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  256, 256,
  -1,
  true, true,
  true,
  "", 1.0f,
  false,
  2,
  false, false, false,
  kSampledInputs_crt_bvm_16, 0,
  kParams_crt_bvm_16, 3,
};

inline constexpr int kSampledInputs_crt_bvm_17[] = {16, 9, 12, 15};
inline constexpr ParamEntry kParams_crt_bvm_17[] = {
  { "barrel_distortion", 0u },
  { "black_floor", 1u },
  { "corner_radius", 2u },
  { "crt_white", 3u },
  { "halation_strength", 4u },
  { "halation_wide", 5u },
  { "hdr_peak", 6u },
  { "mask_pitch", 7u },
  { "mask_strength", 8u },
  { "mask_type", 9u },
  { "phosphor_gamut", 10u },
  { "vignette_strength", 11u },
};
inline constexpr PassEntry kPass_crt_bvm_17 = {
  ":/shaders/vulkan/spirv/crt-screen.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-screen",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bvm_17, 4,
  kParams_crt_bvm_17, 12,
};

inline constexpr int kSampledInputs_crt_bvm_18[] = {17};
inline constexpr PassEntry kPass_crt_bvm_18 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_crt_bvm_18, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_crt_bvm[] = {kPass_crt_bvm_0, kPass_crt_bvm_1, kPass_crt_bvm_2, kPass_crt_bvm_3, kPass_crt_bvm_4, kPass_crt_bvm_5, kPass_crt_bvm_6, kPass_crt_bvm_7, kPass_crt_bvm_8, kPass_crt_bvm_9, kPass_crt_bvm_10, kPass_crt_bvm_11, kPass_crt_bvm_12, kPass_crt_bvm_13, kPass_crt_bvm_14, kPass_crt_bvm_15, kPass_crt_bvm_16, kPass_crt_bvm_17, kPass_crt_bvm_18};

inline constexpr PresetParamEntry kPresetParams_crt_bvm[] = {
  { "crt_gamma_out", "Output CRT Gamma", 2.4000001f, 2.5f, 2.0f, 3.0f, 0.0500000007f },
  { "gun_cutoff", "Gun Cutoff Offset (BT.1886 Black Toe)", 0.0450000018f, 0.0599999987f, 0.0f, 0.200000003f, 0.00499999989f },
  { "color_saturation", "Colour Saturation", 1.0f, 1.0f, 0.5f, 2.0f, 0.0500000007f },
  { "phosphor_gamut", "Phosphor Gamut (709/SMPTE-C/EBU/G90f)", 1.0f, 1.0f, 0.0f, 3.0f, 1.0f },
  { "color_temperature", "Color Temperature (D65-D93)", 0.0f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "desaturate", "Desaturate (mono CRT)", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "mono_warmth", "Mono Phosphor Warmth", 0.5f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "signal_bandwidth_mhz", "RGB Bandwidth MHz (0 = Unspecified)", 6.0f, 0.0f, 0.0f, 100.0f, 0.5f },
  { "signal_active_us", "Active Scan Duration (Microseconds)", 53.3333321f, 53.3333321f, 5.0f, 60.0f, 0.100000001f },
  { "halation_sigma", "Halation Blur Radius", 3.0f, 3.0f, 1.0f, 8.0f, 0.5f },
  { "halation_strength", "Halation Strength", 0.0199999996f, 0.0399999991f, 0.0f, 0.5f, 0.00999999978f },
  { "halation_wide", "Wide Halo Weight (Faceplate Reflection)", 0.800000012f, 1.0f, 0.0f, 4.0f, 0.0500000007f },
  { "black_floor", "Room Light on Screen / Reference White", 0.0f, 0.0f, 0.0f, 0.100000001f, 0.00100000005f },
  { "crt_white", "CRT Reference White (cd/m2, HDR)", 100.0f, 100.0f, 20.0f, 400.0f, 5.0f },
  { "abl_strength", "Auto Beam Limiter", 1.0f, 1.0f, 0.0f, 1.0f, 0.00999999978f },
  { "abl_current_limit", "Current Budget / Reference Full White", 1.0f, 1.0f, 0.0500000007f, 2.0f, 0.0500000007f },
  { "persist_r", "Red Tail Retention at 60 Hz", 0.0299999993f, 0.0399999991f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_g", "Green Tail Retention at 60 Hz", 0.0f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_b", "Blue Tail Retention at 60 Hz", 0.0f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "beam_min", "Beam Sigma / Picture Height x 240 (Dark)", 0.0399999991f, 0.0299999993f, 0.0199999996f, 0.5f, 0.00999999978f },
  { "beam_max", "Beam Sigma / Picture Height x 240 (Bright)", 0.180000007f, 0.189999998f, 0.0199999996f, 0.550000012f, 0.00999999978f },
  { "rgb_beam", "Independent RGB Beam Width", 1.0f, 1.0f, 0.0f, 1.0f, 1.0f },
  { "raster_lines", "Raster Standard Lines (0 = core: NTSC 240/480, PAL 288/576)", 0.0f, 0.0f, 0.0f, 1200.0f, 1.0f },
  { "raster_offset", "Active Raster Top Offset", 0.0f, 0.0f, 0.0f, 120.0f, 1.0f },
  { "raster_interlace", "Input Contains Alternating Fields", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "conv_rx", "Red Convergence X", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_ry", "Red Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_bx", "Blue Convergence X", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_by", "Blue Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "barrel_distortion", "Screen Curvature", 0.0f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "corner_radius", "Corner Radius / Screen Height", 0.0f, 0.0f, 0.0f, 0.100000001f, 0.00499999989f },
  { "overscan", "Overscan (Fraction of Picture Height per Edge)", 0.0f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "mask_type", "Mask Type (0 grille, 1 dots, 2 slots)", 0.0f, 0.0f, 0.0f, 2.0f, 1.0f },
  { "mask_duty", "Grille Stripe Fill", 0.699999988f, 0.699999988f, 0.400000006f, 1.0f, 0.0500000007f },
  { "mask_edge", "Grille Stripe Edge Softness (Sigma / Stripe Pitch)", 0.0599999987f, 0.0599999987f, 0.0f, 0.200000003f, 0.00999999978f },
  { "vignette_strength", "Vignette Strength", 0.0f, 0.0f, 0.0f, 0.5f, 0.00999999978f },
  { "mask_pitch", "RGB Repeat Pitch at 960px Height", 2.0942409f, 2.5f, 0.5f, 24.0f, 0.25f },
  { "mask_strength", "Mask Strength", 0.899999976f, 0.850000024f, 0.0f, 1.0f, 0.0500000007f },
  { "hdr_peak", "HDR Peak / Reference White (0 = Automatic)", 0.0f, 0.0f, 0.0f, 16.0f, 0.100000001f },
};

inline constexpr PresetEntry kPreset_crt_bvm = { ":/shaders/crt-bvm.glslp", kPasses_crt_bvm, 19, 7, true, kPresetParams_crt_bvm, 39, true, true };

inline constexpr int kSampledInputs_crt_arcade_0[] = {-2};
inline constexpr ParamEntry kParams_crt_arcade_0[] = {
  { "color_saturation", 0u },
  { "crt_gamma_out", 1u },
  { "desaturate", 2u },
  { "gun_cutoff", 3u },
};
inline constexpr PassEntry kPass_crt_arcade_0 = {
  ":/shaders/vulkan/spirv/crt-linearize.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-linearize",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  4096, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_0, 1,
  kParams_crt_arcade_0, 4,
};

inline constexpr int kSampledInputs_crt_arcade_1[] = {0};
inline constexpr PassEntry kPass_crt_arcade_1 = {
  ":/shaders/vulkan/spirv/crt-abl-tiles.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-tiles",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 240,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_1, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_arcade_2[] = {1};
inline constexpr PassEntry kPass_crt_arcade_2 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_2, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_arcade_3[] = {2};
inline constexpr PassEntry kPass_crt_arcade_3 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  8, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_3, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_arcade_4[] = {3};
inline constexpr ParamEntry kParams_crt_arcade_4[] = {
  { "abl_current_limit", 0u },
  { "abl_strength", 1u },
};
inline constexpr PassEntry kPass_crt_arcade_4 = {
  ":/shaders/vulkan/spirv/crt-abl.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  1, 1,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_4, 1,
  kParams_crt_arcade_4, 2,
};

inline constexpr int kSampledInputs_crt_arcade_5[] = {4, 0};
inline constexpr ParamEntry kParams_crt_arcade_5[] = {
  { "color_temperature", 0u },
  { "desaturate", 1u },
  { "mono_warmth", 2u },
};
inline constexpr PassEntry kPass_crt_arcade_5 = {
  ":/shaders/vulkan/spirv/crt-drive.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-drive",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  0,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_5, 2,
  kParams_crt_arcade_5, 3,
};

inline constexpr int kSampledInputs_crt_arcade_6[] = {5};
inline constexpr ParamEntry kParams_crt_arcade_6[] = {
  { "crt_gamma_out", 0u },
  { "signal_active_us", 1u },
  { "signal_bandwidth_mhz", 2u },
};
inline constexpr PassEntry kPass_crt_arcade_6 = {
  ":/shaders/vulkan/spirv/crt-horizontal.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-horizontal",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_6, 1,
  kParams_crt_arcade_6, 3,
};

inline constexpr int kSampledInputs_crt_arcade_7[] = {6, -1};
inline constexpr ParamEntry kParams_crt_arcade_7[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_arcade_7 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_arcade_7, 2,
  kParams_crt_arcade_7, 3,
};

inline constexpr int kSampledInputs_crt_arcade_8[] = {7};
inline constexpr ParamEntry kParams_crt_arcade_8[] = {
  { "barrel_distortion", 0u },
  { "beam_max", 1u },
  { "beam_min", 2u },
  { "conv_bx", 3u },
  { "conv_by", 4u },
  { "conv_rx", 5u },
  { "conv_ry", 6u },
  { "crt_white", 7u },
  { "hdr_peak", 8u },
  { "mask_strength", 9u },
  { "overscan", 10u },
  { "raster_interlace", 11u },
  { "raster_lines", 12u },
  { "raster_offset", 13u },
  { "rgb_beam", 14u },
};
inline constexpr PassEntry kPass_crt_arcade_8 = {
  ":/shaders/vulkan/spirv/crt-scanline.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-scanline",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_8, 1,
  kParams_crt_arcade_8, 15,
};

inline constexpr int kSampledInputs_crt_arcade_9[] = {8, -1};
inline constexpr ParamEntry kParams_crt_arcade_9[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_arcade_9 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_arcade_9, 2,
  kParams_crt_arcade_9, 3,
};

inline constexpr int kSampledInputs_crt_arcade_10[] = {9, 7};
inline constexpr ParamEntry kParams_crt_arcade_10[] = {
  { "barrel_distortion", 0u },
  { "conv_bx", 1u },
  { "conv_by", 2u },
  { "conv_rx", 3u },
  { "conv_ry", 4u },
  { "corner_radius", 5u },
  { "overscan", 6u },
  { "raster_interlace", 7u },
  { "raster_lines", 8u },
  { "raster_offset", 9u },
};
inline constexpr PassEntry kPass_crt_arcade_10 = {
  ":/shaders/vulkan/spirv/crt-optics-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-optics-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  320, 240,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_10, 2,
  kParams_crt_arcade_10, 10,
};

inline constexpr int kSampledInputs_crt_arcade_11[] = {10};
inline constexpr ParamEntry kParams_crt_arcade_11[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_arcade_11 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_11, 1,
  kParams_crt_arcade_11, 1,
};

inline constexpr int kSampledInputs_crt_arcade_12[] = {11};
inline constexpr ParamEntry kParams_crt_arcade_12[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_arcade_12 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_12, 1,
  kParams_crt_arcade_12, 1,
};

inline constexpr int kSampledInputs_crt_arcade_13[] = {12};
inline constexpr PassEntry kPass_crt_arcade_13 = {
  ":/shaders/vulkan/spirv/crt-halation-wide-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-wide-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  80, 60,
  -1,
  true, false,
  false,
  "halation_strength", 0.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_13, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_arcade_14[] = {13};
inline constexpr ParamEntry kParams_crt_arcade_14[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_arcade_14 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_14, 1,
  kParams_crt_arcade_14, 1,
};

inline constexpr int kSampledInputs_crt_arcade_15[] = {14};
inline constexpr ParamEntry kParams_crt_arcade_15[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_arcade_15 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_15, 1,
  kParams_crt_arcade_15, 1,
};

inline constexpr int kSampledInputs_crt_arcade_16[] = {0};
inline constexpr ParamEntry kParams_crt_arcade_16[] = {
  { "mask_duty", 0u },
  { "mask_edge", 1u },
  { "mask_type", 2u },
};
inline constexpr PassEntry kPass_crt_arcade_16 = {
  ":/shaders/vulkan/spirv/crt-phosphor-tile.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-phosphor-tile",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  256, 256,
  -1,
  true, true,
  true,
  "", 1.0f,
  false,
  2,
  false, false, false,
  kSampledInputs_crt_arcade_16, 0,
  kParams_crt_arcade_16, 3,
};

inline constexpr int kSampledInputs_crt_arcade_17[] = {16, 9, 12, 15};
inline constexpr ParamEntry kParams_crt_arcade_17[] = {
  { "barrel_distortion", 0u },
  { "black_floor", 1u },
  { "corner_radius", 2u },
  { "crt_white", 3u },
  { "halation_strength", 4u },
  { "halation_wide", 5u },
  { "hdr_peak", 6u },
  { "mask_pitch", 7u },
  { "mask_strength", 8u },
  { "mask_type", 9u },
  { "phosphor_gamut", 10u },
  { "vignette_strength", 11u },
};
inline constexpr PassEntry kPass_crt_arcade_17 = {
  ":/shaders/vulkan/spirv/crt-screen.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-screen",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_arcade_17, 4,
  kParams_crt_arcade_17, 12,
};

inline constexpr int kSampledInputs_crt_arcade_18[] = {17};
inline constexpr PassEntry kPass_crt_arcade_18 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_crt_arcade_18, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_crt_arcade[] = {kPass_crt_arcade_0, kPass_crt_arcade_1, kPass_crt_arcade_2, kPass_crt_arcade_3, kPass_crt_arcade_4, kPass_crt_arcade_5, kPass_crt_arcade_6, kPass_crt_arcade_7, kPass_crt_arcade_8, kPass_crt_arcade_9, kPass_crt_arcade_10, kPass_crt_arcade_11, kPass_crt_arcade_12, kPass_crt_arcade_13, kPass_crt_arcade_14, kPass_crt_arcade_15, kPass_crt_arcade_16, kPass_crt_arcade_17, kPass_crt_arcade_18};

inline constexpr PresetParamEntry kPresetParams_crt_arcade[] = {
  { "crt_gamma_out", "Output CRT Gamma", 2.4000001f, 2.5f, 2.0f, 3.0f, 0.0500000007f },
  { "gun_cutoff", "Gun Cutoff Offset (BT.1886 Black Toe)", 0.0700000003f, 0.0599999987f, 0.0f, 0.200000003f, 0.00499999989f },
  { "color_saturation", "Colour Saturation", 1.0f, 1.0f, 0.5f, 2.0f, 0.0500000007f },
  { "phosphor_gamut", "Phosphor Gamut (709/SMPTE-C/EBU/G90f)", 1.0f, 1.0f, 0.0f, 3.0f, 1.0f },
  { "color_temperature", "Color Temperature (D65-D93)", 0.349999994f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "desaturate", "Desaturate (mono CRT)", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "mono_warmth", "Mono Phosphor Warmth", 0.5f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "signal_bandwidth_mhz", "RGB Bandwidth MHz (0 = Unspecified)", 6.0f, 0.0f, 0.0f, 100.0f, 0.5f },
  { "signal_active_us", "Active Scan Duration (Microseconds)", 53.3333321f, 53.3333321f, 5.0f, 60.0f, 0.100000001f },
  { "halation_sigma", "Halation Blur Radius", 3.0f, 3.0f, 1.0f, 8.0f, 0.5f },
  { "halation_strength", "Halation Strength", 0.0399999991f, 0.0399999991f, 0.0f, 0.5f, 0.00999999978f },
  { "halation_wide", "Wide Halo Weight (Faceplate Reflection)", 1.20000005f, 1.0f, 0.0f, 4.0f, 0.0500000007f },
  { "black_floor", "Room Light on Screen / Reference White", 0.0f, 0.0f, 0.0f, 0.100000001f, 0.00100000005f },
  { "crt_white", "CRT Reference White (cd/m2, HDR)", 120.0f, 100.0f, 20.0f, 400.0f, 5.0f },
  { "abl_strength", "Auto Beam Limiter", 1.0f, 1.0f, 0.0f, 1.0f, 0.00999999978f },
  { "abl_current_limit", "Current Budget / Reference Full White", 1.0f, 1.0f, 0.0500000007f, 2.0f, 0.0500000007f },
  { "persist_r", "Red Tail Retention at 60 Hz", 0.0599999987f, 0.0399999991f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_g", "Green Tail Retention at 60 Hz", 0.0199999996f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_b", "Blue Tail Retention at 60 Hz", 0.0f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "beam_min", "Beam Sigma / Picture Height x 240 (Dark)", 0.100000001f, 0.0299999993f, 0.0199999996f, 0.5f, 0.00999999978f },
  { "beam_max", "Beam Sigma / Picture Height x 240 (Bright)", 0.300000012f, 0.189999998f, 0.0199999996f, 0.550000012f, 0.00999999978f },
  { "rgb_beam", "Independent RGB Beam Width", 1.0f, 1.0f, 0.0f, 1.0f, 1.0f },
  { "raster_lines", "Raster Standard Lines (0 = core: NTSC 240/480, PAL 288/576)", 0.0f, 0.0f, 0.0f, 1200.0f, 1.0f },
  { "raster_offset", "Active Raster Top Offset", 0.0f, 0.0f, 0.0f, 120.0f, 1.0f },
  { "raster_interlace", "Input Contains Alternating Fields", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "conv_rx", "Red Convergence X", 0.150000006f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_ry", "Red Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_bx", "Blue Convergence X", -0.150000006f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_by", "Blue Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "barrel_distortion", "Screen Curvature", 0.0299999993f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "corner_radius", "Corner Radius / Screen Height", 0.0283000004f, 0.0f, 0.0f, 0.100000001f, 0.00499999989f },
  { "overscan", "Overscan (Fraction of Picture Height per Edge)", 0.0f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "mask_type", "Mask Type (0 grille, 1 dots, 2 slots)", 2.0f, 0.0f, 0.0f, 2.0f, 1.0f },
  { "mask_duty", "Grille Stripe Fill", 0.699999988f, 0.699999988f, 0.400000006f, 1.0f, 0.0500000007f },
  { "mask_edge", "Grille Stripe Edge Softness (Sigma / Stripe Pitch)", 0.0599999987f, 0.0599999987f, 0.0f, 0.200000003f, 0.00999999978f },
  { "vignette_strength", "Vignette Strength", 0.100000001f, 0.0f, 0.0f, 0.5f, 0.00999999978f },
  { "mask_pitch", "RGB Repeat Pitch at 960px Height", 4.0f, 2.5f, 0.5f, 24.0f, 0.25f },
  { "mask_strength", "Mask Strength", 0.899999976f, 0.850000024f, 0.0f, 1.0f, 0.0500000007f },
  { "hdr_peak", "HDR Peak / Reference White (0 = Automatic)", 0.0f, 0.0f, 0.0f, 16.0f, 0.100000001f },
};

inline constexpr PresetEntry kPreset_crt_arcade = { ":/shaders/crt-arcade.glslp", kPasses_crt_arcade, 19, 7, true, kPresetParams_crt_arcade, 39, true, true };

inline constexpr int kSampledInputs_crt_pc_0[] = {-2};
inline constexpr ParamEntry kParams_crt_pc_0[] = {
  { "color_saturation", 0u },
  { "crt_gamma_out", 1u },
  { "desaturate", 2u },
  { "gun_cutoff", 3u },
};
inline constexpr PassEntry kPass_crt_pc_0 = {
  ":/shaders/vulkan/spirv/crt-linearize.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-linearize",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  4096, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pc_0, 1,
  kParams_crt_pc_0, 4,
};

inline constexpr int kSampledInputs_crt_pc_1[] = {0};
inline constexpr PassEntry kPass_crt_pc_1 = {
  ":/shaders/vulkan/spirv/crt-abl-tiles.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-tiles",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 240,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pc_1, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_pc_2[] = {1};
inline constexpr PassEntry kPass_crt_pc_2 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pc_2, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_pc_3[] = {2};
inline constexpr PassEntry kPass_crt_pc_3 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  8, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pc_3, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_pc_4[] = {3};
inline constexpr ParamEntry kParams_crt_pc_4[] = {
  { "abl_current_limit", 0u },
  { "abl_strength", 1u },
};
inline constexpr PassEntry kPass_crt_pc_4 = {
  ":/shaders/vulkan/spirv/crt-abl.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  1, 1,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pc_4, 1,
  kParams_crt_pc_4, 2,
};

inline constexpr int kSampledInputs_crt_pc_5[] = {4, 0};
inline constexpr ParamEntry kParams_crt_pc_5[] = {
  { "color_temperature", 0u },
  { "desaturate", 1u },
  { "mono_warmth", 2u },
};
inline constexpr PassEntry kPass_crt_pc_5 = {
  ":/shaders/vulkan/spirv/crt-drive.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-drive",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  0,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pc_5, 2,
  kParams_crt_pc_5, 3,
};

inline constexpr int kSampledInputs_crt_pc_6[] = {5};
inline constexpr ParamEntry kParams_crt_pc_6[] = {
  { "crt_gamma_out", 0u },
  { "signal_active_us", 1u },
  { "signal_bandwidth_mhz", 2u },
};
inline constexpr PassEntry kPass_crt_pc_6 = {
  ":/shaders/vulkan/spirv/crt-horizontal.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-horizontal",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pc_6, 1,
  kParams_crt_pc_6, 3,
};

inline constexpr int kSampledInputs_crt_pc_7[] = {6, -1};
inline constexpr ParamEntry kParams_crt_pc_7[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_pc_7 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_pc_7, 2,
  kParams_crt_pc_7, 3,
};

inline constexpr int kSampledInputs_crt_pc_8[] = {7};
inline constexpr ParamEntry kParams_crt_pc_8[] = {
  { "barrel_distortion", 0u },
  { "beam_max", 1u },
  { "beam_min", 2u },
  { "conv_bx", 3u },
  { "conv_by", 4u },
  { "conv_rx", 5u },
  { "conv_ry", 6u },
  { "crt_white", 7u },
  { "hdr_peak", 8u },
  { "mask_strength", 9u },
  { "overscan", 10u },
  { "raster_interlace", 11u },
  { "raster_lines", 12u },
  { "raster_offset", 13u },
  { "rgb_beam", 14u },
};
inline constexpr PassEntry kPass_crt_pc_8 = {
  ":/shaders/vulkan/spirv/crt-scanline.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-scanline",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pc_8, 1,
  kParams_crt_pc_8, 15,
};

inline constexpr int kSampledInputs_crt_pc_9[] = {8, -1};
inline constexpr ParamEntry kParams_crt_pc_9[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_pc_9 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_pc_9, 2,
  kParams_crt_pc_9, 3,
};

inline constexpr int kSampledInputs_crt_pc_10[] = {9, 7};
inline constexpr ParamEntry kParams_crt_pc_10[] = {
  { "barrel_distortion", 0u },
  { "conv_bx", 1u },
  { "conv_by", 2u },
  { "conv_rx", 3u },
  { "conv_ry", 4u },
  { "corner_radius", 5u },
  { "overscan", 6u },
  { "raster_interlace", 7u },
  { "raster_lines", 8u },
  { "raster_offset", 9u },
};
inline constexpr PassEntry kPass_crt_pc_10 = {
  ":/shaders/vulkan/spirv/crt-optics-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-optics-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  320, 240,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pc_10, 2,
  kParams_crt_pc_10, 10,
};

inline constexpr int kSampledInputs_crt_pc_11[] = {10};
inline constexpr ParamEntry kParams_crt_pc_11[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_pc_11 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_pc_11, 1,
  kParams_crt_pc_11, 1,
};

inline constexpr int kSampledInputs_crt_pc_12[] = {11};
inline constexpr ParamEntry kParams_crt_pc_12[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_pc_12 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_pc_12, 1,
  kParams_crt_pc_12, 1,
};

inline constexpr int kSampledInputs_crt_pc_13[] = {12};
inline constexpr PassEntry kPass_crt_pc_13 = {
  ":/shaders/vulkan/spirv/crt-halation-wide-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-wide-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  80, 60,
  -1,
  true, false,
  false,
  "halation_strength", 0.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_pc_13, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_pc_14[] = {13};
inline constexpr ParamEntry kParams_crt_pc_14[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_pc_14 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_pc_14, 1,
  kParams_crt_pc_14, 1,
};

inline constexpr int kSampledInputs_crt_pc_15[] = {14};
inline constexpr ParamEntry kParams_crt_pc_15[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_pc_15 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_pc_15, 1,
  kParams_crt_pc_15, 1,
};

inline constexpr int kSampledInputs_crt_pc_16[] = {0};
inline constexpr ParamEntry kParams_crt_pc_16[] = {
  { "mask_duty", 0u },
  { "mask_edge", 1u },
  { "mask_type", 2u },
};
inline constexpr PassEntry kPass_crt_pc_16 = {
  ":/shaders/vulkan/spirv/crt-phosphor-tile.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-phosphor-tile",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  256, 256,
  -1,
  true, true,
  true,
  "", 1.0f,
  false,
  2,
  false, false, false,
  kSampledInputs_crt_pc_16, 0,
  kParams_crt_pc_16, 3,
};

inline constexpr int kSampledInputs_crt_pc_17[] = {16, 9, 12, 15};
inline constexpr ParamEntry kParams_crt_pc_17[] = {
  { "barrel_distortion", 0u },
  { "black_floor", 1u },
  { "corner_radius", 2u },
  { "crt_white", 3u },
  { "halation_strength", 4u },
  { "halation_wide", 5u },
  { "hdr_peak", 6u },
  { "mask_pitch", 7u },
  { "mask_strength", 8u },
  { "mask_type", 9u },
  { "phosphor_gamut", 10u },
  { "vignette_strength", 11u },
};
inline constexpr PassEntry kPass_crt_pc_17 = {
  ":/shaders/vulkan/spirv/crt-screen.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-screen",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_pc_17, 4,
  kParams_crt_pc_17, 12,
};

inline constexpr int kSampledInputs_crt_pc_18[] = {17};
inline constexpr PassEntry kPass_crt_pc_18 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_crt_pc_18, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_crt_pc[] = {kPass_crt_pc_0, kPass_crt_pc_1, kPass_crt_pc_2, kPass_crt_pc_3, kPass_crt_pc_4, kPass_crt_pc_5, kPass_crt_pc_6, kPass_crt_pc_7, kPass_crt_pc_8, kPass_crt_pc_9, kPass_crt_pc_10, kPass_crt_pc_11, kPass_crt_pc_12, kPass_crt_pc_13, kPass_crt_pc_14, kPass_crt_pc_15, kPass_crt_pc_16, kPass_crt_pc_17, kPass_crt_pc_18};

inline constexpr PresetParamEntry kPresetParams_crt_pc[] = {
  { "crt_gamma_out", "Output CRT Gamma", 2.20000005f, 2.5f, 2.0f, 3.0f, 0.0500000007f },
  { "gun_cutoff", "Gun Cutoff Offset (BT.1886 Black Toe)", 0.0450000018f, 0.0599999987f, 0.0f, 0.200000003f, 0.00499999989f },
  { "color_saturation", "Colour Saturation", 1.0f, 1.0f, 0.5f, 2.0f, 0.0500000007f },
  { "phosphor_gamut", "Phosphor Gamut (709/SMPTE-C/EBU/G90f)", 3.0f, 1.0f, 0.0f, 3.0f, 1.0f },
  { "color_temperature", "Color Temperature (D65-D93)", 0.5f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "desaturate", "Desaturate (mono CRT)", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "mono_warmth", "Mono Phosphor Warmth", 0.5f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "signal_bandwidth_mhz", "RGB Bandwidth MHz (0 = Unspecified)", 0.0f, 0.0f, 0.0f, 100.0f, 0.5f },
  { "signal_active_us", "Active Scan Duration (Microseconds)", 53.3333321f, 53.3333321f, 5.0f, 60.0f, 0.100000001f },
  { "halation_sigma", "Halation Blur Radius", 2.5f, 3.0f, 1.0f, 8.0f, 0.5f },
  { "halation_strength", "Halation Strength", 0.0199999996f, 0.0399999991f, 0.0f, 0.5f, 0.00999999978f },
  { "halation_wide", "Wide Halo Weight (Faceplate Reflection)", 1.0f, 1.0f, 0.0f, 4.0f, 0.0500000007f },
  { "black_floor", "Room Light on Screen / Reference White", 0.0f, 0.0f, 0.0f, 0.100000001f, 0.00100000005f },
  { "crt_white", "CRT Reference White (cd/m2, HDR)", 100.0f, 100.0f, 20.0f, 400.0f, 5.0f },
  { "abl_strength", "Auto Beam Limiter", 1.0f, 1.0f, 0.0f, 1.0f, 0.00999999978f },
  { "abl_current_limit", "Current Budget / Reference Full White", 1.0f, 1.0f, 0.0500000007f, 2.0f, 0.0500000007f },
  { "persist_r", "Red Tail Retention at 60 Hz", 0.0199999996f, 0.0399999991f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_g", "Green Tail Retention at 60 Hz", 0.0f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_b", "Blue Tail Retention at 60 Hz", 0.0f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "beam_min", "Beam Sigma / Picture Height x 240 (Dark)", 0.140000001f, 0.0299999993f, 0.0199999996f, 0.5f, 0.00999999978f },
  { "beam_max", "Beam Sigma / Picture Height x 240 (Bright)", 0.319999993f, 0.189999998f, 0.0199999996f, 0.550000012f, 0.00999999978f },
  { "rgb_beam", "Independent RGB Beam Width", 1.0f, 1.0f, 0.0f, 1.0f, 1.0f },
  { "raster_lines", "Raster Standard Lines (0 = core: NTSC 240/480, PAL 288/576)", 0.0f, 0.0f, 0.0f, 1200.0f, 1.0f },
  { "raster_offset", "Active Raster Top Offset", 0.0f, 0.0f, 0.0f, 120.0f, 1.0f },
  { "raster_interlace", "Input Contains Alternating Fields", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "conv_rx", "Red Convergence X", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_ry", "Red Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_bx", "Blue Convergence X", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_by", "Blue Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "barrel_distortion", "Screen Curvature", 0.0f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "corner_radius", "Corner Radius / Screen Height", 0.0f, 0.0f, 0.0f, 0.100000001f, 0.00499999989f },
  { "overscan", "Overscan (Fraction of Picture Height per Edge)", 0.0f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "mask_type", "Mask Type (0 grille, 1 dots, 2 slots)", 1.0f, 0.0f, 0.0f, 2.0f, 1.0f },
  { "mask_duty", "Grille Stripe Fill", 0.699999988f, 0.699999988f, 0.400000006f, 1.0f, 0.0500000007f },
  { "mask_edge", "Grille Stripe Edge Softness (Sigma / Stripe Pitch)", 0.0599999987f, 0.0599999987f, 0.0f, 0.200000003f, 0.00999999978f },
  { "vignette_strength", "Vignette Strength", 0.0f, 0.0f, 0.0f, 0.5f, 0.00999999978f },
  { "mask_pitch", "RGB Repeat Pitch at 960px Height", 7.5f, 2.5f, 0.5f, 24.0f, 0.25f },
  { "mask_strength", "Mask Strength", 1.0f, 0.850000024f, 0.0f, 1.0f, 0.0500000007f },
  { "hdr_peak", "HDR Peak / Reference White (0 = Automatic)", 0.0f, 0.0f, 0.0f, 16.0f, 0.100000001f },
};

inline constexpr PresetEntry kPreset_crt_pc = { ":/shaders/crt-pc.glslp", kPasses_crt_pc, 19, 7, true, kPresetParams_crt_pc, 39, true, true };

inline constexpr int kSampledInputs_crt_bw_0[] = {-2};
inline constexpr ParamEntry kParams_crt_bw_0[] = {
  { "color_saturation", 0u },
  { "crt_gamma_out", 1u },
  { "desaturate", 2u },
  { "gun_cutoff", 3u },
};
inline constexpr PassEntry kPass_crt_bw_0 = {
  ":/shaders/vulkan/spirv/crt-linearize.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-linearize",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  4096, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bw_0, 1,
  kParams_crt_bw_0, 4,
};

inline constexpr int kSampledInputs_crt_bw_1[] = {0};
inline constexpr PassEntry kPass_crt_bw_1 = {
  ":/shaders/vulkan/spirv/crt-abl-tiles.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-tiles",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 240,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bw_1, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_bw_2[] = {1};
inline constexpr PassEntry kPass_crt_bw_2 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bw_2, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_bw_3[] = {2};
inline constexpr PassEntry kPass_crt_bw_3 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  8, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bw_3, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_bw_4[] = {3};
inline constexpr ParamEntry kParams_crt_bw_4[] = {
  { "abl_current_limit", 0u },
  { "abl_strength", 1u },
};
inline constexpr PassEntry kPass_crt_bw_4 = {
  ":/shaders/vulkan/spirv/crt-abl.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  1, 1,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bw_4, 1,
  kParams_crt_bw_4, 2,
};

inline constexpr int kSampledInputs_crt_bw_5[] = {4, 0};
inline constexpr ParamEntry kParams_crt_bw_5[] = {
  { "color_temperature", 0u },
  { "desaturate", 1u },
  { "mono_warmth", 2u },
};
inline constexpr PassEntry kPass_crt_bw_5 = {
  ":/shaders/vulkan/spirv/crt-drive.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-drive",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  0,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bw_5, 2,
  kParams_crt_bw_5, 3,
};

inline constexpr int kSampledInputs_crt_bw_6[] = {5};
inline constexpr ParamEntry kParams_crt_bw_6[] = {
  { "crt_gamma_out", 0u },
  { "signal_active_us", 1u },
  { "signal_bandwidth_mhz", 2u },
};
inline constexpr PassEntry kPass_crt_bw_6 = {
  ":/shaders/vulkan/spirv/crt-horizontal.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-horizontal",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bw_6, 1,
  kParams_crt_bw_6, 3,
};

inline constexpr int kSampledInputs_crt_bw_7[] = {6, -1};
inline constexpr ParamEntry kParams_crt_bw_7[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_bw_7 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_bw_7, 2,
  kParams_crt_bw_7, 3,
};

inline constexpr int kSampledInputs_crt_bw_8[] = {7};
inline constexpr ParamEntry kParams_crt_bw_8[] = {
  { "barrel_distortion", 0u },
  { "beam_max", 1u },
  { "beam_min", 2u },
  { "conv_bx", 3u },
  { "conv_by", 4u },
  { "conv_rx", 5u },
  { "conv_ry", 6u },
  { "crt_white", 7u },
  { "hdr_peak", 8u },
  { "mask_strength", 9u },
  { "overscan", 10u },
  { "raster_interlace", 11u },
  { "raster_lines", 12u },
  { "raster_offset", 13u },
  { "rgb_beam", 14u },
};
inline constexpr PassEntry kPass_crt_bw_8 = {
  ":/shaders/vulkan/spirv/crt-scanline.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-scanline",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bw_8, 1,
  kParams_crt_bw_8, 15,
};

inline constexpr int kSampledInputs_crt_bw_9[] = {8, -1};
inline constexpr ParamEntry kParams_crt_bw_9[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_bw_9 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_bw_9, 2,
  kParams_crt_bw_9, 3,
};

inline constexpr int kSampledInputs_crt_bw_10[] = {9, 7};
inline constexpr ParamEntry kParams_crt_bw_10[] = {
  { "barrel_distortion", 0u },
  { "conv_bx", 1u },
  { "conv_by", 2u },
  { "conv_rx", 3u },
  { "conv_ry", 4u },
  { "corner_radius", 5u },
  { "overscan", 6u },
  { "raster_interlace", 7u },
  { "raster_lines", 8u },
  { "raster_offset", 9u },
};
inline constexpr PassEntry kPass_crt_bw_10 = {
  ":/shaders/vulkan/spirv/crt-optics-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-optics-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  320, 240,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bw_10, 2,
  kParams_crt_bw_10, 10,
};

inline constexpr int kSampledInputs_crt_bw_11[] = {10};
inline constexpr ParamEntry kParams_crt_bw_11[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_bw_11 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_bw_11, 1,
  kParams_crt_bw_11, 1,
};

inline constexpr int kSampledInputs_crt_bw_12[] = {11};
inline constexpr ParamEntry kParams_crt_bw_12[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_bw_12 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_bw_12, 1,
  kParams_crt_bw_12, 1,
};

inline constexpr int kSampledInputs_crt_bw_13[] = {12};
inline constexpr PassEntry kPass_crt_bw_13 = {
  ":/shaders/vulkan/spirv/crt-halation-wide-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-wide-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  80, 60,
  -1,
  true, false,
  false,
  "halation_strength", 0.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_bw_13, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_bw_14[] = {13};
inline constexpr ParamEntry kParams_crt_bw_14[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_bw_14 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_bw_14, 1,
  kParams_crt_bw_14, 1,
};

inline constexpr int kSampledInputs_crt_bw_15[] = {14};
inline constexpr ParamEntry kParams_crt_bw_15[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_bw_15 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_bw_15, 1,
  kParams_crt_bw_15, 1,
};

inline constexpr int kSampledInputs_crt_bw_16[] = {0};
inline constexpr ParamEntry kParams_crt_bw_16[] = {
  { "mask_duty", 0u },
  { "mask_edge", 1u },
  { "mask_type", 2u },
};
inline constexpr PassEntry kPass_crt_bw_16 = {
  ":/shaders/vulkan/spirv/crt-phosphor-tile.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-phosphor-tile",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  256, 256,
  -1,
  true, true,
  true,
  "", 1.0f,
  false,
  2,
  false, false, false,
  kSampledInputs_crt_bw_16, 0,
  kParams_crt_bw_16, 3,
};

inline constexpr int kSampledInputs_crt_bw_17[] = {16, 9, 12, 15};
inline constexpr ParamEntry kParams_crt_bw_17[] = {
  { "barrel_distortion", 0u },
  { "black_floor", 1u },
  { "corner_radius", 2u },
  { "crt_white", 3u },
  { "halation_strength", 4u },
  { "halation_wide", 5u },
  { "hdr_peak", 6u },
  { "mask_pitch", 7u },
  { "mask_strength", 8u },
  { "mask_type", 9u },
  { "phosphor_gamut", 10u },
  { "vignette_strength", 11u },
};
inline constexpr PassEntry kPass_crt_bw_17 = {
  ":/shaders/vulkan/spirv/crt-screen.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-screen",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_bw_17, 4,
  kParams_crt_bw_17, 12,
};

inline constexpr int kSampledInputs_crt_bw_18[] = {17};
inline constexpr PassEntry kPass_crt_bw_18 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_crt_bw_18, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_crt_bw[] = {kPass_crt_bw_0, kPass_crt_bw_1, kPass_crt_bw_2, kPass_crt_bw_3, kPass_crt_bw_4, kPass_crt_bw_5, kPass_crt_bw_6, kPass_crt_bw_7, kPass_crt_bw_8, kPass_crt_bw_9, kPass_crt_bw_10, kPass_crt_bw_11, kPass_crt_bw_12, kPass_crt_bw_13, kPass_crt_bw_14, kPass_crt_bw_15, kPass_crt_bw_16, kPass_crt_bw_17, kPass_crt_bw_18};

inline constexpr PresetParamEntry kPresetParams_crt_bw[] = {
  { "crt_gamma_out", "Output CRT Gamma", 2.4000001f, 2.5f, 2.0f, 3.0f, 0.0500000007f },
  { "gun_cutoff", "Gun Cutoff Offset (BT.1886 Black Toe)", 0.0700000003f, 0.0599999987f, 0.0f, 0.200000003f, 0.00499999989f },
  { "color_saturation", "Colour Saturation", 1.0f, 1.0f, 0.5f, 2.0f, 0.0500000007f },
  { "phosphor_gamut", "Phosphor Gamut (709/SMPTE-C/EBU/G90f)", 0.0f, 1.0f, 0.0f, 3.0f, 1.0f },
  { "color_temperature", "Color Temperature (D65-D93)", 0.0f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "desaturate", "Desaturate (mono CRT)", 1.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "mono_warmth", "Mono Phosphor Warmth", 0.200000003f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "signal_bandwidth_mhz", "RGB Bandwidth MHz (0 = Unspecified)", 0.0f, 0.0f, 0.0f, 100.0f, 0.5f },
  { "signal_active_us", "Active Scan Duration (Microseconds)", 53.3333321f, 53.3333321f, 5.0f, 60.0f, 0.100000001f },
  { "halation_sigma", "Halation Blur Radius", 2.5f, 3.0f, 1.0f, 8.0f, 0.5f },
  { "halation_strength", "Halation Strength", 0.0599999987f, 0.0399999991f, 0.0f, 0.5f, 0.00999999978f },
  { "halation_wide", "Wide Halo Weight (Faceplate Reflection)", 1.5f, 1.0f, 0.0f, 4.0f, 0.0500000007f },
  { "black_floor", "Room Light on Screen / Reference White", 0.0f, 0.0f, 0.0f, 0.100000001f, 0.00100000005f },
  { "crt_white", "CRT Reference White (cd/m2, HDR)", 120.0f, 100.0f, 20.0f, 400.0f, 5.0f },
  { "abl_strength", "Auto Beam Limiter", 1.0f, 1.0f, 0.0f, 1.0f, 0.00999999978f },
  { "abl_current_limit", "Current Budget / Reference Full White", 1.0f, 1.0f, 0.0500000007f, 2.0f, 0.0500000007f },
  { "persist_r", "Red Tail Retention at 60 Hz", 0.0299999993f, 0.0399999991f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_g", "Green Tail Retention at 60 Hz", 0.0199999996f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_b", "Blue Tail Retention at 60 Hz", 0.0199999996f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "beam_min", "Beam Sigma / Picture Height x 240 (Dark)", 0.119999997f, 0.0299999993f, 0.0199999996f, 0.5f, 0.00999999978f },
  { "beam_max", "Beam Sigma / Picture Height x 240 (Bright)", 0.349999994f, 0.189999998f, 0.0199999996f, 0.550000012f, 0.00999999978f },
  { "rgb_beam", "Independent RGB Beam Width", 0.0f, 1.0f, 0.0f, 1.0f, 1.0f },
  { "raster_lines", "Raster Standard Lines (0 = core: NTSC 240/480, PAL 288/576)", 0.0f, 0.0f, 0.0f, 1200.0f, 1.0f },
  { "raster_offset", "Active Raster Top Offset", 0.0f, 0.0f, 0.0f, 120.0f, 1.0f },
  { "raster_interlace", "Input Contains Alternating Fields", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "conv_rx", "Red Convergence X", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_ry", "Red Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_bx", "Blue Convergence X", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_by", "Blue Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "barrel_distortion", "Screen Curvature", 0.0399999991f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "corner_radius", "Corner Radius / Screen Height", 0.0370000005f, 0.0f, 0.0f, 0.100000001f, 0.00499999989f },
  { "overscan", "Overscan (Fraction of Picture Height per Edge)", 0.0f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "mask_type", "Mask Type (0 grille, 1 dots, 2 slots)", 0.0f, 0.0f, 0.0f, 2.0f, 1.0f },
  { "mask_duty", "Grille Stripe Fill", 0.699999988f, 0.699999988f, 0.400000006f, 1.0f, 0.0500000007f },
  { "mask_edge", "Grille Stripe Edge Softness (Sigma / Stripe Pitch)", 0.0599999987f, 0.0599999987f, 0.0f, 0.200000003f, 0.00999999978f },
  { "vignette_strength", "Vignette Strength", 0.25f, 0.0f, 0.0f, 0.5f, 0.00999999978f },
  { "mask_pitch", "RGB Repeat Pitch at 960px Height", 9.0f, 2.5f, 0.5f, 24.0f, 0.25f },
  { "mask_strength", "Mask Strength", 0.0f, 0.850000024f, 0.0f, 1.0f, 0.0500000007f },
  { "hdr_peak", "HDR Peak / Reference White (0 = Automatic)", 0.0f, 0.0f, 0.0f, 16.0f, 0.100000001f },
};

inline constexpr PresetEntry kPreset_crt_bw = { ":/shaders/crt-bw.glslp", kPasses_crt_bw, 19, 7, true, kPresetParams_crt_bw, 39, true, true };

inline constexpr int kSampledInputs_crt_consumer_0[] = {-2};
inline constexpr ParamEntry kParams_crt_consumer_0[] = {
  { "composite_chroma", 0u },
  { "composite_chroma_delay", 1u },
  { "composite_chroma_gain", 2u },
  { "composite_chroma_vertical", 3u },
  { "composite_sharp", 4u },
  { "composite_strength", 5u },
};
inline constexpr PassEntry kPass_crt_consumer_0 = {
  ":/shaders/vulkan/spirv/crt-consumer-composite.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-consumer-composite",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  4096, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_0, 1,
  kParams_crt_consumer_0, 6,
};

inline constexpr int kSampledInputs_crt_consumer_1[] = {0};
inline constexpr ParamEntry kParams_crt_consumer_1[] = {
  { "color_saturation", 0u },
  { "crt_gamma_out", 1u },
  { "desaturate", 2u },
  { "gun_cutoff", 3u },
};
inline constexpr PassEntry kPass_crt_consumer_1 = {
  ":/shaders/vulkan/spirv/crt-linearize.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-linearize",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  4096, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_1, 1,
  kParams_crt_consumer_1, 4,
};

inline constexpr int kSampledInputs_crt_consumer_2[] = {1};
inline constexpr PassEntry kPass_crt_consumer_2 = {
  ":/shaders/vulkan/spirv/crt-abl-tiles.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-tiles",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 240,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_2, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_consumer_3[] = {2};
inline constexpr PassEntry kPass_crt_consumer_3 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  256, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_3, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_consumer_4[] = {3};
inline constexpr PassEntry kPass_crt_consumer_4 = {
  ":/shaders/vulkan/spirv/crt-abl-reduce.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl-reduce",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  8, 30,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_4, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_consumer_5[] = {4};
inline constexpr ParamEntry kParams_crt_consumer_5[] = {
  { "abl_current_limit", 0u },
  { "abl_strength", 1u },
};
inline constexpr PassEntry kPass_crt_consumer_5 = {
  ":/shaders/vulkan/spirv/crt-abl.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-abl",
  3, // RGBA32F
  2, // Absolute
  1.0f, 1.0f,
  1, 1,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_5, 1,
  kParams_crt_consumer_5, 2,
};

inline constexpr int kSampledInputs_crt_consumer_6[] = {5, 1};
inline constexpr ParamEntry kParams_crt_consumer_6[] = {
  { "color_temperature", 0u },
  { "desaturate", 1u },
  { "mono_warmth", 2u },
};
inline constexpr PassEntry kPass_crt_consumer_6 = {
  ":/shaders/vulkan/spirv/crt-drive.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-drive",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_6, 2,
  kParams_crt_consumer_6, 3,
};

inline constexpr int kSampledInputs_crt_consumer_7[] = {6};
inline constexpr ParamEntry kParams_crt_consumer_7[] = {
  { "crt_gamma_out", 0u },
  { "signal_active_us", 1u },
  { "signal_bandwidth_mhz", 2u },
};
inline constexpr PassEntry kPass_crt_consumer_7 = {
  ":/shaders/vulkan/spirv/crt-horizontal.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-horizontal",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_7, 1,
  kParams_crt_consumer_7, 3,
};

inline constexpr int kSampledInputs_crt_consumer_8[] = {7, -1};
inline constexpr ParamEntry kParams_crt_consumer_8[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_consumer_8 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_consumer_8, 2,
  kParams_crt_consumer_8, 3,
};

inline constexpr int kSampledInputs_crt_consumer_9[] = {8};
inline constexpr ParamEntry kParams_crt_consumer_9[] = {
  { "barrel_distortion", 0u },
  { "beam_max", 1u },
  { "beam_min", 2u },
  { "conv_bx", 3u },
  { "conv_by", 4u },
  { "conv_rx", 5u },
  { "conv_ry", 6u },
  { "crt_white", 7u },
  { "hdr_peak", 8u },
  { "mask_strength", 9u },
  { "overscan", 10u },
  { "raster_interlace", 11u },
  { "raster_lines", 12u },
  { "raster_offset", 13u },
  { "rgb_beam", 14u },
};
inline constexpr PassEntry kPass_crt_consumer_9 = {
  ":/shaders/vulkan/spirv/crt-scanline.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-scanline",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_9, 1,
  kParams_crt_consumer_9, 15,
};

inline constexpr int kSampledInputs_crt_consumer_10[] = {9, -1};
inline constexpr ParamEntry kParams_crt_consumer_10[] = {
  { "persist_b", 0u },
  { "persist_g", 1u },
  { "persist_r", 2u },
};
inline constexpr PassEntry kPass_crt_consumer_10 = {
  ":/shaders/vulkan/spirv/crt-persistence.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-persistence",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  true, true, false,
  kSampledInputs_crt_consumer_10, 2,
  kParams_crt_consumer_10, 3,
};

inline constexpr int kSampledInputs_crt_consumer_11[] = {10, 8};
inline constexpr ParamEntry kParams_crt_consumer_11[] = {
  { "barrel_distortion", 0u },
  { "conv_bx", 1u },
  { "conv_by", 2u },
  { "conv_rx", 3u },
  { "conv_ry", 4u },
  { "corner_radius", 5u },
  { "overscan", 6u },
  { "raster_interlace", 7u },
  { "raster_lines", 8u },
  { "raster_offset", 9u },
};
inline constexpr PassEntry kPass_crt_consumer_11 = {
  ":/shaders/vulkan/spirv/crt-optics-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-optics-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  320, 240,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_11, 2,
  kParams_crt_consumer_11, 10,
};

inline constexpr int kSampledInputs_crt_consumer_12[] = {11};
inline constexpr ParamEntry kParams_crt_consumer_12[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_consumer_12 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_12, 1,
  kParams_crt_consumer_12, 1,
};

inline constexpr int kSampledInputs_crt_consumer_13[] = {12};
inline constexpr ParamEntry kParams_crt_consumer_13[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_consumer_13 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_13, 1,
  kParams_crt_consumer_13, 1,
};

inline constexpr int kSampledInputs_crt_consumer_14[] = {13};
inline constexpr PassEntry kPass_crt_consumer_14 = {
  ":/shaders/vulkan/spirv/crt-halation-wide-down.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-wide-down",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  80, 60,
  -1,
  true, false,
  false,
  "halation_strength", 0.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_14, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_crt_consumer_15[] = {14};
inline constexpr ParamEntry kParams_crt_consumer_15[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_consumer_15 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-h.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-h",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_15, 1,
  kParams_crt_consumer_15, 1,
};

inline constexpr int kSampledInputs_crt_consumer_16[] = {15};
inline constexpr ParamEntry kParams_crt_consumer_16[] = {
  { "halation_sigma", 0u },
};
inline constexpr PassEntry kPass_crt_consumer_16 = {
  ":/shaders/vulkan/spirv/crt-halation-blur-v.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-halation-blur-v",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "halation_strength", 1.0f,
  true,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_16, 1,
  kParams_crt_consumer_16, 1,
};

inline constexpr int kSampledInputs_crt_consumer_17[] = {0};
inline constexpr ParamEntry kParams_crt_consumer_17[] = {
  { "mask_duty", 0u },
  { "mask_edge", 1u },
  { "mask_type", 2u },
};
inline constexpr PassEntry kPass_crt_consumer_17 = {
  ":/shaders/vulkan/spirv/crt-phosphor-tile.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-phosphor-tile",
  1, // RGBA16F
  2, // Absolute
  1.0f, 1.0f,
  256, 256,
  -1,
  true, true,
  true,
  "", 1.0f,
  false,
  2,
  false, false, false,
  kSampledInputs_crt_consumer_17, 0,
  kParams_crt_consumer_17, 3,
};

inline constexpr int kSampledInputs_crt_consumer_18[] = {17, 10, 13, 16};
inline constexpr ParamEntry kParams_crt_consumer_18[] = {
  { "barrel_distortion", 0u },
  { "black_floor", 1u },
  { "corner_radius", 2u },
  { "crt_white", 3u },
  { "halation_strength", 4u },
  { "halation_wide", 5u },
  { "hdr_peak", 6u },
  { "mask_pitch", 7u },
  { "mask_strength", 8u },
  { "mask_type", 9u },
  { "phosphor_gamut", 10u },
  { "vignette_strength", 11u },
};
inline constexpr PassEntry kPass_crt_consumer_18 = {
  ":/shaders/vulkan/spirv/crt-screen.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-screen",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_crt_consumer_18, 4,
  kParams_crt_consumer_18, 12,
};

inline constexpr int kSampledInputs_crt_consumer_19[] = {18};
inline constexpr PassEntry kPass_crt_consumer_19 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_crt_consumer_19, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_crt_consumer[] = {kPass_crt_consumer_0, kPass_crt_consumer_1, kPass_crt_consumer_2, kPass_crt_consumer_3, kPass_crt_consumer_4, kPass_crt_consumer_5, kPass_crt_consumer_6, kPass_crt_consumer_7, kPass_crt_consumer_8, kPass_crt_consumer_9, kPass_crt_consumer_10, kPass_crt_consumer_11, kPass_crt_consumer_12, kPass_crt_consumer_13, kPass_crt_consumer_14, kPass_crt_consumer_15, kPass_crt_consumer_16, kPass_crt_consumer_17, kPass_crt_consumer_18, kPass_crt_consumer_19};

inline constexpr PresetParamEntry kPresetParams_crt_consumer[] = {
  { "composite_strength", "Composite Amount", 1.0f, 1.0f, 0.0f, 1.0f, 0.0500000007f },
  { "composite_sharp", "Composite Luma Sharpness", 0.949999988f, 0.600000024f, 0.200000003f, 1.0f, 0.0500000007f },
  { "composite_chroma", "Chroma Spread (256-sample line)", 1.35000002f, 1.10000002f, 0.5f, 3.0f, 0.0500000007f },
  { "composite_chroma_delay", "Chroma Delay (256-sample line)", 0.0f, 0.0f, -2.0f, 2.0f, 0.0500000007f },
  { "composite_chroma_gain", "Receiver Colour Gain", 1.25f, 1.14999998f, 0.0f, 2.0f, 0.0500000007f },
  { "composite_chroma_vertical", "Adjacent-Line Colour Blend", 0.25f, 0.25f, 0.0f, 0.5f, 0.0500000007f },
  { "crt_gamma_out", "Output CRT Gamma", 2.5f, 2.5f, 2.0f, 3.0f, 0.0500000007f },
  { "gun_cutoff", "Gun Cutoff Offset (BT.1886 Black Toe)", 0.0799999982f, 0.0599999987f, 0.0f, 0.200000003f, 0.00499999989f },
  { "color_saturation", "Colour Saturation", 1.0f, 1.0f, 0.5f, 2.0f, 0.0500000007f },
  { "phosphor_gamut", "Phosphor Gamut (709/SMPTE-C/EBU/G90f)", 1.0f, 1.0f, 0.0f, 3.0f, 1.0f },
  { "color_temperature", "Color Temperature (D65-D93)", 0.349999994f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "desaturate", "Desaturate (mono CRT)", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "mono_warmth", "Mono Phosphor Warmth", 0.5f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "signal_bandwidth_mhz", "RGB Bandwidth MHz (0 = Unspecified)", 0.0f, 0.0f, 0.0f, 100.0f, 0.5f },
  { "signal_active_us", "Active Scan Duration (Microseconds)", 53.3333321f, 53.3333321f, 5.0f, 60.0f, 0.100000001f },
  { "halation_sigma", "Halation Blur Radius", 3.0f, 3.0f, 1.0f, 8.0f, 0.5f },
  { "halation_strength", "Halation Strength", 0.0500000007f, 0.0399999991f, 0.0f, 0.5f, 0.00999999978f },
  { "halation_wide", "Wide Halo Weight (Faceplate Reflection)", 1.20000005f, 1.0f, 0.0f, 4.0f, 0.0500000007f },
  { "black_floor", "Room Light on Screen / Reference White", 0.0f, 0.0f, 0.0f, 0.100000001f, 0.00100000005f },
  { "crt_white", "CRT Reference White (cd/m2, HDR)", 140.0f, 100.0f, 20.0f, 400.0f, 5.0f },
  { "abl_strength", "Auto Beam Limiter", 1.0f, 1.0f, 0.0f, 1.0f, 0.00999999978f },
  { "abl_current_limit", "Current Budget / Reference Full White", 1.0f, 1.0f, 0.0500000007f, 2.0f, 0.0500000007f },
  { "persist_r", "Red Tail Retention at 60 Hz", 0.119999997f, 0.0399999991f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_g", "Green Tail Retention at 60 Hz", 0.0500000007f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "persist_b", "Blue Tail Retention at 60 Hz", 0.00999999978f, 0.0f, 0.0f, 1.0f, 0.00999999978f },
  { "beam_min", "Beam Sigma / Picture Height x 240 (Dark)", 0.0799999982f, 0.0299999993f, 0.0199999996f, 0.5f, 0.00999999978f },
  { "beam_max", "Beam Sigma / Picture Height x 240 (Bright)", 0.239999995f, 0.189999998f, 0.0199999996f, 0.550000012f, 0.00999999978f },
  { "rgb_beam", "Independent RGB Beam Width", 1.0f, 1.0f, 0.0f, 1.0f, 1.0f },
  { "raster_lines", "Raster Standard Lines (0 = core: NTSC 240/480, PAL 288/576)", 0.0f, 0.0f, 0.0f, 1200.0f, 1.0f },
  { "raster_offset", "Active Raster Top Offset", 0.0f, 0.0f, 0.0f, 120.0f, 1.0f },
  { "raster_interlace", "Input Contains Alternating Fields", 0.0f, 0.0f, 0.0f, 1.0f, 1.0f },
  { "conv_rx", "Red Convergence X", 0.300000012f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_ry", "Red Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_bx", "Blue Convergence X", -0.300000012f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "conv_by", "Blue Convergence Y", 0.0f, 0.0f, -3.0f, 3.0f, 0.100000001f },
  { "barrel_distortion", "Screen Curvature", 0.0149999997f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "corner_radius", "Corner Radius / Screen Height", 0.0146000003f, 0.0f, 0.0f, 0.100000001f, 0.00499999989f },
  { "overscan", "Overscan (Fraction of Picture Height per Edge)", 0.0f, 0.0f, 0.0f, 0.150000006f, 0.00499999989f },
  { "mask_type", "Mask Type (0 grille, 1 dots, 2 slots)", 0.0f, 0.0f, 0.0f, 2.0f, 1.0f },
  { "mask_duty", "Grille Stripe Fill", 0.649999976f, 0.699999988f, 0.400000006f, 1.0f, 0.0500000007f },
  { "mask_edge", "Grille Stripe Edge Softness (Sigma / Stripe Pitch)", 0.0799999982f, 0.0599999987f, 0.0f, 0.200000003f, 0.00999999978f },
  { "vignette_strength", "Vignette Strength", 0.180000007f, 0.0f, 0.0f, 0.5f, 0.00999999978f },
  { "mask_pitch", "RGB Repeat Pitch at 960px Height", 2.75f, 2.5f, 0.5f, 24.0f, 0.25f },
  { "mask_strength", "Mask Strength", 0.649999976f, 0.850000024f, 0.0f, 1.0f, 0.0500000007f },
  { "hdr_peak", "HDR Peak / Reference White (0 = Automatic)", 0.0f, 0.0f, 0.0f, 16.0f, 0.100000001f },
};

inline constexpr PresetEntry kPreset_crt_consumer = { ":/shaders/crt-consumer.glslp", kPasses_crt_consumer, 20, 8, true, kPresetParams_crt_consumer, 45, true, true };

inline constexpr int kSampledInputs_gba_lcd_0[] = {-2};
inline constexpr ParamEntry kParams_gba_lcd_0[] = {
  { "LCD_COLOR_PROFILE", 0u },
};
inline constexpr PassEntry kPass_gba_lcd_0 = {
  ":/shaders/vulkan/spirv/gba-color.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "gba-color",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_gba_lcd_0, 1,
  kParams_gba_lcd_0, 1,
};

inline constexpr int kSampledInputs_gba_lcd_1[] = {0, -1};
inline constexpr ParamEntry kParams_gba_lcd_1[] = {
  { "ghost_fall", 0u },
  { "ghost_hdr_speed", 1u },
  { "ghost_rise", 2u },
};
inline constexpr PassEntry kPass_gba_lcd_1 = {
  ":/shaders/vulkan/spirv/gba-ghost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "gba-ghost",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  0,
  true, true, false,
  kSampledInputs_gba_lcd_1, 2,
  kParams_gba_lcd_1, 3,
};

inline constexpr int kSampledInputs_gba_lcd_2[] = {1};
inline constexpr ParamEntry kParams_gba_lcd_2[] = {
  { "LCD_COLOR_PROFILE", 0u },
  { "lcd_aperture_x", 1u },
  { "lcd_aperture_y", 2u },
  { "lcd_diffuse", 3u },
  { "lcd_grid_contrast", 4u },
  { "lcd_spill", 5u },
};
inline constexpr PassEntry kPass_gba_lcd_2 = {
  ":/shaders/vulkan/spirv/gba-subpixel.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "gba-subpixel",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_gba_lcd_2, 1,
  kParams_gba_lcd_2, 6,
};

inline constexpr int kSampledInputs_gba_lcd_3[] = {2};
inline constexpr PassEntry kPass_gba_lcd_3 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_gba_lcd_3, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_gba_lcd[] = {kPass_gba_lcd_0, kPass_gba_lcd_1, kPass_gba_lcd_2, kPass_gba_lcd_3};

inline constexpr PresetParamEntry kPresetParams_gba_lcd[] = {
  { "LCD_COLOR_PROFILE", "Upstream Color Profile (Experimental)", 1.0f, 1.0f, 0.0f, 1.0f, 1.0f },
  { "ghost_rise", "LCD Response Rise (drive)", 0.70599997f, 0.5f, 0.0500000007f, 1.0f, 0.0500000007f },
  { "ghost_fall", "LCD Response Fall (relax)", 0.521000028f, 0.400000006f, 0.0500000007f, 1.0f, 0.0500000007f },
  { "ghost_hdr_speed", "LCD Response HDR Speed (comfort)", 1.0f, 1.0f, 1.0f, 3.0f, 0.0500000007f },
  { "lcd_aperture_x", "LCD Subpixel Aperture Width", 0.879999995f, 0.910000026f, 0.400000006f, 1.0f, 0.0199999996f },
  { "lcd_aperture_y", "LCD Subpixel Aperture Height", 0.959999979f, 0.970000029f, 0.400000006f, 1.0f, 0.0199999996f },
  { "lcd_diffuse", "LCD Panel Diffusion", 0.550000012f, 0.600000024f, 0.0f, 1.0f, 0.0500000007f },
  { "lcd_grid_contrast", "LCD Grid Contrast", 0.400000006f, 0.400000006f, 0.0f, 1.0f, 0.0500000007f },
  { "lcd_spill", "LCD Aperture Spill", 1.0f, 1.0f, 0.0f, 1.0f, 0.0500000007f },
};

inline constexpr PresetEntry kPreset_gba_lcd = { ":/shaders/gba-lcd.glslp", kPasses_gba_lcd, 4, 1, true, kPresetParams_gba_lcd, 9, true, false };

inline constexpr int kSampledInputs_gameboy_lcd_0[] = {-2};
inline constexpr ParamEntry kParams_gameboy_lcd_0[] = {
  { "GBC_ADAPT", 0u },
  { "GBC_BACKING", 1u },
  { "GBC_EXPAND", 2u },
  { "GBC_GAMUT", 3u },
  { "LCD_COLOR_PROFILE", 4u },
};
inline constexpr PassEntry kPass_gameboy_lcd_0 = {
  ":/shaders/vulkan/spirv/authentic-gbc.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "authentic-gbc",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_gameboy_lcd_0, 1,
  kParams_gameboy_lcd_0, 5,
};

inline constexpr int kSampledInputs_gameboy_lcd_1[] = {0, -1};
inline constexpr ParamEntry kParams_gameboy_lcd_1[] = {
  { "ghost_fall", 0u },
  { "ghost_hdr_speed", 1u },
  { "ghost_rise", 2u },
};
inline constexpr PassEntry kPass_gameboy_lcd_1 = {
  ":/shaders/vulkan/spirv/gba-ghost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "gba-ghost",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  0,
  true, true, false,
  kSampledInputs_gameboy_lcd_1, 2,
  kParams_gameboy_lcd_1, 3,
};

inline constexpr int kSampledInputs_gameboy_lcd_2[] = {1};
inline constexpr ParamEntry kParams_gameboy_lcd_2[] = {
  { "LCD_COLOR_PROFILE", 0u },
  { "lcd_aperture_x", 1u },
  { "lcd_aperture_y", 2u },
  { "lcd_diffuse", 3u },
  { "lcd_grid_contrast", 4u },
  { "lcd_spill", 5u },
};
inline constexpr PassEntry kPass_gameboy_lcd_2 = {
  ":/shaders/vulkan/spirv/gba-subpixel.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "gba-subpixel",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_gameboy_lcd_2, 1,
  kParams_gameboy_lcd_2, 6,
};

inline constexpr int kSampledInputs_gameboy_lcd_3[] = {2};
inline constexpr PassEntry kPass_gameboy_lcd_3 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_gameboy_lcd_3, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_gameboy_lcd[] = {kPass_gameboy_lcd_0, kPass_gameboy_lcd_1, kPass_gameboy_lcd_2, kPass_gameboy_lcd_3};

inline constexpr PresetParamEntry kPresetParams_gameboy_lcd[] = {
  { "GBC_ADAPT", "GBC White Adaptation", 1.0f, 1.0f, 0.0f, 1.0f, 0.0500000007f },
  { "GBC_BACKING", "GBC Reflective Backing", 0.550000012f, 0.550000012f, 0.0f, 1.0f, 0.0500000007f },
  { "GBC_EXPAND", "GBC Gamut Expansion", 0.0f, 0.0f, 0.0f, 1.0f, 0.0500000007f },
  { "GBC_GAMUT", "GBC Gamut Compression", 0.400000006f, 0.400000006f, 0.0f, 1.0f, 0.0500000007f },
  { "LCD_COLOR_PROFILE", "Upstream Color Profile (Experimental)", 1.0f, 1.0f, 0.0f, 1.0f, 1.0f },
  { "ghost_rise", "LCD Response Rise (drive)", 0.519999981f, 0.5f, 0.0500000007f, 1.0f, 0.0500000007f },
  { "ghost_fall", "LCD Response Fall (relax)", 0.370000005f, 0.400000006f, 0.0500000007f, 1.0f, 0.0500000007f },
  { "ghost_hdr_speed", "LCD Response HDR Speed (comfort)", 1.0f, 1.0f, 1.0f, 3.0f, 0.0500000007f },
  { "lcd_aperture_x", "LCD Subpixel Aperture Width", 0.899999976f, 0.910000026f, 0.400000006f, 1.0f, 0.0199999996f },
  { "lcd_aperture_y", "LCD Subpixel Aperture Height", 0.850000024f, 0.970000029f, 0.400000006f, 1.0f, 0.0199999996f },
  { "lcd_diffuse", "LCD Panel Diffusion", 0.449999988f, 0.600000024f, 0.0f, 1.0f, 0.0500000007f },
  { "lcd_grid_contrast", "LCD Grid Contrast", 0.349999994f, 0.400000006f, 0.0f, 1.0f, 0.0500000007f },
  { "lcd_spill", "LCD Aperture Spill", 0.699999988f, 1.0f, 0.0f, 1.0f, 0.0500000007f },
};

inline constexpr PresetEntry kPreset_gameboy_lcd = { ":/shaders/gameboy-lcd.glslp", kPasses_gameboy_lcd, 4, 1, true, kPresetParams_gameboy_lcd, 13, true, false };

inline constexpr int kSampledInputs_dmg_lcd_0[] = {-2};
inline constexpr ParamEntry kParams_dmg_lcd_0[] = {
  { "DMG_TINT", 0u },
};
inline constexpr PassEntry kPass_dmg_lcd_0 = {
  ":/shaders/vulkan/spirv/dmg-color.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "dmg-color",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_dmg_lcd_0, 1,
  kParams_dmg_lcd_0, 1,
};

inline constexpr int kSampledInputs_dmg_lcd_1[] = {0, -1};
inline constexpr ParamEntry kParams_dmg_lcd_1[] = {
  { "ghost_fall", 0u },
  { "ghost_hdr_speed", 1u },
  { "ghost_rise", 2u },
};
inline constexpr PassEntry kPass_dmg_lcd_1 = {
  ":/shaders/vulkan/spirv/dmg-ghost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "dmg-ghost",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  0,
  true, true, false,
  kSampledInputs_dmg_lcd_1, 2,
  kParams_dmg_lcd_1, 3,
};

inline constexpr int kSampledInputs_dmg_lcd_2[] = {1};
inline constexpr ParamEntry kParams_dmg_lcd_2[] = {
  { "dmg_crosstalk", 0u },
  { "dmg_crosstalk_reach", 1u },
};
inline constexpr PassEntry kPass_dmg_lcd_2 = {
  ":/shaders/vulkan/spirv/dmg-crosstalk.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "dmg-crosstalk",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_dmg_lcd_2, 1,
  kParams_dmg_lcd_2, 2,
};

inline constexpr int kSampledInputs_dmg_lcd_3[] = {2};
inline constexpr ParamEntry kParams_dmg_lcd_3[] = {
  { "dmg_shadow_offset", 0u },
};
inline constexpr PassEntry kPass_dmg_lcd_3 = {
  ":/shaders/vulkan/spirv/dmg-occlusion.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "dmg-occlusion",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_dmg_lcd_3, 1,
  kParams_dmg_lcd_3, 1,
};

inline constexpr int kSampledInputs_dmg_lcd_4[] = {3, 2};
inline constexpr ParamEntry kParams_dmg_lcd_4[] = {
  { "dmg_border_fade", 0u },
  { "dmg_grain", 1u },
  { "dmg_grid_gap", 2u },
  { "dmg_margin_gain", 3u },
  { "dmg_panel_margin", 4u },
  { "dmg_shadow_offset", 5u },
  { "dmg_shadow_strength", 6u },
};
inline constexpr PassEntry kPass_dmg_lcd_4 = {
  ":/shaders/vulkan/spirv/crt-dmg-grid.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "crt-dmg-grid",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_dmg_lcd_4, 2,
  kParams_dmg_lcd_4, 7,
};

inline constexpr int kSampledInputs_dmg_lcd_5[] = {4};
inline constexpr PassEntry kPass_dmg_lcd_5 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_dmg_lcd_5, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_dmg_lcd[] = {kPass_dmg_lcd_0, kPass_dmg_lcd_1, kPass_dmg_lcd_2, kPass_dmg_lcd_3, kPass_dmg_lcd_4, kPass_dmg_lcd_5};

inline constexpr PresetParamEntry kPresetParams_dmg_lcd[] = {
  { "DMG_TINT", "DMG Green Tint", 1.0f, 1.0f, 0.0f, 1.0f, 0.0500000007f },
  { "ghost_rise", "LCD Response Rise (drive)", 0.257299989f, 0.5f, 0.0500000007f, 1.0f, 0.0500000007f },
  { "ghost_fall", "LCD Response Fall (relax)", 0.194800004f, 0.400000006f, 0.0500000007f, 1.0f, 0.0500000007f },
  { "ghost_hdr_speed", "LCD Response HDR Speed (comfort)", 1.0f, 1.0f, 1.0f, 3.0f, 0.0500000007f },
  { "dmg_crosstalk", "DMG Column Crosstalk", 0.349999994f, 0.349999994f, 0.0f, 1.0f, 0.0500000007f },
  { "dmg_crosstalk_reach", "DMG Crosstalk Reach", 1.5f, 1.5f, 0.25f, 12.0f, 0.25f },
  { "dmg_shadow_offset", "DMG Air Gap Depth", 1.35000002f, 1.35000002f, 0.0f, 4.0f, 0.0500000007f },
  { "dmg_grid_gap", "DMG Grid Gap", 0.109999999f, 0.109999999f, 0.0f, 0.400000006f, 0.00999999978f },
  { "dmg_shadow_strength", "DMG Shadow Opacity", 0.340000004f, 0.340000004f, 0.0f, 1.0f, 0.00999999978f },
  { "dmg_panel_margin", "DMG Underscan Border", 3.0f, 3.0f, 0.0f, 12.0f, 1.0f },
  { "dmg_margin_gain", "DMG Underscan Glass Gain", 1.07500005f, 1.07500005f, 0.5f, 1.5f, 0.00499999989f },
  { "dmg_grain", "DMG Reflector Grain", 0.0799999982f, 0.0799999982f, 0.0f, 0.5f, 0.00499999989f },
  { "dmg_border_fade", "DMG Border Fade (Source Pixels)", 10.6999998f, 10.6999998f, 0.100000001f, 40.0f, 0.100000001f },
};

inline constexpr PresetEntry kPreset_dmg_lcd = { ":/shaders/dmg-lcd.glslp", kPasses_dmg_lcd, 6, 1, false, kPresetParams_dmg_lcd, 13, true, false };

inline constexpr int kSampledInputs_no_pixels_0[] = {-2};
inline constexpr PassEntry kPass_no_pixels_0 = {
  ":/shaders/vulkan/spirv/stock.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "stock",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_no_pixels_0, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_no_pixels_1[] = {0};
inline constexpr PassEntry kPass_no_pixels_1 = {
  ":/shaders/vulkan/spirv/scalefx-pass0.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "scalefx-pass0",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_no_pixels_1, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_no_pixels_2[] = {1};
inline constexpr ParamEntry kParams_no_pixels_2[] = {
  { "SFX_CLR", 0u },
  { "SFX_SAA", 1u },
};
inline constexpr PassEntry kPass_no_pixels_2 = {
  ":/shaders/vulkan/spirv/scalefx-pass1.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "scalefx-pass1",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_no_pixels_2, 1,
  kParams_no_pixels_2, 2,
};

inline constexpr int kSampledInputs_no_pixels_3[] = {2, 1};
inline constexpr PassEntry kPass_no_pixels_3 = {
  ":/shaders/vulkan/spirv/scalefx-pass2.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "scalefx-pass2",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_no_pixels_3, 2,
  nullptr, 0,
};

inline constexpr int kSampledInputs_no_pixels_4[] = {3};
inline constexpr ParamEntry kParams_no_pixels_4[] = {
  { "SFX_SCN", 0u },
};
inline constexpr PassEntry kPass_no_pixels_4 = {
  ":/shaders/vulkan/spirv/scalefx-pass3.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "scalefx-pass3",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_no_pixels_4, 1,
  kParams_no_pixels_4, 1,
};

inline constexpr int kSampledInputs_no_pixels_5[] = {4, 0};
inline constexpr PassEntry kPass_no_pixels_5 = {
  ":/shaders/vulkan/spirv/scalefx-pass4.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "scalefx-pass4",
  1, // RGBA16F
  0, // Source
  3.0f, 3.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_no_pixels_5, 2,
  nullptr, 0,
};

inline constexpr int kSampledInputs_no_pixels_6[] = {5};
inline constexpr PassEntry kPass_no_pixels_6 = {
  ":/shaders/vulkan/spirv/smooth-resample.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "smooth-resample",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  false, false,
  false,
  "", 1.0f,
  false,
  1,
  false, false, false,
  kSampledInputs_no_pixels_6, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_no_pixels_7[] = {6};
inline constexpr PassEntry kPass_no_pixels_7 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_no_pixels_7, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_no_pixels[] = {kPass_no_pixels_0, kPass_no_pixels_1, kPass_no_pixels_2, kPass_no_pixels_3, kPass_no_pixels_4, kPass_no_pixels_5, kPass_no_pixels_6, kPass_no_pixels_7};

inline constexpr PresetParamEntry kPresetParams_no_pixels[] = {
  { "SFX_CLR", "Edge Similarity Threshold", 0.5f, 0.5f, 0.00999999978f, 1.0f, 0.00999999978f },
  { "SFX_SAA", "Smooth Antialiased Edges", 1.0f, 1.0f, 0.0f, 1.0f, 1.0f },
  { "SFX_SCN", "Smooth Corners", 1.0f, 1.0f, 0.0f, 1.0f, 1.0f },
};

inline constexpr PresetEntry kPreset_no_pixels = { ":/shaders/no-pixels.glslp", kPasses_no_pixels, 8, -1, false, kPresetParams_no_pixels, 3, true, false };

inline constexpr int kSampledInputs_rewind_0[] = {-2};
inline constexpr ParamEntry kParams_rewind_0[] = {
  { "smear", 0u },
  { "wiggle", 1u },
};
inline constexpr PassEntry kPass_rewind_0 = {
  ":/shaders/vulkan/spirv/rewind.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "rewind",
  1, // RGBA16F
  0, // Source
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_rewind_0, 1,
  kParams_rewind_0, 2,
};

inline constexpr int kSampledInputs_rewind_1[] = {0};
inline constexpr ParamEntry kParams_rewind_1[] = {
  { "lineNoise", 0u },
  { "noiseAmount", 1u },
  { "tapeSpeed", 2u },
};
inline constexpr PassEntry kPass_rewind_1 = {
  ":/shaders/vulkan/spirv/rewind-noise.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "rewind-noise",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_rewind_1, 1,
  kParams_rewind_1, 3,
};

inline constexpr int kSampledInputs_rewind_2[] = {1};
inline constexpr PassEntry kPass_rewind_2 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_rewind_2, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_rewind[] = {kPass_rewind_0, kPass_rewind_1, kPass_rewind_2};

inline constexpr PresetParamEntry kPresetParams_rewind[] = {
  { "wiggle", "Wiggle", 3.0f, 3.0f, 0.0f, 10.0f, 1.0f },
  { "smear", "Chroma Smear", 0.5f, 0.5f, 0.0f, 1.0f, 0.0500000007f },
  { "noiseAmount", "noiseAmount", 0.150000006f, 0.150000006f, 0.0f, 1.0f, 0.100000001f },
  { "lineNoise", "lineNoise", 0.300000012f, 0.300000012f, 0.0f, 1.0f, 0.100000001f },
  { "tapeSpeed", "tapeSpeed", 1.0f, 1.0f, 0.0f, 1.0f, 0.100000001f },
};

inline constexpr PresetEntry kPreset_rewind = { ":/shaders/rewind.glslp", kPasses_rewind, 3, -1, false, kPresetParams_rewind, 5, false, true };

inline constexpr int kSampledInputs_stock_0[] = {-2};
inline constexpr PassEntry kPass_stock_0 = {
  ":/shaders/vulkan/spirv/stock.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "stock",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, false,
  kSampledInputs_stock_0, 1,
  nullptr, 0,
};

inline constexpr int kSampledInputs_stock_1[] = {0};
inline constexpr PassEntry kPass_stock_1 = {
  ":/shaders/vulkan/spirv/hdr-color-boost.frag.spv",
  ":/shaders/vulkan/spirv/fullscreen.vert.spv",
  "hdr-color-boost",
  1, // RGBA16F
  1, // Viewport
  1.0f, 1.0f,
  0, 0,
  -1,
  true, false,
  false,
  "", 1.0f,
  false,
  0,
  false, false, true,
  kSampledInputs_stock_1, 1,
  nullptr, 0,
};

inline constexpr PassEntry kPasses_stock[] = {kPass_stock_0, kPass_stock_1};

inline constexpr PresetEntry kPreset_stock = { ":/shaders/stock.glsl", kPasses_stock, 2, -1, false, nullptr, 0, false, false };

inline constexpr PresetEntry kPresets[] = {
  kPreset_crt_pvm,
  kPreset_crt_bvm,
  kPreset_crt_arcade,
  kPreset_crt_pc,
  kPreset_crt_bw,
  kPreset_crt_consumer,
  kPreset_gba_lcd,
  kPreset_gameboy_lcd,
  kPreset_dmg_lcd,
  kPreset_no_pixels,
  kPreset_rewind,
  kPreset_stock,
};

}  // namespace RenderGraphManifestData
