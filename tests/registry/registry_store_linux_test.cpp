// Linux store only: many processes at once, writers killed at random points, permissions between
// users, damaged or foreign files, listings and hive replacement across processes, and failing
// system calls (the substitutes' table and SQLite's own).
#if !defined(_WIN32)
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "DERegistry.h"
#include "common/child_process.h"
#include "common/platform_info.h"
#include "common/temp_dir.h"
#include "platform/linux/system_calls.h"
#include "registry_test_util.h"

namespace {

using DE::Registry;
using DE::detail::linux_impl::FailingSystemCall;
using DE::detail::linux_impl::kForever;
using DE::detail::linux_impl::SystemCalls;
using Names = std::vector<std::wstring>;

constexpr int kAccessDenied = 5;
constexpr int kBadDb = 1009;
const wchar_t* const kLoadKey = L"Software\\Load";

// Points the store at a folder for this test; restores the process-wide one afterwards.
struct StoreFolder {
  StoreFolder() { setenv("UTIL_REGISTRY_DIR", path.c_str(), 1); }
  ~StoreFolder() { setenv("UTIL_REGISTRY_DIR", previous.c_str(), 1); }
  const std::string previous = std::getenv("UTIL_REGISTRY_DIR");
  const test::TempDir temp;
  const std::string path = (temp.Path() / "store").string();
  std::wstring File(const char* name) const { return temp.File(name).wstring(); }
};

// Writes count values, reads each back, and records every write that returned in progress.
TEST_CHILD_MAIN(reg_writer) {
  setenv("UTIL_REGISTRY_DIR", args.at(0).c_str(), 1);
  const std::wstring id(args.at(1).begin(), args.at(1).end());
  const int count = std::stoi(args.at(2));
  const int progress = ::open(args.at(3).c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
  for (int j = 0; j < count; ++j) {
    const std::wstring name = L"w" + id + L"-" + std::to_wstring(j);
    if (!Registry::SetValue(HKEY_LOCAL_MACHINE, kLoadKey, name, j, KEY_ALL_ACCESS)) return 10;
    if (!Registry::SetValue(HKEY_LOCAL_MACHINE, kLoadKey, L"shared", j, KEY_ALL_ACCESS)) return 11;
    int back = -1;
    if (!Registry::GetValue(HKEY_LOCAL_MACHINE, kLoadKey, name, back, KEY_READ) || back != j) return 12;
    const std::string line = std::to_string(j) + "\n";
    if (::write(progress, line.data(), line.size()) != static_cast<ssize_t>(line.size())) return 13;
  }
  ::close(progress);
  return 0;
}

// Writers run at once while others are killed (SIGKILL) at random points, mid-write some time.
TEST(RegistryStore, ConcurrentAndKilledWritersLoseNoReturnedWrite) {
  StoreFolder store;
  const std::vector<std::string> ids = {"0", "1", "2", "3", "c0", "c1", "c2", "c3"};
  std::vector<test::ChildProcess> children(ids.size());
  std::mt19937 random(std::random_device{}());
  for (size_t i = 0; i < ids.size(); ++i) {
    const bool killed = ids[i][0] == 'c';
    ASSERT_TRUE(children[i].Start(
        {"reg_writer", store.path, ids[i], killed ? "100000" : "150", store.temp.File(ids[i]).string()}));
    if (!killed) continue;
    std::this_thread::sleep_for(std::chrono::milliseconds(50 + random() % 400));
    children[i].Kill();
  }
  for (int i = 0; i < 4; ++i) EXPECT_EQ(0, children[i].Wait(120000));
  for (const std::string& id : ids) {
    std::ifstream done(store.temp.File(id));
    int count = 0;
    for (int j = 0; done >> j; ++count) {
      int value = -1;
      const std::wstring name = L"w" + std::wstring(id.begin(), id.end()) + L"-" + std::to_wstring(j);
      ASSERT_TRUE(Registry::GetValue(HKEY_LOCAL_MACHINE, kLoadKey, name, value, 0)) << id << " " << j;
      EXPECT_EQ(j, value);
    }
    EXPECT_TRUE(id[0] == 'c' || count == 150) << id << " returned " << count;
  }
  EXPECT_TRUE(Registry::SetValue(HKEY_LOCAL_MACHINE, kLoadKey, L"after", 1, KEY_ALL_ACCESS));
}

// As user nobody: the codes of the checks, 0 when all behave.
TEST_CHILD_MAIN(reg_nobody) {
  setenv("UTIL_REGISTRY_DIR", args.at(0).c_str(), 1);
  if (::setgid(65534) != 0 || ::setuid(65534) != 0) return 90;
  Registry writer(KEY_WRITE);
  if (writer.OpenKey(HKEY_LOCAL_MACHINE, L"Software\\Perm", false)) return 1;
  if (writer.GetLastError() != kAccessDenied) return 2;
  int value = 0;
  if (!Registry::GetValue(HKEY_LOCAL_MACHINE, L"Software\\Perm", L"v", value, 0) || value != 1) return 3;
  if (Registry::SetValue(HKEY_LOCAL_MACHINE, L"Software\\Perm", L"v", 2, KEY_ALL_ACCESS)) return 4;
  if (Registry::DelKey(HKEY_LOCAL_MACHINE, L"Software\\Perm", KEY_ALL_ACCESS)) return 5;
  Registry other;
  if (other.OpenKeyReadOnly(HKEY_USERS, L"S-1-22-1-0\\Software")) return 6;
  if (other.GetLastError() != kAccessDenied) return 7;
  // Its own hive works and is created private.
  if (!Registry::SetValue(HKEY_CURRENT_USER, L"Software\\Mine", L"v", 3, KEY_ALL_ACCESS)) return 8;
  return 0;
}

TEST(RegistryStore, PermissionsBetweenUsers) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to run a child as another user";
  StoreFolder store;
  ::chmod(store.temp.Path().c_str(), 0755);
  ASSERT_TRUE(Registry::SetValue(HKEY_LOCAL_MACHINE, L"Software\\Perm", L"v", 1, KEY_ALL_ACCESS));
  ASSERT_TRUE(Registry::SetValue(HKEY_CURRENT_USER, L"Software", L"secret", 7, KEY_ALL_ACCESS));
  const auto stat_of = [&](const std::string& file) {
    struct stat info = {};
    ::stat((store.path + file).c_str(), &info);
    return info;
  };
  EXPECT_EQ(0644u, stat_of("/machine.hive").st_mode & 0777);
  EXPECT_EQ(0600u, stat_of("/users/S-1-22-1-0.hive").st_mode & 0777);
  // HKEY_CURRENT_USER is the caller's SID under HKEY_USERS.
  int secret = 0;
  EXPECT_TRUE(Registry::GetValue(HKEY_USERS, L"S-1-22-1-0\\Software", L"secret", secret, 0));
  EXPECT_EQ(7, secret);

  EXPECT_EQ(0, test::RunSelf({"reg_nobody", store.path}, 60000));
  int value = 0;
  EXPECT_TRUE(Registry::GetValue(HKEY_LOCAL_MACHINE, L"Software\\Perm", L"v", value, 0));
  EXPECT_EQ(1, value);  // unchanged
  EXPECT_EQ(65534u, stat_of("/users/S-1-22-1-65534.hive").st_uid);
  EXPECT_EQ(0600u, stat_of("/users/S-1-22-1-65534.hive").st_mode & 0777);
  // Root creating a user's hive gives it to that user.
  EXPECT_TRUE(Registry::SetValue(HKEY_USERS, L"S-1-22-1-4242\\Software", L"v", 1, KEY_ALL_ACCESS));
  EXPECT_EQ(4242u, stat_of("/users/S-1-22-1-4242.hive").st_uid);
}

TEST(RegistryStore, DamagedAndForeignFilesGiveBadDb) {
  StoreFolder store;
  ASSERT_TRUE(Registry::SetValue(HKEY_LOCAL_MACHINE, L"Software\\X", L"v", 1, KEY_ALL_ACCESS));
  const std::string good = test::ReadFileBytes(store.path + "/machine.hive");
  ASSERT_GT(good.size(), 100u);
  ::mkdir((store.path + "/users").c_str(), 0755);
  const std::string user = store.path + "/users/S-1-5-21-1-2-3-1001.hive";
  std::vector<std::string> damaged = {std::string(5000, 'x'), good.substr(0, 100),
                                      "SQLite format 3" + std::string(1, '\0') + std::string(200, '\xFF')};
  // Another program's SQLite database.
  const std::string foreign = store.temp.File("foreign.db").string();
  const std::string command = "python3 -c \"import sqlite3; c=sqlite3.connect('" + foreign +
                              "'); c.execute('create table keys(a)'); c.commit()\"";
  if (std::system(command.c_str()) == 0) damaged.push_back(test::ReadFileBytes(foreign));
  for (size_t i = 0; i < damaged.size(); ++i) {
    ASSERT_TRUE(test::WriteFileBytes(user, damaged[i]));
    Registry registry;
    EXPECT_FALSE(registry.OpenKey(HKEY_USERS, L"S-1-5-21-1-2-3-1001\\Software", false)) << i;
    EXPECT_EQ(kBadDb, registry.GetLastError()) << i;
    ::unlink(user.c_str());
  }
  // Unserved roots fail cleanly.
  Registry performance;
  EXPECT_FALSE(performance.OpenKey(HKEY_PERFORMANCE_DATA, L"Counters", false));
  EXPECT_EQ(6, performance.GetLastError());
}

// Creates (or with a third argument deletes) HKEY_LOCAL_MACHINE\<args[1]>.
TEST_CHILD_MAIN(reg_key) {
  setenv("UTIL_REGISTRY_DIR", args.at(0).c_str(), 1);
  const std::wstring path(args.at(1).begin(), args.at(1).end());
  Registry registry;
  registry.SetRootKey(HKEY_LOCAL_MACHINE);
  return (args.size() > 2 ? registry.DeleteKey(path) : registry.CreateKey(path)) ? 0 : 1;
}

// The listing an open key gives follows what other processes and this one change in between.
TEST(RegistryStore, EnumerationFollowsChangesFromEveryProcess) {
  StoreFolder store;
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(HKEY_LOCAL_MACHINE, L"Software\\Enum", true));
  ASSERT_TRUE(registry.CreateKey(L"A"));
  ASSERT_TRUE(registry.CreateKey(L"C"));
  Names names;
  ASSERT_TRUE(registry.GetKeyNames(names));
  EXPECT_EQ((Names{L"A", L"C"}), names);
  ASSERT_EQ(0, test::RunSelf({"reg_key", store.path, "Software\\Enum\\B"}, 60000));
  ASSERT_TRUE(registry.GetKeyNames(names));
  EXPECT_EQ((Names{L"A", L"B", L"C"}), names);
  ASSERT_TRUE(Registry::DelKey(HKEY_LOCAL_MACHINE, L"Software\\Enum\\A", KEY_ALL_ACCESS));
  ASSERT_TRUE(registry.GetKeyNames(names));
  EXPECT_EQ((Names{L"B", L"C"}), names);
  ASSERT_EQ(0, test::RunSelf({"reg_key", store.path, "Software\\Enum", "delete"}, 60000));
  EXPECT_FALSE(registry.GetKeyNames(names));
  EXPECT_TRUE(names.empty());
}

