// The registry class over the Linux store, each beside the raw SQLite statement doing the same
// work on the same hive file: a warm value read, a value write, and listing 10,000 sub-keys.
//   UTIL_REGISTRY_DIR is pointed at a fresh temporary folder for the run.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "DERegistry.h"

namespace {

const wchar_t* const kKey = L"Software\\Bench";
constexpr int kKeyCount = 10000;

struct Store {
  std::string folder;
  std::string hive;
  Store() {
    char pattern[] = "/tmp/registry_bench_XXXXXX";
    folder = mkdtemp(pattern);
    setenv("UTIL_REGISTRY_DIR", folder.c_str(), 1);
    hive = folder + "/users/S-1-22-1-" + std::to_string(geteuid()) + ".hive";
    DE::Registry::SetValue(HKEY_CURRENT_USER, kKey, L"Value", 42, KEY_ALL_ACCESS);
    DE::Registry registry;
    registry.OpenKey(std::wstring(L"\\") + kKey + L"\\Many", true);
    for (int i = 0; i < kKeyCount; ++i) registry.CreateKey(L"Key" + std::to_wstring(i));
  }
};

const Store& TheStore() {
  static Store store;
  return store;
}

sqlite3* OpenRaw() {
  sqlite3* db = nullptr;
  sqlite3_open_v2(TheStore().hive.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
  sqlite3_busy_timeout(db, 30000);
  sqlite3_exec(db, "PRAGMA synchronous=FULL", nullptr, nullptr, nullptr);
  return db;
}

// The id of a key path in the raw database, as the store resolves it.
sqlite3_int64 RawKeyId(sqlite3* db, const std::vector<std::string>& folded) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db, "SELECT id FROM keys WHERE parent=? AND folded=?", -1, &statement, nullptr);
  sqlite3_int64 id = 1;
  for (const std::string& name : folded) {
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, id);
    sqlite3_bind_blob(statement, 2, name.data(), static_cast<int>(name.size()), SQLITE_TRANSIENT);
    if (sqlite3_step(statement) == SQLITE_ROW) id = sqlite3_column_int64(statement, 0);
  }
  sqlite3_finalize(statement);
  return id;
}

std::string FoldedAscii(const std::string& name) {
  std::string out;
  for (char c : name) {
    out.push_back('\0');
    out.push_back(static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c));
  }
  return out;
}

void BM_ReadInteger(benchmark::State& state) {
  TheStore();
  DE::Registry registry;
  registry.OpenKey(std::wstring(L"\\") + kKey, false);
  int value = 0;
  for (auto _ : state) {
    registry.ReadInteger(L"Value", value);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(BM_ReadInteger);

void BM_RawSqliteRead(benchmark::State& state) {
  sqlite3* db = OpenRaw();
  const sqlite3_int64 key = RawKeyId(db, {FoldedAscii("Software"), FoldedAscii("Bench")});
  const std::string name = FoldedAscii("Value");
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db, "SELECT type, data FROM vals WHERE key=? AND folded=?", -1, &statement, nullptr);
  for (auto _ : state) {
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, key);
    sqlite3_bind_blob(statement, 2, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    sqlite3_step(statement);
    benchmark::DoNotOptimize(sqlite3_column_blob(statement, 1));
  }
  sqlite3_finalize(statement);
  sqlite3_close(db);
}
BENCHMARK(BM_RawSqliteRead);

void BM_WriteInteger(benchmark::State& state) {
  TheStore();
  DE::Registry registry;
  registry.OpenKey(std::wstring(L"\\") + kKey, false);
  int value = 0;
  for (auto _ : state) registry.WriteInteger(L"Written", ++value);
}
BENCHMARK(BM_WriteInteger);

void BM_RawSqliteWrite(benchmark::State& state) {
  sqlite3* db = OpenRaw();
  const sqlite3_int64 key = RawKeyId(db, {FoldedAscii("Software"), FoldedAscii("Bench")});
  const std::string name = FoldedAscii("Written");
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db,
                     "INSERT INTO vals(key, name, folded, type, data) VALUES(?, ?, ?, 4, ?)"
                     " ON CONFLICT(key, folded) DO UPDATE SET type=excluded.type, data=excluded.data",
                     -1, &statement, nullptr);
  int value = 0;
  for (auto _ : state) {
    ++value;
    sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, key);
    sqlite3_bind_blob(statement, 2, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    sqlite3_bind_blob(statement, 3, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    sqlite3_bind_blob(statement, 4, &value, 4, SQLITE_STATIC);
    sqlite3_step(statement);
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
  }
  sqlite3_finalize(statement);
  sqlite3_close(db);
}
BENCHMARK(BM_RawSqliteWrite);

void BM_GetKeyNames10000(benchmark::State& state) {
  TheStore();
  DE::Registry registry;
  registry.OpenKey(std::wstring(L"\\") + kKey + L"\\Many", false);
  std::vector<std::wstring> names;
  for (auto _ : state) {
    registry.GetKeyNames(names);
    benchmark::DoNotOptimize(names.data());
  }
  state.counters["keys"] = static_cast<double>(names.size());
}
BENCHMARK(BM_GetKeyNames10000)->Unit(benchmark::kMillisecond);

void BM_RawSqliteList10000(benchmark::State& state) {
  sqlite3* db = OpenRaw();
  const sqlite3_int64 key =
      RawKeyId(db, {FoldedAscii("Software"), FoldedAscii("Bench"), FoldedAscii("Many")});
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db, "SELECT name FROM keys WHERE parent=? ORDER BY folded", -1, &statement, nullptr);
  size_t count = 0;
  for (auto _ : state) {
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, key);
    count = 0;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      benchmark::DoNotOptimize(sqlite3_column_blob(statement, 0));
      ++count;
    }
  }
  state.counters["keys"] = static_cast<double>(count);
  sqlite3_finalize(statement);
  sqlite3_close(db);
}
BENCHMARK(BM_RawSqliteList10000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
