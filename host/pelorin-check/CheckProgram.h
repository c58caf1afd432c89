#pragma once
// CheckProgram: the whole of pelorin-check behind main(): parses the
// arguments, checks every file in order, writes the report to standard
// output (through `out`) and one-line messages to `err`, and decides the
// exit status in one place (ExitStatus): its own statuses, 0 no errors (and
// no warnings under --strict) and 1 errors found (or warnings under
// --strict), come after the shared ones of PelorinTools::ExitStatus (2 for
// unusable arguments, an events file that cannot be read or a --timeline
// picture that cannot be written). One thread; StopSignals must be
// installed by the caller.

#include <ostream>
#include <string>
#include <vector>

#include "host/common/FileOutput.h"

namespace PelorinCheck {

class CheckProgram {
 public:
  static constexpr int kClean = 0;
  static constexpr int kFindings = 1;

  // `arguments` without the program name.
  static int Run(const std::vector<std::string>& arguments, PelorinTools::FileOutput& out,
                 std::ostream& err);
  // A stop signal that finds the check waiting for input (a pipe) ends the
  // run at once with 128 + its number; otherwise the check stops between
  // records. For StopSignals::Install; async-signal-safe.
  static void OnStopSignal(int number);
};

}  // namespace PelorinCheck
