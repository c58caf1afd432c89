// The work loop: order, delays, stopping, cancelling, removal and its
// thread checks, and destruction.

#include "runtime/WorkLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "runtime/Event.h"
#include "runtime/WorkHandler.h"
#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

using Names = std::vector<std::string>;
uint32_t LongMs() { return pelorin_test::ScaledMs(10000); }

std::atomic<uint32_t> g_ticks{0};  // the clock of loops built with TestTicks
std::atomic<uint32_t> g_tickReads{0};
uint32_t TestTicks() {
  g_tickReads += 1;
  return g_ticks.load();
}

std::mutex g_logLock;
Names g_log;  // the names of the handlers executed, in order

Names Log() {
  std::lock_guard<std::mutex> guard(g_logLock);
  return g_log;
}

// Logs its name, if it has one, and runs `action` when executed; counts
// both calls.
class TestHandler : public WorkHandler {
 public:
  explicit TestHandler(std::string name = "", std::function<void()> action = {})
      : m_name(std::move(name)), m_action(std::move(action)) {}
  void Execute() override {
    executed += 1;
    if (!m_name.empty()) {
      std::lock_guard<std::mutex> guard(g_logLock);
      g_log.push_back(m_name);
    }
    if (m_action) m_action();
    executedEvent.Set();
  }
  void Release() override {
    released += 1;
    releasedEvent.Set();
  }

  std::atomic<int> executed{0}, released{0};
  Event executedEvent, releasedEvent;

 private:
  std::string m_name;
  std::function<void()> m_action;
};

class WorkLoopTest : public ::testing::Test {
 protected:
  void SetUp() override {
    g_log.clear();
    g_ticks = 0;
  }
};

// Stopping lets what is queued run in order, delayed items at once, then
// the final handler; cancelled items are only released.
TEST_F(WorkLoopTest, StopRunsTheQueueInOrderDelayedItemsAtOnceThenTheFinalHandler) {
  TestHandler first("16 first"), high("20"), second("16 second"), lateLow("late low"),
      lateHigh("late high"), final("final"), cancelled("cancelled"), refused, otherFinal;
  Event entered, go;  // a blocker holds the loop until all is posted
  TestHandler blocker("", [&] {
    entered.Set();
    go.Wait();
  });
  WorkLoop loop(&TestTicks);
  loop.Start();
  loop.Post(&blocker, 0);
  ASSERT_TRUE(entered.TimedWait(LongMs()));
  const uint32_t firstId = loop.Post(&first, 16);
  EXPECT_EQ(loop.Remove(firstId, nullptr), 3);  // only the loop's own thread removes
  loop.Post(&high, 20);
  loop.Cancel(loop.Post(&cancelled, 30));
  loop.Cancel(loop.PostDelayed(&cancelled, 1000000, 30));
  loop.PostDelayed(&lateLow, 1000000, 1);
  loop.PostDelayed(&lateHigh, 2000000, 9);
  loop.Post(&second, 16);
  EXPECT_FALSE(loop.Start());
  loop.Run();  // returns at once: the loop runs already
  EXPECT_EQ(loop.Stop(&final), 1);
  EXPECT_EQ(loop.Post(&refused, 99), 0u);
  EXPECT_EQ(loop.PostDelayed(&refused, 0, 99), 0u);
  EXPECT_EQ(loop.Stop(&otherFinal), 2);  // keeps `final`
  go.Set();
  ASSERT_TRUE(final.releasedEvent.TimedWait(LongMs()));
  EXPECT_EQ(Log(), (Names{"20", "16 first", "16 second", "late high", "late low", "final"}));
  for (TestHandler* handler : {&first, &high, &second, &lateLow, &lateHigh}) {
    EXPECT_EQ(handler->executed + handler->released, 2);
  }
  EXPECT_EQ(cancelled.released, 2);
  EXPECT_EQ(refused.released + otherFinal.executed + otherFinal.released, 0);
}

TEST_F(WorkLoopTest, IdsStartAtOneAndCountSuccessfulPostsOfEitherKind) {
  TestHandler handler;
  WorkLoop loop;
  EXPECT_EQ(loop.Post(&handler, 1), 1u);
  EXPECT_EQ(loop.Post(nullptr, 1), 0u);
  EXPECT_EQ(loop.PostDelayed(&handler, 5000, 1), 2u);
  EXPECT_EQ(loop.PostDelayed(nullptr, 5000, 1), 0u);
  EXPECT_EQ(loop.Post(&handler, 9), 3u);
  WorkLoop nearWrap(&GetTickMs, 0xFFFFFFFFu);
  EXPECT_EQ(nearWrap.Post(&handler, 1), 0xFFFFFFFFu);
  EXPECT_EQ(nearWrap.PostDelayed(&handler, 5000, 1), 1u);  // 0 would read as refused
}

