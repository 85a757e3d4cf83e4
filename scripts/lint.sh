#!/bin/bash
# Usage: scripts/lint.sh format
#        scripts/lint.sh tidy BUILD-TREE
#
# "format" checks every source with clang-format. "tidy" runs clang-tidy over the product's sources with the compile
# commands of BUILD-TREE, which the cross compiler's preset made. Prints what is wrong and fails if anything is.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "$(readlink -f -- "$0")")/lib.sh"

case ${1-} in
  --help | -h) usage; exit ;;
  tidy) [[ -e ${2-}/compile_commands.json ]] || die "'${2-}' is no build tree; scripts/build.sh release makes one" ;;
esac
cd "$repo"

case ${1-} in
  format)
    find src console packcheck logcheck tests demo tools \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 clang-format --dry-run -Werror
    ;;
  tidy)
    # clang knows neither where the cross compiler keeps its headers, nor its target, nor all of its warnings.
    arguments=(--extra-arg=--target=i686-w64-mingw32 --extra-arg=-Wno-unknown-warning-option)
    while read -r folder; do
      arguments+=(--extra-arg=-isystem"$folder")
    done < <(i686-w64-mingw32-g++-posix -x c++ -E -v /dev/null 2>&1 |
      sed -n '/^#include <...>/,/^End of search/s/^ //p')
    find src console packcheck logcheck -name '*.cpp' -print0 |
      xargs -0 -n 4 -P "$(nproc)" clang-tidy -p "$2" --quiet "${arguments[@]}" 2>/dev/null
    ;;
  *) die "unknown check: '${1-}'; scripts/lint.sh --help tells more" ;;
esac
