#pragma once
// HostInterface: the HMI host as a module sees it; handed to the module by
// hmi_setInterface with id 500, version 2. Owned by the host.

class ModuleRegistration;

class HostInterface {
 public:
  virtual ~HostInterface() = default;
  // Returns the module registration (the module asks with 2 and null), or null.
  virtual ModuleRegistration* GetRegistration(int version, void* reserved) = 0;
};
