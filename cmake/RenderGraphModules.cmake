# render_graph_modules(<target> MANIFEST <library> [OUTPUT_DIRECTORY <directory>])
#
# Compiles the components of a render_graph_manifest() to the SPIR-V modules that it names, and embeds
# them in <target> under these names, or writes them to a directory as files. docs/cmake.md is the
# reference.
cmake_policy(VERSION 3.21)

function(render_graph_modules)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "MANIFEST;OUTPUT_DIRECTORY" "")
    _render_graph_check_call(render_graph_modules
        "<target> MANIFEST <library> [OUTPUT_DIRECTORY <directory>]" MANIFEST)
    _render_graph_check_manifest("render_graph_modules(${target})" "${arg_MANIFEST}")
    if(NOT TARGET "${target}")
        message(FATAL_ERROR
            "render_graph_modules(${target}): there is no target '${target}'. It comes first.")
    endif()
    if(TARGET ${target}_modules)
        message(FATAL_ERROR
            "render_graph_modules(${target}): there is a target '${target}_modules' already. "
            "Each target has the modules of one manifest.")
    endif()

    set(work_dir "${CMAKE_CURRENT_BINARY_DIR}/render-graph/${target}_modules")
    set(config_dir "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/${target}_modules.dir/render-graph")
    get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    if(is_multi_config)
        string(APPEND config_dir "/$<CONFIG>")
    endif()
    if("${arg_OUTPUT_DIRECTORY}" STREQUAL "")
        _render_graph_check_embedding(${target})
        set(spirv_dir "${work_dir}/spirv")
    elseif(arg_OUTPUT_DIRECTORY MATCHES "^[$]<")
        set(spirv_dir "${arg_OUTPUT_DIRECTORY}")
    else()
        get_filename_component(spirv_dir "${arg_OUTPUT_DIRECTORY}" ABSOLUTE
            BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")
    endif()
    _render_graph_glsl_compiler(compiler compile optimizer optimize)

    get_target_property(shaders_dir ${arg_MANIFEST} _render_graph_shaders_dir)
    get_target_property(header ${arg_MANIFEST} _render_graph_header)
    get_target_property(generated ${arg_MANIFEST} _render_graph_generated)
    _render_graph_glob_pattern(pattern "${shaders_dir}")
    file(GLOB sources LIST_DIRECTORIES false CONFIGURE_DEPENDS
        "${pattern}/vulkan/components/*.slang"
        "${pattern}/vulkan/components/*.frag"
        "${pattern}/vulkan/fullscreen.vert"
    )
    list(APPEND sources ${generated})
    list(REMOVE_DUPLICATES sources)
    set(modules)
    foreach(source IN LISTS sources)
        cmake_path(GET source FILENAME file)
        string(REGEX REPLACE "[.][a-z]+$" "" name "${file}")
        # A name with a dot is an editor's, and where there is a .slang the tool passes over the .frag.
        if(file MATCHES "^[.]|[.]glslp$"
                OR NOT (EXISTS "${source}" OR source IN_LIST generated)
                OR (file MATCHES "[.]frag$" AND "${shaders_dir}/vulkan/components/${name}.slang" IN_LIST sources))
            list(REMOVE_ITEM sources "${source}")
            continue()
        endif()
        set(stage frag)
        if(file STREQUAL "fullscreen.vert")
            set(stage vert)
        endif()

        # Make does not compile again when the command changes, but when a file does. And what CMake hands
        # it of a depfile only ever grows: a file that went would be compiled for in each build.
        set(module "${spirv_dir}/${name}.${stage}.spv")
        set(record "${config_dir}/${name}.${stage}.spv")
        string(REPLACE "STAGE" "${stage}" compile_stage "${compile}")
        file(GENERATE OUTPUT "${record}.cmake" CONTENT "\
set(SOURCE [==[${source}]==])
set(MODULE [==[${module}]==])
set(DEPFILE [==[${record}.d]==])
set(DEPENDENCIES [==[${record}.txt]==])
set(COMPILE [==[${compile_stage}]==])
set(OPTIMIZE [==[${optimize}]==])
")
        set(depfile DEPFILE "${record}.d")
        if(CMAKE_GENERATOR MATCHES "Makefiles")
            set(depfile "")
        endif()
        add_custom_command(
            OUTPUT "${module}"
            COMMAND "${CMAKE_COMMAND}" "-DSETTINGS=${record}.cmake"
                -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/RenderGraphModuleStep.cmake"
            DEPENDS "${source}" "${record}.cmake" "${compiler}" ${optimizer}
            ${depfile}
            COMMENT "Compiling ${name}.${stage}.spv for ${target}"
            VERBATIM
        )
        list(APPEND modules "${module}")
    endforeach()

    set(built "${config_dir}/built.txt")
    set(settings "${config_dir}/modules.cmake")
    file(GENERATE OUTPUT "${settings}" CONTENT "\
set(HEADER [==[${header}]==])
set(MODULES [==[${modules}]==])
set(BUILT [==[${built}]==])
set(RECORDS [==[${config_dir}]==])
")
    add_custom_command(
        OUTPUT "${built}"
        COMMAND "${CMAKE_COMMAND}" "-DSETTINGS=${settings}"
            -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/RenderGraphModulesStep.cmake"
        DEPENDS "${settings}" "${header}"
        COMMENT "Comparing the modules of ${target} with what ${arg_MANIFEST} names"
        VERBATIM
    )

    add_custom_target(${target}_modules DEPENDS "${built}" ${modules} SOURCES ${sources})
    add_dependencies(${target}_modules ${arg_MANIFEST})
    if(CMAKE_GENERATOR MATCHES "Makefiles")
        add_custom_target(${target}_stale_modules
            COMMAND "${CMAKE_COMMAND}" "-DSETTINGS=${settings}"
                -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/RenderGraphStaleModules.cmake"
            VERBATIM
        )
        add_dependencies(${target}_modules ${target}_stale_modules)
    endif()
    set_source_files_properties(${sources} PROPERTIES GENERATED ON)
    source_group(TREE "${shaders_dir}" PREFIX Shaders FILES ${sources})
    set(waiting ${target})
    if("${arg_OUTPUT_DIRECTORY}" STREQUAL "")
        string(MAKE_C_IDENTIFIER "${target}_modules" resource)
        qt6_add_resources(${target} ${resource}
            PREFIX /shaders/vulkan/spirv BASE "${spirv_dir}" FILES ${modules} OUTPUT_TARGETS objects)
        list(APPEND waiting ${objects} ${target}_other_files)
    endif()
    # Each would compile the modules itself, at the same time, with Make.
    foreach(name IN LISTS waiting)
        if(TARGET ${name})
            add_dependencies(${name} ${target}_modules)
        endif()
    endforeach()
endfunction()

function(_render_graph_check_manifest call manifest)
    set(shaders_dir NOTFOUND)
    if(TARGET "${manifest}")
        get_target_property(shaders_dir ${manifest} _render_graph_shaders_dir)
    endif()
    if(NOT shaders_dir)
        message(FATAL_ERROR
            "${call}: MANIFEST is the library of a render_graph_manifest() that comes first, "
            "but it is '${manifest}'.")
    endif()
endfunction()

function(_render_graph_check_embedding target)
    get_target_property(type ${target} TYPE)
    if(NOT type MATCHES "^(EXECUTABLE|(STATIC|SHARED|MODULE|OBJECT)_LIBRARY)$")
        message(FATAL_ERROR
            "render_graph_modules(${target}): '${target}' is no program or library that could hold Qt "
            "resources. OUTPUT_DIRECTORY takes the modules as files.")
    endif()
    get_target_property(directory ${target} SOURCE_DIR)
    if(NOT directory STREQUAL CMAKE_CURRENT_SOURCE_DIR)
        message(FATAL_ERROR
            "render_graph_modules(${target}): the call belongs into the directory of '${target}', "
            "'${directory}'.")
    endif()
    if(NOT COMMAND qt6_add_resources)
        message(FATAL_ERROR
            "render_graph_modules(${target}): Qt resources need find_package(Qt6 COMPONENTS Core) first. "
            "OUTPUT_DIRECTORY takes the modules as files.")
    endif()
endfunction()

# The compiler and its command, in which STAGE is to be replaced, and what optimizes its modules, if it
# does not do so itself. Both commands differ by configuration.
function(_render_graph_glsl_compiler compiler_variable compile_variable optimizer_variable optimize_variable)
    _render_graph_find_glsl_compiler()
    set(compiler "${RenderGraphCompile_GLSL_COMPILER}")
    if(NOT compiler)
        message(FATAL_ERROR
            "render_graph_modules: there is no GLSL compiler here: glslangValidator, glslang or glslc "
            "(Debian: glslang-tools, glslc). RenderGraphCompile_GLSL_COMPILER can name one by its full path.")
    endif()
    execute_process(COMMAND "${compiler}" --version OUTPUT_VARIABLE version ERROR_QUIET)

    set(debug "$<$<CONFIG:Debug,RelWithDebInfo>:-g>")
    set(optimizer)
    set(optimize)
    if("${version}" MATCHES "^shaderc ")
        set(compile "${compiler};-fshader-stage=STAGE;${debug}")
        string(APPEND compile ";$<$<CONFIG:Release,RelWithDebInfo>:-O>;$<$<CONFIG:MinSizeRel>:-Os>;-MD;-MF")
    elseif("${version}" MATCHES "^Glslang Version")
        set(compile "${compiler};-V;--quiet;-S;STAGE;${debug};--depfile")
        find_program(RenderGraphCompile_SPIRV_OPT spirv-opt HINTS ENV VULKAN_SDK PATH_SUFFIXES bin
            NO_CMAKE_FIND_ROOT_PATH DOC "Optimizes what glslang compiles.")
        if(RenderGraphCompile_SPIRV_OPT)
            set(optimizer "${RenderGraphCompile_SPIRV_OPT}")
            set(optimize "$<$<CONFIG:Release,RelWithDebInfo>:${optimizer};-O>")
            string(APPEND optimize "$<$<CONFIG:MinSizeRel>:${optimizer};-Os>")
        else()
            message(STATUS "render_graph_modules: no spirv-opt here, so no module is optimized")
        endif()
    else()
        message(FATAL_ERROR
            "RenderGraphCompile_GLSL_COMPILER is '${compiler}', which does not answer --version as "
            "glslangValidator, glslang or glslc do. Set it to the full path of one of them.")
    endif()

    foreach(variable IN ITEMS compiler compile optimizer optimize)
        set(${${variable}_variable} "${${variable}}" PARENT_SCOPE)
    endforeach()
endfunction()

function(_render_graph_find_glsl_compiler)
    find_program(RenderGraphCompile_GLSL_COMPILER NAMES glslangValidator glslang glslc
        HINTS ENV VULKAN_SDK PATH_SUFFIXES bin NO_CMAKE_FIND_ROOT_PATH
        DOC "Compiles shader components: glslangValidator, glslang or glslc.")
endfunction()
