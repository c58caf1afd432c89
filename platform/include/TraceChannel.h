#pragma once
// TraceChannel, TraceMessage, TraceClient: the head unit's second tracing API,
// used by the data-pool machinery ("SD_DATAPOOL").
//
// A message is sent only when TraceClient::GetInstance() is not null,
// IsActive() is true and bit 0 of the channel's GetFlags() is set.
// Stand-in: the client exists while a tracing::Sink is installed; bit 0 of a
// channel's flags is set while tracing::GetThreshold(name) <= 2. Messages reach
// the sink at level 2, as "<text><number>".

#include <cstdint>
#include <string>

class TraceChannel {
 public:
  explicit TraceChannel(const char* name);
  ~TraceChannel();
  TraceChannel(const TraceChannel&) = delete;
  TraceChannel& operator=(const TraceChannel&) = delete;

  const char* GetName() const { return m_name; }
  uint32_t GetFlags() const;

 private:
  char m_name[64];
};

class TraceMessage {
 public:
  TraceMessage(const char* text, uint32_t number) : m_text(text ? text : ""), m_number(number) {}
  const std::string& GetText() const { return m_text; }
  uint32_t GetNumber() const { return m_number; }

 private:
  std::string m_text;
  uint32_t m_number;
};

class TraceClient {
 public:
  // The process's trace client, or null when there is none.
  static TraceClient* GetInstance();

  bool IsActive() const;
  void trace(int kind, const TraceMessage& message, const TraceChannel& channel);
};
