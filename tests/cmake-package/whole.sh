#!/bin/sh
# A project that uses the whole package. It has modules from both compilers, in libraries, as files and for each
# configuration; libraries of a catalogue and of the renderer, which are also exported; a component that a rule makes;
# the sources that IDEs show; and a renamed header.
set -eu
. "$(dirname "$0")/common.sh"
tests="$SOURCE_DIR/tests/cmake-package"

fresh_install
cp -R "$tests/whole" 'whole (1)'
cp "$SOURCE_DIR/examples/consumer/main.cpp" 'whole (1)'
shaders='whole (1)/shaders'
small_shaders "$shaders"
components=$shaders/vulkan/components
with_frame_counter <"$components/stock.frag" | sed 's/component.glsl/generated.glsl/' >'whole (1)/moving.glsl'
mkdir "$shaders/more"
echo 'vec2 moved(vec2 place) { return place * FACTOR; }' >"$shaders/more/more.glsl"
sed 's/tint.glsl"/&\n#include "more.glsl"/; s/texCoord).rgb/moved(texCoord)).rgb/' "$components/tint.slang" >tint.slang
mv tint.slang "$components"
modules=4

# whole <generator> <CMake arguments...>: configures a new build in a directory with the generator's name.
whole() {
    generator=$1
    shift
    rm -f "$components/stock.slang" "$shaders/vulkan/include/generated.glsl"
    mkdir -p "$generator/.cmake/api/v1/query"
    : >"$generator/.cmake/api/v1/query/codemodel-v2"
    # Only the modules have to be optimized.
    configure 'whole (1)' "$generator" -G "$generator" -DCMAKE_CXX_FLAGS_RELEASE= -DCMAKE_CXX_FLAGS_RELWITHDEBINFO= "$@" || fail "$generator: configuring"
}

# compiled <count>: the last build compiled so many modules for the target files.
compiled() {
    [ "$(lines 'Compiling .*[.]spv for files')" = "$1" ] || fail "$generator: not exactly $1 modules are compiled"
}

# runs <program>
runs() {
    "$1" check >log || fail "$generator: not every module is in the program"
    "$1" list >log
    [ "$(lines '^  stock  *2  *0  yes$')" = 1 ] || fail "$generator: the rule's component is not used"
}

# edited <build arguments...>: after an edit of an include, the next build compiles what includes it.
edited() {
    for include in vulkan/include/tint.glsl more/more.glsl; do
        echo '// a remark' >>"$shaders/$include"
        build "$@" || fail "$generator: building with another $include"
        compiled 1
    done
}

# made <module> <command...>: the module has Vulkan 1.1's version of SPIR-V, and is what the command compiles tint.slang
# to in the shaders directory. It does not contain the path of that directory.
made() {
    module=$1
    shift
    (cd "$shaders" && "$@" -DFACTOR=2.0 -I./more -o "$WORK_DIR/expected.spv" vulkan/components/tint.slang)
    case $1 in glslang*) spirv-opt -O expected.spv -o expected.spv ;; esac
    cmp expected.spv "$module" || fail "$generator: the module differs from the output of $*"
    if grep -q "$WORK_DIR" "$module"; then fail "$generator: the module contains the path of a directory"; fi
    spirv-dis "$module" >log
    [ "$(lines '^; Version: 1.3$')" = 1 ] || fail "$generator: the SPIR-V version is not that of the target environment"
    [ "$(lines 'OpLine')" -gt 0 ] || fail "$generator: no debug information"
}

# Optimized modules, with Make, whose first build has to wait for the rule's component.
whole 'Unix Makefiles' -DCMAKE_BUILD_TYPE=RelWithDebInfo '-Doptions=--target-env;vulkan1.1'
build 'Unix Makefiles' --target presets || fail 'building the header alone'
[ "$(lines 'Generating') $(lines 'Building\|Compiling')" = '2 0' ] || fail 'more than the header is built'
[ -s 'Unix Makefiles/render-graph/presets/include/app/Presets.h' ] || fail 'no header in its directory'
build 'Unix Makefiles' --target files_modules || fail 'building the modules alone'
[ "$(lines 'Building CXX')" = 0 ] || fail 'more than the modules is built'
compiled "$modules"
build 'Unix Makefiles' || fail 'building the rest with Make'
runs 'Unix Makefiles/whole'
build 'Unix Makefiles' || fail 'building again with Make'
[ "$(lines 'Generating\|Compiling\|Building\|Linking\|Checking')" = 0 ] || fail 'the next build runs something'
[ "$(find 'Unix Makefiles/spirv' -type f | wc -l)" = "$modules" ] ||
    fail 'the directory does not contain exactly one file for each module'
made 'Unix Makefiles/spirv/tint.frag.spv' glslangValidator -V --quiet -S frag -g --target-env vulkan1.1
edited 'Unix Makefiles'

