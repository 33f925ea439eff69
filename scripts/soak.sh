# shellcheck shell=bash
# Kills the service under load, again and again, and holds what it stored against what its clients
# were told. Sourced by dev.

# runSoak MINUTES [SEED]
runSoak() {
    local number
    [ $# -ge 1 ] && [ $# -le 2 ] || fail "soak takes a number of minutes, and a seed; see ./dev help"
    for number in "$@"; do
        [[ $number =~ ^[0-9]{1,18}$ ]] || fail "soak takes numbers, not $number"
    done
    [ "$1" -gt 0 ] || fail "soak takes at least a minute"
    requirePackages "${buildPackages[@]}"
    say "Building"
    buildPreset release orvel-analyticsd orvel-soak
    say "Killing the service while eight clients send, for $1 min"
    "$root/build/release/tests/faults/orvel-soak" "$root/build/release/service/orvel-analyticsd" \
        minutes "$@"
}
