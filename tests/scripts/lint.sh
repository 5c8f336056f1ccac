#!/bin/sh
# scripts/lint fails if git lists no sources, finds the sources in any directory, and shows what clang-tidy finds.
set -eu

rm -rf "$WORK_DIR"
root="$WORK_DIR/my clone (x) [ü] a.b+c"
mkdir -p "$root/scripts" "$root/bin" "$root/build/asan-clang" "$root/tests/units" "$root/tools/tool"
cd "$root"
cp "$SOURCE_DIR/scripts/lint" scripts
cp "$SOURCE_DIR/.clang-tidy" .
cp "$SOURCE_DIR/tests/.clang-tidy" tests
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

# Sources that are read as one: two libraries' sources, and two programs with the same names.
rm bin/run-clang-tidy
command -v run-clang-tidy >/dev/null || exit 77
sources='tests/units/tst_One.cpp tests/units/tst_Two.cpp tools/tool/First.cpp tools/tool/Second.cpp'
for source in $sources; do
    echo "{\"directory\": \"$root\", \"file\": \"$root/$source\", \"command\": \"clang++ -std=c++20 -Wall -c $source\"}"
done | paste -sd , | sed 's/.*/[&]/' >build/asan-clang/compile_commands.json

# finding <expected file and check> <file> <text in it>
finding() {
    for source in tests/units/tst_One.cpp tests/units/tst_Two.cpp; do
        echo 'namespace { int number() { return 1; } } int main() { return number(); }' >"$source"
    done
    echo 'int first();' | tee tools/tool/First.cpp >tools/tool/Second.cpp
    echo "$3" >>"$2"
    PATH="$root/bin:$PATH" scripts/lint >log 2>&1 && status=0 || status=$?
    found=$(sed "s/$escape\[[0-9;]*m//g" log | sed -n "s,^$here/\([^:]*\):.*error: .*\[\([^],]*\).*,\1 \2,p")
    [ "$found $status" = "$1" ] || { cat log >&2; echo "FAILED: '$3': $found $status" >&2; exit 1; }
}

escape=$(printf '\033')
here=$(printf '%s' "$root" | sed 's/[].[]/\\&/g')
null='int value(const int *number) { return number != nullptr ? 1 : *number; }' # not looked for in tests
finding ' 0' tests/units/tst_Two.cpp "$null"
finding 'tests/units/tst_Two.cpp readability-identifier-naming 1' tests/units/tst_Two.cpp 'void Number() {}'
finding 'tests/units/tst_Two.cpp clang-diagnostic-unused-variable 1' tests/units/tst_Two.cpp 'void f() { int i = 0; }'
finding 'tools/tool/Second.cpp clang-analyzer-core.NullDereference 1' tools/tool/Second.cpp "$null"
