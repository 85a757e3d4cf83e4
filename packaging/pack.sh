#!/bin/bash
# Packs what is published: packaging/pack.sh BUILD DIST COMMIT CHANGES
#   BUILD    folder with the trees of the presets release (with the targets that release.sh builds) and host
#   DIST     folder to be made, with the installer, a zip of programs and guides, the software bill of materials, the
#            release notes, and SHA256SUMS over all
#   COMMIT   its hash, for the bill of materials
#   CHANGES  the changes of this version, as Markdown, for the notes
# SOURCE_DATE_EPOCH is the time of all files, in seconds since 1970. packaging/sign.sh describes the variables for signing.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 4 "$@"
packaging=$repo/packaging build=$(realpath -- "$1") dist=$(realpath -m -- "$2") commit=$3 changes=$4
export TZ=UTC LC_ALL=C.UTF-8
. "$build/release/generated/product.sh"
name=QRTTavrelUtility-$TAVREL_VERSION
setup=$dist/$name-setup.exe
content=$dist/$name
draft=
if [[ $TAVREL_VERSION == *-DRAFT ]]; then draft=-DRAFT; fi

# Prints the notices for the third-party code in the released programs: the copyright files of the Debian packages from
# which that code comes.
notices() {
  cat <<'EOT'
Third-party notices

The programs of this release contain code of the projects below. Each is followed by the copyright file of the
package that the code came with. Such a file covers all of its project, also parts that the programs do not contain.
EOT
  # A line for each package: its name and version, a tab, the libraries that it has, with their licences.
  jq -r '[.components[] | select(.type == "library")] | group_by(.purl)[] |
    (.[0].purl | sub(".*/"; "") | sub("@.*"; "")) + " " + .[0].version + "\t" +
      (map(.name + ": " + .description + " (" + .licenses[0].expression + ")") | join("\\n======== "))' "$dist/$name.cdx.json" |
    while IFS=$'\t' read -r package libraries; do
      printf '\n\n======== %b\n======== Debian package %s\n\n' "$libraries" "$package"
      cat "/usr/share/doc/${package% *}/copyright"
    done
  printf '\n\n======== GNU General Public License 3\n\n'
  cat /usr/share/common-licenses/GPL-3
}

# trial/ is for the guide docs/windows.md: a stand-in of the product, and a list for the server.
programs=(QRTTavrelUtility.exe packcheck.exe logcheck.exe trial/Qrt.exe)
mkdir -p "$content/linux" "$content/trial/qrt15"
cp "$build"/release/{{QRTTavrelUtility,packcheck,logcheck}.exe,generated/{korsa.ini,deploy.ps1}} "$content/"
cp "$build"/host/{packcheck,logcheck} "$content/linux/"
cp "$build/release/demo/standin/15.0.2.5/Qrt.exe" "$content/trial/"
cp "$repo/demo/updates.ini" "$content/trial/qrt15/"
"$packaging/guides.sh" "$content"
signature='UNSIGNED: neither the programs nor the installer carry a signature.'
if [[ -n ${TAVREL_SIGN_CERTIFICATE-} ]]; then
  say "Signing"
  signature='The programs, the uninstaller and the installer are signed.'
  files=("${programs[@]}" deploy.ps1)
  if dpkg --compare-versions "$(dpkg-query --show --showformat '${Version}' osslsigncode)" lt 2.9; then
    unset 'files[-1]'
    signature+=' deploy.ps1 is not, because osslsigncode before 2.9 cannot sign scripts.'
  fi
  "$packaging/sign.sh" "${files[@]/#/$content/}"
  TAVREL_SIGN=$packaging/sign.sh "$packaging/installer.sh" "$build/release" "$content/QRTTavrelUtility.exe" >&2
  "$packaging/sign.sh" "$build/release/$name-setup.exe"
fi
cp "$build/release/$name-setup.exe" "$setup"
nsis=$(dpkg-query --show --showformat '${Version}' nsis)
origin="The installer was made with NSIS $nsis."
# Its temporary folder: CVE-2026-42171, in 3.06.1 to 3.11.
if dpkg --compare-versions "$nsis" lt 3.12; then
  origin+=' Do not run it, or the uninstaller, as SYSTEM: with NSIS before 3.12 a local user can then gain the rights of'
  origin+=' SYSTEM. Deploy with the zip instead (docs/administrator.html).'
fi

(cd "$content" && "$packaging/bill-of-materials.sh" "$TAVREL_MAKER" "$TAVREL_VERSION" "$commit" "$SOURCE_DATE_EPOCH" \
  "${programs[@]}" linux/{packcheck,logcheck} deploy.ps1 "$setup") >"$dist/$name.cdx.json"
notices >"$content/THIRD-PARTY-NOTICES.txt"
# The zip has the modes of its files, which would depend on the umask.
chmod -R u=rwX,go=rX "$content"
find "$content" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
(cd "$dist" && find "$name" | sort | zip -q -X "$name.zip" -@)
rm -r "$content"
{
  printf '# %s %s\n\n' "$TAVREL_TITLE" "$TAVREL_VERSION"
  if [[ -n $draft ]]; then printf 'DRAFT of commit %s, not a release.\n\n' "$commit"; fi
  printf '%s\n\n' 'Made for Windows 7 SP1 to 11. Tested under Wine only, never on a real Windows.' "$signature" "$origin" "$changes"
} >"$dist/NOTES$draft.md"
sums=$(cd "$dist" && sha256sum -- *)
printf '# %s\n%s\n' "$signature" "$sums" >"$dist/SHA256SUMS$draft"
say "$signature"
say "$origin"
