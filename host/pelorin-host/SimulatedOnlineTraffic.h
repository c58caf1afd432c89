#pragma once
// SimulatedOnlineTraffic: the head unit's online traffic (TPEG) service.
// Every call of the module becomes an "onlineTraffic" item. Calls that the
// real service answers ("getInventory", "getNewData", "setNewData") are
// answered through the module's OnlineTrafficReply from a thread of this
// service, `latencyMs` after the call; an offline service reports itself
// ready but never answers, so that the module's playback blocks.
//
// Shutting down: Stop ends the service's thread and drops what is still
// owed; later calls are reported but never answered, so nothing the module
// does after the end of a run is set going by this service, and no answer
// can arrive after the module is gone. (The module frees a producer that
// waits for an answer itself when it is destroyed.)
//
// Threads: the service calls come on the module's work-loop thread; Attach
// and Stop on the host's main thread. The reply is not owned.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include "OnlineTrafficService.h"

class OnlineTrafficReply;

namespace PelorinHost {

class Reporter;

class SimulatedOnlineTraffic : public OnlineTrafficService {
 public:
  SimulatedOnlineTraffic(Reporter& reporter, uint32_t latencyMs, bool offline);
  ~SimulatedOnlineTraffic() override;
  SimulatedOnlineTraffic(const SimulatedOnlineTraffic&) = delete;
  SimulatedOnlineTraffic& operator=(const SimulatedOnlineTraffic&) = delete;

  // Connects the service to the module: SetService, then status 0 (ready),
  // a non-zero service value and the connection. Starts the answering thread.
  void Attach(OnlineTrafficReply* reply);
  void Stop();

  int setOnlineTrafficDataStatus(int32_t status) override;
  int getInventory() override;
  int getNewData() override;
  int setNewData(std::shared_ptr<CIString> path) override;
  int setNewSession() override;
  int setTimeoutForFallback(int64_t timeout) override;
  int dsiConnectionStateChanged(int32_t state) override;

 private:
  using Clock = std::chrono::steady_clock;
  enum class Answer { kInventory, kNewData, kSetNewDataDone };
  struct Owed {
    Answer answer;
    Clock::time_point called;
    Clock::time_point due;
    bool never;
    uint64_t line;  // of the call's record, 0 when not known
  };

  // `line`: of the call's record, 0 when not known.
  void Owe(Answer answer, uint64_t line);
  void Deliver(Answer answer);
  void AnswerLoop();

  Reporter& m_reporter;
  const std::chrono::milliseconds m_latency;
  const bool m_offline;
  OnlineTrafficReply* m_reply = nullptr;

  std::mutex m_lock;
  std::condition_variable m_wake;
  std::deque<Owed> m_owed;  // in call order; due times never decrease
  bool m_stopped = false;
  std::thread m_thread;
};

}  // namespace PelorinHost
