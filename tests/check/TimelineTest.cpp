// The --timeline picture: drawn from a small recording and read back as
// XML, its lanes, marks, gaps and problems are where the records are; the
// binning and its bounds; the time axis; escaping of recorded bytes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "host/pelorin-check/CheckProgram.h"
#include "host/pelorin-check/TimeAxis.h"
#include "host/pelorin-check/Timeline.h"
#include "host/pelorin-check/TimelineBins.h"
#include "host/pelorin-check/TimelineWriter.h"
#include "tests/check/CheckTestSupport.h"
#include "tests/check/XmlTree.h"

namespace {

using pelorin_check_test::TestFolder;
using pelorin_check_test::XmlElement;
using pelorin_check_test::XmlTree;
using PelorinCheck::CheckProgram;
using PelorinCheck::TimeAxis;
using PelorinCheck::Timeline;
using PelorinCheck::TimelineBins;
using ::testing::HasSubstr;

const double kStart = 1416131460;  // 2014-11-16 09:51:00 UTC

std::vector<const XmlElement*> All(const XmlElement& root, const std::string& name) {
  std::vector<const XmlElement*> found;
  root.Collect(name, &found);
  return found;
}

std::vector<const XmlElement*> WithClass(const XmlElement& root, const std::string& name,
                                         const std::string& cls) {
  std::vector<const XmlElement*> found;
  for (const XmlElement* element : All(root, name)) {
    if (element->Attribute("class") == cls) found.push_back(element);
  }
  return found;
}

double Number(const XmlElement& element, const std::string& key) {
  return std::stod(element.Attribute(key));
}

class TimelineTest : public ::testing::Test {
 protected:
  // Runs pelorin-check --timeline on `events`; false when the SVG is not
  // well-formed XML.
  bool Draw(const std::string& events, const std::string& name = "events") {
    m_events = m_dir.Write(name, events);
    m_status = Run({"--root", m_dir.Path(), "--timeline", m_svgPath, m_events});
    std::ifstream file(m_svgPath, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    m_svg = content.str();
    const bool parsed = m_tree.Parse(m_svg);
    EXPECT_TRUE(parsed) << m_tree.error;
    return parsed;
  }

  // Runs the program in this process, its report thrown away.
  int Run(const std::vector<std::string>& arguments) {
    const int devNull = ::open("/dev/null", O_WRONLY);
    int status = -1;
    {
      PelorinTools::FileOutput out(devNull);
      status = CheckProgram::Run(arguments, out, m_err);
    }
    ::close(devNull);
    return status;
  }

  // Where the plot begins and how wide it is, from the first lane's row.
  void PlotGeometry(double* left, double* width) const {
    const auto rows = WithClass(*m_tree.root, "rect", "row");
    ASSERT_FALSE(rows.empty());
    *left = Number(*rows[0], "x");
    *width = Number(*rows[0], "width");
  }

  const XmlElement* Lane(const std::string& name) const {
    for (const XmlElement* lane : WithClass(*m_tree.root, "g", "lane")) {
      if (lane->Attribute("data-lane") == name) return lane;
    }
    return nullptr;
  }

  TestFolder m_dir;
  std::string m_svgPath = m_dir.Path() + "/t.svg";
  std::string m_events;
  int m_status = -1;
  std::string m_svg;
  std::ostringstream m_err;
  XmlTree m_tree;
};

TEST_F(TimelineTest, LanesMarksGapsAndProblemsSitAtTheirRecordTimes) {
  // Offsets from kStart, in file order; a lane's records as the test expects them.
  const std::string events =
      "1416131460 $TMC LTN=1\n"                 // 1: 0
      "1416131470 $TMC LTN=1\n"                 // 2: 10
      "1416131470.5 $TMC LTN=1\n"               // 3: 10.5, the same pixel
      "1416131500 $TOT setNewData:gone.tpeg\n"  // 4: 40, file missing
      "1416131480 $TSL serviceType=1\n"         // 5: 20, goes back
      "1416133000 $TOT getInventory\n"          // 6: 1540
      "1416135060 $TOT getInventory\n"          // 7: 3600
      "\n"                                      // 8: playback ends
      "1416131465 $TMC\n";                      // 9: 5, goes back
  ASSERT_TRUE(Draw(events));
  EXPECT_EQ(m_status, CheckProgram::kFindings);
  double left = 0;
  double width = 0;
  PlotGeometry(&left, &width);
  const auto x = [&](double offset) { return left + offset / 3600 * width; };

  const std::map<std::string, std::vector<double>> lanes = {{"$TMC", {0, 10, 10.5, 5}},
                                                            {"$TOT setNewData", {40}},
                                                            {"$TSL", {20}},
                                                            {"$TOT getInventory", {1540, 3600}}};
  EXPECT_EQ(WithClass(*m_tree.root, "g", "lane").size(), lanes.size());
  for (const auto& expected : lanes) {
    SCOPED_TRACE(expected.first);
    const XmlElement* lane = Lane(expected.first);
    ASSERT_NE(lane, nullptr);
    EXPECT_EQ(lane->Attribute("data-records"), std::to_string(expected.second.size()));
    // Each mark path holds rectangles "M<x> 0h<width>v<height>h-<width>z".
    uint64_t records = 0;
    std::vector<std::pair<double, double>> marks;
    for (const XmlElement* path : All(*WithClass(*lane, "g", "marks").at(0), "path")) {
      records += std::stoul(path->Attribute("data-n"));
      const std::string d = path->Attribute("d");
      double markX = 0;
      double markWidth = 0;
      int used = 0;
      for (size_t pos = 0;
           std::sscanf(d.c_str() + pos, "M%lf 0h%lfv%*fh%*fz%n", &markX, &markWidth, &used) == 2 &&
           used > 0;
           pos += static_cast<size_t>(used), used = 0) {
        marks.emplace_back(markX, markWidth);
      }
    }
    EXPECT_EQ(records, expected.second.size());
    EXPECT_LE(marks.size(), expected.second.size());
    for (const double offset : expected.second) {
      bool covered = false;
      for (const auto& mark : marks) {
        covered |= mark.first <= x(offset) + 0.5 && x(offset) - 0.5 <= mark.first + mark.second;
      }
      EXPECT_TRUE(covered) << "no mark at offset " << offset;
    }
  }

  const struct {
    const char* kind;
    const char* line;
    double offset;
  } problems[] = {{"tpeg-file-missing", "4", 40},
                  {"time-backwards", "5", 20},
                  {"playback-ends", "8", 3600},
                  {"time-backwards", "9", 5}};
  const auto drawn = WithClass(*m_tree.root, "line", "problem");
  ASSERT_EQ(drawn.size(), 4u);
  for (size_t i = 0; i < drawn.size(); ++i) {
    EXPECT_EQ(drawn[i]->Attribute("data-kind"), problems[i].kind);
    EXPECT_EQ(drawn[i]->Attribute("data-line"), problems[i].line);
    EXPECT_NEAR(Number(*drawn[i], "x1"), x(problems[i].offset), 0.01) << problems[i].line;
    EXPECT_THAT(All(*drawn[i], "title").at(0)->text,
                HasSubstr("line " + std::string(problems[i].line)));
  }

  std::vector<std::string> gaps;
  for (const XmlElement* label : WithClass(*m_tree.root, "text", "gap-label")) {
    gaps.push_back(label->text);
  }
  EXPECT_EQ(gaps, (std::vector<std::string>{"gap 25m00s", "gap 34m20s"}));

  EXPECT_EQ(WithClass(*m_tree.root, "text", "title").at(0)->text, m_events);
  EXPECT_EQ(WithClass(*m_tree.root, "text", "subtitle").at(0)->text,
            "2014-11-16 09:51:00 UTC to 2014-11-16 10:51:00 UTC, span 1h00m00s; 9 lines, "
            "8 records, 7 play");
}

TEST_F(TimelineTest, RecordedBytesStayWellFormedXml) {
  const struct {
    const char* line;
    const char* lane;
  } cases[] = {
      {"1 $T\x01<&>\"'\xff x", "$T\\x01<&>\"'\\xFF"},
      {"2 $\xEF\xBF\xBE x", "$\\xEF\\xBF\\xBE"},
      {"3 $TOT get\x1b]0;x\x07:1", "$TOT get\\x1B]0;x\\x07"},
      {"4 $TOT", "$TOT (no method)"},
      {"5 $\xC3\xA9t\xC3\xA9 x", "$\xC3\xA9t\xC3\xA9"},
  };
  std::string events;
  for (const auto& c : cases) events += std::string(c.line) + "\n";
  ASSERT_TRUE(Draw(events, "a&b<\x01>.events"));
  for (const auto& c : cases) EXPECT_NE(Lane(c.lane), nullptr) << c.lane;
  EXPECT_EQ(All(*m_tree.root, "title").at(0)->text, m_dir.Path() + "/a&b<\\x01>.events");
}

TEST_F(TimelineTest, UnwritablePictureOrUnreadableEventsFileIsUnusable) {
  m_svgPath = m_dir.Path() + "/no/such/folder/t.svg";
  const std::string events = m_dir.Write("events", "1 $TMC\n");
  EXPECT_EQ(Run({"--timeline", m_svgPath, events}), CheckProgram::kUnusable);
  EXPECT_THAT(m_err.str(), HasSubstr("cannot write the timeline '" + m_svgPath + "'"));
  m_svgPath = m_dir.Path() + "/t.svg";
  EXPECT_EQ(Run({"--timeline", m_svgPath, m_dir.Path() + "/missing"}), CheckProgram::kUnusable);
  EXPECT_FALSE(std::ifstream(m_svgPath).good()) << "a picture of a file that does not open";
}

TEST(TimelineBinsTest, CountsSurviveMergingAndColumnsStayWithinBounds) {
  const std::vector<std::vector<double>> series = {
      {kStart, kStart + 0.000001, kStart + 1},
      {kStart, kStart + 86400 * 30, kStart - 86400, 1, 4294967295.0},
      {kStart + 5, kStart + 4, kStart + 3, kStart + 2, kStart + 1, kStart},
  };
  for (size_t s = 0; s < series.size(); ++s) {
    TimelineBins bins;
    bins.AddLane();
    bins.AddLane();
    for (size_t i = 0; i < series[s].size(); ++i) bins.Add(i % 2, series[s][i]);
    EXPECT_LT(bins.HighColumn() - bins.LowColumn(), TimelineBins::kColumns) << s;
    uint64_t lanes[2] = {0, 0};
    for (int64_t column = bins.LowColumn(); column <= bins.HighColumn(); ++column) {
      if (bins.ColumnRecords(column) == 0) continue;
      EXPECT_EQ(bins.ColumnRecords(column), bins.Count(0, column) + bins.Count(1, column)) << s;
      lanes[0] += bins.Count(0, column);
      lanes[1] += bins.Count(1, column);
    }
    EXPECT_EQ(lanes[0], (series[s].size() + 1) / 2) << s;
    EXPECT_EQ(lanes[1], series[s].size() / 2) << s;
  }
}

TEST(TimelineBoundsTest, LanesAndProblemsAreBoundedAndUnplaceableTimesCounted) {
  Timeline timeline("events");
  Quillan::Record record;
  PelorinCheck::Diagnostic backwards;
  backwards.kind = PelorinCheck::DiagnosticKind::kTimeBackwards;
  for (int i = 0; i < 150; ++i) {
    record.time = kStart - i;
    record.tag = "$X" + std::to_string(i % 40);
    timeline.OnRecord(i + 1, record);
    timeline.OnDiagnostic(backwards);
  }
  record.tag = std::string(Timeline::kMaxNameBytes + 1, 'a');
  record.time = 0;
  timeline.OnRecord(151, record);
  ASSERT_EQ(timeline.Lanes().size(), Timeline::kMaxLanes);
  EXPECT_TRUE(timeline.Lanes().back().other);
  // $X31 to $X39, three records each, and the long tag.
  EXPECT_EQ(timeline.Lanes().back().records, 28u);
  EXPECT_EQ(timeline.Problems().size(), Timeline::kMaxProblems);
  EXPECT_EQ(timeline.ProblemsNotKept(), 150 - Timeline::kMaxProblems);
  EXPECT_EQ(timeline.Records(), 151u);
  EXPECT_EQ(timeline.Unplaced(), 1u);
}

TEST(TimeAxisTest, StepsSuitTheSpanAndTicksSayEachDateOnce) {
  const struct {
    double span;
    double step;
  } steps[] = {{0.004, 0.001}, {5, 0.5}, {670, 120}, {86400, 10800}, {3 * 7 * 86400, 7 * 86400}};
  for (const auto& s : steps) {
    EXPECT_EQ(TimeAxis::Step(s.span), s.step) << s.span;
  }
  // 22:00 to 02:00 the next day: half-hourly ticks, the date at the first
  // tick and at midnight.
  const std::vector<TimeAxis::Tick> ticks = TimeAxis::Ticks(1416175200, 1416189600);
  ASSERT_EQ(ticks.size(), 9u);
  EXPECT_EQ(ticks[0].date, "2014-11-16");
  EXPECT_EQ(ticks[0].clock, "22:00:00");
  EXPECT_EQ(ticks[1].date, "");
  EXPECT_EQ(ticks[4].date, "2014-11-17");
  EXPECT_EQ(ticks[4].clock, "00:00:00");
  const std::vector<TimeAxis::Tick> days = TimeAxis::Ticks(kStart, kStart + 20 * 86400);
  ASSERT_FALSE(days.empty());
  for (const TimeAxis::Tick& tick : days) {
    EXPECT_EQ(tick.clock, "");
    EXPECT_NE(tick.date, "");
  }
}

TEST(TimelineSizeTest, HundredThousandRecordsStayUnderTwoMegabytes) {
  // As many lanes as there can be, each busy in every pixel column at
  // uneven densities, and more problems than are kept: the largest picture.
  Timeline timeline("events");
  Quillan::Record record;
  PelorinCheck::Diagnostic missing;
  missing.kind = PelorinCheck::DiagnosticKind::kTpegFileMissing;
  missing.message = std::string(200, 'm');
  uint32_t noise = 12345;
  for (int i = 0; i < 100000; ++i) {
    noise = noise * 1103515245u + 12345u;
    record.time = kStart + i * 0.5 + (noise >> 16) % 1000 * 0.01;
    record.tag = "$X" + std::to_string((noise >> 8) % Timeline::kMaxLanes);
    timeline.OnRecord(i + 1, record);
    if (i % 100 == 0) timeline.OnDiagnostic(missing);
  }
  const std::string svg = PelorinCheck::TimelineWriter(timeline).Svg();
  EXPECT_EQ(timeline.Lanes().size(), Timeline::kMaxLanes);
  EXPECT_LT(svg.size(), 2u * 1024 * 1024);
  XmlTree tree;
  EXPECT_TRUE(tree.Parse(svg)) << tree.error;
}

}  // namespace
