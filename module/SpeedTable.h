#pragma once
// SpeedTable: the module-wide value table behind the data-pool client 76,
// through which the data pool hands the module its playback speed. Three
// entries: index 0 an empty text, index 1 the speed in percent (integer,
// starting at 100, id 0x4c000001), index 2 an empty text; ids are served for
// indices 1 and 2 under the mask 0x00FFFFFF.
//
// The table is a static object of the module: built when the module is
// loaded, destroyed (in reverse order) when it is unloaded, so a speed the
// data pool set survives an application that is destroyed and created again
// within one load. It is only touched inside the client's read and write
// sections.

#include <cstdint>

class DataPoolInterface;

namespace Quillan {

class DataPoolReader;

class SpeedTable {
 public:
  static constexpr uint32_t kClientId = 76;
  static constexpr uint32_t kSpeedId = 0x4c000001u;
  static constexpr uint32_t kMask = 0x00FFFFFFu;
  static constexpr uint32_t kMinIndex = 1;
  static constexpr uint32_t kMaxIndex = 2;
  static constexpr int32_t kNormalSpeedPercent = 100;

  // A new client over the table on `dataPool`; the caller owns it.
  static DataPoolReader* CreateReader(DataPoolInterface* dataPool);
};

}  // namespace Quillan
