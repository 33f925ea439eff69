#!/usr/bin/env bash
# Completes command lines the way bash does, by calling the function that is registered with the
# words before the cursor: completion.sh FILE TOOL SERVICE
#
# What must come out for each command stands in the program's man page.
set -euo pipefail

# shellcheck source=packaging/completion/orvel.bash
source "$1"
mkdir -p programs files/folder
ln -sf "$2" programs/orvel-analytics
ln -sf "$3" programs/orvel-analyticsd
PATH=$PWD/programs:$PATH
touch files/events.jsonl
failed=0

# completed WORD... prints what the last word can become, in order.
completed() {
    local function
    function=$(complete -p "$1" | sed -n 's/.* -F \([^ ]*\) .*/\1/p')
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    "$function"
    printf '%s\n' "${COMPREPLY[@]}" | sort | xargs
}

# expect EXPECTED WORD...
expect() {
    local expected=$1 actual
    shift
    actual=$(completed "$@")
    [ "$actual" = "$expected" ] || {
        printf '%s\n    is completed to: %s\n    expected:        %s\n' "$*" "$actual" "$expected"
        failed=1
    }
}

expect 'check consent documents generate report' orvel-analytics ''
expect '--help --version' orvel-analytics --
expect 'report' orvel-analytics re
expect 'get set' orvel-analytics consent ''
expect '--app --app-version --help --json --marketing --product-enhancement --support' \
    orvel-analytics consent set --
expect 'accepted rejected unknown' orvel-analytics consent set --marketing ''
expect 'rejected' orvel-analytics consent set --marketing r
expect 'rejected' orvel-analytics consent set --marketing = r
expect 'accepted rejected unknown' orvel-analytics consent set --marketing =
expect '--marketing' orvel-analytics consent set --support accepted --m
expect 'files/events.jsonl' orvel-analytics report --data-class files/e
expect 'files/events.jsonl files/folder' orvel-analytics report --json files/
expect '' orvel-analytics report --app fil
expect 'files/events.jsonl' orvel-analytics report --app files/x files/e
expect 'classes consent events serve status' orvel-analyticsd ''
expect 'files/folder' orvel-analyticsd serve --data files/
expect 'files/events.jsonl files/folder' orvel-analyticsd serve --settings files/
expect '' orvel-analyticsd serve files/
expect '' orvel-analyticsd events --limit ''
expect '--bad' orvel-analyticsd events --good --b
exit "$failed"
