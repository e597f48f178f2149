#!/usr/bin/env bash
# Runs a command as somebody whom permissions bind: as it is, or for root as nobody. Status 77 where that cannot be, or
# where nobody may not read the command's files.
set -euo pipefail
[ "$(id -u)" -eq 0 ] || exec "$@"
as_nobody=(setpriv --reuid=65534 --regid=65534 --clear-groups)
command -v setpriv > /dev/null || { echo "skipped: there is no setpriv"; exit 77; }
for file in "$@"; do
  [ ! -e "$file" ] || "${as_nobody[@]}" test -r "$file" || { echo "skipped: nobody may not read $file"; exit 77; }
done
exec "${as_nobody[@]}" env TMPDIR=/tmp "$@"
