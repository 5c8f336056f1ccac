# render_graph_modules(<target> MANIFEST <library> [OUTPUT_DIRECTORY <directory>]
#     [DEFINES <name or name=value>...] [INCLUDE_DIRECTORIES <directory>...] [OPTIONS <option>...])
#
# Compiles the components of a render_graph_manifest() to the SPIR-V modules that it names, and embeds
# them in <target> under these names, or writes them to a directory as files. docs/cmake.md is the
# reference.
cmake_policy(VERSION 3.21)
if(POLICY CMP0171)
    cmake_policy(SET CMP0171 NEW) # there is a target `codegen`
endif()

function(render_graph_modules)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "MANIFEST;OUTPUT_DIRECTORY"
        "DEFINES;INCLUDE_DIRECTORIES;OPTIONS")
    _render_graph_check_call(render_graph_modules
        "<target> MANIFEST <library> [OUTPUT_DIRECTORY <directory>] [DEFINES <name or name=value>...] \
[INCLUDE_DIRECTORIES <directory>...] [OPTIONS <option>...]"
        MANIFEST)
    _render_graph_check_manifest(manifest "render_graph_modules(${target})" "${arg_MANIFEST}")
    _render_graph_check_modules_target()
    if("${arg_OUTPUT_DIRECTORY}" STREQUAL "")
        if("OUTPUT_DIRECTORY" IN_LIST ARGV)
            message(FATAL_ERROR
                "render_graph_modules(${target}): OUTPUT_DIRECTORY is empty. Without it, the modules become "
                "Qt resources of the target.")
        endif()
        _render_graph_check_embedding()
    endif()

    set(config_dir "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/${target}_modules.dir/render-graph")
    get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    if(is_multi_config)
        string(APPEND config_dir "/$<CONFIG>")
    endif()
    get_target_property(shaders_dir ${manifest} _render_graph_shaders_dir)
    _render_graph_modules_directory(spirv_dir)
    _render_graph_glsl_compiler("${arg_DEFINES}" "${arg_INCLUDE_DIRECTORIES}" "${arg_OPTIONS}" "${shaders_dir}")
    _render_graph_module_sources(sources)
    set(modules)
    set(records)
    foreach(source IN LISTS sources)
        _render_graph_compile_module(module record)
        list(APPEND modules "${module}")
        list(APPEND records "${record}")
    endforeach()
    _render_graph_check_modules()
    if("${arg_OUTPUT_DIRECTORY}" STREQUAL "")
        _render_graph_embed_modules()
    endif()
endfunction()

# The steps of render_graph_modules(), which use its variables.

function(_render_graph_check_modules_target)
    if(NOT TARGET "${target}")
        message(FATAL_ERROR
            "render_graph_modules(${target}): there is no target '${target}'. Define it before this call.")
    endif()
    get_target_property(original "${target}" ALIASED_TARGET)
    if(original)
        message(FATAL_ERROR
            "render_graph_modules(${target}): '${target}' is an alias. Name the target itself, '${original}'.")
    endif()
    if(TARGET ${target}_modules)
        message(FATAL_ERROR
            "render_graph_modules(${target}): there is a target '${target}_modules' already. "
            "Each target has the modules of one manifest.")
    endif()
endfunction()

function(_render_graph_check_embedding)
    get_target_property(type ${target} TYPE)
    if(NOT type MATCHES "^(EXECUTABLE|(STATIC|SHARED|MODULE|OBJECT)_LIBRARY)$")
        message(FATAL_ERROR
            "render_graph_modules(${target}): '${target}' is not a program or library, so it cannot hold "
            "Qt resources. OUTPUT_DIRECTORY writes the modules as files.")
    endif()
    get_target_property(directory ${target} SOURCE_DIR)
    if(NOT directory STREQUAL CMAKE_CURRENT_SOURCE_DIR)
        message(FATAL_ERROR
            "render_graph_modules(${target}): call it in the directory of '${target}', "
            "'${directory}'.")
    endif()
    if(NOT COMMAND qt6_add_resources)
        message(FATAL_ERROR
            "render_graph_modules(${target}): Qt resources need find_package(Qt6 COMPONENTS Core) first. "
            "OUTPUT_DIRECTORY writes the modules as files.")
    endif()
