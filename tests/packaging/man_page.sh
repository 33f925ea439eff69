#!/usr/bin/env bash
# Holds a program's man page against its --help: man_page.sh PROGRAM PAGE
#
# Each command has its options, under the same names, in both or in neither.
set -euo pipefail

program=$1
page=$2
failed=0

# The options and operands of a help text: "--app NAME", "--json", "EVENTS".
helpOptions() {
    sed -nE -e 's/^  (-[a-z],)?(--[a-z][a-z-]*)( [A-Z]+)?([ :=].*)?$/\2\3/p' \
        -e '/^Positionals:/I,/^$/ s/^  ([A-Z]+).*/\1/p' <<<"$1" | sed '/^--help$/d' | sort
}

helpCommands() { sed -nE '/^Subcommands:/I,$ s/^  ([a-z][a-z-]*)  .*/\1/p' <<<"$1"; }

# The options of a part of the page, which begins with a heading such as ".Ss report".
pageOptions() {
    awk -v heading="$1" '
        $0 == heading { inside = 1; next }
        /^\.S[hs] / { inside = 0 }
        inside && /^\.It (Fl|Ar) / {
            line = $0
            sub(/^\.It Fl h , /, ".It ", line)
            sub(/^\.It /, "", line)
            sub(/^Fl /, "-", line)
            sub(/^Ar /, "", line)
            sub(/ Ar /, " ", line)
            sub(/ \.\.\.$/, "", line)
            print line
        }' "$page" | sed '/^--help$/d' | sort
}

compare() {
    local what=$1 help=$2 heading=$3
    diff --label "$program $what --help" --label "$page: $heading" -u \
        <(helpOptions "$help") <(pageOptions "$heading") || failed=1
}

leaves=()

# visit COMMAND...
visit() {
    local help command commands
    help=$("$program" "$@" --help)
    mapfile -t commands < <(helpCommands "$help")
    if [ $# -eq 0 ]; then
        compare '' "$help" '.Sh OPTIONS'
    elif [ ${#commands[@]} -eq 0 ]; then
        leaves+=("$*")
        compare "$*" "$help" ".Ss $*"
    fi
    for command in "${commands[@]}"; do
        visit "$@" "$command"
    done
}

visit
diff --label "commands of $program" --label "subsections of $page" -u \
    <(printf '%s\n' "${leaves[@]}" | sort) \
    <(sed -n '/^\.Sh COMMANDS/,/^\.Sh ENV/ s/^\.Ss //p' "$page" | sort) || failed=1
[ ${#leaves[@]} -ge 4 ] || { echo "only ${#leaves[@]} commands were found"; failed=1; }
exit "$failed"
