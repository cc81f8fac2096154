#!/usr/bin/env bash
# Installs the Debian packages the builds need. Safe to rerun: apt only acts on what is missing.
#   install-packages.sh linux     native build, tests, benchmarks, fuzzers
#   install-packages.sh windows   MinGW-w64 cross compiler, Wine and the tools to build from Debian sources
set -euo pipefail

linux_packages=(
  build-essential cmake ninja-build pkg-config git python3 clang ccache
  libssl-dev libsqlite3-dev libsystemd-dev libcurl4-openssl-dev libtinyxml2-dev nlohmann-json3-dev
  libgtest-dev libgmock-dev libbenchmark-dev
)
windows_packages=(
  gcc-mingw-w64-x86-64-posix g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 mingw-w64-x86-64-dev
  wine64 dpkg-dev perl make cmake ninja-build pkg-config
)

want=()
for target in "$@"; do
  case "$target" in
    linux) want+=("${linux_packages[@]}") ;;
    windows) want+=("${windows_packages[@]}") ;;
    *) echo "install-packages.sh: unknown target '$target' (linux, windows)" >&2; exit 2 ;;
  esac
done
[ ${#want[@]} -gt 0 ] || { echo "usage: install-packages.sh linux|windows..." >&2; exit 2; }

missing=()
for p in "${want[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
