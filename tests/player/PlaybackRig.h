#pragma once
// Shared by the playback tests: configurations from text, waiting with a
// deadline, and PlaybackRig.
//
// PlaybackRig: one runner wired as the player wires it (probe as listener and
// consumer, an in-memory events file as input) on a recording work loop
// whose held steps the test runs one by one. Tear-down follows the player's
// order: runner shut down, loop stopped and deleted, then the runner.

#include <memory>
#include <string>

#include "player/Config.h"
#include "player/Runner.h"
#include "tests/support/MemoryInput.h"
#include "tests/support/PlaybackProbe.h"
#include "tests/support/RecordingWorkLoop.h"
#include "tests/support/TempFile.h"
#include "tests/support/TestTime.h"

namespace pelorin_test {

// A configuration file's contents made into a Config.
inline Quillan::Config MakeConfig(const std::string& text) {
  TempFile file(text);
  return Quillan::Config::FromFile(file.Path());
}

template <typename RunnerType>
class PlaybackRig {
 public:
  PlaybackRig(const std::string& events, std::unique_ptr<RunnerType> runner)
      : m_input(events), m_loop(new RecordingWorkLoop()), m_runner(std::move(runner)) {
    m_runner->AddListener(&m_probe);
    m_runner->SetInput(m_input.Reader());
    m_runner->SetConsumers({&m_probe});
  }
  ~PlaybackRig() {
    m_runner->ShutDown();
    m_loop->Stop(nullptr);
    delete m_loop;
    m_runner.reset();
  }

  // Binds the runner to the loop (first step posted) and starts the loop.
  void Run() {
    m_runner->RunOn(m_loop);
    m_loop->Start();
  }

  RunnerType& runner() { return *m_runner; }
  RecordingWorkLoop& loop() { return *m_loop; }
  PlaybackProbe& probe() { return m_probe; }

 private:
  MemoryInput m_input;
  PlaybackProbe m_probe;
  RecordingWorkLoop* m_loop;
  std::unique_ptr<RunnerType> m_runner;
};

}  // namespace pelorin_test
