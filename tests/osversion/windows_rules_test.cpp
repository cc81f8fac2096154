// The Windows version algorithm and name table, fed with made-up system answers.
#include <gtest/gtest.h>

#include <string>

#include "foundation/os_version_detail.h"

namespace {

using DE::detail::ComputeWindowsVersion;
using DE::detail::OsVersionFields;
using DE::detail::WindowsReleaseName;
using DE::detail::WindowsVersionQueries;
using DE::detail::WindowsVersionRecord;

// The answers the fake queries give, and which queries were made.
struct FakeSystem {
  bool versionOk = true;
  WindowsVersionRecord record;
  int nativeArchitecture = 9;
  bool workstationOk = true;
  int workstationMajor = 0;
  int workstationMinor = 0;
  bool kernelOk = true;
  std::uint32_t kernelMs = 0;
  std::uint32_t kernelLs = 0;
  int serverR2 = 0;
  int architectureAsked = 0;
  int workstationAsked = 0;
  int kernelAsked = 0;
  int serverR2Asked = 0;
};

FakeSystem fake;

bool FakeVersionEx(WindowsVersionRecord& record) {
  if (fake.versionOk) record = fake.record;
  return fake.versionOk;
}
int FakeArchitecture() {
  ++fake.architectureAsked;
  return fake.nativeArchitecture;
}
bool FakeWorkstation(int& major, int& minor) {
  ++fake.workstationAsked;
  major = fake.workstationMajor;
  minor = fake.workstationMinor;
  return fake.workstationOk;
}
bool FakeKernel(std::uint32_t& ms, std::uint32_t& ls) {
  ++fake.kernelAsked;
  ms = fake.kernelMs;
  ls = fake.kernelLs;
  return fake.kernelOk;
}
int FakeServerR2() {
  ++fake.serverR2Asked;
  return fake.serverR2;
}

const WindowsVersionQueries kQueries = {FakeVersionEx, FakeArchitecture, FakeWorkstation, FakeKernel,
                                        FakeServerR2};

WindowsVersionRecord Record(int major, int minor, int build, int spMajor, int spMinor, int productType) {
  WindowsVersionRecord r;
  r.major = major;
  r.minor = minor;
  r.build = build;
  r.servicePackMajor = spMajor;
  r.servicePackMinor = spMinor;
  r.productType = productType;
  return r;
}

class WindowsVersionRules : public ::testing::Test {
 protected:
  void SetUp() override { fake = FakeSystem(); }
};

TEST_F(WindowsVersionRules, WorkstationServiceNumbersWithBuildZero) {
  // A shimmed GetVersionExW says 6.2; the workstation service knows it is 10.0.
  fake.record = Record(6, 2, 9200, 0, 0, 1);
  fake.workstationMajor = 10;
  fake.kernelMs = 0x000A0000;
  fake.kernelLs = 0x4A650001;
  const OsVersionFields f = ComputeWindowsVersion(kQueries);
  EXPECT_EQ(10, f.major);
  EXPECT_EQ(0, f.minor);
  EXPECT_EQ(0, f.build);
  EXPECT_EQ(L"Windows", f.name);
  EXPECT_EQ(1, f.architecture);
  EXPECT_EQ(0, f.platform);
  EXPECT_EQ(0, fake.kernelAsked);
}

TEST_F(WindowsVersionRules, KernelResourceWhenTheWorkstationServiceFails) {
  fake.record = Record(6, 2, 9200, 0, 0, 1);
  fake.workstationOk = false;
  fake.workstationMajor = 77;  // whatever a failed call leaves is not used
  fake.kernelMs = 0x000A0000;  // 10.0
  fake.kernelLs = 0x4A650001;  // build 19045, revision 1
  OsVersionFields f = ComputeWindowsVersion(kQueries);
  EXPECT_EQ(10, f.major);
  EXPECT_EQ(0, f.minor);
  EXPECT_EQ(19045, f.build);
  EXPECT_EQ(L"Windows", f.name);

  fake.kernelMs = 0x00060003;  // 6.3: the table names it
  fake.kernelLs = 0x25800000;
  f = ComputeWindowsVersion(kQueries);
  EXPECT_EQ(6, f.major);
  EXPECT_EQ(3, f.minor);
  EXPECT_EQ(9600, f.build);
  EXPECT_EQ(L"Windows 8.1", f.name);

  // Both sources failing zero the numbers; the name stays "Windows".
  fake.kernelOk = false;
  f = ComputeWindowsVersion(kQueries);
  EXPECT_EQ(0, f.major);
  EXPECT_EQ(0, f.minor);
  EXPECT_EQ(0, f.build);
  EXPECT_EQ(L"Windows", f.name);
}

TEST_F(WindowsVersionRules, ServicePackAndProductTypeComeFromTheVersionRecord) {
  fake.record = Record(6, 1, 7601, 1, 2, 3);  // Server 2008 R2 SP1
  fake.workstationMajor = 6;
  fake.workstationMinor = 1;
  OsVersionFields f = ComputeWindowsVersion(kQueries);
  EXPECT_EQ(1, f.servicePackMajor);
  EXPECT_EQ(2, f.servicePackMinor);
  EXPECT_EQ(0, f.build);
  EXPECT_EQ(L"Windows Server 2008 R2", f.name);

  fake.record.productType = 1;
  EXPECT_EQ(L"Windows 7", ComputeWindowsVersion(kQueries).name);
}

TEST_F(WindowsVersionRules, OlderReleasesKeepTheRecordNumbers) {
  // XP SP3: no unshimmed query, the record's build stays; the architecture is asked from 5.1 on.
  fake.record = Record(5, 1, 2600, 3, 0, 1);
  fake.nativeArchitecture = 0;
  OsVersionFields f = ComputeWindowsVersion(kQueries);
  EXPECT_EQ(5, f.major);
  EXPECT_EQ(1, f.minor);
  EXPECT_EQ(2600, f.build);
  EXPECT_EQ(3, f.servicePackMajor);
  EXPECT_EQ(0, f.architecture);
  EXPECT_EQ(L"Windows XP", f.name);
  EXPECT_EQ(1, fake.architectureAsked);
  EXPECT_EQ(0, fake.workstationAsked);

  // 2000: the native architecture is not asked at all.
  fake = FakeSystem();
  fake.record = Record(5, 0, 2195, 4, 0, 1);
  f = ComputeWindowsVersion(kQueries);
  EXPECT_EQ(0, f.architecture);
  EXPECT_EQ(0, fake.architectureAsked);
  EXPECT_EQ(L"Windows 2000", f.name);

  // The unshimmed query runs for any minor of 2 or more, even below major 5.
  fake = FakeSystem();
  fake.record = Record(4, 2, 1, 0, 0, 1);
  fake.workstationMajor = 4;
  fake.workstationMinor = 2;
  f = ComputeWindowsVersion(kQueries);
  EXPECT_EQ(1, fake.workstationAsked);
  EXPECT_EQ(0, f.build);
  EXPECT_EQ(L"Windows", f.name);
}

TEST_F(WindowsVersionRules, FailedVersionQueryLeavesZerosAndNoName) {
  fake.versionOk = false;
  const OsVersionFields f = ComputeWindowsVersion(kQueries);
  EXPECT_EQ(0, f.major);
  EXPECT_EQ(0, f.minor);
  EXPECT_EQ(0, f.build);
  EXPECT_EQ(0, f.architecture);
  EXPECT_EQ(L"", f.name);
  EXPECT_EQ(0, fake.workstationAsked);
}

TEST_F(WindowsVersionRules, NameTable) {
  struct Row {
    int major, minor, productType, architecture, serverR2;
    const wchar_t* name;
  };
  const Row rows[] = {
      {5, 0, 1, 0, 0, L"Windows 2000"},
      {5, 0, 3, 0, 0, L"Windows 2000"},
      {5, 1, 1, 0, 0, L"Windows XP"},
      {5, 1, 3, 1, 0, L"Windows XP"},
      {5, 2, 1, 1, 0, L"Windows XP"},  // XP x64 edition
      {5, 2, 1, 1, 1, L"Windows XP"},
      {5, 2, 1, 0, 0, L"Windows Server 2003"},  // a 32-bit 5.2 workstation is named as a server
      {5, 2, 1, 0, 1, L"Windows Server 2003 R2"},
      {5, 2, 3, 0, 0, L"Windows Server 2003"},
      {5, 2, 3, 1, 1, L"Windows Server 2003 R2"},
      {5, 2, 2, 1, 0, L"Windows Server 2003"},
      {6, 0, 1, 1, 0, L"Windows Vista"},
      {6, 0, 3, 1, 0, L"Windows Server 2008"},
      {6, 1, 1, 1, 0, L"Windows 7"},
      {6, 1, 2, 1, 0, L"Windows Server 2008 R2"},
      {6, 2, 1, 1, 0, L"Windows 8"},
      {6, 2, 3, 1, 0, L"Windows Server 2012"},
      {6, 3, 1, 1, 0, L"Windows 8.1"},
      {6, 3, 3, 1, 0, L"Windows Server 2012 R2"},
      {6, 4, 1, 1, 0, L"Windows 10"},
      {6, 4, 3, 1, 0, L"Windows 10"},
      {6, 5, 1, 1, 0, L""},
      {5, 3, 1, 1, 0, L""},
      {10, 0, 1, 1, 0, L""},
      {10, 0, 3, 1, 1, L""},
      {4, 0, 1, 0, 0, L""},
      {0, 0, 0, 0, 0, L""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.major << "." << row.minor << " type " << row.productType
                                    << " arch " << row.architecture << " r2 " << row.serverR2);
    fake = FakeSystem();
    fake.serverR2 = row.serverR2;
    EXPECT_EQ(std::wstring(row.name),
              WindowsReleaseName(row.major, row.minor, row.productType, row.architecture, FakeServerR2));
    // GetSystemMetrics is asked only to tell the two Server 2003 releases apart.
    const bool askR2 = row.major == 5 && row.minor == 2 && !(row.productType == 1 && row.architecture == 1);
    EXPECT_EQ(askR2 ? 1 : 0, fake.serverR2Asked);
  }
}

TEST_F(WindowsVersionRules, FiveTwoThroughTheWholeAlgorithm) {
  fake.record = Record(5, 2, 3790, 2, 0, 1);
  fake.workstationMajor = 5;
  fake.workstationMinor = 2;
  EXPECT_EQ(L"Windows XP", ComputeWindowsVersion(kQueries).name);
  fake.nativeArchitecture = 0;  // x86
  fake.serverR2 = 1;
  const OsVersionFields f = ComputeWindowsVersion(kQueries);
  EXPECT_EQ(L"Windows Server 2003 R2", f.name);
  EXPECT_EQ(2, f.servicePackMajor);
}

}  // namespace
