#!/bin/bash
# Measures whole runs of the utility in the sandbox, beside other builds of it:
#   tools/bench/run.sh [ROUNDS [PROGRAM.exe]…]
# ROUNDS is 20 unless given. Prints, for each scene and program, the median and the longest time and the memory
# taken at most. Figures of one run compare; those of two runs or machines do not.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

"$repo/scripts/setup.sh"
"$repo/scripts/build.sh" release tavrel_bench >&2
programs=()
for program in "${@:2}"; do programs+=("Z:$(realpath -- "$program")"); done
exec "$repo/scripts/sandbox.sh" --name bench -- \
  wine "$build_root/release/tools/bench/tavrel_bench.exe" "${1:-20}" "${programs[@]}"
