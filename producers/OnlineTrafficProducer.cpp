#include "producers/OnlineTrafficProducer.h"

#include <algorithm>
#include <memory>

#include "CITypesFactory.h"
#include "OnlineTrafficService.h"
#include "producers/Utf8Text.h"
#include "runtime/ScopedLock.h"
#include "runtime/Trace.h"

namespace Quillan {
namespace {

const uint32_t kNoLimit = 0;

// A zero period would let a wait spin without ever counting time.
OnlineTrafficTiming Sanitized(OnlineTrafficTiming timing) {
  timing.pollMs = std::max<uint32_t>(timing.pollMs, 1);
  timing.warningMs = std::max<uint32_t>(timing.warningMs, 1);
  return timing;
}

}  // namespace

// In the order of TotCall::kMethods.
const OnlineTrafficProducer::Handler OnlineTrafficProducer::kHandlers[TotCall::kMethodCount] = {
    &OnlineTrafficProducer::HandleSetOnlineTrafficDataStatus,
    &OnlineTrafficProducer::HandleGetInventory,
    &OnlineTrafficProducer::HandleGetNewData,
    &OnlineTrafficProducer::HandleSetNewData,
    &OnlineTrafficProducer::HandleSetNewSession,
    &OnlineTrafficProducer::HandleSetTimeoutForFallback,
    &OnlineTrafficProducer::HandleDsiConnectionStateChanged,
};

OnlineTrafficProducer::OnlineTrafficProducer() : OnlineTrafficProducer(OnlineTrafficTiming()) {}

OnlineTrafficProducer::OnlineTrafficProducer(const OnlineTrafficTiming& timing)
    : m_timing(Sanitized(timing)) {}

OnlineTrafficProducer::~OnlineTrafficProducer() = default;

int OnlineTrafficProducer::OnRecord(uint32_t time, const std::string& tag,
                                    const std::string& payload) {
  if (tag != TotCall::kTag) return kNotHandled;
  const TotCall call = TotCall::Parse(payload);
  if (call.method.empty()) return kEmptyMethod;
  m_currentTime = time;
  const size_t method = TotCall::FindMethod(call.method);
  if (method == TotCall::kMethodCount) return kUnknownMethod;
  if (m_service.load(std::memory_order_acquire) == nullptr) return kNotHandled;
  if (call.arguments.size() != TotCall::kMethods[method].argumentCount) {
    return kWrongArgumentCount;
  }
  return (this->*kHandlers[method])(call);
}

// ---- Answers of the service (the service's threads) ----

int OnlineTrafficProducer::OnServiceStatus(uint32_t status) {
  ScopedLock lock(m_mutex);
  m_serviceReady = status == 0;
  return 0;
}

int OnlineTrafficProducer::OnServiceValue(uint32_t value) {
  ScopedLock lock(m_mutex);
  m_serviceValue = value;
  return 0;
}

int OnlineTrafficProducer::OnNewDataAnswer() {
  ScopedLock lock(m_mutex);
  m_newDataAnswered = true;
  return 0;
}

int OnlineTrafficProducer::OnSetNewDataDone() {
  ScopedLock lock(m_mutex);
  m_newDataBusy = false;
  return 0;
}

int OnlineTrafficProducer::Ignored4() { return 0; }
int OnlineTrafficProducer::Ignored5() { return 0; }
int OnlineTrafficProducer::Ignored6() { return 0; }

int OnlineTrafficProducer::OnInventoryAnswer() {
  ScopedLock lock(m_mutex);
  m_inventoryAnswered = true;
  return 0;
}

int OnlineTrafficProducer::Ignored8() { return 0; }
int OnlineTrafficProducer::Ignored9() { return 0; }

void OnlineTrafficProducer::SetService(OnlineTrafficService* service) {
  m_service.store(service, std::memory_order_release);
}

int OnlineTrafficProducer::OnConnected() {
  ScopedLock lock(m_mutex);
  m_connected = true;
  return 0;
}

int OnlineTrafficProducer::Ignored13() { return 0; }

// ---- Configuration and diagnostics ----

void OnlineTrafficProducer::SetTpegsDir(const std::string& dir) { m_tpegsDir = dir; }

// ---- Method handlers (the work loop's thread) ----

int OnlineTrafficProducer::HandleSetOnlineTrafficDataStatus(const TotCall& call) {
  const int32_t status = ArgumentToInt(call.arguments[0]);
  WaitFor(&OnlineTrafficProducer::ServiceReady, m_timing.limitMs);
  OnlineTrafficService* service = ServiceForCall();
  if (service == nullptr) return kNotHandled;
  service->setOnlineTrafficDataStatus(status);
  if (status == 0) WaitFor(&OnlineTrafficProducer::ServiceValueSet, m_timing.limitMs);
  return kHandled;
}

int OnlineTrafficProducer::HandleGetInventory(const TotCall&) {
  WaitFor(&OnlineTrafficProducer::ServiceReady, kNoLimit);
  OnlineTrafficService* service = ServiceForCall();
  if (service == nullptr) return kNotHandled;
  service->getInventory();
  WaitFor(&OnlineTrafficProducer::InventoryAnswered, kNoLimit);
  return kHandled;
}

int OnlineTrafficProducer::HandleGetNewData(const TotCall&) {
  WaitFor(&OnlineTrafficProducer::ServiceReady, kNoLimit);
  WaitFor(&OnlineTrafficProducer::ServiceValueSet, kNoLimit);
  OnlineTrafficService* service = ServiceForCall();
  if (service == nullptr) return kNotHandled;
  service->getNewData();
  WaitFor(&OnlineTrafficProducer::NewDataAnswered, kNoLimit);
  return kHandled;
}

int OnlineTrafficProducer::HandleSetNewData(const TotCall& call) {
  WaitFor(&OnlineTrafficProducer::ServiceReady, kNoLimit);
  WaitFor(&OnlineTrafficProducer::ServiceValueSet, kNoLimit);
  const bool tookIdle = WaitFor(&OnlineTrafficProducer::NewDataIdle, kNoLimit);
  OnlineTrafficService* service = ServiceForCall();
  if (service == nullptr) {
    // No call goes out, so none will be answered as done.
    if (tookIdle) OnSetNewDataDone();
    return kNotHandled;
  }
  m_lastDataTime.store(m_currentTime, std::memory_order_relaxed);
  const std::string path = Utf8Text::FromBytes(DataPath(call.arguments[0]));
  service->setNewData(CITypesFactory::createString(path.c_str(), CITypesFactory::kEncodingUtf8));
  return kHandled;
}

int OnlineTrafficProducer::HandleSetNewSession(const TotCall&) {
  WaitFor(&OnlineTrafficProducer::ServiceReady, kNoLimit);
  OnlineTrafficService* service = ServiceForCall();
  if (service == nullptr) return kNotHandled;
  service->setNewSession();
  return kHandled;
}

int OnlineTrafficProducer::HandleSetTimeoutForFallback(const TotCall& call) {
  OnlineTrafficService* service = ServiceForCall();
  if (service == nullptr) return kNotHandled;
  service->setTimeoutForFallback(static_cast<int64_t>(ArgumentToInt(call.arguments[0])));
  return kHandled;
}

int OnlineTrafficProducer::HandleDsiConnectionStateChanged(const TotCall& call) {
  const int32_t state = ArgumentToInt(call.arguments[0]);
  WaitFor(&OnlineTrafficProducer::Connected, kNoLimit);
  OnlineTrafficService* service = ServiceForCall();
  if (service == nullptr) return kNotHandled;
  service->dsiConnectionStateChanged(state);
  return kHandled;
}

// ---- Waiting ----

OnlineTrafficService* OnlineTrafficProducer::ServiceForCall() const {
  if (Abandoned()) return nullptr;
  return m_service.load(std::memory_order_acquire);
}

bool OnlineTrafficProducer::ServiceReady() { return m_serviceReady; }

bool OnlineTrafficProducer::ServiceValueSet() { return m_serviceValue != 0; }

bool OnlineTrafficProducer::InventoryAnswered() {
  if (!m_inventoryAnswered) return false;
  m_inventoryAnswered = false;
  return true;
}

bool OnlineTrafficProducer::NewDataAnswered() {
  if (!m_newDataAnswered) return false;
  m_newDataAnswered = false;
  return true;
}

bool OnlineTrafficProducer::NewDataIdle() {
  if (m_newDataBusy) return false;
  m_newDataBusy = true;
  return true;
}

bool OnlineTrafficProducer::Connected() { return m_connected; }

bool OnlineTrafficProducer::WaitFor(Condition condition, uint32_t limitMs) {
  // 64-bit so that a wait of more than 49 days still counts correctly.
  uint64_t elapsed = 0;
  uint64_t warningMark = m_timing.warningMs;
  for (;;) {
    if (Abandoned()) return false;
    {
      ScopedLock lock(m_mutex);
      if ((this->*condition)()) return true;
    }
    elapsed += m_timing.pollMs;
    SleepPoll();
    if (limitMs != kNoLimit && elapsed >= limitMs) return false;
    if (elapsed >= warningMark) {
      // The text names 5 seconds at every warning, as the field tools expect.
      PELORIN_TRACE(3, "OnlineTrafficProducer::WaitFor: playback blocked for more than ", 5,
                    "seconds at event at ", m_currentTime);
      warningMark += m_timing.warningMs;
    }
  }
}

void OnlineTrafficProducer::AbandonWaits() {
  m_abandoned.store(true, std::memory_order_relaxed);
  m_abandonedEvent.Set();
}

void OnlineTrafficProducer::SleepPoll() {
  if (m_timing.sleep) {
    m_timing.sleep(m_timing.pollMs);
  } else {
    m_abandonedEvent.TimedWait(m_timing.pollMs);
  }
}

// The default directory already ends in "/", so the joined path holds "//";
// it is passed on that way.
std::string OnlineTrafficProducer::DataPath(const std::string& file) const {
  if (m_tpegsDir.empty()) return file;
  return m_tpegsDir + "/" + file;
}

int32_t OnlineTrafficProducer::ArgumentToInt(const std::string& argument) {
  const std::string text = Utf8Text::FromBytes(argument);
  return CITypesFactory::createString(text.c_str(), CITypesFactory::kEncodingUtf8)->toInt32();
}

}  // namespace Quillan
