// The same cases against advapi32 (Windows build, under Wine) and the Linux store; expected values
// are the Windows definitions (type numbers, UTF-16LE data, error codes).
#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "DERegistry.h"
#include "DESystem.h"
#include "common/platform_info.h"
#include "common/temp_dir.h"
#include "registry_test_util.h"

namespace {

using DE::Registry;
using test::RawData;
using test::RegistryTest;
using test::TestKeyPath;
using Names = std::vector<std::wstring>;

constexpr int kFileNotFound = 2;
constexpr int kBadNetPath = 53;
constexpr int kAlreadyExists = 183;
constexpr int kKeyDeleted = 1018;

std::wstring Abs(const std::wstring& tail = L"") { return L"\\" + TestKeyPath() + tail; }

TEST_F(RegistryTest, PathsReadOnlyOpenAndRootNames) {
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(Abs(), true));
  ASSERT_TRUE(registry.OpenKey(L"Sub", true));
  EXPECT_EQ(TestKeyPath() + L"\\Sub", registry.GetCurrentPathW());
  // Absolute again: below the root, whatever is open. A failed open keeps the current key.
  ASSERT_TRUE(registry.OpenKey(Abs(L"\\Other"), true));
  HKEY before = registry.GetCurrentKey();
  EXPECT_FALSE(registry.OpenKey(L"Missing\\Deeper", false));
  EXPECT_EQ(kFileNotFound, registry.GetLastError());
  EXPECT_EQ(before, registry.GetCurrentKey());
  EXPECT_EQ(TestKeyPath() + L"\\Other", registry.GetCurrentPathW());
  // An empty path with canCreate opens the base again and creates nothing.
  ASSERT_TRUE(registry.OpenKey(Abs(), false));
  ASSERT_TRUE(registry.OpenKey(L"", true));
  Names keys;
  ASSERT_TRUE(registry.GetKeyNames(keys));
  EXPECT_EQ((Names{L"Other", L"Sub"}), keys);

  Registry reader(KEY_ALL_ACCESS | KEY_WOW64_64KEY);
  ASSERT_TRUE(reader.OpenKeyReadOnly(HKEY_CURRENT_USER, Abs(L"\\Sub")));
  EXPECT_EQ(static_cast<unsigned long>(KEY_READ | KEY_WOW64_64KEY), reader.GetAccess());
  EXPECT_FALSE(reader.WriteString(L"x", L"y"));

  // Long root names only, in any case; HKEY_CURRENT_USER_LOCAL_SETTINGS is not HKEY_CURRENT_USER.
  reader.SetRootKey(HKEY_CLASSES_ROOT);
  const std::tuple<const wchar_t*, HKEY, const wchar_t*> cases[] = {
      {L"\\hkey_local_machine\\Software", HKEY_LOCAL_MACHINE, L"Software"},
      {L"HKEY_CURRENT_USER_LOCAL_SETTINGS\\a\\b", HKEY_CURRENT_USER_LOCAL_SETTINGS, L"a\\b"},
      {L"\\HKLM\\Software", HKEY_CLASSES_ROOT, L"HKLM\\Software"}};
  for (const auto& [path, root, rest] : cases) {
    std::wstring tail;
    EXPECT_EQ(root, DE::RegistryPeer::FeathRootKey(reader, path, tail));
    EXPECT_EQ(rest, tail);
  }
}

