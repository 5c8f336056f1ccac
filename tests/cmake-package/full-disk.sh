#!/bin/sh
# The disk is full when the build step writes. The step fails, keeps the header and leaves no temporary file, and the
# next build recovers. The same holds for modules, and for files that are cut short for another reason. The disk is a
# small file system in a mount namespace.
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
small_shaders project/shaders
components=project/shaders/vulkan/components
moving=$components/stock.slang
printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(user LANGUAGES NONE)' \
    'find_package(RenderGraphCompile 1 REQUIRED)' \
    'render_graph_manifest(presets SHADERS_DIR shaders HEADER m.h)' \
    'add_custom_target(app ALL)' 'add_dependencies(app presets)' \
    'add_custom_target(modules)' 'render_graph_modules(modules MANIFEST presets OUTPUT_DIRECTORY spirv)' \
    >project/CMakeLists.txt
disk="$WORK_DIR/build/render-graph/presets"
header=$disk/include/m.h

current() {
    "$tool" --shaders-dir project/shaders --out expected.h >/dev/null
    cmp -s "$header" expected.h
}

# fill <KiB>: fills the disk until this much is free.
fill() {
    free=$(df -k "$disk" | awk 'NR == 2 { print $4 }')
    head -c $(((free - $1) * 1024)) /dev/zero >"$disk/ballast"
    [ "$(df -k "$disk" | awk 'NR == 2 { print $4 }')" = "$1" ] || fail "$name: the disk is not filled exactly"
}

for generator in 'Ninja' 'Unix Makefiles'; do
    step=4
    [ "$generator" = Ninja ] || step=12 # Make runs the same scripts, so fewer sizes will do
    rm -rf build
    mkdir -p "$disk"
    mount -t tmpfs -o size=1m tmpfs "$disk" || skip 'mounting is not permitted here'
    configure project build -G "$generator" || fail "$generator: configuring"
    build build || fail "$generator: building"
    current || fail "$generator: the header differs from the output of the tool"
    size=$(wc -c <"$header")

    # With two manifests on the disk: from no free space up to enough for two more.
    outcomes=
    room=0
    while [ $room -le $((2 * size / 1024 + 12)) ]; do
        name="$generator: $room KiB free"
        if [ -e "$moving" ]; then rm "$moving"; else with_frame_counter <$components/stock.frag >"$moving"; fi
        cp -p "$header" kept.h
        fill "$room"

        if build build; then
            outcome=built
            current || fail "$name: the header differs from the output of the tool"
        else
            outcome=refused
            grep -qFx "   m.h was not generated: it could not be written completely. Make room in \
'$disk', and build again." log ||
                grep -qFx "   m.h was not generated: it could not be written completely. Make room in \
'$disk/include', and build again." log || fail "$name: the message is missing"
            cmp "$header" kept.h || fail "$name: the header changed"
            [ -z "$(find "$header" -newer kept.h)" ] || fail "$name: the header was written again"
            [ -z "$(find "$disk" -name '*.part')" ] || fail "$name: a temporary file is left"
        fi
        case $outcomes in *" $outcome") ;; *) outcomes="$outcomes $outcome" ;; esac

        rm "$disk/ballast"
        build build || fail "$name: the build does not recover"
        current || fail "$name: after recovering, the header differs from the output of the tool"
        room=$((room + step))
    done
    [ "$outcomes" = ' refused built' ] || fail "$generator: the outcomes were$outcomes, not refused and then built"
    umount "$disk"
done

