// The online traffic producer against fake services: one that answers on a
// thread of its own, and one that never answers. Waits are counted in polls
// through the injected sleep, so no test depends on how fast the machine is.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "CIString.h"
#include "OnlineTrafficService.h"
#include "producers/OnlineTrafficProducer.h"
#include "runtime/TimeBase.h"
#include "tests/support/TestTime.h"
#include "tests/support/TraceCapture.h"

namespace Quillan {
namespace {

const char kWarning[] =
    "OnlineTrafficProducer::WaitFor: playback blocked for more than 5seconds at event at ";

// Records every call. When given a reply interface, it answers each call the
// way the real service does, later, on its own thread; Post runs any answer
// there too.
class FakeService : public OnlineTrafficService {
 public:
  explicit FakeService(OnlineTrafficReply* answerTo = nullptr) : m_reply(answerTo) {
    m_thread = std::thread([this] { Run(); });
  }
  ~FakeService() override {
    Post(nullptr);
    m_thread.join();
  }

  int setOnlineTrafficDataStatus(int32_t status) override {
    const auto answer = [](OnlineTrafficReply& reply) { reply.OnServiceValue(1); };
    return Call("setOnlineTrafficDataStatus " + std::to_string(status),
                status == 0 ? +answer : nullptr);
  }
  int getInventory() override {
    return Call("getInventory", [](OnlineTrafficReply& reply) { reply.OnInventoryAnswer(); });
  }
  int getNewData() override {
    return Call("getNewData", [](OnlineTrafficReply& reply) { reply.OnNewDataAnswer(); });
  }
  int setNewData(std::shared_ptr<CIString> path) override {
    return Call("setNewData " + path->utf8() + " " + std::to_string(path->encoding()),
                [](OnlineTrafficReply& reply) { reply.OnSetNewDataDone(); });
  }
  int setNewSession() override { return Call("setNewSession"); }
  int setTimeoutForFallback(int64_t timeout) override {
    return Call("setTimeoutForFallback " + std::to_string(timeout));
  }
  int dsiConnectionStateChanged(int32_t state) override {
    return Call("dsiConnectionStateChanged " + std::to_string(state));
  }

  // Runs `task` on the service's thread (null ends the thread).
  void Post(std::function<void()> task) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_tasks.push_back(std::move(task));
    m_wake.notify_one();
  }
  std::vector<std::string> Calls() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_calls;
  }

 private:
  int Call(const std::string& call, void (*answer)(OnlineTrafficReply&) = nullptr) {
    {
      std::lock_guard<std::mutex> guard(m_lock);
      m_calls.push_back(call);
    }
    if (answer != nullptr && m_reply != nullptr) Post([this, answer] { answer(*m_reply); });
    return 0;
  }
  void Run() {
    for (;;) {
      std::unique_lock<std::mutex> lock(m_lock);
      m_wake.wait(lock, [this] { return !m_tasks.empty(); });
      std::function<void()> task = std::move(m_tasks.front());
      m_tasks.pop_front();
      lock.unlock();
      if (!task) return;
      task();
    }
  }

  OnlineTrafficReply* m_reply;
  mutable std::mutex m_lock;
  std::condition_variable m_wake;
  std::deque<std::function<void()>> m_tasks;
  std::vector<std::string> m_calls;
  std::thread m_thread;
};

// Wait timing whose sleep counts the polls and runs `onPoll` (given the
// count) at each; it really sleeps only when `realSleep` is set.
struct CountingTiming {
  explicit CountingTiming(uint32_t pollMs, uint32_t limitMs, uint32_t warningMs, bool realSleep) {
    timing.pollMs = pollMs;
    timing.limitMs = limitMs;
    timing.warningMs = warningMs;
    timing.sleep = [this, realSleep](uint32_t ms) {
      const uint64_t count = ++polls;
      if (onPoll) onPoll(count);
      if (realSleep) {
        SleepMs(ms);
      } else {
        std::this_thread::yield();
      }
    };
  }
  std::atomic<uint64_t> polls{0};
  std::function<void(uint64_t)> onPoll;
  OnlineTrafficTiming timing;
};

