# The build step of render_graph_manifest(). Takes TOOL (a command), SHADERS_DIR, HEADER, and LATEST:
# what the tool wrote last, whose time stamp says when.
cmake_policy(VERSION 3.21)

cmake_path(GET HEADER PARENT_PATH include_dir)
file(MAKE_DIRECTORY "${include_dir}")

# What the tool says on standard output is no error, and would repeat in every build.
execute_process(COMMAND ${TOOL} --shaders-dir "${SHADERS_DIR}" --out "${LATEST}.part"
    RESULT_VARIABLE result OUTPUT_QUIET)
cmake_path(GET HEADER FILENAME name)
if(result MATCHES "^[0-9]+$" AND NOT result EQUAL 0)
    message(FATAL_ERROR "${name} was not generated: the tool says why above.")
elseif(NOT result EQUAL 0)
    list(JOIN TOOL " " command)
    message(FATAL_ERROR "${name} was not generated: '${command}' does not run: ${result}. "
        "RenderGraphCompile_EXECUTABLE can name another render-graph-compile.")
endif()

file(COPY_FILE "${LATEST}.part" "${HEADER}" ONLY_IF_DIFFERENT)
file(RENAME "${LATEST}.part" "${LATEST}")
