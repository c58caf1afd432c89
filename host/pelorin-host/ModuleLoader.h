#pragma once
// ModuleLoader: loads the module as the head unit does, with dlopen, and
// finds its three entry points with dlsym. Nothing of the module is linked
// into the host. Used on the main thread; Unload (also by the destructor)
// closes the library, which the host does only after hmi_destroyModule.

#include <cstdint>
#include <string>

namespace PelorinHost {

class ModuleLoader {
 public:
  using SetInterfaceFunction = void (*)(int id, int version, void* pointer);
  using CreateModuleFunction = int16_t (*)();
  using DestroyModuleFunction = void (*)();

  ModuleLoader() = default;
  ~ModuleLoader() { Unload(); }
  ModuleLoader(const ModuleLoader&) = delete;
  ModuleLoader& operator=(const ModuleLoader&) = delete;

  // False with `error` naming the cause (the library or the entry point).
  bool Load(const std::string& path, std::string* error);
  void Unload();

  SetInterfaceFunction SetInterface() const { return m_setInterface; }
  CreateModuleFunction CreateModule() const { return m_createModule; }
  DestroyModuleFunction DestroyModule() const { return m_destroyModule; }

  // The module beside the program in the build tree, else the installed one
  // (<prefix>/lib/pelorin/libpelorin.so for <prefix>/bin/pelorin-host).
  static std::string DefaultPath(const std::string& programDir);

 private:
  void* m_handle = nullptr;
  SetInterfaceFunction m_setInterface = nullptr;
  CreateModuleFunction m_createModule = nullptr;
  DestroyModuleFunction m_destroyModule = nullptr;
};

}  // namespace PelorinHost
