#pragma once
// TmcServiceListMessage: one complete TMC service list built from a "$TSL"
// record. It shares the list and its entries with the TmcServiceListProducer
// that built it and with every listener it is delivered to. Used on the work
// loop's thread.

#include "producers/ProducedMessage.h"
#include "producers/ServiceList.h"

namespace Quillan {

class TmcServiceListMessage : public ProducedMessage {
 public:
  explicit TmcServiceListMessage(ServiceList list);
  // Calls the listener's OnServiceList with the shared list.
  void DeliverTo(TrafficDataListener& listener) override;

 private:
  ServiceList m_list;
};

}  // namespace Quillan
