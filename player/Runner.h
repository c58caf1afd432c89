#pragma once
// Runner: the base of the playback strategies (real time, batched,
// interactive). It holds what they share: the record reader it reads from,
// the record consumers it hands every record to, the listeners it reports
// progress to, the work loop it runs on (none of them owned) and one
// recursive lock, m_lock, held for the whole of each step. Each step is a
// RunnerStep posted to the work loop at priority 16; the step runs the
// strategy's Execute, which posts the next step until the input ends.
//
// Threads: steps run on the work loop's thread. AddListener, SetInput,
// SetConsumers, RunOn, IsFinished and ShutDown may be called from any thread.
//
// Step chains: every step carries the chain generation current when it was
// posted. Beginning a new chain (RunOn, InteractiveRunner::Start) cancels the
// step still queued and moves to a new generation; a step of an older
// generation returns without touching the runner, and a step during which a
// new chain began (from a consumer or listener) ends without posting, so at
// most one chain ever plays. ShutDown makes the runner inert for good: later
// steps return at once, nothing more is read or posted, and a record is
// offered to no further consumer (a blocked consumer released by the
// shut-down is the last). Its owner shuts it down, then stops and destroys
// the work loop (which releases the steps it still holds), and only then
// deletes it.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "player/ReadStatus.h"
#include "player/Record.h"
#include "runtime/Mutex.h"

namespace Quillan {

class RecordConsumer;
class RecordReader;
class RunnerListener;
class WorkLoopInterface;

class Runner {
 public:
  // Priority of every step a runner posts.
  static constexpr uint32_t kStepPriority = 16;

  Runner() = default;
  // Releases the lists and the lock; deletes nothing they point to.
  virtual ~Runner();
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  // One playback step; runs on the work loop's thread.
  virtual void Execute() = 0;
  // Forgets the end of the input; strategies also drop their read-ahead.
  // Called under m_lock.
  virtual void Reset();

  // Appends `listener` (no check for duplicates or null).
  void AddListener(RunnerListener* listener);
  // Stores the reader; when one is already set, Reset runs first.
  void SetInput(RecordReader* input);
  // Replaces the consumer list with a copy of `consumers`.
  void SetConsumers(const std::vector<RecordConsumer*>& consumers);
  // Binds the runner to `loop` and posts the first step of a new chain.
  void RunOn(WorkLoopInterface* loop);
  bool IsFinished();
  // Makes the runner inert for good (see above). Does not wait for a step
  // that is running; never blocks.
  void ShutDown();

  // Entry point of a RunnerStep posted for chain `generation`.
  void RunStep(uint32_t generation);

 protected:
  // The reader's next record; kReadError (record untouched) without input.
  ReadStatus ReadNextRecord(Record& record);
  // Offers the record to every consumer in order, time in whole seconds.
  // False when the runner was shut down before the last consumer had it.
  bool DispatchRecord(const Record& record);
  void NotifyTick(double time);
  void NotifyNextEvent(double time);
  // Sets m_finished, then tells every listener.
  void NotifyFinished();
  // Posts the next step of the current chain with PostDelayed, also for 0;
  // nothing when a new chain began during this step.
  void PostStep(uint32_t delayMs);
  // Cancels the queued step, moves to a new generation and posts its first
  // step with Post. False when there is no loop or the loop refused the step.
  bool BeginChain();
  bool IsShutDown() const { return m_shutDown.load(std::memory_order_acquire); }

  // Whole seconds handed to consumers: rounded down, saturated to 32 bits.
  static uint32_t ConsumerTime(double time);
  // Step delay for `seconds`: to the nearest millisecond, halves upward,
  // saturated to 32 bits (negative gives 0).
  static uint32_t DelayMs(double seconds);

  Mutex m_lock;
  WorkLoopInterface* m_loop = nullptr;
  RecordReader* m_input = nullptr;
  std::vector<RunnerListener*> m_listeners;
  std::vector<RecordConsumer*> m_consumers;
  bool m_finished = false;

 private:
  void CancelQueuedStep();
  // Posts a fresh step of the current generation; its id, or 0 when the
  // loop refused it (the step is then deleted here).
  uint32_t PostNewStep(bool delayed, uint32_t delayMs);

  uint32_t m_generation = 0;
  // The generation of the step running now.
  uint32_t m_stepGeneration = 0;
  // Loop id of the current chain's step that is queued and has not begun;
  // 0 when there is none.
  uint32_t m_queuedStepId = 0;
  std::atomic<bool> m_shutDown{false};
};

}  // namespace Quillan
