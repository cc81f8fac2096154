// The registry store's hive files on SQLite. Linux-only code.
#include "platform/linux/registry_hive.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "platform/linux/descriptor.h"
#include "platform/linux/registry_error.h"
#include "platform/linux/system_calls.h"

namespace DE::detail::linux_impl {

namespace {

constexpr int kApplicationId = 0x55524547;  // "UREG"
constexpr int kSchemaVersion = 1;
constexpr int kBusyTimeoutMs = 30000;
// Seconds from 1601-01-01 to 1970-01-01.
constexpr std::int64_t kEpochDifference = 11644473600LL;

// Statements come from the hive's cache (Hive::Prepare); ending a use resets the statement, which
// ends its read and keeps it compiled for the next call.
struct StatementUseTraits {
  using Handle = sqlite3_stmt*;
  static sqlite3_stmt* Invalid() { return nullptr; }
  static bool IsValid(sqlite3_stmt* statement) { return statement != nullptr; }
  static void Close(sqlite3_stmt* statement) { sqlite3_reset(statement); }
};
using Statement = ScopedHandle<StatementUseTraits>;

// Holds an flock() on the hive file for the lifetime of the object (closing drops it): exclusive
// for a writer that may have to set the file up, shared for a reader.
class OpenLock {
 public:
  OpenLock(const std::string& file, bool exclusive) : fd_(Sys().open(file.c_str(), O_RDONLY | O_CLOEXEC, 0)) {
    if (fd_) Sys().flock(fd_.Get(), exclusive ? LOCK_EX : LOCK_SH);
  }

 private:
  Descriptor fd_;
};

char16_t FoldUnit(char16_t c) {
  if (c >= u'a' && c <= u'z') return static_cast<char16_t>(c - 32);
  if (c < 0xB5) return c;
  if (c == 0xB5) return 0x39C;
  if ((c >= 0xE0 && c <= 0xFE && c != 0xF7)) return static_cast<char16_t>(c - 32);
  if (c == 0xFF) return 0x178;
  if (c >= 0x100 && c <= 0x17F) {
    // Latin Extended-A pairs upper/lower in even/odd order, except the 0x139-0x148 and
    // 0x179-0x17E runs, which start on odd code points.
    const bool oddRun = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
    if (c == 0x131 || c == 0x138 || c == 0x149 || c == 0x17F) return c;
    if (oddRun ? (c % 2 == 0) : (c % 2 == 1)) return static_cast<char16_t>(c - 1);
    return c;
  }
  if (c >= 0x3B1 && c <= 0x3C9 && c != 0x3C2) return static_cast<char16_t>(c - 32);
  if (c == 0x3C2) return 0x3A3;
  if (c >= 0x430 && c <= 0x44F) return static_cast<char16_t>(c - 32);
  if (c >= 0x450 && c <= 0x45F) return static_cast<char16_t>(c - 80);
  if (c >= 0xFF41 && c <= 0xFF5A) return static_cast<char16_t>(c - 32);
  return c;
}

std::string Blob(const std::u16string& name) {
  std::string bytes;
  bytes.reserve(name.size() * 2);
  for (char16_t unit : name) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

std::u16string FromBlob(const void* data, int size) {
  const unsigned char* bytes = static_cast<const unsigned char*>(data);
  std::u16string name;
  for (int i = 0; i + 1 < size; i += 2) name.push_back(static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8)));
  return name;
}

// SQLite binds a null pointer as NULL; an empty blob needs a real address.
void BindBlob(sqlite3_stmt* statement, int index, const std::string& bytes) {
  static const char kEmpty = 0;
  sqlite3_bind_blob(statement, index, bytes.empty() ? &kEmpty : bytes.data(), static_cast<int>(bytes.size()),
                    SQLITE_TRANSIENT);
}

std::string ColumnBytes(sqlite3_stmt* statement, int column) {
  const void* data = sqlite3_column_blob(statement, column);
  const int size = sqlite3_column_bytes(statement, column);
  return data == nullptr ? std::string()
                         : std::string(static_cast<const char*>(data), static_cast<size_t>(size));
}

}  // namespace

