// The exit statuses both tools share: which of several things that went
// wrong in one run decides the status.

#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>

#include "RunEnd.h"
#include "host/common/ExitStatus.h"

namespace PelorinTools {
namespace {

TEST(ToolExitStatusTest, TheFirstThatAppliesWins) {
  const struct {
    int writeError;
    bool unusable;
    int signal;
    int outcome;
    int status;
  } cases[] = {
      {0, false, 0, 0, 0},
      {0, false, 0, 1, 1},
      {0, false, SIGINT, 1, 130},      // a signal outranks the tool's outcome
      {0, true, SIGTERM, 0, 2},        // unusable input outranks a signal
      {ENOSPC, true, SIGINT, 1, 4},    // a failed write outranks everything
      {EPIPE, false, SIGINT, 0, 141},  // a signal during a broken pipe
      {EPIPE, true, SIGHUP, 5, 141},
      {EBADF, false, SIGQUIT, 3, 4},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ExitStatus::Of(c.writeError, c.unusable, c.signal, c.outcome), c.status)
        << c.writeError << ' ' << c.unusable << ' ' << c.signal << ' ' << c.outcome;
  }
}

TEST(ToolExitStatusTest, TheHostsOwnOutcomesComeAfterTheSharedOnes) {
  const struct {
    bool timedOut, mismatch, playedPart;
    int signal;
    int status;
  } cases[] = {
      {true, true, true, 0, 3},    {false, true, true, 0, 5},       {false, false, true, 0, 1},
      {false, false, false, 0, 0}, {true, true, true, SIGINT, 130},
  };
  for (const auto& c : cases) {
    PelorinHost::RunEnd end;
    end.timedOut = c.timedOut;
    end.mismatch = c.mismatch;
    end.playedPart = c.playedPart;
    end.signal = c.signal;
    EXPECT_EQ(end.ExitStatus(), c.status) << c.timedOut << c.mismatch << c.playedPart;
  }
}

}  // namespace
}  // namespace PelorinTools
