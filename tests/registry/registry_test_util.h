// Shared set-up of the registry tests: a private store on Linux, a unique test key everywhere.
//
// On Linux the store lives in a temporary folder (UTIL_REGISTRY_DIR is set before any test
// runs); under Wine the real registry of the test prefix is used. Every test works below
// TestKeyPath() in HKEY_CURRENT_USER, which the fixture deletes afterwards.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "DERegistry.h"

namespace test {

// "Software\UtilTest-<random>", the same for the whole process.
const std::wstring& TestKeyPath();
// True when the Windows build runs under Wine.
bool RunningOnWine();

// UTF-16LE bytes of text (ASCII and \u escapes), the Windows form of string data.
std::string Utf16Bytes(const std::u16string& text);

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