std::string FoldName(const std::u16string& name) {
  std::string folded;
  folded.reserve(name.size() * 2);
  for (char16_t unit : name) {
    const char16_t upper = FoldUnit(unit);
    folded.push_back(static_cast<char>(upper >> 8));
    folded.push_back(static_cast<char>(upper & 0xFF));
  }
  return folded;
}

std::int64_t FileTimeNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const std::int64_t ticks = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() / 100;
  return ticks + kEpochDifference * 10000000LL;
}

Hive::Hive(std::string file, sqlite3* db, bool writable)
    : file_(std::move(file)), db_(db), writable_(writable) {}

Hive::~Hive() {
  for (auto& entry : statements_) sqlite3_finalize(entry.second);
  sqlite3_close_v2(db_);
}

LONG Hive::Open(const std::string& file, bool create, bool writable, bool isPrivate, uid_t owner,
                std::shared_ptr<Hive>& out) {
  struct stat info;
  const bool exists = Sys().stat(file.c_str(), &info) == 0;
  if (!exists && (!create || !writable)) return static_cast<LONG>(kErrorFileNotFound);
  if (exists && !S_ISREG(info.st_mode)) return kRegErrorBadDb;
  if (!exists) {
    // Create the file with its final mode first, so no other user ever sees it wider.
    const Descriptor fd(
        Sys().open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, isPrivate ? 0600 : 0644));
    if (!fd && errno != EEXIST) return static_cast<LONG>(Win32ErrorFromErrno(errno));
    if (fd) {
      Sys().fchmod(fd.Get(), isPrivate ? 0600 : 0644);
      if (::geteuid() == 0 && owner != 0 && Sys().fchown(fd.Get(), owner, static_cast<gid_t>(-1)) != 0) {
        return static_cast<LONG>(LastWin32ErrorFromErrno());
      }
    }
  }
  // Processes opening one hive at the same time take turns until its journal mode and tables
  // are set up: SQLite answers a concurrent switch to WAL with "busy" at once, without waiting.
  // flock() locks do not interact with the fcntl() locks SQLite itself takes on the file.
  const OpenLock openLock(file, writable);
  sqlite3* db = nullptr;
  const int flags = (writable ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY) | SQLITE_OPEN_NOMUTEX;
  int result = sqlite3_open_v2(file.c_str(), &db, flags, nullptr);
  if (result != SQLITE_OK) {
    const LONG code = Win32ErrorFromSqlite(result);
    sqlite3_close_v2(db);
    return code == kRegErrorCantOpen ? static_cast<LONG>(kErrorAccessDenied) : code;
  }
  sqlite3_busy_timeout(db, kBusyTimeoutMs);
  sqlite3_extended_result_codes(db, 1);
  std::shared_ptr<Hive> hive(new Hive(file, db, writable));
  if (writable) {
    // Keep the -wal and -shm files when the last connection closes: readers without write
    // access to the folder can then still open the hive.
    int persist = 1;
    sqlite3_file_control(db, "main", SQLITE_FCNTL_PERSIST_WAL, &persist);
    LONG code = hive->Exec("PRAGMA journal_mode=WAL");
    if (code != 0) return code;
    // FULL: the WAL is synced at every commit, so a write that returned survives power loss,
    // not only a crash of the process.
    code = hive->Exec("PRAGMA synchronous=FULL");
    if (code != 0) return code;
    code = hive->InitializeSchema();
    if (code != 0) return code;
  }
  const LONG code = hive->Verify();
  if (code != 0) return code;
  out = std::move(hive);
  return 0;
}

LONG Hive::Prepare(const char* sql, sqlite3_stmt** statement) {
  sqlite3_stmt*& cached = statements_[sql];
  if (cached == nullptr) {
    const int rc = sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &cached, nullptr);
    if (rc != SQLITE_OK) {
      statements_.erase(sql);
      *statement = nullptr;
      return Win32ErrorFromSqlite(rc);
    }
  }
  // A use further up the call stack may have left it stepped; it has read all it needs by then.
  sqlite3_reset(cached);
  sqlite3_clear_bindings(cached);
  *statement = cached;
  return 0;
}

