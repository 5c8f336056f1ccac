#!/bin/sh
# What a wrong call of render_graph_manifest() or find_package() says, whole.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
mkdir -p project/shaders
package='find_package(RenderGraphCompile 1 REQUIRED)'
synopsis='Write render_graph_manifest(<target> SHADERS_DIR <directory> HEADER <file name>)'

# configured <CMake code>: CMake breaks its messages into lines, here they are one.
configured() {
    printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(user LANGUAGES NONE)' "$1" \
        >project/CMakeLists.txt
    rm -rf build
    if configure project build; then status=0; else status=1; fi
    message=" $(tr -s ' \n' ' ' <log)"
}

# rejected <CMake code> <message>
rejected() {
    configured "$1"
    [ $status = 1 ] || fail "accepted: $1"
    case $message in
        *" $2 Call Stack"* | *" $2 -- Configuring"*) ;;
        *) fail "for $1 expected: $2" ;;
    esac
}

accepted() {
    configured "$1"
    [ $status = 0 ] || fail "rejected: $1"
}

# call_rejected <arguments> <message after the function's name>
call_rejected() {
    rejected "$package
render_graph_manifest($1)" "render_graph_manifest$2"
}

accepted "$package
render_graph_manifest(a SHADERS_DIR shaders HEADER a.h)
render_graph_manifest(b HEADER a.h SHADERS_DIR \${CMAKE_CURRENT_SOURCE_DIR}/shaders/)"
accepted 'find_package(RenderGraphCompile 1.0.0 REQUIRED)'
# The tool serves targets whose pointers are not as wide as its own.
accepted "set(CMAKE_SIZEOF_VOID_P 2)
$package"

call_rejected '' ": the first argument is the name of the library. $synopsis"
call_rejected 'SHADERS_DIR shaders HEADER a.h' \
    ": the first argument is the name of the library. $synopsis"
call_rejected 'SHADERS_DIR shaders a HEADER a.h' \
    ": the first argument is the name of the library. $synopsis"
call_rejected 'a' "(a): SHADERS_DIR is missing. $synopsis"
call_rejected 'a HEADER a.h' "(a): SHADERS_DIR is missing. $synopsis"
call_rejected 'a SHADERS_DIR HEADER a.h' "(a): SHADERS_DIR is missing. $synopsis"
call_rejected 'a SHADERS_DIR "" HEADER a.h' "(a): SHADERS_DIR is missing. $synopsis"
call_rejected 'a SHADERS_DIR shaders' "(a): HEADER is missing. $synopsis"
call_rejected 'a SHADERS_DIR shaders HEADER' "(a): HEADER is missing. $synopsis"
call_rejected 'a SHADERS_DIR shaders HEADER a.h OUTPUT b.h' \
    "(a): unknown argument 'OUTPUT', 'b.h'. $synopsis"
call_rejected 'a b SHADERS_DIR shaders HEADER a.h' "(a): unknown argument 'b'. $synopsis"
call_rejected 'a SHADERS_DIR shaders HEADER include/a.h' \
    "(a): HEADER is a file name without a directory, but it is 'include/a.h'."
call_rejected 'a SHADERS_DIR none HEADER a.h' "(a): SHADERS_DIR is no directory: \
'$WORK_DIR/project/none'. A relative one counts from the directory of the CMakeLists.txt."
call_rejected 'a SHADERS_DIR CMakeLists.txt HEADER a.h' "(a): SHADERS_DIR is no directory: \
'$WORK_DIR/project/CMakeLists.txt'. A relative one counts from the directory of the CMakeLists.txt."
call_rejected "a SHADERS_DIR shaders HEADER a.h)
render_graph_manifest(a SHADERS_DIR shaders HEADER b.h" \
    "(a): there is a target 'a' already. Each manifest is a library of its own."

for name in my::presets 'my presets'; do
    call_rejected "\"$name\" SHADERS_DIR shaders HEADER a.h" \
        ": '$name' cannot be the name of a library. It consists of letters, digits and any of _.+-"
done

for executable in tool shaders "$WORK_DIR/project" "$WORK_DIR/none"; do
    rejected "set(RenderGraphCompile_EXECUTABLE \"$executable\")
$package
render_graph_manifest(a SHADERS_DIR shaders HEADER a.h)" \
        "RenderGraphCompile_EXECUTABLE is '$executable'. Set it to the full path of a \
render-graph-compile that runs on this machine."
done

mkdir project/sub
echo "$package" >project/sub/CMakeLists.txt
rejected 'add_subdirectory(sub)
render_graph_manifest(a SHADERS_DIR shaders HEADER a.h)' \
    "render_graph_manifest: there is no target RenderGraphCompile::render-graph-compile here. Call \
find_package(RenderGraphCompile REQUIRED) in this directory or in one above it."

for version in 0.9 2 1.999; do
    configured "find_package(RenderGraphCompile $version REQUIRED)"
    [ $status = 1 ] || fail "the package serves as version $version"
done
