# Checks that the programs in the packages of PackagesWork.cmake are hardened, and that its release build compiles
# every source with the hardening flags. Takes HARDENING_CHECK, PROCESSOR, WORK_DIR.
cmake_minimum_required(VERSION 3.21)

# hardening-check finds stack-clash protection only in large stack frames, and control-flow protection only if the
# C library's objects have it. So the flags and the objects are checked below instead. The preview may be a debug
# build, which has no fortified functions.
function(expect_hardened program)
    execute_process(
        COMMAND "${HARDENING_CHECK}" --nocfprotection "${program}"
        OUTPUT_VARIABLE report ERROR_VARIABLE report)
    foreach(feature IN ITEMS
            "Position Independent Executable"
            "Stack protected"
            "Read-only relocations"
            "Immediate binding"
            ${ARGN})
        if(NOT report MATCHES "\n ${feature}: yes")
            message(FATAL_ERROR "hardening-check does not say \"${feature}: yes\" for ${program}:\n${report}")
        endif()
    endforeach()
endfunction()

expect_hardened("${WORK_DIR}/deb/usr/bin/render-graph-compile" "Fortify Source functions")
expect_hardened("${WORK_DIR}/deb/usr/bin/render-graph-check" "Fortify Source functions")
if(EXISTS "${WORK_DIR}/preview")
    expect_hardened("${WORK_DIR}/preview/usr/bin/render-graph-preview")
endif()

file(READ "${WORK_DIR}/build/compile_commands.json" commands)
string(REGEX MATCHALL "\"command\": [^\n]*" commands "${commands}")
list(LENGTH commands total)
set(flags_of_x86)
if(PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
    set(flags_of_x86 -fcf-protection)
endif()
foreach(flag IN ITEMS -fstack-clash-protection -D_FORTIFY_SOURCE=[23] ${flags_of_x86})
    set(protected ${commands})
    list(FILTER protected INCLUDE REGEX " ${flag} ")
    list(LENGTH protected count)
    if(total EQUAL 0 OR NOT count EQUAL total)
        message(FATAL_ERROR "Only ${count} of ${total} sources are built with ${flag}")
    endif()
endforeach()

if(flags_of_x86)
    file(GLOB_RECURSE objects "${WORK_DIR}/build/src/*.o" "${WORK_DIR}/build/tools/*.o")
    if(NOT objects)
        message(FATAL_ERROR "There are no objects below ${WORK_DIR}/build")
    endif()
    foreach(object IN LISTS objects)
        execute_process(COMMAND readelf -n "${object}" OUTPUT_VARIABLE notes)
        if(NOT notes MATCHES "x86 feature: IBT, SHSTK")
            message(FATAL_ERROR "${object} has no control-flow protection:\n${notes}")
        endif()
    endforeach()
endif()
