# Makes the packages, unpacks each into an empty directory and runs the tool from there.
# Takes CPACK, CONFIG, VERSION, LINTIAN, SHADERS_DIR, MANIFEST, WORK_DIR.
cmake_minimum_required(VERSION 3.21)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command} ended with ${status}:\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

# Which files make up the CMake package is not for this test to know.
function(expect_tree root prefix)
    file(GLOB_RECURSE found LIST_DIRECTORIES FALSE RELATIVE "${root}" "${root}/*")
    list(FILTER found EXCLUDE REGEX "/cmake/")
    set(expected ${ARGN})
    list(SORT found)
    list(SORT expected)
    if(NOT found STREQUAL expected)
        message(FATAL_ERROR "${root} holds ${found}\n and not ${expected}")
    endif()
    set(tool "${root}/${prefix}bin/render-graph-compile")
    run("${tool}" --shaders-dir "${SHADERS_DIR}" --out "${root}/RenderGraphManifest.h")
    run("${CMAKE_COMMAND}" -E compare_files "${root}/RenderGraphManifest.h" "${MANIFEST}")
endfunction()

# Everybody may read what is installed, whatever the umask of whoever packed it.
function(expect_modes package)
    run(${ARGN} "${package}")
    string(REGEX REPLACE "(^|\n)(-rw-r--r--|[-d]rwxr-xr-x) [^\n]*" "" others "${output}")
    string(STRIP "${others}" others)
    if(NOT others STREQUAL "")
        message(FATAL_ERROR "${package} has wrong modes:\n${others}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
run(sh -c "umask 077 && exec \"$@\"" sh "${CPACK}" --config "${CONFIG}" -B "${WORK_DIR}")
file(GLOB deb "${WORK_DIR}/*.deb")
file(GLOB tar "${WORK_DIR}/*.tar.gz")

run(dpkg-deb --field "${deb}")
foreach(expected IN ITEMS
        "Package: render-graph-compile"
        "Version: ${VERSION}"
        "Section: devel"
        "Maintainer: The render-graph-compile authors <render-graph-compile@example[.]org>"
        "Depends: [^\n]*libc6 [(]>= "
        "Depends: [^\n]*libqt6core6(t64)? [(]>= 6[.]"
        "Depends: [^\n]*libstdc[+][+]6 [(]>= ")
    if(NOT "\n${output}" MATCHES "\n${expected}")
        message(FATAL_ERROR "The .deb does not say \"${expected}\":\n${output}")
    endif()
endforeach()
run(dpkg-deb --extract "${deb}" "${WORK_DIR}/deb")
expect_tree("${WORK_DIR}/deb" usr/
    usr/bin/render-graph-compile
    usr/share/doc/render-graph-compile/changelog.gz
    usr/share/doc/render-graph-compile/copyright
    usr/share/man/man1/render-graph-compile.1.gz
    usr/share/render-graph-compile/catalog/VulkanRenderGraph.cpp
    usr/share/render-graph-compile/catalog/VulkanRenderGraph.h
    usr/share/render-graph-compile/catalog/VulkanRenderGraphCatalog.cpp
    usr/share/render-graph-compile/catalog/VulkanRenderGraphCatalog.h)
expect_modes("${deb}" dpkg-deb --contents)
file(READ "${CMAKE_CURRENT_LIST_DIR}/../../packaging/debian/changelog" changelog)
if(NOT changelog MATCHES "^render-graph-compile [(]${VERSION}[)] ")
    message(FATAL_ERROR "packaging/debian/changelog does not begin with version ${VERSION}")
endif()
run("${LINTIAN}" --fail-on error "${deb}")

file(ARCHIVE_EXTRACT INPUT "${tar}" DESTINATION "${WORK_DIR}/tar")
get_filename_component(top "${tar}" NAME)
string(REGEX REPLACE "[.]tar[.]gz$" "" top "${top}")
expect_tree("${WORK_DIR}/tar" "${top}/"
    "${top}/bin/render-graph-compile"
    "${top}/share/man/man1/render-graph-compile.1"
    "${top}/share/render-graph-compile/catalog/VulkanRenderGraph.cpp"
    "${top}/share/render-graph-compile/catalog/VulkanRenderGraph.h"
    "${top}/share/render-graph-compile/catalog/VulkanRenderGraphCatalog.cpp"
    "${top}/share/render-graph-compile/catalog/VulkanRenderGraphCatalog.h")
expect_modes("${tar}" "${CMAKE_COMMAND}" -E tar tvf)
