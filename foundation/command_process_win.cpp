// Windows binding of CommandProcess: CreateProcessW, a job object and an anonymous pipe.
// Windows-only code.
#include <vector>

#include "foundation/command_process.h"

namespace DE::detail {
namespace {

void CloseIfOpen(HANDLE& handle) {
  if (handle != nullptr && handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  handle = nullptr;
}

}  // namespace

struct CommandProcess::State {
  HANDLE process = nullptr;
  HANDLE job = nullptr;     // null when the process could not be put in one
  HANDLE output = nullptr;  // read end of the output pipe
  bool ended = false;
};

CommandProcess::CommandProcess() : state_(new State) {}

CommandProcess::~CommandProcess() {
  if (state_->process != nullptr && !state_->ended) Kill();
  CloseIfOpen(state_->process);
  CloseIfOpen(state_->job);
  CloseIfOpen(state_->output);
}

bool CommandProcess::Start(const std::wstring& cmdLine, bool captureOutput) {
  SECURITY_ATTRIBUTES inheritable = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE writeEnd = nullptr;
  HANDLE input = nullptr;
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  if (captureOutput) {
    if (!CreatePipe(&state_->output, &writeEnd, &inheritable, 0)) return false;
    SetHandleInformation(state_->output, HANDLE_FLAG_INHERIT, 0);
    input = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable, OPEN_EXISTING,
                        0, nullptr);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input;
    startup.hStdOutput = writeEnd;
    startup.hStdError = writeEnd;
  }
  std::vector<wchar_t> line(cmdLine.begin(), cmdLine.end());  // CreateProcessW may write to it
  line.push_back(L'\0');
  PROCESS_INFORMATION info = {};
  // Suspended until it is in the job, so nothing it starts escapes a time-out kill.
  const BOOL started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, captureOutput ? TRUE : FALSE,
                                      CREATE_NO_WINDOW | CREATE_SUSPENDED, nullptr, nullptr, &startup, &info);
  CloseIfOpen(writeEnd);  // the command holds the only write end now, so its end shows as EOF
  CloseIfOpen(input);
  if (!started) {
    CloseIfOpen(state_->output);
    return false;
  }
  state_->process = info.hProcess;
  state_->job = CreateJobObjectW(nullptr, nullptr);
  if (state_->job != nullptr && !AssignProcessToJobObject(state_->job, info.hProcess))
    CloseIfOpen(state_->job);
  ResumeThread(info.hThread);
  CloseHandle(info.hThread);
  return true;
}

void CommandProcess::ReadAvailable(std::string& output) {
  while (state_->output != nullptr) {
    DWORD available = 0;
    if (!PeekNamedPipe(state_->output, nullptr, 0, nullptr, &available, nullptr)) {
      CloseIfOpen(state_->output);  // every writer has gone
      return;
    }
    if (available == 0) return;
    char buffer[4096];
    DWORD got = 0;
    if (!ReadFile(state_->output, buffer, available < sizeof(buffer) ? available : sizeof(buffer), &got,
                  nullptr) ||
        got == 0) {
      CloseIfOpen(state_->output);
      return;
    }
    output.append(buffer, got);
  }
}

bool CommandProcess::WaitForExit(DWORD timeoutMs, DWORD* exitCode) {
  if (state_->process == nullptr) return true;
  if (WaitForSingleObject(state_->process, timeoutMs) != WAIT_OBJECT_0) return false;
  state_->ended = true;
  DWORD code = 0;
  *exitCode = GetExitCodeProcess(state_->process, &code) ? code : 0xFFFFFFFF;
  return true;
}

void CommandProcess::Kill() {
  if (state_->process == nullptr) return;
  if (state_->job == nullptr || !TerminateJobObject(state_->job, 1)) TerminateProcess(state_->process, 1);
  WaitForSingleObject(state_->process, INFINITE);
  state_->ended = true;
}

}  // namespace DE::detail
