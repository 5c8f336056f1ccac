# render_graph_manifest(<target> SHADERS_DIR <directory> HEADER <file name>
#     [DEPENDS <file or target>...])
#
# Defines the INTERFACE library <target>. Targets that link it can include the render-graph manifest of the shaders
# directory as <file name>. docs/cmake.md is the reference.
cmake_policy(VERSION 3.21)
if(POLICY CMP0171)
    cmake_policy(SET CMP0171 NEW) # there is a target `codegen`
endif()

function(render_graph_manifest)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "SHADERS_DIR;HEADER" "DEPENDS")
    _render_graph_check_call(render_graph_manifest
        "<target> SHADERS_DIR <directory> HEADER <file name> [DEPENDS <file or target>...]"
        SHADERS_DIR HEADER)
    if(arg_HEADER MATCHES "\\\\|^/|/$|:|(^|/)[.][.]?(/|$)")
        message(FATAL_ERROR
            "render_graph_manifest(${target}): HEADER is what sources include, name.h or "
            "directory/name.h, but it is '${arg_HEADER}'.")
    endif()
    _render_graph_full_path(shaders_dir "${arg_SHADERS_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
    if(NOT IS_DIRECTORY "${shaders_dir}")
        message(FATAL_ERROR
            "render_graph_manifest(${target}): SHADERS_DIR is not a directory: '${shaders_dir}'. "
            "A relative path is relative to the directory of the CMakeLists.txt.")
    endif()
    _render_graph_manifest_identifier(identifier)
    _render_graph_compile_command(tool tool_dependency)

    set(work_dir "${CMAKE_CURRENT_BINARY_DIR}/render-graph/${target}")
    set(header "${work_dir}/include/${arg_HEADER}")
    _render_graph_generated_inputs(generated)
    _render_graph_manifest_inputs(inputs listing)
    _render_graph_manifest_steps(header_target)
    _render_graph_manifest_library()
endfunction()

# The steps of render_graph_manifest(), which use its variables.

# Sets the suffix of the manifest's namespace, which is unique.
function(_render_graph_manifest_identifier identifier_variable)
    if(NOT target MATCHES "^[A-Za-z0-9_.+-]+$")
        message(FATAL_ERROR
            "render_graph_manifest: '${target}' cannot be the name of a library. "
            "It consists of letters, digits and any of _.+-")
    endif()
    if(TARGET "${target}")
        message(FATAL_ERROR
            "render_graph_manifest(${target}): there is a target '${target}' already. "
            "Each manifest is a library of its own.")
    endif()
    string(REGEX REPLACE "[.+-]" "_" identifier "${target}")
    get_property(owner GLOBAL PROPERTY _render_graph_manifest_${identifier})
    if(owner)
        message(FATAL_ERROR
            "render_graph_manifest(${target}): this name and '${owner}' give the same C++ namespace. "
            "Choose one that differs in more than _ . + and -")
    endif()
    set_property(GLOBAL PROPERTY _render_graph_manifest_${identifier} "${target}")
    set(${identifier_variable} "${identifier}" PARENT_SCOPE)
endfunction()

# Sets the command that runs the tool, and the file or target of the tool.
function(_render_graph_compile_command command_variable dependency_variable)
    set(target RenderGraphCompile::render-graph-compile)

    if(RenderGraphCompile_EXECUTABLE)
        # Another rule may generate the file.
        get_source_file_property(is_generated "${RenderGraphCompile_EXECUTABLE}" GENERATED)
        if(NOT IS_ABSOLUTE "${RenderGraphCompile_EXECUTABLE}"
                OR RenderGraphCompile_EXECUTABLE MATCHES ";"
                OR NOT (EXISTS "${RenderGraphCompile_EXECUTABLE}" OR is_generated)
                OR IS_DIRECTORY "${RenderGraphCompile_EXECUTABLE}")
            message(FATAL_ERROR
                "RenderGraphCompile_EXECUTABLE is '${RenderGraphCompile_EXECUTABLE}'. "
                "Set it to the full path of a render-graph-compile that runs on this machine.")
        endif()
        set(command "${RenderGraphCompile_EXECUTABLE}")
        set(dependency "${command}")
    elseif(NOT TARGET ${target})
        message(FATAL_ERROR
            "render_graph_manifest: there is no target ${target} here. "
            "Call find_package(RenderGraphCompile REQUIRED) in this directory or in one above it.")
    else()
        _render_graph_target_command(command dependency render-graph-compile)
    endif()

    set(${command_variable} "${command}" PARENT_SCOPE)
    set(${dependency_variable} "${dependency}" PARENT_SCOPE)
endfunction()

# Sets the command that runs a program of the package or the sources, and its file or target.
function(_render_graph_target_command command_variable dependency_variable name)
    set(target RenderGraphCompile::${name})
    get_target_property(is_imported ${target} IMPORTED)
    if(is_imported)
        get_target_property(command ${target} LOCATION)
        set(dependency "${command}")
    else()
        set(command "$<TARGET_FILE:${target}>")
        set(dependency ${name})
        if(CMAKE_CROSSCOMPILING)
            get_target_property(emulator ${target} CROSSCOMPILING_EMULATOR)
            if(NOT emulator)
                message(FATAL_ERROR
                    "render_graph_manifest: ${name} is built for "
                    "${CMAKE_SYSTEM_NAME} here and cannot run on this machine. "
                    "Set RenderGraphCompile_EXECUTABLE to the full path of one that can, "
                    "or set CMAKE_CROSSCOMPILING_EMULATOR.")
            endif()
            list(PREPEND command ${emulator})
        endif()
    endif()
    set(${command_variable} "${command}" PARENT_SCOPE)
    set(${dependency_variable} "${dependency}" PARENT_SCOPE)
endfunction()

# Sets the files of DEPENDS that are inputs of the tool or the modules. They may not exist yet.
function(_render_graph_generated_inputs generated_variable)
    set(generated)
    foreach(dependency IN LISTS arg_DEPENDS)
        if(IS_ABSOLUTE "${dependency}")
            cmake_path(SET path NORMALIZE "${dependency}")
            cmake_path(RELATIVE_PATH path BASE_DIRECTORY "${shaders_dir}")
            if(path MATCHES "^([^/]+[.]glslp|vulkan/(fullscreen[.]vert|components/[^/]+[.](slang|frag)))$")
                list(APPEND generated "${shaders_dir}/${path}")
            endif()
        elseif(NOT TARGET "${dependency}")
            message(FATAL_ERROR
                "render_graph_manifest(${target}): DEPENDS takes full paths and existing targets, "
                "but '${dependency}' is neither.")
        endif()
    endforeach()
    set(${generated_variable} "${generated}" PARENT_SCOPE)
endfunction()

# Sets the files that the tool reads, and a file that lists them. The list changes when a file is deleted, or added
# with an old time stamp; no time stamp of an input shows that.
function(_render_graph_manifest_inputs inputs_variable listing_variable)
    _render_graph_glob(paths "render_graph_manifest(${target})" "${shaders_dir}"
        "*.glslp" "vulkan/components/*.slang" "vulkan/components/*.frag")
    list(APPEND paths ${generated})
    list(REMOVE_DUPLICATES paths)
    list(SORT paths)
    list(JOIN paths "\n" lines)
    set(listing "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/${target}_inputs.txt")
    file(GENERATE OUTPUT "${listing}" CONTENT "${lines}\n")
    add_custom_command( # if somebody deletes it
        OUTPUT "${listing}"
        COMMAND "${CMAKE_COMMAND}" -E touch "${listing}"
        COMMENT "Listing what ${target} is made of"
        VERBATIM
    )

    # There is no rule that makes a dangling link's target, and the time stamp of a directory is irrelevant.
    set(inputs "")
    foreach(path IN LISTS paths)
        if(NOT IS_DIRECTORY "${path}" AND (EXISTS "${path}" OR NOT IS_SYMLINK "${path}"))
            list(APPEND inputs "${path}")
        endif()
    endforeach()
    set(${inputs_variable} "${inputs}" PARENT_SCOPE)
    set(${listing_variable} "${listing}" PARENT_SCOPE)
endfunction()

# The tool writes `latest`, and a second command updates the header if the content differs. With one command, Ninja
# would treat an unchanged header as new as its newest input; if this input has a time stamp in the future, Ninja
# would miss all changes until then. Make compiles everything that depends on a command that ran, so with Make the
# header has no rule.
function(_render_graph_manifest_steps header_target_variable)
    set(latest "${work_dir}/latest.h")
    get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    if(is_multi_config AND tool MATCHES "TARGET_FILE")
        set(latest "${work_dir}/latest-$<CONFIG>.h") # each configuration has a tool of its own
    endif()

    # If HEADER has changed, sources must not find the header with the old name.
    if(NOT EXISTS "${header}")
        file(REMOVE_RECURSE "${work_dir}/include")
    endif()

    _render_graph_utf8_environment(utf8)
    set(step "${CMAKE_COMMAND}" "-DHEADER=${header}" "-DLATEST=${latest}" "-DLOCK=${work_dir}/lock")
    set(script -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/GenerateManifest.cmake")
    set(update ${step} ${script})
    set(generate "${CMAKE_COMMAND}" -E env ${utf8} ${step} "-DSHADERS_DIR=${shaders_dir}")
    set(needed "${listing}" "${tool_dependency}" ${inputs} ${arg_DEPENDS})
    set(codegen "")
    if(POLICY CMP0171)
        set(codegen CODEGEN)
    endif()
    set(header_target "${target}.render-graph-header")
    if(CMAKE_GENERATOR MATCHES "^Ninja")
        add_custom_command(
            OUTPUT "${latest}"
            COMMAND ${generate} "-DTOOL=${tool}" ${script}
            DEPENDS ${needed}
            COMMENT "Generating ${arg_HEADER} for ${target}"
            VERBATIM
        )
        add_custom_command(
            OUTPUT "${header}"
            COMMAND ${update}
            DEPENDS "${latest}"
            COMMENT "Updating ${arg_HEADER} for ${target}"
            VERBATIM ${codegen}
        )
        add_custom_target(${header_target} DEPENDS "${header}")
    else()
        add_custom_command(
            OUTPUT "${latest}"
            COMMAND ${generate} "-DTOOL=${tool}" ${script}
            COMMAND ${update} # since `codegen` does not run the command of another target
            DEPENDS ${needed}
            COMMENT "Generating ${arg_HEADER} for ${target}"
            VERBATIM ${codegen}
        )
        add_custom_target(${header_target} COMMAND ${update} DEPENDS "${latest}" VERBATIM)
    endif()
    set(${header_target_variable} "${header_target}" PARENT_SCOPE)
endfunction()

# Defines the library. A target in another directory knows no rule for the header, so the library depends on the
# target that generates the header. The library has sources for IDEs, and so that it can be built alone.
function(_render_graph_manifest_library)
    add_library(${target} INTERFACE EXCLUDE_FROM_ALL)
    add_dependencies(${target} ${header_target})
    target_sources(${target} PRIVATE "${header}" ${inputs})
    set_source_files_properties("${header}" ${inputs} PROPERTIES GENERATED ON) # or about to be
    source_group("Generated Files" FILES "${header}")
    source_group(TREE "${shaders_dir}" PREFIX Shaders FILES ${inputs})
    target_include_directories(${target} INTERFACE "$<BUILD_INTERFACE:${work_dir}/include>")
    # A generator expression, since the project may not enable C++.
    target_compile_features(${target} INTERFACE "$<BUILD_INTERFACE:cxx_std_17>")

    # All manifests define the same names, and a linker silently takes the first definition of each. So each manifest
    # gets a namespace of its own, and CMake rejects a target that links two manifests.
    target_compile_definitions(${target} INTERFACE
        "RenderGraphManifestData=RenderGraphManifestData_${identifier}")
    set_target_properties(${target} PROPERTIES
        INTERFACE_RENDER_GRAPH_MANIFEST "${identifier}"
        COMPATIBLE_INTERFACE_STRING RENDER_GRAPH_MANIFEST
        _render_graph_shaders_dir "${shaders_dir}"
        _render_graph_header "${header}"
        _render_graph_include "${arg_HEADER}"
        _render_graph_generated "${generated}"
    )
endfunction()