LONG Hive::Exec(const char* sql) {
  return Win32ErrorFromSqlite(sqlite3_exec(db_, sql, nullptr, nullptr, nullptr));
}

LONG Hive::QueryNumber(const char* sql, sqlite3_int64& value) {
  sqlite3_stmt* raw = nullptr;
  const LONG code = Prepare(sql, &raw);
  Statement statement(raw);
  if (code != 0) return code;
  const int step = sqlite3_step(raw);
  if (step != SQLITE_ROW) return step == SQLITE_DONE ? kRegErrorBadDb : Win32ErrorFromSqlite(step);
  value = sqlite3_column_int64(raw, 0);
  return 0;
}

LONG Hive::Step(const char* sql) {
  sqlite3_stmt* raw = nullptr;
  const LONG code = Prepare(sql, &raw);
  Statement statement(raw);
  return code != 0 ? code : Win32ErrorFromSqlite(sqlite3_step(raw));
}

// The transaction statements stay compiled too: parsing them anew on every call cost more than
// a warm read itself.
LONG Hive::Begin(bool write) { return Step(write ? "BEGIN IMMEDIATE" : "BEGIN"); }

LONG Hive::End(LONG code) {
  if (code == 0) {
    code = Step("COMMIT");
    if (code == 0) return 0;
  }
  Step("ROLLBACK");
  return code;
}

LONG Hive::InitializeSchema() {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  sqlite3_int64 version = -1;
  LONG code = QueryNumber("PRAGMA user_version", version);
  if (code != 0 || version != 0) return code;  // made already (or foreign: Verify says so)
  code = Begin(true);
  if (code != 0) return code;
  // Tables without our version mark, or a "keys" table of another shape: another program's
  // database, left untouched.
  sqlite3_int64 foreignTables = 0;
  sqlite3_int64 foreignColumns = 0;
  code = QueryNumber(
      "SELECT count(*) FROM sqlite_master WHERE name NOT IN ('keys','vals','keys_child','vals_name',"
      "'sqlite_sequence')",
      foreignTables);
  if (code == 0) {
    code = QueryNumber(
        "SELECT count(*) FROM pragma_table_info('keys') WHERE name NOT IN"
        " ('id','parent','name','folded','written')",
        foreignColumns);
  }
  if (code == 0 && (foreignTables > 0 || foreignColumns > 0)) code = kRegErrorBadDb;
  if (code != 0) return End(code);
  // Another process may have made it meanwhile; the statements below tolerate that.
  code = Exec(
      "CREATE TABLE IF NOT EXISTS keys(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,"
      " name BLOB NOT NULL, folded BLOB NOT NULL, written INTEGER NOT NULL);"
      "CREATE UNIQUE INDEX IF NOT EXISTS keys_child ON keys(parent, folded);"
      "CREATE TABLE IF NOT EXISTS vals(id INTEGER PRIMARY KEY AUTOINCREMENT, key INTEGER NOT NULL,"
      " name BLOB NOT NULL, folded BLOB NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL);"
      "CREATE UNIQUE INDEX IF NOT EXISTS vals_name ON vals(key, folded);");
  if (code == 0) {
    sqlite3_stmt* raw = nullptr;
    code = Prepare("INSERT OR IGNORE INTO keys(id, parent, name, folded, written) VALUES(1, 0, x'', x'', ?)",
                   &raw);
    Statement statement(raw);
    if (code == 0) {
      sqlite3_bind_int64(raw, 1, FileTimeNow());
      code = Win32ErrorFromSqlite(sqlite3_step(raw));
    }
  }
  if (code == 0) {
    code = Exec(("PRAGMA application_id=" + std::to_string(kApplicationId) +
                 ";PRAGMA user_version=" + std::to_string(kSchemaVersion))
                    .c_str());
  }
  return End(code);
}

