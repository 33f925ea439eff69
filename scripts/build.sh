# shellcheck shell=bash
# Building, testing and checking the code. Sourced by dev.

# What ccache needs to be told for sources with precompiled headers (its manual, "Precompiled
# headers"); and that the compiler names what a file includes, so that nothing is preprocessed a
# second time to find that out.
export CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_DEPEND=true

# The programs whose tests run on several threads, for ThreadSanitizer.
threadedTests=(concurrency_tests relay-server-test testing_threads_tests)

# buildPreset PRESET [TARGET...]
buildPreset() {
    local preset=$1 launcher='' targets=() fresh=()
    shift
    # Told to CMake every time, so that a build folder made with ccache also works without it.
    ! command -v ccache >/dev/null || launcher=ccache
    [ $# -eq 0 ] || targets=(--target "$@")
    mkdir -p "$root/build"
    # CMake forgets what a preset says when its compiler is another than that of the build folder.
    [ ! "$root/CMakePresets.json" -nt "$root/build/$preset/CMakeCache.txt" ] || fresh=(--fresh)
    cmake --preset "$preset" "${fresh[@]}" -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher" >"$root/build/configure.log" 2>&1 || {
        cat "$root/build/configure.log" >&2
        fail "the build could not be configured"
    }
    cmake --build --preset "$preset" "${targets[@]}" || fail "the build failed"
}

# testPreset PRESET [TARGET...]
testPreset() {
    say "Building: $1"
    buildPreset "$@"
    runPresetTests "$1"
}

# Runs the tests of a preset that was built, and keeps what was printed.
runPresetTests() {
    local preset=$1
    say "Testing: $preset"
    ctest --preset "$preset" --parallel "$(nproc)" 2>&1 | tee "$root/build/$preset/test.log"
}

closingLines() { sed -n '/tests passed,/,$p' "$root/build/$1/test.log"; }

# The tables that the suites of faults print at their end.
faultLines() { sed -n 's/^fault | /  /p' "$root/build/$1/Testing/Temporary/LastTest.log"; }

runTests() {
    requirePackages "${buildPackages[@]}" "${clangPackages[@]}"
    local preset failed=0
    for preset in release sanitize; do
        testPreset "$preset" || failed=1
    done
    testPreset tsan "${threadedTests[@]}" || failed=1
    say "Summary"
    for preset in release sanitize tsan; do
        printf '%s:\n' "$preset"
        faultLines "$preset"
        closingLines "$preset"
    done
    return "$failed"
}

# What wine made as root is root's.
removeBuild() { rm -rf "$root/build" 2>/dev/null || asRoot rm -rf "$root/build"; }

codeFiles() { git ls-files '*.h' '*.cpp'; }

formatCode() {
    requirePackages "${lintPackages[@]}"
    codeFiles | xargs clang-format -i
}

lintCode() {
    requirePackages "${buildPackages[@]}" "${lintPackages[@]}"
    local failed=0
    say "clang-format"
    codeFiles | xargs clang-format --dry-run -Werror || failed=1
    say "shellcheck"
    shellcheck --external-sources dev .ci/run scripts/windows/{run_program,enter_arm64}.sh \
        tests/packaging/{,abi/}*.sh packaging/completion/orvel.bash packaging/debian/service/p* \
        scripts/pages/steps.sh tests/{docs,typed_events}/*.sh || failed=1
    say "clang-tidy"
    # Where every file is compiled on its own, as clang-tidy takes them; but for the precompiled
    # header, which is the other compiler's.
    buildPreset debug
    mkdir -p build/debug/lint
    jq 'map(select(.file | endswith("/cmake_pch.hxx.cxx") | not)
        | .command |= gsub(" -include [^ ]*/cmake_pch.hxx| -Winvalid-pch| -fpch-preprocess"; ""))' \
        build/debug/compile_commands.json >build/debug/lint/compile_commands.json
    jq -r '.[].file' build/debug/lint/compile_commands.json | sort -u |
        xargs -P "$(nproc)" -n 1 clang-tidy -p build/debug/lint --quiet \
            --extra-arg=-Wno-unknown-warning-option || failed=1
    [ "$failed" -eq 0 ] || fail "the checks above found something"
}
