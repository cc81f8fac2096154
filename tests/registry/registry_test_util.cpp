#include "registry_test_util.h"

#include <cstdlib>
#include <random>

#include "common/temp_dir.h"

namespace test {

#if !defined(_WIN32)
// A private store for the whole process, made before any test and any child re-run.
const TempDir kStoreFolder;
[[maybe_unused]] const int kStoreSet =
    setenv("UTIL_REGISTRY_DIR", (kStoreFolder.Path() / "store").c_str(), 1);
#endif

const std::wstring& TestKeyPath() {
  static const std::wstring path = L"Software\\UtilTest-" + std::to_wstring(std::random_device{}());
  return path;
}

std::string Utf16Bytes(const std::u16string& text) {
  std::string bytes;
  for (char16_t unit : text) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

std::string RawData(DE::Registry& registry, const std::wstring& name, DE::RegDataType* type) {
  std::string bytes(4096, '\0');
  int size = static_cast<int>(bytes.size());
  DE::RegDataType ignored;
  if (!registry.GetData(name, &bytes[0], size, type ? *type : ignored)) return "<failed>";
  return bytes.substr(0, static_cast<size_t>(size));
}

void RegistryTest::TearDown() { DE::Registry::DelKey(HKEY_CURRENT_USER, TestKeyPath(), KEY_ALL_ACCESS); }

}  // namespace test
