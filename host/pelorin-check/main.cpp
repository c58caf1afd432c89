// pelorin-check: tells what a recording (events file) will do when Pelorin
// plays it. See CheckProgram for the behaviour and --help for the usage.

#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "host/common/FileOutput.h"
#include "host/common/StopSignals.h"
#include "host/pelorin-check/CheckProgram.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  PelorinTools::StopSignals::Install(&PelorinCheck::CheckProgram::OnStopSignal);
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  PelorinTools::FileOutput out(STDOUT_FILENO);
  const int status = PelorinCheck::CheckProgram::Run(arguments, out, std::cerr);
  std::cerr.flush();
  return status;
}
