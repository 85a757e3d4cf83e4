#!/bin/bash
# Makes the installer and prints its path: packaging/installer.sh BUILD-TREE [PROGRAM]
# BUILD-TREE is one of the preset release; PROGRAM takes the place of the program in it (a signed one).
# If TAVREL_SIGN is set, it is the command that signs the uninstaller; the file's path is appended to it.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 1 "$@"

tree=$(realpath -m -- "$1")
program=$(realpath -m -- "${2:-$tree/QRTTavrelUtility.exe}")
for file in "$tree/generated/product.sh" "$program"; do [[ -r $file ]] || die "cannot read $file: build the preset release"; done
. "$tree/generated/product.sh"
output=$tree/QRTTavrelUtility-$TAVREL_VERSION-setup.exe
# A UTF-8 locale, because paths may contain any letter.
LC_ALL=C.UTF-8 makensis -V2 -WX -NOCD -DPRODUCT="$tree/generated" -DPROGRAM="$program" -DICON="$repo/resources/app.ico" \
  -DOUTPUT="$output" ${TAVREL_SIGN:+-DSIGN="$TAVREL_SIGN"} "$repo/packaging/installer.nsi" >&2
printf '%s\n' "$output"
