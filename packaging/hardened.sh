#!/bin/bash
# Fails unless every FILE is a Windows program with address randomisation (0x40), data execution prevention (0x100),
# no terminal server compatibility layer (0x8000), subsystem version 6.1, and relocations, without which Windows cannot
# randomise addresses. NSIS makes installers without relocations: *-setup.exe needs none.   packaging/hardened.sh FILE…
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 1 "$@"
for file; do
  headers=$(i686-w64-mingw32-objdump -p "$file" 2>/dev/null || true)
  field() { sed -n "s/^$1\\s*\\([0-9a-f]*\\)\$/\\1/p" <<<"$headers"; }
  flags=$(field DllCharacteristics)
  version=$(field MajorSubsystemVersion).$(field MinorSubsystemVersion)
  if [[ $headers != *'relocations stripped'* || $file == *-setup.exe ]]; then relocations=yes; else relocations=no; fi
  if (((0x${flags:-0} & 0x8140) != 0x8140)) || [[ $version/$relocations != 6.1/yes ]]; then
    echo "$file: flags 0x${flags:-0}, subsystem $version, relocations: $relocations; wanted 0x8140, 6.1, yes" >&2
    exit 1
  fi
done
