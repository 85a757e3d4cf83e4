#!/bin/bash
# Installs, upgrades, moves and removes the utility under Wine as installer.txt tells: installer.sh ARCH BUILD-TREE
# shellcheck disable=SC2317  # the table calls them
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

if [[ -z ${TAVREL_SANDBOX-} ]]; then exec "$repo/scripts/sandbox.sh" --name installer --arch "$1" -- "$0" "$@"; fi
build=$2 stage=$(mktemp -d -p "$TAVREL_TMP") failures=0
# The version before: another program (a stand-in) and another seed.
old=$build/tests/packaging/old-$1
mkdir -p "$old/generated"
sed 's/^\(#define TAVREL_VERSION "\).*/\12.0.2"/' "$build/generated/version.h" >"$old/generated/version.h"
sed 's/^TIMEOUT=.*/TIMEOUT=50/' "$build/generated/korsa.ini" >"$old/generated/korsa.ini"
old_setup=$("$repo/packaging/installer.sh" "$old" "$build/demo/standin/15.0.2.5/Qrt.exe")
new_setup=$("$repo/packaging/installer.sh" "$build")
trap 'kill $(jobs -p) 2>/dev/null || true' EXIT
drive=$WINEPREFIX/drive_c branch='HKLM\Software' program_files='Program Files' view=()
if [[ $WINEARCH == win64 ]]; then
  # Wine puts elsewhere what a 32-bit program writes below Wow6432Node.
  branch='HKLM\Software\Wow6432Node' program_files='Program Files (x86)' view=(/reg:64)
fi
uninstall="$branch\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varnexa 15.0"
maker="$branch\\NORVIK Software Inc.\\Varnexa\\15.0"
program=$drive/$program_files/Varnexa/QRT15
logs=$drive/ProgramData/Varnexa/QRT15
menu="$drive/ProgramData/Microsoft/Windows/Start Menu/Programs/Varnexa"
settings=$drive/users/$(id -un)/Documents/Varnexa/QRT15

quietly() { "$@" >/dev/null 2>&1; }
window() { xdotool search --onlyvisible --name 'Varnexa 15.0 Tavrel Utility'; }
entry() { wine reg query "$uninstall Tavrel Utility" "${view[@]}" 2>/dev/null; }
is_gone() { ! quietly "$1"; }

# Everything that the installer could touch, as its name, ";" and the sum of what it holds.
state() {
  { entry || true; } | sed -n 's/.*DisplayVersion *REG_SZ *\([0-9.]*\).*/entry \1;/p'
  find "$drive" \( -path '*/windows' -o -path '*/AppData' -o -path '*/Temp' \) -prune -o \
    -type f ! -name '*.lnk' ! -name '*.log' -exec md5sum {} + -o -printf '-  %p\n' |
    sed "s|^\(\S*\)  $drive/*|\1  |; s|  $program_files/Varnexa|  programs|; s|  .*/Programs/Varnexa|  menu|
      s|  users/.*/Documents/|  documents/|; s|QRT_15_.*\.log|.log|; s|^\(\S*\)  \(.*\)|\2;\1|"
}

# Preparations and commands of the table.
old() { wine "$old_setup" "$@"; }
new() { wine "$new_setup" "$@"; }
# The uninstaller works in a copy of itself, unless it is told its folder: what it did is to be waited for.
remove() {
  wine "$(find "$drive" -name QRTTavrelUtility-uninstall.exe)" "$@" || return
  [[ $* == *_\?=* ]] || wait_until 60 is_gone entry
}
# What the entry says, between "|"; sizes and times are left out.
says() {
  diff <(tr '|' '\n' <<<"$*") <(entry | sed -n "s/\r$//; s/C:.$program_files.Varnexa/programs/
    s/^ *\([A-Z][A-Za-z]*\)  *REG_[A-Z]*  */\1=/p" | sed '/^\(Est\|Seed\)/s/=.*/=/')
}
start_utility() { (cd "$program" && exec wine QRTTavrelUtility.exe) & utility=$! && wait_until 60 quietly window; }
# A window that is busy with its check can miss the wish.
has_closed() { quietly wine taskkill /im QRTTavrelUtility.exe || true; ! kill -0 "$utility" 2>/dev/null; }
close_utility() { wait_until 60 has_closed; }
change_seed() { close_utility && printf 'TIMEOUT=20\r\n' >>"$program/korsa.ini"; }
foreign_file() { echo mine >"$drive/Tools/Ütility 2/mine.txt"; }
product_files() { mkdir "$menu" && echo own | tee "$drive/product/korsa.ini" >"$menu/Varnexa 15.0 Update.lnk"; }
no_log_folder() { rm -r "$logs" && echo >"$logs"; }

# The installed program finds the update that is offered, and makes the user's settings of its seed.
find_update() {
  mkdir -p "$drive/product" "$stage/www/qrt15"
  cp "$build/demo/standin/15.0.2.5/Qrt.exe" "$drive/product/"
  while read -r key value data; do
    quietly wine reg add "${!key}" /v "$value" /d "$data" /f "${view[@]}" </dev/null
  done <<<'uninstall DisplayVersion 15.0
    uninstall DisplayIcon C:\product\Qrt.exe
    uninstall URLUpdateInfo http://updates.varnexa.example/qrt15/updates.ini
    maker Version 15.0
    maker Installpath C:\product'
  cp "$repo/demo/updates.ini" "$stage/www/qrt15/"
  sed -e "s|@WORK@|$stage|; s|@RATE@|0|; s|@ANSWER@||" "$repo/demo/nginx.conf" >"$stage/nginx.conf"
  nginx -c "$stage/nginx.conf" -e "$stage/errors.log" &
  start_utility && wait_until 60 grep -rqs 'Update details found. Exit code 3.' "$logs" &&
    close_utility && cmp "$program/korsa.ini" "$settings/korsa.ini"
}

for key in "$uninstall" "$uninstall Tavrel Utility" "$maker"; do
  quietly wine reg delete "$key" /f "${view[@]}" || true
done
rm -rf "${program%/*}" "${logs%/*}" "$drive/Tools" "$drive/product" "$menu" "${settings%/*}"
version=${new_setup#*Utility-}
while IFS=';' read -r step before command code changes; do
  seen=0
  ${before:-true} </dev/null || seen=before
  LC_ALL=C state | sort >"$stage/before"
  # In words: the installers take what follows /D= and _?= as it stands, blanks and all, without quotes.
  ${command//\$P/$(winepath -w "$program")} </dev/null || seen=$?
  LC_ALL=C state | sort >"$stage/after"
  # A difference is no failure.
  changed=$(diff "$stage/before" "$stage/after" || true)
  seen+=";$(sed -n 's/^> \(.*\);.*/+\1/p; s/^< \(.*\);.*/-\1/p' <<<"$changed" | LC_ALL=C sort | paste -sd ' ')"
  [[ $seen == "$code;$changes" ]] && continue
  printf '%s, %s: expected, and seen\n%s\n%s\n' "$WINEARCH" "$step" "$code;$changes" "$seen" >&2
  failures=1
done < <(sed "/^#/d; s/@VERSION@/${version%-setup.exe}/g" "${0%.sh}.txt")
exit $failures
