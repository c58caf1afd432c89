// The online traffic producer against a fake service that answers only when
// told to; waits are counted in polls through the injected sleep.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "CIString.h"
#include "OnlineTrafficService.h"
#include "producers/OnlineTrafficProducer.h"
#include "tests/support/TraceCapture.h"

namespace Quillan {
namespace {

const char kWarning[] =
    "OnlineTrafficProducer::WaitFor: playback blocked for more than 5seconds at event at ";

// Records every call; given a reply interface, it owes each call the answer
// the real service gives, and pays what it owes at Answer().
class FakeService : public OnlineTrafficService {
  using Answer_ = void (*)(OnlineTrafficReply&);

 public:
  explicit FakeService(OnlineTrafficReply* answerTo = nullptr) : m_reply(answerTo) {}
  int setOnlineTrafficDataStatus(int32_t status) override {
    return Call("setOnlineTrafficDataStatus " + std::to_string(status),
                status == 0 ? [](OnlineTrafficReply& r) { r.OnServiceValue(1); } : Answer_());
  }
  int getInventory() override {
    return Call("getInventory", [](OnlineTrafficReply& r) { r.OnInventoryAnswer(); });
  }
  int getNewData() override {
    return Call("getNewData", [](OnlineTrafficReply& r) { r.OnNewDataAnswer(); });
  }
  int setNewData(std::shared_ptr<CIString> path) override {
    return Call("setNewData " + path->utf8() + " " + std::to_string(path->encoding()),
                [](OnlineTrafficReply& r) { r.OnSetNewDataDone(); });
  }
  int setNewSession() override { return Call("setNewSession"); }
  int setTimeoutForFallback(int64_t t) override {
    return Call("setTimeoutForFallback " + std::to_string(t));
  }
  int dsiConnectionStateChanged(int32_t s) override {
    return Call("dsiConnectionStateChanged " + std::to_string(s));
  }
  void Answer() {
    for (Answer_ answer : std::exchange(m_owed, {})) answer(*m_reply);
  }
  std::vector<std::string> calls;

