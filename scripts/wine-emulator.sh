#!/bin/bash
# Runs a Windows program in the sandbox: wine-emulator.sh PROGRAM.exe [ARGUMENT]… (for ctest and by hand).
# TAVREL_ARCH (win32, win64) and TAVREL_PREFIX_NAME choose the sandbox, see sandbox.sh.
exec "$(dirname -- "$0")/sandbox.sh" -- wine "$@"
