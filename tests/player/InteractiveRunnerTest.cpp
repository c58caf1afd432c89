// InteractiveRunner: worked examples of ticks, next events and dispatches
// with the delays it posts, through speed changes, stop and start, the end
// of the input, and the rule that only one chain of steps ever plays.

#include "player/InteractiveRunner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "player/RunnerListener.h"
#include "tests/player/PlaybackRig.h"
#include "tests/support/TraceCapture.h"

namespace Quillan {
namespace {

using pelorin_test::PlaybackRig;
using Strings = std::vector<std::string>;

const char kThreeRecords[] = "10 $TMC a\n11 $TMC b\n15 $TMC c\n";

std::unique_ptr<InteractiveRunner> MakeRunner(bool autostart, double speed = 1.0) {
  auto runner = std::make_unique<InteractiveRunner>(autostart);
  runner->SetSpeed(speed);
  return runner;
}

const Strings kLogAtSpeed1 = {"next 10",          "tick 10", "record 10 $TMC a", "next 11",
                              "record 11 $TMC b", "next 15", "tick 12",          "tick 14",
                              "record 15 $TMC c", "finished"};
const std::vector<uint32_t> kDelaysAtSpeed1 = {0, 1000, 1000, 2000, 1000};

using Rig = PlaybackRig<InteractiveRunner>;

void StopTwiceAndStartTwice(Rig& rig) {
  rig.runner().Stop();
  rig.runner().Stop();
  rig.loop().RunAll();  // the queued step finds the runner stopped
  rig.runner().Start();
  rig.runner().Start();  // already running: nothing more is posted
}

// Made at speed 4 then given `speed`, `steps` steps run, then `act`; the log
// and delays from `act` on to the end. Each runs twice: a cancelled step
// dropped by the loop, and run anyway, as when the loop had already taken it.
TEST(InteractiveRunnerTest, WorkedExamples) {
  pelorin_test::TraceCapture capture(2);
  const struct {
    const char* name;
    const char* events;
    bool autostart;
    double speed;
    int steps;
    void (*act)(Rig&);
    Strings log;
    std::vector<uint32_t> delays;
  } examples[] = {
      {"recorded speed", kThreeRecords, true, 1.0, 0, nullptr, kLogAtSpeed1, kDelaysAtSpeed1},
      {"speed 0", kThreeRecords, true, 0.0, 0, nullptr, kLogAtSpeed1, kDelaysAtSpeed1},
      {"speed -3", kThreeRecords, true, -3.0, 0, nullptr, kLogAtSpeed1, kDelaysAtSpeed1},
      {"double speed", kThreeRecords, true, 2.0, 0, nullptr,
       {"next 10", "tick 10", "record 10 $TMC a", "next 11", "record 11 $TMC b", "next 15",
        "tick 14", "record 15 $TMC c", "finished"},
       {0, 500, 1500, 500}},
      // The clock starts at the first positive time and starts again after
      // the record at -4; records without a positive time are not dispatched.
      {"times not positive", "0 $TMC z\n10 $TMC a\n-4 $TMC y\n13 $TMC b\n", true, 1.0, 0, nullptr,
       {"next 0", "next 10", "tick 10", "record 10 $TMC a", "next -4", "next 13", "tick 13",
        "record 13 $TMC b", "finished"},
       {0, 0, 0, 0}},
      {"malformed line", "10 $TMC a\nbroken\n11 $TMC b\n", true, 1.0, 0, nullptr,
       {"next 10", "tick 10", "record 10 $TMC a", "finished"}, {0}},
      // Without autostart the first step finds the runner stopped; a refused
      // start leaves it stopped, the next one plays.
      {"start without autostart", kThreeRecords, false, 1.0, 1,
       [](Rig& rig) {
         rig.loop().RefusePosts(true);
         rig.runner().Start();
         rig.loop().RefusePosts(false);
         rig.runner().Start();
       },
       kLogAtSpeed1, kDelaysAtSpeed1},
      {"start before the first step", kThreeRecords, false, 1.0, 0,
       [](Rig& rig) { rig.runner().Start(); }, kLogAtSpeed1, kDelaysAtSpeed1},
      // At 20.0 the next tick is due at 21.0, beyond the record at 20.0: the
      // doubled speed moves it to 22.0; the wall-clock length is kept.
      {"speed change moves the tick", "19 $TMC a\n20 $TMC b\n30 $TMC c\n", true, 1.0, 2,
       [](Rig& rig) { rig.runner().SetSpeed(2.0); },
       {"record 20 $TMC b", "next 30", "tick 22", "tick 26", "tick 30", "record 30 $TMC c",
        "finished"},
       {1000, 2000, 2000}},
      // Here the tick at 19.0 comes before the record at 20.0: it stays.
      {"speed change keeps the tick", "17 $TMC a\n20 $TMC b\n30 $TMC c\n", true, 1.0, 2,
       [](Rig& rig) { rig.runner().SetSpeed(2.0); },
       {"tick 19", "record 20 $TMC b", "next 30", "tick 23", "tick 27", "record 30 $TMC c",
        "finished"},
       {500, 1500, 2000, 1500}},
      // Stop and start resume at once (Post, no delay) with the tick that was due.
      {"stop and start", kThreeRecords, true, 1.0, 3, StopTwiceAndStartTwice,
       {"tick 12", "tick 14", "record 15 $TMC c", "finished"}, {2000, 1000}},
      // From inside a consumer: the step running ends without posting, and
      // the chain that Start begins plays on alone.
      {"stop and start in a consumer", kThreeRecords, true, 1.0, 1,
       [](Rig& rig) {
         rig.probe().SetOnRecord([&rig](size_t number) {
           if (number != 1) return;
           rig.runner().Stop();
           rig.runner().Start();
           EXPECT_EQ(rig.loop().LiveHeld(), 1u);
         });
       },
       {"tick 10", "record 10 $TMC a", "next 11", "record 11 $TMC b", "next 15", "tick 12",
        "tick 14", "record 15 $TMC c", "finished"},
       {1000, 2000, 1000}},
      {"start right after stop", kThreeRecords, true, 1.0, 3,
       [](Rig& rig) {
         for (int i = 0; i < 5; ++i) {
           rig.runner().Stop();
           rig.runner().Start();
           EXPECT_EQ(rig.loop().LiveHeld(), 1u);
         }
       },
       {"tick 12", "tick 14", "record 15 $TMC c", "finished"}, {2000, 1000}},
  };
  for (bool taken : {false, true}) {
    for (const auto& example : examples) {
      SCOPED_TRACE(std::string(example.name) + (taken ? ", step taken" : ", step cancelled"));
      Rig rig(example.events, MakeRunner(example.autostart, 4.0));
      rig.loop().IgnoreCancel(taken);
      rig.runner().SetSpeed(example.speed);
      rig.Run();
      for (int i = 0; i < example.steps; ++i) rig.loop().RunNext();
      rig.probe().Clear();
      const size_t delaysBefore = rig.loop().Delays().size();
      if (example.act) example.act(rig);
      rig.loop().RunAll();
      EXPECT_EQ(rig.probe().Log(), example.log);
      const std::vector<uint32_t> delays = rig.loop().Delays();
      EXPECT_EQ(std::vector<uint32_t>(delays.begin() + delaysBefore, delays.end()), example.delays);
      const auto posts = rig.loop().Posts();
      EXPECT_FALSE(posts.front().delayed);  // RunOn's Post
      for (const auto& post : posts) EXPECT_EQ(post.priority, 16u);
      EXPECT_EQ(rig.loop().Held(), 0u);
    }
  }
  EXPECT_TRUE(capture.Contains("InteractiveRunner::SetSpeed: -3"));
  EXPECT_TRUE(capture.Contains("InteractiveRunner::InteractiveRunner, m_stopped=0"));
  EXPECT_TRUE(capture.Contains("InteractiveRunner::InteractiveRunner, m_stopped=1"));
  // Only a step that found the runner stopped says so: the first step
  // without autostart and the queued one after a stop, in both rounds.
  EXPECT_EQ(capture.Count("InteractiveRunner::Execute: stopping"), 4u);
}

// Unbound, or shut down, the runner refuses to start and posts nothing.
TEST(InteractiveRunnerTest, StartNeedsABoundLiveRunner) {
  pelorin_test::TraceCapture capture(2);
  Rig rig(kThreeRecords, MakeRunner(false));
  rig.runner().Start();
  EXPECT_EQ(capture.Lines().back().text, "Loop is null!!! ");
  EXPECT_EQ(capture.Lines().back().level, 4);
  rig.Run();
  rig.runner().ShutDown();
  rig.runner().Start();
  EXPECT_EQ(rig.loop().Posts().size(), 1u);
  rig.loop().RunAll();
  EXPECT_TRUE(rig.probe().Log().empty());
}

// Stops the runner from a tick listener at the first tick.
class StopAtFirstTick : public RunnerListener {
 public:
  explicit StopAtFirstTick(InteractiveRunner& runner) : m_runner(runner) {}
  void OnTick(Runner*, double) override {
    if (!m_stopped) m_runner.Stop();
    m_stopped = true;
  }

