#!/bin/sh
# Inputs that exist but that the tool would treat as empty or missing. The build step names them and keeps the header,
# and the next build recovers. Root drops its right to read every file first.
set -eu
. "$(dirname "$0")/common.sh"

if [ "$(id -u)" = 0 ] && [ "${1-}" != --without-rights ]; then
    rights=-dac_override,-dac_read_search
    setpriv --bounding-set=$rights --inh-caps=$rights true || skip 'capabilities cannot be dropped here'
    exec setpriv --bounding-set=$rights --inh-caps=$rights sh "$0" --without-rights
fi

fresh_install
small_shaders 'project/some shaders'
shaders="$WORK_DIR/project/some shaders"
components="$shaders/vulkan/components"
printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(user LANGUAGES NONE)' \
    'find_package(RenderGraphCompile 1 REQUIRED)' \
    'render_graph_manifest(presets SHADERS_DIR "some shaders" HEADER m.h)' \
    'add_custom_target(app ALL)' 'add_dependencies(app presets)' >project/CMakeLists.txt

# refused <path> <what is wrong with it>
refused() {
    name="$generator: $1 $2"
    touch -h "$1"
    if build build; then fail "$name: the build succeeded"; fi
    [ "$(grep -cFx "   m.h was not generated: '$1' $2. Put a file there that can be read, or remove \
it, and build again." log)" = 1 ] || fail "$name: the message is missing"
    [ "$(lines 'render-graph-compile: ')" = 0 ] || fail "$name: the tool ran"
    cmp "$header" kept.h || fail "$name: the header changed"
    [ -z "$(find "$header" -newer kept.h)" ] || fail "$name: the header was written again"
}

recovered() {
    build build || fail "$name: the build does not recover"
    [ "$(lines 'Generating m.h')" = 1 ] || fail "$name: the tool did not run"
    "$tool" --shaders-dir "$shaders" --out expected.h >/dev/null
    cmp "$header" expected.h || fail "$name: the header differs from the output of the tool"
}

for generator in 'Ninja' 'Unix Makefiles'; do
    rm -rf build
    configure project build -G "$generator" || fail "$generator: configuring"
    header=build/render-graph/presets/include/m.h
    name="$generator: first build"
    recovered
    cp -p "$header" kept.h

    # Each input with Ninja. One is enough with Make, which runs the same step.
    for input in "$shaders/tint.glslp" "$components"/*; do
        [ "$generator" = Ninja ] || [ "$input" = "$components/stock.frag" ] || continue
        chmod a-r "$input"
        refused "$input" 'cannot be read'
        chmod u+r "$input"
    done
    recovered

    # A .slang beside the .frag that the tool would read instead.
    input="$components/stock.slang"
    mkdir "$input"
    refused "$input" 'is a directory'
    rmdir "$input"
    recovered
    for target in /dev/null /dev/zero; do
        ln -s $target "$input"
        refused "$input" 'is not a regular file'
        rm "$input"
    done
    mkfifo "$input"
    refused "$input" 'is not a regular file'
    rm "$input"
    recovered # else Ninja itself reports the loop, since it knows this file
    ln -s stock.slang "$input"
    refused "$input" 'is a loop of links'
    rm "$input"
    recovered
    ln -s ../loop "$shaders/vulkan/one.slang"
    ln -s vulkan/one.slang "$shaders/loop"
    ln -s "$shaders/loop" "$input"
    refused "$input" 'is a loop of links'
    rm "$input" "$shaders/vulkan/one.slang" "$shaders/loop"
    recovered
    : >unreadable.slang
    chmod a-r unreadable.slang
    ln -s "$WORK_DIR/unreadable.slang" "$input"
    refused "$input" 'cannot be read'
    chmod u+r unreadable.slang
    recovered
    rm "$input"
    recovered

    # Links that are accepted.
    ln -s "$components/stock.frag" "$input"
    name="$generator: a link to a file"
    recovered
    rm "$input"
    recovered
    ln -s nowhere "$input"
    name="$generator: a link to nowhere"
    recovered
    rm "$input"
    recovered
    rm -f unreadable.slang
done