# A module of several pages, since it contains its source, on a disk with less room. A module that ends after a page is
# an error, whatever the compiler's exit status. The trial "records" fills the disk for the records of what each module
# was made from.
awk 'BEGIN { while (i++ < 300) print "// some text for the debug information to hold, line " i }' >>$components/tint.slang
for trial in Ninja 'Unix Makefiles' records; do
    generator=$trial
    directory=spirv
    rooms='0 4 8'
    if [ "$trial" = records ]; then
        generator=Ninja
        directory=CMakeFiles/modules_modules.dir/render-graph
        rooms=0
    elif [ "$trial" != Ninja ]; then
        rooms=4
    fi
    disk="$WORK_DIR/build/$directory"
    rm -rf build
    mkdir -p "$disk"
    mount -t tmpfs -o size=1m tmpfs "$disk" || skip 'mounting is not permitted here'
    configure project build -G "$generator" -DCMAKE_BUILD_TYPE=Debug || fail 'configuring for modules'
    build build --target presets || fail 'building the header'
    for room in $rooms; do
        name="$generator: modules, in $directory $room KiB free"
        touch $components/*
        fill "$room"
        if build build --target modules; then fail "$name: the build succeeded"; fi
        grep -q '^   [a-z.-]*[.]spv was not compiled: ' log || fail "$name: the message is missing"
        [ -z "$(find build -name '*.spv.part')" ] || fail "$name: a temporary file is left"
        rm "$disk/ballast"
        build build --target modules || fail "$name: the build does not recover"
        for module in build/spirv/*.spv; do
            spirv-val "$module" || fail "$name: a module is incomplete"
        done
        build build --target modules
        [ "$(lines 'Generating\|Compiling')" = 0 ] || fail "$name: the next build runs something"
    done
    umount "$disk"
done

# Files that are cut short by one byte or more.
# shellcheck disable=SC2016 # expanded when it runs
printf '%s\n' '#!/bin/sh' "'$tool' \"\$@\" >/dev/null" 'truncate -s -"$(cat "$0.cut")" "$4"' >short
# shellcheck disable=SC2016
printf '%s\n' '#!/bin/sh' 'glslangValidator "$@"' \
    'while [ $# -gt 0 ]; do [ "$1" != -o ] || output=$2; shift; done' \
    '[ ! -e "$output" ] || truncate -s -"$(cat "$0.cut")" "$output"' >compiler
chmod +x short compiler
rm -rf build
configure project build -G Ninja "-DRenderGraphCompile_EXECUTABLE=$WORK_DIR/short" \
    "-DRenderGraphCompile_GLSL_COMPILER=$WORK_DIR/compiler" || fail 'configuring'
for cut in 1 2 50 "$(wc -c <expected.h)"; do
    echo "$cut" >short.cut
    if build build; then fail "$cut bytes short: the build succeeded"; fi
    [ "$(lines 'it could not be written completely')" = 1 ] || fail "$cut bytes short: the message is missing"
done
echo 0 >short.cut
build build || fail 'the build does not recover from a short manifest'
current || fail 'after a short manifest the header differs from the output of the tool'

# cut_module <name> <pattern of the message>
cut_module() {
    touch $components/tint.slang
    if build build --target spirv/tint.frag.spv; then fail "$1: the build succeeded"; fi
    [ "$(lines "^   tint.frag.spv was not compiled: $2")" = 1 ] || fail "$1: the message is missing"
}
echo 0 >compiler.cut
build build --target modules || fail 'building the modules'
for cut in 1 4 20; do
    echo $cut >compiler.cut
    cut_module "a module $cut bytes short" "what '.*/compiler' wrote is not SPIR-V, or not complete. Is the disk full?$"
done
cp compiler kept
sed 's/-o ]/--depfile ]/' kept >compiler
echo 1 >compiler.cut
cut_module 'a short depfile' "'.*/tint.frag.spv.d' was not written completely. Is the disk full?$"
printf '%s\n' '#!/bin/sh' 'exit 0' >compiler
cut_module 'a compiler that writes nothing' "'.*/compiler' wrote nothing[.]$"

# The module ends after its first function, which only spirv-val reports.
cat >compiler <<'END'
#!/bin/sh
glslangValidator "$@"
while [ $# -gt 0 ]; do [ "$1" != -o ] || output=$2; shift; done
words=$(od -An -v -tx1 -w4 "$output" | grep -n '^ 38 00 01 00' | head -n 1 | cut -d : -f 1)
truncate -s $((4 * words)) "$output"
END
cut_module 'a module without its last function' "'.*/spirv-val' says why above[.]$"
cp kept compiler
echo 0 >compiler.cut
build build --target modules || fail 'the build does not recover from a short module'
spirv-val build/spirv/tint.frag.spv || fail 'after a short module the next one is incomplete'
