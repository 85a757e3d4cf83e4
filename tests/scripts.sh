#!/bin/bash
# Tests the scripts: wrong use of those that are started by hand, or that must not run outside a sandbox, and the exit
# status of a sandbox, on which every test under Wine depends.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
cd "$repo"
failed=0
fail() { echo "scripts: $*"; failed=1; }

# Runs COMMAND, which must end with STATUS: ends_with STATUS COMMAND…; $said is what it prints.
ends_with() {
  local status=0
  said=$("${@:2}" 2>&1) || status=$?
  ((status == $1)) || fail "${*:2}: $status instead of $1: $said"
}

while read -ra command; do
  ends_with 2 "./${command[0]}" "${command[@]:1}"
  # Besides what the set-up tells.
  (($(grep -vc '^-- ' <<<"$said") == 1)) || fail "${command[*]}: not one line: $said"
done <<'ROWS'
run.sh --scene
run.sh --scene nothing
run.sh --seconds 601
test.sh unit
test.sh -R
test.sh -R nothing
test.sh -j x
dev
dev nothing
dev format lint
release.sh HEAD HEAD
scripts/build.sh
scripts/build.sh nothing
scripts/setup.sh nothing
scripts/sandbox.sh
scripts/sandbox.sh --limit 0 -- true
packaging/installer.sh nothing
packaging/sign.sh nothing
scripts/in-sandbox.sh --initialise-prefix
demo/scene.sh offered patch 0 output build
ROWS

sandbox=(scripts/sandbox.sh --name scripts --display none)
ends_with 0 "${sandbox[@]}" -- true
ends_with 3 "${sandbox[@]}" -- wine cmd /c exit 3
ends_with 124 "${sandbox[@]}" --limit 1 -- sleep 20
ends_with 2 "${sandbox[@]}" -- wineserver --kill
[[ $said == *'has crashed'* ]] || fail "the end of the Wine server is not noticed: $said"
exit "$failed"
