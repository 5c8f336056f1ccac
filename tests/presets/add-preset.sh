#!/bin/sh
# Adds a preset by the steps in CONTRIBUTING.md, except the gallery's, and runs the tests about all presets.
# An overlay over the project and its build directory takes all writes and ends with a mount namespace, so that
# only what depends on the presets is built again.
set -eu
. "$(dirname "$0")/../cmake-package/common.sh"

case ${1-} in
    --as-root) options= ;;
    --as-user) options=userxattr, ;; # only root may set the attributes that overlays use otherwise
    *)
        mode=--as-root
        as_root=
        if [ "$(id -u)" != 0 ]; then
            mode=--as-user
            as_root=--map-root-user
        fi
        # shellcheck disable=SC2086 # a word or none
        unshare $as_root --mount true 2>/dev/null || skip 'mounting is not permitted here'
        # shellcheck disable=SC2086
        exec unshare $as_root --mount sh "$0" $mode
        ;;
esac

# cover <directory>: mounts an overlay over the directory.
cover() {
    layer=$(mktemp -d -p "$WORK_DIR")
    mkdir "$layer/upper" "$layer/work"
    mount -t overlay -o "${options}lowerdir=$1,upperdir=$layer/upper,workdir=$layer/work" overlay "$1" ||
        skip 'an overlay cannot be mounted here'
}

mkdir -p "$WORK_DIR"
mount -t tmpfs tmpfs "$WORK_DIR" || skip 'mounting is not permitted here'
cover "$SOURCE_DIR"
case $BUILD_DIR in
    "$SOURCE_DIR"/*) ;;
    *) cover "$BUILD_DIR" ;;
esac
rm -rf "$WORK_DIR"
mkdir "$WORK_DIR" || skip 'the overlay cannot be written to here'
cd "$SOURCE_DIR"

# before <text> <file>: inserts standard input before the first line that begins with the text.
before() {
    awk -v line="$1" 'NR == FNR { text = text $0 "\n"; next }
        !found && index($0, line) == 1 { printf "%s", text; found = 1 }
        { print }' - "$2" >"$WORK_DIR/changed"
    cmp -s "$WORK_DIR/changed" "$2" && fail "$2 has no line '$1'"
    mv "$WORK_DIR/changed" "$2"
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

cd "$WORK_DIR"

# Runs scripts/update-golden unchanged, with this build instead of the release build.
mkdir bin
cat >bin/cmake <<'END'
#!/bin/sh
[ "$1" = --build ] || exit 0
shift 3
exec "$CMAKE" --build "$BUILD_DIR" "$@"
END
chmod +x bin/cmake
if [ "$BUILD_DIR" != "$SOURCE_DIR/build/release" ]; then
    rm -rf "$SOURCE_DIR/build/release"
    ln -s "$BUILD_DIR" "$SOURCE_DIR/build/release"
fi
PATH="$WORK_DIR/bin:$PATH" "$SOURCE_DIR/scripts/update-golden" >log 2>&1 || fail 'scripts/update-golden failed'
[ "$(lines '^+inline constexpr PresetEntry kPreset_a_photographic_negative = ')" = 1 ] ||
    fail 'scripts/update-golden does not show the new preset of the manifest'
[ "$(lines '^+preset a-photographic-negative:$')" = 1 ] ||
    fail 'scripts/update-golden does not show the new declaration'
[ "$(lines '^-\([^-]\|$\)')" = 0 ] || fail 'scripts/update-golden shows removed lines'
cmp "$SOURCE_DIR/build/RenderGraphManifest.h" "$SOURCE_DIR/tests/manifest/golden/RenderGraphManifest.h" ||
    fail 'scripts/update-golden does not write the manifest'
cmp "$SOURCE_DIR/build/presets.txt" "$SOURCE_DIR/tests/presets/golden/presets.txt" ||
    fail 'scripts/update-golden does not write the declarations'

# Runs the tests about all presets. Those that draw every preset draw only the new one.
build "$BUILD_DIR" --target presets-tests || fail 'building'
# In a user's namespace, the driver would look for its cache in root's directory, which it may not read.
export TESTED_PRESET=a-photographic-negative QT_QPA_PLATFORM=offscreen XDG_CACHE_HOME="$WORK_DIR/cache"
if ! "$CTEST" --test-dir "$BUILD_DIR" -C presets -L '^presets$' -V >log 2>&1; then
    sed -i '/: PASS  /d' log
    fail 'testing'
fi
[ "$(lines 'Passed')" -ge 7 ] || fail 'fewer than 7 tests ran'
while read -r program function; do
    [ "$(lines " presets-$program ")" = 0 ] ||
        [ "$(lines "PASS .*::$function($TESTED_PRESET")" != 0 ] || fail "$program does not test the new preset"
done <<'END'
tst_ExamplePresets everyParameterIsSeen
tst_ExampleSpirv modulesAgreeWithTheManifest
tst_Validation presetsAreClean
END
