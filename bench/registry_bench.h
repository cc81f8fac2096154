// What the registry benchmark's class cases (registry_bench.cpp) share with each platform's
// reference cases (registry_bench_linux.cpp: raw SQLite on the store's hive file;
// registry_bench_win.cpp: raw advapi32).
#pragma once

namespace bench {

// Below HKEY_CURRENT_USER: the key holding "Value" (REG_DWORD 42) and the written "Written",
// and its sub-key "Many" holding kKeyCount empty sub-keys "Key0".."Key9999".
extern const wchar_t* const kBenchKey;  // L"Software\\BenchUtilRegistry"
extern const wchar_t* const kManyKey;   // L"Software\\BenchUtilRegistry\\Many"
constexpr int kKeyCount = 10000;
constexpr int kValue = 42;

// Seeds the keys above through DE::Registry once per run; false when that failed.
bool SeedRegistry();

// Platform hooks. PrepareRegistryStore runs once before seeding (Linux: points UTIL_REGISTRY_DIR
// at a fresh temporary folder; Windows: deletes a kBenchKey left by an earlier run); on false
// nothing is seeded. RemoveRegistryStore runs at exit when seeding ran, and deletes what it made.
bool PrepareRegistryStore();
void RemoveRegistryStore();

}  // namespace bench
