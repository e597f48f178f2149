#!/usr/bin/env bash
# What embedders get is whole: the installed host in C builds with the installed header and runs the installed plugin on a
# GIF, on both kinds of pictures with the same answers; the licences are there, and no page has a dead link. Arguments: the C
# compiler, the folder that all is installed in, a GIF.
set -euo pipefail
compiler="$1" installed="$2" gif="$3"
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT

plugin="$(find "$installed" -name gif_plugin.so)"
"$compiler" -std=c11 -D_DEFAULT_SOURCE -I "$installed/include/gif-plugin" \
  "$installed/share/gif-plugin/host/host.c" -o "$folder/host" -ldl
"$folder/host" "$plugin" "$folder/copy.gif" "$gif" | tail -n +2 > "$folder/desktop"
"$folder/host" --console "$plugin" "$folder/copy.gif" "$gif" | tail -n +2 > "$folder/console"
cmp "$folder/desktop" "$folder/console"
[ "$(grep -c ': same$' "$folder/desktop")" = 3 ] || { cat "$folder/desktop"; exit 1; }

grep -q "utf8proc" "$installed/share/doc/gif-plugin/copyright"
while IFS=: read -r page link; do
  target="$(dirname "$page")/${link%%#*}"
  [ -e "$target" ] || { echo "$page: no $link"; exit 1; }
done < <(grep -oHE '\]\([^)]+\)' "$installed"/share/doc/*/*.md | sed -E 's/\]\(([^)]*)\)/\1/' | grep -v ':https\?:')
