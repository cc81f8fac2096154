// Registry conformance: the same cases against advapi32 (Windows build, under Wine) and against
// the Linux store. Expected values come from the Windows definitions (type numbers, UTF-16LE
// data, error codes), not from the code under test.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "DERegistry.h"
#include "common/temp_dir.h"
#include "registry_test_util.h"

namespace {

using DE::Registry;
using test::RegistryTest;
using test::TestKeyPath;

constexpr int kFileNotFound = 2;
constexpr int kBadNetPath = 53;
constexpr int kKeyDeleted = 1018;

std::string RawValue(Registry& registry, const std::wstring& name, DE::RegDataType& type) {
  std::string bytes(4096, '\0');
  int size = static_cast<int>(bytes.size());
  if (!registry.GetData(name, &bytes[0], size, type)) return "<failed>";
  bytes.resize(static_cast<size_t>(size));
  return bytes;
}

TEST_F(RegistryTest, PathRuleAndCurrentPath) {
  Registry registry;
  EXPECT_EQ(HKEY_CURRENT_USER, registry.GetRootKey());
  EXPECT_EQ(nullptr, registry.GetCurrentKey());
  EXPECT_EQ(0xF003Ful, registry.GetAccess());
  ASSERT_TRUE(registry.OpenKey(L"\\" + TestKeyPath(), true));
  EXPECT_EQ(TestKeyPath(), registry.GetCurrentPathW());
  ASSERT_TRUE(registry.OpenKey(L"Sub", true));
  EXPECT_EQ(TestKeyPath() + L"\\Sub", registry.GetCurrentPathW());
  // Absolute again: below the root, whatever is open.
  ASSERT_TRUE(registry.OpenKey(L"\\" + TestKeyPath() + L"\\Other", true));
  EXPECT_EQ(TestKeyPath() + L"\\Other", registry.GetCurrentPathW());
  // A failed open keeps the current key and records the code.
  HKEY before = registry.GetCurrentKey();
  EXPECT_FALSE(registry.OpenKey(L"Missing\\Deeper", false));
  EXPECT_EQ(kFileNotFound, registry.GetLastError());
  EXPECT_EQ(before, registry.GetCurrentKey());
  EXPECT_EQ(TestKeyPath() + L"\\Other", registry.GetCurrentPathW());
  // An empty path with canCreate opens the base again and creates nothing.
  Registry empty;
  ASSERT_TRUE(empty.OpenKey(L"\\" + TestKeyPath(), false));
  std::vector<std::wstring> keysBefore;
  ASSERT_TRUE(empty.GetKeyNames(keysBefore));
  ASSERT_TRUE(empty.OpenKey(L"", true));
  std::vector<std::wstring> keysAfter;
  ASSERT_TRUE(empty.GetKeyNames(keysAfter));
  EXPECT_EQ(keysBefore, keysAfter);
  EXPECT_TRUE(empty.KeyExists(L"\\" + TestKeyPath() + L"\\Sub"));
  EXPECT_FALSE(empty.KeyExists(L"\\" + TestKeyPath() + L"\\Nope"));
  registry.CloseKey();
  EXPECT_EQ(nullptr, registry.GetCurrentKey());
  EXPECT_TRUE(registry.GetCurrentPathW().empty());
}

TEST_F(RegistryTest, ValueTypesSizesAndBytes) {
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(L"\\" + TestKeyPath(), true));
  // U+1F600 takes two UTF-16 units: five units plus the NUL make 12 bytes.
  ASSERT_TRUE(registry.WriteString(L"Text", L"ab\U0001F600\u00E9"));
  EXPECT_EQ(12, registry.GetDataSize(L"Text"));
  EXPECT_EQ(DE::rdString, registry.GetDataType(L"Text"));
  DE::RegDataType type = DE::rdUnknown;
  EXPECT_EQ(test::Utf16Bytes(u"ab\U0001F600\u00E9") + std::string(2, '\0'),
            RawValue(registry, L"Text", type));
  std::wstring text;
  ASSERT_TRUE(registry.ReadString(L"Text", text));
  EXPECT_EQ(L"ab\U0001F600\u00E9", text);

