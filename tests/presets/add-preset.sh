#!/bin/sh
# Adds a preset to a copy of the project by the steps that CONTRIBUTING.md gives, but for the gallery's.
set -eu
. "$(dirname "$0")/../cmake-package/common.sh"

rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR"
cd "$WORK_DIR"
for part in CMakeLists.txt CMakePresets.json cmake docs examples packaging scripts src tests \
    tools; do
    cp -R "$SOURCE_DIR/$part" .
done

# before <line> <file>: puts standard input before the first line that begins so.
before() {
    awk -v line="$1" 'NR == FNR { text = text $0 "\n"; next }
        !found && index($0, line) == 1 { printf "%s", text; found = 1 }
        { print }' - "$2" >changed
    cmp -s changed "$2" && fail "$2 has no line '$1'"
    mv changed "$2"
}

presets=tools/render-graph-compile/FirstPartyPresets.h
before 'inline constexpr PresetDecl kPresets[]' $presets <<'END'
inline constexpr ParamDecl kNegativeParams[] = {
    {.id = "negative_amount", .description = "Negative",
     .defaultValue = 0.0F, .min = 0.0F, .max = 1.0F, .step = 0.05F},
};

inline constexpr PassDecl kNegativePasses[] = {
    {.component = "negative", .linearFilter = true,
     .params = kNegativeParams, .paramCount = std::size(kNegativeParams),
     .constantBlackAlpha = 0.0F, .feedback = true},
    {.component = "stock", .scaleType = kScaleViewport},
};

inline constexpr ValueOverride kNegativeValueOverrides[] = {
    {.id = "negative_amount", .value = 0.1F},
};

END
before '    {.name = "rewind"' $presets <<'END'
    {.name = "a-photographic-negative", .passes = kNegativePasses, .passCount = std::size(kNegativePasses),
     .valueOverrides = kNegativeValueOverrides, .valueOverrideCount = std::size(kNegativeValueOverrides)},
END
cd tests/presets/tables
before 'rewind;' presets.csv <<'END'
a-photographic-negative;kNegativePasses;2;-1;glslp;true;kNegativeValueOverrides;1
END
cat >>passes.csv <<'END'
kNegativePasses;0;negative;;yes;0;1.0;1.0;0;0;0;0;kNegativeParams;1;no;no;;0.0;no;yes;
kNegativePasses;1;stock;;no;1;1.0;1.0;0;0;0;0;;0;no;no;;1.0;no;no;
END
echo 'kNegativeParams;negative_amount;Negative;0.0;0.0;1.0;0.05' >>params.csv
echo 'kNegativeValueOverrides;negative_amount;0.1' >>overrides.csv
cd "$WORK_DIR"
cat >examples/shaders/vulkan/components/negative.slang <<'END'
#version 450
#extension GL_GOOGLE_include_directive : require
#include "../include/component.glsl"
// Gamma-encoded picture in and out: its negative, as far as negative_amount says, with a short tail.
//! param negative_amount
layout(binding = 0) uniform sampler2D Picture;
layout(binding = 1) uniform sampler2D History;
#define negative_amount pc.params[0]
void main() {
    vec3 picture = texture(Picture, texCoord).rgb;
    vec3 negative = mix(picture, 1.0 - picture, negative_amount);
    fragColor = vec4(mix(negative, texture(History, texCoord).rgb, 0.1), 1.0); }
END

# Nearly all of the time goes into building: one tree does for the tool and the tests, and nothing is
# optimized, of which libc's fortified headers warn.
cmake --preset release -DCMAKE_CXX_FLAGS=-Werror '-DCMAKE_CXX_FLAGS_RELEASE=-O0 -Wno-cpp' >log 2>&1 ||
    fail 'configuring'
scripts/update-golden >log 2>&1 || fail 'scripts/update-golden'
[ "$(lines '^+inline constexpr PresetEntry kPreset_a_photographic_negative = ')" = 1 ] ||
    fail 'scripts/update-golden does not show what is new'
[ "$(lines '^-')" = 1 ] || fail 'scripts/update-golden shows that something went' # diff's own line
cmp build/RenderGraphManifest.h tests/manifest/golden/RenderGraphManifest.h ||
    fail 'scripts/update-golden does not write the manifest'
scripts/update-golden >log 2>&1 || fail 'scripts/update-golden again'
[ "$(cat log)" = 'tests/manifest/golden/RenderGraphManifest.h is up to date' ] ||
    fail 'scripts/update-golden again has something to show'

# Of scripts/test what knows presets.
cmake --preset release -DBUILD_TESTING=ON >log 2>&1 || fail 'configuring the tests'
targets='consumer tst_FirstPartyPresets tst_RenderGraphCompile tst_VulkanRenderGraphCatalog
    tst_ExampleShaders'
case $("$CMAKE" --build --preset release --target help) in
    *tst_ExampleSpirv*) targets="$targets tst_ExamplePresets tst_ExampleSpirv" ;;
esac
# shellcheck disable=SC2086 # a list of words
build --preset release --target $targets || fail 'building'
programs=$(echo "$targets" | tr -s ' \n' '|')
ctest --test-dir build/release -R "^(example-$programs|golden-.*)$" \
    -E '^tst_(RenderGraphCompile|ExamplePresets)$' >log 2>&1 || fail 'testing'
[ "$(lines 'Passed')" -ge 6 ] || fail 'hardly a test ran'
# The other rows of these two draw the other presets, and are about huge files and the like.
drawing=build/release/tests/shaders/tst_ExamplePresets
if [ -e $drawing ]; then
    $drawing 'everyParameterIsSeen:a-photographic-negative negative_amount' >log 2>&1 ||
        fail 'testing what the preset draws'
fi
build/release/tests/tool/tst_RenderGraphCompile manifestOfTheExampleShaders sameBytesEverywhere \
    failingRunWritesNothing retiredRewind >log 2>&1 || fail 'testing the tool'
