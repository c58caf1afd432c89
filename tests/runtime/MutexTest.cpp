// The recursive Mutex and ScopedLock: a nested lock holds until the last unlock.

#include "runtime/Mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

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

}  // namespace
}  // namespace Quillan
