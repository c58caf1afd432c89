// The recursive Mutex and ScopedLock: nested locking by one thread, and
// exclusion between threads.

#include "runtime/Mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "runtime/Event.h"
#include "runtime/ScopedLock.h"
#include "runtime/TimeBase.h"
#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

TEST(MutexTest, LockedTwiceIsFreeForOthersOnlyAfterTheSecondUnlock) {
  Mutex mutex;
  mutex.Lock();
  mutex.Lock();
  mutex.Unlock();
  std::atomic<bool> acquired{false};
  Event done;
  std::thread other([&] {
    ScopedLock guard(mutex);
    acquired = true;
    done.Set();
  });
  SleepMs(20);
  EXPECT_FALSE(acquired);  // still held once
  mutex.Unlock();
  EXPECT_TRUE(done.TimedWait(pelorin_test::ScaledMs(10000)));
  other.join();
}

TEST(MutexTest, ScopedLocksExcludeEachOther) {
  Mutex mutex;
  int counter = 0;  // a plain int: a race here is what the sanitizer reports
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&] {
      for (int round = 0; round < 10000; ++round) {
        ScopedLock outer(mutex);
        ScopedLock inner(mutex);
        counter = counter + 1;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 40000);
}

TEST(MutexTest, CreateAfterDestroyGivesAWorkingMutex) {
  Mutex mutex;
  mutex.Destroy();
  mutex.Destroy();
  mutex.Create();
  mutex.Lock();
  mutex.Lock();
  mutex.Unlock();
  mutex.Unlock();
}

}  // namespace
}  // namespace Quillan