// Reads (or with a third argument writes) the number "v" of HKEY_USERS\<args[1]>\Software; the
// number read is the exit code, 100 on failure.
TEST_CHILD_MAIN(reg_value) {
  setenv("UTIL_REGISTRY_DIR", args.at(0).c_str(), 1);
  const std::wstring path = std::wstring(args.at(1).begin(), args.at(1).end()) + L"\\Software";
  if (args.size() > 2)
    return Registry::SetValue(HKEY_USERS, path, L"v", std::stoi(args[2]), KEY_ALL_ACCESS) ? 0 : 100;
  int value = 0;
  return Registry::GetValue(HKEY_USERS, path, L"v", value, KEY_READ) ? value : 100;
}

// A replaced hive keeps its keys until the system restarts (a new boot id below UTIL_SYSROOT),
// then the first process to open it finds the new file's keys, once; the old file has the keys
// of the moment of the call.
TEST(RegistryStore, ReplacedHiveChangesAtTheNextBoot) {
  if (::geteuid() != 0) GTEST_SKIP() << "replacing a hive needs root";
  StoreFolder store;
  const test::TempDir sysroot;
  const std::string bootId = (sysroot.Path() / "proc/sys/kernel/random/boot_id").string();
  std::filesystem::create_directories(sysroot.Path() / "proc/sys/kernel/random");
  ASSERT_TRUE(test::WriteFileBytes(bootId, "boot-a\n"));
  setenv("UTIL_SYSROOT", sysroot.Path().c_str(), 1);
  const std::string sid = "S-1-5-21-7";
  ASSERT_EQ(0, test::RunSelf({"reg_value", store.path, sid, "1"}, 60000));
  Registry source;
  ASSERT_TRUE(source.OpenKey(HKEY_LOCAL_MACHINE, L"Source\\Software", true));
  ASSERT_TRUE(source.WriteInteger(L"v", 2));
  ASSERT_TRUE(source.SaveKey(L"\\Source", store.File("new.hiv")));

  Registry users;
  users.SetRootKey(HKEY_USERS);
  const std::wstring hive = L"\\" + std::wstring(sid.begin(), sid.end());
  ASSERT_TRUE(users.ReplaceKey(hive, store.File("new.hiv"), store.File("old.hiv")));
  EXPECT_FALSE(users.ReplaceKey(hive, store.File("new.hiv"), store.File("old.hiv")));
  EXPECT_EQ(183, users.GetLastError());
  EXPECT_FALSE(
      users.ReplaceKey(hive + L"\\Software", store.File("new.hiv"), store.File("old2.hiv")));  // not a root
  EXPECT_EQ(1, test::RunSelf({"reg_value", store.path, sid}, 60000));  // same boot: unchanged

  ASSERT_TRUE(test::WriteFileBytes(bootId, "boot-b\n"));
  EXPECT_EQ(2, test::RunSelf({"reg_value", store.path, sid}, 60000));
  EXPECT_EQ(0, test::RunSelf({"reg_value", store.path, sid, "3"}, 60000));
  EXPECT_EQ(3, test::RunSelf({"reg_value", store.path, sid}, 60000));  // carried out once only
  EXPECT_TRUE(users.LoadKey(L"Old", store.File("old.hiv")));
  int old = 0;
  EXPECT_TRUE(Registry::GetValue(HKEY_USERS, L"Old\\Software", L"v", old, KEY_READ));
  EXPECT_EQ(1, old);
  EXPECT_TRUE(users.UnLoadKey(L"Old"));
  unsetenv("UTIL_SYSROOT");
}

