#!/bin/bash
# Installs, upgrades, moves and removes the utility under Wine as installer.txt tells:
#   installer.sh ARCH BUILD-TREE
# shellcheck disable=SC2317  # the table calls them
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

if [[ $1 != inside ]]; then
  # The version before: another program (a stand-in) and another seed.
  old=$2/tests/packaging/old-$1
  mkdir -p "$old/generated"
  sed 's/^\(#define TAVREL_VERSION "\).*/\12.0.2"/' "$2/generated/version.h" >"$old/generated/version.h"
  sed 's/^TIMEOUT=.*/TIMEOUT=50/' "$2/generated/korsa.ini" >"$old/generated/korsa.ini"
  old_setup=$("$repo/packaging/installer.sh" "$old" "$2/demo/standin/15.0.2.5/Qrt.exe")
  new_setup=$("$repo/packaging/installer.sh" "$2")
  exec "$repo/scripts/sandbox.sh" --name installer --arch "$1" --limit 240 -- "$0" inside "$2" "$old_setup" "$new_setup"
fi
build=$2 old_setup=$3 new_setup=$4 failures=0
version=${new_setup#*Utility-} version=${version%-setup.exe}
stage=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true' EXIT
drive=$WINEPREFIX/drive_c branch='HKLM\Software' program_files='Program Files' view=()
if [[ $WINEARCH == win64 ]]; then
  # Wine puts elsewhere what a 32-bit program writes below Wow6432Node.
  branch='HKLM\Software\Wow6432Node' program_files='Program Files (x86)' view=(/reg:64)
fi
uninstall="$branch\\Microsoft\\Windows\\CurrentVersion\\Uninstall"
program=$drive/$program_files/Varnexa/QRT15
logs=$drive/ProgramData/Varnexa/QRT15
menu="$drive/ProgramData/Microsoft/Windows/Start Menu/Programs/Varnexa"
settings=$drive/users/$(id -un)/Documents/Varnexa/QRT15
entry="$uninstall\\Varnexa 15.0 Tavrel Utility"

old() { wine "$old_setup" "$@"; }
new() { wine "$new_setup" "$@"; }
quietly() { "$@" >/dev/null 2>&1; }
forget() { quietly wine reg delete "$1" /f "${view[@]}" || true; }
forget_product() { forget "$uninstall\\Varnexa 15.0"; forget "$branch\\NORVIK Software Inc."; }

# Everything that the installer could touch, as name;what it holds (a sum, or the version of the entry).
state() {
  wine reg query "$entry" "${view[@]}" 2>/dev/null |
    sed -n 's/.*DisplayVersion *REG_SZ *\([0-9.]*\).*/entry;\1/p' || true
  find "$drive" \( -path '*/windows' -o -path '*/AppData' -o -path '*/Temp' \) -prune -o \
    -type f ! -name '*.lnk' -exec md5sum {} + -o -printf '-  %p\n' |
    sed "s|^\(\S*\)  $drive/*|\1  |; s|  $program_files/Varnexa|  programs|; s|  .*/Programs/Varnexa|  menu|
      s|  users/.*/Documents/|  documents/|; s|QRT_15_.*\.log|.log|; s|^\(\S*\)  \(.*\)|\2;\1|"
}

changes() {
  awk -F ';' 'FNR == NR { before[$1] = $2; next }
    { now[$1] = $2 } !($1 in before) { print "+" $1 ($1 == "entry" ? " " $2 : "") }
    $1 in before && before[$1] != $2 { print "~" $1 ($1 == "entry" ? " " $2 : "") }
    END { for (name in before) if (!(name in now)) print "-" name }' "$stage/before" "$stage/after" |
    LC_ALL=C sort | paste -sd ' '
}

# What is done before a step.
register_product() {
  local value
  mkdir -p "$drive/product"
  cp "$build/demo/standin/15.0.2.5/Qrt.exe" "$drive/product/"
  for value in DisplayVersion=15.0 DisplayIcon='C:\product\Qrt.exe' \
    URLUpdateInfo=http://updates.varnexa.example/qrt15/updates.ini; do
    quietly wine reg add "$uninstall\\Varnexa 15.0" /v "${value%%=*}" /d "${value#*=}" /f "${view[@]}"
  done
  for value in Version=15.0 Installpath='C:\product'; do
    quietly wine reg add "$branch\\NORVIK Software Inc.\\Varnexa\\15.0" /v "${value%%=*}" /d "${value#*=}" /f "${view[@]}"
  done
}
product_with_files_of_its_own() {
  register_product
  mkdir "$menu"
  for file in "$drive/product/korsa.ini" "$menu/Varnexa 15.0 Update.lnk"; do echo own >"$file"; done
}
start_utility() {
  (cd "$program" && exec wine QRTTavrelUtility.exe) &
  wait_until 20 quietly xdotool search --onlyvisible --name 'Varnexa 15.0 Tavrel Utility'
}
close_utility() {
  wait_until 20 quietly wine taskkill /im QRTTavrelUtility.exe
  wait_until 20 is_closed
}
is_closed() { ! quietly xdotool search --onlyvisible --name 'Varnexa 15.0 Tavrel Utility'; }
change_seed() { close_utility && printf 'TIMEOUT=20\r\n' >>"$program/korsa.ini"; }
foreign_file() { echo mine >"$drive/Tools/Ütility 2/mine.txt"; }
no_log_folder() { rm -r "$logs" && echo >"$logs"; }

# The program as it was installed finds the update that is offered, and makes the user's settings of its seed.
find_update() {
  register_product
  mkdir -p "$stage/www/qrt15"
  cp "$repo/demo/updates.ini" "$stage/www/qrt15/"
  sed -e "s|@STAGE@|$stage|; s|@RATE@|0|; s|@ANSWER@||" "$repo/demo/nginx.conf" >"$stage/nginx.conf"
  nginx -c "$stage/nginx.conf" -e "$stage/errors.log" &
  start_utility && close_utility
  wait_until 10 grep -qs 'Update details found. Exit code 3.' "$logs"/*.log &&
    cmp "$program/korsa.ini" "$settings/korsa.ini"
  forget_product
  rm -r "$drive/product"
}

# The uninstaller works in a copy of itself, unless it is told its folder: what it did is to be waited for.
remove() {
  wine "$(find "$drive" -name QRTTavrelUtility-uninstall.exe)" "$@" || return
  [[ $* == *_\?=* ]] || wait_until 20 is_removed
}
is_removed() { ! quietly wine reg query "$entry" "${view[@]}"; }

play() {
  local before=${2:-true} command=$3 code=0 seen
  command=${command//\$P/$(winepath -w "$program")}
  if [[ -z $command ]]; then command=$before before=true; fi
  "$before" || code=before
  state >"$stage/before"
  # In words: the installers take what follows /D= and _?= as it stands, blanks and all, without quotes.
  # shellcheck disable=SC2086
  $command || code=$?
  state >"$stage/after"
  seen=$(changes)
  [[ "$code;$seen" == "$4;$5" ]] && return
  printf '%s, %s: expected %s\n%s\nsaw %s\n%s\n' "$WINEARCH" "$1" "$4" "${5// [+~-]/$'\n'&}" "$code" "${seen// [+~-]/$'\n'&}" >&2
  failures=1
}

forget_product
forget "$entry"
rm -rf "$drive/$program_files/Varnexa" "$drive/ProgramData/Varnexa" "$drive/Tools" "$drive/product" "$menu" \
  "${settings%/*}"
while IFS=';' read -r step before command code changes; do
  play "$step" "$before" "$command" "$code" "$changes" </dev/null
done < <(sed "/^#/d; s/@VERSION@/$version/g" "${0%.sh}.txt")
forget_product
exit $failures
