# Puts a wrong row into a copy of the presets and expects the compiler to name the rule it breaks.
# Takes COMPILER, HEADER_DIR, WORK_DIR, and FROM, TO, MESSAGE.
file(READ "${HEADER_DIR}/FirstPartyPresets.h" presets)
string(FIND "${presets}" "${FROM}" position)
if(position EQUAL -1)
    message(FATAL_ERROR "The presets do not contain: ${FROM}")
endif()
string(REPLACE "${FROM}" "${TO}" presets "${presets}")
file(WRITE "${WORK_DIR}/FirstPartyPresets.h" "${presets}")
file(WRITE "${WORK_DIR}/presets.cpp" "#include \"FirstPartyPresets.h\"\n")

set(compile "${COMPILER}" -std=c++20 -fsyntax-only "-I${HEADER_DIR}")
execute_process(COMMAND ${compile} -include "${HEADER_DIR}/FirstPartyPresets.h" -x c++ /dev/null
    RESULT_VARIABLE unchanged ERROR_VARIABLE diagnostics)
if(NOT unchanged EQUAL 0)
    message(FATAL_ERROR "The unchanged presets do not compile:\n${diagnostics}")
endif()
execute_process(COMMAND ${compile} "${WORK_DIR}/presets.cpp"
    RESULT_VARIABLE changed ERROR_VARIABLE diagnostics)
if(changed EQUAL 0)
    message(FATAL_ERROR "A wrong row compiles: ${TO}")
endif()
string(FIND "${diagnostics}" "${MESSAGE}" position)
if(position EQUAL -1)
    message(FATAL_ERROR "The compiler does not name the rule \"${MESSAGE}\":\n${diagnostics}")
endif()
