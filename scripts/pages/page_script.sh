# shellcheck shell=bash
# Makes a script of a Markdown page: it does what a reader does who follows the page from its top, in
# one shell. Sourced by whoever runs a page.
#
# What a block is, its first line says: the language, and marks.
#
#   cpp                 a program; it is compiled, and ends with 0
#   cpp fragment        statements of a function that has a `session` and a data class `click`
#   sh                  commands, of which the last of each line must succeed
#   text output         what the block before printed; … stands for anything
#   json                a data class, which the tool reads
#   json command=TOKEN  the payload of a command that the service takes
#   json output         as `text output`, however it is laid out
#   toml                settings, which the service reads
#   cmake               a project, which is configured
#   mermaid             a diagram; tests/docs looks at it
#   file=NAME           the block is saved under this name, for the commands that follow
#   by="COMMAND"        only that command runs the block
#   not-run="REASON"    nobody runs the block

pagesFolder=$(dirname "${BASH_SOURCE[0]}")

# Sets `kind`, `file`, `command`, `by` and `reason` from the marks of a block.
readMarks() {
    local rest=$1 word
    kind='' file='' command='' by='' reason=''
    if [[ $rest =~ ^(.*)not-run=\"([^\"]+)\"(.*)$ ]]; then
        reason=${BASH_REMATCH[2]}
        rest=${BASH_REMATCH[1]}${BASH_REMATCH[3]}
    fi
    if [[ $rest =~ ^(.*)by=\"([^\"]+)\"(.*)$ ]]; then
        by=${BASH_REMATCH[2]}
        rest=${BASH_REMATCH[1]}${BASH_REMATCH[3]}
    fi
    for word in $rest; do
        case $word in
            fragment | output) kind=$word ;;
            file=?*) file=${word#file=} ;;
            command=?*) command=${word#command=} ;;
            *) return 1 ;;
        esac
    done
}

# The statements of a page, each block in a function of its own.
startFragments() {
    cat <<'CPP'
#include <orvel/analytics.h>

#include <ctime>
#include <iostream>
#include <vector>

using Orvel::Analytics::Emitters::AnalyticsResult;
CPP
}

# addFragment NUMBER PLACE BLOCK
addFragment() {
    printf '[[maybe_unused]] static void fragment%s([[maybe_unused]] AnalyticsSession& session,\n' "$1"
    printf '    [[maybe_unused]] Orvel::Analytics::DataClass::BaseDataClass& click) {\n'
    printf '#line %d "%s"\n' "$((${2##*:} + 1))" "${2%:*}"
    cat "$3"
    printf '}\n'
}

# The commands of a block. A service that they start is waited for, as no reader types the next
# command before it listens.
printCommands() { awk '{ print } / &$/ { print "waitForService" }' "$1"; }

# Prints the step that a block is; PLACE is its place in its page, NUMBER its file.
printStep() {
    local number=$1 place=$2 language=$3 operation=
    local block="\"\$PAGE_FOLDER/$number\""
    [ -z "$file" ] || printf 'saveBlock %q %s %q\n' "$place" "$block" "$file"
    case "$language ${kind:-${command:+command}}" in
        'sh ')
            printf 'beginStep %q %s\n' "$place" "$block"
            printCommands "$folder/$number"
            printf 'endStep\n'
            return
            ;;
        'cpp fragment' | 'mermaid ') return ;;
        'cpp ') operation=runProgram ;;
        'text output') operation=expectOutput ;;
        'json output') operation=expectJson ;;
        'json ') operation=readDataClass ;;
        'json command') operation=sendCommand ;;
        'toml ') operation=readSettings ;;
        'cmake ') operation=configureProject ;;
        *) [ -n "$file" ] || return 1 ;;
    esac
    [ -n "$file" ] || printf '%s %q %s %s\n' "$operation" "$place" "$block" "$command"
}

# writePageScript PAGE FOLDER COMMAND
#
# Takes PAGE apart in FOLDER, which must be there, and writes FOLDER/script, which needs nothing but
# its folder. COMMAND is the one whose blocks `by` are run. What is not run is listed in
# FOLDER/left-out.
writePageScript() {
    local page=$1 folder=$2 runner=$3 number line language marks place
    local kind file command by reason fragments=
    cp "$pagesFolder/steps.sh" "$folder/"
    awk -v folder="$folder" -f "$pagesFolder/split.awk" "$page" >"$folder/blocks" || return 1
    : >"$folder/left-out"
    startFragments >"$folder/fragments.cpp"
    {
        # shellcheck disable=SC2016 # These variables are the script's.
        printf '%s\n' 'PAGE_FOLDER=$(cd "$(dirname "$0")" && pwd)' 'source "$PAGE_FOLDER/steps.sh"'
        while IFS=$'\t' read -r number line language marks; do
            place=$page:$line
            if ! readMarks "$marks"; then
                printf '%s: unknown marks: %s\n' "$place" "$marks" >&2
                return 1
            fi
            [ -z "$by" ] || [ "$by" = "$runner" ] || reason="$by runs it"
            if [ -n "$reason" ]; then
                printf '%s: %s: %s\n' "$place" "$language" "$reason" >>"$folder/left-out"
                continue
            fi
            if [ "$language $kind" = 'cpp fragment' ]; then
                addFragment "$number" "$place" "$folder/$number" >>"$folder/fragments.cpp"
                fragments=yes
            fi
            if ! printStep "$number" "$place" "$language"; then
                printf '%s: nobody runs a block of %s marked so: %s\n' "$place" "$language" \
                    "$marks" >&2
                return 1
            fi
        done <"$folder/blocks"
        # shellcheck disable=SC2016
        [ -z "$fragments" ] || printf 'checkFragments "$PAGE_FOLDER/fragments.cpp"\n'
        printf 'finishPage\n'
    } >"$folder/script"
}
