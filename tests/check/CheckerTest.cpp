// The checker on whole events files: each diagnostic, line numbering as the
// reader counts lines, and where playback ends.

#include "host/pelorin-check/Checker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/check/CheckTestSupport.h"

namespace {

using pelorin_check_test::CollectingWriter;
using pelorin_check_test::TestFolder;
using PelorinCheck::Checker;
using PelorinCheck::Diagnostic;
using PelorinCheck::DiagnosticKind;
using PelorinCheck::FileSummary;
using PelorinCheck::Severity;
using PelorinCheck::TpegDirectory;
using ::testing::HasSubstr;

const char kGoodTmc[] = "timeStamp=1416131460 LTN=1 SID=34 PID=53761 tmcData=0A:1F:22";

class CheckerTest : public ::testing::Test {
 protected:
  FileSummary Check(const std::string& bytes, const std::string& name = "events") {
    const std::string path = m_dir.Write(name, bytes);
    Checker checker(m_options, m_tpegs, m_writer);
    return checker.CheckFile(path);
  }

  // The one diagnostic of `kind`; fails the test when there is not exactly one.
  Diagnostic Only(DiagnosticKind kind) {
    const std::vector<Diagnostic> found = m_writer.OfKind(kind);
    EXPECT_EQ(found.size(), 1u) << "diagnostics of kind " << PelorinCheck::DiagnosticCode(kind);
    return found.empty() ? Diagnostic() : found[0];
  }

