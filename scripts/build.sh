#!/bin/bash
# Usage: scripts/build.sh [--configure] PRESET [TARGET]…
#
# Configures and builds one of the presets in CMakePresets.json, in build/PRESET, or below TAVREL_BUILD_ROOT where
# that names another folder than build. With --configure it does not build.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/lib.sh"

check_usage 1 "$@"
build=yes
if [[ $1 == --configure ]]; then
  build=no
  shift
fi
preset=${1-}
cd "$repo"
cmake --list-presets | grep -qF "\"$preset\"" || die "unknown preset: $preset; cmake --list-presets names them"
tree=$build_root/$preset
make_build_root
if [[ ! -e $tree/build.ninja ]] &&
  ! cmake --preset "$preset" -B "$tree" >"$tree.configure.log" 2>&1; then
  cat "$tree.configure.log" >&2
  die "configuring failed"
fi
[[ $build == yes ]] || exit 0
say "Building the preset '$preset' in $tree"
exec cmake --build "$tree" ${2:+--target "${@:2}"}
