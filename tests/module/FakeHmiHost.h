#pragma once
// Recording stand-ins for the HMI host's interfaces (module registration,
// host, event service; the data pool's is in tests/support), a storage
// folder for the module's fixed paths, and the module's data-pool ids;
// shared by the module tests. Each fake records what it is asked, in order,
// thread-safely: the module calls them on the player's work-loop thread.

#include <cstdint>
#include <string>
#include <utility>

#include "DataPoolClientInterface.h"
#include "DataPoolDirectory.h"
#include "DataPoolProviderInterface.h"
#include "EventInterface.h"
#include "HmiModule.h"
#include "HostInterface.h"
#include "ModuleRegistration.h"
#include "Storage.h"
#include "tests/support/FakeDataPool.h"
#include "tests/support/TempFile.h"
#include "tests/support/TestTime.h"

namespace pelorin_test {

// HMI events and the speed table (client 76), the playback clock (provider 77).
constexpr uint32_t kStartEvent = 0x4c000000;
constexpr uint32_t kStopEvent = 0x4c000001;
constexpr uint32_t kSpeedId = 0x4c000001;
constexpr uint32_t kTickId = 0x4d000000;
constexpr uint32_t kNextId = 0x4d000001;

// A value as the data pool reads it; -999 without the object.
inline int32_t ReadValue(DataPoolReadInterface* object, uint32_t id) {
  int32_t value = -999;
  if (object == nullptr) return value;
  object->LockRead();
  object->GetValue(id, &value);
  object->UnlockRead();
  return value;
}
// The playback clock (provider 77) and the speed table's speed (client 76).
inline int32_t ReadPlaybackValue(uint32_t id) {
  return ReadValue(DataPoolDirectory::FindProvider(77), id);
}
inline int32_t ReadSpeedPercent() { return ReadValue(DataPoolDirectory::FindClient(76), kSpeedId); }

// Writes the playback speed into the speed table as the data pool does.
inline bool SetSpeedPercent(int32_t percent) {
  DataPoolClientInterface* table = DataPoolDirectory::FindClient(76);
  if (table == nullptr) return false;
  table->LockWrite();
  const bool stored = table->SetInt(kSpeedId, percent);
  table->UnlockWrite();
  return stored;
}

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
