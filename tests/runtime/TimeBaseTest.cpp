// The millisecond time base: signed tick differences across the wrap, the
// deadline arithmetic behind the timed waits, and a sleep that a signal does
// not cut short.

#include "runtime/TimeBase.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <thread>

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

// Wall clock, lower bound only: a sleep interrupted by a signal handler
// (installed without SA_RESTART) still lasts its whole length.
TEST(TimeBaseWallClockTest, SleepGoesOnAfterASignal) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  struct sigaction previous {};
  ASSERT_EQ(sigaction(SIGUSR1, &action, &previous), 0);
  const pthread_t sleeper = pthread_self();
  std::atomic<bool> asleep{false};
  std::thread interrupter([&] {
    while (!asleep.load()) std::this_thread::yield();
    for (int i = 0; i < 5; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      pthread_kill(sleeper, SIGUSR1);
    }
  });
  const uint32_t start = GetTickMs();
  asleep = true;
  SleepMs(150);
  const int32_t slept = TickDiff(GetTickMs(), start);
  interrupter.join();
  sigaction(SIGUSR1, &previous, nullptr);
  EXPECT_GE(slept, 150);
}

}  // namespace
}  // namespace Quillan
