// One hive of the registry store: an SQLite database file holding a tree of keys and values.
//
// Names are UTF-16 (std::u16string) and case-preserving; lookups go through the folded form
// (FoldName), so names differ only in case are the same name. Sub-keys enumerate in the order
// of their folded names (the order Windows lists them in); values in the order they were first
// written. Value data is kept as the Windows bytes. Every write runs in its own immediate
// transaction, committed with a synchronous WAL append before the call returns; waiting for
// another process's write is bounded by a busy timeout. All calls return Win32 codes.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "UtilPlatform.h"

namespace DE::detail::linux_impl {

using KeyId = std::int64_t;
constexpr KeyId kHiveRootKey = 1;

// Windows' case-insensitive name rule: each UTF-16 unit upper-cased alone (ASCII, Latin-1,
// Latin Extended-A pairs, Greek and Cyrillic), as big-endian bytes so that byte order is the
// unit order.
std::string FoldName(const std::u16string& name);

struct HiveKeyInfo {
  DWORD subKeys = 0;
  DWORD maxSubKeyLen = 0;
  DWORD values = 0;
  DWORD maxValueNameLen = 0;
  DWORD maxValueLen = 0;
  std::int64_t lastWrite = 0;  // FILETIME ticks
};

struct HiveValue {
  std::u16string name;
  DWORD type = 0;
  std::string data;
};

class Hive {
 public:
  ~Hive();
  Hive(const Hive&) = delete;
  Hive& operator=(const Hive&) = delete;

  // Opens the hive file; with create, makes a new empty hive when the file is missing (mode
  // 0644, or 0600 when private) and, as root, gives it to owner. writable asks for a read-write
  // connection. ERROR_FILE_NOT_FOUND when missing, ERROR_BADDB when the file is not a hive.
  static LONG Open(const std::string& file, bool create, bool writable, bool isPrivate, uid_t owner,
                   std::shared_ptr<Hive>& out);

  const std::string& File() const { return file_; }
  bool Writable() const { return writable_; }

  // The key below parent by path components; ERROR_FILE_NOT_FOUND when one is missing.
  LONG Find(KeyId parent, const std::vector<std::u16string>& path, KeyId& id);
  // Finds or creates every component. created says whether the last one was new.
  LONG Create(KeyId parent, const std::vector<std::u16string>& path, KeyId& id, bool& created);
  // ERROR_KEY_DELETED when the key no longer exists.
  LONG CheckKey(KeyId id);
  LONG QueryValue(KeyId id, const std::u16string& name, DWORD& type, std::string& data);
  LONG SetValue(KeyId id, const std::u16string& name, DWORD type, const std::string& data);
  LONG DeleteValue(KeyId id, const std::u16string& name);
  // Deletes the key below parent when it has no sub-keys (ERROR_ACCESS_DENIED otherwise).
  LONG DeleteKey(KeyId parent, const std::vector<std::u16string>& path);
  LONG EnumKey(KeyId id, DWORD index, std::u16string& name);
  LONG EnumValue(KeyId id, DWORD index, std::u16string& name);
  LONG QueryInfo(KeyId id, HiveKeyInfo& info);
  // Copies the tree under `from` of source into the key `to` of this hive, replacing what `to`
  // held, in one transaction.
  LONG ReplaceTree(KeyId to, Hive& source, KeyId from);

 private:
  Hive(std::string file, sqlite3* db, bool writable);
  // A compiled statement for `sql`, reset and unbound, from a cache keyed by the text's address
  // (callers pass literals); it stays owned by the hive.
  LONG Prepare(const char* sql, sqlite3_stmt** statement);
  LONG Exec(const char* sql);
  // Runs one cached statement without results.
  LONG Step(const char* sql);
  // The first column of the one row a cached statement gives; ERROR_BADDB when it gives none.
  LONG QueryNumber(const char* sql, sqlite3_int64& value);
  LONG Begin(bool write);
  LONG End(LONG code);
  LONG FindLocked(KeyId parent, const std::vector<std::u16string>& path, KeyId& id);
  LONG TouchLocked(KeyId id);
  // Adds the sub-key `name` below parent (which must not hold it yet); id receives the new key.
  LONG InsertKeyLocked(KeyId parent, const std::u16string& name, KeyId& id);
  // Creates or replaces one value of the key.
  LONG WriteValueLocked(KeyId id, const std::u16string& name, DWORD type, const std::string& data);
  LONG DeleteTreeLocked(KeyId id, bool keepRoot);
  LONG CopyTreeLocked(KeyId to, Hive& source, KeyId from);
  LONG InitializeSchema();
  LONG Verify();

  // Names of one key's sub-keys or values, kept while no connection has written the file since
  // (the data version counts other connections' commits, total changes this one's), so
  // enumerating index 0..n-1 reads the list once instead of n times.
  struct NameList {
    KeyId id = -1;
    sqlite3_int64 version = 0;
    sqlite3_int64 changes = 0;
    std::vector<std::u16string> names;
  };
  bool NamesCurrent(const NameList& list, KeyId id);
  LONG LoadNames(NameList& list, const char* sql, KeyId id);
  LONG EnumNames(NameList& list, const char* sql, KeyId id, DWORD index, std::u16string& name);

  std::string file_;
  sqlite3* db_;
  NameList keyNames_;
  NameList valueNames_;
  std::unordered_map<const char*, sqlite3_stmt*> statements_;
  bool writable_;
  std::recursive_mutex mutex_;
};

// FILETIME ticks (100 ns since 1601) of the current time.
std::int64_t FileTimeNow();

}  // namespace DE::detail::linux_impl
