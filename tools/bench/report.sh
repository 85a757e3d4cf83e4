#!/bin/bash
# Makes a summary, tables and plots of what tools/bench/run.sh measured: report.sh FOLDER ROUNDS
# FOLDER holds measured.csv and gets summary.csv, figures.md, scenes.svg and growth.svg.
set -euo pipefail
cd "$(dirname -- "${BASH_SOURCE[0]}")"
folder=$1
rounds=$2

# Of each scene, size and program: median and shortest time, mean of the processor time, memory at most. Retries
# are put together by fifty.
{
  echo kind,scene,x,program,runs,median ms,shortest ms,processor ms,KiB
  tr -d '\r' <"$folder/measured.csv" |
    awk -F, -v OFS=, '$1 == "retry" { $3 = int(($3 + 49) / 50) * 50 } $1 != "facts" { $5 = ""; print }' |
    sort -t, -k1,1r -k2,2 -k3,3n -k4,4 -k6,6n |
    awk -F, -v OFS=, '
      function flush() { if (n) print key, n, time[int((n + 1) / 2)], time[1], processor / n, memory }
      { next_key = $1 FS $2 FS $3 FS $4 }
      next_key != key { flush(); key = next_key; n = processor = memory = 0 }
      { time[++n] = $6; processor += $7; if ($8 > memory) memory = $8 }
      END { flush() }'
} >"$folder/summary.csv"

machine() {
  # shellcheck disable=SC2016
  printf 'Measured by `tools/bench/run.sh --document %s` on %s, with %s, %s, %s and %s.\n' "$rounds" \
    "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | uniq | head -n 1 | sed 's/([^)]*)//g'), $(nproc) cores" \
    "$(awk '/MemTotal/ { printf "%.0f GiB of memory", $2 / 1048576 }' /proc/meminfo)" \
    "$(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' /etc/os-release)" "$(wine --version 2>/dev/null)" \
    "g++ $(i686-w64-mingw32-g++-posix -dumpversion)"
}

{
  machine
  echo
  tr -d '\r' <"$folder/measured.csv" | awk -F, '
    $1 != "facts" { next }
    !($4 in size) { order[++n] = $4 }
    { size[$4] = $3; libraries[$4, $2] = $5 }
    END {
      print "| program | bytes | libraries of a silent check | of a sheet |"
      print "|---|---:|---:|---:|"
      for (i = 1; i <= n; ++i) {
        p = order[i]
        printf "| %s | %d | %s | %s |\n", p, size[p], libraries[p, "silent check"], libraries[p, "sheet"]
      }
    }'
  echo
  awk -F, -f ratios.awk "$folder/summary.csv"
  echo
  awk -F, -f growth.awk "$folder/summary.csv"
} >"$folder/figures.md"

gnuplot -e "folder='$folder'" plots.gp
