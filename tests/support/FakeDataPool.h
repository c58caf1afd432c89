#pragma once
// FakeDataPool: a recording stand-in for the HMI data pool. It records, in
// order, registrations, subscriptions and change reports, each in a
// thread-safe Journal: objects under test report on their writers' threads.

#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include "DataPoolInterface.h"

namespace pelorin_test {

// A thread-safe list of recorded calls.
template <typename T>
class Journal {
 public:
  void Add(T entry) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_entries.push_back(std::move(entry));
  }
  std::vector<T> All() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_entries;
  }
  void Clear() {
    std::lock_guard<std::mutex> guard(m_lock);
    m_entries.clear();
  }

 private:
  mutable std::mutex m_lock;
  std::vector<T> m_entries;
};

class FakeDataPool : public DataPoolInterface {
 public:
  int RegisterProvider(DataPoolReadInterface* provider, uint32_t id) override {
    return registered.Add({provider, id}), 0;
  }
  int Subscribe(DataListener* listener, uint32_t valueId) override {
    return subscriptions.Add({listener, valueId}), 0;
  }
  int UnregisterProvider(uint32_t id) override { return unregistered.Add(id), 0; }
  int ReportChangedValues(const uint32_t* ids, uint32_t count) override {
    std::vector<uint32_t> report(ids, ids + count);
    if (onReport) onReport(report);
    reports.Add(report);
    return 0;
  }
  Journal<std::pair<DataPoolReadInterface*, uint32_t>> registered;
  Journal<std::pair<DataListener*, uint32_t>> subscriptions;
  Journal<uint32_t> unregistered;
  Journal<std::vector<uint32_t>> reports;
  // Called on the reporting thread before the report is recorded.
  std::function<void(const std::vector<uint32_t>&)> onReport;
};

}  // namespace pelorin_test
