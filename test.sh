#!/bin/bash
# Sets up, builds and runs every test, natively and under Wine: ./test.sh [CTEST OPTION]…, for example
# ./test.sh -R sweep. Ends with ctest's own summary over all of them.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/scripts/lib.sh"

"$repo/scripts/setup.sh"
presets=(native release)
# A second compiler for the whole, where it is one of today's: only that it builds without a warning is asked.
if (($(clang++ -dumpversion | cut -d. -f1) >= 19)); then presets+=(clang); fi
for preset in "${presets[@]}"; do "$repo/scripts/build.sh" "$preset"; done

# One list over both trees, so that there is one summary.
mkdir -p "$build_root/ctest"
printf 'subdirs("%s" "%s")\n' "$build_root/native" "$build_root/release" >"$build_root/ctest/CTestTestfile.cmake"

# Before the tests, whose times are bounded.
for arch in win32 win64; do "$repo/scripts/sandbox.sh" --arch "$arch" --prepare; done
say "Running the tests"
ctest --test-dir "$build_root/ctest" --output-on-failure --timeout 300 --parallel 2 "$@"
