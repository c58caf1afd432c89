#pragma once
// RunnerStep: the work handler that carries one step of a runner on its work
// loop. It points to its runner (not owned) and remembers the runner's chain
// generation at posting time. Every posting creates a fresh step; the loop
// calls Execute and then Release once, or only Release when it drops the
// step unexecuted. Release deletes the step. Both run on the loop's thread.

#include <cstdint>

#include "runtime/WorkHandler.h"

namespace Quillan {

class Runner;

class RunnerStep : public WorkHandler {
 public:
  RunnerStep(Runner* runner, uint32_t generation);

  void Execute() override;
  void Release() override;

 private:
  Runner* m_runner;
  uint32_t m_generation;
};

}  // namespace Quillan
