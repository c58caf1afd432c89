// The three functions through which the HMI host drives the module, and the
// two module-wide pointers they share. These are the only symbols the
// module exports. The host calls them one at a time; they take no lock.

#include <cstdint>

#include "HostInterface.h"
#include "module/MirlApp.h"
#include "runtime/Trace.h"

#define PELORIN_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

constexpr int kHostInterfaceId = 500;
constexpr int kHostInterfaceVersion = 2;

// Set once by hmi_setInterface (the first host wins); cleared on destroy.
HostInterface* g_host = nullptr;
// Made by hmi_createModule, deleted by hmi_destroyModule.
Quillan::MirlApp* g_application = nullptr;

void DestroyApplication() {
  if (g_application == nullptr) return;
  g_application->Shutdown();
  delete g_application;
  g_application = nullptr;
}

}  // namespace

PELORIN_EXPORT void hmi_setInterface(int id, int version, void* pointer) {
  if (id != kHostInterfaceId || version != kHostInterfaceVersion) return;
  if (g_host != nullptr) return;
  g_host = static_cast<HostInterface*>(pointer);
}

// 1 when the application started, 0 when no host is known yet (the
// application is made but not started). A second call without a destroy in
// between shuts the first application down before it makes the next one.
PELORIN_EXPORT int16_t hmi_createModule() {
  PELORIN_TRACE(2, "HMI_CREATE_MODULE_SYMBOL");
  if (g_application != nullptr) {
    PELORIN_TRACE(3, "HMI_CREATE_MODULE_SYMBOL: module already created, replacing it");
    DestroyApplication();
  }
  g_application = new Quillan::MirlApp;
  if (g_host == nullptr) return 0;
  g_application->Startup(g_host);
  return 1;
}

PELORIN_EXPORT void hmi_destroyModule() {
  PELORIN_TRACE(2, "HMI_DESTROY_MODULE_SYMBOL");
  DestroyApplication();
  g_host = nullptr;
}
