#include "HostProgram.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "BackgroundScan.h"
#include "ConfiguredEvents.h"
#include "ControlSocket.h"
#include "Controls.h"
#include "EndSignal.h"
#include "EventsScan.h"
#include "ExpectedItems.h"
#include "HeadUnit.h"
#include "PlaybackSummary.h"
#include "ItemOrigins.h"
#include "ModuleLoader.h"
#include "Output.h"
#include "Paths.h"
#include "PausePoints.h"
#include "PrivateEvents.h"
#include "Reporter.h"
#include "RunEnd.h"
#include "SimulatedOnlineTraffic.h"
#include "StatusLine.h"
#include "Storage.h"
#include "StorageRoot.h"
#include "TraceFollower.h"
#include "host/common/StopSignals.h"
#include "host/common/TerminalText.h"

#ifndef PELORIN_INSTALL_DATADIR
#define PELORIN_INSTALL_DATADIR "share"
#endif
#ifndef PELORIN_SOURCE_EXAMPLE_DIR
#define PELORIN_SOURCE_EXAMPLE_DIR ""
#endif

namespace PelorinHost {
namespace {

using PelorinTools::StopSignals;
using PelorinTools::TerminalText;

constexpr uint32_t kLoopPeriodMs = 50;
constexpr int kStatusEveryLoops = 4;
constexpr int kReaderCheckEveryLoops = 20;  // about once a second

std::atomic<Output*> g_output{nullptr};

// Every message leaves escaped: it may echo file names, options and bytes
// of the recording.
void Complain(const std::string& text) {
  std::fprintf(stderr, "pelorin-host: %s\n", TerminalText::Escaped(text).c_str());
}

// Events that can be read only once (standard input, a pipe such as
// <(command)): the host reads them first, so the module plays a copy.
bool ReadOnce(const std::string& eventsFile) {
  struct stat info {};
  return eventsFile == "-" ||
         (::stat(eventsFile.c_str(), &info) == 0 && (S_ISFIFO(info.st_mode) || S_ISCHR(info.st_mode)));
}

// The descriptor to copy `eventsFile` from; -1 with `error` set.
int OpenOnce(const std::string& eventsFile, std::string* error) {
  if (eventsFile == "-") return STDIN_FILENO;
  const int fd = ::open(eventsFile.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) *error = eventsFile + ": " + std::strerror(errno);
  return fd;
}

PlaybackSettings SettingsFor(const Options& options, const std::string& eventsFile,
                             const std::string& tpegsDir) {
  PlaybackSettings settings;
  const bool copied = ReadOnce(eventsFile);
  settings.eventsFile = copied ? StorageRoot::InputCopyPath() : AbsolutePath(eventsFile);
  const std::string defaultTpegs = copied ? AbsolutePath(".") : DirectoryOf(settings.eventsFile);
  settings.tpegsDir = AbsolutePath(tpegsDir.empty() ? defaultTpegs : tpegsDir);
  while (settings.tpegsDir.size() > 1 && settings.tpegsDir.back() == '/')
    settings.tpegsDir.pop_back();
  settings.interactive = options.runner == RunnerChoice::kInteractive;
  if (options.runner == RunnerChoice::kRealtime) settings.playbackSpeed = options.realtimeSpeed;
  if (options.runner == RunnerChoice::kInteractive) settings.playbackSpeed = options.speed;
  settings.autostart = options.autostart;
  return settings;
}

}  // namespace

std::string HostProgram::ExampleRoot(const std::string& programDir) {
  const std::string installed =
      programDir + "/../" PELORIN_INSTALL_DATADIR "/pelorin/examples/sda0";
  if (IsDirectory(installed + "/quillan")) return installed;
  return PELORIN_SOURCE_EXAMPLE_DIR;
}

bool HostProgram::PrepareRoot(StorageRoot& root, std::string* recording,
                              std::string* error) const {
  if (!m_options.rootDir.empty()) return root.UseFolder(m_options.rootDir, error);
  if (!m_options.tpegsDir.empty() && !IsDirectory(m_options.tpegsDir)) {
    *error = "--tpegs-dir " + m_options.tpegsDir + " is not a directory";
    return false;
  }
  std::string eventsFile = m_options.eventsFile;
  if (eventsFile.empty()) {
    const std::string example = ExampleRoot(m_programDir);
    if (!IsDirectory(example + "/quillan")) {
      *error = "the bundled example was not found (looked for " + example + ")";
      return false;
    }
    // The example as it stands, unless options ask to play it another way.
    const bool asItStands =
        !m_options.SetsConfiguration() && !CopiesRecording() && m_options.pauseAt.empty();
    if (asItStands) return root.UseFolder(example, error);
    eventsFile = example + "/quillan/events";
  }
  PlaybackSettings settings = SettingsFor(m_options, eventsFile, m_options.tpegsDir);
  *recording = settings.eventsFile;
  if (CopiesRecording()) settings.eventsFile = PrivateEvents::kModulePath;
  if (!root.MakePrivate(settings, error)) return false;
  if (!ReadOnce(eventsFile)) return true;
  const int fd = OpenOnce(eventsFile, error);
  const bool copied = fd >= 0 && root.CopyInput(fd, error);
  if (fd > STDIN_FILENO) ::close(fd);
  return copied;
}

bool HostProgram::CopiesRecording() const {
  return m_options.selection.Restricts() || m_options.loopGiven || m_options.maxGapSeconds > 0.0;
}

bool HostProgram::PlaysAgain(uint32_t finished, uint64_t records) const {
  return m_options.loopGiven && records > 0 &&
         (m_options.passes == 0 || finished < m_options.passes);
}

// Starts reading the events file the module will play (the recording, when
// the host knows it), as the module will; false with `error` naming the OS
// reason when it cannot be read at all.
bool HostProgram::ScanEvents(const StorageRoot& root, const std::string& recording,
                             BackgroundScan* scan, std::string* error) {
  const std::string path =
      recording.empty() ? Storage::MapPath(ConfiguredEvents::PathIn(root.Path())) : recording;
  m_eventsName = m_options.eventsFile == "-" ? "standard input"
                 : m_options.eventsFile.empty() ? path
                                                : m_options.eventsFile;
  std::string reason;
  if (!scan->Start(path, &reason)) {
    *error = m_eventsName + ": " + reason;
    return false;
  }
  return true;
}

// What a finished playback tells on standard error besides the items.
void HostProgram::TellPlayback(const ScanResult& scan) const {
  const std::string& name = m_eventsName;
  if (!scan.complete) {
    Complain(name + ":" + std::to_string(scan.stopLine) +
             ": playback ended before the end of the file: " + scan.reason);
  } else if (scan.records == 0) {
    Complain(name + ": the recording is empty: nothing to play");
  } else if (scan.playable == 0) {
    Complain(name + ": the recording holds no $TMC, $TSL or $TOT record: nothing to play");
  }
}

// The stop is decided when the signal arrives: from then on nothing more
// reaches the output.
void HostProgram::OnStopSignal(int /*number*/) {
  Output* output = g_output.load();
  if (output != nullptr) output->RefuseLines();
}

int HostProgram::Run() {
  std::string error;
  StorageRoot root;
  BackgroundScan scan(m_options.selection);
  std::string recording;
  PrivateEvents privateEvents(m_options.selection, m_options.passes, m_options.maxGapSeconds);
  ItemOrigins origins(m_options.selection, m_options.maxGapSeconds);
  const bool interactive = m_options.runner == RunnerChoice::kInteractive;
  EndSignal endSignal;
  ExpectedItems expected(endSignal);
  PausePoints pauses;
  ControlSocket socket(endSignal);
  bool ready = PrepareRoot(root, &recording, &error);
  if (ready) {
    Storage::SetStorageRoot(root.Path());
    if (!recording.empty()) recording = Storage::MapPath(recording);
    ready = ScanEvents(root, recording, &scan, &error) &&
            (recording.empty() ||
             ((!CopiesRecording() ||
               privateEvents.Create(recording, root.Path() + "/quillan/" + PrivateEvents::kFileName,
                                    !interactive, &error)) &&
              origins.Open(recording, &error) &&
              pauses.Resolve(recording, m_options.selection, m_options.pauseAt, &error))) &&
            LoadExpected(&expected, &error) &&
            (m_options.controlSocket.empty() || socket.Open(m_options.controlSocket, &error));
  }
  RunEnd end;
  end.signal = StopSignals::Caught();
  if (end.signal != 0) return end.ExitStatus();
  if (!ready) {
    Complain(error);
    end.unusable = true;
    return end.ExitStatus();
  }

  Output output(STDOUT_FILENO, STDERR_FILENO);
  g_output.store(&output);
  if (StopSignals::Caught() != 0) output.RefuseLines();
  Reporter reporter(output, m_options.json);
  reporter.AwaitFileScan(&scan);
  PrepareReporter(reporter, recording.empty() ? nullptr : &origins, expected);
  TraceFollower trace(reporter, endSignal, m_options.traceLevel);
  trace.Install();

  ModuleLoader loader;
  const std::string modulePath =
      m_options.modulePath.empty() ? ModuleLoader::DefaultPath(m_programDir) : m_options.modulePath;
  if (!loader.Load(modulePath, &error)) {
    g_output.store(nullptr);
    trace.Remove();
    Complain(error);
    end.unusable = true;
    return end.ExitStatus();
  }

  SimulatedOnlineTraffic onlineTraffic(reporter, m_options.tpegLatencyMs, m_options.tpegOffline);
  auto unit = std::make_unique<HeadUnit>(loader, reporter, onlineTraffic, trace);
  std::unique_ptr<Controls> controls;
  PreparePauses(pauses, *unit, reporter, output);

  if (!unit->Start(!m_options.paused && pauses.AtStart() == nullptr, &error)) {
    end.unusable = true;
  } else {
    if (m_options.control) {
      controls = std::make_unique<Controls>(*unit, endSignal, output, STDIN_FILENO, STDERR_FILENO);
      controls->Start();
    }
    if (!m_options.controlSocket.empty()) socket.Start(*unit);
    if (pauses.AtStart() != nullptr && !m_options.paused) {
      TellPause(reporter, output, *pauses.AtStart());
    }
    const Watched watched{*unit,
                          output,
                          reporter,
                          trace,
                          endSignal,
                          recording.empty() ? nullptr : &origins,
                          scan,
                          interactive && !recording.empty() ? privateEvents.Records() : 0,
                          m_options.controlSocket.empty() ? nullptr : &socket};
    WaitForTheEnd(watched, &end);
    end.playedPart = trace.FinishedCount() > 0 && !scan.Result().complete;
  }

  // The end is decided: first nothing more from the module reaches the
  // output but its traces, then playback goes inert, the waits are
  // released, and only then does the module go down, telling of it.
  output.Close();
  unit->Halt();
  onlineTraffic.Stop();
  if (controls) controls->Wake();
  socket.Wake();
  if (!unit->Shutdown()) {
    Complain("a control call still waits in the module; leaving it without shutting it down");
    root.Remove();
    socket.Remove();
    std::fflush(stderr);
    std::_Exit(end.ExitStatus());
  }
  if (controls) controls->Stop();
  socket.Stop();
  unit.reset();
  privateEvents.Stop();
  trace.Remove();
  loader.Unload();
  g_output.store(nullptr);
  output.Flush();
  if (end.writeError == 0) end.writeError = output.WriteError();
  TellTheEnd(end, error, trace.FinishedCount() > 0 ? &scan.Result() : nullptr);
  if (!m_options.expectFile.empty() && !end.unusable) TellExpected(expected, trace, &end);
  if (!end.unusable && end.writeError == 0 && !m_options.quiet) {
    // A stop tells the figures of the items shown until then.
    const bool stopped = end.signal != 0 || end.timedOut;
    TellSummary(reporter, trace.FinishedCount() > 0 && !stopped);
  }
  return end.ExitStatus();
}

// Says on standard error what the items cannot: why the run could not go
// on, a failed write (not a reader gone: that ends quietly), or how a
// finished playback (`scan`, null when none finished) fell short.
void HostProgram::TellTheEnd(const RunEnd& end, const std::string& error,
                             const ScanResult* scan) const {
  if (end.unusable) Complain(error);
  if (end.writeError != 0 && end.writeError != EPIPE) {
    Complain(std::string("error writing standard output: ") + std::strerror(end.writeError));
  }
  if (scan != nullptr && end.writeError == 0) TellPlayback(*scan);
}

// Where items come from, what they are compared with (--expect), and
// whether playback keeps a schedule that it can fall behind.
void HostProgram::PrepareReporter(Reporter& reporter, ItemOrigins* origins,
                                  ExpectedItems& expected) const {
  if (origins != nullptr) reporter.SetOrigins(origins, m_options.loopGiven);
  if (!m_options.expectFile.empty()) reporter.SetExpected(&expected);
  reporter.Lag().SetPaced(m_options.runner != RunnerChoice::kBatched);
  if (m_options.runner == RunnerChoice::kRealtime) reporter.Lag().SetSpeed(m_options.realtimeSpeed);
}

// --pause-at: the module's thread stops playback once the item before a
// pause is written.
void HostProgram::PreparePauses(const PausePoints& pauses, HeadUnit& unit, Reporter& reporter,
                                Output& output) const {
  if (m_options.pauseAt.empty()) return;
  reporter.SetPauses(&pauses, [&unit, &reporter, &output](const PausePoint& point) {
    unit.PauseWithin();
    TellPause(reporter, output, point);
  });
  for (const std::string& bound : pauses.Unreached()) {
    Complain("--pause-at " + TerminalText::Escaped(bound) +
             " reaches no record that plays: no pause there");
  }
}

// A pause of --pause-at, as an item and on standard error.
void HostProgram::TellPause(Reporter& reporter, Output& output, const PausePoint& point) {
  reporter.Paused(point);
  output.ClearStatus();
  Complain("paused before line " + std::to_string(point.line) + " (--pause-at " +
           TerminalText::Escaped(point.bound) + "); \"start\" goes on");
}

bool HostProgram::LoadExpected(ExpectedItems* expected, std::string* error) const {
  if (m_options.expectFile.empty()) return true;
  ExpectedItems::RunShape run;
  run.tmc = m_options.selection.PlaysTag("$TMC");
  run.serviceList = m_options.selection.PlaysTag("$TSL");
  run.onlineTraffic = m_options.selection.PlaysTag("$TOT");
  run.loops = m_options.loopGiven;
  return expected->Load(m_options.expectFile, m_options.expectFile, run, error);
}

// --expect: what the comparison found, on standard error. Items not
// received are missing only when playback ran to its end.
void HostProgram::TellExpected(ExpectedItems& expected, const TraceFollower& trace,
                               RunEnd* end) const {
  expected.End(trace.FinishedCount() > 0 && end->signal == 0 && !end->timedOut &&
               end->writeError == 0);
  end->mismatch = expected.Differs();
  if (end->writeError != 0) return;
  for (const std::string& line : expected.Verdict(TerminalText::Escaped(m_eventsName))) {
    Complain(line);
  }
}

// The summary of the run on standard error.
void HostProgram::TellSummary(Reporter& reporter, bool finished) const {
  const PlaybackSummary summary = reporter.Summary(!finished);
  for (const std::string& line : summary.Lines()) {
    Complain(line);
  }
}

StatusInfo HostProgram::StatusNow(const Watched& watched) const {
  // The module's clock runs on shortened times under --max-gap, and its
  // signed 32-bit value stands still at its largest after 2038; the
  // record's own time goes on.
  int64_t clock = m_options.maxGapSeconds > 0.0 ? 0 : watched.reporter.RecordTime();
  const bool clockKnown = clock != 0 && clock != INT32_MAX;
  if (!clockKnown && watched.origins != nullptr) clock = watched.origins->Clock();
  StatusInfo info = watched.unit.Status(watched.reporter.RecordsPlayed(), clock);
  if (watched.origins != nullptr) info.line = watched.origins->Line();
  const LagMeter::Figures lag = watched.reporter.Lag().Now();
  if (lag.paced && watched.origins != nullptr) {
    info.lagMs = static_cast<int64_t>(lag.lagMicros / 1000u);
  }
  // Until the scan has read the whole file the line count is not known.
  if (!watched.scan.Done()) return info;
  const ScanResult& scan = watched.scan.Result();
  info.lines = scan.lines;
  // Under --max-gap the gaps still ahead are not known: no time left.
  if (m_options.maxGapSeconds > 0.0) return info;
  if (info.speedFactor > 0.0 && clock > 0 && scan.lastTime >= static_cast<double>(clock)) {
    info.leftMs = static_cast<int64_t>((scan.lastTime - static_cast<double>(clock)) /
                                       info.speedFactor * 1000.0);
  }
  return info;
}

// The main thread's watch: returns when the run is to end, with why in `end`.
void HostProgram::WaitForTheEnd(const Watched& watched, RunEnd* end) const {
  const bool terminal = isatty(STDERR_FILENO) == 1;
  StatusLine status(watched.output, !m_options.quiet && (terminal || m_options.progress),
                    !terminal);
  const int statusEvery = terminal ? kStatusEveryLoops : kReaderCheckEveryLoops;
  const auto started = std::chrono::steady_clock::now();
  const auto limit = std::chrono::duration<double>(m_options.timeoutSeconds);
  uint32_t finished = 0;
  for (int loop = 1;; ++loop) {
    const uint32_t reasons = watched.endSignal.WaitFor(kLoopPeriodMs);
    watched.output.Flush();
    if (watched.socket != nullptr) watched.socket->Publish(StatusNow(watched));
    if (reasons & EndSignal::kFinished) {
      watched.unit.OnFinished();
      ++finished;
    }
    if (StopSignals::Caught() != 0) {
      end->signal = StopSignals::Caught();
      break;
    }
    if (watched.output.WriteError() != 0) break;
    if (loop % kReaderCheckEveryLoops == 0 && watched.output.ReaderGone()) {
      end->writeError = EPIPE;
      break;
    }
    if (m_options.timeoutSeconds > 0.0 && std::chrono::steady_clock::now() - started >= limit) {
      end->timedOut = true;
      break;
    }
    if ((reasons & (EndSignal::kQuit | EndSignal::kInputEnded | EndSignal::kMismatch)) != 0) break;
    if ((reasons & EndSignal::kFinished) != 0 && PlaysAgain(finished, watched.replayedRecords)) {
      watched.unit.StartPlayback();
      continue;
    }
    if ((reasons & EndSignal::kFinished) != 0 && !m_options.control) break;
    if (loop % statusEvery == 0) status.Update(StatusNow(watched));
  }
  status.Clear();
}

}  // namespace PelorinHost
