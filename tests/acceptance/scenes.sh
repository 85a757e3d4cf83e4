#!/bin/bash
# Runs the demo's scenes in patch verification mode with nginx and compares the results with scenes.txt.
#   scenes.sh ARCH BUILD [SCENE]…
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "$(readlink -f -- "$0")")/../../scripts/lib.sh"
check_usage 2 "$@"

# All scenes run in one sandbox.
if [[ -z ${TAVREL_SANDBOX-} ]]; then exec "$repo/scripts/sandbox.sh" --name scenes --arch "$1" -- "$0" "$@"; fi
arch=$1 build=$(realpath -- "$2") failures=0
output=$build/tests/acceptance/scenes-$arch
wire='Host: updates.varnexa.example, User-Agent: QRT_15_TavrelUtility, Accept: text/[*]'

# The table in the form that tests/support/table.h describes.
table=$(sed -z 's/\n    //g' "${0%.sh}.txt" | sed '/^#/d; /^$/d')
[[ $(awk -F';' 'NF != 5' <<<"$table") == '' ]] || die "a row of scenes.txt has not five columns"
(($# == 2)) || table=$(for name in "${@:3}"; do grep "^$name;" <<<"$table" || die "no scene '$name'"; done)

count() { find "$output" -name "$1" | wc -l; }
# Prints the scene's results as a row of the table; the line only if the log file has it, once and with CRLF.
seen() {
  local status
  status=$(sed "s|^\"GET /qrt15/updates.ini HTTP/1.1\" \([0-9]*\), $wire,.*|\1|; t; s/.*/?/" "$output/requests.log")
  [[ $(cat "$output"/*.log | grep -cFx -- "$line"$'\r') == 1 ]] || line=
  printf '%s;%s;%s;%s;%s' "$scene" "$(count 'picture-*.png')" "$status" "$(count installedupdates.dat)" "$line"
}

while IFS=';' read -r scene windows status record line; do
  printf -v line %b "$line"
  expected="$scene;$windows;$status;$record;$line"
  timeout --foreground 60 "$repo/demo/scene.sh" "$scene" patch 0 "$output" "$build" || true
  [[ $(seen) == "$expected" ]] && continue
  printf '%s: expected "%s", saw "%s"\n' "$arch" "$expected" "$(seen)" >&2
  failures=1
done <<<"$table"
exit $failures
