#!/bin/bash
# Makes a summary, tables and plots from what tools/bench/run.sh measured: report.sh FOLDER ROUNDS
# FOLDER holds measured.csv and requests.csv and gets summary.csv, figures.md, scenes.svg and growth.svg.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "$(readlink -f -- "$0")")/../../scripts/lib.sh"
check_usage 2 "$@"
cd "$repo/tools/bench"
folder=$1
rounds=$2

# Of each scene, size and program: the quartiles of the time, the median of the processor time, the largest memory, and
# for scenes the requests. Fifty retries make one row.
{
  echo kind,scene,x,program,runs,shortest ms,lower quartile ms,median ms,upper quartile ms,processor ms,KiB,requests
  tr -d '\r' <"$folder/measured.csv" |
    awk -F, -v OFS=, '$1 == "retry" { $3 = int(($3 + 49) / 50) * 50 } $1 != "facts" { $5 = ""; print }' |
    sort -t, -k1,1r -k2,2 -k3,3n -k4,4 -k6,6n |
    awk -F, -v OFS=, '
      function at(part) { return sprintf("%.2f", time[1 + int((n - 1) * part + 0.5)]) }
      function middle(list, count,    i, j, swap) {
        for (i = 2; i <= count; ++i)
          for (j = i; j > 1 && list[j] < list[j - 1]; --j) { swap = list[j]; list[j] = list[j - 1]; list[j - 1] = swap }
        return list[1 + int((count - 1) / 2 + 0.5)]
      }
      function flush() {
        if (n) print key, n, at(0), at(0.25), at(0.5), at(0.75), middle(processor, n), memory, requests[key]
      }
      FNR == NR { requests["scene" FS $2 FS $3 FS $4] = $5; next }
      { next_key = $1 FS $2 FS $3 FS $4 }
      next_key != key { flush(); key = next_key; n = memory = 0 }
      { time[++n] = $6; processor[n] = $7 + 0; if ($8 + 0 > memory) memory = $8 + 0 }
      END { flush() }' "$folder/requests.csv" -
} >"$folder/summary.csv"

machine() {
  # shellcheck disable=SC2016
  printf 'Measured on %s by `tools/bench/run.sh --document %s` on one processor of %s, with %s, %s, %s and %s.\n' \
    "$(date -u +%Y-%m-%d)" "$rounds" \
    "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | uniq | head -n 1 | sed 's/([^)]*)//g')" \
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

awk -F, -f bars.awk "$folder/summary.csv" >"$folder/bars.dat"
gnuplot -e "folder='$folder'" plots.gp
