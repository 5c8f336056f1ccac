#!/bin/sh
# scripts/setup installs the missing packages of its groups, each package once.
set -eu

rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/bin"
cd "$WORK_DIR"
# One package is installed already. The stub of apt-get records its arguments and succeeds.
# shellcheck disable=SC2016 # expanded when it runs
printf '%s\n' '#!/bin/sh' '[ "$4" != spirv-tools ] || echo installed' >bin/dpkg-query
# shellcheck disable=SC2016 # expanded when it runs
printf '%s\n' '#!/bin/sh' '[ "$1" = update ] || echo "$*" >called' >bin/apt-get
printf '%s\n' '#!/bin/sh' 'echo 0' >bin/id
chmod +x bin/*

# row <packages> <group...>
row() {
    expected="install -q -y --no-install-recommends $1"
    shift
    rm -f called
    PATH="$WORK_DIR/bin:$PATH" "$SOURCE_DIR/scripts/setup" "$@" >log 2>&1 ||
        { cat log >&2; echo "FAILED: $*" >&2; exit 1; }
    [ "$(cat called)" = "$expected" ] || { echo "FAILED: $*: apt-get was called with $(cat called)" >&2; exit 1; }
}

preview='glslang-dev graphviz libvulkan-dev mesa-vulkan-drivers netpbm'
row "$preview" preview
row 'chromium chromium-driver python3' browser
row 'clang-format clang-tidy git shellcheck' lint
row "clang dpkg-dev file glslang-dev glslc groff-base libclang-rt-dev libvulkan-dev \
libvulkan-volk-dev make mesa-vulkan-drivers meson pkgconf spirv-cross vulkan-validationlayers xvfb" test
row "clang dpkg-dev file glslang-dev glslc graphviz groff-base libclang-rt-dev libvulkan-dev \
libvulkan-volk-dev make mesa-vulkan-drivers meson netpbm pkgconf spirv-cross vulkan-validationlayers xvfb" preview test
