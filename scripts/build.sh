#!/usr/bin/env bash
# Configures and builds one flavour of the project into build/<flavour>.
#   build.sh linux | windows | sanitize | fuzz | bench | bench-windows   [extra cmake arguments...]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
flavour=${1:?usage: build.sh linux|windows|sanitize|fuzz|bench|bench-windows [cmake args...]}
shift
deps_dir=${UTIL_DEPS_DIR:-$HOME/.cache/util-deps}

args=(-G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo)
if command -v ccache >/dev/null 2>&1; then
  args+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
case "$flavour" in
  linux) ;;
  windows) args+=(-DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" -DUTIL_DEPS_DIR="$deps_dir") ;;
  sanitize) args+=(-DUTIL_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug) ;;
  fuzz) args+=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DUTIL_BUILD_FUZZ=ON
               -DUTIL_BUILD_TESTS=OFF -DUTIL_BUILD_TOOLS=OFF) ;;
  bench) args+=(-DCMAKE_BUILD_TYPE=Release -DUTIL_BUILD_BENCH=ON -DUTIL_BUILD_TESTS=OFF -DUTIL_BUILD_TOOLS=OFF) ;;
  bench-windows) args+=(-DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" -DUTIL_DEPS_DIR="$deps_dir"
                        -DCMAKE_BUILD_TYPE=Release -DUTIL_BUILD_BENCH=ON -DUTIL_BUILD_TESTS=OFF -DUTIL_BUILD_TOOLS=OFF) ;;
  *) echo "build.sh: unknown flavour '$flavour'" >&2; exit 2 ;;
esac

echo "== building $flavour"
cmake -S "$root" -B "$root/build/$flavour" "${args[@]}" "$@" >/dev/null
cmake --build "$root/build/$flavour" -j "$(nproc)"
