#!/bin/sh
# Checks that each command and code block in README.md, CONTRIBUTING.md and docs/*.md has a row in run-by, the file
# beside this one. Runs those that no other test runs, in a copy of the project with the existing build.
set -eu
. "$(dirname "$0")/../cmake-package/common.sh"
tests="$SOURCE_DIR/tests/docs"

rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/bin" "$WORK_DIR/tree/build/release/tools/render-graph-preview/bin"
cd "$WORK_DIR/tree"
for part in CMakeLists.txt CMakePresets.json CONTRIBUTING.md README.md cmake docs examples packaging scripts src tests \
    tools; do
    cp -R "$SOURCE_DIR/$part" .
done
shown() {
    awk -f "$tests/shown.awk" "$@"
}

# scripts/gallery writes docs/presets.md, and draws with the commands in it.
for document in README.md CONTRIBUTING.md docs/*.md; do
    shown "$document" | sed "/^command\tscripts\/preview picture \([a-z-]*\) --source .* --out \1[.]png$/d
        s|^|$document\t|"
done >../shown
awk -f "$tests/compare.awk" "$tests/run-by" ../shown >../rows || fail 'the documents and tests/docs/run-by differ'

# The existing build stands in for each build of a preset: cmake only lists what it would build. The preview draws
# small pictures, without a display.
for directory in "$BUILD_DIR"/*; do
    [ "${directory##*/}" = tools ] || ln -s "$directory" build/release
done
ln -s "$BUILD_DIR/tools/render-graph-compile" build/release/tools
ln -s "$BUILD_DIR" build/dev
ln -s "$BUILD_DIR/tools/render-graph-compile/render-graph-compile" ../bin
preview=tools/render-graph-preview/bin/render-graph-preview
script() {
    cat >"$1"
    chmod +x "$1"
}
script scripts/setup <<'END'
#!/bin/sh
END
script ../bin/cmake <<END
#!/bin/sh
case "\$*" in
    '--preset '*) set -- "\$@" -N ;;
    *' --target help') ;;
    '--build --preset '*) set -- "\$@" -- -t commands ;;
esac
exec '$CMAKE' "\$@"
END
script ../bin/man <<'END'
#!/bin/sh
exec groff -mandoc -Tutf8 "$1"
END
script build/release/$preview <<END
#!/bin/sh
case \$1 in
    picture | profile) set -- "\$@" --size 64x48 --frames 1 ;;
esac
exec '$BUILD_DIR/$preview' "\$@"
END
export PATH="$WORK_DIR/bin:$PATH" QT_QPA_PLATFORM=offscreen

# run <command prefix...>: runs the row's command.
run() {
    "$@" sh -c "$(echo "$what" | sed "s|<prefix>|'$WORK_DIR/installed'|g; s|<build>|build/release|g
        s|-dir <path>|-dir examples/shaders|; s|--out <path>|--out written.h|")" >log 2>&1 </dev/null
}

# same_lines <lines> <file>: whether the file contains these lines in sequence.
same_lines() {
    first=$(grep -nxF -m 1 -- "$(head -n 1 "$1")" "$2") || return
    tail -n "+${first%%:*}" "$2" | head -n "$(wc -l <"$1")" | cmp -s - "$1"
}

# lines_below: prints the block of lines that begins with the row's line.
lines_below() {
    shown "$document" | awk -v first="command	$what" '$0 == first { inside = 1; print; next }
        !/^line/ { inside = 0 } inside' | cut -f 2-
}

# paths_in_tree: prints the paths of a block in which names indented by 4 more are in the directory above them.
paths_in_tree() {
    lines_below | awk '{
        match($0, /^ */)
        depth = RLENGTH / 4
        $0 = substr($0, RLENGTH + 1)
        sub(/  .*/, "")
        count = split($0, names, ", ")
        for (i = 1; i <= count; i++) print directories[depth] names[i]
        directories[depth + 1] = directories[depth] $0
    }'
}

header="#version 450
#extension GL_GOOGLE_include_directive : require
#include \"../include/component.glsl\""

