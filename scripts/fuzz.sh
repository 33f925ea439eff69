# shellcheck shell=bash
# Runs the fuzzing targets. Sourced by dev.

fuzzPrograms=build/fuzz/fuzz
fuzzResults=build/fuzz/results
fuzzSeconds=600
# An input that takes longer, or memory beyond that, is a finding.
fuzzInputSeconds=10
fuzzMegabytes=2048

# runFuzzers [TARGET] [SECONDS]
runFuzzers() {
    local targets target failed=0
    [ $# -le 2 ] || fail "fuzz takes a target and a number of seconds; see ./dev help"
    mapfile -t targets < <(cd fuzz/corpus && printf '%s\n' *)
    if [ $# -gt 0 ] && [[ ! $1 =~ ^[0-9]+$ ]]; then
        [ -d "fuzz/corpus/$1" ] || fail "there is no target $1; there are: ${targets[*]}"
        targets=("$1")
        shift
    fi
    [ $# -lt 2 ] || fail "there is no target $1; there are: ${targets[*]}"
    if [ $# -eq 1 ]; then
        [[ $1 =~ ^[1-9][0-9]*$ ]] || fail "$1 is no number of seconds"
        fuzzSeconds=$1
    fi
    requirePackages "${buildPackages[@]}" "${clangPackages[@]}"
    say "Building: fuzz"
    buildPreset fuzz
    mkdir -p "$fuzzResults"
    say "Fuzzing each of ${#targets[@]} target(s) for $fuzzSeconds seconds: ${targets[*]}"
    export -f fuzzTarget
    export fuzzPrograms fuzzResults fuzzSeconds fuzzInputSeconds fuzzMegabytes
    # A target that found something must not keep the others from running.
    printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'fuzzTarget {} || true'
    say "Results"
    printf '%-18s %12s %8s %9s\n' target executions exec/s findings
    for target in "${targets[@]}"; do
        reportTarget "$target" || failed=1
    done
    [ "$failed" -eq 0 ] || fail "something was found, or did not run; see above"
}

# One process of its own. What it learns of good inputs stays in the results for the next time.
fuzzTarget() {
    local target=$1 folder=$fuzzResults/$1 scratch status=0 inputs
    mkdir -p "$folder/corpus" "$folder/findings"
    inputs=("$folder/corpus" "fuzz/corpus/$target")
    [ ! -d "fuzz/regressions/$target" ] || inputs+=("fuzz/regressions/$target")
    # Targets that store something wait for no disk where there is a file system in memory.
    scratch=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo "${TMPDIR:-/tmp}")")
    TMPDIR=$scratch "$fuzzPrograms/fuzz-$target" "${inputs[@]}" -max_total_time="$fuzzSeconds" \
        -timeout="$fuzzInputSeconds" -rss_limit_mb="$fuzzMegabytes" -print_final_stats=1 \
        -dict=fuzz/words.dict -artifact_prefix="$folder/findings/" >"$folder/log" 2>&1 || status=$?
    rm -rf "$scratch"
    printf '%s\n' "$status" >"$folder/status"
}

reportTarget() {
    local target=$1 folder=$fuzzResults/$1 executions speed findings
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$folder/log")
    speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$folder/log")
    findings=$(find "$folder/findings" -type f | wc -l)
    printf '%-18s %12s %8s %9s\n' "$target" "${executions:-?}" "${speed:-?}" "$findings"
    if [ "$findings" -gt 0 ] || [ "$(cat "$folder/status")" -ne 0 ]; then
        grep -hE '^BROKEN|ERROR: |SUMMARY: ' "$folder/log" || tail -n 5 "$folder/log"
        find "$folder/findings" -type f -printf 'saved: %p\n'
        return 1
    fi
}
