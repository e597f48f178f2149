#!/usr/bin/env bash
# The plugin's shared library defines one symbol for others and needs only the C and C++ runtime.
set -euo pipefail
library="$1"

defined="$(nm -D --defined-only "$library" | awk '{print $NF}' | sed 's/@.*//')"
[ "$defined" = REALPluginMain ] || { echo "symbols defined: $defined"; exit 1; }

needed="$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\].*/\1/p' |
  grep -vE '^(libc|libm|libstdc\+\+|libgcc_s|ld-linux.*)\.so' || true)"
[ -z "$needed" ] || { echo "libraries needed beyond the runtimes: $needed"; exit 1; }
