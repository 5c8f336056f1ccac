# Checks that the passes can be drawn with the modules of render_graph_modules(). SETTINGS names a file that sets
#     check          the command of render-graph-check
#     shaders_dir    the shaders directory
#     spirv_dir      the directory of the modules
#     checked        a file that is touched if they can
cmake_policy(VERSION 3.21)
include("${SETTINGS}")

execute_process(COMMAND ${check} --shaders-dir "${shaders_dir}" --modules "${spirv_dir}"
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    # Full paths, so that editors can open the files.
    string(REGEX REPLACE "(^|\n)([^:/\n]+[.](slang|frag): )" "\\1${shaders_dir}/vulkan/components/\\2" output "${output}")
    string(REGEX REPLACE "(^|\n)(fullscreen[.]vert: )" "\\1${shaders_dir}/vulkan/\\2" output "${output}")
    string(STRIP "${output}" output)
    message("${output}")
    list(GET check -1 program)
    set(problem "'${program}' says why above.")
    if(NOT result MATCHES "^[0-9]+$")
        set(problem "'${program}' does not run: ${result}.")
    endif()
    # CMake does not wrap a message that begins with a space.
    message(FATAL_ERROR " The modules in ${spirv_dir} do not fit the passes: ${problem}")
endif()
file(TOUCH "${checked}")
