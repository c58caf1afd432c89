#include "TraceFollower.h"

#include <cstdlib>
#include <cstring>

#include "EndSignal.h"
#include "Reporter.h"
#include "tracing/Channel.h"

namespace PelorinHost {
namespace {

const char kModuleChannel[] = "Pelorin";
const char kDataPoolChannel[] = "SD_DATAPOOL";
const char kFinishedText[] = "Runner::NotifyFinished";
constexpr int16_t kFollowLevel = 2;
constexpr int kFailureLevel = 4;

bool StartsWith(const char* text, const char* prefix) {
  return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

double SpeedAfter(const char* text, const char* key) {
  const char* found = std::strstr(text, key);
  if (found == nullptr) return 0.0;
  return std::strtod(found + std::strlen(key), nullptr);
}

}  // namespace

TraceFollower::TraceFollower(Reporter& reporter, EndSignal& endSignal, int showLevel)
    : m_reporter(reporter), m_endSignal(endSignal), m_showLevel(showLevel) {}

TraceFollower::~TraceFollower() { Remove(); }

void TraceFollower::Install() {
  int16_t moduleThreshold = kFollowLevel;
  if (m_showLevel >= 0 && m_showLevel < kFollowLevel)
    moduleThreshold = static_cast<int16_t>(m_showLevel);
  tracing::SetThreshold(kModuleChannel, moduleThreshold);
  if (m_showLevel >= 0) tracing::SetThreshold(kDataPoolChannel, static_cast<int16_t>(m_showLevel));
  tracing::SetSink(&TraceFollower::Sink, this);
  m_installed = true;
}

void TraceFollower::Remove() {
  if (!m_installed) return;
  tracing::SetSink(nullptr, nullptr);
  m_installed = false;
}

double TraceFollower::RunnerSpeed() const {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_runnerSpeed;
}

std::string TraceFollower::FirstFailure() const {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_firstFailure;
}

void TraceFollower::ClearFailures() {
  std::lock_guard<std::mutex> guard(m_lock);
  m_firstFailure.clear();
}

bool TraceFollower::ParseRunnerChoice(const char* text, RunnerKind* kind, double* speed) {
  if (StartsWith(text, "DataPlayer: using InteractiveRunner")) {
    *kind = RunnerKind::kInteractive;
    *speed = SpeedAfter(text, "speed=");
    return true;
  }
  if (StartsWith(text, "DataPlayer: using RealTimeRunner")) {
    *kind = RunnerKind::kRealtime;
    *speed = SpeedAfter(text, "speed=");
    return true;
  }
  if (StartsWith(text, "DataPlayer: using BatchedRunner")) {
    *kind = RunnerKind::kBatched;
    *speed = 0.0;
    return true;
  }
  return false;
}

void TraceFollower::Sink(void* context, const char* channel, int level, const char* text) {
  static_cast<TraceFollower*>(context)->OnMessage(channel ? channel : "", level, text ? text : "");
}

void TraceFollower::OnMessage(const char* channel, int level, const char* text) {
  if (m_showLevel >= 0 && level >= m_showLevel) m_reporter.Trace(channel, level, text);
  if (std::strcmp(channel, kModuleChannel) != 0) return;
  if (std::strcmp(text, kFinishedText) == 0) {
    m_finished.fetch_add(1);
    m_reporter.Finished();
    m_endSignal.Raise(EndSignal::kFinished);
    return;
  }
  RunnerKind kind = RunnerKind::kUnknown;
  double speed = 0.0;
  if (ParseRunnerChoice(text, &kind, &speed)) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_runnerSpeed = speed;
    m_runner.store(kind);
    return;
  }
  if (level >= kFailureLevel) {
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_firstFailure.empty()) m_firstFailure = text;
  }
}

}  // namespace PelorinHost
