# Puts a wrong row into a copy of the presets and compiles it. The compiler has to show the rule that the row breaks,
# the preset, and the part of it that breaks the rule, in few lines. Takes COMPILER, HEADER_DIR, WORK_DIR, and FROM,
# TO, RULE, PRESET, CULPRIT.
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
# The text around these three differs between GCC and clang.
if(NOT diagnostics MATCHES "\"${RULE}\"[^\n]*\"${PRESET}\"[^\n]*\"${CULPRIT}\"")
    message(FATAL_ERROR
        "The compiler does not show \"${RULE}\", \"${PRESET}\" and \"${CULPRIT}\":\n${diagnostics}")
endif()
string(REGEX MATCHALL "\n" lines "${diagnostics}")
list(LENGTH lines count)
if(count GREATER 30)
    message(FATAL_ERROR "The compiler prints ${count} lines, more than 30:\n${diagnostics}")
endif()
