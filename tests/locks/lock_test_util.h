// Helpers of the lock tests: unique mutex names, the clean-up of their Linux objects, and the
// file signals between a test and its child processes.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "common/child_process.h"

namespace locktest {

// "UtilTest-<purpose>-<16 random hex digits>": letters, digits and '-' only, so on Linux the
// object name holds it unchanged. Unique per call, so parallel runs never share a mutex.
std::string UniqueName(const std::string& purpose);
std::wstring Widen(const std::string& ascii);

// Linux: the /dev/shm files of the mutex objects whose readable part is `name` (the library keeps
// them after use). Empty elsewhere.
std::vector<std::filesystem::path> MutexObjects(const std::string& name);

// A mutex name whose Linux objects are removed when it goes out of scope. Declare it before the
// locks that use it.
class ScopedMutexName {
 public:
  explicit ScopedMutexName(const std::string& purpose) : name_(UniqueName(purpose)) {}
  ~ScopedMutexName();
  ScopedMutexName(const ScopedMutexName&) = delete;
  ScopedMutexName& operator=(const ScopedMutexName&) = delete;
  const std::string& utf8() const { return name_; }
  std::wstring wide() const { return Widen(name_); }

 private:
  std::string name_;
};

// Waits until `file` exists; false after timeoutMs or when `child` ends first.
bool WaitForFile(const std::filesystem::path& file, int timeoutMs, test::ChildProcess& child);
// Creates an empty file (the signal to a child).
void TouchFile(const std::filesystem::path& file);

// Exit codes of the "mutex_try" child routine: kTryBase + TryLock's result.
constexpr int kTryBase = 10;

}  // namespace locktest
