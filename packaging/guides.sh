#!/bin/bash
# Puts the guides, as Markdown and as HTML, into the folder of a release: packaging/guides.sh FOLDER
# Fails when a link in them leads to no file of that folder.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/../scripts/lib.sh"
folder=$(realpath -- "$1")
cd "$repo"
guides=(CHANGELOG.md SECURITY.md docs/{user,administrator,publisher,log,windows}.md)
cp --parents "${guides[@]}" docs/pictures/*.png "$folder/"
cd "$folder"
for guide in "${guides[@]}"; do
  {
    printf '<!DOCTYPE html>\n<html lang="en"><meta charset="utf-8"><title>%s</title>\n' "$(sed -n '1s/^# //p' "$guide")"
    printf '<style>body { max-width: 60em; margin: auto; font-family: sans-serif } td, th { border: 1px solid; padding: 4px }\n'
    printf 'table { border-collapse: collapse } img { max-width: 100%% }</style>\n'
    # cmark-gfm gives headings no names that links could lead to.
    cmark-gfm --extension table --extension autolink "$guide" | sed -E 's/(href="[^":]*)\.md/\1.html/g' | awk '
      /^<h[1-6]>/ {
        name = tolower($0)
        gsub(/<[^>]*>|&[a-z]+;/, "", name)
        gsub(/[^a-z0-9 _-]/, "", name)
        gsub(/ /, "-", name)
        sub(/>/, " id=\"" name "\">")
      }
      { print }'
  } >"${guide%.md}.html"
done
for page in "${guides[@]/%.md/.html}"; do
  while IFS='#' read -r file heading; do
    target=$page
    if [[ -n $file ]]; then target=${page%"${page##*/}"}$file; fi
    [[ -e $target ]] || die "$page has a link to $file, which is not in the release"
    [[ -z $heading ]] || grep -qF "id=\"$heading\"" "$target" || die "$target has no heading $heading"
  done < <(grep -o '\(href\|src\)="[^":]*"' "$page" | cut -d '"' -f 2)
done
