#!/bin/sh
# Installs a tool whose Qt is in a prefix of its own, with the data directory outside the install prefix. Also tests the
# install components, uninstalling, the .deb and the source archive.
set -eu
. "$(dirname "$0")/common.sh"

fresh_install
mkdir -p qt/lib/cmake/Qt6
echo 'extern "C" int core() { return 6; }' >core.cpp
"$CXX" -shared -fPIC -o qt/lib/libOwnCore.so core.cpp
cat >qt/lib/cmake/Qt6/Qt6Config.cmake <<'END'
if(NOT TARGET Qt6::Core)
    add_library(Qt6::Core SHARED IMPORTED)
    set_target_properties(Qt6::Core PROPERTIES
        IMPORTED_LOCATION "${CMAKE_CURRENT_LIST_DIR}/../../libOwnCore.so" IMPORTED_NO_SONAME ON)
endif()
END
cat >qt/lib/cmake/Qt6/Qt6ConfigVersion.cmake <<'END'
set(PACKAGE_VERSION 6.4.2)
set(PACKAGE_VERSION_COMPATIBLE TRUE)
END

# The source archive leaves out the project's build directory, but a directory above may have the same name.
sources="$WORK_DIR/build/sources (1)"
quick_sources "$sources" 'extern "C" int core(); static const int kCore = core();'
mkdir -p "$sources/.git" "$sources/build/dev"
echo built | tee "$sources/.git/config" >"$sources/build/dev/built.txt"
configure "$sources" "$sources/out" -G Ninja -DBUILD_TESTING=OFF -DCMAKE_BUILD_TYPE=Release \
    "-DQt6_DIR=$WORK_DIR/qt/lib/cmake/Qt6" "-DCMAKE_INSTALL_PREFIX=$WORK_DIR/installed" \
    "-DCMAKE_INSTALL_DATADIR=$WORK_DIR/shared data" || fail 'configuring'
build "$sources/out" --target render-graph-compile render-graph-check || fail 'building'
"$CMAKE" --install "$sources/out" >log 2>&1 || fail 'installing'
installed/bin/render-graph-compile --shaders-dir "$SMALL_SHADERS_DIR" --out m.h >log 2>&1 ||
    fail 'the installed tool does not find its Qt'

mkdir project
cat >project/CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.21)
project(user LANGUAGES CXX)
find_package(RenderGraphCompile 1 REQUIRED)
foreach(library IN ITEMS VulkanRenderGraphCatalog VulkanGraphRenderer)
    get_target_property(sources RenderGraphCompile::${library} INTERFACE_SOURCES)
    get_target_property(directories RenderGraphCompile::${library} INTERFACE_INCLUDE_DIRECTORIES)
    foreach(path IN LISTS sources directories)
        if(NOT EXISTS "${path}")
            message(FATAL_ERROR "There is no ${path}")
        endif()
    endforeach()
endforeach()
END
prefix=none # so that the other install is not found
configure project used -G Ninja "-DRenderGraphCompile_DIR=$WORK_DIR/shared data/cmake/RenderGraphCompile" ||
    fail 'the package does not find its files in an absolute directory'

configure "$sources" "$sources/out" -DCMAKE_INSTALL_DATADIR=share || fail 'configuring for components'
parts=parts/render-graph-compile # this directory has the name of the package's directories
for component in tool development examples doc; do
    "$CMAKE" --install "$sources/out" --component $component --prefix "$WORK_DIR/$parts/$component" >log 2>&1 ||
        fail "installing the component $component"
done
(cd $parts && find . -type f | sed 's|^[.]/||; /cmake\|examples\|doc\|\/renderer\//s|/[^/]*$|/*|' | sort -u) >found
diff - found <<'END' || fail 'the components contain other files'
development/share/cmake/RenderGraphCompile/*
development/share/pkgconfig/render-graph-compile.pc
development/share/render-graph-compile/sources/VulkanGraphRenderer.cpp
development/share/render-graph-compile/sources/VulkanGraphRenderer.h
development/share/render-graph-compile/sources/VulkanRenderGraph.cpp
development/share/render-graph-compile/sources/VulkanRenderGraph.h
development/share/render-graph-compile/sources/VulkanRenderGraphCatalog.cpp
development/share/render-graph-compile/sources/VulkanRenderGraphCatalog.h
development/share/render-graph-compile/sources/renderer/*
doc/share/doc/render-graph-compile/*
doc/share/doc/render-graph-compile/docs/*
doc/share/doc/render-graph-compile/docs/presets/*
examples/share/render-graph-compile/examples/consumer/*
examples/share/render-graph-compile/examples/player/*
examples/share/render-graph-compile/examples/shaders/*
examples/share/render-graph-compile/examples/shaders/vulkan/*
examples/share/render-graph-compile/examples/shaders/vulkan/components/*
examples/share/render-graph-compile/examples/shaders/vulkan/include/*
tool/bin/render-graph-check
tool/bin/render-graph-compile
tool/share/man/man1/render-graph-compile.1
END
[ -e $parts/development/share/cmake/RenderGraphCompile/RenderGraphCompileTargets.cmake ] ||
    fail 'the component development lacks the targets'
: >$parts/tool/bin/of-others
build "$sources/out" --target uninstall || fail 'uninstalling'
[ "$(find parts installed 'shared data' -type f)" = $parts/tool/bin/of-others ] ||
    fail 'uninstalling leaves our files or deletes others'
[ -z "$(find parts/*/* 'shared data' -name 'render-graph-compile' -o -name RenderGraphCompile)" ] ||
    fail 'uninstalling leaves our directories'
[ -d $parts/tool/share/man/man1 ] || fail 'uninstalling deletes a directory that is not ours'
if build "$sources/out" --target uninstall; then fail 'uninstalling twice succeeds'; fi
[ "$(lines 'Nothing was installed from')" = 1 ] || fail 'uninstalling twice gives another message'

# The tool in the .deb uses the system's Qt.
if command -v dpkg-deb >/dev/null; then
    configure "$sources" "$sources/out" -DCMAKE_INSTALL_DATADIR=share || fail 'configuring for cpack'
    build "$sources/out" --target render-graph-compile render-graph-check || fail 'building for cpack'
    (cd "$sources/out" && cpack -G DEB -D CPACK_DEBIAN_PACKAGE_SHLIBDEPS=OFF -B "$WORK_DIR/deb") \
        >log 2>&1 || fail 'packing a .deb'
    dpkg-deb --extract deb/*.deb unpacked
    readelf -d unpacked/usr/bin/render-graph-compile unpacked/usr/bin/render-graph-check >log
    [ "$(lines 'NEEDED.*libOwnCore')" = 2 ] || fail 'the .deb lacks a program'
    [ "$(lines 'RPATH\|RUNPATH')" = 0 ] || fail 'the .deb looks for Qt in a directory of this machine'
fi

(cd "$sources/out" && cpack --config CPackSourceConfig.cmake -B "$WORK_DIR/archive") >log 2>&1 ||
    fail 'packing the sources'
tar tf archive/*.tar.gz >log
[ "$(lines '/tools/render-graph-compile/main.cpp$') $(lines '/build\|/out\|/[.]git')" = '1 0' ] ||
    fail 'the archive lacks sources or contains other files'
