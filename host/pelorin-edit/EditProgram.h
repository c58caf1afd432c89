#pragma once
// EditProgram: the whole of pelorin-edit behind main(): parses the
// arguments, refuses an output that is one of the inputs, reads the inputs
// (the state at the cut first, then the selected records merged by time),
// writes them moved as asked, and decides the exit status in one place
// (ExitStatus): its own 0 (written) and 1 (an input ended early at a line
// that playback rejects) come after the shared ones. One thread;
// StopSignals must be installed by the caller.

#include <ostream>
#include <string>
#include <vector>

namespace PelorinEdit {

class EditProgram {
 public:
  static constexpr int kWritten = 0;
  static constexpr int kEndedEarly = 1;

  // `arguments` without the program name; messages go to `err`.
  static int Run(const std::vector<std::string>& arguments, std::ostream& err);
  // For StopSignals::Install; async-signal-safe. A signal that finds the run
  // waiting in a read of an input removes the temporary output and ends the
  // process with 128+N; otherwise the run sees the signal itself.
  static void OnStopSignal(int number);
};

}  // namespace PelorinEdit
