#include "host/pelorin-check/JsonReportWriter.h"

#include "host/common/JsonWriter.h"
#include "host/common/TimeText.h"

namespace PelorinCheck {
namespace {

using PelorinTools::JsonWriter;
using PelorinTools::TimeText;

void AppendJsonString(std::string& out, const std::string& bytes) {
  out += '"';
  JsonWriter::AppendEscaped(out, bytes.data(), bytes.size());
  out += '"';
}

void AppendName(std::string& out, const char* name) {
  out += ",\"";
  out += name;
  out += "\":";
}

void AppendString(std::string& out, const char* name, const std::string& bytes) {
  AppendName(out, name);
  AppendJsonString(out, bytes);
}

void AppendCount(std::string& out, const char* name, uint64_t value) {
  AppendName(out, name);
  out += std::to_string(value);
}

void AppendNumber(std::string& out, const char* name, double value) {
  AppendName(out, name);
  out += TimeText::Number(value);
}

void AppendNull(std::string& out, const char* name) {
  AppendName(out, name);
  out += "null";
}

// A time stamp as seconds and as an ISO date-time (null when it is none).
void AppendTime(std::string& out, const char* secondsName, const char* dateName, double time) {
  AppendNumber(out, secondsName, time);
  const std::string date = TimeText::DateTime(time, TimeText::Style::kIso);
  if (date.empty()) {
    AppendNull(out, dateName);
  } else {
    AppendString(out, dateName, date);
  }
}

double Seconds(int64_t milliseconds) { return static_cast<double>(milliseconds) / 1000.0; }

}  // namespace

void JsonReportWriter::WriteDiagnostic(const Diagnostic& diagnostic) {
  std::string out = "{\"type\":\"diagnostic\"";
  AppendString(out, "file", diagnostic.file);
  if (diagnostic.line != 0) {
    AppendCount(out, "line", diagnostic.line);
  } else {
    AppendNull(out, "line");
  }
  AppendString(out, "severity", SeverityName(diagnostic.severity));
  AppendString(out, "code", DiagnosticCode(diagnostic.kind));
  AppendString(out, "message", diagnostic.message);
  if (!diagnostic.tag.empty()) AppendString(out, "tag", diagnostic.tag);
  if (!diagnostic.key.empty()) AppendString(out, "key", diagnostic.key);
  if (diagnostic.hasByte) AppendCount(out, "byte", diagnostic.byte);
  out += "}\n";
  m_out << out;
}

void JsonReportWriter::WriteSummary(const FileSummary& summary) {
  std::string out = "{\"type\":\"summary\"";
  AppendString(out, "file", summary.File());
  AppendCount(out, "lines", summary.Lines());
  AppendCount(out, "records", summary.PlayedRecords());
  AppendCount(out, "droppedRecords", summary.DroppedRecords());
  AppendTags(out, summary);
  AppendTimes(out, summary);
  AppendStop(out, summary);
  AppendCount(out, "errors", summary.Errors());
  AppendCount(out, "warnings", summary.Warnings());
  AppendCount(out, "hiddenDiagnostics", summary.HiddenDiagnostics());
  out += "}\n";
  m_out << out;
}

void JsonReportWriter::WriteTotal(const RunTotal& total) {
  std::string out = "{\"type\":\"total\"";
  AppendCount(out, "files", total.files);
  AppendCount(out, "unusableFiles", total.unusableFiles);
  AppendCount(out, "errors", total.errors);
  AppendCount(out, "warnings", total.warnings);
  out += "}\n";
  m_out << out;
}

void JsonReportWriter::AppendTags(std::string& out, const FileSummary& summary) {
  AppendName(out, "tags");
  out += '[';
  const char* separator = "";
  for (const auto& entry : summary.Tags().Counts()) {
    out += separator;
    out += "{\"tag\":";
    AppendJsonString(out, entry.first);
    out += ",\"records\":" + std::to_string(entry.second) + "}";
    separator = ",";
  }
  out += ']';
  AppendCount(out, "otherTagRecords", summary.Tags().OtherRecords());
}

void JsonReportWriter::AppendTimes(std::string& out, const FileSummary& summary) {
  if (summary.HasRecords()) {
    AppendTime(out, "firstTime", "first", summary.FirstTime());
    AppendTime(out, "lastTime", "last", summary.LastTime());
    AppendNumber(out, "spanSeconds", Seconds(summary.SpanMs()));
  } else {
    for (const char* name : {"firstTime", "first", "lastTime", "last", "spanSeconds"}) {
      AppendNull(out, name);
    }
  }
  AppendNumber(out, "playSeconds",
               Seconds(static_cast<int64_t>(summary.AtRecordedSpeed().TotalMs())));
  if (summary.HasOtherSpeed()) {
    AppendNumber(out, "speed", summary.AtOtherSpeed().Speed());
    AppendNumber(out, "playSecondsAtSpeed",
                 Seconds(static_cast<int64_t>(summary.AtOtherSpeed().TotalMs())));
  } else {
    AppendNull(out, "speed");
    AppendNull(out, "playSecondsAtSpeed");
  }
  AppendNumber(out, "onlineWaitSecondsAtLeast",
               Seconds(static_cast<int64_t>(summary.AnswerWaitMs())));
}

void JsonReportWriter::AppendStop(std::string& out, const FileSummary& summary) {
  if (summary.StopLine() == 0) {
    AppendNull(out, "stopLine");
    AppendNull(out, "stopReason");
    AppendCount(out, "linesNeverPlayed", 0);
    return;
  }
  AppendCount(out, "stopLine", summary.StopLine());
  AppendString(out, "stopReason", summary.StopReason());
  if (summary.LinesAfterStopKnown()) {
    AppendCount(out, "linesNeverPlayed", summary.LinesNeverPlayed());
  } else {
    AppendNull(out, "linesNeverPlayed");
  }
}

}  // namespace PelorinCheck
