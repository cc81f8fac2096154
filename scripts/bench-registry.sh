#!/usr/bin/env bash
# The registry benchmark on both targets, summed up in one table:
#   bench-registry.sh [Google Benchmark flags...]   (default: 5 repetitions in random order)
# Builds build/bench (Linux) and build/bench-windows (MinGW; Google Benchmark from the deps
# prefix), runs registry_bench natively on a temporary store and registry_bench.exe under Wine in
# a fresh prefix of its own (build/bench-windows/wineprefix, removed afterwards), then prints per
# operation: the Linux class time and its ratio to the raw SQLite statement, the Wine class time
# and its ratio to the raw advapi32 call, and Linux store time ÷ Wine registry time. Times are
# wall-clock medians of the repetitions. Build output goes to build/bench-registry.log; each run's
# JSON stays in build/bench/registry_bench.json and build/bench-windows/registry_bench.json.
#
# Both runs are pinned to one CPU: each registry call under Wine is a round trip to wineserver,
# and waking a second, idle CPU for it made the Wine figures swing tenfold between runs on a
# virtual machine (about 4 µs a read on one CPU, 60 µs across two).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

log=$root/build/bench-registry.log
mkdir -p build
: >"$log"
step() { # description command... -> runs the command with its output in the log; stops on failure
  local what=$1
  shift
  echo "== $what" >&2
  if ! "$@" >>"$log" 2>&1; then
    echo "bench-registry.sh: $what failed; the end of $log:" >&2
    tail -n 30 "$log" >&2
    exit 1
  fi
}

step "installing packages" scripts/install-packages.sh linux windows
step "building the Windows-side dependencies" scripts/build-windows-deps.sh
step "building build/bench" scripts/build.sh bench
step "building build/bench-windows" scripts/build.sh bench-windows

# Repetitions in random order, so a slow moment of the machine does not fall on one case only.
flags=(--benchmark_repetitions=5 --benchmark_enable_random_interleaving=true
  --benchmark_report_aggregates_only=true "$@")
linux_json=$root/build/bench/registry_bench.json
wine_json=$root/build/bench-windows/registry_bench.json

pin=(taskset -c "$(python3 -c 'import os; print(min(os.sched_getaffinity(0)))')")

json_to() { # file command... -> the command's standard output in file
  local out=$1
  shift
  "$@" --benchmark_format=json </dev/null >"$out"
}

step "running registry_bench (Linux store)" \
  json_to "$linux_json" "${pin[@]}" build/bench/bin/registry_bench "${flags[@]}"

export WINEPREFIX=$root/build/bench-windows/wineprefix
export WINEDEBUG=-all
# No debugger window on a crash and no menu entries in the throwaway prefix.
export WINEDLLOVERRIDES="winedbg.exe,winemenubuilder.exe=d"
wine_loader=$(command -v wine64 || echo /usr/lib/wine/wine64)
wine_server=$(command -v wineserver || echo /usr/lib/wine/wineserver)
stop_wine() {
  "$wine_server" -k </dev/null >/dev/null 2>&1 || true
  rm -rf "$WINEPREFIX"
}
# A persistent server, with the prefix's services started before the run (as the Windows tests
# do), so that neither their start nor the server's own start lands inside a timed case. The
# server and the services inherit the pinning.
start_wine() {
  "${pin[@]}" "$wine_loader" wineboot --init </dev/null
  "$wine_server" -w
  "${pin[@]}" "$wine_server" -p </dev/null
  "${pin[@]}" "$wine_loader" wineboot </dev/null
}
trap stop_wine EXIT
stop_wine
step "creating the Wine prefix" start_wine
step "running registry_bench.exe (Wine's registry)" \
  json_to "$wine_json" "${pin[@]}" "$wine_loader" build/bench-windows/bin/registry_bench.exe "${flags[@]}"

python3 - "$linux_json" "$wine_json" <<'EOF'
import json, statistics, sys

# (operation, class case, Linux reference, Windows reference)
ROWS = [
    ("warm value read", "BM_ReadInteger", "BM_RawSqliteRead", "BM_RawAdvapiRead"),
    ("value write", "BM_WriteInteger", "BM_RawSqliteWrite", "BM_RawAdvapiWrite"),
    ("enumerate 10,000 keys", "BM_GetKeyNames10000", "BM_RawSqliteList10000", "BM_RawAdvapiEnum10000"),
]
TO_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def medians(path):
    """Wall time in ns per case: Google Benchmark's median aggregate, else the median of the runs."""
    with open(path, encoding="utf-8", errors="replace") as f:
        runs = json.load(f)["benchmarks"]
    single, median = {}, {}
    for run in runs:
        if run.get("error_occurred"):
            sys.exit(f"bench-registry.sh: {path}: {run['name']}: {run.get('error_message')}")
        name = run.get("run_name", run["name"]).split("/")[0]
        ns = run["real_time"] * TO_NS[run["time_unit"]]
        if run.get("run_type") == "aggregate":
            if run.get("aggregate_name") == "median":
                median[name] = ns
        else:
            single.setdefault(name, []).append(ns)
    return {name: median.get(name, statistics.median(times)) for name, times in single.items()} | median


def show(ns):
    for unit, scale in (("ms", 1e6), ("µs", 1e3)):
        if ns >= scale:
            return f"{ns / scale:.3g} {unit}"
    return f"{ns:.3g} ns"


linux, wine = medians(sys.argv[1]), medians(sys.argv[2])
header = ["operation", "Linux class", "÷ raw SQLite", "Wine class", "÷ raw advapi32", "Linux ÷ Wine"]
table = [header]
for op, cls, linux_ref, wine_ref in ROWS:
    try:
        table.append([op, show(linux[cls]), f"{linux[cls] / linux[linux_ref]:.2f}", show(wine[cls]),
                      f"{wine[cls] / wine[wine_ref]:.2f}", f"{linux[cls] / wine[cls]:.2g}"])
    except KeyError as missing:
        sys.exit(f"bench-registry.sh: no result for {missing} (filtered out?)")
widths = [max(len(row[i]) for row in table) for i in range(len(header))]
for row in table:
    print("  ".join(cell.ljust(w) if i == 0 else cell.rjust(w) for i, (cell, w) in enumerate(zip(row, widths))))
EOF
