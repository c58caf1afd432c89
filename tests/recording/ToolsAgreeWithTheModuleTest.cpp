// Generated recordings, every line end, quoting, separator, unknown key,
// bad payload, malformed and binary line among them: on every record
// pelorin-host (the module's items, each traced to its record by a marker
// in its payload) and pelorin-check (its checker, in this process) agree
// with what the generator wrote on the line, the record time, what the
// record yields and where playback stops.

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "ToolProcess.h"
#include "host/pelorin-check/CheckObserver.h"
#include "host/pelorin-check/Checker.h"
#include "host/pelorin-check/Options.h"
#include "host/pelorin-check/ReportWriter.h"
#include "host/pelorin-check/TpegDirectory.h"

namespace pelorin_tool_test {
namespace {

enum class Yield { kTmc, kServiceList, kOnlineTraffic, kNothing, kStop };

// A payload with "%" where the line's marker goes.
struct Shape {
  const char* tag;
  const char* payload;
  Yield yield;
};

const Shape kShapes[] = {
    {"$TMC", "PID=%", Yield::kTmc},
    {"$TMC", "LTN=1 PID=%", Yield::kTmc},
    {"$TMC", "PID=\"%\";SID=3", Yield::kTmc},
    {"$TMC", "tmcData=0A:1F;PID=%", Yield::kTmc},
    {"$TMC", "SID=\"a b;c\"xPID=%", Yield::kTmc},
    {"$TMC", "PID=%~junk", Yield::kTmc},  // "~": a NUL byte, which ends the payload
    {"$TMC", "PID=% bogus=1", Yield::kNothing},
    {"$TMC", "PID=% LTN=", Yield::kNothing},
    {"$TMC", "PID", Yield::kNothing},
    {"$TMC", "=5 PID=%", Yield::kNothing},
    {"$TMC", "PID=\"", Yield::kNothing},
    {"$TSL", "sd_SID=%", Yield::kServiceList},
    {"$TSL", "sd_SID=\"%\" sd_Q=1", Yield::kServiceList},
    {"$TSL", "sd_SID=% nope=2", Yield::kNothing},
    {"$TOT", "setTimeoutForFallback:%", Yield::kOnlineTraffic},
    {"$TOT", "setTimeoutForFallback:\"%\"", Yield::kOnlineTraffic},
    {"$TOT", "setTimeoutForFallback:  %", Yield::kOnlineTraffic},
    {"$TOT", "setTimeoutForFallback:", Yield::kNothing},
    {"$TOT", "setTimeoutForFallback:% 2", Yield::kNothing},
    {"$TOT", "settimeoutforfallback:%", Yield::kNothing},
    {"$XYZ", "PID=%", Yield::kNothing},
    {"$tmc", "PID=%", Yield::kNothing},
};

// Whole lines where playback stops, and why (the start of the reason).
const struct {
  const char* line;
  const char* reason;
} kStops[] = {
    {"", "empty line"},
    {"1416131460", "no blank after the time stamp"},
    {" 1416131460 $TMC PID=1", "empty time stamp (the line starts with a blank)"},
    {"1416131460  $TMC PID=1", "empty tag (two blanks after the time stamp)"},
    {"1416131460 ", "empty tag (nothing after the time stamp)"},
    {"\x01\x02garbage", "binary data at byte "},
};

struct Written {
  Yield yield = Yield::kNothing;
  double time = 0.0;  // as the module reads it
};

struct Recording {
  std::string bytes;
  std::vector<Written> lines;  // by line number - 1
  uint64_t stopLine = 0;       // 0: plays to the end
  std::string stopReason;
};

// The time stamp of line `index` and the value the module reads from it.
std::string TimeText(std::mt19937& random, size_t index, double* time) {
  const uint32_t second = 1416131460u + static_cast<uint32_t>(index);
  switch (random() % 6) {
    case 0:
      *time = second + 0.25;
      return std::to_string(second) + ".25";
    case 1:
      *time = second + 0.75;
      return std::to_string(second) + ",75";  // a decimal comma
    case 2:
      *time = 0.0;
      return "abc";  // no number: time 0
    case 3:
      *time = 1.5e9;
      return "1.5e9";
    default:
      *time = second;
      return std::to_string(second);
  }
}

Recording Generate(uint32_t seed) {
  std::mt19937 random(seed);
  Recording recording;
  std::vector<std::string> lines;
  const size_t count = 1 + random() % 10;
  for (size_t i = 0; i < count; ++i) {
    Written written;
    if (random() % 12 == 0) {
      const auto& stop = kStops[random() % (sizeof(kStops) / sizeof(kStops[0]))];
      lines.push_back(stop.line);
      written.yield = Yield::kStop;
      if (recording.stopLine == 0) {
        recording.stopLine = i + 1;
        recording.stopReason = stop.reason;
      }
    } else {
      const Shape& shape = kShapes[random() % (sizeof(kShapes) / sizeof(kShapes[0]))];
      std::string payload = shape.payload;
      const size_t mark = payload.find('%');
      if (mark != std::string::npos) payload.replace(mark, 1, std::to_string(i + 1));
      const size_t nul = payload.find('~');
      if (nul != std::string::npos) payload[nul] = '\0';
      lines.push_back(TimeText(random, i, &written.time) + " " + shape.tag +
                      (payload.empty() ? "" : " ") + payload);
      written.yield = shape.yield;
    }
    recording.lines.push_back(written);
  }
  for (size_t i = 0; i < count; ++i) {
    recording.bytes += lines[i];
    // Every line end the reader knows; the last line may have none, unless
    // it is empty (it would not be a line). A lone CR before an empty line
    // would make one CR LF of the two.
    const bool last = i + 1 == count;
    if (last && !lines[i].empty() && random() % 2 == 0) continue;
    static const char* const kEnds[] = {"\n", "\r\n", "\r"};
    const bool emptyNext = !last && lines[i + 1].empty();
    recording.bytes += kEnds[random() % (emptyNext ? 2 : 3)];
  }
  return recording;
}

class Observer : public PelorinCheck::CheckObserver {
 public:
  void OnRecord(uint64_t line, const Quillan::Record& record) override { times[line] = record.time; }
  void OnDiagnostic(const PelorinCheck::Diagnostic& diagnostic) override {
    using Kind = PelorinCheck::DiagnosticKind;
    switch (diagnostic.kind) {
      case Kind::kUnknownTag:
      case Kind::kPayloadRefused:
      case Kind::kEmptyMethod:
      case Kind::kUnknownMethod:
      case Kind::kArgumentCount:
        dropped.insert(diagnostic.line);
        break;
      case Kind::kMalformedLine:
      case Kind::kBinaryData:
        if (stopLine == 0) stopLine = diagnostic.line;
        break;
      default:
        break;
    }
  }
  void OnFileChecked(const PelorinCheck::FileSummary& /*summary*/) override {}

