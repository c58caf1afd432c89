// pelorin-edit: cuts, merges and moves recordings (events files). See
// EditProgram for the behaviour and --help for the usage.

#include <iostream>
#include <string>
#include <vector>

#include "host/common/StopSignals.h"
#include "host/pelorin-edit/EditProgram.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  PelorinTools::StopSignals::Install(&PelorinEdit::EditProgram::OnStopSignal);
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  const int status = PelorinEdit::EditProgram::Run(arguments, std::cerr);
  std::cerr.flush();
  return status;
}
