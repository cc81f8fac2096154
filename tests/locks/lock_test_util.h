// Helpers of the lock tests: unique mutex names and the clean-up of their Linux objects, and a
// TryLock from another thread.
#pragma once

#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "DELock.h"

namespace locktest {

// "UtilTest-<purpose>-<16 random hex digits>": unique per call, unchanged in the Linux object name.
inline std::string UniqueName(const std::string& purpose) {
  std::random_device device;
  char suffix[17];
  std::snprintf(suffix, sizeof(suffix), "%08x%08x", device(), device());
  return "UtilTest-" + purpose + "-" + suffix;
}

inline std::wstring Widen(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

// Linux: the /dev/shm files of the mutex objects named after `name` (the library keeps them).
inline std::vector<std::filesystem::path> MutexObjects(const std::string& name) {
  std::vector<std::filesystem::path> found;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/shm", error)) {
    if (entry.path().filename().string().rfind("util-mutex-" + name + "-", 0) == 0)
      found.push_back(entry.path());
  }
  return found;
}

// A unique mutex name whose Linux objects are removed at scope end; declare it before its locks.
struct ScopedMutexName {
  explicit ScopedMutexName(const std::string& purpose) : utf8(UniqueName(purpose)), wide(Widen(utf8)) {}
  ~ScopedMutexName() {
    std::error_code error;
    for (const auto& object : MutexObjects(utf8)) std::filesystem::remove(object, error);
  }
  const std::string utf8;
  const std::wstring wide;
};

// TryLock() on another thread, released again when taken: 1 when the lock was free to it.
inline int OtherThreadTakes(DE::BaseLock& lock) {
  int taken = -1;
  std::thread([&] {
    taken = lock.TryLock();
    if (taken != 0) lock.UnLock();
  }).join();
  return taken;
}

// Exit codes of the "mutex_try" child routine: kTryBase + TryLock's result.
constexpr int kTryBase = 10;

}  // namespace locktest
