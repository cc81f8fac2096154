// Linux only: the objects behind NamedMutexLock (names, mode, owner, access list) and the kernel
// keeping anonymous users out (setpriv runs the child as other users).
#if !defined(_WIN32)
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "DELock.h"
#include "DEString.h"
#include "DESystem.h"
#include "common/child_process.h"
#include "lock_test_util.h"

namespace {

using locktest::kTryBase;
using locktest::OtherThreadTakes;
using locktest::ScopedMutexName;

// FNV-1a 64, written here from its definition and checked against the published vectors below.
std::string Fnv1a64Hex(const std::string& bytes) {
  unsigned long long hash = 0xcbf29ce484222325ull;
  for (unsigned char byte : bytes) hash = (hash ^ byte) * 0x100000001b3ull;
  char text[17];
  std::snprintf(text, sizeof(text), "%016llx", hash);
  return text;
}

unsigned long OverflowId(const char* kind) {
  unsigned long id = 65534;
  std::ifstream(std::string("/proc/sys/kernel/overflow") + kind) >> id;
  return id;
}

// The entries {tag, permissions, id} of a file's access ACL, from the kernel's xattr form.
std::vector<std::array<unsigned long, 3>> AccessAcl(const std::filesystem::path& file) {
  unsigned char raw[512];
  const ssize_t size = getxattr(file.c_str(), "system.posix_acl_access", raw, sizeof(raw));
  auto le = [&](ssize_t at, int bytes) {
    unsigned long value = 0;
    while (bytes-- > 0) value = (value << 8) | raw[at + bytes];
    return value;
  };
  std::vector<std::array<unsigned long, 3>> entries;
  for (ssize_t at = 4; size >= 4 && le(0, 4) == 2 && at + 8 <= size; at += 8) {
    entries.push_back({le(at, 2), le(at + 2, 2), le(at + 4, 4)});
  }
  return entries;
}

// Exit 0 when the object opens for reading and writing, 13 when the kernel refuses (EACCES).
TEST_CHILD_MAIN(shm_access) {
  const int fd = shm_open(args.at(0).c_str(), O_RDWR, 0);
  if (fd >= 0) close(fd);
  return fd >= 0 ? 0 : errno == EACCES ? 13 : 1;
}

TEST(NamedMutexObject, NameModeOwnerAndAccessList) {
  ASSERT_EQ("cbf29ce484222325", Fnv1a64Hex(""));
  ASSERT_EQ("85944171f73967e8", Fnv1a64Hex("foobar"));

  ScopedMutexName name("permissions");
  DE::NamedMutexLock lock(name.wide.c_str());
  const auto objects = locktest::MutexObjects(name.utf8);
  ASSERT_EQ(1u, objects.size());
  EXPECT_EQ("util-mutex-" + name.utf8 + "-" + Fnv1a64Hex(name.utf8), objects[0].filename().string());
  struct stat info;
  ASSERT_EQ(0, stat(objects[0].c_str(), &info));
  EXPECT_EQ(0100666u, info.st_mode);
  EXPECT_EQ(geteuid(), info.st_uid);
  EXPECT_EQ(getegid(), info.st_gid);
  const unsigned long undefined = 0xFFFFFFFFul;
  const std::vector<std::array<unsigned long, 3>> expected = {
      {0x01, 6, undefined},         {0x02, 0, OverflowId("uid")}, {0x04, 6, undefined},
      {0x08, 0, OverflowId("gid")}, {0x10, 6, undefined},         {0x20, 6, undefined}};
  EXPECT_EQ(expected, AccessAcl(objects[0]));
  // "Global\" and "Local\" lead to the same object and the same mutex.
  DE::NamedMutexLock global((L"Global\\" + name.wide).c_str());
  DE::NamedMutexLock local((L"Local\\" + name.wide).c_str());
  lock.Lock();
  EXPECT_EQ(0, OtherThreadTakes(global));
  EXPECT_EQ(0, OtherThreadTakes(local));
  lock.UnLock();

  // Long and non-ASCII names: at most 64 readable characters, '_' for the others; the hash of all.
  const std::string base = locktest::UniqueName("sanitize");
  const std::string utf8 = base + " \xC3\xA9/\xE4\xB8\xAD" + std::string(80, 'x');  // " é/中": 7 bytes
  const std::string readable = (base + "_______" + std::string(80, 'x')).substr(0, 64);
  DE::NamedMutexLock(DE::StringProc::StringToWStringByUTF8(utf8).c_str());
  const auto sanitized = locktest::MutexObjects(readable);
  for (const auto& object : sanitized) std::filesystem::remove(object);
  ASSERT_EQ(1u, sanitized.size());
  EXPECT_EQ("util-mutex-" + readable + "-" + Fnv1a64Hex(utf8), sanitized[0].filename().string());
}

TEST(NamedMutexObject, AnonymousUsersAreKeptOutOthersShare) {
  if (geteuid() != 0) GTEST_SKIP() << "running a process as other users needs root";
  if (access("/usr/bin/setpriv", X_OK) != 0) GTEST_SKIP() << "setpriv (util-linux) is not installed";
  const std::string anonymousGid = std::to_string(OverflowId("gid"));
  const std::string anonymous =
      "--reuid=" + std::to_string(OverflowId("uid")) + " --regid=" + anonymousGid + " --clear-groups";
  const std::string user = "--reuid=4242 --regid=4242 --clear-groups";
  const std::string userInAnonymousGroup = "--reuid=4242 --regid=4242 --groups=" + anonymousGid;
  const std::string otherUser = "--reuid=4343 --regid=4343 --clear-groups";
  const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  auto runAs = [&](const std::string& ids, const std::string& routine, const std::string& argument) {
    DWORD code = 0xFFFF;
    const std::string line =
        "setpriv " + ids + " '" + self + "' --util-child=" + routine + " '" + argument + "'";
    EXPECT_TRUE(DE::ExcuteCmdLine(DE::StringProc::StringToWStringByUTF8(line), 60000, &code)) << line;
    return static_cast<int>(code);
  };

  ScopedMutexName name("anonymous");
  DE::NamedMutexLock lock(name.wide.c_str());  // created by root, free
  const auto objects = locktest::MutexObjects(name.utf8);
  ASSERT_EQ(1u, objects.size());
  const std::string object = "/" + objects[0].filename().string();

  // The kernel refuses the anonymous user and group; the library then has no mutex to give.
  for (const std::string& ids : {anonymous, userInAnonymousGroup}) {
    EXPECT_EQ(13, runAs(ids, "shm_access", object)) << ids;
    EXPECT_EQ(kTryBase + 0, runAs(ids, "mutex_try", name.utf8)) << ids;
  }
  // Any other user shares it, exclusion included.
  EXPECT_EQ(kTryBase + 1, runAs(user, "mutex_try", name.utf8));
  lock.Lock();
  EXPECT_EQ(kTryBase + 0, runAs(user, "mutex_try", name.utf8));
  lock.UnLock();

  // A mutex an ordinary user creates is open to root and to other users alike.
  ScopedMutexName userMade("usermade");
  EXPECT_EQ(kTryBase + 1, runAs(user, "mutex_try", userMade.utf8));
  EXPECT_EQ(kTryBase + 1, runAs(otherUser, "mutex_try", userMade.utf8));
  DE::NamedMutexLock rootSide(userMade.wide.c_str());
  EXPECT_EQ(1, rootSide.TryLock());
  EXPECT_EQ(kTryBase + 0, runAs(otherUser, "mutex_try", userMade.utf8));
  rootSide.UnLock();

  // An object planted by the anonymous user is not trusted, not even by root.
  ASSERT_EQ(0, chown(objects[0].c_str(), OverflowId("uid"), OverflowId("gid")));
  EXPECT_EQ(kTryBase + 0, test::RunSelf({"mutex_try", name.utf8}, 60000));
  EXPECT_EQ(kTryBase + 0, runAs(user, "mutex_try", name.utf8));
}

}  // namespace
#endif
