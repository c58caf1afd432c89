#pragma once
// TimeAdjuster: shifts the date-time fields of a traffic message (in the
// host's own message layout) from recording time to the present. Called by
// the host on its own threads.

#include <cstdint>

namespace Quillan {

class TimeAdjuster {
 public:
  virtual ~TimeAdjuster() = default;
  // `message` points to the host's traffic message: byte 0 its kind, bytes
  // 14..17 and 18..21 two date-times (month, day, hour, minute).
  virtual void AdjustMessageTimes(uint8_t* message) = 0;
};

}  // namespace Quillan
