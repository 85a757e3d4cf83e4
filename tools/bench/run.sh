#!/bin/bash
# Usage: tools/bench/run.sh [ROUNDS [PROGRAM]…]
#
# Measures the utility, the floor (floor.cpp) and each PROGRAM, another build of the utility, in ROUNDS rounds (default:
# 20) of a start-up check, of start-up checks of long lists, and of the first window. Prints a table and, because most of
# a run consists of them, the requests of one check to the Wine server.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../../scripts/lib.sh"
check_usage 0 "$@"
rounds=${1:-20}
[[ $rounds =~ ^[1-9][0-9]{0,3}$ ]] || die "not a number of rounds: $rounds"
tree=$build_root/release

if [[ -z ${TAVREL_SANDBOX-} ]]; then
  programs=()
  for program in "${@:2}"; do
    [[ -f $program ]] || die "no program: $program"
    programs+=("$(realpath -- "$program")")
  done
  "$repo/scripts/setup.sh"
  "$repo/scripts/build.sh" release QRTTavrelUtility standins floor measure >&2
  # On one processor, because requests to the Wine server across two make times scatter by a third.
  processor=$(taskset --cpu-list --pid $$ | grep -o '[0-9]*$')
  exec taskset --cpu-list "$processor" "$repo/scripts/sandbox.sh" --name bench --limit 7200 -- \
    "$repo/demo/scene.sh" matching patch 0 "$build_root/bench" "$tree" "$0" "$rounds" "${programs[@]}"
fi

programs=("$tree/tools/bench/floor.exe" "$tree/QRTTavrelUtility.exe" "${@:2}")
measured=$TAVREL_TMP/measured

# Other load on the machine affects all programs alike: they take turns in each round, in rotating order.
measure() { # SCENE [2]
  local round turn i result
  say "$1"
  for ((round = 0; round <= rounds; ++round)); do
    for ((turn = 0; turn < ${#programs[@]}; ++turn)); do
      i=$(((turn + round) % ${#programs[@]}))
      result=$(wine "$tree/tools/bench/measure.exe" "Z:${programs[i]}" "${@:2}")
      # The first round fills the caches.
      ((round == 0)) || printf '%s\t%d %s\t%s\n' "$1" "$i" "${programs[i]##*/}" "${result%$'\r'}" >>"$measured"
    done
  done
}

offer_packs() {
  {
    printf '[Update Packs for Versions]\r\n'
    seq --format=$'[Varnexa15_0_1_%.0f]\r\nSize=1\r' "$1"
  } >"$TAVREL_TMP/scene/www/qrt15/updates.ini"
}

traced_requests() { grep -cE '^[0-9a-f]+: [a-z_0-9]+\( ' "$TAVREL_SANDBOX/log/wine.log" || true; }

rm -f "$measured"
for packs in 1 1000 10000 100000; do
  offer_packs "$packs"
  measure "start-up check, packs: $packs" 2
done
measure 'first window'
echo '| what | program | lower quartile, ms | median, ms | upper quartile, ms | memory, KiB | median over floor |'
echo '|---|---|---:|---:|---:|---:|---:|'
datamash --sort groupby 1,2 q1 3 median 3 q3 3 median 4 <"$measured" |
  awk -F'\t' '$2 ~ /^0/ { floor = $4 }
    { printf "| %s | %s | %.1f | %.1f | %.1f | %d | %.2f |\n", $1, substr($2, 3), $3, $4, $5, $6, $4 / floor }'
# The server traces from the first such run on, so these come last.
offer_packs 1
for program in "${programs[@]}"; do
  before=$(traced_requests)
  # Wine traces nothing for a program whose standard error is /dev/null.
  WINEDEBUG=-all,+server wine "$program" 2 2>"$TAVREL_TMP/errors"
  printf '%s: %d requests\n' "${program##*/}" "$(($(traced_requests) - before))"
done
