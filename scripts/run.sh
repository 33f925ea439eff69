# shellcheck shell=bash
# Shows the whole road of an event on this machine: reports real data through the library to a
# service of its own, changes the user's consent there, and compares what the service stored with
# the data. Sourced by dev.

machineLog=/var/log/dpkg.log
sampleLog=examples/package_history/sample/dpkg.log
fewestEntries=100
programs=build/release
runFolder=build/run

# A socket's path may have 107 bytes at most.
longestSocketPath=107
socketName=OrvelAnalyticsRpcEndpoint.sock

runDemo() {
    local events='' dataClass=''
    while [ $# -gt 0 ]; do
        case $1 in
            --events) events=$(userFile "$@") ;;
            --data-class) dataClass=$(userFile "$@") ;;
            *) fail "run does not know $1; see ./dev help" ;;
        esac
        shift 2
    done
    [ -n "$events" ] && [ -z "$dataClass" ] && fail "--events needs --data-class FILE"
    [ -z "$events" ] && [ -n "$dataClass" ] && fail "--data-class needs --events FILE"

    mkdir -p build
    exec 9>build/run.lock
    flock -n 9 || fail "another ./dev run is under way here"
    requirePackages "${buildPackages[@]}"
    say "Building"
    buildPreset release orvel-installed package_history
    trap stopService EXIT
    startService
    if [ -n "$events" ]; then
        reportUserEvents "$events" "$dataClass"
    else
        reportPackageLog
    fi
    showStored
    showConsent
    stopService
    judge
}

