# Holds what render_graph_modules() compiles against what the manifest names, and removes the modules whose
# components went. SETTINGS, a file, sets HEADER, MODULES, and BUILT, a file that lists the modules of the run before.
cmake_policy(VERSION 3.21)
include("${SETTINGS}")

set(names)
foreach(module IN LISTS MODULES)
    cmake_path(GET module FILENAME name)
    list(APPEND names "${name}")
endforeach()
file(STRINGS "${HEADER}" named REGEX "\":/shaders/vulkan/spirv/[^\"]*\"")
list(TRANSFORM named REPLACE "^.*\":/shaders/vulkan/spirv/([^\"]*)\".*$" "\\1")
list(REMOVE_DUPLICATES named)
list(REMOVE_ITEM named ${names})
if(named)
    list(SORT named)
    list(JOIN named ", " missing)
    message(FATAL_ERROR
        "${HEADER} names modules that have no source in the shaders directory: ${missing}. A source that "
        "another rule generates has to stand in DEPENDS of render_graph_manifest() by its full path.")
endif()

set(before)
if(EXISTS "${BUILT}")
    file(STRINGS "${BUILT}" before)
    list(REMOVE_ITEM before ${MODULES})
endif()
if(before)
    file(REMOVE ${before})
endif()
list(JOIN MODULES "\n" lines)
file(WRITE "${BUILT}" "${lines}\n")
