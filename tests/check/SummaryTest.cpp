// The figures of a file's summary: play time as the real-time player waits
// it, records per tag in bounded memory, date-times and durations.

#include <gtest/gtest.h>

#include "host/pelorin-check/PlayDuration.h"
#include "host/pelorin-check/TagCounter.h"
#include "host/pelorin-check/TimeText.h"

namespace {

using PelorinCheck::PlayDuration;
using PelorinCheck::TagCounter;
using PelorinCheck::TimeText;

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
  EXPECT_EQ(PlayDuration::DelayMs(1.0, 1.0004, 1.0), 0u);
  EXPECT_EQ(PlayDuration::DelayMs(1.0, 1.0006, 1.0), 1u);
  EXPECT_EQ(PlayDuration::DelayMs(1.0, 1.0e10, 1.0), UINT32_MAX);
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

TEST(TimeTextTest, DateTimesDurationsAndNumbers) {
  EXPECT_EQ(TimeText::DateTime(1416131460.25, TimeText::Style::kText),
            "2014-11-16 09:51:00.25 UTC");
  EXPECT_EQ(TimeText::DateTime(1577836800.0, TimeText::Style::kIso), "2020-01-01T00:00:00Z");
  EXPECT_EQ(TimeText::DateTime(86400.9996, TimeText::Style::kIso), "1970-01-02T00:00:01Z");
  EXPECT_EQ(TimeText::DateTime(0.0, TimeText::Style::kIso), "");
  EXPECT_EQ(TimeText::DateTime(-5.0, TimeText::Style::kIso), "");
  EXPECT_EQ(TimeText::DateTime(5.0e9, TimeText::Style::kIso), "");
  EXPECT_EQ(TimeText::Duration(0), "0s");
  EXPECT_EQ(TimeText::Duration(250), "0.25s");
  EXPECT_EQ(TimeText::Duration(187000), "3m07s");
  EXPECT_EQ(TimeText::Duration(3723250), "1h02m03.25s");
  EXPECT_EQ(TimeText::Duration(-2000), "-2s");
  EXPECT_EQ(TimeText::Duration(100LL * 3600 * 1000), "100h00m00s");
  EXPECT_EQ(TimeText::Number(1416131460.25), "1416131460.25");
  EXPECT_EQ(TimeText::Number(0.1), "0.1");
  EXPECT_EQ(TimeText::Number(-5.0), "-5");
}

}  // namespace
