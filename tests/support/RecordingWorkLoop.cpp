#include "tests/support/RecordingWorkLoop.h"

#include "runtime/WorkHandler.h"

namespace pelorin_test {

RecordingWorkLoop::~RecordingWorkLoop() {
  for (const HeldItem& item : m_held) item.handler->Release();
}

uint32_t RecordingWorkLoop::Accept(Quillan::WorkHandler* handler, bool delayed, uint32_t delayMs,
                                   uint32_t priority) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (handler == nullptr || m_refuse || m_stopping) return 0;
  const uint32_t id = m_nextId++;
  m_held.push_back(HeldItem{id, handler});
  m_posts.push_back(PostRecord{id, delayed, delayMs, priority, false});
  return id;
}

bool RecordingWorkLoop::SetName(const char* name) {
  std::lock_guard<std::mutex> guard(m_lock);
  m_name = name ? name : "";
  return true;
}

int RecordingWorkLoop::Stop(Quillan::WorkHandler* finalHandler) {
  {
    std::lock_guard<std::mutex> guard(m_lock);
    m_stopping = true;
  }
  if (finalHandler != nullptr) finalHandler->Release();
  return Held() > 0 ? 1 : 0;
}

void RecordingWorkLoop::Cancel(uint32_t id) {
  std::lock_guard<std::mutex> guard(m_lock);
  for (PostRecord& post : m_posts) {
    if (post.id == id) post.cancelled = true;
  }
}

bool RecordingWorkLoop::IsCancelled(uint32_t id) const {
  for (const PostRecord& post : m_posts) {
    if (post.id == id) return post.cancelled;
  }
  return false;
}

bool RecordingWorkLoop::RunNext() {
  HeldItem item{0, nullptr};
  bool cancelled = false;
  {
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_held.empty()) return false;
    item = m_held.front();
    m_held.erase(m_held.begin());
    cancelled = IsCancelled(item.id) && !m_ignoreCancel;
  }
  if (!cancelled) item.handler->Execute();
  item.handler->Release();
  return true;
}

size_t RecordingWorkLoop::RunAll(size_t limit) {
  size_t count = 0;
  while (count < limit && RunNext()) ++count;
  return count;
}

size_t RecordingWorkLoop::Held() const {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_held.size();
}

size_t RecordingWorkLoop::LiveHeld() const {
  std::lock_guard<std::mutex> guard(m_lock);
  size_t live = 0;
  for (const HeldItem& item : m_held) {
    if (!IsCancelled(item.id)) ++live;
  }
  return live;
}

std::vector<PostRecord> RecordingWorkLoop::Posts() const {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_posts;
}

std::vector<uint32_t> RecordingWorkLoop::Delays() const {
  std::lock_guard<std::mutex> guard(m_lock);
  std::vector<uint32_t> delays;
  for (const PostRecord& post : m_posts) {
    if (post.delayed) delays.push_back(post.delayMs);
  }
  return delays;
}

std::string RecordingWorkLoop::Name() const {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_name;
}

void RecordingWorkLoop::RefusePosts(bool refuse) {
  std::lock_guard<std::mutex> guard(m_lock);
  m_refuse = refuse;
}

void RecordingWorkLoop::IgnoreCancel(bool ignore) {
  std::lock_guard<std::mutex> guard(m_lock);
  m_ignoreCancel = ignore;
}

}  // namespace pelorin_test
