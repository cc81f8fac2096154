// CommonLock (recursion, exclusion between threads) and AutoLock (lock, adopt, unlock).
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "DELock.h"
#include "lock_test_util.h"

namespace {

using locktest::OtherThreadTakes;

TEST(CommonLock, OwnerRecursesAndOthersWaitUntilFullyReleased) {
  DE::CommonLock lock;
  EXPECT_EQ(1, OtherThreadTakes(lock));
  lock.Lock();
  EXPECT_NE(0, lock.TryLock());  // the owner enters again
  lock.Lock();
  EXPECT_EQ(0, OtherThreadTakes(lock));
  lock.UnLock();
  lock.UnLock();
  EXPECT_EQ(0, OtherThreadTakes(lock));  // one level still held
  lock.UnLock();
  EXPECT_EQ(1, OtherThreadTakes(lock));
}

TEST(CommonLock, ExcludesThreads) {
  DE::CommonLock lock;
  long counter = 0;  // deliberately not atomic: the lock is the only protection
  const int kThreads = 4;
  const int kRounds = 20000;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) {
        DE::AutoLock guard(&lock);
        const long seen = counter;
        if (i % 64 == 0) std::this_thread::yield();  // invite a lost update if exclusion fails
        counter = seen + 1;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(static_cast<long>(kThreads) * kRounds, counter);
}

TEST(AutoLock, LocksOrAdoptsAndAlwaysUnlocks) {
  struct CountingLock : DE::BaseLock {
    void Lock() override { ++locks; }
    void UnLock() override { ++unlocks; }
    int TryLock() override { return 0; }
    int locks = 0;
    int unlocks = 0;
  } counting;
  {
    DE::AutoLock guard(&counting);
    EXPECT_EQ(1, counting.locks);
    EXPECT_EQ(0, counting.unlocks);
  }
  EXPECT_EQ(1, counting.unlocks);
  { DE::AutoLock guard(&counting, true); }  // adopts: no second Lock, but unlocks
  EXPECT_EQ(1, counting.locks);
  EXPECT_EQ(2, counting.unlocks);
  DE::AutoLock null(nullptr), adopted(nullptr, true);  // tolerated: nothing to lock or unlock
}

}  // namespace
