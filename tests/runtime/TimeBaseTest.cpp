// The millisecond time base: signed tick differences across the wrap and
// the deadline arithmetic behind the timed waits.

#include "runtime/TimeBase.h"

#include <gtest/gtest.h>

namespace Quillan {
namespace {

TEST(TimeBaseTest, TickDifferencesStayCorrectAcrossTheWrap) {
  EXPECT_EQ(TickDiff(0x00000010u, 0xFFFFFFF0u), 0x20);
  EXPECT_EQ(TickDiff(0xFFFFFFF0u, 0x00000010u), -0x20);
  EXPECT_EQ(TickDiff(0x7FFFFFFFu, 0u), 0x7FFFFFFF);
}

TEST(TimeBaseTest, DeadlinesCarryNanosecondsIntoSeconds) {
  const timespec carried = DeadlineAfter(timespec{10, 600000000}, 1500);
  EXPECT_EQ(carried.tv_sec, 12);
  EXPECT_EQ(carried.tv_nsec, 100000000);
  const timespec edge = DeadlineAfter(timespec{3, 999999999}, 0);
  EXPECT_EQ(edge.tv_sec, 3);
  EXPECT_EQ(edge.tv_nsec, 999999999);
  const timespec longest = DeadlineAfter(timespec{0, 1000000}, 4294967295u);
  EXPECT_EQ(longest.tv_sec, 4294967);
  EXPECT_EQ(longest.tv_nsec, 296000000);
}

}  // namespace
}  // namespace Quillan
