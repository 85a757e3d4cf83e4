#!/bin/bash
# Shared by the scripts of this project: sourced, never run.

repo=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
export repo
# The login path of an ordinary user leaves out the folders where Debian keeps nginx and fuser.
PATH=$PATH:/usr/sbin:/sbin
# Everything that is built, and everything that the sandbox keeps, is below this folder.
build_root=$(realpath -m -- "${TAVREL_BUILD_ROOT:-$repo/build}")
export build_root

say() { printf -- '-- %s\n' "$*" >&2; }

die() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 2
}

# Prints the script's usage text: the comment at its top.
usage() { sed -n '2,/^[^#]/s/^#\( \|$\)//p' "$0"; }

# Prints the usage text for --help, and ends with 2 when there are too few arguments: check_usage COUNT "$@"
check_usage() {
  local count=$1
  shift
  if [[ ${1-} == --help || ${1-} == -h ]]; then
    usage
    exit
  fi
  (($# >= count)) || die "needs at least $count argument(s); $0 --help tells more"
}

make_build_root() {
  mkdir -p "$build_root" 2>/dev/null && [[ -w $build_root ]] ||
    die "cannot write to $build_root; set TAVREL_BUILD_ROOT to a folder that can be written"
}

# Prints the kind of sandbox that is possible here. "bubblewrap" needs the right to create namespaces. "plain" (one
# sandbox at a time, on the machine's own network) is for containers that forbid namespaces; it needs the right to
# use port 80. If neither is possible, prints bubblewrap's error message and fails.
sandbox_kind() {
  local refusal unprivileged_port
  if refusal=$(bwrap --ro-bind / / --proc /proc --unshare-net --unshare-pid true 2>&1); then
    echo bubblewrap
    return
  fi
  unprivileged_port=$(</proc/sys/net/ipv4/ip_unprivileged_port_start)
  if ((EUID == 0 || unprivileged_port <= 80)); then echo plain; else echo "$refusal"; return 1; fi
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
