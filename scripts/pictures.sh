#!/bin/bash
# Usage: scripts/pictures.sh [--dpi N] [--contrast] [--only NAME] [FOLDER]
#
# Builds the utility, runs the demo's scenes on a virtual display and leaves a picture of each state of its
# window in FOLDER (default: docs/pictures).
#
#   --dpi N      on a display of N dots per inch (96 to 384; default: 96)
#   --contrast   with high-contrast colours and without a visual style
#   --only NAME  only the picture of this name
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/lib.sh"

arguments=("$@")
dpi=96
contrast=no
only=
folder=$repo/docs/pictures
while (($#)); do
  case $1 in
    --dpi | --only)
      (($# > 1)) || die "$1 needs a value; scripts/pictures.sh --help tells more"
      declare "${1#--}=$2"
      shift 2 ;;
    --contrast) contrast=yes; shift ;;
    --help | -h) usage; exit ;;
    -*) die "unknown option: $1; scripts/pictures.sh --help lists them" ;;
    *) folder=$(realpath -m -- "$1"); shift ;;
  esac
done

# picture, scene, mode, seconds before the picture, keys pressed in the middle of that time
table='
regular-checking       slow           regular  1
regular-offered        offered        regular  3
regular-none           matching       regular  3
regular-not-found      not-found      regular  3
regular-no-connection  no-network     regular  3
regular-mismatch       host-mismatch  regular  3
regular-not-installed  not-installed  regular  3
regular-install        offered        regular  3  Return
regular-log            offered        regular  3  ctrl+Tab
patch-offered          offered        patch    3
patch-missing-facts    missing-facts  patch    3
about                  offered        regular  4  alt+space Up Return
'
if ! [[ $dpi =~ ^[1-9][0-9]{1,2}$ ]] || ((dpi < 96 || dpi > 384)); then
  die "not a number of dots per inch from 96 to 384: $dpi"
fi
rows=$(grep "^${only:-[a-z-]*} " <<<"$table") || die "no picture is named '$only' in the table of scripts/pictures.sh"

shots=$build_root/pictures

set_up_display() {
  local colour
  wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$dpi" /f
  # Without a window manager Wine paints the first window's title in the colours of an inactive one.
  for colour in {,Gradient}InactiveTitle='51 153 255' InactiveTitleText='0 0 0'; do
    wine reg add 'HKCU\Control Panel\Colors' /v "${colour%%=*}" /d "${colour#*=}" /f
  done
  [[ $contrast == yes ]] || return 0
  wine reg add 'HKCU\Control Panel\Accessibility\HighContrast' /v Flags /d 127 /f
  wine reg add 'HKCU\Software\Microsoft\Windows\CurrentVersion\ThemeManager' /v ThemeActive /d 0 /f
  for colour in ButtonFace Window InfoWindow Menu AppWorkspace; do
    wine reg add 'HKCU\Control Panel\Colors' /v $colour /d '0 0 0' /f
  done
  for colour in ButtonText WindowText WindowFrame MenuText; do
    wine reg add 'HKCU\Control Panel\Colors' /v $colour /d '255 255 255' /f
  done
}

window_is_open() { xdotool search --onlyvisible --name "$TAVREL_TITLE" >/dev/null 2>&1; }

# Runs in the background of the scene: waits for the window, then presses the keys one after the other.
press_keys() {
  local key
  wait_until 10 window_is_open || return 0
  sleep 1.5
  for key in "$@"; do xdotool key "$key"; sleep 0.4; done
}

take_picture() {  # a row
  say "Picture $1"
  if (($# > 4)); then press_keys "${@:5}" & fi
  timeout --foreground 120 "$repo/demo/scene.sh" "$2" "$3" "$4" "$shots/scene" "$build_root/release"
  wait
  # Keeps the window only; the desktop around it is black.
  convert "$shots/scene/picture-1.png" -bordercolor black -border 1 -trim +repage -strip +dither -colors 256 \
    -define png:compression-level=9 "$shots/$1.png"
}

if [[ -z ${TAVREL_SANDBOX-} ]]; then
  "$repo/scripts/setup.sh"
  "$repo/scripts/build.sh" release
  rm -rf "$shots"
  "$repo/scripts/sandbox.sh" --name "pictures-$dpi-$contrast" \
    --screen "$((1024 * dpi / 96))x$((768 * dpi / 96))" -- "$0" "${arguments[@]}"
  mkdir -p "$folder"
  cp "$shots"/*.png "$folder/"
  say "Pictures are in $folder"
  exit
fi
. "$build_root/release/generated/product.sh"
set_up_display >/dev/null
while read -ra row; do take_picture "${row[@]}" </dev/null; done <<<"$rows"
