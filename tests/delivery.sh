#!/bin/bash
# Checks the delivered executable: tests/delivery.sh BUILD-TREE. Fails when it needs a library that another user could
# plant beside it, has no hardening or manifest, or differs when it is linked again.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 1 "$@"
tree=$1
program=$tree/QRTTavrelUtility.exe
failed=0
fail() { echo "delivery: $*"; failed=1; }

headers=$(i686-w64-mingw32-objdump -p "$program")
# Windows loads these libraries from its own folder only.
others=$(sed -n 's/.*DLL Name: \(.*\)\.[dD][lL][lL]$/\L\1/p' <<<"$headers" |
  grep -vxE 'advapi32|gdi32|kernel32|msvcrt|shell32|shlwapi|user32' || true)
[[ -z $others ]] || fail "needs $others"
"$repo/packaging/hardened.sh" "$program" || failed=1
grep -q '^Subsystem[[:space:]]*0*2[[:space:]]' <<<"$headers" || fail "is not a window program"
(($(stat -c %s "$program") <= 250 * 1024)) || fail "is larger than 250 KiB"
for wanted in 'Common-Controls' '<dpiAware'; do
  grep -aq "$wanted" "$program" || fail "has no $wanted in its manifest"
done
# Windows takes a program without a level for an installer if its description has the word "update". The installer
# wants an administrator.
for other in "$tree"/*.exe "$tree"/demo/standin/*/Qrt.exe; do
  [[ $other == *-setup.exe ]] || grep -aq 'requestedExecutionLevel level="asInvoker"' "$other" ||
    fail "${other#"$tree/"} has no asInvoker in its manifest"
done

copy=$(mktemp)
trap 'rm -f "$copy"' EXIT
cp "$program" "$copy"
touch "$tree/src/libtavrel.a"
cmake --build "$tree" --target QRTTavrelUtility >/dev/null
cmp "$program" "$copy" || fail "differs when it is linked again"
exit "$failed"