  ASSERT_TRUE(registry.WriteExpandString(L"Expand", L"%SystemRoot%\\x"));
  ASSERT_TRUE(registry.ReadString(L"Expand", text));
  EXPECT_EQ(L"%SystemRoot%\\x", text);  // unexpanded
  EXPECT_EQ(DE::rdExpandString, registry.GetDataType(L"Expand"));

  ASSERT_TRUE(registry.WriteInteger(L"Number", -2));
  int number = 0;
  ASSERT_TRUE(registry.ReadInteger(L"Number", number));
  EXPECT_EQ(-2, number);
  EXPECT_EQ(std::string("\xFE\xFF\xFF\xFF", 4), RawValue(registry, L"Number", type));
  EXPECT_EQ(DE::rdInteger, type);
  ASSERT_TRUE(registry.WriteBool(L"Flag", true));
  bool flag = false;
  ASSERT_TRUE(registry.ReadBool(L"Flag", flag));
  EXPECT_TRUE(flag);

  ASSERT_TRUE(registry.WriteFloat(L"Ratio", 2.5));
  double ratio = 0;
  ASSERT_TRUE(registry.ReadFloat(L"Ratio", ratio));
  EXPECT_EQ(2.5, ratio);
  EXPECT_EQ(std::string("\0\0\0\0\0\0\x04\x40", 8), RawValue(registry, L"Ratio", type));

  std::string all;
  for (int i = 0; i < 256; ++i) all.push_back(static_cast<char>(i));
  ASSERT_TRUE(registry.WriteBinaryData(L"Bytes", all.data(), static_cast<int>(all.size())));
  std::string back(300, '\0');
  int size = 0;
  ASSERT_TRUE(registry.ReadBinaryData(L"Bytes", &back[0], 300, size));
  EXPECT_EQ(256, size);
  EXPECT_EQ(all, back.substr(0, 256));
  EXPECT_FALSE(registry.ReadBinaryData(L"Bytes", &back[0], 255, size));  // does not fit
  EXPECT_EQ(256, size);
  EXPECT_FALSE(registry.ReadBinaryData(L"Text", &back[0], 300, size));  // a string

  // Wrong types: the query works, the typed read refuses.
  EXPECT_FALSE(registry.ReadInteger(L"Text", number));
  ASSERT_TRUE(registry.WriteBinaryData(L"Four", "abcd", 4));
  EXPECT_FALSE(registry.ReadFloat(L"Four", ratio));
  EXPECT_FALSE(registry.ReadString(L"Number", text));
  EXPECT_TRUE(text.empty());

  // REG_NONE through the raw write, and an empty value.
  ASSERT_TRUE(registry.PutData(L"None", "xy", 2, DE::rdUnknown));
  EXPECT_EQ(DE::rdUnknown, registry.GetDataType(L"None"));
  ASSERT_TRUE(registry.WriteBinaryData(L"Empty", "", 0));
  EXPECT_EQ(0, registry.GetDataSize(L"Empty"));
  EXPECT_EQ(DE::rdBinary, registry.GetDataType(L"Empty"));
  ASSERT_TRUE(registry.WriteString(L"", L"default"));
  ASSERT_TRUE(registry.ReadString(L"", text));
  EXPECT_EQ(L"default", text);

  EXPECT_EQ(-1, registry.GetDataSize(L"Absent"));
  EXPECT_EQ(kFileNotFound, registry.GetLastError());
  EXPECT_FALSE(registry.ValueExists(L"Absent"));
  EXPECT_TRUE(registry.DeleteValue(L"Four"));
  EXPECT_FALSE(registry.DeleteValue(L"Four"));
  EXPECT_EQ(kFileNotFound, registry.GetLastError());
}

