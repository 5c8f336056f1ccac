#!/bin/sh
# The sources inside another project: beside targets with the same names, in several configurations, and with a tool
# that the project names or that a rule of the project makes.
set -eu
. "$(dirname "$0")/common.sh"
tests="$SOURCE_DIR/tests/cmake-package"

fresh_install
quick_sources render-graph-compile
small_shaders project/shaders
cp "$tests/app.cpp" project/main.cpp
qt_dir=$(sed -n 's/^Qt6_DIR:PATH=//p' "$BUILD_DIR/CMakeCache.txt")

# configured <build> <CMake code before> <CMake code after> <arguments...>
configured() {
    to=$1
    printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(user LANGUAGES CXX)' \
        "$2" 'add_subdirectory(../render-graph-compile first)' \
        'render_graph_manifest(presets SHADERS_DIR shaders HEADER m.h)' \
        'add_executable(app main.cpp)' 'target_link_libraries(app PRIVATE presets)' "$3" \
        >project/CMakeLists.txt
    shift 3
    configure project "$to" "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Werror" "$@"
}

# The manifest's library requires C++17, so the header compiles without warnings even if the default is older.
configured several 'set(CMAKE_CXX_STANDARD 14)
add_library(VulkanRenderGraph INTERFACE)
add_library(VulkanRenderGraphCatalog INTERFACE)
add_custom_target(presets_header)' \
    'add_subdirectory(../render-graph-compile second)
find_package(RenderGraphCompile 1 REQUIRED)' \
    -G 'Ninja Multi-Config' "-DQt6_DIR=$qt_dir" || fail 'configuring'
for config in Debug Release; do
    build several --config $config || fail "building $config"
    "several/$config/app" >/dev/null || fail "$config does not run"
done
for config in Debug Release Debug; do
    build several --config $config || fail "$config again: building"
    [ "$(lines 'Generating') $(lines 'Building') $(lines 'Linking')" = '0 0 0' ] ||
        fail "$config again: something runs"
done

rm several/CMakeFiles/presets_inputs.txt
build several --config Debug || fail 'building without the listing'
[ "$(lines 'Building')" = 0 ] || fail 'without the listing, something is compiled'
build several --config Debug
[ "$(lines 'no work to do')" = 1 ] || fail 'the next build runs something'

if configured both 'find_package(RenderGraphCompile 1 REQUIRED)' '' -G Ninja "-DQt6_DIR=$qt_dir"; then
    fail 'accepted the package and the sources in one project'
fi
tr -s ' \n' ' ' <log >message
grep -qF "find_package(RenderGraphCompile) was called before the sources of RenderGraphCompile were \
added. Leave out one of both. -- Configuring" message || fail 'the error does not say what to leave out'

# If the project names a tool, none is built and Qt is not needed.
configured named '' '' -G Ninja "-DCMAKE_TOOLCHAIN_FILE=$tests/foreign.cmake" \
    -DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON "-DRenderGraphCompile_EXECUTABLE=$tool" ||
    fail 'configuring with a named tool'
build named || fail 'building with a named tool'
named/app >/dev/null || fail 'the program built with a named tool does not run'

for generator in 'Ninja' 'Unix Makefiles'; do
    # shellcheck disable=SC2016 # expanded by CMake
    configured "made with $generator" 'set(RenderGraphCompile_EXECUTABLE "${CMAKE_BINARY_DIR}/a tool")
add_custom_command(OUTPUT "${RenderGraphCompile_EXECUTABLE}"
    COMMAND "${CMAKE_COMMAND}" -E create_symlink "'"$tool"'" "${RenderGraphCompile_EXECUTABLE}" VERBATIM)' \
        '' -G "$generator" -DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON ||
        fail "$generator: configuring with a tool that a rule makes"
    build "made with $generator" || fail "$generator: building with a tool that a rule makes"
    "made with $generator/app" >/dev/null || fail "$generator: the program does not run"
done
