#!/bin/bash
# Runs a command in a sandbox room: see the usage text below.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

usage() {
  cat <<'EOF'
Usage: scripts/sandbox.sh [OPTION]… -- COMMAND [ARGUMENT]…
       scripts/sandbox.sh [OPTION]… --prepare | --open | --close | --close-all

Runs COMMAND in a room: a loopback network of its own (nothing reaches another machine, port 80 is free
for every user), an /etc/hosts of its own, a private /tmp, a Wine prefix and a display. A room opens with
the first command in it, is shared by all commands that name it, and closes by itself, ending whatever
still runs in it, when it has been empty for a while (TAVREL_ROOM_IDLE seconds, 30 unless set).
COMMAND's exit code is handed on; 124 when its time was over.

  --name NAME      the room (default: main); rooms share nothing with each other
  --arch ARCH      kind of Wine prefix: win32 (default) or win64
  --display KIND   virtual (default), desktop (the one that DISPLAY names) or none;
                   counts when the room opens
  --hosts FILE     hosts file of the room, default demo/hosts; counts when the room opens
  --root DIR       folder of all rooms (default: build/sandbox)
  --limit SECONDS  longest run of COMMAND (default: TAVREL_LIMIT or 600)
  --prepare        only makes what every room of this kind of prefix starts from, if it is missing
  --open           only opens the room
  --close          closes the room, one in use behind its last command
  --close-all      closes all rooms in this way
  --path           prints the room's folder: prefix/ (the Wine prefix), hosts, log/
EOF
}

name=${TAVREL_PREFIX_NAME:-main}
arch=${TAVREL_ARCH:-win32}
display=virtual
hosts=$repo/demo/hosts
root=$build_root/sandbox
limit=${TAVREL_LIMIT:-600}
action=run
while (($#)); do
  case $1 in
    --name) name=$2; shift 2 ;;
    --arch) arch=$2; shift 2 ;;
    --display) display=$2; shift 2 ;;
    --hosts) hosts=$2; shift 2 ;;
    --root) root=$(realpath -m -- "$2"); shift 2 ;;
    --limit) limit=$2; shift 2 ;;
    --prepare | --open | --close | --close-all | --path) action=${1#--}; shift ;;
    --help | -h) usage; exit 0 ;;
    --) shift; break ;;
    *) usage >&2; exit 2 ;;
  esac
done
[[ $arch == win32 || $arch == win64 ]] || die "unknown kind of prefix: $arch"
[[ $display == virtual || $display == desktop || $display == none ]] || die "unknown display: $display"
[[ $name =~ ^[A-Za-z0-9_.-]+$ ]] || die "a room's name is letters, digits, '_', '.' and '-': $name"
room=$root/$name-$arch

# The keeper holds this lock for as long as the room is open.
is_closed() { flock --nonblock --exclusive "$1/alive" true; }

# Asks the keeper of the room $1 to close it. A room in use closes behind its last command, not before.
close_room() {
  [[ -e $1/alive ]] || return 0
  : >"$1/close-wish"
  if is_closed "$1" || ! flock --nonblock --exclusive "$1/users" true; then return; fi
  wait_until 30 is_closed "$1" && return
  say "The room $1 does not close; it is ended"
  # With this process the kernel ends every other one in the room.
  local keeper
  keeper=$(<"$1/keeper.pid") && kill -KILL "$keeper" && wait_until 5 is_closed "$1"
}

# A prefix of each kind is made once, in a room of its own, and copied from then on.
make_template() {
  local template=$root/template-$arch lock
  mkdir -p "$root"
  exec {lock}>"$template.lock"
  flock --wait 180 "$lock" || die "another process has been making $template for too long"
  if [[ ! -e $template/made ]]; then
    say "Making a $arch Wine prefix (once, about a quarter of a minute)"
    rm -rf "$template"
    mkdir -p "$template/home" "$template/log"
    cp "$hosts" "$template/hosts"
    if ! (become_keeper "$template" make); then
      cat "$template/log/keeper.log" >&2
      die "making a Wine prefix failed"
    fi
    keep_documents_inside "$template/prefix"
    : >"$template/made"
  fi
  exec {lock}>&-
}

