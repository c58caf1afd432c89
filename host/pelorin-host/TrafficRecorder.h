#pragma once
// TrafficRecorder: the head unit's traffic-data listener. The host registers
// it with the module's RecordDispatcher; every TMC message and service list
// it receives becomes an output item. Called on the module's work-loop
// thread; keeps nothing it receives.

#include "producers/TrafficDataListener.h"

namespace PelorinHost {

class Reporter;

class TrafficRecorder : public Quillan::TrafficDataListener {
 public:
  explicit TrafficRecorder(Reporter& reporter) : m_reporter(reporter) {}

  void OnServiceList(Quillan::ServiceList list) override;
  void OnTmcMessage(std::shared_ptr<Quillan::TmcMessageData> message) override;

 private:
  Reporter& m_reporter;
};

}  // namespace PelorinHost