TEST_F(RegistryTest, ValueTypesSizesAndBytes) {
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(Abs(), true));
  // U+1F600 takes two UTF-16 units: five units plus the NUL make 12 bytes.
  ASSERT_TRUE(registry.WriteString(L"Text", L"ab\U0001F600\u00E9"));
  DE::RegDataType type = DE::rdUnknown;
  EXPECT_EQ(test::Utf16Bytes(u"ab\U0001F600\u00E9") + std::string(2, '\0'),
            RawData(registry, L"Text", &type));
  EXPECT_EQ(DE::rdString, type);
  std::wstring text;
  ASSERT_TRUE(registry.ReadString(L"Text", text));
  EXPECT_EQ(L"ab\U0001F600\u00E9", text);

  ASSERT_TRUE(registry.WriteInteger(L"Number", -2));
  EXPECT_EQ(std::string("\xFE\xFF\xFF\xFF", 4), RawData(registry, L"Number", &type));
  EXPECT_EQ(DE::rdInteger, type);
  ASSERT_TRUE(registry.WriteFloat(L"Ratio", 2.5));
  EXPECT_EQ(std::string("\0\0\0\0\0\0\x04\x40", 8), RawData(registry, L"Ratio"));

  std::string all;
  for (int i = 0; i < 256; ++i) all.push_back(static_cast<char>(i));
  ASSERT_TRUE(registry.WriteBinaryData(L"Bytes", all.data(), static_cast<int>(all.size())));
  std::string back(300, '\0');
  int size = 0;
  ASSERT_TRUE(registry.ReadBinaryData(L"Bytes", &back[0], 300, size));
  EXPECT_EQ(all, back.substr(0, static_cast<size_t>(size)));
  EXPECT_FALSE(registry.ReadBinaryData(L"Bytes", &back[0], 255, size));  // does not fit
  EXPECT_EQ(256, size);

  // Wrong types: the typed read refuses.
  int number = 0;
  double ratio = 0;
  EXPECT_FALSE(registry.ReadInteger(L"Text", number));
  EXPECT_FALSE(registry.ReadFloat(L"Bytes", ratio));
  EXPECT_FALSE(registry.ReadString(L"Number", text));
  EXPECT_TRUE(text.empty());

  EXPECT_EQ(-1, registry.GetDataSize(L"Absent"));
  EXPECT_TRUE(registry.DeleteValue(L"Ratio"));
  EXPECT_FALSE(registry.DeleteValue(L"Ratio"));
  EXPECT_EQ(kFileNotFound, registry.GetLastError());

  // Renaming onto a taken name fails and changes nothing; a rename keeps the type.
  ASSERT_TRUE(registry.WriteExpandString(L"Old", L"%TEMP%"));
  std::wstring taken = L"Number", fresh = L"New";
  EXPECT_FALSE(registry.RenameValue(L"Old", taken));
  EXPECT_EQ(std::string("\xFE\xFF\xFF\xFF", 4), RawData(registry, L"Number"));
  ASSERT_TRUE(registry.RenameValue(L"Old", fresh));
  EXPECT_FALSE(registry.ValueExists(L"Old"));
  EXPECT_EQ(DE::rdExpandString, registry.GetDataType(L"New"));
  ASSERT_TRUE(registry.ReadString(L"New", text));
  EXPECT_EQ(L"%TEMP%", text);  // unexpanded
}

TEST_F(RegistryTest, NamesCaseOrderAndKeyInfo) {
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(Abs(L"\\MixedCase"), true));
  ASSERT_TRUE(registry.WriteString(L"ValueName", L"one"));
  ASSERT_TRUE(registry.WriteString(L"VALUENAME", L"two"));  // the same value
  Names names;
  ASSERT_TRUE(registry.GetValueNames(names));
  EXPECT_EQ(Names{L"ValueName"}, names);
  std::wstring text;
  ASSERT_TRUE(registry.ReadString(L"valuename", text));
  EXPECT_EQ(L"two", text);
  ASSERT_TRUE(registry.WriteInteger(L"\u00E9t\u00E9", 1));  // Latin-1 letters fold too
  EXPECT_TRUE(registry.ValueExists(L"\u00C9T\u00C9"));

  // Sub-keys come sorted without regard to case. (Names with one of [\]^_` sort differently
  // in Wine, which compares lower-cased names, and in Windows, which compares upper-cased ones.)
  ASSERT_TRUE(registry.OpenKey(Abs(L"\\MIXEDCASE\\Order"), true));
  for (const wchar_t* name : {L"beta", L"Alpha", L"gamma", L"Zeta", L"delta9"})
    ASSERT_TRUE(registry.CreateKey(name));
  ASSERT_TRUE(registry.GetKeyNames(names));
  EXPECT_EQ((Names{L"Alpha", L"beta", L"delta9", L"gamma", L"Zeta"}), names);
  for (const wchar_t* name : {L"z", L"LongestName", L"m"}) ASSERT_TRUE(registry.WriteInteger(name, 7));
  ASSERT_TRUE(registry.WriteBinaryData(L"m", "0123456789", 10));
  DE::RegKeyInfo info;
  ASSERT_TRUE(registry.GetKeyInfo(info));
  // Name lengths are doubled when the ANSI page is a double-byte one (tests.cmake runs CP936 too).
  const int page = test::AnsiCodePage();
  const int scale = page == 932 || page == 936 || page == 949 || page == 950 ? 2 : 1;
  EXPECT_EQ(5, info.NumSubKeys);
  EXPECT_EQ(6 * scale, info.MaxSubKeyLen);  // delta9
  EXPECT_EQ(3, info.NumValues);
  EXPECT_EQ(11 * scale, info.MaxValueLen);
  EXPECT_EQ(10, info.MaxDataLen);
  EXPECT_NE(0u, info.FileTime.dwHighDateTime);

  ASSERT_TRUE(registry.OpenKey(Abs(), false));
  ASSERT_TRUE(registry.GetKeyNames(names));
  EXPECT_EQ(Names{L"MixedCase"}, names);  // one key, first spelling kept
  Registry closed;
  EXPECT_FALSE(closed.GetKeyInfo(info));
  EXPECT_EQ(0, info.NumSubKeys);
}

