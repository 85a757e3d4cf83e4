#!/bin/bash
# Installs, upgrades, moves and removes the utility under Wine, step by step in one prefix: installer.sh ARCH BUILD-TREE
# shellcheck disable=SC2317  # check() calls the functions
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../../scripts/lib.sh"
check_usage 2 "$@"

if [[ -z ${TAVREL_SANDBOX-} ]]; then exec "$repo/scripts/sandbox.sh" --name installer --arch "$1" -- "$0" "$@"; fi
build=$2 work=$(mktemp -d -p "$TAVREL_TMP") failed=0
# The version before: another program (a stand-in) and another seed.
old=$build/tests/packaging/old-$1
mkdir -p "$old/generated"
cp "$build"/generated/{product.*,korsa.ini} "$old/generated/"
sed -i -E '/TAVREL_VERSION/s/[0-9.]+/2.0.2/' "$old"/generated/product.*
sed -i 's/^TIMEOUT=60/TIMEOUT=50/' "$old/generated/korsa.ini"
old_setup=$("$repo/packaging/installer.sh" "$old" "$build/demo/standin/15.0.2.5/Qrt.exe")
new_setup=$("$repo/packaging/installer.sh" "$build")
version=${new_setup#*Utility-} version=${version%-setup.exe}
drive=$WINEPREFIX/drive_c branch='HKLM\Software' program_files='Program Files' view=()
if [[ $WINEARCH == win64 ]]; then
  # Wine puts elsewhere what a 32-bit program writes below Wow6432Node.
  branch='HKLM\Software\Wow6432Node' program_files='Program Files (x86)' view=(/reg:64)
fi
uninstall="$branch\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varnexa 15.0"
maker="$branch\\NORVIK Software Inc.\\Varnexa\\15.0"
programs=$drive/$program_files/Varnexa
logs=$drive/ProgramData/Varnexa
menu="$drive/ProgramData/Microsoft/Windows/Start Menu/Programs/Varnexa"
settings=$drive/users/$(id -un)/Documents/Varnexa

quietly() { "$@" >/dev/null 2>&1; }
entry() { wine reg query "$uninstall Tavrel Utility" "${view[@]}" 2>/dev/null; }
is_gone() { ! quietly "$1"; }

# Everything that the installer could change: a short name, ";" and the sum of its content.
state() {
  { entry || true; } | sed -n 's/.*DisplayVersion *REG_SZ *\([0-9.]*\).*/entry;\1/p'
  find "$drive" \( -path '*/windows' -o -path '*/AppData' -o -path '*/Temp' \) -prune -o \
    -type f ! -name '*.lnk' ! -name '*.log' -exec md5sum {} + -o -printf '.  %p\n' |
    sed "s|^\(\S*\)  $drive/*|\1  |; s|  $program_files/Varnexa|  programs|; s|  .*/Programs/Varnexa|  menu|
      s|  ProgramData/Varnexa|  logs|; s|  users/.*/Documents/Varnexa|  settings|; s|QRT_15_.*\.log|log|
      s|/Varnexa 15.0 Update.lnk|/link|; s|/QRTTavrelUtility-uninstall.exe|/un|; s|/QRTTavrelUtility.exe|/exe|
      s|/korsa.ini|/ini|; s|^\(\S*\)  \(.*\)|\2;\1|"
}
# Runs COMMAND and compares its exit code and the changes: check NAME CODE COMMAND [CHANGE]…
# COMMAND is split at blanks. CHANGE is + (new), - (gone) or ~ (other content) before the name in state().
check() {
  local name=$1 expected=$2 command=$3 code=0 seen
  shift 3
  state | LC_ALL=C sort -t ";" -k 1,1 >"$work/before"
  # shellcheck disable=SC2086
  $command </dev/null >"$work/output" 2>&1 || code=$?
  state | LC_ALL=C sort -t ";" -k 1,1 >"$work/after"
  seen=$(LC_ALL=C join -t ';' -a 1 -a 2 -e - -o 0,1.2,2.2 "$work/before" "$work/after" |
    awk -F ';' '$2 != $3 { print ($2 == "-" ? "+" : $3 == "-" ? "-" : "~") $1 }' | sort)
  [[ $code == "$expected" && $seen == "$(printf '%s\n' "$@" | sort)" ]] && return
  printf '%s, %s: exit code %s, expected %s; changes, and expected changes:\n%s\n\n%s\n' \
    "$WINEARCH" "$name" "$code" "$expected" "$seen" "$(printf '%s\n' "$@" | sort)" >&2
  cat "$work/output" >&2
  failed=1
}

# Commands.
old() { timeout 60 wine "$old_setup" "$@"; }
new() { timeout 60 wine "$new_setup" "$@"; }
# The uninstaller hands its work to a copy of itself, unless _?= gives it its folder.
remove() {
  timeout 60 wine "$(find "$drive" -name QRTTavrelUtility-uninstall.exe)" "$@" || return
  [[ $* == *_\?=* ]] || wait_until 60 is_gone entry
}
has_log() { find "$logs" -name '*.log' | grep -q .; }
# The installed program writes its log, and copies the user's settings from the installed korsa.ini.
start_utility() {
  (cd "$programs/QRT15" && exec wine QRTTavrelUtility.exe) & utility=$!
  wait_until 60 has_log && cmp "$programs/QRT15/korsa.ini" "$settings/QRT15/korsa.ini"
}
# The utility ends two seconds after the installer has started.
new_while_closing() { { sleep 2 && kill -KILL "$utility"; } & new /S; }
moved_seed() { grep -q TIMEOUT=20 "$drive/Tools/Ütility 2/korsa.ini"; }
# The installer prints these words, given as a regular expression without blanks.
says() {
  local words=$1 code=0
  shift
  new "$@" || code=$?
  grep -q "$words" "$work/output" && return "$code"
}
# Wine puts an argument with a blank into quotes.
remove_quoted() { remove /S '_?=C:\Tools\Ütility 2' && wait_until 10 is_gone entry; }
# The uninstall entry has these values; the checks of updates, moves and removals see the others.
entry_says() {
  entry | sed "s/\r$//; s/C:.$program_files.Varnexa/programs/; s/^ *\([A-Z][A-Za-z]*\)  *REG_[A-Z]*  */\1=/
    s/^\(EstimatedSize=\).*/\1/" >"$work/entry"
  ! grep -vxFf "$work/entry" <<END
DisplayIcon=programs\\QRT15\\QRTTavrelUtility.exe
DisplayName=Varnexa 15.0 Tavrel Utility
DisplayVersion=$version
EstimatedSize=
HelpLink=https://www.norvik.example/support
NoModify=0x1
NoRepair=0x1
Publisher=NORVIK Software Inc.
QuietUninstallString="programs\\QRT15\\QRTTavrelUtility-uninstall.exe" /S
UninstallString="programs\\QRT15\\QRTTavrelUtility-uninstall.exe"
VersionMajor=0x${version%%.*}
VersionMinor=0x0
END
}

for key in "$uninstall Tavrel Utility" "$maker"; do quietly wine reg delete "$key" /f "${view[@]}" || true; done
rm -rf "$programs" "$logs" "$drive/Tools" "$drive/product" "$drive/link" "$drive/closed" "$menu" "$settings"
set -f
check first 0 'old /S' +entry +logs{,/QRT15{,/README.txt}} +menu{,/link} +programs{,/QRT15{,/exe,/ini,/un}}
# What users put into the log folder stays, also in the notice, whose text the installer does not write anew.
echo >"$logs/QRT15/stray"
echo >>"$logs/QRT15/README.txt"
chmod a-w "$programs/QRT15"/{QRTTavrelUtility.exe,QRTTavrelUtility-uninstall.exe,korsa.ini}
check 'upgrade of read-only files' 0 'new /S' '~entry' '~'programs/QRT15/{exe,ini,un}
mkdir "$programs/QRT15/QRTTavrelUtility.exe.new"
check 'a program that cannot be written' 2 'says cannot.be.written.to.C: /S'
rmdir "$programs/QRT15/QRTTavrelUtility.exe.new"
check 'the uninstall entry is complete' 0 entry_says
check 'the installed program works' 0 start_utility +logs/QRT15/log +settings{,/QRT15{,/ini}}
check 'the utility is running' 3 'new /S'
check 'the utility to be removed is running' 3 "remove /S _?=$(winepath -w "$programs/QRT15")"
check 'the utility is closed in time' 0 new_while_closing
printf 'TIMEOUT=20\r\n' >>"$programs/QRT15/korsa.ini"
check 'a downgrade keeps a changed korsa.ini' 0 'old /S' '~entry' '~'programs/QRT15/{exe,un}
mkdir "$drive/closed" && chmod a-w "$drive/closed"
check 'a failed move changes nothing' 2 'says cannot.be.written.to.C: /S /D=C:\closed'
check 'the reason is that of the failing folder' 2 'says x.cannot.be.created.*error.5 /S /D=C:\closed\x'
for options in '/D=Q:\a.missing.drive' '/D=relative\x' '/D="C:\x y"' '/D=C:\windows\explorer.exe\x' '/D=C:/x' "/D=C:\\"; do
  check "$options is refused" 2 "says full.path /S $options"
done
for options in '/S /d=C:\x' /s --silent; do check "$options is refused" 2 "says Unknown.option $options"; done
for option in '/?' --help; do check "$option shows the usage" 0 "says Usage:.setup.exe $option"; done
check 'the uninstaller refuses an unknown option' 2 "remove /X _?=$(winepath -w "$programs/QRT15")"
check move 0 'new /S /D=C:\Tools\Ütility 2' '~entry' -programs{,/QRT15{,/exe,/ini,/un}} \
  +Tools{,/Ütility\ 2{,/exe,/ini,/un}}
check 'a changed korsa.ini moves along' 0 moved_seed
ln -s "Tools/Ütility 2" "$drive/link"
check 'another name of the same folder is no move' 0 'new /S /D=C:\link'
check 'without /D= it stays in its folder' 0 'new /S'
echo mine >"$drive/Tools/Ütility 2/mine.txt"
check 'the removal leaves foreign files' 0 remove_quoted -entry -menu{,/link} -Tools/Ütility\ 2/{exe,un} \
  -logs/QRT15/README.txt
mkdir "$menu" "$drive/product"
quietly wine reg add "$maker" /v Installpath /d 'C:\gone' /f "${view[@]}"
check 'a product that is gone' 0 'new /S' +entry +logs/QRT15/README.txt +menu/link +programs{,/QRT15{,/exe,/ini,/un}}
check 'the removal leaves nothing else' 0 'remove /S' -entry -logs/QRT15/README.txt -menu{,/link} -programs{,/QRT15{,/exe,/ini,/un}}
mkdir "$menu"
quietly wine reg add "$maker" /v Installpath /d 'C:\product' /f "${view[@]}"
echo own | tee "$drive/product/korsa.ini" >"$menu/Varnexa 15.0 Update.lnk"
check "in the product's folder" 0 'new /S' +entry +product/{exe,un} +logs/QRT15/README.txt
check "removed from the product's folder" 0 'remove /S' -entry -product/{exe,un} -logs/QRT15/README.txt
mkdir "$logs/QRT15/folder"
check 'a folder in the log folder is refused' 2 'says QRT15.folder.is.a.folder.or.a.link /S'
rmdir "$logs/QRT15/folder" && mv "$logs/QRT15" "$drive/Tools" && ln -s "$drive/Tools/QRT15" "$logs/QRT15"
check 'a link in place of the log folder is refused' 2 'says leads.to.another.folder /S'
rm "$logs/QRT15" && echo >"$logs/QRT15"
check 'a file in place of the log folder is refused' 2 'says not.a.folder.of.the.administrators /S'
chmod u+w "$drive/closed"
exit $failed
