#pragma once
// RecordDispatcher: the first record consumer. It finds the payload producer
// registered for a record's tag ("$TSL", "$TMC"), lets it build a message and
// hands the message to every registered TrafficDataListener. Owns its
// producers, not its listeners. OnRecord runs on the work loop's thread; it
// takes no lock, so listeners are added and removed only while no record is
// being delivered. GetLastTmcTime may be read from any thread. A null
// listener or producer is refused.

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "producers/RecordConsumer.h"
#include "producers/TrafficListenerRegistry.h"

namespace Quillan {

class PayloadProducer;
class TrafficDataListener;

class RecordDispatcher : public TrafficListenerRegistry, public RecordConsumer {
 public:
  // Creates and registers the "$TSL" and then the "$TMC" producer.
  RecordDispatcher();
  ~RecordDispatcher() override;
  RecordDispatcher(const RecordDispatcher&) = delete;
  RecordDispatcher& operator=(const RecordDispatcher&) = delete;

  bool AddListener(TrafficDataListener* listener) override;
  bool RemoveListener(TrafficDataListener* listener) override;
  // 0 when a message was produced and delivered, else 1.
  int OnRecord(uint32_t time, const std::string& tag, const std::string& payload) override;

  // Takes ownership of `producer`; a tag already present gets the new one.
  void RegisterProducer(const std::string& tag, PayloadProducer* producer);
  // The producer registered for `tag`, or null. Lets a diagnostic tool run a
  // payload through the very parser that OnRecord uses (PayloadProducer::Parse
  // with a ParseError). Not to be used while records are being dispatched.
  PayloadProducer* FindProducer(const std::string& tag) const;
  // Whole-second time of the last "$TMC" record that produced a message; 0
  // until then.
  uint32_t GetLastTmcTime() const { return m_lastTmcTime.load(std::memory_order_relaxed); }

 private:
  std::vector<TrafficDataListener*> m_listeners;
  // Tag and producer; a handful, so a search in order beats a tree.
  std::vector<std::pair<std::string, PayloadProducer*>> m_producers;
  std::vector<PayloadProducer*> m_ownedProducers;
  std::atomic<uint32_t> m_lastTmcTime{0};
};

}  // namespace Quillan
