# shellcheck shell=bash
# A Debian system for ARM64 that holds wine, for programs of ARM64 Windows on another processor:
# qemu runs wine, wine runs the program. Sourced by windows.sh.

arm64RootPackages=(debian-archive-keyring qemu-user-static)

# Sets ORVEL_ARM64_ROOT to the system's folder, and makes it where it is missing.
requireArm64Root() {
    requirePackages "${arm64RootPackages[@]}"
    local key
    key=$(sha256sum <"$root/scripts/windows/arm64_root.sh" | cut -c 1-16)
    ORVEL_ARM64_ROOT=$windowsCache/arm64-root-$key
    export ORVEL_ARM64_ROOT
    [ ! -e "$ORVEL_ARM64_ROOT.complete" ] || return 0
    say "Making a system that runs programs of ARM64 Windows in $ORVEL_ARM64_ROOT (about a minute, once)"
    asRoot rm -rf "$ORVEL_ARM64_ROOT"
    makeArm64Root || fail "the ARM64 system could not be made"
    touch "$ORVEL_ARM64_ROOT.complete"
}

# Unpacks what wine needs. No script of a package is run: none is needed, and none could be.
makeArm64Root() {
    local apt=$windowsCache/arm64-apt folder package
    rm -rf "$apt"
    foreignApt "$apt" deb arm64
    APT_CONFIG=$apt/apt.conf apt-get -qq install --download-only --yes wine64 bash coreutils dash libc-bin \
        >"$apt/log" 2>&1 || {
        tail -n 5 "$apt/log" >&2
        return 1
    }
    for folder in usr/{bin,sbin,lib,lib64} proc sys dev tmp etc root; do
        mkdir -p "$ORVEL_ARM64_ROOT/$folder"
    done
    for folder in bin sbin lib lib64; do
        ln -s "usr/$folder" "$ORVEL_ARM64_ROOT/$folder"
    done
    for package in "$apt"/cache/archives/*.deb; do
        dpkg-deb --fsys-tarfile "$package" |
            tar --extract --directory "$ORVEL_ARM64_ROOT" --keep-directory-symlink \
                --no-same-owner --exclude=./usr/share/doc --exclude=./usr/share/locale \
                --exclude=./usr/share/man --exclude='*/wine/i386-windows' \
                --exclude='*/wine/x86_64-windows' || return 1
    done
    rm -rf "$apt"
}

# Older kernels keep what a run told them of ARM64 programs; newer ones forget it with the run.
forgetArm64Programs() {
    # shellcheck disable=SC2016 # These variables are the inner shell's.
    asRoot unshare --mount bash -c '
        [ -e "$1/register" ] || mount -t binfmt_misc binfmt_misc "$1" || exit 0
        [ ! -e "$1/qemu-aarch64" ] || echo -1 >"$1/qemu-aarch64"
    ' bash /proc/sys/fs/binfmt_misc 2>/dev/null || true
}
