#!/bin/bash
# Prints the notices for the third-party code in the released programs, the copyright files of the Debian packages from
# which that code comes: packaging/notices.sh BILL-OF-MATERIALS
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 1 "$@"
[[ -r $1 ]] || die "cannot read $1"
cat <<'EOT'
Third-party notices

The programs of this release contain code of the projects below. Each is followed by the copyright file of the
package that the code came with. Such a file covers all of its project, also parts that the programs do not contain.
EOT
# A line for each package: its name and version, a tab, the libraries that it has, with their licences.
jq -r '[.components[] | select(.type == "library")] | group_by(.purl)[] |
  (.[0].purl | sub(".*/"; "") | sub("@.*"; "")) + " " + .[0].version + "\t" +
    (map(.name + ": " + .description + " (" + .licenses[0].expression + ")") | join("\\n======== "))' "$1" |
  while IFS=$'\t' read -r package libraries; do
    printf '\n\n======== %b\n======== Debian package %s\n\n' "$libraries" "$package"
    cat "/usr/share/doc/${package% *}/copyright"
  done
printf '\n\n======== GNU General Public License 3\n\n'
cat /usr/share/common-licenses/GPL-3