// True once `condition` holds; false after a generous wall-clock bound.
bool Eventually(const std::function<bool()>& condition) {
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(10) * pelorin_test::TimeScale();
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

TEST(OnlineTrafficProducerStatus, StatusesBeforeAnyWait) {
  OnlineTrafficProducer producer;
  EXPECT_EQ(producer.OnRecord(1, "$TMC", "getInventory"), 1);
  EXPECT_EQ(producer.OnRecord(1, "$TOT", "getInventory"), 1);  // no service yet
  EXPECT_EQ(producer.OnRecord(1, "$TOT", "setNewData"), 1);
  EXPECT_EQ(producer.OnRecord(1, "$TOT", "nope"), 3);  // the name is checked first
  FakeService service;
  producer.SetService(&service);
  EXPECT_EQ(producer.OnRecord(1, "$TOT", ""), 2);
  EXPECT_EQ(producer.OnRecord(1, "$TOT", ":getInventory"), 2);
  EXPECT_EQ(producer.OnRecord(1, "$TOT", "getinventory"), 3);
  EXPECT_EQ(producer.OnRecord(1, "$TOT", "getInventory "), 3);
  EXPECT_EQ(producer.OnRecord(1, "$TOT", "getInventory:x"), 4);
  EXPECT_EQ(producer.OnRecord(1, "$TOT", "setNewData"), 4);
  EXPECT_EQ(producer.OnRecord(1, "$TOT", "setNewData:a b"), 4);
  EXPECT_TRUE(service.Calls().empty());
  EXPECT_EQ(producer.GetLastDataTime(), 0u);
}

TEST(OnlineTrafficProducerStatus, DiagnosticsWithoutAService) {
  TotCall call;
  EXPECT_EQ(OnlineTrafficProducer::CheckPayload("setNewData:\"my file.bin\"x  y", &call), 4);
  EXPECT_EQ(call.method, "setNewData");
  EXPECT_EQ(call.arguments, (std::vector<std::string>{"my file.bin", "x", "y"}));
  EXPECT_EQ(OnlineTrafficProducer::CheckPayload("getInventory:"), 0);
  EXPECT_EQ(OnlineTrafficProducer::CheckPayload("setNewData:\"\"  a.bin \"\""), 0);
  EXPECT_EQ(OnlineTrafficProducer::CheckPayload("nope:1"), 3);
  EXPECT_EQ(OnlineTrafficProducer::CheckPayload(":1"), 2);
}

TEST(OnlineTrafficProducerStatus, ArgumentsAndPathsReachTheService) {
  OnlineTrafficProducer producer;
  FakeService service(&producer);
  producer.SetService(&service);
  producer.OnConnected();
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"setTimeoutForFallback:-30", "setTimeoutForFallback -30"},
      {"setTimeoutForFallback:2147483648", "setTimeoutForFallback 2147483647"},
      {"setTimeoutForFallback:  12abc", "setTimeoutForFallback 12"},
      {"dsiConnectionStateChanged:x", "dsiConnectionStateChanged 0"},
  };
  for (const auto& c : cases) EXPECT_EQ(producer.OnRecord(3, "$TOT", c.first), 0) << c.first;
  service.Post([&] { producer.OnServiceStatus(0); });
  service.Post([&] { producer.OnServiceValue(7); });
  const std::vector<std::pair<std::string, std::string>> files = {
      {"", "setNewData:a.bin  "},
      {"/fs/sda0/quillan/", "setNewData: a.bin"},
      {"/d", "setNewData:\"my file.bin\""},
      {"/d", "setNewData:\xE4.bin"},
  };
  for (const auto& f : files) {
    producer.SetTpegsDir(f.first);
    EXPECT_EQ(producer.OnRecord(9, "$TOT", f.second), 0) << f.second;
  }
  std::vector<std::string> expected;
  for (const auto& c : cases) expected.push_back(c.second);
  for (const char* path :
       {"a.bin", "/fs/sda0/quillan//a.bin", "/d/my file.bin", "/d/\xC3\xA4.bin"}) {
    expected.push_back(std::string("setNewData ") + path + " 3");
  }
  EXPECT_EQ(service.Calls(), expected);
}

class OnlineTrafficProducerWaits : public ::testing::Test {
 protected:
  // Shipped periods, but the sleep only counts: 100 polls are 5000 ms.
  CountingTiming clock{50, 5000, 5000, false};
  OnlineTrafficProducer producer{clock.timing};
  pelorin_test::TraceCapture trace{2};
};

