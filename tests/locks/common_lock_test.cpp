// CommonLock (recursion, exclusion between threads) and AutoLock (lock, adopt, unlock).
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "DELock.h"

namespace {

// Runs `body` on another thread and returns its result.
template <typename Body>
int OnOtherThread(Body body) {
  int result = -1;
  std::thread thread([&] { result = body(); });
  thread.join();
  return result;
}

// Counts the calls AutoLock makes.
class CountingLock : public DE::BaseLock {
 public:
  void Lock() override { ++locks; }
  void UnLock() override { ++unlocks; }
  int TryLock() override { return 0; }
  int locks = 0;
  int unlocks = 0;
};

TEST(CommonLock, OwnerRecursesAndOthersWaitUntilFullyReleased) {
  DE::CommonLock lock;
  auto otherTry = [&] {
    return OnOtherThread([&] {
      const int taken = lock.TryLock();
      if (taken != 0) lock.UnLock();
      return taken;
    });
  };
  EXPECT_EQ(1, otherTry());  // free at first

  lock.Lock();
  EXPECT_NE(0, lock.TryLock());  // the owner enters again
  lock.Lock();
  EXPECT_EQ(0, otherTry());
  lock.UnLock();
  lock.UnLock();
  EXPECT_EQ(0, otherTry());  // one level still held
  lock.UnLock();
  EXPECT_EQ(1, otherTry());
}

TEST(CommonLock, ExcludesThreads) {
  DE::CommonLock lock;
  long counter = 0;  // deliberately not atomic: the lock is the only protection
  std::atomic<int> inside{0};
  std::atomic<bool> overlapped{false};
  const int kThreads = 4;
  const int kRounds = 20000;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) {
        DE::AutoLock guard(&lock);
        if (inside.fetch_add(1) != 0) overlapped = true;
        const long seen = counter;
        if (i % 64 == 0) std::this_thread::yield();  // invite a lost update if exclusion fails
        counter = seen + 1;
        inside.fetch_sub(1);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(overlapped.load());
  EXPECT_EQ(static_cast<long>(kThreads) * kRounds, counter);
}

TEST(AutoLock, LocksOrAdoptsAndAlwaysUnlocks) {
  CountingLock counting;
  {
    DE::AutoLock guard(&counting);
    EXPECT_EQ(1, counting.locks);
    EXPECT_EQ(0, counting.unlocks);
  }
  EXPECT_EQ(1, counting.unlocks);
  {
    DE::AutoLock guard(&counting, true);  // adopts: no second Lock
    EXPECT_EQ(1, counting.locks);
  }
  EXPECT_EQ(2, counting.unlocks);
  {
    DE::AutoLock guard(&counting, false);
    EXPECT_EQ(2, counting.locks);
  }
  EXPECT_EQ(3, counting.unlocks);
  {
    DE::AutoLock guard(nullptr);  // tolerated: nothing to lock or unlock
    DE::AutoLock adopted(nullptr, true);
  }

  // With a real lock: an adopted lock is free for other threads once the guard ends.
  DE::CommonLock lock;
  lock.Lock();
  {
    DE::AutoLock guard(&lock, true);
    EXPECT_EQ(0, OnOtherThread([&] { return lock.TryLock(); }));
  }
  EXPECT_EQ(1, OnOtherThread([&] {
              const int taken = lock.TryLock();
              if (taken != 0) lock.UnLock();
              return taken;
            }));
}

}  // namespace
