# Builds a release of the tool and packs it. Packs the preview of the existing build, if there is one. Unpacks each
# package into an empty directory and runs the program from there.
# Takes BUILD_DIR, CONFIG, CPACK, CXX, GENERATOR, NINJA, Qt6_DIR, SOURCE_DIR, VERSION, WORK_DIR.
cmake_minimum_required(VERSION 3.21)

set(shaders_dir "${SOURCE_DIR}/examples/shaders")
set(manifest "${SOURCE_DIR}/tests/manifest/golden/RenderGraphManifest.h")

file(GLOB_RECURSE documents RELATIVE "${SOURCE_DIR}" "${SOURCE_DIR}/docs/*")
list(FILTER documents EXCLUDE REGEX "[.]1$")
list(APPEND documents CHANGELOG.md CONTRIBUTING.md README.md examples) # examples is a link

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command} ended with ${status}:\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

# expect_files(<root> <file>...): <root> contains exactly these files. This test does not list the files of the
# CMake package and of the examples.
function(expect_files root)
    file(GLOB_RECURSE found LIST_DIRECTORIES FALSE RELATIVE "${root}" "${root}/*")
    list(FILTER found EXCLUDE REGEX "/(cmake|examples|sources/renderer)/")
    set(missing ${ARGN})
    list(REMOVE_ITEM missing ${found})
    list(REMOVE_ITEM found ${ARGN})
    if(missing OR found)
        message(FATAL_ERROR "${root} lacks '${missing}' and contains the unexpected '${found}'")
    endif()
endfunction()

# expect_links(<root>): what the documents below <root> link to exists.
function(expect_links root)
    file(GLOB_RECURSE pages RELATIVE "${root}" "${root}/*.md")
    foreach(page IN LISTS pages)
        file(READ "${root}/${page}" text)
        string(REGEX REPLACE "[][;]" "|" text "${text}") # these characters break lists of CMake
        string(REGEX MATCHALL "[|][(][^)#:]+[)#]" links "${text}")
        get_filename_component(directory "${root}/${page}" DIRECTORY)
        foreach(link IN LISTS links)
            string(REGEX REPLACE "^[|][(]|[)#]$" "" path "${link}")
            if(NOT EXISTS "${directory}/${path}")
                message(FATAL_ERROR "${root}/${page} links to ${path}, which does not exist")
            endif()
        endforeach()
    endforeach()
endfunction()

function(expect_tree root prefix)
    list(TRANSFORM documents PREPEND "${prefix}share/doc/render-graph-compile/")
    expect_files("${root}" ${documents} ${ARGN})
    expect_links("${root}/${prefix}share/doc/render-graph-compile")
    set(tool "${root}/${prefix}bin/render-graph-compile")
    run("${tool}" --shaders-dir "${shaders_dir}" --out "${root}/RenderGraphManifest.h")
    run("${CMAKE_COMMAND}" -E compare_files "${root}/RenderGraphManifest.h" "${manifest}")
endfunction()

# expect_modes(<package> <command>...): every user may read the files, whatever the umask during packing. The command
# lists the package.
function(expect_modes package)
    run(${ARGN} "${package}")
    string(REGEX REPLACE "(^|\n)(-rw-r--r--|[-d]rwxr-xr-x|lrwxrwxrwx) [^\n]*" "" others "${output}")
    string(STRIP "${others}" others)
    if(NOT others STREQUAL "")
        message(FATAL_ERROR "${package} has wrong modes:\n${others}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(build "${WORK_DIR}/build")
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${build}" -G "${GENERATOR}" -DCMAKE_BUILD_TYPE=Release
    -DBUILD_TESTING=OFF -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "-DCMAKE_MAKE_PROGRAM=${NINJA}"
    -DCMAKE_UNITY_BUILD=ON -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON # halves the time
    "-DCMAKE_CXX_COMPILER=${CXX}" "-DQt6_DIR=${Qt6_DIR}")
run("${CMAKE_COMMAND}" --build "${build}" --target render-graph-compile render-graph-check)

# The packages have the same bytes under any umask and at any time, so there is a second between the two runs.
set(ENV{SOURCE_DATE_EPOCH} 1700000000)
foreach(umask IN ITEMS 022 077)
    run(sh -c "umask ${umask} && exec \"$@\"" sh
        "${CPACK}" --config "${build}/CPackConfig.cmake" -B "${WORK_DIR}/${umask}")
    run("${CMAKE_COMMAND}" -E sleep 1)
