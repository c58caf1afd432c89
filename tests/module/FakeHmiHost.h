#pragma once
// Recording stand-ins for the HMI host's interfaces (module registration,
// host, event service, data pool) and a storage folder for the module's
// fixed paths, shared by the module tests. Every fake records what it is
// asked, in order, and is thread-safe: the module calls the event service
// and the data pool on the player's work-loop thread while a test reads.

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
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

// Waits for a condition that another thread brings about. Polls, so the
// fakes need not signal; the deadline is scaled for slow configurations.
inline bool WaitUntil(const std::function<bool()>& condition, uint32_t ms = 5000) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ScaledMs(ms));
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

class FakeRegistration : public ModuleRegistration {
 public:
  struct Publication {
    int kind;
    int version;
    int runLevel;
    void* service;
  };

  int AttachModule(HmiModule* module) override {
    std::lock_guard<std::mutex> guard(m_lock);
    m_attached.push_back(module);
    return 0;
  }
  int DetachModule(HmiModule* module) override {
    std::lock_guard<std::mutex> guard(m_lock);
    m_detached.push_back(module);
    return 0;
  }
  int PublishService(int kind, int version, int runLevel, void* service) override {
    std::lock_guard<std::mutex> guard(m_lock);
    m_published.push_back({kind, version, runLevel, service});
    return 0;
  }

  std::vector<HmiModule*> Attached() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_attached;
  }
  std::vector<HmiModule*> Detached() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_detached;
  }
  std::vector<Publication> Published() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_published;
  }

 private:
  mutable std::mutex m_lock;
  std::vector<HmiModule*> m_attached;
  std::vector<HmiModule*> m_detached;
  std::vector<Publication> m_published;
};

class FakeHost : public HostInterface {
 public:
  explicit FakeHost(ModuleRegistration* registration) : m_registration(registration) {}
  ModuleRegistration* GetRegistration(int version, void* reserved) override {
    std::lock_guard<std::mutex> guard(m_lock);
    m_requests.push_back({version, reserved});
    return m_registration;
  }
  std::vector<std::pair<int, void*>> Requests() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_requests;
  }

 private:
  mutable std::mutex m_lock;
  ModuleRegistration* m_registration;
  std::vector<std::pair<int, void*>> m_requests;
};

class FakeEvents : public EventInterface {
 public:
  int AddEventListener(EventListener* listener, int flags) override {
    std::lock_guard<std::mutex> guard(m_lock);
    m_listeners.push_back({listener, flags});
    return 0;
  }
  int NotifyValueChanged(uint32_t id, int argument) override {
    std::lock_guard<std::mutex> guard(m_lock);
    m_notifications.push_back({id, argument});
    return 0;
  }

  std::vector<std::pair<EventListener*, int>> Listeners() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_listeners;
  }
  std::vector<std::pair<uint32_t, int>> Notifications() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_notifications;
  }
  size_t NotificationCount() const { return Notifications().size(); }

 private:
  mutable std::mutex m_lock;
  std::vector<std::pair<EventListener*, int>> m_listeners;
  std::vector<std::pair<uint32_t, int>> m_notifications;
};

class FakeDataPool : public DataPoolInterface {
 public:
  int RegisterProvider(DataPoolReadInterface* provider, uint32_t id) override {
    std::lock_guard<std::mutex> guard(m_lock);
    m_registered.push_back({provider, id});
    return 0;
  }
  int Subscribe(DataListener* listener, uint32_t valueId) override {
    std::lock_guard<std::mutex> guard(m_lock);
    m_subscriptions.push_back({listener, valueId});
    return 0;
  }
  int UnregisterProvider(uint32_t id) override {
    std::lock_guard<std::mutex> guard(m_lock);
    m_unregistered.push_back(id);
    return 0;
  }
  int ReportChangedValues(const uint32_t* ids, uint32_t count) override {
    std::lock_guard<std::mutex> guard(m_lock);
    m_reports.emplace_back(ids, ids + count);
    return 0;
  }

  std::vector<std::pair<DataListener*, uint32_t>> Subscriptions() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_subscriptions;
  }
  std::vector<uint32_t> Unregistered() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_unregistered;
  }
  std::vector<std::vector<uint32_t>> Reports() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_reports;
  }
  // The reports whose first id has this high byte (0x4c speed table, 0x4d
  // playback values); reports without ids are left out.
  std::vector<std::vector<uint32_t>> ReportsOf(uint32_t highByte) const {
    std::vector<std::vector<uint32_t>> selected;
    for (const auto& report : Reports()) {
      if (!report.empty() && (report[0] >> 24) == highByte) selected.push_back(report);
    }
    return selected;
  }
  void ClearReports() {
    std::lock_guard<std::mutex> guard(m_lock);
    m_reports.clear();
  }

 private:
  mutable std::mutex m_lock;
  std::vector<std::pair<DataPoolReadInterface*, uint32_t>> m_registered;
  std::vector<std::pair<DataListener*, uint32_t>> m_subscriptions;
  std::vector<uint32_t> m_unregistered;
  std::vector<std::vector<uint32_t>> m_reports;
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

  void Write(const std::string& name, const std::string& contents) const {
    std::FILE* file = std::fopen((m_root + "/" + name).c_str(), "wb");
    if (file == nullptr) return;
    std::fwrite(contents.data(), 1, contents.size(), file);
    std::fclose(file);
  }

 private:
  std::string m_root;
};

}  // namespace pelorin_test