TEST_F(RegistryTest, RecursiveDeleteAndDeletedHandles) {
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(Abs(L"\\Tree\\A\\B\\C"), true));
  ASSERT_TRUE(registry.WriteString(L"leaf", L"x"));
  ASSERT_TRUE(registry.CreateKey(Abs(L"\\Tree\\D")));
  Registry deleter;
  ASSERT_TRUE(deleter.DeleteKey(Abs(L"\\Tree")));
  // The handle of a deleted key answers with ERROR_KEY_DELETED.
  EXPECT_FALSE(registry.ValueExists(L"leaf"));
  EXPECT_EQ(kKeyDeleted, registry.GetLastError());
  EXPECT_FALSE(deleter.DeleteKey(Abs(L"\\Tree")));
  EXPECT_EQ(kFileNotFound, deleter.GetLastError());
  // Relative to the current key, and through RegDeleteKeyW.
  ASSERT_TRUE(deleter.OpenKey(Abs(), true));
  ASSERT_TRUE(deleter.CreateKey(L"Rel\\Deep"));
  deleter.SetUseDeleteKeyEx(false);
  EXPECT_TRUE(deleter.DeleteKey(L"Rel"));
  EXPECT_FALSE(deleter.KeyExists(L"Rel"));
  EXPECT_TRUE(deleter.KeyExists(Abs()));
}

// The one-call forms' quirks: a 4-byte string lands in the int although the call fails, the
// unsigned form stays untouched, and DelName on a missing key creates the key.
TEST_F(RegistryTest, StaticOneCallQuirks) {
  const std::wstring path = TestKeyPath() + L"\\Static";
  ASSERT_TRUE(Registry::SetValue(HKEY_CURRENT_USER, path, L"A", std::wstring(L"a"), KEY_ALL_ACCESS));
  int number = 0;
  EXPECT_FALSE(Registry::GetValue(HKEY_CURRENT_USER, path, L"A", number, KEY_READ));
  EXPECT_EQ(0x61, number);
  unsigned long dword = 99;
  EXPECT_FALSE(Registry::GetValue(HKEY_CURRENT_USER, path, L"A", dword, KEY_READ));
  EXPECT_EQ(99ul, dword);
  EXPECT_FALSE(Registry::DelName(HKEY_CURRENT_USER, path + L"\\Made", L"x", KEY_ALL_ACCESS));
  EXPECT_TRUE(Registry().KeyExists(L"\\" + path + L"\\Made"));
}

TEST_F(RegistryTest, ConnectAndMachineHive) {
  Registry registry;
  registry.SetRootKey(HKEY_LOCAL_MACHINE);
  EXPECT_FALSE(registry.RegistryConnect(L"\\\\util-no-such-host-7f3a"));
  EXPECT_EQ(kBadNetPath, registry.GetLastError());
  EXPECT_EQ(HKEY_LOCAL_MACHINE, registry.GetRootKey());

  // The service path quoting, on the machine hive of the test store / prefix.
  const std::wstring service = L"SYSTEM\\CurrentControlSet\\Services\\QDAMainService";
  const std::wstring quoted = L"\"C:\\Program Files\\QDA\\svc.exe -k\"";
  ASSERT_TRUE(registry.OpenKey(service, true));
  ASSERT_TRUE(registry.WriteExpandString(L"ImagePath", L"C:\\Program Files\\QDA\\svc.exe -k"));
  std::wstring text;
  for (int round = 0; round < 2; ++round) {  // a quoted path is not quoted again
    Registry::SetRegQDAServicePath(true);
    ASSERT_TRUE(registry.ReadString(L"ImagePath", text));
    EXPECT_EQ(quoted, text);
  }
  EXPECT_EQ(DE::rdExpandString, registry.GetDataType(L"ImagePath"));
  // Written with the length of the narrow text; advapi32 takes the NUL that follows it in.
  EXPECT_EQ(static_cast<int>(quoted.size() * 2 + 2), registry.GetDataSize(L"ImagePath"));
  ASSERT_TRUE(registry.WriteString(L"ImagePath", L"\"C:\\QDA\\svc.exe\" -arg \"x\""));
  Registry::SetRegQDAServicePath(false);
  ASSERT_TRUE(registry.ReadString(L"ImagePath", text));
  EXPECT_EQ(L"C:\\QDA\\svc.exe -arg x", text);
  EXPECT_EQ(DE::rdString, registry.GetDataType(L"ImagePath"));
  registry.CloseKey();
  EXPECT_TRUE(Registry::DelKey(HKEY_LOCAL_MACHINE, service, KEY_ALL_ACCESS));

  // HKEY_CLASSES_ROOT shows the machine's SOFTWARE\Classes.
  const std::wstring classKey = L"SOFTWARE\\Classes\\UtilTestClass-" + TestKeyPath().substr(18);
  EXPECT_TRUE(Registry::SetValue(HKEY_LOCAL_MACHINE, classKey, L"v", 3, KEY_ALL_ACCESS));
  int number = 0;
  EXPECT_TRUE(Registry::GetValue(HKEY_CLASSES_ROOT, classKey.substr(17), L"v", number, KEY_READ));
  EXPECT_EQ(3, number);
  EXPECT_TRUE(Registry::DelKey(HKEY_LOCAL_MACHINE, classKey, KEY_ALL_ACCESS));
}

