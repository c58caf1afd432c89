#include "host/common/ExitStatus.h"

#include <signal.h>

#include <cerrno>

namespace PelorinTools {

int ExitStatus::Of(int writeError, bool unusable, int signal, int outcome) {
  if (writeError == EPIPE) return kSignalBase + SIGPIPE;
  if (writeError != 0) return kWriteFailed;
  if (unusable) return kUnusable;
  if (signal != 0) return kSignalBase + signal;
  return outcome;
}

std::string ExitStatus::HelpText(const std::string& unusable) {
  return "  2    unusable input or usage: " + unusable +
         "\n"
         "       (one line on standard error with the reason)\n"
         "  4    writing standard output failed (one line naming the error)\n"
         "  141  the reader of standard output went away (no message)\n"
         "  128+N  ended by signal N: 129 SIGHUP, 130 SIGINT, 131 SIGQUIT, 143 SIGTERM\n"
         "When several apply, the first of 141, 4, 2, 128+N wins over the others:\n"
         "a signal during a failed write gives 141 or 4.\n";
}

}  // namespace PelorinTools
