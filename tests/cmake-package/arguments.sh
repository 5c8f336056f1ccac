#!/bin/sh
# Wrong calls of the package's functions and of find_package() fail with exactly these messages.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
mkdir -p project/shaders
package='find_package(RenderGraphCompile 1 REQUIRED)'
synopsis="Write render_graph_manifest(<target> SHADERS_DIR <directory> HEADER <file name> \
[DEPENDS <file or target>...])"

# configured <CMake code>: configures a project with this code. CMake breaks its messages into lines; $message has
# all on one line.
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
        *) fail "expected \"$2\" for: $1" ;;
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
add_custom_target(components)
render_graph_manifest(b HEADER directory.d/..a/a.h DEPENDS components /none/a.slang SHADERS_DIR \${CMAKE_CURRENT_SOURCE_DIR}/shaders/)"
accepted 'find_package(RenderGraphCompile 1.0.0 REQUIRED)'
# The package accepts target systems whose pointers differ in width from the tool's.
accepted "set(CMAKE_SIZEOF_VOID_P 2)
$package"

call_rejected '' ": the first argument is the name of the target. $synopsis"
call_rejected 'SHADERS_DIR shaders HEADER a.h' \
    ": the first argument is the name of the target. $synopsis"
call_rejected 'SHADERS_DIR shaders a HEADER a.h' \
    ": the first argument is the name of the target. $synopsis"
call_rejected 'a' "(a): SHADERS_DIR is missing. $synopsis"
call_rejected 'a HEADER a.h' "(a): SHADERS_DIR is missing. $synopsis"
call_rejected 'a SHADERS_DIR HEADER a.h' "(a): SHADERS_DIR is missing. $synopsis"
call_rejected 'a SHADERS_DIR "" HEADER a.h' "(a): SHADERS_DIR is missing. $synopsis"
call_rejected 'a SHADERS_DIR shaders' "(a): HEADER is missing. $synopsis"
call_rejected 'a SHADERS_DIR shaders HEADER' "(a): HEADER is missing. $synopsis"
call_rejected 'a SHADERS_DIR shaders HEADER a.h OUTPUT b.h' \
    "(a): unknown argument 'OUTPUT', 'b.h'. $synopsis"
call_rejected 'a b SHADERS_DIR shaders HEADER a.h' "(a): unknown argument 'b'. $synopsis"
for header in /a.h a/ ../a.h a/../b.h ./a.h C:a.h; do
    call_rejected "a SHADERS_DIR shaders HEADER $header" "(a): HEADER is what sources include, name.h \
or directory/name.h, but it is '$header'."
done
call_rejected 'a SHADERS_DIR "shaders;other" HEADER a.h' \
    '(a): an argument contains a semicolon, which CMake takes for a separator.'
