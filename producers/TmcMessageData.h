#pragma once
// TmcMessageData: one TMC message as a traffic-data listener receives it,
// behind a shared pointer that the producer and the listeners share.
// A fresh one has every number 0 and no tmcData array.

#include <cstdint>
#include <memory>

#include "CIUInt8Array.h"

namespace Quillan {

struct TmcMessageData {
  uint32_t timeStamp = 0;
  uint8_t ltn = 0;
  uint8_t sid = 0;
  uint32_t pid = 0;
  std::shared_ptr<CIUInt8Array> tmcData;
};

}  // namespace Quillan
