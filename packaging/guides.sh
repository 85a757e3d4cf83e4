#!/bin/bash
# Puts the guides as HTML into the folder of a release: packaging/guides.sh FOLDER
# Fails when a link in them leads to no file or heading there, or a page names a file that no reader of a release has.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 1 "$@"
folder=$(realpath -m -- "$1")
cd "$repo"
guides=(packaging/index.md CHANGELOG.md SECURITY.md docs/{user,administrator,publisher,log,windows}.md)
cp --parents docs/pictures/*.png "$folder/"
for guide in "${guides[@]}"; do
  page=${guide#packaging/} page=${page%.md}.html home=index.html
  if [[ $page == docs/* ]]; then home=../index.html; fi
  # Without the column that names tests, and without links to pages about the source.
  awk -F '|' -v OFS='|' '/\| test \|$/ { cut = 1 } !/^\|/ { cut = 0 } cut { NF--; $NF = "" } { print }' "$guide" |
    sed -E -e '/^<!--.*-->$/d' -e 's/\[([^]]*)\]\([^)]*(architecture|performance|reliability)\.md[^)]*\)/\1/g' -e 's/(\]\([^:)]*)\.md/\1.html/g' |
    pandoc --from gfm --to html5 --standalone --wrap preserve --variable maxwidth=60em \
      --metadata "pagetitle=$(sed -n '1s/^# //p' "$guide")" \
      --include-before-body <(if [[ $page != index.html ]]; then printf '<p><a href="%s">All pages</a></p>\n' "$home"; fi) \
      --output "$folder/$page"
done
cd "$folder"
if grep -nE 'tests/|\./(dev|test\.sh)' ./{index,SECURITY}.html docs/*.html; then die "a page names a file of the source"; fi
for page in ./*.html docs/*.html; do
  while IFS='#' read -r file heading; do
    target=$page
    if [[ -n $file ]]; then target=${page%/*}/$file; fi
    [[ -e $target ]] || die "$page has a link to $file, which is not in the release"
    [[ -z $heading ]] || grep -qF "id=\"$heading\"" "$target" || die "$target has no heading $heading"
  done < <(grep -oE '(href|src)="[^":]*"' "$page" | cut -d '"' -f 2)
done
