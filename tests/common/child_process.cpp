#include "common/child_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <thread>

#if defined(_WIN32)
#include "DEString.h"
#include "UtilPlatform.h"  // <windows.h> before shellapi.h

#include <shellapi.h>
#else
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#endif

namespace test {
namespace {

const std::string kChildFlag = "--util-child=";

std::map<std::string, ChildMain>& Routines() {
  static std::map<std::string, ChildMain> routines;
  return routines;
}

#if defined(_WIN32)

// Quotes an argument so that CommandLineToArgvW and the C runtime give it back unchanged:
// backslashes are doubled only before a quote, the closing one included.
std::wstring Quote(const std::wstring& arg) {
  if (!arg.empty() && arg.find_first_of(L" \t\"") == std::wstring::npos) return arg;
  std::wstring out = L"\"";
  std::size_t backslashes = 0;
  for (wchar_t c : arg) {
    if (c == L'"') out.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    out += c;
  }
  return out.append(backslashes, L'\\') + L"\"";
}

std::vector<std::string> OwnArguments() {
  int count = 0;
  wchar_t** argv = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> args;
  for (int i = 0; i < count; ++i) args.push_back(DE::UnicodeToUTF8(argv[i]));
  LocalFree(argv);
  return args;
}

std::intptr_t Spawn(const std::vector<std::string>& words) {
  std::wstring self(32768, L'\0');
  self.resize(GetModuleFileNameW(nullptr, &self[0], static_cast<DWORD>(self.size())));
  std::wstring line = Quote(self);
  for (const std::string& word : words) line += L" " + Quote(DE::UTF8ToUnicode(word));
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION info = {};
  if (!CreateProcessW(self.c_str(), &line[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &info))
    return 0;
  CloseHandle(info.hThread);
  return reinterpret_cast<std::intptr_t>(info.hProcess);
}

int Reap(std::intptr_t process, int timeoutMs) {
  const HANDLE handle = reinterpret_cast<HANDLE>(process);
  const DWORD waited = WaitForSingleObject(handle, timeoutMs < 0 ? INFINITE : static_cast<DWORD>(timeoutMs));
  if (waited == WAIT_TIMEOUT) return ChildProcess::kStillRunning;
  DWORD code = 0;
  const bool known = waited == WAIT_OBJECT_0 && GetExitCodeProcess(handle, &code);
  CloseHandle(handle);
  return known ? static_cast<int>(code) : ChildProcess::kNoChild;
}

void Terminate(std::intptr_t process) { TerminateProcess(reinterpret_cast<HANDLE>(process), 1); }

#else

std::vector<std::string> OwnArguments() {
  std::ifstream in("/proc/self/cmdline", std::ios::binary);
  std::vector<std::string> args;
  for (std::string arg; std::getline(in, arg, '\0');) args.push_back(arg);
  return args;
}

std::intptr_t Spawn(std::vector<std::string> words) {
  // Built before fork: the child may only make async-signal-safe calls.
  words.insert(words.begin(), "/proc/self/exe");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(&word[0]);
  argv.push_back(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    execv(argv[0], argv.data());
    _exit(126);
  }
  return pid > 0 ? pid : 0;
}

int Reap(std::intptr_t process, int timeoutMs) {
  for (int waited = 0;; waited += 5) {
    int status = 0;
    const pid_t done = waitpid(static_cast<pid_t>(process), &status, WNOHANG);
    if (done < 0) return ChildProcess::kNoChild;
    if (done > 0) return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    if (timeoutMs >= 0 && waited >= timeoutMs) return ChildProcess::kStillRunning;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

void Terminate(std::intptr_t process) { kill(static_cast<pid_t>(process), SIGKILL); }

#endif

// Runs the requested routine when the program starts, before GoogleTest runs any test.
class ChildDispatcher : public ::testing::EmptyTestEventListener {
  void OnTestProgramStart(const ::testing::UnitTest&) override {
    const std::vector<std::string> args = OwnArguments();
    for (auto arg = args.begin(); arg != args.end(); ++arg) {
      if (arg->rfind(kChildFlag, 0) != 0) continue;
      const auto found = Routines().find(arg->substr(kChildFlag.size()));
      const int code = found == Routines().end() ? 125 : found->second({arg + 1, args.end()});
      std::fflush(nullptr);
      std::exit(code);
    }
  }
};

}  // namespace

bool RegisterChildMain(const char* name, ChildMain routine) {
  if (Routines().empty()) ::testing::UnitTest::GetInstance()->listeners().Append(new ChildDispatcher);
  Routines()[name] = routine;
  return true;
}

bool ChildProcess::Start(const std::vector<std::string>& args) {
  if (args.empty() || Running()) return false;
  std::vector<std::string> words{kChildFlag + args[0]};
  words.insert(words.end(), args.begin() + 1, args.end());
  process_ = Spawn(words);
  return Running();
}

int ChildProcess::Wait(int timeoutMs) {
  if (!Running()) return kNoChild;
  const int code = Reap(process_, timeoutMs);
  if (code != kStillRunning) process_ = 0;
  return code;
}

void ChildProcess::Kill() {
  if (!Running()) return;
  Terminate(process_);
  Wait(-1);
}

int RunSelf(const std::vector<std::string>& args, int timeoutMs) {
  ChildProcess child;
  if (!child.Start(args)) return ChildProcess::kNoChild;
  const int code = child.Wait(timeoutMs);
  if (code == ChildProcess::kStillRunning) child.Kill();
  return code;
}

}  // namespace test
