#!/bin/sh
# Changes one thing after another in a project. Each row has the expected number of tool runs, compiled sources and
# compiled modules.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
mkdir 'project [x]'
cp "$SOURCE_DIR/tests/cmake-package/app.cpp" 'project [x]'
printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(user LANGUAGES CXX)' \
    'find_package(RenderGraphCompile 1 REQUIRED)' \
    'render_graph_manifest(presets SHADERS_DIR shaders HEADER m.h)' \
    'add_executable(app app.cpp)' 'target_link_libraries(app PRIVATE presets)' \
    'render_graph_modules(app MANIFEST presets OUTPUT_DIRECTORY spirv)' >'project [x]/CMakeLists.txt'
shaders='project [x]/shaders'
components=$shaders/vulkan/components
header='the build/render-graph/presets/include/m.h'
modules='the build/spirv'

# built <name> <tool runs> <compilations> <modules>
built() {
    name="$generator: $1"
    build 'the build' || fail "$name: the build failed"
    counts="$(lines 'Generating m.h for presets') $(lines 'Building CXX') $(lines 'Compiling .*[.]spv for app')"
    [ "$counts" = "$2 $3 $4" ] || fail "$name: tool runs, compilations, modules: $counts, not $2 $3 $4"
    [ "$(lines 'retired')" = 0 ] || fail "$name: the build is not quiet"
    "$tool" --shaders-dir "$shaders" --out expected.h >/dev/null
    cmp "$header" expected.h || fail "$name: the header differs from the output of the tool"
}

# row <name> <tool runs> <compilations> <modules>
row() {
    built "$@"
    build 'the build' || fail "$name: the next build failed"
    [ "$(lines 'Generating\|Building\|Linking\|Configuring\|Checking')" = 0 ] ||
        fail "$name: the next build runs something"
}

# shows <line of the program>
shows() {
    "the build/app" | grep -qFx "$1" || fail "$name: the program does not show '$1'"
}

# broken <name> <line of the tool>
broken() {
    name="$generator: $1"
    cp -p "$header" kept.h
    for attempt in first second; do
        if build 'the build'; then fail "$name: the $attempt build succeeded"; fi
        grep -qFx "render-graph-compile: $2" log || fail "$name: the tool's line is not shown"
        [ "$(lines 'retired')" = 0 ] || fail "$name: a line that is no error is shown"
    done
    cmp "$header" kept.h || fail "$name: the header changed"
    [ -z "$(find "$header" -newer kept.h)" ] || fail "$name: the header was written again"
}

begin() {
    generator=$1
    rm -rf 'the build' "$shaders"
    small_shaders "$shaders"
    configure 'project [x]' 'the build' -G "$generator" \
        "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror" ||
        fail "$generator: configuring"
    row 'first build' 1 1 4
    row 'build again' 0 0 0
    shows ':/shaders/stock.glslp 2 still'
    shows ':/shaders/tint.glslp 3 still amount=0.25'
}

# dated_tomorrow <path> <number of modules compiled from it>: a time stamp in the future counts as a change in each
# build until the file is touched.
dated_tomorrow() {
    touch -t 209901010000 "$1"
    built "$1 of tomorrow" 1 0 "$2"
    built "$1 of tomorrow, again" 1 0 "$2"
    cp old.slang "$components/stock.slang"
    built "a component beside $1 of tomorrow" 1 1 $((1 + $2))
    rm "$components/stock.slang"
    touch "$1"
    row "$1 of today" 1 1 $((1 + $2))
}

