// pelorin-check: tells what a recording (events file) will do when Pelorin
// plays it. See CheckProgram for the behaviour and --help for the usage.

#include <iostream>
#include <string>
#include <vector>

#include "host/pelorin-check/CheckProgram.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  return PelorinCheck::CheckProgram::Run(arguments, std::cout, std::cerr);
}