 private:
  InteractiveRunner& m_runner;
  bool m_stopped = false;
};

// A stop takes effect when the next step begins: the step running when it
// comes (here from a tick listener, or from the first consumer) hands its
// record to every consumer, reports the next event and posts; the next step
// stops. Start plays on from there.
TEST(InteractiveRunnerTest, StopDuringAStepLetsThatStepFinish) {
  for (bool inListener : {true, false}) {
    SCOPED_TRACE(inListener ? "stop in a tick listener" : "stop in the first consumer");
    pelorin_test::TraceCapture capture(2);
    Rig rig(kThreeRecords, MakeRunner(true));
    pelorin_test::PlaybackProbe second;
    StopAtFirstTick stopper(rig.runner());
    rig.runner().SetConsumers({&rig.probe(), &second});
    if (inListener) {
      rig.runner().AddListener(&stopper);
    } else {
      rig.probe().SetOnRecord([&rig](size_t number) {
        if (number == 1) rig.runner().Stop();
      });
    }
    rig.Run();
    rig.loop().RunAll();
    EXPECT_EQ(rig.probe().Log(), (Strings{"next 10", "tick 10", "record 10 $TMC a", "next 11"}));
    EXPECT_EQ(second.Payloads(), Strings{"a"});
    EXPECT_EQ(rig.loop().Delays(), (std::vector<uint32_t>{0, 1000}));
    EXPECT_EQ(capture.Count("InteractiveRunner::Execute: stopping"), 1u);
    rig.runner().Start();
    rig.loop().RunAll();
    EXPECT_EQ(rig.probe().Payloads(), (Strings{"a", "b", "c"}));
    EXPECT_EQ(second.Payloads(), (Strings{"a", "b", "c"}));
  }
}

// A tick that falls on a record's time stamp comes first, in the same
// step, however the wall-clock distances round; also when the speed changes
// (after `steps` steps) while the two are due together.
TEST(InteractiveRunnerTest, ATickAtARecordsTimeComesFirst) {
  const char kAtSpeed015[] = "102.2 $TMC a\n105.5 $TMC b\n109.5 $TMC c\n";
  const struct {
    const char* events;
    double speed;
    const char* tick;
    int steps;
    double newSpeed;
  } cases[] = {
      {kAtSpeed015, 0.15, "tick 105.5", 0, 0.0},
      {"10 $TMC a\n11.2 $TMC b\n", 0.3, "tick 11.2", 0, 0.0},
      {"17.3 $TMC a\n19.7 $TMC b\n", 0.3, "tick 19.7", 0, 0.0},
      {kAtSpeed015, 0.15, "tick 105.5", 12, 4.0},  // the tick at 105.2 came last
  };
  for (const auto& c : cases) {
    Rig rig(c.events, MakeRunner(true, c.speed));
    rig.Run();
    for (int i = 0; i < c.steps; ++i) rig.loop().RunNext();
    if (c.newSpeed > 0.0) rig.runner().SetSpeed(c.newSpeed);
    rig.loop().RunAll();
    const Strings log = rig.probe().Log();
    const auto record = std::find_if(log.begin(), log.end(), [](const std::string& entry) {
      return entry.rfind("record ", 0) == 0 && entry.back() == 'b';
    });
    ASSERT_NE(record, log.end()) << c.events;
    ASSERT_NE(record, log.begin()) << c.events;
    EXPECT_EQ(*(record - 1), c.tick) << c.events;
    EXPECT_EQ(std::count(log.begin(), log.end(), c.tick), 1) << c.events;
  }
}

// Record times so large, or a speed so low, that a tick interval does not
// move the record time: the clock still moves on, and the second record
// plays after its wall-clock distance, reached in steps that all wait.
TEST(InteractiveRunnerTest, CoarseRecordTimesStillTickAndPlay) {
  const struct {
    const char* events;
    double speed;
    size_t delays;  // the first step's, then one per 2 s of wall clock
  } cases[] = {
      {"100000000000000000 $TMC a\n100000000000000016 $TMC b\n", 1.0, 9},  // 16 s apart
      {"1700000000000000 $TMC a\n1700000000000001 $TMC b\n", 0.01, 51},    // microseconds
      {"1700000000 $TMC a\n1700000000.000001 $TMC b\n", 6e-8, 9},          // 15.9 s
  };
  for (const auto& c : cases) {
    PlaybackRig<InteractiveRunner> rig(c.events, MakeRunner(true, c.speed));
    rig.Run();
    rig.loop().RunAll(200);
    EXPECT_EQ(rig.probe().Payloads(), (Strings{"a", "b"})) << c.events;
    const std::vector<uint32_t> delays = rig.loop().Delays();
    ASSERT_EQ(delays.size(), c.delays) << c.events;
    EXPECT_EQ(std::count(delays.begin() + 1, delays.end(), 0u), 0) << c.events;
  }
}

}  // namespace
}  // namespace Quillan