TEST_F(OnlineTrafficProducerWaits, LimitedWaitsGiveUpAfter100PollsWithoutWarning) {
  FakeService silent;
  producer.SetService(&silent);
  EXPECT_EQ(producer.OnRecord(42, "$TOT", "setOnlineTrafficDataStatus:0"), 0);
  EXPECT_EQ(clock.polls, 200u);  // not ready, then no service value
  EXPECT_EQ(producer.OnRecord(43, "$TOT", "setOnlineTrafficDataStatus:5"), 0);
  EXPECT_EQ(clock.polls, 300u);  // not ready; no value wait for a non-zero status
  EXPECT_EQ(silent.Calls(), (std::vector<std::string>{"setOnlineTrafficDataStatus 0",
                                                      "setOnlineTrafficDataStatus 5"}));
  EXPECT_EQ(trace.Count("WaitFor"), 0u);
  producer.OnServiceStatus(0);
  producer.OnServiceValue(1);
  EXPECT_EQ(producer.OnRecord(44, "$TOT", "setOnlineTrafficDataStatus:0"), 0);
  EXPECT_EQ(clock.polls, 300u);
}

TEST_F(OnlineTrafficProducerWaits, UnlimitedWaitWarnsEveryFiveSecondsUntilTheServiceIsReady) {
  FakeService silent;
  producer.SetService(&silent);
  producer.OnServiceStatus(0);
  producer.OnServiceStatus(1);  // not ready again
  std::atomic<bool> calledEarly{false};
  clock.onPoll = [&](uint64_t polls) {
    if (polls <= 351 && !silent.Calls().empty()) calledEarly = true;
    if (polls == 350) producer.OnServiceStatus(0);  // 17.5 s of waiting
    if (polls == 351) producer.OnServiceValue(1);
    if (polls == 460) producer.OnNewDataAnswer();  // 5.45 s after the call
  };
  EXPECT_EQ(producer.OnRecord(1234, "$TOT", "getNewData"), 0);
  EXPECT_FALSE(calledEarly);
  EXPECT_EQ(silent.Calls(), std::vector<std::string>{"getNewData"});
  const std::string expected = kWarning + std::to_string(1234);
  // 5, 10 and 15 s on the first wait; the wait after the call starts afresh.
  EXPECT_EQ(trace.Texts(3), std::vector<std::string>(4, expected));
}

TEST_F(OnlineTrafficProducerWaits, AbandonedWaitsEndAtOnceAndCallNothingMore) {
  FakeService silent;
  producer.SetService(&silent);
  clock.onPoll = [&](uint64_t polls) {
    if (polls == 3) producer.AbandonWaits();  // the owner shuts playback down
  };
  EXPECT_EQ(producer.OnRecord(7, "$TOT", "getInventory"), 1);
  EXPECT_EQ(clock.polls, 3u);
  producer.OnServiceStatus(0);
  producer.OnServiceValue(1);
  EXPECT_EQ(producer.OnRecord(8, "$TOT", "setNewData:a.bin"), 1);
  EXPECT_EQ(producer.OnRecord(9, "$TOT", "setTimeoutForFallback:30"), 1);
  EXPECT_TRUE(silent.Calls().empty());
  EXPECT_EQ(producer.GetLastDataTime(), 0u);
}

