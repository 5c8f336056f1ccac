# What the build steps share.

# Two builds of one tree take turns, since both write the same files. A build that is stopped, or a file
# system that knows no locks, holds the other up for no longer than this.
function(take_turns lock)
    file(LOCK "${lock}" TIMEOUT 300 RESULT_VARIABLE ignored)
endfunction()

# Writes the file whole or not at all.
function(write_file path content)
    file(WRITE "${path}.part" "${content}")
    file(RENAME "${path}.part" "${path}")
endfunction()
