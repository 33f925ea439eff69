# shellcheck shell=bash
# Follows the guide's first page in an empty Debian, word for word, from installing the packages to
# the first stored event and on to its end. Sourced by dev.

guidePage=docs/guide/first-events.md
guideFolder=build/guide
guideReader=reader

# runGuide [FOLDER]: with the packages in FOLDER, or those that ./dev package has made.
runGuide() {
    [ $# -le 1 ] || fail "guide takes one folder at the most; see ./dev help"
    local packages=${1:-$packageFolder} system=$root/$guideFolder/root status=0 stored
    [ $# -eq 0 ] || packages=$(cd "$callerFolder" && realpath -e -- "$1") || fail "$1: there is no such folder"
    compgen -G "$packages/*.deb" >/dev/null ||
        fail "there are no packages in $packages; ./dev package makes them"
    requireDebianRoot
    say "Preparing an empty Debian $releaseForPackages with a user in $system"
    mkdir -p "$guideFolder"
    copyRoot "$system"
    prepareReader "$system" "$packages"
    say "Following $guidePage"
    asReader "$system" 'cd packages && PAGE_WORK=$HOME/.page PAGE_TELLS=yes bash ~/.page/script' |
        tee "$guideFolder/steps" || status=1
    [ "$status" -eq 0 ] || fail "the guide did not work as it is written; see above"
    stored=$(firstStored)
    asRoot rm -rf "$system"
    printf '\nfrom installing the packages to the first stored event: %d min %d s\n' \
        "$((stored / 60))" "$((stored % 60))"
}

# What a machine of a user has: a user who may use sudo, and the packages in a folder of theirs.
prepareReader() {
    local system=$1 packages=$2 home=$1/home/$guideReader script=$root/$guideFolder/page
    {
        aptInRoot "$system" update
        aptInRoot "$system" install --yes sudo
        inRoot "$system" useradd --create-home --shell /bin/bash "$guideReader"
        inRoot "$system" sh -c "echo '$guideReader ALL=(ALL) NOPASSWD: ALL' >/etc/sudoers.d/reader"
        inRoot "$system" sh -c 'apt-get clean && rm -rf /var/lib/apt/lists/*'
    } >"$guideFolder/preparation.log" 2>&1 || {
        tail -n 5 "$guideFolder/preparation.log" >&2
        fail "the system could not be prepared"
    }
    rm -rf "$script"
    mkdir "$script"
    writePageScript "$guidePage" "$script" './dev guide' || fail "$guidePage cannot be run"
    asRoot mkdir "$home/packages"
    asRoot cp "$packages"/*.deb "$home/packages"
    asRoot cp -r "$script" "$home/.page"
    inRoot "$system" chown -R "$guideReader:" "/home/$guideReader"
}

asReader() {
    inRoot "$1" setpriv --reuid "$guideReader" --regid "$guideReader" --init-groups \
        env "HOME=/home/$guideReader" bash -c "cd; $2"
}

# The seconds after which the step that shows the stored events was done.
firstStored() {
    local number line
    while IFS=$'\t' read -r number line _; do
        if grep -q '^orvel-analyticsd events' "$guideFolder/page/$number"; then
            sed -n "s|^$guidePage:$line done after \([0-9]*\) s$|\1|p" "$guideFolder/steps"
            return
        fi
    done <"$guideFolder/page/blocks"
}
