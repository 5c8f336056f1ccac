#!/bin/sh
# scripts/build and scripts/still-running show progress, and exit with the status of their command.
set -eu

rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/bin"
cd "$WORK_DIR"
# shellcheck disable=SC2016 # expanded when it runs
printf '%s\n' '#!/bin/sh' 'echo "$*" >called' 'cat lines' 'exit $(cat status)' >bin/cmake
printf '%s\n' '#!/bin/sh' 'exec /bin/sleep 0.1' >bin/sleep # whatever its argument
chmod +x bin/*
export PATH="$WORK_DIR/bin:$PATH"

# row <exit status> <build's lines> <expected lines>
row() {
    printf '%b' "$2" >lines
    echo "$1" >status
    "$SOURCE_DIR/scripts/build" --preset dev --target one >log 2>&1 && status=0 || status=$?
    [ "$(cat called)" = '--build --preset dev --target one' ] ||
        { echo "FAILED: cmake was called with $(cat called)" >&2; exit 1; }
    [ "$status" = "$1" ] || { echo "FAILED: status $status, not $1" >&2; exit 1; }
    [ "$(cat log)" = "$3" ] || { cat log >&2; echo "FAILED: unexpected lines for '$2'" >&2; exit 1; }
}

row 0 'ninja: no work to do.\n' ''
row 0 "$(seq -f '[%g/40] Building' 1 40)\n" 'build: 4 of 40
build: 8 of 40
build: 12 of 40
build: 16 of 40
build: 20 of 40
build: 24 of 40
build: 28 of 40
build: 32 of 40
build: 36 of 40
build: 40 of 40'
row 0 '[0/1] Re-running CMake\n-- Configuring done\n[1/2] a\na.cpp: warning\n[2/2] b\n' '-- Configuring done
build: 1 of 2
a.cpp: warning
build: 2 of 2'
row 0 '[1/1] Re-running CMake\n[1/4] a\n' 'build: 1 of 1
build: 1 of 4'
row 1 '[1/2] a\nFAILED: a.o\na.cpp:1: error\n' 'build: 1 of 2
FAILED: a.o
a.cpp:1: error'

# shellcheck disable=SC2016 # expanded when it runs
printf '%s\n' '#!/bin/sh' '/bin/sleep 0.5' 'echo "$1"' 'exit 3' >bin/slow
chmod +x bin/slow
"$SOURCE_DIR/scripts/still-running" test slow 'an argument' >log 2>said && status=0 || status=$?
[ "$status $(cat log)" = '3 an argument' ] || { echo "FAILED: status $status, $(cat log)" >&2; exit 1; }
sed 's/after [0-9]* s$/after ... s/' said | sort -u >seen
[ "$(cat seen)" = 'test: still running after ... s' ] || { cat said >&2; echo 'FAILED: unexpected lines' >&2; exit 1; }
