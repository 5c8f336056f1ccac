# Puts a wrong row into a copy of the presets and expects the compiler to name the rule it breaks, and
# the preset, in few lines. Takes COMPILER, HEADER_DIR, WORK_DIR, and FROM, TO, MESSAGE, PRESET.
file(READ "${HEADER_DIR}/FirstPartyPresets.h" presets)
string(FIND "${presets}" "${FROM}" position)
if(position EQUAL -1)
    message(FATAL_ERROR "The presets do not contain: ${FROM}")
endif()
string(REPLACE "${FROM}" "${TO}" presets "${presets}")
file(WRITE "${WORK_DIR}/FirstPartyPresets.h" "${presets}")

execute_process(
    COMMAND "${COMPILER}" -std=c++20 -fsyntax-only "-I${HEADER_DIR}"
        -include "${WORK_DIR}/FirstPartyPresets.h" -x c++ /dev/null
    RESULT_VARIABLE status ERROR_VARIABLE diagnostics)
if(status EQUAL 0)
    message(FATAL_ERROR "A wrong row compiles: ${TO}")
endif()
foreach(text IN ITEMS "${MESSAGE}" "${PRESET}")
    string(FIND "${diagnostics}" "${text}" position)
    if(position EQUAL -1)
        message(FATAL_ERROR "The compiler does not say \"${text}\":\n${diagnostics}")
    endif()
endforeach()
# One rule for one preset is some ten lines; a row may be in six presets.
string(REGEX MATCHALL "\n" lines "${diagnostics}")
list(LENGTH lines count)
if(count GREATER 80)
    message(FATAL_ERROR "${count} lines are too many:\n${diagnostics}")
endif()
