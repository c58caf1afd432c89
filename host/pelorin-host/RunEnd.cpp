#include "RunEnd.h"

#include "host/common/ExitStatus.h"

namespace PelorinHost {

int RunEnd::ExitStatus() const {
  int outcome = kPlayed;
  if (timedOut) {
    outcome = kTimedOut;
  } else if (mismatch) {
    outcome = kMismatch;
  } else if (playedPart) {
    outcome = kPlayedPart;
  }
  return PelorinTools::ExitStatus::Of(writeError, unusable, signal, outcome);
}

}  // namespace PelorinHost
