#!/bin/bash
# Plays the demo's scenes in patch verification mode with nginx and compares what is to be seen from outside:
# windows, requests, record, log file.   scenes.sh ARCH BUILD [SCENE]…
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

arch=$1 build=$(realpath -- "$2")
shift 2
output=$build/tests/acceptance/scenes-$arch
sandbox=("$repo/scripts/sandbox.sh" --name scenes --arch "$arch" --limit 60)
wire='Host: updates.varnexa.example, User-Agent: QRT_15_TavrelUtility, Accept: text/[*]'
failures=0

# scene | windows shown | status answered to the one request | record left | a line of the log file
table='
offered          |1|200|0|Update details found. Exit code 3.
matching         |0|200|0|The available updates are matching with existing information.
none             |0|200|0|Update details not found.Exit code 3.
record-ahead     |1|200|0|Processed Installer update file exists in local.
record-covering  |0|200|1|Update details not found.Exit code 1.
record-older     |1|200|1|Update details found. Exit code 1.
record-empty     |1|200|1|Update details found. Exit code 2.
not-found        |1|404|0| Error : 404
not-found-ignored|0|404|0| Error : 404
error-500        |1|500|0|500
no-network       |1|   |0|Connect to the server not successful.
server-down      |1|   |0| Error : 12029
unknown-host     |1|   |0| Error : 12007
host-mismatch    |1|   |0| Error : Server settings INI information mismatch.
url-mode         |1|   |0|Entering inside "UPDATE_LOC_URL" mode 
missing-facts    |1|   |0|Registered data entries check, Reading tag three query failed.
not-installed    |1|   |0|Registered data entries check, Reading tag one failed to open.
no-settings      |1|200|0|Server settings INI validation failed.
fall-back        |1|200|0|Registered data entries check, Reading alternative tag one path completed.
updates-off      |0|   |0|
'

# What the scene left, in the table's own form; the line only if the log file has it, once and with CRLF.
seen() {
  local windows record found='' status
  windows=$(find "$output" -name 'picture-*.png' -printf x)
  record=$(find "$output" -name installedupdates.dat -printf x)
  status=$(sed -n "s|^\"GET /qrt15/updates.ini HTTP/1.1\" \([0-9]*\), $wire,.*|\1|p; t; s/.*/?/p" "$output/requests.log")
  if [[ $(cat "$output"/QRT_15_SystemTavrel_*.log 2>/dev/null | grep -cFx -- "$line"$'\r') == 1 ]]; then found=$line; fi
  printf '%d|%s|%d|%s' ${#windows} "$status" ${#record} "$found"
}

while IFS='|' read -r scene windows status record line; do
  scene=${scene// /}
  if [[ -z $scene ]] || { (($#)) && [[ " $* " != *" $scene "* ]]; }; then continue; fi
  expected="$windows|${status// /}|$record|$line"
  "${sandbox[@]}" -- "$repo/demo/play.sh" "$scene" patch 0 "$output" "$build" || true
  [[ $(seen) == "$expected" ]] && continue
  printf '%s (%s): expected "%s", saw "%s"\n' "$scene" "$arch" "$expected" "$(seen)" >&2
  failures=$((failures + 1))
done <<<"$table"
"${sandbox[@]}" --close
exit $((failures > 0))