# The renderer has exceptions and run-time type information, whatever the project has.
cat 'Unix Makefiles/CMakeFiles/renderer.dir/flags.make' >log
[ "$(lines 'CXX_FLAGS.*-fno-exceptions -fno-rtti .*-fexceptions -frtti')" = 1 ] || fail "the renderer's flags"

# IDEs show the shaders and the header among the sources of the manifest's library, in folders.
cat "Unix Makefiles"/.cmake/api/v1/reply/target-presets-*.json >log
for seen in '"name" : "Generated Files"' '"name" : "Shaders.*vulkan.*components"' \
    '"path" : ".*include/app/Presets.h"' '"path" : "shaders/vulkan/components/tint.slang"'; do
    [ "$(lines "$seen")" = 1 ] || fail "IDEs do not show $seen"
done

# Libraries that link a catalogue and the renderer can be exported, and so can the library of a manifest.
"$CMAKE" --install 'Unix Makefiles' --prefix "$WORK_DIR/installed" >log 2>&1 || fail 'installing'
if grep -r "$WORK_DIR" installed/cmake; then fail 'the export contains the path of a build directory'; fi
configure "$tests/exported" 'exported' "-Dwhole=$WORK_DIR/installed" || fail 'configuring with the export'
build exported || fail 'building with the export'
[ "$(exported/exported)" = '2 0' ] || fail 'the exported catalogue lacks presets, or the renderer draws without a device'

# After renaming the header, the old header is gone.
configure 'whole (1)' 'Unix Makefiles' -Dheader=app/Renamed.h || fail 'configuring with another header'
build 'Unix Makefiles' || fail 'building with another header'
runs 'Unix Makefiles/whole'
[ "$(find 'Unix Makefiles/render-graph/presets/include' -type f)" = \
    'Unix Makefiles/render-graph/presets/include/app/Renamed.h' ] || fail 'the old header still exists'

# The other compiler, with the options of each configuration.
whole 'Ninja Multi-Config' -DRenderGraphCompile_GLSL_COMPILER=glslc -Doptions=--target-env=vulkan1.1
build 'Ninja Multi-Config' --config Debug --target files || fail 'glslc: building for debugging'
compiled "$modules"
build 'Ninja Multi-Config' --config Release || fail 'glslc: building'
compiled "$modules"
runs 'Ninja Multi-Config/Release/whole'
build 'Ninja Multi-Config' --config Release || fail 'glslc: building again'
[ "$(lines 'Generating\|Compiling\|Building\|Linking\|Checking')" = 0 ] || fail 'glslc: the next build runs something'
made 'Ninja Multi-Config/spirv/Debug/tint.frag.spv' glslc -fshader-stage=frag -g --target-env=vulkan1.1
(cd "$shaders" && glslc -fshader-stage=frag -O --target-env=vulkan1.1 -DFACTOR=2.0 -I./more \
    -o "$WORK_DIR/expected.spv" vulkan/components/tint.slang)
cmp expected.spv 'Ninja Multi-Config/spirv/tint.frag.spv' || fail 'glslc: the module is not optimized'
edited 'Ninja Multi-Config' --config Release

# A component of the examples that has lost its input lines.
prefix="$WORK_DIR/examples"
"$CMAKE" --install "$BUILD_DIR" --config "$CONFIG" --prefix "$prefix" >log
mkdir lost
cp -R "$SOURCE_DIR/examples/shaders" lost
printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(lost LANGUAGES NONE)' \
    'find_package(RenderGraphCompile 1 REQUIRED)' 'render_graph_manifest(presets SHADERS_DIR shaders HEADER m.h)' \
    'add_custom_target(app ALL)' 'render_graph_modules(app MANIFEST presets OUTPUT_DIRECTORY spirv)' >lost/CMakeLists.txt
component="$WORK_DIR/lost/shaders/vulkan/components/crt-screen.slang"
cp "$component" crt-screen.slang
sed '/^\/\/! input/d' crt-screen.slang >"$component"
configure lost lost/build -G Ninja || fail 'configuring the example shaders'
if build lost/build; then fail 'a component may lose its input lines'; fi
grep -qFx "$component: binding 2 ('Halation') is sampled, but pass 17 of 'crt-pvm' has 1 image: \
is an //! input line or feedback missing?" log || fail 'the line about the lost input lines is missing'
cp crt-screen.slang "$component"
build lost/build || fail 'the input lines do not repair the build'
prefix="$WORK_DIR/moved here"

# CMake 3.31 and later has a target that builds all generated files.
case $("$CMAKE" --version | head -n 1) in *' 3.'[12]?.* | *' 3.30.'*) exit 0 ;; esac
for generator in 'Unix Makefiles' Ninja; do
    rm -rf "$generator"
    whole "$generator" '-Doptions=--target-env;vulkan1.1'
    build "$generator" --target codegen || fail "$generator: building the target codegen"
    [ -s "$generator/render-graph/presets/include/app/Presets.h" ] || fail "$generator: codegen makes no header"
    [ "$(lines 'Compiling .*[.]spv for shaders')" = 4 ] || fail "$generator: codegen makes no modules"
done
