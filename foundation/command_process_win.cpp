// Windows binding of CommandProcess: CreateProcessW, a job object and an anonymous pipe.
// Windows-only code.
#include <vector>

#include "foundation/command_process.h"
#include "foundation/kernel_handle_win.h"

namespace DE::detail {

struct CommandProcess::State {
  KernelHandle process;
  KernelHandle job;     // none when the process could not be put in one
  KernelHandle output;  // read end of the output pipe
  bool ended = false;
};

CommandProcess::CommandProcess() : state_(new State) {}

CommandProcess::~CommandProcess() {
  if (state_->process && !state_->ended) Kill();
}

bool CommandProcess::Start(const std::wstring& cmdLine, bool captureOutput) {
  SECURITY_ATTRIBUTES inheritable = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  KernelHandle writeEnd;
  KernelHandle input;
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  if (captureOutput) {
    HANDLE readHandle = nullptr;
    HANDLE writeHandle = nullptr;
    if (!CreatePipe(&readHandle, &writeHandle, &inheritable, 0)) return false;
    state_->output.Reset(readHandle);
    writeEnd.Reset(writeHandle);
    SetHandleInformation(readHandle, HANDLE_FLAG_INHERIT, 0);
    input.Reset(CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                            OPEN_EXISTING, 0, nullptr));
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.Get();
    startup.hStdOutput = writeHandle;
    startup.hStdError = writeHandle;
  }
  std::vector<wchar_t> line(cmdLine.begin(), cmdLine.end());  // CreateProcessW may write to it
  line.push_back(L'\0');
  PROCESS_INFORMATION info = {};
  // Suspended until it is in the job, so nothing it starts escapes a time-out kill.
  const BOOL started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, captureOutput ? TRUE : FALSE,
                                      CREATE_NO_WINDOW | CREATE_SUSPENDED, nullptr, nullptr, &startup, &info);
  writeEnd.Reset();  // the command holds the only write end now, so its end shows as EOF
  input.Reset();
  if (!started) {
    state_->output.Reset();
    return false;
  }
  state_->process.Reset(info.hProcess);
  const KernelHandle thread(info.hThread);
  state_->job.Reset(CreateJobObjectW(nullptr, nullptr));
  if (state_->job && !AssignProcessToJobObject(state_->job.Get(), info.hProcess)) state_->job.Reset();
  ResumeThread(thread.Get());
  return true;
}

void CommandProcess::ReadAvailable(std::string& output) {
  while (state_->output) {
    DWORD available = 0;
    if (!PeekNamedPipe(state_->output.Get(), nullptr, 0, nullptr, &available, nullptr)) {
      state_->output.Reset();  // every writer has gone
      return;
    }
    if (available == 0) return;
    char buffer[4096];
    DWORD got = 0;
    if (!ReadFile(state_->output.Get(), buffer, available < sizeof(buffer) ? available : sizeof(buffer), &got,
                  nullptr) ||
        got == 0) {
      state_->output.Reset();
      return;
    }
    output.append(buffer, got);
  }
}

bool CommandProcess::WaitForExit(DWORD timeoutMs, DWORD* exitCode) {
  if (!state_->process) return true;
  if (WaitForSingleObject(state_->process.Get(), timeoutMs) != WAIT_OBJECT_0) return false;
  state_->ended = true;
  DWORD code = 0;
  *exitCode = GetExitCodeProcess(state_->process.Get(), &code) ? code : 0xFFFFFFFF;
  return true;
}

void CommandProcess::Kill() {
  if (!state_->process) return;
  if (!state_->job || !TerminateJobObject(state_->job.Get(), 1)) TerminateProcess(state_->process.Get(), 1);
  WaitForSingleObject(state_->process.Get(), INFINITE);
  state_->ended = true;
}

}  // namespace DE::detail
