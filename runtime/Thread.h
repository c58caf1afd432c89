#pragma once
// Thread: one named POSIX thread with a 64 KiB stack that runs a
// ThreadClient. Its scheduling priority comes from the ThreadPriorityTable
// cell (priority class, level), default (3, 3), applied with the current
// policy when the thread starts. Name and priority take effect at Start.
//
// Start, Stop, the setters and the queries may be called from any thread
// but the thread itself must not Stop (Stop joins). The client may call
// RequestStop from inside Run to end the thread once Run returns. Destroying
// a Thread stops it. The client is not owned.
//
// Start on a thread whose POSIX thread still lives asks that thread to run
// the client again (and wakes it when suspended) instead of creating a
// second one; a POSIX thread that has ended on its own is joined first.
// A thread that cannot be created leaves the state running with no thread.

#include <pthread.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "runtime/Event.h"
#include "runtime/Mutex.h"

namespace Quillan {

class ThreadClient;

class Thread {
 protected:
  // The body the new POSIX thread runs: applies the priority, then drives
  // the client through the state machine. Returns the exit value.
  // (First in the call table, before the destructor.)
  virtual void* Main();

 public:
  enum State : int {
    kCreated = 0,
    kRunning = 1,
    kSuspendRequested = 2,
    kSuspended = 3,
    kStopRequested = 4,
    kStopped = 5,
  };

  static constexpr size_t kNameCapacity = 60;  // 59 characters and a zero
  static constexpr size_t kStackSize = 0x10000;

  // Loads the thread priority table.
  explicit Thread(ThreadClient* client);
  virtual ~Thread();
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  // Keeps the first 59 characters; null gives an empty name.
  void SetName(const char* name);
  std::string GetName();
  void SetPriority(int level, int priorityClass);
  // The table priority of the current cell, as applied at start; false when
  // the cell lies outside the table (the priority is then left alone).
  bool GetTablePriority(uint32_t* priority);

  void Start();
  // Ends the thread and joins it; nothing happens when it was never started
  // or is already stopped.
  void Stop();
  // Marks the thread stop requested; it ends once the client's Run returns.
  void RequestStop();
  // Marks the thread suspend requested; after Run returns it suspends until
  // Start or Stop.
  void RequestSuspend();
  State GetState();

  // The calling thread is this Thread's POSIX thread.
  bool IsCurrentThread();
  // A POSIX thread id is recorded and the caller is another thread.
  bool IsOtherThread();

 private:
  enum class Action { kRun, kStop, kEnd, kSuspend, kWait };

  static void* Entry(void* argument);
  void CreatePosixThread();
  void ApplyPriority();
  // Decides the next step of Main from the state; called under m_lock.
  Action NextAction();
  Action TakeRunRequest();

  char m_name[kNameCapacity];
  ThreadClient* m_client;
  State m_state = kCreated;
  int m_level = 3;
  int m_priorityClass = 3;
  Mutex m_lock;
  Event m_event;
  uint8_t m_runRequested = 0;
  pthread_t m_threadId{};
  bool m_hasThreadId = false;  // m_threadId is recorded
  bool m_joinable = false;     // a POSIX thread exists that nobody has joined
  bool m_ending = false;       // that POSIX thread has left its state loop
};

}  // namespace Quillan