// Each call waits for the service state it needs: the answer comes at the
// seventh poll, and the call only after it.
TEST_F(OnlineTrafficProducerWaits, EachCallWaitsForTheStateItNeeds) {
  const struct {
    const char* payload;
    bool ready;
    void (*answer)(OnlineTrafficProducer&);
  } cases[] = {
      {"setNewSession", false, [](OnlineTrafficProducer& p) { p.OnServiceStatus(0); }},
      {"setNewData:a.bin", true, [](OnlineTrafficProducer& p) { p.OnServiceValue(1); }},
      {"dsiConnectionStateChanged:2", false, [](OnlineTrafficProducer& p) { p.OnConnected(); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.payload);
    FakeService silent;
    OnlineTrafficProducer fresh{clock.timing};
    fresh.SetService(&silent);
    if (c.ready) fresh.OnServiceStatus(0);
    clock.polls = 0;
    bool calledEarly = false;
    clock.onPoll = [&](uint64_t polls) {
      if (!silent.Calls().empty()) calledEarly = true;
      if (polls == 7) c.answer(fresh);
    };
    EXPECT_EQ(fresh.OnRecord(9, "$TOT", c.payload), 0);
    EXPECT_FALSE(calledEarly);
    EXPECT_EQ(clock.polls, 7u);
    EXPECT_EQ(silent.Calls().size(), 1u);
  }
}

// The host swaps or detaches the service while a call waits: the call goes
// to the service attached when the wait ends, or is not made.
TEST_F(OnlineTrafficProducerWaits, ServiceIsReadAgainAfterTheWait) {
  for (bool detach : {false, true}) {
    FakeService old, replacement;
    OnlineTrafficProducer fresh{clock.timing};
    fresh.SetService(&old);
    clock.onPoll = [&](uint64_t) {
      fresh.SetService(detach ? nullptr : &replacement);
      fresh.OnServiceStatus(0);
      fresh.OnServiceValue(1);
    };
    EXPECT_EQ(fresh.OnRecord(7, "$TOT", "setNewData:a.bin"), detach ? 1 : 0);
    EXPECT_TRUE(old.Calls().empty());
    EXPECT_EQ(replacement.Calls().size(), detach ? 0u : 1u);
    EXPECT_EQ(fresh.GetLastDataTime(), detach ? 0u : 7u);
    if (!detach) continue;
    // The call not made left no data pending: the next one does not wait.
    clock.onPoll = [&](uint64_t) { fresh.AbandonWaits(); };
    fresh.SetService(&replacement);
    EXPECT_EQ(fresh.OnRecord(8, "$TOT", "setNewData:b.bin"), 0);
    EXPECT_EQ(replacement.Calls().size(), 1u);
  }
}

// Real threads and short real polls: 1 ms polls, 40 ms limits, warnings far
// apart. A check that fails never leaves a call blocked: each test answers.
class OnlineTrafficProducerWithService : public ::testing::Test {
 protected:
  OnlineTrafficProducerWithService() {
    producer.SetService(&service);
    service.Post([this] { producer.OnServiceStatus(0); });
    service.Post([this] { producer.OnServiceValue(3); });
  }
  // Runs OnRecord on a thread of its own, as the work loop would.
  std::future<int> Play(uint32_t time, const std::string& payload) {
    return std::async(std::launch::async,
                      [this, time, payload] { return producer.OnRecord(time, "$TOT", payload); });
  }
  // True when `result` is still waiting after 30 more polls.
  bool StillBlocked(std::future<int>& result) {
    const uint64_t start = clock.polls;
    return Eventually([&] { return clock.polls >= start + 30; }) &&
           result.wait_for(std::chrono::seconds(0)) == std::future_status::timeout;
  }

  CountingTiming clock{1, 40, 1000000, true};
  OnlineTrafficProducer producer{clock.timing};
  FakeService service{&producer};
};

TEST_F(OnlineTrafficProducerWithService, AnswersAreConsumedByTheCallThatWaitedForThem) {
  EXPECT_EQ(Play(1, "getInventory").get(), 0);
  EXPECT_EQ(Play(2, "getNewData").get(), 0);
  EXPECT_EQ(Play(3, "getInventory").get(), 0);
  EXPECT_EQ(service.Calls(),
            (std::vector<std::string>{"getInventory", "getNewData", "getInventory"}));

  // An answer is used once: without a new one the next call waits.
  FakeService silent;
  producer.SetService(&silent);
  auto inventory = Play(4, "getInventory");
  EXPECT_TRUE(StillBlocked(inventory));
  silent.Post([this] { producer.OnInventoryAnswer(); });
  EXPECT_EQ(inventory.get(), 0);
  EXPECT_EQ(silent.Calls(), std::vector<std::string>{"getInventory"});
}

TEST_F(OnlineTrafficProducerWithService, SecondSetNewDataWaitsForTheFirstToBeDone) {
  FakeService slow;  // acknowledges only when told to
  producer.SetService(&slow);
  EXPECT_EQ(Play(100, "setNewData:a.bin").get(), 0);
  EXPECT_EQ(producer.GetLastDataTime(), 100u);
  auto second = Play(200, "setNewData:b.bin");
  EXPECT_TRUE(StillBlocked(second));
  EXPECT_EQ(producer.GetLastDataTime(), 100u);
  EXPECT_EQ(slow.Calls().size(), 1u);
  slow.Post([this] { producer.OnSetNewDataDone(); });
  EXPECT_EQ(second.get(), 0);
  EXPECT_EQ(producer.GetLastDataTime(), 200u);
  EXPECT_EQ(slow.Calls().size(), 2u);
}

}  // namespace
}  // namespace Quillan
