#!/usr/bin/env bash
# Lets the formatters of man pages judge a page: lint_page.sh PAGE
set -euo pipefail

mandoc -T lint -W warning "$1"
complaints=$(groff -mdoc -ww -z -T utf8 "$1" 2>&1)
[ -z "$complaints" ] || {
    printf '%s\n' "$complaints"
    exit 1
}
grep -qE '^\.Os "Orvel Analytics [0-9]+\.[0-9]+\.[0-9]+"$' "$1" || {
    echo "$1 does not name the version"
    exit 1
}
