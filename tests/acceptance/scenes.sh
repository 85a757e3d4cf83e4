#!/bin/bash
# Runs the demo's scenes as start-up checks with nginx and looks at what they leave.
#   scenes.sh ARCH BUILD [SCENE]…
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../../scripts/lib.sh"
check_usage 2 "$@"

# All scenes run in one sandbox.
if [[ -z ${TAVREL_SANDBOX-} ]]; then exec "$repo/scripts/sandbox.sh" --name scenes --arch "$1" -- "$0" "$@"; fi
arch=$1 build=$(realpath -- "$2") wanted=("${@:3}") failures=0
output=$build/tests/acceptance/scenes-$arch
wire='Host: updates.varnexa.example, User-Agent: QRT_15_TavrelUtility, Accept: text/[*]'

# What the run has left: number of windows, status of the answer to the one request, 1 if the log file has LINE.
seen() {  # LINE
  local windows status lines
  windows=$(find "$output" -name 'picture-*.png' | wc -l)
  status=$(sed "s|^\"GET /qrt15/updates.ini HTTP/1.1\" \([0-9]*\), $wire,.*|\1|; t; s/.*/?/" "$output/requests.log")
  lines=$(find "$output" -name 'QRT_15*.log' -exec cat {} + | grep -cFx -- "$1"$'\r')
  echo "$windows $status $lines"
}

scene() {  # NAME WINDOWS STATUS LINE
  local expected="$2 $3 $((${#4} > 0))"
  if ((${#wanted[@]})) && [[ " ${wanted[*]} " != *" $1 "* ]]; then return; fi
  timeout --foreground 60 "$repo/demo/scene.sh" "$1" patch 0 "$output" "$build" || true
  [[ $(seen "$4") == "$expected" ]] && return
  printf '%s, %s: expected "%s", saw "%s"\n' "$arch" "$1" "$expected" "$(seen "$4")" >&2
  failures=1
}

scene offered 1 200 'Update details found. Exit code 3.'
scene not-found-ignored 0 404 ' Error : 404'
scene no-network 1 '' 'Connect to the server not successful.'
scene server-down 1 '' ' Error : 12029'
scene unknown-host 1 '' ' Error : 12007'
scene no-settings 1 200 'Server settings INI validation failed.'
scene fall-back 1 200 'Registered data entries check, Reading alternative tag one path completed.'
scene updates-off 0 '' ''
exit $failures
