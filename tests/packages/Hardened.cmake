# The programs that PackagesWork.cmake packed are hardened. Takes HARDENING_CHECK, PROCESSOR, WORK_DIR.
cmake_minimum_required(VERSION 3.21)

# What it says of stack clashes and of control flow is looked up below: the one shows only in large
# stack frames, the other only where the C library's own objects have it.
file(GLOB programs "${WORK_DIR}/deb/usr/bin/*" "${WORK_DIR}/preview/usr/bin/*")
if(NOT programs)
    message(FATAL_ERROR "No program below ${WORK_DIR}")
endif()
foreach(program IN LISTS programs)
    execute_process(
        COMMAND "${HARDENING_CHECK}" --nocfprotection "${program}"
        OUTPUT_VARIABLE report ERROR_VARIABLE report)
    foreach(feature IN ITEMS
            "Position Independent Executable"
            "Stack protected"
            "Fortify Source functions"
            "Read-only relocations"
            "Immediate binding")
        if(NOT report MATCHES "\n ${feature}: yes")
            message(FATAL_ERROR "${program} is not ${feature}:\n${report}")
        endif()
    endforeach()
endforeach()

file(READ "${WORK_DIR}/build/compile_commands.json" commands)
string(REGEX MATCHALL "\"command\": [^\n]*" commands "${commands}")
list(FILTER commands EXCLUDE REGEX "/cmake_pch[.]hxx[.]cxx\"") # of headers, which end in no program
list(LENGTH commands total)
list(FILTER commands INCLUDE REGEX " -fstack-clash-protection ")
list(LENGTH commands protected)
if(total EQUAL 0 OR NOT protected EQUAL total)
    message(FATAL_ERROR "${protected} of ${total} sources are built with -fstack-clash-protection")
endif()

if(PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
    file(GLOB_RECURSE objects "${WORK_DIR}/build/*.cpp.o")
    list(LENGTH objects count)
    if(NOT count EQUAL total)
        message(FATAL_ERROR "${count} objects of ${total} sources")
    endif()
    foreach(object IN LISTS objects)
        execute_process(COMMAND readelf -n "${object}" OUTPUT_VARIABLE notes)
        if(NOT notes MATCHES "x86 feature: IBT, SHSTK")
            message(FATAL_ERROR "${object} has no control-flow protection:\n${notes}")
        endif()
    endforeach()
endif()
