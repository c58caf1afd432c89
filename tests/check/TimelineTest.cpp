// The --timeline picture: drawn from a small recording, its lanes, marks,
// gaps and problems are where the records are, recorded bytes keep it
// well-formed XML, and the time axis steps suit the span.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "host/common/Utf8.h"
#include "host/pelorin-check/CheckProgram.h"
#include "host/pelorin-check/TimeAxis.h"
#include "tests/host/ToolProcess.h"

namespace {

using pelorin_tool_test::TestFolder;
using PelorinCheck::CheckProgram;
using PelorinCheck::TimeAxis;

struct Element {
  std::string tag;   // the start tag, without its closing '>'
  std::string text;  // the text up to the next tag
};

std::vector<Element> WithClass(const std::string& svg, const std::string& cls) {
  std::vector<Element> found;
  const std::string key = " class=\"" + cls + "\"";
  for (size_t at = svg.find(key); at != std::string::npos; at = svg.find(key, at + 1)) {
    const size_t start = svg.rfind('<', at);
    const size_t end = svg.find('>', at);
    found.push_back({svg.substr(start, end - start), svg.substr(end + 1, svg.find('<', end) - end - 1)});
  }
  return found;
}

std::string Attribute(const std::string& tag, const std::string& key) {
  const size_t at = tag.find(" " + key + "=\"");
  if (at == std::string::npos) return "";
  const size_t from = at + key.size() + 3;
  return tag.substr(from, tag.find('"', from) - from);
}

// Tags nest, attribute values hold no '<', every '&' opens an entity, and
// no byte is one that XML forbids or that is not UTF-8.
bool WellFormed(const std::string& svg) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(svg.data());
  std::vector<std::string> open;
  bool inTag = false;
  bool quoted = false;
  for (size_t i = svg.find("?>") + 2; i < svg.size(); ++i) {
    const size_t length = PelorinTools::Utf8::SequenceLength(bytes + i, svg.size() - i);
    if (length == 0 || (bytes[i] < 0x20 && bytes[i] != '\n')) return false;
    i += length - 1;
    const char c = svg[i];
    if (c == '&' && svg.compare(i, 4, "&lt;") && svg.compare(i, 4, "&gt;") &&
        svg.compare(i, 5, "&amp;") && svg.compare(i, 6, "&quot;") && svg.compare(i, 6, "&apos;"))
      return false;
    if (quoted ? c == '<' : (c == '<') == inTag && (c == '<' || c == '>')) return false;
    if (inTag && c == '"') quoted = !quoted;
    if (c == '<') {
      const size_t end = svg.find_first_of(" />", i + 2);
      const std::string name = svg.substr(i + 1, end - i - 1);
      if (name[0] != '/') open.push_back(name);
      if (name[0] == '/' && (open.empty() || "/" + open.back() != name)) return false;
      if (name[0] == '/') open.pop_back();
    }
    if (c == '>' && !quoted && svg[i - 1] == '/') open.pop_back();
    if (!quoted && (c == '<' || c == '>')) inTag = c == '<';
  }
  return open.empty() && !inTag;
}

class TimelineTest : public ::testing::Test {
 protected:
  // Runs pelorin-check --timeline on `events` in this process, its report thrown away.
  int Draw(const std::string& events, const std::string& name = "events") {
    m_events = m_dir.Write(name, events);
    const int devNull = ::open("/dev/null", O_WRONLY);
    int status = -1;
    {
      PelorinTools::FileOutput out(devNull);
      status = CheckProgram::Run({"--root", m_dir.Path(), "--timeline", m_svgPath, m_events}, out, m_err);
    }
    ::close(devNull);
    std::ostringstream content;
    content << std::ifstream(m_svgPath, std::ios::binary).rdbuf();
    m_svg = content.str();
    EXPECT_TRUE(WellFormed(m_svg)) << m_svg;
    const std::string row = WithClass(m_svg, "row").at(0).tag;
    m_left = std::stod(Attribute(row, "x"));
    m_width = std::stod(Attribute(row, "width"));
    return status;
  }

  // The lane of `name`, from its start tag to the next lane.
  std::string Lane(const std::string& name) const {
    const size_t at = m_svg.find("<g class=\"lane\" data-lane=\"" + name + "\"");
    return at == std::string::npos ? "" : m_svg.substr(at, m_svg.find("class=\"lane\"", at + 10) - at);
  }

