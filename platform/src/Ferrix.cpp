// Stand-ins for the head unit's Ferrix services: the configuration-file
// reader (which knows no configuration files, so it supplies no priority
// table unless a test hands it one) and the name-to-id provider.

#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include "FerrixCfgFileReader.h"
#include "FerrixIdProvider.h"

namespace {

class CfgFileReader final : public FerrixCfgFileReader {
 public:
  // No configuration file is known here: nothing is loaded.
  int LoadConfig(const char* /*fileName*/) override { return -1; }

  bool FillPriorityTable(uint32_t* table) override {
    std::lock_guard<std::mutex> guard(m_lock);
    if (!m_hasTable || table == nullptr) return false;
    std::memcpy(table, m_table, sizeof(m_table));
    return true;
  }

  void SetPriorityTable(const uint32_t* table) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_hasTable = table != nullptr;
    if (m_hasTable) std::memcpy(m_table, table, sizeof(m_table));
  }

 private:
  std::mutex m_lock;
  bool m_hasTable = false;
  uint32_t m_table[32] = {};
};

// Equal names give equal ids; the first name seen gets 1.
class IdProvider final : public FerrixIdProvider {
 public:
  uint32_t GetId(const char* name) override {
    const std::string key(name != nullptr ? name : "");
    std::lock_guard<std::mutex> guard(m_lock);
    auto found = m_ids.find(key);
    if (found != m_ids.end()) return found->second;
    const uint32_t id = m_nextId++;
    m_ids.emplace(key, id);
    return id;
  }

 private:
  std::mutex m_lock;
  std::map<std::string, uint32_t> m_ids;
  uint32_t m_nextId = 1;
};

CfgFileReader& Reader() {
  static CfgFileReader reader;
  return reader;
}

}  // namespace

FerrixCfgFileReader* FerrixCfgFileReader_GetInstance() { return &Reader(); }

void FerrixCfgFileReader_SetPriorityTableForTesting(const uint32_t* table) {
  Reader().SetPriorityTable(table);
}

FerrixIdProvider* FerrixIdProvider_GetInstance() {
  static IdProvider provider;
  return &provider;
}
