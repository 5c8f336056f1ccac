# shellcheck shell=sh disable=SC2034,SC2164 # the tests set -e and use these variables
# Functions of the tests of the installed CMake package. CTest sets CMAKE, CXX, BUILD_DIR (the build to install),
# CONFIG, SOURCE_DIR, SMALL_TOOL and SMALL_CHECK (programs with few presets), SMALL_SHADERS_DIR (their sources) and
# WORK_DIR.
export LC_ALL=C.UTF-8

fail() {
    echo "FAILED: $1" >&2
    [ ! -s log ] || sed 's/^/    /' log >&2
    exit 1
}

skip() {
    echo "SKIPPED: $1" >&2
    exit 77
}

# Installs into an empty directory and moves the installation to "$prefix".
fresh_real_install() {
    rm -rf "$WORK_DIR"
    mkdir -p "$WORK_DIR"
    cd "$WORK_DIR"
    prefix="$WORK_DIR/moved here"
    "$CMAKE" --install "$BUILD_DIR" --config "$CONFIG" --prefix "$WORK_DIR/first" >log
    mv first "$prefix"
    tool="$prefix/bin/render-graph-compile"
    check="$prefix/bin/render-graph-check"
}

# The same, with the small programs.
fresh_install() {
    fresh_real_install
    cp "$SMALL_TOOL" "$tool"
    cp "$SMALL_CHECK" "$check"
}

# small_shaders <directory>: the sources of the small tool's presets.
small_shaders() {
    mkdir -p "$(dirname "$1")"
    cp -R "$SMALL_SHADERS_DIR" "$1"
}

# with_frame_counter: changes the component on standard input so that it reads the frame counter.
with_frame_counter() {
    sed 's/texCoord)/texCoord * (1.0 + pc.frameCount))/'
}

# configure <source> <build> <arguments...>
configure() {
    from=$1
    to=$2
    shift 2
    "$CMAKE" -S "$from" -B "$to" -DCMAKE_PREFIX_PATH="$prefix" "$@" >log 2>&1
}

build() {
    "$CMAKE" --build "$@" -j 2 >log 2>&1
}

# lines <pattern>: counts the lines of the log that match.
lines() {
    grep -c "$1" log || true
}

# quick_sources <directory> <code>: copies the project's sources, but with programs that only start "$tool" and
# "$check", which is quick to build. Each main.cpp begins with <code>.
quick_sources() {
    mkdir -p "$1"
    for part in CMakeLists.txt cmake docs examples packaging src tools; do
        cp -R "$SOURCE_DIR/$part" "$1"
    done
    cp "$SOURCE_DIR"/*.md "$1"
    find "$1/src" "$1/tools" -name '*.cpp' | while read -r source; do
        : >"$source"
    done
    {
        echo 'set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)'
        cat "$SOURCE_DIR/CMakeLists.txt"
    } >"$1/CMakeLists.txt"
    for program in "$tool" "$check"; do
        cat >"$1/tools/$(basename "$program")/main.cpp" <<END
#include <unistd.h>
${2-}
int main(int, char *argv[]) { return ::execv("$program", argv); }
END
    done
}
