#include "producers/TmcMessage.h"

#include <utility>

#include "producers/TrafficDataListener.h"

namespace Quillan {

TmcMessage::TmcMessage(std::shared_ptr<TmcMessageData> data) : m_data(std::move(data)) {}

void TmcMessage::DeliverTo(TrafficDataListener& listener) { listener.OnTmcMessage(m_data); }

}  // namespace Quillan
