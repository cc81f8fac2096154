#include "common/platform_info.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#if defined(_WIN32)
#include "UtilPlatform.h"
#endif

namespace test {

int AnsiCodePage() {
#if defined(_WIN32)
  return static_cast<int>(GetACP());
#else
  // The Linux build reads UTIL_ANSI_CODEPAGE; the tests always set it to a CP name or a number.
  const char* setting = std::getenv("UTIL_ANSI_CODEPAGE");
  if (setting == nullptr) return 0;
  std::string name = setting;
  if (name == "UTF-8" || name == "UTF8") return 65001;
  if (name == "GB18030") return 54936;
  if (name.rfind("CP", 0) == 0) name = name.substr(2);
  return std::atoi(name.c_str());
#endif
}

bool RunningUnderWine() {
#if defined(_WIN32)
  HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
#else
  return false;
#endif
}

int OpenDescriptors() {
#if defined(_WIN32)
  return -1;
#else
  int count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
  return count;
#endif
}

}  // namespace test
