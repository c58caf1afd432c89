#pragma once
// SystemCommon::Classification::ModuleId: identifies a software module to the
// head unit's diagnostics by name (ASCII).

#include <string>

namespace SystemCommon {
namespace Classification {

class ModuleId {
 public:
  explicit ModuleId(const char* name);
  const std::string& GetName() const { return m_name; }

 private:
  std::string m_name;
};

}  // namespace Classification
}  // namespace SystemCommon
