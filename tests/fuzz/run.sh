#!/bin/bash
# Usage: tests/fuzz/run.sh SECONDS
#
# Fuzzes the parsers of fuzz.cpp in two processes for SECONDS. Inputs that reached new code stay in
# build/fuzz/corpus for the next run. An input that breaks an invariant is printed as a row for tests/unit/*.txt and
# kept in build/fuzz/found; the run then fails.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../../scripts/lib.sh"

check_usage 1 "$@"
[[ $1 =~ ^[1-9][0-9]{0,5}$ ]] || die "not a number of seconds: '$1'; tests/fuzz/run.sh --help tells more"
build=$build_root/fuzz
cd "$repo"
cmake --preset fuzz -B "$build" >/dev/null
cmake --build "$build" --target tavrel_fuzz
rm -rf -- "$build/seeds" "$build/found"
mkdir -p -- "$build/seeds" "$build/found" "$build/corpus"
cd -- "$build"
TAVREL_SEEDS=seeds tests/tavrel_fuzz -runs=0 -verbosity=0
tests/tavrel_fuzz -jobs=2 -workers=2 -max_total_time="$1" -max_len=1024 -timeout=10 -verbosity=0 \
  -print_final_stats=1 -artifact_prefix=found/ corpus seeds && exit
TAVREL_SHOW=1 tests/tavrel_fuzz -timeout=10 found/* 2>/dev/null | sed -n 's/^row /Broken by /p'
exit 1
