#!/bin/sh
# The project that docs/cmake.md shows for presets of one's own.
set -eu
. "$(dirname "$0")/common.sh"

rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/render-graph-compile"
cd "$WORK_DIR"
for part in CMakeLists.txt cmake src tools; do
    cp -R "$SOURCE_DIR/$part" render-graph-compile
done
tar czf render-graph-compile.tar.gz render-graph-compile
rm -r render-graph-compile
cp -R "$SOURCE_DIR/tests/cmake-package/own-presets" project
# shellcheck disable=SC2016 # no command, but Markdown
sed -n '/^## Presets of your own/,/^## /{/^```cmake$/,/^```$/{/^```/!p}}' "$SOURCE_DIR/docs/cmake.md" |
    sed "s|https:[^)]*|\"$WORK_DIR/render-graph-compile.tar.gz\"|" >project/CMakeLists.txt
[ -s project/CMakeLists.txt ] || fail 'the document shows no CMake code'
mkdir -p project/shaders/vulkan/components
: >project/shaders/vulkan/components/tint.slang

prefix=none
qt_dir=$(sed -n 's/^Qt6_DIR:PATH=//p' "$BUILD_DIR/CMakeCache.txt")
configure project build -G Ninja "-DQt6_DIR=$qt_dir" -DCMAKE_UNITY_BUILD=ON || fail 'configuring'
build build || fail 'building'
[ "$(build/my_app)" = ':/shaders/tint.glslp 2' ] || fail 'other presets than the own ones'
sed 's/"tint", .passes/"dyed", .passes/' project/FirstPartyPresets.h >changed.h
mv changed.h project/FirstPartyPresets.h
build build || fail 'building with changed presets'
[ "$(build/my_app)" = ':/shaders/dyed.glslp 2' ] || fail 'the change is not taken'
build build || fail 'building again'
[ "$(lines 'no work to do')" = 1 ] || fail 'the build after it has something to do'
