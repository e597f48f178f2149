#!/usr/bin/env bash
# The same sessions on heaps filled with different bytes must print the same: poison.sh GIFHOST SCRIPT SCRATCH [ARGUMENT...]
set -euo pipefail

host=$1 script=$2 scratch=$3
shift 3
for byte in 85 170; do
  GLIBC_TUNABLES=glibc.malloc.perturb=$byte ASAN_OPTIONS=malloc_fill_byte=$byte:max_malloc_fill_size=100000000 \
    "$host" "$script" "$scratch.gif" "$@" > "$scratch.$byte"
done
cmp "$scratch.85" "$scratch.170"
