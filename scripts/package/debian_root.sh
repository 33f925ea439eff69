# shellcheck shell=bash
# Debian systems in folders, entered by chroot: an empty one, and one that can build the packages.
# Both are made once, in the user's cache folder. Sourced by package.sh.

# The release that the packages are for.
releaseForPackages=trixie
packageCache=${XDG_CACHE_HOME:-$HOME/.cache}/orvel-analytics
debianRootPackages=(debian-archive-keyring debootstrap)

# What building and judging the packages takes inside.
packageBuildPackages=(
    abigail-tools build-essential ccache cmake file libasio-dev libcli11-dev libfmt-dev libsqlite3-dev
    libtomlplusplus-dev libyyjson-dev lintian ninja-build nlohmann-json3-dev pkgconf
)

# inRoot FOLDER COMMAND... runs a command as root inside, with nothing of this environment.
inRoot() {
    local folder=$1
    shift
    asRoot env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive chroot "$folder" "$@"
}

aptInRoot() {
    local folder=$1
    shift
    inRoot "$folder" apt-get -qq -o Dpkg::Use-Pty=0 -o APT::Install-Recommends=false "$@"
}

# The address of the archive that this machine installs from.
archiveAddress() {
    apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' \
        "Codename: $(releaseName)" 'Component: main' | head -n 1
}

# Sets debianRoot to the folder of an empty system, which nobody may change, and makes it where it is
# missing.
requireDebianRoot() {
    requirePackages "${debianRootPackages[@]}"
    local archive key
    archive=$(archiveAddress)
    [ -n "$archive" ] || fail "/etc/apt names no archive of Debian $(releaseName)"
    key=$({ printf '%s\n' "$archive"; cat "$root/scripts/package/debian_root.sh"; } |
        sha256sum | cut -c 1-16)
    debianRoot=$packageCache/debian-root-$key
    buildRoot=$packageCache/debian-build-root-$key
    [ ! -e "$debianRoot.complete" ] || return 0
    say "Making an empty Debian $releaseForPackages in $debianRoot (about a minute, once)"
    mkdir -p "$packageCache"
    asRoot rm -rf "$debianRoot"
    asRoot debootstrap --variant=minbase "$releaseForPackages" "$debianRoot" "$archive" \
        >"$debianRoot.log" 2>&1 || {
        tail -n 5 "$debianRoot.log" >&2
        fail "debootstrap failed; its log is $debianRoot.log. It takes root, device files and" \
            "mounting /proc, which a container may refuse"
    }
    touch "$debianRoot.complete"
}

# copyRoot FOLDER makes a new system of the empty one, which reaches the archive as this machine does.
# Nothing is mounted in it.
copyRoot() {
    asRoot rm -rf "$1"
    asRoot cp --archive --reflink=auto "$debianRoot" "$1"
    asRoot cp --dereference /etc/resolv.conf "$1/etc/resolv.conf"
    apt-config dump | { grep -iE '^Acquire::https?::Proxy' || true; } |
        asRoot tee "$1/etc/apt/apt.conf.d/90this-machine" >/dev/null
}

# Makes the system that builds, in buildRoot, where it is missing.
requireBuildRoot() {
    requireDebianRoot
    [ ! -e "$buildRoot.complete" ] || return 0
    say "Making a Debian $releaseForPackages that builds in $buildRoot (about two minutes, once)"
    copyRoot "$buildRoot"
    {
        aptInRoot "$buildRoot" update &&
            aptInRoot "$buildRoot" install --yes "${packageBuildPackages[@]}"
    } >"$buildRoot.log" 2>&1 || {
        tail -n 5 "$buildRoot.log" >&2
        fail "the packages that building takes could not be installed; the log is $buildRoot.log"
    }
    touch "$buildRoot.complete"
}
