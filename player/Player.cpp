#include "player/Player.h"

#include <fcntl.h>

#include <new>

#include "player/BatchedRunner.h"
#include "player/InputFile.h"
#include "player/InteractiveRunner.h"
#include "player/RealTimeRunner.h"
#include "player/RecordReader.h"
#include "player/Runner.h"
#include "runtime/ScopedLock.h"
#include "runtime/SplitPath.h"
#include "runtime/Trace.h"
#include "runtime/WorkLoopInterface.h"

namespace Quillan {
namespace {

const char kDefaultEventsFile[] = "/fs/sda0/quillan/events";
const char kWorkLoopName[] = "Quillan::DataPlayer";

}  // namespace

Player::Player(const Config& config)
    : m_config(config), m_workLoopFactory([] { return CreateWorkLoop(); }) {}

Player::~Player() {
  ShutDownPlayback();
  m_interactiveRunner = nullptr;
  delete m_runner;
  m_runner = nullptr;
  delete m_input;
  m_input = nullptr;
  delete m_inputFile;
  m_inputFile = nullptr;
  m_config.Clear();
}

void Player::ShutDownPlayback() {
  // No step may read, dispatch or post from here on, and the loop still
  // runs whatever it holds (each step returns at once) before its thread is
  // joined; only then may the runner and its input go.
  if (m_runner != nullptr) m_runner->ShutDown();
  if (m_workLoop == nullptr) return;
  m_workLoop->Stop(nullptr);
  delete m_workLoop;
  m_workLoop = nullptr;
}

void Player::OnFinished(Runner* runner) {
  (void)runner;
  if (m_inputFile != nullptr) m_inputFile->Close();
}

int Player::Initialize() {
  PELORIN_TRACE(2, "Player::Initialize");
  if (m_workLoop != nullptr) {
    PELORIN_TRACE(3, "Player::Initialize: m_workLoop already initialized.");
    return 1;
  }
  m_workLoop = m_workLoopFactory ? m_workLoopFactory() : nullptr;
  if (m_workLoop == nullptr) {
    PELORIN_TRACE(4, "Player::Initialize: m_workLoop failed to initialize.");
    return 1;
  }
  m_workLoop->SetName(kWorkLoopName);
  m_input = CreateInput();
  if (m_input == nullptr) {
    PELORIN_TRACE(4, "Player::Initialize: Failed to create input.");
    return 1;
  }
  const std::vector<RecordConsumer*> consumers = GetConsumers();
  Runner* runner = GetRunner();
  runner->SetInput(m_input);
  runner->SetConsumers(consumers);
  return 0;
}

Runner* Player::CreateRunner() {
  const bool interactive = m_config.GetBool("interactive", true);
  const double speed = m_config.GetDouble("playbackSpeed", 0.0);
  if (interactive) {
    const bool autostart = m_config.GetBool("autostart", false);
    PELORIN_TRACE(2, "DataPlayer: using InteractiveRunner autostart=", autostart,
                  ", speed=", speed);
    m_interactiveRunner = new InteractiveRunner(autostart);
    m_interactiveRunner->SetSpeed(speed);
    return m_interactiveRunner;
  }
  if (speed > 0.0) {
    PELORIN_TRACE(2, "DataPlayer: using RealTimeRunner speed=", speed);
    return new RealTimeRunner(speed);
  }
  PELORIN_TRACE(2, "DataPlayer: using BatchedRunner");
  return new BatchedRunner();
}

Runner* Player::GetRunner() {
  if (m_runner != nullptr) return m_runner;
  m_runner = CreateRunner();
  m_runner->AddListener(this);
  return m_runner;
}

int Player::Run() {
  PELORIN_TRACE(2, "Player::Run");
  if (m_workLoop != nullptr) {
    PELORIN_TRACE(4, "Player::Run workloop already running");
    return 2;
  }
  if (Initialize() != 0) return 1;
  m_runner->RunOn(m_workLoop);
  return m_workLoop->Start() ? 0 : 1;
}

bool Player::RewindInput() {
  if (m_inputFile == nullptr) return false;
  if (!m_inputFile->IsOpen()) {
    const FileStatus status = m_inputFile->Open();
    if (status != FileStatus::kSuccess) {
      PELORIN_TRACE(3, "Player::RewindInput:", " failed to (re)open input file", " error=", status);
      return false;
    }
  }
  const FileStatus status = m_inputFile->Seek(0, 0);
  if (status != FileStatus::kSuccess) {
    PELORIN_TRACE(3, "Player::RewindInput:", " failed to seek to start of input file",
                  " error=", status);
    return false;
  }
  if (m_input == nullptr) return false;
  m_input->Reset();
  return true;
}

void Player::StartPlayback() {
  PELORIN_TRACE(2, "Player::StartPlayback");
  if (m_interactiveRunner == nullptr) return;
  ScopedLock lock(m_controlLock);
  if (m_interactiveRunner->IsFinished()) {
    if (!RewindInput()) {
      PELORIN_TRACE(4, "Player::StartPlayback: failed to rewind input file");
      return;
    }
    // The runner already has this input: setting it again resets the runner.
    m_interactiveRunner->SetInput(m_input);
  }
  m_interactiveRunner->Start();
}

void Player::SetSpeed(double speed) {
  if (m_interactiveRunner != nullptr) m_interactiveRunner->SetSpeed(speed);
}

void Player::Stop() {
  if (m_interactiveRunner != nullptr) m_interactiveRunner->Stop();
}

std::string Player::GetEventsFilePath() const {
  std::string path = m_config.GetString("eventsFile", "");
  if (path.empty()) path = kDefaultEventsFile;
  PELORIN_TRACE(2, "DataPlayer::GetEventsFilePath: eventsFilePath=", path);
  return path;
}

std::string Player::GetTpegsDirPath() const {
  std::string directory = m_config.GetString("tpegsDir", "");
  if (directory.empty()) {
    std::string fileName;
    SplitPath(GetEventsFilePath(), &directory, &fileName);
  }
  PELORIN_TRACE(2, "DataPlayer::GetTpegsDirPath: tpegsDirPath=", directory);
  return directory;
}

RecordReader* Player::CreateInput() {
  const std::string path = GetEventsFilePath();
  delete m_inputFile;
  m_inputFile = new InputFile(path, O_RDONLY);
  const FileStatus status = m_inputFile->Open();
  if (status != FileStatus::kSuccess) {
    PELORIN_TRACE(4, "DataPlayer::CreateInput: failed to open ", path, ", error=", status);
    return nullptr;
  }
  return new RecordReader(*m_inputFile);
}

}  // namespace Quillan
