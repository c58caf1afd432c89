// --expect: what counts as the same item, where a difference is found and
// how it is told, and which lines of the file are JSON items at all.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "EndSignal.h"
#include "ExpectedItems.h"
#include "JsonMembers.h"
#include "RunEnd.h"
#include "tests/support/TempFile.h"

namespace PelorinHost {
namespace {

const std::string kTmc5 = R"({"t":1,"type":"tmc","line":5,"recordTime":15,"sid":1})";
const std::string kTmc6 = R"({"t":2,"type":"tmc","line":6,"recordTime":16,"sid":2})";
const std::string kList7 = R"({"t":3,"type":"serviceList","line":7,"recordTime":17,"entries":[]})";

struct Outcome {
  bool differs;
  bool raised;  // while items came, not at the end
  std::vector<std::string> verdict;
};

Outcome Compare(const std::string& file, const std::vector<std::string>& received,
                bool finished = true, ExpectedItems::RunShape run = {}) {
  pelorin_test::TempFolder folder;
  EndSignal endSignal;
  ExpectedItems expected(endSignal);
  std::string error;
  EXPECT_TRUE(expected.Load(folder.Write("expected.jsonl", file), "expected.jsonl", run, &error))
      << error;
  for (const std::string& item : received) expected.Check(item);
  const bool raised = (endSignal.WaitFor(0) & EndSignal::kMismatch) != 0;
  expected.End(finished);
  return Outcome{expected.Differs(), raised, expected.Verdict("rec.txt")};
}

TEST(HostExpectedItems, DifferencesAreToldWithTheLineOfTheRecording) {
  const std::string file = kTmc5 + "\n" + kTmc6 + "\n" + kList7 + "\n";
  const struct {
    const char* what;
    std::vector<std::string> received;
    bool finished;
    bool differs;
    std::string first;
  } cases[] = {
      {"the same items, other times",
       {R"({"t":9,"type":"tmc","line":5,"recordTime":15,"sid":1})",
        R"({"t":9,"type":"tmc","line":6,"recordTime":16,"sid":2})",
        R"({"t":9,"type":"serviceList","line":7,"recordTime":17,"entries":[]})"},
       true,
       false,
       "the items match expected.jsonl (3 compared)"},
      {"a value",
       {kTmc5, R"({"t":2,"type":"tmc","line":6,"recordTime":16,"sid":3})"},
       true,
       true,
       "rec.txt:6: the item differs from expected.jsonl:2"},
      {"a record that made nothing",
       {kTmc5, kList7},
       true,
       true,
       "rec.txt:6: the item of expected.jsonl:2 was not received"},
      {"an item too many",
       {kTmc5, R"({"type":"tmc","line":5,"recordTime":15,"sid":1})"},
       true,
       true,
       "rec.txt:5: an item that expected.jsonl does not hold was received before line 2"},
      {"more after the last",
       {kTmc5, kTmc6, kList7, kList7},
       true,
       true,
       "rec.txt:7: an item that expected.jsonl does not hold was received"},
      {"playback ended early",
       {kTmc5},
       true,
       true,
       "rec.txt:6: the item of expected.jsonl:2 was not received"},
      {"the run was stopped",
       {kTmc5},
       false,
       false,
       "1 items matched expected.jsonl before the run ended; 2 were not reached"},
  };
  for (const auto& test : cases) {
    const Outcome outcome = Compare(file, test.received, test.finished);
    EXPECT_EQ(outcome.differs, test.differs) << test.what;
    EXPECT_EQ(outcome.raised, test.differs && test.received.size() > 1) << test.what;
    ASSERT_EQ(outcome.verdict.size(), test.differs ? 3u : 1u) << test.what;
    EXPECT_EQ(outcome.verdict[0], test.first) << test.what;
  }
}

TEST(HostExpectedItems, AFileOfOtherOptionsIsComparedOnWhatBothHave) {
  const std::string looped = R"({"type":"tmc","line":5,"pass":1,"sid":1})"
                             "\n"
                             R"({"type":"tmc","line":5,"pass":2,"sid":1})"
                             "\n";
  ExpectedItems::RunShape onlyTmc;
  onlyTmc.serviceList = false;
  const struct {
    const char* what;
    std::string file;
    std::vector<std::string> received;
    ExpectedItems::RunShape run;
    std::vector<std::string> verdict;
  } cases[] = {
      {"kinds the file lacks",
       kTmc5,
       {kList7, kTmc5},
       {},
       {"the items match expected.jsonl (1 compared)",
        "expected.jsonl holds no \"serviceList\" items: this run's were not compared"}},
      {"kinds the run does not play",
       kTmc5 + "\n" + kList7,
       {kTmc5},
       onlyTmc,
       {"the items match expected.jsonl (1 compared)",
        "expected.jsonl's \"serviceList\" items were not compared: this run does not play them"}},
      {"keys only one side has, and later passes",
       looped,
       {R"({"type":"tmc","line":5,"recordTime":15,"sid":1})"},
       {},
       {"the items match expected.jsonl (1 compared)",
        "compared without \"pass\", which only expected.jsonl has",
        "compared without \"recordTime\", which only this run has",
        "1 items of later passes in expected.jsonl were not compared: this run plays one pass"}},
      {"a TPEG file's folder",
       R"({"type":"onlineTraffic","line":4,"call":"setNewData","args":["/elsewhere/a.bin"]})",
       {R"({"type":"onlineTraffic","line":4,"call":"setNewData","args":["/here/a.bin"]})"},
       {},
       {"the items match expected.jsonl (1 compared)"}},
  };
  for (const auto& test : cases) {
    const Outcome outcome = Compare(test.file, test.received, true, test.run);
    EXPECT_EQ(outcome.verdict, test.verdict) << test.what;
  }
  EXPECT_TRUE(
      Compare(R"({"type":"onlineTraffic","line":4,"call":"setNewData","args":["/x/a.bin"]})",
              {R"({"type":"onlineTraffic","line":4,"call":"setNewData","args":["/x/b.bin"]})"})
          .differs);
}

TEST(HostExpectedItems, TheFileMustBeJsonItems) {
  const struct {
    const char* line;
    bool item;
  } cases[] = {
      {R"({"type":"tmc","a":[1,{"b":null}],"c":"\u00e9\n","d":-0.5e+3,"e":true})", true},
      {R"(  {"type" : "dataPool" , "value" : false }  )", true},
      {"{}", false},  // no type
      {R"({"type":"tmc",})", false},
      {R"({"type":"tmc"} x)", false},
      {R"({"type":"tmc","a":01})", false},
      {R"({"type":"tmc","a":"\x"})", false},
      {"{\"type\":\"tmc\",\"a\":\"\x01\"}", false},
      {R"({"type":"tmc","a":[1,]})", false},
      {R"({"type":"tmc","a":nul})", false},
      {"  1.0 ", false},
      {"1416131460 $TMC SID=1", false},
      {"    0.052  tmc line=1 sid=1", false},
  };
  for (const auto& test : cases) {
    pelorin_test::TempFolder folder;
    EndSignal endSignal;
    ExpectedItems expected(endSignal);
    std::string error;
    const std::string path = folder.Write("e", std::string("\n") + test.line + "\n");
    EXPECT_EQ(expected.Load(path, "e", {}, &error), test.item) << test.line;
    if (!test.item) {
      EXPECT_EQ(error,
                "e:2: not an item of pelorin-host --json output (one JSON object with \"type\")");
    }
  }
  // Nesting deep enough to exhaust a stack is refused, not followed.
  JsonMembers members;
  EXPECT_FALSE(
      members.Parse("{\"a\":" + std::string(100000, '[') + std::string(100000, ']') + "}"));
  EndSignal endSignal;
  ExpectedItems missing(endSignal);
  std::string error;
  EXPECT_FALSE(missing.Load("/nonexistent/e.jsonl", "e.jsonl", {}, &error));
  EXPECT_EQ(error, "--expect e.jsonl: No such file or directory");
}

TEST(HostExpectedItems, ADifferenceYieldsToHowTheRunWasCut) {
  RunEnd end;
  end.mismatch = true;
  end.playedPart = true;
  EXPECT_EQ(end.ExitStatus(), RunEnd::kMismatch);
  end.timedOut = true;
  EXPECT_EQ(end.ExitStatus(), RunEnd::kTimedOut);
  end.signal = 2;
  EXPECT_EQ(end.ExitStatus(), 130);
}

}  // namespace
}  // namespace PelorinHost
