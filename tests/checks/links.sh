#!/usr/bin/env bash
# Every link of a page that names a file leads to one, and every link to a heading to one of the page's. Argument: the
# folder that holds README.md and docs/.
set -euo pipefail
cd "$1"

faults=0
checked=0
while read -r page; do
  while read -r link; do
    checked=$((checked + 1))
    file="${link%%#*}"
    [ -z "$file" ] || [ -e "$file" ] || [ -e "$(dirname "$page")/$file" ] || { echo "$page: $link leads nowhere"; faults=$((faults + 1)); }
    heading="${link#"$file"}"
    [ -n "$heading" ] && [ -z "$file" ] || continue
    sed -nE 's/^#+ (.*)/\1/p' "$page" | tr 'A-Z ' 'a-z-' | tr -d "\`.,:()'" | grep -xF -- "${heading#\#}" > /dev/null ||
      { echo "$page: no heading $link"; faults=$((faults + 1)); }
  done < <(grep -oE '\]\([^)]+\)' "$page" | sed -E 's/^\]\(//; s/\)$//' | grep -vE '^[a-z]+:' || true)
done < <(find README.md HACKING.md docs -name '*.md' 2>/dev/null)
echo "$checked links checked, $faults lead nowhere"
[ "$faults" -eq 0 ] && [ "$checked" -gt 20 ]
