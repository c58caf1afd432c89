#include "module/SpeedTable.h"

#include "runtime/DataPoolReader.h"
#include "runtime/PoolValue.h"

namespace Quillan {
namespace {

PoolValue g_speedTable[] = {
    PoolValue(PoolValue::kText, 0),
    PoolValue(PoolValue::kInteger, SpeedTable::kNormalSpeedPercent),
    PoolValue(PoolValue::kText, 0),
};

}  // namespace

DataPoolReader* SpeedTable::CreateReader(DataPoolInterface* dataPool) {
  return new DataPoolReader(g_speedTable, kMinIndex, kMaxIndex, kMask, dataPool, kClientId);
}

}  // namespace Quillan
