// Linux only: named mutexes when a system call on the way to the shared object fails. Faults are
// injected through the substitutes' system-call table; every step must give a clean failure (or
// the documented fallback) and leave no descriptor, no mapping and no half-made object behind.
#if !defined(_WIN32)
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "DELock.h"
#include "common/log_capture.h"
#include "common/platform_info.h"
#include "lock_test_util.h"
#include "platform/linux/system_calls.h"

namespace {

using DE::detail::linux_impl::FailingSystemCall;
using DE::detail::linux_impl::kForever;
using DE::detail::linux_impl::SystemCalls;
using locktest::ScopedMutexName;

DWORD LastError() { return DE::detail::linux_impl::SystemCallTestHooks().lastError(); }

// Mappings of shared-memory files in this process (named objects and unnamed ones being built).
int SharedMappings() {
  std::ifstream maps("/proc/self/maps");
  int count = 0;
  for (std::string line; std::getline(maps, line);) count += line.find("/dev/shm/") != std::string::npos;
  return count;
}

struct Outcome {
  DWORD error;  // the last error NamedMutexLock's creation left
  int calls;    // calls of the failing entry
  int taken;    // TryLock() afterwards
};

// Makes a NamedMutexLock while the nth call of Entry fails, then tries it.
template <auto Entry>
Outcome CreateWithFault(const std::wstring& name, int nth, int error, int times) {
  Outcome outcome = {};
  {
    FailingSystemCall<Entry> fault(nth, error, times);
    DE::NamedMutexLock lock(name.c_str());
    outcome.error = LastError();
    outcome.calls = fault.Calls();
    outcome.taken = lock.TryLock();
    lock.Lock();  // returns at once without a handle
    lock.UnLock();
    if (outcome.taken != 0) lock.UnLock();
  }
  return outcome;
}

TEST(NamedMutexFaults, EachFailingStepCleansUp) {
  const struct {
    const char* what;
    Outcome (*create)(const std::wstring&, int, int, int);
    int nth, error, times;
    DWORD expected;
    bool published;  // whether the object is under its name afterwards
  } kCases[] = {
      {"shm_open of the name", &CreateWithFault<&SystemCalls::shm_open>, 1, EACCES, 1, 5, false},
      {"open of the unnamed file", &CreateWithFault<&SystemCalls::open>, 1, EMFILE, 1, 4, false},
      {"fchmod of the new object", &CreateWithFault<&SystemCalls::fchmod>, 1, EPERM, 1, 5, false},
      {"ftruncate to the block size", &CreateWithFault<&SystemCalls::ftruncate>, 1, ENOSPC, 1, 112, false},
      {"mmap to initialise", &CreateWithFault<&SystemCalls::mmap>, 1, ENOMEM, 1, 8, false},
      {"linkat under the name", &CreateWithFault<&SystemCalls::linkat>, 1, EACCES, 1, 5, false},
      // The link keeps finding a name that then is not there: the creator gives up.
      {"linkat always racing", &CreateWithFault<&SystemCalls::linkat>, 1, EEXIST, kForever, 31, false},
      {"fstat of the published object", &CreateWithFault<&SystemCalls::fstat>, 1, EIO, 1, 1117, true},
      {"mmap of the published object", &CreateWithFault<&SystemCalls::mmap>, 2, ENOMEM, 1, 8, true},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    ScopedMutexName name("faults");
    const int descriptors = test::OpenDescriptors();
    const int mappings = SharedMappings();
    const Outcome outcome = c.create(name.wide, c.nth, c.error, c.times);
    EXPECT_EQ(c.expected, outcome.error);
    EXPECT_GE(outcome.calls, c.nth) << "the fault was not reached";
    EXPECT_EQ(0, outcome.taken);
    EXPECT_EQ(c.published ? 1u : 0u, locktest::MutexObjects(name.utf8).size());
    EXPECT_EQ(descriptors, test::OpenDescriptors());
    EXPECT_EQ(mappings, SharedMappings());

    // Without the fault the name works: a published object is opened, anything else created.
    DE::NamedMutexLock again(name.wide.c_str());
    EXPECT_EQ(c.published ? 183u : 0u, LastError());
    EXPECT_EQ(1, again.TryLock());
    again.UnLock();
  }
}

TEST(NamedMutexFaults, NoAccessListMeansOwnerOnly) {
  ScopedMutexName name("noacl");
  test::LogCapture log;
  const Outcome outcome = CreateWithFault<&SystemCalls::fsetxattr>(name.wide, 1, EOPNOTSUPP, 1);
  EXPECT_EQ(0u, outcome.error);
  EXPECT_EQ(1, outcome.calls);
  EXPECT_EQ(1, outcome.taken);
  const auto objects = locktest::MutexObjects(name.utf8);
  ASSERT_EQ(1u, objects.size());
  struct stat info;
  ASSERT_EQ(0, stat(objects[0].c_str(), &info));
  EXPECT_EQ(0600u, info.st_mode & 0777u);
  const auto messages = log.Messages();
  ASSERT_EQ(1u, messages.size());
  EXPECT_EQ(PxsLog::Level::Error, messages[0].level);
  EXPECT_NE(std::string::npos, messages[0].message.find("access list")) << messages[0].message;
}

}  // namespace
#endif
