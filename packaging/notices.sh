#!/bin/bash
# Prints the notices for the third-party code in the released programs: the copyright files of the Debian packages from
# which that code comes.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 0 "$@"
print_package() {
  printf '\n\n======== %s\n======== Debian package %s %s\n\n' "$1" "$2" \
    "$(dpkg-query --show --showformat '${Version}' "$2")"
  cat "/usr/share/doc/$2/copyright"
}
cat <<'EOT'
Third-party notices

The programs of this release contain code of the projects below. Each is followed by the copyright file of the
package that the code came with. Such a file covers all of its project, also parts that the programs do not contain.
EOT
print_package 'libgcc and libstdc++ (all programs): GPL 3 with the GCC Runtime Library Exception' \
  "$(i686-w64-mingw32-g++-posix -print-file-name=libgcc.a | xargs realpath | xargs dpkg-query --search | cut -d : -f 1)"
print_package 'MinGW-w64 runtime and winpthreads (all .exe files)' mingw-w64-i686-dev
print_package 'JSON for Modern C++ (packcheck, logcheck)' nlohmann-json3-dev
print_package 'CLI11 (packcheck, logcheck)' libcli11-dev
print_package 'NSIS with its LZMA decompressor (installer and uninstaller)' nsis
printf '\n\n======== GNU General Public License 3\n\n'
cat /usr/share/common-licenses/GPL-3
