// One running command line, for ExcuteCmdLine. Windows: CreateProcessW with no window, in a job
// object, output through an anonymous pipe. Linux: /bin/sh -c through posix_spawn in a process
// group of its own, output through a pipe.
#pragma once

#include <memory>
#include <string>

#include "UtilPlatform.h"

namespace DE::detail {

class CommandProcess {
 public:
  CommandProcess();
  // Closes what is still open; a command still running is killed with all it started.
  ~CommandProcess();
  CommandProcess(const CommandProcess&) = delete;
  CommandProcess& operator=(const CommandProcess&) = delete;

  // Starts the command; with captureOutput its stdout and stderr go to a pipe read by
  // ReadAvailable, otherwise nowhere. Standard input is empty. False when it cannot be started.
  bool Start(const std::wstring& cmdLine, bool captureOutput);
  // Appends to `output` what the command has written so far; never blocks.
  void ReadAvailable(std::string& output);
  // Waits up to timeoutMs (0xFFFFFFFF: no limit) for the command to end; true once it has, with
  // its exit code in *exitCode.
  bool WaitForExit(DWORD timeoutMs, DWORD* exitCode);
  // Ends the command and everything it started, and waits for the command itself to go.
  void Kill();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace DE::detail
