// Linux only: file streams when the system calls under them fail (a full disk, no descriptors
// left, a lock the kernel keeps refusing, an interrupted call). Faults are injected through the
// substitutes' system-call table; the answers are the Win32 codes Windows gives in those cases.
#if !defined(_WIN32)
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

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

// Opens `path` while calls nth .. nth + times - 1 of Entry fail with `error`; gives the Win32 code
// of the open (0 when it succeeded; the handle is closed again).
template <auto Entry>
DWORD OpenWithFault(const fs::path& path, unsigned mode, int nth, int error, int times = 1) {
  HANDLE file;
  {
    FailingSystemCall<Entry> fault(nth, error, times);
    file = DE::FileOpen(path.wstring(), mode);
    EXPECT_GE(fault.Calls(), nth) << "errno " << error << ": the fault was not reached";
  }
  if (file != INVALID_HANDLE_VALUE) return DE::FileClose(file) ? 0 : 0xFFFF;
  return LastError();
}

TEST(StreamFaults, FailedOpenClosesWhatItOpened) {
  test::TempDir dir;
  const fs::path path = dir.File("kept.bin");
  ASSERT_TRUE(test::WriteFileBytes(path, "keep me"));
  const int before = test::OpenDescriptors();
  const auto expect = [&](const char* what, DWORD expected, DWORD code) {
    EXPECT_EQ(expected, code) << what;
    EXPECT_EQ(before, test::OpenDescriptors()) << what;
    EXPECT_EQ("keep me", test::ReadFileBytes(path)) << what;
  };
  expect("no descriptors left", 4, OpenWithFault<&SystemCalls::open>(path, 0, 1, EMFILE));
  expect("permission", 5, OpenWithFault<&SystemCalls::open>(path, 0x12, 1, EACCES));
  expect("interrupted open is retried", 0, OpenWithFault<&SystemCalls::open>(path, 0, 1, EINTR));
  expect("fstat after the open", 1117, OpenWithFault<&SystemCalls::fstat>(path, 2, 1, EIO));
  // Every sharing lock clashes: the opener gives up after its attempts.
  expect("sharing lock keeps clashing", 32,
         OpenWithFault<&SystemCalls::fcntl>(path, 0x10, 1, EAGAIN, kForever));
  // A file system without open-file-description locks opens without the sharing check.
  expect("no locks on the file system", 0,
         OpenWithFault<&SystemCalls::fcntl>(path, 0x10, 1, EINVAL, kForever));
  // Create-always truncates last; a failed truncation leaves the file as it was.
  expect("truncation of create-always", 19, OpenWithFault<&SystemCalls::ftruncate>(path, 0xFFFF, 1, EROFS));
}

}  // namespace
#endif
