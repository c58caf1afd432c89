#include "BackgroundScan.h"


namespace PelorinHost {

bool BackgroundScan::Start(const std::string& path, std::string* error) {
  if (!m_reader.Open(path, error)) return false;
  m_thread = std::thread(&BackgroundScan::Run, this);
  return true;
}

void BackgroundScan::Stop() {
  m_cancel.store(true, std::memory_order_relaxed);
  if (m_thread.joinable()) m_thread.join();
}

void BackgroundScan::Run() {
  ScanResult result;
  EventsScan::Scan(m_reader, m_cancel, &result);
  if (!result.complete && m_selection.EndsBefore(result.stopLine)) result.complete = true;
  std::lock_guard<std::mutex> guard(m_lock);
  m_result = result;
  m_done.store(true, std::memory_order_release);
  m_ended.notify_all();
}

const ScanResult& BackgroundScan::Result() {
  std::unique_lock<std::mutex> lock(m_lock);
  m_ended.wait(lock, [this] { return m_done.load(std::memory_order_relaxed); });
  return m_result;
}

}  // namespace PelorinHost
