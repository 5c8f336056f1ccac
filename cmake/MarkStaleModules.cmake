# Touches the record of each module that is older than one of its inputs. Make then compiles the module again, and
# keeps the old module until the new one is written. SETTINGS names a file that sets spirv_dir, and the lists names
# and records with one element per module.
cmake_policy(VERSION 3.21)
include("${SETTINGS}")

foreach(name record IN ZIP_LISTS names records)
    set(inputs)
    include("${record}.inputs.cmake" OPTIONAL)
    foreach(input IN LISTS inputs)
        if("${input}" IS_NEWER_THAN "${spirv_dir}/${name}") # or does not exist
            file(TOUCH_NOCREATE "${record}.cmake")
        endif()
    endforeach()
endforeach()