endforeach()
file(GLOB deb "${WORK_DIR}/077/*.deb")
file(GLOB tar "${WORK_DIR}/077/*.tar.gz")
foreach(package IN ITEMS "${deb}" "${tar}")
    get_filename_component(name "${package}" NAME)
    run("${CMAKE_COMMAND}" -E compare_files "${package}" "${WORK_DIR}/022/${name}")
endforeach()

# Without dpkg-shlibdeps, which finds the dependencies, cpack makes no .deb. All other programs are available.
file(MAKE_DIRECTORY "${WORK_DIR}/programs")
file(GLOB programs "/usr/bin/[a-z]*")
list(FILTER programs EXCLUDE REGEX "/dpkg-shlibdeps$")
foreach(program IN LISTS programs)
    get_filename_component(name "${program}" NAME)
    file(CREATE_LINK "${program}" "${WORK_DIR}/programs/${name}" SYMBOLIC)
endforeach()
execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env "PATH=${WORK_DIR}/programs"
        "${CPACK}" --config "${build}/CPackConfig.cmake" -B "${WORK_DIR}/refused"
        -D "CMAKE_IGNORE_PATH=/usr/bin;/bin;/usr/local/bin"
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
string(REGEX REPLACE "[ \n]+" " " output "${output}")
string(FIND "${output}" "There is no dpkg-shlibdeps here. It finds the dependencies of the .deb. \
Install Debian's dpkg-dev, or make the .tar.gz alone: cpack -G TGZ" said)
file(GLOB refused "${WORK_DIR}/refused/*.deb")
if(status EQUAL 0 OR said EQUAL -1 OR refused)
    message(FATAL_ERROR "Without dpkg-shlibdeps, cpack ended with ${status}: ${output}")
endif()

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
        message(FATAL_ERROR "The .deb lacks the field \"${expected}\":\n${output}")
    endif()
endforeach()
run(dpkg-deb --extract "${deb}" "${WORK_DIR}/deb")
expect_tree("${WORK_DIR}/deb" usr/
    usr/bin/render-graph-check
    usr/bin/render-graph-compile
    usr/share/doc/render-graph-compile/changelog.gz
    usr/share/doc/render-graph-compile/copyright
    usr/share/man/man1/render-graph-compile.1.gz
    usr/share/pkgconfig/render-graph-compile.pc
    usr/share/render-graph-compile/sources/VulkanGraphRenderer.cpp
    usr/share/render-graph-compile/sources/VulkanGraphRenderer.h
    usr/share/render-graph-compile/sources/VulkanRenderGraph.cpp
    usr/share/render-graph-compile/sources/VulkanRenderGraph.h
    usr/share/render-graph-compile/sources/VulkanRenderGraphCatalog.cpp
    usr/share/render-graph-compile/sources/VulkanRenderGraphCatalog.h)
expect_modes("${deb}" dpkg-deb --contents)
file(READ "${SOURCE_DIR}/packaging/debian/changelog" changelog)
if(NOT changelog MATCHES "^render-graph-compile [(]${VERSION}[)] ")
    message(FATAL_ERROR "packaging/debian/changelog does not begin with version ${VERSION}")
endif()

# The options and definitions of our own build do not reach projects that import the targets.
file(GLOB targets "${WORK_DIR}/deb/usr/share/cmake/RenderGraphCompile/RenderGraphCompileTargets*.cmake")
list(LENGTH targets count)
if(NOT count EQUAL 2)
    message(FATAL_ERROR "Expected two files of targets, found: ${targets}")
endif()
foreach(file IN LISTS targets)
    file(STRINGS "${file}" flags REGEX
        "_OPTIONS|_DEFINITIONS|POSITION_INDEPENDENT|RenderGraphCompileOptions|_FORTIFY_SOURCE|-fstack|-Wl,")
    # Only the catalogue brings a definition, which names it after the manifest that it is compiled with.
    list(FILTER flags EXCLUDE REGEX "INTERFACE_COMPILE_DEFINITIONS \"[^;]*:VulkanRenderGraphCatalog=[^;]*\"$")
    if(flags)
        message(FATAL_ERROR "${file} contains ${flags}")
    endif()
endforeach()

