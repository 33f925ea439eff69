#!/usr/bin/env bash
# Runs every block of a Markdown page, with the installed libraries and programs, in a scratch home
# and a scratch copy of the project's folder.
#
#     run_page.sh PAGE SOURCE_FOLDER BUILD_FOLDER PREFIX
#
# PAGE is named from SOURCE_FOLDER.
set -euo pipefail

page=$1 source=$2 build=$3 prefix=$4

# shellcheck source=scripts/pages/page_script.sh
source "$source/scripts/pages/page_script.sh"

# Short, as a socket's path must be.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work"/{home,page,project/build}

# What commands of a user in the project's folder find there.
for name in include relay examples docs packaging; do
    ln -s "$source/$name" "$work/project/$name"
done
ln -s "$build" "$work/project/build/release"

cat >"$work/settings.toml" <<'TOML'
device_serial_number = "SN-1"
country_code = "PT"

[privacy_documents]
privacyurl = "https://example.com/privacy"
warrantyurl = "https://example.com/warranty"
telemetryurl = "https://example.com/telemetry"
TOML

cd "$source"
writePageScript "$page" "$work/page" './dev test'

cd "$work/project"
unset XDG_RUNTIME_DIR XDG_STATE_HOME XDG_CONFIG_HOME
export HOME=$work/home ORVEL_RPC_DIRECTORY=$work/home/rpc TZ=UTC PAGE_WORK=$work PAGE_SERVICE=$work/settings.toml
export PAGE_INCLUDES=$prefix/include PAGE_LIBRARIES=$prefix/lib
export PATH=$prefix/bin:$PATH LD_LIBRARY_PATH=$prefix/lib CMAKE_PREFIX_PATH=$prefix
# So that the compiler looks there, too, when it is called by hand.
export CPATH=$prefix/include LIBRARY_PATH=$prefix/lib
bash "$work/page/script"

printf '%s: %d blocks, of which these are not run here:\n' "$page" "$(wc -l <"$work/page/blocks")"
sed 's/^/blocks | /' "$work/page/left-out"
