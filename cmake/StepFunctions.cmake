# Functions shared by the build steps.

# Waits while another build of this tree runs the same step, which writes the same files. The timeout is for a
# suspended build and for file systems without locks.
function(lock_step lock)
    file(LOCK "${lock}" TIMEOUT 300 RESULT_VARIABLE ignored)
endfunction()

# Writes the whole file, or leaves it unchanged.
function(write_file path content)
    file(WRITE "${path}.part" "${content}")
    file(RENAME "${path}.part" "${path}")
endfunction()
