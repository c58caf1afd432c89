#pragma once
// WorkLoop: the executor of playback. One thread runs the posted handlers one
// at a time: larger priority first, equal priorities in posting order, and
// waiting items aged upwards after every step (see ReadyQueue). Delayed items
// wait in due order (see DelayedList) and join the ready queue when due. The
// loop runs on its own Thread (Start; the loop is that thread's client) or
// on the thread that calls Run.
//
// Threads: Post, PostDelayed, Stop, Cancel and the setters may be called from
// any thread. Remove is refused (3) from any thread but the loop's own once
// that thread has been started; RemoveAll is refused (3) while the loop is
// not idle from any thread but its own Thread, so a loop run through Run()
// refuses it until it is idle again. Handlers run with no loop lock held and
// may post to their own loop; a handler that removes itself gets 1.
//
// Ownership: handlers are not owned; each accepted one gets Execute and then
// Release exactly once, or only Release when it is cancelled or still pending
// when the loop is destroyed. Stop(final) drains the loop (delayed items at
// once), runs `final`, and returns the loop to idle; posts while stopping
// are refused (0). Stop on an idle loop only records the final handler, and
// destroying an idle loop replaces it with none (it is then neither run nor
// released). Destruction stops the loop, waits for it to drain, and releases
// what is left; it must not happen on the loop's own thread.
// Post ids skip 0 (which posters read as refused) when their counter wraps.

#include <cstdint>

#include "runtime/DelayedList.h"
#include "runtime/Event.h"
#include "runtime/Mutex.h"
#include "runtime/ReadyQueue.h"
#include "runtime/Thread.h"
#include "runtime/ThreadClient.h"
#include "runtime/TimeBase.h"
#include "runtime/WorkItemPool.h"
#include "runtime/WorkLoopInterface.h"

namespace Quillan {

class WorkLoop : public WorkLoopInterface, public ThreadClient {
 public:
  // The millisecond tick the loop computes due times with. Shipped loops use
  // GetTickMs; tests hand in their own clock.
  using TickSource = uint32_t (*)();

  // `firstId` is the id of the first post; tests start near the wrap.
  explicit WorkLoop(TickSource tickSource = &GetTickMs, uint32_t firstId = 1);

  uint32_t Post(WorkHandler* handler, uint32_t priority) override;
  uint32_t PostDelayed(WorkHandler* handler, uint32_t delayMs, uint32_t priority) override;
  bool SetPriority(int level, int priorityClass) override;
  bool SetName(const char* name) override;
  // Also true when the thread could not be created: the loop is then marked
  // running with no thread to run it, and destruction releases its items.
  bool Start() override;
  int Stop(WorkHandler* finalHandler) override;
  void Cancel(uint32_t id) override;
  int Remove(uint32_t id, WorkHandler** handler) override;
  int RemoveAll(WorkHandler* handler) override;
  ~WorkLoop() override;
  void Run() override;
  // The loop's Thread calls this: runs the loop, then ends the thread.
  void Run(Thread& thread) override;

 private:
  enum State : uint8_t { kIdle = 0, kRunning = 1, kStopping = 2 };
  enum class Wait { kNone, kUntilWoken, kTimed };

  // Takes an item for a post, with its id; null when refused.
  WorkItem* NewItem(WorkHandler* handler, uint32_t priority);
  void RunUntilDrained();
  bool Step();
  // Under the lock: the next item (or null), aging and due items. False when
  // the loop has drained after a Stop.
  bool TakeNextItem(WorkItem** item);
  void MoveDueItems();
  static void RunItem(WorkItem* item);
  // Under the lock: recycles `item` and decides how to wait for more work.
  Wait FinishItem(WorkItem* item, uint32_t* waitMs);
  void RunFinalHandler();
  void ReleasePending();
  bool UnlinkAllOf(WorkHandler* handler);

  Mutex m_stateLock;
  uint64_t m_nextId = 1;
  WorkItemPool m_pool;
  ReadyQueue m_readyQueue;
  DelayedList m_delayedList;
  Event m_wakeEvent;
  State m_state = kIdle;
  uint8_t m_ownThread = 0;
  WorkHandler* m_finalHandler = nullptr;
  WorkItem* m_current = nullptr;
  Thread m_thread;
  Event m_finishedEvent;
  TickSource m_tickSource;
};

}  // namespace Quillan
