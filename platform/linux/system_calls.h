// The system calls of the Linux substitutes, reached through one table of function pointers that
// tests may patch (as SQLite's aSyscall[] in os_unix.c). Only Linux-specific code goes in here.
//
// Every substitute under platform/linux calls the kernel as Sys().open(...), Sys().write(...),
// ... instead of calling the C library by name: one load and one indirect call, no lock. Each
// entry has the C library's arguments, result and errno. The two variadic calls take fixed
// arguments: open always gets a mode (ignored without O_CREAT or O_TMPFILE), and fcntl a pointer
// (nullptr for a command that takes none). The substitutes keep turning errno into Win32 codes
// through win32_error.h, never in here.
//
// Adding a call: a member below, and its C library function (or a fixed-argument wrapper for a
// variadic one) in the initial table of system_calls.cpp, in the same order. Identity queries
// (geteuid, getgroups) and C library routines above the kernel (realpath, iconv) are not entries.
//
// Tests. libUtil.so exports one internal symbol for them, SystemCallTestHooks(): the live table
// and a reader of the thread's last Win32 error (which the library keeps to itself on Linux).
// A test replaces an entry for a scope with ScopedSystemCall, or makes calls fail with
// FailingSystemCall, which forwards every call to the saved entry except the nth (1-based) and
// the `times - 1` after it; those fail at once with the given errno and the call's failure result
// (-1, or MAP_FAILED for mmap). Such tests live in Linux-only files (*_linux_test.cpp, inside
// #if !defined(_WIN32)) of suites whose tests.cmake puts the source root on the include path:
//
//   FailingSystemCall<&SystemCalls::write> diskFull(1, ENOSPC, kForever);  // every write fails
//   EXPECT_EQ(0u, stream.Write("x", 1));
//   EXPECT_EQ(112u, SystemCallTestHooks().lastError());  // ERROR_DISK_FULL
//   EXPECT_EQ(1, diskFull.Calls());                      // the fault was really reached
//
// Entries are plain pointers: replace them only while no other thread of the process is inside
// the library. One FailingSystemCall per entry at a time (its state is per entry); guards restore
// in reverse order of creation, as scopes do.
#pragma once

#include <errno.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <atomic>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <type_traits>
#include <utility>

#include "UtilExport.h"
#include "UtilPlatform.h"

namespace DE::detail::linux_impl {

struct SystemCalls {
  // Files and descriptors.
  int (*open)(const char* path, int flags, mode_t mode);
  int (*close)(int fd);
  ssize_t (*read)(int fd, void* buffer, std::size_t count);
  ssize_t (*write)(int fd, const void* buffer, std::size_t count);
  off_t (*lseek)(int fd, off_t offset, int whence);
  int (*ftruncate)(int fd, off_t length);
  int (*fsync)(int fd);
  int (*fstat)(int fd, struct stat* info);
  int (*fcntl)(int fd, int command, void* argument);
  int (*flock)(int fd, int operation);
  int (*fchmod)(int fd, mode_t mode);
  int (*fchown)(int fd, uid_t owner, gid_t group);
  int (*fsetxattr)(int fd, const char* name, const void* value, std::size_t size, int flags);
  // Names in the file system.
  int (*stat)(const char* path, struct stat* info);
  int (*lstat)(const char* path, struct stat* info);
  int (*access)(const char* path, int mode);
  int (*faccessat)(int folder, const char* path, int mode, int flags);
  int (*mkdir)(const char* path, mode_t mode);
  int (*chmod)(const char* path, mode_t mode);
  int (*unlink)(const char* path);
  int (*rename)(const char* from, const char* to);
  int (*linkat)(int fromFolder, const char* from, int toFolder, const char* to, int flags);
  int (*symlink)(const char* target, const char* link);
  // Shared memory.
  int (*shm_open)(const char* name, int flags, mode_t mode);
  void* (*mmap)(void* address, std::size_t length, int protection, int flags, int fd, off_t offset);
  int (*munmap)(void* address, std::size_t length);
};

// The table the substitutes call through; defined in system_calls.cpp, not exported.
extern SystemCalls systemCalls;

inline const SystemCalls& Sys() { return systemCalls; }

// ---- For tests only ----

struct TestHooks {
  SystemCalls* table;    // the live table above
  DWORD (*lastError)();  // the calling thread's last Win32 error code, as the bindings left it
};

// The hooks; the only symbol of platform/linux that libUtil.so exports.
UTIL_API const TestHooks& SystemCallTestHooks();

// The type of the entry that a pointer to a SystemCalls member names.
template <auto Entry>
using SystemCallType = std::remove_reference_t<decltype(std::declval<SystemCalls&>().*Entry)>;

// Puts `replacement` in the entry for the guard's lifetime, then the entry it found back.
template <auto Entry>
class ScopedSystemCall {
 public:
  using Function = SystemCallType<Entry>;

  explicit ScopedSystemCall(Function replacement) : saved_(Table().*Entry) { Table().*Entry = replacement; }
  ~ScopedSystemCall() { Table().*Entry = saved_; }
  ScopedSystemCall(const ScopedSystemCall&) = delete;
  ScopedSystemCall& operator=(const ScopedSystemCall&) = delete;

  // The entry as it was before the guard (the real call, unless another guard is active).
  Function Saved() const { return saved_; }

 private:
  static SystemCalls& Table() { return *SystemCallTestHooks().table; }
  Function saved_;
};

constexpr int kForever = INT_MAX;  // FailingSystemCall times: every call from the nth on fails

template <auto Entry, typename Function = SystemCallType<Entry>>
class FailingSystemCall;

// Fails calls nth .. nth + times - 1 of the entry (counted from the guard's creation) with errno
// `error`; every other call goes to the saved entry.
template <auto Entry, typename Result, typename... Args>
class FailingSystemCall<Entry, Result (*)(Args...)> {
 public:
  FailingSystemCall(int nth, int error, int times = 1) : guard_(Install(nth, error, times)) {
    state_.saved = guard_.Saved();
  }
  ~FailingSystemCall() { state_.active = false; }
  FailingSystemCall(const FailingSystemCall&) = delete;
  FailingSystemCall& operator=(const FailingSystemCall&) = delete;

  // Calls of the entry since the guard was made, failed ones included.
  int Calls() const { return state_.calls.load(); }

 private:
  struct State {
    std::atomic<int> calls{0};
    int nth = 0;
    int error = 0;
    int times = 0;
    bool active = false;
    Result (*saved)(Args...) = nullptr;
  };

  static Result Call(Args... args) {
    const int n = state_.calls.fetch_add(1) + 1;
    if (n >= state_.nth && n - state_.nth < state_.times) {
      errno = state_.error;
      if constexpr (std::is_pointer_v<Result>) {
        return static_cast<Result>(MAP_FAILED);
      } else {
        return static_cast<Result>(-1);
      }
    }
    return state_.saved(args...);
  }

  static Result (*Install(int nth, int error, int times))(Args...) {
    if (state_.active) std::abort();  // two at once would share one counter
    state_.active = true;
    state_.calls = 0;
    state_.nth = nth;
    state_.error = error;
    state_.times = times;
    return &Call;
  }

  static inline State state_;
  ScopedSystemCall<Entry> guard_;
};

}  // namespace DE::detail::linux_impl
