#include "host/pelorin-check/TextReportWriter.h"

#include <string>

#include "host/common/TerminalText.h"
#include "host/common/TimeText.h"

namespace PelorinCheck {
namespace {

using PelorinTools::TerminalText;
using PelorinTools::TimeText;

std::string Plural(uint64_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string SpeedText(double speed) { return "at speed " + TimeText::Number(speed); }

}  // namespace

void TextReportWriter::WriteDiagnostic(const Diagnostic& diagnostic) {
  m_out << TerminalText::Escaped(diagnostic.file) << ':';
  if (diagnostic.line != 0) m_out << diagnostic.line << ':';
  m_out << ' ' << SeverityName(diagnostic.severity) << ": " << diagnostic.message << '\n';
}

void TextReportWriter::WriteSummary(const FileSummary& summary) {
  WriteRecordCounts(summary);
  if (summary.HasRecords()) WriteTimes(summary);
  if (summary.StopLine() != 0) WriteStop(summary);
  if (summary.HiddenDiagnostics() != 0) {
    BeginSummaryLine(summary);
    m_out << summary.HiddenDiagnostics()
          << " more diagnostics not shown (--max-errors 0 shows all)\n";
  }
  BeginSummaryLine(summary);
  m_out << Plural(summary.Errors(), "error", "errors") << ", "
        << Plural(summary.Warnings(), "warning", "warnings") << '\n';
}

void TextReportWriter::WriteTotal(const RunTotal& total) {
  m_out << "total: " << Plural(total.files, "file", "files");
  if (total.unusableFiles != 0) m_out << " (" << total.unusableFiles << " unusable)";
  m_out << ", " << Plural(total.errors, "error", "errors") << ", "
        << Plural(total.warnings, "warning", "warnings") << '\n';
}

void TextReportWriter::BeginSummaryLine(const FileSummary& summary) {
  m_out << TerminalText::Escaped(summary.File()) << ": summary: ";
}

void TextReportWriter::WriteRecordCounts(const FileSummary& summary) {
  BeginSummaryLine(summary);
  m_out << Plural(summary.Lines(), "line", "lines") << "; ";
  if (summary.PlayedRecords() == 0) {
    m_out << "no record plays";
  } else {
    m_out << Plural(summary.PlayedRecords(), "record plays", "records play") << ':';
    const char* separator = " ";
    for (const auto& entry : summary.Tags().Counts()) {
      m_out << separator << TerminalText::Escaped(entry.first) << ' ' << entry.second;
      separator = ", ";
    }
    if (summary.Tags().OtherRecords() > 0) {
      m_out << separator << "other tags " << summary.Tags().OtherRecords();
    }
  }
  if (summary.DroppedRecords() != 0) {
    m_out << "; " << Plural(summary.DroppedRecords(), "record", "records")
          << " dropped";
  }
  m_out << '\n';
}

void TextReportWriter::WriteTimes(const FileSummary& summary) {
  const auto dateTime = [](double time) {
    const std::string text = TimeText::DateTime(time, TimeText::Style::kText);
    return text.empty() ? "time " + TimeText::Number(time) : text;
  };
  BeginSummaryLine(summary);
  m_out << "first " << dateTime(summary.FirstTime()) << ", last "
        << dateTime(summary.LastTime()) << ", span " << TimeText::Duration(summary.SpanMs())
        << '\n';
  BeginSummaryLine(summary);
  m_out << "plays "
        << TimeText::Duration(static_cast<int64_t>(summary.AtRecordedSpeed().TotalMs())) << ' '
        << SpeedText(1.0);
  if (summary.HasOtherSpeed()) {
    m_out << ", " << TimeText::Duration(static_cast<int64_t>(summary.AtOtherSpeed().TotalMs()))
          << ' ' << SpeedText(summary.AtOtherSpeed().Speed());
  }
  if (summary.AnsweredCalls() > 0) {
    m_out << "; online traffic calls add at least "
          << TimeText::Duration(static_cast<int64_t>(summary.AnswerWaitMs())) << " ("
          << summary.AnsweredCalls() << (summary.AnsweredCalls() == 1 ? " answer" : " answers")
          << " waited for)";
  }
  m_out << '\n';
}

void TextReportWriter::WriteStop(const FileSummary& summary) {
  BeginSummaryLine(summary);
  m_out << "playback ends at line " << summary.StopLine() << ": "
        << TerminalText::Escaped(summary.StopReason()) << "; ";
  if (summary.LinesAfterStopKnown()) {
    m_out << Plural(summary.LinesNeverPlayed(), "later line never plays", "later lines never play");
  } else {
    m_out << "the lines after it cannot be read";
  }
  m_out << '\n';
}

}  // namespace PelorinCheck
