#!/bin/sh
# A disk without room for what the build step writes: the step fails, keeps the header and leaves
# nothing behind, and the next build recovers. On a small file system in a namespace of its own. The same
# for a manifest that is cut short by anything else.
set -eu
. "$(dirname "$0")/common.sh"

if [ "${1-}" != --in-namespace ]; then
    as_root=
    [ "$(id -u)" = 0 ] || as_root=--map-root-user
    # shellcheck disable=SC2086 # a word or none
    unshare $as_root --mount true 2>/dev/null || skip 'mounting is not permitted here'
    # shellcheck disable=SC2086
    exec unshare $as_root --mount sh "$0" --in-namespace
fi

fresh_install
mkdir project
cp -R "$SOURCE_DIR/examples/shaders" project/shaders
moving=project/shaders/vulkan/components/stock.slang
printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(user LANGUAGES NONE)' \
    'find_package(RenderGraphCompile 1 REQUIRED)' \
    'render_graph_manifest(presets SHADERS_DIR shaders HEADER m.h)' \
    'add_custom_target(app ALL)' 'add_dependencies(app presets)' >project/CMakeLists.txt
disk="$WORK_DIR/build/render-graph/presets"
header=$disk/include/m.h

current() {
    "$tool" --shaders-dir project/shaders --out expected.h >/dev/null
    cmp -s "$header" expected.h
}

for generator in 'Ninja' 'Unix Makefiles'; do
    rm -rf build
    mkdir -p "$disk"
    mount -t tmpfs -o size=1m tmpfs "$disk" || skip 'mounting is not permitted here'
    configure project build -G "$generator" || fail "$generator: configuring"
    build build || fail "$generator: building"
    current || fail "$generator: the header is not what the tool writes"
    size=$(wc -c <"$header")

    # Beside two manifests, from no room to room enough for two more.
    outcomes=
    room=0
    while [ $room -le $((2 * size / 1024 + 12)) ]; do
        name="$generator: $room KiB free"
        if [ -e "$moving" ]; then rm "$moving"; else echo 'x = pc.frameCount;' >"$moving"; fi
        cp -p "$header" kept.h
        free=$(df -k "$disk" | awk 'NR == 2 { print $4 }')
        head -c $(((free - room) * 1024)) /dev/zero >"$disk/ballast"
        [ "$(df -k "$disk" | awk 'NR == 2 { print $4 }')" = $room ] || fail "$name: not so"

        if build build; then
            outcome=built
            current || fail "$name: the header is not what the tool writes"
        else
            outcome=refused
            grep -qFx "   m.h was not generated: it could not be written to its end. Make room in \
'$disk', and build again." log ||
                grep -qFx "   m.h was not generated: it could not be written to its end. Make room in \
'$disk/include', and build again." log || fail "$name: no such line"
            cmp "$header" kept.h || fail "$name: the header changed"
            [ -z "$(find "$header" -newer kept.h)" ] || fail "$name: the header was written again"
            [ -z "$(find "$disk" -name '*.part')" ] || fail "$name: something is left behind"
        fi
        case $outcomes in *" $outcome") ;; *) outcomes="$outcomes $outcome" ;; esac

        rm "$disk/ballast"
        build build || fail "$name: the build does not recover"
        current || fail "$name: the header is not what the tool writes afterwards"
        room=$((room + 20))
    done
    [ "$outcomes" = ' refused built' ] || fail "$generator: in turn it was$outcomes"
    umount "$disk"
done

# However little is missing.
# shellcheck disable=SC2016 # expanded when it runs
printf '%s\n' '#!/bin/sh' "'$tool' \"\$@\" >/dev/null" 'truncate -s -"$(cat "$0.cut")" "$4"' >short
chmod +x short
rm -rf build
configure project build -G Ninja "-DRenderGraphCompile_EXECUTABLE=$WORK_DIR/short" || fail 'configuring'
for cut in 1 2 50 "$(wc -c <expected.h)"; do
    echo "$cut" >short.cut
    if build build; then fail "$cut bytes short: the build succeeded"; fi
    [ "$(lines 'it could not be written to its end')" = 1 ] || fail "$cut bytes short: no such line"
done
echo 0 >short.cut
build build || fail 'the build does not recover from a short manifest'
current || fail 'after a short manifest the header is not what the tool writes'