endfunction()

# Sets the directory of the modules. Each call needs a directory of its own; otherwise it would delete or use the
# modules of another call.
function(_render_graph_modules_directory spirv_dir_variable)
    if("${arg_OUTPUT_DIRECTORY}" STREQUAL "")
        set(spirv_dir "${CMAKE_CURRENT_BINARY_DIR}/render-graph/${target}_modules/spirv")
    elseif(arg_OUTPUT_DIRECTORY MATCHES "^[$]<")
        set(spirv_dir "${arg_OUTPUT_DIRECTORY}")
    else()
        _render_graph_full_path(spirv_dir "${arg_OUTPUT_DIRECTORY}" "${CMAKE_CURRENT_BINARY_DIR}")
    endif()
    get_property(owner GLOBAL PROPERTY "_render_graph_modules_of_${spirv_dir}")
    if(owner)
        message(FATAL_ERROR
            "render_graph_modules(${target}): the modules of '${owner}' are in '${spirv_dir}' already. "
            "Each target has a directory of its own.")
    endif()
    set_property(GLOBAL PROPERTY "_render_graph_modules_of_${spirv_dir}" "${target}")
    set(${spirv_dir_variable} "${spirv_dir}" PARENT_SCOPE)
endfunction()

# Sets the files to compile: the vertex shader and the components.
function(_render_graph_module_sources sources_variable)
    _render_graph_glob(sources "render_graph_modules(${target})" "${shaders_dir}"
        "vulkan/components/*.slang" "vulkan/components/*.frag" "vulkan/fullscreen.vert")
    get_target_property(generated ${manifest} _render_graph_generated)
    list(APPEND sources ${generated})
    list(REMOVE_DUPLICATES sources)
    set(components "${shaders_dir}/vulkan/components")
    foreach(source IN LISTS sources)
        cmake_path(GET source FILENAME file)
        cmake_path(GET source STEM LAST_ONLY name)
        # Names that begin with a dot are editors' files. The tool ignores a .frag beside a .slang.
        if(file MATCHES "^[.]|[.]glslp$"
                OR NOT (EXISTS "${source}" OR source IN_LIST generated)
                OR IS_DIRECTORY "${source}"
                OR (file MATCHES "[.]frag$" AND "${components}/${name}.slang" IN_LIST sources))
            list(REMOVE_ITEM sources "${source}")
        endif()
    endforeach()
    set(${sources_variable} "${sources}" PARENT_SCOPE)
endfunction()

# Adds the rule that compiles `source`. Make does not detect a changed command or include. So the rule depends on the
# record, which contains the command and is touched for a changed include. It has no depfile with Make: CMake only
# adds to Make's dependencies, so a deleted include would compile the module in each build.
function(_render_graph_compile_module module_variable record_variable)
    cmake_path(GET source STEM LAST_ONLY name)
    set(stage frag)
    if(source MATCHES "/fullscreen[.]vert$")
        set(stage vert)
    endif()
    set(module "${spirv_dir}/${name}.${stage}.spv")
    set(record "${config_dir}/${name}.${stage}.spv")

    string(REPLACE "STAGE" "${stage}" compile "${compile}")
    set(is_make FALSE)
    set(depfile DEPFILE "${record}.d")
    if(CMAKE_GENERATOR MATCHES "Makefiles")
        set(is_make TRUE)
        set(depfile "")
    endif()
    _render_graph_settings(code shaders_dir source module record is_make compile optimize validate)
    file(GENERATE OUTPUT "${record}.cmake" CONTENT "${code}")

    set(codegen "")
    if(POLICY CMP0171)
        set(codegen CODEGEN)
    endif()
    add_custom_command(
        OUTPUT "${module}"
        COMMAND "${CMAKE_COMMAND}" "-DSETTINGS=${record}.cmake"
            -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/CompileModule.cmake"
        DEPENDS "${source}" "${record}.cmake" "${compiler}" ${optimizer}
        ${depfile}
        COMMENT "Compiling ${name}.${stage}.spv for ${target}"
        VERBATIM ${codegen}
    )
    set(${module_variable} "${module}" PARENT_SCOPE)
    set(${record_variable} "${record}" PARENT_SCOPE)
