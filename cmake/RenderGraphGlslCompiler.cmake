# The compiler of render_graph_modules(), and its command line.
cmake_policy(VERSION 3.21)

# Sets for the caller
#     compiler               the compiler's path
#     compile                its command up to the depfile's name, with STAGE in place of the shader stage
#     optimizer, optimize    a program that optimizes modules and its command, if the compiler does not optimize
#     validate               a command that checks a module
# The commands contain generator expressions for the configuration.
function(_render_graph_glsl_compiler defines include_dirs options shaders_dir)
    _render_graph_find_glsl_compiler(compiler)
    if(NOT compiler)
        message(FATAL_ERROR
            "render_graph_modules: there is no GLSL compiler here: glslangValidator, glslang or glslc "
            "(Debian: glslang-tools, glslc). RenderGraphCompile_GLSL_COMPILER can name one.")
    endif()
    set(version "")
    if(IS_ABSOLUTE "${compiler}" AND NOT compiler MATCHES ";")
        execute_process(COMMAND "${compiler}" --version OUTPUT_VARIABLE version ERROR_QUIET)
    endif()

    set(arguments ${options})
    foreach(define IN LISTS defines)
        list(APPEND arguments "-D${define}")
    endforeach()
    foreach(directory IN LISTS include_dirs)
        if(NOT directory MATCHES "^[$]<")
            cmake_path(ABSOLUTE_PATH directory NORMALIZE)
            # Relative to the compiler's working directory, since debug information contains these paths.
            cmake_path(IS_PREFIX shaders_dir "${directory}" is_inside)
            if(is_inside)
                cmake_path(RELATIVE_PATH directory BASE_DIRECTORY "${shaders_dir}")
                string(PREPEND directory ./)
            endif()
        endif()
        list(APPEND arguments "-I${directory}")
    endforeach()

    set(debug "$<$<CONFIG:Debug,RelWithDebInfo>:-g>")
    set(optimizer)
    set(optimize)
    if("${version}" MATCHES "^shaderc ")
        set(compile "${compiler}" -fshader-stage=STAGE "${debug}"
            "$<$<CONFIG:Release,RelWithDebInfo>:-O>" "$<$<CONFIG:MinSizeRel>:-Os>" ${arguments} -MD -MF)
    elseif("${version}" MATCHES "^Glslang Version")
        set(compile "${compiler}" -V --quiet -S STAGE "${debug}" ${arguments} --depfile)
        find_program(RenderGraphCompile_SPIRV_OPT spirv-opt HINTS ENV VULKAN_SDK PATH_SUFFIXES bin
            NO_CMAKE_FIND_ROOT_PATH DOC "Optimizes what glslang compiles.")
        if(RenderGraphCompile_SPIRV_OPT)
            set(optimizer "${RenderGraphCompile_SPIRV_OPT}")
            set(optimize "$<$<CONFIG:Release,RelWithDebInfo>:${optimizer};-O>")
            string(APPEND optimize "$<$<CONFIG:MinSizeRel>:${optimizer};-Os>")
        else()
            message(STATUS "render_graph_modules: there is no spirv-opt here, so no module is optimized")
        endif()
    else()
        message(FATAL_ERROR
            "RenderGraphCompile_GLSL_COMPILER is '${compiler}', which does not answer --version as "
            "glslangValidator, glslang or glslc do. Set it to one of them.")
    endif()

    find_program(RenderGraphCompile_SPIRV_VAL spirv-val HINTS ENV VULKAN_SDK PATH_SUFFIXES bin
        NO_CMAKE_FIND_ROOT_PATH DOC "Validates modules.")
    set(validate)
    if(RenderGraphCompile_SPIRV_VAL)
        # A component may use an extension that allows other block layouts.
        set(validate "${RenderGraphCompile_SPIRV_VAL}" --skip-block-layout)
    endif()

    foreach(variable IN ITEMS compiler compile optimizer optimize validate)
        set(${variable} "${${variable}}" PARENT_SCOPE)
    endforeach()
endfunction()

# Sets the compiler's full path. If RenderGraphCompile_GLSL_COMPILER names a program that is not found, sets that
# name; if it names none and no compiler is found, sets an empty string.
function(_render_graph_find_glsl_compiler compiler_variable)
    set(compiler "${RenderGraphCompile_GLSL_COMPILER}")
    set(places HINTS ENV VULKAN_SDK PATH_SUFFIXES bin NO_CMAKE_FIND_ROOT_PATH)
    if(NOT compiler)
        find_program(RenderGraphCompile_GLSL_COMPILER NAMES glslangValidator glslang glslc ${places}
            DOC "Compiles shader components: glslangValidator, glslang or glslc.")
        set(compiler "${RenderGraphCompile_GLSL_COMPILER}")
    elseif(NOT compiler MATCHES "[/\\;]") # a name without a path, as CMAKE_CXX_COMPILER may be
        find_program(program NAMES "${compiler}" ${places} NO_CACHE)
        if(program)
            set(compiler "${program}")
        endif()
    endif()
    if(NOT compiler)
        set(compiler "")
    endif()
    set(${compiler_variable} "${compiler}" PARENT_SCOPE)
endfunction()
