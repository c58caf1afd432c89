// Stand-in for the data pool's way of finding a module's data-pool objects:
// one table of providers and one of clients, keyed by id. An object leaves
// only the place it holds itself, so an object that took over its id is not
// removed when its predecessor is destroyed.

#include "DataPoolDirectory.h"

#include <map>
#include <mutex>

namespace {

struct Directory {
  std::mutex lock;
  std::map<uint32_t, DataPoolProviderInterface*> providers;
  std::map<uint32_t, DataPoolClientInterface*> clients;
};

// Never destroyed: data-pool objects of other libraries may be destroyed
// after this library's own statics.
Directory& GetDirectory() {
  static Directory* directory = new Directory;
  return *directory;
}

template <typename T>
void Enter(std::map<uint32_t, T*>& table, uint32_t id, T* object) {
  if (object == nullptr) return;
  std::lock_guard<std::mutex> guard(GetDirectory().lock);
  table[id] = object;
}

template <typename T>
void Leave(std::map<uint32_t, T*>& table, uint32_t id, T* object) {
  std::lock_guard<std::mutex> guard(GetDirectory().lock);
  auto it = table.find(id);
  if (it != table.end() && it->second == object) table.erase(it);
}

template <typename T>
T* Find(std::map<uint32_t, T*>& table, uint32_t id) {
  std::lock_guard<std::mutex> guard(GetDirectory().lock);
  auto it = table.find(id);
  return it == table.end() ? nullptr : it->second;
}

}  // namespace

namespace DataPoolDirectory {

void EnterProvider(uint32_t providerId, DataPoolProviderInterface* provider) {
  Enter(GetDirectory().providers, providerId, provider);
}

void LeaveProvider(uint32_t providerId, DataPoolProviderInterface* provider) {
  Leave(GetDirectory().providers, providerId, provider);
}

void EnterClient(uint32_t clientId, DataPoolClientInterface* client) {
  Enter(GetDirectory().clients, clientId, client);
}

void LeaveClient(uint32_t clientId, DataPoolClientInterface* client) {
  Leave(GetDirectory().clients, clientId, client);
}

DataPoolProviderInterface* FindProvider(uint32_t providerId) {
  return Find(GetDirectory().providers, providerId);
}

DataPoolClientInterface* FindClient(uint32_t clientId) {
  return Find(GetDirectory().clients, clientId);
}

}  // namespace DataPoolDirectory
