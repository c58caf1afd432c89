#include "runtime/WorkLoop.h"

#include <new>
#include <string>

#include "SystemCommon/Classification/ModuleId.h"
#include "SystemCommon/Classification/ScopedId.h"
#include "runtime/ScopedLock.h"
#include "runtime/WorkHandler.h"

namespace Quillan {
namespace {

void ToAscii(std::string& text) {
  for (char& character : text) {
    if (static_cast<unsigned char>(character) > 0x7F) character = '?';
  }
}

// Classifies the loop's thread for the head unit's diagnostics.
void ClassifyThread(const std::string& threadName) {
  std::string moduleName = "WL_" + threadName;
  ToAscii(moduleName);
  const SystemCommon::Classification::ModuleId module(moduleName.c_str());
  SystemCommon::Classification::ScopedId(module, 0, nullptr, -1);
}

}  // namespace

WorkLoopInterface* CreateWorkLoop() { return new (std::nothrow) WorkLoop(); }

WorkLoop::WorkLoop(TickSource tickSource, uint32_t firstId)
    : m_nextId(firstId), m_thread(this), m_tickSource(tickSource) {
  m_thread.SetName("WL [noname]");
}

WorkLoop::~WorkLoop() {
  Stop(nullptr);
  State state;
  uint8_t ownThread;
  {
    ScopedLock guard(m_stateLock);
    state = m_state;
    ownThread = m_ownThread;
  }
  if (state != kIdle && ownThread == 0) m_finishedEvent.Wait();
  // Joins the loop's own thread, whether it is still draining or has ended.
  m_thread.Stop();
  RunFinalHandler();
  ReleasePending();
}

uint32_t WorkLoop::Post(WorkHandler* handler, uint32_t priority) {
  ScopedLock guard(m_stateLock);
  WorkItem* item = NewItem(handler, priority);
  if (item == nullptr) return 0;
  const bool wasEmpty = m_readyQueue.IsEmpty();
  m_readyQueue.Insert(item);
  if (wasEmpty) m_wakeEvent.Set();
  return item->id;
}

uint32_t WorkLoop::PostDelayed(WorkHandler* handler, uint32_t delayMs, uint32_t priority) {
  ScopedLock guard(m_stateLock);
  if (!m_delayedList.Reserve()) return 0;
  WorkItem* item = NewItem(handler, priority);
  if (item == nullptr) return 0;
  DelayedList::Arm(item, m_tickSource(), delayMs);
  if (m_delayedList.Insert(item)) m_wakeEvent.Set();
  return item->id;
}

WorkItem* WorkLoop::NewItem(WorkHandler* handler, uint32_t priority) {
  if (handler == nullptr || m_state == kStopping) return nullptr;
  WorkItem* item = m_pool.Acquire();
  if (item == nullptr) return nullptr;
  item->handler = handler;
  item->priority = priority;
  // Posters read id 0 as refused: the counter's low half skips it.
  if (static_cast<uint32_t>(m_nextId) == 0) ++m_nextId;
  item->id = static_cast<uint32_t>(m_nextId++);
  return item;
}

bool WorkLoop::SetPriority(int level, int priorityClass) {
  m_thread.SetPriority(level, priorityClass);
  return true;
}

bool WorkLoop::SetName(const char* name) {
  m_thread.SetName(name);
  return true;
}

bool WorkLoop::Start() {
  {
    ScopedLock guard(m_stateLock);
    if (m_state != kIdle) return false;
    m_state = kRunning;
    m_ownThread = 1;
  }
  m_thread.Start();
  return true;
}

int WorkLoop::Stop(WorkHandler* finalHandler) {
  ScopedLock guard(m_stateLock);
  if (m_state == kStopping) return 2;
  m_finalHandler = finalHandler;
  if (m_state == kRunning) {
    m_state = kStopping;
    m_finishedEvent.Reset();
    m_wakeEvent.Set();
  }
  return m_readyQueue.IsEmpty() && m_delayedList.IsEmpty() ? 0 : 1;
}

void WorkLoop::Cancel(uint32_t id) {
  ScopedLock guard(m_stateLock);
  if (WorkItem* item = m_readyQueue.Find(id)) {
    item->cancelled = 1;
  } else if (WorkItem* delayed = m_delayedList.Find(id)) {
    // Due now: it is given up at the loop's next step.
    delayed->cancelled = 1;
    m_delayedList.Reschedule(delayed, m_tickSource());
  }
}

int WorkLoop::Remove(uint32_t id, WorkHandler** handler) {
  if (m_thread.IsOtherThread()) return 3;
  ScopedLock guard(m_stateLock);
  if (m_current != nullptr && m_current->id == id) return 1;
  if (handler != nullptr) *handler = nullptr;
  WorkItem* item = m_readyQueue.Find(id);
  if (item != nullptr) {
    m_readyQueue.Unlink(item);
  } else if ((item = m_delayedList.Find(id)) != nullptr) {
    m_delayedList.Unlink(item);
  } else {
    return 2;
  }
  if (handler != nullptr) *handler = item->handler;
  m_pool.GiveBack(item);
  return 0;
}

int WorkLoop::RemoveAll(WorkHandler* handler) {
  const bool onLoopThread = m_thread.IsCurrentThread();
  ScopedLock guard(m_stateLock);
  if (m_state != kIdle && !onLoopThread) return 3;
  if (handler == nullptr) return 2;
  bool cleared = false;
  if (m_finalHandler == handler) {
    m_finalHandler = nullptr;
    cleared = true;
  }
  if (UnlinkAllOf(handler)) cleared = true;
  if (m_current != nullptr && m_current->handler == handler) return 1;
  return cleared ? 0 : 2;
}

bool WorkLoop::UnlinkAllOf(WorkHandler* handler) {
  bool unlinked = false;
  for (WorkItem *item = m_readyQueue.Head(), *next = nullptr; item != nullptr; item = next) {
    next = item->next;
    if (item->handler != handler) continue;
    m_readyQueue.Unlink(item);
    m_pool.GiveBack(item);
    unlinked = true;
  }
  const bool unlinkedDelayed =
      m_delayedList.UnlinkIf([handler](const WorkItem* item) { return item->handler == handler; },
                             [this](WorkItem* item) { m_pool.GiveBack(item); });
  return unlinked || unlinkedDelayed;
}

void WorkLoop::Run() {
  {
    ScopedLock guard(m_stateLock);
    if (m_state != kIdle) return;
    m_ownThread = 0;
    m_state = kRunning;
  }
  RunUntilDrained();
}

void WorkLoop::Run(Thread& thread) {
  ClassifyThread(thread.GetName());
  RunUntilDrained();
  thread.RequestStop();
}

void WorkLoop::RunUntilDrained() {
  while (Step()) {
  }
  RunFinalHandler();
  ScopedLock guard(m_stateLock);
  m_state = kIdle;
  m_finishedEvent.Set();
}

bool WorkLoop::Step() {
  WorkItem* item = nullptr;
  if (!TakeNextItem(&item)) return false;
  if (item != nullptr) RunItem(item);
  uint32_t waitMs = 0;
  switch (FinishItem(item, &waitMs)) {
    case Wait::kNone:
      break;
    case Wait::kUntilWoken:
      m_wakeEvent.Wait();
      break;
    case Wait::kTimed:
      m_wakeEvent.TimedWait(waitMs);
      break;
  }
  return true;
}

bool WorkLoop::TakeNextItem(WorkItem** item) {
  ScopedLock guard(m_stateLock);
  if (m_state == kStopping && m_readyQueue.IsEmpty() && m_delayedList.IsEmpty()) return false;
  *item = m_readyQueue.PopHead();
  m_readyQueue.Age();
  MoveDueItems();
  m_current = *item;
  return true;
}

void WorkLoop::MoveDueItems() {
  // When stopping, every delayed item moves at once, due or not.
  const uint32_t now = m_tickSource();
  const bool all = m_state == kStopping;
  while (WorkItem* item = m_delayedList.PopDue(now, all)) m_readyQueue.Insert(item);
}

void WorkLoop::RunItem(WorkItem* item) {
  if (item->cancelled == 0) item->handler->Execute();
  item->handler->Release();
}

WorkLoop::Wait WorkLoop::FinishItem(WorkItem* item, uint32_t* waitMs) {
  ScopedLock guard(m_stateLock);
  m_current = nullptr;
  if (item != nullptr) m_pool.GiveBack(item);
  if (!m_readyQueue.IsEmpty() || m_state == kStopping) return Wait::kNone;
  // Reset under the lock: a post after this point sets the event again, so
  // the wait below cannot miss it.
  m_wakeEvent.Reset();
  const WorkItem* next = m_delayedList.Head();
  if (next == nullptr) return Wait::kUntilWoken;
  const int32_t remaining = TickDiff(next->dueOrAge, m_tickSource());
  if (remaining <= 0) return Wait::kNone;
  *waitMs = static_cast<uint32_t>(remaining);
  return Wait::kTimed;
}

void WorkLoop::RunFinalHandler() {
  WorkHandler* finalHandler;
  {
    ScopedLock guard(m_stateLock);
    finalHandler = m_finalHandler;
  }
  if (finalHandler == nullptr) return;
  finalHandler->Execute();
  finalHandler->Release();
  ScopedLock guard(m_stateLock);
  m_finalHandler = nullptr;
}

void WorkLoop::ReleasePending() {
  for (;;) {
    WorkItem* item;
    {
      ScopedLock guard(m_stateLock);
      item = m_readyQueue.PopHead();
      if (item == nullptr) item = m_delayedList.PopDue(0, true);
      m_current = item;
    }
    if (item == nullptr) return;
    item->handler->Release();
    ScopedLock guard(m_stateLock);
    m_current = nullptr;
    m_pool.GiveBack(item);
  }
}

}  // namespace Quillan
