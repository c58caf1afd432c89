#pragma once
// SystemCommon::Classification::ScopedId: classifies the calling thread as
// working for a module while the object lives (diagnostics only).

#include "SystemCommon/Classification/ModuleId.h"

namespace SystemCommon {
namespace Classification {

class ScopedId {
 public:
  ScopedId(const ModuleId& module, int scope, const char* text, int index);
  ~ScopedId();
  ScopedId(const ScopedId&) = delete;
  ScopedId& operator=(const ScopedId&) = delete;
};

}  // namespace Classification
}  // namespace SystemCommon
