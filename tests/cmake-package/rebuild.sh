#!/bin/sh
# Builds the example consumer against the installed package, then changes one thing after another.
# Each row says how often the tool ran, and how many sources and how many modules were compiled. Takes
# the generator.
set -eu
. "$(dirname "$0")/common.sh"
generator=$1

fresh_install
cp -R "$SOURCE_DIR/examples" 'examples [x]'
shaders='examples [x]/shaders'
components=$shaders/vulkan/components
light_shaders "$shaders"
header='the build/render-graph/consumer_presets/include/RenderGraphManifest.h'
configure 'examples [x]/consumer' 'the build' -G "$generator" \
    "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror" ||
    fail "$generator: configuring"

all_modules=$(($(find "$components" -name '*.slang' -o -name '*.frag' | wc -l) + 1))

# built <name> <tool runs> <compilations> <modules>
built() {
    name="$generator: $1"
    build 'the build' || fail "$name: the build failed"
    counts="$(lines 'Generating RenderGraphManifest.h for consumer_presets') $(lines \
        'Building CXX.*\(main\|VulkanRenderGraph\)') $(lines 'Compiling .*[.]spv for consumer')"
    [ "$counts" = "$2 $3 $4" ] || fail "$name: tool runs, compilations, modules: $counts, not $2 $3 $4"
    [ "$(lines 'retired')" = 0 ] || fail "$name: the build is not quiet"
    "$tool" --shaders-dir "$shaders" --out expected.h >/dev/null
    cmp "$header" expected.h || fail "$name: the header is not what the tool writes"
    "the build/consumer" check >log || fail "$name: not all modules are in the program"
}

# row <name> <tool runs> <compilations> <modules>
row() {
    built "$@"
    build 'the build' || fail "$name: the build after it failed"
    [ "$(lines 'Generating\|Building\|Linking\|Configuring')" = 0 ] ||
        fail "$name: the build after it has something to do"
}

# shows <arguments> <pattern>
shows() {
    # shellcheck disable=SC2086 # a list of words
    "the build/consumer" $1 >log
    [ "$(lines "$2")" = 1 ] || fail "$name: 'consumer $1' shows no line '$2'"
}

# broken <name> <line of the tool>
broken() {
    name="$generator: $1"
    cp -p "$header" kept.h
    for attempt in first second; do
        if build 'the build'; then fail "$name: the $attempt build succeeded"; fi
        grep -qFx "render-graph-compile: $2" log || fail "$name: the tool's line is not shown"
        [ "$(lines 'retired')" = 0 ] || fail "$name: what is no error is shown"
    done
    cmp "$header" kept.h || fail "$name: the header changed"
    [ -z "$(find "$header" -newer kept.h)" ] || fail "$name: the header was written again"
}

row 'first build' 1 3 "$all_modules"
row 'build again' 0 0 0
shows list '^  stock  *2  *0  no$'
shows 'show rewind' '^  wiggle  *3  *3 '

echo '// a remark' >>"$components/rewind.slang"
row 'edit without effect' 1 0 1

cp "$components/stock.frag" "$components/stock.slang"
row 'add a component without effect' 1 0 1
sed 's/texCoord/texCoord * (1.0 + pc.frameCount)/' "$components/stock.frag" >"$components/stock.slang"
row 'edit with effect' 1 1 1
shows list '^  stock  *2  *0  yes$'
cp "$components/stock.slang" old.slang
rm "$components/stock.slang"
row 'remove a component' 1 1 1
shows list '^  stock  *2  *0  no$'
touch -t 200101010000 old.slang
cp -p old.slang "$components/stock.slang"
row 'add a component with an old time stamp' 1 1 1
shows list '^  stock  *2  *0  yes$'
mv "$components/stock.frag" stock.frag
row 'remove what is not needed' 1 0 0
mv stock.frag "$components/stock.frag"
row 'put it back' 1 0 0

cp -p "$shaders/rewind.glslp" .
echo 'wiggle = "4"' >>"$shaders/rewind.glslp"
row 'change a .glslp' 1 1 0
shows 'show rewind' '^  wiggle  *4  *3 '
rm "$shaders/rewind.glslp"
row 'remove a .glslp' 1 1 0
shows 'show rewind' '^  wiggle  *3  *3 '
cp -p rewind.glslp "$shaders"
row 'put the .glslp back with its time stamp' 1 0 0

