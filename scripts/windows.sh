# shellcheck shell=bash
# The library on Windows: built with a toolchain of our own, run under wine. Sourced by dev.

# shellcheck source=scripts/windows/debian_archive.sh
source scripts/windows/debian_archive.sh
# shellcheck source=scripts/windows/toolchain.sh
source scripts/windows/toolchain.sh
# shellcheck source=scripts/windows/arm64_root.sh
source scripts/windows/arm64_root.sh

# The release of Debian whose packages the toolchain and the ARM64 system are made of.
releaseForWindows=trixie
windowsCache=${XDG_CACHE_HOME:-$HOME/.cache}/orvel-analytics
winePackages=(wine wine64)
# The exit status that says that the machine allows no run.
refused=125

# The platform's classes that the stand-in runtime answers for.
runtimeClasses=(
    Windows.Data.Json.JsonArray
    Windows.Data.Json.JsonObject
    Windows.Data.Json.JsonValue
    Windows.Security.ExchangeActiveSyncProvisioning.EasClientDeviceInformation
    Windows.System.Profile.AnalyticsInfo
)

runWindows() {
    local architectures=() allowSkip='' argument architecture failed=0
    for argument in "$@"; do
        case $argument in
            x64 | arm64) architectures+=("$argument") ;;
            --allow-skip) allowSkip=yes ;;
            *) fail "windows takes x64, arm64 and --allow-skip; see ./dev help" ;;
        esac
    done
    [ ${#architectures[@]} -gt 0 ] || architectures=(x64 arm64)
    requirePackages "${winePackages[@]}"
    requireToolchain
    export ORVEL_VISIBLE_FOLDER=$root
    # The files that CMake writes for a preset are then the same for ccache in every preset.
    export CCACHE_BASEDIR=$root
    declare -A testCount=()
    skipped=''
    for architecture in "${architectures[@]}"; do
        testWindows "$architecture" || failed=1
    done
    say "Summary"
    for architecture in "${architectures[@]}"; do
        printf '%s: %s\n' "$architecture" "${testCount[$architecture]}"
    done
    if [ -n "$skipped" ]; then
        printf '%s\n' '' "NOT RUN: the programs of ARM64 Windows were built and checked, but this machine" \
            "refuses the mounts that running them takes ($skipped)."
        [ -n "$allowSkip" ] || fail "--allow-skip lets this pass"
    elif [ ${#architectures[@]} -gt 1 ] && [ "${testCount[x64]}" != "${testCount[arm64]}" ]; then
        fail "not the same tests ran on both architectures"
    fi
    [ "$failed" -eq 0 ] || fail "something failed; see above"
}

# Builds, checks and runs everything of one architecture, and counts the tests that ran.
testWindows() {
    local architecture=$1 preset failed=0
    for preset in "windows-$architecture-testing" "windows-$architecture-portable"; do
        say "Building: $preset"
        # A folder that another toolchain was used in cannot be used with this one.
        grep -qsF "$ORVEL_WINDOWS_TOOLCHAIN/" "$root/build/$preset/CMakeCache.txt" ||
            rm -rf "$root/build/$preset"
        buildPreset "$preset"
    done
    testCount[$architecture]='nothing ran'
    prepareWindows "$architecture" || return
    [ "$architecture" = x64 ] || [ -z "$skipped" ] || return 0
    for preset in "windows-$architecture-testing" "windows-$architecture-portable"; do
        runPresetTests "$preset" || failed=1
    done
    runWindowsProgram "$architecture" wineboot.exe --kill >/dev/null 2>&1 || true
    [ "$architecture" = x64 ] || forgetArm64Programs
    testCount[$architecture]=$(countTests \
        "$root/build/windows-$architecture-"{testing,portable}/Testing/Temporary/LastTest.log) ||
        failed=1
    return "$failed"
}

runWindowsProgram() { "$root/scripts/windows/run_program.sh" "$@"; }

# Sets up a Windows in which the stand-in runtime answers for the platform's classes.
prepareWindows() {
    local architecture=$1 status=0 owner=() folder
    folder=$root/build/windows-$architecture-testing
    export WINEPREFIX=$root/build/windows-$architecture-prefix
    say "Preparing wine for $architecture"
    if [ "$architecture" = arm64 ]; then
        requireArm64Root
        tryArm64 || return
        [ -z "$skipped" ] || return 0
        # wine uses no folder of another user, and there it is root's.
        owner=(asRoot)
    fi
    if [ ! -e "$WINEPREFIX/complete" ]; then
        "${owner[@]}" mkdir -p "$WINEPREFIX"
        runWindowsProgram "$architecture" wineboot.exe --init >"$folder/wine.log" 2>&1 || status=$?
    fi
    printRegistration "$folder/bin/stand-in-runtime.dll" >"$folder/registration.reg"
    if [ "$status" -ne 0 ] ||
        ! runWindowsProgram "$architecture" regedit.exe /S \
            "Z:${folder//\//\\}\\registration.reg" >>"$folder/wine.log" 2>&1; then
        tail -n 5 "$folder/wine.log" >&2
        printf 'dev: wine could not be set up for %s\n' "$architecture" >&2
        return 1
    fi
    "${owner[@]}" touch "$WINEPREFIX/complete"
}

# Sets `skipped` to the reason why this machine cannot run programs in the ARM64 system.
tryArm64() {
    local answer status=0
    answer=$(asRoot unshare --mount true 2>&1) || status=$refused
    [ "$status" -ne 0 ] || answer=$(runWindowsProgram arm64 --version 2>&1) || status=$?
    [ "$status" -ne 0 ] || return 0
    [ "$status" -ne "$refused" ] || {
        skipped=$(tail -n 1 <<<"$answer")
        return 0
    }
    printf '%s\ndev: wine does not start in the ARM64 system\n' "$answer" >&2
    return 1
}

printRegistration() {
    local library="Z:${1//\//\\}" class
    printf 'Windows Registry Editor Version 5.00\r\n\r\n'
    printf '[HKEY_CURRENT_USER\\Software\\Wine]\r\n"Version"="win10"\r\n\r\n'
    # One test program is about a system without the runtime.
    printf '[HKEY_CURRENT_USER\\Software\\Wine\\AppDefaults\\missing_runtime_tests.exe\\DllOverrides]\r\n'
    printf '"combase"=""\r\n\r\n'
    for class in "${runtimeClasses[@]}"; do
        printf '[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\WindowsRuntime\\ActivatableClassId\\%s]\r\n' \
            "$class"
        printf '"DllPath"="%s"\r\n\r\n' "${library//\\/\\\\}"
    done
}

# What the programs of some test runs say of themselves. A program that ended early, which its exit
# status may not tell under wine, has begun more tests than it has run: that fails.
countTests() {
    awk '
        function number(word,    i) {
            for (i = 1; i < NF; i++) if ($i == word || $i ~ word "$") return $(i + 1) + 0
        }
        /=\] Running [0-9]+ tests? from/ { begun += number("Running") }
        /=\] [0-9]+ tests? from .* ran\./ { ran += number("=\\]") }
        /\[  PASSED  \] [0-9]+ tests?\./ { passed += number("\\]") }
        /\[  SKIPPED \] [0-9]+ tests?,/ { skipped += number("\\]") }
        END {
            printf "%d tests ran: %d passed, %d skipped\n", ran, passed, skipped
            exit ran == 0 || ran != begun || ran != passed + skipped
        }' "$@"
}
