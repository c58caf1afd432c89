#pragma once
// TmcMessage: one TMC message built from a "$TMC" record. It shares its
// TmcMessageData with the TmcMessageProducer that built it and with every
// listener it is delivered to. Used on the work loop's thread.

#include <memory>

#include "producers/ProducedMessage.h"
#include "producers/TmcMessageData.h"

namespace Quillan {

class TmcMessage : public ProducedMessage {
 public:
  explicit TmcMessage(std::shared_ptr<TmcMessageData> data);
  // Calls the listener's OnTmcMessage with the shared data.
  void DeliverTo(TrafficDataListener& listener) override;

 private:
  std::shared_ptr<TmcMessageData> m_data;
};

}  // namespace Quillan
