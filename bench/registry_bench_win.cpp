// Windows only (also run under Wine): the raw advapi32 calls on an open key, and the bench key's
// removal from HKEY_CURRENT_USER.
#include <benchmark/benchmark.h>

#include "UtilPlatform.h"
#include "registry_bench.h"

namespace {

// Opens path below HKEY_CURRENT_USER with access after seeding, or null.
HKEY OpenRaw(benchmark::State& state, const wchar_t* path, REGSAM access) {
  HKEY key = nullptr;
  if (!bench::SeedRegistry() || RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, access, &key) != ERROR_SUCCESS) {
    state.SkipWithError("the seeded key does not open");
    return nullptr;
  }
  return key;
}

void BM_RawAdvapiRead(benchmark::State& state) {
  HKEY key = OpenRaw(state, bench::kBenchKey, KEY_READ);
  if (key == nullptr) return;
  DWORD type = 0;
  DWORD value = 0;
  DWORD size = 0;
  LONG code = ERROR_SUCCESS;
  for (auto _ : state) {
    size = sizeof(value);
    code = RegQueryValueExW(key, L"Value", nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    benchmark::DoNotOptimize(value);
  }
  if (code != ERROR_SUCCESS || type != REG_DWORD || value != static_cast<DWORD>(bench::kValue)) {
    state.SkipWithError("the raw read did not find the seeded value");
  }
  RegCloseKey(key);
}
BENCHMARK(BM_RawAdvapiRead)->UseRealTime();

void BM_RawAdvapiWrite(benchmark::State& state) {
  HKEY key = OpenRaw(state, bench::kBenchKey, KEY_ALL_ACCESS);
  if (key == nullptr) return;
  DWORD value = 0;
  int failures = 0;
  for (auto _ : state) {
    ++value;
    failures += RegSetValueExW(key, L"Written", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                               sizeof(value)) != ERROR_SUCCESS;
  }
  if (failures != 0) state.SkipWithError("raw writes failed");
  RegCloseKey(key);
}
BENCHMARK(BM_RawAdvapiWrite)->UseRealTime();

void BM_RawAdvapiEnum10000(benchmark::State& state) {
  HKEY key = OpenRaw(state, bench::kManyKey, KEY_READ);
  if (key == nullptr) return;
  wchar_t name[256];  // the longest key name Windows allows, plus its NUL
  int count = 0;
  for (auto _ : state) {
    count = 0;
    for (DWORD index = 0;; ++index) {
      DWORD chars = sizeof(name) / sizeof(name[0]);
      if (RegEnumKeyExW(key, index, name, &chars, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
      benchmark::DoNotOptimize(name);
      ++count;
    }
  }
  if (count != bench::kKeyCount) state.SkipWithError("the raw listing lost keys");
  state.counters["keys"] = count;
  RegCloseKey(key);
}
BENCHMARK(BM_RawAdvapiEnum10000)->Unit(benchmark::kMillisecond)->UseRealTime();

// Deletes kBenchKey with its sub-keys; true when it is gone.
bool DeleteBenchKey() {
  const LONG code = RegDeleteTreeW(HKEY_CURRENT_USER, bench::kBenchKey);
  return code == ERROR_SUCCESS || code == ERROR_FILE_NOT_FOUND;
}

}  // namespace

namespace bench {

bool PrepareRegistryStore() { return DeleteBenchKey(); }

void RemoveRegistryStore() { DeleteBenchKey(); }

}  // namespace bench
