# Lists the commands and code blocks of a Markdown document. Each line is one of these words, a tab and a text:
#   command   the first line of an indented block, or a command in the text
#   line      another line of an indented block
#   code      a fenced block: its language and the heading above it, with a "2" for the heading's second block
# With -v block='<language> <heading>' prints the lines of this fenced block instead.
function show(kind, text) {
    if (!block) print kind "\t" text
}

# Finds the commands in a paragraph. They are between backquotes, which may be on different lines.
function end_of_paragraph(    parts, count, i) {
    count = split(paragraph, parts, "`")
    for (i = 2; i <= count; i += 2)
        if (parts[i] ~ /^([A-Z_]+=[^ ]+ )?((cmake|cpack|ctest|make|man|meson|ninja|pkg-config|render-graph-[a-z]+) |scripts\/|\.ci\/)/)
            show("command", parts[i])
    paragraph = ""
}

/^ *```/ {
    end_of_paragraph()
    fenced = !fenced
    sub(/^ *```/, "")
    if (fenced) {
        name = $0 " " heading
        if (++seen[name] > 1) name = name " " seen[name]
        show("code", name)
    }
    next
}
fenced {
    if (name == block) print
    next
}
/^#/ {
    end_of_paragraph()
    heading = $0
    sub(/^#+ */, "", heading)
}
/^ *$/ {
    end_of_paragraph()
    indented = 0
    blank = 1
    next
}
/^    / && (blank || indented) {
    sub(/^    /, "")
    sub(/  +#.*/, "") # a remark
    show(indented ? "line" : "command", $0)
    indented = 1
    blank = 0
    next
}
{
    paragraph = paragraph " " $0
    blank = 0
}
END { end_of_paragraph() }
