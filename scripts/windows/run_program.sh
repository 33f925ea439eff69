#!/usr/bin/env bash
# Runs a program of Windows: run_program.sh ARCHITECTURE PROGRAM [ARGUMENT...]
#
# The environment names the folder of wine's Windows (WINEPREFIX) and, for arm64, the ARM64 system
# (ORVEL_ARM64_ROOT); `./dev windows` sets both up.
set -euo pipefail

architecture=$1
shift

# No dialogue windows, no .NET, no HTML; messages of wine itself are nobody's business.
export WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}

# The names of files are UTF-8.
export LC_ALL=C.UTF-8

# A program that qemu cannot run may never end.
limit=${ORVEL_PROGRAM_LIMIT:-110}

case $architecture in
    x64)
        exec timeout --kill-after=5 "$limit" /usr/lib/wine/wine64 "$@"
        ;;
    arm64)
        asRoot=()
        [ "$(id -u)" -eq 0 ] || asRoot=(sudo --preserve-env)
        exec "${asRoot[@]}" timeout --kill-after=5 "$limit" unshare --mount \
            "$(dirname "$(readlink -f "$0")")/enter_arm64.sh" "$@"
        ;;
    *)
        printf 'run_program.sh: %s is no architecture\n' "$architecture" >&2
        exit 125
        ;;
esac