endfunction()

# Adds the target that makes the modules and compares them with those that the manifest names.
function(_render_graph_check_modules)
    get_target_property(header ${manifest} _render_graph_header)
    set(names)
    foreach(module IN LISTS modules)
        cmake_path(GET module FILENAME name)
        list(APPEND names "${name}")
    endforeach()
    set(built "${config_dir}/built.cmake")
    set(settings "${config_dir}/modules.cmake")
    _render_graph_settings(code header spirv_dir names records built)
    file(GENERATE OUTPUT "${settings}" CONTENT "${code}")
    add_custom_command(
        OUTPUT "${built}"
        COMMAND "${CMAKE_COMMAND}" "-DSETTINGS=${settings}"
            -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/CheckModules.cmake"
        DEPENDS "${settings}" "${header}"
        COMMENT "Comparing the modules of ${target} with those that ${manifest} names"
        VERBATIM
    )

    _render_graph_check_passes(checked)
    add_custom_target(${target}_modules DEPENDS "${built}" ${modules} ${checked} SOURCES ${sources})
    add_dependencies(${target}_modules ${manifest})
    add_dependencies(${target} ${target}_modules)
    set_source_files_properties(${sources} PROPERTIES GENERATED ON)
    source_group(TREE "${shaders_dir}" PREFIX Shaders FILES ${sources})

    if(CMAKE_GENERATOR MATCHES "Makefiles")
        add_custom_target(${target}_stale_modules
            COMMAND "${CMAKE_COMMAND}" "-DSETTINGS=${settings}"
                -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/MarkStaleModules.cmake"
            VERBATIM
        )
        # Components may include files of the manifest's DEPENDS.
        add_dependencies(${target}_stale_modules ${manifest})
        add_dependencies(${target}_modules ${target}_stale_modules)
    endif()
endfunction()

# Adds the rule that holds the modules against the passes, and sets the file that it writes. A named tool may come
# without the program that does it.
function(_render_graph_check_passes checked_variable)
    set(check "")
    if(RenderGraphCompile_EXECUTABLE)
        cmake_path(GET RenderGraphCompile_EXECUTABLE EXTENSION LAST_ONLY extension)
        cmake_path(GET RenderGraphCompile_EXECUTABLE PARENT_PATH directory)
        set(path "${directory}/render-graph-check")
        if(extension STREQUAL ".exe")
            string(APPEND path "${extension}")
        endif()
        if(EXISTS "${path}")
            set(check "${path}")
            set(dependency "${path}")
        endif()
    elseif(TARGET RenderGraphCompile::render-graph-check)
        _render_graph_target_command(check dependency render-graph-check)
    endif()
    if(NOT check)
        set(${checked_variable} "" PARENT_SCOPE)
        return()
    endif()

    set(checked "${config_dir}/checked")
    set(settings "${config_dir}/passes.cmake")
    _render_graph_settings(code check checked shaders_dir spirv_dir)
    file(GENERATE OUTPUT "${settings}" CONTENT "${code}")
    _render_graph_utf8_environment(utf8)
    add_custom_command(
        OUTPUT "${checked}"
        COMMAND "${CMAKE_COMMAND}" -E env ${utf8}
            "${CMAKE_COMMAND}" "-DSETTINGS=${settings}" -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/CheckPasses.cmake"
        DEPENDS "${settings}" "${built}" "${header}" ${modules} "${dependency}"
        COMMENT "Checking the modules of ${target} against the passes of ${manifest}"
        VERBATIM
    )
    set(${checked_variable} "${checked}" PARENT_SCOPE)
endfunction()

function(_render_graph_embed_modules)
    string(MAKE_C_IDENTIFIER "${target}_modules" resource)
    qt6_add_resources(${target} ${resource}
        PREFIX /shaders/vulkan/spirv BASE "${spirv_dir}" FILES ${modules} OUTPUT_TARGETS objects)
    # Otherwise, with Make, each of these targets would compile the modules itself, at the same time.
    foreach(name IN ITEMS ${objects} ${target}_other_files)
        if(TARGET ${name})
            add_dependencies(${name} ${target}_modules)
        endif()
    endforeach()
endfunction()
