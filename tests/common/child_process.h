// Runs this test binary again as a second process, for tests that need another process (file
// sharing, named locks, launching).
//
// A child routine is registered by name with TEST_CHILD_MAIN; the parent starts it with
// ChildProcess::Start or RunSelf, passing the routine's name first and its arguments after:
//
//   TEST_CHILD_MAIN(open_shared) { return TryOpen(args.at(0), args.at(1)); }
//   ...
//   EXPECT_EQ(0, test::RunSelf({"open_shared", path, "0x40"}, 30000));
//
// The child is started as "<self> --util-child=<name> <args...>" and runs the routine when
// GoogleTest starts the program (before any test, whatever the filter), then exits with the
// routine's result; no test of the child binary runs. Arguments are UTF-8 text; avoid arguments
// GoogleTest takes for its own ("--gtest_*", "--help", "-h", "-?").
//
// On Linux the self path is /proc/self/exe and the child is started with fork/exec; on Windows
// GetModuleFileNameW and CreateProcessW (no handle inheritance). A child killed by a signal on
// Linux reports 128 + the signal number.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace test {

// The routine a child process runs: receives the arguments after its name, returns the exit code.
using ChildMain = int (*)(const std::vector<std::string>& args);

// Registers a routine under a name (done by TEST_CHILD_MAIN at load time). Returns true.
bool RegisterChildMain(const char* name, ChildMain routine);

class ChildProcess {
 public:
  // Wait() result while the child still runs after the timeout.
  static constexpr int kStillRunning = -1;
  // Wait() result when no child was started or the wait itself failed.
  static constexpr int kNoChild = -2;

  ChildProcess() = default;
  ~ChildProcess();  // kills and reaps a child that is still running
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Starts "<self> --util-child=<args[0]> <args[1..]>". False when args is empty, a child is
  // already running, or the process cannot be created.
  bool Start(const std::vector<std::string>& args);
  // Waits up to timeoutMs (negative: no limit) and returns the exit code, or kStillRunning (the
  // child is left running; Wait again or Kill) or kNoChild.
  int Wait(int timeoutMs);
  // Ends a running child at once and reaps it; nothing when none runs.
  void Kill();
  bool Running() const;

 private:
  // Linux: the process id; Windows: the process handle. 0 when none.
  std::intptr_t process_ = 0;
};

// Starts a child, waits up to timeoutMs and returns its exit code; a child still running at the
// timeout is killed and kStillRunning returned; kNoChild when it could not be started.
int RunSelf(const std::vector<std::string>& args, int timeoutMs);

}  // namespace test

#define TEST_CHILD_MAIN(name)                                            \
  static int TestChildMain_##name(const std::vector<std::string>& args); \
  [[maybe_unused]] static const bool test_child_registered_##name =      \
      ::test::RegisterChildMain(#name, &TestChildMain_##name);           \
  static int TestChildMain_##name([[maybe_unused]] const std::vector<std::string>& args)
