// pelorin-host: the simulated head unit that plays the Pelorin module on a PC.

#include <signal.h>

#include <cstdio>
#include <string>

#include "HostClock.h"
#include "HostProgram.h"
#include "Options.h"
#include "Paths.h"

#ifndef PELORIN_VERSION_TEXT
#define PELORIN_VERSION_TEXT "unknown"
#endif

int main(int argc, char** argv) {
  PelorinHost::HostClock::Start();
  // A reader that goes away must not kill the host before it has shut the
  // module down.
  signal(SIGPIPE, SIG_IGN);

  PelorinHost::Options options;
  std::string error;
  if (!PelorinHost::ParseOptions(argc, argv, &options, &error)) {
    std::fprintf(stderr, "pelorin-host: %s\n", error.c_str());
    return PelorinHost::HostProgram::kExitUnusable;
  }
  if (options.help) {
    std::fputs(PelorinHost::HelpText().c_str(), stdout);
    return 0;
  }
  if (options.version) {
    std::printf("pelorin-host %s\n", PELORIN_VERSION_TEXT);
    return 0;
  }
  PelorinHost::HostProgram program(options, PelorinHost::ProgramDir(argv[0]));
  return program.Run();
}
