// The two report forms: the text lines people read and the JSON Lines that
// programs read, including bytes that are neither printable nor UTF-8.

#include <gtest/gtest.h>

#include <sstream>

#include "host/pelorin-check/JsonReportWriter.h"
#include "host/pelorin-check/TextReportWriter.h"

namespace {

using PelorinCheck::Diagnostic;
using PelorinCheck::DiagnosticKind;
using PelorinCheck::FileSummary;
using PelorinCheck::Severity;

FileSummary SampleSummary() {
  FileSummary summary("rec/events", 2.0);
  summary.AddRecord(1416131460.0, "$TMC", true);
  summary.AddRecord(1416131461.5, "$TSL", true);
  summary.AddRecord(1416131462.0, "$FOO", false);
  summary.AddRecord(1416131463.0, "$TMC", true);
  summary.AddMalformedLine(5, "empty line");
  summary.AddRecord(1416131470.0, "$TMC", true);
  summary.AddDiagnostic(Severity::kError);
  summary.AddDiagnostic(Severity::kWarning);
  summary.AddHiddenDiagnostic();
  return summary;
}

Diagnostic SampleDiagnostic() {
  Diagnostic diagnostic;
  diagnostic.file = "rec/events";
  diagnostic.line = 12;
  diagnostic.severity = Severity::kWarning;
  diagnostic.kind = DiagnosticKind::kPayloadRefused;
  diagnostic.message = "unknown key \"ltn\"";
  diagnostic.tag = "$TMC";
  diagnostic.key = "ltn";
  diagnostic.hasByte = true;
  diagnostic.byte = 24;
  return diagnostic;
}

TEST(TextReportWriterTest, WritesDiagnosticsInTheUsualFormAndTheSummary) {
  std::ostringstream out;
  PelorinCheck::TextReportWriter writer(out);
  writer.WriteDiagnostic(SampleDiagnostic());
  Diagnostic wholeFile;
  wholeFile.file = "gone";
  wholeFile.severity = Severity::kError;
  wholeFile.message = "empty recording";
  writer.WriteDiagnostic(wholeFile);
  writer.WriteSummary(SampleSummary());
  writer.WriteTotal(PelorinCheck::RunTotal{3, 1, 2, 1});
  EXPECT_EQ(out.str(),
            "rec/events:12: warning: unknown key \"ltn\"\n"
            "gone: error: empty recording\n"
            "rec/events: summary: 6 lines; 3 records play: $TMC 2, $TSL 1; 1 record dropped\n"
            "rec/events: summary: first 2014-11-16 09:51:00 UTC, last 2014-11-16 09:51:03 UTC, "
            "span 3s\n"
            "rec/events: summary: plays 3s at speed 1, 1.5s at speed 2\n"
            "rec/events: summary: playback ends at line 5: empty line; 1 later line never plays\n"
            "rec/events: summary: 1 more diagnostics not shown (--max-errors 0 shows all)\n"
            "rec/events: summary: 1 error, 1 warning\n"
            "total: 3 files (1 unusable), 2 errors, 1 warning\n");
}

TEST(JsonReportWriterTest, WritesOneObjectPerLine) {
  std::ostringstream out;
  PelorinCheck::JsonReportWriter writer(out);
  writer.WriteDiagnostic(SampleDiagnostic());
  writer.WriteSummary(SampleSummary());
  writer.WriteTotal(PelorinCheck::RunTotal{3, 1, 2, 1});
  EXPECT_EQ(
      out.str(),
      "{\"type\":\"diagnostic\",\"file\":\"rec/events\",\"line\":12,\"severity\":\"warning\","
      "\"code\":\"payload-refused\",\"message\":\"unknown key \\\"ltn\\\"\",\"tag\":\"$TMC\","
      "\"key\":\"ltn\",\"byte\":24}\n"
      "{\"type\":\"summary\",\"file\":\"rec/events\",\"lines\":6,\"records\":3,"
      "\"droppedRecords\":1,"
      "\"tags\":[{\"tag\":\"$TMC\",\"records\":2},{\"tag\":\"$TSL\",\"records\":1}],"
      "\"otherTagRecords\":0,\"firstTime\":1416131460,\"first\":\"2014-11-16T09:51:00Z\","
      "\"lastTime\":1416131463,\"last\":\"2014-11-16T09:51:03Z\",\"spanSeconds\":3,"
      "\"playSeconds\":3,\"speed\":2,\"playSecondsAtSpeed\":1.5,\"stopLine\":5,"
      "\"stopReason\":\"empty line\",\"linesNeverPlayed\":1,\"errors\":1,\"warnings\":1,"
      "\"hiddenDiagnostics\":1}\n"
      "{\"type\":\"total\",\"files\":3,\"unusableFiles\":1,\"errors\":2,\"warnings\":1}\n");
}

TEST(ReportWritersTest, SummaryOfAFileWithoutRecords) {
  std::ostringstream text;
  PelorinCheck::TextReportWriter(text).WriteSummary(FileSummary("empty", 0.0));
  EXPECT_EQ(text.str(),
            "empty: summary: 0 lines; no record plays\n"
            "empty: summary: 0 errors, 0 warnings\n");
  std::ostringstream out;
  PelorinCheck::JsonReportWriter(out).WriteSummary(FileSummary("empty", 0.0));
  EXPECT_NE(out.str().find("\"firstTime\":null,\"first\":null"), std::string::npos);
  EXPECT_NE(out.str().find("\"speed\":null,\"playSecondsAtSpeed\":null,\"stopLine\":null"),
            std::string::npos);
}

}  // namespace
