#!/bin/bash
# Usage: tools/bench/run.sh [--document] [ROUNDS [PROGRAM.exe]…]
#
# Measures whole runs of the utility in the sandbox, in each round beside the smallest programs that make the same
# system calls (tools/bench/floor.cpp) and beside PROGRAM, which can be another build of the utility; any other program
# is measured in the silent scenes only. ROUNDS is 20 unless given. Every measurement, a summary, its tables and its
# plots are left in build/bench/; the tables are printed. With --document they go into docs/performance.md and
# docs/performance/ as well. Only figures of one run can be compared, except the requests.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "$(readlink -f -- "$0")")/../../scripts/lib.sh"

case ${1-} in
  --help | -h) usage; exit ;;
esac
document=
if [[ ${1-} == --document ]]; then
  document=yes
  shift
fi
rounds=${1:-20}
[[ $rounds =~ ^[1-9][0-9]*$ ]] || die "not a number of rounds: $rounds"
programs=()
for program in "${@:2}"; do programs+=("Z:$(realpath -- "$program")"); done

"$repo/scripts/setup.sh" --with gnuplot-nox --with python3
"$repo/scripts/build.sh" release tavrel_bench >&2
out=$build_root/bench
mkdir -p "$out"
# Everything runs on one processor, the last that this process may use: requests to the Wine server across two
# processors make times scatter by a third.
processor=$(taskset --cpu-list --pid $$ | grep -o '[0-9]*$')
bench=$build_root/release/tools/bench/tavrel_bench.exe
run_bench() { # OUTPUT ARGUMENT…
  taskset --cpu-list "$processor" "$repo/scripts/sandbox.sh" --name bench --arch win32 --limit 7200 -- \
    "$repo/tools/bench/cpu_time.py" "$out/cpu-time" wine "$bench" "${@:2}" "${programs[@]}" >"$1"
}
run_bench "$out/measured.csv" "$rounds"
# The server's trace is in the sandbox's log. Tracing lasts as long as the server, so these runs come last.
run_bench "$out/traced.csv" requests
awk -F, -f "$repo/tools/bench/requests.awk" "$out/traced.csv" "$build_root/sandbox/bench-win32/log/wine.log" \
  >"$out/requests.csv"
"$repo/tools/bench/report.sh" "$out" "$rounds"
cat "$out/figures.md"
[[ $document ]] || exit 0

mkdir -p "$repo/docs/performance"
cp "$out/summary.csv" "$out"/*.svg "$repo/docs/performance/"
page=$repo/docs/performance.md
{
  sed '/^<!-- figures:/q' "$page"
  cat "$out/figures.md"
  sed -n '/^<!-- end of figures -->/,$p' "$page"
} >"$out/performance.md"
cp "$out/performance.md" "$page"
say "Written: $page"
