// --max-gap: which part of a gap is skipped, and the private events file
// that makes the module play it so while every other byte stays.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "GapCap.h"
#include "PrivateEvents.h"
#include "tests/support/TempFile.h"

namespace PelorinHost {
namespace {

TEST(HostGapCap, OnlyTheTimeBeyondTheLimitIsSkipped) {
  const struct {
    double limit;
    std::vector<double> times;
    std::vector<int64_t> skipped;  // before each record
  } cases[] = {
      {2.0, {100.0, 101.5, 10901.5, 10902.0}, {0, 0, 10798000, 0}},
      {2.0, {100.0, 102.0, 104.001, 106.5}, {0, 0, 1, 499}},  // to the millisecond
      {0.5, {100.0, 99.0, 101.25}, {0, 0, 1750}},             // the gap from a time out of order
      {0.0, {100.0, 20000.0}, {0, 0}},                        // no limit
      {1.0, {0.0, 1416131460.0}, {0, 1416131459000}},         // a record time of 0
  };
  for (const auto& test : cases) {
    GapCap gaps(test.limit);
    std::vector<int64_t> skipped;
    for (double time : test.times) skipped.push_back(gaps.Next(time));
    EXPECT_EQ(skipped, test.skipped) << test.limit << " after " << test.times[0];
  }
  GapCap gaps(2.0);
  gaps.Next(1416131460.25);
  gaps.Next(1416142262.75);
  EXPECT_EQ(gaps.Played(1416142262.75), "1416131462.25");
  EXPECT_EQ(gaps.Played(1416142263.5), "1416131463");
  gaps.Restart();
  EXPECT_EQ(gaps.Next(1416142262.75), 0);
  EXPECT_EQ(gaps.SkippedMs(), 0);
}

TEST(HostGapCap, ThePrivateFileMovesOnlyTheTimesAfterALongGap) {
  pelorin_test::TempFolder folder;
  const std::string recording =
      folder.Write("rec",
                   "1416131460 $TMC SID=1\n1416131461,5 $TMC  two blanks\r\n"
                   "1416142261.5 $TSL sd_SID=3\n1416142262 $TOT getInventory\n");
  Selection all;
  std::string text;
  ASSERT_TRUE(PrivateEvents::Text(all, recording, 2, 2.0, &text));
  const std::string pass =
      "1416131460 $TMC SID=1\n1416131461,5 $TMC  two blanks\n"
      "1416131463.5 $TSL sd_SID=3\n1416131464 $TOT getInventory\n";
  EXPECT_EQ(text, pass + pass);
  text.clear();
  ASSERT_TRUE(PrivateEvents::Text(all, recording, 1, 0.0, &text));
  EXPECT_EQ(text,
            "1416131460 $TMC SID=1\n1416131461,5 $TMC  two blanks\n"
            "1416142261.5 $TSL sd_SID=3\n1416142262 $TOT getInventory\n");
}

}  // namespace
}  // namespace PelorinHost
