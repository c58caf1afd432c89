#pragma once
// HostProgram: pelorin-host from its parsed options to its exit status.
// It chooses the storage root, loads the module, brings up the HeadUnit,
// waits on the main thread for the end (playback finished, quit or end of
// the control input, an item unlike --expect FILE's, --timeout,
// SIGINT/SIGTERM/SIGHUP/SIGQUIT, a failed write or a reader gone), and
// shuts everything down in order: output closed, playback halted, online
// traffic and controls stopped, module down and destroyed, private events
// file stopped, library closed, private storage root removed. It reads the
// events file, on a thread of its own while the module plays, to tell where
// playback will stop (events that can be read only once, standard input or
// a pipe, are played from a copy).
// With --loop it restarts interactive playback at its end. RunEnd turns how
// the run ended into the exit status.

#include <cstdint>
#include <string>

#include "Options.h"
#include "StatusLine.h"

namespace PelorinHost {

class BackgroundScan;
class ControlSocket;
class EndSignal;
class ExpectedItems;
class HeadUnit;
struct PausePoint;
class PausePoints;
class ItemOrigins;
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
  // What a stop signal does besides being noted: from then on no item
  // reaches standard output. For StopSignals::Install; async-signal-safe.
  static void OnStopSignal(int number);

  // The bundled example (a folder standing for /fs/sda0): installed beside
  // the program, else in the source tree the program was built from.
  static std::string ExampleRoot(const std::string& programDir);

 private:
  // `recording` is set to the events file played, left empty when a folder
  // is played as it stands.
  bool PrepareRoot(StorageRoot& root, std::string* recording, std::string* error) const;
  // Whether the module plays a private copy of part of the recording.
  bool CopiesRecording() const;
  // Whether interactive playback of `records` records a pass that has
  // finished `finished` times plays the selection again (--loop).
  bool PlaysAgain(uint32_t finished, uint64_t records) const;
  bool ScanEvents(const StorageRoot& root, const std::string& recording, BackgroundScan* scan,
                  std::string* error);
  void TellPlayback(const ScanResult& scan) const;
  void TellTheEnd(const RunEnd& end, const std::string& error, const ScanResult* scan) const;
  // What the main thread watches while the module plays.
  struct Watched {
    HeadUnit& unit;
    Output& output;
    const Reporter& reporter;
    const TraceFollower& trace;
    EndSignal& endSignal;
    const ItemOrigins* origins;  // null when the host does not read the recording
    BackgroundScan& scan;
    uint64_t replayedRecords;  // records of a pass played again (--loop), else 0
    ControlSocket* socket;     // --control-socket, else null
  };
  void WaitForTheEnd(const Watched& watched, RunEnd* end) const;
  StatusInfo StatusNow(const Watched& watched) const;
  void TellSummary(Reporter& reporter, bool finished) const;
  void PrepareReporter(Reporter& reporter, ItemOrigins* origins, ExpectedItems& expected) const;
  void PreparePauses(const PausePoints& pauses, HeadUnit& unit, Reporter& reporter,
                     Output& output) const;
  static void TellPause(Reporter& reporter, Output& output, const PausePoint& point);
  bool LoadExpected(ExpectedItems* expected, std::string* error) const;
  void TellExpected(ExpectedItems& expected, const TraceFollower& trace, RunEnd* end) const;

  const Options& m_options;
  const std::string m_programDir;
  std::string m_eventsName;  // the events file as the user named it
};

}  // namespace PelorinHost
