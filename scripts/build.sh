#!/bin/bash
# Configures and builds: build.sh PRESET [TARGET]…; what is up to date is left as it is.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

preset=$1
shift
tree=$build_root/$preset
say "Building the preset '$preset' in $tree"
mkdir -p "$build_root"
cd "$repo"
if [[ ! -e $tree/build.ninja ]] &&
  ! cmake --preset "$preset" -B "$tree" >"$tree.configure.log" 2>&1; then
  cat "$tree.configure.log" >&2
  die "configuring failed"
fi
exec cmake --build "$tree" ${1:+--target "$@"}
