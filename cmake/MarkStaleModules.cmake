# With Make: a module that is older than what it was made of gets a newer record, for which Make compiles it
# again. SETTINGS, a file, sets spirv_dir, names, those of the modules, and records, of which each belongs to a
# module. The old module stays until there is a new one.
cmake_policy(VERSION 3.21)
include("${SETTINGS}")

foreach(name record IN ZIP_LISTS names records)
    set(inputs)
    include("${record}.inputs.cmake" OPTIONAL)
    foreach(input IN LISTS inputs)
        if("${input}" IS_NEWER_THAN "${spirv_dir}/${name}") # or is gone
            file(TOUCH_NOCREATE "${record}.cmake")
        endif()
    endforeach()
endforeach()