 private:
  int Call(const std::string& call, Answer_ answer = nullptr) {
    calls.push_back(call);
    if (answer != nullptr && m_reply != nullptr) m_owed.push_back(answer);
    return 0;
  }
  OnlineTrafficReply* m_reply;
  std::vector<Answer_> m_owed;
};

// Wait timing whose sleep only counts the polls and runs `onPoll` (given the
// count) at each.
struct CountingTiming {
  CountingTiming(uint32_t pollMs, uint32_t limitMs, uint32_t warningMs) {
    timing.pollMs = pollMs;
    timing.limitMs = limitMs;
    timing.warningMs = warningMs;
    timing.sleep = [this](uint32_t) {
      ++polls;
      if (onPoll) onPoll(polls);
    };
  }
  uint64_t polls = 0;
  std::function<void(uint64_t)> onPoll;
  OnlineTrafficTiming timing;
};

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
  EXPECT_TRUE(service.calls.empty());
  EXPECT_EQ(producer.GetLastDataTime(), 0u);
}

class OnlineTrafficProducerWaits : public ::testing::Test {
 protected:
  // Shipped periods, but the sleep only counts: 100 polls are 5000 ms.
  CountingTiming clock{50, 5000, 5000};
  OnlineTrafficProducer producer{clock.timing};
  pelorin_test::TraceCapture trace{2};
};

TEST_F(OnlineTrafficProducerWaits, ArgumentsAndPathsReachTheService) {
  FakeService service(&producer);
  producer.SetService(&service);
  producer.OnConnected();
  producer.OnServiceStatus(0);
  producer.OnServiceValue(7);
  clock.onPoll = [&](uint64_t) { service.Answer(); };
  const struct {
    const char* tpegsDir;
    const char* payload;
    std::string call;
  } cases[] = {
      {"", "setTimeoutForFallback:-30", "setTimeoutForFallback -30"},
      {"", "setTimeoutForFallback:2147483648", "setTimeoutForFallback 2147483647"},
      {"", "setTimeoutForFallback:  12abc", "setTimeoutForFallback 12"},
      {"", "dsiConnectionStateChanged:x", "dsiConnectionStateChanged 0"},
      {"", "setNewData:a.bin  ", "setNewData a.bin 3"},
      {"/fs/sda0/quillan/", "setNewData: a.bin", "setNewData /fs/sda0/quillan//a.bin 3"},
      {"/d", "setNewData:\"my file.bin\"", "setNewData /d/my file.bin 3"},
      {"/d", "setNewData:\xE4.bin", "setNewData /d/\xC3\xA4.bin 3"},
  };
  for (const auto& c : cases) {
    producer.SetTpegsDir(c.tpegsDir);
    EXPECT_EQ(producer.OnRecord(3, "$TOT", c.payload), 0) << c.payload;
    EXPECT_EQ(service.calls.back(), c.call);
  }
  EXPECT_EQ(service.calls.size(), 8u);
}

// Each answer ends the one wait it was given for; a second "setNewData" waits
// until the first is done. Every awaited answer costs one poll.
TEST_F(OnlineTrafficProducerWaits, AnswersAreConsumedByTheCallThatWaitedForThem) {
  FakeService service(&producer);
  producer.SetService(&service);
  producer.OnServiceStatus(0);
  producer.OnServiceValue(3);
  clock.onPoll = [&](uint64_t) { service.Answer(); };
  const std::vector<std::string> payloads = {"getInventory", "getNewData", "getInventory",
                                             "setNewData:a.bin", "setNewData:b.bin"};
  for (size_t i = 0; i < payloads.size(); ++i) {
    EXPECT_EQ(producer.OnRecord(100 + i, "$TOT", payloads[i]), 0) << payloads[i];
  }
  EXPECT_EQ(clock.polls, 4u);
  EXPECT_EQ(producer.GetLastDataTime(), 104u);
  EXPECT_EQ(service.calls.size(), payloads.size());
}

TEST_F(OnlineTrafficProducerWaits, LimitedWaitsGiveUpAfter100PollsWithoutWarning) {
  FakeService silent;
  producer.SetService(&silent);
  EXPECT_EQ(producer.OnRecord(42, "$TOT", "setOnlineTrafficDataStatus:0"), 0);
  EXPECT_EQ(clock.polls, 200u);  // not ready, then no service value
  EXPECT_EQ(producer.OnRecord(43, "$TOT", "setOnlineTrafficDataStatus:5"), 0);
  EXPECT_EQ(clock.polls, 300u);  // not ready; no value wait for a non-zero status
  EXPECT_EQ(silent.calls, (std::vector<std::string>{"setOnlineTrafficDataStatus 0",
                                                    "setOnlineTrafficDataStatus 5"}));
  EXPECT_EQ(trace.Count("WaitFor"), 0u);
  producer.OnServiceStatus(0);
  producer.OnServiceValue(1);
  EXPECT_EQ(producer.OnRecord(44, "$TOT", "setOnlineTrafficDataStatus:0"), 0);
  EXPECT_EQ(clock.polls, 300u);

  // A zero poll period still counts time: a 5 s limit is 5000 polls of 1 ms.
  CountingTiming zero{0, 5000, 5000};
  OnlineTrafficProducer spinning{zero.timing};
  zero.onPoll = [&](uint64_t polls) {
    if (polls > 6000) spinning.AbandonWaits();
  };
  spinning.SetService(&silent);
  EXPECT_EQ(spinning.OnRecord(45, "$TOT", "setOnlineTrafficDataStatus:5"), 0);
  EXPECT_EQ(zero.polls, 5000u);
}

TEST_F(OnlineTrafficProducerWaits, UnlimitedWaitWarnsEveryFiveSecondsUntilTheServiceIsReady) {
  FakeService silent;
  producer.SetService(&silent);
  producer.OnServiceStatus(0);
  producer.OnServiceStatus(1);  // not ready again
  bool calledEarly = false;
  clock.onPoll = [&](uint64_t polls) {
    if (polls <= 351 && !silent.calls.empty()) calledEarly = true;
    if (polls == 350) producer.OnServiceStatus(0);  // 17.5 s of waiting
    if (polls == 351) producer.OnServiceValue(1);
    if (polls == 460) producer.OnNewDataAnswer();  // 5.45 s after the call
  };
  EXPECT_EQ(producer.OnRecord(1234, "$TOT", "getNewData"), 0);
  EXPECT_FALSE(calledEarly);
  EXPECT_EQ(silent.calls, std::vector<std::string>{"getNewData"});
  const std::string expected = kWarning + std::to_string(1234);
  // 5, 10 and 15 s on the first wait; the wait after the call starts afresh.
  EXPECT_EQ(trace.Texts(3), std::vector<std::string>(4, expected));
}

// Each call waits for the service state it needs: the answer comes at the
// seventh poll, and the call only after it.
TEST_F(OnlineTrafficProducerWaits, EachCallWaitsForTheStateItNeeds) {
  using Step = void (*)(OnlineTrafficProducer&);
  const Step ready = [](OnlineTrafficProducer& p) { p.OnServiceStatus(0); };
  const Step value = [](OnlineTrafficProducer& p) { p.OnServiceValue(1); };
  const struct {
    const char* payload;
    Step before;  // the state that is already there
    Step answer;
  } cases[] = {
      {"setNewSession", nullptr, ready},
      {"setNewData:a.bin", ready, value},
      {"setNewData:b.bin", value, ready},
      {"dsiConnectionStateChanged:2", nullptr, [](OnlineTrafficProducer& p) { p.OnConnected(); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.payload);
    FakeService silent;
    OnlineTrafficProducer fresh{clock.timing};
    fresh.SetService(&silent);
    if (c.before != nullptr) c.before(fresh);
    clock.polls = 0;
    bool calledEarly = false;
    clock.onPoll = [&](uint64_t polls) {
      if (!silent.calls.empty()) calledEarly = true;
      if (polls == 7) c.answer(fresh);
    };
    EXPECT_EQ(fresh.OnRecord(9, "$TOT", c.payload), 0);
    EXPECT_FALSE(calledEarly);
    EXPECT_EQ(clock.polls, 7u);
    EXPECT_EQ(silent.calls.size(), 1u);
  }
}

// A service swapped or detached during a wait: the call goes to the new one.
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
    EXPECT_TRUE(old.calls.empty());
    EXPECT_EQ(replacement.calls.size(), detach ? 0u : 1u);
  }
}

}  // namespace
}  // namespace Quillan
