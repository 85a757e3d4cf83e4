#!/bin/bash
# First process of a room's namespaces (scripts/sandbox.sh starts it): furnishes the room, keeps it open
# while it is used, closes it. With this process every other one in the room ends.
set -euo pipefail
room=$1 display=$2 clone=$3 root=$4 alive=$5
# The lock that tells that the room is open belongs to this process's parent.
if [[ -n $alive ]]; then exec {alive}>&-; fi
# shellcheck source=scripts/lib.sh
. "$clone/scripts/lib.sh"

# While /proc is still the host's, it tells this process's number there.
read -r pid _ </proc/self/stat
printf '%s\n' "$pid" >"$room/keeper.pid"

private_network() { ip link set lo up; }

# Names come from the room's hosts file and from nowhere else.
private_names() {
  [[ -e /etc/hosts ]] || die "this machine has no /etc/hosts to put the room's in place of; an empty one will do"
  mount --bind "$room/hosts" /etc/hosts
  printf 'passwd: files\ngroup: files\nhosts: files\n' >"$room/nsswitch.conf"
  if [[ -e /etc/nsswitch.conf ]]; then mount --bind "$room/nsswitch.conf" /etc/nsswitch.conf; fi
  if [[ -d /run/nscd ]]; then mount -t tmpfs none /run/nscd; fi
}

# Sockets and locks of Wine and of the X server lie below /tmp. What the room needs of the host's /tmp
# (the desktop's socket, this clone, the rooms) stays to be seen at its place.
private_tmp() {
  local folder new=$room/tmp
  mkdir -p "$new"
  mount -t tmpfs -o mode=1777 none "$new"
  for folder in "$clone" "$root" /tmp/.X11-unix; do
    if [[ $folder == /tmp/* && ($folder != /tmp/.X11-unix || $display == desktop) ]]; then
      mkdir -p "$new/${folder#/tmp/}"
      mount --bind "$folder" "$new/${folder#/tmp/}"
    fi
  done
  mount --no-mtab --move "$new" /tmp
}

start_display() {
  case $display in
    desktop) printf '%s\n' "$DISPLAY" ;;
    virtual)
      local number
      mkdir /tmp/.X11-unix
      chmod 1777 /tmp/.X11-unix
      coproc XSERVER { exec Xvfb -displayfd 1 -screen 0 1024x768x24 -dpi 96 -nolisten tcp -noreset \
        2>"$room/log/xvfb.log"; }
      read -r -t 20 number <&"${XSERVER[0]}" || die "no virtual display; see $room/log/xvfb.log"
      printf ':%s\n' "$number" ;;
    *) echo none ;;
  esac
}

make_prefix() {
  timeout --kill-after=5 150 wine wineboot --init
  # Debian's Wine does not look for its own fonts where Debian has them.
  ln -sf -t "$WINEPREFIX/drive_c/windows/Fonts" /usr/share/wine/fonts/*.ttf /usr/share/wine/fonts/*.fon
  # A crash is to end a program at once, not to wait for somebody to close a dialog.
  wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
  end_wine
}

# The registry is written to the prefix by the server when it ends.
end_wine() {
  timeout 10 wineserver --kill || true
  timeout 10 wineserver --wait || true
}

open_prefix() {
  # The server and the prefix's services stay up, so that a command starts at once. Their standard streams
  # are the keeper's: services that outlive a command would otherwise keep its pipes open.
  wineserver --persistent
  # Where no window manager draws title bars, Wine does.
  local managed=Y
  if [[ $display == virtual ]]; then managed=N; fi
  timeout --kill-after=5 60 wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d "$managed" /f
}

# Ends when nobody has used the room for a while or somebody wishes it closed, or the room was removed.
keep_open() {
  local idle_since=$SECONDS door
  while [[ -e $room/ready ]]; do
    sleep 1
    if ! flock --nonblock --exclusive "$room/users" true; then
      idle_since=$SECONDS
    elif [[ -e $room/close-wish ]] || ((SECONDS - idle_since >= ${TAVREL_ROOM_IDLE:-30})); then
      # Behind the door nobody can come in; somebody may have done so just before it shut.
      exec {door}>"$room/door"
      if flock --nonblock "$door" && flock --nonblock --exclusive "$room/users" true; then
        return
      fi
      exec {door}>&-
    fi
  done
}

mount -t proc proc /proc
private_network
private_tmp
private_names
start_display >"$room/display.new"
mv "$room/display.new" "$room/display"
case $display in
  virtual | desktop) DISPLAY=$(<"$room/display"); export DISPLAY ;;
  *) unset DISPLAY ;;
esac
if [[ $display == make ]]; then
  make_prefix
else
  open_prefix
  printf '%s\n' "$display" >"$room/display-kind"
  : >"$room/ready"
  keep_open
  end_wine
fi
