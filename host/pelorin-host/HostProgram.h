#pragma once
// HostProgram: pelorin-host from its parsed options to its exit status.
// It chooses the storage root, loads the module, brings up the HeadUnit,
// waits on the main thread for the end (playback finished, quit or end of
// the control input, --timeout, SIGINT/SIGTERM), and shuts everything down
// in order: online traffic drained, controls stopped, module down and
// destroyed, private events file stopped, library closed, private storage
// root removed. With --loop it restarts interactive playback at its end.
// Exit statuses: 0 done, 2 unusable input, 3 timeout, 128+signal.

#include <cstdint>
#include <string>

#include "Options.h"

namespace PelorinHost {

class HostProgram {
 public:
  static constexpr int kExitDone = 0;
  static constexpr int kExitUnusable = 2;
  static constexpr int kExitTimeout = 3;

  HostProgram(const Options& options, std::string programDir)
      : m_options(options), m_programDir(std::move(programDir)) {}

  int Run();

  // The bundled example (a folder standing for /fs/sda0): installed beside
  // the program, else in the source tree the program was built from.
  static std::string ExampleRoot(const std::string& programDir);

 private:
  // `recording` is set to the events file played, left empty when a folder
  // is played as it stands.
  bool PrepareRoot(class StorageRoot& root, std::string* recording, std::string* error) const;
  // Whether the module plays a private copy of part of the recording.
  bool CopiesRecording() const;
  // Whether interactive playback that has finished `finished` times plays
  // the selection again (--loop).
  bool PlaysAgain(uint32_t finished, bool interactive, uint64_t records) const;

  const Options& m_options;
  const std::string m_programDir;
};

}  // namespace PelorinHost
