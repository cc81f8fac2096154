// OSVersion on the running system and, for the Linux build, on fixture system roots.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include "DEOSVersion.h"
#include "DEString.h"
#include "common/child_process.h"
#include "common/platform_info.h"
#include "common/temp_dir.h"

#if defined(_WIN32)
#include "UtilPlatform.h"

#include <lm.h>
#endif

namespace {

// "major.minor.build", so the three numbers are checked in one comparison.
std::string Numbers(const DE::OSVersion& v) {
  return std::to_string(v.Major()) + "." + std::to_string(v.Minor()) + "." + std::to_string(v.Build());
}

#if defined(_WIN32)

// Wine is the oracle: the workstation service's numbers and build 0, the native architecture,
// GetVersionExW's service pack.
TEST(OSVersion, AgreesWithTheWorkstationService) {
  WKSTA_INFO_100* info = nullptr;
  if (NetWkstaGetInfo(nullptr, 100, reinterpret_cast<BYTE**>(&info)) != 0 || info == nullptr) {
    GTEST_SKIP()
        << "this Wine has no workstation service answer; the kernel32 fallback is covered by the rules";
  }
  const std::string numbers =
      std::to_string(info->wki100_ver_major) + "." + std::to_string(info->wki100_ver_minor) + ".0";
  NetApiBufferFree(info);
  SYSTEM_INFO system = {};
  GetNativeSystemInfo(&system);
  OSVERSIONINFOEXW record = {};
  record.dwOSVersionInfoSize = sizeof(record);
  ASSERT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&record)));
  const DE::OSVersion v;
  EXPECT_EQ(numbers, Numbers(v));
  EXPECT_EQ(DE::OSVersion::WindowsNT, v.PlatformGet());
  EXPECT_EQ(
      system.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64 ? DE::OSVersion::X64 : DE::OSVersion::X86,
      v.ArchitectureGet());
  EXPECT_EQ(static_cast<int>(record.wServicePackMajor), v.ServicePackMajor());
  EXPECT_EQ(static_cast<int>(record.wServicePackMinor), v.ServicePackMinor());
}

// Child: major * 100 + minor, plus 10000 unless the build is 0 and the name is "Windows".
TEST_CHILD_MAIN(osversion_report) {
  const DE::OSVersion v;
  const int numbers = v.Major() * 100 + v.Minor();
  return v.Build() == 0 && v.Name() == L"Windows" ? numbers : 10000 + numbers;
}

// Wine reports the release chosen per program (AppDefaults\<exe>\Version): 10.0, build 0, "Windows".
TEST(OSVersion, WindowsTenUnderWine) {
  if (!test::RunningUnderWine()) {
    GTEST_SKIP() << "not running under Wine; the release cannot be chosen per program";
  }
  wchar_t self[MAX_PATH] = {};
  ASSERT_NE(0u, GetModuleFileNameW(nullptr, self, MAX_PATH));
  const std::wstring key =
      L"Software\\Wine\\AppDefaults\\" + std::filesystem::path(self).filename().wstring();
  HKEY handle = nullptr;
  ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_SET_VALUE,
                                           nullptr, &handle, nullptr));
  const wchar_t version[] = L"win10";
  RegSetValueExW(handle, L"Version", 0, REG_SZ, reinterpret_cast<const BYTE*>(version), sizeof(version));
  RegCloseKey(handle);
  const int result = test::RunSelf({"osversion_report"}, 60000);
  RegDeleteKeyW(HKEY_CURRENT_USER, key.c_str());
  EXPECT_EQ(1000, result);
}

#else

