#pragma once
// CheckProgram: the whole of pelorin-check behind main(): parses the
// arguments, checks every file in order, writes the report to standard
// output (through `out`) and one-line messages to `err`, and decides the
// exit status in one place (ExitStatus):
//   0 no errors (and no warnings under --strict)
//   1 errors found, or warnings under --strict
//   2 unusable arguments, an events file that cannot be read, or a
//     --timeline picture that cannot be written
//   4 standard output cannot be written (one line naming the OS error)
//   141 the reader of standard output went away (quietly)
//   128+N stopped by signal N (SIGINT, SIGTERM, SIGHUP, SIGQUIT)
// One thread; StopSignals must be installed by the caller.

#include <ostream>
#include <string>
#include <vector>

#include "host/common/FileOutput.h"

namespace PelorinCheck {

class CheckProgram {
 public:
  static constexpr int kClean = 0;
  static constexpr int kFindings = 1;
  static constexpr int kUnusable = 2;
  static constexpr int kWriteFailed = 4;
  static constexpr int kBrokenPipe = 141;
  static constexpr int kSignalBase = 128;

  // `arguments` without the program name.
  static int Run(const std::vector<std::string>& arguments, PelorinTools::FileOutput& out,
                 std::ostream& err);
};

}  // namespace PelorinCheck
