#!/bin/sh
# Two builds of one tree run at once, as by an IDE and in a terminal. Both succeed, and the next build runs nothing.
# Also, Make waits for an include that a rule generates, in parallel builds too.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
small_shaders shaders
cat >CMakeLists.txt <<'END_OF_PROJECT'
cmake_minimum_required(VERSION 3.21)
project(user LANGUAGES NONE)
find_package(RenderGraphCompile 1 REQUIRED)
set(include "${CMAKE_CURRENT_SOURCE_DIR}/shaders/vulkan/include")
add_custom_command(
    OUTPUT "${include}/tint.glsl"
    COMMAND sleep 1
    COMMAND "${CMAKE_COMMAND}" -E copy "${include}/tint.in" "${include}/tint.glsl"
    DEPENDS "${include}/tint.in"
    VERBATIM
)
render_graph_manifest(presets SHADERS_DIR shaders HEADER m.h DEPENDS "${include}/tint.glsl")
add_custom_target(app ALL)
render_graph_modules(app MANIFEST presets OUTPUT_DIRECTORY spirv)
END_OF_PROJECT
include=shaders/vulkan/include
mv $include/tint.glsl $include/tint.in

configure . build -G 'Unix Makefiles' || fail 'configuring with Make'
build build || fail 'building with Make'
sed 's/color.gbr/color.brg/' $include/tint.in >changed.in
cp changed.in $include/tint.in
build build || fail 'building with a changed include'
[ "$(lines 'Compiling .*[.]spv for app')" = 1 ] || fail 'not exactly the module with the changed include is compiled'
echo 'error' >>$include/tint.in
if build build; then fail 'the build succeeded with an error in a generated include'; fi
cp changed.in $include/tint.in
build build || fail 'the build does not recover'

# The tool and the compiler are slowed down, so that the two builds overlap.
for name in render-graph-compile glslangValidator; do
    case $name in
        render-graph-compile) program=$tool ;;
        *) program=$(command -v $name) ;;
    esac
    # shellcheck disable=SC2016 # expanded when it runs
    printf '%s\n' '#!/bin/sh' 'case "$1" in --version) ;; *) sleep 0.3 ;; esac' "exec '$program' \"\$@\"" >slow-$name
    chmod +x slow-$name
done
configure . build "-DRenderGraphCompile_EXECUTABLE=$WORK_DIR/slow-render-graph-compile" \
    "-DRenderGraphCompile_GLSL_COMPILER=$WORK_DIR/slow-glslangValidator" || fail 'configuring with slow tools'
build build || fail 'building with slow tools'
for attempt in 1 2 3; do
    touch shaders/tint.glslp shaders/vulkan/components/*
    "$CMAKE" --build build -j 2 >other 2>&1 &
    other=$!
    build build || fail "attempt $attempt: the second of two builds at once"
    wait $other || { cp other log; fail "attempt $attempt: the first of two builds at once"; }
    [ "$(cat log other | grep -c 'Generating\|Compiling')" -gt 4 ] ||
        fail "attempt $attempt: the builds did not overlap"
done
build build || fail 'building after two at once'
[ "$(lines 'Generating\|Compiling')" = 0 ] || fail 'after two builds at once, the next build runs something'
[ -z "$(find build -name '*.part')" ] || fail 'two builds at once leave a temporary file'
