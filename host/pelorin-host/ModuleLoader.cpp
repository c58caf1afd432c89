#include "ModuleLoader.h"

#include <dlfcn.h>

#include "Paths.h"

namespace PelorinHost {
namespace {

const char kModuleFile[] = "libpelorin.so";

#ifndef PELORIN_INSTALL_LIBDIR
#define PELORIN_INSTALL_LIBDIR "lib"
#endif

}  // namespace

std::string ModuleLoader::DefaultPath(const std::string& programDir) {
  const std::string beside = programDir + "/" + kModuleFile;
  if (IsReadableFile(beside)) return beside;
  const std::string installed =
      programDir + "/../" + PELORIN_INSTALL_LIBDIR + "/pelorin/" + kModuleFile;
  if (IsReadableFile(installed)) return installed;
  return beside;  // named in the error message when neither exists
}

bool ModuleLoader::Load(const std::string& path, std::string* error) {
  Unload();
  // A bare file name would make dlopen search the library path; the host
  // means a file.
  const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
  m_handle = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (m_handle == nullptr) {
    const char* reason = ::dlerror();
    *error = "cannot load module " + path + ": " + (reason ? reason : "unknown reason");
    return false;
  }
  struct Entry {
    const char* name;
    void** target;
  };
  void* symbols[3] = {};
  const Entry entries[] = {{"hmi_setInterface", &symbols[0]},
                           {"hmi_createModule", &symbols[1]},
                           {"hmi_destroyModule", &symbols[2]}};
  for (const Entry& entry : entries) {
    *entry.target = ::dlsym(m_handle, entry.name);
    if (*entry.target == nullptr) {
      *error = "module " + path + " has no entry point " + entry.name;
      Unload();
      return false;
    }
  }
  m_setInterface = reinterpret_cast<SetInterfaceFunction>(symbols[0]);
  m_createModule = reinterpret_cast<CreateModuleFunction>(symbols[1]);
  m_destroyModule = reinterpret_cast<DestroyModuleFunction>(symbols[2]);
  return true;
}

void ModuleLoader::Unload() {
  if (m_handle != nullptr) ::dlclose(m_handle);
  m_handle = nullptr;
  m_setInterface = nullptr;
  m_createModule = nullptr;
  m_destroyModule = nullptr;
}

}  // namespace PelorinHost
