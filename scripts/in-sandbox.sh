#!/bin/bash
# First process of a sandbox, started by sandbox.sh; when it ends, every other process of the sandbox is ended.
#   in-sandbox.sh WINE-VERSION DISPLAY SCREEN SECONDS COMMAND…   starts display and Wine, runs COMMAND, stops them
#   in-sandbox.sh --initialise-prefix                            as COMMAND: prepares a new prefix
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

start_display() {
  local number
  coproc XSERVER { exec Xvfb -displayfd 1 -screen 0 "$1x24" -dpi 96 -nolisten tcp -noreset \
    2>"$TAVREL_SANDBOX/log/xvfb.log"; }
  read -r -t 30 number <&"${XSERVER[0]}" || die "no virtual display; see $TAVREL_SANDBOX/log/xvfb.log"
  export DISPLAY=:$number
}

# The Wine server stays up, so that each program starts at once. It and its services must not inherit COMMAND's
# streams: they would keep its pipes open.
start_wine() {
  # Without a window manager Wine has to draw the title bars itself.
  local managed=Y
  if [[ $TAVREL_DISPLAY == virtual ]]; then managed=N; fi
  wineserver --persistent
  timeout --kill-after=5 120 wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d "$managed" /f
}

# The Wine server writes the registry to the prefix when it ends.
end_wine() {
  timeout 20 wineserver --kill || true
  timeout 20 wineserver --wait
}

initialise_prefix() {
  local link
  # Debian's Wine does not search the folder in which Debian installs Wine's own fonts.
  ln -sf -t "$WINEPREFIX/drive_c/windows/Fonts" /usr/share/wine/fonts/*.ttf /usr/share/wine/fonts/*.fon
  # A crashed program must end at once; Wine would show a dialog that no user closes.
  wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
  # Wine links a user's folders to the home folder; here they belong to the prefix.
  find "$WINEPREFIX/drive_c/users" -type l | while read -r link; do
    rm "$link"
    mkdir "$link"
  done
}

check_usage 1 "$@"
[[ -n ${TAVREL_SANDBOX-} ]] || die "scripts/sandbox.sh starts this script"
if [[ $1 == --initialise-prefix ]]; then
  initialise_prefix
  exit
fi
version=$1 screen=$3 limit=$4
export TAVREL_DISPLAY=$2
shift 4
# The prefix counts as whole again when this run has ended cleanly.
rm -f "$TAVREL_SANDBOX/whole"
if [[ $TAVREL_DISPLAY == virtual ]]; then start_display "$screen"; fi
start_wine </dev/null >"$TAVREL_SANDBOX/log/wine.log" 2>&1 || die "Wine does not start; see $TAVREL_SANDBOX/log/wine.log"
code=0
timeout --foreground --kill-after=5 "$limit" "$@" || code=$?
# COMMAND can end with 0 although the Wine server crashed during it.
timeout 20 wineserver -k0 || die "the Wine server has crashed; see $TAVREL_SANDBOX/log/wine.log"
if end_wine; then printf '%s\n' "$version" >"$TAVREL_SANDBOX/whole"; fi
exit "$code"
