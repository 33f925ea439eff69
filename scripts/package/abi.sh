# shellcheck shell=bash
# Holds the libraries' interface against the recorded one; see docs/abi.md. Runs inside the system
# that builds the packages, so that it is always the same compiler that speaks. Sourced by package.sh.

abiLibraries=(src/liborvel-analytics relay/liborvel-rpc-client testing/liborvel-analytics-testing)
# Places in sources and folders would only make the record change; packaging/abi/foreign.suppr names
# what is not the project's own.
foreignTypes=(--suppressions /build/source/packaging/abi/foreign.suppr)
abiRecording=(
    --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names
    --type-id-style hash --exported-interfaces-only --drop-undefined-syms "${foreignTypes[@]}"
)

abiRecord() { printf '%s\n' "packaging/abi/${1##*/}.abi"; }

# Takes the interface of what was just built over as the recorded one.
recordAbi() {
    local library record
    for library in "${abiLibraries[@]}"; do
        record=$(abiRecord "$library")
        inRoot "$buildRoot" abidw "${abiRecording[@]}" "/build/source/build/debian/$library.so" \
            >"$packageFolder/record" || fail "the interface of $library could not be read"
        mv "$packageFolder/record" "$record"
        printf 'recorded: %s (%d lines)\n' "$record" "$(wc -l <"$record")"
    done
}

compareAbi() {
    local library=$1
    shift
    inRoot "$buildRoot" abidiff "$@" "${foreignTypes[@]}" \
        "/build/source/$(abiRecord "$library")" "/build/source/build/debian/$library.so"
}

# abiIsRecorded LIBRARY fails when anything is different from the record.
abiIsRecorded() {
    compareAbi "$1" --no-added-syms || {
        echo "Something has changed that programs may have been compiled with. docs/abi.md says what" \
            "needs another SONAME; ./dev package --record-abi records what does not."
        return 1
    }
    compareAbi "$1" || {
        echo "Something is new, which is allowed: ./dev package --record-abi records it."
        return 1
    }
}

abiExamplesAreTold() { inRoot "$buildRoot" sh /build/source/tests/packaging/abi/examples.sh; }
