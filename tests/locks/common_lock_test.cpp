// CommonLock (recursion, exclusion between threads) and AutoLock (lock, adopt, unlock).
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "DELock.h"
#include "lock_test_util.h"

namespace {

using locktest::OtherThreadTakes;

TEST(CommonLock, OwnerRecursesOthersWaitAndAutoLockAdopts) {
  DE::CommonLock lock;
  lock.Lock();
  EXPECT_NE(0, lock.TryLock());  // the owner enters again
  EXPECT_EQ(0, OtherThreadTakes(lock));
  lock.UnLock();
  EXPECT_EQ(0, OtherThreadTakes(lock));  // one level still held
  { DE::AutoLock adopted(&lock, true); }  // takes no level of its own; releases the one left
  EXPECT_EQ(1, OtherThreadTakes(lock));
  DE::AutoLock null(nullptr), adoptedNull(nullptr, true);  // nothing to lock or unlock
}

// Through AutoLock: a lock that failed to exclude, lock or unlock would lose updates or hang.
TEST(CommonLock, ExcludesThreadsThroughAutoLock) {
  DE::CommonLock lock;
  long counter = 0;  // deliberately not atomic: the lock is the only protection
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) {
        DE::AutoLock guard(&lock);
        const long seen = counter;
        if (i % 64 == 0) std::this_thread::yield();  // invite a lost update if exclusion fails
        counter = seen + 1;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(4 * 20000L, counter);
}

}  // namespace