LONG Hive::Verify() {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  sqlite3_int64 application = 0;
  sqlite3_int64 version = 0;
  LONG code = QueryNumber("PRAGMA application_id", application);
  if (code == 0) code = QueryNumber("PRAGMA user_version", version);
  if (code != 0) return code;
  if (application != kApplicationId || version != kSchemaVersion) return kRegErrorBadDb;
  // The root key must be there and the tables readable.
  code = CheckKey(kHiveRootKey);
  return code == kRegErrorKeyDeleted ? kRegErrorBadDb : code;
}

LONG Hive::CheckKey(KeyId id) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  sqlite3_stmt* raw = nullptr;
  const LONG code = Prepare("SELECT 1 FROM keys WHERE id=?", &raw);
  Statement statement(raw);
  if (code != 0) return code;
  sqlite3_bind_int64(raw, 1, id);
  const int step = sqlite3_step(raw);
  if (step == SQLITE_ROW) return 0;
  return step == SQLITE_DONE ? kRegErrorKeyDeleted : Win32ErrorFromSqlite(step);
}

LONG Hive::FindLocked(KeyId parent, const std::vector<std::u16string>& path, KeyId& id) {
  sqlite3_stmt* raw = nullptr;
  LONG code = Prepare("SELECT id FROM keys WHERE parent=? AND folded=?", &raw);
  Statement statement(raw);
  if (code != 0) return code;
  KeyId current = parent;
  for (const std::u16string& component : path) {
    sqlite3_reset(raw);
    sqlite3_bind_int64(raw, 1, current);
    BindBlob(raw, 2, FoldName(component));
    const int step = sqlite3_step(raw);
    if (step == SQLITE_DONE) return static_cast<LONG>(kErrorFileNotFound);
    if (step != SQLITE_ROW) return Win32ErrorFromSqlite(step);
    current = sqlite3_column_int64(raw, 0);
  }
  id = current;
  return 0;
}

LONG Hive::Find(KeyId parent, const std::vector<std::u16string>& path, KeyId& id) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  LONG code = Begin(false);
  if (code != 0) return code;
  code = CheckKey(parent);
  if (code == 0) code = FindLocked(parent, path, id);
  // A failed lookup is still a finished read.
  const LONG end = End(0);
  return code != 0 ? code : end;
}

LONG Hive::TouchLocked(KeyId id) {
  sqlite3_stmt* raw = nullptr;
  const LONG code = Prepare("UPDATE keys SET written=? WHERE id=?", &raw);
  Statement statement(raw);
  if (code != 0) return code;
  sqlite3_bind_int64(raw, 1, FileTimeNow());
  sqlite3_bind_int64(raw, 2, id);
  return Win32ErrorFromSqlite(sqlite3_step(raw));
}

LONG Hive::InsertKeyLocked(KeyId parent, const std::u16string& name, KeyId& id) {
  sqlite3_stmt* raw = nullptr;
  LONG code = Prepare("INSERT INTO keys(parent, name, folded, written) VALUES(?, ?, ?, ?)", &raw);
  Statement statement(raw);
  if (code != 0) return code;
  sqlite3_bind_int64(raw, 1, parent);
  BindBlob(raw, 2, Blob(name));
  BindBlob(raw, 3, FoldName(name));
  sqlite3_bind_int64(raw, 4, FileTimeNow());
  code = Win32ErrorFromSqlite(sqlite3_step(raw));
  if (code == 0) id = sqlite3_last_insert_rowid(db_);
  return code;
}

LONG Hive::WriteValueLocked(KeyId id, const std::u16string& name, DWORD type, const std::string& data) {
  sqlite3_stmt* raw = nullptr;
  // An existing value keeps its spelling and its place in the enumeration order.
  LONG code = Prepare(
      "INSERT INTO vals(key, name, folded, type, data) VALUES(?, ?, ?, ?, ?)"
      " ON CONFLICT(key, folded) DO UPDATE SET type=excluded.type, data=excluded.data",
      &raw);
  Statement statement(raw);
  if (code != 0) return code;
  sqlite3_bind_int64(raw, 1, id);
  BindBlob(raw, 2, Blob(name));
  BindBlob(raw, 3, FoldName(name));
  sqlite3_bind_int64(raw, 4, type);
  BindBlob(raw, 5, data);
  return Win32ErrorFromSqlite(sqlite3_step(raw));
}

