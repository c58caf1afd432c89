// pelorin-host: the simulated head unit that plays the Pelorin module on a PC.

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "HostClock.h"
#include "HostProgram.h"
#include "Options.h"
#include "Paths.h"
#include "RunEnd.h"
#include "host/common/OptionParser.h"
#include "host/common/StopSignals.h"

#ifndef PELORIN_VERSION_TEXT
#define PELORIN_VERSION_TEXT "unknown"
#endif

namespace {

int WriteFailed(int error) {
  PelorinHost::RunEnd end;
  end.writeError = error;
  if (error != EPIPE) {
    std::fprintf(stderr, "pelorin-host: error writing standard output: %s\n", std::strerror(error));
  }
  return end.ExitStatus();
}

// Writes `text` to standard output; the exit status.
int Print(const std::string& text) {
  errno = 0;
  std::fputs(text.c_str(), stdout);
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) return WriteFailed(errno ? errno : EIO);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  PelorinHost::HostClock::Start();
  // A reader that goes away is seen as EPIPE on the next write, so that the
  // host shuts the module down before it ends; a stop signal ends the run.
  PelorinTools::StopSignals::Install(&PelorinHost::HostProgram::OnStopSignal);
  // A closed standard output would otherwise be the next file the host opens.
  if (fcntl(1, F_GETFD) < 0) return WriteFailed(EBADF);

  PelorinHost::Options options;
  std::string error;
  if (!PelorinHost::ParseOptions(argc, argv, &options, &error)) {
    const std::string line = PelorinTools::OptionParser::Usage("pelorin-host", error);
    std::fprintf(stderr, "%s\n", line.c_str());
    PelorinHost::RunEnd end;
    end.unusable = true;
    return end.ExitStatus();
  }
  if (options.help) return Print(PelorinHost::HelpText());
  if (options.version) return Print(std::string("pelorin-host ") + PELORIN_VERSION_TEXT + "\n");
  PelorinHost::HostProgram program(options, PelorinHost::ProgramDir(argv[0]));
  return program.Run();
}
