// Linux only: the registry store when a system call fails under it. Faults in the store's own
// calls come through the substitutes' system-call table, faults in SQLite's file writes through
// SQLite's own one; each must give a clean Win32 code, change nothing, leak no descriptor, and
// leave the store working once the fault is gone.
#if !defined(_WIN32)
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "DERegistry.h"
#include "common/platform_info.h"
#include "common/temp_dir.h"
#include "platform/linux/system_calls.h"

namespace {

using DE::Registry;
using DE::detail::linux_impl::FailingSystemCall;
using DE::detail::linux_impl::kForever;
using DE::detail::linux_impl::SystemCalls;

// A store of its own for each test, the process-wide one restored afterwards.
struct FreshStore {
  FreshStore() { setenv("UTIL_REGISTRY_DIR", path.c_str(), 1); }
  ~FreshStore() { setenv("UTIL_REGISTRY_DIR", previous.c_str(), 1); }
  const std::string previous = std::getenv("UTIL_REGISTRY_DIR");
  const test::TempDir temp;
  const std::string path = (temp.Path() / "store").string();
};

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

TEST(RegistryFaults, FailedWritesChangeNothing) {
  FreshStore store;
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

// The store's own calls: making the folders of a new store, linking a loaded hive, recording a
// replacement. Each fault fails the call alone.
TEST(RegistryFaults, FailedStoreCallsLeaveNothingHalfDone) {
  if (::geteuid() != 0) GTEST_SKIP() << "loading and replacing hives needs root";
  FreshStore store;
  int descriptors = test::OpenDescriptors();
  {
    FailingSystemCall<&SystemCalls::mkdir> noFolders(1, EACCES, kForever);
    Registry registry;
    EXPECT_FALSE(registry.OpenKey(HKEY_LOCAL_MACHINE, L"Software\\X", true));
    EXPECT_NE(0, registry.GetLastError());
    EXPECT_GE(noFolders.Calls(), 1);
  }
  EXPECT_EQ(descriptors, test::OpenDescriptors());
  ASSERT_TRUE(Registry::SetValue(HKEY_LOCAL_MACHINE, L"Software\\X", L"v", 1, KEY_ALL_ACCESS));
  ASSERT_TRUE(Registry::SetValue(HKEY_CURRENT_USER, L"Software", L"v", 1, KEY_ALL_ACCESS));  // S-1-22-1-0
  Registry registry;
  registry.SetRootKey(HKEY_LOCAL_MACHINE);
  ASSERT_TRUE(registry.SaveKey(L"\\Software", (store.temp.Path() / "saved.hiv").wstring()));
  registry.SetRootKey(HKEY_USERS);
  descriptors = test::OpenDescriptors();  // both hives of the store are open now
  {
    FailingSystemCall<&SystemCalls::symlink> noLink(1, ENOSPC, kForever);
    EXPECT_FALSE(registry.LoadKey(L"Loaded", (store.temp.Path() / "saved.hiv").wstring()));
  }
  EXPECT_FALSE(registry.KeyExists(L"Loaded"));
  {
    FailingSystemCall<&SystemCalls::fsync> noSync(1, EIO, kForever);
    EXPECT_FALSE(registry.ReplaceKey(L"\\S-1-22-1-0", (store.temp.Path() / "saved.hiv").wstring(),
                                     (store.temp.Path() / "old.hiv").wstring()));
    EXPECT_EQ(1, noSync.Calls());
  }
  EXPECT_FALSE(std::filesystem::exists(store.temp.Path() / "old.hiv"));
  EXPECT_FALSE(std::filesystem::exists(store.path + "/users/S-1-22-1-0.hive.replace"));
  EXPECT_FALSE(std::filesystem::exists(store.path + "/users/S-1-22-1-0.hive.replace.new"));
  EXPECT_EQ(descriptors, test::OpenDescriptors());
  ASSERT_TRUE(registry.LoadKey(L"Loaded", (store.temp.Path() / "saved.hiv").wstring()));
  int value = 0;
  EXPECT_TRUE(Registry::GetValue(HKEY_USERS, L"Loaded\\X", L"v", value, KEY_READ));
  EXPECT_EQ(1, value);
  EXPECT_TRUE(registry.UnLoadKey(L"Loaded"));
}

}  // namespace
#endif
