// Event: the sticky flag, Reset, and waits that end by Set or by time-out.

#include "runtime/Event.h"

#include <gtest/gtest.h>

#include <thread>

#include "runtime/TimeBase.h"
#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

TEST(EventTest, SetIsKeptUntilResetAndWakesAWaiterOnAnotherThread) {
  Event event;
  event.Set();
  event.Wait();
  EXPECT_TRUE(event.TimedWait(0));  // waiting does not lower the flag
  event.Reset();
  EXPECT_FALSE(event.TimedWait(0));
  std::thread setter([&] {
    SleepMs(5);
    event.Set();
  });
  EXPECT_TRUE(event.TimedWait(pelorin_test::ScaledMs(10000)));
  setter.join();
}

TEST(EventWallClockTest, TimedWaitEndsAfterItsTime) {
  Event event;
  const uint32_t before = GetTickMs();
  EXPECT_FALSE(event.TimedWait(30));
  const int32_t waited = TickDiff(GetTickMs(), before);
  EXPECT_GE(waited, 29);
  EXPECT_LT(waited, static_cast<int32_t>(pelorin_test::ScaledMs(5000)));
}

}  // namespace
}  // namespace Quillan
