// The self re-run helper the two-process tests rely on: arguments arrive intact, exit codes return.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "common/child_process.h"

namespace {

const std::vector<std::string> kAwkwardArgs = {"plain",  "two words",       "",           "quote\"inside",
                                               "tail\\", "back\\\\\"slash", "caf\xC3\xA9"};

TEST_CHILD_MAIN(echo_args) { return args == kAwkwardArgs ? 42 : 1; }

TEST_CHILD_MAIN(sleep_long) {
  std::this_thread::sleep_for(std::chrono::minutes(5));
  return 0;
}

TEST(ChildProcess, RunsSelfWithArgumentsAndReportsExitCode) {
  std::vector<std::string> request = {"echo_args"};
  request.insert(request.end(), kAwkwardArgs.begin(), kAwkwardArgs.end());
  EXPECT_EQ(42, test::RunSelf(request, 60000));
  EXPECT_EQ(125, test::RunSelf({"no_such_routine"}, 60000));
  EXPECT_EQ(test::ChildProcess::kNoChild, test::RunSelf({}, 1000));
}

TEST(ChildProcess, WaitTimesOutThenKill) {
  test::ChildProcess child;
  ASSERT_TRUE(child.Start({"sleep_long"}));
  EXPECT_FALSE(child.Start({"sleep_long"}));
  EXPECT_EQ(test::ChildProcess::kStillRunning, child.Wait(50));
  EXPECT_TRUE(child.Running());
  child.Kill();
  EXPECT_FALSE(child.Running());
  EXPECT_EQ(test::ChildProcess::kNoChild, child.Wait(0));
}

}  // namespace
