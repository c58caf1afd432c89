#pragma once
// TraceCapture: records every trace message while it lives, and sets the
// thresholds of the "Pelorin" and "SD_DATAPOOL" channels (restored at the
// end). One at a time per process. Thread-safe.

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace pelorin_test {

struct TraceLine {
  std::string channel;
  int level = 0;
  std::string text;
};

class TraceCapture {
 public:
  explicit TraceCapture(int16_t threshold = 2);
  ~TraceCapture();
  TraceCapture(const TraceCapture&) = delete;
  TraceCapture& operator=(const TraceCapture&) = delete;

  std::vector<TraceLine> Lines() const;
  // Texts of the messages of this level or above, in order.
  std::vector<std::string> Texts(int minLevel = 0) const;
  // How many messages contain `fragment`.
  size_t Count(const std::string& fragment) const;
  bool Contains(const std::string& fragment) const { return Count(fragment) > 0; }
  void Clear();

 private:
  static void Sink(void* context, const char* channel, int level, const char* text);

  mutable std::mutex m_lock;
  std::vector<TraceLine> m_lines;
  int16_t m_savedPelorin;
  int16_t m_savedDataPool;
};

}  // namespace pelorin_test
