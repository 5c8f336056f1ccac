# render_graph_catalog(<library> MANIFEST <library>)
# render_graph_renderer(<library>)
#
# Make static libraries of the package's sources: of VulkanRenderGraphCatalog and the manifest, and of
# VulkanGraphRenderer. docs/cmake.md is the reference.
cmake_policy(VERSION 3.21)

# Reports a library that exists, and packages that the project has not found. Arguments: the error messages' beginning,
# what the library holds, and package and target for each.
function(_render_graph_check_library call target what)
    if(TARGET "${target}")
        message(FATAL_ERROR
            "${call}: there is a target '${target}' already. The ${what} is a library of its own.")
    endif()
    while(ARGN)
        list(POP_FRONT ARGN package needed)
        if(NOT TARGET ${needed})
            message(FATAL_ERROR "${call}: the ${what} needs find_package(${package}) first.")
        endif()
    endwhile()
endfunction()

# Makes the static library. `sources` is an INTERFACE library, further arguments are targets that an export of the
# library depends on.
function(_render_graph_add_library target sources)
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

    # An export of the library does not depend on this package.
    target_link_libraries(${target} PUBLIC ${ARGN} PRIVATE "$<BUILD_INTERFACE:${sources}>")
    get_target_property(directory ${sources} INTERFACE_INCLUDE_DIRECTORIES)
    target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${directory}>")
endfunction()

function(render_graph_catalog)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "MANIFEST" "")
    _render_graph_check_call(render_graph_catalog "<library> MANIFEST <library>" MANIFEST)
    set(call "render_graph_catalog(${target})")
    _render_graph_check_manifest(manifest "${call}" "${arg_MANIFEST}")
    _render_graph_check_library("${call}" "${target}" catalogue "Qt6 COMPONENTS Core" Qt6::Core)
    _render_graph_add_library(${target} RenderGraphCompile::VulkanRenderGraphCatalog Qt6::Core)
    target_link_libraries(${target} PRIVATE "$<BUILD_INTERFACE:${manifest}>")

    # The sources include the manifest under this name.
    get_target_property(include ${manifest} _render_graph_include)
    set(include_dir "${CMAKE_CURRENT_BINARY_DIR}/render-graph/${target}/include")
    if(NOT include STREQUAL "RenderGraphManifest.h")
        file(CONFIGURE OUTPUT "${include_dir}/RenderGraphManifest.h" CONTENT "#include <${include}>\n" @ONLY)
    endif()
    target_include_directories(${target} PRIVATE "${include_dir}")

    # The namespace differs from that of the catalogue of another manifest.
    get_target_property(identifier ${manifest} INTERFACE_RENDER_GRAPH_MANIFEST)
    target_compile_definitions(${target} INTERFACE
        "VulkanRenderGraphCatalog=VulkanRenderGraphCatalog_${identifier}")
    set_target_properties(${target} PROPERTIES
        INTERFACE_RENDER_GRAPH_CATALOG "${identifier}"
        COMPATIBLE_INTERFACE_STRING RENDER_GRAPH_CATALOG
    )
endfunction()

function(render_graph_renderer)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "" "")
    _render_graph_check_call(render_graph_renderer "<library>")
    _render_graph_check_library("render_graph_renderer(${target})" "${target}" renderer
        "Qt6 COMPONENTS Core" Qt6::Core Vulkan Vulkan::Headers)
    _render_graph_add_library(${target} RenderGraphCompile::VulkanGraphRenderer Qt6::Core Vulkan::Headers)
    # The project may build without exceptions and run-time type information.
    target_compile_options(${target} PRIVATE "$<IF:$<CXX_COMPILER_ID:MSVC>,/EHsc;/GR,-fexceptions;-frtti>")
endfunction()
