// The figures of a file's summary: play time as the real-time player waits
// it, records per tag in bounded memory, date-times and durations, and the
// online traffic answers that playback waits for.

#include <gtest/gtest.h>

#include "host/pelorin-check/FileSummary.h"
#include "host/pelorin-check/PlayDuration.h"
#include "host/pelorin-check/TagCounter.h"

namespace {

using PelorinCheck::PlayDuration;
using PelorinCheck::TagCounter;

uint64_t PlayMs(std::initializer_list<double> times, double speed) {
  PlayDuration duration(speed);
  for (double time : times) duration.AddRecord(time);
  return duration.TotalMs();
}

TEST(PlayDurationTest, AddsTheDelaysOfTheRealTimePlayerEachRoundedToTheMillisecond) {
  EXPECT_EQ(PlayMs({100.0, 101.0, 103.5}, 1.0), 3500u);
  EXPECT_EQ(PlayMs({100.0, 101.0, 103.5}, 2.0), 1750u);
  // Backwards: no delay, and the next distance counts from the earlier record.
  EXPECT_EQ(PlayMs({5.0, 4.0, 6.0}, 1.0), 2000u);
  // After a time stamp of 0 or less the next record follows at once.
  EXPECT_EQ(PlayMs({0.0, 3.0, 4.0}, 1.0), 1000u);
  EXPECT_EQ(PlayMs({-2.0, 3.0}, 1.0), 0u);
  EXPECT_EQ(PlayMs({1.0, 1.0006}, 1.0), 1u);
  EXPECT_EQ(PlayMs({1.0, 1.0e10, 2.0e10}, 1.0), 2ull * UINT32_MAX);
  // Rounded per record, not over the sum: 1000 gaps of 0.4 ms play at once.
  PlayDuration duration(1.0);
  for (int i = 0; i < 1000; ++i) duration.AddRecord(1.0 + i * 0.0004);
  EXPECT_EQ(duration.TotalMs(), 0u);
}

TEST(TagCounterTest, CountsInOrderOfAppearanceWithinItsBounds) {
  TagCounter counter;
  counter.Add("$TMC");
  counter.Add("$TSL");
  counter.Add("$TMC");
  for (int i = 0; i < 40; ++i) counter.Add("$X" + std::to_string(i % 20));
  ASSERT_EQ(counter.Counts().size(), TagCounter::kMaxTags);
  EXPECT_EQ(counter.Counts()[0], std::make_pair(std::string("$TMC"), uint64_t{2}));
  EXPECT_EQ(counter.Counts()[1].first, "$TSL");
  EXPECT_EQ(counter.Counts()[2], std::make_pair(std::string("$X0"), uint64_t{2}));
  // $X14 .. $X19 did not fit: 6 tags, twice each.
  EXPECT_EQ(counter.OtherRecords(), 12u);
  // Long tags count under their first bytes.
  TagCounter longTags;
  const std::string stem(TagCounter::kMaxTagBytes, 't');
  longTags.Add(stem + "a");
  longTags.Add(stem + "b");
  EXPECT_EQ(longTags.Counts(), (std::vector<std::pair<std::string, uint64_t>>{{stem, 2}}));
}

// Only calls that play and wait for their answer count, by their method.
TEST(FileSummaryTest, CountsTheOnlineTrafficAnswersThatPlaybackWaitsFor) {
  PelorinCheck::FileSummary summary("rec", 0.0);
  const struct {
    const char* tag;
    const char* payload;
    bool delivered;
  } records[] = {
      {"$TOT", "getInventory", true},          {"$TOT", "getNewData:", true},
      {"$TOT", "setNewData:getNewData", true}, {"$TOT", "getInventorys", true},
      {"$TMC", "getInventory", true},          {"$TOT", "getNewData", false},
  };
  for (const auto& record : records)
    summary.AddRecord(1.0, record.tag, record.payload, record.delivered);
  summary.AddMalformedLine(8, "empty line");
  summary.AddRecord(2.0, "$TOT", "getInventory", true);  // after the stop
  EXPECT_EQ(summary.AnsweredCalls(), 2u);
  EXPECT_EQ(summary.AnswerWaitMs(), 100u);
}

}  // namespace
