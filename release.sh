#!/bin/bash
# Usage: ./release.sh [--draft] [TAG | COMMIT]
#
# Builds the commit (HEAD unless given) twice, in two folders of different paths, and compares the programs and the
# installer byte for byte. Leaves in build/dist/ what packaging/pack.sh makes.
#
# Refuses a dirty tree, a commit without the tag of its version (v2.0.3), entries under [Unreleased] in CHANGELOG.md,
# a version without a section there, and a program that is not hardened.
#
#   --draft   does the same for any commit, with DRAFT in all names, versions and in the notes, which include
#             [Unreleased]. The last number of a draft's file version is the number of commits; a release has 0 there.
#
# Programs, uninstaller and installer are signed where TAVREL_SIGN_CERTIFICATE names a certificate: see
# packaging/sign.sh. Without it the output, the notes and SHA256SUMS say UNSIGNED. The builds are compared before they
# are signed, so everyone can build the commit and compare too.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/scripts/lib.sh"

draft=
export TAVREL_DRAFT=
commits=()
for argument; do
  case $argument in
    --help | -h) usage; exit ;;
    --draft) draft=-DRAFT ;;
    -*) die "unknown option: $argument; ./release.sh --help tells more" ;;
    *) commits+=("$argument") ;;
  esac
done
((${#commits[@]} <= 1)) || die "releases one commit at a time; ./release.sh --help tells more"
cd "$repo"
commit=$(git rev-parse --verify --quiet "${commits[0]-HEAD}^{commit}") || die "no such commit: ${commits[0]-HEAD}"
[[ -z $(git status --porcelain) ]] || die "the tree is dirty: commit or remove what git status names, then go on"
version=$(git show "$commit:CMakeLists.txt" | sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p')
# The text below the heading that matches an expression, without blank lines around it.
changelog() { git show "$commit:CHANGELOG.md" | sed -n "/^## $1\$/,/^## \[/p" | sed '/^## \[/d' | sed '/./,$!d'; }
changes=$(changelog "\[${version//./\\.}\] - [0-9-]*")
unreleased=$(changelog '\[Unreleased\]')
if [[ -n $draft ]]; then
  changes=${unreleased:-$changes}
  TAVREL_DRAFT=$(git rev-list --count "$commit")
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
tools=(packcheck logcheck)
rm -rf "$work" "$dist"

# Paths of different depth and length, so that the comparison shows a path in a file.
for folder in "$work/1" "$work/second/checkout"; do
  mkdir -p "$folder"
  git archive "$commit" | tar -x -C "$folder"
  say "Building $version$draft in $folder"
  export TAVREL_BUILD_ROOT=$folder/build
  {
    "$folder/scripts/build.sh" release QRTTavrelUtility "${tools[@]}" standin_15_0_2_5 installer
    "$folder/scripts/build.sh" host "${tools[@]}"
  } >"$folder.log" || { tail -n 30 "$folder.log" >&2; die "the build failed; see $folder.log"; }
done
unset TAVREL_BUILD_ROOT
tree=$work/1/build
programs=(release/{QRTTavrelUtility,packcheck,logcheck,demo/standin/15.0.2.5/Qrt}.exe "release/QRTTavrelUtility-$version$draft-setup.exe")
for file in "${programs[@]}" "${tools[@]/#/host/}"; do
  cmp "$tree/$file" "$work/second/checkout/build/$file" || die "$file differs between two builds"
done
"$work/1/packaging/hardened.sh" "${programs[@]/#/$tree/}" || die "not hardened"
"$work/1/packaging/pack.sh" "$tree" "$dist" "$commit" "$changes"
rm -rf "$work"
say "$version$draft ($commit) is in $dist:"
ls -l "$dist"
