# Compares run-by, the first file, with the second file, which has a line for each command and code block of a
# document: the document, a tab and a line of shown.awk. Prints for each how it is run, a tab, the document, a tab
# and its text. A command that several documents show is printed once. Reports missing and unused rows on standard
# error, and then exits with 1.
BEGIN { FS = "\t" }
function complain(text) {
    print text >"/dev/stderr"
    status = 1
}

NR == FNR {
    if (/^#/ || !NF) next
    how = what = $0
    sub(/ .*/, "", how)
    sub(/^[^ ]+ +/, "", what)
    how_of[what] = how
    next
}

$2 == "line" && !commands { next }
{
    what = $2 == "code" ? $1 ": " $3 : $3
    known = what in how_of
    # In a block that has no commands, the first line represents the block.
    if ($2 != "line") commands = known && how_of[what] !~ /^(words|tree|names)/
    if (!known) complain("tests/docs/run-by has no row for this in " $1 ": " what)
    else if (!(what in shown)) print how_of[what] "\t" $1 "\t" $3
    shown[what] = 1
}

END {
    for (what in how_of)
        if (!(what in shown)) complain("tests/docs/run-by has a row for this, but no document shows it: " what)
    exit status
}
