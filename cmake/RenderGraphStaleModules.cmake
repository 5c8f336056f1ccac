# Removes the modules that are older than what they were made of, so that Make compiles them again. SETTINGS, a
# file, sets MODULES and RECORDS, the directory where each has a list of that.
cmake_policy(VERSION 3.21)
include("${SETTINGS}")

foreach(module IN LISTS MODULES)
    cmake_path(GET module FILENAME name)
    set(paths "")
    if(EXISTS "${module}" AND EXISTS "${RECORDS}/${name}.txt")
        file(STRINGS "${RECORDS}/${name}.txt" paths)
    endif()
    foreach(path IN LISTS paths)
        if("${path}" IS_NEWER_THAN "${module}") # or is gone
            file(REMOVE "${module}")
        endif()
    endforeach()
endforeach()
