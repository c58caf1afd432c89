// Stand-in for the head unit's tracing service: a process-wide registry of
// channel thresholds and one sink that receives every message.

#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "TraceChannel.h"
#include "tracing/Channel.h"

namespace {

constexpr int16_t kDefaultThreshold = 3;

struct Registry {
  std::mutex lock;
  std::map<std::string, int16_t> thresholds;
  std::set<tracing::Channel*> channels;
  tracing::Sink sink = nullptr;
  void* context = nullptr;
};

// Never destroyed: channels are static objects of other libraries and may be
// destroyed after this library's own statics.
Registry& GetRegistry() {
  static Registry* registry = new Registry;
  return *registry;
}

int16_t ThresholdLocked(Registry& registry, const char* name) {
  auto it = registry.thresholds.find(name);
  return it == registry.thresholds.end() ? kDefaultThreshold : it->second;
}

void Deliver(const char* channel, int level, const char* text) {
  Registry& registry = GetRegistry();
  std::lock_guard<std::mutex> guard(registry.lock);
  if (registry.sink != nullptr) registry.sink(registry.context, channel, level, text);
}

void CopyName(char (&target)[64], const char* name) {
  std::snprintf(target, sizeof(target), "%s", name ? name : "");
}

}  // namespace

namespace tracing {

Channel::Channel(const char* name, short group, unsigned int flags)
    : m_group(group), m_flags(flags), m_threshold(kDefaultThreshold) {
  CopyName(m_name, name);
  Registry& registry = GetRegistry();
  std::lock_guard<std::mutex> guard(registry.lock);
  m_threshold.store(ThresholdLocked(registry, m_name));
  registry.channels.insert(this);
}

Channel::~Channel() {
  Registry& registry = GetRegistry();
  std::lock_guard<std::mutex> guard(registry.lock);
  registry.channels.erase(this);
}

int16_t Channel::GetThreshold() const { return m_threshold.load(std::memory_order_relaxed); }

void Channel::log(int level, const char* text) const { Deliver(m_name, level, text ? text : ""); }

void SetSink(Sink sink, void* context) {
  Registry& registry = GetRegistry();
  std::lock_guard<std::mutex> guard(registry.lock);
  registry.sink = sink;
  registry.context = context;
}

void SetThreshold(const char* channel, int16_t threshold) {
  Registry& registry = GetRegistry();
  std::lock_guard<std::mutex> guard(registry.lock);
  registry.thresholds[channel] = threshold;
  for (Channel* existing : registry.channels) {
    if (std::strcmp(existing->m_name, channel) == 0) existing->m_threshold.store(threshold);
  }
}

int16_t GetThreshold(const char* channel) {
  Registry& registry = GetRegistry();
  std::lock_guard<std::mutex> guard(registry.lock);
  return ThresholdLocked(registry, channel);
}

}  // namespace tracing

TraceChannel::TraceChannel(const char* name) { CopyName(m_name, name); }

TraceChannel::~TraceChannel() = default;

uint32_t TraceChannel::GetFlags() const { return tracing::GetThreshold(m_name) <= 2 ? 1u : 0u; }

TraceClient* TraceClient::GetInstance() {
  static TraceClient client;
  return &client;
}

bool TraceClient::IsActive() const {
  Registry& registry = GetRegistry();
  std::lock_guard<std::mutex> guard(registry.lock);
  return registry.sink != nullptr;
}

void TraceClient::trace(int /*kind*/, const TraceMessage& message, const TraceChannel& channel) {
  std::string text = message.GetText() + std::to_string(message.GetNumber());
  Deliver(channel.GetName(), 2, text.c_str());
}