echo '// a remark' >>"$shaders/vulkan/include/lcd.glsl"
row 'edit an include' 0 0 "$(grep -l lcd.glsl "$components"/* | wc -l)"
echo 'return 1' >>"$components/gba-color.slang"
name="$generator: a component that does not compile"
for attempt in first second; do
    if build 'the build'; then fail "$name: the $attempt build succeeded"; fi
    grep -q "$(printf '%s' "$WORK_DIR/$components/gba-color.slang" | sed 's/[[]/[[]/'):[0-9]*: " log ||
        fail "$name: the compiler's line is not shown"
    tr -s ' \n' ' ' <log >message
    grep -q "gba-color.frag.spv was not compiled: '[^']*' says why above[.] " message ||
        fail "$name: the module is not named"
done
sed '$d' "$components/gba-color.slang" >repaired.slang
mv repaired.slang "$components/gba-color.slang"
row 'it compiles again' 1 0 1
cp "$components/stock.frag" "$components/surplus.frag"
row 'add a component that no preset uses' 1 0 1
modules='the build/render-graph/consumer_modules/spirv'
[ -e "$modules/surplus.frag.spv" ] || fail "$name: it is not compiled"
mv "$components/surplus.frag" "$components/renamed.slang"
row 'rename it' 1 0 1
[ ! -e "$modules/surplus.frag.spv" ] || fail "$name: the old module is still there"
rm "$components/renamed.slang"
row 'remove it' 1 0 0
mv "$components/hdr-color-boost.slang" .
name="$generator: remove a component that the tool does not read"
if build 'the build'; then fail "$name: the build succeeded"; fi
tr -s ' \n' ' ' <log >message
grep -q "RenderGraphManifest.h names modules that have no source in the shaders directory: \
hdr-color-boost.frag.spv. A source that another rule generates has to stand in DEPENDS of \
render_graph_manifest() by its full path[.]" message || fail "$name: the module is not named"
mv hdr-color-boost.slang "$components"
row 'put that one back' 1 0 0

echo 'a note' >"$components/notes.txt"
mkdir -p "$shaders/vulkan/include"
echo '// read by no one here' >"$shaders/vulkan/include/new.glsl"
row 'add what the tool does not read' 0 0 0
ln -s nowhere "$components/.#rewind.slang"
row "an editor's dangling link" 1 0 0
rm "$components/.#rewind.slang"
row 'the link is gone' 1 0 0

rm "$header"
row 'delete the header' 0 1 0 # put back from what the tool wrote last
rm -r 'the build/render-graph'
row 'delete all that was generated' 1 1 "$all_modules"
build 'the build' --target clean
row 'clean' 1 3 "$all_modules"
touch "$tool"
row 'a new tool' 1 0 0

cp -p "$components/rewind-noise.slang" intact.slang
echo '//! input NOWHERE' >>"$components/rewind-noise.slang"
broken 'break a component' "preset 'rewind' pass 1 ('rewind-noise') declares //! input NOWHERE but \
no earlier pass carries that alias ($WORK_DIR/$components/rewind-noise.slang)"
cp intact.slang "$components/rewind-noise.slang"
row 'repair it' 1 0 1
rm "$components/rewind-noise.slang"
broken 'remove a needed component' \
    "preset 'rewind' pass 1 ('rewind-noise') has no shaders/vulkan/components source"
cp -p intact.slang "$components/rewind-noise.slang"
row 'put it back with its time stamp' 1 0 0

# What is dated in the future counts as changed in each build, until it is touched.
for dated in "$components/rewind.slang" "$tool"; do
    touch -t 209901010000 "$dated"
    case $dated in
        *.slang) modules_too=1 ;;
        *) modules_too=0 ;;
    esac
    built "$dated of tomorrow" 1 0 $modules_too
    built "$dated of tomorrow, again" 1 0 $modules_too
    rm "$components/stock.slang"
    built "a component gone beside $dated of tomorrow" 1 1 $((1 + modules_too))
    cp -p old.slang "$components/stock.slang"
    touch "$dated"
    row "$dated of today" 1 1 $((1 + modules_too))
done

touch "$components/rewind.slang"
export LC_ALL=C
row 'a locale that is not UTF-8' 1 0 1
