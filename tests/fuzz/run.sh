#!/bin/bash
# Fuzzes every parser of the pure part, two at a time, for HOURS (or --seconds N; 20 unless given) in all:
#   tests/fuzz/run.sh [HOURS | --seconds N]
# What was found interesting stays in build/fuzz/corpus for the next run. An input that breaks a rule is printed
# as a row of tests/unit/rows.txt has it and kept in build/fuzz/found; the exit code is then 1.
# TAVREL_FUZZ_BUILD names another build folder.
set -euo pipefail
cd -- "$(dirname -- "$0")/../.."
build=$(realpath -m -- "${TAVREL_FUZZ_BUILD:-build/fuzz}")
seconds=20
case ${1:-} in
  --seconds) seconds=$2 ;;
  ?*) seconds=$(awk -v hours="$1" 'BEGIN { printf "%d", hours * 3600 }') ;;
esac

cmake --preset fuzz -B "$build" >/dev/null
cmake --build "$build" --target tavrel_fuzz
fuzz=$build/tests/fuzz/tavrel_fuzz
mapfile -t parsers < <("$fuzz")
rm -rf -- "$build/seeds" "$build/found"
mkdir -p -- "$build/seeds" "$build/found"

# The seeds are the inputs of the unit tests' rows.
number=0
while IFS= read -r row; do
  printf '%b' "$row" >"$build/seeds/$((++number))"
done < <(sed -n 's/\(.*\) =>.*/\1/p' tests/unit/rows.txt)
printf -- '-- Fuzzing %d parsers for %d s, %d seeds\n' ${#parsers[@]} "$seconds" "$number"

fuzz_one() {
  local parser=$1 corpus=$build/corpus/$1 log=$build/$1.log
  mkdir -p -- "$corpus"
  if TAVREL_PARSER=$parser "$fuzz" -max_total_time="$each" -max_len=1024 -timeout=10 -print_final_stats=1 \
    -artifact_prefix="$build/found/$parser-" "$corpus" "$build/seeds" >"$log" 2>&1; then
    printf '%-10s %s executions\n' "$parser" "$(sed -n 's/^stat::number_of_executed_units: //p' "$log")"
    return
  fi
  grep -m1 -E 'Assertion|ERROR: |runtime error: ' "$log" || tail -n 5 "$log"
  for input in "$build/found/$parser-"*; do
    printf '%-10s broken by ' "$parser"
    TAVREL_SHOW=1 TAVREL_PARSER=$parser "$fuzz" -timeout=10 "$input" 2>/dev/null | sed -n 's/^row //p'
  done
  return 1
}
export -f fuzz_one
export build fuzz each=$((seconds * 2 / ${#parsers[@]} + (seconds < 5)))
printf '%s\n' "${parsers[@]}" | xargs -P 2 -I{} bash -c 'fuzz_one {}' || exit 1