  // The rectangles "M<x> 0h<width>v..z" of a lane's marks, and the records they count.
  std::vector<std::pair<double, double>> Marks(const std::string& lane, uint64_t* records) const {
    std::vector<std::pair<double, double>> marks;
    for (size_t at = lane.find("<path data-n=\""); at != std::string::npos;
         at = lane.find("<path data-n=\"", at + 1)) {
      const std::string tag = lane.substr(at, lane.find('>', at) - at);
      *records += std::stoul(Attribute(tag, "data-n"));
      const std::string d = Attribute(tag, "d");
      double x = 0;
      double width = 0;
      int used = 0;
      for (size_t pos = 0; std::sscanf(d.c_str() + pos, "M%lf 0h%lfv%*fh%*fz%n", &x, &width, &used) == 2 &&
                           used > 0;
           pos += static_cast<size_t>(used), used = 0) {
        marks.emplace_back(x, width);
      }
    }
    return marks;
  }

  TestFolder m_dir;
  std::string m_svgPath = m_dir.Path() + "/t.svg";
  std::string m_events;
  std::string m_svg;
  std::ostringstream m_err;
  double m_left = 0;
  double m_width = 0;
};

TEST_F(TimelineTest, LanesMarksGapsAndProblemsSitAtTheirRecordTimes) {
  // Offsets from 2014-11-16 09:51:00 UTC, in file order.
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
  EXPECT_EQ(Draw(events), CheckProgram::kFindings);
  const auto x = [&](double offset) { return m_left + offset / 3600 * m_width; };
  const std::map<std::string, std::vector<double>> lanes = {{"$TMC", {0, 10, 10.5, 5}},
                                                            {"$TOT setNewData", {40}},
                                                            {"$TSL", {20}},
                                                            {"$TOT getInventory", {1540, 3600}}};
  EXPECT_EQ(WithClass(m_svg, "lane").size(), lanes.size());
  for (const auto& expected : lanes) {
    SCOPED_TRACE(expected.first);
    const std::string lane = Lane(expected.first);
    EXPECT_EQ(Attribute(lane, "data-records"), std::to_string(expected.second.size()));
    uint64_t records = 0;
    const auto marks = Marks(lane, &records);
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
  const auto drawn = WithClass(m_svg, "problem");
  ASSERT_EQ(drawn.size(), 4u);
  for (size_t i = 0; i < drawn.size(); ++i) {
    EXPECT_EQ(Attribute(drawn[i].tag, "data-kind"), problems[i].kind);
    EXPECT_EQ(Attribute(drawn[i].tag, "data-line"), problems[i].line);
    EXPECT_NEAR(std::stod(Attribute(drawn[i].tag, "x1")), x(problems[i].offset), 0.01);
  }
  const auto gaps = WithClass(m_svg, "gap-label");
  ASSERT_EQ(gaps.size(), 2u);
  EXPECT_EQ(gaps[0].text + ", " + gaps[1].text, "gap 25m00s, gap 34m20s");
  EXPECT_EQ(WithClass(m_svg, "title").at(0).text, m_events);
  EXPECT_EQ(WithClass(m_svg, "subtitle").at(0).text,
            "2014-11-16 09:51:00 UTC to 2014-11-16 10:51:00 UTC, span 1h00m00s; 9 lines, "
            "8 records, 7 play");
  EXPECT_EQ(WithClass(m_svg, "axis-labels").size(), 1u);
}

TEST_F(TimelineTest, ASingleMomentSitsInTheMiddle) {
  Draw("1416131460 $TMC\n1416131460 $TMC\n");
  uint64_t records = 0;
  const auto marks = Marks(Lane("$TMC"), &records);
  ASSERT_EQ(marks.size(), 1u);
  EXPECT_NEAR(marks[0].first, m_left + m_width / 2, 2);
}

TEST_F(TimelineTest, RecordedBytesStayWellFormedXml) {
  const struct {
    const char* line;
    const char* lane;  // as the picture holds it
  } cases[] = {
      {"1 $T\x01<&>\"'\xff x", "$T\\x01&lt;&amp;&gt;&quot;&apos;\\xFF"},
      {"2 $\xEF\xBF\xBE x", "$\\xEF\\xBF\\xBE"},
      {"3 $TOT get\x1b]0;x\x07:1", "$TOT get\\x1B]0;x\\x07"},
      {"4 $TOT", "$TOT (no method)"},
      {"5 $\xC3\xA9t\xC3\xA9 x", "$\xC3\xA9t\xC3\xA9"},
  };
  std::string events;
  for (const auto& c : cases) events += std::string(c.line) + "\n";
  Draw(events, "a&b<\x01>.events");
  for (const auto& c : cases) EXPECT_NE(Lane(c.lane), "") << c.lane;
  EXPECT_EQ(WithClass(m_svg, "title").at(0).text, m_dir.Path() + "/a&amp;b&lt;\\x01&gt;.events");
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
