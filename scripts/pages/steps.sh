# shellcheck shell=bash
# What the script of a Markdown page is made of (page_script.sh). Every step must succeed; when one
# does not, its place in the page is printed with all that it printed.
#
# Of the environment: PAGE_WORK, a folder for what the steps need themselves; PAGE_SERVICE, the
# settings of a service for whatever the page's own commands start none for, or nothing; CXX, and
# PAGE_LAUNCHER before it; PAGE_INCLUDES and PAGE_LIBRARIES, the folders of the installed libraries
# when they are not the system's; PAGE_SENDER, the program that sends a command to the service;
# PAGE_TELLS, not empty when the time of each step is to be told.

set -e
pagePrinted=$PAGE_WORK/printed
pageStep='before the first step'
pageFinished=
: >"$pagePrinted"
exec 8>&1 9>&2

pageLeave() {
    local status=$?
    exec >&8 2>&9
    # What a page leaves running in the background ends with it.
    # shellcheck disable=SC2046
    kill $(jobs -p) 2>/dev/null || true
    wait
    if [ -z "$pageFinished" ]; then
        printf '%s failed with status %d. It printed:\n' "$pageStep" "$status" >&2
        cat "$pagePrinted" >&2
        exit 1
    fi
}
trap pageLeave EXIT

finishPage() { pageFinished=yes; }

# beginStep PLACE [COMMANDS]
beginStep() {
    pageStep=$1
    case ${2:+$(<"$2")} in
        *'orvel-analyticsd serve'*) ;;
        *) ensureService ;;
    esac
    exec >"$pagePrinted" 2>&1
}

endStep() {
    exec >&8 2>&9
    [ -z "${PAGE_TELLS:-}" ] || printf '%s done after %d s\n' "$pageStep" "$SECONDS"
}

isServed() { orvel-analytics documents >/dev/null 2>&1; }

waitForService() {
    local tries
    for ((tries = 0; tries < 600; tries++)); do
        ! isServed || return 0
        sleep 0.05
    done
    echo 'the service does not answer'
    return 1
}

ensureService() {
    [ -n "${PAGE_SERVICE:-}" ] || return 0
    export ORVEL_RPC_DIRECTORY=${ORVEL_RPC_DIRECTORY:-$HOME/rpc}
    ! isServed || return 0
    orvel-analyticsd serve --data "$HOME/analytics" --settings "$PAGE_SERVICE" \
        2>>"$PAGE_WORK/service.log" &
    waitForService
}

saveBlock() {
    pageStep=$1
    cp "$2" "$3"
}

# compileBlock SOURCE OPTION...
compileBlock() {
    # shellcheck disable=SC2086
    ${PAGE_LAUNCHER:-} "${CXX:-c++}" -std=c++20 -O0 -Wall -Wextra -Wpedantic -Wshadow -Wconversion \
        -Werror ${PAGE_INCLUDES:+-I"$PAGE_INCLUDES"} "$@"
}

runProgram() {
    local program=$PAGE_WORK/${1//[:.\/]/-}
    beginStep "$1"
    cp "$2" "$program.cpp"
    compileBlock -c "$program.cpp" -o "$program.o"
    "${CXX:-c++}" "$program.o" ${PAGE_LIBRARIES:+-L"$PAGE_LIBRARIES"} -lorvel-analytics \
        -lorvel-rpc-client -o "$program"
    "$program"
    endStep
}

checkFragments() {
    beginStep 'A fragment'
    compileBlock -fsyntax-only "$1"
    endStep
}

readDataClass() {
    beginStep "$1"
    orvel-analytics report --app Documentation --app-version 1.0 --data-class "$2" /dev/null
    endStep
}

# A service of its own starts with the settings, and is ended when it listens.
readSettings() {
    local folder=$PAGE_WORK/settings
    beginStep "$1"
    rm -rf "$folder"
    mkdir "$folder"
    ORVEL_RPC_DIRECTORY=$folder/rpc orvel-analyticsd serve --data "$folder/data" --settings "$2" \
        2>"$folder/log" &
    while ! grep -q '"listening"' "$folder/log" && kill -0 $! 2>/dev/null; do sleep 0.05; done
    cat "$folder/log"
    grep -q '"listening"' "$folder/log"
    kill $!
    wait $!
    endStep
}

sendCommand() {
    beginStep "$1"
    "$PAGE_SENDER" MyApp "$3" <"$2"
    endStep
}

configureProject() {
    local folder=$PAGE_WORK/${1//[:.\/]/-}
    beginStep "$1"
    mkdir "$folder"
    cp "$2" "$folder/CMakeLists.txt"
    echo 'int main() {}' >"$folder/main.cpp"
    cmake -S "$folder" -B "$folder/build"
    endStep
}

# isAsWritten PRINTED PATTERN: whether they are the same, but for what stands for anything.
isAsWritten() {
    local pattern=$2 special
    for special in \\ '*' '?' '['; do
        pattern=${pattern//"$special"/\\$special}
    done
    # shellcheck disable=SC2053
    [[ $1 == ${pattern//…/*} ]]
}

# expectOutput PLACE BLOCK: whether the step before printed what the page says.
expectOutput() {
    pageStep="$1, the output of $pageStep,"
    isAsWritten "$(<"$pagePrinted")" "$(<"$2")"
}

# The same for JSON, however it is laid out.
expectJson() {
    pageStep="$1, the output of $pageStep,"
    isAsWritten "$(jq -cS . "$pagePrinted")" "$(jq -cS . "$2")"
}
