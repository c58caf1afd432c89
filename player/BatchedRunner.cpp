#include "player/BatchedRunner.h"

#include "runtime/ScopedLock.h"
#include "runtime/Trace.h"

namespace Quillan {

BatchedRunner::~BatchedRunner() = default;

void BatchedRunner::Execute() {
  PELORIN_TRACE(2, "BatchedRunner::Execute");
  ScopedLock lock(m_lock);
  Record record;
  while (!IsShutDown()) {
    if (ReadNextRecord(record) != ReadStatus::kRecord) {
      NotifyFinished();
      return;
    }
    if (!DispatchRecord(record)) return;
  }
}

}  // namespace Quillan