while IFS='	' read -r how document what; do
    file=${how#*:}
    : >log
    block=$WORK_DIR/block
    shown -v block="$what" "$document" >"$block"
    case $how in
        here) run env || fail "$document: $what" ;;
        stays)
            # This opens a window. On a slow machine the window may not be open yet, but the command still runs.
            status=0
            run timeout 3 || status=$?
            [ $status = 124 ] || fail "$document: $what: it ended with $status" ;;
        component)
            component=examples/shaders/vulkan/components/of-the-document.slang
            {
                grep -q '^#version' "$block" || echo "$header"
                cat "$block"
                grep -q 'void main' "$block" || echo 'void main() { fragColor = vec4(0.0); }'
            } >$component
            glslangValidator -V -S frag -o module.spv $component >log 2>&1 || fail "$document: $what" ;;
        project) cat "$block" >>blocks.cmake ;;
        statements)
            {
                grep '^#' "$block"
                echo 'template <typename T> void draw(const T &) {}'
                echo 'template <typename T> void offer(const T &) {}'
                echo 'template <typename T> void animate(const T &) {}'
                echo 'void inAFunction(); void inAFunction() {'
                grep -v '^#' "$block"
                echo '}'
            } >block.cpp
            # shellcheck disable=SC2046 # options
            "$CXX" -std=c++17 -fPIC -Wall -Wextra -Werror -fsyntax-only -I src/platform/common/vulkan \
                $(pkg-config --cflags Qt6Core) block.cpp >log 2>&1 || fail "$document: $what" ;;
        excerpt:*)
            sed '/^ *[.][.][.]$/,$d' "$block" >lines
            same_lines lines "$file" || fail "$document: $what: $file does not have these lines" ;;
        names:*)
            for name in $(lines_below | sed 's/ .*//; s/<preset>/crt_pvm/; s/<pass>/0/'); do
                grep -qw -- "$name" "$file" || fail "$document: $file has no $name"
            done ;;
        tree)
            paths_in_tree >paths
            while read -r path; do
                # shellcheck disable=SC2086 # a pattern
                ls -d $path* >>log 2>&1 || fail "$document: there is no $path"
            done <paths ;;
        by-hand | words) ;;
        *:*)
            grep -qF -- "$file" "$SOURCE_DIR/${how%%:*}" ||
                fail "$document: $what: ${how%%:*} does not have $file" ;;
        *) fail "tests/docs/run-by: unknown way to run: $how" ;;
    esac
done <../rows

mkdir -p project/res
ln -s ../../examples/shaders project/res/shaders
echo 'int main() {}' >project/main.cpp
{
    printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(my_app LANGUAGES CXX)' \
        'find_package(RenderGraphCompile 1 REQUIRED)' 'add_library(my_library STATIC main.cpp)'
    cat blocks.cmake
} >project/CMakeLists.txt
cmake -G Ninja -S project -B build/project "-DCMAKE_PREFIX_PATH=$WORK_DIR/installed" >log 2>&1 ||
    fail 'configuring the project of the blocks'

# Check the files that the commands have written.
golden=$SOURCE_DIR/tests/manifest/golden/RenderGraphManifest.h
for manifest in build/RenderGraphManifest.h written.h; do
    cmp "$golden" $manifest || fail "$manifest is not the golden manifest"
done
pngtopam pvm.png 2>log >/dev/null || fail 'pvm.png is not a picture'
grep -q '<svg' pvm.svg || fail 'pvm.svg is not a graph'

# The design document has a table for each record of the manifest, with the record's fields in order.
awk '/^struct/ { record = $2 } /^};/ { record = "" }
    { sub(/\/\/.*/, "") }
    record && /;/ { sub(/;.*/, ""); print record "." $NF }' "$golden" | sort -s -t . -k 1,1 >fields
awk -F '`' '/^### / { inside = /The records/; next }
    !inside || !/^\| `/ { next }
    /^\| `[A-Z]/ { record = $2; next }
    { for (i = 2; i < NF && $(i - 1) ~ /^(\| |, )$/; i += 2) print record "." $i }' \
    docs/vulkan-shader-render-graph-design.md | sort -s -t . -k 1,1 >listed
diff fields listed >log || fail "docs/vulkan-shader-render-graph-design.md does not list the manifest's fields"
