#include "common/child_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <thread>

#if defined(_WIN32)
#include "UtilPlatform.h"
#else
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#endif

namespace test {
namespace {

const std::string kChildFlag = "--util-child=";

std::map<std::string, ChildMain>& Routines() {
  static std::map<std::string, ChildMain> routines;
  return routines;
}

#if defined(_WIN32)

std::string ToUtf8(const std::wstring& text) {
  if (text.empty()) return std::string();
  const int n = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0,
                                    nullptr, nullptr);
  std::string out(static_cast<std::size_t>(n > 0 ? n : 0), '\0');
  if (n > 0) {
    WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), &out[0], n, nullptr, nullptr);
  }
  return out;
}

std::wstring FromUtf8(const std::string& text) {
  if (text.empty()) return std::wstring();
  const int n = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
  std::wstring out(static_cast<std::size_t>(n > 0 ? n : 0), L'\0');
  if (n > 0) MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), &out[0], n);
  return out;
}

// Quotes one argument so that the C runtime's command-line parser gives it back unchanged.
std::wstring QuoteArgument(const std::wstring& arg) {
  if (!arg.empty() && arg.find_first_of(L" \t\n\v\"") == std::wstring::npos) return arg;
  std::wstring quoted = L"\"";
  for (std::size_t i = 0;; ++i) {
    std::size_t backslashes = 0;
    while (i < arg.size() && arg[i] == L'\\') ++i, ++backslashes;
    if (i == arg.size()) {
      quoted.append(backslashes * 2, L'\\');  // doubled: the closing quote follows
      break;
    }
    if (arg[i] == L'"') {
      quoted.append(backslashes * 2 + 1, L'\\');
    } else {
      quoted.append(backslashes, L'\\');
    }
    quoted.push_back(arg[i]);
  }
  quoted.push_back(L'"');
  return quoted;
}

// Splits a command line by the C runtime's rules (the inverse of QuoteArgument). The program
// name, the first word, takes no escapes.
std::vector<std::wstring> SplitCommandLine(const wchar_t* line) {
  std::vector<std::wstring> args;
  const wchar_t* p = line;
  std::wstring word;
  if (*p == L'"') {
    for (++p; *p != L'\0' && *p != L'"'; ++p) word.push_back(*p);
    if (*p == L'"') ++p;
  } else {
    for (; *p != L'\0' && *p != L' ' && *p != L'\t'; ++p) word.push_back(*p);
  }
  args.push_back(word);
  for (;;) {
    while (*p == L' ' || *p == L'\t') ++p;
    if (*p == L'\0') break;
    word.clear();
    bool inQuotes = false;
    while (*p != L'\0' && (inQuotes || (*p != L' ' && *p != L'\t'))) {
      std::size_t backslashes = 0;
      while (*p == L'\\') ++p, ++backslashes;
      if (*p == L'"') {
        word.append(backslashes / 2, L'\\');
        if (backslashes % 2 == 1) {
          word.push_back(L'"');
        } else if (inQuotes && p[1] == L'"') {
          word.push_back(L'"');  // "" inside quotes is a literal quote
          ++p;
        } else {
          inQuotes = !inQuotes;
        }
        ++p;
      } else {
        word.append(backslashes, L'\\');
        if (*p != L'\0' && (inQuotes || (*p != L' ' && *p != L'\t'))) word.push_back(*p++);
      }
    }
    args.push_back(word);
  }
  return args;
}

std::vector<std::string> OwnArguments() {
  std::vector<std::string> args;
  for (const std::wstring& arg : SplitCommandLine(GetCommandLineW())) args.push_back(ToUtf8(arg));
  return args;
}

HANDLE AsHandle(std::intptr_t process) { return reinterpret_cast<HANDLE>(process); }

#else

std::vector<std::string> OwnArguments() {
  std::ifstream in("/proc/self/cmdline", std::ios::binary);
  const std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::vector<std::string> args;
  std::size_t start = 0;
  while (start < all.size()) {
    const std::size_t end = all.find('\0', start);
    const std::size_t stop = end == std::string::npos ? all.size() : end;
    args.push_back(all.substr(start, stop - start));
    start = stop + 1;
  }
  return args;
}

int DecodeStatus(int status) {
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
  return ChildProcess::kNoChild;
}

#endif