// Delays that take steps, up to the longest, wait their full length.
TEST_F(WorkLoopTest, LongDelaysWaitTheirFullLength) {
  for (uint32_t delay : {0x80000000u, 0xFFFFFFFFu}) {
    g_ticks = 0;
    TestHandler delayed, marker;
    WorkLoop loop(&TestTicks);
    loop.PostDelayed(&delayed, delay, 5);
    loop.Start();
    // Two marker steps at `ticks`: the first moves what is due, which then
    // runs before the second (its priority is higher).
    const auto executedAt = [&](uint32_t ticks) {
      g_ticks = ticks;
      for (int step = 0; step < 2; ++step) {
        marker.executedEvent.Reset();
        loop.Post(&marker, 0);
        EXPECT_TRUE(marker.executedEvent.TimedWait(LongMs()));
      }
      return delayed.executed.load();
    };
    for (uint32_t early : {0u, 0x7FFFFFFFu, delay - 1}) EXPECT_EQ(executedAt(early), 0) << early;
    EXPECT_EQ(executedAt(delay), 1) << delay;
  }
}

// Idle or waiting for a delayed item, the loop sleeps until woken or the
// item is due instead of reading its clock over and over. Upper bounds
// only: a slow or busy machine reads it less often still.
TEST_F(WorkLoopTest, AnIdleOrWaitingLoopSleeps) {
  TestHandler delayed;
  WorkLoop loop(&TestTicks);
  loop.Start();
  for (uint32_t delay : {0u, 20u}) {  // idle first, then waiting 20 ms at a time
    if (delay != 0) loop.PostDelayed(&delayed, delay, 1);
    g_tickReads = 0;
    SleepMs(200);
    EXPECT_LT(g_tickReads.load(), 100u) << delay;  // about 10 waits at most; thousands spinning
  }
  g_ticks = 20;
  EXPECT_TRUE(delayed.executedEvent.TimedWait(LongMs()));
}

// Any thread may remove from a loop that never started. Stop only records
// the final handler there; destroying the loop releases what is left, unrun,
// and neither runs nor releases the final handler.
TEST_F(WorkLoopTest, AnIdleLoopTakesRemovalFromAnyThreadAndReleasesTheRestAtDestruction) {
  TestHandler first, final, idleFinal, left;
  {
    WorkLoop loop;
    const uint32_t id = loop.Post(&first, 5);
    loop.Post(&left, 7);
    loop.PostDelayed(&left, 100, 1);
    EXPECT_EQ(loop.Stop(&final), 1);
    WorkHandler* handedBack = nullptr;
    EXPECT_EQ(loop.Remove(id, &handedBack), 0);
    EXPECT_EQ(handedBack, &first);
    loop.Stop(&idleFinal);  // replaces `final`
  }
  EXPECT_EQ(left.released, 2);
  for (TestHandler* handler : {&first, &final, &idleFinal, &left}) {
    EXPECT_EQ(handler->executed, 0);
  }
  EXPECT_EQ(first.released + final.released + idleFinal.released, 0);
}

// Run on a thread of the caller's, the loop returns to idle once stopped
// and drained. Destroyed while it runs there, it lets the loop drain: the
// blocker holds on until the destructor has stopped the loop (posts are
// refused then).
TEST_F(WorkLoopTest, ALoopRunOnACallersThreadDrainsBeforeIdleOrDestruction) {
  TestHandler pending, probe;
  auto* loop = new WorkLoop;
  TestHandler stopper("", [&] { loop->Stop(nullptr); });
  loop->Post(&stopper, 2);
  loop->Post(&pending, 1);
  std::thread([loop] { loop->Run(); }).join();
  EXPECT_EQ(pending.executed, 1);
  EXPECT_EQ(loop->Stop(nullptr), 0);  // idle again
  Event entered;
  TestHandler blocker("", [&] {
    entered.Set();
    while (loop->Post(&probe, 0) != 0) SleepMs(1);
  });
  loop->Post(&blocker, 9);
  loop->Post(&pending, 1);
  std::thread runner([loop] { loop->Run(); });
  ASSERT_TRUE(entered.TimedWait(LongMs()));
  delete loop;
  runner.join();
  EXPECT_EQ(pending.executed + pending.released, 4);
}

}  // namespace
}  // namespace Quillan
