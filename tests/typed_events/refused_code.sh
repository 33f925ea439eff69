#!/usr/bin/env bash
# Holds that the compiler takes the code of refused_code.cpp, and refuses each line that is to be
# refused, for the reason that the line says.
#
#     refused_code.sh COMPILER REFUSED_CODE_CPP INCLUDE_FOLDER...
set -euo pipefail

compiler=$1 source=$2
shift 2

compile() { LC_ALL=C "$compiler" -std=c++20 -fsyntax-only "$@" "$source" 2>&1; }

messages=$(compile "${@/#/-I}") || {
    printf 'The compiler refuses what it should take:\n%s\n' "$messages"
    exit 1
}
if messages=$(compile "${@/#/-I}" -DORVEL_REFUSED); then
    printf 'The compiler takes what it should refuse.\n'
    exit 1
fi
# A message goes on until the next one, which names the line that it is about. The compiler may quote
# the line itself, which gives no reason.
awk -v place="${source##*/}:" '
    BEGIN { reasons = "// Refused: " }
    FNR == NR {
        if (at = index($0, reasons)) reason[FNR] = substr($0, at + length(reasons))
        next
    }
    index($0, reasons) { next }
    at = index($0, place) { line = substr($0, at + length(place)) + 0 }
    { said[line] = said[line] $0 "\n" }
    END {
        for (line in reason) {
            count++
            if (said[line] ~ reason[line]) continue
            printf "line %d is not refused for %s:\n%s", line, reason[line], said[line]
            failed = 1
        }
        exit failed || count == 0
    }' "$source" <(printf '%s\n' "$messages")