LONG Hive::Create(KeyId parent, const std::vector<std::u16string>& path, KeyId& id, bool& created) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  LONG code = Begin(true);
  if (code != 0) return code;
  code = CheckKey(parent);
  KeyId current = parent;
  created = false;
  for (size_t i = 0; code == 0 && i < path.size(); ++i) {
    KeyId child = 0;
    code = FindLocked(current, {path[i]}, child);
    if (code == static_cast<LONG>(kErrorFileNotFound)) {
      code = InsertKeyLocked(current, path[i], child);
      if (code != 0) break;
      code = TouchLocked(current);
      created = i + 1 == path.size();
    } else {
      created = false;
    }
    current = child;
  }
  code = End(code);
  if (code == 0) id = current;
  return code;
}

LONG Hive::QueryValue(KeyId id, const std::u16string& name, DWORD& type, std::string& data) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  sqlite3_stmt* raw = nullptr;
  const LONG code = Prepare("SELECT type, data FROM vals WHERE key=? AND folded=?", &raw);
  Statement statement(raw);
  if (code != 0) return code;
  sqlite3_bind_int64(raw, 1, id);
  BindBlob(raw, 2, FoldName(name));
  const int step = sqlite3_step(raw);
  if (step == SQLITE_ROW) {
    type = static_cast<DWORD>(sqlite3_column_int64(raw, 0));
    data = ColumnBytes(raw, 1);
    return 0;
  }
  if (step != SQLITE_DONE) return Win32ErrorFromSqlite(step);
  statement.Reset();
  const LONG keyCode = CheckKey(id);
  return keyCode != 0 ? keyCode : static_cast<LONG>(kErrorFileNotFound);
}

LONG Hive::SetValue(KeyId id, const std::u16string& name, DWORD type, const std::string& data) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  LONG code = Begin(true);
  if (code != 0) return code;
  code = CheckKey(id);
  if (code == 0) {
    code = WriteValueLocked(id, name, type, data);
  }
  if (code == 0) code = TouchLocked(id);
  return End(code);
}

LONG Hive::DeleteValue(KeyId id, const std::u16string& name) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  LONG code = Begin(true);
  if (code != 0) return code;
  code = CheckKey(id);
  if (code == 0) {
    sqlite3_stmt* raw = nullptr;
    code = Prepare("DELETE FROM vals WHERE key=? AND folded=?", &raw);
    Statement statement(raw);
    if (code == 0) {
      sqlite3_bind_int64(raw, 1, id);
      BindBlob(raw, 2, FoldName(name));
      code = Win32ErrorFromSqlite(sqlite3_step(raw));
      if (code == 0 && sqlite3_changes(db_) == 0) code = static_cast<LONG>(kErrorFileNotFound);
    }
  }
  if (code == 0) code = TouchLocked(id);
  return End(code);
}

LONG Hive::DeleteTreeLocked(KeyId id, bool keepRoot) {
  std::vector<KeyId> children;
  {
    sqlite3_stmt* raw = nullptr;
    const LONG code = Prepare("SELECT id FROM keys WHERE parent=?", &raw);
    Statement statement(raw);
    if (code != 0) return code;
    sqlite3_bind_int64(raw, 1, id);
    int step;
    while ((step = sqlite3_step(raw)) == SQLITE_ROW) children.push_back(sqlite3_column_int64(raw, 0));
    if (step != SQLITE_DONE) return Win32ErrorFromSqlite(step);
  }
  for (KeyId child : children) {
    const LONG code = DeleteTreeLocked(child, false);
    if (code != 0) return code;
  }
  sqlite3_stmt* raw = nullptr;
  LONG code = Prepare("DELETE FROM vals WHERE key=?", &raw);
  Statement values(raw);
  if (code != 0) return code;
  sqlite3_bind_int64(raw, 1, id);
  code = Win32ErrorFromSqlite(sqlite3_step(raw));
  if (code != 0 || keepRoot) return code;
  code = Prepare("DELETE FROM keys WHERE id=?", &raw);
  Statement keys(raw);
  if (code != 0) return code;
  sqlite3_bind_int64(raw, 1, id);
  return Win32ErrorFromSqlite(sqlite3_step(raw));
}

