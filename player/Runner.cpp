#include "player/Runner.h"

#include <cmath>
#include <cstdio>
#include <new>

#include "player/RecordReader.h"
#include "player/RunnerListener.h"
#include "player/RunnerStep.h"
#include "producers/RecordConsumer.h"
#include "runtime/ScopedLock.h"
#include "runtime/Trace.h"
#include "runtime/WorkLoopInterface.h"

namespace Quillan {
namespace {

// Truncates to unsigned 32 bits with saturation: negative (and NaN) give 0,
// 4294967296 and above give 4294967295.
uint32_t SaturatedUnsigned(double value) {
  if (!(value > 0.0)) return 0u;
  if (value >= 4294967296.0) return 0xFFFFFFFFu;
  return static_cast<uint32_t>(value);
}

void TraceRunOn(const WorkLoopInterface* loop) {
  if (!TraceEnabled(2)) return;
  char address[32];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
  // The loop's address as the head unit's logs have always shown it.
  std::snprintf(address, sizeof(address), "%.08p", static_cast<const void*>(loop));
#pragma GCC diagnostic pop
  PELORIN_TRACE(2, "Runner::RunOn ", static_cast<const char*>(address));
}

}  // namespace

Runner::~Runner() = default;

void Runner::Reset() { m_finished = false; }

void Runner::AddListener(RunnerListener* listener) {
  ScopedLock lock(m_lock);
  m_listeners.push_back(listener);
}

void Runner::SetInput(RecordReader* input) {
  ScopedLock lock(m_lock);
  if (m_input != nullptr) Reset();
  m_input = input;
}

void Runner::SetConsumers(const std::vector<RecordConsumer*>& consumers) {
  ScopedLock lock(m_lock);
  m_consumers = consumers;
}

void Runner::RunOn(WorkLoopInterface* loop) {
  TraceRunOn(loop);
  ScopedLock lock(m_lock);
  // A step still queued on a former loop belongs to a chain that ends here.
  CancelQueuedStep();
  m_loop = loop;
  BeginChain();
}

bool Runner::IsFinished() {
  ScopedLock lock(m_lock);
  return m_finished;
}

void Runner::ShutDown() { m_shutDown.store(true, std::memory_order_release); }

void Runner::RunStep(uint32_t generation) {
  if (IsShutDown()) return;
  ScopedLock lock(m_lock);
  if (IsShutDown() || generation != m_generation) return;
  m_queuedStepId = 0;
  m_stepGeneration = generation;
  Execute();
}

ReadStatus Runner::ReadNextRecord(Record& record) {
  if (m_input == nullptr) {
    PELORIN_TRACE(4, "Runner::ReadNextRecord: input not created");
    return ReadStatus::kReadError;
  }
  return m_input->ReadRecord(record);
}

bool Runner::DispatchRecord(const Record& record) {
  const uint32_t seconds = ConsumerTime(record.time);
  // By index: a consumer called back on this thread may change the list.
  // A consumer may block until a shut-down releases it: checked before each.
  for (size_t i = 0; i < m_consumers.size(); ++i) {
    if (IsShutDown()) return false;
    (void)m_consumers[i]->OnRecord(seconds, record.tag, record.payload);
  }
  return true;
}

void Runner::NotifyTick(double time) {
  PELORIN_TRACE(2, "Runner::NotifyTick");
  for (size_t i = 0; i < m_listeners.size(); ++i) m_listeners[i]->OnTick(this, time);
}

void Runner::NotifyNextEvent(double time) {
  PELORIN_TRACE(2, "Runner::NotifyNextEvent");
  for (size_t i = 0; i < m_listeners.size(); ++i) m_listeners[i]->OnNextEvent(this, time);
}

void Runner::NotifyFinished() {
  m_finished = true;
  PELORIN_TRACE(2, "Runner::NotifyFinished");
  for (size_t i = 0; i < m_listeners.size(); ++i) m_listeners[i]->OnFinished(this);
}

void Runner::PostStep(uint32_t delayMs) {
  if (IsShutDown() || m_stepGeneration != m_generation) return;
  m_queuedStepId = PostNewStep(true, delayMs);
}

bool Runner::BeginChain() {
  CancelQueuedStep();
  ++m_generation;
  if (m_loop == nullptr || IsShutDown()) return false;
  m_queuedStepId = PostNewStep(false, 0);
  return m_queuedStepId != 0;
}

void Runner::CancelQueuedStep() {
  // The loop may already have taken the step; then the generation check
  // drops it when it runs.
  if (m_loop != nullptr && m_queuedStepId != 0) m_loop->Cancel(m_queuedStepId);
  m_queuedStepId = 0;
}

uint32_t Runner::PostNewStep(bool delayed, uint32_t delayMs) {
  if (m_loop == nullptr) return 0;
  RunnerStep* step = new (std::nothrow) RunnerStep(this, m_generation);
  if (step == nullptr) return 0;
  const uint32_t id = delayed ? m_loop->PostDelayed(step, delayMs, kStepPriority)
                              : m_loop->Post(step, kStepPriority);
  // A refused step (the loop is stopping) is not the loop's: give it up here.
  if (id == 0) step->Release();
  return id;
}

uint32_t Runner::ConsumerTime(double time) { return SaturatedUnsigned(std::floor(time)); }

uint32_t Runner::DelayMs(double seconds) { return SaturatedUnsigned(seconds * 1000.0 + 0.5); }

}  // namespace Quillan
