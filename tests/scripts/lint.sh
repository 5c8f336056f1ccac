#!/bin/sh
# scripts/lint fails if git lists no sources, and finds the sources in any directory.
set -eu

rm -rf "$WORK_DIR"
root="$WORK_DIR/my clone (x) [ü] a.b+c"
mkdir -p "$root/scripts" "$root/bin" "$root/build/asan-clang"
cd "$root"
cp "$SOURCE_DIR/scripts/lint" scripts
for program in scripts/setup scripts/build bin/cmake bin/clang-format bin/shellcheck bin/run-clang-tidy; do
    printf '#!/bin/sh\n' >$program
    chmod +x $program
done
# shellcheck disable=SC2016 # expanded when it runs
printf '%s\n' '#!/bin/sh' 'for pattern; do :; done' \
    'echo "$PWD/src/main.cpp" | grep -Eq "$pattern" || echo "run-clang-tidy: no source"' >bin/run-clang-tidy

# One source is in two targets.
echo '[{"file": "main.cpp"}, {"file": "main.cpp"}]' >build/asan-clang/compile_commands.json

# row <expected output and exit status> <git's exit status> <what git lists>
row() {
    printf '#!/bin/sh\nprintf "%s"\nexit %s\n' "$3" "$2" >bin/git
    chmod +x bin/git
    PATH="$root/bin:$PATH" scripts/lint >log 2>&1 && status=0 || status=$?
    [ "$(cat log) $status" = "$1" ] || { cat log >&2; echo "FAILED: '$3': status $status" >&2; exit 1; }
}

nothing='lint: git lists no sources here; run this in a clone. 1'
row "$nothing" 128 ''
row "$nothing" 0 ''
row "$nothing" 0 'tests/manifest/golden/RenderGraphManifest.h\n'
row ' 0' 0 'main.cpp\n'
[ "$(cat build/lint/compile_commands.json)" = '[{"file": "main.cpp"}]' ] ||
    { echo 'FAILED: a source is checked twice' >&2; exit 1; }
