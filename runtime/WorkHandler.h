#pragma once
// WorkHandler: a piece of work posted to a WorkLoop. The loop calls Execute
// and then Release exactly once, or only Release when it drops the item
// unexecuted (a cancelled item, or one still pending when the loop is
// destroyed). The loop does not own the handler: Release is where
// the handler gives itself up (a one-shot handler deletes itself there).
// Both run on the loop's thread, without any loop lock held.

#include <cstdint>

namespace Quillan {

class WorkHandler {
 public:
  // Takes its id from the platform's id provider, for the name "no_name".
  WorkHandler();

  virtual void Execute() = 0;
  virtual void Release() = 0;
  virtual ~WorkHandler();
  virtual uint32_t GetId() { return m_id; }
  virtual uint32_t GetId() const { return m_id; }

 private:
  uint32_t m_id;
};

}  // namespace Quillan
