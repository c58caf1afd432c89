// The host's private events file and the origin of each item: which records
// of a recording are played, how they are written, and how the items that
// come back are matched to their lines.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ItemOrigins.h"
#include "PrivateEvents.h"
#include "RecordTime.h"
#include "RecordYield.h"
#include "ToolProcess.h"

namespace PelorinHost {
namespace {

using pelorin_tool_test::TestFolder;

const char kMarker[] = " $TOT setTimeoutForFallback:";

TEST(HostSelection, RecordsReadAsTheModuleReadsThem) {
  const struct {
    const char* tag;
    const char* payload;
    RecordYield::Count count;
  } yields[] = {
      {"$TMC", "", RecordYield::kOne},
      {"$TMC", "LTN=1 SID=2;PID=3 tmcData=", RecordYield::kMaybe},  // empty value at the end
      {"$TMC", "LTN=1 SID=2;PID=3;", RecordYield::kOne},
      {"$TMC", "ltn=1", RecordYield::kMaybe},
      {"$TMC", "LTN=1  SID=2", RecordYield::kMaybe},
      {"$TSL", "sd_SPN=\"A B\"", RecordYield::kMaybe},
      {"$TSL", "serviceType=1;sd_SID=2", RecordYield::kOne},
      {"$TOT", "getInventory:", RecordYield::kOne},
      {"$TOT", "getInventory:x", RecordYield::kNone},
      {"$TOT", "setNewData:\"my file.bin\"", RecordYield::kOne},
      {"$TOT", "setNewData:a  b", RecordYield::kNone},
      {"$TOT", "setNewData:\"\" a", RecordYield::kOne},
      {"$TOT", "bogus:1", RecordYield::kNone},
      {"$tmc", "", RecordYield::kNone},
  };
  for (const auto& test : yields) {
    EXPECT_EQ(RecordYield::Of(test.tag, test.payload).count, test.count)
        << test.tag << " " << test.payload;
  }

  const struct {
    const char* text;
    const char* json;
  } times[] = {{"1416131460.50", "1416131460.50"}, {"1416131461,5", "1416131461.5"},
               {"+7", "7"},           {"\r12", "12"},      {".5", "0.5"},
               {"abc", "0"},          {"0x10", "0"},       {"1.5,2", "0"}};
  for (const auto& test : times) EXPECT_EQ(RecordTime::JsonNumber(test.text), test.json);
}

struct Choice {
  const char* from;
  const char* until;
  const char* only;
  const char* skip;
};

Selection Select(const Choice& choice) {
  Selection selection;
  std::string error;
  const bool ok = (!choice.from || selection.SetFrom(choice.from, &error)) &&
                  (!choice.until || selection.SetUntil(choice.until, &error)) &&
                  (!choice.only || selection.SetOnly(choice.only, &error)) &&
                  (!choice.skip || selection.SetSkip(choice.skip, &error));
  EXPECT_TRUE(ok) << error;
  return selection;
}

std::string Marker(const std::string& time, int line) {
  return time + kMarker + std::to_string(line) + "\n";
}

TEST(HostSelection, PrivateFileHoldsTheSelectedRecordsAndMarkers) {
  TestFolder folder;
  // Mixed line ends; line 3 may yield nothing, line 4 has no producer, and
  // line 6 ends playback.
  const std::string recording = folder.Write(
      "rec", "100 $TSL serviceType=1\r\n101 $TMC SID=1\r102 $TMC \"x\n103 $FOO\n"
             "104 $TOT getInventory\nbad\n106 $TMC SID=7\n");
  const std::string all = Marker("100", 1) + "100 $TSL serviceType=1\n101 $TMC SID=1\n" +
                          "102 $TMC \"x\n" + Marker("103", 4) + "103 $FOO\n" +
                          "104 $TOT getInventory\n";
  const std::string tagged = Marker("100", 1) + "100 $TSL serviceType=1\n104 $TOT getInventory\n";
  const struct {
    Choice choice;
    uint32_t passes;
    std::string expected;
  } cases[] = {
      {{nullptr, nullptr, nullptr, nullptr}, 1, all},
      {{"@2", "+3", nullptr, "FOO"}, 1, Marker("101", 2) + "101 $TMC SID=1\n102 $TMC \"x\n"},
      {{"103.5", nullptr, nullptr, nullptr}, 1, Marker("104", 5) + "104 $TOT getInventory\n"},
      {{nullptr, nullptr, "TOT,$TSL", nullptr}, 2, tagged + tagged},
      {{"@7", nullptr, nullptr, nullptr}, 1, ""},
  };
  for (const auto& test : cases) {
    const Selection selection = Select(test.choice);
    std::string text;
    ASSERT_TRUE(PrivateEvents::Text(selection, recording, test.passes, &text));
    EXPECT_EQ(text, test.expected) << (test.choice.from ? test.choice.from : "-");
  }

  // A line that begins with a CR can only follow a lone CR.
  const std::string crs = folder.Write("crs", "1 $TMC\r\r2 $TMC");
  std::string text;
  ASSERT_TRUE(PrivateEvents::Text(Select({nullptr, nullptr, nullptr, nullptr}), crs, 1, &text));
  EXPECT_EQ(text, Marker("1", 1) + "1 $TMC\r\r2 $TMC\n");
  text.clear();
  ASSERT_TRUE(PrivateEvents::Text(Select({"@2", nullptr, nullptr, nullptr}), crs, 1, &text));
  EXPECT_EQ(text, std::string("0 $HOST\r\r2") + kMarker + "2\r\r2 $TMC\n");
}

TEST(HostSelection, ItemsFindTheirRecordAcrossNothingAndPasses) {
  TestFolder folder;
  // Line 1 yields nothing after all; line 2 is a recorded call with the very
  // value of the marker before it; line 5 may or may not yield.
  const std::string recording = folder.Write(
      "rec", "100 $TMC \"x\n101 $TOT setTimeoutForFallback:2\n102 $FOO\n103 $TMC SID=1\n"
             "104,5 $TSL sd_SPN=\"R 1\"\n105 $TMC SID=2\n");
  const Selection selection;
  ItemOrigins origins(selection);
  std::string error;
  ASSERT_TRUE(origins.Open(recording, &error)) << error;
  using Found = ItemOrigins::Found;
  const struct {
    ItemKind kind;
    int64_t markerValue;  // -1: not a setTimeoutForFallback call
    Found found;
    uint64_t line;
    const char* time;
    uint32_t pass;
  } items[] = {
      {ItemKind::kOnlineTraffic, 1, Found::kMarker, 0, "", 0},
      {ItemKind::kOnlineTraffic, 2, Found::kMarker, 0, "", 0},
      {ItemKind::kOnlineTraffic, 2, Found::kRecord, 2, "101", 1},
      {ItemKind::kTmc, -1, Found::kRecord, 4, "103", 1},
      {ItemKind::kServiceList, -1, Found::kRecord, 5, "104.5", 1},
      {ItemKind::kOnlineTraffic, 6, Found::kMarker, 0, "", 0},
      {ItemKind::kTmc, -1, Found::kRecord, 6, "105", 1},
      {ItemKind::kOnlineTraffic, 1, Found::kMarker, 0, "", 0},
      {ItemKind::kOnlineTraffic, 2, Found::kMarker, 0, "", 0},
      {ItemKind::kOnlineTraffic, 2, Found::kRecord, 2, "101", 2},
      {ItemKind::kTmc, -1, Found::kRecord, 4, "103", 2},
      // Line 5 yielded nothing this time: the marker closes it.
      {ItemKind::kOnlineTraffic, 6, Found::kMarker, 0, "", 0},
      {ItemKind::kTmc, -1, Found::kRecord, 6, "105", 2},
  };
  int index = 0;
  for (const auto& item : items) {
    ItemOrigin origin;
    const Found found =
        origins.Find(item.kind, item.markerValue >= 0, item.markerValue, &origin);
    EXPECT_EQ(found, item.found) << "item " << index;
    if (found == Found::kRecord) {
      EXPECT_EQ(origin.line, item.line) << "item " << index;
      EXPECT_EQ(origin.recordTime, item.time) << "item " << index;
      EXPECT_EQ(origin.pass, item.pass) << "item " << index;
    }
    ++index;
  }
}

}  // namespace
}  // namespace PelorinHost
