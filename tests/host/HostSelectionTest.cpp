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

TEST(HostSelection, RecordsReadAsTheModuleReadsThem) {
  const struct {
    const char* tag;
    const char* payload;
    bool yields;
  } yields[] = {
      {"$TMC", "", true},
      {"$TMC", "LTN=1 SID=2;PID=3 tmcData=", false},  // empty value at the end
      {"$TMC", "LTN=1 SID=2;PID=3;", true},
      {"$TMC", "LTN= SID=2", true},
      {"$TMC", "ltn=1", false},
      {"$TMC", "LTN=1  SID=2", false},
      {"$TMC", "LTN", false},
      {"$TMC", "=1", false},
      {"$TSL", "sd_SPN=\"A B\"", true},
      {"$TSL", "sd_SPN=\"A B\";sd_SID=2", true},
      {"$TSL", "sd_SPN=\"A B\"x;sd_SID=2", false},  // "x" separates: ";sd_SID" is unknown
      {"$TSL", "sd_SPN=\"\"", false},
      {"$TSL", "sd_SPN=\"", false},
      {"$TSL", "serviceType=1;sd_SID=2", true},
      {"$TOT", "getInventory:", true},
      {"$TOT", "getInventory:x", false},
      {"$TOT", "setNewData:\"my file.bin\"", true},
      {"$TOT", "setNewData:a  b", false},
      {"$TOT", "setNewData:\"\" a", true},
      {"$TOT", "bogus:1", false},
      {"$tmc", "", false},
  };
  for (const auto& test : yields) {
    EXPECT_EQ(RecordYield::Of(test.tag, test.payload).yields, test.yields)
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

TEST(HostSelection, PrivateFileHoldsTheSelectedRecords) {
  TestFolder folder;
  // Mixed line ends; line 6 ends playback.
  const std::string recording = folder.Write(
      "rec", "100 $TSL serviceType=1\r\n101 $TMC SID=1\r102 $TMC \"x\n103 $FOO\n"
             "104 $TOT getInventory\nbad\n106 $TMC SID=7\n");
  const std::string all =
      "100 $TSL serviceType=1\n101 $TMC SID=1\n102 $TMC \"x\n103 $FOO\n104 $TOT getInventory\n";
  const std::string tagged = "100 $TSL serviceType=1\n104 $TOT getInventory\n";
  const struct {
    Choice choice;
    uint32_t passes;
    std::string expected;
  } cases[] = {
      {{nullptr, nullptr, nullptr, nullptr}, 1, all},
      {{"@2", "+3", nullptr, "FOO"}, 1, "101 $TMC SID=1\n102 $TMC \"x\n"},
      {{"103.5", nullptr, nullptr, nullptr}, 1, "104 $TOT getInventory\n"},
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
  EXPECT_EQ(text, "1 $TMC\r\r2 $TMC\n");
  text.clear();
  ASSERT_TRUE(PrivateEvents::Text(Select({"@2", nullptr, nullptr, nullptr}), crs, 1, &text));
  EXPECT_EQ(text, "0 $HOST\r\r2 $TMC\n");
}

TEST(HostSelection, ItemsFindTheirRecordAcrossNothingAndPasses) {
  TestFolder folder;
  // Lines 1, 3 and 5 yield nothing.
  const std::string recording = folder.Write(
      "rec", "100 $TMC \"x\n101 $TOT setTimeoutForFallback:2\n102 $FOO\n103 $TMC SID=1\n"
             "104,5 $TSL sd_SPN=\"\"\n105 $TSL sd_SPN=\"R 1\"\n106 $TMC\n");
  const Selection selection;
  ItemOrigins origins(selection);
  std::string error;
  ASSERT_TRUE(origins.Open(recording, &error)) << error;
  const struct {
    ItemKind kind;
    uint64_t line;
    const char* time;
    uint32_t pass;
  } items[] = {
      {ItemKind::kOnlineTraffic, 2, "101", 1}, {ItemKind::kTmc, 4, "103", 1},
      {ItemKind::kServiceList, 6, "105", 1},   {ItemKind::kTmc, 7, "106", 1},
      {ItemKind::kOnlineTraffic, 2, "101", 2}, {ItemKind::kServiceList, 6, "105", 2},
  };
  for (const auto& item : items) {
    ItemOrigin origin;
    ASSERT_TRUE(origins.Find(item.kind, &origin)) << item.line;
    EXPECT_EQ(origin.line, item.line);
    EXPECT_EQ(origin.recordTime, item.time) << item.line;
    EXPECT_EQ(origin.pass, item.pass) << item.line;
  }
}

}  // namespace
}  // namespace PelorinHost
