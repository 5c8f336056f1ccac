#!/bin/sh
# Builds the program that docs/player.md shows, and runs it on a virtual display. Configures the example player, which
# the tests build in the source tree.
set -eu
. "$(dirname "$0")/common.sh"

command -v Xvfb >/dev/null || skip 'no Xvfb here'
fresh_real_install
mkdir project
block() {
    awk -f "$SOURCE_DIR/tests/docs/shown.awk" -v block="$1" "$SOURCE_DIR/docs/player.md"
}
block 'cmake The project' >project/CMakeLists.txt
block 'cpp The program' >project/main.cpp
[ -s project/main.cpp ] || fail 'docs/player.md shows no program'
configure project build -G Ninja "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wshadow -Werror" || fail 'configuring'
build build || fail 'building'

# The program runs until it is ended.
status=0
mkdir -m 700 runtime
export XDG_RUNTIME_DIR="$WORK_DIR/runtime" # without it Qt prints a line
sh "$SOURCE_DIR/tests/player/on-display.sh" timeout 5 build/my_player >log 2>&1 || status=$?
[ $status = 124 ] || fail "the program ends with $status"
[ ! -s log ] || fail 'the program prints something'

cp -R "$prefix/share/render-graph-compile/examples" .
configure examples/player player -G Ninja || fail 'configuring the example player'
