// The Windows version algorithm and name table, fed with made-up system answers.
#include <gtest/gtest.h>

#include <string>

#include "foundation/os_version_detail.h"

namespace {

using DE::detail::OsVersionFields;
using DE::detail::WindowsVersionRecord;

// What the fake queries answer; a query whose ok flag is false fails after writing its outputs.
struct FakeSystem {
  bool versionOk;
  WindowsVersionRecord record;  // major, minor, build, service pack major and minor, product type
  int nativeArchitecture;
  bool workstationOk;
  int workstationMajor, workstationMinor;
  bool kernelOk;  // kernel32's product version is 10.0.19045.1
  int serverR2;
} fake;
// The queries made, in order: Architecture, Workstation, Kernel, R2.
std::string asked;

template <typename T>
T Ask(char query, T answer) {
  asked += query;
  return answer;
}

int FakeServerR2() { return Ask('R', fake.serverR2); }

const DE::detail::WindowsVersionQueries kQueries = {
    [](WindowsVersionRecord& r) { return (r = fake.record, fake.versionOk); },
    [] { return Ask('A', fake.nativeArchitecture); },
    [](int& major, int& minor) {
      major = fake.workstationMajor, minor = fake.workstationMinor;
      return Ask('W', fake.workstationOk);
    },
    [](std::uint32_t& ms, std::uint32_t& ls) {
      ms = 0x000A0000, ls = 0x4A650001;
      return Ask('K', fake.kernelOk);
    },
    FakeServerR2};

TEST(WindowsVersionRules, ComputedFields) {
  struct Row {
    FakeSystem system;
    const wchar_t* fields;  // "major.minor.build spMajor.spMinor architecture name"
    const char* asked;
  };
  // clang-format off
  const Row rows[] = {
      // A shimmed GetVersionExW says 6.2; the workstation service knows it is 10.0 (and has no build).
      {{true, {6, 2, 9200, 0, 0, 1}, 9, true, 10, 0, true, 0}, L"10.0.0 0.0 1 Windows", "AW"},
      // The service failing: kernel32's resource, whatever the failed call left behind.
      {{true, {6, 2, 9200, 0, 0, 1}, 9, false, 77, 0, true, 0}, L"10.0.19045 0.0 1 Windows", "AWK"},
      // Both failing zero the numbers; the name stays "Windows".
      {{true, {6, 2, 9200, 0, 0, 1}, 9, false, 77, 0, false, 0}, L"0.0.0 0.0 1 Windows", "AWK"},
      // The service pack and product type come from the record: Server 2008 R2 SP1, then Windows 7.
      {{true, {6, 1, 7601, 1, 2, 3}, 9, true, 6, 1, true, 0}, L"6.1.0 1.2 1 Windows Server 2008 R2", "AW"},
      {{true, {6, 1, 7601, 1, 2, 1}, 9, true, 6, 1, true, 0}, L"6.1.0 1.2 1 Windows 7", "AW"},
      // 5.2 through the whole algorithm: the architecture and SM_SERVERR2 reach the name.
      {{true, {5, 2, 3790, 2, 0, 1}, 0, true, 5, 2, true, 1}, L"5.2.0 2.0 0 Windows Server 2003 R2", "AWR"},
      // XP SP3: no unshimmed query, the record's build stays; the architecture is asked from 5.1 on.
      {{true, {5, 1, 2600, 3, 0, 1}, 9, true, 10, 0, true, 0}, L"5.1.2600 3.0 1 Windows XP", "A"},
      {{true, {5, 0, 2195, 4, 0, 1}, 9, true, 10, 0, true, 0}, L"5.0.2195 4.0 0 Windows 2000", ""},
      // The unshimmed query runs for any minor of 2 or more, even below major 5.
      {{true, {4, 2, 1, 0, 0, 1}, 9, true, 4, 2, true, 0}, L"4.2.0 0.0 0 Windows", "W"},
      // GetVersionExW failing: zeros, no name, nothing else asked.
      {{false, {6, 1, 7601, 1, 0, 1}, 9, true, 10, 0, true, 0}, L"0.0.0 0.0 0 ", ""}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows);
    fake = row.system;
    asked.clear();
    const OsVersionFields f = DE::detail::ComputeWindowsVersion(kQueries);
    EXPECT_EQ(row.fields, std::to_wstring(f.major) + L"." + std::to_wstring(f.minor) + L"." +
                              std::to_wstring(f.build) + L" " + std::to_wstring(f.servicePackMajor) + L"." +
                              std::to_wstring(f.servicePackMinor) + L" " + std::to_wstring(f.architecture) +
                              L" " + f.name);
    EXPECT_EQ(0, f.platform);
    EXPECT_EQ(row.asked, asked);
  }
}

TEST(WindowsVersionRules, NameTable) {
  struct Row {
    int major, minor, productType, architecture, serverR2;
    const wchar_t* name;
  };
  // clang-format off
  const Row rows[] = {
      {5, 0, 1, 0, 0, L"Windows 2000"},           {5, 1, 3, 1, 0, L"Windows XP"},
      {5, 2, 1, 1, 1, L"Windows XP"},             {5, 2, 1, 0, 0, L"Windows Server 2003"},
      {5, 2, 3, 1, 1, L"Windows Server 2003 R2"}, {6, 1, 2, 1, 0, L"Windows Server 2008 R2"},
      {6, 3, 3, 1, 0, L"Windows Server 2012 R2"}, {6, 4, 3, 1, 0, L"Windows 10"},
      {6, 5, 1, 1, 0, L""},                       {10, 0, 1, 1, 0, L""},
      {4, 0, 1, 0, 0, L""}};
  // clang-format on
  for (const Row& r : rows) {
    SCOPED_TRACE(testing::Message() << r.major << "." << r.minor << " type " << r.productType);
    fake.serverR2 = r.serverR2;
    EXPECT_EQ(std::wstring(r.name),
              DE::detail::WindowsReleaseName(r.major, r.minor, r.productType, r.architecture, FakeServerR2));
  }
}

}  // namespace
