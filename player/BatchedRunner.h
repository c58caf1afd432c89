#pragma once
// BatchedRunner: replays the whole events file in a single step, without any
// delay, then reports the end. The step holds the runner's lock throughout,
// so other callers of the runner, and other work on the same loop, wait
// until the file is done. A runner shut down meanwhile stops at the next
// record without reporting the end. Runs on the work loop's thread.

#include "player/Runner.h"

namespace Quillan {

class BatchedRunner : public Runner {
 public:
  BatchedRunner() = default;
  ~BatchedRunner() override;

  void Execute() override;
};

}  // namespace Quillan
