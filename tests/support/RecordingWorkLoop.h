#pragma once
// RecordingWorkLoop: a work loop for tests that records every post (delay,
// priority, cancellation) and holds the handlers until the test runs them,
// in posting order; delays are recorded, not waited for. Thread-safe;
// handlers run without the lock held. Destruction releases what is held.

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "runtime/WorkLoopInterface.h"

namespace pelorin_test {

struct PostRecord {
  bool delayed = false;  // PostDelayed rather than Post
  uint32_t delayMs = 0;
  uint32_t priority = 0;
  bool cancelled = false;
};

class RecordingWorkLoop : public Quillan::WorkLoopInterface {
 public:
  ~RecordingWorkLoop() override;
  uint32_t Post(Quillan::WorkHandler* handler, uint32_t priority) override {
    return Accept(handler, {false, 0, priority});
  }
  uint32_t PostDelayed(Quillan::WorkHandler* handler, uint32_t delayMs,
                       uint32_t priority) override {
    return Accept(handler, {true, delayMs, priority});
  }
  bool SetPriority(int, int) override { return true; }
  bool SetName(const char* name) override { return Locked([&] { m_name = name ? name : ""; }); }
  bool Start() override { return true; }
  int Stop(Quillan::WorkHandler* finalHandler) override;
  void Cancel(uint32_t id) override {
    Locked([&] { if (id - 1 < m_posts.size()) m_posts[id - 1].cancelled = true; });
  }
  int Remove(uint32_t, Quillan::WorkHandler**) override { return 2; }
  int RemoveAll(Quillan::WorkHandler*) override { return 2; }
  void Run() override {}

  // Runs the earliest held handler (only releases it when cancelled); false
  // when none is held.
  bool RunNext();
  // Runs held handlers until none is left or `limit` have run; the count.
  size_t RunAll(size_t limit = 100000);
  // Handlers held and not yet run, cancelled ones included or not.
  size_t Held() const { return Count(true); }
  size_t LiveHeld() const { return Count(false); }
  std::vector<PostRecord> Posts() const;
  std::vector<uint32_t> Delays() const;  // of the PostDelayed calls, in order
  std::string Name() const;
  // Refuse every post from now on (both posts return 0).
  void RefusePosts(bool refuse) { Locked([&] { m_refuse = refuse; }); }
  // Let cancelled handlers run anyway, as when the loop had already taken
  // the item when Cancel came.
  void IgnoreCancel(bool ignore) { Locked([&] { m_ignoreCancel = ignore; }); }

 private:
  struct HeldItem {
    size_t post;
    Quillan::WorkHandler* handler;
  };
  uint32_t Accept(Quillan::WorkHandler* handler, PostRecord post);
  size_t Count(bool withCancelled) const;
  template <typename F>
  bool Locked(F f) {
    std::lock_guard<std::mutex> guard(m_lock);
    f();
    return true;
  }

  mutable std::mutex m_lock;
  std::vector<PostRecord> m_posts;  // a post's id is its index plus one
  std::vector<HeldItem> m_held;
  std::string m_name;
  bool m_stopping = false;
  bool m_refuse = false;
  bool m_ignoreCancel = false;
};

}  // namespace pelorin_test