TEST_F(RegistryTest, NamesAreCaseInsensitiveAndPreserved) {
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(L"\\" + TestKeyPath() + L"\\MixedCase", true));
  ASSERT_TRUE(registry.WriteString(L"ValueName", L"one"));
  ASSERT_TRUE(registry.WriteString(L"VALUENAME", L"two"));  // the same value
  std::vector<std::wstring> names;
  ASSERT_TRUE(registry.GetValueNames(names));
  EXPECT_EQ(std::vector<std::wstring>{L"ValueName"}, names);
  std::wstring text;
  ASSERT_TRUE(registry.ReadString(L"valuename", text));
  EXPECT_EQ(L"two", text);
  // Latin-1 letters fold too.
  ASSERT_TRUE(registry.WriteInteger(L"\u00E9t\u00E9", 1));
  EXPECT_TRUE(registry.ValueExists(L"\u00C9T\u00C9"));

  Registry other;
  ASSERT_TRUE(other.OpenKey(L"\\" + TestKeyPath() + L"\\MIXEDCASE", false));
  ASSERT_TRUE(other.ReadString(L"VALUENAME", text));
  Registry parent;
  ASSERT_TRUE(parent.OpenKey(L"\\" + TestKeyPath(), false));
  std::vector<std::wstring> keys;
  ASSERT_TRUE(parent.GetKeyNames(keys));
  EXPECT_EQ(std::vector<std::wstring>{L"MixedCase"}, keys);
}

TEST_F(RegistryTest, EnumerationOrderAndKeyInfo) {
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(L"\\" + TestKeyPath() + L"\\Order", true));
  // Sub-keys come sorted without regard to case. (Names with one of [\]^_` sort differently
  // in Wine, which compares lower-cased names, and in Windows, which compares upper-cased ones.)
  for (const wchar_t* name : {L"beta", L"Alpha", L"gamma", L"Zeta", L"delta9"})
    ASSERT_TRUE(registry.CreateKey(name));
  std::vector<std::wstring> keys;
  ASSERT_TRUE(registry.GetKeyNames(keys));
  EXPECT_EQ((std::vector<std::wstring>{L"Alpha", L"beta", L"delta9", L"gamma", L"Zeta"}), keys);

  for (const wchar_t* name : {L"z", L"LongestName", L"m"}) ASSERT_TRUE(registry.WriteInteger(name, 7));
  ASSERT_TRUE(registry.WriteBinaryData(L"m", "0123456789", 10));
  std::vector<std::wstring> values;
  ASSERT_TRUE(registry.GetValueNames(values));
  std::sort(values.begin(), values.end());
  EXPECT_EQ((std::vector<std::wstring>{L"LongestName", L"m", L"z"}), values);

  DE::RegKeyInfo info;
  ASSERT_TRUE(registry.GetKeyInfo(info));
  EXPECT_EQ(5, info.NumSubKeys);
  EXPECT_EQ(6, info.MaxSubKeyLen);  // delta9
  EXPECT_EQ(3, info.NumValues);
  EXPECT_EQ(11, info.MaxValueLen);
  EXPECT_EQ(10, info.MaxDataLen);
  EXPECT_NE(0u, info.FileTime.dwHighDateTime);
  EXPECT_TRUE(registry.HasSubKeys());

  Registry closed;
  EXPECT_FALSE(closed.GetKeyInfo(info));
  EXPECT_EQ(0, info.NumSubKeys);
  EXPECT_FALSE(closed.GetKeyNames(keys));
  EXPECT_TRUE(keys.empty());
}

TEST_F(RegistryTest, RecursiveDeleteAndDeletedHandles) {
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(L"\\" + TestKeyPath() + L"\\Tree\\A\\B\\C", true));
  ASSERT_TRUE(registry.WriteString(L"leaf", L"x"));
  ASSERT_TRUE(registry.CreateKey(L"\\" + TestKeyPath() + L"\\Tree\\D"));
  Registry deleter;
  ASSERT_TRUE(deleter.DeleteKey(L"\\" + TestKeyPath() + L"\\Tree"));
  EXPECT_EQ(0, deleter.GetLastError());
  EXPECT_FALSE(deleter.KeyExists(L"\\" + TestKeyPath() + L"\\Tree"));
  // The handle of a deleted key answers with ERROR_KEY_DELETED.
  EXPECT_FALSE(registry.ValueExists(L"leaf"));
  EXPECT_EQ(kKeyDeleted, registry.GetLastError());
  EXPECT_FALSE(registry.WriteString(L"late", L"y"));
  // Deleting what is not there fails with ERROR_FILE_NOT_FOUND.
  EXPECT_FALSE(deleter.DeleteKey(L"\\" + TestKeyPath() + L"\\Tree"));
  EXPECT_EQ(kFileNotFound, deleter.GetLastError());
  // Relative to the current key, and through RegDeleteKeyW.
  ASSERT_TRUE(deleter.OpenKey(L"\\" + TestKeyPath(), true));
  ASSERT_TRUE(deleter.CreateKey(L"Rel\\Deep"));
  deleter.SetUseDeleteKeyEx(false);
  EXPECT_TRUE(deleter.DeleteKey(L"Rel"));
  EXPECT_FALSE(deleter.KeyExists(L"Rel"));
  EXPECT_TRUE(deleter.KeyExists(L"\\" + TestKeyPath()));
}

