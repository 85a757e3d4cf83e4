#!/bin/bash
# Usage: scripts/build.sh [--configure] PRESET [TARGET]…
#
# Configures and builds one of the presets in CMakePresets.json, in build/PRESET, or below TAVREL_BUILD_ROOT where
# that names another folder than build. With --configure it does not build.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/lib.sh"

build=yes
case ${1-} in
  --help | -h) usage; exit ;;
  --configure) build=no; shift ;;
  -*) die "unknown option: $1; scripts/build.sh --help tells more" ;;
esac
preset=${1-}
[[ -n $preset ]] || die "names no preset; scripts/build.sh --help tells more"
shift
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
exec cmake --build "$tree" ${1:+--target "$@"}
