// The --timeline picture of the small recordings in examples/timeline,
// compared byte for byte with the recorded ones (PELORIN_UPDATE_EXAMPLES=1
// rewrites them): lanes, marks, gaps and problems at their record times, a
// single moment in the middle, recorded bytes kept well-formed XML. And the
// time axis steps.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <sstream>

#include "host/pelorin-check/CheckProgram.h"
#include "host/pelorin-check/TimeAxis.h"
#include "tests/host/Examples.h"

namespace {

using namespace pelorin_tool_test;
using PelorinCheck::CheckProgram;
using PelorinCheck::TimeAxis;

TEST(TimelineTest, PicturesMatchTheRecordedOnes) {
  const std::string examples = PELORIN_SOURCE_DIR "/tests/check/examples/timeline/";
  const struct {
    const char* example;
    const char* fileName;
    int status;
  } cases[] = {{"lanes", "events", CheckProgram::kFindings},
               {"moment", "events", CheckProgram::kClean},
               {"bytes", "a&b<\x01>.events", CheckProgram::kClean}};
  for (const auto& c : cases) {
    TestFolder dir;
    const std::string events = dir.Write(c.fileName, ReadFile(examples + c.example + ".events"));
    const int devNull = ::open("/dev/null", O_WRONLY);
    std::ostringstream err;
    {
      PelorinTools::FileOutput out(devNull);
      EXPECT_EQ(CheckProgram::Run({"--root", dir.Path(), "--timeline", dir.Path() + "/t.svg", events},
                                  out, err),
                c.status)
          << c.example;
    }
    ::close(devNull);
    std::string svg = ReadFile(dir.Path() + "/t.svg");
    ReplaceAll(svg, dir.Path(), "@DIR");
    const std::string expected = examples + c.example + ".svg";
    if (std::getenv("PELORIN_UPDATE_EXAMPLES") != nullptr) std::ofstream(expected) << svg;
    EXPECT_EQ(ReadFile(expected), svg) << c.example;
  }
}

TEST(TimeAxisTest, StepsSuitTheSpanAndTicksSayEachDateOnce) {
  const struct {
    double span;
    double step;
  } steps[] = {{0.004, 0.001}, {5, 0.5}, {670, 120}, {86400, 10800}, {3 * 7 * 86400, 7 * 86400}};
  for (const auto& s : steps) EXPECT_EQ(TimeAxis::Step(s.span), s.step) << s.span;
  // 22:00 to 02:00 the next day: half-hourly ticks, the date at the first
  // tick and at midnight.
  const std::vector<TimeAxis::Tick> ticks = TimeAxis::Ticks(1416175200, 1416189600);
  ASSERT_EQ(ticks.size(), 9u);
  EXPECT_EQ(ticks[0].date + " " + ticks[0].clock, "2014-11-16 22:00:00");
  EXPECT_EQ(ticks[1].date, "");
  EXPECT_EQ(ticks[4].date + " " + ticks[4].clock, "2014-11-17 00:00:00");
}

}  // namespace
