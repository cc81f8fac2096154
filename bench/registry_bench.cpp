// DE::Registry's warm value read, value write and listing of 10,000 sub-keys, each beside the
// platform's raw call doing the same work in the same run: on Linux the store's SQLite statement
// on the same hive file (registry_bench_linux.cpp), on Windows (or Wine) the advapi32 call on
// an open key (registry_bench_win.cpp). Every case measures wall time (UseRealTime): under Wine
// the registry work happens in wineserver, outside the calling thread's CPU time.
#include "registry_bench.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "DERegistry.h"

namespace bench {

const wchar_t* const kBenchKey = L"Software\\BenchUtilRegistry";
const wchar_t* const kManyKey = L"Software\\BenchUtilRegistry\\Many";

namespace {
bool seeded = false;

bool Seed() {
  if (!PrepareRegistryStore()) return false;
  seeded = true;
  if (!DE::Registry::SetValue(HKEY_CURRENT_USER, kBenchKey, L"Value", kValue, KEY_ALL_ACCESS)) return false;
  DE::Registry registry;
  if (!registry.OpenKey(std::wstring(L"\\") + kManyKey, true)) return false;
  for (int i = 0; i < kKeyCount; ++i) {
    if (!registry.CreateKey(L"Key" + std::to_wstring(i))) return false;
  }
  return true;
}
}  // namespace

bool SeedRegistry() {
  static const bool ok = Seed();
  return ok;
}

}  // namespace bench

namespace {

// Opens path (below HKEY_CURRENT_USER) as the current key of registry, after seeding.
bool OpenSeeded(benchmark::State& state, DE::Registry& registry, const wchar_t* path) {
  if (!bench::SeedRegistry()) {
    state.SkipWithError("seeding the registry failed");
    return false;
  }
  if (!registry.OpenKey(std::wstring(L"\\") + path, false)) {
    state.SkipWithError("opening the benchmark key failed");
    return false;
  }
  return true;
}

void BM_ReadInteger(benchmark::State& state) {
  DE::Registry registry;
  if (!OpenSeeded(state, registry, bench::kBenchKey)) return;
  int value = 0;
  if (!registry.ReadInteger(L"Value", value) || value != bench::kValue) {
    state.SkipWithError("ReadInteger does not read the seeded value");
    return;
  }
  for (auto _ : state) {
    registry.ReadInteger(L"Value", value);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(BM_ReadInteger)->UseRealTime();

void BM_WriteInteger(benchmark::State& state) {
  DE::Registry registry;
  if (!OpenSeeded(state, registry, bench::kBenchKey)) return;
  int value = 0;
  if (!registry.WriteInteger(L"Written", value)) {
    state.SkipWithError("WriteInteger fails");
    return;
  }
  for (auto _ : state) registry.WriteInteger(L"Written", ++value);
}
BENCHMARK(BM_WriteInteger)->UseRealTime();

void BM_GetKeyNames10000(benchmark::State& state) {
  DE::Registry registry;
  if (!OpenSeeded(state, registry, bench::kManyKey)) return;
  std::vector<std::wstring> names;
  for (auto _ : state) {
    registry.GetKeyNames(names);
    benchmark::DoNotOptimize(names.data());
  }
  if (names.size() != static_cast<size_t>(bench::kKeyCount)) state.SkipWithError("GetKeyNames lost keys");
  state.counters["keys"] = static_cast<double>(names.size());
}
BENCHMARK(BM_GetKeyNames10000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  if (bench::seeded) bench::RemoveRegistryStore();
  return 0;
}
