#pragma once
// RecordingWorkLoop: a work loop for tests that records every Post and
// PostDelayed call (delay, priority) and every Cancel. Posted handlers are
// held until the test runs them one by one with RunNext, in posting order;
// delays are recorded, not waited for. Thread-safe; handlers run without
// the loop's lock held. Destruction releases (without running) whatever is
// still held.

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "runtime/WorkLoopInterface.h"

namespace pelorin_test {

struct PostRecord {
  uint32_t id = 0;
  bool delayed = false;  // PostDelayed rather than Post
  uint32_t delayMs = 0;
  uint32_t priority = 0;
  bool cancelled = false;
};

class RecordingWorkLoop : public Quillan::WorkLoopInterface {
 public:
  ~RecordingWorkLoop() override;

  uint32_t Post(Quillan::WorkHandler* handler, uint32_t priority) override {
    return Accept(handler, false, 0, priority);
  }
  uint32_t PostDelayed(Quillan::WorkHandler* handler, uint32_t delayMs,
                       uint32_t priority) override {
    return Accept(handler, true, delayMs, priority);
  }
  bool SetPriority(int, int) override { return true; }
  bool SetName(const char* name) override;
  bool Start() override { return true; }
  int Stop(Quillan::WorkHandler* finalHandler) override;
  void Cancel(uint32_t id) override;
  int Remove(uint32_t, Quillan::WorkHandler**) override { return 2; }
  int RemoveAll(Quillan::WorkHandler*) override { return 2; }
  void Run() override {}

  // Runs the earliest posted handler still held (only releases
  // it when it was cancelled). False when none is held.
  bool RunNext();
  // Runs held handlers until none is left or `limit` have run; the count.
  size_t RunAll(size_t limit = 100000);
  // Handlers held and not yet run, cancelled ones included.
  size_t Held() const;
  // Held handlers that are not cancelled.
  size_t LiveHeld() const;

  // Every accepted post, in order.
  std::vector<PostRecord> Posts() const;
  // Delays of the accepted PostDelayed calls, in order.
  std::vector<uint32_t> Delays() const;
  std::string Name() const;

  // Refuse every post from now on (Post and PostDelayed return 0).
  void RefusePosts(bool refuse);
  // Let cancelled handlers run anyway, as when the loop had already taken
  // the item when Cancel came.
  void IgnoreCancel(bool ignore);

 private:
  struct HeldItem {
    uint32_t id;
    Quillan::WorkHandler* handler;
  };
  uint32_t Accept(Quillan::WorkHandler* handler, bool delayed, uint32_t delayMs, uint32_t priority);
  bool IsCancelled(uint32_t id) const;

  mutable std::mutex m_lock;
  uint32_t m_nextId = 1;
  std::vector<PostRecord> m_posts;
  std::vector<HeldItem> m_held;
  std::string m_name;
  bool m_stopping = false;
  bool m_refuse = false;
  bool m_ignoreCancel = false;
};

}  // namespace pelorin_test
