// Stand-ins for the head unit's module classification, which only feeds its
// diagnostics: the module id keeps its name, the scoped id does nothing.

#include "SystemCommon/Classification/ModuleId.h"
#include "SystemCommon/Classification/ScopedId.h"

namespace SystemCommon {
namespace Classification {

ModuleId::ModuleId(const char* name) : m_name(name != nullptr ? name : "") {}

ScopedId::ScopedId(const ModuleId& /*module*/, int /*scope*/, const char* /*text*/, int /*index*/) {
}

ScopedId::~ScopedId() = default;

}  // namespace Classification
}  // namespace SystemCommon
