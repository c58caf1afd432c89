#include "runtime/Thread.h"

#include <sched.h>

#include <cstring>

#include "runtime/ScopedLock.h"
#include "runtime/SystemExtensions.h"
#include "runtime/ThreadClient.h"
#include "runtime/ThreadPriorityTable.h"

namespace Quillan {

Thread::Thread(ThreadClient* client) : m_client(client) {
  SetName("nameless_thread");
  ThreadPriorityTable::Load();
}

Thread::~Thread() { Stop(); }

void Thread::SetName(const char* name) {
  ScopedLock guard(m_lock);
  std::strncpy(m_name, name != nullptr ? name : "", kNameCapacity - 1);
  m_name[kNameCapacity - 1] = '\0';
}

std::string Thread::GetName() {
  ScopedLock guard(m_lock);
  return std::string(m_name);
}

void Thread::SetPriority(int level, int priorityClass) {
  ScopedLock guard(m_lock);
  m_level = level;
  m_priorityClass = priorityClass;
}

bool Thread::GetTablePriority(uint32_t* priority) {
  ScopedLock guard(m_lock);
  return ThreadPriorityTable::Lookup(m_priorityClass, m_level, priority);
}

void Thread::Start() {
  for (;;) {
    m_lock.Lock();
    if (m_joinable && m_ending) {
      // The earlier POSIX thread has left its loop: join it, then start anew.
      const pthread_t ended = m_threadId;
      m_joinable = false;
      m_lock.Unlock();
      pthread_join(ended, nullptr);
      continue;
    }
    m_runRequested = 1;
    m_state = kRunning;
    if (m_joinable) {
      m_event.Set();  // the living thread picks the request up
    } else {
      CreatePosixThread();
    }
    m_lock.Unlock();
    return;
  }
}

void Thread::CreatePosixThread() {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackSize);
  pthread_t id;
  if (pthread_create(&id, &attributes, &Thread::Entry, this) == 0) {
    m_threadId = id;
    m_hasThreadId = true;
    m_joinable = true;
    m_ending = false;
  }
  pthread_attr_destroy(&attributes);
}

void Thread::Stop() {
  m_lock.Lock();
  if (m_state == kCreated || m_state == kStopped) {
    m_lock.Unlock();
    return;
  }
  m_state = kStopRequested;
  m_event.Set();
  const bool join = m_joinable;
  const pthread_t id = m_threadId;
  m_joinable = false;
  m_lock.Unlock();

  if (join) pthread_join(id, nullptr);

  ScopedLock guard(m_lock);
  m_hasThreadId = false;
  m_threadId = pthread_t{};
  m_state = kStopped;
}

void Thread::RequestStop() {
  ScopedLock guard(m_lock);
  m_state = kStopRequested;
}

void Thread::RequestSuspend() {
  ScopedLock guard(m_lock);
  m_state = kSuspendRequested;
}

Thread::State Thread::GetState() {
  ScopedLock guard(m_lock);
  return m_state;
}

bool Thread::IsCurrentThread() {
  ScopedLock guard(m_lock);
  return m_hasThreadId && pthread_equal(m_threadId, pthread_self()) != 0;
}

bool Thread::IsOtherThread() {
  ScopedLock guard(m_lock);
  return m_hasThreadId && pthread_equal(m_threadId, pthread_self()) == 0;
}

void* Thread::Entry(void* argument) {
  Thread* thread = static_cast<Thread*>(argument);
  NameCurrentThread(thread->GetName().c_str());
  return thread->Main();
}

void* Thread::Main() {
  ApplyPriority();
  m_client->OnStart();
  for (;;) {
    m_lock.Lock();
    const Action action = NextAction();
    m_lock.Unlock();
    switch (action) {
      case Action::kRun:
        m_client->Run(*this);
        break;
      case Action::kStop:
        m_client->OnStop();
        m_client->OnStopped();
        return m_client->GetExitValue();
      case Action::kEnd:
        return m_client->GetExitValue();
      case Action::kSuspend:
        m_client->OnSuspend();
        m_client->OnSuspended();
        m_event.Wait();
        break;
      case Action::kWait:
        m_event.Wait();
        break;
    }
  }
}

void Thread::ApplyPriority() {
  int policy = 0;
  sched_param parameters{};
  if (pthread_getschedparam(pthread_self(), &policy, &parameters) != 0) return;
  uint32_t priority = 0;
  if (!GetTablePriority(&priority)) return;
  parameters.sched_priority = static_cast<int>(priority);
  // Not examined: a policy without priorities (SCHED_OTHER on Linux) refuses
  // it and the thread keeps the priority it was created with.
  pthread_setschedparam(pthread_self(), policy, &parameters);
}

Thread::Action Thread::NextAction() {
  switch (m_state) {
    case kRunning:
      return TakeRunRequest();
    case kStopRequested:
      if (m_runRequested) return TakeRunRequest();
      m_ending = true;
      return Action::kStop;
    case kSuspendRequested:
      if (m_runRequested) return TakeRunRequest();
      m_state = kSuspended;
      m_event.Reset();
      return Action::kSuspend;
    case kSuspended:
      if (m_runRequested) return TakeRunRequest();
      m_event.Reset();
      return Action::kWait;
    case kCreated:
    case kStopped:
      break;
  }
  m_ending = true;
  return Action::kEnd;
}

Thread::Action Thread::TakeRunRequest() {
  m_runRequested = 0;
  return Action::kRun;
}

}  // namespace Quillan
