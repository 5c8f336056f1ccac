#!/bin/sh
# Builds the projects of docs/other-builds.md with the example consumer's sources.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
rm -r "$prefix/share/render-graph-compile/examples/shaders"
small_shaders "$prefix/share/render-graph-compile/examples/shaders"
# Make splits the names that pkg-config prints at spaces.
plain=$(mktemp -d)
trap 'rm -rf "$plain"' EXIT
mv "$prefix" "$plain/prefix"
export PKG_CONFIG_PATH="$plain/prefix/share/pkgconfig"

# project <language> <file>: makes a project of the code block in this language, which becomes the file.
project() {
    mkdir "$1"
    sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/{/^\`\`\`/!p}" "$SOURCE_DIR/docs/other-builds.md" >"$1/$2"
    [ -s "$1/$2" ] || fail "the document shows no $1 code"
    cp "$SOURCE_DIR/examples/consumer/main.cpp" "$1"
    cp -R "$(pkg-config --variable=shadersdir render-graph-compile)" "$1/shaders"
}

# lists <program> <yes or no: whether stock is animated>
lists() {
    "$1" list >listed
    grep -q "^  stock  *2  *0  $2\$" listed || fail "$1 does not list its presets"
}

moving="$WORK_DIR/stock.slang"
project make Makefile
with_frame_counter <make/shaders/vulkan/components/stock.frag >"$moving"
make -C make -j 2 my_app modules >log 2>&1 || fail 'building with Make'
lists make/my_app no
[ "$(find make/spirv -name '*.spv' | wc -l)" = 4 ] || fail 'Make: not every component has a module'
make -C make my_app modules >log 2>&1
[ "$(lines '[-]-shaders-dir\|^glslang')" = 0 ] || fail 'Make: the next build runs something'
cp "$moving" make/shaders/vulkan/components
make -C make my_app >log 2>&1 || fail 'building with a new component with Make'
lists make/my_app yes

project meson meson.build
meson setup meson/build meson >log 2>&1 || fail 'configuring with Meson'
ninja -C meson/build >log 2>&1 || fail 'building with Meson'
lists meson/build/my_app no
cp "$moving" meson/shaders/vulkan/components/stock.frag
ninja -v -C meson/build >log 2>&1 || fail 'building again with Meson'
[ "$(lines "shaders-dir")" = 1 ] || fail 'Meson: an edited component is not read again'
ninja -C meson/build >log 2>&1
[ "$(lines 'no work to do')" = 1 ] || fail 'Meson: the next build runs something'