userFile() {
    [ $# -ge 2 ] || fail "$1 needs a file"
    local file
    file=$(cd "$callerFolder" && realpath -e -- "$2" 2>/dev/null) || fail "$2: there is no such file"
    [ -f "$file" ] && [ -r "$file" ] || fail "$2: cannot be read"
    printf '%s\n' "$file"
}

# Settings of this run alone, so that the machine's own change nothing here.
writeSettings() {
    cat >"$runFolder/settings.toml" <<'TOML'
device_serial_number = "dev-run-1"

[privacy_documents]
privacyurl = "https://example.com/privacy"
warrantyurl = "https://example.com/warranty"
telemetryurl = "https://example.com/telemetry"
TOML
}

startService() {
    rm -rf "$runFolder"
    mkdir -p "$runFolder/log"
    writeSettings
    ORVEL_RPC_DIRECTORY=$root/$runFolder/rpc
    temporaryFolder=
    if [ "$(printf '%s' "$ORVEL_RPC_DIRECTORY/$socketName" | wc -c)" -gt "$longestSocketPath" ]; then
        temporaryFolder=$(mktemp -d)
        ORVEL_RPC_DIRECTORY=$temporaryFolder
    fi
    mkdir -p "$ORVEL_RPC_DIRECTORY"
    chmod 700 "$ORVEL_RPC_DIRECTORY"
    export ORVEL_RPC_DIRECTORY

    say "Starting the service in $runFolder/data"
    serviceLog=$runFolder/service.log
    "$programs/service/orvel-analyticsd" serve --data "$runFolder/data" \
        --settings "$runFolder/settings.toml" 2>"$serviceLog" 9>&- &
    service=$!
    local tries
    for ((tries = 0; tries < 600; tries++)); do
        grep -qs '"listening"' "$serviceLog" && break
        kill -0 "$service" 2>/dev/null || break
        sleep 0.05
    done
    if ! grep -qs '"listening"' "$serviceLog"; then
        cat "$serviceLog" >&2
        fail "the service did not start"
    fi
    printf 'process %d listens in %s\n' "$service" "$ORVEL_RPC_DIRECTORY"
}

stopService() {
    [ -n "${service:-}" ] || return 0
    local stopping=$service
    service=
    kill "$stopping" 2>/dev/null || true
    wait "$stopping" || {
        cat "$serviceLog" >&2
        printf 'dev: the service did not shut down cleanly\n' >&2
        serviceFailed=1
    }
    [ -z "$temporaryFolder" ] || rm -rf "$temporaryFolder"
}

stored() { "$programs/service/orvel-analyticsd" events --data "$runFolder/data" "$@"; }

# Copies a log and its rotated neighbours, so that a package being installed at this moment cannot
# change the log between its reporting and its counting. Sets `logFiles` to the copies.
copyLog() {
    local file
    logFiles=()
    for file in "$1" "$1".*; do
        if [[ -f $file && ${file#"$1"} =~ ^(\.[0-9]+(\.gz)?)?$ ]]; then
            cp "$file" "$runFolder/log/"
            logFiles+=("$runFolder/log/${file##*/}")
        fi
    done
}

countEntries() {
    if [ ${#logFiles[@]} -eq 0 ]; then
        echo 0
    else
        zcat -f "${logFiles[@]}" | grep -c . || true
    fi
}

# The log in the form that `storedEntries` gives to what was stored: one line an entry, its values
# parted by tabs. Written without a look at the example's own reader.
logEntries() {
    zcat -f "${logFiles[@]}" | awk '
        BEGIN { OFS = "\t" }
        NF == 0 { next }
        {
            stamp = $1 "T" $2
            gsub(/[-:]/, "", stamp)
            package = arch = old = new = state = version = command = file = decision = ""
            if ($3 == "startup") {
                command = $4 " " $5
            } else if ($3 == "conffile") {
                file = substr($0, index($0, " conffile ") + length(" conffile "))
                decision = $NF
                file = substr(file, 1, length(file) - length(decision) - 1)
            } else {
                name = $4
                if ($3 == "status") {
                    state = $4
                    name = $5
                    version = $6
                } else {
                    old = $5
                    new = $6
                }
                package = name
                sub(/:.*/, "", package)
                if (index(name, ":")) arch = substr(name, index(name, ":") + 1)
            }
            print stamp, $1 " " $2, $3, package, arch, old, new, state, version, command, file, decision
        }'
}

storedEntries() {
    stored --good --json | jq -r '.values | [.DT, .time, .action, .package, .architecture,
        .old_version, .new_version, .state, .version, .command, .file, .decision]
        | map(. // "") | join("\t")'
}

reportPackageLog() {
    local log=$machineLog
    copyLog "$machineLog"
    expectedCount=$(countEntries)
    fewest=$fewestEntries
    if [ "$expectedCount" -lt "$fewest" ]; then
        printf '\n%s has only %d entries, too few to show anything; reporting the sample %s\n' \
            "$machineLog" "$expectedCount" "$sampleLog"
        log=$sampleLog
        rm -f "$runFolder"/log/*
        copyLog "$log"
        expectedCount=$(countEntries)
    fi
    say "Reporting ${#logFiles[@]} log file(s) of $log through the library"
    "$programs/examples/package_history/package_history" "$runFolder/log/${log##*/}" || reportFailed=1
    logEntries | LC_ALL=C sort >"$runFolder/expected"
    storedEntries | LC_ALL=C sort >"$runFolder/stored"
}

# Events in one form on both sides: members sorted, without the two that the library adds.
canonicalEvents() { jq -cS 'del(.DT, .V)' | LC_ALL=C sort; }

reportUserEvents() {
    local events=$1 dataClass=$2
    fewest=1
    expectedCount=$(grep -c '[^[:space:]]' "$events" || true)
    say "Reporting $events"
    tool report --app dev-run --app-version 1.0 \
        --data-class "$dataClass" "$events" || reportFailed=1
    # A line that is no JSON was refused, and is missed in the count.
    jq -cR 'sub("^\ufeff"; "") | fromjson? // empty' "$events" | canonicalEvents >"$runFolder/expected"
    stored --good --json | jq -c '.values' | canonicalEvents >"$runFolder/stored"
}

showStored() {
    say "Registered data classes"
    "$programs/service/orvel-analyticsd" classes --data "$runFolder/data"
    say "Some of the stored events"
    stored --limit 5
    storedCount=$(stored --good --count)
    local bad
    bad=$(stored --bad --count)
    [ "$bad" -eq 0 ] || printf 'events that do not follow their data class: %d; "events --bad" shows them\n' "$bad"
    say "To look at more"
    printf '%s\n' \
        "$programs/service/orvel-analyticsd classes --data $runFolder/data" \
        "$programs/service/orvel-analyticsd events --data $runFolder/data" \
        "$programs/service/orvel-analyticsd events --data $runFolder/data --json | jq .values" \
        "$programs/service/orvel-analyticsd events --data $runFolder/data --bad" \
        "$programs/service/orvel-analyticsd consent --data $runFolder/data --history" \
        "jq . $serviceLog"
}

tool() { "$programs/cli/orvel-analytics" "$@"; }

permissions() { tool consent get --json | jq -cS '.consent.processing_permissions'; }

# One change of the consent, made and read through the tool.
showConsent() {
    local before
    say "The user's consent, as the service has it"
    tool consent get || consentFailed=1
    before=$(permissions) || consentFailed=1
    say "Accepting product enhancement, and nothing else"
    tool consent set --product-enhancement accepted || consentFailed=1
    [ "$(permissions)" = "$(jq -cS '.product_enhancement = "Accepted"' <<<"$before")" ] ||
        consentFailed=1
    say "The privacy documents, as $runFolder/settings.toml names them"
    tool documents || consentFailed=1
    [ -z "${consentFailed:-}" ] || printf 'dev: the consent was not shown and changed\n' >&2
}

# The last line, and the exit status.
judge() {
    local differences
    say "Comparing what was stored with what was reported"
    if differences=$(diff "$runFolder/expected" "$runFolder/stored"); then
        printf 'every stored value equals the one reported\n'
    else
        head -n 10 <<<"$differences"
        printf 'dev: not every event was stored as it was given ("<" given, ">" stored)\n' >&2
        reportFailed=1
    fi
    [ -z "${reportFailed:-}" ] || printf 'dev: something was refused; see above\n' >&2
    [ "$expectedCount" -ge "$fewest" ] || printf 'dev: there was nothing to report\n' >&2
    printf 'stored %d of %d events\n' "$storedCount" "$expectedCount"
    [ "$storedCount" -eq "$expectedCount" ] && [ "$expectedCount" -ge "$fewest" ] &&
        [ -z "${reportFailed:-}" ] && [ -z "${consentFailed:-}" ] && [ -z "${serviceFailed:-}" ]
}
