// Event: a timed wait that nobody ends returns false after its time.

#include "runtime/Event.h"

#include <gtest/gtest.h>

#include "runtime/TimeBase.h"
#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

TEST(EventWallClockTest, TimedWaitEndsAfterItsTimeAndSetIsKeptUntilReset) {
  Event event;
  const uint32_t before = GetTickMs();
  EXPECT_FALSE(event.TimedWait(30));
  const int32_t waited = TickDiff(GetTickMs(), before);
  EXPECT_GE(waited, 29);
  EXPECT_LT(waited, static_cast<int32_t>(pelorin_test::ScaledMs(5000)));
  event.Set();
  EXPECT_TRUE(event.TimedWait(0));
  EXPECT_TRUE(event.TimedWait(0));  // waiting does not lower the flag
  event.Reset();
  EXPECT_FALSE(event.TimedWait(0));
}

}  // namespace
}  // namespace Quillan
