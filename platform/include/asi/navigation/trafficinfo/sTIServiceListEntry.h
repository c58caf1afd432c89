#pragma once
// sTIServiceListEntry: one entry of the traffic-info TMC service list, with
// its service description and service identifiers. Plain data, shared by
// std::shared_ptr between the producer and the traffic-data listeners.

#include <cstdint>
#include <memory>

#include "CIString.h"

namespace asi {
namespace navigation {
namespace trafficinfo {

struct sTIServiceDescription {
  uint8_t sd_SID = 0;
  uint8_t sd_MGS = 0;
  uint8_t sd_LTCC = 0;
  uint8_t sd_LTN = 0;
  uint32_t sd_PID = 0;
  uint32_t sd_ST = 0;
  std::shared_ptr<CIString> sd_SPN;
  std::shared_ptr<CIString> sd_sendername;
  uint8_t sd_Q = 0;
};

struct sTIServiceIdentifiers {
  uint8_t SID_A = 0;
  uint8_t SID_B = 0;
  uint8_t SID_C = 0;
  int64_t SS_ID = 0;
};

struct sTIServiceListEntry {
  uint32_t serviceType = 0;
  std::shared_ptr<sTIServiceDescription> serviceDescription;
  std::shared_ptr<sTIServiceIdentifiers> serviceIdentifiers;
  uint32_t monitorState = 0;
};

}  // namespace trafficinfo
}  // namespace navigation
}  // namespace asi
