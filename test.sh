#!/bin/bash
# Usage: ./test.sh [OPTION]…
#
# Installs what is missing, builds, and runs every test, natively and under Wine. Ends with ctest's summary over
# all of them. Exit status: 0 if all have passed, 2 for wrong use, another one if a test has failed.
#
#   --list            only lists the tests; builds nothing
#   -R REGEX          only the tests whose name matches
#   -E REGEX          not the tests whose name matches
#   -j N              runs N tests at once (default: 2; 1 where only one sandbox can run at a time)
#   -V                shows the output of every test
#   --stop-on-failure, --rerun-failed, --repeat MODE:N
#                     as ctest has them
#   --help            this text
#
# TAVREL_BUILD_ROOT     folder for everything that is built (default: build); needed in a read-only checkout
# TAVREL_HAVE_PACKAGES  1: install nothing; all packages are installed, possibly under other names
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "$(readlink -f -- "$0")")/scripts/lib.sh"

list=no
parallel=
options=()
while (($#)); do
  case $1 in
    --help | -h) usage; exit ;;
    --list) list=yes; shift ;;
    -V | --stop-on-failure | --rerun-failed) options+=("$1"); shift ;;
    -R | -E | -j | --repeat)
      (($# > 1)) || die "$1 needs a value; ./test.sh --help tells more"
      case $1 in
        -j) [[ $2 =~ ^[1-9][0-9]?$ ]] || die "not a number of tests: $2"
          parallel=$2 ;;
        -R | -E) grep -E -e "$2" </dev/null 2>/dev/null || (($? == 1)) || die "not a regular expression: $2"
          options+=("$1" "$2") ;;
        --repeat) [[ $2 =~ ^(until-fail|until-pass|after-timeout):[1-9][0-9]*$ ]] || die "not a way to repeat tests: $2"
          options+=("$1" "$2") ;;
      esac
      shift 2 ;;
    *) die "unknown option: $1; ./test.sh --help lists them" ;;
  esac
done

"$repo/scripts/setup.sh"
for preset in native release; do "$repo/scripts/build.sh" --configure "$preset"; done
# One list over both trees, so that there is one summary.
mkdir -p "$build_root/ctest"
printf 'subdirs("%s" "%s")\n' "$build_root/native" "$build_root/release" >"$build_root/ctest/CTestTestfile.cmake"
tests=(ctest --test-dir "$build_root/ctest" "${options[@]}")
names=$("${tests[@]}" --show-only)
[[ $names != *'Total Tests: 0'* ]] || die "no test matches ${options[*]}; ./test.sh --list names them"
if [[ $list == yes ]]; then
  sed -n 's/^ *Test *#[0-9]*: /  /p' <<<"$names"
  exit
fi

presets=(native release)
# A second compiler only has to build everything without a warning; older ones cannot.
if (($(clang++ -dumpversion | cut -d. -f1) >= 19)); then presets+=(clang); fi
for preset in "${presets[@]}"; do "$repo/scripts/build.sh" "$preset"; done
# Prepared before the tests, because the tests have time limits.
for arch in win32 win64; do "$repo/scripts/sandbox.sh" --arch "$arch" --prepare; done
if [[ -z $parallel ]]; then
  # A test that waits for another's sandbox would exceed its time.
  if [[ $(sandbox_kind) == plain ]]; then parallel=1; else parallel=2; fi
fi
say "Running the tests"
"${tests[@]}" --output-on-failure --timeout 300 --parallel "$parallel"
