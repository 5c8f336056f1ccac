# render_graph_manifest(<target> SHADERS_DIR <directory> HEADER <file name>
#     [DEPENDS <file or target>...])
#
# Defines the INTERFACE library <target>: whatever links it can include the render-graph manifest of
# the shaders directory as <file name>. docs/cmake.md is the reference.
cmake_policy(VERSION 3.21)

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
    get_filename_component(shaders_dir "${arg_SHADERS_DIR}" ABSOLUTE)
    if(NOT IS_DIRECTORY "${shaders_dir}")
        message(FATAL_ERROR
            "render_graph_manifest(${target}): SHADERS_DIR is no directory: '${shaders_dir}'. "
            "A relative one counts from the directory of the CMakeLists.txt.")
    endif()
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
    _render_graph_compile_command(tool tool_dependency)
    _render_graph_generated_inputs(generated "${shaders_dir}" "${arg_DEPENDS}")

    set(work_dir "${CMAKE_CURRENT_BINARY_DIR}/render-graph/${target}")
    set(header "${work_dir}/include/${arg_HEADER}")
    set(latest "${work_dir}/latest.h")
    get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    if(is_multi_config AND tool MATCHES "TARGET_FILE")
        set(latest "${work_dir}/latest-$<CONFIG>.h") # each configuration has a tool of its own
    endif()
    set(listing "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/${target}_inputs.txt")

    # Nothing shall find the header under the name that it had.
    if(NOT EXISTS "${header}")
        file(REMOVE_RECURSE "${work_dir}/include")
    endif()

    # A file that went, or that came with an old time stamp, shows in the listing alone.
    _render_graph_glob_pattern(pattern "${shaders_dir}")
    file(GLOB inputs CONFIGURE_DEPENDS
        "${pattern}/*.glslp"
        "${pattern}/vulkan/components/*.slang"
        "${pattern}/vulkan/components/*.frag"
    )
    list(APPEND inputs ${generated})
    list(REMOVE_DUPLICATES inputs)
    list(SORT inputs)
    list(JOIN inputs "\n" listed)
    file(GENERATE OUTPUT "${listing}" CONTENT "${listed}\n")
    add_custom_command( # should it be deleted
        OUTPUT "${listing}"
        COMMAND "${CMAKE_COMMAND}" -E touch "${listing}"
        COMMENT "Listing what ${target} is made of"
        VERBATIM
    )
    # A link that leads nowhere has no rule, and the time stamp of a directory says nothing here.
    set(existing "")
    foreach(input IN LISTS inputs)
        if(NOT IS_DIRECTORY "${input}" AND (EXISTS "${input}" OR NOT IS_SYMLINK "${input}"))
            list(APPEND existing "${input}")
        endif()
    endforeach()

    # From 6.5 on, Qt warns at every start where the locale is not UTF-8.
    set(utf8 LC_ALL=C.UTF-8)
    if(CMAKE_HOST_APPLE)
        set(utf8 --unset=LC_ALL --unset=LC_CTYPE --unset=LANG)
    elseif(CMAKE_HOST_WIN32)
        set(utf8 "")
    endif()

    set(step "${CMAKE_COMMAND}" "-DHEADER=${header}" "-DLATEST=${latest}")
    set(script -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/RenderGraphManifestStep.cmake")
    add_custom_command(
        OUTPUT "${latest}"
        COMMAND "${CMAKE_COMMAND}" -E env ${utf8} ${step}
            "-DTOOL=${tool}" "-DSHADERS_DIR=${shaders_dir}" ${script}
        DEPENDS "${listing}" "${tool_dependency}" ${existing} ${arg_DEPENDS}
        COMMENT "Generating ${arg_HEADER} for ${target}"
        VERBATIM
    )

    # A command of its own: Ninja takes one that leaves an output as it was to be as new as its newest
    # input, and would miss every change until the date of an input that is dated in the future. Make
    # compiles again what depends on a command that ran; it gets no rule for the header.
    set(updated "${target}.render-graph-header")
    if(CMAKE_GENERATOR MATCHES "^Ninja")
        add_custom_command(
            OUTPUT "${header}"
            COMMAND ${step} ${script}
            DEPENDS "${latest}"
            COMMENT "Updating ${arg_HEADER} for ${target}"
            VERBATIM
        )
        add_custom_target(${updated} DEPENDS "${header}")
    else()
        add_custom_target(${updated} COMMAND ${step} ${script} DEPENDS "${latest}" VERBATIM)
    endif()

    # A target-level dependency, since a generated file is known in its own directory only. The sources
    # are there for IDEs, and make a target of the library that can be built alone.
    add_library(${target} INTERFACE EXCLUDE_FROM_ALL)
    add_dependencies(${target} ${updated})
    target_sources(${target} PRIVATE "${header}" ${existing})
    set_source_files_properties("${header}" ${existing} PROPERTIES GENERATED ON) # or about to be
    source_group("Generated Files" FILES "${header}")
    source_group(TREE "${shaders_dir}" PREFIX Shaders FILES ${existing})
    set_target_properties(${target} PROPERTIES
        _render_graph_shaders_dir "${shaders_dir}"
        _render_graph_header "${header}"
        _render_graph_include "${arg_HEADER}"
        _render_graph_generated "${generated}"
    )
    target_include_directories(${target} INTERFACE "$<BUILD_INTERFACE:${work_dir}/include>")
    # As an expression, since a project may have no C++ at all.
    target_compile_features(${target} INTERFACE "$<BUILD_INTERFACE:cxx_std_17>")

    # CMake itself compares what one target is given by all that it links; the rest is looked at once
    # all targets are there.
    set_target_properties(${target} PROPERTIES
        INTERFACE_RENDER_GRAPH_SHADERS_DIR "${shaders_dir}"
        COMPATIBLE_INTERFACE_STRING RENDER_GRAPH_SHADERS_DIR
    )
    cmake_language(DEFER DIRECTORY "${CMAKE_SOURCE_DIR}" GET_CALL_IDS calls)
    if(NOT "render_graph_manifest" IN_LIST calls)
        cmake_language(DEFER DIRECTORY "${CMAKE_SOURCE_DIR}" ID render_graph_manifest
            CALL _render_graph_check_programs "${CMAKE_SOURCE_DIR}")
    endif()
endfunction()

# All manifests define the same names, and a linker takes the first of each without a word.
function(_render_graph_check_programs directory)
    get_property(targets DIRECTORY "${directory}" PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type MATCHES "^(EXECUTABLE|(SHARED|MODULE)_LIBRARY)$")
            _render_graph_manifests_of(manifests ${target})
            set(known_dir "")
            foreach(manifest IN LISTS manifests)
                get_target_property(shaders_dir ${manifest} _render_graph_shaders_dir)
                if(known_dir AND NOT shaders_dir STREQUAL known_dir)
                    message(FATAL_ERROR
                        "'${target}' links two render-graph manifests, '${known}' and '${manifest}', "
                        "directly or through libraries. They define the same names, and it would "
                        "silently get one of both.")
                endif()
                set(known "${manifest}")
                set(known_dir "${shaders_dir}")
            endforeach()
        endif()
    endforeach()

    get_property(subdirectories DIRECTORY "${directory}" PROPERTY SUBDIRECTORIES)
    foreach(subdirectory IN LISTS subdirectories)
        _render_graph_check_programs("${subdirectory}")
    endforeach()
endfunction()

# The manifests whose names stand in the target itself and in all that it links.
function(_render_graph_manifests_of manifests_variable target)
    get_property(is_known GLOBAL PROPERTY _render_graph_manifests_of_${target} SET)
    if(NOT is_known)
        set_property(GLOBAL PROPERTY _render_graph_manifests_of_${target} "") # libraries may link each other
        set(manifests "")
        get_target_property(shaders_dir ${target} _render_graph_shaders_dir)
        if(shaders_dir)
            set(manifests ${target})
        endif()
        foreach(property IN ITEMS LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
            get_target_property(libraries ${target} ${property})
            # Within generator expressions too, such as the LINK_ONLY of a static library's private ones.
            string(REGEX MATCHALL "[A-Za-z0-9_.+-]+(::[A-Za-z0-9_.+-]+)*" names "${libraries}")
            foreach(name IN LISTS names)
                if(TARGET ${name})
                    get_target_property(type ${name} TYPE)
                    get_target_property(visibility ${name} CXX_VISIBILITY_PRESET)
                    if(NOT (type STREQUAL "SHARED_LIBRARY" AND visibility STREQUAL "hidden"))
                        _render_graph_manifests_of(linked ${name})
                        list(APPEND manifests ${linked})
                    endif()
                endif()
            endforeach()
        endforeach()
        list(REMOVE_DUPLICATES manifests)
        set_property(GLOBAL PROPERTY _render_graph_manifests_of_${target} "${manifests}")
    endif()
    get_property(manifests GLOBAL PROPERTY _render_graph_manifests_of_${target})
    set(${manifests_variable} "${manifests}" PARENT_SCOPE)
endfunction()

# For a function whose arguments are parsed into arg_: its first one becomes `target`, and what is
# missing or unknown is an error. Takes the function, how to call it, and the keywords that have to be there.
macro(_render_graph_check_call function arguments)
    set(synopsis "  ${function}(${arguments})")
    list(POP_FRONT arg_UNPARSED_ARGUMENTS target)
    if("${target}" STREQUAL "" OR NOT ARGV0 STREQUAL target)
        message(FATAL_ERROR
            "${function}: the first argument is the name of the target. Write\n${synopsis}")
    endif()
    list(LENGTH ARGV words)
    if(words GREATER ARGC)
        message(FATAL_ERROR
            "${function}(${target}): an argument holds a semicolon, which CMake takes for the end of one.")
    endif()
    if(arg_UNPARSED_ARGUMENTS)
        list(JOIN arg_UNPARSED_ARGUMENTS "', '" unknown)
        message(FATAL_ERROR
            "${function}(${target}): unknown argument '${unknown}'. Write\n${synopsis}")
    endif()
    foreach(keyword IN ITEMS ${ARGN})
        if("${arg_${keyword}}" STREQUAL "")
            message(FATAL_ERROR
                "${function}(${target}): ${keyword} is missing. Write\n${synopsis}")
        endif()
    endforeach()
endmacro()

# A pattern that finds what is below the directory, whatever its name.
function(_render_graph_glob_pattern pattern_variable directory)
    string(REGEX REPLACE "([[*?])" "[\\1]" pattern "${directory}")
    set(${pattern_variable} "${pattern}" PARENT_SCOPE)
endfunction()

# Which of the DEPENDS are part of the shaders directory: they count before they exist.
function(_render_graph_generated_inputs generated_variable shaders_dir depends)
    set(generated)
    foreach(dependency IN LISTS depends)
        if(IS_ABSOLUTE "${dependency}")
            cmake_path(SET path NORMALIZE "${dependency}")
            cmake_path(RELATIVE_PATH path BASE_DIRECTORY "${shaders_dir}")
            if(path MATCHES "^([^/]+[.]glslp|vulkan/(fullscreen[.]vert|components/[^/]+[.](slang|frag)))$")
                list(APPEND generated "${shaders_dir}/${path}")
            endif()
        elseif(NOT TARGET "${dependency}")
            message(FATAL_ERROR
                "render_graph_manifest(${target}): DEPENDS takes full paths and targets that are there "
                "already, but '${dependency}' is neither.")
        endif()
    endforeach()
    set(${generated_variable} "${generated}" PARENT_SCOPE)
endfunction()

# The command that runs the tool, and what the build step depends on for it.
function(_render_graph_compile_command command_variable dependency_variable)
    set(target RenderGraphCompile::render-graph-compile)

    if(RenderGraphCompile_EXECUTABLE)
        # Another rule may be the one that makes it.
        get_source_file_property(is_generated "${RenderGraphCompile_EXECUTABLE}" GENERATED)
        if(NOT IS_ABSOLUTE "${RenderGraphCompile_EXECUTABLE}"
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
        get_target_property(is_imported ${target} IMPORTED)
        if(is_imported)
            get_target_property(command ${target} LOCATION)
            set(dependency "${command}")
        else()
            set(command "$<TARGET_FILE:${target}>")
            set(dependency render-graph-compile)
            if(CMAKE_CROSSCOMPILING)
                get_target_property(emulator ${target} CROSSCOMPILING_EMULATOR)
                if(NOT emulator)
                    message(FATAL_ERROR
                        "render_graph_manifest: render-graph-compile is built for "
                        "${CMAKE_SYSTEM_NAME} here and cannot run on this machine. "
                        "Set RenderGraphCompile_EXECUTABLE to the full path of one that can, "
                        "or set CMAKE_CROSSCOMPILING_EMULATOR.")
                endif()
                list(PREPEND command ${emulator})
            endif()
        endif()
    endif()

    set(${command_variable} "${command}" PARENT_SCOPE)
    set(${dependency_variable} "${dependency}" PARENT_SCOPE)
endfunction()
