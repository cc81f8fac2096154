#!/usr/bin/env bash
# The main job: installs what the Linux build needs, builds it, and runs the command-line tool
# on this machine. With arguments, runs `utl <arguments>` instead of the tour.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-packages.sh" linux
"$root/scripts/build.sh" linux
utl="$root/build/linux/bin/utl"

if [ $# -gt 0 ]; then
  exec "$utl" "$@"
fi

step() { printf '\n$ utl %s\n' "$*"; "$utl" "$@"; }
"$utl" help
step guid
step time-now
printf '\n$ utl convert utf8 utf16 "Grüße" | utl hex encode\n'
"$utl" convert utf8 utf16 "Grüße" | "$utl" hex encode
step base64 encode "Many hands make light work."
step hex encode "Util"
step osversion
