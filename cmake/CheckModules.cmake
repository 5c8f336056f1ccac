# Checks that render_graph_modules() compiles every module that the manifest names, and deletes the modules of
# deleted components. SETTINGS names a file that sets
#     header       the manifest
#     spirv_dir    the directory of the modules
#     names        the names of the modules
#     built        a file that lists the modules of the previous run
cmake_policy(VERSION 3.21)
include("${SETTINGS}")
include("${CMAKE_CURRENT_LIST_DIR}/StepFunctions.cmake")
lock_step("${built}.lock")

file(READ "${header}" text)
string(REGEX MATCHALL "\":/shaders/vulkan/spirv/[^\"]*\"" named "${text}")
list(TRANSFORM named REPLACE "^\":/shaders/vulkan/spirv/([^\"]*)\"$" "\\1")
list(REMOVE_DUPLICATES named)
list(REMOVE_ITEM named ${names})
if(named)
    list(SORT named)
    list(JOIN named ", " missing)
    # CMake does not wrap a message that begins with a space.
    message(FATAL_ERROR " ${header} names modules that have no source in the shaders directory: ${missing}. If \
another rule generates one, list it in DEPENDS of render_graph_manifest() by its full path.")
endif()

set(names_before)
include("${built}" OPTIONAL)
list(REMOVE_ITEM names_before ${names})
foreach(name IN LISTS names_before)
    if(name MATCHES "^[^/]+[.](frag|vert)[.]spv$")
        file(REMOVE "${spirv_dir}/${name}")
    endif()
endforeach()
set(content "")
foreach(name IN LISTS names)
    string(APPEND content "list(APPEND names_before [==[${name}]==])\n")
endforeach()
write_file("${built}" "${content}")