// Makes SQLite's writes fail with ENOSPC while it lives, whichever write call its build uses.
class FullDisk {
 public:
  FullDisk() : vfs_(sqlite3_vfs_find(nullptr)) {
    for (int i = 0; i < kCalls; ++i) {
      saved_[i] = vfs_->xGetSystemCall(vfs_, kNames[i]);
      if (saved_[i] != nullptr) vfs_->xSetSystemCall(vfs_, kNames[i], kFailures[i]);
    }
  }
  ~FullDisk() {
    for (int i = 0; i < kCalls; ++i) {
      if (saved_[i] != nullptr) vfs_->xSetSystemCall(vfs_, kNames[i], saved_[i]);
    }
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  static ssize_t Write(int, const void*, size_t) { return errno = ENOSPC, -1; }
  static ssize_t PositionedWrite(int, const void*, size_t, off_t) { return errno = ENOSPC, -1; }
  static constexpr int kCalls = 3;
  static constexpr const char* kNames[kCalls] = {"write", "pwrite", "pwrite64"};
  static inline const sqlite3_syscall_ptr kFailures[kCalls] = {
      reinterpret_cast<sqlite3_syscall_ptr>(&Write), reinterpret_cast<sqlite3_syscall_ptr>(&PositionedWrite),
      reinterpret_cast<sqlite3_syscall_ptr>(&PositionedWrite)};
  sqlite3_vfs* vfs_;
  sqlite3_syscall_ptr saved_[kCalls] = {};
};

TEST(RegistryStore, FailedSqliteWritesChangeNothing) {
  StoreFolder store;
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(HKEY_LOCAL_MACHINE, L"Software\\Faults", true));
  ASSERT_TRUE(registry.WriteInteger(L"kept", 1));
  const int descriptors = test::OpenDescriptors();
  {
    FullDisk full;
    EXPECT_FALSE(registry.WriteInteger(L"kept", 2));
    EXPECT_FALSE(registry.WriteString(L"new", L"x"));
    EXPECT_FALSE(registry.CreateKey(L"Child"));
    EXPECT_EQ(112, registry.GetLastError());  // ERROR_DISK_FULL
  }
  int value = 0;
  EXPECT_TRUE(registry.ReadInteger(L"kept", value));
  EXPECT_EQ(1, value);
  EXPECT_FALSE(registry.ValueExists(L"new"));
  EXPECT_FALSE(registry.KeyExists(L"Child"));
  EXPECT_EQ(descriptors, test::OpenDescriptors());
  EXPECT_TRUE(registry.WriteInteger(L"kept", 3));
  EXPECT_TRUE(registry.CreateKey(L"Child"));
}

