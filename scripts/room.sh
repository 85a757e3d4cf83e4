#!/bin/bash
# First process of a sandbox room (scripts/sandbox.sh starts it); with it every other one in the room ends.
#   room.sh WINE-VERSION DISPLAY SECONDS COMMAND…   brings up display and Wine, runs COMMAND, takes them down
#   room.sh --furnish                               as COMMAND: what a new prefix needs
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

start_display() {
  local number
  coproc XSERVER { exec Xvfb -displayfd 1 -screen 0 1024x768x24 -dpi 96 -nolisten tcp -noreset \
    2>"$TAVREL_ROOM/log/xvfb.log"; }
  read -r -t 30 number <&"${XSERVER[0]}" || die "no virtual display; see $TAVREL_ROOM/log/xvfb.log"
  export DISPLAY=:$number
}

# The server stays up, so that each program starts at once. Its streams, and those of the services that come
# with it, are not COMMAND's: they would keep its pipes open.
start_wine() {
  # Where no window manager draws title bars, Wine does.
  local managed=Y
  if [[ $TAVREL_DISPLAY == virtual ]]; then managed=N; fi
  wineserver --persistent
  timeout --kill-after=5 120 wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d "$managed" /f
}

# The server writes the registry to the prefix when it ends.
end_wine() {
  timeout 20 wineserver --kill || true
  timeout 20 wineserver --wait
}

furnish() {
  local link
  # Debian's Wine does not look for its own fonts where Debian has them.
  ln -sf -t "$WINEPREFIX/drive_c/windows/Fonts" /usr/share/wine/fonts/*.ttf /usr/share/wine/fonts/*.fon
  # A crash is to end a program at once, not to wait for somebody to close a dialog.
  wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
  # Wine links a user's folders to the home folder; here they belong to the prefix.
  find "$WINEPREFIX/drive_c/users" -type l | while read -r link; do
    rm "$link"
    mkdir "$link"
  done
}

if [[ $1 == --furnish ]]; then
  furnish
  exit
fi
version=$1 limit=$3
export TAVREL_DISPLAY=$2
shift 3
# Until this run has ended in good order.
rm -f "$TAVREL_ROOM/whole"
if [[ $TAVREL_DISPLAY == virtual ]]; then start_display; fi
start_wine </dev/null >"$TAVREL_ROOM/log/wine.log" 2>&1 || die "Wine does not start; see $TAVREL_ROOM/log/wine.log"
code=0
timeout --foreground --kill-after=5 "$limit" "$@" || code=$?
if end_wine; then printf '%s\n' "$version" >"$TAVREL_ROOM/whole"; fi
exit "$code"
