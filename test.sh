#!/bin/bash
# Usage: ./test.sh [OPTION]…
#
# Installs what is missing, builds, and runs every test, natively and under Wine. Ends with the summary of ctest over
# all of them. Exit status: 0 if all have passed, 2 for wrong use, another one if a test has failed.
#
# The options are those of ctest (ctest --help), for example:
#   -N                only lists the tests; builds nothing
#   -R REGEX          only the tests whose name matches: unit, integration, lint, …
#   -E REGEX          not the tests whose name matches
#   -j N              runs N tests at once (default: 2; 1 where only one sandbox can run at a time)
#   -V                shows the output of every test
#   --stop-on-failure, --rerun-failed, --repeat until-fail:N
#
# TAVREL_BUILD_ROOT     folder for everything that is built (default: build); needed in a read-only checkout
# TAVREL_HAVE_PACKAGES  1: install nothing; all packages are installed, possibly under other names
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/scripts/lib.sh"
check_usage 0 "$@"

"$repo/scripts/setup.sh"
# Older versions of ctest ignore what they do not know.
known=$(ctest --help)
for ((i = 1; i <= $#; ++i)); do
  if [[ $known =~ [\ ,]"${!i}"\ \[?'<' ]]; then
    option=${!i}
    ((++i <= $#)) || die "$option needs a value; ./test.sh --help tells more"
    [[ $option != -j || ${!i} =~ ^[1-9][0-9]*$ ]] || die "not a number of tests: ${!i}"
  else
    [[ ${!i} == -* && $known =~ [\ ,]"${!i}"[\ ,=$'\n'] ]] || die "unknown option: ${!i}; ./test.sh --help tells more"
  fi
done
for preset in native release; do "$repo/scripts/build.sh" --configure "$preset"; done
# One list over both trees, so that there is one summary.
mkdir -p "$build_root/ctest"
printf 'subdirs("%s" "%s")\n' "$build_root/native" "$build_root/release" >"$build_root/ctest/CTestTestfile.cmake"
# A test that waits for another's sandbox would exceed its time.
parallel=2
if [[ $(sandbox_kind) == plain ]]; then parallel=1; fi
tests=(ctest --test-dir "$build_root/ctest" --output-on-failure --timeout 300 --parallel "$parallel" "$@")
names=$("${tests[@]}" --show-only 2>&1) || die "${names##*CMake Error: }"
[[ $names != *'Total Tests: 0'* ]] || die "no test matches $*; ./test.sh -N lists them"
if [[ " $* " =~ \ (-N|--show-only)\  ]]; then
  sed -n 's/^ *Test *#[0-9]*: /  /p' <<<"$names"
  exit
fi

presets=(native release)
# A second compiler only has to build everything without a warning; older ones cannot.
if (($(clang++ -dumpversion | cut -d. -f1) >= 19)); then presets+=(clang); fi
for preset in "${presets[@]}"; do "$repo/scripts/build.sh" "$preset"; done
# Prepared before the tests, because the tests have time limits.
for arch in win32 win64; do "$repo/scripts/sandbox.sh" --arch "$arch" --prepare; done
say "Running the tests"
"${tests[@]}"
