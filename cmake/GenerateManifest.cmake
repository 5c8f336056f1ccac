# The build steps of render_graph_manifest(). Takes LATEST, which the tool writes and whose time stamp
# says when, HEADER, which follows it where the content differs, and LOCK, a file that only one step at a time
# holds. The step that runs the tool has TOOL (a command) and SHADERS_DIR too.
#
# The tool exits with 0 though it could not read a component, or not write to the end. So what it is
# to read and what came out is looked at here. A step that fails leaves LATEST and HEADER as they were.
cmake_policy(VERSION 3.21)
include("${CMAKE_CURRENT_LIST_DIR}/RenderGraphArguments.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/StepFunctions.cmake")

# What keeps the tool from reading an input; empty if nothing does. A link to nowhere, such as an
# editor's, is no file for the tool either, which then says what it misses.
function(input_problem variable path)
    set(${variable} "" PARENT_SCOPE)
    set(target "${path}")
    foreach(link RANGE 40)
        if(IS_SYMLINK "${target}")
            cmake_path(GET target PARENT_PATH directory)
            file(READ_SYMLINK "${target}" target)
            cmake_path(ABSOLUTE_PATH target BASE_DIRECTORY "${directory}")
        endif()
    endforeach()

    if(IS_SYMLINK "${target}")
        set(${variable} "is a loop of links" PARENT_SCOPE)
    elseif(IS_DIRECTORY "${path}")
        set(${variable} "is a directory" PARENT_SCOPE)
    elseif(NOT EXISTS "${path}") # which also holds for what cannot be read
        execute_process(COMMAND test -e "${path}" RESULT_VARIABLE result)
        if(result EQUAL 0)
            set(${variable} "cannot be read" PARENT_SCOPE)
        endif()
    elseif(NOT CMAKE_HOST_WIN32)
        # Only a file without a size can be a device or a pipe, and few are.
        file(SIZE "${path}" size)
        if(size EQUAL 0)
            execute_process(COMMAND test -f "${path}" RESULT_VARIABLE result)
            if(NOT result EQUAL 0)
                set(${variable} "is not a regular file" PARENT_SCOPE)
            endif()
        endif()
    endif()
endfunction()

function(check_inputs problem_variable)
    _render_graph_glob_literal(literal "${SHADERS_DIR}")
    set(components "${literal}/vulkan/components")
    file(GLOB inputs "${literal}/*.glslp" "${components}/*.slang" "${components}/*.frag")
    foreach(input IN LISTS inputs)
        input_problem(is_unfit "${input}")
        if(is_unfit)
            set(${problem_variable} "'${input}' ${is_unfit}. \
Put a file there that can be read, or remove it, and build again." PARENT_SCOPE)
            return()
        endif()
    endforeach()
endfunction()

# Whether what was written ends as a manifest ends.
function(check_manifest problem_variable path)
    set(end "")
    if(EXISTS "${path}")
        file(SIZE "${path}" size)
        if(size GREATER 64)
            math(EXPR offset "${size} - 64")
            file(READ "${path}" end OFFSET ${offset})
        endif()
    endif()
    if(NOT end MATCHES "\n};\r?\n\r?\n}  // namespace RenderGraphManifestData\r?\n$")
        cmake_path(GET path PARENT_PATH directory)
        set(${problem_variable} "it could not be written completely. \
Make room in '${directory}', and build again." PARENT_SCOPE)
    endif()
endfunction()

function(run_tool problem_variable)
    # What the tool says on standard output is no error, and would repeat in every build.
    file(REMOVE "${LATEST}.part")
    execute_process(COMMAND ${TOOL} --shaders-dir "${SHADERS_DIR}" --out "${LATEST}.part"
        RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE said ECHO_ERROR_VARIABLE)
    if(result MATCHES "^[0-9]+$" AND NOT result EQUAL 0)
        include("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/DescribeComponentError.cmake")
        describe_component_error(places "${said}" "${SHADERS_DIR}")
        set(problem "the tool says why above.")
        if(NOT places STREQUAL "")
            string(REPLACE "\n" "\n " places "\n${places}")
            string(APPEND problem "${places}")
        endif()
        set(${problem_variable} "${problem}" PARENT_SCOPE)
    elseif(NOT result EQUAL 0)
        list(JOIN TOOL " " command)
        set(${problem_variable} "'${command}' does not run: ${result}. \
RenderGraphCompile_EXECUTABLE can name another render-graph-compile." PARENT_SCOPE)
    endif()
endfunction()

cmake_path(GET HEADER FILENAME name)
cmake_path(GET HEADER PARENT_PATH include_dir)
file(MAKE_DIRECTORY "${include_dir}")
lock_step("${LOCK}")
set(problem "")

if(DEFINED TOOL)
    set(output "${LATEST}")
    check_inputs(problem)
    if(NOT problem)
        run_tool(problem)
    endif()
else()
    set(output "${HEADER}")
    if(EXISTS "${HEADER}")
        file(SHA256 "${LATEST}" latest)
        file(SHA256 "${HEADER}" current)
        if(latest STREQUAL current)
            return()
        endif()
    endif()
    file(COPY_FILE "${LATEST}" "${HEADER}.part" RESULT result)
endif()

if(NOT problem)
    check_manifest(problem "${output}.part")
endif()
if(problem)
    file(REMOVE "${output}.part")
    # The space in front keeps CMake from breaking the line.
    message(FATAL_ERROR " ${name} was not generated: ${problem}")
endif()
file(RENAME "${output}.part" "${output}")
