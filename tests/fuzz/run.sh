#!/bin/bash
# Usage: tests/fuzz/run.sh SECONDS
#
# Fuzzes the parsers of fuzz.cpp in two processes for SECONDS. Inputs that reached new code stay in
# build/fuzz/corpus for the next run. An input that breaks an invariant is printed as a row for tests/unit/*.txt and
# kept in build/fuzz/found; the run then fails.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../../scripts/lib.sh"

case ${1-} in
  --help | -h) usage; exit ;;
esac
[[ ${1-} =~ ^[1-9][0-9]{0,5}$ ]] || die "not a number of seconds: '${1-}'; tests/fuzz/run.sh --help tells more"
build=$build_root/fuzz
cd "$repo"
cmake --preset fuzz -B "$build" >/dev/null
cmake --build "$build" --target tavrel_fuzz
rm -rf -- "$build/seeds" "$build/found"
mkdir -p -- "$build/seeds" "$build/found" "$build/corpus"

# The seeds are the inputs of the unit tests' rows, each for each of the six parsers, and the log's entries.
number=0
while IFS= read -r row; do
  number=$((number + 1))
  for parser in {0..5}; do printf '%b' "$parser$row" >"$build/seeds/$number-$parser"; done
done < <(sed -z 's/\n    //g' tests/unit/*.txt | sed -n '/^#/d; s/;[^;]*$//p')
# 5: the reader of logs.
sed -n 's/^| `\([^`]*\)`.*/\1 2/p' docs/log.md |
  split -l 8 --filter='(printf 5; cat) >"$FILE"' - "$build/seeds/log-"
cd -- "$build"
tests/fuzz/tavrel_fuzz -jobs=2 -workers=2 -max_total_time="$1" -max_len=1024 -timeout=10 -verbosity=0 \
  -print_final_stats=1 -artifact_prefix=found/ corpus seeds && exit
TAVREL_SHOW=1 tests/fuzz/tavrel_fuzz -timeout=10 found/* 2>/dev/null | sed -n 's/^row /Broken by /p'
exit 1
