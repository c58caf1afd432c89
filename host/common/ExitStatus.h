#pragma once
// ExitStatus: the exit statuses that pelorin-host and pelorin-check share,
// and the one precedence that picks among them when several things went
// wrong in a run. Each tool decides its own outcome of a run that went
// through (0 fine; 1 findings or playback ended short; host: 3 timeout,
// 5 --expect mismatch) and hands it in with what every run can meet:
//   141   the reader of standard output went away (128 + SIGPIPE)
//   4     writing standard output failed
//   2     unusable option, value or input
//   128+N ended by signal N
//   the tool's own outcome
// The first that applies wins: what the user can no longer see outranks
// why the run ended. Stateless.

#include <string>

namespace PelorinTools {

class ExitStatus {
 public:
  static constexpr int kSuccess = 0;
  static constexpr int kUnusable = 2;
  static constexpr int kWriteFailed = 4;
  static constexpr int kSignalBase = 128;

  // `writeError` is the errno of the failed write of standard output (0:
  // none), `signal` the signal that ended the run (0: none), `outcome` the
  // tool's own status for the run.
  static int Of(int writeError, bool unusable, int signal, int outcome);

  // The lines of --help for the shared statuses and the precedence, after the
  // tool's own lines; `unusable` tells what makes input unusable to the tool.
  static std::string HelpText(const std::string& unusable);
};

}  // namespace PelorinTools
