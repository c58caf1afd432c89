#include "host/pelorin-check/CheckProgram.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>

#include "host/common/ExitStatus.h"
#include "host/common/OptionParser.h"
#include "host/common/StopSignals.h"
#include "host/recording/RecordingReader.h"
#include "host/common/TerminalText.h"
#include "host/pelorin-check/Checker.h"
#include "host/pelorin-check/JsonReportWriter.h"
#include "host/pelorin-check/Options.h"
#include "host/pelorin-check/TextReportWriter.h"
#include "host/pelorin-check/Timeline.h"
#include "host/pelorin-check/TimelineWriter.h"
#include "host/pelorin-check/TpegDirectory.h"

namespace PelorinCheck {

void CheckProgram::OnStopSignal(int number) {
  if (PelorinRecording::RecordingReader::Reading().load()) {
    ::_exit(PelorinTools::ExitStatus::kSignalBase + number);
  }
}
namespace {

using PelorinTools::StopSignals;
using PelorinTools::TerminalText;

const char kTool[] = "pelorin-check: ";

// What a run came to, for the exit status.
struct Outcome {
  bool unusable = false;  // arguments, or an events file that cannot be read
  RunTotal total;
  bool strict = false;
};

// The one place that turns a run into its exit status.
int ExitStatus(const Outcome& outcome, const PelorinTools::FileOutput& out) {
  const bool findings = outcome.total.errors > 0 || (outcome.total.warnings > 0 && outcome.strict);
  return PelorinTools::ExitStatus::Of(out.Error(), outcome.unusable, StopSignals::Caught(),
                                      findings ? CheckProgram::kFindings : CheckProgram::kClean);
}

void Usage(std::ostream& err, const std::string& message) {
  err << PelorinTools::OptionParser::Usage("pelorin-check", message) << '\n';
}

std::unique_ptr<ReportWriter> MakeWriter(const Options& options, std::ostream& out) {
  if (options.json) return std::make_unique<JsonReportWriter>(out);
  return std::make_unique<TextReportWriter>(out);
}

// Writes the picture of the one events file; false after a line on `err`.
bool WriteTimeline(const std::string& path, const Timeline& timeline, std::ostream& err) {
  errno = 0;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (file) file << TimelineWriter(timeline).Svg() << std::flush;
  if (file) return true;
  err << kTool << "cannot write the timeline '" << TerminalText::Escaped(path)
      << "': " << (errno != 0 ? std::strerror(errno) : "write failed") << '\n';
  return false;
}

void CheckFiles(const Options& options, const TpegDirectory& tpegs, std::ostream& report,
                const PelorinTools::FileOutput& out, std::ostream& err, Outcome& outcome) {
  const std::unique_ptr<ReportWriter> writer = MakeWriter(options, report);
  Checker checker(options, tpegs, *writer);
  checker.StopWhen([&out] { return StopSignals::Caught() != 0 || out.Failed(); });
  std::unique_ptr<Timeline> timeline;
  if (!options.timeline.empty()) {
    timeline = std::make_unique<Timeline>(options.files.front());
    checker.SetObserver(timeline.get());
  }
  for (const std::string& file : options.files) {
    const FileSummary summary = checker.CheckFile(file);
    if (checker.Stopped()) return;
    ++outcome.total.files;
    if (!summary.Unusable().empty()) {
      ++outcome.total.unusableFiles;
      report.flush();  // the report so far comes first
      err << kTool << TerminalText::Escaped(file) << ": " << summary.Unusable() << '\n';
    }
    outcome.total.errors += summary.Errors();
    outcome.total.warnings += summary.Warnings();
  }
  if (options.files.size() > 1) writer->WriteTotal(outcome.total);
  outcome.unusable = outcome.total.unusableFiles > 0;
  // An events file that cannot be read gets no picture.
  if (timeline && !outcome.unusable && !WriteTimeline(options.timeline, *timeline, err)) {
    outcome.unusable = true;
  }
}

}  // namespace

int CheckProgram::Run(const std::vector<std::string>& arguments, PelorinTools::FileOutput& out,
                      std::ostream& err) {
  std::ostream report(&out);
  Options options;
  Outcome outcome;
  std::string error;
  if (!Options::Parse(arguments, &options, &error)) {
    Usage(err, error);
    outcome.unusable = true;
  } else if (options.help) {
    report << Options::HelpText();
  } else if (options.version) {
    report << Options::VersionText() << '\n';
  } else {
    TpegDirectory tpegs;
    outcome.strict = options.strict;
    if (TpegDirectory::FromOptions(options, &tpegs, &error)) {
      CheckFiles(options, tpegs, report, out, err, outcome);
    } else {
      Usage(err, error);
      outcome.unusable = true;
    }
  }
  report.flush();
  const int status = ExitStatus(outcome, out);
  if (status == PelorinTools::ExitStatus::kWriteFailed) {
    err << kTool << "error writing standard output: " << std::strerror(out.Error()) << '\n';
  }
  return status;
}

}  // namespace PelorinCheck
