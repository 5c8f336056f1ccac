# The build step adds to each of the tool's messages where the error is. The messages are about small components.
# Takes SOURCE_DIR and WORK_DIR.
cmake_policy(VERSION 3.21)
include("${SOURCE_DIR}/cmake/DescribeComponentError.cmake")

set(shaders "${WORK_DIR}/é [x")
set(noise "${shaders}/vulkan/components/noise.slang")
set(tape "${shaders}/vulkan/components/tape.slang")
file(REMOVE_RECURSE "${WORK_DIR}")

# row(<name> <the tool's message> <expected text>)
function(row name line expected)
    describe_component_error(place "render-graph-compile: ${line}\n" "${shaders}")
    if(NOT place STREQUAL expected)
        message(SEND_ERROR "${name}:\n${place}\ninstead of\n${expected}")
    endif()
endfunction()

file(WRITE "${noise}" "//! input BEAM\n\n// é ; [ \\\n  //!\tinput  NONE  \r\n//! input NONE ;\n\
//! param wiggle\n//! param NONE\n//! param mask_hdr_ready\n")
file(WRITE "${tape}" "x = pc.params[1]; // [\n/*\n//! param wiggle\n pc.params[2] */ npc.params[2] /* / */\n\
//! param smear\n// pc.params[2]\n/**/ y[0] = pc . params[ /* 3 */ 02 ]; /*/ pc.params[4]\n*/ \
pc.params[5];\n")
row("alias" "preset 'rewind' pass 1 ('noise') declares //! input NONE but no earlier pass carries that \
alias (${noise})"
    "${noise}:4: //! input NONE is declared here")
row("parameter of one component" "rewind pass 1 declares parameter 'NONE' without metadata"
    "${noise}:7: //! param NONE is declared here")
row("parameter of two" "rewind pass 1 declares parameter 'wiggle' without metadata"
    "${noise}:6: //! param wiggle is declared here\n${tape}:3: //! param wiggle is declared here")
set(tail "but its own //! param directives only declare 2 slot(s)")
row("slot" "preset 'rewind' pass 0: code reads pc.params[2] ${tail} (${tape})"
    "${tape}:7: pc.params[2] is read here; the slots are [0] smear, [1] wiggle")
row("slot behind a comment" "preset 'rewind' pass 0: code reads pc.params[5] ${tail} (${tape})"
    "${tape}:8: pc.params[5] is read here; the slots are [0] smear, [1] wiggle")
row("slot that is not read" "preset 'rewind' pass 0: code reads pc.params[4] ${tail} (${tape})" "")

file(WRITE "${tape}" "pc.params[0]")
row("slot without directives" "preset 'rewind' pass 0: code reads pc.params[0] ${tail} (${tape})"
    "${tape}:1: pc.params[0] is read here; there is no //! param")
set(directives "//! input A\n//! input B\n//! input A\n//! param mask_hdr_ready\n//! param id1\n")
foreach(number RANGE 1 15)
    string(APPEND directives "//! param id${number}\n")
endforeach()
file(WRITE "${tape}" "${directives}")
row("too many inputs" "preset 'rewind' pass 0 ('tape') exceeds MaxSampledInputsPerPass"
    "${tape}:2: //! input B is the last of 2; with the images that take no directive, \
a pass samples at most 8")
row("not too many parameters" "preset 'rewind' pass 0 ('tape') exceeds MaxParamFloatsPerPass" "")
file(APPEND "${tape}" "//! param more\n//! param most\n")
row("too many parameters" "preset 'rewind' pass 0 ('tape') exceeds MaxParamFloatsPerPass"
    "${tape}:21: //! param more is number 16 of 17; a pass takes at most 15")

set(preset "${shaders}/rewind.glslp")
set(line "preset 'rewind' ownParams union {a;b;c} does not match its .glslp parameters= list")
row("no file" "${line} {}" "${preset}: no line 'parameters = \"...\"' can be read here")
string(ASCII 239 187 191 mark)
file(WRITE "${preset}" "${mark}parameters=\"\"\nparameters=\"a;b;c\"\n")
row("empty list" "${line} {}" "${preset}:1: only the passes have 'a', 'b', 'c'")
file(WRITE "${preset}" "parameters = a \"b\"\n parameters = \" b;[;a;d;d\"\n")
row("drift" "${line} { b;[;a;d;d}"
    "${preset}:2: only the passes have 'b', 'c'; only this list has ' b', '?', 'd'")
row("an id twice" "${line} {a;b;c;c}" "${preset}:2: an id is listed more than once")
row("another error" "failed to open '${preset}' for writing" "")

# The step shows this text below its own message.
set(said "rewind pass 1 declares parameter 'wiggle' without metadata")
file(WRITE "${WORK_DIR}/tool" "echo \"render-graph-compile: ${said}\" >&2; exit 1")
execute_process(COMMAND "${CMAKE_COMMAND}" "-DTOOL=sh;${WORK_DIR}/tool" "-DSHADERS_DIR=${shaders}"
        "-DHEADER=${WORK_DIR}/m.h" "-DLOCK=${WORK_DIR}/lock" "-DLATEST=${WORK_DIR}/latest.h"
        -P "${SOURCE_DIR}/cmake/GenerateManifest.cmake"
    RESULT_VARIABLE result ERROR_VARIABLE shown)
string(FIND "${shown}" "render-graph-compile: ${said}\n" own)
string(FIND "${shown}" "\n   m.h was not generated: the tool says why above.\n\
   ${noise}:6: //! param wiggle is declared here\n" step)
if(result EQUAL 0 OR NOT own EQUAL 0 OR step EQUAL -1)
    message(SEND_ERROR "the step shows\n${shown}")
endif()
