#pragma once
// Recording stand-ins for the HMI host's interfaces (module registration,
// host, event service, data pool) and a storage folder for the module's
// fixed paths, shared by the module and data-pool tests. Each fake records
// what it is asked, in order, and is thread-safe: the module calls the event
// service and the data pool on the player's work-loop thread.

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "DataPoolInterface.h"
#include "EventInterface.h"
#include "HmiModule.h"
#include "HostInterface.h"
#include "ModuleRegistration.h"
#include "Storage.h"
#include "tests/support/TestTime.h"

namespace pelorin_test {

// Polls until `condition` holds; false at the (scaled) deadline.
inline bool WaitUntil(const std::function<bool()>& condition, uint32_t ms = 5000) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ScaledMs(ms));
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
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
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base ? base : "/tmp") + "/pelorin-storage-XXXXXX";
    if (mkdtemp(&pattern[0]) != nullptr) m_root = pattern;
    mkdir((m_root + "/quillan").c_str(), 0700);
    Write("quillan/Pelorin.cfg", config);
    Write("quillan/events", events);
    Storage::SetStorageRoot(m_root);
  }
  ~StorageFolder() {
    Storage::SetStorageRoot("");
    std::remove((m_root + "/quillan/Pelorin.cfg").c_str());
    std::remove((m_root + "/quillan/events").c_str());
    rmdir((m_root + "/quillan").c_str());
    rmdir(m_root.c_str());
  }
  StorageFolder(const StorageFolder&) = delete;
  StorageFolder& operator=(const StorageFolder&) = delete;

 private:
  void Write(const std::string& name, const std::string& contents) const {
    std::FILE* file = std::fopen((m_root + "/" + name).c_str(), "wb");
    if (file == nullptr) return;
    std::fwrite(contents.data(), 1, contents.size(), file);
    std::fclose(file);
  }

  std::string m_root;
};

}  // namespace pelorin_test
