#!/usr/bin/env bash
# Holds that a block which does not do what its page says would be noticed.
#
#     noticed.sh SOURCE_FOLDER BUILD_FOLDER PREFIX
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
tries=0

# notices WORDS INFO LINE...: a page of one block, with this first line, fails and says these words.
notices() {
    local words=$1 info=$2 status=0
    shift 2
    printf '%s\n' "# A page" '' "\`\`\`$info" "$@" '```' >"$folder/page.md"
    "$(dirname "$0")/run_page.sh" "$folder/page.md" "${place[@]}" >"$folder/log" 2>&1 || status=$?
    if [ "$status" -eq 0 ] || ! grep -qF -- "$words" "$folder/log"; then
        printf 'not noticed, or in other words than "%s": %s\n' "$words" "$info $*" >&2
        cat "$folder/log" >&2
        exit 1
    fi
    tries=$((tries + 1))
}

place=("$@")
notices 'page.md:3 failed with status 1' sh 'false' 'true'
notices 'page.md:7, the output of' sh 'echo one' '```' '' '```text output' 'two'
notices 'page.md:7, the output of' sh "echo '{\"a\":1}'" '```' '' '```json output' '{"a":2}'
notices 'page.md:3 failed with status 3' cpp 'int main() { return 3; }'
notices 'Werror' cpp 'int main() { int unused = 1; }'
notices 'page.md:4' 'cpp fragment' 'session.NoSuchOperation();'
notices 'no_such_key' toml 'no_such_key = 1'
notices 'page.md:3 failed' json '{"name": "no more than a name"}'
notices 'MalformedDataclass' 'json command=REGISTER_DATACLASS' '{}'
notices 'page.md:3 failed' cmake 'find_package(NoSuchPackage REQUIRED)'
notices 'nobody runs a block of text' text 'What am I?'
notices 'nobody runs a block of python' python 'print()'
notices 'unknown marks' 'sh output=x' 'true'
notices 'an indented block' sh 'true' '```' '' '    code' '' '```sh' 'true'
notices 'does not say what it is' '' 'true'
printf '%d blocks were noticed\n' "$tries"
