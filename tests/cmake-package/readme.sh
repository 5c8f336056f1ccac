#!/bin/sh
# Builds the project that README.md shows, without Qt and with strict warnings. Then builds it for another system, and
# with RenderGraphCompile_EXECUTABLE.
set -eu
. "$(dirname "$0")/common.sh"
tests="$SOURCE_DIR/tests/cmake-package"

fresh_real_install
mkdir -p project/res
block() {
    awk -f "$SOURCE_DIR/tests/docs/shown.awk" -v block="$1 In a CMake build" "$SOURCE_DIR/README.md"
}
block cmake >project/CMakeLists.txt
block cpp >project/main.cpp
[ -s project/CMakeLists.txt ] || fail 'README.md shows no CMake code'
cp -R "$SOURCE_DIR/examples/shaders" project/res
preset_count=$(grep -c '^preset ' "$SOURCE_DIR/tests/presets/golden/presets.txt")
header=render-graph/my_presets/include/RenderGraphManifest.h

# project <build> <arguments...>: configures, builds and runs the project.
project() {
    to=$1
    shift
    configure project "$to" -DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
        "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror" "$@" ||
        fail "configuring $to"
    build "$to" || fail "building $to"
    program=$(find "$to" -name my_app -type f)
    [ "$("$program" | wc -l)" = "$preset_count" ] || fail "$to: the program does not list all presets"
    grep -q 'Error\|Warning\|warning' log && fail "$to: the build is not quiet"
    grep -q -- '-isystem' "$to/compile_commands.json" && fail "$to: a directory is included with -isystem"
    return 0
}

for generator in 'Ninja' 'Unix Makefiles' 'Ninja Multi-Config'; do
    project "with $generator" -G "$generator"
done
build 'with Ninja Multi-Config' --config Release || fail 'the second configuration'
[ "$(lines 'Generating') $(lines 'Building')" = '0 1' ] ||
    fail 'the second configuration does not share the header'

project 'for another system' -G Ninja "-DCMAKE_TOOLCHAIN_FILE=$tests/foreign.cmake"
project 'within its root' -G Ninja "-DCMAKE_TOOLCHAIN_FILE=$tests/foreign.cmake" \
    "-DCMAKE_FIND_ROOT_PATH=$WORK_DIR/project" -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=ONLY \
    "-DRenderGraphCompile_DIR=$prefix/share/cmake/RenderGraphCompile"

# The build step runs the tool with LC_ALL=C.UTF-8, on macOS without LC_ALL.
# shellcheck disable=SC2016 # expanded when the wrapper runs
printf '%s\n' '#!/bin/sh' 'echo "${LC_ALL-}" >"$0.locale"' "exec '$tool' \"\$@\"" >'a wrapper'
chmod +x 'a wrapper'
cp 'a wrapper' 'an older wrapper'
touch -t 200101010000 'an older wrapper'
[ "$(uname)" = Darwin ] && locale= || locale=C.UTF-8
for generator in 'Ninja' 'Unix Makefiles'; do
    for wrapper in 'a wrapper' 'an older wrapper'; do
        rm -f "$wrapper.locale"
        LC_ALL=C LANG=C project "wrapped with $generator" -G "$generator" \
            "-DRenderGraphCompile_EXECUTABLE=$WORK_DIR/$wrapper"
        [ -e "$wrapper.locale" ] || fail "$generator: $wrapper did not run"
        [ "$(cat "$wrapper.locale")" = "$locale" ] || fail "$generator: the locale is not UTF-8"
    done
done

chmod -x 'a wrapper'
configure project 'with no tool' "-DRenderGraphCompile_EXECUTABLE=$WORK_DIR/a wrapper" ||
    fail 'configuring with a tool that does not run'
if build 'with no tool'; then fail 'the build succeeded with a tool that does not run'; fi
tr -s ' \n' ' ' <log >message
grep -qiF "RenderGraphManifest.h was not generated: '$WORK_DIR/a wrapper' does not run: Permission \
denied. RenderGraphCompile_EXECUTABLE can name another render-graph-compile." message ||
    fail 'the message about a tool that does not run is missing'
[ ! -e "with no tool/$header" ] || fail 'there is a header though the tool does not run'
