#include "host/recording/RecordYields.h"


#include "producers/TotCall.h"

namespace PelorinRecording {

void RecordYields::Listener::OnServiceList(Quillan::ServiceList /*list*/) {
  made = ItemKind::kServiceList;
}

void RecordYields::Listener::OnTmcMessage(std::shared_ptr<Quillan::TmcMessageData> /*message*/) {
  made = ItemKind::kTmc;
}

RecordYields::RecordYields() { m_dispatcher.AddListener(&m_listener); }

bool RecordYields::Takes(const std::string& tag) const {
  return tag == Quillan::TotCall::kTag || m_dispatcher.FindProducer(tag) != nullptr;
}

RecordYield RecordYields::Of(const Quillan::Record& record) {
  RecordYield yield;
  yield.known = Takes(record.tag);
  if (!yield.known) return yield;
  if (record.tag == Quillan::TotCall::kTag) {
    if (Quillan::TotCall::Parse(record.payload).Check() == Quillan::TotCall::kReplayed) {
      yield.kind = ItemKind::kOnlineTraffic;
    }
    return yield;
  }
  m_listener.made = ItemKind::kNone;
  // The whole-second time is what the module hands on; it does not decide.
  m_dispatcher.OnRecord(0, record.tag, record.payload);
  yield.kind = m_listener.made;
  return yield;
}

}  // namespace PelorinRecording
