# shellcheck shell=bash
# Measures the speed and makes one table of it. Sourced by dev.

benchPackages=(valgrind)
benchPrograms=build/release/bench
benchResults=build/bench
benchRepetitions=11
instructionCounts=bench/instructions/counts.json
# In percent.
greatestDrift=5

runBenchmarks() {
    case ${1:-} in
        '') measureSpeed ;;
        --check)
            [ $# -eq 1 ] || fail "bench --check takes no more arguments"
            measureSpeed --check
            ;;
        --compare)
            [ $# -eq 3 ] || fail "bench --compare takes two files of results"
            compareResults "$2" "$3"
            ;;
        --instructions)
            [ $# -eq 1 ] || fail "bench --instructions takes no more arguments"
            countInstructions
            ;;
        --record-instructions)
            [ $# -eq 1 ] || fail "bench --record-instructions takes no more arguments"
            recordInstructions
            ;;
        *) fail "bench does not know $1; see ./dev help" ;;
    esac
}

buildBenchmarks() {
    requirePackages "${buildPackages[@]}" "${benchPackages[@]}"
    say "Building: release"
    buildPreset release
    mkdir -p "$benchResults"
}

# measureSpeed [--check]
measureSpeed() {
    buildBenchmarks
    rm -f "$benchResults"/*.json
    local program name
    for program in "$benchPrograms"/*/*-benchmarks; do
        name=${program##*/}
        say "Measuring: $name, $benchRepetitions times in random order"
        "$program" --benchmark_repetitions="$benchRepetitions" --benchmark_min_time=0.2 \
            --benchmark_enable_random_interleaving=true \
            --benchmark_out="$benchResults/$name.raw" --benchmark_out_format=json \
            --benchmark_display_aggregates_only=true >"$benchResults/$name.log" 2>&1 || {
            cat "$benchResults/$name.log" >&2
            fail "$name failed"
        }
        # Its own statistics of a figure that is always 0 are no numbers, which JSON cannot hold.
        jq '.benchmarks |= map(select(.run_type == "iteration"))' "$benchResults/$name.raw" \
            >"$benchResults/$name.json"
    done
    measureLibrary >"$benchResults/library.json"
    say "Results"
    local report=$benchResults/results-$(date -u +%Y%m%dT%H%M%SZ).report
    "$benchPrograms/report/orvel-bench-report" "$@" --output "$report" "$benchResults"/*.json ||
        fail "see above; the figures are in $report"
    printf '\nThe figures are in %s; ./dev bench --compare OLD NEW compares two such files.\n' \
        "$report"
}

# What the library brings into a process, in the form in which benchmarks report.
measureLibrary() {
    local library=build/release/src/liborvel-analytics.so stripped
    stripped=$(mktemp)
    strip --strip-unneeded -o "$stripped" "$(readlink -f "$library")"
    jq -n --argjson size "$(stat -c %s "$stripped")" \
        --argjson needed "$(readelf -d "$library" | grep -c '(NEEDED)')" '
        def figure(name; value): {run_name: name, run_type: "iteration", figure: value};
        {benchmarks: [figure("library_size/case"; $size), figure("libraries_needed/case"; $needed)]}'
    rm -f "$stripped"
}

compareResults() {
    local before after
    before=$(userFile --compare "$1") || exit
    after=$(userFile --compare "$2") || exit
    requirePackages "${buildPackages[@]}" "${benchPackages[@]}"
    buildPreset release orvel-bench-report >/dev/null
    "$benchPrograms/report/orvel-bench-report" --compare "$before" "$after"
}

# Prints how many instructions one event, or one record, of a row takes.
instructionsOf() {
    local row=$1 units log=$benchResults/callgrind.log
    units=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null --log-file="$log" \
        --toggle-collect='counted*' "$benchPrograms/instructions/orvel-bench-instructions" "$row") ||
        { cat "$log" >&2; return 1; }
    awk -v units="$units" '/Collected/ { count = $NF } END {
        if (count <= 0) exit 1
        printf "%.0f\n", count / units
    }' "$log"
}

allInstructions() {
    local row count counts='{}'
    for row in collect_plain collect_mixed batch; do
        count=$(instructionsOf "$row") || fail "the instructions of $row could not be counted"
        counts=$(jq --arg row "$row" --argjson count "$count" '.[$row] = $count' <<<"$counts")
    done
    printf '%s\n' "$counts"
}

countedWith() { printf '%s, yyjson %s' "$(c++ --version | head -n 1)" "$(pkg-config --modversion yyjson)"; }

countInstructions() {
    buildBenchmarks
    say "Counting instructions, against $instructionCounts"
    local now
    now=$(allInstructions) || exit
    printf 'recorded with %s\ncounted with  %s\n' "$(jq -r .with "$instructionCounts")" "$(countedWith)"
    jq -r --argjson now "$now" --argjson greatest "$greatestDrift" '
        .instructions | to_entries[] |
        (100 * ($now[.key] / .value - 1)) as $drift |
        "\(.key): \(.value) recorded, \($now[.key]) now, \($drift * 10 | round / 10)%\(
            if ($drift | fabs) > $greatest then " DRIFTED" else "" end)"' \
        "$instructionCounts" | tee "$benchResults/instructions.log"
    ! grep -q DRIFTED "$benchResults/instructions.log" ||
        fail "more than $greatestDrift% away; if that is meant, ./dev bench --record-instructions"
}

recordInstructions() {
    buildBenchmarks
    say "Counting instructions into $instructionCounts"
    local now
    now=$(allInstructions) || exit
    jq -n --arg with "$(countedWith)" --argjson now "$now" '{with: $with, instructions: $now}' |
        tee "$instructionCounts"
}
