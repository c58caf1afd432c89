// The work loop: order, aging, delays across the tick wrap, stopping,
// cancelling, removal and its thread checks, destruction, and many posters.

#include "runtime/WorkLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

#include "tests/runtime/WorkLoopTestSupport.h"

namespace Quillan {
namespace {

using pelorin_test::Blocker;
using pelorin_test::ExecutionLog;
using pelorin_test::g_testTicks;
using pelorin_test::LongMs;
using pelorin_test::TestHandler;
using pelorin_test::TestTicks;
using Names = std::vector<std::string>;

// A loop started on its own thread and held busy by a blocker, so that what
// the test posts next queues up before anything runs.
struct BusyLoop {
  explicit BusyLoop(WorkLoop::TickSource ticks = &GetTickMs) : loop(ticks) {
    loop.Start();
    loop.Post(&blocker, 0);
    EXPECT_TRUE(blocker.WaitEntered());
  }
  // Lets everything queued run, then the final handler; waits for it and
  // returns what Stop returned.
  int Drain() {
    TestHandler final(&log, "final");
    const int stopped = loop.Stop(&final);
    blocker.Go();
    EXPECT_TRUE(final.releasedEvent.TimedWait(LongMs()));
    return stopped;
  }

  ExecutionLog log;
  Blocker blocker;
  WorkLoop loop;
};

TEST(WorkLoopOrderTest, HigherPriorityFirstAndTiesInPostingOrder) {
  BusyLoop busy;
  TestHandler first(&busy.log, "16 first"), high(&busy.log, "20"), second(&busy.log, "16 second");
  busy.loop.Post(&first, 16);
  busy.loop.Post(&high, 20);
  busy.loop.Post(&second, 16);
  EXPECT_EQ(busy.Drain(), 1);
  EXPECT_EQ(busy.log.Names(), (Names{"20", "16 first", "16 second", "final"}));
  for (TestHandler* handler : {&first, &high, &second}) {
    EXPECT_EQ(handler->executed, 1);
    EXPECT_EQ(handler->released, 1);
  }
}

// A low item waits while a chain of priority-20 items keeps posting its
// successor. Aged by 1, 2, 3, 4 it reaches 10 + 10 = 20 after the fourth
// step; the successor posted then goes behind it (ties keep their order).
TEST(WorkLoopOrderTest, WaitingItemsAgeByGrowingStepsAndOvertake) {
  BusyLoop busy;
  TestHandler low(&busy.log, "low");
  std::vector<std::unique_ptr<TestHandler>> chain;
  for (int index = 6; index >= 0; --index) {
    TestHandler* successor = chain.empty() ? nullptr : chain.back().get();
    chain.push_back(
        std::make_unique<TestHandler>(&busy.log, "f" + std::to_string(index), [&busy, successor] {
          if (successor != nullptr) busy.loop.Post(successor, 20);
        }));
  }
  busy.loop.Post(&low, 10);
  busy.loop.Post(chain.back().get(), 20);
  busy.blocker.Go();
  ASSERT_TRUE(chain.front()->releasedEvent.TimedWait(LongMs()));
  EXPECT_EQ(busy.log.Names(), (Names{"f0", "f1", "f2", "f3", "low", "f4", "f5", "f6"}));
}

TEST(WorkLoopOrderTest, IdsStartAtOneAndCountSuccessfulPostsOfEitherKind) {
  TestHandler handler;
  WorkLoop loop;
  EXPECT_EQ(loop.Post(&handler, 1), 1u);
  EXPECT_EQ(loop.Post(nullptr, 1), 0u);
  EXPECT_EQ(loop.PostDelayed(&handler, 5000, 1), 2u);
  EXPECT_EQ(loop.PostDelayed(nullptr, 5000, 1), 0u);
  EXPECT_EQ(loop.Post(&handler, 9), 3u);
}

TEST(WorkLoopDelayTest, DueOrderHoldsAcrossTheTickWrapAndTiesKeepPostingOrder) {
  g_testTicks = 0xFFFF0000u;
  ExecutionLog log;
  TestHandler beforeWrap(&log, "before wrap"), first(&log, "first"), second(&log, "second"),
      marker(&log, "marker");
  WorkLoop loop(&TestTicks);
  loop.PostDelayed(&first, 0x18000, 5);      // due 0x00008000
  loop.PostDelayed(&beforeWrap, 0x8000, 5);  // due 0xFFFF8000
  loop.PostDelayed(&second, 0x18000, 5);     // due 0x00008000
  // Past the wrap: the item due before it is overdue, the others are 1 ms
  // early. The first step takes the marker and moves what is due.
  g_testTicks = 0x00007FFFu;
  loop.Post(&marker, 5);
  loop.Start();
  ASSERT_TRUE(beforeWrap.executedEvent.TimedWait(LongMs()));
  EXPECT_EQ(first.executed, 0);
  g_testTicks = 0x00008000u;
  ASSERT_TRUE(second.executedEvent.TimedWait(LongMs()));
  EXPECT_EQ(log.Names(), (Names{"marker", "before wrap", "first", "second"}));
}

TEST(WorkLoopDelayTest, NewEarlierHeadWakesALoopWaitingForALaterOne) {
  g_testTicks = 1000;
  TestHandler late, early;
  WorkLoop loop(&TestTicks);
  loop.Start();
  TestHandler marker;
  loop.PostDelayed(&late, 100000, 5);
  loop.Post(&marker, 5);
  ASSERT_TRUE(marker.executedEvent.TimedWait(LongMs()));
  SleepMs(20);  // by now the loop sleeps for 100 s
  g_testTicks = 2000;
  loop.PostDelayed(&early, 0, 5);
  EXPECT_TRUE(early.executedEvent.TimedWait(LongMs()));
  EXPECT_EQ(late.executed, 0);
}

TEST(WorkLoopDelayTest, RealDelaysRunOnlyWhenDue) {
  TestHandler delayed;
  WorkLoop loop;
  loop.Start();
  const uint32_t posted = GetTickMs();
  loop.PostDelayed(&delayed, 50, 5);
  ASSERT_TRUE(delayed.executedEvent.TimedWait(LongMs()));
  EXPECT_GE(TickDiff(GetTickMs(), posted), 50);
}

TEST(WorkLoopStopTest, StopRunsDelayedItemsAtOnceThenTheFinalHandlerAndRefusesPosts) {
  g_testTicks = 0;
  ExecutionLog log;
  TestHandler ready(&log, "ready"), lateLow(&log, "late low"), lateHigh(&log, "late high"),
      final(&log, "final"), refused, otherFinal;
  Blocker blocker;
  WorkLoop loop(&TestTicks);
  std::thread runner([&loop] { loop.Run(); });
  loop.Post(&blocker, 0);
  ASSERT_TRUE(blocker.WaitEntered());
  loop.PostDelayed(&lateLow, 1000000, 1);
  loop.PostDelayed(&lateHigh, 2000000, 9);
  loop.Post(&ready, 5);
  EXPECT_EQ(loop.Stop(&final), 1);
  EXPECT_EQ(loop.Post(&refused, 99), 0u);
  EXPECT_EQ(loop.PostDelayed(&refused, 0, 99), 0u);
  EXPECT_EQ(loop.Stop(&otherFinal), 2);
  blocker.Go();
  runner.join();  // Run returns once drained: the loop is idle again
  EXPECT_EQ(log.Names(), (Names{"ready", "late high", "late low", "final"}));
  EXPECT_EQ(final.released, 1);
  EXPECT_EQ(refused.released + otherFinal.executed + otherFinal.released, 0);
  EXPECT_EQ(loop.Stop(nullptr), 0);
  EXPECT_NE(loop.Post(&refused, 1), 0u);
}

TEST(WorkLoopCancelTest, CancelledItemsAreReleasedWithoutRunning) {
  g_testTicks = 0;
  TestHandler ready, delayed, marker;
  BusyLoop busy(&TestTicks);
  const uint32_t readyId = busy.loop.Post(&ready, 5);
  const uint32_t delayedId = busy.loop.PostDelayed(&delayed, 1000000, 5);
  busy.loop.Cancel(readyId);
  busy.loop.Cancel(delayedId);
  busy.blocker.Go();
  busy.loop.Post(&marker, 1);  // a step after the cancel gives the delayed item up
  ASSERT_TRUE(delayed.releasedEvent.TimedWait(LongMs()));
  ASSERT_TRUE(ready.releasedEvent.TimedWait(LongMs()));
  EXPECT_EQ(ready.executed + delayed.executed, 0);
  EXPECT_EQ(ready.released + delayed.released, 2);
}

TEST(WorkLoopRemoveTest, RemovalFromTheLoopThread) {
  g_testTicks = 0;
  ExecutionLog log;
  TestHandler pending(&log, "pending"), repeated(&log, "repeated"), delayedHead(&log, "head"),
      delayedNext(&log, "next"), unrelated(&log, "unrelated");
  WorkLoop loop(&TestTicks);
  std::vector<int> results;
  WorkHandler* handedBack = nullptr;
  uint32_t selfId = 0, pendingId = 0;
  TestHandler self(&log, "self", [&] {
    results.push_back(loop.Remove(selfId, &handedBack));
    results.push_back(loop.RemoveAll(&self));
    results.push_back(loop.Remove(123456, &handedBack));
    results.push_back(loop.Remove(pendingId, &handedBack));
    results.push_back(loop.RemoveAll(&repeated));
    results.push_back(loop.RemoveAll(&delayedHead));
    results.push_back(loop.RemoveAll(&repeated));
  });
  selfId = loop.Post(&self, 9);
  pendingId = loop.Post(&pending, 5);
  loop.Post(&repeated, 5);
  loop.PostDelayed(&repeated, 10, 5);
  loop.PostDelayed(&delayedHead, 10, 5);
  loop.PostDelayed(&delayedNext, 20, 5);
  loop.Post(&unrelated, 1);
  loop.Start();
  ASSERT_TRUE(unrelated.executedEvent.TimedWait(LongMs()));
  EXPECT_EQ(results, (std::vector<int>{1, 1, 2, 0, 0, 0, 2}));
  EXPECT_EQ(handedBack, &pending);
  g_testTicks = 20;
  loop.Post(&unrelated, 1);  // wakes the loop: the next delayed item is the head now
  ASSERT_TRUE(delayedNext.executedEvent.TimedWait(LongMs()));
  EXPECT_EQ(log.Names(), (Names{"self", "unrelated", "unrelated", "next"}));
  EXPECT_EQ(pending.released + repeated.released + delayedHead.released, 0);
}

TEST(WorkLoopRemoveTest, ForeignThreadsAreRefusedWhileTheLoopThreadRuns) {
  TestHandler pending;
  BusyLoop busy;
  const uint32_t id = busy.loop.Post(&pending, 5);
  WorkHandler* handedBack = &pending;
  EXPECT_EQ(busy.loop.Remove(id, &handedBack), 3);
  EXPECT_EQ(handedBack, &pending);
  EXPECT_EQ(busy.loop.RemoveAll(&pending), 3);
  EXPECT_EQ(busy.Drain(), 1);
  EXPECT_EQ(pending.executed, 1);
}

TEST(WorkLoopRemoveTest, AnyThreadMayRemoveFromALoopThatNeverStarted) {
  TestHandler first, second, final;
  WorkLoop loop;
  const uint32_t id = loop.Post(&first, 5);
  loop.PostDelayed(&second, 5000, 5);
  loop.Stop(&final);
  WorkHandler* handedBack = nullptr;
  EXPECT_EQ(loop.Remove(id, &handedBack), 0);
  EXPECT_EQ(handedBack, &first);
  EXPECT_EQ(loop.Remove(id, &handedBack), 2);
  EXPECT_EQ(handedBack, nullptr);
  EXPECT_EQ(loop.RemoveAll(&final), 0);  // clears the final handler
  EXPECT_EQ(loop.RemoveAll(&second), 0);
  EXPECT_EQ(loop.RemoveAll(&second), 2);
  EXPECT_EQ(loop.RemoveAll(nullptr), 2);
  EXPECT_EQ(loop.Stop(nullptr), 0);
}

TEST(WorkLoopRemoveTest, ALoopRunOnACallersThreadRefusesRemoveAllWhileRunning) {
  WorkLoop loop;
  int removeAll = -1;
  TestHandler probe(nullptr, "", [&] {
    removeAll = loop.RemoveAll(&probe);
    loop.Stop(nullptr);
  });
  loop.Post(&probe, 1);
  std::thread runner([&loop] { loop.Run(); });
  runner.join();
  EXPECT_EQ(removeAll, 3);
}

TEST(WorkLoopLifecycleTest, StartAndRunRefuseARunningLoop) {
  BusyLoop busy;
  EXPECT_FALSE(busy.loop.Start());
  busy.loop.Run();  // returns at once
  EXPECT_EQ(busy.Drain(), 0);
}

TEST(WorkLoopLifecycleTest, DestroyingAnUnstartedLoopReleasesEveryItemOnce) {
  std::vector<TestHandler> handlers(3);
  {
    WorkLoop loop;
    loop.Post(&handlers[0], 1);
    loop.PostDelayed(&handlers[1], 100000, 1);
    loop.PostDelayed(&handlers[1], 100, 1);
    loop.Post(&handlers[2], 7);
  }
  for (TestHandler& handler : handlers) EXPECT_EQ(handler.executed, 0);
  EXPECT_EQ(handlers[0].released + handlers[1].released + handlers[2].released, 4);
}

TEST(WorkLoopLifecycleTest, DestroyingARunningLoopDrainsIt) {
  TestHandler ready, delayed;
  auto busy = std::make_unique<BusyLoop>();
  busy->loop.Post(&ready, 1);
  busy->loop.PostDelayed(&delayed, 3600000, 1);
  busy->blocker.Go();
  busy.reset();
  EXPECT_EQ(ready.executed + ready.released + delayed.executed + delayed.released, 4);
}

TEST(WorkLoopLoadTest, AHundredThousandDelayedItemsDrainInPriorityOrder) {
  constexpr int kItems = 100000;
  std::vector<int> order;
  order.reserve(kItems);
  std::vector<std::unique_ptr<TestHandler>> byPriority;
  for (int priority = 0; priority < 4; ++priority) {
    byPriority.push_back(std::make_unique<TestHandler>(
        nullptr, "", [&order, priority] { order.push_back(priority); }));
  }
  TestHandler final;
  {
    WorkLoop loop;
    loop.Start();
    for (int index = 0; index < kItems; ++index) {
      const uint32_t delay = 3600000u + static_cast<uint32_t>((index * 7919) % kItems);
      ASSERT_NE(loop.PostDelayed(byPriority[index % 4].get(), delay, index % 4), 0u);
    }
    EXPECT_EQ(loop.Stop(&final), 1);
  }
  ASSERT_EQ(order.size(), static_cast<size_t>(kItems));
  EXPECT_TRUE(std::is_sorted(order.rbegin(), order.rend()));
  EXPECT_EQ(final.executed, 1);
}

TEST(WorkLoopLoadTest, SeveralPostersEachItemRunsOnceInPerPosterOrder) {
  constexpr int kPosters = 4;
  constexpr int kPerPoster = 5000;
  std::vector<std::vector<int>> seen(kPosters);
  std::vector<std::unique_ptr<TestHandler>> handlers;
  for (int poster = 0; poster < kPosters; ++poster) {
    for (int index = 0; index < kPerPoster; ++index) {
      handlers.push_back(std::make_unique<TestHandler>(
          nullptr, "", [&seen, poster, index] { seen[poster].push_back(index); }));
    }
  }
  {
    WorkLoop loop;
    loop.Start();
    std::vector<std::thread> posters;
    for (int poster = 0; poster < kPosters; ++poster) {
      posters.emplace_back([&loop, &handlers, poster] {
        for (int index = 0; index < kPerPoster; ++index) {
          loop.Post(handlers[poster * kPerPoster + index].get(), 16);
        }
      });
    }
    for (std::thread& poster : posters) poster.join();
  }
  for (int poster = 0; poster < kPosters; ++poster) {
    ASSERT_EQ(seen[poster].size(), static_cast<size_t>(kPerPoster));
    EXPECT_TRUE(std::is_sorted(seen[poster].begin(), seen[poster].end()));
  }
  for (const auto& handler : handlers) EXPECT_EQ(handler->released, 1);
}

}  // namespace
}  // namespace Quillan
