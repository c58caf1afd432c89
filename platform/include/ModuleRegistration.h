#pragma once
// ModuleRegistration: the host's registry of plug-in modules and services,
// obtained through HostInterface::GetRegistration. Owned by the host.

class HmiModule;

class ModuleRegistration {
 public:
  virtual ~ModuleRegistration() = default;
  virtual int AttachModule(HmiModule* module) = 0;
  virtual int DetachModule(HmiModule* module) = 0;
  // Publishes a service object; the three numbers are the host's (the
  // service's kind, version and run level).
  virtual int PublishService(int kind, int version, int runLevel, void* service) = 0;
};