TEST_F(RegistryTest, RenameValue) {
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(L"\\" + TestKeyPath(), true));
  ASSERT_TRUE(registry.WriteExpandString(L"Old", L"%TEMP%"));
  ASSERT_TRUE(registry.WriteInteger(L"Taken", 5));
  std::wstring taken = L"Taken";
  EXPECT_FALSE(registry.RenameValue(L"Old", taken));
  std::wstring text;
  EXPECT_TRUE(registry.ReadString(L"Old", text));
  int number = 0;
  EXPECT_TRUE(registry.ReadInteger(L"Taken", number));
  EXPECT_EQ(5, number);
  std::wstring fresh = L"New";
  ASSERT_TRUE(registry.RenameValue(L"Old", fresh));
  EXPECT_FALSE(registry.ValueExists(L"Old"));
  EXPECT_EQ(DE::rdExpandString, registry.GetDataType(L"New"));
  ASSERT_TRUE(registry.ReadString(L"New", text));
  EXPECT_EQ(L"%TEMP%", text);
}

TEST_F(RegistryTest, StaticOneCallOperations) {
  const std::wstring path = TestKeyPath() + L"\\Static";
  EXPECT_TRUE(Registry::SetValue(HKEY_CURRENT_USER, path, L"Int", -7, KEY_ALL_ACCESS));
  unsigned long big = 0xFFFFFFF0ul;
  EXPECT_TRUE(Registry::SetValue(HKEY_CURRENT_USER, path, L"Dword", big, KEY_ALL_ACCESS));
  EXPECT_TRUE(Registry::SetValue(HKEY_CURRENT_USER, path, L"Str", std::wstring(L"hello"), KEY_ALL_ACCESS));
  char blob[3] = {1, 2, 3};
  EXPECT_TRUE(Registry::SetValue(HKEY_CURRENT_USER, path, L"Bin", blob, 3, KEY_ALL_ACCESS));
  int number = 0;
  EXPECT_TRUE(Registry::GetValue(HKEY_CURRENT_USER, path, L"Int", number, KEY_READ));
  EXPECT_EQ(-7, number);
  unsigned long dword = 0;
  EXPECT_TRUE(Registry::GetValue(HKEY_CURRENT_USER, path, L"Dword", dword, KEY_READ));
  EXPECT_EQ(0xFFFFFFF0ul, dword);
  std::wstring text;
  EXPECT_TRUE(Registry::GetValue(HKEY_CURRENT_USER, path, L"Str", text, KEY_READ));
  EXPECT_EQ(L"hello", text);
  char back[8] = {};
  int size = 0;
  EXPECT_TRUE(Registry::GetValue(HKEY_CURRENT_USER, path, L"Bin", back, 8, size, KEY_READ));
  EXPECT_EQ(3, size);
  EXPECT_EQ(0, std::memcmp(blob, back, 3));
  // A 4-byte string lands in the int although the call fails; the unsigned form stays untouched.
  EXPECT_TRUE(Registry::SetValue(HKEY_CURRENT_USER, path, L"A", std::wstring(L"a"), KEY_ALL_ACCESS));
  number = 0;
  EXPECT_FALSE(Registry::GetValue(HKEY_CURRENT_USER, path, L"A", number, KEY_READ));
  EXPECT_EQ(0x61, number);
  dword = 99;
  EXPECT_FALSE(Registry::GetValue(HKEY_CURRENT_USER, path, L"A", dword, KEY_READ));
  EXPECT_EQ(99ul, dword);

  std::vector<std::wstring> names;
  EXPECT_TRUE(Registry::GetNames(HKEY_CURRENT_USER, path, names, 0));
  EXPECT_EQ(5u, names.size());
  EXPECT_TRUE(Registry::GetKeys(HKEY_CURRENT_USER, TestKeyPath(), names, 0));
  EXPECT_EQ(std::vector<std::wstring>{L"Static"}, names);

  // DelName on a missing key creates the key, then fails on the value.
  EXPECT_FALSE(Registry::DelName(HKEY_CURRENT_USER, path + L"\\Made", L"x", KEY_ALL_ACCESS));
  Registry check;
  EXPECT_TRUE(check.KeyExists(L"\\" + path + L"\\Made"));
  EXPECT_TRUE(Registry::DelName(HKEY_CURRENT_USER, path, L"Int", KEY_ALL_ACCESS));
  EXPECT_FALSE(Registry::GetValue(HKEY_CURRENT_USER, path, L"Int", number, KEY_READ));
  EXPECT_TRUE(Registry::DelKey(HKEY_CURRENT_USER, path, KEY_ALL_ACCESS));
  EXPECT_FALSE(Registry::GetValue(HKEY_CURRENT_USER, path, L"Str", text, KEY_READ));
}

