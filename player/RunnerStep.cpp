#include "player/RunnerStep.h"

#include "player/Runner.h"

namespace Quillan {

RunnerStep::RunnerStep(Runner* runner, uint32_t generation)
    : m_runner(runner), m_generation(generation) {}

void RunnerStep::Execute() { m_runner->RunStep(m_generation); }

void RunnerStep::Release() { delete this; }

}  // namespace Quillan
