#!/bin/sh
# Two manifests in one program do not get mixed up, however they are linked. CMake rejects links by which one source
# file would see both.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
small_shaders project/still
small_shaders project/moving
with_frame_counter <project/still/vulkan/components/stock.frag >project/moving/vulkan/components/stock.slang

# Each library reads the manifest that it links, from the header or with the catalogue. All use the same names for it.
cat >project/header.cpp <<'END_OF_SOURCE'
#include "RenderGraphManifest.h"
bool FUNCTION();
bool FUNCTION()
{
    return RenderGraphManifestData::kPresets[1].usesFrameCount;
}
END_OF_SOURCE
cat >project/catalog.cpp <<'END_OF_SOURCE'
#include <VulkanRenderGraphCatalog.h>
bool FUNCTION();
bool FUNCTION()
{
    return VulkanRenderGraphCatalog::preset(u"stock")->usesFrameCount;
}
END_OF_SOURCE
cat >project/main.cpp <<'END_OF_SOURCE'
#include <cstdio>
bool hiddenCatalogOfStill(), defaultInHiddenOfStill(), publicOfStill(), staticOfStill();
bool catalogOfMoving(), sourcesOfMoving(), headerOfMoving();
int main()
{
    std::printf("%d%d%d%d %d%d%d\n", hiddenCatalogOfStill(), defaultInHiddenOfStill(), publicOfStill(),
                staticOfStill(), catalogOfMoving(), sourcesOfMoving(), headerOfMoving());
}
END_OF_SOURCE
cat >project/CMakeLists.txt <<'END_OF_PROJECT'
cmake_minimum_required(VERSION 3.21)
project(user LANGUAGES CXX)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core)
find_package(RenderGraphCompile 1 REQUIRED)
render_graph_manifest(still SHADERS_DIR still HEADER RenderGraphManifest.h)
render_graph_manifest(moving SHADERS_DIR moving HEADER RenderGraphManifest.h)
render_graph_catalog(still_catalog MANIFEST still)
add_library(moving_alias ALIAS moving)
render_graph_catalog(moving_catalog MANIFEST moving_alias)

function(part name type source)
    add_library(${name} ${type} ${source})
    target_compile_definitions(${name} PRIVATE FUNCTION=${name})
    target_link_libraries(${name} PRIVATE ${ARGN})
endfunction()
part(hiddenCatalogOfStill SHARED catalog.cpp still_catalog)
part(defaultOfStill STATIC header.cpp still)
part(defaultInHiddenOfStill SHARED between.cpp defaultOfStill)
set_target_properties(defaultOfStill PROPERTIES POSITION_INDEPENDENT_CODE ON)
part(publicOfStill SHARED header.cpp)
target_link_libraries(publicOfStill PUBLIC still)
set_target_properties(hiddenCatalogOfStill defaultInHiddenOfStill publicOfStill PROPERTIES CXX_VISIBILITY_PRESET hidden)
part(staticOfStill STATIC header.cpp still)
part(headerOfMoving STATIC header.cpp moving)
part(catalogOfMoving STATIC catalog.cpp moving_catalog)
part(sourcesOfMoving STATIC catalog.cpp moving RenderGraphCompile::VulkanRenderGraphCatalog)
add_executable(app main.cpp)
target_link_libraries(app PRIVATE hiddenCatalogOfStill defaultInHiddenOfStill publicOfStill staticOfStill
    catalogOfMoving sourcesOfMoving headerOfMoving)
END_OF_PROJECT
cat >project/between.cpp <<'END_OF_SOURCE'
bool defaultOfStill();
[[gnu::visibility("default")]] bool FUNCTION();
bool FUNCTION()
{
    return defaultOfStill();
}
END_OF_SOURCE
# The functions are visible outside their libraries. The manifests and the catalogues are not.
for source in catalog header; do
    sed 's/^bool FUNCTION();/[[gnu::visibility("default")]] &/' project/$source.cpp >visible.cpp
    mv visible.cpp project/$source.cpp
done

configure project build -G Ninja "-DCMAKE_CXX_COMPILER=$CXX" -DCMAKE_CXX_FLAGS=-Werror || fail 'configuring'
build build || fail 'building'
build/app >log
[ "$(cat log)" = '0000 111' ] || fail 'a library reads the wrong manifest'

# configured <CMake code>
configured() {
    printf '%s\n' 'cmake_minimum_required(VERSION 3.21)' 'project(user LANGUAGES CXX)' \
        'find_package(RenderGraphCompile 1 REQUIRED)' \
        'add_library(first STATIC header.cpp)' 'add_library(second STATIC header.cpp)' \
        'add_executable(app main.cpp)' "$1" \
        'render_graph_manifest(moving SHADERS_DIR moving HEADER m.h)' \
        'render_graph_manifest(still SHADERS_DIR still HEADER m.h)' >project/CMakeLists.txt
    if configure project configured -G Ninja "-DCMAKE_CXX_COMPILER=$CXX"; then status=0; else status=1; fi
    tr -s ' \n' ' ' <log >message
}

# refused <CMake code>
refused() {
    configured "$1"
    [ $status = 1 ] || fail "accepted: $1"
    grep -q 'does not agree with the value of RENDER_GRAPH_MANIFEST already determined for "app"' message ||
        fail "the message is missing for: $1"
}

accepted() {
    configured "$1"
    [ $status = 0 ] || fail "refused: $1"
}

refused 'target_link_libraries(app PRIVATE still moving)'
refused 'target_link_libraries(first PUBLIC still)
target_link_libraries(app PRIVATE first moving)'
# shellcheck disable=SC2016 # expanded by CMake
refused 'target_link_libraries(app PRIVATE $<TARGET_PROPERTY:app,KIND> moving)
set_target_properties(app PROPERTIES KIND still)'
# shellcheck disable=SC2016
accepted 'target_link_libraries(app PRIVATE $<IF:$<BOOL:${PRO}>,still,moving>)'
# shellcheck disable=SC2016
accepted 'target_link_libraries(app PRIVATE $<$<CONFIG:Debug>:still> $<$<NOT:$<CONFIG:Debug>>:moving>)'
# A directory has the name of a target.
accepted 'target_link_libraries(app PRIVATE still /usr/lib/moving/libnone.a)'
accepted 'target_link_libraries(first PRIVATE still second)
target_link_libraries(second PRIVATE moving first)
cmake_language(DEFER CALL target_link_libraries app PRIVATE second)'