# Becomes the keeper of the room $1 with the display $2. Of the open descriptors above the standard ones,
# which belong to whoever called this script, only $3 stays open.
become_keeper() {
  local fd
  for fd in /proc/self/fd/*; do
    fd=${fd##*/}
    if ((fd > 2 && fd != ${3:--1})); then exec {fd}>&-; fi
  done
  room_environment "$1"
  exec setsid unshare "${user_namespace[@]}" --net --mount --pid --fork --kill-child \
    "$repo/scripts/room-keeper.sh" "$1" "$2" "$repo" "$root" "${3-}" </dev/null >"$1/log/keeper.log" 2>&1
}

# Wine links a user's folders to the home folder; here they belong to the prefix.
keep_documents_inside() {
  local link
  find "$1/drive_c/users" -type l | while read -r link; do
    rm "$link"
    mkdir "$link"
  done
}

copy_template() {
  local from=$root/template-$arch/prefix to=$room/prefix.new
  rm -rf "$to"
  mkdir -p "$to/drive_c"
  find "$from" -mindepth 1 -maxdepth 1 ! -name drive_c -exec cp -a -t "$to" {} +
  find "$from/drive_c" -mindepth 1 -maxdepth 1 ! -name windows -exec cp -a -t "$to/drive_c" {} +
  # Wine's own files are most of a prefix and only read: linked, but for the few that programs write.
  cp -al "$from/drive_c/windows" "$to/drive_c/"
  find "$to/drive_c/windows" -type f ! -size +16k -print0 |
    while IFS= read -r -d '' file; do
      cp -p "$file" "$file.own" && mv "$file.own" "$file"
    done
  mv "$to" "$room/prefix"
}

# What every process of a room inherits. The locale fixes the ANSI code page of the prefix (1252).
room_environment() {
  export HOME=$1/home WINEPREFIX=$1/prefix WINEARCH=$arch XAUTHORITY=$1/xauthority
  export WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
  export LANG=C.UTF-8 LC_ALL=C.UTF-8 TMPDIR=/tmp
  unset WINESERVER WINELOADER XDG_RUNTIME_DIR WAYLAND_DISPLAY
}

open_room() {
  mkdir -p "$room/home" "$room/log"
  make_template
  if [[ ! -e $room/prefix ]]; then copy_template; fi
  cp "$hosts" "$room/hosts"
  rm -f "$room/close-wish" "$room/ready"
  : >"$room/xauthority"
  if [[ $display == desktop ]]; then
    cp "${XAUTHORITY:-$HOME/.Xauthority}" "$room/xauthority" 2>/dev/null || true
  fi
  # The namespaces, and every process in them, end with the process that keeps this lock.
  local alive
  exec {alive}>"$room/alive"
  flock --nonblock "$alive" || die "the room $room is just being opened"
  # Forked twice: whoever ends the first command of the room, with its children, does not end the room.
  (become_keeper "$room" "$display" "$alive" &)
  exec {alive}>&-
  if ! wait_until 60 test -e "$room/ready"; then
    cat "$room/log/keeper.log" >&2
    die "the room $room could not be opened"
  fi
}

# An ordinary user gets the rights over a room's namespaces by being root in a user namespace.
user_namespace=()
enter_user=()
if ((EUID != 0)); then
  user_namespace=(--user --map-root-user)
  enter_user=(--user --preserve-credentials)
fi

case $action in
  path)
    printf '%s\n' "$room"
    exit ;;
  prepare)
    make_template
    exit ;;
  close)
    close_room "$room"
    exit ;;
  close-all)
    for folder in "$root"/*-win32 "$root"/*-win64; do close_room "$folder"; done
    exit ;;
  run)
    (($#)) || { usage >&2; exit 2; } ;;
esac

mkdir -p "$room"
exec {door}>"$room/door"
flock --wait 240 "$door" || die "the room $room has been opening or closing for too long"
touch "$room/alive"
if is_closed "$room"; then open_room; fi
# Whoever holds this lock shared is in the room. Taken before the door is let go, so that the keeper,
# which closes the room behind the same door, never closes it on a newcomer.
exec {users}>"$room/users"
flock --shared "$users"
exec {door}>&-
[[ $action == open ]] && exit

room_environment "$room"
case $(<"$room/display") in
  none) unset DISPLAY XAUTHORITY ;;
  *) DISPLAY=$(<"$room/display"); export DISPLAY ;;
esac
# Not forking here makes the command a descendant of this very process, so that whoever ends this process
# with its children ends the command too.
exec nsenter "${enter_user[@]}" --net --mount --pid --no-fork --target "$(<"$room/keeper.pid")" \
  "$repo/scripts/room-visitor.sh" "$room" "$PWD" "$limit" "$users" "$@"