# Changes that builds with Ninja and with Make detect in different ways.
edits() {
    echo '// a remark' >>"$components/tint.slang"
    row 'edit without effect' 1 0 1
    with_frame_counter <"$components/stock.frag" >"$components/stock.slang"
    row 'add a component with effect' 1 1 1
    shows ':/shaders/stock.glslp 2 moves'
    cp "$components/stock.slang" old.slang
    rm "$components/stock.slang"
    row 'remove a component' 1 1 1
    shows ':/shaders/stock.glslp 2 still'

    echo '// a remark' >>"$shaders/vulkan/include/tint.glsl"
    row 'edit an include' 0 0 1
    cp "$modules/tint.frag.spv" kept.spv
    cp "$components/tint.slang" intact.slang
    echo 'return 1' >>"$components/tint.slang"
    name="$generator: a component that does not compile"
    for attempt in first second; do
        if build 'the build'; then fail "$name: the $attempt build succeeded"; fi
        grep -q "$(printf '%s' "$WORK_DIR/$components/tint.slang" | sed 's/[[]/[[]/'):[0-9]*: " log ||
            fail "$name: the compiler's line is not shown"
        grep -q "^   tint.frag.spv was not compiled: '[^']*' says why above[.]$" log ||
            fail "$name: the module is not named"
        [ "$(lines 'Call Stack')" = 0 ] || fail "$name: the message comes with a call stack"
    done
    cmp "$modules/tint.frag.spv" kept.spv || fail "$name: the old module is not kept"
    cp intact.slang "$components/tint.slang"
    row 'it compiles again' 1 0 1

    sed 's/^void main/layout(binding = 1) uniform sampler2D Grain;\n&/; s/fragColor = /&texture(Grain, texCoord) * /' \
        intact.slang >"$components/tint.slang"
    name="$generator: a component that samples an image too many"
    for compiled in 1 0; do
        if build 'the build'; then fail "$name: the build succeeded"; fi
        [ "$(lines 'Compiling .*[.]spv for app')" = $compiled ] || fail "$name: not exactly $compiled modules are compiled"
        grep -qFx "$WORK_DIR/$components/tint.slang: binding 1 ('Grain') is sampled, but pass 0 of 'tint' has 1 image: \
is an //! input line or feedback missing?" log || fail "$name: the line of the check is not shown"
        grep -qFx "   The modules in $WORK_DIR/$modules do not fit the passes: '$check' says why above." log ||
            fail "$name: the directory is not named"
    done
    cp intact.slang "$components/tint.slang"
    row 'it fits again' 1 0 1

    rm "$header"
    row 'delete the header' 0 1 0 # restored from the tool's last output
    rm -r 'the build/render-graph' "$modules"
    row 'delete all that was generated' 1 1 4
    build 'the build' --target clean
    row 'clean' 1 1 4
    touch "$tool"
    row 'a new tool' 1 0 0
    dated_tomorrow "$components/tint.slang" 1
}

begin 'Unix Makefiles'
edits
begin Ninja
edits

dated_tomorrow "$tool" 0

cp "$components/stock.frag" "$components/stock.slang"
row 'add a component without effect' 1 0 1
touch -t 200101010000 old.slang
rm "$components/stock.slang"
row 'remove it' 1 0 1
cp -p old.slang "$components/stock.slang"
row 'add a component with an old time stamp' 1 1 1
shows ':/shaders/stock.glslp 2 moves'
mv "$components/stock.frag" stock.frag
row 'remove what is not needed' 1 0 0
mv stock.frag "$components/stock.frag"
row 'put it back' 1 0 0

cp -p "$shaders/tint.glslp" .
sed 's/0.25/0.5/' tint.glslp >"$shaders/tint.glslp"
row 'change a .glslp' 1 1 0
shows ':/shaders/tint.glslp 3 moves amount=0.5'
rm "$shaders/tint.glslp"
row 'remove a .glslp' 1 1 0
shows ':/shaders/tint.glslp 3 moves amount=0'
cp -p tint.glslp "$shaders"
row 'put the .glslp back with its time stamp' 1 1 0

cp "$components/stock.frag" "$components/surplus.frag"
row 'add a component that no preset uses' 1 0 1
[ -e "$modules/surplus.frag.spv" ] || fail "$name: its module is missing"
mv "$components/surplus.frag" "$components/renamed.slang"
row 'rename it' 1 0 1
[ ! -e "$modules/surplus.frag.spv" ] || fail "$name: the old module still exists"
rm "$components/renamed.slang"
row 'remove it' 1 0 0
mv "$components/hdr-color-boost.slang" .
name="$generator: remove a component that the tool does not read"
if build 'the build'; then fail "$name: the build succeeded"; fi
grep -q "^   .*m.h names modules that have no source in the shaders directory: \
hdr-color-boost.frag.spv. If another rule generates one, list it in DEPENDS of render_graph_manifest() by its \
full path[.]$" log || fail "$name: the module is not named"
mv hdr-color-boost.slang "$components"
row 'put that one back' 1 0 0

echo 'a note' >"$components/notes.txt"
echo '// read by no one here' >"$shaders/vulkan/include/new.glsl"
row 'add what the tool does not read' 0 0 0
ln -s nowhere "$components/.#tint.slang"
row "an editor's dangling link" 1 0 0
rm "$components/.#tint.slang"
row 'the link is gone' 1 0 0

cp -p "$components/tint.slang" intact.slang
echo '//! input NOWHERE' >>"$components/tint.slang"
broken 'break a component' "preset 'tint' pass 0 ('tint') declares //! input NOWHERE but \
no earlier pass carries that alias ($WORK_DIR/$components/tint.slang)"
cp intact.slang "$components/tint.slang"
row 'repair it' 1 0 1
rm "$components/tint.slang"
broken 'remove a needed component' "preset 'tint' pass 0 ('tint') has no shaders/vulkan/components source"
cp -p intact.slang "$components/tint.slang"
row 'put it back with its time stamp' 1 0 0

touch "$components/tint.slang"
export LC_ALL=C
row 'a locale that is not UTF-8' 1 0 1
