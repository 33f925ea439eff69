# shellcheck shell=bash
# Proves the packages: in an empty Debian system, step by step, what a user would do. Sourced by
# package.sh.
#
# shellcheck disable=SC2046 # Names of packages are words without blanks.

proofRoot=$root/build/packages/root
serviceUser=orvel-analytics
clientGroup=orvel-clients
storedData=/var/lib/orvel-analytics/analytics.db
settingsFile=/etc/orvel-analytics/settings.toml
proofEvents=24

# prove WORDS COMMAND... prints the words when the command succeeds, and what it printed otherwise. In
# a shell of its own, because a function in a condition is not ended by a failing command.
prove() {
    local words=$1 status=0
    shift
    set +e
    (
        set -e
        "$@"
    ) >"$root/$packageFolder/step.log" 2>&1
    status=$?
    set -e
    if [ "$status" -ne 0 ]; then
        cat "$root/$packageFolder/step.log" >&2
        fail "not so: $words (the system is in $proofRoot)"
    fi
    printf 'proved: %s\n' "$words"
    proofs=$((proofs + 1))
}

provePackages() {
    proofs=0
    say "Judging the packages"
    proveFiles
    say "Installing into an empty system: $proofRoot"
    copyRoot "$proofRoot"
    asRoot mkdir -p "$proofRoot/packages" "$proofRoot/proof"
    asRoot cp -r "$packageFolder"/*.deb "$packageFolder/upgrade" "$proofRoot/packages"
    asRoot cp -r examples/report tests/install/consumer "$proofRoot/proof"
    asRoot chmod -R a+rX "$proofRoot/packages" "$proofRoot/proof"
    # What was fetched for building need not be fetched again.
    asRoot cp -n "$buildRoot"/var/cache/apt/archives/*.deb "$proofRoot/var/cache/apt/archives"
    trap stopProofService EXIT
    proveInstallation
    proveService
    proveConsumers
    proveUpgrade
    proveRemoval
    asRoot rm -rf "$proofRoot"
    say "Summary"
    printf '%d things proved; the packages are in %s\n' "$proofs" "$packageFolder"
}

# --- The packages themselves

proveFiles() {
    prove "no file is in two packages" noFileIsInTwoPackages
    prove "lintian finds no error and nothing to warn of" lintianIsContent
    prove "what a library's package is called follows from its SONAME" namesFollowSonames
    prove "the packages' dependencies name the libraries that were found in the programs" \
        dependenciesWereFound
    local library
    for library in "${abiLibraries[@]}"; do
        prove "the interface of ${library##*/} is the recorded one" abiIsRecorded "$library"
    done
    prove "the comparison tells the examples of docs/abi.md from each other" abiExamplesAreTold
}

packageFiles() {
    dpkg-deb --fsys-tarfile "$1" | tar --list | grep -v '/$'
}

noFileIsInTwoPackages() {
    local package twice
    twice=$(for package in "$packageFolder"/*.deb; do packageFiles "$package"; done | sort | uniq -d)
    [ -z "$twice" ] || {
        printf '%s\n' "$twice"
        return 1
    }
}

lintianIsContent() {
    # An address of the maintainer is for whoever publishes packages to give, and so is a licence and a
    # record of the intention to package.
    inRoot "$buildRoot" sh -c 'lintian --allow-root --fail-on error,warning --tag-display-limit 0 \
        --suppress-tags bogus-mail-host,bogus-mail-host-in-debian-changelog,copyright-without-copyright-notice,initial-upload-closes-no-bugs,no-symbols-control-file \
        /build/packages-1/*.deb'
}

namesFollowSonames() {
    local package library soname found=0
    for package in "$packageFolder"/lib*[0-9]_*_*.deb; do
        library=$(packageFiles "$package" | grep -E '/lib[^/]*\.so\.[0-9]+$')
        dpkg-deb --fsys-tarfile "$package" | tar --extract --to-stdout \
            "$(packageFiles "$package" | grep -E '\.so\.[0-9]+\.[0-9.]+$')" >"$packageFolder/library"
        soname=$(LC_ALL=C readelf --dynamic "$packageFolder/library" |
            sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')
        rm "$packageFolder/library"
        echo "$package: $library, SONAME $soname"
        [ "${library##*/}" = "$soname" ]
        [ "$(dpkg-deb --field "$package" Package)" = "${soname%.so.*}${soname##*.so.}" ]
        dpkg-deb --ctrl-tarfile "$package" | tar --extract --to-stdout ./triggers | grep -q ldconfig
        found=$((found + 1))
    done
    [ "$found" -eq "${#abiLibraries[@]}" ]
}

