// Event: the sticky flag, Reset, and waits that end by Set or by time-out.

#include "runtime/Event.h"

#include <gtest/gtest.h>

#include <thread>

#include "runtime/TimeBase.h"
#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

TEST(EventTest, SetBeforeWaitingIsKeptUntilReset) {
  Event event;
  event.Set();
  event.Wait();
  EXPECT_TRUE(event.TimedWait(0));  // waiting does not lower the flag
  event.Reset();
  EXPECT_FALSE(event.TimedWait(0));
}

TEST(EventTest, SetFromAnotherThreadEndsAWait) {
  Event started, event;
  std::thread setter([&] {
    started.Wait();
    SleepMs(5);
    event.Set();
  });
  started.Set();
  event.Wait();
  setter.join();
  Event timed;
  std::thread timedSetter([&] { timed.Set(); });
  EXPECT_TRUE(timed.TimedWait(pelorin_test::ScaledMs(10000)));
  timedSetter.join();
}

TEST(EventWallClockTest, TimedWaitEndsAfterItsTime) {
  Event event;
  const uint32_t before = GetTickMs();
  EXPECT_FALSE(event.TimedWait(30));
  const int32_t waited = TickDiff(GetTickMs(), before);
  EXPECT_GE(waited, 29);  // the tick truncates to whole milliseconds
  EXPECT_LT(waited, static_cast<int32_t>(pelorin_test::ScaledMs(5000)));
}

}  // namespace
}  // namespace Quillan
