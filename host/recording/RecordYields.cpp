#include "host/recording/RecordYields.h"


#include "producers/PayloadProducer.h"
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
  if (record.tag == Quillan::TotCall::kTag) {
    yield.known = true;
    if (Quillan::TotCall::Parse(record.payload).Check() == Quillan::TotCall::kReplayed) {
      yield.kind = ItemKind::kOnlineTraffic;
    }
    return yield;
  }
  Quillan::PayloadProducer* producer = m_dispatcher.FindProducer(record.tag);
  yield.known = producer != nullptr;
  if (yield.known && producer->ParseFields(record.payload)) yield.kind = KindOf(record, producer);
  return yield;
}

ItemKind RecordYields::KindOf(const Quillan::Record& record,
                              const Quillan::PayloadProducer* producer) {
  for (const auto& known : m_kinds) {
    if (known.first == producer) return known.second;
  }
  m_listener.made = ItemKind::kNone;
  // The whole-second time is what the module hands on; it does not decide.
  m_dispatcher.OnRecord(0, record.tag, record.payload);
  m_kinds.emplace_back(producer, m_listener.made);
  return m_listener.made;
}

}  // namespace PelorinRecording
