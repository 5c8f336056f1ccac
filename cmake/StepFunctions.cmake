# What the build steps share.

# Waits for the same step of another build of this tree, which writes the same files. The timeout is for a
# build that is stopped, and for file systems without locks.
function(lock_step lock)
    file(LOCK "${lock}" TIMEOUT 300 RESULT_VARIABLE ignored)
endfunction()

# Writes the file whole or not at all.
function(write_file path content)
    file(WRITE "${path}.part" "${content}")
    file(RENAME "${path}.part" "${path}")
endfunction()
