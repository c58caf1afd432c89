#pragma once
// tracing::Channel: a named trace channel of the head unit's tracing service.
//
// The platform keeps each channel's threshold (a 16-bit signed level). By
// convention a caller builds and logs a message of level L only when
// GetThreshold() <= L. Channels are usually static objects of the module that
// owns them. log() and GetThreshold() may be called from any thread.
//
// Stand-in only: SetSink() and SetThreshold() let a host program or a test see
// the messages and choose the threshold; a channel name's threshold may be set
// before the channel exists. The default threshold is 3 (warnings and up).

#include <atomic>
#include <cstdint>

namespace tracing {

class Channel {
 public:
  // The meaning of the two numbers is the tracing service's; they are kept.
  Channel(const char* name, short group, unsigned int flags);
  ~Channel();
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  const char* GetName() const { return m_name; }
  short GetGroup() const { return m_group; }
  unsigned int GetFlags() const { return m_flags; }
  int16_t GetThreshold() const;
  void log(int level, const char* text) const;

 private:
  friend void SetThreshold(const char* channel, int16_t threshold);

  char m_name[64];
  short m_group;
  unsigned int m_flags;
  std::atomic<int16_t> m_threshold;
};

// Receives every message logged on any channel (both the "Pelorin" and the
// "SD_DATAPOOL" kind). Called on the logging thread, under the sink lock: a
// sink must not log itself.
using Sink = void (*)(void* context, const char* channel, int level, const char* text);

// Installs the sink (null removes it). Thread-safe.
void SetSink(Sink sink, void* context);

// Sets the threshold of every channel with this name, present and future.
void SetThreshold(const char* channel, int16_t threshold);

// Threshold that a channel of this name has or will have.
int16_t GetThreshold(const char* channel);

}  // namespace tracing
