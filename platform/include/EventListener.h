#pragma once
// EventListener: what a module registers with the EventInterface to receive
// HMI events. Called on the host's threads.

#include <cstdint>

class EventListener {
 public:
  virtual ~EventListener() = default;
  virtual int OnEvent(uint32_t id, uint32_t argument) = 0;
  virtual const char* GetName() = 0;
};
