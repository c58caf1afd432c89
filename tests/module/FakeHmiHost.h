#pragma once
// Recording stand-ins for the HMI host's interfaces (module registration,
// host, event service, data pool), a storage folder for the module's fixed
// paths, the module's data-pool ids, and a harness for concurrent data-pool
// sections; shared by the module and data-pool tests. Each fake records
// what it is asked, in order, and is thread-safe: the module calls the event
// service and the data pool on the player's work-loop thread.

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "DataPoolClientInterface.h"
#include "DataPoolDirectory.h"
#include "DataPoolInterface.h"
#include "DataPoolProviderInterface.h"
#include "EventInterface.h"
#include "HmiModule.h"
#include "HostInterface.h"
#include "ModuleRegistration.h"
#include "Storage.h"
#include "tests/support/TempFile.h"
#include "tests/support/TestTime.h"

namespace pelorin_test {

// HMI events and the speed table (client 76), the playback clock (provider 77).
constexpr uint32_t kStartEvent = 0x4c000000;
constexpr uint32_t kStopEvent = 0x4c000001;
constexpr uint32_t kSpeedId = 0x4c000001;
constexpr uint32_t kTickId = 0x4d000000;
constexpr uint32_t kNextId = 0x4d000001;

// A playback-clock value as the data pool reads it; -999 without a provider.
inline int32_t ReadPlaybackValue(uint32_t id) {
  DataPoolProviderInterface* provider = DataPoolDirectory::FindProvider(77);
  if (provider == nullptr) return -999;
  int32_t value = -999;
  provider->LockRead();
  provider->GetValue(id, &value);
  provider->UnlockRead();
  return value;
}

// Writes the playback speed into the speed table as the data pool does.
inline bool SetSpeedPercent(int32_t percent) {
  DataPoolClientInterface* table = DataPoolDirectory::FindClient(76);
  if (table == nullptr) return false;
  table->LockWrite();
  const bool stored = table->SetInt(kSpeedId, percent);
  table->UnlockWrite();
  return stored;
}

// `writers` threads each run `write(writer, section)` for `sections`
// sections while two reader threads call `read`, which reads two values in
// one read section, until the writers are done. True when no reader ever
// saw the two differ (half a section).
inline bool SectionsStayWhole(int writers, int sections, const std::function<void(int, int)>& write,
                              const std::function<std::pair<int32_t, int32_t>()>& read) {
  std::atomic<int> writersLeft{writers};
  std::atomic<bool> torn{false};
  std::vector<std::thread> threads;
  for (int w = 0; w < writers; ++w) {
    threads.emplace_back([&, w] {
      for (int i = 1; i <= sections; ++i) write(w, i);
      --writersLeft;
    });
  }
  for (int r = 0; r < 2; ++r) {
    threads.emplace_back([&] {
      while (writersLeft.load() > 0) {
        const auto pair = read();
        if (pair.first != pair.second) torn = true;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  return !torn.load();
}

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

class FakeRegistration : public ModuleRegistration {
 public:
  struct Publication {
    int kind, version, runLevel;
    void* service;
  };
  int AttachModule(HmiModule* module) override { return attached.Add(module), 0; }
  int DetachModule(HmiModule* module) override { return detached.Add(module), 0; }
  int PublishService(int kind, int version, int runLevel, void* service) override {
    return published.Add({kind, version, runLevel, service}), 0;
  }

  Journal<HmiModule*> attached, detached;
  Journal<Publication> published;
};

class FakeHost : public HostInterface {
 public:
  explicit FakeHost(ModuleRegistration* registration) : m_registration(registration) {}
  ModuleRegistration* GetRegistration(int version, void* reserved) override {
    requests.Add({version, reserved});
    return m_registration;
  }

  Journal<std::pair<int, void*>> requests;

 private:
  ModuleRegistration* m_registration;
};

class FakeEvents : public EventInterface {
 public:
  int AddEventListener(EventListener* listener, int flags) override {
    return listeners.Add({listener, flags}), 0;
  }
  int NotifyValueChanged(uint32_t id, int argument) override {
    return notifications.Add({id, argument}), 0;
  }

  Journal<std::pair<EventListener*, int>> listeners;
  Journal<std::pair<uint32_t, int>> notifications;
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
  // The reports whose first id has this high byte (0x4c speed table, 0x4d
  // playback values).
  std::vector<std::vector<uint32_t>> ReportsOf(uint32_t highByte) const {
    std::vector<std::vector<uint32_t>> selected;
    for (const auto& report : reports.All()) {
      if (!report.empty() && (report[0] >> 24) == highByte) selected.push_back(report);
    }
    return selected;
  }

  Journal<std::pair<DataPoolReadInterface*, uint32_t>> registered;
  Journal<std::pair<DataListener*, uint32_t>> subscriptions;
  Journal<uint32_t> unregistered;
  Journal<std::vector<uint32_t>> reports;
  // Called on the reporting thread before the report is recorded.
  std::function<void(const std::vector<uint32_t>&)> onReport;
};

// A temporary folder served as the head unit's "/fs/sda0" while it lives,
// holding "quillan/Pelorin.cfg" and "quillan/events".
class StorageFolder {
 public:
  StorageFolder(const std::string& config, const std::string& events) {
    m_folder.Write("quillan/");
    m_folder.Write("quillan/Pelorin.cfg", config);
    m_folder.Write("quillan/events", events);
    Storage::SetStorageRoot(m_folder.Path());
  }
  ~StorageFolder() { Storage::SetStorageRoot(""); }

 private:
  TempFolder m_folder;
};

}  // namespace pelorin_test
