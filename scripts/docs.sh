# shellcheck shell=bash
# Makes the reference of the public headers, and lists the blocks of the documentation that no test
# runs. Sourced by dev.

# shellcheck source=scripts/pages/page_script.sh
source scripts/pages/page_script.sh

docsPackages=(doxygen)

projectVersion() { sed -n -E 's/^ *VERSION ([0-9.]+)$/\1/p' CMakeLists.txt | head -n 1; }

# makeReference FOLDER [SETTING...]: with lines for the Doxyfile that come after its own.
makeReference() {
    local folder=$1
    shift
    mkdir -p "$folder"
    ORVEL_VERSION=$(projectVersion) ORVEL_REFERENCE_FOLDER=$folder doxygen - < <(
        cat docs/reference/Doxyfile
        printf '%s\n' "$@"
    )
}

listBlocksLeftOut() {
    local page folder
    for page in *.md docs/*.md docs/guide/*.md; do
        folder=$(mktemp -d)
        writePageScript "$page" "$folder" './dev test' || fail "$page has a block that nobody runs"
        cat "$folder/left-out"
        rm -r "$folder"
    done
}

makeDocs() {
    requirePackages "${docsPackages[@]}"
    say "Making the reference"
    rm -rf build/docs
    makeReference build/docs || fail "the reference has warnings; see above"
    printf 'open build/docs/index.html\n'
    say "Blocks of the documentation that no test runs"
    listBlocksLeftOut
}
