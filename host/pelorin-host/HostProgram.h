#pragma once
// HostProgram: pelorin-host from its parsed options to its exit status.
// It chooses the storage root, loads the module, brings up the HeadUnit,
// waits on the main thread for the end (playback finished, quit or end of
// the control input, --timeout, SIGINT/SIGTERM/SIGHUP/SIGQUIT, a failed
// write or a reader gone), and shuts everything down in order: output
// closed, playback halted, online traffic and controls stopped, module down
// and destroyed, library closed, private storage root removed. It reads the
// events file beforehand to tell where playback will stop (events that can
// be read only once, standard input or a pipe, are played from a copy). RunEnd turns
// how the run ended into the exit status.

#include <string>

#include "Options.h"

namespace PelorinHost {

class EndSignal;
class HeadUnit;
class Output;
class Reporter;
class StorageRoot;
class TraceFollower;
struct RunEnd;
struct ScanResult;

class HostProgram {
 public:
  HostProgram(const Options& options, std::string programDir)
      : m_options(options), m_programDir(std::move(programDir)) {}

  int Run();

  // The bundled example (a folder standing for /fs/sda0): installed beside
  // the program, else in the source tree the program was built from.
  static std::string ExampleRoot(const std::string& programDir);

 private:
  bool PrepareRoot(StorageRoot& root, std::string* error) const;
  bool ScanEvents(const StorageRoot& root, ScanResult* scan, std::string* error);
  void TellPlayback(const ScanResult& scan) const;
  void TellTheEnd(const RunEnd& end, const std::string& error, const ScanResult* scan) const;
  void WaitForTheEnd(HeadUnit& unit, Output& output, const Reporter& reporter,
                     const TraceFollower& trace, EndSignal& endSignal, RunEnd* end) const;

  const Options& m_options;
  const std::string m_programDir;
  std::string m_eventsName;  // the events file as the user named it
};

}  // namespace PelorinHost