LONG Hive::DeleteKey(KeyId parent, const std::vector<std::u16string>& path) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (path.empty()) return static_cast<LONG>(kErrorAccessDenied);  // a hive's root stays
  LONG code = Begin(true);
  if (code != 0) return code;
  code = CheckKey(parent);
  KeyId id = 0;
  if (code == 0) code = FindLocked(parent, path, id);
  HiveKeyInfo info;
  if (code == 0) code = QueryInfo(id, info);
  if (code == 0 && info.subKeys > 0) code = static_cast<LONG>(kErrorAccessDenied);
  if (code == 0) code = DeleteTreeLocked(id, false);
  if (code == 0) {
    KeyId owner = parent;
    if (path.size() > 1) code = FindLocked(parent, {path.begin(), path.end() - 1}, owner);
    if (code == 0) code = TouchLocked(owner);
  }
  return End(code);
}

bool Hive::NamesCurrent(const NameList& list, KeyId id) {
  if (list.id != id || list.changes != sqlite3_total_changes64(db_)) return false;
  // Another connection's commit moves the data version; reading it is a read of its own.
  sqlite3_int64 version = 0;
  return QueryNumber("PRAGMA data_version", version) == 0 && version == list.version;
}

LONG Hive::LoadNames(NameList& list, const char* sql, KeyId id) {
  list.id = -1;
  list.names.clear();
  LONG code = Begin(false);
  if (code != 0) return code;
  code = CheckKey(id);
  if (code == 0) code = QueryNumber("PRAGMA data_version", list.version);
  sqlite3_stmt* raw = nullptr;
  if (code == 0) code = Prepare(sql, &raw);
  if (code == 0) {
    Statement statement(raw);
    sqlite3_bind_int64(raw, 1, id);
    int step;
    while ((step = sqlite3_step(raw)) == SQLITE_ROW) {
      list.names.push_back(FromBlob(sqlite3_column_blob(raw, 0), sqlite3_column_bytes(raw, 0)));
    }
    if (step != SQLITE_DONE) code = Win32ErrorFromSqlite(step);
  }
  code = End(code);
  if (code == 0) {
    list.id = id;
    list.changes = sqlite3_total_changes64(db_);
  }
  return code;
}

LONG Hive::EnumNames(NameList& list, const char* sql, KeyId id, DWORD index, std::u16string& name) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (!NamesCurrent(list, id)) {
    const LONG code = LoadNames(list, sql, id);
    if (code != 0) return code;
  }
  if (index >= list.names.size()) return kRegErrorNoMoreItems;
  name = list.names[index];
  return 0;
}

LONG Hive::EnumKey(KeyId id, DWORD index, std::u16string& name) {
  return EnumNames(keyNames_, "SELECT name FROM keys WHERE parent=? ORDER BY folded", id, index, name);
}

LONG Hive::EnumValue(KeyId id, DWORD index, std::u16string& name) {
  return EnumNames(valueNames_, "SELECT name FROM vals WHERE key=? ORDER BY id", id, index, name);
}

