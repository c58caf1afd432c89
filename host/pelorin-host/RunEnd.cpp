#include "RunEnd.h"

#include <signal.h>

#include <cerrno>

namespace PelorinHost {

// What the user can no longer see outranks why the run ended.
int RunEnd::ExitStatus() const {
  if (writeError == EPIPE) return 128 + SIGPIPE;
  if (writeError != 0) return kWriteFailed;
  if (unusable) return kUnusable;
  if (signal != 0) return 128 + signal;
  if (timedOut) return kTimedOut;
  if (mismatch) return kMismatch;
  if (playedPart) return kPlayedPart;
  return kPlayed;
}

}  // namespace PelorinHost