dependenciesWereFound() {
    local service development library
    library=$(dpkg-deb --field "$packageFolder"/liborvel-analytics0_*.deb Depends)
    service=$(dpkg-deb --field "$packageFolder"/orvel-analytics_*.deb Depends)
    development=$(dpkg-deb --field "$packageFolder"/liborvel-analytics-dev_*.deb Depends)
    printf '%s\n' "$library" "$service" "$development"
    [[ $library == *libyyjson0* && $library == *libc6* && $library != *sqlite* ]]
    [[ $service == *libsqlite3-0* && $service == *libfmt* && $service == *"liborvel-analytics0 (= "* ]]
    [[ $development == *"liborvel-analytics0 (= "* && $development == *"liborvel-rpc-client0 (= "* ]]
    [[ $development == *"liborvel-analytics-testing0 (= "* ]]
}

# --- Installing

inProof() { inRoot "$proofRoot" "$@"; }

# asUser USER SCRIPT runs a script of the shell as another user, in that user's home.
asUser() {
    inProof setpriv --reuid "$1" --regid "$1" --init-groups env "HOME=/home/$1" sh -c "cd; $2"
}

# inPackages FORM prints the names of the packages that were copied inside, as they are there.
inPackages() { (cd "$proofRoot" && compgen -G "packages/$1.deb" | sed 's|^|/|'); }

# Fails when what it reads has a line of the form.
hasNo() { if grep "$1"; then return 1; fi; }

packageVersion() { inProof dpkg-query --show --showformat '${Version}' "$1"; }

proveInstallation() {
    prove "the packages install with apt, and their dependencies resolve" installRuntime
    prove "every installed file is as it was packed" filesAreIntact
    prove "the libraries are found by their SONAME" librariesAreFound
    prove "the service has a user, a group of clients and a data folder that it alone may open" \
        usersAreThere
    prove "the programs run, and have the version of their package" programsRun
    prove "manuals, completion and units are where they are looked for" companionsAreThere
}

installRuntime() {
    aptInRoot "$proofRoot" update
    aptInRoot "$proofRoot" install --yes $(inPackages '*' | grep -v -- -dev_)
}

filesAreIntact() {
    local complaints
    complaints=$(inProof dpkg --verify)
    [ -z "$complaints" ] || {
        printf '%s\n' "$complaints"
        return 1
    }
}

librariesAreFound() {
    inProof ldconfig -p | grep 'liborvel-analytics\.so\.0'
    inProof ldconfig -p | grep 'liborvel-rpc-client\.so\.0'
    # Without the development files there is nothing to link against.
    inProof ldconfig -p | hasNo 'liborvel.*\.so '
}

