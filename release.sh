#!/bin/bash
# Makes a release: see the usage text below.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "$(readlink -f -- "$0")")/scripts/lib.sh"

usage() {
  cat <<'EOT'
Usage: ./release.sh [--draft] [TAG | COMMIT]

Builds the commit (HEAD unless given) twice, in two folders of different paths, and compares the programs and the
installer byte for byte. Leaves in build/dist/: the installer, a zip of the programs and the guides, the software
bill of materials, the notes of the version from CHANGELOG.md, and SHA256SUMS over all.

Refuses a dirty tree, a commit without the tag of its version (v2.0.3), entries under [Unreleased] in CHANGELOG.md,
a version without a section there, and a program without address randomisation or data execution prevention.

  --draft   does the same for any commit, with DRAFT in all names and in the notes, which include [Unreleased]

Programs, uninstaller and installer are signed where TAVREL_SIGN_CERTIFICATE names a certificate: see
packaging/sign.sh. Without it the output, the notes and SHA256SUMS say UNSIGNED. The builds are compared before
they are signed, so everyone can build the commit and compare too.
EOT
}

draft=
while (($#)); do
  case $1 in
    --help | -h) usage; exit ;;
    --draft) draft=-DRAFT; shift ;;
    -*) die "unknown option: $1; ./release.sh --help tells more" ;;
    *) break ;;
  esac
done
(($# <= 1)) || die "releases one commit at a time; ./release.sh --help tells more"
cd "$repo"
commit=$(git rev-parse --verify --quiet "${1:-HEAD}^{commit}") || die "no such commit: $1"
[[ -z $(git status --porcelain) ]] || die "the tree is dirty: commit or remove what git status names, then go on"
version=$(git show "$commit:CMakeLists.txt" | sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p')
# The text below the heading that matches an expression, without blank lines around it.
changelog() { git show "$commit:CHANGELOG.md" | sed -n "/^## $1\$/,/^## \[/p" | sed '/^## \[/d' | sed '/./,$!d'; }
changes=$(changelog "\[${version//./\\.}\] - [0-9-]*")
unreleased=$(changelog '\[Unreleased\]')
if [[ -n $draft ]]; then
  changes=${unreleased:-$changes}
else
  git tag --points-at "$commit" | grep -qxF "v$version" ||
    die "the commit has no tag v$version: set it (git tag), or make a draft (--draft)"
  [[ -z $unreleased ]] ||
    die "CHANGELOG.md has entries under [Unreleased]: give them a version and a tag, or make a draft (--draft)"
fi
[[ -n $changes ]] || die "CHANGELOG.md has no section '## [$version] - DATE': write it, then go on"
make_build_root
exec 9>"$build_root/release.lock"
flock --nonblock 9 || die "another ./release.sh works in $build_root; start again when it has ended"
"$repo/scripts/setup.sh"

# File times in the packages are the commit's.
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct "$commit")
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8
work=$build_root/release-work
dist=$build_root/dist
name=QRTTavrelUtility-$version$draft
setup=QRTTavrelUtility-$version-setup.exe
tools=(packcheck logcheck)
rm -rf "$work" "$dist"

# Paths of different depth and length, so that the comparison shows a path in a file.
for folder in "$work/1" "$work/second/checkout"; do
  mkdir -p "$folder"
  git archive "$commit" | tar -x -C "$folder"
  say "Building $version in $folder"
  export TAVREL_BUILD_ROOT=$folder/build
  {
    "$folder/scripts/build.sh" release QRTTavrelUtility "${tools[@]}" standin_15_0_2_5 installer
    "$folder/scripts/build.sh" host "${tools[@]}"
  } >"$folder.log" || { tail -n 30 "$folder.log" >&2; die "the build failed; see $folder.log"; }
done
unset TAVREL_BUILD_ROOT
tree=$work/1/build
programs=(QRTTavrelUtility.exe "${tools[@]/%/.exe}")
for file in "${programs[@]/#/release/}" "release/$setup" "${tools[@]/#/host/}"; do
  cmp "$tree/$file" "$work/second/checkout/build/$file" || die "$file differs between two builds"
done
"$work/1/packaging/hardened.sh" "${programs[@]/#/$tree/release/}" "$tree/release/$setup" || die "not hardened"

# trial/ is for the guide docs/windows.md: a stand-in of the product, and a list for the server.
content=$work/$name
mkdir -p "$dist" "$content/linux" "$content/trial/qrt15"
cp "${programs[@]/#/$tree/release/}" "$tree/release/korsa.ini" "$tree/release/generated/deploy.ps1" "$content/"
cp "${tools[@]/#/$tree/host/}" "$content/linux/"
cp "$tree/release/demo/standin/15.0.2.5/Qrt.exe" "$content/trial/"
cp "$work/1/demo/updates.ini" "$content/trial/qrt15/"
"$work/1/packaging/guides.sh" "$content"
"$work/1/packaging/notices.sh" >"$content/THIRD-PARTY-NOTICES.txt"
signature='UNSIGNED: neither the programs nor the installer carry a signature.'
if [[ -n ${TAVREL_SIGN_CERTIFICATE-} ]]; then
  say "Signing"
  signature='The programs, the uninstaller and the installer are signed.'
  "$work/1/packaging/sign.sh" "${programs[@]/#/$content/}"
  TAVREL_SIGN=$work/1/packaging/sign.sh "$work/1/packaging/installer.sh" "$tree/release" \
    "$content/QRTTavrelUtility.exe" >&2
  "$work/1/packaging/sign.sh" "$tree/release/$setup"
fi
nsis=$(makensis -VERSION)
nsis=${nsis#v}
origin="The installer was made with NSIS $nsis."
# Its temporary folder: CVE-2026-42171, in 3.06.1 to 3.11.
if dpkg --compare-versions "$nsis" lt 3.12; then
  origin+=' Do not run it as SYSTEM: with NSIS before 3.12 a local user can then gain the rights of SYSTEM.'
  origin+=' Deploy with the zip instead (docs/administrator.md).'
fi

cp "$tree/release/$setup" "$dist/$name-setup.exe"
find "$content" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
(cd "$work" && find "$name" | sort | zip -q -X "$dist/$name.zip" -@)
(cd "$content" && "$work/1/packaging/bill-of-materials.sh" "$version$draft" "$commit" "$SOURCE_DATE_EPOCH" \
  "${programs[@]}" "${tools[@]/#/linux/}" "$dist/$name-setup.exe") >"$dist/$name.cdx.json"
notes=$dist/NOTES$draft.md
{
  printf '# Varnexa Tavrel Utility %s\n\n' "$version$draft"
  if [[ -n $draft ]]; then printf 'DRAFT of commit %s, not a release.\n\n' "$commit"; fi
  printf '%s\n\n' 'Made for Windows 7 SP1 to 11. Tested under Wine only, never on a real Windows.' "$signature" "$origin" "$changes"
} >"$notes"
{
  if [[ $signature == UNSIGNED* ]]; then echo "# $signature"; fi
  cd "$dist" && sha256sum -- *
} >"$work/SHA256SUMS"
mv "$work/SHA256SUMS" "$dist/SHA256SUMS$draft"
rm -rf "$work"
say "$signature"
say "$origin"
if [[ -n $draft ]]; then say "Drafted $version ($commit) in $dist:"; else say "Released $version ($commit) in $dist:"; fi
ls -l "$dist"
