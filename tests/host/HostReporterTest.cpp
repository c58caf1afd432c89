// What pelorin-host tells of a run from inside: which items still go out
// once the end is decided, what the summary counts, and the status line's
// clock past 2038.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "ItemOrigins.h"
#include "Output.h"
#include "Reporter.h"
#include "Selection.h"
#include "StatusLine.h"
#include "tests/host/Examples.h"

namespace PelorinHost {
namespace {

using pelorin_tool_test::TestFolder;

// A reporter writing to a file of `folder`, following the items' records
// in `recording`.
struct Rig {
  Rig(TestFolder& folder, const std::string& recording)
      : path(folder.Write("items")),
        fd(::open(path.c_str(), O_WRONLY | O_CLOEXEC)),
        output(fd, fd),
        reporter(output, true),
        origins(selection) {
    std::string error;
    EXPECT_TRUE(origins.Open(folder.Write("events", recording), &error)) << error;
    reporter.SetOrigins(&origins, false);
  }
  ~Rig() { ::close(fd); }
  std::string Items() {
    output.Flush();
    return pelorin_tool_test::ReadFile(path);
  }

  const std::string path;
  const int fd;
  Output output;
  Reporter reporter;
  Selection selection;
  ItemOrigins origins;
};

size_t Count(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

const char kRecording[] = "1 $TMC SID=1\n2 $TMC SID=2\n3 $XYZ a\n4 $TMC SID=3\n";

// A stop (RefuseLines) or the decided end (Close) keeps every item back but
// the module's traces of its shutdown; the summary counts only what was
// shown, and a finish after the stop counts nothing more.
TEST(HostReporter, AfterTheEndOnlyTracesGoOutAndNothingMoreIsCounted) {
  for (const bool signalled : {true, false}) {
    SCOPED_TRACE(signalled ? "signal" : "close");
    TestFolder folder;
    Rig rig(folder, kRecording);
    const Quillan::TmcMessageData message;
    rig.reporter.Tmc(message);
    if (signalled) {
      rig.output.RefuseLines();
    } else {
      rig.output.Close();
    }
    rig.reporter.Tmc(message);
    rig.reporter.Event(0x4d000000);
    rig.reporter.Finished();
    rig.reporter.Trace("Pelorin", 2, "HMI_DESTROY_MODULE_SYMBOL");
    const std::string items = rig.Items();
    EXPECT_EQ(Count(items, "\"type\":\"tmc\""), 1u) << items;
    EXPECT_EQ(Count(items, "\"type\":\"event\""), 0u) << items;
    EXPECT_EQ(Count(items, "\"type\":\"finished\""), 0u) << items;
    EXPECT_EQ(Count(items, "HMI_DESTROY_MODULE_SYMBOL"), 1u) << items;
    const PlaybackSummary summary = rig.reporter.Summary(true);
    EXPECT_EQ(summary.Lines().front(), "records dispatched: $TMC 1");
    EXPECT_EQ(summary.tally.unknownTag, 0u);
  }
}

// Records no producer takes are dropped, not dispatched.
TEST(HostReporter, AnUnknownTagIsDroppedNotDispatched) {
  TestFolder folder;
  Rig rig(folder, kRecording);
  rig.reporter.Finished();
  const std::vector<std::string> lines = rig.reporter.Summary(false).Lines();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "records dispatched: $TMC 3");
  EXPECT_EQ(lines[1], "records dropped: 1 (1 unknown tag, 0 unusable payload)");
}

// The status line's clock is a date past 2038 too, however wide time_t is,
// and the record's own clock is read as the module's consumers get it.
TEST(HostStatusLine, ClockPast2038) {
  const struct {
    int64_t seconds;
    const char* text;
  } cases[] = {
      {1416131460, "2014-11-16 09:51:00 UTC"},
      {2147483647, "2038-01-19 03:14:07 UTC"},
      {2147483648, "2038-01-19 03:14:08 UTC"},
      {4102444800, "2100-01-01 00:00:00 UTC"},
      {0, "--"},
      {-1, "--"},
      {4294967296, "--"},
  };
  for (const auto& c : cases) EXPECT_EQ(StatusLine::FormatUtc(c.seconds), c.text) << c.seconds;

  TestFolder folder;
  Rig rig(folder, "4102444800.5 $TMC SID=1\n");
  rig.reporter.Tmc(Quillan::TmcMessageData());
  EXPECT_EQ(rig.origins.Clock(), 4102444800);
}

}  // namespace
}  // namespace PelorinHost
