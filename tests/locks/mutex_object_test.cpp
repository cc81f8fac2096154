// The Linux objects behind NamedMutexLock: their names, mode, owner and access list, and the
// kernel keeping anonymous users out (checked with setpriv as other users). Skipped on Windows,
// where the mutex's security descriptor is checked in named_mutex_test.cpp.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "DELock.h"
#include "DEString.h"
#include "DESystem.h"
#include "common/child_process.h"
#include "lock_test_util.h"

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#endif

namespace {

using locktest::kTryBase;
using locktest::ScopedMutexName;

#if defined(_WIN32)
#define SKIP_UNLESS_LINUX() GTEST_SKIP() << "shared-memory mutex objects exist only in the Linux build"
#else
#define SKIP_UNLESS_LINUX() (void)0

// FNV-1a 64, written here from its definition and checked against the published vectors below.
std::string Fnv1a64Hex(const std::string& bytes) {
  unsigned long long hash = 0xcbf29ce484222325ull;
  for (unsigned char byte : bytes) hash = (hash ^ byte) * 0x100000001b3ull;
  char text[17];
  std::snprintf(text, sizeof(text), "%016llx", hash);
  return text;
}

unsigned long OverflowId(const char* path) {
  unsigned long id = 65534;
  std::ifstream(path) >> id;
  return id;
}

struct AclEntry {
  unsigned tag;
  unsigned permissions;
  unsigned long id;
  bool operator==(const AclEntry& other) const {
    return tag == other.tag && permissions == other.permissions && id == other.id;
  }
};

// The entries of a file's access ACL, parsed from the kernel's xattr form; empty without one.
std::vector<AclEntry> AccessAcl(const std::filesystem::path& file) {
  unsigned char raw[512];
  const ssize_t size = getxattr(file.c_str(), "system.posix_acl_access", raw, sizeof(raw));
  std::vector<AclEntry> entries;
  auto le = [&](std::size_t at, int bytes) {
    unsigned long value = 0;
    for (int i = bytes - 1; i >= 0; --i) value = (value << 8) | raw[at + static_cast<std::size_t>(i)];
    return value;
  };
  if (size < 4 || le(0, 4) != 2) return entries;
  for (std::size_t at = 4; at + 8 <= static_cast<std::size_t>(size); at += 8) {
    entries.push_back(
        {static_cast<unsigned>(le(at, 2)), static_cast<unsigned>(le(at + 2, 2)), le(at + 4, 4)});
  }
  return entries;
}

std::string SelfPath() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

// Exit 0 when the object opens for reading and writing, 13 when the kernel refuses (EACCES).
TEST_CHILD_MAIN(shm_access) {
  const int fd = shm_open(args.at(0).c_str(), O_RDWR, 0);
  if (fd >= 0) {
    close(fd);
    return 0;
  }
  return errno == EACCES ? 13 : 1;
}
#endif

TEST(NamedMutexObject, NameModeOwnerAndAccessList) {
  SKIP_UNLESS_LINUX();
#if !defined(_WIN32)
  ASSERT_EQ("cbf29ce484222325", Fnv1a64Hex(""));
  ASSERT_EQ("af63dc4c8601ec8c", Fnv1a64Hex("a"));
  ASSERT_EQ("85944171f73967e8", Fnv1a64Hex("foobar"));

  ScopedMutexName name("permissions");
  DE::NamedMutexLock lock(name.wide().c_str());
  const auto objects = locktest::MutexObjects(name.utf8());
  ASSERT_EQ(1u, objects.size());
  EXPECT_EQ("util-mutex-" + name.utf8() + "-" + Fnv1a64Hex(name.utf8()), objects[0].filename().string());

  struct stat info;
  ASSERT_EQ(0, stat(objects[0].c_str(), &info));
  EXPECT_TRUE(S_ISREG(info.st_mode));
  EXPECT_EQ(0666u, info.st_mode & 07777u);
  EXPECT_EQ(geteuid(), info.st_uid);
  EXPECT_EQ(getegid(), info.st_gid);

  const unsigned long anonymousUid = OverflowId("/proc/sys/kernel/overflowuid");
  const unsigned long anonymousGid = OverflowId("/proc/sys/kernel/overflowgid");
  const unsigned long undefined = 0xFFFFFFFFul;
  const std::vector<AclEntry> expected = {{0x01, 6, undefined}, {0x02, 0, anonymousUid},
                                          {0x04, 6, undefined}, {0x08, 0, anonymousGid},
                                          {0x10, 6, undefined}, {0x20, 6, undefined}};
  EXPECT_EQ(expected, AccessAcl(objects[0]));

  // "Global\" and "Local\" lead to the same object and the same mutex.
  DE::NamedMutexLock global((L"Global\\" + name.wide()).c_str());
  DE::NamedMutexLock local((L"Local\\" + name.wide()).c_str());
  EXPECT_EQ(1u, locktest::MutexObjects(name.utf8()).size());
  lock.Lock();
  int globalTry = -1;
  int localTry = -1;
  std::thread([&] {
    globalTry = global.TryLock();
    localTry = local.TryLock();
  }).join();
  EXPECT_EQ(0, globalTry);
  EXPECT_EQ(0, localTry);
  lock.UnLock();
#endif
}

TEST(NamedMutexObject, LongAndNonAsciiNamesAreSanitizedAndHashed) {
  SKIP_UNLESS_LINUX();
#if !defined(_WIN32)
  const std::string base = locktest::UniqueName("sanitize");
  const std::string utf8 =
      base + " \xC3\xA9/\xE4\xB8\xAD" + std::string(80, 'x');  // " é/中" then x...: 1 + 2 + 1 + 3 bytes
  const std::string readable = (base + "_______" + std::string(80, 'x')).substr(0, 64);
  {
    DE::NamedMutexLock lock(DE::StringProc::StringToWStringByUTF8(utf8).c_str());
    EXPECT_EQ(1, lock.TryLock());
    lock.UnLock();
  }
  const auto objects = locktest::MutexObjects(readable);
  for (const auto& object : objects) std::filesystem::remove(object);
  ASSERT_EQ(1u, objects.size());
  EXPECT_EQ("util-mutex-" + readable + "-" + Fnv1a64Hex(utf8), objects[0].filename().string());
#endif
}

TEST(NamedMutexObject, AnonymousUsersAreKeptOutOthersShare) {
  SKIP_UNLESS_LINUX();
#if !defined(_WIN32)
  if (geteuid() != 0) GTEST_SKIP() << "running a process as other users needs root";
  if (access("/usr/bin/setpriv", X_OK) != 0 && access("/bin/setpriv", X_OK) != 0) {
    GTEST_SKIP() << "setpriv (util-linux) is not installed";
  }
  const std::string anonymousUid = std::to_string(OverflowId("/proc/sys/kernel/overflowuid"));
  const std::string anonymousGid = std::to_string(OverflowId("/proc/sys/kernel/overflowgid"));
  const std::string anonymous = "--reuid=" + anonymousUid + " --regid=" + anonymousGid + " --clear-groups";
  const std::string user = "--reuid=4242 --regid=4242 --clear-groups";
  const std::string userInAnonymousGroup = "--reuid=4242 --regid=4242 --groups=" + anonymousGid;
  const std::string otherUser = "--reuid=4343 --regid=4343 --clear-groups";
  const std::string self = SelfPath();
  auto runAs = [&](const std::string& ids, const std::string& routine, const std::string& argument) {
    DWORD code = 0xFFFF;
    std::string output;
    const std::string line =
        "setpriv " + ids + " '" + self + "' --util-child=" + routine + " '" + argument + "'";
    EXPECT_TRUE(DE::ExcuteCmdLine(DE::StringProc::StringToWStringByUTF8(line), 60000, &code, &output))
        << line;
    if (code != 0 && code != 13 && code != kTryBase && code != kTryBase + 1)
      ADD_FAILURE() << line << "\n" << output;
    return static_cast<int>(code);
  };

  ScopedMutexName name("anonymous");
  DE::NamedMutexLock lock(name.wide().c_str());  // created by root, free
  const auto objects = locktest::MutexObjects(name.utf8());
  ASSERT_EQ(1u, objects.size());
  const std::string object = "/" + objects[0].filename().string();

  // The kernel refuses the anonymous user and group; the library then has no mutex to give.
  EXPECT_EQ(13, runAs(anonymous, "shm_access", object));
  EXPECT_EQ(13, runAs(userInAnonymousGroup, "shm_access", object));
  EXPECT_EQ(kTryBase + 0, runAs(anonymous, "mutex_try", name.utf8()));
  EXPECT_EQ(kTryBase + 0, runAs(userInAnonymousGroup, "mutex_try", name.utf8()));

  // Any other user shares it, exclusion included.
  EXPECT_EQ(0, runAs(user, "shm_access", object));
  EXPECT_EQ(kTryBase + 1, runAs(user, "mutex_try", name.utf8()));
  lock.Lock();
  EXPECT_EQ(kTryBase + 0, runAs(user, "mutex_try", name.utf8()));
  lock.UnLock();

  // A mutex an ordinary user creates is open to root and to other users alike.
  ScopedMutexName userMade("usermade");
  EXPECT_EQ(kTryBase + 1, runAs(user, "mutex_try", userMade.utf8()));
  const auto userObjects = locktest::MutexObjects(userMade.utf8());
  ASSERT_EQ(1u, userObjects.size());
  struct stat info;
  ASSERT_EQ(0, stat(userObjects[0].c_str(), &info));
  EXPECT_EQ(4242u, info.st_uid);
  EXPECT_EQ(0666u, info.st_mode & 07777u);
  EXPECT_EQ(kTryBase + 1, runAs(otherUser, "mutex_try", userMade.utf8()));
  DE::NamedMutexLock rootSide(userMade.wide().c_str());
  EXPECT_EQ(1, rootSide.TryLock());
  EXPECT_EQ(kTryBase + 0, runAs(otherUser, "mutex_try", userMade.utf8()));
  rootSide.UnLock();

  // An object planted by the anonymous user is not trusted, not even by root.
  ASSERT_EQ(0, chown(objects[0].c_str(), static_cast<uid_t>(std::stoul(anonymousUid)),
                     static_cast<gid_t>(std::stoul(anonymousGid))));
  EXPECT_EQ(kTryBase + 0, test::RunSelf({"mutex_try", name.utf8()}, 60000));
  EXPECT_EQ(kTryBase + 0, runAs(user, "mutex_try", name.utf8()));
#endif
}

}  // namespace
