// The Windows version algorithm and name table, fed with made-up system answers.
#include <gtest/gtest.h>

#include <string>

#include "foundation/os_version_detail.h"

namespace {

using DE::detail::ComputeWindowsVersion;
using DE::detail::OsVersionFields;
using DE::detail::WindowsVersionRecord;

// The answers the fake queries give, and the letters of the queries made, in order:
// Architecture, Workstation, Kernel, R2.
struct FakeSystem {
  bool versionOk = true, workstationOk = true, kernelOk = true;
  WindowsVersionRecord record;
  int nativeArchitecture = 9, workstationMajor = 0, workstationMinor = 0, serverR2 = 0;
  std::uint32_t kernelMs = 0, kernelLs = 0;
  std::string asked;
} fake;

// Records the query and gives its answer.
template <typename T>
T Ask(char query, T answer) {
  fake.asked += query;
  return answer;
}

int FakeServerR2() { return Ask('R', fake.serverR2); }

const DE::detail::WindowsVersionQueries kQueries = {
    [](WindowsVersionRecord& r) { return fake.versionOk && (r = fake.record, true); },
    [] { return Ask('A', fake.nativeArchitecture); },
    [](int& major, int& minor) {
      major = fake.workstationMajor, minor = fake.workstationMinor;
      return Ask('W', fake.workstationOk);
    },
    [](std::uint32_t& ms, std::uint32_t& ls) {
      ms = fake.kernelMs, ls = fake.kernelLs;
      return Ask('K', fake.kernelOk);
    },
    FakeServerR2};

// major, minor, build and name of the computed fields, in one comparable text.
std::wstring Summary(const OsVersionFields& f) {
  return std::to_wstring(f.major) + L"." + std::to_wstring(f.minor) + L"." + std::to_wstring(f.build) + L" " +
         f.name;
}

class WindowsVersionRules : public ::testing::Test {
 protected:
  void SetUp() override { fake = FakeSystem(); }
  // Runs the algorithm afresh, recording only this run's queries.
  static OsVersionFields Compute() {
    fake.asked.clear();
    return ComputeWindowsVersion(kQueries);
  }
};

TEST_F(WindowsVersionRules, UnshimmedNumbers) {
  // A shimmed GetVersionExW says 6.2; the workstation service knows it is 10.0 (and has no build).
  fake.record = {6, 2, 9200, 0, 0, 1};
  fake.workstationMajor = 10;
  fake.kernelMs = 0x000A0000;
  fake.kernelLs = 0x4A650001;
  const OsVersionFields f = Compute();
  EXPECT_EQ(L"10.0.0 Windows", Summary(f));
  EXPECT_EQ(1, f.architecture);
  EXPECT_EQ(0, f.platform);
  EXPECT_EQ("AW", fake.asked);

  // The service failing: kernel32's resource, whatever the failed call left behind.
  fake.workstationOk = false;
  fake.workstationMajor = 77;
  EXPECT_EQ(L"10.0.19045 Windows", Summary(Compute()));
  EXPECT_EQ("AWK", fake.asked);
  // Both failing zero the numbers; the name stays "Windows".
  fake.kernelOk = false;
  EXPECT_EQ(L"0.0.0 Windows", Summary(Compute()));
}

TEST_F(WindowsVersionRules, ServicePackAndProductTypeComeFromTheVersionRecord) {
  fake.record = {6, 1, 7601, 1, 2, 3};  // Server 2008 R2 SP1
  fake.workstationMajor = 6;
  fake.workstationMinor = 1;
  const OsVersionFields f = Compute();
  EXPECT_EQ(L"6.1.0 Windows Server 2008 R2", Summary(f));
  EXPECT_EQ(1, f.servicePackMajor);
  EXPECT_EQ(2, f.servicePackMinor);
  fake.record.productType = 1;
  EXPECT_EQ(L"Windows 7", Compute().name);

  // 5.2 through the whole algorithm: the architecture and SM_SERVERR2 reach the name.
  fake.record = {5, 2, 3790, 2, 0, 1};
  fake.workstationMajor = 5;
  fake.workstationMinor = 2;
  fake.nativeArchitecture = 0;
  fake.serverR2 = 1;
  EXPECT_EQ(L"Windows Server 2003 R2", Compute().name);
  EXPECT_EQ("AWR", fake.asked);
}

TEST_F(WindowsVersionRules, OlderReleasesAndFailures) {
  // XP SP3: no unshimmed query, the record's build stays; the architecture is asked from 5.1 on.
  fake.record = {5, 1, 2600, 3, 0, 1};
  fake.nativeArchitecture = 0;
  EXPECT_EQ(L"5.1.2600 Windows XP", Summary(Compute()));
  EXPECT_EQ("A", fake.asked);
  // 2000: the native architecture is not asked at all.
  fake.record = {5, 0, 2195, 4, 0, 1};
  EXPECT_EQ(L"5.0.2195 Windows 2000", Summary(Compute()));
  EXPECT_EQ("", fake.asked);
  // The unshimmed query runs for any minor of 2 or more, even below major 5.
  fake.record = {4, 2, 1, 0, 0, 1};
  fake.workstationMajor = 4;
  fake.workstationMinor = 2;
  EXPECT_EQ(L"4.2.0 Windows", Summary(Compute()));
  EXPECT_EQ("W", fake.asked);
  // GetVersionExW failing: zeros, no name, nothing else asked.
  fake.versionOk = false;
  const OsVersionFields f = Compute();
  EXPECT_EQ(L"0.0.0 ", Summary(f));
  EXPECT_EQ(0, f.architecture);
  EXPECT_EQ("", fake.asked);
}

TEST_F(WindowsVersionRules, NameTable) {
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
