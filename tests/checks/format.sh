#!/usr/bin/env bash
# Every C++ file is as clang-format leaves it, by the version that the project uses; status 77 without that.
set -euo pipefail
cd "$1"

formatter=clang-format-14
command -v "$formatter" > /dev/null || formatter=clang-format
"$formatter" --version 2> /dev/null | grep -q 'version 14\.' || { echo "skipped: there is no clang-format 14"; exit 77; }
mapfile -t files < <(find platform codec bridge classes picture entry plugin scan host tests fuzz bench tools \
  \( -name '*.cpp' -o -name '*.h' \) 2> /dev/null | sort)
[ ${#files[@]} -gt 100 ] || { echo "only ${#files[@]} files found"; exit 1; }
"$formatter" --dry-run -Werror "${files[@]}"
echo "${#files[@]} files"
