// --pause-at: which record each bound names, and the item after which
// playback stops so that the record has not played.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PausePoints.h"
#include "tests/support/TempFile.h"

namespace PelorinHost {
namespace {

const char kRecording[] =
    "100 $TMC SID=1\n"         // 1
    "101 $TMC SID=2\n"         // 2
    "102 $XYZ no item\n"       // 3
    "103 $TMC SID=4\n"         // 4
    "103 $TSL sd_SID=5\n"      // 5, the same time as line 4
    "104 $TOT getInventory\n"  // 6
    "105 $TMC SID=7\n";        // 7

TEST(HostPausePoints, EachBoundNamesARecordAndTheItemBeforeIt) {
  pelorin_test::TempFolder folder;
  const std::string recording = folder.Write("rec", kRecording);
  Selection skipTsl;
  std::string error;
  ASSERT_TRUE(skipTsl.SetSkip("TSL", &error));
  const struct {
    const char* what;
    std::vector<std::string> bounds;
    const Selection* selection;
    std::vector<std::pair<uint64_t, uint64_t>> points;  // line, after
    std::vector<std::string> unreached;
  } cases[] = {
      {"a line", {"@5"}, nullptr, {{5, 4}}, {}},
      {"a time shared by two records: the first", {"103"}, nullptr, {{4, 2}}, {}},
      {"seconds after the first record", {"+5.5"}, nullptr, {}, {"+5.5"}},
      {"after a record without item", {"@4"}, nullptr, {{4, 2}}, {}},
      {"no item between: one pause", {"@3", "@4", "@6"}, nullptr, {{3, 2}, {6, 5}}, {}},
      {"at the start", {"@1", "+1"}, nullptr, {{1, 0}, {2, 1}}, {}},
      {"a record the selection skips", {"@5"}, &skipTsl, {{6, 4}}, {}},
      {"beyond the end", {"@8", "106"}, nullptr, {}, {"@8", "106"}},
  };
  for (const auto& test : cases) {
    PausePoints pauses;
    const Selection all;
    ASSERT_TRUE(
        pauses.Resolve(recording, test.selection ? *test.selection : all, test.bounds, &error))
        << error;
    std::vector<std::pair<uint64_t, uint64_t>> points;
    for (uint64_t line = 0; line <= 7; ++line) {
      const PausePoint* point = line == 0 ? pauses.AtStart() : pauses.After(line);
      if (point != nullptr) points.emplace_back(point->line, point->after);
    }
    EXPECT_EQ(points, test.points) << test.what;
    EXPECT_EQ(pauses.Unreached(), test.unreached) << test.what;
  }
  PausePoints pauses;
  ASSERT_TRUE(pauses.Resolve(recording, Selection(), {"@5"}, &error));
  EXPECT_EQ(pauses.After(4)->recordTime, "103");
  EXPECT_EQ(pauses.After(4)->bound, "@5");
  EXPECT_FALSE(pauses.Resolve(folder.Path() + "/missing", Selection(), {"@1"}, &error));
}

}  // namespace
}  // namespace PelorinHost
