#pragma once
// OnlineTrafficProducer: replays the recorded calls of "$TOT" records on the
// head unit's online traffic service. Each call goes out only once the
// service has given the answers it depends on: the producer polls its state
// flags and, while it waits, playback waits with it.
//
// Threads: OnRecord runs on the work loop's thread inside a runner step; the
// service's answers (the OnlineTrafficReply operations) arrive on the
// service's own threads. m_mutex guards the six state flags and is held only
// while a flag is tested or changed, never while sleeping or calling the
// service. SetService may be called from any thread; SetTpegsDir only before
// playback starts. GetLastDataTime may be read from any thread.
//
// Ownership: the service is the host's and never deleted here. Created and
// deleted by the data player.
//
// Waits poll every 50 ms. A wait without a limit never gives up and logs the
// level-3 "playback blocked" warning every 5 s; a wait with a limit gives up
// after 5000 ms without a warning and the call goes ahead. The timing can be
// injected for tests; a numeric argument is read by the platform string's
// integer parse, as the service's own clients do.
// The service is read again after every wait: a call finding none is not made.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "OnlineTrafficReply.h"
#include "producers/RecordConsumer.h"
#include "producers/TotCall.h"
#include "runtime/Event.h"
#include "runtime/Mutex.h"

class OnlineTrafficService;

namespace Quillan {

// Polling and warning periods of the waits, in milliseconds of waiting (the
// sum of the poll periods slept, not wall-clock time).
struct OnlineTrafficTiming {
  uint32_t pollMs = 50;
  uint32_t limitMs = 5000;    // the limit of the limited waits
  uint32_t warningMs = 5000;  // interval of the "playback blocked" warning
  // Sleeps one poll period; empty means SleepMs. Called on the work loop's
  // thread.
  std::function<void(uint32_t ms)> sleep;
};

class OnlineTrafficProducer : public RecordConsumer, public OnlineTrafficReply {
 public:
  // Statuses of OnRecord; TotCall::Check gives those of a call.
  enum Status {
    kHandled = 0,
    kNotHandled = 1,  // another tag, or no service attached
    kEmptyMethod = 2,
    kUnknownMethod = 3,
    kWrongArgumentCount = 4,
  };

  OnlineTrafficProducer();
  explicit OnlineTrafficProducer(const OnlineTrafficTiming& timing);
  OnlineTrafficProducer(const OnlineTrafficProducer&) = delete;
  OnlineTrafficProducer& operator=(const OnlineTrafficProducer&) = delete;

  // Primary interface, in slot order: destructor, OnRecord, then the
  // OnlineTrafficReply operations in that interface's order.
  ~OnlineTrafficProducer() override;
  // Replays the call of a "$TOT" record; see Status. May block for as long
  // as the service keeps back an answer the call depends on.
  int OnRecord(uint32_t time, const std::string& tag, const std::string& payload) override;
  // Status 0 makes the service ready; any other value makes it not ready.
  int OnServiceStatus(uint32_t status) override;
  int OnServiceValue(uint32_t value) override;
  int OnNewDataAnswer() override;
  int OnSetNewDataDone() override;
  int Ignored4() override;
  int Ignored5() override;
  int Ignored6() override;
  int OnInventoryAnswer() override;
  int Ignored8() override;
  int Ignored9() override;
  void SetService(OnlineTrafficService* service) override;
  int OnConnected() override;
  int Ignored13() override;

  // Directory prefix of the "setNewData" file names ("" leaves them as
  // recorded).
  void SetTpegsDir(const std::string& dir);
  // Ends every wait at once, now and for good, and makes no further call on
  // the service: the owner calls it before it stops playback, so that a step
  // waiting for an answer that never comes cannot hold up the shut-down.
  // Callable from any thread.
  // A wait in progress ends without finishing its poll period.
  void AbandonWaits();

  // Record time of the last "setNewData" call; 0 means none.
  uint32_t GetLastDataTime() const { return m_lastDataTime.load(std::memory_order_relaxed); }

 private:
  using Handler = int (OnlineTrafficProducer::*)(const TotCall& call);
  using Condition = bool (OnlineTrafficProducer::*)();
  // By the index of the method in TotCall::kMethods.
  static const Handler kHandlers[TotCall::kMethodCount];

  int HandleSetOnlineTrafficDataStatus(const TotCall& call);
  int HandleGetInventory(const TotCall& call);
  int HandleGetNewData(const TotCall& call);
  int HandleSetNewData(const TotCall& call);
  int HandleSetNewSession(const TotCall& call);
  int HandleSetTimeoutForFallback(const TotCall& call);
  int HandleDsiConnectionStateChanged(const TotCall& call);

  // Conditions, evaluated with m_mutex held. The consuming ones reset their
  // flag when they find it set; NewDataIdle takes the busy flag.
  bool ServiceReady();
  bool ServiceValueSet();
  bool InventoryAnswered();
  bool NewDataAnswered();
  bool NewDataIdle();
  bool Connected();

  // Polls `condition` until it holds (true) or, when `limitMs` is not 0,
  // until `limitMs` of waiting have passed (false).
  // Also false, at once, once the waits are abandoned.
  bool WaitFor(Condition condition, uint32_t limitMs);
  bool Abandoned() const { return m_abandoned.load(std::memory_order_relaxed); }
  // The service to make a call on, read afresh after the waits before it;
  // null when there is none or the waits are abandoned.
  OnlineTrafficService* ServiceForCall() const;
  void SleepPoll();
  std::string DataPath(const std::string& file) const;
  static int32_t ArgumentToInt(const std::string& argument);

  const OnlineTrafficTiming m_timing;
  std::atomic<OnlineTrafficService*> m_service{nullptr};
  std::string m_tpegsDir;
  uint32_t m_currentTime = 0;  // work loop's thread only
  std::atomic<uint32_t> m_lastDataTime{0};
  std::atomic<bool> m_abandoned{false};
  Event m_abandonedEvent;  // raised with m_abandoned; polls wait on it

  Mutex m_mutex;  // guards the six fields below
  bool m_serviceReady = false;
  bool m_connected = false;
  bool m_newDataBusy = false;
  bool m_newDataAnswered = false;
  bool m_inventoryAnswered = false;
  uint32_t m_serviceValue = 0;
};

}  // namespace Quillan
