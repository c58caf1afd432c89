#pragma once
// Player: the owner of playback. It holds a copy of the configuration, the
// events file and the record reader over it, the runner (chosen from the
// configuration) and the work loop on whose thread the runner plays; it owns
// all four. Subclasses supply the record consumers (GetConsumers).
//
// Threads: Run, StartPlayback, SetSpeed and Stop come from host threads;
// OnFinished comes from the work loop's thread inside a runner step. The
// runner guards its own state; the player's control lock only keeps two
// StartPlayback calls from rewinding the file at once (order: control lock,
// then the runner's lock).
//
// Shut-down: ShutDownPlayback ends playback for good (runner inert, loop
// stopped, loop thread joined) before anything playback uses is deleted.
// The destructor does it first; a subclass whose members the runner uses
// calls it at the top of its own destructor.

#include <functional>
#include <string>
#include <vector>

#include "player/Config.h"
#include "player/RunnerListener.h"
#include "runtime/Mutex.h"

namespace Quillan {

class InputFile;
class InteractiveRunner;
class RecordConsumer;
class RecordReader;
class Runner;
class WorkLoopInterface;

class Player : public RunnerListener {
 public:
  // Makes the work loop in Initialize; CreateWorkLoop unless replaced.
  using WorkLoopFactory = std::function<WorkLoopInterface*()>;

  explicit Player(const Config& config);
  ~Player() override;
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  // Closes the events file; StartPlayback reopens it.
  void OnFinished(Runner* runner) override;
  // 0 on success, 1 on failure (also when already initialised).
  virtual int Initialize();
  // A new runner chosen from "interactive", "playbackSpeed" and "autostart".
  virtual Runner* CreateRunner();
  virtual std::vector<RecordConsumer*> GetConsumers() = 0;

  // The runner, created on first use with the player as its first listener.
  Runner* GetRunner();
  // 0 started, 1 failed, 2 already running (also after a failed Run).
  int Run();
  // Reopens the events file at its start and empties the reader.
  bool RewindInput();
  // Starts (or, after the end, replays) interactive playback; no effect on
  // the other runners.
  void StartPlayback();
  void SetSpeed(double speed);
  void Stop();

 protected:
  void SetWorkLoopFactory(WorkLoopFactory factory) { m_workLoopFactory = std::move(factory); }
  // Ends playback for good and releases the work loop; idempotent.
  void ShutDownPlayback();

  // The events file path: "eventsFile", else "/fs/sda0/quillan/events".
  std::string GetEventsFilePath() const;
  // "tpegsDir", else the directory part of the events file path.
  std::string GetTpegsDirPath() const;
  // Creates the events file (kept in m_inputFile whatever happens), opens it
  // and returns a reader over it; null when it cannot be opened.
  RecordReader* CreateInput();

  WorkLoopInterface* m_workLoop = nullptr;
  Runner* m_runner = nullptr;
  InteractiveRunner* m_interactiveRunner = nullptr;
  RecordReader* m_input = nullptr;
  InputFile* m_inputFile = nullptr;
  Config m_config;

 private:
  WorkLoopFactory m_workLoopFactory;
  Mutex m_controlLock;
};

}  // namespace Quillan
