#include "registry_test_util.h"

#include <cstdlib>
#include <random>

#include "common/temp_dir.h"

#if defined(_WIN32)
#include "UtilPlatform.h"
#endif

namespace test {

namespace {

#if !defined(_WIN32)
// A private store for the whole process, made before any test (and before any child re-run).
struct PrivateStore {
  TempDir folder;
  PrivateStore() { setenv("UTIL_REGISTRY_DIR", (folder.Path() / "store").c_str(), 1); }
};
const PrivateStore& Store() {
  static PrivateStore store;
  return store;
}
[[maybe_unused]] const bool kStoreReady = (Store(), true);
#endif

}  // namespace

const std::wstring& TestKeyPath() {
  static const std::wstring path = [] {
    std::random_device device;
    return L"Software\\UtilTest-" + std::to_wstring(device()) + L"-" + std::to_wstring(device() % 100000);
  }();
  return path;
}

bool RunningOnWine() {
#if defined(_WIN32)
  HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
#else
  return false;
#endif
}

std::string Utf16Bytes(const std::u16string& text) {
  std::string bytes;
  for (char16_t unit : text) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

void RegistryTest::TearDown() { DE::Registry::DelKey(HKEY_CURRENT_USER, TestKeyPath(), KEY_ALL_ACCESS); }

}  // namespace test
