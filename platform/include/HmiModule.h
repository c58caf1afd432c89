#pragma once
// HmiModule: a plug-in module as the HMI host's module registration sees it.
// The host calls these operations on its own threads. A module's application
// object derives from it and may append operations of its own.
// Operations are listed in the host's slot order; unnamed ones are placeholders.

#include <cstdint>

class HostInterface;

class HmiModule {
 public:
  virtual ~HmiModule() = default;
  virtual void Reserved0() {}
  // Run-level transition; returns the level the module has reached.
  virtual int OnRunLevel(int level, int direction) = 0;
  // Hands over one of the host's interfaces (100 events, 101 data pool).
  virtual int SetInterface(int id, int version, int unused, void* pointer) = 0;
  virtual int Reserved1() { return 0; }
  virtual void Reserved2() {}
  virtual void AttachHost(HostInterface* host) = 0;
  virtual int OnEvent(uint32_t id, uint32_t argument) = 0;
  virtual const char* GetName() = 0;
};
