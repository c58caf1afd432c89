#include "host/pelorin-check/CheckProgram.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>

#include "host/pelorin-check/Checker.h"
#include "host/pelorin-check/JsonReportWriter.h"
#include "host/pelorin-check/Options.h"
#include "host/pelorin-check/TextReportWriter.h"
#include "host/pelorin-check/Timeline.h"
#include "host/pelorin-check/TimelineWriter.h"
#include "host/pelorin-check/TpegDirectory.h"

namespace PelorinCheck {
namespace {

int Unusable(std::ostream& err, const std::string& message) {
  err << "pelorin-check: error: " << message << " (see 'pelorin-check --help')\n";
  return CheckProgram::kErrors;
}

std::unique_ptr<ReportWriter> MakeWriter(const Options& options, std::ostream& out) {
  if (options.json) return std::make_unique<JsonReportWriter>(out);
  return std::make_unique<TextReportWriter>(out);
}

bool WriteTimeline(const std::string& path, const Timeline& timeline, std::ostream& err) {
  errno = 0;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (file) file << TimelineWriter(timeline).Svg() << std::flush;
  if (file) return true;
  err << "pelorin-check: error: cannot write the timeline '" << path
      << "': " << (errno != 0 ? std::strerror(errno) : "write failed") << "\n";
  return false;
}

}  // namespace

int CheckProgram::Run(const std::vector<std::string>& arguments, std::ostream& out,
                      std::ostream& err) {
  Options options;
  std::string error;
  if (!Options::Parse(arguments, &options, &error)) return Unusable(err, error);
  if (options.help) {
    out << Options::HelpText();
    return kClean;
  }
  if (options.version) {
    out << Options::VersionText() << '\n';
    return kClean;
  }
  TpegDirectory tpegs;
  if (!TpegDirectory::FromOptions(options, &tpegs, &error)) return Unusable(err, error);

  const std::unique_ptr<ReportWriter> writer = MakeWriter(options, out);
  Checker checker(options.hasSpeed ? options.speed : 0.0, tpegs, *writer);
  std::unique_ptr<Timeline> timeline;
  if (!options.timeline.empty()) {
    timeline = std::make_unique<Timeline>(options.files.front());
    checker.SetObserver(timeline.get());
  }
  uint64_t errors = 0;
  uint64_t warnings = 0;
  for (const std::string& file : options.files) {
    const FileSummary summary = checker.CheckFile(file);
    errors += summary.Errors();
    warnings += summary.Warnings();
  }
  out.flush();
  if (timeline && !WriteTimeline(options.timeline, *timeline, err)) return kErrors;
  if (errors > 0) return kErrors;
  if (warnings > 0 && options.strict) return kWarnings;
  return kClean;
}

}  // namespace PelorinCheck
