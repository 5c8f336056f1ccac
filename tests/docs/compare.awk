# Takes run-by, then a line for each thing shown: its document, a tab and what shown.awk says of it. Prints how
# each is run, a tab, the document, a tab and what it is; once for a command that stands in several places.
# Says on standard error, and by its exit status, what has no row and which row nothing shows.
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
    # Of lines that are no commands the first one stands for all.
    if ($2 != "line") commands = known && how_of[what] !~ /^(words|tree|names)/
    if (!known) complain($1 " shows what has no row in tests/docs/run-by: " what)
    else if (!(what in shown)) print how_of[what] "\t" $1 "\t" $3
    shown[what] = 1
}

END {
    for (what in how_of)
        if (!(what in shown)) complain("tests/docs/run-by has a row that no document shows: " what)
    exit status
}
