#include "SimulatedOnlineTraffic.h"

#include "CIString.h"
#include "OnlineTrafficReply.h"
#include "Reporter.h"

namespace PelorinHost {
namespace {

// The service value reported on attach; any non-zero value tells the module
// that online traffic data is available.
constexpr uint32_t kServiceValue = 1;

}  // namespace

SimulatedOnlineTraffic::SimulatedOnlineTraffic(Reporter& reporter, uint32_t latencyMs, bool offline)
    : m_reporter(reporter), m_latency(latencyMs), m_offline(offline) {}

SimulatedOnlineTraffic::~SimulatedOnlineTraffic() { Stop(); }

void SimulatedOnlineTraffic::Attach(OnlineTrafficReply* reply) {
  if (reply == nullptr || m_reply != nullptr) return;
  m_reply = reply;
  m_thread = std::thread(&SimulatedOnlineTraffic::AnswerLoop, this);
  reply->SetService(this);
  reply->OnServiceStatus(0);
  reply->OnServiceValue(kServiceValue);
  reply->OnConnected();
}

void SimulatedOnlineTraffic::Stop() {
  {
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_stopped) return;
    m_stopped = true;
    m_owed.clear();
  }
  m_wake.notify_all();
  if (m_thread.joinable()) m_thread.join();
}

void SimulatedOnlineTraffic::Deliver(Answer answer) {
  switch (answer) {
    case Answer::kInventory:
      m_reply->OnInventoryAnswer();
      break;
    case Answer::kNewData:
      m_reply->OnNewDataAnswer();
      break;
    case Answer::kSetNewDataDone:
      m_reply->OnSetNewDataDone();
      break;
  }
}

void SimulatedOnlineTraffic::Owe(Answer answer, uint64_t line) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (m_stopped) return;
  const Clock::time_point now = Clock::now();
  m_owed.push_back(Owed{answer, now, now + m_latency, m_offline, line});
  m_wake.notify_all();
}

// Delivers each answer when it is due, outside the lock so that the module
// may call the service again from inside its reply. Ends at Stop.
void SimulatedOnlineTraffic::AnswerLoop() {
  std::unique_lock<std::mutex> lock(m_lock);
  for (;;) {
    if (m_stopped) return;
    if (m_owed.empty()) {
      m_wake.wait(lock);
      continue;
    }
    const Owed next = m_owed.front();
    if (next.never) {
      m_wake.wait(lock);
      continue;
    }
    if (Clock::now() < next.due) {
      m_wake.wait_until(lock, next.due);
      continue;
    }
    m_owed.pop_front();
    lock.unlock();
    Deliver(next.answer);
    // Playback waits for these answers; a setNewData is waited for only by
    // the next one.
    if (next.answer != Answer::kSetNewDataDone) {
      const auto waited =
          std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - next.called);
      m_reporter.Lag().OnlineWait(next.line, static_cast<uint64_t>(waited.count()));
    }
    lock.lock();
  }
}

int SimulatedOnlineTraffic::setOnlineTrafficDataStatus(int32_t status) {
  m_reporter.OnlineTrafficCall("setOnlineTrafficDataStatus", {CallArgument::Number(status)});
  return 0;
}

int SimulatedOnlineTraffic::getInventory() {
  Owe(Answer::kInventory, m_reporter.OnlineTrafficCall("getInventory", {}));
  return 0;
}

int SimulatedOnlineTraffic::getNewData() {
  Owe(Answer::kNewData, m_reporter.OnlineTrafficCall("getNewData", {}));
  return 0;
}

int SimulatedOnlineTraffic::setNewData(std::shared_ptr<CIString> path) {
  Owe(Answer::kSetNewDataDone,
      m_reporter.OnlineTrafficCall(
          "setNewData", {CallArgument::Text(path ? path->utf8() : std::string())}));
  return 0;
}

int SimulatedOnlineTraffic::setNewSession() {
  m_reporter.OnlineTrafficCall("setNewSession", {});
  return 0;
}

int SimulatedOnlineTraffic::setTimeoutForFallback(int64_t timeout) {
  m_reporter.OnlineTrafficCall("setTimeoutForFallback", {CallArgument::Number(timeout)});
  return 0;
}

int SimulatedOnlineTraffic::dsiConnectionStateChanged(int32_t state) {
  m_reporter.OnlineTrafficCall("dsiConnectionStateChanged", {CallArgument::Number(state)});
  return 0;
}

}  // namespace PelorinHost
