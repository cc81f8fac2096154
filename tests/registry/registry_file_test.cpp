// .reg import and export against hand-written REGEDIT5 text, on both builds.
#include <string>
#include <tuple>

#include "DERegistry.h"
#include "DERegistryFile.h"
#include "common/temp_dir.h"
#include "registry_test_util.h"

namespace {

using DE::Registry;
using test::RegistryTest;
using test::TestKeyPath;

std::string FileBytes(const std::u16string& text) { return "\xFF\xFE" + test::Utf16Bytes(text); }

TEST_F(RegistryTest, ImportAndExportRegFiles) {
  test::TempDir folder;
  const std::u16string key =
      u"HKEY_CURRENT_USER\\" + std::u16string(TestKeyPath().begin(), TestKeyPath().end()) + u"\\Reg";
  const std::u16string header = u"Windows Registry Editor Version 5.00\r\n\r\n[" + key + u"]\r\n";
  // Values in name order, as both registries then list them the same way.
  const std::u16string text =
      header +
      u"@=\"default \\\"quoted\\\" \\\\ back\"\r\n"
      u"\"Bin\"=hex:00,01,fe,ff\r\n"
      u"\"Dw\"=dword:0000000a\r\n"
      u"\"Exp\"=hex(2):25,00,54,00,00,00\r\n"
      u"\"Multi\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n"
      u"\"None\"=hex(0):\r\n"
      u"\"Q\"=hex(b):01,02,03,04,05,06,07,08\r\n"
      // regedit breaks a hex list after the comma that reaches column 77.
      u"\"Wrapped\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,\\\r\n"
      u"  15,16,17,18,19\r\n"
      u"\r\n[" +
      key +
      u"\\Child]\r\n"
      u"\"s\"=\"\u00e9\u4e2d\"\r\n"
      u"\r\n";
  const auto file = folder.File("in.reg");
  ASSERT_TRUE(test::WriteFileBytes(file, FileBytes(text)));
  ASSERT_EQ(0, DE::ImportRegistryFile(file.wstring()));

  Registry registry;
  ASSERT_TRUE(registry.OpenKey(L"\\" + TestKeyPath() + L"\\Reg", false));
  using DE::RegDataType;
  const std::tuple<const wchar_t*, RegDataType, std::string> values[] = {
      {L"", DE::rdString, test::Utf16Bytes(u"default \"quoted\" \\ back") + std::string(2, '\0')},
      {L"Bin", DE::rdBinary, std::string("\x00\x01\xfe\xff", 4)},
      {L"Dw", DE::rdInteger, std::string("\x0a\0\0\0", 4)},
      {L"Exp", DE::rdExpandString, std::string("%\0T\0\0\0", 6)},
      {L"Multi", DE::rdUnknown, std::string("a\0\0\0b\0\0\0\0\0", 10)},
      {L"None", DE::rdUnknown, ""},
      {L"Q", DE::rdUnknown, "\x01\x02\x03\x04\x05\x06\x07\x08"}};
  for (const auto& [name, type, bytes] : values) {
    RegDataType found = DE::rdString;
    EXPECT_EQ(bytes, test::RawData(registry, name, &found)) << name;
    EXPECT_EQ(type, found) << name;
  }
  std::wstring child;
  ASSERT_TRUE(Registry::GetValue(HKEY_CURRENT_USER, TestKeyPath() + L"\\Reg\\Child", L"s", child, 0));
  EXPECT_EQ(L"\u00e9\u4e2d", child);

  // Export gives the same text back: the import file is already in regedit's form.
  const auto exported = folder.File("out.reg");
  ASSERT_EQ(0, DE::ExportRegistryFile(HKEY_CURRENT_USER, TestKeyPath() + L"\\Reg", exported.wstring()));
  EXPECT_EQ(FileBytes(text), test::ReadFileBytes(exported));

  // Deletions: a value and a key with its sub-keys.
  ASSERT_TRUE(test::WriteFileBytes(file, FileBytes(header + u"\"Dw\"=-\r\n\r\n[-" + key + u"\\Child]\r\n")));
  ASSERT_EQ(0, DE::ImportRegistryFile(file.wstring()));
  EXPECT_FALSE(registry.ValueExists(L"Dw"));
  EXPECT_TRUE(registry.ValueExists(L"Bin"));
  EXPECT_FALSE(registry.KeyExists(L"Child"));

  // Not a registry file: nothing applied.
  ASSERT_TRUE(test::WriteFileBytes(file, FileBytes(u"[" + key + u"]\r\n\"Dw\"=dword:1\r\n")));
  EXPECT_EQ(13, DE::ImportRegistryFile(file.wstring()));
  EXPECT_FALSE(registry.ValueExists(L"Dw"));
  ASSERT_TRUE(test::WriteFileBytes(
      file, FileBytes(u"Windows Registry Editor Version 5.00\r\n[" + key + u"]\r\n\"Dw\"=dword:1zz\r\n")));
  EXPECT_EQ(13, DE::ImportRegistryFile(file.wstring()));
  EXPECT_EQ(2, DE::ImportRegistryFile(folder.File("missing.reg").wstring()));
}

}  // namespace
