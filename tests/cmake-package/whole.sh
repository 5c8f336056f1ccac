#!/bin/sh
# Modules by both compilers, in libraries, as files and by configuration; a catalogue library, also
# exported; a component that comes from a rule; what IDEs see; and a header that is renamed.
set -eu
. "$(dirname "$0")/common.sh"
tests="$SOURCE_DIR/tests/cmake-package"

fresh_install
cp -R "$tests/whole" 'whole (1)'
cp "$SOURCE_DIR/examples/consumer/main.cpp" 'whole (1)'
shaders='whole (1)/shaders'
cp -R "$prefix/share/render-graph-compile/examples/shaders" "$shaders"
components=$shaders/vulkan/components
sed 's/texCoord/texCoord * (1.0 + pc.frameCount)/; s/component.glsl/generated.glsl/' \
    "$components/stock.frag" >'whole (1)/moving.glsl'
modules=$(($(find "$components" -name '*.slang' -o -name '*.frag' | wc -l) + 1))
preset_count=$(sed 1d "$SOURCE_DIR/tests/presets/tables/presets.csv" | wc -l)

# whole <generator> <compiler> <arguments of configuring...>: configures it into a directory of the
# generator's name, of which nothing is built yet.
whole() {
    generator=$1
    compiler=$(command -v "$2") || fail "no $2 here"
    shift 2
    rm -f "$components/stock.slang" "$shaders/vulkan/include/generated.glsl"
    mkdir -p "$generator/.cmake/api/v1/query"
    : >"$generator/.cmake/api/v1/query/codemodel-v2"
    configure 'whole (1)' "$generator" -G "$generator" "-DRenderGraphCompile_GLSL_COMPILER=$compiler" \
        "$@" || fail "$generator: configuring"
}

# compiled <modules for files>: how many of them the last build compiled.
compiled() {
    [ "$(lines 'Compiling .*[.]spv for files')" = "$1" ] || fail "$generator: not $1 modules"
}

# runs <program>
runs() {
    "$1" check >log || fail "$generator: not every module is in the program"
    "$1" list >log
    [ "$(lines '^  stock  *2  *0  yes$')" = 1 ] || fail "$generator: the rule's component is not taken"
}

# edited: an edited include compiles again what includes it.
edited() {
    echo '// a remark' >>"$shaders/vulkan/include/lcd.glsl"
    build "$@" || fail "$generator: building with another include"
    compiled "$(grep -l lcd.glsl "$components"/* | wc -l)"
}

# Optimized, and with Make, where the first build has to wait for the rule's component.
whole 'Unix Makefiles' glslangValidator -DCMAKE_BUILD_TYPE=Release
build 'Unix Makefiles' --target presets || fail 'building the header alone'
[ "$(lines 'Generating') $(lines 'Building\|Compiling')" = '2 0' ] || fail 'more than the header is built'
[ -s 'Unix Makefiles/render-graph/presets/include/app/Presets.h' ] || fail 'no header in its directory'
build 'Unix Makefiles' --target files_modules || fail 'building the modules alone'
[ "$(lines 'Building CXX')" = 0 ] || fail 'more than the modules is built'
compiled "$modules"
build 'Unix Makefiles' || fail 'building the rest with Make'
runs 'Unix Makefiles/whole'
build 'Unix Makefiles' || fail 'building again with Make'
[ "$(lines 'Generating\|Compiling\|Building\|Linking')" = 0 ] || fail 'the build after it has something to do'
[ "$(find 'Unix Makefiles/spirv' -type f | wc -l)" = "$modules" ] || fail 'not one file for each module'
glslangValidator -V --quiet -S frag -o plain.spv "$components/crt-screen.slang"
spirv-opt -O plain.spv -o optimized.spv
cmp optimized.spv 'Unix Makefiles/spirv/crt-screen.frag.spv' || fail 'glslang: the module is not optimized'
edited 'Unix Makefiles'

# Shaders and header stand among the sources of the manifest's library, in folders.
cat "Unix Makefiles"/.cmake/api/v1/reply/target-presets-*.json >log
for seen in '"name" : "Generated Files"' '"name" : "Shaders.*vulkan.*components"' \
    '"path" : ".*include/app/Presets.h"' '"path" : "shaders/vulkan/components/rewind.slang"'; do
    [ "$(lines "$seen")" = 1 ] || fail "IDEs do not see $seen"
done

# A library that holds the catalogue can be exported.
"$CMAKE" --install 'Unix Makefiles' --prefix "$WORK_DIR/installed" >log 2>&1 || fail 'installing'
configure "$tests/exported" 'exported' "-Dwhole=$WORK_DIR/installed" || fail 'configuring with what was exported'
build exported || fail 'building with what was exported'
[ "$(exported/exported)" = "$preset_count" ] || fail 'the exported catalogue lacks presets'

# Renamed, the header is gone under its old name.
configure 'whole (1)' 'Unix Makefiles' -Dheader=app/Renamed.h || fail 'configuring with another header'
build 'Unix Makefiles' || fail 'building with another header'
runs 'Unix Makefiles/whole'
[ "$(find 'Unix Makefiles/render-graph/presets/include' -type f)" = \
    'Unix Makefiles/render-graph/presets/include/app/Renamed.h' ] || fail 'the old header is still there'

# The other compiler, and each configuration's own options.
whole 'Ninja Multi-Config' glslc
build 'Ninja Multi-Config' --config Debug --target files || fail 'glslc: building for debugging'
compiled "$modules"
build 'Ninja Multi-Config' --config Release || fail 'glslc: building'
compiled "$modules"
runs 'Ninja Multi-Config/Release/whole'
build 'Ninja Multi-Config' --config Release || fail 'glslc: building again'
[ "$(lines 'Generating\|Compiling\|Building\|Linking')" = 0 ] || fail 'glslc: the build after it has something to do'
glslc -fshader-stage=frag -O "$components/crt-screen.slang" -o optimized.spv
cmp optimized.spv 'Ninja Multi-Config/spirv/crt-screen.frag.spv' || fail 'glslc: the module is not optimized'
spirv-dis 'Ninja Multi-Config/spirv/Debug/crt-screen.frag.spv' >log
[ "$(lines OpLine)" -gt 0 ] || fail 'glslc: no debug information'
edited 'Ninja Multi-Config' --config Release
