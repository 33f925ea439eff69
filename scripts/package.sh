# shellcheck shell=bash
# Builds the Debian packages from what is committed, and proves them in an empty system. Sourced by
# dev.

# shellcheck source=scripts/package/debian_root.sh
source scripts/package/debian_root.sh
# shellcheck source=scripts/package/abi.sh
source scripts/package/abi.sh
# shellcheck source=scripts/package/proof.sh
source scripts/package/proof.sh

packageTools=(git jq)
packageFolder=build/packages

# runPackage [--record-abi]
runPackage() {
    local record=''
    if [ "${1:-}" = --record-abi ]; then
        record=yes
        shift
    fi
    [ $# -eq 0 ] || fail "package does not know $1; see ./dev help"
    requirePackages "${packageTools[@]}"
    git rev-parse --verify --quiet HEAD >/dev/null ||
        fail "packages are built from what is committed, and this is no clone"
    git diff --quiet HEAD ||
        printf '\nNot in the packages: what is not committed yet.\n'
    requireBuildRoot
    buildPackagesInside
    if [ -n "$record" ]; then
        say "Recording the libraries' interface"
        recordAbi
        return
    fi
    provePackages
}

# What is done inside to build: the packages, and packages of a higher version to upgrade to.
insideBuild='
set -e
cd /build/source
export DEB_BUILD_MAINT_OPTIONS=hardening=+all
CXXFLAGS="$(dpkg-buildflags --get CPPFLAGS) $(dpkg-buildflags --get CXXFLAGS)"
LDFLAGS=$(dpkg-buildflags --get LDFLAGS)
export CXXFLAGS LDFLAGS CCACHE_DIR=/build/ccache
for revision in 1 2; do
    cmake --preset debian -DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DORVEL_DEBIAN_REVISION=$revision
    cmake --build --preset debian
    (cd build/debian && cpack -B /build/packages-$revision)
done
'

buildPackagesInside() {
    say "Building the packages of $(git describe --always HEAD)"
    local log=$root/$packageFolder/build.log
    asRoot rm -rf "$root/$packageFolder" "$buildRoot"/build/{source,packages-1,packages-2}
    mkdir -p "$packageFolder"
    asRoot mkdir -p "$buildRoot/build/source"
    git archive HEAD | asRoot tar --extract --no-same-owner --directory "$buildRoot/build/source"
    inRoot "$buildRoot" env "SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)" sh -c "$insideBuild" \
        >"$log" 2>&1 || {
        tail -n 30 "$log" >&2
        fail "the packages could not be built; the log is $packageFolder/build.log"
    }
    mkdir -p "$packageFolder/upgrade"
    cp "$buildRoot"/build/packages-1/*.deb "$packageFolder"
    cp "$buildRoot"/build/packages-2/*.deb "$packageFolder/upgrade"
    (cd "$packageFolder" && ls -l -- *.deb)
}
