#!/bin/sh
# The tests that look for words in what a build says, in a clone with the default name, below a directory whose name
# a shell would split.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
clone='my clone (x)/render-graph-compile'
quick_sources "$clone"
cp -R "$SOURCE_DIR/src" "$SOURCE_DIR/tests" "$clone"
unset CI # which asks for what the other tests need
configure "$clone" "$clone/build" -G Ninja -DCMAKE_DISABLE_FIND_PACKAGE_Vulkan=ON || fail 'configuring'
build "$clone/build" --target render-graph-compile small-render-graph-compile || fail 'building'
ctest --test-dir "$clone/build" -R '^cmake-package-(beside|sources)$' --output-on-failure >log 2>&1 ||
    fail 'a test fails there'
[ "$(lines ' Passed ')" = 2 ] || fail 'not both tests ran'
