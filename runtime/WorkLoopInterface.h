#pragma once
// WorkLoopInterface: a single-threaded executor with priorities and delays.
// One thread runs every handler of a loop, one at a time: larger priority
// first, ties in posting order, waiting items aged upwards; delayed items
// become ready when due. Post, PostDelayed, Stop, Cancel and the setters may
// be called from any thread; Remove and RemoveAll only from the loop's
// thread once it runs. Release a loop with delete; destruction stops it,
// waits for its thread and releases every pending handler.
// Operations in slot order (the destructor sits among them).

#include <cstdint>

namespace Quillan {

class WorkHandler;

class WorkLoopInterface {
 public:
  // Queue `handler` at `priority`; returns its id, or 0 (null handler, loop
  // stopping, no item) in which case the loop does not hold the handler.
  virtual uint32_t Post(WorkHandler* handler, uint32_t priority) = 0;
  // As Post, ready `delayMs` milliseconds from now.
  virtual uint32_t PostDelayed(WorkHandler* handler, uint32_t delayMs, uint32_t priority) = 0;
  // Cell of the thread priority table for the loop's own thread; true.
  virtual bool SetPriority(int level, int priorityClass) = 0;
  // Name of the loop's own thread (at most 59 characters); true.
  virtual bool SetName(const char* name) = 0;
  // Starts the loop on its own thread: true when it started now, false when
  // it was already running.
  virtual bool Start() = 0;
  // Stop after running everything pending (delayed items at once), then
  // `finalHandler`. 2 when already stopping; else 1 if items were pending,
  // 0 if none.
  virtual int Stop(WorkHandler* finalHandler) = 0;
  // Marks the item cancelled: it is released at its turn without running.
  virtual void Cancel(uint32_t id) = 0;
  // Unlinks the item and hands its handler back unreleased: 0 done, 1 it is
  // executing now, 2 no such item, 3 called from a foreign thread.
  virtual int Remove(uint32_t id, WorkHandler** handler) = 0;
  // Unlinks every item of the handler (and clears it as final handler):
  // 0 something removed, 1 it is executing now, 2 nothing, 3 foreign thread.
  virtual int RemoveAll(WorkHandler* handler) = 0;
  virtual ~WorkLoopInterface() = default;
  // Runs the loop on the calling thread until it has drained after a Stop.
  virtual void Run() = 0;
};

// Creates a work loop on the heap (its thread named "WL [noname]"), or null
// when it cannot be allocated.
WorkLoopInterface* CreateWorkLoop();

}  // namespace Quillan