file(ARCHIVE_EXTRACT INPUT "${tar}" DESTINATION "${WORK_DIR}/tar")
get_filename_component(top "${tar}" NAME)
string(REGEX REPLACE "[.]tar[.]gz$" "" top "${top}")
expect_tree("${WORK_DIR}/tar" "${top}/"
    "${top}/bin/render-graph-check"
    "${top}/bin/render-graph-compile"
    "${top}/share/man/man1/render-graph-compile.1"
    "${top}/share/pkgconfig/render-graph-compile.pc"
    "${top}/share/render-graph-compile/sources/VulkanGraphRenderer.cpp"
    "${top}/share/render-graph-compile/sources/VulkanGraphRenderer.h"
    "${top}/share/render-graph-compile/sources/VulkanRenderGraph.cpp"
    "${top}/share/render-graph-compile/sources/VulkanRenderGraph.h"
    "${top}/share/render-graph-compile/sources/VulkanRenderGraphCatalog.cpp"
    "${top}/share/render-graph-compile/sources/VulkanRenderGraphCatalog.h")
expect_modes("${tar}" "${CMAKE_COMMAND}" -E tar tvf)

# If the build has the preview, it is in packages of its own and in no other package.
if(NOT EXISTS "${BUILD_DIR}/CPackPreviewConfig.cmake")
    return()
endif()
run(sh -c "umask 077 && exec \"$@\"" sh
    "${CPACK}" --config "${BUILD_DIR}/CPackPreviewConfig.cmake" -C "${CONFIG}" -B "${WORK_DIR}/preview-077")
file(GLOB deb "${WORK_DIR}/preview-077/render-graph-preview_${VERSION}_*.deb")
file(GLOB tar "${WORK_DIR}/preview-077/render-graph-preview-${VERSION}-*.tar.gz")
if(NOT deb OR NOT tar)
    message(FATAL_ERROR "The preview's .deb ('${deb}') or .tar.gz ('${tar}') is missing")
endif()
run(dpkg-deb --field "${deb}")
# libvulkan1 has to be named in the packaging settings: the preview opens the Vulkan loader at run time.
foreach(expected IN ITEMS
        "Package: render-graph-preview"
        "Version: ${VERSION}"
        "Section: graphics"
        "Depends: [^\n]*libqt6gui6(t64)? [(]>= 6[.]"
        "Depends: [^\n]*libqt6widgets6(t64)? [(]>= 6[.]"
        "Depends: ([^\n]*, )?libvulkan1(,|\n)"
        "Recommends: graphviz, mesa-vulkan-drivers [|] vulkan-icd\n")
    if(NOT "\n${output}" MATCHES "\n${expected}")
        message(FATAL_ERROR "The preview's .deb lacks the field \"${expected}\":\n${output}")
    endif()
endforeach()
expect_modes("${deb}" dpkg-deb --contents)
set(tree "${WORK_DIR}/preview")
run(dpkg-deb --extract "${deb}" "${tree}")
file(GLOB_RECURSE shaders RELATIVE "${shaders_dir}" "${shaders_dir}/*")
list(REMOVE_ITEM shaders CMakeLists.txt)
list(TRANSFORM shaders PREPEND share/render-graph-preview/shaders/)
set(files
    bin/render-graph-preview
    share/applications/render-graph-preview.desktop
    share/icons/hicolor/scalable/apps/render-graph-preview.svg
    ${shaders})
list(TRANSFORM files PREPEND usr/ OUTPUT_VARIABLE deb_files)
expect_files("${tree}" ${deb_files}
    usr/share/doc/render-graph-preview/changelog.gz
    usr/share/doc/render-graph-preview/copyright
    usr/share/man/man1/render-graph-preview.1.gz)

# The desktop entry names the installed program and icon. The installed program finds its shaders.
file(STRINGS "${tree}/usr/share/applications/render-graph-preview.desktop" entry)
foreach(expected IN ITEMS "Exec=render-graph-preview window" "Icon=render-graph-preview" "Type=Application")
    if(NOT expected IN_LIST entry)
        message(FATAL_ERROR "The desktop entry lacks ${expected}: ${entry}")
    endif()
endforeach()
run("${tree}/usr/bin/render-graph-preview" graph crt-pvm --out "${WORK_DIR}/crt-pvm.dot")

expect_modes("${tar}" "${CMAKE_COMMAND}" -E tar tvf)
file(ARCHIVE_EXTRACT INPUT "${tar}" DESTINATION "${WORK_DIR}/preview-tar")
get_filename_component(top "${tar}" NAME)
string(REGEX REPLACE "[.]tar[.]gz$" "" top "${top}")
list(APPEND files share/man/man1/render-graph-preview.1)
expect_files("${WORK_DIR}/preview-tar/${top}" ${files})
run("${WORK_DIR}/preview-tar/${top}/bin/render-graph-preview" graph crt-pvm --out "${WORK_DIR}/crt-pvm.dot")
