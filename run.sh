#!/bin/bash
# Usage: ./run.sh [OPTION]…
#
# Installs what is missing (Debian 12 and 13, as root or with sudo for apt), builds the utility and runs it in a
# sandbox with a stand-in for the installed product and an update server: on the desktop where there is a
# display, otherwise on a virtual one, leaving a picture of its window. Outside this folder only Debian packages and
# the i386 architecture are added. The sandbox reaches no other machine where the system permits namespaces.
#
#   --scene NAME    what the utility finds (below)
#   --mode MODE     regular (default): the user starts it, the window opens at once
#                   patch: the product starts it, a window opens only if there is something to tell
#   --arch ARCH     win32 (default) or win64: the kind of Windows
#   --virtual       use a virtual display also where there is a desktop
#   --seconds N     on a virtual display, how long a window stays before its picture is taken and it is
#                   closed (default: 3; at most 600)
#   --list          only lists the scenes
#   --help          this text
#
#   TAVREL_BUILD_ROOT     folder for everything that is built (default: build); needed in a read-only checkout
#   TAVREL_HAVE_PACKAGES  1: install nothing; all packages are installed, possibly under other names
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/scripts/lib.sh"

list_scenes() {
  local file about
  for file in offered $(cd "$repo/demo/scenes" && ls --ignore=offered); do
    about=$(sed -n 's/^about="\(.*\)"$/\1/p' "$repo/demo/scenes/$file")
    printf '  %-18s %s\n' "$file" "$about"
  done
}

scene=offered
mode=regular
arch=win32
display=virtual
seconds=3
if [[ -n ${DISPLAY-} ]]; then display=desktop; fi
while (($#)); do
  case $1 in
    --scene | --mode | --arch | --seconds)
      (($# > 1)) || die "$1 needs a value; ./run.sh --help tells more"
      declare "${1#--}=$2"
      shift 2 ;;
    --virtual) display=virtual; shift ;;
    --list) list_scenes; exit ;;
    --help | -h) usage; printf '\nScenes:\n'; list_scenes; exit ;;
    *) die "unknown option: $1; ./run.sh --help tells more" ;;
  esac
done
[[ $scene =~ ^[a-z0-9-]+$ && -f $repo/demo/scenes/$scene ]] ||
  die "unknown scene: $scene; ./run.sh --list names them"
[[ $mode == regular || $mode == patch ]] || die "unknown mode: $mode"
[[ $arch == win32 || $arch == win64 ]] || die "unknown kind of Windows: $arch"
[[ $seconds =~ ^(0|[1-9][0-9]?|[1-5][0-9]{2}|600)$ ]] || die "not a number of seconds from 0 to 600: $seconds"
# The sandbox can use a display through its socket only, not over the network.
if [[ $display == desktop ]] &&
  ! [[ $DISPLAY =~ ^(unix)?:([0-9]+) && -S /tmp/.X11-unix/X${BASH_REMATCH[2]} ]]; then
  say "The display $DISPLAY is not on this machine; using a virtual one"
  display=virtual
fi
only_arch=$(sed -n 's/^arch=//p' "$repo/demo/scenes/$scene")
[[ ${only_arch:-$arch} == "$arch" ]] || die "the scene $scene needs --arch $only_arch"

"$repo/scripts/setup.sh"
"$repo/scripts/build.sh" release QRTTavrelUtility standins
output=$build_root/run/$scene-$mode-$arch
if [[ $display == virtual ]]; then
  say "Running the utility on a virtual display"
else
  say "Running the utility on your desktop; this script continues when you close its window"
fi
code=0
"$repo/scripts/sandbox.sh" --name demo --arch "$arch" --display "$display" --limit 3600 -- \
  "$repo/demo/scene.sh" "$scene" "$mode" "$seconds" "$output" "$build_root/release" || code=$?
((code == 0)) || die "the run failed ($code); the sandbox's own logs are in $build_root/sandbox/demo-$arch/log"

show() {
  printf '\n== %s\n' "$1"
  shift
  if [[ -s ${1-} ]]; then tr -d '\r' <"$1"; else echo '(none)'; fi
}

show "The utility's log file" "$(find "$output" -name '*.log' ! -name requests.log -print -quit)"
show "Requests that the update server received" "$output/requests.log"
show "korsa.ini in the user's Documents folder" "$output/settings.ini"
if [[ -e $output/started.txt ]]; then
  show "How the product was started (arguments, then folder)" "$output/started.txt"
fi
printf '\nThe utility ended with exit code %s' "$(<"$output/exit-code")"
if [[ $display == virtual ]]; then
  printf ' after showing %d window(s)' "$(find "$output" -name 'picture-*.png' | wc -l)"
fi
printf '.\nPictures, log file and request log: %s\n' "$output"
