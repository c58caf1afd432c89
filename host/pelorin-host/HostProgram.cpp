#include "HostProgram.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>

#include "Controls.h"
#include "EndSignal.h"
#include "HeadUnit.h"
#include "ItemOrigins.h"
#include "ModuleLoader.h"
#include "Output.h"
#include "Paths.h"
#include "PrivateEvents.h"
#include "Reporter.h"
#include "SimulatedOnlineTraffic.h"
#include "StatusLine.h"
#include "Storage.h"
#include "StorageRoot.h"
#include "TraceFollower.h"

#ifndef PELORIN_INSTALL_DATADIR
#define PELORIN_INSTALL_DATADIR "share"
#endif
#ifndef PELORIN_SOURCE_EXAMPLE_DIR
#define PELORIN_SOURCE_EXAMPLE_DIR ""
#endif

namespace PelorinHost {
namespace {

constexpr uint32_t kLoopPeriodMs = 50;
constexpr int kStatusEveryLoops = 4;

std::atomic<int> g_signal{0};

void OnSignal(int number) { g_signal.store(number); }

void CatchSignals() {
  struct sigaction action {};
  action.sa_handler = &OnSignal;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

void Complain(const std::string& text) { std::fprintf(stderr, "pelorin-host: %s\n", text.c_str()); }

PlaybackSettings SettingsFor(const Options& options, const std::string& eventsFile,
                             const std::string& tpegsDir) {
  PlaybackSettings settings;
  settings.eventsFile = AbsolutePath(eventsFile);
  settings.tpegsDir = AbsolutePath(tpegsDir.empty() ? DirectoryOf(settings.eventsFile) : tpegsDir);
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
    const bool asItStands = !m_options.SetsConfiguration() &&
                            !m_options.selection.Restricts() && !m_options.loopGiven;
    if (asItStands) return root.UseFolder(example, error);
    eventsFile = example + "/quillan/events";
  }
  PlaybackSettings settings = SettingsFor(m_options, eventsFile, m_options.tpegsDir);
  *recording = settings.eventsFile;
  if (CopiesRecording()) settings.eventsFile = PrivateEvents::kModulePath;
  return root.MakePrivate(settings, error);
}

bool HostProgram::CopiesRecording() const {
  return m_options.selection.Restricts() || m_options.loopGiven;
}

bool HostProgram::PlaysAgain(uint32_t finished, bool interactive, uint64_t records) const {
  return interactive && m_options.loopGiven && records > 0 &&
         (m_options.passes == 0 || finished < m_options.passes);
}

int HostProgram::Run() {
  std::string error;
  StorageRoot root;
  std::string recording;
  PrivateEvents privateEvents(m_options.selection, m_options.passes);
  ItemOrigins origins(m_options.selection);
  const bool interactive = m_options.runner == RunnerChoice::kInteractive;
  const bool prepared =
      PrepareRoot(root, &recording, &error) &&
      (recording.empty() ||
       ((!CopiesRecording() ||
         privateEvents.Create(recording, root.Path() + "/quillan/" + PrivateEvents::kFileName,
                              !interactive, &error)) &&
        origins.Open(recording, &error)));
  if (!prepared) {
    Complain(error);
    return kExitUnusable;
  }
  Storage::SetStorageRoot(root.Path());

  Output output(STDOUT_FILENO, STDERR_FILENO);
  Reporter reporter(output, m_options.json);
  if (!recording.empty()) reporter.SetOrigins(&origins, m_options.loopGiven);
  EndSignal endSignal;
  TraceFollower trace(reporter, endSignal, m_options.traceLevel);
  trace.Install();

  ModuleLoader loader;
  const std::string modulePath =
      m_options.modulePath.empty() ? ModuleLoader::DefaultPath(m_programDir) : m_options.modulePath;
  if (!loader.Load(modulePath, &error)) {
    trace.Remove();
    Complain(error);
    return kExitUnusable;
  }

  CatchSignals();
  SimulatedOnlineTraffic onlineTraffic(reporter, m_options.tpegLatencyMs, m_options.tpegOffline);
  auto unit = std::make_unique<HeadUnit>(loader, reporter, onlineTraffic, trace);
  std::unique_ptr<Controls> controls;
  int exitStatus = kExitDone;

  if (!unit->Start(!m_options.paused, &error)) {
    exitStatus = kExitUnusable;
  } else {
    if (m_options.control) {
      controls = std::make_unique<Controls>(*unit, endSignal, output, STDIN_FILENO, STDERR_FILENO);
      controls->Start();
    }
    const bool statusWanted = isatty(STDERR_FILENO) == 1;
    StatusLine status(output, statusWanted);
    const auto started = std::chrono::steady_clock::now();
    const auto limit = std::chrono::duration<double>(m_options.timeoutSeconds);
    uint32_t finished = 0;
    for (int loop = 0;; ++loop) {
      const uint32_t reasons = endSignal.WaitFor(kLoopPeriodMs);
      output.Flush();
      if (reasons & EndSignal::kFinished) {
        unit->OnFinished();
        ++finished;
      }
      if (g_signal.load() != 0) {
        exitStatus = 128 + g_signal.load();
        break;
      }
      if (m_options.timeoutSeconds > 0.0 && std::chrono::steady_clock::now() - started >= limit) {
        exitStatus = kExitTimeout;
        break;
      }
      if ((reasons & (EndSignal::kQuit | EndSignal::kInputEnded)) != 0) break;
      if ((reasons & EndSignal::kFinished) != 0 &&
          PlaysAgain(finished, interactive && !recording.empty(), privateEvents.Records())) {
        unit->StartPlayback();
        continue;
      }
      if ((reasons & EndSignal::kFinished) != 0 && !m_options.control) break;
      if (loop % kStatusEveryLoops == 0 && trace.Runner() != RunnerKind::kBatched) {
        status.Update(unit->Status(reporter.RecordsPlayed(), reporter.RecordTime()));
      }
    }
    status.Clear();
  }

  // A producer waiting for an answer holds playback (and a control call that
  // waits for it): free it before anything waits for playback to stop.
  onlineTraffic.Drain();
  if (controls) controls->Stop();
  unit->Shutdown();
  unit.reset();
  privateEvents.Stop();
  trace.Remove();
  loader.Unload();
  output.Flush();
  if (exitStatus == kExitUnusable) Complain(error);
  return exitStatus;
}

}  // namespace PelorinHost
