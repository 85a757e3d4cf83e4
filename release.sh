#!/bin/bash
# Makes a release: see the usage text below.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "$(readlink -f -- "$0")")/scripts/lib.sh"

usage() {
  cat <<'EOF'
Usage: ./release.sh [TAG | COMMIT]

Builds the commit (HEAD unless given) twice, in two folders of its own, compares program, packcheck and
installer byte for byte, and leaves in build/dist/: the installer, a zip of the programs and the guides,
the software bill of materials, the notes of the version from CHANGELOG.md, and SHA256SUMS over all.

Refuses a dirty tree, a tag that is not the version's, a version that CHANGELOG.md does not know, and a
program without address randomisation or data execution prevention.

Programs, uninstaller and installer are signed where a certificate is given: TAVREL_SIGN_PKCS12, and
TAVREL_SIGN_PASSWORD_FILE and TAVREL_SIGN_TIMESTAMP as packaging/sign.sh tells. What is compared, and what
anybody can build again, is what stands before the signatures.
EOF
}

case ${1-} in
  --help | -h) usage; exit ;;
  -*) die "unknown option: $1; ./release.sh --help tells more" ;;
esac
(($# <= 1)) || die "releases one commit at a time; ./release.sh --help tells more"
cd "$repo"
commit=$(git rev-parse --verify --quiet "${1:-HEAD}^{commit}") || die "no such commit: $1"
[[ -z $(git status --porcelain) ]] || die "the tree is dirty: commit or remove what git status names, then go on"
version=$(git show "$commit:CMakeLists.txt" | sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p')
tag=$(git tag --points-at "$commit" --list 'v[0-9]*' | head -n 1)
[[ -z $tag || $tag == "v$version" ]] || die "the tag $tag stands at version $version: move one of them"
notes=$(git show "$commit:CHANGELOG.md" | sed -n "/^## \[${version//./\\.}\] - [0-9-]*$/,/^## \[/p" | sed '1d; /^## \[/d')
[[ -n ${notes//[[:space:]]/} ]] || die "CHANGELOG.md has no section '## [$version] - DATE': write it, then go on"
make_build_root
exec 9>"$build_root/release.lock"
flock --nonblock 9 || die "another ./release.sh works in $build_root; start again when it has ended"
"$repo/scripts/setup.sh"

# The times in what is packed are the commit's.
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct "$commit")
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8
work=$build_root/release-work
dist=$build_root/dist
setup=QRTTavrelUtility-$version-setup.exe
programs=(QRTTavrelUtility.exe packcheck.exe)
rm -rf "$work" "$dist"

# Another depth and length of path each, so that one that gets into a file is seen.
for folder in "$work/1" "$work/second/checkout"; do
  mkdir -p "$folder"
  git archive "$commit" | tar -x -C "$folder"
  say "Building $version in $folder"
  TAVREL_BUILD_ROOT=$folder/build "$folder/scripts/build.sh" release "${programs[@]%.exe}" installer >"$folder.log" ||
    { tail -n 30 "$folder.log" >&2; die "the build failed; see $folder.log"; }
done
tree=$work/1/build/release
for file in "${programs[@]}" "$setup"; do
  cmp "$tree/$file" "$work/second/checkout/build/release/$file" || die "$file differs between two builds"
  "$work/1/packaging/hardened.sh" "$tree/$file" || die "$file is not hardened"
done

mkdir -p "$dist"
content=$work/QRTTavrelUtility-$version
mkdir "$content"
cp "${programs[@]/#/$tree/}" "$tree/korsa.ini" "$content/"
(cd "$work/1" && cp --parents CHANGELOG.md SECURITY.md docs/{user,administrator,publisher}.md docs/pictures/*.png "$content/")
if [[ -n ${TAVREL_SIGN_PKCS12-} ]]; then
  say "Signing"
  "$work/1/packaging/sign.sh" "${programs[@]/#/$content/}"
  TAVREL_SIGN=$work/1/packaging/sign.sh "$work/1/packaging/installer.sh" "$tree" "$content/QRTTavrelUtility.exe" >&2
  "$work/1/packaging/sign.sh" "$tree/$setup"
fi
cp "$tree/$setup" "$dist/"
find "$content" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
(cd "$work" && find "${content##*/}" | sort | zip -q -X "$dist/${content##*/}.zip" -@)
"$work/1/packaging/bill-of-materials.sh" "$version" "$commit" "$SOURCE_DATE_EPOCH" "${programs[@]/#/$content/}" \
  "$dist/$setup" >"$dist/QRTTavrelUtility-$version.cdx.json"
printf '# Varnexa Tavrel Utility %s\n%s\n' "$version" "$notes" >"$dist/NOTES.md"
(cd "$dist" && sha256sum -- * >"$work/SHA256SUMS" && mv "$work/SHA256SUMS" .)
rm -rf "$work"
say "Released $version ($commit) to $dist:"
ls -l "$dist"