  TestFolder m_dir;
  PelorinCheck::Options m_options;
  TpegDirectory m_tpegs;
  CollectingWriter m_writer;
};

TEST_F(CheckerTest, MalformedLineEndsPlaybackAndCountsTheLinesAfterIt) {
  const struct {
    const char* line;
    const char* reason;
  } cases[] = {{"", "empty line"},
               {"11$TMC", "no blank after the time stamp"},
               {"11\t$TMC", "no blank after the time stamp"},
               {" 11 $TMC", "empty time stamp (the line starts with a blank)"},
               {"11  $TMC", "empty tag (two blanks after the time stamp)"},
               {"11 ", "empty tag (nothing after the time stamp)"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.reason);
    m_writer = CollectingWriter();
    const FileSummary summary = Check(std::string("10 $TMC\n") + c.line + "\n11 $TMC\n12 $TMC\n");
    const Diagnostic error = Only(DiagnosticKind::kMalformedLine);
    EXPECT_EQ(error.severity, Severity::kError);
    EXPECT_EQ(error.line, 2u);
    EXPECT_THAT(error.message, HasSubstr(std::string(c.reason) + "; playback ends here"));
    EXPECT_EQ(summary.StopLine(), 2u);
    EXPECT_EQ(summary.LinesNeverPlayed(), 2u);
    EXPECT_EQ(summary.PlayedRecords(), 1u);
    EXPECT_EQ(summary.Errors(), 1u);
  }
  m_writer = CollectingWriter();
  Check("1 $TMC\n\n2 $TMC\n 3 $TMC\n");
  const std::vector<Diagnostic> errors = m_writer.OfKind(DiagnosticKind::kMalformedLine);
  ASSERT_EQ(errors.size(), 2u);
  EXPECT_THAT(errors[1].message, HasSubstr("would end here too"));
}

TEST_F(CheckerTest, MixedLineEndsAreNumberedAsTheReaderReadsThem) {
  // CR LF, lone CR, LF, CR CR (the second CR opens the next line, whose time
  // text then starts with it) and a last line without a line end.
  const FileSummary summary =
      Check("100 $TMC\r\n101 $TSL\r102 $tmc\n103 $TMC\r\r104 $BAR\n105 $TMC");
  const std::vector<Diagnostic> unknown = m_writer.OfKind(DiagnosticKind::kUnknownTag);
  ASSERT_EQ(unknown.size(), 2u);
  EXPECT_EQ(unknown[0].line, 3u);
  EXPECT_EQ(unknown[1].line, 5u);
  EXPECT_THAT(unknown[0].message, HasSubstr("did you mean \"$TMC\""));
  EXPECT_THAT(unknown[1].message, ::testing::Not(HasSubstr("did you mean")));
  EXPECT_EQ(m_writer.diagnostics.size(), 2u);  // "\r104" converts: no time warning
  EXPECT_EQ(summary.Lines(), 6u);
  EXPECT_EQ(summary.PlayedRecords(), 4u);
  EXPECT_EQ(summary.DroppedRecords(), 2u);
  EXPECT_EQ(summary.LastTime(), 105.0);
}

TEST_F(CheckerTest, PayloadFailuresNameTheKeyAndTheByte) {
  Check(
      "1 $TMC timeStamp=1 ltn=1\n"   // unknown key at payload byte 13
      "2 $TMC timeStamp=1 LTN\n"     // no "=" for the last key
      "3 $TSL sd_SID=1; sd_LTN=2\n"  // the blank after ";" starts the key
      "4 $TMC LTN=\n"                // empty value at the end
      "5 $TSL sd_SPN=\"RADIO 1\" sd_Q=3\n");
  const std::vector<Diagnostic> refused = m_writer.OfKind(DiagnosticKind::kPayloadRefused);
  ASSERT_EQ(refused.size(), 4u);
  EXPECT_EQ(refused[0].key, "ltn");
  EXPECT_EQ(refused[0].byte, 13u);
  EXPECT_THAT(refused[0].message, HasSubstr("unknown key \"ltn\""));
  EXPECT_THAT(refused[0].message, HasSubstr("byte 13 (column 20)"));
  EXPECT_EQ(refused[1].line, 2u);
  EXPECT_THAT(refused[1].message, HasSubstr("no \"=\""));
  EXPECT_EQ(refused[2].key, " sd_LTN");
  EXPECT_EQ(refused[2].tag, "$TSL");
  EXPECT_THAT(refused[3].message, HasSubstr("empty value of \"LTN\""));
}

TEST_F(CheckerTest, OnlineTrafficCallsAreCheckedForMethodAndArguments) {
  m_dir.Write("rec/my file.bin", "x");
  const FileSummary summary = Check(
      "1 $TOT\n"
      "2 $TOT :x\n"
      "3 $TOT getinventory\n"
      "4 $TOT getInventory:x\n"
      "5 $TOT setNewData\n"
      "6 $TOT setTimeoutForFallback: 30\n"
      "7 $TOT setNewData:\"my file.bin\"\n",
      "rec/events");
  const std::vector<Diagnostic> empty = m_writer.OfKind(DiagnosticKind::kEmptyMethod);
  ASSERT_EQ(empty.size(), 2u);
  EXPECT_EQ(empty[1].line, 2u);
  const Diagnostic unknown = Only(DiagnosticKind::kUnknownMethod);
  EXPECT_THAT(unknown.message, HasSubstr("did you mean \"getInventory\""));
  const std::vector<Diagnostic> count = m_writer.OfKind(DiagnosticKind::kArgumentCount);
  ASSERT_EQ(count.size(), 2u);
  EXPECT_THAT(count[0].message, HasSubstr("takes 0 arguments but has 1"));
  EXPECT_THAT(count[1].message, HasSubstr("takes 1 argument but has 0"));
  EXPECT_EQ(m_writer.diagnostics.size(), 5u);
  EXPECT_EQ(summary.DroppedRecords(), 5u);
}

TEST_F(CheckerTest, TimeStampsThatPlayAsZeroOrGoBackwards) {
  Check(
      "abc $TMC\n"  // does not convert
      "0 $TMC\n"    // converts, to 0
      "-5 $TMC\n"   // before 1970
      "103 $TMC\n"
      "101,5 $TMC\n"  // decimal comma converts; earlier than line 4
      "101,5 $TMC\n"  // equal to its predecessor: fine
      "200 $TMC\n");
  EXPECT_EQ(Only(DiagnosticKind::kTimeNotConverted).line, 1u);
  EXPECT_THAT(Only(DiagnosticKind::kTimeNotConverted).message, HasSubstr("\"abc\""));
  const std::vector<Diagnostic> zero = m_writer.OfKind(DiagnosticKind::kTimeNotPositive);
  ASSERT_EQ(zero.size(), 2u);
  EXPECT_EQ(zero[0].line, 2u);
  EXPECT_EQ(zero[1].line, 3u);
  const Diagnostic backwards = Only(DiagnosticKind::kTimeBackwards);
  EXPECT_EQ(backwards.line, 5u);
  EXPECT_THAT(backwards.message, HasSubstr("101.5 is earlier than 103 on line 4"));
}

TEST_F(CheckerTest, ValuesThatArriveAsZeroOrChangedAreWarnings) {
  const struct {
    const char* line;
    DiagnosticKind kind;
    const char* says;
  } cases[] = {
      {"1 $TMC PID=4294967296", DiagnosticKind::kValueOutOfRange, "delivered as 0"},
      {"1 $TMC LTN=300", DiagnosticKind::kValueOutOfRange, "(0 to 255); it is delivered as 44"},
      {"1 $TMC tmcData=ZZ", DiagnosticKind::kValueNotNumber, "byte 1 \"ZZ\" of \"tmcData\""},
      {"1 $TMC tmcData=0A::1", DiagnosticKind::kValueNotNumber, "byte 2 \"\""},
      {"1 $TMC tmcData=1FF", DiagnosticKind::kValueOutOfRange, "delivered as 255"},
      {"1 $TSL sd_SID=xx", DiagnosticKind::kValueNotNumber, "\"xx\" of \"sd_SID\""},
      {"1 $TSL monitorState=4294967297", DiagnosticKind::kValueOutOfRange, "delivered as 1"},
      {"1 $TSL SS_ID=9999999999", DiagnosticKind::kValueOutOfRange, "delivered as 1410065407"},
      {"1 $TSL SS_ID=-2147483649", DiagnosticKind::kValueOutOfRange, "delivered as 2147483647"},
      {"1 $TOT setTimeoutForFallback:2147483648", DiagnosticKind::kValueOutOfRange,
       "does not fit a signed 32-bit integer"},
      {"1 $TOT dsiConnectionStateChanged:on", DiagnosticKind::kValueNotNumber,
       "\"on\" of \"$TOT\" method \"dsiConnectionStateChanged\" is not a decimal integer"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    m_writer = CollectingWriter();
    const FileSummary summary = Check(std::string(c.line) + "\n");
    ASSERT_EQ(m_writer.diagnostics.size(), 1u) << m_writer.diagnostics[0].message;
    EXPECT_EQ(m_writer.diagnostics[0].kind, c.kind);
    EXPECT_EQ(m_writer.diagnostics[0].severity, Severity::kWarning);
    EXPECT_THAT(m_writer.diagnostics[0].message, HasSubstr(c.says));
    EXPECT_EQ(summary.PlayedRecords(), 1u);
  }
  // Values that fit, texts, and payloads refused as a whole say nothing more.
  m_writer = CollectingWriter();
  Check(
      "1 $TMC timeStamp=4294967295 LTN=255 SID=0 PID=+7 tmcData=0a:FF:0x1f:\n"
      "2 $TSL SS_ID=-2147483648 sd_SPN=\"99999999999\";SS_ID=2147483647 sd_sendername=x\n"
      "3 $TOT setOnlineTrafficDataStatus:-2147483648\n3 $TOT setTimeoutForFallback:2147483647\n"
      "4 $TMC PID=99999999999 ltn=1\n");
  ASSERT_EQ(m_writer.diagnostics.size(), 1u) << m_writer.diagnostics[0].message;
  EXPECT_EQ(m_writer.diagnostics[0].kind, DiagnosticKind::kPayloadRefused);
}

TEST_F(CheckerTest, WholeFileFindings) {
  // An empty recording: a warning, an error under --strict.
  Check("");
  EXPECT_EQ(Only(DiagnosticKind::kEmptyRecording).severity, Severity::kWarning);
  m_writer = CollectingWriter();
  m_options.strict = true;
  Check("");
  EXPECT_EQ(Only(DiagnosticKind::kEmptyRecording).severity, Severity::kError);
  // A byte-order mark spoils the first time stamp.
  m_writer = CollectingWriter();
  Check("\xEF\xBB\xBF" "1 $TMC\n2 $TMC\n");
  EXPECT_EQ(Only(DiagnosticKind::kByteOrderMark).line, 1u);
  EXPECT_EQ(Only(DiagnosticKind::kTimeNotConverted).line, 1u);
  // Binary data: what comes before it, then one diagnostic, however much
  // garbage follows; it names where playback stops.
  m_writer = CollectingWriter();
  std::string binary("1 $TMC\n2 $FOO\n\0\x01\x02\n", 18);
  for (int i = 0; i < 100; ++i) binary += std::string("\x7f\0\n \n", 5);
  const FileSummary summary = Check(binary);
  ASSERT_EQ(m_writer.diagnostics.size(), 2u);
  EXPECT_EQ(m_writer.diagnostics[0].kind, DiagnosticKind::kUnknownTag);
  const Diagnostic found = m_writer.diagnostics[1];
  EXPECT_EQ(found.kind, DiagnosticKind::kBinaryData);
  EXPECT_EQ(found.severity, Severity::kError);
  EXPECT_EQ(found.line, 3u);
  EXPECT_EQ(found.byte, 15u);
  EXPECT_THAT(found.message, HasSubstr("binary data at byte 15; playback stops at line 3"));
  EXPECT_EQ(summary.Errors() + summary.Warnings(), 2u);
}

TEST_F(CheckerTest, AtMostMaxErrorsDiagnosticsAreShownThoughAllCount) {
  std::string events;
  for (int i = 10; i < 35; ++i) events += std::to_string(i) + " $FOO\n";
  for (const uint32_t limit : {20u, 0u, 1u}) {
    m_writer = CollectingWriter();
    m_options.maxErrors = limit;
    const FileSummary summary = Check(events);
    EXPECT_EQ(m_writer.diagnostics.size(), limit == 0 ? 25u : limit);
    EXPECT_EQ(summary.HiddenDiagnostics() + m_writer.diagnostics.size(), 25u);
  }
}

}  // namespace
