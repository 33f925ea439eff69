#!/usr/bin/env bash
# Runs a program of ARM64 Windows inside the ARM64 system, as root and in a mount namespace of its
# own, with which the mounts go: enter_arm64.sh PROGRAM [ARGUMENT...]
#
# ORVEL_ARM64_ROOT is the system's folder; ORVEL_VISIBLE_FOLDER is seen inside at its own path.
set -euo pipefail

refused() {
    printf 'enter_arm64.sh: this machine does not allow %s\n' "$1" >&2
    exit 125
}

programs=/proc/sys/fs/binfmt_misc
[ -e $programs/register ] || mount -t binfmt_misc binfmt_misc $programs || refused 'binfmt_misc'
# Another run may register at the same moment: what counts is that it is registered then.
[ -e $programs/qemu-aarch64 ] || cat /usr/lib/binfmt.d/qemu-aarch64.conf >$programs/register ||
    [ -e $programs/qemu-aarch64 ] || refused 'ARM64 programs to be registered'

mount -t proc proc "$ORVEL_ARM64_ROOT/proc" || refused 'mounting /proc'
mount --rbind /dev "$ORVEL_ARM64_ROOT/dev" || refused 'mounting /dev'
mkdir -p "$ORVEL_ARM64_ROOT$ORVEL_VISIBLE_FOLDER"
mount --bind "$ORVEL_VISIBLE_FOLDER" "$ORVEL_ARM64_ROOT$ORVEL_VISIBLE_FOLDER" ||
    refused 'mounting the build folder'

# The processor that qemu pretends to be by default has a feature that this wine is not made for: its
# programs would never end.
export QEMU_CPU=cortex-a72 HOME=/root XDG_RUNTIME_DIR=/tmp PATH=/usr/lib/wine:/usr/sbin:/usr/bin
export WINELOADER=/usr/lib/wine/wine64 WINESERVER=/usr/lib/wine/wineserver64
# shellcheck disable=SC2016 # The inner shell's variables.
exec chroot "$ORVEL_ARM64_ROOT" /bin/bash -c 'cd "$0" && exec "$WINELOADER" "$@"' "$PWD" "$@"