  std::map<uint64_t, double> times;
  std::set<uint64_t> dropped;
  uint64_t stopLine = 0;
};

class Silent : public PelorinCheck::ReportWriter {
 public:
  void WriteDiagnostic(const PelorinCheck::Diagnostic& /*diagnostic*/) override {}
  void WriteSummary(const PelorinCheck::FileSummary& /*summary*/) override {}
  void WriteTotal(const PelorinCheck::RunTotal& /*total*/) override {}
};

// What the checker says of every line before the stop.
void ExpectCheckAgrees(const Recording& recording, const std::string& path, uint32_t seed) {
  PelorinCheck::Options options;
  PelorinCheck::TpegDirectory tpegs;
  Silent writer;
  Observer observer;
  PelorinCheck::Checker checker(options, tpegs, writer);
  checker.SetObserver(&observer);
  checker.CheckFile(path);
  EXPECT_EQ(observer.stopLine, recording.stopLine) << "seed " << seed;
  const uint64_t played = recording.stopLine ? recording.stopLine - 1 : recording.lines.size();
  for (uint64_t line = 1; line <= played; ++line) {
    const Written& written = recording.lines[line - 1];
    ASSERT_EQ(observer.times.count(line), 1u) << "seed " << seed << " line " << line;
    EXPECT_EQ(observer.times[line], written.time) << "seed " << seed << " line " << line;
    EXPECT_EQ(observer.dropped.count(line) == 1, written.yield == Yield::kNothing)
        << "seed " << seed << " line " << line;
  }
}

// The marker of an item: the number the generator put in its payload.
uint64_t Marker(const Item& item) {
  if (item.type == "tmc") return static_cast<uint64_t>(item.json["pid"].number);
  if (item.type == "serviceList") {
    return static_cast<uint64_t>(item.json["entries"].array.at(0)["sid"].number);
  }
  return static_cast<uint64_t>(item.json["args"].array.at(0).number);
}

// The module's items, as pelorin-host tells their records.
void ExpectHostAgrees(const Recording& recording, const std::string& path, uint32_t seed) {
  ToolProcess host;
  ASSERT_EQ(RunTool(PELORIN_HOST_PROGRAM, {"--batched", "--json", path}, &host),
            recording.stopLine != 0 ? 1 : 0)
      << "seed " << seed << host.Stderr();
  const std::map<std::string, Yield> kinds = {{"tmc", Yield::kTmc},
                                              {"serviceList", Yield::kServiceList},
                                              {"onlineTraffic", Yield::kOnlineTraffic}};
  std::set<uint64_t> seen;
  for (const Item& item : host.Items()) {
    const auto kind = kinds.find(item.type);
    if (kind == kinds.end()) continue;
    const uint64_t line = Marker(item);
    ASSERT_TRUE(line >= 1 && line <= recording.lines.size()) << "seed " << seed << item.line;
    EXPECT_EQ(item.json["line"].number, static_cast<double>(line)) << "seed " << seed << item.line;
    EXPECT_EQ(item.json["recordTime"].number, recording.lines[line - 1].time)
        << "seed " << seed << item.line;
    EXPECT_EQ(kind->second, recording.lines[line - 1].yield) << "seed " << seed << item.line;
    seen.insert(line);
  }
  const uint64_t played = recording.stopLine ? recording.stopLine - 1 : recording.lines.size();
  for (uint64_t line = 1; line <= played; ++line) {
    const Yield yield = recording.lines[line - 1].yield;
    EXPECT_EQ(seen.count(line) == 1, yield != Yield::kNothing) << "seed " << seed << " line " << line;
  }
  const std::vector<Item> finished = host.ItemsOfType("finished");
  ASSERT_EQ(finished.size(), 1u) << "seed " << seed;
  EXPECT_EQ(finished[0].json["stopLine"].number, static_cast<double>(recording.stopLine))
      << "seed " << seed;
  EXPECT_EQ(finished[0].json["reason"].string.compare(0, recording.stopReason.size(),
                                                      recording.stopReason),
            0)
      << "seed " << seed << " " << finished[0].line;
}

TEST(ToolsAgreeWithTheModule, OnEveryRecordOfGeneratedRecordings) {
  // A few thousand natively; where each run of the host costs many times
  // more (sanitizers, an emulator), the first few dozen of the same seeds.
  const double scale = pelorin_test::TimeScale();
  const uint32_t count = static_cast<uint32_t>(3000 / (scale * scale));
  const std::string folder = MakeTempDir("pelorin-agree");
  ASSERT_FALSE(folder.empty());
  const std::string path = folder + "/events";
  for (uint32_t seed = 1; seed <= count && !HasFailure(); ++seed) {
    const Recording recording = Generate(seed);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << recording.bytes;
    ExpectCheckAgrees(recording, path, seed);
    ExpectHostAgrees(recording, path, seed);
  }
  std::remove(path.c_str());
  rmdir(folder.c_str());
}

}  // namespace
}  // namespace pelorin_tool_test