// Runs the requested child routine when the program starts, before GoogleTest runs any test.
class ChildDispatcher : public ::testing::EmptyTestEventListener {
 public:
  void OnTestProgramStart(const ::testing::UnitTest&) override {
    const std::vector<std::string> args = OwnArguments();
    for (std::size_t i = 1; i < args.size(); ++i) {
      if (args[i].compare(0, kChildFlag.size(), kChildFlag) != 0) continue;
      const std::string name = args[i].substr(kChildFlag.size());
      const auto found = Routines().find(name);
      if (found == Routines().end()) {
        std::fprintf(stderr, "no child routine named '%s'\n", name.c_str());
        std::fflush(stderr);
        std::exit(125);
      }
      const int code = found->second(std::vector<std::string>(args.begin() + i + 1, args.end()));
      std::fflush(stdout);
      std::fflush(stderr);
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

ChildProcess::~ChildProcess() { Kill(); }

bool ChildProcess::Running() const { return process_ != 0; }

#if defined(_WIN32)

bool ChildProcess::Start(const std::vector<std::string>& args) {
  if (args.empty() || Running()) return false;
  std::wstring self(32768, L'\0');
  const DWORD length = GetModuleFileNameW(nullptr, &self[0], static_cast<DWORD>(self.size()));
  if (length == 0 || length >= self.size()) return false;
  self.resize(length);
  std::wstring line = QuoteArgument(self) + L" " + QuoteArgument(FromUtf8(kChildFlag + args[0]));
  for (std::size_t i = 1; i < args.size(); ++i) line += L" " + QuoteArgument(FromUtf8(args[i]));
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION info = {};
  if (!CreateProcessW(self.c_str(), &line[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                      &info)) {
    return false;
  }
  CloseHandle(info.hThread);
  process_ = reinterpret_cast<std::intptr_t>(info.hProcess);
  return true;
}

int ChildProcess::Wait(int timeoutMs) {
  if (!Running()) return kNoChild;
  const DWORD waited =
      WaitForSingleObject(AsHandle(process_), timeoutMs < 0 ? INFINITE : static_cast<DWORD>(timeoutMs));
  if (waited == WAIT_TIMEOUT) return kStillRunning;
  DWORD code = 0;
  const bool known = waited == WAIT_OBJECT_0 && GetExitCodeProcess(AsHandle(process_), &code);
  CloseHandle(AsHandle(process_));
  process_ = 0;
  return known ? static_cast<int>(code) : kNoChild;
}

void ChildProcess::Kill() {
  if (!Running()) return;
  TerminateProcess(AsHandle(process_), 1);
  WaitForSingleObject(AsHandle(process_), INFINITE);
  CloseHandle(AsHandle(process_));
  process_ = 0;
}

#else

bool ChildProcess::Start(const std::vector<std::string>& args) {
  if (args.empty() || Running()) return false;
  // Everything exec needs is built before fork: the child may only make async-signal-safe calls.
  std::vector<std::string> words{"/proc/self/exe", kChildFlag + args[0]};
  words.insert(words.end(), args.begin() + 1, args.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(&word[0]);
  argv.push_back(nullptr);
  const pid_t pid = fork();
  if (pid < 0) return false;
  if (pid == 0) {
    execv("/proc/self/exe", argv.data());
    _exit(126);
  }
  process_ = pid;
  return true;
}

int ChildProcess::Wait(int timeoutMs) {
  if (!Running()) return kNoChild;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    int status = 0;
    const pid_t done = waitpid(static_cast<pid_t>(process_), &status, timeoutMs < 0 ? 0 : WNOHANG);
    if (done == static_cast<pid_t>(process_)) {
      process_ = 0;
      return DecodeStatus(status);
    }
    if (done < 0 && errno != EINTR) {
      process_ = 0;
      return kNoChild;
    }
    if (done == 0) {
      if (std::chrono::steady_clock::now() >= deadline) return kStillRunning;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
}

void ChildProcess::Kill() {
  if (!Running()) return;
  kill(static_cast<pid_t>(process_), SIGKILL);
  int status = 0;
  while (waitpid(static_cast<pid_t>(process_), &status, 0) < 0 && errno == EINTR) {
  }
  process_ = 0;
}

#endif

int RunSelf(const std::vector<std::string>& args, int timeoutMs) {
  ChildProcess child;
  if (!child.Start(args)) return ChildProcess::kNoChild;
  const int code = child.Wait(timeoutMs);
  if (code == ChildProcess::kStillRunning) child.Kill();
  return code;
}

}  // namespace test
