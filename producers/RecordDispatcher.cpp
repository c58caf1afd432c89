#include "producers/RecordDispatcher.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "producers/PayloadProducer.h"
#include "producers/TmcMessageProducer.h"
#include "producers/TmcServiceListProducer.h"

namespace Quillan {
namespace {

const std::string_view kTmcTag = "$TMC";
const std::string_view kServiceListTag = "$TSL";

}  // namespace

RecordDispatcher::RecordDispatcher() {
  RegisterProducer(std::string(kServiceListTag), new TmcServiceListProducer());
  RegisterProducer(std::string(kTmcTag), new TmcMessageProducer());
}

RecordDispatcher::~RecordDispatcher() {
  for (PayloadProducer* producer : m_ownedProducers) delete producer;
  m_ownedProducers.clear();
  m_producers.clear();
  m_listeners.clear();
}

bool RecordDispatcher::AddListener(TrafficDataListener* listener) {
  if (listener == nullptr) return false;
  if (std::find(m_listeners.begin(), m_listeners.end(), listener) != m_listeners.end()) {
    return false;
  }
  m_listeners.push_back(listener);
  return true;
}

bool RecordDispatcher::RemoveListener(TrafficDataListener* listener) {
  const auto found = std::find(m_listeners.begin(), m_listeners.end(), listener);
  if (found == m_listeners.end()) return false;
  m_listeners.erase(found);
  return true;
}

int RecordDispatcher::OnRecord(uint32_t time, const std::string& tag, const std::string& payload) {
  PayloadProducer* producer = FindProducer(tag);
  if (producer == nullptr) return 1;
  std::unique_ptr<ProducedMessage> message = producer->Parse(payload);
  if (!message) return 1;
  if (std::string_view(tag) == kTmcTag) m_lastTmcTime.store(time, std::memory_order_relaxed);
  for (TrafficDataListener* listener : m_listeners) message->DeliverTo(*listener);
  return 0;
}

// A replaced producer stays owned until the dispatcher is destroyed.
void RecordDispatcher::RegisterProducer(const std::string& tag, PayloadProducer* producer) {
  if (producer == nullptr) return;
  if (std::find(m_ownedProducers.begin(), m_ownedProducers.end(), producer) ==
      m_ownedProducers.end()) {
    m_ownedProducers.push_back(producer);
  }
  for (auto& entry : m_producers) {
    if (entry.first == tag) {
      entry.second = producer;
      return;
    }
  }
  m_producers.emplace_back(tag, producer);
}

PayloadProducer* RecordDispatcher::FindProducer(const std::string& tag) const {
  for (const auto& entry : m_producers) {
    if (entry.first == tag) return entry.second;
  }
  return nullptr;
}

}  // namespace Quillan
