# What the build steps share.

# Two builds of one tree take turns, since both write the same files. A build that is stopped, or a file
# system that knows no locks, holds the other up for no longer than this.
function(take_turns lock)
    file(LOCK "${lock}" TIMEOUT 300 RESULT_VARIABLE ignored)
endfunction()

# Writes the file whole or not at all. What CMake could not write for want of room it does not report.
function(write_file problem_variable path content)
    file(WRITE "${path}.part" "${content}")
    file(READ "${path}.part" written)
    if(written STREQUAL content)
        file(RENAME "${path}.part" "${path}")
        return()
    endif()
    file(REMOVE "${path}.part")
    cmake_path(GET path PARENT_PATH directory)
    set(${problem_variable} "'${path}' could not be written to its end. Make room in '${directory}', and build \
again." PARENT_SCOPE)
endfunction()