// The store's own calls: linking a loaded hive, recording a replacement. Each fault fails the
// call alone.
TEST(RegistryStore, FailedStoreCallsLeaveNothingHalfDone) {
  if (::geteuid() != 0) GTEST_SKIP() << "loading and replacing hives needs root";
  StoreFolder store;
  ASSERT_TRUE(Registry::SetValue(HKEY_LOCAL_MACHINE, L"Software\\X", L"v", 1, KEY_ALL_ACCESS));
  ASSERT_TRUE(Registry::SetValue(HKEY_CURRENT_USER, L"Software", L"v", 1, KEY_ALL_ACCESS));  // S-1-22-1-0
  Registry registry;
  registry.SetRootKey(HKEY_LOCAL_MACHINE);
  ASSERT_TRUE(registry.SaveKey(L"\\Software", store.File("saved.hiv")));
  registry.SetRootKey(HKEY_USERS);
  const int descriptors = test::OpenDescriptors();  // both hives of the store are open now
  {
    FailingSystemCall<&SystemCalls::symlink> noLink(1, ENOSPC, kForever);
    EXPECT_FALSE(registry.LoadKey(L"Loaded", store.File("saved.hiv")));
  }
  EXPECT_FALSE(registry.KeyExists(L"Loaded"));
  {
    FailingSystemCall<&SystemCalls::fsync> noSync(1, EIO, kForever);
    EXPECT_FALSE(registry.ReplaceKey(L"\\S-1-22-1-0", store.File("saved.hiv"), store.File("old.hiv")));
    EXPECT_EQ(1, noSync.Calls());
  }
  EXPECT_FALSE(std::filesystem::exists(store.temp.Path() / "old.hiv"));
  EXPECT_FALSE(std::filesystem::exists(store.path + "/users/S-1-22-1-0.hive.replace"));
  EXPECT_FALSE(std::filesystem::exists(store.path + "/users/S-1-22-1-0.hive.replace.new"));
  EXPECT_EQ(descriptors, test::OpenDescriptors());
  ASSERT_TRUE(registry.LoadKey(L"Loaded", store.File("saved.hiv")));
  int value = 0;
  EXPECT_TRUE(Registry::GetValue(HKEY_USERS, L"Loaded\\X", L"v", value, KEY_READ));
  EXPECT_EQ(1, value);
  EXPECT_TRUE(registry.UnLoadKey(L"Loaded"));
}

}  // namespace
#endif
