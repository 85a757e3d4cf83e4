#!/bin/bash
# Fails unless every FILE is a Windows program with address randomisation (0x40) and data execution prevention
# (0x100):   packaging/hardened.sh FILE…
set -euo pipefail
for file; do
  flags=$(i686-w64-mingw32-objdump -p "$file" 2>/dev/null | sed -n 's/^DllCharacteristics\s*\([0-9a-f]*\)$/\1/p')
  if (((0x${flags:-0} & 0x140) != 0x140)); then
    echo "$file lacks address randomisation or data execution prevention" >&2
    exit 1
  fi
done
