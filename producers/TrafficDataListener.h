#pragma once
// TrafficDataListener: how TMC data leaves the module towards the head
// unit's traffic services. Implemented by the host; registered with the
// RecordDispatcher. Called on the player's work-loop thread; a listener may
// keep the shared pointers it receives. Operations in slot order.

#include <memory>

#include "producers/ServiceList.h"
#include "producers/TmcMessageData.h"

namespace Quillan {

class TrafficDataListener {
 public:
  virtual void OnServiceList(ServiceList list) = 0;
  virtual void Reserved1() {}
  virtual void OnTmcMessage(std::shared_ptr<TmcMessageData> message) = 0;
  virtual ~TrafficDataListener() = default;
};

}  // namespace Quillan
