#!/usr/bin/env bash
# Holds the man page of the settings against the example that has every setting:
# settings_page.sh SETTINGS PAGE
set -euo pipefail

settings=$1
page=$2
failed=0

# "KEY" of each line "KEY = …" and each table of an array.
keys() {
    sed -nE -e 's/^#?([a-z_]+) = .*/\1/p' -e 's/^#?\[\[access\.([a-z_]+)\]\]/\1/p' "$settings" |
        sort -u
}

described() { sed -nE 's/^(\.It )?\.?Ic ([a-z_]+)( .*)?$/\2/p' "$page" | sort -u; }

diff --label "$settings" --label "$page" -u <(keys) <(described) || failed=1
[ "$(keys | wc -l)" -ge 20 ] || { echo "only $(keys | wc -l) settings were found"; failed=1; }

# The defaults of the limits.
while read -r key value; do
    sed -n "/^\\.It Ic $key\$/,/^By default/p" "$page" | grep -qx "By default ${value//_/}\\." || {
        echo "$page does not give the default of $key, $value"
        failed=1
    }
done < <(sed -nE '/^\[limits\]/,/^\[access\]/ s/^([a-z_]+) = ([0-9_]+)$/\1 \2/p' "$settings")
exit "$failed"
