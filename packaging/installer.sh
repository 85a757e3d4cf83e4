#!/bin/bash
# Makes the installer and prints its path: packaging/installer.sh BUILD-TREE [PROGRAM]
# BUILD-TREE is one of the preset release; PROGRAM takes the place of the program in it (a signed one).
# If TAVREL_SIGN is set, it is the command that signs the uninstaller; the file's path is appended to it.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 1 "$@"

tree=$(realpath -m -- "$1")
program=$(realpath -m -- "${2:-$tree/QRTTavrelUtility.exe}")
for file in "$tree/generated/version.h" "$program"; do [[ -r $file ]] || die "cannot read $file: build the preset release"; done
version_of() { sed -n "s/^#define $1 \"\(.*\)\"$/\1/p" "$tree/generated/version.h"; }
version=$(version_of TAVREL_VERSION)
output=$tree/QRTTavrelUtility-$version-setup.exe
size=$((($(stat --format=%s "$program") + 1023) / 1024 + 64))  # 64 KiB: uninstaller and seed
# The file gets the line ends of Windows.
sed 's/$/\r/' "$tree/generated/korsa.ini" >"$tree/korsa.ini"
# A UTF-8 locale, because paths may contain any letter.
LC_ALL=C.UTF-8 makensis -V2 -WX -NOCD -DVERSION="$version" -DFILE_VERSION="$(version_of TAVREL_FILE_VERSION)" -DPRODUCT="$tree/generated/product.nsh" -DSIZE="$size" \
  -DOUTPUT="$output" -DPROGRAM="$program" -DSEED="$tree/korsa.ini" -DICON="$repo/resources/app.ico" \
  ${TAVREL_SIGN:+-DSIGN="$TAVREL_SIGN"} "$repo/packaging/installer.nsi" >&2
printf '%s\n' "$output"
