# render_graph_catalog(<library> MANIFEST <library>)
#
# Makes a static library of VulkanRenderGraphCatalog and the manifest. docs/cmake.md is the reference.
cmake_policy(VERSION 3.21)

function(render_graph_catalog)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "MANIFEST" "")
    _render_graph_check_call(render_graph_catalog "<library> MANIFEST <library>" MANIFEST)
    _render_graph_check_manifest(manifest "render_graph_catalog(${target})" "${arg_MANIFEST}")
    if(TARGET "${target}")
        message(FATAL_ERROR
            "render_graph_catalog(${target}): there is a target '${target}' already. "
            "The catalogue is a library of its own.")
    endif()
    if(NOT TARGET Qt6::Core)
        message(FATAL_ERROR
            "render_graph_catalog(${target}): the catalogue needs find_package(Qt6 COMPONENTS Core) first.")
    endif()

    # The sources include the manifest under this name.
    get_target_property(include ${manifest} _render_graph_include)
    set(include_dir "${CMAKE_CURRENT_BINARY_DIR}/render-graph/${target}/include")
    if(NOT include STREQUAL "RenderGraphManifest.h")
        file(CONFIGURE OUTPUT "${include_dir}/RenderGraphManifest.h" CONTENT "#include <${include}>\n" @ONLY)
    endif()

    # The warnings, linters and unity builds of the project do not apply to these sources.
    add_library(${target} STATIC)
    set_target_properties(${target} PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        UNITY_BUILD OFF
        CXX_CLANG_TIDY ""
        CXX_CPPCHECK ""
        CXX_CPPLINT ""
        CXX_INCLUDE_WHAT_YOU_USE ""
    )
    target_compile_options(${target} PRIVATE "$<IF:$<CXX_COMPILER_ID:MSVC>,/w,-w>")
    target_compile_features(${target} PUBLIC cxx_std_17)

    # An export of the library depends on Qt alone.
    set(sources RenderGraphCompile::VulkanRenderGraphCatalog)
    target_include_directories(${target} PRIVATE "${include_dir}")
    target_link_libraries(${target}
        PUBLIC Qt6::Core
        PRIVATE "$<BUILD_INTERFACE:${sources}>" "$<BUILD_INTERFACE:${manifest}>"
    )
    # The namespace differs from that of the catalogue of another manifest.
    get_target_property(identifier ${manifest} INTERFACE_RENDER_GRAPH_MANIFEST)
    target_compile_definitions(${target} INTERFACE
        "VulkanRenderGraphCatalog=VulkanRenderGraphCatalog_${identifier}")
    set_target_properties(${target} PROPERTIES
        INTERFACE_RENDER_GRAPH_CATALOG "${identifier}"
        COMPATIBLE_INTERFACE_STRING RENDER_GRAPH_CATALOG
    )
    get_target_property(catalog_dir ${sources} INTERFACE_INCLUDE_DIRECTORIES)
    target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${catalog_dir}>")
endfunction()
