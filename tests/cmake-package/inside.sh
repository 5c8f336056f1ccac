#!/bin/sh
# Builds RenderGraphCompile and the example consumer inside another project, for this system and for another one.
set -eu
. "$(dirname "$0")/common.sh"
tests="$SOURCE_DIR/tests/cmake-package"

fresh_install
quick_sources render-graph-compile
cp -R "$SOURCE_DIR/src" render-graph-compile # the consumer is compiled with these
small_shaders examples/shaders
cp -R "$SOURCE_DIR/examples/consumer" examples
cp -R "$tests/inside" inside
# All builds use this machine's Qt, even if CMake would look for the other system's.
qt_dir=$(sed -n 's/^Qt6_DIR:PATH=//p' "$BUILD_DIR/CMakeCache.txt")

# inside <build> <arguments...>
inside() {
    to=$1
    shift
    configure inside "$to" "$@" "-DQt6_DIR=$qt_dir" \
        -DCMAKE_DISABLE_FIND_PACKAGE_RenderGraphCompile=ON
}

inside native -G 'Ninja Multi-Config' || fail 'configuring'
build native || fail 'building'
[ "$(lines 'Checking the modules of consumer')" = 1 ] || fail 'the modules are not checked'
native/consumer/Debug/consumer list >log
[ "$(lines '^  stock  *2  *0  no$')" = 1 ] || fail 'the consumer does not list its presets'
build native
[ "$(lines 'no work to do')" = 1 ] || fail 'the next build runs something'
touch render-graph-compile/tools/render-graph-compile/main.cpp
build native
[ "$(lines 'Generating') $(lines 'Building') $(lines 'Linking')" = '1 1 1' ] ||
    fail 'a changed tool is not built and run once, or more is built'
"$CMAKE" --install native --config Debug --prefix installed >log 2>&1 || fail 'installing'
[ ! -e installed ] || fail 'installing the outer project installs our files'

if inside refused -G Ninja "-DCMAKE_TOOLCHAIN_FILE=$tests/foreign.cmake"; then
    fail 'a tool that cannot run here is accepted'
fi
tr -s ' \n' ' ' <log >message
grep -qF "render_graph_manifest: render-graph-compile is built for FreeBSD here and cannot run on \
this machine. Set RenderGraphCompile_EXECUTABLE to the full path of one that can, or set \
CMAKE_CROSSCOMPILING_EMULATOR. Call Stack" message || fail 'the error does not say what to set'

inside foreign -G Ninja "-DCMAKE_TOOLCHAIN_FILE=$tests/foreign.cmake" \
    "-DRenderGraphCompile_EXECUTABLE=$tool" || fail 'configuring for another system'
build foreign || fail 'building for another system'
[ "$(lines 'Checking the modules of consumer')" = 1 ] || fail 'the check beside the named tool is not run'
[ -x foreign/consumer/consumer ] || fail 'no consumer for another system'
[ "$(lines 'render-graph-compile$\|render-graph-check$')" = 0 ] || fail 'a program is built though another is named'

inside emulated -G Ninja "-DCMAKE_TOOLCHAIN_FILE=$tests/foreign.cmake" \
    '-DCMAKE_CROSSCOMPILING_EMULATOR=emulator;--flag' || fail 'configuring with an emulator'
ninja -C emulated -t commands >log
[ "$(lines "DTOOL=emulator;--flag;$WORK_DIR/emulated/.*/render-graph-compile\"")" = 1 ] ||
    fail 'the emulator does not run the tool'
find emulated -name passes.cmake -exec cat {} + >log
[ "$(lines '^set(check .*emulator;--flag;/.*/render-graph-check]')" = 1 ] || fail 'the emulator does not run the check'
