// Linux binding of CommandProcess: /bin/sh -c through posix_spawn, in its own process group.
// Linux-only code.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <utility>

#include "foundation/command_process.h"
#include "foundation/text_codec.h"
#include "platform/linux/descriptor.h"

extern char** environ;

namespace DE::detail {
namespace {

constexpr DWORD kInfinite = 0xFFFFFFFF;
constexpr DWORD kUnknownExitCode = 0xFFFFFFFF;
constexpr int kPollSliceMs = 5;

DWORD ExitCodeFromStatus(int status) {
  if (WIFEXITED(status)) return static_cast<DWORD>(WEXITSTATUS(status));
  if (WIFSIGNALED(status)) return 128 + static_cast<DWORD>(WTERMSIG(status));  // the shells' convention
  return kUnknownExitCode;
}

// The child's starting state: its own process group (so a kill reaches everything it starts),
// no blocked signals and default handlers (a host that ignores SIGPIPE must not pass that on).
bool PrepareAttributes(posix_spawnattr_t* attributes) {
  if (posix_spawnattr_init(attributes) != 0) return false;
  sigset_t none;
  sigset_t all;
  sigemptyset(&none);
  sigfillset(&all);
  sigdelset(&all, SIGKILL);
  sigdelset(&all, SIGSTOP);
  posix_spawnattr_setsigmask(attributes, &none);
  posix_spawnattr_setsigdefault(attributes, &all);
  posix_spawnattr_setpgroup(attributes, 0);
  posix_spawnattr_setflags(attributes,
                           POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  return true;
}

// stdin from /dev/null; stdout and stderr to `outputFd`, or to /dev/null when it is -1.
bool PrepareFiles(posix_spawn_file_actions_t* actions, int outputFd) {
  if (posix_spawn_file_actions_init(actions) != 0) return false;
  posix_spawn_file_actions_addopen(actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  if (outputFd >= 0) {
    posix_spawn_file_actions_adddup2(actions, outputFd, STDOUT_FILENO);
  } else {
    posix_spawn_file_actions_addopen(actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  }
  posix_spawn_file_actions_adddup2(actions, STDOUT_FILENO, STDERR_FILENO);
  return true;
}

}  // namespace

struct CommandProcess::State {
  pid_t pid = -1;                 // -1 once reaped (or never started)
  linux_impl::Descriptor output;  // read end of the output pipe, non-blocking
};

CommandProcess::CommandProcess() : state_(new State) {}

CommandProcess::~CommandProcess() {
  if (state_->pid > 0) Kill();
}

bool CommandProcess::Start(const std::wstring& cmdLine, bool captureOutput) {
  std::string line = WideToUtf8(cmdLine.data(), cmdLine.size());
  int pipeFds[2] = {-1, -1};
  if (captureOutput && pipe2(pipeFds, O_CLOEXEC) != 0) return false;
  linux_impl::Descriptor readEnd(pipeFds[0]);
  linux_impl::Descriptor writeEnd(pipeFds[1]);
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_t actions;
  const bool prepared = PrepareAttributes(&attributes);
  const bool filesPrepared = prepared && PrepareFiles(&actions, pipeFds[1]);
  char shell[] = "sh";
  char dashC[] = "-c";
  char* argv[] = {shell, dashC, &line[0], nullptr};
  pid_t pid = -1;
  const bool started =
      filesPrepared && posix_spawn(&pid, "/bin/sh", &actions, &attributes, argv, environ) == 0;
  if (filesPrepared) posix_spawn_file_actions_destroy(&actions);
  if (prepared) posix_spawnattr_destroy(&attributes);
  writeEnd.Reset();  // the command holds the only write end now
  if (!started) return false;
  state_->pid = pid;
  if (readEnd) {
    fcntl(readEnd.Get(), F_SETFL, fcntl(readEnd.Get(), F_GETFL) | O_NONBLOCK);
    state_->output = std::move(readEnd);
  }
  return true;
}

void CommandProcess::ReadAvailable(std::string& output) {
  while (state_->output) {
    char buffer[4096];
    const ssize_t got = read(state_->output.Get(), buffer, sizeof(buffer));
    if (got > 0) {
      output.append(buffer, static_cast<std::size_t>(got));
    } else if (got < 0 && errno == EINTR) {
      continue;
    } else {
      if (got == 0 || errno != EAGAIN) {  // end of output (every writer has gone) or a broken pipe
        state_->output.Reset();
      }
      return;
    }
  }
}

bool CommandProcess::WaitForExit(DWORD timeoutMs, DWORD* exitCode) {
  if (state_->pid <= 0) return true;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    int status = 0;
    const pid_t done = waitpid(state_->pid, &status, timeoutMs == kInfinite ? 0 : WNOHANG);
    if (done == state_->pid || (done < 0 && errno == ECHILD)) {
      // ECHILD: a host that ignores SIGCHLD has the kernel reap children; the code is lost.
      *exitCode = done == state_->pid ? ExitCodeFromStatus(status) : kUnknownExitCode;
      state_->pid = -1;
      return true;
    }
    if (done < 0 && errno == EINTR) continue;
    if (done < 0 || std::chrono::steady_clock::now() >= deadline) return false;
    poll(nullptr, 0, kPollSliceMs);
  }
}

void CommandProcess::Kill() {
  if (state_->pid <= 0) return;
  kill(-state_->pid, SIGKILL);  // the whole group: the shell and what it started
  int status = 0;
  while (waitpid(state_->pid, &status, 0) < 0 && errno == EINTR) {
  }
  state_->pid = -1;
}

}  // namespace DE::detail
