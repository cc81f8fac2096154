// OSVersion on the running system and, for the Linux build, on fixture system roots.
#include <gtest/gtest.h>

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
#endif

namespace {

// Every comparison is measured against the object's own numbers, so it holds on any system.
void ExpectChecksAgree(const DE::OSVersion& v) {
  const int major = v.Major();
  const int minor = v.Minor();
  const int sp = v.ServicePackMajor();
  EXPECT_TRUE(v.Check(major));
  EXPECT_TRUE(v.Check(major - 1));
  EXPECT_FALSE(v.Check(major + 1));
  EXPECT_TRUE(v.Check(major, minor));
  EXPECT_FALSE(v.Check(major, minor + 1));
  EXPECT_TRUE(v.Check(major - 1, minor + 100));  // a higher major wins whatever the minor
  EXPECT_FALSE(v.Check(major + 1, minor - 100));
  EXPECT_TRUE(v.Check(major, minor, sp));
  EXPECT_FALSE(v.Check(major, minor, sp + 1));
  EXPECT_TRUE(v.Check(major, minor - 1, sp + 100));
  EXPECT_FALSE(v.Check(major, minor + 1, sp - 100));
  EXPECT_FALSE(v.Check(major + 1, 0, 0));
}

TEST(OSVersion, CopiesAndComparisonsOfTheRunningSystem) {
  const DE::OSVersion v;
  EXPECT_GT(v.Major(), 0);
  EXPECT_FALSE(v.Name().empty());
  EXPECT_EQ(DE::OSVersion::WindowsNT, v.PlatformGet());
  ExpectChecksAgree(v);

  DE::OSVersion copy(v);
  DE::OSVersion assigned;
  assigned = copy;
  for (const DE::OSVersion* c : {&copy, &assigned}) {
    EXPECT_EQ(v.ArchitectureGet(), c->ArchitectureGet());
    EXPECT_EQ(v.Build(), c->Build());
    EXPECT_EQ(v.Major(), c->Major());
    EXPECT_EQ(v.Minor(), c->Minor());
    EXPECT_EQ(v.Name(), c->Name());
    EXPECT_EQ(v.PlatformGet(), c->PlatformGet());
    EXPECT_EQ(v.ServicePackMajor(), c->ServicePackMajor());
    EXPECT_EQ(v.ServicePackMinor(), c->ServicePackMinor());
  }
}

#if defined(_WIN32)

// Wine is the oracle: the workstation service's numbers, build 0, and the name the table gives.
TEST(OSVersion, AgreesWithTheWorkstationService) {
  struct WkstaInfo100 {
    DWORD platformId;
    wchar_t* computerName;
    wchar_t* langroup;
    DWORD verMajor;
    DWORD verMinor;
  };
  using GetInfo = DWORD(WINAPI*)(wchar_t*, DWORD, BYTE**);
  using FreeBuffer = DWORD(WINAPI*)(void*);
  HMODULE netapi = LoadLibraryW(L"netapi32.dll");
  ASSERT_NE(nullptr, netapi);
  auto getInfo =
      reinterpret_cast<GetInfo>(reinterpret_cast<void*>(GetProcAddress(netapi, "NetWkstaGetInfo")));
  auto freeBuffer =
      reinterpret_cast<FreeBuffer>(reinterpret_cast<void*>(GetProcAddress(netapi, "NetApiBufferFree")));
  ASSERT_NE(nullptr, getInfo);
  BYTE* buffer = nullptr;
  if (getInfo(nullptr, 100, &buffer) != 0 || buffer == nullptr) {
    FreeLibrary(netapi);
    GTEST_SKIP()
        << "this Wine has no workstation service answer; the kernel32 fallback is covered by the rules test";
  }
  const WkstaInfo100* info = reinterpret_cast<const WkstaInfo100*>(buffer);
  const int major = static_cast<int>(info->verMajor);
  const int minor = static_cast<int>(info->verMinor);
  freeBuffer(buffer);
  FreeLibrary(netapi);

  const DE::OSVersion v;
  EXPECT_EQ(major, v.Major());
  EXPECT_EQ(minor, v.Minor());
  EXPECT_EQ(0, v.Build());
  if (major >= 10) {
    EXPECT_EQ(L"Windows", v.Name());
  }

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

// Child: the version this process sees, as major * 100 + minor, plus 10000 unless the build is 0
// and the name is "Windows".
TEST_CHILD_MAIN(osversion_report) {
  const DE::OSVersion v;
  const int numbers = v.Major() * 100 + v.Minor();
  return v.Build() == 0 && v.Name() == L"Windows" ? numbers : 10000 + numbers;
}

// Wine chooses the Windows release it reports per program (AppDefaults\<exe>\Version). Run as
// "win10", this program (whose manifest declares Windows 10 support) sees the workstation service
// answer 10.0, which comes out as build 0 and the plain name "Windows".
TEST(OSVersion, WindowsTenUnderWine) {
  HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  if (ntdll == nullptr || GetProcAddress(ntdll, "wine_get_version") == nullptr) {
    GTEST_SKIP() << "not running under Wine; the release cannot be chosen per program";
  }
  wchar_t self[MAX_PATH] = {};
  ASSERT_NE(0u, GetModuleFileNameW(nullptr, self, MAX_PATH));
  const std::wstring exe = std::filesystem::path(self).filename().wstring();
  const std::wstring key = L"Software\\Wine\\AppDefaults\\" + exe;
  HKEY handle = nullptr;
  ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_SET_VALUE,
                                           nullptr, &handle, nullptr));
  const wchar_t version[] = L"win10";
  RegSetValueExW(handle, L"Version", 0, REG_SZ, reinterpret_cast<const BYTE*>(version), sizeof(version));
  RegCloseKey(handle);
  const int result = test::RunSelf({"osversion_report"}, 60000);
  RegDeleteKeyW(HKEY_CURRENT_USER, key.c_str());
  // 10.0 from the workstation service, build 0, named just "Windows".
  EXPECT_EQ(1000, result);
}

