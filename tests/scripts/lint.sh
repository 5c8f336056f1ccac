#!/bin/sh
# scripts/lint does not pass where git lists nothing for it to look at.
set -eu

rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/scripts" "$WORK_DIR/bin"
cd "$WORK_DIR"
cp "$SOURCE_DIR/scripts/lint" scripts
for program in scripts/setup scripts/build bin/cmake bin/clang-format bin/shellcheck bin/run-clang-tidy; do
    printf '#!/bin/sh\n' >$program
    chmod +x $program
done

# row <what is said> <git's exit status> <what it lists>
row() {
    printf '#!/bin/sh\nprintf "%s"\nexit %s\n' "$3" "$2" >bin/git
    chmod +x bin/git
    PATH="$WORK_DIR/bin:$PATH" scripts/lint >log 2>&1 && status=0 || status=$?
    [ "$(cat log) $status" = "$1" ] || { cat log >&2; echo "FAILED: '$3': status $status" >&2; exit 1; }
}

nothing='lint: git lists no sources here; this takes a clone. 1'
row "$nothing" 128 ''
row "$nothing" 0 ''
row "$nothing" 0 'tests/manifest/golden/RenderGraphManifest.h\n'
row ' 0' 0 'main.cpp\n'
