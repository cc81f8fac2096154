// Registry tests work below TestKeyPath() in HKEY_CURRENT_USER, deleted after each test: in the
// prefix's registry under Wine, in a temporary store (UTIL_REGISTRY_DIR) on Linux.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "DERegistry.h"

namespace test {

// "Software\UtilTest-<random>", the same for the whole process.
const std::wstring& TestKeyPath();
// UTF-16LE bytes of text, the Windows form of string data.
std::string Utf16Bytes(const std::u16string& text);
// The raw data of a value of the open key, or "<failed>".
std::string RawData(DE::Registry& registry, const std::wstring& name, DE::RegDataType* type = nullptr);

class RegistryTest : public ::testing::Test {
 protected:
  void TearDown() override;
};

}  // namespace test

namespace DE {
// Reaches the private root-name split.
struct RegistryPeer {
  static HKEY FeathRootKey(Registry& registry, const std::wstring& path, std::wstring& rest) {
    return registry.FeathRootKey(path, rest);
  }
};
}  // namespace DE
