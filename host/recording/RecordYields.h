#pragma once
// RecordYields: what the module makes of a record, found by running the
// module's own record dispatcher and producers, and by the verdict the
// online traffic producer gives a call. No second grammar: what playback
// yields, this yields. The first record a producer yields from goes through
// the dispatcher to a listener that notes the kind of item it is given;
// after that, the producer's verdict alone (PayloadProducer::ParseFields,
// which Parse follows with a message it never refuses) spares making and
// delivering a message. Owns its dispatcher; one thread at a time. Needs no
// trace channel and no thread of the engine.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "player/Record.h"
#include "producers/RecordDispatcher.h"
#include "producers/TrafficDataListener.h"

namespace PelorinRecording {

enum class ItemKind { kNone, kTmc, kServiceList, kOnlineTraffic };

struct RecordYield {
  bool known = false;               // a producer takes the tag
  ItemKind kind = ItemKind::kNone;  // the item made, kNone when none
  bool Yields() const { return kind != ItemKind::kNone; }
};

class RecordYields {
 public:
  RecordYields();
  RecordYields(const RecordYields&) = delete;
  RecordYields& operator=(const RecordYields&) = delete;

  RecordYield Of(const Quillan::Record& record);
  // Whether a producer takes records of `tag`.
  bool Takes(const std::string& tag) const;

 private:
  class Listener : public Quillan::TrafficDataListener {
   public:
    void OnServiceList(Quillan::ServiceList list) override;
    void OnTmcMessage(std::shared_ptr<Quillan::TmcMessageData> message) override;
    ItemKind made = ItemKind::kNone;
  };

  // The kind each producer makes, once learnt.
  ItemKind KindOf(const Quillan::Record& record, const Quillan::PayloadProducer* producer);

  Listener m_listener;
  Quillan::RecordDispatcher m_dispatcher;
  std::vector<std::pair<const Quillan::PayloadProducer*, ItemKind>> m_kinds;
};

}  // namespace PelorinRecording