std::string CommandOutput(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return "<no shell>";
  std::string out;
  char buffer[256];
  std::size_t n;
  while ((n = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0) out.append(buffer, n);
  pclose(pipe);
  return out;
}

// What the shell makes of PRETTY_NAME when it sources the file, as os-release is meant to be read.
std::string ShellPrettyName(const std::filesystem::path& file) {
  return CommandOutput("sh -c '. \"$0\" && printf %s \"$PRETTY_NAME\"' '" + file.string() + "'");
}

// Writes the files given (null: absent) under a fresh system root and reads the OSVersion there.
DE::OSVersion ReadRoot(const test::TempDir& root, const char* release, const char* etc,
                       const char* lib = nullptr, const char* arch = "x86_64\n") {
  const std::pair<const char*, const char*> files[] = {{"proc/sys/kernel/osrelease", release},
                                                       {"proc/sys/kernel/arch", arch},
                                                       {"etc/os-release", etc},
                                                       {"usr/lib/os-release", lib}};
  for (const auto& file : files) {
    if (file.second == nullptr) continue;
    std::filesystem::create_directories(root.File(file.first).parent_path());
    EXPECT_TRUE(test::WriteFileBytes(root.File(file.first), file.second));
  }
  setenv("UTIL_SYSROOT", root.Path().c_str(), 1);
  DE::OSVersion v;
  unsetenv("UTIL_SYSROOT");
  return v;
}

TEST(OSVersionLinux, FixtureSystemRoots) {
  struct Row {
    const char *release, *arch, *etc, *lib, *numbers;
    DE::OSVersion::Architecture architecture;
    const wchar_t* name;
  };
  const Row rows[] = {
      // Comments, blank lines and an earlier assignment are passed over; etc/ wins over usr/lib/.
      {"6.1.5-18-amd64\n", "x86_64\n",
       "# Fixture\nNAME=\"Fixture OS\"\n   # indented\n\nPRETTY_NAME=\"Old\"\nPRETTY_NAME=\"D\xC3\xA9"
       "bian 12\"\nID=12\n",
       "PRETTY_NAME=\"Not this one\"\n", "6.1.5", DE::OSVersion::X64, L"D\u00e9bian 12"},
      {"5.15\n", "aarch64\n", nullptr, "PRETTY_NAME=\"Vendor Linux 9\"\n", "5.15.0", DE::OSVersion::X86,
       L"Vendor Linux 9"},
      // No os-release and a release without numbers; etc/os-release without PRETTY_NAME still wins.
      {"custom-kernel\n", "x86_64\n", nullptr, nullptr, "0.0.0", DE::OSVersion::X64, L"Linux"},
      {"4.19.3.4-rc1\n", "i686\n", "NAME=Bare\n", "PRETTY_NAME=No\n", "4.19.3", DE::OSVersion::X86,
       L"Linux"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.release);
    test::TempDir root;
    const DE::OSVersion v = ReadRoot(root, row.release, row.etc, row.lib, row.arch);
    EXPECT_EQ(row.numbers, Numbers(v));
    EXPECT_EQ(row.architecture, v.ArchitectureGet());
    EXPECT_EQ(row.name, v.Name());
    EXPECT_EQ(DE::OSVersion::WindowsNT, v.PlatformGet());
    EXPECT_EQ(0, v.ServicePackMajor());
    EXPECT_EQ(0, v.ServicePackMinor());
  }

  // Lexicographic on major, minor and then the service pack, not the build: 6.1.5 is not 6.1 SP1.
  test::TempDir root;
  const DE::OSVersion v = ReadRoot(root, "6.1.5\n", nullptr);
  EXPECT_TRUE(v.Check(6));
  EXPECT_FALSE(v.Check(7));
  EXPECT_FALSE(v.Check(6, 2));
  EXPECT_TRUE(v.Check(5, 99));
  EXPECT_FALSE(v.Check(6, 1, 1));
  EXPECT_TRUE(v.Check(6, 0, 9));
  // A huge number does not wrap.
  test::TempDir huge;
  const DE::OSVersion big = ReadRoot(huge, "99999999999999.2.3\n", nullptr);
  EXPECT_GT(big.Major(), 0);
  EXPECT_EQ(2, big.Minor());
  EXPECT_EQ(3, big.Build());
}

TEST(OSVersionLinux, OsReleaseQuotingAsTheShellReadsIt) {
  for (const char* line :
       {"PRETTY_NAME=\"D\xC3\xA9"
        "bian (\\\"bookworm\\\") \\$5\"\n",
        "PRETTY_NAME='Single $quoted \\ text'\n", "PRETTY_NAME=Unquoted\n", "PRETTY_NAME=Escaped\\ space\n",
        "PRETTY_NAME=\"Joined\"' parts'\n", "PRETTY_NAME=\"Back\\\\slash and \\a kept\"\n",
        "  PRETTY_NAME=\"Indented\"  \n"}) {
    SCOPED_TRACE(line);
    test::TempDir root;
    const DE::OSVersion v = ReadRoot(root, "6.1.0\n", (std::string("ID=x\n") + line).c_str());
    const std::string shell = ShellPrettyName(root.File("etc/os-release"));
    EXPECT_EQ(DE::UTF8ToUnicode(shell), v.Name());
  }
  // Unlike the shell, a carriage return of a file saved with Windows line ends is not kept.
  test::TempDir root;
  EXPECT_EQ(L"Windows line end",
            ReadRoot(root, "6.1.0\n", "ID=x\r\nPRETTY_NAME=\"Windows line end\"\r\n").Name());
}

TEST(OSVersionLinux, RunningSystemMatchesUnameAndOsRelease) {
  if (std::getenv("UTIL_SYSROOT") != nullptr) GTEST_SKIP() << "UTIL_SYSROOT is set for this run";
  const std::string release = CommandOutput("uname -r");
  ASSERT_FALSE(release.empty());
  int n[3] = {0, 0, 0};
  std::sscanf(release.c_str(), "%d.%d.%d", &n[0], &n[1], &n[2]);
  const DE::OSVersion v;
  EXPECT_EQ(std::to_string(n[0]) + "." + std::to_string(n[1]) + "." + std::to_string(n[2]), Numbers(v));
  EXPECT_EQ(CommandOutput("uname -m") == "x86_64\n" ? DE::OSVersion::X64 : DE::OSVersion::X86,
            v.ArchitectureGet());
  const std::filesystem::path file =
      std::filesystem::exists("/etc/os-release") ? "/etc/os-release" : "/usr/lib/os-release";
  const std::string pretty = std::filesystem::exists(file) ? ShellPrettyName(file) : "";
  EXPECT_EQ(pretty.empty() ? L"Linux" : DE::UTF8ToUnicode(pretty), v.Name());
}

#endif

}  // namespace