LONG Hive::QueryInfo(KeyId id, HiveKeyInfo& info) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  sqlite3_stmt* raw = nullptr;
  const LONG code = Prepare(
      "SELECT (SELECT written FROM keys WHERE id=?1),"
      " (SELECT count(*) FROM keys WHERE parent=?1), (SELECT max(length(name)) FROM keys WHERE parent=?1),"
      " (SELECT count(*) FROM vals WHERE key=?1), (SELECT max(length(name)) FROM vals WHERE key=?1),"
      " (SELECT max(length(data)) FROM vals WHERE key=?1)",
      &raw);
  Statement statement(raw);
  if (code != 0) return code;
  sqlite3_bind_int64(raw, 1, id);
  const int step = sqlite3_step(raw);
  if (step != SQLITE_ROW) return Win32ErrorFromSqlite(step);
  if (sqlite3_column_type(raw, 0) == SQLITE_NULL) return kRegErrorKeyDeleted;
  info.lastWrite = sqlite3_column_int64(raw, 0);
  info.subKeys = static_cast<DWORD>(sqlite3_column_int64(raw, 1));
  info.maxSubKeyLen = static_cast<DWORD>(sqlite3_column_int64(raw, 2) / 2);
  info.values = static_cast<DWORD>(sqlite3_column_int64(raw, 3));
  info.maxValueNameLen = static_cast<DWORD>(sqlite3_column_int64(raw, 4) / 2);
  info.maxValueLen = static_cast<DWORD>(sqlite3_column_int64(raw, 5));
  return 0;
}

LONG Hive::CopyTreeLocked(KeyId to, Hive& source, KeyId from) {
  std::vector<HiveValue> values;
  std::vector<std::pair<KeyId, std::u16string>> children;
  {
    std::lock_guard<std::recursive_mutex> lock(source.mutex_);
    sqlite3_stmt* raw = nullptr;
    LONG code = source.Prepare("SELECT name, type, data FROM vals WHERE key=? ORDER BY id", &raw);
    Statement statement(raw);
    if (code != 0) return code;
    sqlite3_bind_int64(raw, 1, from);
    int step;
    while ((step = sqlite3_step(raw)) == SQLITE_ROW) {
      values.push_back({FromBlob(sqlite3_column_blob(raw, 0), sqlite3_column_bytes(raw, 0)),
                        static_cast<DWORD>(sqlite3_column_int64(raw, 1)), ColumnBytes(raw, 2)});
    }
    if (step != SQLITE_DONE) return Win32ErrorFromSqlite(step);
    code = source.Prepare("SELECT id, name FROM keys WHERE parent=? ORDER BY folded", &raw);
    Statement keys(raw);
    if (code != 0) return code;
    sqlite3_bind_int64(raw, 1, from);
    while ((step = sqlite3_step(raw)) == SQLITE_ROW) {
      children.emplace_back(sqlite3_column_int64(raw, 0),
                            FromBlob(sqlite3_column_blob(raw, 1), sqlite3_column_bytes(raw, 1)));
    }
    if (step != SQLITE_DONE) return Win32ErrorFromSqlite(step);
  }
  for (const HiveValue& value : values) {
    const LONG code = WriteValueLocked(to, value.name, value.type, value.data);
    if (code != 0) return code;
  }
  for (const auto& child : children) {
    KeyId copy = 0;
    LONG code = InsertKeyLocked(to, child.second, copy);
    if (code == 0) code = CopyTreeLocked(copy, source, child.first);
    if (code != 0) return code;
  }
  return 0;
}

LONG Hive::ReplaceTree(KeyId to, Hive& source, KeyId from) {
  if (&source == this) return static_cast<LONG>(kErrorInvalidParameter);
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  LONG code = Begin(true);
  if (code != 0) return code;
  code = CheckKey(to);
  if (code == 0) code = DeleteTreeLocked(to, true);
  if (code == 0) {
    // Children first; the key itself stays, with its id, so open handles keep working.
    sqlite3_stmt* raw = nullptr;
    std::vector<KeyId> children;
    code = Prepare("SELECT id FROM keys WHERE parent=?", &raw);
    Statement statement(raw);
    if (code == 0) {
      sqlite3_bind_int64(raw, 1, to);
      while (sqlite3_step(raw) == SQLITE_ROW) children.push_back(sqlite3_column_int64(raw, 0));
    }
    statement.Reset();
    for (KeyId child : children) {
      if (code == 0) code = DeleteTreeLocked(child, false);
    }
  }
  if (code == 0) code = CopyTreeLocked(to, source, from);
  if (code == 0) code = TouchLocked(to);
  return End(code);
}

}  // namespace DE::detail::linux_impl
