// The process and token helpers: command lines (exit codes, output, time-out kill), the process
// list, privileges, elevation and the OS word size.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

#include "DEString.h"
#include "DESystem.h"
#include "common/child_process.h"
#include "common/platform_info.h"
#include "common/temp_dir.h"

#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace {

constexpr DWORD kLongWait = 60000;

std::wstring SelfPath() {
#if defined(_WIN32)
  wchar_t path[MAX_PATH * 4];
  return std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH * 4));
#else
  return DE::StringProc::StringToWStringByUTF8(std::filesystem::read_symlink("/proc/self/exe").string());
#endif
}

// This binary as a command line running a child routine.
std::wstring SelfCommand(const std::wstring& routineAndArguments) {
  return L"\"" + SelfPath() + L"\" --util-child=" + routineAndArguments;
}

// Writes a line to stderr, then args[0] bytes 'x' to stdout, and exits with args[1].
TEST_CHILD_MAIN(write_exit) {
  std::fputs("to stderr\n", stderr);
  const std::string bytes(std::stoul(args.at(0)), 'x');
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);
  return std::stoi(args.at(1));
}

// Creates the file args[1] after args[0] milliseconds.
TEST_CHILD_MAIN(touch_later) {
  std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(args.at(0))));
  std::ofstream(args.at(1)).put('\n');
  return 0;
}

// As an ordinary user: exit 0 when SetTokenPrivilege refuses with 1314 and IsRunasAdmin is false.
TEST_CHILD_MAIN(unprivileged) {
  DWORD error = 0;
  const bool set = DE::SetTokenPrivilege(L"SeShutdownPrivilege", true, &error);
  return !set && error == 1314 && !DE::IsRunasAdmin() ? 0 : 1;
}

TEST(ExcuteCmdLine, ExitCodesOutputAndRefusals) {
  EXPECT_TRUE(DE::ExcuteCmdLine(SelfCommand(L"write_exit 0 7"), kLongWait));  // no out-parameters

  // More than a pipe holds must neither block nor lose bytes; stderr is captured too. No time-out.
  const long kBytes = 1 << 20;
  std::string output = "kept|";
  DWORD code = 999;
  EXPECT_TRUE(DE::ExcuteCmdLine(SelfCommand(L"write_exit " + std::to_wstring(kBytes) + L" 255"), 0xFFFFFFFF,
                                &code, &output));
  EXPECT_EQ(255u, code);
  EXPECT_EQ(0u, output.find("kept|"));  // appended, not replaced
  EXPECT_NE(std::string::npos, output.find("to stderr"));
  EXPECT_NE(std::string::npos, output.find(std::string(kBytes, 'x')));  // all the bytes, in one run
  EXPECT_EQ(std::string::npos, output.find(std::string(kBytes + 1, 'x')));

  // Nothing to run leaves the code untouched; Windows refuses a missing program, the Linux shell
  // reports it as 127.
  code = 1234;
  EXPECT_FALSE(DE::ExcuteCmdLine(L"", kLongWait, &code, &output));
  EXPECT_EQ(1234u, code);
  EXPECT_EQ(!test::IsWindowsBuild(), DE::ExcuteCmdLine(L"/no/such/program", kLongWait, &code));
  EXPECT_EQ(test::IsWindowsBuild() ? 1234u : 127u, code);
}

TEST(ExcuteCmdLine, TimeOutKillsTheCommandAndWhatItStarted) {
  test::TempDir dir;
  const std::filesystem::path late = dir.File("late");
  const std::wstring child =
      SelfCommand(L"touch_later 3000 \"" + DE::StringProc::StringToWStringByUTF8(late.string()) + L"\"");
  // Under the platform's shell, which stays its parent: a grandchild of ExcuteCmdLine.
  const std::wstring command =
      test::IsWindowsBuild() ? L"cmd.exe /c \"" + child + L"\"" : child + L"; exit 0";
  DWORD code = 0;
  EXPECT_FALSE(DE::ExcuteCmdLine(command, 300, &code));
  EXPECT_EQ(258u, code);  // WAIT_TIMEOUT
  // Had the grandchild survived, it would create the file three seconds after its start.
  std::this_thread::sleep_for(std::chrono::seconds(6));
  EXPECT_FALSE(std::filesystem::exists(late));
}

TEST(GetProcessList, HoldsThisProcessByItsFileName) {
#if defined(_WIN32)
  const DWORD self = GetCurrentProcessId();
#else
  const DWORD self = static_cast<DWORD>(getpid());
#endif
  std::map<DWORD, std::wstring> processes = {{0xFFFFFFF0u, L"stale"}};
  ASSERT_TRUE(DE::GetProcessList(processes));
  EXPECT_EQ(0u, processes.count(0xFFFFFFF0u));  // the map is cleared first
  EXPECT_EQ(std::filesystem::path(SelfPath()).filename().wstring(), processes[self]);
}

TEST(SetTokenPrivilege, KnownUnknownAndMissingNames) {
  DWORD error = 0;
  EXPECT_FALSE(DE::SetTokenPrivilege(L"SeNoSuchPrivilege", true, &error));
  EXPECT_EQ(1313u, error);  // ERROR_NO_SUCH_PRIVILEGE
  EXPECT_FALSE(DE::SetTokenPrivilege(nullptr, true, &error));
  EXPECT_EQ(87u, error);
  // Every Windows token holds SeChangeNotifyPrivilege; on Linux only root holds privileges.
  const bool held = test::IsWindowsBuild() || DE::IsRunasAdmin();
  EXPECT_EQ(held, DE::SetTokenPrivilege(L"sechangenotifyprivilege", true, &error));  // any case
  EXPECT_EQ(held ? 0u : 1314u, error);
}

TEST(IsRunasAdmin, AgreesWithThePlatform) {
#if defined(_WIN32)
  // Independent oracle: the token's elevation flag.
  HANDLE token = nullptr;
  ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
  TOKEN_ELEVATION elevation = {};
  DWORD size = 0;
  ASSERT_TRUE(GetTokenInformation(token, TokenElevation, &elevation, sizeof(elevation), &size));
  CloseHandle(token);
  EXPECT_EQ(elevation.TokenIsElevated != 0, DE::IsRunasAdmin());
#else
  EXPECT_EQ(geteuid() == 0, DE::IsRunasAdmin());
  if (geteuid() != 0) return;
  if (access("/usr/bin/setpriv", X_OK) != 0) GTEST_SKIP() << "setpriv (util-linux) is not installed";
  DWORD code = 999;
  std::string output;
  EXPECT_TRUE(
      DE::ExcuteCmdLine(L"setpriv --reuid=4242 --regid=4242 --clear-groups " + SelfCommand(L"unprivileged"),
                        kLongWait, &code, &output));
  EXPECT_EQ(0u, code) << output;
#endif
}

TEST(IsWin64OS, MatchesTheMachine) {
  std::string bits = test::IsWindowsBuild() ? "64" : "";  // a 64-bit Windows build needs a 64-bit system
  if (bits.empty()) {
    ASSERT_TRUE(DE::ExcuteCmdLine(L"getconf LONG_BIT", kLongWait, nullptr, &bits));
  }
  EXPECT_EQ(bits.compare(0, 2, "64") == 0, DE::IsWin64OS()) << bits;
}

}  // namespace
