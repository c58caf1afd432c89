#pragma once
// ThreadClient: the work a Thread carries. The Thread calls Run on its own
// POSIX thread, and the hooks as the thread starts, suspends and ends; none
// is called with the Thread's lock held. A client ends its thread by calling
// Thread::RequestStop before Run returns. The client is not owned by the
// Thread and must outlive it.
// Operations in slot order: destructor, Run, then the hooks.

namespace Quillan {

class Thread;

class ThreadClient {
 public:
  virtual ~ThreadClient() = default;
  // The thread's work; called again while the thread stays running.
  virtual void Run(Thread& thread) = 0;
  // After Run has returned with stop requested, before OnStopped.
  virtual void OnStop() {}
  // When the thread is about to suspend, before OnSuspended.
  virtual void OnSuspend() {}
  // First thing on the new thread, after its priority was applied.
  virtual void OnStart() {}
  // The value the POSIX thread ends with.
  virtual void* GetExitValue() { return nullptr; }
  // Kept for the head unit's call table; the Thread never calls it.
  virtual void Reserved() {}
  virtual void OnSuspended() {}
  // Last call on the thread before it ends.
  virtual void OnStopped() {}
};

}  // namespace Quillan