// A key saved to a hive file, loaded below both roots that take hives, and restored over
// another key. The caller enables the backup and restore privileges first.
TEST_F(RegistryTest, HiveSaveLoadAndRestore) {
  if (!DE::SetTokenPrivilege(L"SeBackupPrivilege", true) ||
      !DE::SetTokenPrivilege(L"SeRestorePrivilege", true)) {
    GTEST_SKIP() << "needs the backup and restore privileges (root on Linux)";
  }
  test::TempDir folder;
  const std::wstring file = folder.File("saved.hiv").wstring();
  Registry registry;
  ASSERT_TRUE(registry.OpenKey(Abs(L"\\Hive\\Sub"), true));
  ASSERT_TRUE(registry.WriteInteger(L"n", 7));
  ASSERT_TRUE(registry.OpenKey(Abs(L"\\Hive"), false));
  ASSERT_TRUE(registry.WriteString(L"s", L"text"));
  ASSERT_TRUE(registry.SaveKey(Abs(L"\\Hive"), file));
  // Wine overwrites an existing file and does not restore at all (a stub that reports success).
  const bool wine = test::RunningUnderWine();
  if (!wine) {
    EXPECT_FALSE(registry.SaveKey(Abs(L"\\Hive"), file));
    EXPECT_EQ(kAlreadyExists, registry.GetLastError());
  }

  // Any key name, in any case: the Linux store keeps a file per loaded hive.
  const std::wstring suffix = TestKeyPath().substr(18);
  const std::wstring name = L"Util/Load \u00e9-" + suffix;
  const std::wstring otherCase = L"UTIL/LOAD \u00c9-" + suffix;
  for (HKEY root : {HKEY_USERS, HKEY_LOCAL_MACHINE}) {
    Registry loader;
    loader.SetRootKey(root);
    ASSERT_TRUE(loader.LoadKey(L"\\" + name, file));
    EXPECT_FALSE(loader.LoadKey(otherCase, file));  // the name is taken
    int number = 0;
    EXPECT_TRUE(Registry::GetValue(root, otherCase + L"\\sub", L"n", number, KEY_READ));
    EXPECT_EQ(7, number);
    Names keys;
    ASSERT_TRUE(Registry::GetKeys(root, L"", keys, KEY_READ));
    EXPECT_EQ(1, std::count(keys.begin(), keys.end(), name));
    ASSERT_TRUE(loader.UnLoadKey(otherCase));
    EXPECT_FALSE(loader.KeyExists(name));
    EXPECT_FALSE(loader.UnLoadKey(name));
  }

  if (wine) GTEST_SKIP() << "Wine's RegRestoreKeyW is a stub";
  ASSERT_TRUE(registry.OpenKey(Abs(L"\\Target\\Old"), true));
  ASSERT_TRUE(registry.WriteInteger(L"gone", 1));
  ASSERT_TRUE(registry.RestoreKey(Abs(L"\\Target"), file));
  ASSERT_TRUE(registry.OpenKey(Abs(L"\\Target"), false));
  Names names;
  ASSERT_TRUE(registry.GetKeyNames(names));
  EXPECT_EQ(Names{L"Sub"}, names);
  ASSERT_TRUE(registry.GetValueNames(names));
  EXPECT_EQ(Names{L"s"}, names);
  std::wstring text;
  EXPECT_TRUE(registry.ReadString(L"s", text));
  EXPECT_EQ(L"text", text);
}

}  // namespace
