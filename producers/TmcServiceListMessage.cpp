#include "producers/TmcServiceListMessage.h"

#include <utility>

#include "producers/TrafficDataListener.h"

namespace Quillan {

TmcServiceListMessage::TmcServiceListMessage(ServiceList list) : m_list(std::move(list)) {}

void TmcServiceListMessage::DeliverTo(TrafficDataListener& listener) {
  listener.OnServiceList(m_list);
}

}  // namespace Quillan