TEST_F(RegistryTest, ReadOnlyOpenAndRoots) {
  Registry registry(KEY_ALL_ACCESS | KEY_WOW64_64KEY);
  EXPECT_EQ(0, registry.GetLastError());
  ASSERT_TRUE(registry.CreateKey(L"\\" + TestKeyPath() + L"\\RO"));
  ASSERT_TRUE(registry.OpenKeyReadOnly(HKEY_CURRENT_USER, L"\\" + TestKeyPath() + L"\\RO"));
  EXPECT_EQ(static_cast<unsigned long>(KEY_READ | KEY_WOW64_64KEY), registry.GetAccess());
  // A read-only handle cannot write.
  EXPECT_FALSE(registry.WriteString(L"x", L"y"));
  EXPECT_FALSE(registry.OpenKeyReadOnly(L"\\" + TestKeyPath() + L"\\Absent"));
  EXPECT_EQ(kFileNotFound, registry.GetLastError());

  Registry roots;
  std::wstring rest;
  EXPECT_EQ(HKEY_LOCAL_MACHINE,
            DE::RegistryPeer::FeathRootKey(roots, L"\\hkey_local_machine\\Software", rest));
  EXPECT_EQ(L"Software", rest);
  EXPECT_EQ(HKEY_USERS, DE::RegistryPeer::FeathRootKey(roots, L"HKEY_USERS", rest));
  EXPECT_EQ(L"", rest);
  EXPECT_EQ(HKEY_CURRENT_USER_LOCAL_SETTINGS,
            DE::RegistryPeer::FeathRootKey(roots, L"HKEY_CURRENT_USER_LOCAL_SETTINGS\\a\\b", rest));
  EXPECT_EQ(L"a\\b", rest);
  EXPECT_EQ(HKEY_CURRENT_USER, DE::RegistryPeer::FeathRootKey(roots, L"\\HKLM\\Software", rest));
  EXPECT_EQ(L"HKLM\\Software", rest);  // no short forms
  roots.SetRootKey(HKEY_CLASSES_ROOT);
  EXPECT_EQ(HKEY_CLASSES_ROOT, DE::RegistryPeer::FeathRootKey(roots, L"Software\\X", rest));
  EXPECT_EQ(L"Software\\X", rest);
}

