#!/bin/bash
# Usage: tools/bench/run.sh [--document] [ROUNDS [PROGRAM.exe]…]
#
# Measures whole runs of the utility in the sandbox, in each round beside the smallest programs that make the same
# system calls (tools/bench/floor.cpp) and beside other builds of the utility. ROUNDS is 20 unless given. Every
# measurement, a summary, its tables and its plots are left in build/bench/; the tables are printed. With --document
# they go into docs/performance.md and docs/performance/ as well. Figures of one run compare; those of two runs or
# machines do not.
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
command -v gnuplot >/dev/null || die "the plots need gnuplot: apt-get install gnuplot-nox"
programs=()
for program in "${@:2}"; do programs+=("Z:$(realpath -- "$program")"); done

"$repo/scripts/setup.sh"
[[ $(sandbox_kind) == bubblewrap ]] || die "measuring needs a process namespace, which this system does not permit"
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
