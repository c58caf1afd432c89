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
  summary.AddRecord(1416131460.0, "$TMC");
  summary.AddRecord(1416131461.5, "$TSL");
  summary.AddRecord(1416131463.0, "$TMC");
  summary.AddMalformedLine(4, "empty line");
  summary.AddRecord(1416131470.0, "$TMC");
  summary.AddDiagnostic(Severity::kError);
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
  diagnostic.hasOffset = true;
  diagnostic.offset = 23;
  return diagnostic;
}

TEST(TextReportWriterTest, WritesDiagnosticsInTheUsualFormAndTheSummary) {
  std::ostringstream out;
  PelorinCheck::TextReportWriter writer(out);
  writer.WriteDiagnostic(SampleDiagnostic());
  Diagnostic wholeFile;
  wholeFile.file = "gone";
  wholeFile.severity = Severity::kError;
  wholeFile.message = "cannot open the events file: No such file or directory";
  writer.WriteDiagnostic(wholeFile);
  writer.WriteSummary(SampleSummary());
  EXPECT_EQ(out.str(),
            "rec/events:12: warning: unknown key \"ltn\"\n"
            "gone: error: cannot open the events file: No such file or directory\n"
            "rec/events: summary: 5 lines; 3 records play: $TMC 2, $TSL 1\n"
            "rec/events: summary: first 2014-11-16 09:51:00 UTC, last 2014-11-16 09:51:03 UTC, "
            "span 3s\n"
            "rec/events: summary: plays 3s at speed 1, 1.5s at speed 2\n"
            "rec/events: summary: playback ends at line 4: empty line; 1 later line never plays\n"
            "rec/events: summary: 1 error, 0 warnings\n");
}

TEST(JsonReportWriterTest, WritesOneObjectPerLine) {
  std::ostringstream out;
  PelorinCheck::JsonReportWriter writer(out);
  writer.WriteDiagnostic(SampleDiagnostic());
  writer.WriteSummary(SampleSummary());
  EXPECT_EQ(
      out.str(),
      "{\"type\":\"diagnostic\",\"file\":\"rec/events\",\"line\":12,\"severity\":\"warning\","
      "\"code\":\"payload-refused\",\"message\":\"unknown key \\\"ltn\\\"\",\"tag\":\"$TMC\","
      "\"key\":\"ltn\",\"offset\":23}\n"
      "{\"type\":\"summary\",\"file\":\"rec/events\",\"lines\":5,\"records\":3,"
      "\"tags\":[{\"tag\":\"$TMC\",\"records\":2},{\"tag\":\"$TSL\",\"records\":1}],"
      "\"other_tag_records\":0,\"first_time\":1416131460,\"first\":\"2014-11-16T09:51:00Z\","
      "\"last_time\":1416131463,\"last\":\"2014-11-16T09:51:03Z\",\"span_seconds\":3,"
      "\"play_seconds\":3,\"speed\":2,\"play_seconds_at_speed\":1.5,\"stop_line\":4,"
      "\"stop_reason\":\"empty line\",\"lines_never_played\":1,\"errors\":1,\"warnings\":0}\n");
}

TEST(ReportWritersTest, SummaryOfAFileWithoutRecords) {
  std::ostringstream text;
  PelorinCheck::TextReportWriter(text).WriteSummary(FileSummary("empty", 0.0));
  EXPECT_EQ(text.str(),
            "empty: summary: 0 lines; no record plays\n"
            "empty: summary: 0 errors, 0 warnings\n");
  std::ostringstream out;
  PelorinCheck::JsonReportWriter(out).WriteSummary(FileSummary("empty", 0.0));
  EXPECT_NE(out.str().find("\"first_time\":null,\"first\":null"), std::string::npos);
  EXPECT_NE(out.str().find("\"speed\":null,\"play_seconds_at_speed\":null,\"stop_line\":null"),
            std::string::npos);
}

}  // namespace
