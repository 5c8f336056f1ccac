# Functions shared by the package: checks of arguments, and lists of files.
cmake_policy(VERSION 3.21)

# For a function whose arguments are parsed into arg_: sets `target` to the first argument, and reports missing
# and unknown arguments. `arguments` is the synopsis; the required keywords follow it.
macro(_render_graph_check_call function arguments)
    set(synopsis "  ${function}(${arguments})")
    list(POP_FRONT arg_UNPARSED_ARGUMENTS target)
    list(LENGTH ARGV words)
    if(words GREATER ARGC)
        message(FATAL_ERROR
            "${function}(${target}): an argument contains a semicolon, which CMake takes for a separator.")
    endif()
    if("${target}" STREQUAL "" OR NOT ARGV0 STREQUAL target)
        message(FATAL_ERROR
            "${function}: the first argument is the name of the target. Write\n${synopsis}")
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

# Sets the library of a render_graph_manifest(), whose alias may be given. The error message begins with `call`.
function(_render_graph_check_manifest manifest_variable call name)
    set(manifest "${name}")
    set(shaders_dir NOTFOUND)
    if(TARGET "${manifest}")
        get_target_property(original "${manifest}" ALIASED_TARGET)
        if(original)
            set(manifest "${original}")
        endif()
        get_target_property(shaders_dir "${manifest}" _render_graph_shaders_dir)
    endif()
    if(NOT shaders_dir)
        message(FATAL_ERROR
            "${call}: MANIFEST has to be the library of an earlier render_graph_manifest(), "
            "but it is '${name}'.")
    endif()
    set(${manifest_variable} "${manifest}" PARENT_SCOPE)
endfunction()

# Sets the full path without a trailing slash. A relative path is relative to `base`.
function(_render_graph_full_path path_variable path base)
    cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY "${base}" NORMALIZE)
    string(REGEX REPLACE "(.)/$" "\\1" path "${path}")
    set(${path_variable} "${path}" PARENT_SCOPE)
endfunction()

# Escapes the directory for file(GLOB).
function(_render_graph_glob_literal literal_variable directory)
    string(REGEX REPLACE "([[*?])" "[\\1]" literal "${directory}")
    set(${literal_variable} "${literal}" PARENT_SCOPE)
endfunction()

# Sets the full paths of the files below the directory that match a pattern. Each build checks for new ones.
function(_render_graph_glob paths_variable call directory)
    _render_graph_glob_literal(literal "${directory}")
    list(TRANSFORM ARGN PREPEND "${literal}/" OUTPUT_VARIABLE patterns)
    file(GLOB paths CONFIGURE_DEPENDS ${patterns})

    # CMake splits a list at each semicolon, except for those after an unbalanced bracket.
    string(ASCII 1 opened)
    string(ASCII 2 closed)
    string(REPLACE "[" "${opened}" pieces "${paths};${directory}")
    string(REPLACE "]" "${closed}" pieces "${pieces}")
    list(POP_BACK pieces start)
    set(other "[^${opened}${closed}]*")
    set(before "")
    foreach(piece IN LISTS pieces)
        string(FIND "${piece}" "${start}/" position)
        if(NOT position EQUAL 0)
            string(PREPEND piece "${before};")
        endif()
        set(before "${piece}")
        if(NOT position EQUAL 0 OR NOT piece MATCHES "^${other}(${opened}${other}${closed}${other})*$")
            string(REPLACE "${opened}" "[" piece "${piece}")
            string(REPLACE "${closed}" "]" piece "${piece}")
            message(FATAL_ERROR
                "${call}: CMake cannot handle the name of '${piece}', which has a semicolon or a bracket "
                "without its partner. Rename it.")
        endif()
    endforeach()
    set(${paths_variable} "${paths}" PARENT_SCOPE)
endfunction()

# Sets CMake code that gives the named variables their current values. It uses bracket arguments, since paths may
# contain quotes, dollar signs and backslashes.
function(_render_graph_settings code_variable)
    set(code "")
    foreach(name IN LISTS ARGN)
        string(APPEND code "set(${name} [==[${${name}}]==])\n")
    endforeach()
    set(${code_variable} "${code}" PARENT_SCOPE)
endfunction()

# Sets what `cmake -E env` changes for a program that uses Qt. From 6.5 on, Qt warns at every start where the locale is
# not UTF-8.
function(_render_graph_utf8_environment variable)
    set(utf8 LC_ALL=C.UTF-8)
    if(CMAKE_HOST_APPLE)
        set(utf8 --unset=LC_ALL --unset=LC_CTYPE --unset=LANG)
    elseif(CMAKE_HOST_WIN32)
        set(utf8 "")
    endif()
    set(${variable} "${utf8}" PARENT_SCOPE)
endfunction()