usersAreThere() {
    inProof id "$serviceUser" | grep "($clientGroup)"
    [ "$(inProof stat --format '%U %G %a' "${storedData%/*}")" = "$serviceUser $serviceUser 700" ]
    [ "$(inProof stat --format '%U %a' "$settingsFile")" = 'root 644' ]
}

programsRun() {
    local program version
    version=$(packageVersion orvel-analytics)
    for program in orvel-analytics orvel-analyticsd; do
        [ "$(inProof "$program" --version)" = "$program ${version%-*}" ]
    done
}

companionsAreThere() {
    inProof sh -c 'cd /usr && ls -l share/man/man1/orvel-analytics.1.gz share/man/man8/orvel-analyticsd.8.gz \
        share/man/man5/orvel-analytics-settings.5.gz lib/sysusers.d/orvel-analytics.conf \
        lib/systemd/system/orvel-analyticsd.service lib/systemd/system/orvel-analyticsd.socket'
    inProof bash -c 'for program in orvel-analytics orvel-analyticsd; do
        . /usr/share/bash-completion/completions/$program && complete -p $program || exit 1
    done'
    # Enabled, though no systemd runs here.
    inProof test -L /etc/systemd/system/sockets.target.wants/orvel-analyticsd.socket
}

# --- Running the service

# Starts the service as its unit says, which has its user, its environment and its command; systemd is
# not there to do so. The socket is for the members of the group alone.
startProofService() {
    local unit=$proofRoot/usr/lib/systemd/system/orvel-analyticsd.service command environment tries
    command=$(sed -n 's/^ExecStart=//p' "$unit")
    environment=$(sed -n 's/^Environment=//p' "$unit")
    rm -f "$root/$packageFolder/service.log"
    inProof install -d -o "$serviceUser" -g "$serviceUser" /run/orvel
    inProof sh -c "echo \$\$ >/run/orvel.pid && exec setpriv --reuid $serviceUser --regid $serviceUser \
        --init-groups env $environment ORVEL_RPC_DIRECTORY=/run/orvel $command" \
        2>"$root/$packageFolder/service.log" &
    for ((tries = 0; tries < 600; tries++)); do
        ! grep -qs '"listening"' "$root/$packageFolder/service.log" || return 0
        sleep 0.05
    done
    cat "$root/$packageFolder/service.log"
    return 1
}

stopProofService() {
    local pid tries
    [ -e "$proofRoot/run/orvel.pid" ] || return 0
    pid=$(cat "$proofRoot/run/orvel.pid")
    asRoot rm "$proofRoot/run/orvel.pid"
    asRoot kill "$pid"
    for ((tries = 0; tries < 600; tries++)); do
        asRoot kill -0 "$pid" 2>/dev/null || break
        sleep 0.05
    done
    grep -q '"stopped"' "$root/$packageFolder/service.log"
}

storedEvents() { inProof orvel-analyticsd events "$@"; }

# report USER reports the example's events.
report() {
    asUser "$1" 'orvel-analytics report --app proof --app-version 1 --json \
        --data-class /proof/report/app_usage.json /proof/report/events.jsonl'
}

# As docs/packages.md says for a system without systemd.
letInTheGroup() {
    inProof useradd --create-home alice
    inProof useradd --create-home bob
    inProof adduser --quiet alice "$clientGroup"
    inProof sed -i "s/^socket_group = .*/socket_group = \"$clientGroup\"/" "$settingsFile"
    inProof grep -q "^socket_group = \"$clientGroup\"" "$settingsFile"
}

proveService() {
    prove "an administrator lets in the members of a group alone" letInTheGroup
    prove "the service runs as its own user, with its unit's command" startProofService
    prove "a user in the group of clients reports events" aliceReports
    prove "what is stored is what was reported, by that user" storedIsReported
    prove "another user is refused" bobIsRefused
}

aliceReports() { report alice | tee /dev/stderr | jq -e ".accepted == $proofEvents" >/dev/null; }

storedIsReported() {
    storedEvents --good --json >"$packageFolder/stored.json"
    diff <(canonicalEvents <examples/report/events.jsonl) \
        <(jq -c .values "$packageFolder/stored.json" | canonicalEvents)
    [ "$(jq .uid "$packageFolder/stored.json" | sort -u)" = "$(inProof id -u alice)" ]
}

bobIsRefused() {
    local said status=0
    said=$(report bob 2>&1) || status=$?
    printf '%s\n' "$said"
    [ "$status" -eq 3 ]
    [[ $said == *"(status 5)"* ]]
    [ "$(storedEvents --count)" -eq "$proofEvents" ]
}

# --- Building against the development files

proveConsumers() {
    prove "the development files install with apt" installDevelopment
    prove "an application is built with CMake, and its event is stored" consumerByCmake
    prove "an application is built with pkg-config, and its event is stored" consumerByPkgconf
}

installDevelopment() {
    aptInRoot "$proofRoot" install --yes $(inPackages 'liborvel-analytics-dev_*') \
        g++ cmake make pkgconf
}

# consumerStores SCRIPT builds the application by a script, runs it, and looks for its event.
consumerStores() {
    local before said
    before=$(storedEvents --application Consumer --count)
    asUser alice "set -e; $1" >&2
    said=$(asUser alice 'LC_ALL=C.UTF-8 ./consumer-*/consumer')
    [ "$said" = '0 0 0
App name cannot be null or empty' ]
    [ "$(storedEvents --application Consumer --count)" -eq $((before + 1)) ]
    asUser alice 'rm -r consumer-*'
}

consumerByCmake() {
    consumerStores 'cmake -S /proof/consumer -B consumer-cmake && cmake --build consumer-cmake'
}

consumerByPkgconf() {
    # shellcheck disable=SC2016 # For the shell inside.
    consumerStores 'mkdir consumer-pkgconf && g++ -std=c++20 /proof/consumer/main.cpp \
        $(pkg-config --cflags --libs orvel-analytics orvel-rpc-client) -o consumer-pkgconf/consumer'
}

# --- Upgrading and removing

proveUpgrade() {
    eventsBefore=$(storedEvents --count)
    prove "the service ends when it is told to" stopProofService
    prove "packages of a higher version install without a question" upgrade
    prove "an upgrade keeps the settings and the data" keptByUpgrade
    prove "the new service runs and takes events" startProofService
    prove "it adds to the events of the old one" addsToOldEvents
    stopProofService
}

upgrade() {
    local package
    aptInRoot "$proofRoot" install --yes $(inPackages 'upgrade/*') </dev/null
    for package in orvel-analytics liborvel-analytics0 liborvel-rpc-client0 \
        liborvel-analytics-testing0 liborvel-analytics-dev; do
        [[ $(packageVersion "$package") == *-2 ]]
    done
}

keptByUpgrade() {
    inProof grep -q "^socket_group = \"$clientGroup\"" "$settingsFile"
    [ "$(storedEvents --count)" -eq "$eventsBefore" ]
    inProof ls /etc/orvel-analytics | hasNo dpkg
}

addsToOldEvents() {
    aliceReports
    [ "$(storedEvents --count)" -eq $((eventsBefore + proofEvents)) ]
}

proveRemoval() {
    eventsBefore=$(storedEvents --count)
    prove "removing takes the programs and keeps data, settings and user" removeService
    prove "installing once more finds the data again" installAgain
    prove "purging takes data, settings, user and groups; nothing is left" purgeEverything
}

removeService() {
    aptInRoot "$proofRoot" remove --yes orvel-analytics
    inProof ls /usr/bin | hasNo orvel
    inProof test -s "$storedData"
    inProof test -s "$settingsFile"
    inProof id "$serviceUser"
}

installAgain() {
    aptInRoot "$proofRoot" install --yes $(inPackages 'upgrade/orvel-analytics_*')
    [ "$(storedEvents --count)" -eq "$eventsBefore" ]
    inProof grep -q "^socket_group = \"$clientGroup\"" "$settingsFile"
}

purgeEverything() {
    local left
    aptInRoot "$proofRoot" purge --yes orvel-analytics liborvel-analytics-dev liborvel-analytics0 \
        liborvel-analytics-testing0 liborvel-rpc-client0
    left=$(inProof sh -c 'find / -xdev -iname "*orvel*" -not -path "/packages/*" -not -path "/proof/*"
        getent passwd orvel-analytics; getent group orvel-analytics orvel-clients
        ldconfig -p | grep orvel; dpkg-query --list "*orvel*" 2>/dev/null | grep "^[^u]n"' || true)
    [ -z "$left" ] || {
        printf 'left: %s\n' "$left"
        return 1
    }
}
