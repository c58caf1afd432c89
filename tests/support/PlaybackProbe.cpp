#include "tests/support/PlaybackProbe.h"

#include <algorithm>
#include <charconv>

namespace pelorin_test {

// "10" for 10.0, "10.5" for 10.5: the shortest form.
std::string PlaybackProbe::TimeText(double time) {
  char buffer[32];
  auto result = std::to_chars(buffer, buffer + sizeof(buffer), time);
  return std::string(buffer, result.ptr);
}

int PlaybackProbe::OnRecord(uint32_t time, const std::string& tag, const std::string& payload) {
  const size_t number = Append("record " + std::to_string(time) + " " + tag + " " + payload);
  if (m_hook) m_hook(number);
  return 0;
}

size_t PlaybackProbe::Append(std::string entry) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (entry.rfind("record ", 0) == 0) ++m_records;
  m_log.push_back(std::move(entry));
  return m_records;
}

std::vector<std::string> PlaybackProbe::Log() const {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_log;
}

std::vector<std::string> PlaybackProbe::Payloads() const {
  std::vector<std::string> payloads;
  for (const std::string& entry : Log()) {
    // "record <time> <tag> <payload>": neither time nor tag holds a blank.
    if (entry.rfind("record ", 0) != 0) continue;
    payloads.push_back(entry.substr(entry.find(' ', entry.find(' ', 7) + 1) + 1));
  }
  return payloads;
}

size_t PlaybackProbe::Finishes() const {
  const std::vector<std::string> log = Log();
  return static_cast<size_t>(std::count(log.begin(), log.end(), "finished"));
}

void PlaybackProbe::Clear() {
  std::lock_guard<std::mutex> guard(m_lock);
  m_log.clear();
  m_records = 0;
}

}  // namespace pelorin_test
