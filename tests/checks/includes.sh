#!/usr/bin/env bash
# The storeys of the house: every `#include "folder/..."` names a file of the same folder or of one that the folder's row
# allows, and no two files include each other in a circle, a header and its source taken as one file. What is a system's
# or a compiler's own stays in platform/; only the script host, which is no part of the plugin, asks POSIX itself.
set -euo pipefail
cd "$1"

# folder: folders (or single headers) that its files may include, besides their own folder's
storeys=(
  'platform:'
  'codec: platform'
  'scan: codec'
  'bridge: platform'
  'classes: codec bridge'
  'picture: codec bridge platform'
  'entry: classes picture codec bridge platform'
  'plugin: entry classes picture codec bridge platform'
  # Of the plugin the host sees the bridge's records alone.
  'host/core: platform bridge/gif_plugin_host.h bridge/definition_rows.h'
  'host/host: host/core platform bridge/gif_plugin_host.h bridge/definition_rows.h'
  'host/functions: host/host host/core platform bridge/gif_plugin_host.h'
  'host/reducing:'
  'host/classes: host/reducing host/functions host/host host/core platform bridge/gif_plugin_host.h bridge/definition_rows.h'
  'host/lua: host/classes host/functions host/host host/core platform bridge/gif_plugin_host.h'
  'host/program: host/lua host/classes host/functions host/host host/core platform bridge/gif_plugin_host.h'
)

faults=0
checked=0
arrows=$(mktemp)
trap 'rm -f "$arrows"' EXIT

complain() {
  echo "$1"
  faults=$((faults + 1))
}

# Every include of ours in the folder $1, as lines "file included".
includes_of() {
  find "$1" -maxdepth 1 \( -name '*.h' -o -name '*.cpp' -o -name '*.c' \) \
    -exec sed -n 's|^#include "\(.*\)".*|{} \1|p' {} \;
}

for storey in "${storeys[@]}"; do
  folder="${storey%%:*}"
  allowed=" $folder ${storey#*:} "
  [ -d "$folder" ] || continue
  while read -r file included; do
    checked=$((checked + 1))
    [ -f "$included" ] || complain "$file includes $included, which is no path from the project's top"
    [[ $allowed == *" ${included%/*} "* || $allowed == *" $included "* ]] || complain "$file may not include $included"
    from="${file%.*}" to="${included%.*}"
    [ "$from" = "$to" ] || echo "$from $to" >> "$arrows"
  done < <(includes_of "$folder")
  sources=$(find "$folder" -maxdepth 1 -type f \( -name '*.h' -o -name '*.cpp' -o -name '*.c' \) | wc -l)
  [ "$sources" -le 30 ] || complain "$folder holds $sources source files; thirty are enough"
done

# A folder without a row would not be looked at.
while read -r folder; do
  printf '%s\n' "${storeys[@]}" | grep -q "^$folder:" || complain "$folder has no storey"
done < <(find platform codec scan bridge classes picture entry plugin host -name '*.cpp' -printf '%h\n' 2>/dev/null | sort -u)

circles=$(tsort "$arrows" 2>&1 >/dev/null | sed 's/^tsort: //' || true)
[ -z "$circles" ] || complain "files include each other in a circle:"$'\n'"$circles"

own='#include <(sys/|unistd|fcntl|dlfcn|pthread|io\.h|windows|Core|gd\.h)|__APPLE__|_WIN32|__linux__|__GNUC__|__clang__|_MSC_VER'
own+='|__attribute__|__builtin|__declspec|_unlocked\('
found=$(grep -nE "$own" -r --include='*.h' --include='*.cpp' codec scan bridge classes picture entry plugin 2>/dev/null || true)
[ -z "$found" ] || complain "only platform/ may say that: $found"

echo "$checked includes checked, $faults faults"
[ "$faults" -eq 0 ] && [ "$checked" -gt 50 ]
