// The process and token helpers: command lines (exit codes, output, time-out kill), the process
// list, privileges, elevation and the OS word size.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>

#include "DEString.h"
#include "DESystem.h"
#include "UtilPlatform.h"
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
  const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH * 4);
  return std::wstring(path, length);
#else
  return DE::StringProc::StringToWStringByUTF8(std::filesystem::read_symlink("/proc/self/exe").string());
#endif
}

DWORD SelfPid() {
#if defined(_WIN32)
  return GetCurrentProcessId();
#else
  return static_cast<DWORD>(getpid());
#endif
}

// This binary as a command line running one of the child routines below.
std::wstring SelfCommand(const std::wstring& routineAndArguments) {
  return L"\"" + SelfPath() + L"\" --util-child=" + routineAndArguments;
}

// The command under the platform's shell, which stays its parent: a grandchild of ExcuteCmdLine.
std::wstring UnderShell(const std::wstring& command) {
  return test::IsWindowsBuild() ? L"cmd.exe /c \"" + command + L"\"" : command + L"; exit 0";
}

TEST_CHILD_MAIN(exit_with) { return std::stoi(args.at(0)); }

TEST_CHILD_MAIN(print_both) {
  std::fputs("to stdout\n", stdout);
  std::fflush(stdout);
  std::fputs("to stderr\n", stderr);
  return 5;
}

// Writes `count` bytes 'x' to stdout: more than any pipe buffer holds.
TEST_CHILD_MAIN(chatty) {
  const std::string chunk(4096, 'x');
  for (long left = std::stol(args.at(0)); left > 0; left -= static_cast<long>(chunk.size())) {
    std::fwrite(chunk.data(), 1, left < 4096 ? static_cast<std::size_t>(left) : chunk.size(), stdout);
  }
  return 0;
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

TEST(ExcuteCmdLine, ReportsExitCodes) {
  for (DWORD expected : {0u, 3u, 255u}) {
    DWORD code = 999;
    EXPECT_TRUE(DE::ExcuteCmdLine(SelfCommand(L"exit_with " + std::to_wstring(expected)), kLongWait, &code));
    EXPECT_EQ(expected, code);
  }
  DWORD code = 999;
  EXPECT_TRUE(DE::ExcuteCmdLine(SelfCommand(L"exit_with 7"), 0xFFFFFFFF, &code));  // no time limit
  EXPECT_EQ(7u, code);
  EXPECT_TRUE(DE::ExcuteCmdLine(SelfCommand(L"exit_with 7"), kLongWait));  // no out-parameters
  EXPECT_TRUE(DE::ExcuteCmdLine(UnderShell(SelfCommand(L"exit_with 0")), kLongWait, &code));
  EXPECT_EQ(0u, code);
}

TEST(ExcuteCmdLine, CapturesStdoutAndStderr) {
  std::string output = "kept|";
  DWORD code = 999;
  EXPECT_TRUE(DE::ExcuteCmdLine(SelfCommand(L"print_both"), kLongWait, &code, &output));
  EXPECT_EQ(5u, code);
  EXPECT_EQ(0u, output.find("kept|"));  // appended, not replaced
  EXPECT_NE(std::string::npos, output.find("to stdout"));
  EXPECT_NE(std::string::npos, output.find("to stderr"));

  // A command writing more than a pipe holds must neither block nor lose bytes.
  const long kBytes = 1 << 20;
  std::string big;
  EXPECT_TRUE(DE::ExcuteCmdLine(SelfCommand(L"chatty " + std::to_wstring(kBytes)), kLongWait, &code, &big));
  EXPECT_EQ(0u, code);
  // The test program's runner prints a banner line first; the command's bytes follow it.
  const std::size_t lineEnd = big.rfind('\n');
  const std::string written = lineEnd == std::string::npos ? big : big.substr(lineEnd + 1);
  EXPECT_EQ(static_cast<std::size_t>(kBytes), written.size());
  EXPECT_EQ(std::string::npos, written.find_first_not_of('x'));
}

TEST(ExcuteCmdLine, TimeOutKillsTheCommandAndWhatItStarted) {
  test::TempDir dir;
  const std::filesystem::path late = dir.File("late");
  const std::wstring command = UnderShell(
      SelfCommand(L"touch_later 3000 \"" + DE::StringProc::StringToWStringByUTF8(late.string()) + L"\""));
  DWORD code = 0;
  EXPECT_FALSE(DE::ExcuteCmdLine(command, 300, &code));
  EXPECT_EQ(258u, code);  // WAIT_TIMEOUT
  // Had the grandchild survived, it would create the file three seconds after its start.
  std::this_thread::sleep_for(std::chrono::seconds(6));
  EXPECT_FALSE(std::filesystem::exists(late));
}

TEST(ExcuteCmdLine, RefusesWhatCannotStart) {
  DWORD code = 1234;
  std::string output;
  EXPECT_FALSE(DE::ExcuteCmdLine(L"", kLongWait, &code, &output));
  EXPECT_EQ(1234u, code);  // untouched
  if (test::IsWindowsBuild()) {
    EXPECT_FALSE(DE::ExcuteCmdLine(L"C:\\no\\such\\program.exe", kLongWait, &code));
    EXPECT_EQ(1234u, code);
  } else {
    // The shell starts, and reports the missing program as 127.
    EXPECT_TRUE(DE::ExcuteCmdLine(L"/no/such/program", kLongWait, &code));
    EXPECT_EQ(127u, code);
  }
}

TEST(GetProcessList, HoldsThisProcessByItsFileName) {
  std::map<DWORD, std::wstring> processes;
  processes[0xFFFFFFF0u] = L"stale";
  ASSERT_TRUE(DE::GetProcessList(processes));
  EXPECT_EQ(0u, processes.count(0xFFFFFFF0u));  // the map is cleared first
  ASSERT_EQ(1u, processes.count(SelfPid()));
  EXPECT_EQ(std::filesystem::path(SelfPath()).filename().wstring(), processes[SelfPid()]);
  EXPECT_GT(processes.size(), 1u);
}

TEST(SetTokenPrivilege, KnownUnknownAndMissingNames) {
  DWORD error = 0;
  EXPECT_FALSE(DE::SetTokenPrivilege(L"SeNoSuchPrivilege", true, &error));
  EXPECT_EQ(1313u, error);  // ERROR_NO_SUCH_PRIVILEGE
  EXPECT_FALSE(DE::SetTokenPrivilege(nullptr, true, &error));
  EXPECT_EQ(87u, error);
  EXPECT_FALSE(DE::SetTokenPrivilege(L"", true));

  // Every Windows token holds SeChangeNotifyPrivilege; on Linux only root holds privileges.
#if defined(_WIN32)
  const bool held = true;
#else
  const bool held = geteuid() == 0;
#endif
  EXPECT_EQ(held, DE::SetTokenPrivilege(L"SeChangeNotifyPrivilege", true, &error));
  EXPECT_EQ(held ? 0u : 1314u, error);
  EXPECT_EQ(held, DE::SetTokenPrivilege(L"sechangenotifyprivilege", false, &error));  // any case
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
#if defined(_WIN32)
  EXPECT_TRUE(DE::IsWin64OS());  // a 64-bit build runs only on a 64-bit system
#else
  std::string bits;
  DWORD code = 999;
  ASSERT_TRUE(DE::ExcuteCmdLine(L"getconf LONG_BIT", kLongWait, &code, &bits));
  ASSERT_EQ(0u, code);
  EXPECT_EQ(bits.compare(0, 2, "64") == 0, DE::IsWin64OS()) << bits;
#endif
}

}  // namespace
