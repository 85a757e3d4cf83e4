#!/bin/bash
# Formatting and static analysis: scripts/lint.sh format | tidy BUILD-TREE
# "format" asks clang-format about every source; "tidy" runs clang-tidy over the product's sources with the
# compile commands of BUILD-TREE, made by the cross compiler. Prints what is wrong and fails if anything is.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"
cd "$repo"

case ${1-} in
  format)
    find src console packcheck tests demo tools \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 clang-format --dry-run -Werror
    ;;
  tidy)
    # clang knows neither where the cross compiler keeps its headers, nor its target, nor all of its warnings.
    arguments=(--extra-arg=--target=i686-w64-mingw32 --extra-arg=-Wno-unknown-warning-option)
    while read -r folder; do
      arguments+=(--extra-arg=-isystem"$folder")
    done < <(i686-w64-mingw32-g++-posix -x c++ -E -v /dev/null 2>&1 |
      sed -n '/^#include <...>/,/^End of search/s/^ //p')
    find src console packcheck -name '*.cpp' -print0 |
      xargs -0 -n 4 -P "$(nproc)" clang-tidy -p "$2" --quiet "${arguments[@]}" 2>/dev/null
    ;;
  *)
    sed -n '2,4s/^# //p' "$0"
    exit 2
    ;;
esac
