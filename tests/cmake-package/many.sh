#!/bin/sh
# Several manifests in one project, linked in other directories, with AUTOMOC.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
cp -R "$SOURCE_DIR/tests/cmake-package/many" many
small_shaders many/still
small_shaders many/moving
with_frame_counter <many/still/vulkan/components/stock.frag >many/moving/vulkan/components/stock.slang

for generator in 'Ninja' 'Unix Makefiles' 'Ninja Multi-Config'; do
    configure many "$generator" -G "$generator" || fail "$generator: configuring"
    for program in moving still; do
        build "$generator" --target $program || fail "$generator: building only $program"
        "$(find "$generator" -name $program -type f -perm -u+x)" ||
            fail "$generator: $program has the other's manifest"
    done
    build "$generator" || fail "$generator: building the rest"
    echo '// a remark' >>many/still/tint.glslp
    build "$generator" || fail "$generator: building again"
    [ "$(lines 'Generating RenderGraphManifest.h for still_presets') $(lines 'Generating Moving.h')" \
        = '1 0' ] || fail "$generator: editing one manifest's input generates the wrong manifests"
    [ "$(lines 'Building')" = 0 ] || fail "$generator: something is compiled without need"
done
