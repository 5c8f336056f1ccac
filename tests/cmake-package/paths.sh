#!/bin/sh
# Directory names with characters that have a meaning in CMake, Make and depfiles. The build deletes nothing outside the
# module directory and runs nothing without need.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
# The test runs below a plain name, so only the names below have such characters.
plain=$(mktemp -d)
trap 'rm -rf "$plain"' EXIT
cd "$plain"
printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(user LANGUAGES NONE)' \
    'find_package(RenderGraphCompile 1 REQUIRED)' \
    'render_graph_manifest(presets SHADERS_DIR shaders HEADER m.h)' \
    'add_custom_target(app ALL)' \
    'render_graph_modules(app MANIFEST presets OUTPUT_DIRECTORY spirv INCLUDE_DIRECTORIES more)' >CMakeLists.txt

# module_runs: counts the modules that the last build compiled.
module_runs() {
    lines 'Compiling .*[.]spv for app'
}

# trial <generator> <compiler> <directory> <file>: the file's name is the beginning of the directory's name, where a
# wrong parser would cut it. The build must not delete this file.
trial() {
    name="$1, $2, in '$3'"
    rm -rf trial
    mkdir -p "trial/$3"
    cp CMakeLists.txt "trial/$3"
    small_shaders "trial/$3/shaders"
    components="trial/$3/shaders/vulkan/components"
    mkdir "trial/$3/more"
    mv "trial/$3/shaders/vulkan/include/tint.glsl" "trial/$3/more"
    sed 's|../include/tint.glsl|tint.glsl|' "$components/tint.slang" >tint.slang
    mv tint.slang "$components"
    : >"trial/$4"
    configure "trial/$3" "trial/$3/build" -G "$1" "-DRenderGraphCompile_GLSL_COMPILER=$(command -v "$2")" ||
        fail "$name: configuring"
    build "trial/$3/build" || fail "$name: building"
    [ "$(module_runs)" = 4 ] || fail "$name: not all modules are compiled"
    build "trial/$3/build" || fail "$name: building again"
    [ "$(module_runs)" = 0 ] || fail "$name: modules are compiled again without need"
    echo '// a remark' >>"trial/$3/more/tint.glsl"
    cp "$components/stock.frag" "$components/surplus.frag"
    build "trial/$3/build" || fail "$name: building with another include and component"
    [ "$(module_runs)" = 2 ] || fail "$name: not exactly the two changed modules are compiled"
    rm "$components/surplus.frag"
    build "trial/$3/build" || fail "$name: building without the component"
    [ "$(module_runs)" = 0 ] || fail "$name: deleting a component compiles others"
    [ -e "trial/$4" ] || fail "$name: the build deleted a file outside its tree"
    [ ! -e "trial/$3/build/spirv/surplus.frag.spv" ] || fail "$name: the module of the deleted component still exists"

    # The build fails as long as there is a file that CMake cannot list, and the message names the file.
    odd="$components/a[1.slang"
    : >"$odd"
    if build "trial/$3/build"; then fail "$name: built with a name that CMake cannot list"; fi
    tr -s ' \n' ' ' <log >message
    grep -qF "CMake cannot handle the name of '$plain/$odd', which has" message || fail "$name: the message is missing"
    rm "$odd"
    build "trial/$3/build" || fail "$name: the build does not recover"
}

trial Ninja glslangValidator 'Projektübersicht' 'Projekt'
trial Ninja glslc 'a [b] (c) {d} %e' 'a '
# Only Make has names with a '$': CMake's rules for Ninja lose what follows it.
# shellcheck disable=SC2016 # a name
trial 'Unix Makefiles' glslc 'a $HOME [b] (c)' 'a '
# shellcheck disable=SC2016
trial 'Unix Makefiles' glslangValidator 'a $HOME $(umläut) [b] ' 'a '

# A wrong list of the earlier run's modules deletes files only in the module directory.
list=$(find trial -name built.cmake)
: >trial/outside.frag.spv
for path in "$plain/trial/outside.frag.spv" ../../../outside.frag.spv gone.frag.spv; do
    echo "list(APPEND names_before [==[$path]==])" >>"$list"
done
: >"$(dirname "$(find trial -name tint.frag.spv -path '*build/spirv/*')")/gone.frag.spv"
sed 's/0.25/0.5/' "$components/../../tint.glslp" >changed.glslp
cp changed.glslp "$components/../../tint.glslp"
build "$components/../../../build" || fail 'building with a wrong list'
[ -e trial/outside.frag.spv ] || fail 'a wrong list deletes a file outside'
[ -z "$(find trial -name gone.frag.spv)" ] || fail 'a module that the list names still exists'
