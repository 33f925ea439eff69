#!/bin/sh
# Makes the changes that docs/abi.md has for examples to a small library, and holds what the comparison
# of interfaces says of each: examples.sh
#
# "adds" is a change that adds something and nothing else, "nothing" one that no program notices, and
# "changes" any other.
set -eu

source=$(dirname "$(readlink -f "$0")")/examples.cpp
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

library() { g++ -std=c++20 -g -fPIC -shared -fvisibility=hidden "-D$1" "$source" -o "$folder/$1.so"; }

verdict() {
    if ! abidiff --no-added-syms "$folder/RECORDED.so" "$folder/$1.so" >/dev/null; then
        echo changes
    elif ! abidiff "$folder/RECORDED.so" "$folder/$1.so" >/dev/null; then
        echo adds
    else
        echo nothing
    fi
}

expect() {
    library "$2"
    verdict=$(verdict "$2")
    echo "$2: $verdict"
    [ "$verdict" = "$1" ] || {
        echo "    expected: $1"
        failed=1
    }
}

library RECORDED
expect nothing RECORDED
expect adds ADDED_FUNCTION
expect adds ADDED_CLASS
expect changes REMOVED_FUNCTION
expect changes ADDED_PARAMETER
expect changes ADDED_MEMBER
expect changes ADDED_VIRTUAL
expect changes ADDED_BASE
expect changes MOVED_VALUE
expect nothing APPENDED_VALUE
exit "$failed"