TEST_F(RegistryTest, ConnectAndMachineHive) {
  Registry registry;
  registry.SetRootKey(HKEY_LOCAL_MACHINE);
  EXPECT_FALSE(registry.RegistryConnect(L"\\\\util-no-such-host-7f3a"));
  EXPECT_EQ(kBadNetPath, registry.GetLastError());
  EXPECT_EQ(HKEY_LOCAL_MACHINE, registry.GetRootKey());

  // The service path quoting, on the machine hive of the test store / prefix.
  const std::wstring service = L"SYSTEM\\CurrentControlSet\\Services\\QDAMainService";
  Registry machine;
  ASSERT_TRUE(machine.OpenKey(HKEY_LOCAL_MACHINE, service, true));
  ASSERT_TRUE(machine.WriteExpandString(L"ImagePath", L"C:\\Program Files\\QDA\\svc.exe -k"));
  Registry::SetRegQDAServicePath(true);
  std::wstring text;
  ASSERT_TRUE(machine.ReadString(L"ImagePath", text));
  EXPECT_EQ(L"\"C:\\Program Files\\QDA\\svc.exe -k\"", text);
  EXPECT_EQ(DE::rdExpandString, machine.GetDataType(L"ImagePath"));
  // Written with the length of the narrow text; advapi32 takes the NUL that follows it in.
  EXPECT_EQ(static_cast<int>(text.size() * 2 + 2), machine.GetDataSize(L"ImagePath"));
  Registry::SetRegQDAServicePath(true);
  ASSERT_TRUE(machine.ReadString(L"ImagePath", text));
  EXPECT_EQ(L"\"C:\\Program Files\\QDA\\svc.exe -k\"", text);
  ASSERT_TRUE(machine.WriteString(L"ImagePath", L"\"C:\\QDA\\svc.exe\" -arg \"x\""));
  Registry::SetRegQDAServicePath(false);
  ASSERT_TRUE(machine.ReadString(L"ImagePath", text));
  EXPECT_EQ(L"C:\\QDA\\svc.exe -arg x", text);
  EXPECT_EQ(DE::rdString, machine.GetDataType(L"ImagePath"));
  machine.CloseKey();
  EXPECT_TRUE(Registry::DelKey(HKEY_LOCAL_MACHINE, service, KEY_ALL_ACCESS));

  // HKEY_CLASSES_ROOT shows the machine's SOFTWARE\Classes.
  const std::wstring classKey = L"SOFTWARE\\Classes\\UtilTestClass-" + TestKeyPath().substr(18);
  EXPECT_TRUE(Registry::SetValue(HKEY_LOCAL_MACHINE, classKey, L"v", 3, KEY_ALL_ACCESS));
  int number = 0;
  EXPECT_TRUE(Registry::GetValue(HKEY_CLASSES_ROOT, classKey.substr(17), L"v", number, KEY_READ));
  EXPECT_EQ(3, number);
  EXPECT_TRUE(Registry::DelKey(HKEY_LOCAL_MACHINE, classKey, KEY_ALL_ACCESS));
}

TEST_F(RegistryTest, SaveAndRestoreKey) {
  test::TempDir folder;
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(L"\\" + TestKeyPath() + L"\\Saved\\Child", true));
  ASSERT_TRUE(registry.WriteString(L"s", L"kept"));
  registry.CloseKey();
  const std::wstring file = (folder.Path() / "saved.hiv").wstring();
  if (!registry.SaveKey(L"\\" + TestKeyPath() + L"\\Saved", file)) {
    GTEST_SKIP() << "saving a key needs the backup privilege here (code " << registry.GetLastError() << ")";
  }
  EXPECT_FALSE(registry.SaveKey(L"\\" + TestKeyPath() + L"\\Saved", file));  // the file exists
  if (test::RunningOnWine()) GTEST_SKIP() << "Wine's RegRestoreKeyW is a stub that restores nothing";
  ASSERT_TRUE(registry.CreateKey(L"\\" + TestKeyPath() + L"\\Target\\Gone"));
  if (!registry.RestoreKey(L"\\" + TestKeyPath() + L"\\Target", file)) {
    GTEST_SKIP() << "restoring needs the restore privilege here (code " << registry.GetLastError() << ")";
  }
  std::wstring text;
  EXPECT_TRUE(
      Registry::GetValue(HKEY_CURRENT_USER, TestKeyPath() + L"\\Target\\Child", L"s", text, KEY_READ));
  EXPECT_EQ(L"kept", text);
  EXPECT_FALSE(registry.KeyExists(L"\\" + TestKeyPath() + L"\\Target\\Gone"));
}

}  // namespace
