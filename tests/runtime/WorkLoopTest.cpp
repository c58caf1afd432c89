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

// Calls RemoveAll for itself from Execute and from Release and keeps the
// answers.
class SelfRemover : public TestHandler {
 public:
  explicit SelfRemover(WorkLoop& loop) : m_loop(loop) {}
  void Execute() override {
    answers.push_back(m_loop.RemoveAll(this));
    TestHandler::Execute();
  }
  void Release() override {
    answers.push_back(m_loop.RemoveAll(this));
    TestHandler::Release();
  }

  std::vector<int> answers;

 private:
  WorkLoop& m_loop;
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

// RemoveAll takes every pending post of a handler, queued or delayed, and
// its place as final handler, and releases none of them: 0 when it took
// anything, else 2.
TEST_F(WorkLoopTest, RemoveAllTakesThePendingPostsOfAHandlerUnreleased) {
  struct Case {
    const char* name;
    void (*post)(WorkLoop&, WorkHandler*);
    int answer;
  };
  const Case cases[] = {
      {"queued",
       [](WorkLoop& loop, WorkHandler* h) {
         loop.Post(h, 1);
         loop.Post(h, 9);
       },
       0},
      {"delayed", [](WorkLoop& loop, WorkHandler* h) { loop.PostDelayed(h, 100, 1); }, 0},
      {"final", [](WorkLoop& loop, WorkHandler* h) { loop.Stop(h); }, 0},
      {"nothing", [](WorkLoop&, WorkHandler*) {}, 2},
  };
  for (const Case& c : cases) {
    TestHandler handler, other;
    {
      WorkLoop loop;
      loop.Post(&other, 5);
      c.post(loop, &handler);
      EXPECT_EQ(loop.RemoveAll(&handler), c.answer) << c.name;
      EXPECT_EQ(loop.RemoveAll(nullptr), 2);
    }
    EXPECT_EQ(handler.executed + handler.released, 0) << c.name;
    EXPECT_EQ(other.released, 1) << c.name;
  }
}

// The handler being run, or being released at destruction, gets 1 (its
// other posts are taken all the same); another thread gets 3 while the loop
// runs.
TEST_F(WorkLoopTest, RemoveAllAnswersTheCurrentHandler1AndAnotherThread3) {
  WorkLoop running;
  SelfRemover runningHandler(running);
  running.Start();
  EXPECT_EQ(running.RemoveAll(&runningHandler), 3);
  running.Post(&runningHandler, 1);
  ASSERT_TRUE(runningHandler.releasedEvent.TimedWait(LongMs()));
  EXPECT_EQ(runningHandler.answers, (std::vector<int>{1, 1}));
  auto* idle = new WorkLoop;
  SelfRemover left(*idle);
  idle->Post(&left, 1);
  idle->PostDelayed(&left, 100, 1);
  delete idle;
  EXPECT_EQ(left.answers, (std::vector<int>{1}));  // the delayed post went unreleased
  EXPECT_EQ(left.released, 1);
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
