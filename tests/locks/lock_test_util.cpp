#include "lock_test_util.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <random>
#include <system_error>
#include <thread>

namespace locktest {

std::string UniqueName(const std::string& purpose) {
  std::random_device device;
  std::mt19937_64 engine(
      (static_cast<unsigned long long>(device()) << 32) ^ device() ^
      static_cast<unsigned long long>(std::chrono::steady_clock::now().time_since_epoch().count()));
  char suffix[17];
  std::snprintf(suffix, sizeof(suffix), "%016llx", static_cast<unsigned long long>(engine()));
  return "UtilTest-" + purpose + "-" + suffix;
}

std::wstring Widen(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

std::vector<std::filesystem::path> MutexObjects(const std::string& name) {
  std::vector<std::filesystem::path> found;
#if !defined(_WIN32)
  const std::string prefix = "util-mutex-" + name + "-";
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/shm", error)) {
    const std::string file = entry.path().filename().string();
    if (file.compare(0, prefix.size(), prefix) == 0) found.push_back(entry.path());
  }
#else
  (void)name;
#endif
  return found;
}

ScopedMutexName::~ScopedMutexName() {
  std::error_code error;
  for (const auto& object : MutexObjects(name_)) std::filesystem::remove(object, error);
}

bool WaitForFile(const std::filesystem::path& file, int timeoutMs, test::ChildProcess& child) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!std::filesystem::exists(file)) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    if (child.Wait(0) != test::ChildProcess::kStillRunning) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

void TouchFile(const std::filesystem::path& file) { std::ofstream(file).put('\n'); }

}  // namespace locktest
