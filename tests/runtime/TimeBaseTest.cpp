// The millisecond time base: signed tick differences across the wrap,
// deadline arithmetic, and the clock itself.

#include "runtime/TimeBase.h"

#include <gtest/gtest.h>

#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

TEST(TimeBaseTest, TickDifferencesStayCorrectAcrossTheWrap) {
  EXPECT_EQ(TickDiff(0x00000010u, 0xFFFFFFF0u), 0x20);
  EXPECT_EQ(TickDiff(0xFFFFFFF0u, 0x00000010u), -0x20);
  EXPECT_EQ(TickDiff(5u, 5u), 0);
  EXPECT_EQ(TickDiff(0x7FFFFFFFu, 0u), 0x7FFFFFFF);
}

TEST(TimeBaseTest, DeadlinesCarryNanosecondsIntoSeconds) {
  const timespec start{10, 600000000};
  const timespec carried = DeadlineAfter(start, 1500);
  EXPECT_EQ(carried.tv_sec, 12);
  EXPECT_EQ(carried.tv_nsec, 100000000);
  const timespec exact = DeadlineAfter(timespec{3, 999999999}, 0);
  EXPECT_EQ(exact.tv_sec, 3);
  EXPECT_EQ(exact.tv_nsec, 999999999);
  const timespec edge = DeadlineAfter(timespec{3, 0}, 999);
  EXPECT_EQ(edge.tv_sec, 3);
  EXPECT_EQ(edge.tv_nsec, 999000000);
  const timespec large = DeadlineAfter(timespec{0, 1000000}, 4294967295u);
  EXPECT_EQ(large.tv_sec, 4294967);
  EXPECT_EQ(large.tv_nsec, 296000000);
}

TEST(TimeBaseTest, TickFollowsTheMonotonicClock) {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const uint32_t expected =
      static_cast<uint32_t>(now.tv_sec) * 1000u + static_cast<uint32_t>(now.tv_nsec / 1000000);
  const int32_t apart = TickDiff(GetTickMs(), expected);
  EXPECT_GE(apart, 0);
  EXPECT_LT(apart, static_cast<int32_t>(pelorin_test::ScaledMs(1000)));
}

TEST(TimeBaseWallClockTest, SleepLastsAtLeastItsTime) {
  const uint32_t before = GetTickMs();
  SleepMs(20);
  EXPECT_GE(TickDiff(GetTickMs(), before), 19);
}

}  // namespace
}  // namespace Quillan
