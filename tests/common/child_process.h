// Runs this test binary again as a second process: "<self> --util-child=<name> <args...>" runs
// the routine registered under <name> as GoogleTest starts, before any test, and exits with its
// result (125: no such routine; on Linux 128 + N after signal N). Arguments are UTF-8.
//
//   TEST_CHILD_MAIN(open_shared) { return TryOpen(args.at(0), args.at(1)); }
//   EXPECT_EQ(0, test::RunSelf({"open_shared", path, "0x40"}, 30000));
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace test {

using ChildMain = int (*)(const std::vector<std::string>& args);

// Registers a routine under a name (done by TEST_CHILD_MAIN at load time). Returns true.
bool RegisterChildMain(const char* name, ChildMain routine);

class ChildProcess {
 public:
  static constexpr int kStillRunning = -1;  // Wait(): the timeout passed first
  static constexpr int kNoChild = -2;       // Wait(): none started, or the wait failed

  ChildProcess() = default;
  ~ChildProcess() { Kill(); }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Starts routine args[0] with args[1..]. False when args is empty, a child runs, or it fails.
  bool Start(const std::vector<std::string>& args);
  // The exit code within timeoutMs (negative: no limit), else kStillRunning or kNoChild.
  int Wait(int timeoutMs);
  // Ends a running child at once and reaps it.
  void Kill();
  bool Running() const { return process_ != 0; }

 private:
  std::intptr_t process_ = 0;  // Linux: the pid; Windows: the process handle
};

// Start, then Wait(timeoutMs); a child still running then is killed (kStillRunning returned).
int RunSelf(const std::vector<std::string>& args, int timeoutMs);

}  // namespace test

#define TEST_CHILD_MAIN(name)                                            \
  static int TestChildMain_##name(const std::vector<std::string>& args); \
  [[maybe_unused]] static const bool test_child_registered_##name =      \
      ::test::RegisterChildMain(#name, &TestChildMain_##name);           \
  static int TestChildMain_##name([[maybe_unused]] const std::vector<std::string>& args)
