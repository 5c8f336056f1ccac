#!/bin/sh
# scripts/test-qt6.11 makes its root from the mirror that apt is set to, or else from debootstrap's own.
set -eu

if [ "$(id -u)" != 0 ] || ! unshare --mount --pid --fork true 2>/dev/null; then
    echo 'SKIPPED: mounting is not permitted here' >&2
    exit 77
fi
rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/scripts" "$WORK_DIR/bin"
cd "$WORK_DIR"
cp "$SOURCE_DIR/scripts/test-qt6.11" scripts
printf '#!/bin/sh\n' | tee scripts/setup >bin/apt-config
printf '%s\n' '#!/bin/sh' 'echo "$*" >called' 'exit 1' >bin/debootstrap
# shellcheck disable=SC2016 # expanded when it runs
printf '%s\n' '#!/bin/sh' '[ "$1" = indextargets ] && cat targets' >bin/apt-get
chmod +x scripts/setup bin/*

# row <what apt is set to, a line each> <debootstrap's arguments>
row() {
    printf '%b' "$1" >targets
    rm -f called
    PATH="$WORK_DIR/bin:$PATH" scripts/test-qt6.11 >log 2>&1 && status=0 || status=$?
    [ "$status" = 77 ] || { cat log >&2; echo "FAILED: '$1': status $status" >&2; exit 1; }
    [ "$(sed "s|${TMPDIR-/tmp}/tmp[.][A-Za-z0-9]*|plain|" called)" = "--variant=minbase sid plain$2" ] ||
        { echo "FAILED: '$1': debootstrap was called with $(cat called)" >&2; exit 1; }
}

row '' ''
row 'http://mirror.example/debian\n' ' http://mirror.example/debian'
row 'https://one.example/debian\nhttp://two.example/debian\n' ' https://one.example/debian'
row 'cdrom://disk\nhttp://mirror.example/debian\n' ' http://mirror.example/debian'
row 'file:/srv/debian\n' ''
