# shellcheck shell=bash
# Takes packages from an archive of Debian that this machine does not install from: sources, or
# programs of another architecture. Sourced by windows.sh.

# foreignApt FOLDER TYPE [ARCHITECTURE]
#
# Makes an apt state in FOLDER that knows one archive only: the machine's own mirror, in the release
# that everything for Windows is taken from. Nothing of the machine's own state is touched. TYPE is
# deb or deb-src. Commands run with APT_CONFIG=FOLDER/apt.conf use it.
foreignApt() {
    local folder=$1 type=$2 architecture=${3:-$(dpkg --print-architecture)}
    mkdir -p "$folder"/{lists,cache/archives}/partial "$folder/sources"
    : >"$folder/status"
    printArchiveSource "$(releaseName)" "$releaseForWindows" |
        sed -E "s/^Types:.*/Types: $type/; s/^deb(-src)? /$type /" >"$folder/sources/archive.sources"
    [ -s "$folder/sources/archive.sources" ] ||
        fail "/etc/apt names no archive of Debian $(releaseName) to take $releaseForWindows from"
    grep -q '^Types:' "$folder/sources/archive.sources" ||
        mv "$folder/sources/archive.sources" "$folder/sources/archive.list"
    cat >"$folder/apt.conf" <<CONFIG
APT::Architecture "$architecture";
APT::Architectures { "$architecture"; };
APT::Install-Recommends "false";
APT::Sandbox::User "";
Dir::Etc::SourceList "/dev/null";
Dir::Etc::SourceParts "$folder/sources";
Dir::Etc::Preferences "/dev/null";
Dir::Etc::PreferencesParts "/dev/null";
Dir::State::Lists "$folder/lists";
Dir::State::Status "$folder/status";
Dir::Cache "$folder/cache";
CONFIG
    APT_CONFIG=$folder/apt.conf apt-get -qq update
}

# fetchSource APT_FOLDER TARGET_FOLDER PACKAGE UPSTREAM_VERSION [TAR_OPTION...]
#
# Unpacks the upstream sources of a Debian source package; Debian's patches concern Debian.
fetchSource() {
    local apt=$1 target=$2 package=$3 upstream=$4 version
    shift 4
    version=$(APT_CONFIG=$apt/apt.conf apt-cache showsrc "$package" |
        sed -n 's/^Version: //p' | grep -F -- "$upstream" | sort --version-sort | tail -n 1)
    [ -n "$version" ] || fail "the archive has no source package $package of version $upstream"
    mkdir -p "$target" "$apt/download"
    (cd "$apt/download" && APT_CONFIG=$apt/apt.conf \
        apt-get -qq source --download-only --tar-only "$package=$version")
    # A file's name has neither the epoch nor Debian's own part of the version.
    upstream=${version#*:}
    tar --extract --file "$apt/download/${package}_${upstream%-*}.orig.tar."* \
        --directory "$target" --strip-components=1 "$@"
}
