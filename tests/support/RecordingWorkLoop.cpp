#include "tests/support/RecordingWorkLoop.h"

#include "runtime/WorkHandler.h"

namespace pelorin_test {

RecordingWorkLoop::~RecordingWorkLoop() {
  for (const HeldItem& item : m_held) item.handler->Release();
}

uint32_t RecordingWorkLoop::Accept(Quillan::WorkHandler* handler, PostRecord post) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (handler == nullptr || m_refuse || m_stopping) return 0;
  m_held.push_back(HeldItem{m_posts.size(), handler});
  m_posts.push_back(post);
  return static_cast<uint32_t>(m_posts.size());
}

int RecordingWorkLoop::Stop(Quillan::WorkHandler* finalHandler) {
  Locked([&] { m_stopping = true; });
  if (finalHandler != nullptr) finalHandler->Release();
  return Held() > 0 ? 1 : 0;
}

bool RecordingWorkLoop::RunNext() {
  HeldItem item{0, nullptr};
  bool cancelled = false;
  {
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_held.empty()) return false;
    item = m_held.front();
    m_held.erase(m_held.begin());
    cancelled = m_posts[item.post].cancelled && !m_ignoreCancel;
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

size_t RecordingWorkLoop::Count(bool withCancelled) const {
  std::lock_guard<std::mutex> guard(m_lock);
  size_t count = 0;
  for (const HeldItem& item : m_held) count += withCancelled || !m_posts[item.post].cancelled;
  return count;
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

}  // namespace pelorin_test
