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
#include "host/recording/Selection.h"
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
        origins(selection, 0.0) {
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

// A stop (RefuseLines) or the decided end (Close) keeps every item back but
// the module's traces of its shutdown; the summary counts only what was
// shown, and a finish after the stop counts nothing more.
TEST(HostReporter, AfterTheEndOnlyTracesGoOutAndNothingMoreIsCounted) {
  for (const bool signalled : {true, false}) {
    TestFolder folder;
    Rig rig(folder, "1 $TMC SID=1\n2 $TMC SID=2\n3 $XYZ a\n");
    rig.reporter.Tmc(Quillan::TmcMessageData());
    signalled ? rig.output.RefuseLines() : rig.output.Close();
    rig.reporter.Tmc(Quillan::TmcMessageData());
    rig.reporter.Event(0x4d000000);
    rig.reporter.Finished();
    rig.reporter.Trace("Pelorin", 2, "HMI_DESTROY_MODULE_SYMBOL");
    const std::string items = rig.Items();
    const size_t shown = items.find("\"tmc\"");
    EXPECT_TRUE(shown != std::string::npos && shown == items.rfind("\"tmc\"")) << items;
    EXPECT_EQ(items.find("\"event\""), std::string::npos) << items;
    EXPECT_EQ(items.find("\"finished\""), std::string::npos) << items;
    EXPECT_NE(items.find("HMI_DESTROY_MODULE_SYMBOL"), std::string::npos) << items;
    const PlaybackSummary summary = rig.reporter.Summary(true);
    EXPECT_EQ(summary.Lines().front(), "records dispatched: $TMC 1");
    EXPECT_EQ(summary.tally.unknownTag, 0u);
  }
}

// The status line's clock is a date past 2038 too, however wide time_t is,
// and the record's own clock is read as the module's consumers get it.
TEST(HostStatusLine, ClockPast2038) {
  const struct {
    int64_t seconds;
    const char* text;
  } cases[] = {
      {2147483647, "2038-01-19 03:14:07 UTC"},
      {2147483648, "2038-01-19 03:14:08 UTC"},
      {4102444800, "2100-01-01 00:00:00 UTC"},
      {0, "--"},
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
