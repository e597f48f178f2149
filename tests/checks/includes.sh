#!/usr/bin/env bash
# Who may include whom: every `#include "folder/..."` of a folder names one that it may use.
set -euo pipefail
cd "$1"

# file pattern: folders it may include, besides its own
rules=(
  'platform/*: '
  'codec/*: platform'
  'bridge/*: platform'
  'classes/*: codec bridge'
  'picture/*: codec bridge platform'
  'entry/*: classes picture codec bridge platform'
  'plugin/*: entry classes picture codec bridge platform'
  'host/*: platform bridge/host_records.h bridge/definition_rows.h'
)

faults=0
checked=0
for file in {platform,codec,bridge,classes,picture,entry,plugin}/*.{h,cpp} host/*/*.{h,cpp}; do
  for rule in "${rules[@]}"; do
    # shellcheck disable=SC2053
    [[ $file == ${rule%%:*} ]] && break
  done
  allowed="${file%%/*} ${rule#*:}"
  while read -r included; do
    checked=$((checked + 1))
    folder="${included%%/*}"
    [[ " $allowed " == *" $folder "* || " $allowed " == *" $included "* ]] && continue
    echo "$file may not include $included"
    faults=$((faults + 1))
  done < <(sed -n 's/^#include "\(.*\)".*/\1/p' "$file")
done
echo "$checked includes checked, $faults not allowed"
[ "$faults" -eq 0 ] && [ "$checked" -gt 50 ]
