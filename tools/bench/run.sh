#!/bin/bash
# Measures whole runs of the utility in the sandbox, beside the barest programs that make the same system calls
# (tools/bench/floor.cpp) and beside other builds of the utility, turn by turn in the same rounds:
#   tools/bench/run.sh [--document] [ROUNDS [PROGRAM.exe]…]
# ROUNDS is 20 unless given. Every measurement, a summary, its tables and its plots are left in build/bench/;
# the tables are printed. With --document they go into docs/performance.md and docs/performance/ as well.
# Figures of one run compare; those of two runs or machines do not.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

document=
if [[ ${1-} == --document ]]; then
  document=yes
  shift
fi
rounds=${1:-20}
[[ $rounds =~ ^[1-9][0-9]*$ ]] || die "not a number of rounds: $rounds"
command -v gnuplot >/dev/null || die "the plots need gnuplot: apt-get install gnuplot-nox"
programs=()
for program in "${@:2}"; do programs+=("Z:$(realpath -- "$program")"); done

"$repo/scripts/setup.sh"
"$repo/scripts/build.sh" release tavrel_bench >&2
out=$build_root/bench
mkdir -p "$out"
"$repo/scripts/sandbox.sh" --name bench --limit 7200 -- \
  wine "$build_root/release/tools/bench/tavrel_bench.exe" "$rounds" "${programs[@]}" >"$out/measured.csv"
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
