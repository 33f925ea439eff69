# shellcheck shell=bash
# Installs the packages of the system that a command needs. Sourced by dev.

buildPackages=(
    build-essential ccache cmake jq libasio-dev libbenchmark-dev libcli11-dev libfmt-dev
    libgmock-dev libgtest-dev libsqlite3-dev libtomlplusplus-dev libyyjson-dev ninja-build
    nlohmann-json3-dev pkg-config zlib1g-dev
)
clangPackages=(clang libclang-rt-dev)
lintPackages=(clang-format clang-tidy git shellcheck)

# The release that has libyyjson-dev, for the one before it, which has not.
releaseWithoutYyjson=bookworm
releaseWithYyjson=trixie

asRoot() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "only root, or sudo, can do this: $*"
    fi
}

aptGet() {
    asRoot env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 "$@"
}

# Sets `missing` to those of the packages that are not installed.
findMissing() {
    local installed package
    installed=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' "$@" 2>/dev/null || true)
    missing=()
    for package in "$@"; do
        grep -qx "$package installed" <<<"$installed" || missing+=("$package")
    done
}

requirePackages() {
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        fail "this script installs packages on Debian and its relatives only. Elsewhere, install" \
            "what these Debian packages hold and build with 'cmake --preset release &&" \
            "cmake --build --preset release': $*"
    fi
    local missing
    findMissing "$@"
    [ ${#missing[@]} -eq 0 ] && return
    say "Installing ${missing[*]}"
    aptGet update
    if [[ " ${missing[*]} " == *" libyyjson-dev "* ]] && ! isInArchive libyyjson-dev; then
        installYyjsonFromNextRelease
        findMissing "$@"
    fi
    [ ${#missing[@]} -eq 0 ] ||
        aptGet install --yes --no-install-recommends "${missing[@]}" ||
        fail "these packages could not be installed: ${missing[*]}"
}

isInArchive() { apt-cache madison "$1" 2>/dev/null | grep -q .; }

releaseName() { sed -n 's/^VERSION_CODENAME=//p' /etc/os-release; }

# printArchiveSource OWN_RELEASE RELEASE
#
# The machine's own entry for the archive of its release, asking for another release's main part
# instead: same mirror, same keys.
printArchiveSource() {
    local own=$1 release=$2 entry file number suite
    read -r entry suite < <(
        apt-get indextargets --format '$(SOURCESENTRY) $(RELEASE)' 'Created-By: Packages' \
            'Origin: Debian' "Codename: $own" 'Component: main' | head -n 1
    ) || return 1
    file=${entry%:*}
    number=${entry##*:}
    if [[ $file == *.sources ]]; then
        # The number counts the file's stanzas, which blank lines part.
        awk -v number="$number" -v suite="$release" '
            BEGIN { RS = ""; FS = "\n" }
            NR == number {
                for (i = 1; i <= NF; i++) {
                    if ($i ~ /^Suites:/) $i = "Suites: " suite
                    if ($i ~ /^Components:/) $i = "Components: main"
                    print $i
                }
            }' "$file"
    else
        # The number counts the file's lines.
        sed -n -E "${number}s/[[:space:]]+${suite//./\\.}([[:space:]].*)?\$/ $release main/p" \
            "$file"
    fi
}

# Takes libyyjson-dev and its library from the next release. apt reads the next release's index into
# a folder of its own and only fetches two files there, whose signatures and checksums it verifies;
# nothing of the machine's own configuration changes, so nothing else can ever come from there.
installYyjsonFromNextRelease() {
    [ "$(releaseName)" = "$releaseWithoutYyjson" ] ||
        fail "libyyjson-dev (0.10 or later) is not in this system's package archive;" \
            "install it by hand and run this again"
    say "Fetching libyyjson-dev from Debian $releaseWithYyjson, because $releaseWithoutYyjson has none"
    local folder status=0
    folder=$(mktemp -d)
    { fetchYyjson "$folder" && aptGet install --yes "$folder"/packages/*.deb; } || status=1
    asRoot rm -rf "$folder"
    [ "$status" -eq 0 ] ||
        fail "libyyjson-dev could not be installed from Debian $releaseWithYyjson"
}

fetchYyjson() {
    local folder=$1 source=$1/sources/next.sources options
    # apt fetches as a user of its own, who must be able to write there.
    asRoot chmod 755 "$folder"
    mkdir -p "$folder/sources" "$folder/lists/partial"
    asRoot install -d -o _apt "$folder/packages"
    printArchiveSource "$releaseWithoutYyjson" "$releaseWithYyjson" >"$source"
    if [ ! -s "$source" ]; then
        printf 'dev: /etc/apt names no archive of Debian %s\n' "$releaseWithoutYyjson" >&2
        return 1
    fi
    # An entry on one line goes into a file of another type.
    grep -q '^Types:' "$source" || mv "$source" "${source%.sources}.list"
    options=(
        -o Dir::Etc::SourceList=/dev/null
        -o Dir::Etc::SourceParts="$folder/sources"
        -o Dir::State::Lists="$folder/lists"
        -o Dir::Cache::pkgcache=
        -o Dir::Cache::srcpkgcache=
    )
    asRoot apt-get -qq "${options[@]}" update &&
        (cd "$folder/packages" && asRoot apt-get -qq "${options[@]}" download libyyjson0 libyyjson-dev)
}
