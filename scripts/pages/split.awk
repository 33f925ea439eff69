# Takes the fenced blocks out of a Markdown page. Each becomes a file, FOLDER/001 and so on, and a line
# of what is printed, its parts parted by tabs: number, line in the page, language, marks.
#
#     awk -v folder=FOLDER -f split.awk PAGE

function refuse(what) {
    printf "%s:%d: %s\n", FILENAME, FNR, what >"/dev/stderr"
    refused = 1
    exit 1
}

BEGIN { blank = 1 }

!inside && /^ *~~~/ { refuse("a fence of tildes") }
!inside && blank && /^(    |\t)/ { refuse("an indented block; fence it and say what it is") }

# A block in a list is indented as far as the list's text.
!inside && /^ *```/ {
    indentation = index($0, "`") - 1
    language = substr($0, indentation + 4)
    marks = ""
    if ((at = index(language, " ")) > 0) {
        marks = substr(language, at + 1)
        language = substr(language, 1, at - 1)
    }
    if (language == "") refuse("a block that does not say what it is")
    number = sprintf("%03d", ++count)
    file = folder "/" number
    printf "" >file
    print number "\t" FNR "\t" language "\t" marks
    inside = 1
    next
}

inside && /^ *```$/ {
    close(file)
    inside = 0
    blank = 1
    next
}

inside {
    print substr($0, 1, indentation) ~ /^ *$/ ? substr($0, indentation + 1) : $0 >file
    next
}

{ blank = $0 == "" }

END {
    if (inside && !refused) refuse("a block that does not end")
}
