#!/bin/bash
# Runs a command in a sandbox room: see the usage text below.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

usage() {
  cat <<'EOF'
Usage: scripts/sandbox.sh [OPTION]… -- COMMAND [ARGUMENT]…
       scripts/sandbox.sh [--arch ARCH] --prepare

Runs COMMAND in a room: a loopback network of its own (nothing reaches another machine, port 80 is free
for every user), an /etc/hosts and a /tmp of its own, a display and a Wine prefix; of the machine's files
only this clone and its build folder can be written. Whatever COMMAND leaves running ends with it, and
the room with whoever called this script. Commands in one room wait for each other. The prefix stays for
the next one, but for that of a run that was ended early: it is made anew.
COMMAND's exit code is handed on; 124 when its time was over.

  --name NAME      the room (default: TAVREL_PREFIX_NAME or main); rooms share nothing with each other
  --arch ARCH      kind of Wine prefix: win32 (default: TAVREL_ARCH or this) or win64
  --display KIND   virtual (default), desktop (the one that DISPLAY names) or none
  --hosts FILE     hosts file of the room (default: demo/hosts); COMMAND may write to its copy, /etc/hosts
  --limit SECONDS  longest run of COMMAND (default: TAVREL_LIMIT or 600)
  --prepare        only makes what every room of this kind of prefix starts from, if it is missing

COMMAND finds the room's folder in TAVREL_ROOM (prefix/, log/) and the kind of display in TAVREL_DISPLAY.
EOF
}

name=${TAVREL_PREFIX_NAME:-main}
arch=${TAVREL_ARCH:-win32}
display=virtual
hosts=$repo/demo/hosts
limit=${TAVREL_LIMIT:-600}
action=run
while (($#)); do
  case $1 in
    --name | --arch | --display | --hosts | --limit)
      (($# > 1)) || die "$1 needs a value"
      declare "${1#--}=$2"
      shift 2 ;;
    --prepare) action=prepare; shift ;;
    --help | -h) usage; exit 0 ;;
    --) shift; break ;;
    *) usage >&2; exit 2 ;;
  esac
done
[[ $arch == win32 || $arch == win64 ]] || die "unknown kind of prefix: $arch"
[[ $display == virtual || $display == desktop || $display == none ]] || die "unknown display: $display"
[[ $name =~ ^[A-Za-z0-9_.-]+$ ]] || die "a room's name is letters, digits, '_', '.' and '-': $name"
[[ $action == prepare ]] || (($#)) || { usage >&2; exit 2; }

wine_version=$(wine --version)
root=$build_root/sandbox
room=$root/$name-$arch
template=$root/template-$arch

# Every process of a room inherits its lock: it is free again when the last of them has ended.
lock_room() {
  local lock
  mkdir -p "$1/home" "$1/log"
  exec {lock}>"$1.lock"
  if ! flock --nonblock "$lock"; then
    say "Waiting for the command that runs in $1"
    flock --wait 300 "$lock" || die "the room $1 has been in use for too long"
  fi
}

# A prefix is whole when its last run ended in good order and had the Wine that is installed now.
is_whole() { [[ -e $1/whole && $(<"$1/whole") == "$wine_version" ]]; }

# Becomes the first process of the room $1, which runs a command: DISPLAY SECONDS COMMAND…
enter_room() {
  local folder mounts=() room=$1
  shift
  cp "$hosts" "$room/hosts"
  # Names come from the hosts file and from nowhere else.
  sed 's/^hosts:.*/hosts: files/' /etc/nsswitch.conf >"$room/nsswitch.conf"
  if [[ -d /run/nscd ]]; then mounts+=(--tmpfs /run/nscd); fi
  if [[ $1 == desktop ]]; then
    mounts+=(--ro-bind /tmp/.X11-unix /tmp/.X11-unix --setenv XAUTHORITY /tmp/xauthority
      --ro-bind-try "${XAUTHORITY:-$HOME/.Xauthority}" /tmp/xauthority)
  else
    mounts+=(--unsetenv DISPLAY --unsetenv XAUTHORITY)
  fi
  for folder in "$repo" "$build_root"; do mounts+=(--bind "$folder" "$folder"); done
  export HOME=$room/home WINEPREFIX=$room/prefix WINEARCH=$arch TAVREL_ROOM=$room
  export WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
  # The locale fixes the ANSI code page of the prefix (1252). Wine 10 frees what it got from TMPDIR.
  export LANG=C.UTF-8 LC_ALL=C.UTF-8
  unset TMPDIR WINESERVER WINELOADER XDG_RUNTIME_DIR WAYLAND_DISPLAY
  # Root finds read-only what is so for others.
  # A devices folder of the room's own (--dev) would come with a second user namespace, in which an ordinary
  # user has no right to port 80.
  exec bwrap --die-with-parent --unshare-net --unshare-pid --cap-add CAP_NET_BIND_SERVICE \
    --cap-drop CAP_DAC_OVERRIDE \
    --ro-bind / / --dev-bind /dev /dev --proc /proc --perms 1777 --tmpfs /tmp "${mounts[@]}" \
    --bind "$room/hosts" /etc/hosts --ro-bind "$room/nsswitch.conf" /etc/nsswitch.conf \
    --chdir "$PWD" -- "$repo/scripts/room.sh" "$wine_version" "$@"
}

# A prefix of each kind is made once, in a room of its own, and copied from then on.
make_template() (
  new=$root/new-$arch
  is_whole "$template" && return
  lock_room "$new"
  is_whole "$template" && return
  say "Making a $arch Wine prefix (once, about a quarter of a minute)"
  rm -rf "$template" "$new/prefix"
  (enter_room "$new" none 60 "$repo/scripts/room.sh" --furnish) >"$new/log/furnish.log" ||
    die "making a Wine prefix failed; see $new/log"
  # What a power cut leaves of it must not look whole.
  sync --file-system "$new"
  mv "$new" "$template"
)

copy_template() {
  rm -rf "$room/prefix"
  # Wine's own files are most of a prefix and only read: linked, but for the few that programs write.
  cp -al "$template/prefix" "$room/prefix"
  find "$room/prefix" -type f \( ! -path '*/drive_c/windows/*' -o ! -size +16k \) -print0 |
    xargs -0 bash -c 'for file; do cp -p "$file" "$file.own" && mv "$file.own" "$file"; done' own
}

mkdir -p "$root"
make_template
[[ $action == run ]] || exit 0
lock_room "$room"
if ! is_whole "$room"; then copy_template; fi
enter_room "$room" "$display" "$limit" "$@"
