#!/usr/bin/env bash
# The test command: installs what is missing, builds the Windows-side dependencies, builds both
# targets (plus a sanitizer build and the fuzzers), runs every test (Linux natively, Windows under
# Wine, fuzzers briefly) and ends with one line: "N passed, N failed".
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

fail() { echo "test-all: $*" >&2; echo "0 passed, 1 failed"; exit 1; }

scripts/install-packages.sh linux windows || fail "package installation failed"
scripts/build-windows-deps.sh || fail "building the Windows-side dependencies failed"

export CTEST_OUTPUT_ON_FAILURE=1
status=0
run_suite() {  # run_suite <flavour> [ctest arguments...]
  local flavour=$1
  shift
  # Fresh reports each run; the folder must exist, as the Windows GoogleTest will not create it.
  rm -rf "build/$flavour/test-results"
  mkdir -p "build/$flavour/test-results"
  echo "== testing $flavour"
  ctest --test-dir "build/$flavour" --output-junit ctest-junit.xml "$@" || status=1
}

scripts/build.sh windows -DUTIL_BUILD_TESTS=ON || fail "the Windows build failed"
scripts/build.sh linux -DUTIL_BUILD_TESTS=ON -DUTIL_WINDOWS_BUILD_DIR="$root/build/windows" ||
  fail "the Linux build failed"
scripts/build.sh sanitize -DUTIL_BUILD_TESTS=ON || fail "the sanitizer build failed"
scripts/build.sh fuzz || fail "the fuzzer build failed"

run_suite linux -j2
run_suite windows
run_suite sanitize -j2 -LE slow
run_suite fuzz

python3 scripts/summarize-tests.py build/linux build/windows build/sanitize build/fuzz || status=1
exit $status
