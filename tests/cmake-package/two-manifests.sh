#!/bin/sh
# Two manifests in one program: refused, whichever way it links them, as far as CMake can see.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
mkdir project
cp -R "$SOURCE_DIR/examples/shaders" project/still
cp -R project/still project/moving
echo 'int use();' >project/use.cpp
echo 'int main() {}' >project/main.cpp

# configured <CMake code>
configured() {
    printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(user LANGUAGES CXX)' \
        'find_package(RenderGraphCompile 1 REQUIRED)' \
        'add_library(first STATIC use.cpp)' 'add_library(second STATIC use.cpp)' \
        'add_library(shared SHARED use.cpp)' 'add_executable(app main.cpp)' "$1" \
        'render_graph_manifest(moving SHADERS_DIR moving HEADER m.h)' \
        'render_graph_manifest(still SHADERS_DIR still HEADER m.h)' \
        'render_graph_manifest(again SHADERS_DIR still HEADER m.h)' >project/CMakeLists.txt
    if configure project build -G Ninja "-DCMAKE_CXX_COMPILER=$CXX"; then status=0; else status=1; fi
    tr -s ' \n' ' ' <log >message
}

# refused <target> <CMake code>
refused() {
    configured "$2"
    [ $status = 1 ] || fail "accepted: $2"
    grep -qE "'$1' links two render-graph manifests, '(still|moving)' and '(still|moving)', directly or \
through libraries. They define the same names, and it would silently get one of both." message ||
        fail "no such line about $1 for: $2"
}

accepted() {
    configured "$1"
    [ $status = 0 ] || fail "refused: $1"
}

refused app 'target_link_libraries(app PRIVATE still moving)'
refused shared 'target_link_libraries(shared PRIVATE still moving)'
refused app 'target_link_libraries(first PUBLIC still)
target_link_libraries(app PRIVATE first moving)'
refused app 'target_link_libraries(first PRIVATE still)
target_link_libraries(second PRIVATE moving)
target_link_libraries(app PRIVATE first second)'
refused app 'target_link_libraries(first PRIVATE still second)
target_link_libraries(second PRIVATE moving first)
target_link_libraries(app PRIVATE second)'
refused app 'add_library(objects OBJECT use.cpp)
target_link_libraries(objects PRIVATE still)
target_link_libraries(app PRIVATE objects moving)'
refused app 'add_library(between INTERFACE)
target_link_libraries(between INTERFACE still)
target_link_libraries(first PRIVATE between)
target_link_libraries(app PRIVATE first moving)'
refused app 'target_link_libraries(first PRIVATE $<BUILD_INTERFACE:still>)
target_link_libraries(app PRIVATE $<$<BOOL:TRUE>:first> moving)'
refused app 'target_link_libraries(shared PRIVATE still)
target_link_libraries(app PRIVATE shared moving)'
# shellcheck disable=SC2016 # expanded by CMake
refused sub_app 'add_library(alias::first ALIAS first)
target_link_libraries(first PRIVATE still)
file(WRITE ${CMAKE_BINARY_DIR}/sub/CMakeLists.txt "add_executable(sub_app ${CMAKE_SOURCE_DIR}/main.cpp)
target_link_libraries(sub_app PRIVATE alias::first moving)\n")
add_subdirectory(${CMAKE_BINARY_DIR}/sub sub)'

# What only CMake itself can evaluate, for what reaches the target that includes.
configured 'target_link_libraries(app PRIVATE $<TARGET_PROPERTY:app,KIND> moving)
set_target_properties(app PROPERTIES KIND still)'
[ $status = 1 ] || fail 'accepted: two manifests, one by a property'
grep -qF 'does not agree with the value of RENDER_GRAPH_SHADERS_DIR already determined for "app"' \
    message || fail 'CMake does not compare'

accepted 'target_link_libraries(first PRIVATE still)
target_link_libraries(second PRIVATE again)
target_link_libraries(app PRIVATE first second still)'
accepted 'set_target_properties(shared PROPERTIES CXX_VISIBILITY_PRESET hidden)
target_link_libraries(shared PRIVATE still)
target_link_libraries(app PRIVATE shared moving)'
accepted 'target_link_libraries(first PRIVATE still)
target_link_libraries(app PRIVATE moving)
add_dependencies(app first)'