#else

// Points UTIL_SYSROOT at a folder while the object lives.
class SystemRoot {
 public:
  explicit SystemRoot(const std::filesystem::path& root) {
    const char* old = std::getenv("UTIL_SYSROOT");
    hadOld_ = old != nullptr;
    if (hadOld_) old_ = old;
    setenv("UTIL_SYSROOT", root.c_str(), 1);
  }
  ~SystemRoot() {
    if (hadOld_) {
      setenv("UTIL_SYSROOT", old_.c_str(), 1);
    } else {
      unsetenv("UTIL_SYSROOT");
    }
  }

 private:
  bool hadOld_ = false;
  std::string old_;
};

void WriteText(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  ASSERT_TRUE(test::WriteFileBytes(path, text));
}

// What the shell makes of PRETTY_NAME when it sources the file, as os-release is meant to be read.
std::string ShellPrettyName(const std::filesystem::path& file) {
  const std::string command = "sh -c '. \"$0\" && printf %s \"$PRETTY_NAME\"' '" + file.string() + "'";
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return "<no shell>";
  std::string out;
  char buffer[256];
  std::size_t n;
  while ((n = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0) out.append(buffer, n);
  pclose(pipe);
  return out;
}

std::string CommandOutput(const char* command) {
  FILE* pipe = popen(command, "r");
  if (pipe == nullptr) return std::string();
  std::string out;
  char buffer[256];
  while (std::fgets(buffer, sizeof(buffer), pipe) != nullptr) out += buffer;
  pclose(pipe);
  while (!out.empty() && (out.back() == '\n' || out.back() == '\r')) out.pop_back();
  return out;
}

TEST(OSVersionLinux, FixtureSystemRoot) {
  test::TempDir root;
  WriteText(root.File("proc/sys/kernel/osrelease"), "6.1.5-18-amd64\n");
  WriteText(root.File("proc/sys/kernel/arch"), "x86_64\n");
  const std::string osRelease =
      "# Fixture release file\n"
      "NAME=\"Fixture OS\"\n"
      "   # an indented comment\n"
      "\n"
      "PRETTY_NAME=\"Old name\"\n"
      "PRETTY_NAME=\"Fixture D\xC3\xA9"
      "bian 12 (\\\"bookworm\\\") \\$5\"\n"
      "VERSION_ID='12'\n"
      "ID=fixture\n";
  WriteText(root.File("etc/os-release"), osRelease);
  WriteText(root.File("usr/lib/os-release"), "PRETTY_NAME=\"Not this one\"\n");

  SystemRoot sysroot(root.Path());
  const DE::OSVersion v;
  EXPECT_EQ(6, v.Major());
  EXPECT_EQ(1, v.Minor());
  EXPECT_EQ(5, v.Build());
  EXPECT_EQ(DE::OSVersion::X64, v.ArchitectureGet());
  EXPECT_EQ(DE::OSVersion::WindowsNT, v.PlatformGet());
  EXPECT_EQ(0, v.ServicePackMajor());
  EXPECT_EQ(0, v.ServicePackMinor());
  EXPECT_EQ(L"Fixture D\u00e9bian 12 (\"bookworm\") $5", v.Name());
  EXPECT_EQ(
      "Fixture D\xC3\xA9"
      "bian 12 (\"bookworm\") $5",
      ShellPrettyName(root.File("etc/os-release")));

  // The third number is the service pack, not the build: build 5 does not make it 6.1 SP1.
  EXPECT_TRUE(v.Check(6, 1, 0));
  EXPECT_FALSE(v.Check(6, 1, 1));
  EXPECT_TRUE(v.Check(6, 0, 9));
  EXPECT_FALSE(v.Check(6, 2, 0));
  EXPECT_TRUE(v.Check(5, 99, 99));
  EXPECT_TRUE(v.Check(6, 1));
  EXPECT_FALSE(v.Check(6, 2));
  EXPECT_FALSE(v.Check(7));
  ExpectChecksAgree(v);
}

TEST(OSVersionLinux, OsReleaseQuotingAsTheShellReadsIt) {
  const char* const lines[] = {
      "PRETTY_NAME='Single $quoted \\ text'\n",
      "PRETTY_NAME=Unquoted\n",
      "PRETTY_NAME=Escaped\\ space\n",
      "PRETTY_NAME=\"Joined\"' parts'\n",
      "PRETTY_NAME=\"Back\\\\slash and \\a kept\"\n",
      "  PRETTY_NAME=\"Indented\"  \n",
  };
  for (const char* line : lines) {
    SCOPED_TRACE(line);
    test::TempDir root;
    WriteText(root.File("proc/sys/kernel/osrelease"), "6.1.0\n");
    WriteText(root.File("etc/os-release"), std::string("ID=x\n") + line);
    const std::string shell = ShellPrettyName(root.File("etc/os-release"));
    SystemRoot sysroot(root.Path());
    const std::wstring name = DE::OSVersion().Name();
    EXPECT_EQ(std::wstring(shell.begin(), shell.end()), name);
  }
  // Unlike the shell, a carriage return of a file saved with Windows line ends is not kept.
  test::TempDir root;
  WriteText(root.File("etc/os-release"), "ID=x\r\nPRETTY_NAME=\"Windows line end\"\r\n");
  SystemRoot sysroot(root.Path());
  EXPECT_EQ(L"Windows line end", DE::OSVersion().Name());
}

TEST(OSVersionLinux, FallbacksAndOddKernelReleases) {
  {
    // Only usr/lib/os-release: it is used.
    test::TempDir root;
    WriteText(root.File("proc/sys/kernel/osrelease"), "5.15\n");
    WriteText(root.File("proc/sys/kernel/arch"), "aarch64\n");
    WriteText(root.File("usr/lib/os-release"), "PRETTY_NAME=\"Vendor Linux 9\"\n");
    SystemRoot sysroot(root.Path());
    const DE::OSVersion v;
    EXPECT_EQ(L"Vendor Linux 9", v.Name());
    EXPECT_EQ(5, v.Major());
    EXPECT_EQ(15, v.Minor());
    EXPECT_EQ(0, v.Build());
    EXPECT_EQ(DE::OSVersion::X86, v.ArchitectureGet());
  }
  {
    // No os-release at all, and a release with no numbers.
    test::TempDir root;
    WriteText(root.File("proc/sys/kernel/osrelease"), "custom-kernel\n");
    WriteText(root.File("proc/sys/kernel/arch"), "x86_64\n");
    SystemRoot sysroot(root.Path());
    const DE::OSVersion v;
    EXPECT_EQ(L"Linux", v.Name());
    EXPECT_EQ(0, v.Major());
    EXPECT_EQ(0, v.Minor());
    EXPECT_EQ(0, v.Build());
  }
  {
    // etc/os-release without PRETTY_NAME takes precedence all the same; huge numbers do not wrap.
    test::TempDir root;
    WriteText(root.File("proc/sys/kernel/osrelease"), "99999999999999.2.3.4-rc1\n");
    WriteText(root.File("etc/os-release"), "NAME=Bare\n");
    WriteText(root.File("usr/lib/os-release"), "PRETTY_NAME=\"Not this one\"\n");
    SystemRoot sysroot(root.Path());
    const DE::OSVersion v;
    EXPECT_EQ(L"Linux", v.Name());
    EXPECT_GT(v.Major(), 0);
    EXPECT_EQ(2, v.Minor());
    EXPECT_EQ(3, v.Build());
  }
}

TEST(OSVersionLinux, RunningSystemMatchesUnameAndOsRelease) {
  if (std::getenv("UTIL_SYSROOT") != nullptr) GTEST_SKIP() << "UTIL_SYSROOT is set for this run";
  const std::string release = CommandOutput("uname -r");
  const std::string machine = CommandOutput("uname -m");
  ASSERT_FALSE(release.empty());
  int numbers[3] = {0, 0, 0};
  std::sscanf(release.c_str(), "%d.%d.%d", &numbers[0], &numbers[1], &numbers[2]);
  const DE::OSVersion v;
  EXPECT_EQ(numbers[0], v.Major());
  EXPECT_EQ(numbers[1], v.Minor());
  EXPECT_EQ(numbers[2], v.Build());
  EXPECT_EQ(machine == "x86_64" ? DE::OSVersion::X64 : DE::OSVersion::X86, v.ArchitectureGet());
  const std::filesystem::path file =
      std::filesystem::exists("/etc/os-release") ? "/etc/os-release" : "/usr/lib/os-release";
  if (std::filesystem::exists(file)) {
    const std::string pretty = ShellPrettyName(file);
    if (!pretty.empty() &&
        pretty.find_first_not_of(" !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
                                 "abcdefghijklmnopqrstuvwxyz{|}~") == std::string::npos) {
      EXPECT_EQ(std::wstring(pretty.begin(), pretty.end()), v.Name());
    }
  }
}

#endif

}  // namespace
