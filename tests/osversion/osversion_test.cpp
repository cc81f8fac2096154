// OSVersion on the running system and, for the Linux build, on fixture system roots.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "DEOSVersion.h"
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

// Wine is the oracle: the workstation service's numbers and build 0.
TEST(OSVersion, AgreesWithTheWorkstationService) {
  WKSTA_INFO_100* info = nullptr;
  if (NetWkstaGetInfo(nullptr, 100, reinterpret_cast<BYTE**>(&info)) != 0 || info == nullptr) {
    GTEST_SKIP()
        << "this Wine has no workstation service answer; the kernel32 fallback is covered by the rules";
  }
  const int major = static_cast<int>(info->wki100_ver_major);
  const int minor = static_cast<int>(info->wki100_ver_minor);
  NetApiBufferFree(info);
  const DE::OSVersion v;
  EXPECT_EQ(std::to_string(major) + "." + std::to_string(minor) + ".0", Numbers(v));
  EXPECT_EQ(DE::OSVersion::WindowsNT, v.PlatformGet());
  SYSTEM_INFO system = {};
  GetNativeSystemInfo(&system);
  EXPECT_EQ(
      system.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64 ? DE::OSVersion::X64 : DE::OSVersion::X86,
      v.ArchitectureGet());
  OSVERSIONINFOEXW record = {};
  record.dwOSVersionInfoSize = sizeof(record);
  ASSERT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&record)));
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

// A system root of made-up files, and the OSVersion read with UTIL_SYSROOT pointing at it.
struct Fixture {
  test::TempDir root;
  Fixture& Write(const char* relative, const std::string& text) {
    std::filesystem::create_directories(root.File(relative).parent_path());
    EXPECT_TRUE(test::WriteFileBytes(root.File(relative), text));
    return *this;
  }
  DE::OSVersion Read() const {
    setenv("UTIL_SYSROOT", root.Path().c_str(), 1);
    DE::OSVersion v;
    unsetenv("UTIL_SYSROOT");
    return v;
  }
};

TEST(OSVersionLinux, FixtureSystemRoot) {
  Fixture fx;
  fx.Write("proc/sys/kernel/osrelease", "6.1.5-18-amd64\n")
      .Write("proc/sys/kernel/arch", "x86_64\n")
      .Write("etc/os-release",
             "# Fixture release file\n"
             "NAME=\"Fixture OS\"\n"
             "   # an indented comment\n"
             "\n"
             "PRETTY_NAME=\"Old name\"\n"
             "PRETTY_NAME=\"Fixture D\xC3\xA9"
             "bian 12 (\\\"bookworm\\\") \\$5\"\n"
             "VERSION_ID='12'\n")
      .Write("usr/lib/os-release", "PRETTY_NAME=\"Not this one\"\n");
  const DE::OSVersion v = fx.Read();
  EXPECT_EQ("6.1.5", Numbers(v));
  EXPECT_EQ(DE::OSVersion::X64, v.ArchitectureGet());
  EXPECT_EQ(DE::OSVersion::WindowsNT, v.PlatformGet());
  EXPECT_EQ(0, v.ServicePackMajor());
  EXPECT_EQ(0, v.ServicePackMinor());
  EXPECT_EQ(L"Fixture D\u00e9bian 12 (\"bookworm\") $5", v.Name());
  EXPECT_EQ(
      "Fixture D\xC3\xA9"
      "bian 12 (\"bookworm\") $5",
      ShellPrettyName(fx.root.File("etc/os-release")));

  // Lexicographic on major, minor and then the service pack, not the build: build 5 is not 6.1 SP1.
  EXPECT_TRUE(v.Check(6));
  EXPECT_FALSE(v.Check(7));
  EXPECT_FALSE(v.Check(6, 2));
  EXPECT_TRUE(v.Check(5, 99));
  EXPECT_FALSE(v.Check(6, 1, 1));
  EXPECT_TRUE(v.Check(6, 0, 9));
}

TEST(OSVersionLinux, OsReleaseQuotingAsTheShellReadsIt) {
  for (const char* line :
       {"PRETTY_NAME='Single $quoted \\ text'\n", "PRETTY_NAME=Unquoted\n", "PRETTY_NAME=Escaped\\ space\n",
        "PRETTY_NAME=\"Joined\"' parts'\n", "PRETTY_NAME=\"Back\\\\slash and \\a kept\"\n",
        "  PRETTY_NAME=\"Indented\"  \n"}) {
    SCOPED_TRACE(line);
    Fixture fx;
    fx.Write("proc/sys/kernel/osrelease", "6.1.0\n").Write("etc/os-release", std::string("ID=x\n") + line);
    const std::string shell = ShellPrettyName(fx.root.File("etc/os-release"));
    EXPECT_EQ(std::wstring(shell.begin(), shell.end()), fx.Read().Name());
  }
  // Unlike the shell, a carriage return of a file saved with Windows line ends is not kept.
  Fixture fx;
  fx.Write("etc/os-release", "ID=x\r\nPRETTY_NAME=\"Windows line end\"\r\n");
  EXPECT_EQ(L"Windows line end", fx.Read().Name());
}

TEST(OSVersionLinux, FallbacksAndOddKernelReleases) {
  Fixture lib;  // only usr/lib/os-release: it is used
  lib.Write("proc/sys/kernel/osrelease", "5.15\n")
      .Write("proc/sys/kernel/arch", "aarch64\n")
      .Write("usr/lib/os-release", "PRETTY_NAME=\"Vendor Linux 9\"\n");
  DE::OSVersion v = lib.Read();
  EXPECT_EQ(L"Vendor Linux 9", v.Name());
  EXPECT_EQ("5.15.0", Numbers(v));
  EXPECT_EQ(DE::OSVersion::X86, v.ArchitectureGet());

  Fixture none;  // no os-release at all, and a release with no numbers
  none.Write("proc/sys/kernel/osrelease", "custom-kernel\n");
  v = none.Read();
  EXPECT_EQ(L"Linux", v.Name());
  EXPECT_EQ("0.0.0", Numbers(v));

  Fixture bare;  // etc/os-release without PRETTY_NAME wins all the same; huge numbers do not wrap
  bare.Write("proc/sys/kernel/osrelease", "99999999999999.2.3.4-rc1\n")
      .Write("etc/os-release", "NAME=Bare\n")
      .Write("usr/lib/os-release", "PRETTY_NAME=\"Not this one\"\n");
  v = bare.Read();
  EXPECT_EQ(L"Linux", v.Name());
  EXPECT_GT(v.Major(), 0);
  EXPECT_EQ(2, v.Minor());
  EXPECT_EQ(3, v.Build());
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
  // Compared when plain ASCII, where the shell's bytes and the wide name are the same characters.
  if (!pretty.empty() &&
      std::all_of(pretty.begin(), pretty.end(), [](char c) { return c >= ' ' && c <= '~'; })) {
    EXPECT_EQ(std::wstring(pretty.begin(), pretty.end()), v.Name());
  }
}

#endif

}  // namespace
