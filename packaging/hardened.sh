#!/bin/bash
# Fails unless every FILE is a Windows program with address randomisation, data execution prevention, no terminal server
# compatibility layer, subsystem version 6.1, and relocations, without which Windows cannot randomise addresses. NSIS makes
# installers without relocations: *-setup.exe needs none.   packaging/hardened.sh FILE…
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 1 "$@"
for file; do
  headers=$(i686-w64-mingw32-objdump -p "$file")
  for wanted in DYNAMIC_BASE NX_COMPAT TERMINAL_SERVICE_AWARE 'MajorSubsystemVersion\s+6' 'MinorSubsystemVersion\s+1'; do
    grep -qE "^\s*$wanted\$" <<<"$headers" || { echo "$file has no $wanted" >&2; exit 1; }
  done
  if [[ $headers == *'relocations stripped'* && $file != *-setup.exe ]]; then echo "$file has no relocations" >&2; exit 1; fi
done
