// Linux only: the store's temporary home and the raw SQLite statements on its hive file.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "registry_bench.h"

namespace {

std::string folder;  // the store's temporary root for this run
std::string hive;    // HKEY_CURRENT_USER's database file in it

// A name as the store compares it: upper-cased UTF-16 in big-endian pairs (so that bytes sort
// as names); enough for the ASCII names used here.
std::string FoldedAscii(const std::wstring& name) {
  std::string out;
  for (wchar_t c : name) {
    out.push_back('\0');
    out.push_back(static_cast<char>(c >= L'a' && c <= L'z' ? c - 32 : c));
  }
  return out;
}

// The spelling the store keeps beside the folded name: UTF-16 LE (ASCII names here).
std::string SpelledAscii(const std::wstring& name) {
  std::string out;
  for (wchar_t c : name) {
    out.push_back(static_cast<char>(c));
    out.push_back('\0');
  }
  return out;
}

// The id of a key path ("A\\B") in the raw database, resolved one name at a time as the store
// does; 0 when a name is missing.
sqlite3_int64 RawKeyId(sqlite3* db, const std::wstring& path) {
  std::vector<std::wstring> names(1);
  for (wchar_t c : path) {
    if (c == L'\\') {
      names.emplace_back();
    } else {
      names.back().push_back(c);
    }
  }
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db, "SELECT id FROM keys WHERE parent=? AND folded=?", -1, &statement, nullptr);
  sqlite3_int64 id = 1;
  for (const std::wstring& name : names) {
    const std::string folded = FoldedAscii(name);
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, id);
    sqlite3_bind_blob(statement, 2, folded.data(), static_cast<int>(folded.size()), SQLITE_TRANSIENT);
    id = sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int64(statement, 0) : 0;
    if (id == 0) break;
  }
  sqlite3_finalize(statement);
  return id;
}

// Opens the seeded hive as the store opens it (a writer waits for the lock, durable commits)
// and finds path's key in it; false, with the case skipped, when either fails.
bool OpenRaw(benchmark::State& state, const wchar_t* path, sqlite3*& db, sqlite3_int64& key) {
  db = nullptr;
  if (!bench::SeedRegistry() ||
      sqlite3_open_v2(hive.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
    sqlite3_close(db);
    state.SkipWithError("the seeded hive file does not open");
    return false;
  }
  sqlite3_busy_timeout(db, 30000);
  sqlite3_exec(db, "PRAGMA synchronous=FULL", nullptr, nullptr, nullptr);
  key = RawKeyId(db, path);
  if (key != 0) return true;
  sqlite3_close(db);
  state.SkipWithError("the seeded key is not in the hive");
  return false;
}

void BM_RawSqliteRead(benchmark::State& state) {
  sqlite3* db = nullptr;
  sqlite3_int64 key = 0;
  if (!OpenRaw(state, bench::kBenchKey, db, key)) return;
  const std::string name = FoldedAscii(L"Value");
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db, "SELECT type, data FROM vals WHERE key=? AND folded=?", -1, &statement, nullptr);
  for (auto _ : state) {
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, key);
    sqlite3_bind_blob(statement, 2, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    sqlite3_step(statement);
    benchmark::DoNotOptimize(sqlite3_column_blob(statement, 1));
  }
  // The last step must have found the seeded DWORD, or the loop timed a miss.
  int value = 0;
  if (sqlite3_column_bytes(statement, 1) == 4) std::memcpy(&value, sqlite3_column_blob(statement, 1), 4);
  if (value != bench::kValue) state.SkipWithError("the raw read did not find the seeded value");
  sqlite3_finalize(statement);
  sqlite3_close(db);
}
BENCHMARK(BM_RawSqliteRead)->UseRealTime();

void BM_RawSqliteWrite(benchmark::State& state) {
  sqlite3* db = nullptr;
  sqlite3_int64 key = 0;
  if (!OpenRaw(state, bench::kBenchKey, db, key)) return;
  const std::string spelled = SpelledAscii(L"Written");
  const std::string name = FoldedAscii(L"Written");
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db,
                     "INSERT INTO vals(key, name, folded, type, data) VALUES(?, ?, ?, 4, ?)"
                     " ON CONFLICT(key, folded) DO UPDATE SET type=excluded.type, data=excluded.data",
                     -1, &statement, nullptr);
  int value = 0;
  int failures = 0;
  for (auto _ : state) {
    ++value;
    sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, key);
    sqlite3_bind_blob(statement, 2, spelled.data(), static_cast<int>(spelled.size()), SQLITE_STATIC);
    sqlite3_bind_blob(statement, 3, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    sqlite3_bind_blob(statement, 4, &value, 4, SQLITE_STATIC);
    failures += sqlite3_step(statement) != SQLITE_DONE;
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
  }
  if (failures != 0) state.SkipWithError("raw writes failed");
  sqlite3_finalize(statement);
  sqlite3_close(db);
}
BENCHMARK(BM_RawSqliteWrite)->UseRealTime();

void BM_RawSqliteList10000(benchmark::State& state) {
  sqlite3* db = nullptr;
  sqlite3_int64 key = 0;
  if (!OpenRaw(state, bench::kManyKey, db, key)) return;
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db, "SELECT name FROM keys WHERE parent=? ORDER BY folded", -1, &statement, nullptr);
  int count = 0;
  for (auto _ : state) {
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, key);
    count = 0;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      benchmark::DoNotOptimize(sqlite3_column_blob(statement, 0));
      ++count;
    }
  }
  if (count != bench::kKeyCount) state.SkipWithError("the raw listing lost keys");
  state.counters["keys"] = count;
  sqlite3_finalize(statement);
  sqlite3_close(db);
}
BENCHMARK(BM_RawSqliteList10000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

namespace bench {

bool PrepareRegistryStore() {
  char pattern[] = "/tmp/registry_bench_XXXXXX";
  if (mkdtemp(pattern) == nullptr) return false;
  folder = pattern;
  hive = folder + "/users/S-1-22-1-" + std::to_string(geteuid()) + ".hive";
  return setenv("UTIL_REGISTRY_DIR", folder.c_str(), 1) == 0;
}

void RemoveRegistryStore() {
  std::error_code ignored;
  if (!folder.empty()) std::filesystem::remove_all(folder, ignored);
}

}  // namespace bench
