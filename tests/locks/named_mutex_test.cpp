// NamedMutexLock between real processes (this binary re-run as the child) and within one process.
// The same cases run on Linux and under Wine, whose named mutexes are the reference.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#if defined(_WIN32)
#include "UtilPlatform.h"  // <windows.h> before sddl.h

#include <sddl.h>
#endif

#include "DELock.h"
#include "common/child_process.h"
#include "common/temp_dir.h"
#include "lock_test_util.h"

namespace {

using locktest::kTryBase;
using locktest::OtherThreadTakes;
using locktest::ScopedMutexName;

constexpr int kChildTimeoutMs = 60000;

// Waits until `file` exists; false after kChildTimeoutMs or when `child` (if any) ends first.
bool WaitForFile(const std::filesystem::path& file, test::ChildProcess* child) {
  for (int waited = 0; !std::filesystem::exists(file); waited += 10) {
    if (waited >= kChildTimeoutMs || (child && child->Wait(0) != test::ChildProcess::kStillRunning))
      return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// Takes the mutex, signals "<dir>/locked", waits for "<dir>/release", releases, exits 0.
TEST_CHILD_MAIN(mutex_hold) {
  const std::filesystem::path dir = args.at(1);
  DE::NamedMutexLock lock(locktest::Widen(args.at(0)).c_str());
  lock.Lock();
  std::ofstream(dir / "locked").put('\n');
  WaitForFile(dir / "release", nullptr);
  lock.UnLock();
  return 0;
}

// Takes the mutex and ends at once like a crashed owner: no release, no exit handlers.
TEST_CHILD_MAIN(mutex_abandon) {
  DE::NamedMutexLock lock(locktest::Widen(args.at(0)).c_str());
  lock.Lock();
  std::fflush(nullptr);
  std::_Exit(0);
}

// Exits with kTryBase + TryLock() (releasing again what it took).
TEST_CHILD_MAIN(mutex_try) {
  DE::NamedMutexLock lock(locktest::Widen(args.at(0)).c_str());
  const int taken = lock.TryLock();
  if (taken != 0) lock.UnLock();
  return kTryBase + taken;
}

int ChildTryLock(const ScopedMutexName& name) {
  return test::RunSelf({"mutex_try", name.utf8}, kChildTimeoutMs);
}

TEST(NamedMutexLock, ExcludesAnotherProcess) {
  ScopedMutexName name("exclusion");
  test::TempDir dir;
  DE::NamedMutexLock lock(name.wide.c_str());

  test::ChildProcess holder;
  ASSERT_TRUE(holder.Start({"mutex_hold", name.utf8, dir.Path().string()}));
  ASSERT_TRUE(WaitForFile(dir.File("locked"), &holder));
  EXPECT_EQ(0, lock.TryLock(20));
  EXPECT_EQ(kTryBase + 0, ChildTryLock(name));  // a third process is kept out too

  std::ofstream(dir.File("release")).put('\n');
  EXPECT_EQ(1, lock.TryLock(kChildTimeoutMs));  // a long TryLock waits for the holder to let go
  EXPECT_EQ(0, holder.Wait(kChildTimeoutMs));
  EXPECT_EQ(kTryBase + 0, ChildTryLock(name));  // now we hold it
  lock.UnLock();
  EXPECT_EQ(kTryBase + 1, ChildTryLock(name));
}

TEST(NamedMutexLock, AbandonedMutexIsOwnedButTryLockSaysZero) {
  ScopedMutexName name("abandoned");
  DE::NamedMutexLock lock(name.wide.c_str());  // first: on Windows it would go with the child's handle
  ASSERT_EQ(0, test::RunSelf({"mutex_abandon", name.utf8}, kChildTimeoutMs));

  EXPECT_EQ(0, lock.TryLock());                 // abandoned: reported as not taken...
  EXPECT_EQ(kTryBase + 0, ChildTryLock(name));  // ...yet owned by us
  lock.UnLock();
  EXPECT_EQ(kTryBase + 1, ChildTryLock(name));
  ASSERT_EQ(0, test::RunSelf({"mutex_abandon", name.utf8}, kChildTimeoutMs));
  lock.Lock();  // takes an abandoned mutex and returns normally
  EXPECT_EQ(kTryBase + 0, ChildTryLock(name));
  lock.UnLock();
}

TEST(NamedMutexLock, OwnershipWithinOneProcess) {
  ScopedMutexName name("local");
  ScopedMutexName otherName("other");
  DE::NamedMutexLock lock(name.wide.c_str());
  DE::NamedMutexLock other(otherName.wide.c_str());
  {
    DE::NamedMutexLock same(name.wide.c_str());  // the same mutex through another object
    lock.Lock();
    EXPECT_EQ(1, same.TryLock());  // the owner recurses
    EXPECT_EQ(0, OtherThreadTakes(same));
    EXPECT_EQ(1, OtherThreadTakes(other));
    std::thread([&] { lock.UnLock(); }).join();  // not the owner: changes nothing
    lock.UnLock();
    EXPECT_EQ(kTryBase + 0, ChildTryLock(name));  // one level still held
  }                                               // the destructor releases it
  EXPECT_EQ(kTryBase + 1, ChildTryLock(name));
  std::thread([&] { lock.Lock(); }).join();  // a thread that ends while owning abandons it
  EXPECT_EQ(0, lock.TryLock());              // abandoned, and now ours
  EXPECT_EQ(0, OtherThreadTakes(lock));
  lock.UnLock();
  EXPECT_EQ(1, OtherThreadTakes(lock));
}

TEST(NamedMutexLock, UnnamedAndRefusedNames) {
  for (const wchar_t* none : {static_cast<const wchar_t*>(nullptr), L""}) {
    DE::NamedMutexLock unnamed(none);  // a mutex of this object alone, still exclusive between threads
    EXPECT_EQ(1, unnamed.TryLock());
    EXPECT_EQ(0, OtherThreadTakes(unnamed));
    unnamed.UnLock();
  }
  // Names Windows refuses leave a null handle: TryLock fails, Lock returns, UnLock does nothing.
  for (const wchar_t* bad : {L"NoSuchNamespace\\x", L"Global\\"}) {
    SCOPED_TRACE(::testing::Message() << bad);
    DE::NamedMutexLock lock(bad);
    EXPECT_EQ(0, lock.TryLock());
    lock.Lock();
    lock.UnLock();
    EXPECT_EQ(0, OtherThreadTakes(lock));
  }
}

TEST(CreateDACL, FillsAttributesAndFreesThem) {
  EXPECT_FALSE(DE::CreateDACL(nullptr));
  DE::FreeDACL(nullptr);
  SECURITY_ATTRIBUTES attributes = {0, nullptr, TRUE};
  ASSERT_TRUE(DE::CreateDACL(&attributes));
  EXPECT_EQ(sizeof(SECURITY_ATTRIBUTES), attributes.nLength);
  EXPECT_EQ(FALSE, attributes.bInheritHandle);
  ASSERT_NE(nullptr, attributes.lpSecurityDescriptor);
#if defined(_WIN32)  // the descriptor reads back as the SDDL it was made from
  LPWSTR text = nullptr;
  ASSERT_TRUE(ConvertSecurityDescriptorToStringSecurityDescriptorW(
      attributes.lpSecurityDescriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr));
  EXPECT_STREQ(L"D:(D;OICI;GA;;;BG)(D;OICI;GA;;;AN)(A;OICI;GA;;;AU)(A;OICI;GA;;;BA)", text);
  LocalFree(text);
#endif
  DE::FreeDACL(&attributes);
  EXPECT_EQ(nullptr, attributes.lpSecurityDescriptor);
}

}  // namespace
