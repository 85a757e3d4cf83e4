# shellcheck shell=bash
# Shared by the scripts of this project: sourced, never run.

repo=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
export repo
# A login's path of an ordinary user leaves out where Debian keeps nginx.
PATH=$PATH:/usr/sbin:/sbin
# Everything that is built, and everything that the sandbox keeps, lies below this folder.
build_root=$(realpath -m -- "${TAVREL_BUILD_ROOT:-$repo/build}")
export build_root

say() { printf -- '-- %s\n' "$*" >&2; }

die() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 2
}

# Waits until COMMAND succeeds: wait_until SECONDS COMMAND…; fails when the time is over.
wait_until() {
  local end=$((SECONDS + $1))
  shift
  until "$@"; do
    ((SECONDS < end)) || return 1
    sleep 0.1
  done
}
