#!/bin/sh
# Builds the project that docs/cmake.md shows for presets of your own, with add_subdirectory and with FetchContent.
# Presets that would not be used are an error.
set -eu
. "$(dirname "$0")/common.sh"

# code <language> <number>: prints the section's code block in this language with this number.
code() {
    awk -v language="$1" -v wanted="$2" '
        /^## / { inside = ($0 == "## Presets of your own") }
        /^```/ { shown = (inside && $0 == "```" language && ++number == wanted); next }
        shown' "$SOURCE_DIR/docs/cmake.md" >code
    [ -s code ] || fail "the document shows no $1 code number $2"
    cat code
}

# refused <CMake code> <message>: configuring a project with this code fails with the message.
refused() {
    mkdir -p refused
    printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(user LANGUAGES CXX)' "$1" >refused/CMakeLists.txt
    if configure refused refused/build -G Ninja "-DQt6_DIR=$qt_dir"; then fail "accepted: $1"; fi
    tr -s ' \n' ' ' <log >message
    grep -qF "$2 " message || fail "the error does not say \"$2\""
}

fresh_install
qt_dir=$(sed -n 's/^Qt6_DIR:PATH=//p' "$BUILD_DIR/CMakeCache.txt")
sources=project/third_party/render-graph-compile
mkdir -p $sources project/shaders/vulkan/components
for part in CMakeLists.txt cmake src tools; do
    cp -R "$SOURCE_DIR/$part" $sources
done
code cmake 1 >project/CMakeLists.txt
code cpp 1 >project/MyPresets.h
cp "$SOURCE_DIR/tests/cmake-package/own-presets/main.cpp" project
: >project/shaders/vulkan/components/tint.slang

configure project build -G Ninja "-DQt6_DIR=$qt_dir" -DCMAKE_UNITY_BUILD=ON || fail 'configuring'
build build || fail 'building'
[ "$(lines render-graph-preview)" = 0 ] || fail 'the preview is built without being asked for'
[ "$(build/my_app)" = ':/shaders/tint.glslp 2' ] || fail "the program has other presets than the project's"
if [ -e "$BUILD_DIR/CPackPreviewConfig.cmake" ]; then
    ninja -C build -t commands preview >log || fail 'there is no preview'
    [ "$(lines "render-graph-preview\"* --shaders-dir .*$WORK_DIR/project/shaders.* window$")" = 1 ] ||
        fail "the preview is not started with the project's shaders"
fi
sed 's/"tint", .passes/"dyed", .passes/' project/MyPresets.h >changed.h
mv changed.h project/MyPresets.h
build build || fail 'building with changed presets'
[ "$(build/my_app)" = ':/shaders/dyed.glslp 2' ] || fail 'changed presets have no effect'
build build || fail 'building again'
[ "$(lines 'no work to do')" = 1 ] || fail 'the next build runs something'

# The check has the same presets.
build build --target render-graph-check || fail 'building the check'
mkdir no-modules
built=build/third_party/render-graph-compile/tools
if $built/render-graph-check/render-graph-check --shaders-dir project/shaders --modules no-modules >log 2>&1; then
    fail 'the check accepts modules that do not exist'
fi
diff - log <<'END' || fail "the check has other presets than the project's"
tint.frag.spv: cannot be read
fullscreen.vert.spv: cannot be read
hdr-color-boost.frag.spv: cannot be read
END

# With FetchContent, and without what the preview needs, which is no error.
tool="$WORK_DIR/$built/render-graph-compile/render-graph-compile"
check="$WORK_DIR/$built/render-graph-check/render-graph-check"
quick_sources render-graph-compile '#include <FirstPartyPresets.h>
#include <string_view>
static_assert(FirstPartyPresetSource::kPresets[0].name == std::string_view("dyed"));'
tar czf render-graph-compile.tar.gz render-graph-compile
code cmake 2 | sed "s|https:[^)]*|\"$WORK_DIR/render-graph-compile.tar.gz\"|" >fetch.cmake
sed '/^add_subdirectory/{
r fetch.cmake
d
}' project/CMakeLists.txt >changed.txt
mv changed.txt project/CMakeLists.txt
configure project fetched -G Ninja "-DQt6_DIR=$qt_dir" -DCMAKE_DISABLE_FIND_PACKAGE_Vulkan=ON ||
    fail 'configuring with FetchContent'
[ "$(lines 'Vulkan\|glslang\|Qt.s Gui')" = 0 ] || fail 'configuring says what the preview lacks'
build fetched || fail 'building with FetchContent'
[ "$(fetched/my_app)" = ':/shaders/dyed.glslp 2' ] ||
    fail "FetchContent: the program has other presets than the project's"

# Only the programs, from the sources.
cp "$SOURCE_DIR/CMakePresets.json" render-graph-compile
(
    cd render-graph-compile
    unset CI # CI would require tools that this build does not need
    "$CMAKE" --preset release "-DRenderGraphCompile_PRESETS=$WORK_DIR/project/MyPresets.h" "-DQt6_DIR=$qt_dir"
    "$CMAKE" --build --preset release --target render-graph-compile render-graph-check
) >log 2>&1 || fail 'building the programs alone'

# While cross-compiling, CMake would find the target system's libraries. So nothing searches for what the preview needs.
configure project foreign -G Ninja "-DQt6_DIR=$qt_dir" -DCMAKE_CROSSCOMPILING_EMULATOR=emulator \
    "-DCMAKE_TOOLCHAIN_FILE=$SOURCE_DIR/tests/cmake-package/foreign.cmake" || fail 'configuring for another system'
if grep -i 'vulkan\|glslang' foreign/CMakeCache.txt; then
    fail 'the libraries of the preview are searched in the target system'
fi

add='add_subdirectory(../project/third_party/render-graph-compile first)'
refused "set(RenderGraphCompile_PRESETS none.h)
$add" "RenderGraphCompile_PRESETS is not a file: '$WORK_DIR/refused/none.h'. A relative path is relative to the project's \
top directory."
refused "$add
set(RenderGraphCompile_PRESETS ../project/MyPresets.h)
add_subdirectory(../project/third_party/render-graph-compile second)" \
    "The sources of RenderGraphCompile were added before, with other presets: \
'$WORK_DIR/$sources/tools/render-graph-compile/FirstPartyPresets.h'. Set RenderGraphCompile_PRESETS before they are \
added for the first time."
refused "set(RenderGraphCompile_PRESETS ../project/MyPresets.h)
find_package(RenderGraphCompile 1 REQUIRED)" \
    "RenderGraphCompile_PRESETS is set, but an installed tool has its presets compiled in. Add the sources with \
add_subdirectory or FetchContent instead."
