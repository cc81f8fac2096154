// Linux only: file streams when the system calls under them fail (a full disk, no descriptors
// left, a lock the kernel keeps refusing, an interrupted call). Faults are injected through the
// substitutes' system-call table; the answers are the Win32 codes Windows gives in those cases.
#if !defined(_WIN32)
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <utility>

#include "DEStream.h"
#include "common/platform_info.h"
#include "common/temp_dir.h"
#include "platform/linux/system_calls.h"

namespace {

namespace fs = std::filesystem;
using DE::detail::linux_impl::FailingSystemCall;
using DE::detail::linux_impl::kForever;
using DE::detail::linux_impl::SystemCalls;

DWORD LastError() { return DE::detail::linux_impl::SystemCallTestHooks().lastError(); }

TEST(StreamFaults, FailedTransfersKeepTheData) {
  test::TempDir dir;
  const fs::path path = dir.File("data.bin");
  char buf[8] = {};
  {
    DE::FileStream file(path.wstring(), 0xFFFF);
    ASSERT_TRUE(file.IsOpened());
    ASSERT_EQ(6u, file.Write("before", 6));
    {
      FailingSystemCall<&SystemCalls::write> diskFull(1, ENOSPC, kForever);
      EXPECT_EQ(0u, file.Write("lost", 4));
      EXPECT_EQ(112u, LastError());  // ERROR_DISK_FULL
      EXPECT_EQ(0u, file.Write("lost", 4));
      EXPECT_EQ(2, diskFull.Calls());
    }
    EXPECT_EQ(6, file.Position());
    {
      FailingSystemCall<&SystemCalls::write> interrupted(1, EINTR);  // retried, not reported
      EXPECT_EQ(5u, file.Write("after", 5));
      EXPECT_EQ(2, interrupted.Calls());
    }
    {
      FailingSystemCall<&SystemCalls::ftruncate> tooLarge(1, EFBIG);
      file.SetSize(100);
      EXPECT_EQ(223u, LastError());  // ERROR_FILE_TOO_LARGE
      EXPECT_EQ(1, tooLarge.Calls());
    }
    ASSERT_EQ(0, file.Seek(0, DE::Begin));
    {
      FailingSystemCall<&SystemCalls::read> ioError(1, EIO);
      EXPECT_EQ(0u, file.Read(buf, sizeof buf));
      EXPECT_EQ(1117u, LastError());  // ERROR_IO_DEVICE
    }
    {
      FailingSystemCall<&SystemCalls::lseek> badSeek(1, EOVERFLOW);
      EXPECT_EQ(-1, file.Seek(3, DE::Begin));
      EXPECT_EQ(534u, LastError());  // ERROR_ARITHMETIC_OVERFLOW
    }
    EXPECT_EQ(8u, file.Read(buf, sizeof buf));
  }
  EXPECT_EQ("beforeaf", std::string(buf, sizeof buf));
  EXPECT_EQ("beforeafter", test::ReadFileBytes(path));
}

// Opens `path` with the nth call of Entry failing with `error` (`times` times); gives the
// Win32 code of the open (0 when it succeeded; the handle is closed again) and the calls made.
template <auto Entry>
std::pair<DWORD, int> OpenWithFault(const fs::path& path, unsigned mode, int nth, int error, int times) {
  HANDLE file;
  DWORD code = 0;
  int calls;
  {
    FailingSystemCall<Entry> fault(nth, error, times);
    file = DE::FileOpen(path.wstring(), mode);
    if (file == INVALID_HANDLE_VALUE) code = LastError();
    calls = fault.Calls();
  }
  if (file != INVALID_HANDLE_VALUE) DE::FileClose(file);
  return {code, calls};
}

TEST(StreamFaults, FailedOpenClosesWhatItOpened) {
  test::TempDir dir;
  const fs::path path = dir.File("kept.bin");
  ASSERT_TRUE(test::WriteFileBytes(path, "keep me"));
  const struct {
    const char* what;
    std::pair<DWORD, int> (*open)(const fs::path&, unsigned, int, int, int);
    unsigned mode;
    int nth, error, times;
    DWORD expected;
  } kCases[] = {
      {"no descriptors left", &OpenWithFault<&SystemCalls::open>, 0, 1, EMFILE, 1, 4},
      {"permission", &OpenWithFault<&SystemCalls::open>, 0x12, 1, EACCES, 1, 5},
      {"interrupted open is retried", &OpenWithFault<&SystemCalls::open>, 0, 1, EINTR, 1, 0},
      {"fstat after the open", &OpenWithFault<&SystemCalls::fstat>, 2, 1, EIO, 1, 1117},
      // Every sharing lock clashes: the opener gives up after its attempts.
      {"sharing lock keeps clashing", &OpenWithFault<&SystemCalls::fcntl>, 0x10, 1, EAGAIN, kForever, 32},
      // A file system without open-file-description locks opens without the sharing check.
      {"no locks on the file system", &OpenWithFault<&SystemCalls::fcntl>, 0x10, 1, EINVAL, kForever, 0},
      // Create-always truncates last; a failed truncation leaves the file as it was.
      {"truncation of create-always", &OpenWithFault<&SystemCalls::ftruncate>, 0xFFFF, 1, EROFS, 1, 19},
  };
  const int before = test::OpenDescriptors();
  for (const auto& c : kCases) {
    const auto [code, calls] = c.open(path, c.mode, c.nth, c.error, c.times);
    EXPECT_EQ(c.expected, code) << c.what;
    EXPECT_GE(calls, c.nth) << c.what << ": the fault was not reached";
    EXPECT_EQ(before, test::OpenDescriptors()) << c.what;
    EXPECT_EQ("keep me", test::ReadFileBytes(path)) << c.what;
  }
}

}  // namespace
#endif
