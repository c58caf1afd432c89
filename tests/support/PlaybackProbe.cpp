#include "tests/support/PlaybackProbe.h"

#include <charconv>

namespace pelorin_test {
namespace {

// "10" for 10.0, "10.5" for 10.5: the shortest form.
std::string TimeText(double time) {
  char buffer[32];
  auto result = std::to_chars(buffer, buffer + sizeof(buffer), time);
  return std::string(buffer, result.ptr);
}

}  // namespace

int PlaybackProbe::OnRecord(uint32_t time, const std::string& tag, const std::string& payload) {
  size_t number = 0;
  {
    std::lock_guard<std::mutex> guard(m_lock);
    m_log.push_back("record " + std::to_string(time) + " " + tag + " " + payload);
    m_payloads.push_back(payload);
    number = ++m_records;
  }
  m_changed.notify_all();
  if (m_hook) m_hook(number);
  return 0;
}

void PlaybackProbe::OnFinished(Quillan::Runner*) { Append("finished", true); }

void PlaybackProbe::OnTick(Quillan::Runner*, double time) {
  Append("tick " + TimeText(time), false);
}

void PlaybackProbe::OnNextEvent(Quillan::Runner*, double time) {
  Append("next " + TimeText(time), false);
}

void PlaybackProbe::Append(std::string entry, bool isFinish) {
  {
    std::lock_guard<std::mutex> guard(m_lock);
    m_log.push_back(std::move(entry));
    if (isFinish) ++m_finishes;
  }
  m_changed.notify_all();
}

bool PlaybackProbe::WaitForFinishes(size_t count, uint32_t timeoutMs) const {
  std::unique_lock<std::mutex> guard(m_lock);
  return m_changed.wait_for(guard, std::chrono::milliseconds(timeoutMs),
                            [&] { return m_finishes >= count; });
}

void PlaybackProbe::Clear() {
  std::lock_guard<std::mutex> guard(m_lock);
  m_log.clear();
  m_payloads.clear();
  m_records = 0;
  m_finishes = 0;
}

}  // namespace pelorin_test
