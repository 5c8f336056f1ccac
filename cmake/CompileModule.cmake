# Compiles one module for render_graph_modules(). SETTINGS names a file that sets
#     source, module        the input and the output
#     shaders_dir           the compiler's working directory, to keep full paths out of the debug information
#     compile               the compiler's command, up to the depfile's name
#     optimize, validate    commands up to the module's name, or empty
#     record, is_make       the module's inputs are listed in <record>.d, a depfile, or for Make in
#                           <record>.inputs.cmake
cmake_policy(VERSION 3.21)
include("${SETTINGS}")
include("${CMAKE_CURRENT_LIST_DIR}/StepFunctions.cmake")

# Shows a command's output, with full paths in place of relative ones, so that editors can open them.
function(show output)
    string(REGEX REPLACE "(^|[ \n])([.]/|vulkan/)" "\\1${shaders_dir}/\\2" output "${output}")
    string(STRIP "${output}" output)
    if(NOT output STREQUAL "")
        message("${output}")
    endif()
endfunction()

# Runs a command that writes a module to `part`. A compiler may not report a full disk, so the module is checked.
function(run problem_variable)
    list(GET ARGN 0 program)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${shaders_dir}" RESULT_VARIABLE result
        OUTPUT_VARIABLE output ERROR_VARIABLE output)
    show("${output}")

    set(problem "")
    if(result MATCHES "^[1-9][0-9]*$")
        set(problem "'${program}' says why above.")
    elseif(NOT result EQUAL 0)
        set(problem "'${program}' does not run: ${result}.")
    elseif(NOT EXISTS "${part}")
        set(problem "'${program}' wrote nothing.")
    else()
        # A module begins with a magic number and ends with OpFunctionEnd.
        file(READ "${part}" words HEX)
        if(NOT words MATCHES "^(03022307.*38000100|07230203.*00010038)$")
            set(problem "what '${program}' wrote is not SPIR-V, or not complete. Is the disk full?")
        endif()
    endif()
    set(${problem_variable} "${problem}" PARENT_SCOPE)
endfunction()

# Sets the paths of the files that the compiler read, from its depfile.
function(read_inputs problem_variable paths_variable)
    set(rule "")
    if(EXISTS "${record}.d")
        file(READ "${record}.d" rule)
    endif()
    if(NOT rule MATCHES ":.*[^ \n]\n$")
        set(${problem_variable} "'${record}.d' was not written completely. Is the disk full?" PARENT_SCOPE)
        return()
    endif()
    # glslang escapes spaces in paths and glslc does not. So a path begins after a space, with one of the prefixes
    # below.
    string(ASCII 1 space)
    string(REPLACE "\\ " "${space}" rule "${rule}")
    string(REGEX REPLACE "[\\\n]" "" rule "${rule}")
    string(REGEX REPLACE "^.*[.]part: *" "" rule "${rule}")
    string(REGEX REPLACE " +(/|[A-Za-z]:/|[.]/|vulkan/)" ";\\1" names "${rule}")
    set(paths)
    foreach(path IN LISTS names)
        string(REPLACE "${space}" " " path "${path}")
        cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY "${shaders_dir}" NORMALIZE)
        if(NOT EXISTS "${path}")
            string(REPLACE "$$" "$" path "${path}") # as glslang escapes it
        endif()
        list(APPEND paths "${path}")
    endforeach()
    set(${paths_variable} "${paths}" PARENT_SCOPE)
endfunction()

# Lists the module's inputs in a depfile, or for MarkStaleModules.cmake.
function(write_inputs paths)
    if(is_make)
        set(path "${record}.inputs.cmake")
        set(content "set(inputs)\n")
        foreach(input IN LISTS paths)
            string(APPEND content "list(APPEND inputs [==[${input}]==])\n")
        endforeach()
    else()
        set(path "${record}.d")
        set(content "")
        foreach(name IN LISTS module paths)
            string(REPLACE "$" "$$" name "${name}")
            string(REGEX REPLACE "([# ])" "\\\\\\1" name "${name}")
            if(content STREQUAL "")
                set(content "${name}:")
            else()
                string(APPEND content " ${name}")
            endif()
        endforeach()
        string(APPEND content "\n")
    endif()
    write_file("${path}" "${content}")
endfunction()

lock_step("${record}.lock")
cmake_path(GET module FILENAME name)
cmake_path(GET module PARENT_PATH spirv_dir)
file(MAKE_DIRECTORY "${spirv_dir}")
set(part "${module}.part")
file(REMOVE "${part}" "${record}.d")

cmake_path(RELATIVE_PATH source BASE_DIRECTORY "${shaders_dir}" OUTPUT_VARIABLE relative_source)
run(problem ${compile} "${record}.d" -o "${part}" "${relative_source}")
if(optimize AND NOT problem)
    run(problem ${optimize} "${part}" -o "${part}")
endif()
if(validate AND NOT problem)
    run(problem ${validate} "${part}")
endif()
if(NOT problem)
    read_inputs(problem paths)
endif()
if(problem)
    file(REMOVE "${part}")
    # CMake does not wrap a message that begins with a space.
    message(FATAL_ERROR " ${name} was not compiled: ${problem}")
endif()
write_inputs("${paths}")
file(RENAME "${part}" "${module}")