call_rejected 'a SHADERS_DIR shaders HEADER a.h DEPENDS "shaders/a.slang"' "(a): DEPENDS takes full paths \
and existing targets, but 'shaders/a.slang' is neither."
call_rejected 'a SHADERS_DIR none HEADER a.h' "(a): SHADERS_DIR is not a directory: \
'$WORK_DIR/project/none'. A relative path is relative to the directory of the CMakeLists.txt."
call_rejected 'a SHADERS_DIR CMakeLists.txt HEADER a.h' "(a): SHADERS_DIR is not a directory: \
'$WORK_DIR/project/CMakeLists.txt'. A relative path is relative to the directory of the CMakeLists.txt."
call_rejected "a SHADERS_DIR shaders HEADER a.h)
render_graph_manifest(a SHADERS_DIR shaders HEADER b.h" \
    "(a): there is a target 'a' already. Each manifest is a library of its own."

call_rejected '"a;b" SHADERS_DIR shaders HEADER a.h' \
    '(a;b): an argument contains a semicolon, which CMake takes for a separator.'
call_rejected "a.b SHADERS_DIR shaders HEADER a.h)
render_graph_manifest(a-b SHADERS_DIR shaders HEADER a.h" "(a-b): this name and 'a.b' give the same C++ \
namespace. Choose one that differs in more than _ . + and -"
mkdir -p project/odd/vulkan/components
for name in 'a[1.slang' 'a]1.slang' 'a;1.slang'; do
    : >"project/odd/vulkan/components/$name"
    call_rejected 'a SHADERS_DIR odd HEADER a.h' "(a): CMake cannot handle the name of \
'$WORK_DIR/project/odd/vulkan/components/$name', which has a semicolon or a bracket without its partner. \
Rename it."
    rm "project/odd/vulkan/components/$name"
done

for name in my::presets 'my presets'; do
    call_rejected "\"$name\" SHADERS_DIR shaders HEADER a.h" \
        ": '$name' cannot be the name of a library. It consists of letters, digits and any of _.+-"
done

for executable in "moved here/bin/render-graph-compile" "$WORK_DIR/project" "$WORK_DIR/none"; do
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

# more_rejected <CMake code> <message>: the code follows a manifest and a target for modules.
more_rejected() {
    rejected "$package
render_graph_manifest(a SHADERS_DIR shaders HEADER a.h)
add_custom_target(files)
$1" "$2"
}

modules_synopsis="Write render_graph_modules(<target> MANIFEST <library> [OUTPUT_DIRECTORY <directory>] \
[DEFINES <name or name=value>...] [INCLUDE_DIRECTORIES <directory>...] [OPTIONS <option>...])"
more_rejected 'render_graph_modules(MANIFEST a)' \
    "render_graph_modules: the first argument is the name of the target. $modules_synopsis"
more_rejected 'render_graph_modules(files)' \
    "render_graph_modules(files): MANIFEST is missing. $modules_synopsis"
more_rejected 'render_graph_modules(none MANIFEST a)' \
    "render_graph_modules(none): there is no target 'none'. Define it before this call."
for library in b files; do
    more_rejected "render_graph_modules(files MANIFEST $library OUTPUT_DIRECTORY spirv)" \
        "render_graph_modules(files): MANIFEST has to be the library of an earlier \
render_graph_manifest(), but it is '$library'."
done
more_rejected 'render_graph_modules(files MANIFEST a)' "render_graph_modules(files): 'files' is not a \
program or library, so it cannot hold Qt resources. OUTPUT_DIRECTORY writes the modules as files."
more_rejected 'add_executable(app IMPORTED)
add_executable(alias ALIAS app)
render_graph_modules(alias MANIFEST a)' "render_graph_modules(alias): 'alias' is an alias. Name the target \
itself, 'app'."
more_rejected 'render_graph_modules(files MANIFEST a OUTPUT_DIRECTORY "")' "render_graph_modules(files): \
OUTPUT_DIRECTORY is empty. Without it, the modules become Qt resources of the target."
more_rejected 'render_graph_modules("a;b" MANIFEST a)' \
    'render_graph_modules(a;b): an argument contains a semicolon, which CMake takes for a separator.'
more_rejected 'add_custom_target(others)
render_graph_modules(files MANIFEST a OUTPUT_DIRECTORY spirv)
render_graph_modules(others MANIFEST a OUTPUT_DIRECTORY ../build/spirv/)' "render_graph_modules(others): the \
modules of 'files' are in '$WORK_DIR/build/spirv' already. Each target has a directory of its own."
more_rejected 'render_graph_modules(files MANIFEST a OUTPUT_DIRECTORY spirv)
render_graph_modules(files MANIFEST a OUTPUT_DIRECTORY again)' "render_graph_modules(files): there is \
a target 'files_modules' already. Each target has the modules of one manifest."
more_rejected 'enable_language(CXX)
add_library(library STATIC a.cpp)
render_graph_modules(library MANIFEST a)' "render_graph_modules(library): Qt resources need \
find_package(Qt6 COMPONENTS Core) first. OUTPUT_DIRECTORY writes the modules as files."
echo 'add_library(library STATIC a.cpp)' >project/sub/CMakeLists.txt
more_rejected 'enable_language(CXX)
add_subdirectory(sub)
render_graph_modules(library MANIFEST a)' "render_graph_modules(library): call it in the \
directory of 'library', '$WORK_DIR/project/sub'."
for compiler in "$CMAKE" none 'glslc;-O' bin/glslc; do
    more_rejected "set(RenderGraphCompile_GLSL_COMPILER \"$compiler\")
render_graph_modules(files MANIFEST a OUTPUT_DIRECTORY spirv)" "RenderGraphCompile_GLSL_COMPILER is \
'$compiler', which does not answer --version as glslangValidator, glslang or glslc do. Set it to one of them."
done
more_rejected 'set(CMAKE_PROGRAM_PATH "")
set(CMAKE_FIND_USE_SYSTEM_ENVIRONMENT_PATH OFF)
set(CMAKE_FIND_USE_CMAKE_SYSTEM_PATH OFF)
render_graph_modules(files MANIFEST a OUTPUT_DIRECTORY spirv)' "render_graph_modules: there is no GLSL \
compiler here: glslangValidator, glslang or glslc (Debian: glslang-tools, glslc). \
RenderGraphCompile_GLSL_COMPILER can name one."
more_rejected 'render_graph_catalog(catalog)' \
    'render_graph_catalog(catalog): MANIFEST is missing. Write render_graph_catalog(<library> MANIFEST <library>)'
more_rejected 'render_graph_catalog(catalog MANIFEST files)' "render_graph_catalog(catalog): MANIFEST has to be \
the library of an earlier render_graph_manifest(), but it is 'files'."
more_rejected 'render_graph_catalog(files MANIFEST a)' "render_graph_catalog(files): there is a target \
'files' already. The catalogue is a library of its own."
more_rejected 'render_graph_catalog(catalog MANIFEST a)' \
    'render_graph_catalog(catalog): the catalogue needs find_package(Qt6 COMPONENTS Core) first.'
more_rejected 'render_graph_renderer()' \
    'render_graph_renderer: the first argument is the name of the target. Write render_graph_renderer(<library>)'
more_rejected 'render_graph_renderer(renderer MANIFEST a)' "render_graph_renderer(renderer): unknown argument \
'MANIFEST', 'a'. Write render_graph_renderer(<library>)"
more_rejected 'render_graph_renderer(files)' "render_graph_renderer(files): there is a target 'files' already. The \
renderer is a library of its own."
more_rejected 'render_graph_renderer(renderer)' \
    'render_graph_renderer(renderer): the renderer needs find_package(Qt6 COMPONENTS Core) first.'
more_rejected 'add_library(Qt6::Core INTERFACE IMPORTED)
render_graph_renderer(renderer)' 'render_graph_renderer(renderer): the renderer needs find_package(Vulkan) first.'

for version in 0.9 2 1.999; do
    configured "find_package(RenderGraphCompile $version REQUIRED)"
    [ $status = 1 ] || fail "the package is accepted as version $version"
done
