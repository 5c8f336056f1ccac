# The two build steps of render_graph_manifest(). With TOOL, a command, the step runs the tool on SHADERS_DIR and
# writes LATEST. Without TOOL it updates HEADER from LATEST if the content differs. Only one step at a time runs
# with the same LOCK, a file. A failing step does not change LATEST and HEADER.
#
# The tool exits with 0 even if it could not read a component or write the whole header. So this script checks
# the inputs and the output.
cmake_policy(VERSION 3.21)
include("${CMAKE_CURRENT_LIST_DIR}/RenderGraphArguments.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/StepFunctions.cmake")

# Sets why the tool cannot read an input, or empty. A dangling link, such as an editor's lock file, is not an
# error: the tool treats it as missing, and reports it if it needs it.
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
    elseif(NOT EXISTS "${path}") # or if it cannot be read
        execute_process(COMMAND test -e "${path}" RESULT_VARIABLE result)
        if(result EQUAL 0)
            set(${variable} "cannot be read" PARENT_SCOPE)
        endif()
    elseif(NOT CMAKE_HOST_WIN32)
        # Devices and pipes have size 0, so only such files need the slower test.
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

# Checks that the manifest has its last lines.
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
    # The tool's standard output is information, which would repeat in every build.
    file(REMOVE "${LATEST}.part")
    execute_process(COMMAND ${TOOL} --shaders-dir "${SHADERS_DIR}" --out "${LATEST}.part"
        RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE error_output ECHO_ERROR_VARIABLE)
    if(result MATCHES "^[0-9]+$" AND NOT result EQUAL 0)
        include("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/DescribeComponentError.cmake")
        describe_component_error(places "${error_output}" "${SHADERS_DIR}")
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
    # CMake does not wrap a message that begins with a space.
    message(FATAL_ERROR " ${name} was not generated: ${problem}")
endif()
file(RENAME "${output}.part" "${output}")
