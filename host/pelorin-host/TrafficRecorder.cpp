#include "TrafficRecorder.h"

#include "Reporter.h"

namespace PelorinHost {

void TrafficRecorder::OnServiceList(Quillan::ServiceList list) {
  m_reporter.ServiceList(list.get());
}

void TrafficRecorder::OnTmcMessage(std::shared_ptr<Quillan::TmcMessageData> message) {
  if (message) m_reporter.Tmc(*message);
}

}  // namespace PelorinHost
